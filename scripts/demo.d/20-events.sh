# shellcheck shell=bash disable=SC2016
# Sourced by scripts/demo: pending events, between processes and over restarts.

step "The camera keeps a ring of pending events; the first call of all makes it." cfgctl events
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
so "each event was handled once, in the order of adding" "printed handled 01234"

step "Three more are pending." sh -c 'for type in 2 3 1; do cfgctl events add $type; done'
sleep 1 # the loader takes what is past, and an event of this very second is not

boot "The camera restarts." restart quiet
step "Are the events still there?" sh -c 'cfgctl events | awk "NR > 1 { print \$4 }" | paste -sd " "'
so "all three came back from their copy on the card" "printed 2 3 1"

step "Something damages the copy: it now counts 65535 events." sh -c \
    'printf "\377\377" | dd of=/mnt/sdcard/video/.event bs=1 seek=8 conv=notrunc 2>/dev/null'
boot "And the camera restarts." restart quiet
step "What becomes of the damaged copy?" sh -c 'cfgctl events 2>&1 | sed "s/ [0-9]*\]/]/"
        [ -e /mnt/sdcard/video/.event ] || echo the copy is gone'
so "the loader named the count that cannot be" "printed [checkEventQueue] invalid count[65535]"
so "and removed the copy instead of believing it" "printed the copy is gone"
step "The next event makes a new one." sh -c \
    'cfgctl events add 4 >/dev/null; sleep 1; cfgctl events dump /mnt/sdcard/video/.event'
so "the new copy holds this event alone" "printed head 0, tail 1, count 1"
