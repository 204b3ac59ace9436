# shellcheck shell=bash disable=SC2154
# Sourced by scripts/demo: the app's records and the upload daemon.

step "The app registers a viewer." cfgctl viewer add Ann 1234 s3cret 1
so "the viewer is stored" "stored    viewer_list_00=Ann,1234,s3cret,1"
so "and the relay server was told" \
    "relay     viewer add name=Ann passcode=1234 credential=s3cret once=1"

step "The same name again keeps the entry as it is." cfgctl viewer add Ann 9 9
so "cfgctl says so" "reported  cfgctl: Ann is a viewer already, and kept as it is"

step "A schedule for five days, 8:00 to 18:00, a field wrong." \
    sh -c 'echo 1,0,0,480,1800,62,1 | cfgctl schedule set'
so "the entry and the field are named" \
    "reported  cfgctl: entry 1: stoptime 1800 is out of range; nothing is changed"
in_order "and nothing ran"

step "And put right." sh -c 'echo 1,0,0,480,1080,62,1 | cfgctl schedule set'
so "the schedule is stored" "stored    sched00=1,0,0,480,1080,62,1"
in_order "the controller was told to read it anew" "killall -35 ctrl_sched"

step "The list, for people:" cfgctl schedule list
so "08:00 to 18:00" \
    "printed   0     1       0       0       08:00      18:00     62    1"

step "A greeting from the card is checked first." \
    cfgctl sound greeting /mnt/sdcard/morvenix/en/speech/hello.aac
in_order "by AudioCheck" "AudioCheck 32000 /mnt/sdcard/morvenix/en/speech/hello.aac"
so "and becomes the alert sound too, the greeting being on" \
    "stored    alert_file=/mnt/sdcard/morvenix/en/speech/hello.aac"

step "The upload is switched on." sh -c 'cfgctl upload config mode=1; cfgctl upload status'
in_order "the daemon was started" smbu
so "it runs" "printed   running  true"
so "and was told that the upload is on" "upload    signal 7"

step "The viewer goes; the relay is told before the store." cfgctl viewer del Ann
so "the relay was told" "relay     viewer delete name=Ann passcode=1234 credential=s3cret once=1"
so "the slot is empty" "removed   viewer_list_00"
