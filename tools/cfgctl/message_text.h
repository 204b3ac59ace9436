// What a message on the daemons' queue says: for monitor, and for the desk
// camera's receivers.
#pragma once

#include "cfg_set.h"

#include <string>

namespace cfgctl
{

// What it tells its receiver: "PIR detection on".
const char *meaning(const daemon_message &message);

// Its parameter bytes, as far as their trailing zeros.
std::string parameter(const daemon_message &message);

// All of it in one line.
std::string line_of(const daemon_message &message);

} // namespace cfgctl
