// cfgctl's verbs for the app's records and the upload daemon.

#include "harness.h"

#include <sstream>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class CfgctlRecordsTest : public CameraTest
{
  protected:
    void SetUp() override
    {
        CameraTest::SetUp();
        write_file("/etc_ro/param.default", "");
    }
};

static Outcome cfgctl(const std::string &words)
{
    std::vector<std::string> arguments = {"cfgctl"};
    std::istringstream input(words);
    for (std::string word; input >> word;)
        arguments.push_back(word);
    return run_program(arguments);
}

// What the camera logged since the last time, without the hour.
static std::vector<std::string> logged()
{
    std::vector<std::string> lines;
    std::istringstream log(read_file("/var/log/camera.log"));
    for (std::string line; std::getline(log, line);)
        lines.push_back(line.substr(line.find(' ') + 1));
    write_file("/var/log/camera.log", "");
    return lines;
}

// cfgctl refuses the words, and nothing is done.
static void refuse(const std::string &words, int result, const std::string &text)
{
    logged();
    const Outcome outcome = cfgctl(words);
    EXPECT_EQ(outcome.result, result) << words;
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, HasSubstr("cfgctl: " + text)) << words;
    EXPECT_THAT(logged(), IsEmpty()) << words;
}

TEST_F(CfgctlRecordsTest, ListsAreStoredAsTheyArePrinted)
{
    write_file("/tmp/list", "1,0,-1,480,1440,62,1\n0,1,2,0,0,127,0\n");
    EXPECT_EQ(cfgctl("schedule set /tmp/list").result, 0);
    const std::string table = "SLOT  ENABLE  PARAM1  PARAM2  STARTTIME  STOPTIME  DAYS  REPEAT\n"
                              "0     1       0       -1      08:00      24:00     62    1\n"
                              "1     0       1       2       00:00      00:00     127   0\n";
    EXPECT_EQ(cfgctl("schedule list").out, table);
    EXPECT_THAT(read_file("/flash/param"), HasSubstr("sched00=1,0,-1,480,1440,62,1\n"));
    write_file("/tmp/json", cfgctl("schedule list --json").out);
    write_file("/tmp/none", "[]");
    cfgctl("schedule set /tmp/none --no-save");
    EXPECT_EQ(cfgctl("schedule list --json").out, "[]\n");
    EXPECT_THAT(read_file("/flash/param"), HasSubstr("sched01="));
    const Outcome piped = run_program(
        {"/bin/sh", "-c", "${EMULATOR:-} /tests/cfgctl schedule set --no-save </tmp/json"});
    EXPECT_EQ(piped.result, 0);
    EXPECT_EQ(cfgctl("schedule list").out, table);

    write_file("/tmp/list", "1,62,480,wake up, now\n0,1,2,\n");
    logged();
    EXPECT_EQ(cfgctl("alarm set /tmp/list").result, 0);
    EXPECT_THAT(logged(), testing::IsSupersetOf({"store set clock00=1,62,480,wake up, now",
                                                 "run killall -SIGUSR1 alarm"}));
    EXPECT_EQ(cfgctl("alarm list").out, "SLOT  ENABLE  WDAY  STARTTIME  TEXT\n"
                                        "0     1       62    08:00      wake up, now\n"
                                        "1     0       1     00:02      \n");
}

