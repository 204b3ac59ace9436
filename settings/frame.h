// What every file of the library is written with: the report form, bounded
// formatting, commands, and the reading of stored numbers.
#pragma once

#include "cfg_set.h"
#include "platform/param_store.h"

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

// Bytes of the standard value buffer, with the terminator.
constexpr size_t VALUE_SIZE = 256;

// A report on standard output, in the name and line of the function it stands in.
#define REPORT(text, ...) printf("[%s %d] " text "\n", __func__, __LINE__, ##__VA_ARGS__)

// For helpers that report on behalf of the function that calls them.
#define HERE __func__, __LINE__

// snprintf that tells whether the whole text fitted; a cut text is terminated.
bool format(char *buffer, size_t size, const char *text, ...) __attribute__((format(printf, 3, 4)));

// Runs a shell command line in the foreground. Exit codes are never examined.
void run(const char *command);

// strtoul into 32 bits, the same on both widths of `long`: trailing characters
// are ignored, no digits give 0, too large a number gives UINT32_MAX.
uint32_t to_number(const char *text, int base);

// First half of a restorer: the stored number of `key`, base 10. A failed read
// is reported for the caller as "param_get fail".
bool stored_number(const char *key, uint32_t *value, const char *function, int line);

// Second half of a saver or restorer: 0 when the setter's result is 0, else -1
// after the caller's report "SETTER fail".
int applied(const char *setter, int result, const char *function, int line);

// Lower-cases exactly `length` bytes; a terminator does not stop it.
void toLower(char *buffer, size_t length);
