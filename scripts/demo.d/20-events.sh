# shellcheck shell=bash disable=SC2016
# Sourced by scripts/demo: pending events, between processes and across restarts.

step "The camera keeps a ring of pending events; the first call creates it." cfgctl events
so "it is empty" "printed INDEX TIME (UTC) TYPE"

step "One process adds events while another handles them, oldest first." sh -c '
        for type in 0 1 2 3 4; do cfgctl events add $type; done >/dev/null &
        for turn in $(seq 500); do
            type=$(cfgctl events 2>/dev/null | awk "NR == 2 { print \$4 }")
            [ -z "$type" ] || cfgctl events drop 1 >/dev/null
            handled=$handled$type
            [ "$type" != 4 ] || break
        done
        echo "handled $handled"'
so "each event was handled once, in order" "printed handled 01234"

step "Three more are pending." sh -c 'for type in 2 3 1; do cfgctl events add $type; done'
sleep 1 # the loader only accepts events of past seconds

boot "The camera restarts." restart quiet
step "Are the events still there?" sh -c 'cfgctl events | awk "NR > 1 { print \$4 }" | paste -sd " "'
so "all three came back from their copy on the card" "printed 2 3 1"

step "The copy is damaged: its count is now 65535 events." sh -c \
    'printf "\377\377" | dd of=/mnt/sdcard/video/.event bs=1 seek=8 conv=notrunc 2>/dev/null'
boot "The camera restarts." restart quiet
step "What happens to the damaged copy?" sh -c 'cfgctl events 2>&1 | sed "s/ [0-9]*\]/]/"
        [ -e /mnt/sdcard/video/.event ] || echo the copy is gone'
so "the loader reported the impossible count" "printed [checkEventQueue] invalid count[65535]"
so "and removed the copy" "printed the copy is gone"
step "The next event creates a new copy." sh -c \
    'cfgctl events add 4 >/dev/null; sleep 1; cfgctl events dump /mnt/sdcard/video/.event'
so "the new copy has only this event" "printed head 0, tail 1, count 1"
