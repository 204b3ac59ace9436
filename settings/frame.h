// What every file of the library is written with: the report form, bounded
// formatting, commands, and the reading of stored numbers.
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

// Reports, in the name and line of the function they stand in: on standard
// output, on standard error, and with the module's name.
#define REPORT(text, ...) report(HERE, text, ##__VA_ARGS__)
#define REPORT_ERROR(text, ...)                                                                    \
    fprintf(stderr, "[%s %d] " text "\n", __func__, __LINE__, ##__VA_ARGS__)
#define REPORT_MODULE(text, ...) REPORT_MODULE_AS(__func__, text, ##__VA_ARGS__)
#define REPORT_MODULE_AS(function, text, ...) report_module(function, __LINE__, text, ##__VA_ARGS__)

// For helpers that report on behalf of the function that calls them.
#define HERE __func__, __LINE__

// One printf, whose result they return, of "[FUNCTION LINE] TEXT" and a newline.
// They add the bracket and the newline, so that no text has to hold them.
int report(const char *function, int line, const char *text, ...)
    __attribute__((format(printf, 3, 4)));
int report_module(const char *function, int line, const char *text, ...)
    __attribute__((format(printf, 3, 4)));

// snprintf that tells whether the whole text fitted; a cut text is terminated.
bool format(char *buffer, size_t size, const char *text, ...) __attribute__((format(printf, 3, 4)));

// Runs a shell command line in the foreground. Exit codes are never examined.
void run(const char *command);

// Sleeps for at most a second, also when signals arrive.
void wait_for(long nanoseconds);

// What a text from outside is, that becomes part of a command line. Convention 6
// of cfg_set.h says what is refused in each.
enum Word {
    SOUND_WORD, // path or name of a sound, or a language
    ZONE_WORD,  // name of a zone file
    SERVER_WORD // time server
};

// Whether a shell takes the text as it stands: as one word, or as several with
// a blank between them. Nothing in it ends a quotation or matches a file.
bool harmless(const char *text, Word kind);

// fgets that a signal neither ends nor costs what it has read. 1 when there is a
// line; 0 at the end, with `line` as it was; -1, and an empty `line`, when
// reading fails.
int read_line(FILE *stream, char *line, int size);

// read_line of the first line that `command` prints, with errno 0 at its end;
// NOT_STARTED, with `line` as it was, when the command cannot be started.
constexpr int NOT_STARTED = -2;
int command_line(const char *command, char *line, int size);

// read_line of the first line of the file. False when it cannot be opened.
bool file_line(const char *path, char *line, int size);

// One read of at most `size` - 1 bytes, terminated. The count of bytes, 0 when
// none could be read, -1 (and `block` as it was) when the file cannot be opened.
int file_block(const char *path, char *block, size_t size);

// The number in the first line of the file, of which 31 characters count, 0
// when it is empty; `missing` when the file cannot be opened.
int file_number(const char *path, int missing);

// Puts `length` bytes into the file, created or truncated. False when it
// cannot be opened; what the driver behind it makes of the bytes is not known.
bool put_file(const char *path, const char *bytes, size_t length);

// fopen without a buffer: every fread and fwrite goes to the file at once, in
// one piece, and its result is the file's own. Null when it cannot be opened.
FILE *open_unbuffered(const char *path, const char *mode);

// strtoul into 32 bits, the same on both widths of `long`: trailing characters
// are ignored, no digits give 0, a magnitude beyond 32 bits gives UINT32_MAX
// whatever its sign, any other is negated modulo 2^32 by a minus.
uint32_t to_number(const char *text, int base);

// atoi, the same on both widths of `long`: what is beyond an int gives its limit.
int to_int(const char *text);

// sscanf's "%d" after the characters `before`, the same on both widths of
// `long`. The rest of the text, or null (and `number` as it was) when it does
// not begin so.
const char *scan_number(const char *text, const char *before, int *number);

// 0 when the result of the function `called` is 0, else -1 after the caller's
// report "CALLED fail".
int result_of(const char *called, int result, const char *function, int line);

// Lower-cases exactly `length` bytes; a terminator does not stop it.
void toLower(char *buffer, size_t length);

} // namespace cfg_set
