// cfgctl, as a program: its data, its reports, its exit status and what the
// camera did. A row is one call; what it does not list must not have happened.

#include "cfg_set.h"
#include "events/storage.h"
#include "harness.h"
#include "tools/cfgctl/table.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <regex>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/wait.h>
#include <unistd.h>

using testing::HasSubstr;

namespace
{

struct Row {
    std::string line; // behind "cfgctl ", as a shell reads it; what prepares it and " -> " before
    int status = 0;
    std::string out = {}; // standard output, JSON on one line; after "~" a part of it
    std::string err = {}; // part of what cfgctl says on standard error; "": nothing
    std::string log = {}; // what the camera did, with "; " between; "*": anything
};

Outcome shell(const std::string &line)
{
    return run_program({"/bin/sh", "-c", line});
}

// The rest of the lines that begin with `head`, each with `end` behind it.
std::string lines(const std::string &text, const std::string &head, const std::string &end)
{
    std::string found;
    const std::regex line("(^|\n)" + head + "([^\n]*)");
    for (std::sregex_iterator match(text.begin(), text.end(), line), last; match != last; ++match)
        found += (*match)[2].str() + end;
    return found;
}

// What the camera did since it was last asked.
std::string logged()
{
    const std::string done = "[0-9:.]+ (?=(?:run|store|relay|upload) )";
    const std::string log = lines(read_file("/var/log/camera.log"), done, "; ");
    write_file("/var/log/camera.log", "");
    return log.substr(0, log.size() - std::min<size_t>(log.size(), 2));
}

void check(const std::vector<Row> &rows)
{
    for (const Row &row : rows) {
        SCOPED_TRACE("cfgctl " + row.line);
        const size_t arrow = row.line.find(" -> ");
        const bool prepared = arrow != std::string::npos;
        const std::string line = row.line.substr(prepared ? arrow + 4 : 0);
        ASSERT_EQ(shell(prepared ? row.line.substr(0, arrow) : "").result, 0);
        logged();
        const bool piped = line.find("| cfgctl ") != std::string::npos;
        Outcome done = shell(piped ? line : "cfgctl " + line);
        if (line.find("--json") != std::string::npos)
            done.out = std::regex_replace(done.out, std::regex("\n *"), "");
        EXPECT_EQ(done.result, row.status) << done.err;
        const bool part = row.out[0] == '~';
        EXPECT_THAT(done.out, HasSubstr(row.out.substr(part ? 1 : 0)));
        EXPECT_TRUE(part || done.out == row.out) << done.out;
        const std::string said = lines(done.err, "cfgctl: ", "\n");
        EXPECT_THAT(said, HasSubstr(row.err));
        EXPECT_TRUE(!row.err.empty() || said.empty()) << said;
        const std::string log = logged();
        EXPECT_EQ(row.log == "*" ? log : row.log, log);
    }
}

const auto bytes = [](size_t count, char c = 'x') { return std::string(count, c); };

class CfgctlTest : public CameraTest
{
  protected:
    void SetUp() override
    {
        CameraTest::SetUp();
        ASSERT_EQ(shell("cp -r /rom/. /; rm /etc_ro/param.default").result, 0);
        write_file("/etc_ro/param.default",
                   "io_mic_enable=1\nio_speaker_enable=1\nio_speaker_volume=27\nlang_name=en\n"
                   "io_ir_enable=1\nwled_mode=1\nrlamp_mode=1\n");
        board_is("50");
        write_script("/tmp/bin/cfgctl", "exec ${EMULATOR:-} /tests/cfgctl \"$@\"");
        write_script("/tmp/bin/sleep", "");
    }
    static void board_is(const std::string &version)
    {
        write_file("/etc/desk/board", "[ $1 = hwver ] && echo " + version);
    }
};

} // namespace

// clang-format off

TEST_F(CfgctlTest, WordsAndOptions)
{
    check({
        // line, status, out, err, log
        {"", 2, "", "no verb given"}, {"frobnicate", 2, "", "unknown verb frobnicate\n"},
        {"sett a b", 2, "", "unknown verb sett; did you mean set?"}, {"get", 2, "", "KEY is missing"},
        {"get --no-save a", 2, "", "no option --no-save"}, {"lamp torch 1", 2, "", "not torch"},
        {"crc /x --limit=4294967296", 2, "", "a number from 0 to 4294967295, not 4294967296"},
        {"wifi", 2, "", "config, start, stop, reset, restart, status; see cfgctl help wifi"},
        {"events remove 1", 2, "", "events takes one of add, drop, clear, dump, not remove"},
        {"events clear 1", 2, "", "too many words"}, {"--version", 0, "~cfgctl 1."},
        {"--json get lang_name", 0, R"({"key": "lang_name","value": "en"})"},
        {"set --force -- -h --text", 0, "", "", "store set -h=--text; store saved"},
        {"get lang_name >/dev/full", 1, "", "cannot write standard output"},
    });
}

TEST_F(CfgctlTest, HelpAndManPageAreOneText)
{
    const auto without = [](const std::string &text, const char *expression, const char *instead) {
        return std::regex_replace(text, std::regex(expression), instead);
    };
    const std::string page = read_file("/cfgctl.1");
    const std::string text = without(page, R"(\n\.[A-Z]+|\\f[BR]|\\&|\\(?=-))", "");
    const std::string verbs = lines(shell("cfgctl --help").out, "  (?=\\S)", "\n");
    std::istringstream list(verbs);
    for (std::string verb, summary; list >> verb && std::getline(list, summary);) {
        const std::string help = shell("cfgctl help " + verb).out;
        const std::string shown = help.substr(0, help.find("\n      --"));
        EXPECT_THAT(without(text, "\\s+", " "), HasSubstr(without(shown, "\\s+", " ")));
    }
    EXPECT_EQ(std::count(verbs.begin(), verbs.end(), '\n'), 30);
    EXPECT_EQ(lines(page, "\\.SH ", " "),
              "NAME SYNOPSIS DESCRIPTION OPTIONS COMMANDS EXIT STATUS FILES SEE ALSO ");
    EXPECT_THAT(page, testing::Not(HasSubstr("\n.nf"))); // it folds at any width
    EXPECT_EQ(shell("cfgctl set --help; cfgctl -h").out, shell("cfgctl help set; cfgctl help").out);
}

