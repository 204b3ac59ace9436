# shellcheck shell=bash disable=SC2154
# Sourced by scripts/demo: the app's records and the upload daemon.

step "The app lets Ann watch." cfgctl viewer add Ann 1234 s3cret 1
so "Ann is in the first slot of the stored list" "stored viewer_list_00=Ann,1234,s3cret,1"
so "the relay server added her" \
    "relay viewer add name=Ann passcode=1234 credential=s3cret once=1"

step "A schedule for five days from 8:00 to 18:00, with a typing error in the end." \
    sh -c 'echo 1,0,0,480,1800,62,1 | cfgctl schedule set'
so "cfgctl named the entry and the field and changed nothing" \
    "reported cfgctl: entry 1: stoptime takes a number from 0 to 1440, or HH:MM, not 1800; \
nothing is changed"

step "The corrected schedule." sh -c 'echo 1,0,0,480,1080,62,1 | cfgctl schedule set; cfgctl schedule list'
in_order "the scheduler got the signal to read it again" "killall -35 ctrl_sched"
so "the list shows 08:00 to 18:00" "printed 0 1 0 0 08:00 18:00 62 1"

step "The app chooses a greeting from the card." \
    cfgctl sound greeting /mnt/sdcard/morvenix/en/speech/hello.aac
in_order "AudioCheck tested whether it can be played" \
    "AudioCheck 32000 /mnt/sdcard/morvenix/en/speech/hello.aac"
so "the choice is stored" "stored greeting_audio=/mnt/sdcard/morvenix/en/speech/hello.aac"

step "The app switches the upload to a network share on." \
    sh -c 'cfgctl upload config mode=1; cfgctl upload status'
in_order "the camera started the upload daemon" smbu
so "the daemon runs in the background" "printed running yes"
so "it received the signal that the upload is on" "upload signal 7"

step "The app removes Ann." cfgctl viewer del Ann
so "the relay server removed her" \
    "relay viewer delete name=Ann passcode=1234 credential=s3cret once=1"
so "her slot is empty" "removed viewer_list_00"
