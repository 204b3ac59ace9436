# shellcheck shell=bash disable=SC2016
# Sourced by scripts/demo: pending events, between processes and over restarts.

step "The first call of all makes the ring." cfgctl events
so "which is empty" "printed   INDEX  TIME (UTC)  TYPE"

step "One process adds events while another handles them, oldest first." sh -c '
        for type in 0 1 2 3 4; do cfgctl events add $type; done &
        for turn in $(seq 500); do
            type=$(cfgctl events 2>/dev/null | awk "NR == 2 { print \$4 }")
            [ -z "$type" ] || cfgctl events drop 1
            handled=$handled$type
            [ "$type" != 4 ] || break
        done
        echo "handled $handled"'
so "each once, in their order" "printed   handled 01234"

step "Three more are pending." sh -c 'for type in 2 3 1; do cfgctl events add $type; done'
sleep 1 # the loader takes what is past, and an event of this very second is not
step "The copy on the card has them:" cfgctl events dump /mnt/sdcard/video/.event
so "behind the five that were handled" "printed   head 5, tail 8, count 3"

boot "The camera restarts." restart
step "The events are back." sh -c 'cfgctl events | awk "NR > 1 { print \$4 }" | paste -sd " "'
so "all three" "printed   2 3 1"

step "Something damages the copy: it now counts 65535 events." sh -c \
    'printf "\377\377" | dd of=/mnt/sdcard/video/.event bs=1 seek=8 conv=notrunc 2>/dev/null'
step "The events in memory do not mind." sh -c 'cfgctl events | sed 1d | wc -l'
so "there are three" "printed   3"

boot "But now the camera restarts." restart
step "The loader says what it found:" sh -c 'cfgctl events 2>&1 | sed "s/ [0-9]*\]/]/"'
so "the number" "printed   [checkEventQueue] invalid count[65535]"
so "and that nothing was loaded" "printed   [getEventQueue] load fail"
step "It has removed the copy." sh -c '[ -e /mnt/sdcard/video/.event ] || echo gone'
so "it is gone" "printed   gone"
step "The next event makes a new one." sh -c \
    'cfgctl events add 4; sleep 1; cfgctl events dump /mnt/sdcard/video/.event'
so "with this event alone" "printed   head 0, tail 1, count 1"

step "The processes agree on a device status." cfgctl status 3
so "one byte in RAM" "wrote     /tmp/dev_status"
step "Another asks for it." cfgctl status
so "3" "printed   3"
