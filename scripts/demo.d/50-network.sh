# shellcheck shell=bash disable=SC2016
# Sourced by scripts/demo: joining a wireless network, and the time.

step "The supplicant's file is written from the stored networks." cfgctl wifi config
so "the network of the factory's settings is in it" "printed   desk-camera"
so "the file is where the supplicant looks for it" "wrote     /etc/wpa_supplicant.conf"

step "It holds a block for each security that the key allows." cat /etc/wpa_supplicant.conf
so "the network" "printed   	ssid=\"desk-camera\""
so "with its passphrase" "printed   	psk=\"desk-camera-key\""

step "A second network whose SSID would add a line of its own is left out." sh -c \
    'param set wl1_ssid "$(printf "x\"\nctrl_interface=/tmp/evil #")"; param set wl1_psk ""
     cfgctl wifi config; param unset wl1_ssid; param unset wl1_psk'
so "one network is left" "printed   desk-camera"
so "and said so" "reported  cfgctl: wl1_ssid: left out, for a line feed or a key of no known length"

step "The link starts, the DHCP client in the background." \
    sh -c 'cfgctl wifi start; sleep 1'
so "an old supplicant is stopped" "ran       killall wpa_supplicant"
so "a new one starts on the file" \
    "ran       wpa_supplicant -Dnl80211 -iwlan0 -c/etc/wpa_supplicant.conf -B"
so "no access point is wanted" "ran       killall hostapd udhcpd"
so "an address is asked for" "ran       udhcpc -iwlan0"
so "and the supplicant's events are acted on" \
    "ran       wpa_cli -i wlan0 -a /sbin/wpa_action.kx7 -B"

step "It is reset: the radio's driver is told, and the link stays down." cfgctl wifi reset
in_order "these tools, in this order" \
    "udhcpc.kill wlan0" "wpa_cli -iwlan0 terminate" "S30wifi restart"
so "through its file" "wrote     /proc/wifi_reset"

step "No interface has an address on a desk." cfgctl link
so "the wireless one neither" "printed   wlan  0"

step "The app sends the camera to Berlin." \
    sh -c 'cfgctl set time_zone_str Europe/Berlin && cfgctl time zone'
so "the TZ string is the table's" "printed   CET-1CEST,M3.5.0,M10.5.0/3"
so "for everyone to read" "wrote     /tmp/TZ"
so "with the zone's file" "wrote     /tmp/localtime"
so "and the relay client knows" \
    "relay     sent type=18 option=0 bytes=32 length=28 {\"timezone\":\"Europe/Berlin\"}"

step "A zone that no table knows falls back on its offset." \
    sh -c 'param set time_zone_str Mars/Olympus; cfgctl time zone 90 1; param unset time_zone_str'
so "with daylight saving" "printed   GMT-0130DST,M4.1.0/2,M10.5.0/2"

step "Network time is switched on." cfgctl time sync on
in_order "with both servers" "killall ntpd" "ntpd -p ntp0.example.net -p ntp1.example.net"
