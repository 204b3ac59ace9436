// Whether the interfaces are up: on real ones, in the network of the test's
// own root, and on listings that the kernel would not give.

#include "cfg_set.h"
#include "doubles.h"
#include "firmware/board.h"

#include <cerrno>
#include <dlfcn.h>
#include <ifaddrs.h>
#include <netinet/in.h>

using namespace doubles;

static bool listing_fails;
static ifaddrs *listing; // instead of the kernel's
static int lists;        // handed out and not freed

extern "C" int getifaddrs(ifaddrs **list)
{
    if (listing_fails) {
        errno = ENOMEM;
        return -1;
    }
    lists++;
    *list = listing;
    static const auto REAL =
        reinterpret_cast<decltype(&getifaddrs)>(dlsym(RTLD_NEXT, "getifaddrs"));
    return listing ? 0 : REAL(list);
}

extern "C" void freeifaddrs(ifaddrs *list)
{
    lists--;
    static const auto REAL =
        reinterpret_cast<decltype(&freeifaddrs)>(dlsym(RTLD_NEXT, "freeifaddrs"));
    if (!listing)
        REAL(list);
}

class InterfacesTest : public LibraryTest
{
  protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        listing_fails = false;
        listing = nullptr;
        lists = 0;
        eth_support = 1;
    }
    void TearDown() override
    {
        EXPECT_EQ(lists, 0) << "a list was not freed";
        LibraryTest::TearDown();
    }
};

static void ip(const std::string &command)
{
    ASSERT_EQ(run_program({"/bin/sh", "-c", "ip " + command}).result, 0) << command;
}

// An interface without addresses: whichever of the two kinds this kernel has.
static void add_interface(const std::string &name)
{
    ip("link add " + name + " type dummy 2>/dev/null || ip link add " + name + " type veth");
}

TEST_F(InterfacesTest, AnInterfaceIsUpOnceItHasAnIpv4Address)
{
    const std::vector<std::pair<std::string, int (*)()>> checks = {{"eth0", cfg_eth_is_up},
                                                                   {"wlan0", cfg_wlan_is_up}};
    for (const auto &[name, is_up] : checks) {
        EXPECT_EQ(is_up(), 0) << "no " << name;
        add_interface(name);
        EXPECT_EQ(is_up(), 0) << "no address";
        ip("addr add fd00::1/64 dev " + name);
        EXPECT_EQ(is_up(), 0) << "IPv6 only";
        ip("addr add 192.0.2.7/24 dev " + name + " label " + name + ":1");
        EXPECT_EQ(is_up(), 0) << "an alias only";
        ip("addr add 192.0.2.8/24 dev " + name);
        EXPECT_EQ(is_up(), 1);
        ip("addr del 192.0.2.8/24 dev " + name);
        EXPECT_EQ(is_up(), 0);
    }
    ip("addr add 192.0.2.9/24 dev wlan0");
    EXPECT_EQ(cfg_wlan_is_up() - cfg_eth_is_up(), 1) << "each has its own address";
}

TEST_F(InterfacesTest, ABoardWithoutEthernetHasNoWiredLink)
{
    add_interface("eth0");
    ip("addr add 192.0.2.8/24 dev eth0");
    listing_fails = true; // would be reported
    eth_support = 0;
    const Outcome outcome = observe(cfg_eth_is_up);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out + outcome.err, "");

    listing_fails = false;
    eth_support = -1;
    write_script("/tmp/bin/board", "echo 200");
    EXPECT_EQ(cfg_eth_is_up(), 1) << "the board has bit 9";
}

TEST_F(InterfacesTest, AListingThatFailsGoesToStandardErrorByName)
{
    listing_fails = true;
    const Outcome eth = observe(cfg_eth_is_up);
    const Outcome wlan = observe(cfg_wlan_is_up);
    EXPECT_EQ(eth.result + wlan.result, 0);
    EXPECT_EQ(eth.out + wlan.out, "");
    EXPECT_EQ(eth.err, "cfg_eth_is_up(): Error getting interface IP addresses.\n");
    EXPECT_EQ(wlan.err, "cfg_wlan_is_up(): Error getting interface IP addresses.\n");
}

TEST_F(InterfacesTest, EntriesWithoutAnAddressAndOtherNamesArePassedOver)
{
    char wlan0[] = "wlan0";
    char longer[] = "wlan01";
    sockaddr_in address{};
    address.sin_family = AF_INET;
    ifaddrs last{};
    last.ifa_name = wlan0;
    ifaddrs middle{};
    middle.ifa_next = &last;
    middle.ifa_name = longer;
    middle.ifa_addr = reinterpret_cast<sockaddr *>(&address);
    ifaddrs first{};
    first.ifa_next = &middle;
    first.ifa_name = wlan0;
    listing = &first;
    EXPECT_EQ(cfg_wlan_is_up(), 0);
    last.ifa_addr = middle.ifa_addr;
    EXPECT_EQ(cfg_wlan_is_up(), 1) << "0.0.0.0 is an address too";
}
