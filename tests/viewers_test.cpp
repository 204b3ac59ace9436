// The viewer list, and what the relay is told of it.

#include "cfg_set.h"
#include "doubles.h"

#include <cstring>

using namespace doubles;

using ViewersTest = LibraryTest;

// clang-format off
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
            text += ": " + words(entry.name, entry.passcode, entry.credential, entry.once);
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
#define ADD(...) CALL(viewer_add_config(at(viewer(__VA_ARGS__))))
#define STORE(...) CALL(viewer_set_config(__VA_ARGS__))
#define DELETE(...) CALL(viewer_del_config(at(viewer(__VA_ARGS__))))

static std::string key(size_t slot) { return "viewer_list_0" + std::to_string(slot); }
static std::string cut(Text text) { return text.substr(0, text.size() - 1); }
static const std::string GET = "[cfg_set viewer_get_config #] ";
static const std::string SET = "[cfg_set viewer_set_config #] ", END = GET + "param_get fail\n";

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
        text += GET + "passcode    = " + (whole ? "p\n" : "\n");
        text += GET + "credential  = " + (whole ? "c\n" : "\n") + GET + "once        = ";
        text += (whole ? "0\n" : "\n") + GET + "buf         = " + value + "\n";
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
    const std::string w32 = n(32, 'w'), w64 = n(64, 'w'), w256 = n(256, 'w');
    check({
        {CALL(read_over(viewer("w"))), "0", {}, "", {key(0) + " 256"}},
        {{{key(0), ANN}, {key(2), BOB}}, CALL(read_over(viewer("w"))), "1: ann p c 0", {}, "",
            {key(0) + " 256", key(1) + " 256"}},
        {slots(TEN), CALL(reported(viewer("w"))), 10, {}, cut(listed(TEN))},
        {slots({ANN, ""}), CALL(reported(viewer("w"))), 1, {}, cut(listed({ANN}))},
        {CALL_AS(viewer_get_config, reported(viewer("w"))), 0, {}, "cfg_set param_get fail"},
        {slots({",", ""}), CALL(reported(viewer(w256, w32, w64, "www"))), 1, {},
            GET + "name        = " + w256 + "\n" + GET + "passcode    = " + w32 + "\n" +
                GET + "credential  = " + w64 + "\n" + GET + "once        = www\n" + GET + "buf         = ,"},
        row("A b,p,c,12", "A b p c 12"), row("n,p,c,123,4", "n p c 12"),
        row("n,p,c, \t1 2", "n p c 1"), row("n,p,c,", "n p c w"), row("n,p", "n p w w"),
        row("n", "n w w w"), row("n,,c,1", "n w w w"), row("n\np,c,1", "n w w w"),
        row("n,p;c,1", "n p;c 1 w"), row(n(300), n(255) + " w w w"),
        row(n(200) + "," + n(40, 'p') + ",c,1", n(200) + " " + n(31, 'p') + " c 1"),
        row("n,p," + n(70, 'c') + ",1", "n p " + n(63, 'c') + " 1"),
    });
}

TEST_F(ViewersTest, AdditionIsStoredThenTold)
{
    const std::string invalid = END + "cfg_set invalid viewer";
    const std::string added = "cfg_set add new viewer to nvram n = ";
    const std::string told = "\ncfg_set add new viewer to relay server db.", n31(31, 'n');
    const std::string n63(63, 'n');
    const std::string known = listed({ANN, BOB}) + END + "cfg_set viewer has been in viewerlist";
    const std::string set0 = "set " + key(0) + "=", set1 = "set " + key(1) + "=", n249(249, 'n');
    const std::string n254(254, 'n'), longest = "a," + n31 + "," + n63 + ",12";
    const std::string full = "cfg_set Viewer List (10) has achieved Max number";
    check({
        {{{key(0), ANN}, {key(2), CAT}}, ADD("Ann", "12", "key", "7"), 0,
            {set0 + ANN, set1 + "Ann,12,key,7", "relay 1 Ann 12 key 7"},
            listed({ANN}) + END + stored({ANN, "Ann,12,key,7"}) + added + "1" + told},
        {ADD("a", "", "", ""), 0, {set0 + "a,,,", "relay 1 a   0"}, END + stored({"a,,,"}) + added + "0" + told},
        {ADD(n249), 0, {set0 + n249 + ",p,c,1", "relay 1 " + n249 + " p c 1"},
            END + stored({n249 + ",p,c,1"}) + added + "0" + told},
        {slots({n254}), ADD("ann"), 0, {set0 + n254 + ",", set1 + "ann,p,c,1", "relay 1 ann p c 1"},
            listed({n254}) + END + stored({n254 + ",", "ann,p,c,1"}) + added + "1" + told},
        {{}, {"set " + key(0)}, ADD("a"), 0, {set0 + "a,p,c,1", "relay 1 a p c 1"},
            END + stored({"a,p,c,1"}) + SET + "param_set fail\n" + added + "0" + told},
        {{}, {"relay"}, ADD("a", n31, n63, "12"), 0, {set0 + longest, "relay 1 a " + n31 + " " + n63 + " 12"},
            END + stored({longest}) + added + "0\ncfg_set add new viewer to relay failed." + told},
        {slots({ANN, BOB}), ADD("ann", "", "", ""), 0, {}, known},
        {slots({ANN, BOB}), ADD("bob", "", "", ""), 0, {}, known},
        {slots(TEN), ADD("ann"), 10, {}, listed(TEN) + full},
        {ADD(""), -1, {}, invalid}, {ADD("a,b"), -1, {}, invalid}, {ADD("a\nb"), -1, {}, invalid},
        {ADD(n249 + "n"), -1, {}, invalid}, {ADD(n254 + "nn", "", "", ""), -1, {}, invalid},
        {ADD("a", "p,"), -1, {}, invalid}, {ADD("a", "\n"), -1, {}, invalid}, {ADD("a", n31 + "n"), -1, {}, invalid},
        {ADD("a", "p", ",c"), -1, {}, invalid}, {ADD("a", "p", "c\n"), -1, {}, invalid},
        {ADD("a", "p", n63 + "n"), -1, {}, invalid}, {ADD("a", "p", "c", "123"), -1, {}, invalid},
    });
}

