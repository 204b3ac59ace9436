// Inside the library only: the last step of the firmware check.
#pragma once

#include <stdint.h>
#include <stdio.h>

namespace cfg_set
{

// 0 when the bytes after the header, up to `dwLimit` (0: to the end of file),
// have the checksum in the header; -1 after a report.
int checkImageChecksum(FILE *fp, uint32_t dwLimit);

} // namespace cfg_set