// Each is good usage, and when it succeeds it prints JSON, if that is wanted.
TEST_F(CfgctlTest, EveryExampleOfTheHelpIsGood)
{
    const std::string page = std::regex_replace(read_file("/cfgctl.1"), std::regex(R"(\\)"), "");
    shell("cd /mnt/sdcard; mkdir -p upgrade; echo [] >schedules; echo 1 >/proc/live_streaming; "
          "for i in 1 2 3; do cfgctl rec $i; done");
    int examples = 0;
    std::istringstream all(lines(page, "\\.EX\n(?=cfgctl )", "\n"));
    for (std::string example; std::getline(all, example); ++examples) {
        const Outcome done = shell("printf '1\\n2\\n' | " + example + " --json");
        EXPECT_THAT(done.result, testing::AnyOf(0, 1, 3, 4)) << example << done.err;
        const std::string first = done.out.substr(0, done.out.find("}\n{") + 1); // of monitor's
        EXPECT_TRUE(done.result || nlohmann::json::accept(first.empty() ? done.out : first));
    }
    EXPECT_GT(examples, 50);
}

TEST_F(CfgctlTest, CompletionKnowsVerbsKeysAndFeatures)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"re", "restore rec"}, {"set a = 1 io_sp", "io_speaker_volume= io_speaker_enable="},
        {"feature al", "alert_vclip"}, {"sound ''", "alert greeting alarm volume"},
        {"--json lamp rlamp ''", "0 1 2 3"}, {"help ala", "alarm"}, {"restore w", "wled_mode"},
        {"set --no", "--no-save --no-apply"}, {"upload config user=x m", "mode="},
        {"get lang_name ''", ""}, {"set apmode =", ""}, {"crc /cfgctl.b", "/cfgctl.bash"}};
    const std::string load = ". /cfgctl.bash; COMP_WORDS=(cfgctl ";
    const auto ask = "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _cfgctl; echo ${COMPREPLY[*]}";
    for (const auto &[words, found] : cases)
        EXPECT_EQ(run_program({"/bash", "-c", load + words + ask}).out, found + "\n");
}

TEST_F(CfgctlTest, SettingsAreStoredAppliedAndSaved)
{
    const std::string mic_on = "run demo_MXSetMicMute_ 0; run demo_MXSetMicVol_ 60";
    const std::string level = "param set io_speaker_volume 31; ";
    const std::string mine = "key_of_mine", all = "cfgctl show --export --show-secrets ";
    check({
        {"get absent", 1, "", "no value of absent can"}, {"save", 0, "", "", "store saved"},
        {"get lang_nam", 1, "", "; did you mean lang_name?"}, {"get absent --default 7", 0, "7\n"},
        {"unset lang_nam", 1, "", "mean lang_na"}, {"restore mic_enable", 1, "", "mean io_mic_en"},
        {"param set long " + bytes(5000) + " -> get long", 0, bytes(5000) + "\n"},
        {"set io_speaker_volume 31", 0, "", "",
         "store set io_speaker_volume=31; run demo_MXSetSpeakerVol_ 50; store saved"},
        {"set wled_mode 2 --no-apply --no-save --json", 0, R"({"did": "set","key": "wled_mode",)"
         R"("value": "2","result": "stored","saved": false})", "", "store set wled_mode=2"},
        {"set io_mic_enable 2", 2, "", "io_mic_enable takes a number from 0 to 1, not 2\n"},
        {"set io_mic_enable 1x", 2, "", "not 1x"}, {"set a b c", 2, "", "set takes KEY=VALUE"},
        {"set alert_email_account " + bytes(256), 2, "", "takes at most 255 characters"},
        {"set orb_privacy_mode_enable 2147483648", 2, "", "from 0 to 2147483647"},
        {"set speaker_volume 3", 2, "", "unknown key speaker_volume; did you mean io_sp"},
        {"set " + mine + " 1 --force", 0, "", "", "store set " + mine + "=1; store saved"},
        {"unset " + mine, 0, "", "", "store unset " + mine + "; store saved"},
        {"unset " + mine, 1, "", "is not stored"}, {"set " + mine + " 1", 2, "", "mine; --force"},
        {"set io_mic_enable=0 io_speaker_volume=x", 2, "", "io_speaker_volume takes"},
        {"set io_mic_enable=1 apmode=1 --json", 0,
         R"(~"key": "apmode","value": "1","result": "stored"}],"saved": true})", "",
         "store set io_mic_enable=1; store set apmode=1; " + mic_on + "; store saved"},
        {"param unset io_speaker_volume -> set io_mic_enable=0 io_speaker_enable=2 apmode=0", 4, "",
         "cfg_setSpeakerEnable failed; the store is unchanged",
         "store set io_mic_enable=0; store set io_speaker_enable=2; store set apmode=0; "
         "run demo_MXSetMicMute_ 1; store set apmode=1; store set io_speaker_enable=1; "
         "store set io_mic_enable=1; " + mic_on},
        {"set wl_psk ab", 2, "", "5, 13 or 8 to 64"}, {"set app_ip zz", 2, "", "takes a BSSID"},
        {"set motor_zones foo", 2, "", "six numbers, {A,B}{C,D,E,F}"},
        {"set time_zone_str Europe/Nowhere", 2, "", "time_zone_str is not in /etc_ro/time_zone"},
        {"set time_server 'a;b' --force", 2, "", "character that is special to a shell"},
        {"set app_ip=a2::1 motor_zones={0,-1}{2,3,4,5} time_zone_str=etc/utc wl_psk= --no-save", 0,
         "", "", "*"},
        {"echo | cfgctl set -", 2, "", "no KEY=VALUE on standard input"},
        {"cfgctl set wl_psk 12345 --no-save -> show wl_psk --export", 0,
         "# wl_psk is left out; --show-secrets prints it\n"},
        {"param set greeting_audio 'a;b' -> show greeting_a --export", 0,
         "# greeting_audio has a character that is special to a shell\n"},
        {level + all + ">/tmp/e; param unset wl_psk -> set - </tmp/e", 0, "", "", "*"},
        {all + "| cmp - /tmp/e -> show --export wl_ --show-secrets", 0, "wl_psk=12345\n"},
        // A store that refuses what does not fit.
        {"touch /etc/desk/store.refuses -> get long", 0, bytes(5000) + "\n"},
        {"echo 1,62,480," + bytes(247) + " | cfgctl alarm set", 0, "", "", "*"},
        {"alarm list --json", 0, "~\"" + bytes(247) + "\""}, {"unset long", 0, "", "", "*"},
        {"rm /etc/desk/store.refuses -> show --export rlamp", 0, "rlamp_mode=1\n", "", "*"},
        {"param unset io_speaker_volume -> show io_speaker", 0,
         "KEY                VALUE  APPLIED BY\n"
         "io_speaker_volume  -      cfg_setSpeakerVolume, media command\n"
         "io_speaker_enable  1      cfg_setSpeakerEnable, speaker volume restorer\n"},
        {"show io_speaker_volume", 0, "~0 silent, 23 level 35, 31 level 50; any other level 40\n"},
        {"rm /flash/param; mkdir /flash/param -> set rlamp_mode 0", 3, "", "cannot be saved", "*"},
    });
    shell("mkdir -p /var/run/param.new/x");
    for (const auto &[line, refused] : std::map<std::string, std::string>{
             {"set lang_name de", "lang_name"}, {"upload config size=9", "cifs_size"},
             {"feature event 1 2", "event_s3_setting"}, {"sound volume 2", "alert_vol"},
             {"viewer add Ann 1 2", "Ann"}, {"privacy on", "orb_privacy_mode_enable"}})
        check({{line, 3, "", refused + " cannot be stored", "*"}});
}

