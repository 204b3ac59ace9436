#include "settings/stored.h"

#include <ctype.h>
#include <errno.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace cfg_set;

constexpr int LIST_LINE_SIZE = 32;
constexpr pid_t INIT = 1;
constexpr unsigned QUIET_COUNT = 2; // processes that may be left below INIT
constexpr int QUIET_ATTEMPTS = 20;

#define FW_BASE_VERSION "v5.0.44"
#define DOWNLOADED_VERSION "/mnt/sdcard/upgrade/upgrade.dat"
#define DOWNLOADED_IMAGE "/mnt/sdcard/upgrade/upgrade.bin"
#define SPEECH_FOLDER "/mnt/sdcard/morvenix/"
constexpr size_t SPEECH_PATH_SIZE = 128; // holds every path built of two stored values
constexpr size_t SPEECH_VALUE_SIZE = 16;

// The process id of the Wi-Fi driver's command thread, 0 when there is none.
static pid_t wifi_command_thread()
{
    FILE *pipe = popen("ps | awk '$5==\"[RTW_CMD_THREAD]\" {print $1}'", "re");
    char line[LIST_LINE_SIZE] = "";
    if (pipe)
        read_line(pipe, line, sizeof line);
    // The pipe stays open: this function does not wait for its end.
    // cppcheck-suppress resourceLeak
    return to_int(line);
}

// Sends SIGTERM to every process of the list, one a line, except init, `self` and
// `spared`.
static void terminate_listed(FILE *list, pid_t self, pid_t spared)
{
    char line[LIST_LINE_SIZE];
    while (read_line(list, line, sizeof line) > 0) {
        const pid_t pid = isdigit((unsigned char)line[0]) ? to_int(line) : 0;
        if (pid <= 0 || pid == self || pid == INIT || pid == spared)
            continue;
        fprintf(stderr, "send SIGTERM to pid %d\n", pid);
        kill(pid, SIGTERM);
    }
}

// The number of lines that hold the process id of init, -1 on a read error.
static int count_of_init(FILE *list)
{
    int count = 0;
    char line[LIST_LINE_SIZE];
    int read;
    while ((read = read_line(list, line, sizeof line)) > 0)
        count += isdigit((unsigned char)line[0]) && to_int(line) == INIT;
    return read < 0 ? read : count;
}

int cfg_killProcess(void)
{
    const pid_t self = getpid();
    run("killall watchdog; disable_watchdog");
    run("echo \"\" > /proc/sys/kernel/hotplug");

    FILE *list = popen("ps | awk '{ print $1 }'", "re");
    const int error = errno;
    const pid_t iPidRTW = wifi_command_thread();
    REPORT("iPidRTW = %d", iPidRTW);
    if (!list) {
        REPORT("popen fail errno[%d][%s]", error, strerror(error));
        return -1;
    }
    terminate_listed(list, self, iPidRTW);
    pclose(list);

    for (int attempt = 1; attempt <= QUIET_ATTEMPTS; attempt++) {
        FILE *parents = popen("ps -l | awk '{ print $4}'", "re");
        if (parents) {
            const int dwCount = count_of_init(parents);
            pclose(parents);
            REPORT("dwCount: %d", dwCount);
            if ((unsigned)dwCount <= QUIET_COUNT)
                return 0;
        } else {
            REPORT("popen fail errno[%d][%s]", errno, strerror(errno));
        }
        sleep(1);
        REPORT("retry: %d", attempt);
    }
    return 0;
}

int cfg_isPlayingMusic(void)
{
    struct stat status;
    return stat("/tmp/play_status", &status) == 0 && status.st_size > 0 ? 0 : -1;
}

// Reads "v%d.%d.%d" as scanf does on the camera, where a number beyond an int
// becomes the largest int.
static bool parse_version(const char *text, int (&numbers)[3])
{
    const char *before = "v";
    for (int &number : numbers) {
        text = scan_number(text, before, &number);
        if (!text)
            return false;
        before = ".";
    }
    return true;
}

int cfg_isNewVersion(const char *version)
{
    int base[3];
    int other[3];
    if (!parse_version(FW_BASE_VERSION, base) || !parse_version(version, other))
        return -1;
    for (int i = 0; i < 3; i++)
        if (other[i] != base[i])
            return other[i] > base[i] ? 0 : -1;
    return -1;
}

int cfg_verifyDownloadedFw(char *version_out, uint32_t size)
{
    if (version_out && size != 0)
        *version_out = '\0';
    char line[64] = "";
    file_line(DOWNLOADED_VERSION, line, sizeof line);
    line[strcspn(line, "\n")] = '\0';
    if (cfg_isNewVersion(line) != 0 || !file_check(DOWNLOADED_IMAGE)) {
        remove(DOWNLOADED_VERSION);
        remove(DOWNLOADED_IMAGE);
        return -1;
    }
    if (version_out)
        format(version_out, size, "%s", line);
    return 0;
}

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
