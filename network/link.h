// Inside the library only: what the files of link control share.
#pragma once

#define RELEASE_LEASE "/etc_ro/udhcpc.kill wlan0"

namespace cfg_set
{

// Seconds since boot; 0 when the system does not tell.
long sys_uptime();

// 1 while a live stream runs, else 0.
int live_streaming();

} // namespace cfg_set
