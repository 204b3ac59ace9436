// Inside the library only: what audio control asks of the SD card.
#pragma once

namespace cfg_set
{

// True when /proc/mounts names /mnt/sdcard as a mount point.
bool sdcard_mounted();

} // namespace cfg_set
