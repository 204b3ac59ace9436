# shellcheck shell=bash disable=SC2034,SC2154
# Sourced by scripts/demo: what the detection and recording daemons are told,
# privacy mode, lamps.

boot "The camera restarts: its restorers also post messages to the detection daemons." restart
step "Nobody has taken them yet; the monitor does, in the daemons' place." \
    cfgctl monitor --count 3
so "PIR detection is on" "printed   type 2 command 2 value 0: PIR detection on"
so "sound detection is off" "printed   type 4 command 5 value 0: sound detection off"
so "at its middle sensitivity" 'printed   type 4 command 3 value 0 param "1": sound sensitivity'

awaited=("signal 38 ")
step "The app switches PIR detection off." \
    sh -c 'cfgctl set alert_pir_enable 0; cfgctl monitor --count 1'
so "stored" "stored    alert_pir_enable=0"
so "the detection daemon is told" "printed   type 2 command 3 value 0: PIR detection off"
so "the motion-tracking engine is signalled" "signalled 38 GMMdVideo"
so "committed" "saved     the store"

step "The owner comes home and wants privacy." \
    sh -c 'cfgctl privacy on; cfgctl monitor --count 4'
in_order "motor and LED first, then peer connection and playback" \
    "MotorCtrlApp privacy 1" "LEDCtrlApp power PRIVACY_ON" "killall -SIGHUP peerconn" \
    "killall AudioPlayback" "killall -SIGUSR2 ffplay"
so "stored before anything was done" "stored    orb_privacy_mode_enable=1"
so "all who listen know" "printed   type 1 command 7 value 1: privacy event"
so "the recorder" "printed   type 7 command 5 value 0: recording: privacy mode entered"
so "the PIR daemon" "printed   type 2 command 4 value 0: PIR: privacy mode entered"
so "the sound daemon" "printed   type 4 command 6 value 0: sound: privacy mode entered"
step "Asked again, it has nothing to do." cfgctl privacy on
in_order "nothing ran"
step "What the camera says of itself now:" cfgctl probe
so "infrared is off" "printed   ir_mode                  0"
so "privacy is on" "printed   cfg_isPrivacyMode        1"

step "The owner leaves." sh -c 'cfgctl privacy off; cfgctl monitor --count 4'
in_order "the way back, with the lamps that this board has" \
    "MotorCtrlApp privacy 0" "LEDCtrlApp power PRIVACY_OFF" "board hwver" "board hwver" \
    "killall -SIGPROF peerconn"
so "all who listen know" "printed   type 1 command 7 value 0: privacy event"
so "the recorder goes on" "printed   type 7 command 7 value 0: recording: privacy mode left"
step "Infrared is back at what is stored." cfgctl probe
so "the driver's number for automatic" "printed   ir_mode                  2"

step "The Rlamp takes its mode 3 only when that is stored, too." cfgctl lamp rlamp 3
so "so not now" "reported  cfgctl: rlamp did not take mode 3"

boot "The camera restarts once more." restart
step "PIR detection, saved as off, was restored as off." cfgctl monitor --count 1
so "off" "printed   type 2 command 3 value 0: PIR detection off"
