#include "settings/stored.h"

#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace cfg_set;

#define SUPPLICANT_FILE "/etc/wpa_supplicant.conf"

constexpr size_t SETUP_SIZE = 64; // buffer of a value of the first setup
constexpr size_t PASSPHRASE_MIN = 8;
constexpr size_t RAW_KEY_DIGITS = 64;
constexpr int BSSID_GROUPS = 6;
constexpr size_t BSSID_SIZE = sizeof "00:00:00:00:00:00";

enum Security { WPA, WEP, OPEN };

static const struct {
    const char *ssid;
    const char *key;
} NETWORKS[] = {{"wl_ssid", "wl_psk"},
                {"wl1_ssid", "wl1_psk"},
                {"wl2_ssid", "wl2_psk"},
                {"wl3_ssid", "wl3_psk"}};

// Lengths of a WEP key in characters and in hexadecimal digits.
static bool wep_text(size_t length)
{
    return length == 5 || length == 13;
}

static bool wep_digits(size_t length)
{
    return length == 10 || length == 26;
}

int could_be_wep(const char *key)
{
    if (!key)
        return 0;
    const size_t length = strlen(key);
    const bool hexadecimal = strspn(key, "0123456789abcdefABCDEF") == length;
    return wep_text(length) || (wep_digits(length) && hexadecimal);
}

int validate_bssid(char *text)
{
    if (!text || *text == '0' || !strchr(text, ':'))
        return 0;
    // Wider than a group: on a 64-bit desk %x would cut a long number to its last
    // digits.
    uintmax_t group[BSSID_GROUPS] = {};
    sscanf(text, "%jx:%jx:%jx:%jx:%jx:%jx", &group[0], &group[1], &group[2], &group[3], &group[4],
           &group[5]);
    uintmax_t bits = 0;
    for (int i = 0; i < BSSID_GROUPS; i++)
        bits |= group[i];
    if (bits == 0 || bits > 0xff)
        return 0;
    format(text, BSSID_SIZE, "%02x:%02x:%02x:%02x:%02x:%02x", (unsigned)group[0],
           (unsigned)group[1], (unsigned)group[2], (unsigned)group[3], (unsigned)group[4],
           (unsigned)group[5]);
    return 1;
}

static void write_key(FILE *fp, Security security, const char *key)
{
    const size_t length = strlen(key);
    switch (security) {
    case WPA:
        fprintf(fp, length == RAW_KEY_DIGITS ? "\tpsk=%s\n" : "\tpsk=\"%s\"\n", key);
        break;
    case WEP:
        fputs("\tkey_mgmt=NONE\n", fp);
        fprintf(fp, wep_text(length) ? "\twep_key0=\"%s\"\n" : "\twep_key0=%s\n", key);
        fputs("\twep_tx_keyidx=0\n", fp);
        break;
    case OPEN:
        fputs("\tkey_mgmt=NONE\n", fp);
        break;
    }
}

static void write_block(FILE *fp, Security security, const char *ssid, const char *key,
                        const char *bssid)
{
    fprintf(fp, "network={\n\tssid=\"%s\"\n\tscan_ssid=1\n", ssid);
    write_key(fp, security, key);
    if (bssid)
        fprintf(fp, "\tbssid=%s\n", bssid);
    fputs("}\n", fp);
}

// The block pinned to the access point, when there is one, then the plain one.
static void write_blocks(FILE *fp, Security security, const char *ssid, const char *key,
                         const char *bssid)
{
    if (bssid)
        write_block(fp, security, ssid, key, bssid);
    write_block(fp, security, ssid, key, nullptr);
}

void generate_config_block(FILE *fp, int, const char *ssid, const char *key, const char *bssid)
{
    if (!fp || !ssid || !key || !*ssid)
        return;
    // Strings of the file cannot hold line feeds: the supplicant would read the rest
    // as settings, or refuse every network.
    if (strchr(ssid, '\n') || strchr(key, '\n') || (bssid && strchr(bssid, '\n')))
        return;
    const size_t length = strlen(key);
    if (length >= PASSPHRASE_MIN && length <= RAW_KEY_DIGITS)
        write_blocks(fp, WPA, ssid, key, bssid);
    if (could_be_wep(key))
        write_blocks(fp, WEP, ssid, key, bssid);
    else if (length == 0)
        write_blocks(fp, OPEN, ssid, key, bssid);
}

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

// Opens the file, truncated and readable by its owner only, since it holds keys.
// Null when it cannot be opened.
static FILE *open_private(const char *path)
{
    constexpr mode_t OWNER = S_IRUSR | S_IWUSR;
    const int file = open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, OWNER);
    if (file < 0)
        return nullptr;
    fchmod(file, OWNER); // of one that was there; a file system without modes refuses
    FILE *stream = fdopen(file, "w+");
    if (!stream)
        close(file);
    return stream;
}

int cfg_restoreWiFiConfig(void)
{
    char bssid[SETUP_SIZE];
    const bool pinned = pinned_access_point(bssid, sizeof bssid);
    FILE *file = open_private(SUPPLICANT_FILE);
    if (!file) {
        fprintf(stderr, "Error opening %s.\n", SUPPLICANT_FILE);
        return -1;
    }
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
