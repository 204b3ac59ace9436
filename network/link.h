// Inside the library only: what link control asks of the system.
#pragma once

namespace cfg_set
{

// Seconds since boot; 0 when the system does not tell.
long sys_uptime();

// 1 while a live stream runs, else 0.
int live_streaming();

} // namespace cfg_set
