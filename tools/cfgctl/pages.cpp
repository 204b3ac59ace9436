// Prints the man page or the completion for bash, from the tables alone: a
// program of the machine that builds, for whatever machine cfgctl is.

#include "help.h"

#include <cstdio>

using namespace cfgctl;

static std::string preformatted(const std::string &text)
{
    std::string escaped = ".nf\n\\&";
    for (const char c : text)
        escaped += c == '\\' ? "\\e" : c == '-' ? "\\-" : c == '\n' ? "\n\\&" : std::string(1, c);
    return escaped + "\n.fi\n";
}

static std::string man_page()
{
    std::string page = ".TH CFGCTL 1 \"\" \"cfg_set " CFGCTL_VERSION "\"\n.SH NAME\n"
                       "cfgctl \\- settings and device control of the camera\n"
                       ".SH SYNOPSIS\n" +
                       preformatted(help()) + ".SH VERBS\n";
    for (const Verb &verb : VERBS)
        page += std::string(".SS ") + verb.name + "\n" + preformatted(help(verb));
    return page;
}

// What may stand in a word's place.
static std::string candidates(const Word &word)
{
    std::string found = word.kind == STORE_KEY ? "$keys" : word.kind == CHOICE ? word.choices : "";
    for (char &c : found)
        c = c == '|' ? ' ' : c;
    for (int64_t i = word.least;
         word.kind == NUMBER && word.most - word.least < 10 && i <= word.most; i++)
        found += std::to_string(i) + " ";
    return found;
}

// A line of the completion's `case`: what follows so many words, which begin so.
static std::string rule(const std::string &count, const std::string &words,
                        const std::string &found)
{
    return found.empty() ? ""
                         : "    " + count + "\" " + words + "\"*) found=\"" + found + "\" ;;\n";
}

static std::string completion()
{
    std::string verbs;
    std::string keys;
    std::string options;
    std::string rules;
    for (const Setting &setting : SETTINGS)
        keys += std::string(setting.value.name) + " ";
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
                if (std::string(word->name).back() == '=')
                    assigned += std::string(word->name) + " ";
                else
                    rules += rule(std::to_string(count++), words, candidates(*word));
            rules += rule("[1-9]", words, assigned);
            names += named ? std::string(action.name) + " " : "";
            bits |= action.options;
        }
        rules += rule("1", verb.name, names);
        std::string allowed;
        for (unsigned i = 0; i < OPTION_COUNT; i++)
            allowed += bits >> i & 1 ? std::string(OPTIONS[i].name) + " " : "";
        options += rule("[1-9]", verb.name, allowed);
    }
    return "# Completion of cfgctl for bash.\n_cfgctl() {\n"
           "    local cur=${COMP_WORDS[COMP_CWORD]} found=\"--help --version\" word given=()\n"
           "    local keys=\"" +
           keys + "\" verbs=\"" + verbs +
           "\"\n"
           "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
           "        [[ $word == -* ]] || given+=(\"$word\")\n    done\n"
           "    local all=\"${#given[@]} ${given[*]}\"\n"
           "    if [[ $cur == -* ]]; then case $all in\n" +
           options +
           "    esac; else found=; case $all in\n"
           "    0*) found=\"help $verbs\" ;;\n    1\\ help) found=$verbs ;;\n" +
           rules +
           "    esac; fi\n"
           "    COMPREPLY=($(compgen -W \"$found\" -- \"$cur\"))\n}\n"
           "complete -o default -F _cfgctl cfgctl\n";
}

int main(int argc, char **argv)
{
    const bool man = argc > 1 && is("man", argv[1]);
    std::fputs((man ? man_page() : completion()).c_str(), stdout);
    return std::fclose(stdout) == 0 ? 0 : 1;
}
