// The desk camera's parameter store.

#include "desk/param_store.h"
#include "harness.h"
#include "platform/param_store.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

class ParamStoreTest : public CameraTest
{
  protected:
    void SetUp() override
    {
        CameraTest::SetUp();
        write_file(desk::STORE_DEFAULTS, "# as shipped\nlang_name=en\n#off=1\n");
    }
};

static std::string get(const std::string &key)
{
    char value[8192] = "kept";
    const int result = param_get(key.c_str(), value, sizeof value);
    return result == 0 ? value : "(none) " + std::string(value);
}

// What a restart does: RAM is lost.
static void restart()
{
    unlink(desk::STORE_WORKING);
}

TEST_F(ParamStoreTest, RestartBringsBackWhatWasSavedByteForByte)
{
    EXPECT_EQ(get("lang_name"), "en");
    EXPECT_EQ(get("#off"), "(none) kept");
    std::string every;
    for (int byte = 1; byte < 256; byte++)
        every += static_cast<char>(byte);
    for (const std::string &value : {every, std::string(), std::string(" a=b # "),
                                     std::string("\\n\\\\"), std::string(5000, '\\')}) {
        ASSERT_EQ(param_set("key", value.c_str()), 0);
        ASSERT_EQ(param_save(), 0);
        ASSERT_EQ(param_set("key", "not saved"), 0);
        ASSERT_EQ(param_unset("lang_name"), 0);
        restart();
        EXPECT_EQ(get("key"), value);
        EXPECT_EQ(get("lang_name"), "en");
    }
    char buffer[] = "xxxx";
    EXPECT_EQ(param_get("lang_name", buffer, 2), 0);
    EXPECT_EQ(std::string(buffer, 4), std::string("e\0xx", 4)) << "cut to the reader's buffer";
    for (const char *key : {"", "a=b", "a\nb", static_cast<const char *>(nullptr)})
        EXPECT_NE(param_set(key, "x"), 0);
    EXPECT_NE(param_set("lang_name", nullptr), 0);
}

TEST_F(ParamStoreTest, UnreadableCopyIsNotReplacedByAnOlderOne)
{
    for (const std::string file : {desk::STORE_WORKING, desk::STORE_SAVED})
        for (const bool link : {true, false}) {
            param_set("lang_name", "saved");
            ASSERT_EQ(param_save(), 0);
            param_set("lang_name", "set");
            if (file == desk::STORE_SAVED)
                restart();
            const std::string kept = file + ".kept";
            ASSERT_EQ(rename(file.c_str(), kept.c_str()), 0);
            // A link to itself is an error that is there for access() as well.
            ASSERT_EQ(link ? symlink(file.c_str(), file.c_str()) : mkdir(file.c_str(), 0755), 0);
            EXPECT_EQ(get("lang_name"), "(none) kept") << file;
            EXPECT_NE(param_set("lang_name", "x"), 0) << file;
            EXPECT_NE(param_save(), 0) << file;
            ASSERT_EQ(remove(file.c_str()) | rename(kept.c_str(), file.c_str()), 0);
            EXPECT_EQ(get("lang_name"), file == desk::STORE_SAVED ? "saved" : "set");
        }
}

TEST_F(ParamStoreTest, FullDiskLeavesTheSavedCopyWhole)
{
    ASSERT_EQ(param_set("big", "a"), 0);
    ASSERT_EQ(param_save(), 0);
    // /flash is a small file system of the root: fill it to the last page.
    run_program({"/bin/sh", "-c", "cat /dev/zero >/flash/filler"});
    ASSERT_EQ(param_set("big", std::string(30000, 'b').c_str()), 0);
    EXPECT_NE(param_save(), 0);
    restart();
    EXPECT_EQ(get("big"), "a");
    EXPECT_NE(access("/flash/param.new", F_OK), 0);
    unlink("/flash/filler");
    EXPECT_EQ(param_save(), 0);
}

TEST_F(ParamStoreTest, ProcessesSettingAtOnceLoseNothing)
{
    for (int process = 0; process < 4; process++)
        if (fork() == 0) {
            int failures = 0;
            for (int key = process * 50; key < process * 50 + 50; key++)
                failures += param_set(std::to_string(key).c_str(), "x") != 0 ||
                            (key % 10 == 0 && param_save() != 0);
            _exit(failures);
        }
    int status = 0;
    while (wait(&status) > 0)
        EXPECT_EQ(status, 0);
    EXPECT_EQ(desk::all_settings()->size(), 201U);
}
