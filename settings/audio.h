// Inside the library only: what the files of audio control share.
#pragma once

#include <stdint.h>

namespace cfg_set
{

constexpr uint32_t MIC_ENABLE_MAX = 1;

// True when /proc/mounts names /mnt/sdcard as a mount point.
bool sdcard_mounted();

} // namespace cfg_set