TEST_F(ViewersTest, DeletionIsToldThenStored)
{
    const auto keeps = [](Text i) { return "cfg_set index i[" + i + "] is not that viewer\n"; };
    const auto clears = [](size_t i) { return "cfg_set clear viewer  in nvram:" + key(i) + "\n"; };
    const std::string server = "cfg_set delete viewer from relay server ", told = server + "success.\n";
    const std::string found = "cfg_set deleted viewer has found:", cleared = clears(0) + clears(1);
    const std::string absent = "cfg_set viewer has not been in viewerlist:", n31(31, 'n');
    check({
        {slots({ANN, BOB, CAT}), {"relay"}, DELETE("bob", n31 + "n", "", "765"), 0,
            {"relay 2 bob " + n31 + "  76", "unset " + key(0), "unset " + key(1), "unset " + key(2),
             "set " + key(0) + "=" + ANN, "set " + key(1) + "=" + CAT},
            listed({ANN, BOB, CAT}) + END + keeps("0") + found + "bob\n" + server + "failed.\n" + told +
                keeps("2") + cleared + clears(2) + cut(stored({ANN, CAT}))},
        {slots({ANN, ANN}), {"unset " + key(0)}, DELETE("ann"), 0,
            {"relay 2 ann p c 1", "relay 2 ann p c 1", "unset " + key(0), "unset " + key(1)},
            listed({ANN, ANN}) + END + found + "ann\n" + told + found + "ann\n" + told + cut(cleared)},
        {slots({"ann of 1,p,c,0", ""}), DELETE("ann of 12"), 0, {},
            listed({"ann of 1,p,c,0"}) + keeps("0") + absent + "1"},
        {slots({"ann of 12,p,c,0", ""}), DELETE("ann of 13"), 0, {},
            listed({"ann of 12,p,c,0"}) + keeps("0") + absent + "1"},
        {slots({ANN, ""}), DELETE("Ann"), 0, {}, listed({ANN}) + keeps("0") + absent + "1"},
        {DELETE("ann"), 0, {}, END + absent + "0"},
    });
}

TEST_F(ViewersTest, SetterStoresAllOrNothingThatIsTooLong)
{
    const viewer_entry list[] = {viewer("ann"), viewer("bob"), viewer(std::string(250, 'n'))};
    const std::string a = "ann,p,c,1", b = "bob,p,c,1", set0 = "set " + key(0) + "=" + a;
    const std::string set1 = "set " + key(1) + "=" + b, both = stored({a, b}, "cfg_set ");
    const std::string first = stored({a}, "cfg_set "), p(32, 'p'), c(64, 'c');
    const std::string too_long = "cfg_set viewer is too long", n(256, 'n');
    check({
        {STORE(0, list), 0},
        {STORE(2, list), 0, {set0, set1}, cut(both)},
        {{}, {"set " + key(0)}, STORE(2, list), 0, {set0}, first + "cfg_set param_set fail"},
        {STORE(3, list), 0, {}, too_long},
        {STORE(1, at(viewer(n, "", "", ""))), 0, {}, too_long},
        {STORE(1, at(viewer("a", p))), 0, {}, too_long}, {STORE(1, at(viewer("a", "p", c))), 0, {}, too_long},
        {STORE(1, at(viewer("a", "p", "c", "123"))), 0, {}, too_long}, // no end
    });
}
// clang-format on
