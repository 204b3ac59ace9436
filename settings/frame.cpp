#include "settings/frame.h"

#include <ctype.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

using namespace cfg_set;

bool cfg_set::format(char *buffer, size_t size, const char *text, ...)
{
    va_list arguments;
    va_start(arguments, text);
    const int length = vsnprintf(buffer, size, text, arguments);
    va_end(arguments);
    return length >= 0 && (size_t)length < size;
}

bool cfg_set::harmless(const char *text, Word kind)
{
    // A folder precedes the name of a zone file, so it is never taken for an option.
    if (kind == ZONE_WORD ? strstr(text, "..") != nullptr : *text == '-')
        return false;
    const char *refused = "~# ;&|<>()$`\\\"'*?[\x7f";
    if (kind == SOUND_WORD)
        refused += strlen("~# ");
    if (text[strcspn(text, refused)])
        return false;
    bool begins = true; // a word of a sound
    for (; *text; text++) {
        if ((unsigned char)*text < ' ' || (begins && (*text == '~' || *text == '#')))
            return false;
        begins = *text == ' ';
    }
    return true;
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral" // callers' texts are checked where they stand
static int report_list(const char *module, const char *function, int line, const char *text,
                       va_list arguments)
{
    char whole[VALUE_SIZE]; // holds every text of the library: a test looks at all of them
    if (!format(whole, sizeof whole, "[%s%s %d] %s\n", module, function, line, text))
        return -1;
    return vprintf(whole, arguments);
}
#pragma GCC diagnostic pop

int cfg_set::report(const char *function, int line, const char *text, ...)
{
    va_list arguments;
    va_start(arguments, text);
    const int length = report_list("", function, line, text, arguments);
    va_end(arguments);
    return length;
}

int cfg_set::report_module(const char *function, int line, const char *text, ...)
{
    va_list arguments;
    va_start(arguments, text);
    const int length = report_list("cfg_set ", function, line, text, arguments);
    va_end(arguments);
    return length;
}

void cfg_set::run(const char *command)
{
    const int status = system(command);
    (void)status;
}

void cfg_set::wait_for(long nanoseconds)
{
    constexpr long SECOND = 1000000000;
    timespec end;
    clock_gettime(CLOCK_MONOTONIC, &end);
    end.tv_nsec += nanoseconds; // stays below 2^31
    if (end.tv_nsec >= SECOND) {
        end.tv_nsec -= SECOND;
        end.tv_sec++;
    }
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR)
        continue;
}

int cfg_set::read_line(FILE *stream, char *line, int size)
{
    int length = 0;
    int character = 0;
    while (length < size - 1 && character != '\n') {
        character = fgetc(stream);
        if (character != EOF) {
            line[length++] = (char)character;
            continue;
        }
        if (!ferror(stream))
            break;
        if (errno != EINTR) {
            *line = '\0';
            return -1;
        }
        clearerr(stream);
        errno = 0; // an end of the stream sets none
    }
    if (size <= 0 || (length == 0 && character == EOF))
        return 0;
    line[length] = '\0';
    return 1;
}

int cfg_set::command_line(const char *command, char *line, int size)
{
    FILE *pipe = popen(command, "re");
    if (!pipe)
        return NOT_STARTED;
    errno = 0; // an end sets none, and an old one would be misleading
    const int read = read_line(pipe, line, size);
    const int error = errno;
    pclose(pipe);
    errno = error;
    return read;
}

bool cfg_set::file_line(const char *path, char *line, int size)
{
    FILE *file = fopen(path, "re");
    if (!file)
        return false;
    char buffer[SMALL_FILE_SIZE]; // or stdio asks how large to make one, and allocates it
    setvbuf(file, buffer, _IOFBF, sizeof buffer);
    read_line(file, line, size);
    fclose(file);
    return true;
}

int cfg_set::file_block(const char *path, char *block, size_t size)
{
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return -1;
    const ssize_t length = read(file, block, size - 1);
    close(file);
    block[length > 0 ? length : 0] = '\0';
    return length > 0 ? (int)length : 0;
}

int cfg_set::file_number(const char *path, int missing)
{
    char text[32] = "";
    return file_line(path, text, sizeof text) ? to_int(text) : missing;
}

bool cfg_set::put_file(const char *path, const char *bytes, size_t length)
{
    FILE *file = open_unbuffered(path, "we");
    if (!file)
        return false;
    fwrite(bytes, 1, length, file);
    fclose(file);
    return true;
}

FILE *cfg_set::open_unbuffered(const char *path, const char *mode)
{
    FILE *file = fopen(path, mode);
    if (file)
        setvbuf(file, nullptr, _IONBF, 0);
    return file;
}

uint32_t cfg_set::to_number(const char *text, int base)
{
    // strtoul negates in the width of `long`; negating again gives the magnitude.
    // A magnitude beyond `long` gives ULONG_MAX, which becomes UINT32_MAX.
    const unsigned long number = strtoul(text, nullptr, base);
    const bool negated = text[strspn(text, " \t\n\v\f\r")] == '-';
    const unsigned long magnitude = negated ? -number : number;
    return magnitude > UINT32_MAX ? UINT32_MAX : (uint32_t)number;
}

int cfg_set::to_int(const char *text)
{
    const long number = strtol(text, nullptr, 10);
    if (number > INT_MAX)
        return INT_MAX;
    return number < INT_MIN ? INT_MIN : (int)number;
}

const char *cfg_set::scan_number(const char *text, const char *before, int *number)
{
    const size_t length = strlen(before);
    if (strncmp(text, before, length) != 0)
        return nullptr;
    text += length;
    char *end;
    strtol(text, &end, 10);
    if (end == text)
        return nullptr;
    *number = to_int(text);
    return end;
}

int cfg_set::result_of(const char *called, int result, const char *function, int line)
{
    if (result == 0)
        return 0;
    report(function, line, "%s fail", called);
    return -1;
}

void cfg_set::toLower(char *buffer, size_t length)
{
    for (size_t i = 0; i < length; i++)
        buffer[i] = (char)tolower((unsigned char)buffer[i]);
}

int get_from_lang_file(char *buffer, size_t size)
{
    const int file = open("/mnt/sdcard/morvenix/lang", O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return -1;
    const ssize_t length = read(file, buffer, size);
    close(file);
    for (ssize_t i = 0; i < length; i++) {
        if (buffer[i] == '\r' || buffer[i] == '\n') {
            buffer[i] = '\0';
            break;
        }
    }
    return 0;
}

int file_check(const char *path)
{
    if (!path)
        return 0;
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return 0;
    close(file);
    return 1;
}
