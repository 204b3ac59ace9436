// param: the parameter store's shell tool. The firmware's scripts read settings
// with it ("param get KEY").

#include "desk/log.h"
#include "desk/param_store.h"
#include "platform/param_store.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

static constexpr int NOT_FOUND = 1;
static constexpr int USAGE = 2;
static constexpr int STORE_FAILED = 3;

static int usage()
{
    std::fputs("usage: param get KEY | set KEY VALUE | unset KEY | save | list\n", stderr);
    return USAGE;
}

static int store_failed(const char *what)
{
    std::fprintf(stderr, "param: cannot %s: %s\n", what, std::strerror(errno));
    return STORE_FAILED;
}

// A full disk or a closed pipe must not look like success.
static int printed()
{
    return std::fflush(stdout) == 0 ? 0 : store_failed("print");
}

static int get(const char *key)
{
    const auto settings = desk::all_settings();
    if (!settings)
        return store_failed("read the store");
    const auto found = settings->find(key);
    if (found == settings->end()) {
        std::fprintf(stderr, "param: no value for %s\n", key);
        return NOT_FOUND;
    }
    std::fwrite(found->second.data(), 1, found->second.size(), stdout);
    std::putchar('\n');
    return printed();
}

static int list()
{
    const auto settings = desk::all_settings();
    if (!settings)
        return store_failed("read the store");
    for (const auto &[key, value] : *settings)
        std::printf("%s=%s\n", key.c_str(), desk::escaped(value).c_str());
    return printed();
}

int main(int argc, char **argv)
{
    const std::string_view verb = argc > 1 ? argv[1] : "";
    if (verb == "get" && argc == 3)
        return get(argv[2]);
    if (verb == "set" && argc == 4)
        return param_set(argv[2], argv[3]) == 0 ? 0 : store_failed("store the value");
    if (verb == "unset" && argc == 3)
        return param_unset(argv[2]) == 0 ? 0 : store_failed("remove the value");
    if (verb == "save" && argc == 2)
        return param_save() == 0 ? 0 : store_failed("save the store");
    if (verb == "list" && argc == 2)
        return list();
    return usage();
}
