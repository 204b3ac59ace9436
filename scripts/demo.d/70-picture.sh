# shellcheck shell=bash disable=SC2154
# Sourced by scripts/demo: a last boot, and a picture of what came after it.

boot "The camera restarts once more." restart
so "PIR detection, saved as off, was restored as off" \
    "took type 2 command 3 value 0: PIR detection off"
so "and the clocks are those of Berlin" \
    "relay sent type=18 option=0 bytes=32 length=28 {\"timezone\":\"Europe/Berlin\"}"
step "Privacy, for the picture." cfgctl privacy on
so "the switch is stored" "stored orb_privacy_mode_enable=1"
step "And a full restart of the Wi-Fi link, which takes ten seconds." cfgctl wifi restart
in_order "the link went down, the radio was reset, the link came up" \
    "udhcpc.kill wlan0" "killall wpa_supplicant" "S30wifi restart" "${link_start[@]}"

"$camera" plot -o "$CAMERA_STATE/plot.svg"
judge "the picture shows who held which lock meanwhile" \
    grep -q 'lock held: Wi-Fi' "$CAMERA_STATE/plot.svg"
