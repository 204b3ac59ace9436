// prompt, alert: sounds.

#include "cfgctl.h"

#include "cfg_set.h"

namespace cfgctl
{

int prompt(const Call &call)
{
    if (voice_prompt(call.arguments[0].c_str()) < 0) {
        complain("the prompt was not played");
        return APPLY_FAILED;
    }
    return OK;
}

int alert_sound(const Call &call)
{
    if (alert(call.arguments[0].c_str()) != 0) {
        complain("the sound was not played, or the speaker not restored");
        return APPLY_FAILED;
    }
    return OK;
}

} // namespace cfgctl
