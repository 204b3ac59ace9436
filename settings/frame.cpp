#include "settings/frame.h"

#include <ctype.h>
#include <fcntl.h>
#include <limits.h>
#include <stdarg.h>
#include <stdlib.h>
#include <unistd.h>

bool format(char *buffer, size_t size, const char *text, ...)
{
    va_list arguments;
    va_start(arguments, text);
    const int length = vsnprintf(buffer, size, text, arguments);
    va_end(arguments);
    return length >= 0 && (size_t)length < size;
}

void run(const char *command)
{
    const int status = system(command);
    (void)status;
}

bool command_line(const char *command, char *line, int size)
{
    FILE *pipe = popen(command, "r");
    if (!pipe)
        return false;
    const bool read = fgets(line, size, pipe) != nullptr;
    pclose(pipe);
    return read;
}

bool file_line(const char *path, char *line, int size)
{
    FILE *file = fopen(path, "r");
    if (!file)
        return false;
    const char *end = fgets(line, size, file);
    (void)end;
    fclose(file);
    return true;
}

int file_block(const char *path, char *block, size_t size)
{
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return -1;
    const ssize_t length = read(file, block, size - 1);
    close(file);
    block[length > 0 ? length : 0] = '\0';
    return length > 0 ? (int)length : 0;
}

int file_number(const char *path, int missing)
{
    char text[32] = "";
    return file_line(path, text, sizeof text) ? to_int(text) : missing;
}

bool put_file(const char *path, const char *bytes, size_t length)
{
    FILE *file = fopen(path, "w");
    if (!file)
        return false;
    fwrite(bytes, 1, length, file);
    fclose(file);
    return true;
}

FILE *open_unbuffered(const char *path, const char *mode)
{
    FILE *file = fopen(path, mode);
    if (file)
        setvbuf(file, nullptr, _IONBF, 0);
    return file;
}

uint32_t to_number(const char *text, int base)
{
    char *end;
    const unsigned long number = strtoul(text, &end, base);
    return number > UINT32_MAX ? UINT32_MAX : (uint32_t)number;
}

int to_int(const char *text)
{
    const long number = strtol(text, nullptr, 10);
    if (number > INT_MAX)
        return INT_MAX;
    return number < INT_MIN ? INT_MIN : (int)number;
}

int stored_int(const char *key, unsigned size)
{
    char text[VALUE_SIZE] = "";
    param_get(key, text, size);
    return to_int(text);
}

bool stored_text(const char *key, char *text, unsigned size, const char *function, int line)
{
    if (param_get(key, text, size) == 0)
        return true;
    printf("[%s %d] param_get fail\n", function, line);
    return false;
}

bool put_setting(const char *key, const char *text, const char *function, int line)
{
    if (param_set(key, text) == 0)
        return true;
    printf("[%s %d] param_set fail\n", function, line);
    return false;
}

bool stored_number(const char *key, uint32_t *value, const char *function, int line)
{
    char text[VALUE_SIZE];
    if (!stored_text(key, text, sizeof text, function, line))
        return false;
    *value = to_number(text, 10);
    return true;
}

int applied(const char *setter, int result, const char *function, int line)
{
    if (result == 0)
        return 0;
    printf("[%s %d] %s fail\n", function, line, setter);
    return -1;
}

void toLower(char *buffer, size_t length)
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
