#include "settings/stored.h"

#include "platform/viewer_relay.h"

#include <string.h>

using namespace cfg_set;

constexpr uint8_t VIEWERS_MAX = 10;
constexpr int LIST_IS_FULL = 10; // result of viewer_add_config
constexpr size_t KEY_SIZE = 32;

static_assert(sizeof(viewer_entry) == 256 + 32 + 64 + 3, "viewer_entry");
static_assert(sizeof(viewer_relay_msg) == 360, "viewer_relay_msg");
static_assert(offsetof(viewer_relay_msg, passcode) == 260, "passcode");
static_assert(offsetof(viewer_relay_msg, credential) == 292, "credential");
static_assert(offsetof(viewer_relay_msg, once) == 356, "once");

static void slot_key(char *key, int slot)
{
    format(key, KEY_SIZE, "viewer_list_%02d", slot);
}

// Whether every field has its terminator, and no field but `once` contains a
// character of `refused`.
static bool fields_end(const struct viewer_entry *entry, const char *refused)
{
    static const uint16_t SIZES[] = {sizeof entry->name, sizeof entry->passcode,
                                     sizeof entry->credential};
    const char *field = entry->name;
    for (const uint16_t size : SIZES) {
        if (!memchr(field, '\0', size) || field[strcspn(field, refused)])
            return false;
        field += size;
    }
    return memchr(field, '\0', sizeof entry->once) != nullptr;
}

// The stored form of an entry, cut to fit. False when it was cut, or when a field
// has no terminator (and `value` is then unchanged).
static bool viewer_value(const struct viewer_entry *entry, char *value)
{
    return fields_end(entry, "") && format(value, VALUE_SIZE, "%s,%s,%s,%s", entry->name,
                                           entry->passcode, entry->credential, entry->once);
}

static bool is_named(const struct viewer_entry *entry, const char *name)
{
    return strncmp(entry->name, name, sizeof entry->name) == 0;
}

// Cuts each field to its size; fields that the text does not reach are unchanged.
static void scan_viewer(const char *value, struct viewer_entry *entry)
{
    char name[VALUE_SIZE];
    char passcode[VALUE_SIZE];
    char credential[VALUE_SIZE];
    char once[VALUE_SIZE];
    const int fields =
        sscanf(value, "%255[^,\n],%255[^,\n],%255[^,\n],%255s", name, passcode, credential, once);
    if (fields >= 1)
        format(entry->name, sizeof entry->name, "%s", name);
    if (fields >= 2)
        format(entry->passcode, sizeof entry->passcode, "%s", passcode);
    if (fields >= 3)
        format(entry->credential, sizeof entry->credential, "%s", credential);
    if (fields >= 4)
        format(entry->once, sizeof entry->once, "%s", once);
}

// Into a cleared buffer. A field without a terminator loses its last character.
static void copy_field(char *copy, const char *field, size_t size)
{
    for (; size > 1 && *field; size--)
        *copy++ = *field++;
}

static int tell_relay(int32_t command, const struct viewer_entry *entry)
{
    viewer_relay_msg message = {};
    message.command = command;
    copy_field(message.name, entry->name, sizeof message.name);
    copy_field(message.passcode, entry->passcode, sizeof message.passcode);
    copy_field(message.credential, entry->credential, sizeof message.credential);
    const char once[] = {entry->once[0], entry->once[1], '\0'};
    message.once = to_int(once);
    return msg2relay(&message);
}

int viewer_get_config(uint8_t *count, struct viewer_entry *list)
{
    uint8_t read = 0;
    for (; read < VIEWERS_MAX; read++) {
        viewer_entry *entry = &list[read];
        char key[KEY_SIZE];
        slot_key(key, read);
        char value[VALUE_SIZE] = "";
        if (param_get(key, value, sizeof value) != 0) {
            REPORT_MODULE("param_get fail");
            break;
        }
        if (!*value)
            break;
        scan_viewer(value, entry);
        // Fields that the text does not reach are the caller's: they may lack a terminator.
        REPORT_MODULE("name        = %.256s", entry->name);
        REPORT_MODULE("passcode    = %.32s", entry->passcode);
        REPORT_MODULE("credential  = %.64s", entry->credential);
        REPORT_MODULE("once        = %.3s", entry->once);
        REPORT_MODULE("buf         = %s", value);
    }
    *count = read;
    return 0;
}

// Stores the list, each entry cut to fit. Always reports as the setter.
static void store_viewers(uint8_t count, const struct viewer_entry *list)
{
    static const char SETTER[] = "viewer_set_config";
    for (uint8_t i = 0; i < count; i++) {
        char key[KEY_SIZE];
        slot_key(key, i);
        char value[VALUE_SIZE];
        viewer_value(&list[i], value);
        REPORT_MODULE_AS(SETTER, "nvram   = %s", key);
        REPORT_MODULE_AS(SETTER, "buf     = %s", value);
        if (param_set(key, value) != 0) {
            REPORT_MODULE_AS(SETTER, "param_set fail");
            break;
        }
    }
}

int viewer_set_config(uint8_t count, const struct viewer_entry *list)
{
    for (uint8_t i = 0; i < count; i++) {
        char value[VALUE_SIZE];
        if (!viewer_value(&list[i], value)) {
            REPORT_MODULE("viewer is too long");
            return 0;
        }
    }
    store_viewers(count, list);
    return 0;
}

int viewer_add_config(const struct viewer_entry *entry)
{
    viewer_entry list[VIEWERS_MAX] = {};
    uint8_t count;
    viewer_get_config(&count, list);
    if (count == VIEWERS_MAX) {
        REPORT_MODULE("Viewer List (%d) has achieved Max number", count);
        return LIST_IS_FULL;
    }
    for (uint8_t i = 0; i < count; i++) {
        if (is_named(&list[i], entry->name)) {
            REPORT_MODULE("viewer has been in viewerlist");
            return 0;
        }
    }
    char value[VALUE_SIZE];
    if (!*entry->name || !fields_end(entry, ",\n") || !viewer_value(entry, value)) {
        REPORT_MODULE("invalid viewer");
        return -1;
    }
    list[count] = *entry;
    store_viewers((uint8_t)(count + 1), list);
    REPORT_MODULE("add new viewer to nvram n = %d", count);
    if (tell_relay(VIEWER_RELAY_ADD, entry) != 0)
        REPORT_MODULE("add new viewer to relay failed.");
    REPORT_MODULE("add new viewer to relay server db.");
    return 0;
}

int viewer_del_config(const struct viewer_entry *entry)
{
    viewer_entry list[VIEWERS_MAX] = {};
    uint8_t count;
    viewer_get_config(&count, list);
    uint8_t kept = 0;
    for (uint8_t i = 0; i < count; i++) {
        if (!is_named(&list[i], entry->name)) {
            REPORT_MODULE("index i[%d] is not that viewer", i);
            list[kept++] = list[i];
            continue;
        }
        REPORT_MODULE("deleted viewer has found:%s", list[i].name);
        if (tell_relay(VIEWER_RELAY_DELETE, entry) != 0)
            REPORT_MODULE("delete viewer from relay server failed.");
        REPORT_MODULE("delete viewer from relay server success.");
    }
    if (kept == count) {
        REPORT_MODULE("viewer has not been in viewerlist:%d", count);
        return 0;
    }
    for (uint8_t i = 0; i < count; i++) {
        char key[KEY_SIZE];
        slot_key(key, i);
        REPORT_MODULE("clear viewer  in nvram:%s", key);
        param_unset(key);
    }
    store_viewers(kept, list);
    return 0;
}
