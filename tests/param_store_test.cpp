// The desk camera's parameter store.

#include "desk/param_store.h"
#include "harness.h"
#include "platform/param_store.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

class ParamStoreTest : public CameraTest
{
  protected:
    void SetUp() override
    {
        CameraTest::SetUp();
        write_file(desk::STORE_DEFAULTS, "# as shipped\nlang_name=en\nio_mic_enable=1\n");
    }
};

static std::string get(const std::string &key)
{
    char value[8192] = "";
    return param_get(key.c_str(), value, sizeof value) == 0 ? value : "(none)";
}

// What a restart does: RAM is lost.
static void restart()
{
    unlink(desk::STORE_WORKING);
}

TEST_F(ParamStoreTest, BeginsWithTheFirmwaresDefaults)
{
    EXPECT_EQ(get("lang_name"), "en");
    EXPECT_EQ(get("absent"), "(none)");
    EXPECT_EQ(get("# as shipped"), "(none)");
}

TEST_F(ParamStoreTest, RestartBringsBackWhatWasSavedAndNothingElse)
{
    EXPECT_EQ(param_set("lang_name", "de"), 0);
    EXPECT_EQ(param_unset("io_mic_enable"), 0);
    EXPECT_EQ(param_save(), 0);
    EXPECT_EQ(param_set("lang_name", "fr"), 0);
    EXPECT_EQ(get("lang_name"), "fr");
    restart();
    EXPECT_EQ(get("lang_name"), "de");
    EXPECT_EQ(get("io_mic_enable"), "(none)");
}

TEST_F(ParamStoreTest, EveryByteOfAValueSurvives)
{
    std::string every;
    for (int byte = 1; byte < 256; byte++)
        every += static_cast<char>(byte);
    for (const std::string &value :
         {every, std::string(), std::string(" a=b # "), std::string("\\n\\\\"), std::string("\n"),
          std::string(5000, '\\')}) {
        ASSERT_EQ(param_set("key", value.c_str()), 0);
        EXPECT_EQ(get("key"), value);
        ASSERT_EQ(param_save(), 0);
        restart();
        EXPECT_EQ(get("key"), value);
        EXPECT_EQ(get("lang_name"), "en");
    }
}

TEST_F(ParamStoreTest, LongValuesAreCutToTheReadersBuffer)
{
    param_set("key", "abcdef");
    char buffer[] = "xxxxxxxx";
    EXPECT_EQ(param_get("key", buffer, 4), 0);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(buffer[4], 'x');
    EXPECT_EQ(param_get("key", buffer, 1), 0);
    EXPECT_STREQ(buffer, "");
}

TEST_F(ParamStoreTest, FailuresAreNonZeroAndLeaveTheBuffer)
{
    char buffer[] = "kept";
    EXPECT_NE(param_get("absent", buffer, sizeof buffer), 0);
    EXPECT_NE(param_get("lang_name", buffer, 0), 0);
    EXPECT_NE(param_get("lang_name", nullptr, 4), 0);
    EXPECT_NE(param_get(nullptr, buffer, sizeof buffer), 0);
    EXPECT_STREQ(buffer, "kept");
    EXPECT_NE(param_set("", "x"), 0);
    EXPECT_NE(param_set("a=b", "x"), 0);
    EXPECT_NE(param_set("a\nb", "x"), 0);
    EXPECT_NE(param_set("lang_name", nullptr), 0);
    EXPECT_EQ(param_unset("absent"), 0);
    EXPECT_EQ(get("lang_name"), "en");
}

TEST_F(ParamStoreTest, UnreadableStoresFailAndAreNotReplacedByDefaults)
{
    mkdir(desk::STORE_SAVED, 0755); // in the place of the saved copy
    char buffer[] = "kept";
    EXPECT_NE(param_get("lang_name", buffer, sizeof buffer), 0);
    EXPECT_STREQ(buffer, "kept");
    EXPECT_NE(param_set("lang_name", "de"), 0);
    EXPECT_NE(param_save(), 0);
    rmdir(desk::STORE_SAVED);
    unlink(desk::STORE_DEFAULTS);
    EXPECT_NE(param_get("lang_name", buffer, sizeof buffer), 0);
}

TEST_F(ParamStoreTest, FullDiskLeavesTheSavedCopyWhole)
{
    ASSERT_EQ(param_set("big", std::string(3000, 'a').c_str()), 0);
    ASSERT_EQ(param_save(), 0);
    const std::string before = read_file(desk::STORE_SAVED);

    // /flash is a small file system of the root: fill it to the last page.
    const int filler = open("/flash/filler", O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    const std::string block(4096, 'f');
    while (write(filler, block.data(), block.size()) > 0) {
    }
    close(filler);

    ASSERT_EQ(param_set("big", std::string(30000, 'b').c_str()), 0);
    EXPECT_NE(param_save(), 0);
    EXPECT_EQ(read_file(desk::STORE_SAVED), before);
    EXPECT_NE(access((std::string(desk::STORE_SAVED) + ".new").c_str(), F_OK), 0);
    restart();
    EXPECT_EQ(get("big"), std::string(3000, 'a'));

    unlink("/flash/filler");
    ASSERT_EQ(param_set("big", "c"), 0);
    EXPECT_EQ(param_save(), 0);
}

TEST_F(ParamStoreTest, ProcessesSettingAtOnceLoseNothing)
{
    constexpr int PROCESSES = 4;
    constexpr int KEYS = 50;
    std::vector<pid_t> children;
    for (int process = 0; process < PROCESSES; process++) {
        const pid_t child = fork();
        if (child == 0) {
            int failures = 0;
            for (int key = 0; key < KEYS; key++) {
                const std::string name = std::to_string(process) + "_" + std::to_string(key);
                failures += param_set(name.c_str(), name.c_str()) != 0;
                failures += key % 10 == 0 && param_save() != 0;
            }
            _exit(failures);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    const auto settings = desk::all_settings();
    ASSERT_TRUE(settings);
    EXPECT_EQ(settings->size(), static_cast<size_t>(PROCESSES * KEYS + 2));
    for (int process = 0; process < PROCESSES; process++)
        for (int key = 0; key < KEYS; key++) {
            const std::string name = std::to_string(process) + "_" + std::to_string(key);
            EXPECT_EQ(settings->at(name), name);
        }
}
