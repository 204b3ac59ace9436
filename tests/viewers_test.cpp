// The viewer list, and what the relay is told of it.

#include "cfg_set.h"
#include "doubles.h"

#include <cstring>

using namespace doubles;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class ViewersTest : public LibraryTest
{
};

static viewer_entry viewer(const std::string &name, const std::string &passcode = "p",
                           const std::string &credential = "c", const std::string &once = "1")
{
    viewer_entry entry{};
    name.copy(entry.name, sizeof entry.name);
    passcode.copy(entry.passcode, sizeof entry.passcode);
    credential.copy(entry.credential, sizeof entry.credential);
    once.copy(entry.once, sizeof entry.once);
    return entry;
}

static Outcome add(const viewer_entry &entry)
{
    return observe([&] { return viewer_add_config(&entry); });
}

static Outcome del(const viewer_entry &entry)
{
    return observe([&] { return viewer_del_config(&entry); });
}

static void store_viewers(const std::vector<std::string> &names)
{
    for (size_t i = 0; i < names.size(); i++)
        store["viewer_list_0" + std::to_string(i)] = names[i] + ",p,c,0";
}

// What is reported behind the listing that every change begins with.
static std::string after_the_list(const Outcome &outcome, const std::string &function)
{
    const size_t start = outcome.out.find("[cfg_set " + function);
    return start == std::string::npos ? "" : outcome.out.substr(start);
}

TEST_F(ViewersTest, ListIsReportedAsItIsRead)
{
    store = {{"viewer_list_00", "Ann B,1234,key,1 x"}, {"viewer_list_02", "hidden,p,c,0"}};
    viewer_entry list[10];
    uint8_t count = 99;
    const Outcome get = observe([&] { return viewer_get_config(&count, list); });
    EXPECT_EQ(get.result, 0);
    EXPECT_EQ(count, 1);
    const std::string head = "[cfg_set viewer_get_config #] ";
    EXPECT_EQ(get.out, head + "name        = Ann B\n" + head + "passcode    = 1234\n" + head +
                           "credential  = key\n" + head + "once        = 1\n" + head +
                           "buf         = Ann B,1234,key,1 x\n" + head + "param_get fail\n");
    EXPECT_THAT(calls, ElementsAre("get viewer_list_00 256", "get viewer_list_01 256"));

    store["viewer_list_01"] = "";
    EXPECT_THAT(observe([&] { return viewer_get_config(&count, list); }).out,
                Not(HasSubstr("fail")));
    store_viewers(std::vector<std::string>(10, "n"));
    viewer_get_config(&count, list);
    EXPECT_EQ(count, 10);
}

TEST_F(ViewersTest, StoredFieldsAreCutToTheirPlaces)
{
    const std::string was = std::string(1, 'w');
    for (const auto &[text, fields] : std::vector<std::pair<std::string, std::vector<std::string>>>{
             {"n,p,c,12", {"n", "p", "c", "12"}},
             {"n,p,c,123,4", {"n", "p", "c", "12"}},
             {"n,p,c, \t1 2", {"n", "p", "c", "1"}},
             {"n,p,c,", {"n", "p", "c", was}},
             {"n", {"n", was, was, was}},
             {"n,,c,1", {"n", was, was, was}},
             {"n\np,c,1", {"n", was, was, was}},
             {",p,c,1", {was, was, was, was}},
             {"n," + std::string(40, 'p') + "," + std::string(70, 'c') + ",1",
              {"n", std::string(31, 'p'), std::string(63, 'c'), "1"}},
             {std::string(300, 'n'), {std::string(255, 'n'), was, was, was}}}) {
        store["viewer_list_00"] = text;
        viewer_entry list[10];
        std::fill_n(list, 10, viewer("w", "w", "w", "w"));
        memset(&list[1], 'z', sizeof list[1]);
        uint8_t count = 0;
        observe([&] { return viewer_get_config(&count, list); });
        EXPECT_EQ(count, 1);
        EXPECT_THAT((std::vector<std::string>{list[0].name, list[0].passcode, list[0].credential,
                                              list[0].once}),
                    ElementsAreArray(fields))
            << text;
        EXPECT_EQ(list[1].name[0], 'z');
    }
    // A field that neither the store nor the caller has terminated.
    store["viewer_list_00"] = "n";
    viewer_entry list[10];
    memset(list, 'w', sizeof list);
    uint8_t count = 0;
    EXPECT_THAT(observe([&] { return viewer_get_config(&count, list); }).out,
                HasSubstr("credential  = " + std::string(64, 'w') + "\n"));
}