TEST_F(CfgctlTest, SuccessIsSaidOfWhatHappenedOnly)
{
    check({
        {"set io_ir_enable 2 --json", 0, "~\"applied", "", "store set io_ir_enable=2; store saved"},
        {"rm /proc/ir_mode; mkdir /proc/ir_mode -> set io_ir_enable 0", 4, "", "does not show",
         "store set io_ir_enable=0; store set io_ir_enable=2"},
        {"restore io_ir_enable", 4, "~io_ir_enable  failed\n", "/proc/ir_mode does not show it"},
        {"set wled_mode 2", 0, "", "", "run board hwver; store set wled_mode=2; store saved"},
        {"set rlamp_mode 3 --json", 0, "~\"applied\"", "", "*"},
        {"lamp rlamp 3 --json", 0, R"(~"mode": 3,"result": "applied")", "", "run board hwver"},
        {"param set rlamp_mode 1 -> lamp rlamp 3", 4, "", "rlamp did not accept mode 3", "*"},
        {"night on --json", 0, R"(~"state": "on","result": "applied")"}, {"night", 0, "on\n"},
        {"rm /proc/night_mode; mkdir /proc/night_mode -> night on", 4, "", "did not accept it"},
    });
    board_is("200");
    check({
        {"set wled_mode 1", 4, "", "feature of wled_mode; nothing is stored", "run board hwver"},
        {"lamp rlamp 1", 4, "", "the board does not report a rlamp", "run board hwver"},
        {"show wled_mode --export", 0, "~wled_mode is left out; this board does not", "", "*"},
        {"restore wled_mode", 1, "~wled_mode  not on this board\n", "", "*"},
        {"rm /etc/desk/board -> restore wled_mode", 4, "~wled_mode  failed\n", "", "*"},
        {"board", 1, "~boardid             -\n", "the board does not report its hwver", "*"},
    });
    const int queue = msgget(5678, IPC_CREAT | 0666);
    const daemon_message message = {1, 0, "", {}, 0, {}};
    while (msgsnd(queue, &message, 292, IPC_NOWAIT) == 0)
        continue;
    for (auto line : {"privacy on", "set alert_pir_enable 1", "rec 5", "upload config mode=2"})
        check({{line, 4, "", "the daemons' queue is full"}});
    check({{"cfgctl set alert_audio_enable 1 --no-apply -> restore alert_audio_enable", 4,
            "~alert_audio_enable  failed\n", "", "run board sn"}});
    msgctl(queue, IPC_RMID, nullptr);
    check({
        {"privacy", 1, "off\n"}, {"status", 1, "unknown\n"}, {"status --json", 1, "~: null"},
        {"privacy on --json", 0, R"(~"state": "on","result": "called","saved": true)", "", "*"},
        {"set orb_privacy_mode_enable 01 --no-save"}, {"status 255 --json", 0, "~\"value\": 255"},
        {"probe", 0, "~light_sensor             118\n", "", "*"},
    });
}

