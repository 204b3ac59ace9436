#include "settings/stored.h"

#include <string.h>
#include <sys/stat.h>

using namespace cfg_set;

#define SUPPLICANT_FILE "/etc/wpa_supplicant.conf"

constexpr size_t SETUP_SIZE = 64; // buffer of a value of the first setup

static const struct {
    const char *ssid;
    const char *key;
} NETWORKS[] = {{"wl_ssid", "wl_psk"},
                {"wl1_ssid", "wl1_psk"},
                {"wl2_ssid", "wl2_psk"},
                {"wl3_ssid", "wl3_psk"}};

// During first setup: the access point that the primary network is pinned to,
// normalised. False when it is pinned to none.
static bool pinned_access_point(char *bssid, unsigned size)
{
    char setup[SETUP_SIZE];
    return param_get("orb_setup", setup, sizeof setup) == 0 && strcmp(setup, "0") == 0 &&
           param_get("app_ip", bssid, size) == 0 && validate_bssid(bssid);
}

static void write_network(FILE *fp, int index, const char *bssid)
{
    char ssid[VALUE_SIZE];
    char key[VALUE_SIZE];
    if (param_get(NETWORKS[index].ssid, ssid, sizeof ssid) == 0 &&
        param_get(NETWORKS[index].key, key, sizeof key) == 0)
        generate_config_block(fp, index, ssid, key, bssid);
}

int cfg_restoreWiFiConfig(void)
{
    char bssid[SETUP_SIZE];
    const bool pinned = pinned_access_point(bssid, sizeof bssid);
    FILE *file = fopen(SUPPLICANT_FILE, "w+");
    if (!file) {
        fprintf(stderr, "Error opening %s.\n", SUPPLICANT_FILE);
        return -1;
    }
    fchmod(fileno(file), S_IRUSR | S_IWUSR); // it holds keys
    fputs("ctrl_interface=/var/run/wpa_supplicant\n"
          "eapol_version=1\n"
          "fast_reauth=1\n",
          file);
    write_network(file, 0, pinned ? bssid : nullptr);
    for (int slot = 1; slot <= 3; slot++)
        write_network(file, slot, nullptr);
    fclose(file);
    return 0;
}
