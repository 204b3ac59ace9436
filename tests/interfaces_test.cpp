// Whether the interfaces are up, by listings of their addresses.

#include "cfg_set.h"
#include "doubles.h"
#include "firmware/board.h"

#include <ifaddrs.h>
#include <netdb.h>
#include <netinet/in.h>

using namespace cfg_set;
using namespace doubles;

static std::vector<ifaddrs> listing;
static std::vector<sockaddr_in> addresses;

extern "C" {

int getifaddrs(ifaddrs **list)
{
    calls.emplace_back("list");
    *list = listing.data();
    return refused.count("list") ? -1 : 0;
}

void freeifaddrs(ifaddrs *list)
{
    calls.emplace_back(list == listing.data() ? "free" : "free another");
}

int getnameinfo(const sockaddr *address, socklen_t length, char *host, socklen_t size,
                char *service, // NOLINT(readability-non-const-parameter): as the C library has it
                socklen_t service_size, int flags)
{
    const int number = reinterpret_cast<const sockaddr_in *>(address)->sin_port;
    const bool as_meant = length == sizeof(sockaddr_in) && size == 1025 && !*host && !service &&
                          service_size == 0 && flags == NI_NUMERICHOST;
    calls.push_back("name of " + words(number, as_meant));
    *host = refused.count("name") ? '\0' : '1';
    return EAI_FAIL; // which nobody looks at
}

} // extern "C"

using InterfacesTest = LibraryTest;

// clang-format off
using Entry = std::pair<const char *, int>; // a name and a family; 0: without an address

// What is said of these addresses, on a board with or without Ethernet (-1: not yet known).
static int with(const std::vector<Entry> &entries, int (*is_up)(), int ethernet = 1)
{
    eth_support = ethernet;
    listing.assign(entries.size(), {});
    addresses.assign(entries.size(), {});
    for (size_t i = 0; i < entries.size(); i++) {
        addresses[i].sin_family = static_cast<sa_family_t>(entries[i].second);
        addresses[i].sin_port = static_cast<in_port_t>(i);
        listing[i].ifa_name = const_cast<char *>(entries[i].first);
        listing[i].ifa_addr = entries[i].second ? reinterpret_cast<sockaddr *>(&addresses[i]) : nullptr;
        listing[i].ifa_next = i + 1 < entries.size() ? &listing[i + 1] : nullptr;
    }
    return is_up();
}

TEST_F(InterfacesTest, AnInterfaceIsUpOnceItHasAnIpv4Address)
{
    const Calls no = {"list", "free"};
    const std::string lost = ": Error getting interface IP addresses.";
    check({
        {CALL(with({}, cfg_wlan_is_up)), 0, no},
        {CALL(with({{"wlan0", 0}, {"eth0", AF_INET}}, cfg_wlan_is_up)), 0, no},
        {CALL(with({{"wlan0", AF_INET6}, {"wlan0", AF_PACKET}}, cfg_wlan_is_up)), 0, no},
        {CALL(with({{"wlan0:1", AF_INET}, {"wlan", AF_INET}, {"WLAN0", AF_INET}}, cfg_wlan_is_up)), 0, no},
        {CALL(with({{"wlan0", AF_INET6}, {"wlan0", 0}, {"wlan0", AF_INET}, {"wlan0", AF_INET}}, cfg_wlan_is_up, 0)), 1,
            {"list", "name of 2 1", "free"}},
        {CALL(with({{"wlan0", AF_INET}, {"eth0:1", AF_INET}, {"eth0", AF_INET6}}, cfg_eth_is_up)), 0, no},
        {CALL(with({{"wlan0", AF_INET}, {"eth0", AF_INET}}, cfg_eth_is_up)), 1, {"list", "name of 1 1", "free"}},
        {CALL(with({{"eth0", AF_INET}}, cfg_eth_is_up, 0)), 0},
        {CALL(with({{"eth0", AF_INET}}, cfg_eth_is_up, 2)), 0},
        {{{"$ board hwver", "200"}}, CALL(with({{"eth0", AF_INET}}, cfg_eth_is_up, -1)), 1,
            {"popen board hwver", "list", "name of 0 1", "free"}},
        {{}, {"name"}, CALL(with({{"wlan0", AF_INET}}, cfg_wlan_is_up)), 0, {"list", "name of 0 1", "free"}},
        {{}, {"list"}, CALL(with({}, cfg_eth_is_up)), 0, {"list"}, "! | cfg_eth_is_up()" + lost},
        {{}, {"list"}, CALL(with({}, cfg_wlan_is_up)), 0, {"list"}, "! | cfg_wlan_is_up()" + lost},
    });
}
// clang-format on