TEST_F(ViewersTest, AdditionIsStoredThenTold)
{
    store_viewers({"ann"});
    store["viewer_list_02"] = "kept,p,c,0";
    const Outcome added = add(viewer("Ann", "12", "key", "1"));
    EXPECT_EQ(added.result, 0);
    EXPECT_THAT(calls, ElementsAre("get viewer_list_00 256", "get viewer_list_01 256",
                                   "set viewer_list_00=ann,p,c,0",
                                   "set viewer_list_01=Ann,12,key,1", "relay 1 Ann"));
    EXPECT_EQ(store["viewer_list_02"], "kept,p,c,0");
    const std::string set = "[cfg_set viewer_set_config #] ";
    EXPECT_EQ(after_the_list(added, "viewer_set_config"),
              set + "nvram   = viewer_list_00\n" + set + "buf     = ann,p,c,0\n" + set +
                  "nvram   = viewer_list_01\n" + set + "buf     = Ann,12,key,1\n" +
                  "[cfg_set viewer_add_config #] add new viewer to nvram n = 1\n"
                  "[cfg_set viewer_add_config #] add new viewer to relay server db.\n");

    std::string record(360, '\0');
    record.replace(0, 1, "\1")
        .replace(4, 3, "Ann")
        .replace(260, 2, "12")
        .replace(292, 3, "key")
        .replace(356, 1, "\1");
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(&relayed.at(0)), sizeof relayed[0]),
              record);

    relay_result = 1;
    EXPECT_THAT(add(viewer("bob")).out,
                EndsWith("[cfg_set viewer_add_config #] add new viewer to relay failed.\n"
                         "[cfg_set viewer_add_config #] add new viewer to relay server db.\n"));
    EXPECT_EQ(store["viewer_list_02"], "kept,p,c,0") << "the list had three entries by then";
}

TEST_F(ViewersTest, AdditionIsRefusedWithoutATrace)
{
    store_viewers({"ann", "bob"});
    const auto refuse = [](const viewer_entry &entry, int result, const std::string &text) {
        calls.clear();
        const Outcome added = add(entry);
        EXPECT_EQ(added.result, result) << text;
        EXPECT_EQ(after_the_list(added, "viewer_add_config"),
                  "[cfg_set viewer_add_config #] " + text + "\n");
        EXPECT_THAT(recorded("set"), IsEmpty());
        EXPECT_THAT(recorded("relay"), IsEmpty());
    };
    const std::string too_long = "viewer is too long";
    refuse(viewer("bob", "other"), 0, "viewer has been in viewerlist");
    refuse(viewer(std::string(250, 'n')), -1, too_long);
    refuse(viewer(std::string(256, 'n')), -1, too_long); // not even terminated
    EXPECT_EQ(add(viewer(std::string(249, 'n'))).result, 0);
    // One that could not go back into the store whole, among those listed.
    store["viewer_list_00"] = std::string(254, 'n');
    refuse(viewer("eve"), -1, too_long);
    store_viewers({"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"});
    refuse(viewer("eve"), 10, "Viewer List (10) has achieved Max number");
}

TEST_F(ViewersTest, DeletionIsToldThenStored)
{
    store_viewers({"ann", "bob", "cat"});
    relay_result = -1;
    const Outcome deleted = del(viewer("bob", "other", "", "7"));
    EXPECT_EQ(deleted.result, 0);
    const std::vector<std::string> made(calls.begin() + 4, calls.end());
    EXPECT_THAT(made, ElementsAre("relay 2 bob", "unset viewer_list_00", "unset viewer_list_01",
                                  "unset viewer_list_02", "set viewer_list_00=ann,p,c,0",
                                  "set viewer_list_01=cat,p,c,0"));
    EXPECT_STREQ(relayed.at(0).passcode, "other");
    EXPECT_EQ(relayed[0].once, 7);
    const std::string head = "[cfg_set viewer_del_config #] ";
    EXPECT_THAT(after_the_list(deleted, "viewer_del_config"),
                testing::StartsWith(head + "index i[0] is not that viewer\n" + head +
                                    "deleted viewer has found:bob\n" + head +
                                    "delete viewer from relay server failed.\n" + head +
                                    "delete viewer from relay server success.\n" + head +
                                    "index i[2] is not that viewer\n" + head +
                                    "clear viewer  in nvram:viewer_list_00\n"));

    store_viewers({"ann", "ann", "cat"});
    del(viewer("ann"));
    EXPECT_EQ(relayed.size(), 3U);
    EXPECT_EQ(store["viewer_list_00"], "cat,p,c,0");
    EXPECT_EQ(store.size(), 1U);
}

TEST_F(ViewersTest, DeletionThatCannotBeDoneChangesNothing)
{
    store_viewers({"ann", "bob"});
    EXPECT_THAT(del(viewer("Bob")).out, EndsWith("viewer has not been in viewerlist:2\n"));
    store["viewer_list_00"] = std::string(254, 'n');
    EXPECT_THAT(del(viewer("bob")).out,
                EndsWith("[cfg_set viewer_del_config #] viewer is too long\n"));
    EXPECT_THAT(recorded("unset"), IsEmpty());
    EXPECT_THAT(recorded("relay"), IsEmpty());
    del(viewer(std::string(254, 'n'))); // the one that is in the way can go
    EXPECT_EQ(store, (std::map<std::string, std::string>{{"viewer_list_00", "bob,p,c,0"}}));
}

TEST_F(ViewersTest, SetterStoresAllOrNothingThatIsTooLong)
{
    const viewer_entry list[] = {viewer("ann"), viewer("bob"), viewer(std::string(250, 'n'))};
    const auto set = [&](uint8_t count) {
        return observe([&] { return viewer_set_config(count, list); }).out;
    };
    EXPECT_EQ(set(3), "[cfg_set viewer_set_config #] viewer is too long\n");
    EXPECT_THAT(calls, IsEmpty());
    refused = {"set viewer_list_00"};
    EXPECT_THAT(set(2),
                EndsWith("buf     = ann,p,c,1\n[cfg_set viewer_set_config #] param_set fail\n"));
    EXPECT_THAT(calls, ElementsAre("set viewer_list_00=ann,p,c,1"));
}
