# plot.awk [--trace] [WORD...]: draws the log on standard input since the last boot
# as an SVG with a panel for each boot or command and a row for each event, or
# prints it as trace-event JSON. With WORDs, only panels whose titles begin with one.

BEGIN {
    # Kinds of lines, the first words of their rows, colours, and names in the legend.
    kind("boot", "", "#c8d1da", "")
    kind("call", "", "#c8d1da", "cfgctl")
    kind("run", "", "#58a6e8", "tool")
    kind("shell", "sh: ", "#b3d7f7", "shell line")
    kind("pause", "pause ", "#e6e6e6", "pause")
    kind("wait", "lock waited for: ", "#e5534b", "lock wait")
    kind("lock", "lock held: ", "#f2b84b", "lock")
    kind("store", "store ", "#2da44e", "store")
    kind("post", "posted ", "#8250df", "message posted")
    kind("lost", "not posted ", "#e5534b", "")
    kind("take", "taken ", "#c297ff", "message taken")
    kind("signal", "signal ", "#cf222e", "signal")
    kind("write", "wrote ", "#9a6700", "file written")
    kind("relay", "relay ", "#1b7c83", "relay")
    kind("upload", "upload daemon: ", "#1b7c83", "")
    WIDTH = 1000; MARGIN = 12; ROW = 16; GAP = 7
    LETTER = 6.63 # of the 11 pixel monospace font
    for (i = 1; i < ARGC; i++)
        if (ARGV[i] == "--trace") trace = 1
        else words[++word_count] = ARGV[i]
    ARGC = 1
}

function kind(name, begin, colour, legend) {
    begins[name] = begin; colours[name] = colour; legends[name] = legend; order[++kinds] = name
}

function add(of_kind, text, start, end, open) {
    n++
    kinds_of[n] = of_kind; texts[n] = text; from[n] = start; to[n] = end; goes_on[n] = open
}

# Reads a line of the log. Times are seconds since midnight before the boot. A text
# that ends with "(WHAT 1.234 ms)" has a duration.
{
    gsub(/[^ -~]/, "?")
    split($1, clock, ":")
    time = day + clock[1] * 3600 + clock[2] * 60 + clock[3]
    if (time < last - 43200) { day += 86400; time += 86400 }
    last = time
    text = substr($0, length($1) + length($2) + 3)
    lasted = -1
    if (match(text, / \([a-z0-9, ]* [0-9.]+ ms\)$/)) {
        what = substr(text, RSTART + 2)
        lasted = $(NF - 1) / 1000
        text = substr(text, 1, RSTART - 1)
    }
    if ($2 == "boot" && text == "begins") { n = 0; add("boot", "boot", time, time, 1) }
    else if ($2 == "boot") { to[1] = time; goes_on[1] = 0 }
    else if ($2 == "run" || $2 == "call") add($2, text, time, time, 1)
    else if ($2 == "end" || $2 == "done") {
        for (i = n; i > 0; i--)
            if (goes_on[i] && texts[i] == text) {
                to[i] = time; goes_on[i] = 0
                if (what !~ /^exit 0/) texts[i] = text " " substr(what, 1, index(what, ",") - 1)
                break
            }
    } else if ($2 == "lock") {
        if (text ~ / given back$/) add("lock", substr(text, 1, length(text) - 11), time - lasted, time, 0)
        else if (lasted > 0.0005) add("wait", substr(text, 1, length(text) - 6), time - lasted, time, 0)
    } else if ($2 in begins) add($2, text, lasted < 0 ? time : time - lasted, time, 0)
}

# A shell line that only runs one tool is drawn as that tool.
function merge_shells(  run, shell) {
    for (run = 1; run <= n; run++)
        for (shell = run > 5 ? run - 5 : 1; kinds_of[run] == "run" && shell <= n && from[shell] < to[run] + 1; shell++)
            if (kinds_of[shell] == "shell" && index(texts[shell], texts[run]) == 1 && !index(texts[shell], ";") &&
                from[run] >= from[shell] && from[run] <= to[shell] + 0.05) {
                from[run] = from[shell]
                if (to[run] < to[shell]) to[run] = to[shell]
                kinds_of[shell] = ""
            }
}

