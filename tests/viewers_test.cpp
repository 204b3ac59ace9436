// The viewer list, and what the relay is told of it.

#include "cfg_set.h"
#include "doubles.h"

#include <cstring>

using namespace doubles;

using ViewersTest = LibraryTest;

// clang-format off
using Text = const std::string &;

static viewer_entry viewer(Text name, Text passcode = "p", Text credential = "c", Text once = "1")
{
    viewer_entry entry{};
    name.copy(entry.name, sizeof entry.name);
    passcode.copy(entry.passcode, sizeof entry.passcode);
    credential.copy(entry.credential, sizeof entry.credential);
    once.copy(entry.once, sizeof entry.once);
    return entry;
}

// The count and the entries that were read over others, without the reports.
static std::string read_over(const viewer_entry &was)
{
    std::vector<viewer_entry> list(11, was);
    uint8_t count = 99;
    quietly([&] { return viewer_get_config(&count, list.data()); });
    std::string text = words(count);
    for (const viewer_entry &entry : list)
        if (memcmp(&entry, &was, sizeof entry) != 0)
            text += ": " + words(Text(entry.name), Text(entry.passcode), Text(entry.credential), Text(entry.once));
    return text;
}

// The count.
static int reported(const viewer_entry &was)
{
    std::vector<viewer_entry> list(10, was);
    uint8_t count = 0;
    return viewer_get_config(&count, list.data()) + count;
}

// The address of an entry that lives as long as the call it is given to.
static const viewer_entry *at(const viewer_entry &entry) { return &entry; }

static std::string key(size_t slot) { return "viewer_list_0" + std::to_string(slot); }
static std::string cut(Text text) { return text.substr(0, text.size() - 1); }
static const std::string GET = "[cfg_set viewer_get_config #] ", SET = "[cfg_set viewer_set_config #] ";
static const std::string END = GET + "param_get fail\n";

static Given slots(const Calls &values)
{
    Given stored;
    for (size_t i = 0; i < values.size(); i++)
        stored[key(i)] = values[i];
    return stored;
}

// The reports of a reading that finds these, each NAME,p,c,0 or a name alone.
static std::string listed(const Calls &values)
{
    std::string text;
    for (Text value : values) {
        const bool whole = value.find(',') != std::string::npos;
        text += GET + "name        = " + value.substr(0, value.find(',')) + "\n";
        text += GET + "passcode    = " + (whole ? "p\n" : "\n") + GET + "credential  = " + (whole ? "c\n" : "\n");
        text += GET + "once        = " + (whole ? "0\n" : "\n") + GET + "buf         = " + value + "\n";
    }
    return text;
}

// The reports of storing these.
static std::string stored(const Calls &values, Text head = SET)
{
    std::string text;
    for (size_t i = 0; i < values.size(); i++)
        text += head + "nvram   = " + key(i) + "\n" + head + "buf     = " + values[i] + "\n";
    return text;
}

static const std::string ANN = "ann,p,c,0", BOB = "bob,p,c,0", CAT = "cat,p,c,0";
static const Calls TEN(10, ANN);