TEST_F(CfgctlTest, RestoreAllIsAFirmwaresStart)
{
    std::string expected = "KEY RESULT\n", set;
    const std::string factory = read_file("/rom/etc_ro/param.default");
    for (const cfgctl::Setting &setting : cfgctl::SETTINGS) {
        if (!setting.restore)
            continue;
        const std::string key = setting.value.name;
        const bool no = setting.on_board == cfg_isRlampVersion;
        expected += key + (no ? " not on this board\n" : setting.file ? " applied\n" : " called\n");
        set += "param set " + key + " 1; ";
        EXPECT_THAT(factory, HasSubstr("\n" + key + "="));
    }
    expected += "wifi config applied\nwifi start called\ntime zone applied\ntime sync on called\n";
    shell(set + "param set time_dst 0; param set time_zone 0; param set time_server a.example; "
        "param set time_zone_str Europe/Berlin; param set wl_ssid home; param set wl_psk 12345678");
    board_is("10"); // a WLED, no Rlamp
    const Outcome all = shell("cfgctl restore --all | sed 's/   */ /'");
    EXPECT_EQ(all.out, expected) << all.err;
    EXPECT_EQ(read_file("/tmp/TZ"), "CET-1CEST,M3.5.0,M10.5.0/3\n");
    EXPECT_THAT(read_file("/etc/wpa_supplicant.conf"), HasSubstr("ssid=\"home\""));
    const std::string log = logged(); // udhcpc may come behind ntpd
    size_t at = 0;
    for (const char *next : {"run demo_MXSetMicMute_ 0", "wpa_supplicant -Dnl80211",
                             R"("timezone":"Europe/Berlin")", "run ntpd -p a.example"})
        EXPECT_NE(at = log.find(next, at), std::string::npos) << next << " in " << log;
    check({
        {"monitor --count 3 | cut -b 14-", 0,
         "type 2 command 2 value 0: PIR detection on\n"
         "type 4 command 4 value 0: sound detection on\n"
         "type 4 command 3 value 0 param \"1\": sound sensitivity\n", "", "*"},
        {"param set time_server '-S x'; param unset io_mic_enable -> restore --all", 4,
         "~time sync on               failed\n", "time_server is not safe", "*"},
    });
}

TEST_F(CfgctlTest, MonitorPrintsMessagesAndIsSeen)
{
    check({
        {"rec 4294967295 'a\"\x01\xc3' --json", 0, "~\"code\": 4294967295"},
        {"cfgctl rec 7 -> monitor --count=2 | cut -b 14-", 0,
         "type 7 command 4294967295 value 0 param \"a\\x22\\x01\\xc3\": recording\n"
         "type 7 command 7 value 0: recording: privacy mode left\n"},
        {"cfgctl rec 0 " + bytes(256) + " -> monitor --json --count 1", 0,
         R"(~,"type":7,"command":0,"value":0,"param":")" + bytes(256) + R"(","meaning":"recor)"},
        {"rec 0 " + bytes(257), 2, "", "PARAM takes at most 256 characters"},
    });
    const std::string stranger(sizeof(long) + 1000, 3);
    ASSERT_EQ(msgsnd(msgget(5678, 0), stranger.data(), 1000, 0), 0);
    EXPECT_THAT(shell("cfgctl monitor --count 1").err, HasSubstr(", 1000 bytes\n"));
    // It prints at once, is known while it lives, names who takes messages since,
    // and cleans up when it is ended.
    const Outcome ended = shell(
        "until_filled() { until [ -s $1 ]; do usleep 20000; done; }\n"
        "cfgctl monitor --type 7 >/tmp/seen 2>/tmp/said & first=$!\n"
        "until_filled /var/run/monitor.pid; cp /var/run/monitor.pid /tmp/pid\n"
        "cfgctl rec 1; until_filled /tmp/seen; cfgctl set alert_pir_enable 1\n"
        "cfgctl monitor --type 2 --count 1 >/tmp/other 2>&1 & echo -n process $!; wait $!\n"
        "until grep -q ^cfgctl: /tmp/said; do usleep 20000; done; kill $first; wait $first");
    EXPECT_EQ(ended.result, 128 + SIGTERM) << ended.err;
    EXPECT_GT(std::atoi(read_file("/tmp/pid").c_str()), 1);
    EXPECT_THAT(read_file("/tmp/seen"), HasSubstr("type 7 command 1 value 0: recording\n"));
    EXPECT_THAT(read_file("/tmp/said"), HasSubstr("cfgctl: " + ended.out + " also takes messages; each goes to only one\n"));
    EXPECT_NE(access("/var/run/monitor.pid", F_OK), 0);
    check({
        {"cfgctl rec 1; echo $PPID >/var/run/monitor.pid -> monitor --count 1", 0, "~type 7",
         " also runs; each message goes to only one"}, // and it does not remove what is the other's
        {"rm /var/run/monitor.pid; cfgctl rec 2 -> monitor --count 1 | "
         "grep -c '^..:..:..\\.... type 7 command 2'", 0, "1\n"},
    });
}

