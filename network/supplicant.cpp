#include "settings/frame.h"

#include <string.h>

using namespace cfg_set;

constexpr size_t PASSPHRASE_MIN = 8;
constexpr size_t RAW_KEY_DIGITS = 64;
constexpr int BSSID_GROUPS = 6;
constexpr size_t BSSID_SIZE = sizeof "00:00:00:00:00:00";

enum Security { WPA, WEP, OPEN };

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
    // Read wider than a group is: %x would cut a long number to its last
    // digits, on a 64-bit desk only.
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
    // The file has no line feeds in strings: what follows one would be read as
    // the supplicant's own settings, or make it refuse every network.
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