# by_time[1..shown]: the events in the order of their starts, longer ones first.
function sort(  i, j, k) {
    for (i = 1; i <= n; i++) {
        if (kinds_of[i] == "") continue
        for (j = shown++; j > 0; j--) {
            k = by_time[j]
            if (from[k] < from[i] || (from[k] == from[i] && to[k] >= to[i])) break
            by_time[j + 1] = k
        }
        by_time[j + 1] = i
    }
}

# A command or tool that repeats an earlier one is drawn once, with a count. The
# messages that daemons took meanwhile are drawn the first time only.
function fold(  i, j, e, first, last, same, latest) {
    for (i = 1; i <= shown; i = last + 1) {
        first = by_time[i]
        latest = to[first]
        same = kinds_of[first] goes_on[first] texts[first]
        for (last = i; last < shown; last++) {
            e = by_time[last + 1]
            if (from[e] >= latest && kinds_of[e] ~ /^(call|run|shell)$/) break
            if (to[e] > latest) latest = to[e]
            if (kinds_of[e] != "take") same = same "\n" kinds_of[e] goes_on[e] texts[e]
        }
        if (!(same in drawn)) drawn[same] = first
        times[drawn[same]]++
        for (j = i; j <= last; j++) {
            e = by_time[j]
            if (drawn[same] == first || (kinds_of[e] == "take" && !(texts[e] in taken)))
                by_time[++kept] = e
            if (kinds_of[e] == "take") taken[texts[e]] = 1
        }
    }
    shown = kept
}

function duration(seconds) {
    if (seconds < 0.00095) return seconds ? int(seconds * 1e6 + 0.5) " us" : 0
    return seconds < 1 ? sprintf("%.4g ms", int(seconds * 10000 + 0.5) / 10) : sprintf("%.4g s", seconds)
}

function label(e,  text) {
    text = begins[kinds_of[e]] texts[e]
    if (goes_on[e]) return text " (goes on)"
    if (times[e] > 1) text = text " (" times[e] " times)"
    return to[e] - from[e] < 0.001 || kinds_of[e] == "pause" ? text : text " (" duration(to[e] - from[e]) ")"
}

function xml(text) {
    gsub(/&/, "\\&amp;", text); gsub(/</, "\\&lt;", text); gsub(/>/, "\\&gt;", text)
    return text
}

# The rows first..end of by_time as one panel below `top`.
function panel(first, end,  i, e, start, span, scale, step, tick, x, y, w, text, len, right, left, side) {
    start = from[by_time[first]]
    span = 0.0001
    for (i = first; i <= end; i++)
        if (to[by_time[i]] - start > span) span = to[by_time[i]] - start
    scale = (WIDTH - 2 * MARGIN) / span
    text = texts[by_time[first]] ": " duration(span)
    out(sprintf("<text x='%g' y='%g' class='t'>%s</text>", MARGIN, top + 16, xml(text)))
    step = 1e-5
    for (i = 0; span / step > 9; i++) step *= i % 3 == 1 ? 2.5 : 2
    y = top + 42
    for (tick = 0; tick <= span; tick += step) {
        x = MARGIN + tick * scale
        out(sprintf("<path d='M%.1f %gV%g' class='g'/>", x, y - 18, y + ROW * (end - first + 1)))
        if (x < WIDTH - 5 * MARGIN)
            out(sprintf("<text x='%.1f' y='%g' class='a'>%s</text>", x + 3, y - 9, duration(tick)))
    }
    for (i = first; i <= end; i++) {
        e = by_time[i]
        x = MARGIN + (from[e] - start) * scale
        w = (goes_on[e] ? start + span - from[e] : to[e] - from[e]) * scale
        if (to[e] > from[e] || goes_on[e])
            out(sprintf("<rect x='%.1f' y='%g' width='%.1f' height='%g' fill='%s'%s/>", x, y + 2,
                w < 1.5 ? 1.5 : w, ROW - 4, colours[kinds_of[e]], goes_on[e] ? " opacity='.4'" : ""))
        else
            out(sprintf("<circle cx='%.1f' cy='%g' r='4' fill='%s'/>", x, y + ROW / 2, colours[kinds_of[e]]))
        # Inside the bar, else on the side with room, else cut.
        text = label(e)
        len = length(text) * LETTER
        right = WIDTH - MARGIN - x - w - GAP
        left = x - GAP - MARGIN
        side = len + GAP < w ? "inside" : len > right && left > right ? "left" : "right"
        if (side == "left" && len > left) text = substr(text, 1, left / LETTER - 3) "..."
        if (side == "right" && len > right) text = substr(text, 1, right / LETTER - 3) "..."
        out(sprintf("<text x='%.1f' y='%g'%s>%s</text>", side == "inside" ? x + GAP / 2 : side == "left" ? x - GAP : x + w + GAP,
            y + 12, side == "left" ? " text-anchor='end'" : "", xml(text)))
        y += ROW
    }
    top = y + 14
}

