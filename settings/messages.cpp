#include "settings/frame.h"

#include <string.h>
#include <sys/ipc.h>
#include <sys/msg.h>

using namespace cfg_set;

constexpr key_t QUEUE_KEY = 5678;
constexpr size_t BODY_SIZE = 292;
constexpr long RECORDING = 7;

// The receivers' layout, after a type of the platform's `long`.
constexpr size_t BODY = offsetof(daemon_message, command);
static_assert(BODY == sizeof(long), "the body follows the type");
static_assert(offsetof(daemon_message, param) - BODY == 4, "param");
static_assert(sizeof(daemon_message::param) == MSG_PARAM_LEN, "param");
static_assert(offsetof(daemon_message, value) - BODY == 268, "value");
static_assert(offsetof(daemon_message, reserved2) - BODY == 272, "reserved2");
static_assert(BODY + BODY_SIZE <= sizeof(daemon_message), "the body is whole");
static_assert(sizeof(long) != 4 || sizeof(daemon_message) == 296, "the record on the target");

int cfg_sendMsg(const struct daemon_message *message)
{
    const int queue = msgget(QUEUE_KEY, IPC_CREAT | 0666);
    if (queue < 0) {
        REPORT("msgget fail");
        return -1;
    }
    if (msgsnd(queue, message, BODY_SIZE, IPC_NOWAIT) != 0) {
        REPORT("msgsnd fail");
        return -1;
    }
    return 0;
}

int cfg_setRec(uint32_t command, const void *params, uint32_t length)
{
    daemon_message message = {};
    message.msg_type = RECORDING;
    message.command = command;
    if (params && length > MSG_PARAM_LEN) {
        REPORT("dwParamLen[%lu] > MSG_PARAM_LEN[%d]", (unsigned long)length, MSG_PARAM_LEN);
        return -1;
    }
    if (params)
        memcpy(message.param, params, length);
    return result_of("cfg_sendMsg", cfg_sendMsg(&message), HERE);
}
