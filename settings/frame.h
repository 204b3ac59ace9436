// Helpers that every file of the library uses: reports, bounded formatting,
// commands, files, and text that becomes a number.
#pragma once

#include "cfg_set.h"

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

namespace cfg_set
{

// Bytes of the standard value buffer, with the terminator.
constexpr size_t VALUE_SIZE = 256;

// Bytes of the stream buffer for a file of one line. With fewer than 128 glibc
// writes at once, and fclose no longer tells whether it worked.
constexpr size_t SMALL_FILE_SIZE = 128;

// Reports with the name and line of the function that contains them: on standard
// output, on standard error, and with the module's name.
#define REPORT(text, ...) report(HERE, text, ##__VA_ARGS__)
#define REPORT_ERROR(text, ...)                                                                    \
    fprintf(stderr, "[%s %d] " text "\n", __func__, __LINE__, ##__VA_ARGS__)
#define REPORT_MODULE(text, ...) REPORT_MODULE_AS(__func__, text, ##__VA_ARGS__)
#define REPORT_MODULE_AS(function, text, ...) report_module(function, __LINE__, text, ##__VA_ARGS__)

// For helpers that report on behalf of the function that calls them.
#define HERE __func__, __LINE__

// Print "[FUNCTION LINE] TEXT" and a newline with one printf, and return its result.
int report(const char *function, int line, const char *text, ...)
    __attribute__((format(printf, 3, 4)));
int report_module(const char *function, int line, const char *text, ...)
    __attribute__((format(printf, 3, 4)));

// snprintf that returns whether the whole text fitted; a cut text is terminated.
bool format(char *buffer, size_t size, const char *text, ...) __attribute__((format(printf, 3, 4)));

// Runs a shell command line in the foreground and ignores its exit code.
void run(const char *command);

// Sleeps for at most a second, also when signals arrive.
void wait_for(long nanoseconds);

// Kinds of text from outside that become part of a command line. Convention 6 of
// cfg_set.h says what each refuses.
enum Word {
    SOUND_WORD, // path or name of a sound, or a language
    ZONE_WORD,  // name of a zone file
    SERVER_WORD // time server
};

// Whether a shell takes the text literally: as one word, or as several words
// separated by blanks. Nothing in it ends a quotation or matches a file name.
bool harmless(const char *text, Word kind);

// fgets that continues after a signal and loses nothing. 1 when there is a line;
// 0 at the end, with `line` unchanged; -1, with an empty `line`, on a read error.
int read_line(FILE *stream, char *line, int size);

// read_line of the first line that `command` prints, with errno 0 at its end;
// NOT_STARTED, with `line` unchanged, when the command cannot be started.
constexpr int NOT_STARTED = -2;
int command_line(const char *command, char *line, int size);

// read_line of the first line of the file. False when it cannot be opened.
bool file_line(const char *path, char *line, int size);

// One read of at most `size` - 1 bytes, terminated. The count of bytes, 0 when
// none could be read, -1 (and `block` unchanged) when the file cannot be opened.
int file_block(const char *path, char *block, size_t size);

// The number in the first line of the file, of which 31 characters count, 0
// when it is empty; `missing` when the file cannot be opened.
int file_number(const char *path, int missing);

// Writes `length` bytes to the file, created or truncated. False when it cannot be
// opened; whether a driver accepts the bytes is not checked.
bool put_file(const char *path, const char *bytes, size_t length);

// fopen without a buffer: every fread and fwrite is one system call and returns
// its result. Null when the file cannot be opened.
FILE *open_unbuffered(const char *path, const char *mode);

// strtoul into 32 bits, the same on both widths of `long`: trailing characters
// are ignored, no digits give 0, a magnitude beyond 32 bits gives UINT32_MAX
// regardless of its sign, a minus negates any other modulo 2^32.
uint32_t to_number(const char *text, int base);

// atoi, the same on both widths of `long`: a number beyond an int gives its limit.
int to_int(const char *text);

// sscanf's "%d" after the characters `before`, the same on both widths of
// `long`. The rest of the text, or null (and `number` unchanged) when it does not
// begin so.
const char *scan_number(const char *text, const char *before, int *number);

// 0 when the result of the function `called` is 0, else -1 after the caller's
// report "CALLED fail".
int result_of(const char *called, int result, const char *function, int line);

// Lower-cases exactly `length` bytes; a terminator does not stop it.
void toLower(char *buffer, size_t length);

} // namespace cfg_set
