# shellcheck shell=bash disable=SC2016,SC2154
# Sourced by scripts/demo: joining a wireless network, and the time.

step "The Wi-Fi supplicant's file is written from the stored networks." sh -c \
    'cfgctl wifi config >/dev/null; grep sid= /etc/wpa_supplicant.conf'
so "the network of the factory's settings is in it" 'printed 	ssid="desk-camera"'

step "A network whose SSID would add a line of its own to the file is left out." sh -c \
    'param set wl1_ssid "$(printf "x\"\nctrl_interface=/tmp/evil #")"; param set wl1_psk ""
     cfgctl wifi config; grep -c evil /etc/wpa_supplicant.conf
     param unset wl1_ssid; param unset wl1_psk'
so "nothing of it is in the file" "printed 0"

step "The link is reset: the radio's driver is told, and the link stays down." cfgctl wifi reset
in_order "the address was given up, the supplicant ended, the radio set up anew" \
    "udhcpc.kill wlan0" "wpa_cli -iwlan0 terminate" "S30wifi restart"
so "the driver was told through its file" "wrote /proc/wifi_reset"

step "The app sends the camera to Berlin." \
    sh -c 'cfgctl set time_zone_str Europe/Berlin && cfgctl time zone'
so "/tmp/TZ tells every process the zone's rule" "printed CET-1CEST,M3.5.0,M10.5.0/3"
so "/tmp/localtime is the zone's file" "wrote /tmp/localtime"
so "the relay client knows as well" \
    "relay sent type=18 option=0 bytes=32 length=28 {\"timezone\":\"Europe/Berlin\"}"

step "A zone that no table knows falls back on the offset in minutes that is given." \
    sh -c 'param set time_zone_str Mars/Olympus; cfgctl time zone 90 1
     param set time_zone_str Europe/Berlin'
so "the rule has 90 minutes and daylight saving" "printed GMT-0130DST,M4.1.0/2,M10.5.0/2"
