# shellcheck shell=bash disable=SC2154
# Sourced by scripts/demo: a last boot, and a picture of what happened after it.

boot "The camera restarts once more." restart
so "it restored PIR detection as saved: off" \
    "took type 2 command 3 value 0: PIR detection off"
so "it restored the time zone of Berlin" \
    "relay sent type=18 option=0 bytes=32 length=28 {\"timezone\":\"Europe/Berlin\"}"
step "Privacy mode, for the picture." cfgctl privacy on
so "the mode is stored" "stored orb_privacy_mode_enable=1"
step "A restart of the Wi-Fi link takes ten seconds." cfgctl wifi restart
in_order "the camera stopped the link, reset the radio and started the link" \
    "udhcpc.kill wlan0" "killall wpa_supplicant" "S30wifi restart" "${link_start[@]}"

"$camera" plot -o "$CAMERA_STATE/plot.svg"
judge "the picture shows which locks were held" \
    grep -q 'lock held: Wi-Fi' "$CAMERA_STATE/plot.svg"