TEST_F(CfgctlRecordsTest, ListsWithAFaultNameItsEntryAndField)
{
    const std::string good = "1,0,0,0,0,0,0\n";
    std::string ten;
    for (int i = 0; i < 10; i++)
        ten += good;
    const std::string fields = R"("enable":1,"param1":0,"param2":0,"starttime":0,"stoptime":0,)";
    for (const auto &[input, text] : std::vector<std::pair<std::string, std::string>>{
             {good + "1,0,0,1441,0,0,0", "entry 2: starttime 1441 is out of range"},
             {good + good + "1,0,0,0,0,-1,0", "entry 3: days -1 is out of range"},
             {"1,0,0,0,0,0,2", "entry 1: repeat 2 is out of range"},
             {"1,0,x,0,0,0,0", "entry 1: param2 is not a number of 32 bits: x"},
             {"1,2147483648,0,0,0,0,0", "entry 1: param1 is not a number of 32 bits: 2147483648"},
             {"1,0,0,0,0,0", "entry 1: has not 7 fields"},
             {"1,0,0,0,0,0,0,0", "entry 1: has not 7 fields"},
             {ten, "10 entries, and the list holds 9"},
             {" \n", "no entries are given"},
             {"[{" + fields + "\"days\":1}]", "entry 1: has no repeat"},
             {"[{" + fields + R"("days":"1","repeat":0}])", "entry 1: days is not a number"},
             {"[{" + fields + R"("days":1,"repeat":0,"x":0}])", "entry 1: has a field too many"},
             {"[1]", "entry 1: is not an object"},
             {"[{\"enable\":1", "the input is not a JSON array"}}) {
        write_file("/tmp/list", input);
        refuse("schedule set /tmp/list", 2, text);
    }
    for (const auto &[input, text] : std::vector<std::pair<std::string, std::string>>{
             {"1,2,1441,x", "entry 1: starttime 1441 is out of range"},
             {"1,2,3", "entry 1: has not 4 fields"},
             {"1,2,3," + std::string(501, 't'), "entry 1: text is not one line of at most 500"},
             {R"([{"enable":1,"wday":1,"starttime":0,"text":"a\nb"}])", "entry 1: text is not one"},
             {R"([{"enable":1,"wday":1,"starttime":0,"text":3}])", "entry 1: text is not one"}}) {
        write_file("/tmp/list", input);
        refuse("alarm set /tmp/list", 2, text);
    }
    refuse("schedule set /tmp/absent", 1, "cannot read /tmp/absent");
    refuse("schedule frobnicate", 2, "it is list, or set and a file");
}

TEST_F(CfgctlRecordsTest, ViewersAreAddedAndRemoved)
{
    EXPECT_EQ(cfgctl("viewer add Ann 1234 key").result, 0);
    EXPECT_THAT(logged(),
                ElementsAre("store set viewer_list_00=Ann,1234,key,0",
                            "relay viewer add name=Ann passcode=1234 credential=key once=0",
                            "store saved"));
    cfgctl("viewer add Bob 5 6 1");
    EXPECT_EQ(cfgctl("viewer list").out, "NAME  PASSCODE  CREDENTIAL  ONCE\n"
                                         "Ann   1234      key         0\n"
                                         "Bob   5         6           1\n");
    EXPECT_THAT(cfgctl("viewer list --json").out, HasSubstr("\"credential\": \"key\""));
    refuse("viewer add Ann 1 2", 1, "Ann is a viewer already");
    refuse("viewer add a,b 1 2", 2, "name cannot have a comma");
    refuse("viewer add Eve 1 2 3x", 2, "once takes a number");
    refuse("viewer add Eve 1 2 123", 2, "once takes 1 to 2 characters");
    refuse("viewer add Eve " + std::string(32, 'p') + " 2", 2, "passcode takes 1 to 31 characters");
    refuse("viewer add " + std::string(250, 'n') + " 1 2", 2, "the fields take more than 255");
    refuse("viewer add Eve", 2, "add takes a name, a passcode and a credential");
    refuse("viewer del Eve", 1, "no viewer Eve");
    EXPECT_EQ(cfgctl("viewer del Ann").result, 0);
    EXPECT_THAT(logged(), testing::Contains(
                              "relay viewer delete name=Ann passcode=1234 credential=key once=0"));
    EXPECT_THAT(cfgctl("viewer list").out, testing::EndsWith("\nBob   5         6           1\n"));
    for (int i = 0; i < 9; i++)
        cfgctl("viewer add v" + std::to_string(i) + " 1 2");
    refuse("viewer add Eve 1 2", 3, "the list has its 10 viewers");
}

