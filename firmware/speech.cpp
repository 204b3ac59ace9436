#include "settings/stored.h"

#include <string.h>
#include <unistd.h>

using namespace cfg_set;

#define SPEECH_FOLDER "/mnt/sdcard/morvenix/"
constexpr size_t SPEECH_PATH_SIZE = 128; // holds every path built of two stored values
constexpr size_t SPEECH_VALUE_SIZE = 16;

int cfg_verifyDownloadedSpeech(char *lang_out, uint32_t size)
{
    if (lang_out && size != 0)
        *lang_out = '\0';
    char version[SPEECH_VALUE_SIZE] = "";
    if (param_get("speech_version", version, sizeof version) == 0 && *version == '\0')
        printf("[%s %d]Can not get  SPEECH_VERSION\n", HERE); // no blank after the bracket

    char language[SPEECH_VALUE_SIZE] = "";
    char path[SPEECH_PATH_SIZE] = "";
    if (param_get("lang_name", language, sizeof language) == 0) {
        if (*language == '\0')
            strcpy(language, "EN");
        format(path, sizeof path, "%sspeech%s_%s.tgz", SPEECH_FOLDER "download/", version,
               language);
    }
    if (lang_out)
        format(lang_out, size, "%s", language);
    if (access(path, F_OK) != 0)
        return 0;

    char folder[SPEECH_PATH_SIZE];
    format(folder, sizeof folder, "%s%s/speech", SPEECH_FOLDER, language);
    format(path, sizeof path, "%s/speech%s_%s.tar", folder, version, language);
    if (access(path, F_OK) != 0) {
        REPORT("sTarPath have be remove. To sure really tar finished ");
        return -1;
    }
    REPORT("download ok but tar is fail, Need again");
    return 0;
}