TEST_F(CfgctlTest, EventsAreAddedListedAndDropped)
{
    write_file("/mnt/sdcard/video/other", "");
    check({
        {"events drop -1", 2, "", "takes a number"}, {"events", 0, "INDEX  TIME (UTC)  TYPE\n"},
        {"cfgctl events add 3; cfgctl events add 0 -> events add 4 --json", 0, "~\"type\": 4"},
        {"cfgctl events drop 1 -> events --json | sed 's/[0-9]\\{10\\}/T/'", 0,
         R"([{"time": T,"type": 0},{"time": T,"type": 4}])"},
        {"events | awk '{ print $1, $NF }'", 0, "INDEX TYPE\n0 0\n1 4\n"},
        {"events add 7", 2, "", "will reject all events; --force"}, {"events add 7 --force"},
        {"cfgctl events clear -> events --json", 0, "[]"}, {"events dump /none", 1, "", "No such"},
    });
    cfg_set::EventQueue ring = {511, 1, 2, {}};
    ring.slots[511] = {3, 1388534400};
    ring.slots[0] = {2, 1388534401};
    const std::string copy(reinterpret_cast<const char *>(&ring), sizeof ring);
    write_file("/tmp/copy", copy);
    write_file("/tmp/bad", bytes(12, '\xff') + copy.substr(12));
    write_file("/tmp/cut", copy.substr(1));
    check({
        {"events dump /tmp/copy", 0, "head 511, tail 1, count 2\nINDEX  TIME (UTC)           TYPE\n"
         "0      2014-01-01 00:00:00  3\n1      2014-01-01 00:00:01  2\n"},
        {"events dump /tmp/bad --json", 1, R"(~"valid": false,"head": 4294967295,)", "is invalid"},
        {"events dump /tmp/cut", 1, "", "it has 4107 of 4108 bytes"},
    });
    shmctl(shmget(cfg_set::EVENT_SHM_KEY, 0, 0), IPC_RMID, nullptr);
    ASSERT_GE(shmget(cfg_set::EVENT_SHM_KEY, 16, IPC_CREAT | 0666), 0);
    check({
        {"events", 1, "", "events cannot be read"}, {"events clear", 4, "", "no event was dropped"},
        {"events add 1", 4, "", "the event was not added"},
    });
    shmctl(shmget(cfg_set::EVENT_SHM_KEY, 0, 0), IPC_RMID, nullptr);
}

// Each area has one fault, is asked, and has none again.
TEST_F(CfgctlTest, CheckTellsWhatIsWrong)
{
    const auto says = [](const std::string &item, const std::string &state, const char *to_do) {
        return R"(~: ")" + item + R"(","state": ")" + state + R"(","ok": false,"to_do": ")" + to_do;
    };
    const int lock = semget(0xDEF, 1, IPC_CREAT | 0666);
    const int ring = shmget(cfg_set::EVENT_SHM_KEY, sizeof(cfg_set::EventQueue), IPC_CREAT | 0666);
    auto *shared = static_cast<cfg_set::EventQueue *>(shmat(ring, nullptr, 0));
    *shared = {0, 1, 1, {{1, 4000000000}}};
    const pid_t holder = fork();
    if (holder == 0)
        _exit(semctl(lock, 0, SETVAL, 0));
    waitpid(holder, nullptr, 0);
    const auto taken = "stuck: taken by process " + std::to_string(holder) + ", which is gone";
    const std::string RING = "0x20130002 event ring";
    check({
        {"check locks --json", 1, says("0xDEF Wi-Fi link", taken, "ipcrm -S 0xDEF\""), "1 of 3"},
        {"check ring --json", 1, says(RING, "1 events from the future", "set the clo"), "1 of 1"},
    });
    shared->tail = 0;
    check({{"check ring --json", 1, says(RING, "head 0, tail 0 and count 1 do not match", ""), "1"}});
    EXPECT_EQ(shared->tail, 0U);
    EXPECT_EQ(semctl(lock, 0, GETVAL), 0);
    *shared = {};
    semctl(lock, 0, IPC_RMID);
    const std::string pid = "/var/run/GMMdVideo.pid", card = "/mnt/sdcard/";
    shell("echo 1 >" + pid + "; mkdir -p " + card + "upgrade " + card + "video");
    check({
        {"cp /rom/etc/desk/board /etc/desk -> check", 0, "~daemons  daemons by name", "", "*"},
        {"param set wled_mode 9 -> check store --json", 1,
         says("wled_mode", "takes a number from 0 to 2, not 9", "cfgctl set"), "1 of 2"},
        {"param unset wled_mode; param set viewer_list_00 ann,5ecret,key -> check store --json", 1,
         says("viewer_list_00", "cannot be read back", "cfgctl unset viewer_list_00"), "1 of 2"},
        {"param unset viewer_list_00; echo 'echo ${1#sn}' >/etc/desk/board -> check board --json",
         1, says("sn", "not reported", "make 'board sn' print a line"), "2 of 5", "*"},
        {"rm /etc_ro/udhcpc.kill -> check tools --json", 1, says("/etc_ro/udhcpc.kill",
         "missing, or not executable", "install it: needed for Wi-Fi"), "1 of 35"},
        {"rm /proc/backlight -> check drivers --json", 1,
         says("/proc/backlight", "missing", "load the driver"), "1 of", "*"},
        {"param set time_zone_str Mars/Base -> check files --json", 1,
         says("time_zone_str", "Mars/Base, which is not in the table", ""), "2 of"},
        {"param unset time_zone_str; echo x >" + card + "video/.event -> check files --json", 1,
         says(card + "video/.event", "2 bytes", "a restart deletes it"), "1 of"},
        {"cd " + card + "; rm video/.event; echo >upgrade/upgrade.dat -> check files --json", 1,
         says(card + "upgrade", "the download is not complete", "wait"), "1 of"},
        {"cfgctl rec 1 -> check queues --json", 1, "~\"1 messages, 292 of ", "1 of 3"},
        {"cfgctl monitor --count 1; echo 999999 >" + pid + " -> check daemons --json", 1,
         says(pid, "process 999999, which is gone", "start the daemon"), "1 of 3"},
        {"echo 1 >" + pid + "; mkdir /proc/self /proc/7; "
         "echo eventd | tee /proc/7/comm >/proc/self/comm -> check daemons --json", 1,
         says("capture", "does not run", "start it: needed for privacy mode"), "7 of 10"},
    });
    shmdt(shared);
    shell("rm -r /proc/self /proc/7");
}

