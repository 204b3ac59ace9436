#include "settings/frame.h"

#include <ifaddrs.h>
#include <netdb.h>
#include <netinet/in.h>
#include <string.h>

using namespace cfg_set;

constexpr size_t HOST_SIZE = 1025;

static bool is_ipv4_of(const char *interface, const ifaddrs *entry)
{
    return entry->ifa_addr && strcmp(entry->ifa_name, interface) == 0 &&
           entry->ifa_addr->sa_family == AF_INET;
}

// Whether the interface holds an IPv4 address; reports as `function`.
static int has_ipv4(const char *interface, const char *function)
{
    ifaddrs *list;
    if (getifaddrs(&list) != 0) {
        fprintf(stderr, "%s(): Error getting interface IP addresses.\n", function);
        return 0;
    }
    const ifaddrs *entry = list;
    while (entry && !is_ipv4_of(interface, entry))
        entry = entry->ifa_next;
    char host[HOST_SIZE] = "";
    if (entry)
        getnameinfo(entry->ifa_addr, sizeof(sockaddr_in), host, sizeof host, nullptr, 0,
                    NI_NUMERICHOST);
    freeifaddrs(list);
    return *host != '\0';
}

int cfg_eth_is_up(void)
{
    if (cfg_check_eth_support_by_hwver() != 1)
        return 0;
    return has_ipv4("eth0", __func__);
}

int cfg_wlan_is_up(void)
{
    return has_ipv4("wlan0", __func__);
}
