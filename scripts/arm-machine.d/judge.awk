# judge.awk: checks that a boot found what was acknowledged before the power cut.
# awk -v token=TOKEN -v settled=MS -f judge.awk BEFORE AFTER: the two consoles.
# Changes acknowledged more than MS before the last output must be there; later
# ones may be, if they had begun. Prints "well" or "NOT SO", then the state.
function without(items, count) {
    while (count-- > 0)
        sub(/^ [0-9.]+/, "", items)
    return items
}
$1 != token || !sub(/\r$/, "") { next } # another program's line, or a cut one
FNR == NR && $3 ~ /^[0-9]+$/ && $3 > last { last = $3 }
FNR != NR && $2 == "value" { sub(/^[^ ]+ value /, ""); value = $0 }
FNR == NR && $2 == "value" { saved = saving = $3 }
$2 == "saving" && FNR == NR { saving = $4 }
$2 == "saved" && FNR == NR { saved = $4 }
$2 == "ring" {
    left = $3
    events = $0
    sub(/^[^ ]+ ring [a-z]+ [0-9]+/, "", events)
}
$2 == "ring" && FNR == NR { state[0] = events; at[0] = $4; last = $4; before = left }
$2 == "change" && FNR == NR {
    begun = $4
    state[begun] = $5 == "drop" ? without(state[begun - 1], $6) : state[begun - 1] " " $6 ".*"
}
$2 == "changed" && FNR == NR {
    at[$4] = $3
    if (NF > 4)
        sub(/ [0-9]\.\*$/, " " $5, state[$4])
}
FNR != NR && $2 == "ring" { exit }
END {
    low = 0
    begun += 0
    for (k = 1; k <= begun && k in at && at[k] < last - settled; k++)
        low = k
    found = -1
    for (k = begun; k >= low && found < 0; k--) {
        open_end = sub(/\*$/, "", state[k]) # begun, not acknowledged: its time is unknown
        if (open_end ? match(events, /[0-9]+$/) && substr(events, 1, RSTART - 1) == state[k] : events == state[k])
            found = k
    }
    # The loader removes a ring that it rejects, which is also a write.
    cut = begun > low || before == "refused" && low == 0 ? "within a write" : "between writes"
    if (left == "whole" && events == "" && found < 0)
        left = "zeros"
    if (left == "whole")
        well = found >= 0
    else
        well = events == "" && (left == "none" && before != "whole" && low == 0 || \
            left ~ /^(refused|none|zeros)$/ && cut == "within a write")
    save = saving > saved ? "within a save" : "between saves"
    kept = value ~ /^[0-9]+$/ && value + 0 >= saved + 0 && value + 0 <= saving + 0
    printf "%s, %s: ring %s, %d events, change %s of %d to %d; %s: setting %s of %d to %d\n", \
        (well && kept ? "well" : "NOT SO"), cut, left, split(events, unused, " "), \
        (found < 0 ? "unknown" : found), low, begun, save, value, saved, saving
}
