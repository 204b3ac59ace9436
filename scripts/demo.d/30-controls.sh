# shellcheck shell=bash disable=SC2016,SC2034
# Sourced by scripts/demo: messages to the detection and recording daemons,
# privacy mode, lamps.

awaited=("signal 38 ")
step "The app switches PIR detection off." cfgctl set alert_pir_enable 0
so "the PIR daemon received the message" "took type 2 command 3 value 0: PIR detection off"
so "the motion-tracking engine received its signal" "signalled 38 GMMdVideo"

step "The owner comes home and switches privacy mode on." cfgctl privacy on
in_order "the motor turned the camera away, the LED showed it, streaming and playback stopped" \
    "MotorCtrlApp privacy 1" "LEDCtrlApp power PRIVACY_ON" "killall -SIGHUP peerconn" \
    "killall AudioPlayback" "killall -SIGUSR2 ffplay"
so "the receiver of privacy events got its message" "took type 1 command 7 value 1: privacy event"
so "the recorder got its message" "took type 7 command 5 value 0: recording: privacy mode entered"
so "the PIR daemon got its message" "took type 2 command 4 value 0: PIR: privacy mode entered"
so "the sound daemon got its message" "took type 4 command 6 value 0: sound: privacy mode entered"
so "the camera wrote the infrared driver's file" "wrote /proc/ir_mode"
step "The same command again changes nothing." cfgctl privacy on
in_order "no tool ran a second time"
step "What do the probes report now?" cfgctl probe
so "infrared is off" "printed ir_mode 0"
so "privacy mode is on" "printed cfg_isPrivacyMode 1"

step "The owner leaves." cfgctl privacy off
in_order "motor, LED and streaming are back to normal" \
    "MotorCtrlApp privacy 0" "LEDCtrlApp power PRIVACY_OFF" "killall -SIGPROF peerconn"
so "the recorder got the message to continue" "took type 7 command 7 value 0: recording: privacy mode left"

step "A developer tries a lamp mode that is only available when it is stored." cfgctl lamp rlamp 3
so "the lamp did not accept it, and cfgctl reports that" "reported cfgctl: rlamp did not accept mode 3"

step "A developer monitors the messages while the app posts one." sh -c \
    'cfgctl monitor --count 1 | cut -b 14- & sleep 0.2; cfgctl rec 9 hello; wait'
so "the monitor received it, not the daemons" \
    'printed type 7 command 9 value 0 param "hello": recording'