TEST_F(ViewersTest, ListIsReadAsFarAsItsTextsAndPlacesGo)
{
    const auto row = [](Text text, Text read) {
        return Row{{{key(0), text}}, CALL(read_over(viewer("w", "w", "w", "w"))), "1: " + read};
    };
    const auto n = [](size_t length, char c = 'n') { return std::string(length, c); };
    check({
        {CALL(read_over(viewer("w"))), "0", {}, "", {key(0) + " 256"}},
        {{{key(0), ANN}, {key(2), BOB}}, CALL(read_over(viewer("w"))), "1: ann p c 0", {}, "",
            {key(0) + " 256", key(1) + " 256"}},
        {slots(TEN), CALL(reported(viewer("w"))), 10, {}, cut(listed(TEN))},
        {slots({ANN, ""}), CALL(reported(viewer("w"))), 1, {}, cut(listed({ANN}))},
        {CALL_AS(viewer_get_config, reported(viewer("w"))), 0, {}, "cfg_set param_get fail"},
        {slots({",", ""}), CALL_AS(viewer_get_config, reported(viewer(n(256, 'w'), n(32, 'w'), n(64, 'w'), "www"))), 1, {},
            "cfg_set name        = " + n(256, 'w') + "\ncfg_set passcode    = " + n(32, 'w') + "\ncfg_set credential  = " +
            n(64, 'w') + "\ncfg_set once        = www\ncfg_set buf         = ,"},
        row("A b,p,c,12", "A b p c 12"), row("n,p,c,123,4", "n p c 12"), row("n,p,c, \t1 2", "n p c 1"), row("n,p,c,", "n p c w"),
        row("n,p", "n p w w"), row("n", "n w w w"), row("n,,c,1", "n w w w"), row("n\np,c,1", "n w w w"), row("n,p;c,1", "n p;c 1 w"),
        row(n(300), n(255) + " w w w"), row(n(200) + "," + n(40, 'p') + ",c,1", n(200) + " " + n(31, 'p') + " c 1"),
        row("n,p," + n(70, 'c') + ",1", "n p " + n(63, 'c') + " 1"),
    });
}

TEST_F(ViewersTest, AdditionIsStoredThenTold)
{
    const auto row = [](const viewer_entry &bad) { return Row{CALL(viewer_add_config(at(bad))), -1, {}, END + "cfg_set invalid viewer"}; };
    const auto n = [](size_t length) { return std::string(length, 'n'); };
    const auto added = [](const char *count) { return "cfg_set add new viewer to nvram n = " + std::string(count); };
    const std::string told = "\ncfg_set add new viewer to relay server db.", set0 = "set " + key(0) + "=";
    const std::string known = listed({ANN, BOB}) + END + "cfg_set viewer has been in viewerlist";
    const std::string set1 = "set " + key(1) + "=", longest = "a," + n(31) + "," + n(63) + ",12";
    check({
        {{{key(0), ANN}, {key(2), CAT}}, CALL(viewer_add_config(at(viewer("Ann", "12", "key", "7")))), 0,
            {set0 + ANN, set1 + "Ann,12,key,7", "relay 1 Ann 12 key 7"},
         listed({ANN}) + END + stored({ANN, "Ann,12,key,7"}) + added("1") + told},
        {CALL(viewer_add_config(at(viewer("a", "", "", "")))), 0, {set0 + "a,,,", "relay 1 a   0"},
            END + stored({"a,,,"}) + added("0") + told},
        {CALL(viewer_add_config(at(viewer(n(249))))), 0, {set0 + n(249) + ",p,c,1", "relay 1 " + n(249) + " p c 1"},
            END + stored({n(249) + ",p,c,1"}) + added("0") + told},
        {slots({n(254)}), CALL(viewer_add_config(at(viewer("ann")))), 0, {set0 + n(254) + ",", set1 + "ann,p,c,1", "relay 1 ann p c 1"},
         listed({n(254)}) + END + stored({n(254) + ",", "ann,p,c,1"}) + added("1") + told},
        {{}, {"set " + key(0)}, CALL(viewer_add_config(at(viewer("a")))), 0, {set0 + "a,p,c,1", "relay 1 a p c 1"},
            END + stored({"a,p,c,1"}) + SET + "param_set fail\n" + added("0") + told},
        {slots({ANN, BOB}), CALL(viewer_add_config(at(viewer("ann", "", "", "")))), 0, {}, known},
        {slots({ANN, BOB}), CALL(viewer_add_config(at(viewer("bob", "", "", "")))), 0, {}, known},
        {slots(TEN), CALL(viewer_add_config(at(viewer("ann")))), 10, {}, listed(TEN) + "cfg_set Viewer List (10) has achieved Max number"},
        row(viewer("")), row(viewer("a,b")), row(viewer("a\nb")), row(viewer(n(250))), row(viewer(n(256), "", "", "")),
        row(viewer("a", "p,")), row(viewer("a", "\n")), row(viewer("a", n(32))),
        row(viewer("a", "p", "c", "123")), row(viewer("a", "p", ",c")), row(viewer("a", "p", "c\n")), row(viewer("a", "p", n(64))),
        {{}, {"relay"}, CALL(viewer_add_config(at(viewer("a", n(31), n(63), "12")))), 0,
            {set0 + longest, "relay 1 a " + n(31) + " " + n(63) + " 12"},
         END + stored({longest}) + added("0") + "\ncfg_set add new viewer to relay failed." + told},
    });
}

