// Prints the man page or the bash completion from the tables. Runs on the build
// machine, whatever machine cfgctl is for.

#include "help.h"

#include <cstdio>

using namespace cfgctl;

// The files that cfgctl's verbs read or write, except the store's and the drivers'.
static constexpr Verb FILES[] = {
    {"/etc/wpa_supplicant.conf", "the supplicant's networks (wifi config)"},
    {"/etc_ro/time_zone", "zone names and their TZ strings (time zone)"},
    {"/tmp/TZ, /tmp/localtime", "the active zone (time zone)"},
    {"/tmp/dev_status", "the device status (status)"},
    {"/var/run/monitor.pid", "process id of the running monitor"},
    {"/mnt/sdcard/video/.event", "the copy of the event ring (events)"},
    {"/mnt/sdcard/video/.smbu", "jobs of the upload daemon (upload recover)"},
    {"/mnt/sdcard/upgrade/upgrade.bin, upgrade.dat", "the download and its version (firmware)"},
};

// Text for the formatter to fill, with its special characters escaped.
static std::string filled(const std::string &text)
{
    std::string escaped = text.find_first_of(".'") == 0 ? "\\&" : "";
    for (const char c : text)
        escaped += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    return escaped;
}

// A tagged paragraph.
static std::string tagged(const std::string &tag, const std::string &text)
{
    return ".TP\n\\fB" + filled(tag) + "\\fR\n" + filled(text) + "\n";
}

static std::string tagged(const Word &word)
{
    return tagged(label(word), explanation(word));
}

static std::string part(const Action &action)
{
    std::string text =
        ".PP\n\\fB" + filled(usage(action)) + "\\fR\n.PP\n" + filled(action.effect) + "\n";
    for (const Word *word = action.words; word->name; word++)
        text += tagged(*word);
    const Details more = details(action);
    if (!more.words.empty())
        text += std::string(".PP\n") + more.heading + "\n";
    for (const Word &word : more.words)
        text += tagged(word);
    if (*action.exits)
        text += ".PP\nExit status: 0, or " + filled(action.exits) + "\n";
    return text + ".PP\nExample:\n.PP\n.EX\n" + filled(name_of(action)) +
           (*action.example ? " " : "") + filled(action.example) + "\n.EE\n";
}

static std::string man_page()
{
    std::string page = ".TH CFGCTL 1 \"\" \"cfg_set " CFGCTL_VERSION "\"\n.nh\n.ad l\n"
                       ".SH NAME\ncfgctl \\- settings and device control of the camera\n"
                       ".SH SYNOPSIS\n\\fBcfgctl\\fR [OPTION...] VERB [WORD...]\n.br\n"
                       "\\fBcfgctl help\\fR [VERB]\n"
                       ".SH DESCRIPTION\nReads and changes the camera's settings and drives its "
                       "functions through the library cfg_set. Standard output is data only; the "
                       "library and its commands report on standard error.\n.PP\n"
                       "Options can be anywhere before \\-\\-; no word after it is an option.\n"
                       ".PP\nThe verbs:\n";
    for (const Verb &verb : VERBS)
        page += tagged(verb.name, verb.summary);
    page += ".SH OPTIONS\n";
    for (const Word &option : OPTIONS)
        page += tagged(option);
    page += ".SH COMMANDS\n";
    for (const Verb &verb : VERBS) {
        page += std::string(".SS ") + verb.name + "\n";
        for (const Action &action : ACTIONS)
            page += is(action.verb, verb.name) ? part(action) : "";
    }
    page += ".SH EXIT STATUS\n";
    for (const Verb &status : EXITS)
        page += tagged(status.name, status.summary);
    page += ".SH FILES\n";
    for (const Verb &file : FILES)
        page += tagged(file.name, file.summary);
    return page + ".SH SEE ALSO\n\\fBipcs\\fR(1), \\fBwpa_supplicant.conf\\fR(5)\n";
}

// The possible completions of a word.
static std::string candidates(const Action &action, const Word &word)
{
    std::string found = word.kind == CHOICE          ? word.choices
                        : word.kind != STORE_KEY     ? ""
                        : is(action.verb, "restore") ? "$restorable"
                                                     : "$keys";
    for (char &c : found)
        c = c == '|' ? ' ' : c;
    for (int64_t i = word.least;
         word.kind == NUMBER && word.most - word.least < 10 && i <= word.most; i++)
        found += std::to_string(i) + " ";
    return found;
}

