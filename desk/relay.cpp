// The relay client of the desk camera: decodes each record and appends it to the
// camera's log. If the file /etc/desk/relay.down exists, every call fails, as if
// the relay client did not run.

#include "desk/log.h"
#include "platform/relay_ipc.h"
#include "platform/viewer_relay.h"

#include <cstring>
#include <string>
#include <unistd.h>

static bool relay_is_down()
{
    return access("/etc/desk/relay.down", F_OK) == 0;
}

template <size_t SIZE> static std::string field(const char (&text)[SIZE])
{
    return desk::quoted(std::string_view(text, strnlen(text, SIZE)));
}

void *appipc_init(const char *client_name)
{
    if (relay_is_down()) {
        desk::log("relay", "refused " + desk::quoted(client_name));
        return nullptr;
    }
    desk::log("relay", "connected " + desk::quoted(client_name));
    return new char;
}

void appipc_set_uint32(void *buffer, uint32_t value)
{
    std::memcpy(buffer, &value, sizeof value);
}

int appipc_send(void *, int option, int type, unsigned int length, const void *buffer)
{
    if (relay_is_down())
        return -1;
    uint32_t text_length = 0;
    std::string_view text;
    if (length >= sizeof text_length) {
        std::memcpy(&text_length, buffer, sizeof text_length);
        text = {static_cast<const char *>(buffer) + sizeof text_length,
                length - sizeof text_length};
    }
    desk::log("relay", "sent type=" + std::to_string(type) + " option=" + std::to_string(option) +
                           " bytes=" + std::to_string(length) +
                           " length=" + std::to_string(text_length) + " " + desk::escaped(text));
    return 0;
}

void appipc_destroy(void *handle)
{
    delete static_cast<char *>(handle);
    desk::log("relay", "closed");
}

int msg2relay(const viewer_relay_msg *message)
{
    std::string command = std::to_string(message->command);
    if (message->command == VIEWER_RELAY_ADD)
        command = "add";
    if (message->command == VIEWER_RELAY_DELETE)
        command = "delete";
    desk::log("relay", "viewer " + command + " name=" + field(message->name) + " passcode=" +
                           field(message->passcode) + " credential=" + field(message->credential) +
                           " once=" + std::to_string(message->once));
    return relay_is_down() ? -1 : 0;
}