# Bars that overlap, but are not nested, get separate lanes.
function events(first, end,  i, e, lane, mark, text) {
    for (i = first; i <= end; i++) {
        e = by_time[i]
        mark = to[e] == from[e] && !goes_on[e]
        for (lane = 1; !mark; lane++) {
            while (depth[lane] > 0 && ends[lane, depth[lane]] <= from[e]) depth[lane]--
            if (depth[lane] > 0 && ends[lane, depth[lane]] < to[e]) continue
            ends[lane, ++depth[lane]] = to[e]
            break
        }
        text = escaped(escaped(label(e), "\\"), "\"")
        out(sprintf("%s{\"name\":\"%s\",\"cat\":\"%s\",\"ph\":\"%s\",\"ts\":%.0f,\"dur\":%.0f,\"pid\":1,\"tid\":%d}",
            body == "" ? "" : ",", text, kinds_of[e], mark ? "i" : goes_on[e] ? "B" : "X", from[e] * 1e6,
            (to[e] - from[e]) * 1e6, lane))
    }
}

# Escapes for a JSON string without gsub, whose backslashes depend on the awk.
function escaped(text, letter,  rest) {
    for (rest = ""; index(text, letter); text = substr(text, index(text, letter) + 1))
        rest = rest substr(text, 1, index(text, letter) - 1) "\\" letter
    return rest text
}

function out(line) { body = body line "\n" }

function wanted(title,  i) {
    for (i = 1; i <= word_count; i++)
        if (index(title, words[i]) == 1) return 1
    return !word_count
}

END {
    merge_shells()
    sort()
    if (!trace) fold()
    top = 30
    # A panel is a boot, or a command and its effects.
    for (first = 1; first <= shown; first = next_one) {
        latest = to[by_time[first]]
        for (next_one = first + 1; next_one <= shown; next_one++) {
            e = by_time[next_one]
            if (from[e] > latest + (kinds_of[e] == "call" ? 0.005 : 1)) break
            if (to[e] > latest) latest = to[e]
        }
        if (!wanted(texts[by_time[first]])) continue
        if (trace) events(first, next_one - 1)
        else panel(first, next_one - 1)
    }
    if (body == "") {
        print "plot: the log has nothing of the kind since the last boot" >"/dev/stderr"
        exit 1
    }
    if (trace) {
        printf "{\"traceEvents\":[\n%s]}\n", body
        exit
    }
    printf "<svg xmlns='http://www.w3.org/2000/svg' width='%d' height='%d' viewBox='0 0 %d %d' " \
        "font-family='DejaVu Sans Mono, monospace' font-size='11'>\n<style>.t{font-size:14px;font-weight:bold}" \
        ".a{fill:#57606a}.g{stroke:#e3e7eb}text{white-space:pre}</style>\n" \
        "<rect width='100%%' height='100%%' fill='#fff'/>\n", WIDTH, top, WIDTH, top
    x = MARGIN
    for (i = 1; i <= kinds; i++)
        if (legends[order[i]] != "") {
            printf "<circle cx='%g' cy='14' r='4' fill='%s'/><text x='%g' y='18'>%s</text>\n", x, \
                colours[order[i]], x + 7, legends[order[i]]
            x += 22 + LETTER * length(legends[order[i]])
        }
    printf "%s</svg>\n", body
}
