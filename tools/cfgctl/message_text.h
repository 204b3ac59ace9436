// Messages on the daemons' queue as text, for monitor and the desk camera's
// receivers.
#pragma once

#include "cfg_set.h"

#include <string>

namespace cfgctl
{

// What it tells its receiver: "PIR detection on".
const char *meaning(const daemon_message &message);

// Its parameter bytes without trailing zeros.
std::string parameter(const daemon_message &message);

// The whole message on one line.
std::string line_of(const daemon_message &message);

} // namespace cfgctl