TEST_F(CfgctlTest, ImagesAndDownloads)
{
    write_file("/etc/desk/board", "echo xq7h04");
    const std::string image = "firmware check firmware.img", copied = " -> firmware check /tmp/i";
    const std::string flip = "cp *.img /tmp/i; printf X | dd of=/tmp/i bs=1 conv=notrunc seek=";
    const std::string upgrade = "/mnt/sdcard/upgrade", speech = "/mnt/sdcard/morvenix/download";
    ASSERT_EQ(chdir("/tests"), 0);
    check({
        {image, 0, "board   ok\nheader  ok\nimage   ok\n", "", "*"},
        {image + " --limit 5063", 1, "~image   failed", "", "*"},
        {flip + "99" + copied, 1, "~image   failed  its checksum is ", "", "*"},
        {flip + "50" + copied + " --json", 1, R"(~"header": false,"image": null,"w)", "", "*"},
        {flip + "33" + copied, 1, "~it is for \"xX7h0c\", this board is \"xq7h04\"\n", "", "*"},
        {"rm /etc/desk/board -> " + image, 1, "~the board does not report its id\n", "", "*"},
        {"echo x >/tmp/i" + copied, 1, "", "/tmp/i is shorter than the header of an image"},
        {"firmware check /tmp", 1, "", "cannot be read"}, {"speech", 1, "~en\nunpacked  no\n"},
        {"firmware newer v5.0.44 --json", 1, R"({"version": "v5.0.44","newer": false})"},
        {"firmware newer v6.0", 2, "", "a version looks like v5.1.0, not v6.0"},
        {"mkdir -p " + upgrade + "; cd " + upgrade + "; echo v5.1.0 >upgrade.dat; "
         "echo >upgrade.bin -> firmware downloaded", 0, "v5.1.0\n"},
        {"rm " + upgrade + "/upgrade.bin -> firmware downloaded", 1, "", "no newer firmware was"},
        {"param set speech_version 3; mkdir -p " + speech + "; echo >" + speech + "/speech3_en.tgz "
         "-> speech --json", 0, R"({"language": "en","unpacked": true})"},
        {"printf xx123456789yy >/tmp/d -> crc /tmp/d --skip 2 --limit=11", 0, "cbf43926\n"},
        {"crc /tmp/d --skip 13", 1, "", "of /tmp/d after 13 bytes"},
        {"crc /tmp/d --skip 2 --limit 2", 1, "", "nothing is left of /tmp/d after 2 bytes"},
        {"crc /tmp/d --json", 0, R"({"file": "/tmp/d","crc": "ac64768d"})"},
    });
}

TEST_F(CfgctlTest, TerminalsAloneAreShownProgressAndEscapes)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_EQ(grantpt(terminal) | unlockpt(terminal), 0);
    const std::string shown_on = ptsname(terminal);
    write_script("/tmp/slow", "head -c 75000 /dev/zero; until grep -qs % /tmp/shown; do "
                 "head -c 1 /dev/zero; usleep 50000; done; head -c 30000 /dev/zero");
    const Outcome slow = shell(
        "mkfifo /tmp/a /tmp/b; cat <&" + std::to_string(terminal) + " >/tmp/shown 2>/tmp/ended & "
        "/tmp/slow >/tmp/a & /tmp/slow >/tmp/b & cfgctl crc --limit 100000 /tmp/b & "
        "cfgctl crc --limit 100000 /tmp/a 2>" + shown_on + "; wait");
    EXPECT_EQ(slow.out, "d411957d\nd411957d\n");
    EXPECT_EQ(slow.err, "");
    const std::string shown = read_file("/tmp/shown");
    EXPECT_THAT(shown, HasSubstr("\r[##############################          ]  75%"));
    EXPECT_THAT(shown, testing::EndsWith("\r\033[K"));
    setenv("VALUE", "e\033\302\205", 1);
    check({
        {"param set lang_name \"$VALUE\" -> get lang_name", 0, "e\033\302\205\n"},
        {"get lang_name >" + shown_on}, {"show lang_name >" + shown_on},
    });
    std::string escaped; // a terminal hands it out in pieces
    for (char piece[256]; escaped.find("takes ") == std::string::npos;)
        escaped.append(piece, (size_t)read(terminal, piece, sizeof piece));
    EXPECT_THAT(escaped, testing::StartsWith("e\\x1b\xc2\\x85\r\n"));
    EXPECT_THAT(escaped, HasSubstr("value       e\\x1b\xc2\\x85\r\n"));
    close(terminal);
}

TEST_F(CfgctlTest, TheSupplicantIsTheJudgeOfItsFile)
{
    const std::string control = "psk has a control character";
    const std::string hash = "has a # after a double quote";
    const struct {
        std::string ssid, key, reason = {}; // none: taken
    } ROWS[] = {
        {bytes(32), "passphrase"}, {bytes(33), "passphrase", "ssid takes at most 32 bytes"},
        {"home", bytes(64, 'a')}, {"home", bytes(64, 'g'), "64 characters but is not hexadecimal"},
        {"caf\xc3\xa9 \"2\" \\", "\"quoted\" key"}, {"home", bytes(63, '~')}, {"a\tb", ""},
        {"home", "pass\tphrase", control}, {"h", "passphrase\x7f", control}, {"a#b", "pass#phrase"},
        {"a\"b\"#", ""}, {"a\"b#", "", hash}, {"h", "pass\"phr#ase", hash}, {"h", "a\"#bc", hash},
    };
    for (const auto &row : ROWS) {
        SCOPED_TRACE(row.ssid + " " + row.key);
        setenv("SSID", row.ssid.c_str(), 1);
        setenv("PSK", row.key.c_str(), 1);
        const bool good = row.reason.empty();
        const Outcome config = shell(
            "param set wl_ssid kept; param set wl_psk ''; param set wl3_ssid \"$SSID\"; "
            "param set wl3_psk \"$PSK\"; rm -f /etc/wpa_supplicant.conf; cfgctl wifi config");
        EXPECT_EQ(config.result, good ? 0 : 4);
        EXPECT_THAT(config.err, HasSubstr(row.reason + (good ? "" : "; the supplicant")));
        EXPECT_EQ(access("/etc/wpa_supplicant.conf", F_OK) == 0, good) << "written";
        ASSERT_EQ(quietly(cfg_restoreWiFiConfig), 0);
        const auto judge = shell("/judge -dd -K -Dwired -inosuch0 -c/etc/wpa_supplicant.conf").out;
        EXPECT_NE(std::regex_search(judge, std::regex("Failed to read|Invalid")), good) << judge;
    }
}