// A line of the completion's `case`: what follows `count` words that start with `words`.
static std::string rule(const std::string &count, const std::string &words,
                        const std::string &found)
{
    return found.empty() ? "" : "    " + count + "\" " + words + "\"*) " + found + " ;;\n";
}

static std::string set_found(const std::string &words)
{
    return words.empty() ? "" : "found=\"" + words + "\"";
}

static std::string completion()
{
    const std::string any = "[1-9]";
    std::string verbs;
    std::string keys;
    std::string restorable;
    std::string options;
    std::string rules;
    for (const Setting &setting : SETTINGS) {
        keys += std::string(setting.value.name) + " ";
        restorable += setting.restore ? std::string(setting.value.name) + " " : "";
    }
    for (const Verb &verb : VERBS) {
        std::string names;
        unsigned bits = JSON | HELP;
        verbs += std::string(verb.name) + " ";
        for (const Action &action : ACTIONS) {
            if (!is(action.verb, verb.name))
                continue;
            const bool named = *action.name != '\0';
            const std::string words = std::string(verb.name) + (named ? " " : "") + action.name;
            std::string assigned; // NAME=, in any order
            unsigned count = named ? 2 : 1;
            for (const Word *word = action.words; word->name; word++)
                if (word->kind == ASSIGNMENT)
                    assigned = "${keys// /= }";
                else if (std::string(word->name).back() == '=')
                    assigned += std::string(word->name) + " ";
                else if (word->kind == FILENAME || is(action.verb, "alert") ||
                         is(action.verb, "sound") || is(action.name, "recover"))
                    rules += rule(std::to_string(count++), words, "files=yes");
                else
                    rules +=
                        rule(std::to_string(count++), words, set_found(candidates(action, *word)));
            rules += rule(any + "\" " + words + "\"*|" + any + "[0-9]", words, set_found(assigned));
            names += named ? std::string(action.name) + " " : "";
            bits |= action.options;
        }
        rules += rule("1", verb.name, set_found(names));
        std::string allowed;
        for (unsigned i = 0; i < OPTION_COUNT; i++)
            allowed += bits >> i & 1 ? std::string(OPTIONS[i].name) + " " : "";
        options += rule(any, verb.name, set_found(allowed));
    }
    return "# Completion of cfgctl for bash.\n_cfgctl() {\n"
           "    local cur=${COMP_WORDS[COMP_CWORD]} found=\"--help --version\" files='' word "
           "given=()\n"
           "    local keys=\"" +
           keys + "\" restorable=\"" + restorable + "\" verbs=\"" + verbs +
           "\"\n"
           "    COMPREPLY=()\n"
           "    # No completion of values. The shell splits words at \"=\".\n"
           "    [[ $cur != = && ${COMP_WORDS[COMP_CWORD-1]} != = ]] || return 0\n"
           "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
           "        [[ $word == -* ]] || given+=(\"$word\")\n    done\n"
           "    local all=\"${#given[@]} ${given[*]}\"\n"
           "    if [[ $cur == -* ]]; then case $all in\n" +
           options +
           "    esac; else found=; case $all in\n"
           "    0*) found=\"help $verbs\" ;;\n    1\\ help) found=$verbs ;;\n" +
           rules +
           "    esac; fi\n"
           "    if [[ $files ]]; then\n"
           "        local IFS=$'\\n'\n"
           "        compopt -o filenames 2>/dev/null\n"
           "        COMPREPLY=($(compgen -f -- \"$cur\"))\n"
           "    else\n"
           "        COMPREPLY=($(compgen -W \"$found\" -- \"$cur\"))\n"
           "        [[ ${COMPREPLY[*]} != *= ]] || compopt -o nospace 2>/dev/null\n"
           "    fi\n}\n"
           "complete -F _cfgctl cfgctl\n";
}

int main(int argc, char **argv)
{
    const bool man = argc > 1 && is("man", argv[1]);
    std::fputs((man ? man_page() : completion()).c_str(), stdout);
    return std::fclose(stdout) == 0 ? 0 : 1;
}
