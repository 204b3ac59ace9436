# shellcheck shell=bash disable=SC2154
# Sourced by scripts/demo: settings, sounds, and what survives a restart.

link_start=("killall wpa_supplicant"
    "wpa_supplicant -Dnl80211 -iwlan0 -c/etc/wpa_supplicant.conf -B"
    "killall hostapd udhcpd" "ifconfig wlan1 0.0.0.0" "ifconfig wlan1 down"
    "wpa_cli -i wlan0 -a /sbin/wpa_action.kx7 -B")
sync_start=("killall ntpd" "ntpd -p ntp0.example.net -p ntp1.example.net")

boot "A camera fresh from the factory boots and applies its stored settings to the device." start
in_order "it unmuted the microphone, set both levels, joined the Wi-Fi network and asked for the time" \
    GMMdVideo "demo_MXSetMicMute_ 0" "demo_MXSetMicVol_ 60" "demo_MXSetSpeakerVol_ 40" \
    "demo_MXSetSpeakerVol_ 40" "${link_start[@]}" "${sync_start[@]}"
so "it told the image processor which way up the camera hangs" "ran demo_MXTurnVideo_ 3"
so "the PIR daemon received the message that switches its detection on" \
    "took type 2 command 2 value 0: PIR detection on"
so "the sound daemon received the message that switches its detection off" \
    "took type 4 command 5 value 0: sound detection off"

step "Which board is this?" cfgctl board
so "the board's id is the answer of the firmware's board tool" "printed boardid xq7h0c"

step "The app turns the speaker up and saves." cfgctl set io_speaker_volume 31
so "the parameter store has the number 31" "stored io_speaker_volume=31"
so "the speaker was set to level 50, which is what 31 means in the volume table" \
    "ran demo_MXSetSpeakerVol_ 50"
so "the store was written to flash, so the value will survive a restart" "wrote /flash/param"

step "It switches the microphone off without saving." cfgctl set --no-save io_mic_enable 0
so "the microphone was muted" "ran demo_MXSetMicMute_ 1"

step "It sets the microphone to an invalid value." cfgctl set io_mic_enable 2
so "cfgctl rejected the value and named the valid ones" \
    "reported cfgctl: io_mic_enable takes a number from 0 to 1, not 2"
in_order "and no tool of the device was run"

step "The camera speaks a prompt in the stored language." cfgctl prompt hello.aac
so "the player played the card's recording, not the built-in one" \
    "ran demo_MXAacPlayer_ /mnt/sdcard/morvenix/en/speech/hello.aac"

step "It plays an alert sound." cfgctl alert /audio/alarm.aac
so "the player ran at raised priority" "ran nice -n -20 demo_MXAacPlayer_ /audio/alarm.aac"

boot "The camera restarts." restart
in_order "it applied the saved volume; the microphone is on again, because its change was not saved" \
    GMMdVideo "demo_MXSetMicMute_ 0" "demo_MXSetMicVol_ 60" "demo_MXSetSpeakerVol_ 50" \
    "demo_MXSetSpeakerVol_ 50" "${link_start[@]}" "${sync_start[@]}"