TEST_F(CfgctlTest, NetworkAndTime)
{
    const std::string server1 = "param set time_server a.example; param set time_server1 ";
    check({
        {"param set wl_ssid home; param set wl_psk 0123456789; param set wl2_ssid typo; "
         "param set wl2_psk key -> wifi config", 4, "home\n", "wl2_ssid: left out"},
        {"param unset wl_psk -> wifi config", 4, "", "; /etc/wpa_supplicant.conf is unchanged"},
        {"time zone 60", 2, "", "DST is missing"},
        {"wifi status", 0, "wlan          no\naccess_point  no\nnetworks      home\n"},
        {"param set wl2_ssid ''; param set wl_ssid '' -> wifi config", 0, "", "no network is"},
        {"cd /etc; rm *.conf; mkdir wpa_supplicant.conf -> wifi config", 4, "", "cannot be wr"},
        {"wifi stop", 0, "", "", "run udhcpc.kill wlan0; run killall wpa_supplicant"},
        {"echo 1 >/proc/live_streaming -> wifi restart", 4, "", "a live stream runs; nothing"},
        {"link wlan --json", 1, R"({"wlan": false})"}, {"time zone", 4, "", "time_zone is not"},
        {"param set time_zone -300; param set time_dst 1 -> time zone", 0,
         "GMT+0500DST,M4.1.0/2,M10.5.0/2\n", "", "*"},
        {"param set time_zone_str Etc/UTC -> time zone 60 0 --json", 0,
         R"({"zone": "Etc/UTC","tz": "UTC0"})", "the stored time_zone_str Etc/UTC overrides", "*"},
        {"param set time_zone_str 'x; killall ntpd' -> time zone", 4, "", "_str is not safe in"},
        {server1 + "'$(reboot)' -> time sync on", 4, "", "time_server1 is not safe in a command"},
        {server1 + bytes(235) + " -> time sync on", 4, "", "are too long for the command line"},
        {server1 + bytes(234) + " -> time sync on", 0, "", "",
         "run killall ntpd; run ntpd -p a.example -p " + bytes(234)},
    });
}

TEST_F(CfgctlTest, ListsAreSetAsTheyArePrinted)
{
    const std::string table = "SLOT  ENABLE  PARAM1  PARAM2  STARTTIME  STOPTIME  DAYS  REPEAT\n"
                              "0     1       0       -1      08:00      24:00     62    1\n"
                              "1     0       1       2       00:00      00:00     127   0\n";
    const std::string clocks = "SLOT  ENABLE  WDAY  STARTTIME  TEXT\n"
                               "0     1       62    08:00      wake  up, now\n"
                               "1     0       1     00:02      \n";
    const std::string again = "; echo [] | cfgctl schedule set -> schedule set /tmp/";
    check({
        {"printf '1,0,-1,8:00,1440,62,1\\r\\n\\r\\n0,1,2,0,0,127,0' | cfgctl schedule set --json",
         0, "~\"entries\": 2", "", "*"},
        {"cfgctl schedule list --json >/tmp/j -> schedule list", 0, table},
        {"cfgctl schedule list >/tmp/t" + again + "t", 0, "", "", "*"}, {"schedule list", 0, table},
        {"true" + again + "j", 0, "", "", "*"}, {"schedule list", 0, table},
        {"printf '1,62,480,wake  up, now\\n0,1,2,\\n' | cfgctl alarm set -> alarm list", 0, clocks},
        {"cfgctl alarm list >/tmp/t -> alarm set /tmp/t", 0, "", "", "*"},
        {"grep -q '^clock00=1,62,480,wake  up, now$' /flash/param -> alarm list", 0, clocks},
        {"schedule set /none", 1, "", "cannot read the entries: No such file"},
    });
}

TEST_F(CfgctlTest, ListsAreRefusedAtTheFirstFault)
{
    const std::string fields = R"([{"enable":1,"param1":0,"param2":0,"starttime":0,"stoptime":0,)";
    const std::string ten = std::regex_replace(bytes(10), std::regex("x"), "1,0,0,0,0,0,0\n");
    const struct {
        std::string list, input, fault;
    } ROWS[] = {
        {"schedule", "1,0,0,0,0,0,0\n\n1,0,0,1441,0,0,0",
         "entry 2: starttime takes a number from 0 to 1440, or HH:MM, not"},
        {"schedule", "1,0,0,8:60,0,0,0", "HH:MM"}, {"schedule", "1,0,0,24:01,0,0,0", "HH:MM"},
        {"schedule", "1,0,0,0,0,-1,0", "entry 1: days takes a number from 0 to 127, not -1"},
        {"schedule", "1,2147483648,0,0,0,0,0", "param1 takes"}, {"schedule", ten, "list holds 9"},
        {"schedule", "1,0,0,0,0,0", "7 fields"}, {"schedule", "1,0,0,0,0,0,0,0", "7 fields"},
        {"schedule", fields + R"("days":1}])", "has no repeat"}, {"schedule", "[1]", "no enable"},
        {"schedule", fields + R"("days":null,"repeat":0}])", "entry 1: days is not one line"},
        {"schedule", fields + R"("days":1,"repeat":0,"x":0}])", "entry 1: has an unknown field"},
        {"schedule", "[{\"enable\":1", "not a JSON array"}, {"schedule", " \n", "no entries;"},
        {"alarm", "1,2,3", "4 fields"}, {"alarm", "1,2,3," + bytes(501), "takes at most 500"},
        {"alarm", R"([{"enable":1,"wday":1,"starttime":0,"text":"a\nb"}])", "text is not one line"},
    };
    for (const auto &row : ROWS) {
        write_file("/tmp/bad", row.input);
        check({{row.list + " set /tmp/bad", 2, "", row.fault}});
    }
}

