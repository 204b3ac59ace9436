# shellcheck shell=bash disable=SC2016,SC2154
# Sourced by scripts/demo: the Wi-Fi network and the time zone.

step "The camera writes the Wi-Fi supplicant's file from the stored networks." sh -c \
    'cfgctl wifi config >/dev/null; grep sid= /etc/wpa_supplicant.conf'
so "the file has the network of the factory settings" 'printed 	ssid="desk-camera"'

step "It leaves out a network whose SSID would add a line to the file." sh -c \
    'param set wl1_ssid "$(printf "x\"\nctrl_interface=/tmp/evil #")"; param set wl1_psk ""
     cfgctl wifi config; grep -c evil /etc/wpa_supplicant.conf
     param unset wl1_ssid; param unset wl1_psk'
so "the file has nothing of it" "printed 0"

step "A developer resets the radio; the link stays down." cfgctl wifi reset
in_order "the camera released the address, stopped the supplicant and reset the radio" \
    "udhcpc.kill wlan0" "wpa_cli -iwlan0 terminate" "S30wifi restart"
so "it wrote the driver's file" "wrote /proc/wifi_reset"

step "The app sets the time zone of Berlin." \
    sh -c 'cfgctl set time_zone_str Europe/Berlin && cfgctl time zone'
so "/tmp/TZ has the zone's rule" "printed CET-1CEST,M3.5.0,M10.5.0/3"
so "/tmp/localtime is the zone's file" "wrote /tmp/localtime"
so "the relay client received the zone's name" \
    "relay sent type=18 option=0 bytes=32 length=28 {\"timezone\":\"Europe/Berlin\"}"

step "A zone that is not in the table: the given offset in minutes applies." \
    sh -c 'param set time_zone_str Mars/Olympus; cfgctl time zone 90 1
     param set time_zone_str Europe/Berlin'
so "the rule has 90 minutes and daylight saving" "printed GMT-0130DST,M4.1.0/2,M10.5.0/2"