TEST_F(ViewersTest, DeletionIsToldThenStored)
{
    const auto keeps = [](const char *index) { return "cfg_set index i[" + std::string(index) + "] is not that viewer\n"; };
    const auto clears = [](const char *slot) { return "cfg_set clear viewer  in nvram:viewer_list_0" + std::string(slot) + "\n"; };
    const std::string server = "cfg_set delete viewer from relay server ", failed = server + "failed.\n", told = server + "success.\n";
    const std::string found = "cfg_set deleted viewer has found:", absent = "cfg_set viewer has not been in viewerlist:";
    const std::string cleared = clears("0") + clears("1");
    check({
        {slots({ANN, BOB, CAT}), {"relay"}, CALL(viewer_del_config(at(viewer("bob", std::string(32, 'p'), "", "765")))), 0,
         {"relay 2 bob " + std::string(31, 'p') + "  76", "unset " + key(0), "unset " + key(1), "unset " + key(2),
          "set " + key(0) + "=" + ANN, "set " + key(1) + "=" + CAT},
         listed({ANN, BOB, CAT}) + END + keeps("0") + found + "bob\n" + failed + told + keeps("2") +
             cleared + clears("2") + cut(stored({ANN, CAT}))},
        {slots({ANN, ANN}), {"unset " + key(0)}, CALL(viewer_del_config(at(viewer("ann")))), 0,
            {"relay 2 ann p c 1", "relay 2 ann p c 1", "unset " + key(0), "unset " + key(1)},
         listed({ANN, ANN}) + END + found + "ann\n" + told + found + "ann\n" + told + cut(cleared)},
        {slots({"ann of 1,p,c,0", ""}), CALL(viewer_del_config(at(viewer("ann of 12")))), 0, {},
            listed({"ann of 1,p,c,0"}) + keeps("0") + absent + "1"},
        {slots({"ann of 12,p,c,0", ""}), CALL(viewer_del_config(at(viewer("ann of 13")))), 0, {},
            listed({"ann of 12,p,c,0"}) + keeps("0") + absent + "1"},
        {slots({ANN, ""}), CALL(viewer_del_config(at(viewer("Ann")))), 0, {}, listed({ANN}) + keeps("0") + absent + "1"},
        {CALL(viewer_del_config(at(viewer("ann")))), 0, {}, END + absent + "0"},
    });
}

TEST_F(ViewersTest, SetterStoresAllOrNothingThatIsTooLong)
{
    const auto too_long = [](const viewer_entry &entry) {
        return Row{CALL(viewer_set_config(1, at(entry))), 0, {}, "cfg_set viewer is too long"};
    };
    const std::vector<viewer_entry> list = {viewer("ann"), viewer("bob"), viewer(std::string(250, 'n'))};
    const std::string a = "ann,p,c,1", b = "bob,p,c,1", set0 = "set " + key(0) + "=" + a;
    const std::string both = stored({a, b}, "cfg_set "), first = stored({a}, "cfg_set "), p(32, 'p'), c(64, 'c'), n(256, 'n');
    check({
        {CALL(viewer_set_config(0, list.data())), 0},
        {CALL(viewer_set_config(2, list.data())), 0, {set0, "set " + key(1) + "=" + b}, cut(both)},
        {{}, {"set " + key(0)}, CALL(viewer_set_config(2, list.data())), 0, {set0}, first + "cfg_set param_set fail"},
        {{}, {},                CALL(viewer_set_config(3, list.data())), 0, {}, "cfg_set viewer is too long"},
        too_long(viewer(n, "", "", "")), too_long(viewer("a", p)), too_long(viewer("a", "p", c)),
        too_long(viewer("a", "p", "c", "123")), // no end
    });
}
// clang-format on