TEST_F(CfgctlTest, ViewersAndTheirSecrets)
{
    check({
        {"printf '1234\\nkey\\n' | cfgctl viewer add Ann - - --json", 0,
         R"(~"name": "Ann","passcode": "***","credential": "***","once": 0,"saved": true})", "",
         "store set viewer_list_00=Ann,1234,key,0; "
         "relay viewer add name=Ann passcode=1234 credential=key once=0; store saved"},
        {"cfgctl viewer add Bob 5 6 1 -> viewer list", 0, "NAME  PASSCODE  CREDENTIAL  ONCE\n"
         "Ann   ***       ***         0\nBob   ***       ***         1\n"},
        {"viewer list --show-secrets --json", 0, R"(~: "1234","credential": "key","once": 0})"},
        {"viewer add Ann 1 2", 1, "", "is already a viewer"}, {"viewer del Ann", 0, "", "", "*"},
        {"viewer add a,b 1 2", 2, "", "cannot contain a comma or a line feed"},
        {"viewer add Eve " + bytes(32, 'p') + " 2 2>&1 | grep -c pp", 1, "0\n"},
        {"viewer add " + bytes(250) + " 1 2", 2, "", "the fields have more than 255"},
        {"viewer add Eve - 2 </dev/null", 2, "", "no line on standard input"},
        {"for i in 1 2 3 4 5 6 7 8 9; do cfgctl viewer add $i 1 2; done -> viewer add E 1 2", 3, "",
         "the list is full"},
        {"echo -n 13_characters | cfgctl set wl_psk - --json", 0, "~\"***\"", "",
         "store set wl_psk=13_characters; store saved"},
        {"show wl_psk --show-secrets", 0, "~value       13_characters\n"},
        {"echo pass | cfgctl upload config pass=- --json", 0, "~\"***\"", "",
         "store set cifs_pass=pass; store saved"},
        {"upload config --json", 0, R"(~"mode": null,"size": "","mounted": false})"},
    });
}

TEST_F(CfgctlTest, SoundsAndFeatures)
{
    check({
        {"mkdir -p /audio; echo >/audio/bark.wav -> alert /audio/bark.wav", 0, "", "",
         "run nice -n -20 demo_MXWavPlayer_ /audio/bark.wav; "
         "run demo_MXWavPlayer_ /audio/bark.wav; run demo_MXSetSpeakerVol_ 40"},
        {"alert '/audio/$(reboot).wav'", 2, "", "FILE has a character that is special to a shell"},
        {"alert " + bytes(226), 2, "", "FILE takes 1 to 225 characters"},
        {"prompt none.aac", 4, "", "no prompt none.aac"}, {"sound alarm", 1, "", "no sound is"},
        {"echo >'/tmp/a b.aac' -> sound alarm '/tmp/a b.aac'", 0, "", "", "*"},
        {"sound alert", 0, "/tmp/a b.aac\n"}, {"alert /none.wav", 4, "", "/none.wav: No such file"},
        {"sound alert /none.aac", 4, "", "AudioCheck rejects /none.aac", "*"},
        {"sound alert /" + bytes(100), 2, "", "a path outside /audio can have at most 100"},
        {"sound volume 2", 0, "", "", "store set alert_vol=2; store saved"},
        {"feature led_disable 1 --json", 0, R"(~"disable": 1,"saved": true)", "",
         "store set led_disable=1; run killall -SIGUSR1 LEDCtrl; store saved"},
        {"cfgctl feature event -5 99 -> feature event", 0, "s3_setting    -5\npush_setting  99\n"},
        {"cfgctl feature nimbus 1 id -> feature nimbus --json", 0,
         R"({"enable": 1,"folderid": "id","status": 0})"},
        {"feature alert_vclip 1 4 3", 2, "", "DURATION takes a number from 5 to 720, not 4"},
    });
}

TEST_F(CfgctlTest, UploadDaemonIsDrivenFromStartToStop)
{
    const std::string video = "/mnt/sdcard/video/", clip = video + "20240101/clip.mp4";
    const std::string recovered = " -> upload recover " + clip;
    const std::string outside = "takes a recording below /mnt/sdcard/video/";
    check({
        {"upload wake", 1, "", "woken in upload mode 0"}, {"upload stop", 1, "", "does not run"},
        {"upload config mode=4", 2, "", "mode= takes 0, 1, 2 or 3, not 4"},
        {"cfgctl upload config mode=1 user=a -> upload status", 0, "~1\nrunning  yes\n", "", "*"},
        {"upload stop", 0, "", "", "*"},
        {"upload recover a.mp4", 2, "", outside, "*"}, {"upload recover /tmp/a", 2, "", outside},
        {"upload recover /mnt/sdcard/video/a.b/", 2, "", outside},
        {"rm -rf " + video + ".smbu" + recovered, 4, "", clip + ": No such"},
        {"mkdir -p " + video + "20240101; echo >" + clip + recovered, 4, "",
         "no folder /mnt/sdcard/video/.smbu; the upload daemon"},
        {"mkdir " + video + ".smbu" + recovered + " --json", 0, "~\"" + video + ".smbu/clip.rcy\""},
    });
}
