# shellcheck shell=bash disable=SC2016,SC2034
# Sourced by scripts/demo: what the detection and recording daemons are told,
# privacy mode, lamps.

awaited=("signal 38 ")
step "The app switches PIR detection off." cfgctl set alert_pir_enable 0
so "the PIR daemon took a message that says so" "took type 2 command 3 value 0: PIR detection off"
so "and the motion-tracking engine got its signal" "signalled 38 GMMdVideo"

step "The owner comes home and wants privacy." cfgctl privacy on
in_order "the motor turned away and the LED said so; then streaming and playback were stopped" \
    "MotorCtrlApp privacy 1" "LEDCtrlApp power PRIVACY_ON" "killall -SIGHUP peerconn" \
    "killall AudioPlayback" "killall -SIGUSR2 ffplay"
so "whoever listens for privacy events was told" "took type 1 command 7 value 1: privacy event"
so "the recorder was told that privacy begins" "took type 7 command 5 value 0: recording: privacy mode entered"
so "the PIR daemon was" "took type 2 command 4 value 0: PIR: privacy mode entered"
so "and the sound daemon was" "took type 4 command 6 value 0: sound: privacy mode entered"
so "the infrared driver's file was written" "wrote /proc/ir_mode"
step "Asked again, there is nothing to do." cfgctl privacy on
in_order "no tool ran a second time"
step "What does the camera say of itself now?" cfgctl probe
so "infrared is off" "printed ir_mode 0"
so "privacy mode is on" "printed cfg_isPrivacyMode 1"

step "The owner leaves." cfgctl privacy off
in_order "motor, LED and streaming came back" \
    "MotorCtrlApp privacy 0" "LEDCtrlApp power PRIVACY_OFF" "killall -SIGPROF peerconn"
so "the recorder was told to go on" "took type 7 command 7 value 0: recording: privacy mode left"

step "A lamp is asked for a mode that is not stored for it." cfgctl lamp rlamp 3
so "it did not take the mode, and cfgctl says so" "reported cfgctl: rlamp did not take mode 3"

step "A developer looks at the messages in the daemons' place, while the app posts one." sh -c \
    'cfgctl monitor --count 1 | cut -b 14- & sleep 0.2; cfgctl rec 9 hello; wait'
so "the daemons stepped aside for the monitor" \
    'printed type 7 command 9 value 0 param "hello": recording'
