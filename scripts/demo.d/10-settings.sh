# shellcheck shell=bash disable=SC2154
# Sourced by scripts/demo: settings, sounds, and what a restart brings back.

boot "A camera fresh from the factory boots: its restorers apply the default settings." start
in_order "microphone unmuted, its level, the speaker, what the board is, and nothing else" \
    GMMdVideo "demo_MXSetMicMute_ 0" "demo_MXSetMicVol_ 60" "demo_MXSetSpeakerVol_ 40" \
    "demo_MXSetSpeakerVol_ 40" "board hwver" "board sn" "board sn" "board hwver" "board hwver"
so "the image is turned upright" "ran       demo_MXTurnVideo_ 3"

step "Who is it?" cfgctl board
so "the board tells its id" "printed   boardid             xq7h0c"

step "The settings and what applies them:" cfgctl show
so "the microphone is on" \
    "printed   io_mic_enable              audio      1      cfg_setMicEnable, media commands"

step "The app turns the speaker up, and saves." cfgctl set io_speaker_volume 31
so "the value is stored" "stored    io_speaker_volume=31"
so "applied at the level the table gives" "ran       demo_MXSetSpeakerVol_ 50"
so "saved" "saved     the store"
so "into flash" "wrote     /flash/param"

step "It switches the microphone off, without saving." cfgctl set --no-save io_mic_enable 0
so "the microphone is muted" "ran       demo_MXSetMicMute_ 1"

step "It asks for something the microphone does not have." cfgctl set io_mic_enable 2
so "that is refused" "reported  cfgctl: io_mic_enable takes a number from 0 to 1, not 2"
in_order "and nothing ran"

step "It disables the speaker, without saving: the level stays, the library says so." \
    cfgctl set --no-save io_speaker_enable 0
in_order "nothing ran"

step "A prompt is spoken, in the language of the card." cfgctl prompt hello.aac
so "the player got the card's recording" \
    "ran       demo_MXAacPlayer_ /mnt/sdcard/morvenix/en/speech/hello.aac"

step "An alert sounds at raised priority." cfgctl alert /audio/alarm.aac
so "nice ran the player" "ran       nice -n -20 demo_MXAacPlayer_ /audio/alarm.aac"

boot "The camera restarts." restart
in_order "the saved volume is back, and the microphone and speaker that were only set are on again" \
    GMMdVideo "demo_MXSetMicMute_ 0" "demo_MXSetMicVol_ 60" "demo_MXSetSpeakerVol_ 50" \
    "demo_MXSetSpeakerVol_ 50" "board hwver" "board sn" "board sn" "board hwver" "board hwver"

step "What was saved is back." cfgctl get io_speaker_volume
so "31" "printed   31"
step "What was not saved is gone." cfgctl get io_mic_enable
so "1" "printed   1"
