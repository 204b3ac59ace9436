/*
 * A platform library to start a port with: a parameter store in a file, and a
 * relay that drops everything. Copy it, then replace it with the firmware's own,
 * function by function.
 */
#include <cfg_set/platform/param_store.h>
#include <cfg_set/platform/relay_ipc.h>
#include <cfg_set/platform/viewer_relay.h>

#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/file.h>
#include <unistd.h>

#define SAVED "/etc/cfg_set.store" /* the settings after a restart */
#define WORKING                                                                                    \
    "/var/run/cfg_set.store" /* the current settings, in RAM; exists after the first change */
#define LOCK "/var/run/cfg_set.lock"
#define LINE_SIZE 1024 /* bytes of a stored line, "KEY=VALUE\n", and its NUL */

static const char *current(void)
{
    return access(WORKING, F_OK) == 0 ? WORKING : SAVED;
}

/* The value in a line of the store, or NULL when the line is not the key's. */
static char *value_of(const char *key, char *line)
{
    const size_t length = strlen(key);
    return strncmp(line, key, length) == 0 && line[length] == '=' ? line + length + 1 : NULL;
}

/* Writes the lines of `from` except the key's, then the new one, if any. */
static int write_lines(FILE *to, const char *from, const char *key, const char *text)
{
    char line[LINE_SIZE];
    FILE *old = fopen(from, "r");
    while (old && fgets(line, sizeof line, old))
        if (!value_of(key, line))
            fputs(line, to);
    if (old)
        fclose(old);
    if (text)
        fprintf(to, "%s=%s\n", key, text);
    return fflush(to) == 0 && !ferror(to) && fsync(fileno(to)) == 0;
}

/* Replaces `to` with the changed lines of `from`, completely or not at all. */
static int rewrite(const char *from, const char *to, const char *key, const char *text)
{
    char made[64];
    snprintf(made, sizeof made, "%s.new", to);
    const int descriptor = open(made, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    FILE *file = descriptor < 0 ? NULL : fdopen(descriptor, "w");
    if (!file)
        return -1;
    const int whole = write_lines(file, from, key, text);
    return fclose(file) == 0 && whole && rename(made, to) == 0 ? 0 : -1;
}

/* One change at a time across all processes. Readers see the old or the new file. */
static int change(const char *key, const char *text)
{
    const int lock = open(LOCK, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (lock < 0)
        return -1;
    int result = -1;
    if (flock(lock, LOCK_EX) == 0)
        result = key ? rewrite(current(), WORKING, key, text) : rewrite(current(), SAVED, "", NULL);
    close(lock);
    return result;
}

int param_get(const char *key, char *buffer, unsigned int size)
{
    char line[LINE_SIZE];
    const char *value = NULL;
    FILE *file = fopen(current(), "r");
    while (file && !value && fgets(line, sizeof line, file))
        value = value_of(key, line);
    if (file)
        fclose(file);
    if (!value)
        return -1;
    line[strcspn(line, "\n")] = '\0';
    snprintf(buffer, size, "%s", value); /* cuts a longer one */
    return 0;
}

int param_set(const char *key, const char *text)
{
    if (!text || strchr(text, '\n') || strlen(key) + strlen(text) + sizeof "=\n" > LINE_SIZE)
        return -1;
    return change(key, text);
}

int param_unset(const char *key)
{
    return change(key, NULL);
}

int param_save(void)
{
    return change(NULL, NULL);
}

int msg2relay(const struct viewer_relay_msg *message)
{
    (void)message;
    return 0;
}

void *appipc_init(const char *client_name)
{
    static char connection;
    (void)client_name;
    return &connection;
}

void appipc_set_uint32(void *buffer, uint32_t value)
{
    memcpy(buffer, &value, sizeof value);
}

int appipc_send(void *handle, int option, int type, unsigned int length, const void *buffer)
{
    (void)handle, (void)option, (void)type, (void)length, (void)buffer;
    return 0;
}

void appipc_destroy(void *handle)
{
    (void)handle;
}
