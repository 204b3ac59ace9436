// Stored viewers of any text, one slot to a zero byte: entries stay within
// their places, and a change of the list loses nothing of the others.

#include "cfg_set.h"

#include "platform/viewer_relay.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

static const bool quiet = std::freopen("/dev/null", "w", stdout) != nullptr;
static std::map<std::string, std::string> store;

extern "C" int param_get(const char *key, char *buffer, unsigned size)
{
    if (store.count(key) == 0)
        return -1;
    std::snprintf(buffer, size, "%s", store[key].c_str());
    return 0;
}

extern "C" int param_set(const char *key, const char *text)
{
    store[key] = text;
    return 0;
}

extern "C" int param_unset(const char *key)
{
    store.erase(key);
    return 0;
}

extern "C" int msg2relay(const viewer_relay_msg *message)
{
    return message->once % 2;
}

static void require(bool holds)
{
    if (!holds)
        std::abort();
}

using Viewer = std::vector<std::string>;

static Viewer fields(const viewer_entry &entry)
{
    require(!entry.name[255] && !entry.passcode[31] && !entry.credential[63] && !entry.once[2]);
    return {entry.name, entry.passcode, entry.credential, entry.once};
}

static std::vector<Viewer> listed()
{
    viewer_entry list[11] = {};
    uint8_t count = 0;
    viewer_get_config(&count, list);
    require(count <= 10 && !list[count].name[0]);
    std::vector<Viewer> entries;
    for (uint8_t i = 0; i < count; i++)
        entries.push_back(fields(list[i]));
    return entries;
}

// A change may bring a slot behind the list into sight, but loses no entry.
static bool begins_with(const std::vector<Viewer> &list, const std::vector<Viewer> &entries)
{
    return list.size() >= entries.size() &&
           std::equal(entries.begin(), entries.end(), list.begin());
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    require(quiet);
    store.clear();
    std::string text(data, data + size);
    for (int slot = 0; slot < 12 && !text.empty(); slot++) {
        char key[32];
        std::snprintf(key, sizeof key, "viewer_list_%02d", slot);
        const size_t end = std::min(text.find('\0'), text.size());
        store[key] = text.substr(0, end);
        text.erase(0, end + 1);
    }
    auto entries = listed();
    auto before = store;
    viewer_entry entry = {"new", "1234", "key", "1"};
    const bool added = viewer_add_config(&entry) == 0 && store != before;
    if (added)
        entries.push_back(fields(entry));
    require(added ? begins_with(listed(), entries) : store == before);

    if (entries.empty())
        return 0;
    before = store;
    entries = listed();
    const std::string name = entries[0][0];
    std::snprintf(entry.name, sizeof entry.name, "%s", name.c_str());
    viewer_del_config(&entry);
    if (store == before) // an entry that could not go back kept all
        return 0;
    entries.erase(std::remove_if(entries.begin(), entries.end(),
                                 [&](const Viewer &viewer) { return viewer[0] == name; }),
                  entries.end());
    require(begins_with(listed(), entries));
    return 0;
}