TEST_F(CfgctlRecordsTest, SoundsAndFeaturesAreCheckedBeforeTheyAreStored)
{
    write_file("/etc/desk/AudioCheck", "[ -e \"$2\" ] && echo 0 || echo 1\n");
    write_file("/tmp/a.aac", "");
    EXPECT_EQ(cfgctl("sound alarm").result, 1);
    EXPECT_EQ(cfgctl("sound alarm /tmp/a.aac").result, 0);
    EXPECT_EQ(cfgctl("sound alert").out, "/tmp/a.aac\n");
    EXPECT_EQ(cfgctl("sound volume --json").out, "{\n  \"volume\": 1\n}\n");
    EXPECT_EQ(cfgctl("sound volume 2").result, 0);
    EXPECT_EQ(cfgctl("sound volume").out, "2\n");
    EXPECT_EQ(cfgctl("sound alert /tmp/none.aac").result, 4);
    refuse("sound volume 3", 2, "volume takes a number from 0 to 2");
    refuse("sound alert /tmp/$(reboot)", 2, "a path cannot have any of");
    refuse("sound alert /" + std::string(100, 'p'), 2, "a path outside /audio takes at most 100");
    refuse("sound bell", 2, "no sound bell");

    logged();
    EXPECT_EQ(cfgctl("feature led_disable 1").result, 0);
    EXPECT_THAT(logged(), ElementsAre("store set led_disable=1", "run killall -SIGUSR1 LEDCtrl",
                                      "store saved"));
    EXPECT_EQ(cfgctl("feature event -5 99").result, 0);
    EXPECT_EQ(cfgctl("feature event").out, "s3_setting    -5\npush_setting  99\n");
    EXPECT_EQ(cfgctl("feature nimbus 1 folder").result, 0);
    EXPECT_THAT(cfgctl("feature list").out, HasSubstr("nimbus        folderid         folder\n"));
    refuse("feature alert_vclip 1 4 3", 2, "duration takes a number from 5 to 720, not 4");
    refuse("feature event 1", 2, "event takes 2 values");
    refuse("feature frobnicate", 2, "no feature frobnicate");
    write_file("/var/run/param.new/in-the-way", "");
    write_file("/tmp/list", "1,2,3,x\n");
    for (const std::string words : {"feature event 1 2", "sound volume 1", "viewer add Ann 1 2",
                                    "alarm set /tmp/list", "upload config size=9"}) {
        const Outcome change = cfgctl(words);
        EXPECT_EQ(change.result, 3) << words;
        EXPECT_THAT(change.err, HasSubstr("stored")) << words;
    }
}

TEST_F(CfgctlRecordsTest, UploadDaemonIsDrivenFromStartToStop)
{
    refuse("upload wake", 1, "nothing is woken in upload mode 0");
    refuse("upload stop", 1, "the daemon does not run");
    refuse("upload config mode=4", 2, "mode takes a number from 0 to 3, not 4");
    refuse("upload config speed=4", 2, "config takes user, pass, target, mode or size");
    refuse("upload config user=" + std::string(256, 'u'), 2, "user takes at most 255 characters");
    refuse("upload recover clip", 2, "recover takes the full path");

    write_file("/etc/desk/smbu", "exec upload_daemon\n");
    EXPECT_EQ(cfgctl("upload config mode=2 user=ann").result, 0);
    EXPECT_EQ(cfgctl("upload status").out, "mode     2\nrunning  true\n");
    cfgctl("upload notify");
    EXPECT_EQ(cfgctl("upload config target=//nas").result, 0);
    EXPECT_EQ(cfgctl("upload stop").result, 0);
    std::vector<std::string> daemon; // what others log comes between as it likes
    for (const std::string &line : logged())
        if (line.compare(0, 7, "upload ") == 0)
            daemon.push_back(line.substr(7));
    EXPECT_THAT(daemon, ElementsAre("account code=11 ''", "signal 7", "signal 8", "signal 2",
                                    "signal 6", "signal 8", "signal 6"));
    EXPECT_EQ(cfgctl("upload status --json").out, "{\n  \"mode\": 2,\n  \"running\": false\n}\n");
    EXPECT_EQ(cfgctl("upload config").out, "user     ann\ntarget   //nas\nmode     2\n"
                                           "size     \nmounted  false\n");
    EXPECT_EQ(cfgctl("upload recover /x/clip.mp4").result, 4);
    write_file("/mnt/sdcard/video/.smbu/x", "");
    EXPECT_EQ(cfgctl("upload recover /x/clip.mp4").result, 0);
}
