// What the board says of itself.

#include "cfg_set.h"
#include "doubles.h"
#include "firmware/board.h"

#include <cerrno>

using namespace doubles;
using testing::ElementsAre;
using testing::IsEmpty;

class BoardTest : public LibraryTest
{
  protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        eth_support = -1;
    }
};

// A board tool that answers every query with the output of `script`.
static void board_says(const std::string &script)
{
    write_script("/tmp/bin/board", script);
}

static Outcome query(unsigned long index, std::string &text, size_t size = 32)
{
    std::vector<char> buffer(size);
    Outcome outcome =
        observe([&] { return cfg_getBoardInfo(index, buffer.data(), static_cast<int>(size)); });
    text.assign(buffer.data());
    return outcome;
}

TEST_F(BoardTest, EachIndexAsksItsOwnQuestion)
{
    board_says("echo \"the $1\"; echo more");
    std::string text;
    EXPECT_EQ(query(BOARD_INFO_BOARDID, text).result, 0);
    EXPECT_EQ(text, "the boardid");
    EXPECT_EQ(query(BOARD_INFO_SN, text).result, 0);
    EXPECT_EQ(text, "the sn");
    EXPECT_EQ(query(BOARD_INFO_HWVER, text).result, 0);
    EXPECT_EQ(text, "the hwver");
    EXPECT_THAT(calls, ElementsAre("popen board boardid", "popen board sn", "popen board hwver"));
}

TEST_F(BoardTest, UnknownIndexIsReportedAndAsksNothing)
{
    char text[8] = "kept";
    const Outcome outcome = observe([&] { return cfg_getBoardInfo(3, text, sizeof text); });
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, "[cfg_getBoardInfo #] unknown index[3]\n");
    EXPECT_STREQ(text, "kept");
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(BoardTest, CommandThatCannotStartIsReportedAsPclose)
{
    popen_error = ENOMEM;
    std::string text;
    const Outcome outcome = query(BOARD_INFO_SN, text);
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, "[cfg_getBoardInfo #] pclose fail, errno[12][Cannot allocate memory]\n");
    EXPECT_EQ(text, "");
}

TEST_F(BoardTest, ToolThatIsMissingOrSilentIsReported)
{
    errno = ENOENT; // an old error must not be blamed
    std::string text;
    board_says("exit 0");
    Outcome outcome = query(BOARD_INFO_SN, text);
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, "[cfg_getBoardInfo #] fgets fail, errno[0][Success]\n");
    setenv("PATH", "/bin", 1);
    outcome = query(BOARD_INFO_SN, text);
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, "[cfg_getBoardInfo #] fgets fail, errno[0][Success]\n");
    EXPECT_EQ(text, "");
}

TEST_F(BoardTest, AnswersOfAnyLengthFitTheBuffer)
{
    std::string text;
    board_says("printf 'xq7h0c'");
    EXPECT_EQ(query(BOARD_INFO_BOARDID, text, 17).result, 0);
    EXPECT_EQ(text, "xq7h0c");

    board_says("head -c 10000000 /dev/zero | tr '\\0' x");
    EXPECT_EQ(query(BOARD_INFO_BOARDID, text, 17).result, 0);
    EXPECT_EQ(text, std::string(16, 'x'));

    board_says("echo; echo second");
    EXPECT_EQ(query(BOARD_INFO_BOARDID, text, 17).result, 0);
    EXPECT_EQ(text, "");
}

TEST_F(BoardTest, PredicatesReadTheirBits)
{
    struct Board {
        const char *version;
        int slip_ring, ethernet, differential;
    };
    for (const Board &board :
         {Board{"280", 1, 1, 0}, Board{"80", 1, 0, 0}, Board{"200", 0, 1, 0}, Board{"400", 0, 0, 1},
          Board{"0x680", 1, 1, 1}, Board{" 7ff rev", 1, 1, 1}, Board{"170", 0, 0, 0},
          Board{"xyz", 0, 0, 0}, Board{"", 0, 0, 0}}) {
        eth_support = -1;
        board_says(std::string("echo '") + board.version + "'");
        EXPECT_EQ(cfg_is_slip_ring_model(), board.slip_ring) << board.version;
        EXPECT_EQ(cfg_check_eth_support_by_hwver(), board.ethernet) << board.version;
        EXPECT_EQ(cfg_is_audio_differential(), board.differential) << board.version;
    }
    EXPECT_EQ(calls[0], "popen board hwver");
}

TEST_F(BoardTest, EthernetAnswerIsKeptEvenOfAFailedQuery)
{
    board_says("echo 200");
    EXPECT_EQ(cfg_check_eth_support_by_hwver(), 1);
    board_says("echo 0");
    EXPECT_EQ(cfg_check_eth_support_by_hwver(), 1);
    EXPECT_EQ(calls.size(), 1U);

    eth_support = -1;
    popen_error = EMFILE;
    EXPECT_EQ(observe(cfg_check_eth_support_by_hwver).result, 0);
    popen_error = 0;
    board_says("echo 200");
    EXPECT_EQ(cfg_check_eth_support_by_hwver(), 0);
    EXPECT_EQ(calls.size(), 2U);
    EXPECT_EQ(cfg_is_slip_ring_model(), 0);
    EXPECT_EQ(calls.size(), 3U) << "the others ask every time";
}

static Outcome mask(const char *board, const char *model, uint32_t &value)
{
    return observe([&] {
        value = getBoardIdMask(board, model);
        return 0;
    });
}

TEST_F(BoardTest, MaskIsTheHexadecimalTextAfterTheModel)
{
    const auto quiet_mask = [](const char *board, const char *model) {
        uint32_t value = 0;
        EXPECT_EQ(mask(board, model, value).out, "") << board;
        return value;
    };
    EXPECT_EQ(quiet_mask("xq7h0c", "xq7"), 0x0CU);
    EXPECT_EQ(quiet_mask("habch0f", "habc"), 0x0FU);
    EXPECT_EQ(quiet_mask("xq7hffffffff", "xq7"), 0xFFFFFFFFU);
    EXPECT_EQ(quiet_mask("xq7h123456789", "xq7"), 0x12345678U) << "eight digits at most";
    EXPECT_EQ(quiet_mask("xq7h", "xq7"), 0U);
    EXPECT_EQ(quiet_mask("xq7hzz", "xq7"), 0U);
    EXPECT_EQ(quiet_mask("abchh12", "abc"), 0U);
    // The digits reach the end of the 16-byte field, which has no terminator;
    // what follows it is not the board's.
    EXPECT_EQ(quiet_mask("modelname01h1234ffff", "modelname01"), 0x1234U);
    EXPECT_EQ(quiet_mask("fifteenletters1h8", "fifteenletters1"), 0U) << "no room for digits";
}

TEST_F(BoardTest, MaskOfAnotherFormIsReportedAsNone)
{
    uint32_t value = 1;
    EXPECT_EQ(mask("xq7h0c", "sixteenletters16", value).out,
              "[getBoardIdMask #] dwBufSize[16] not enough\n");
    EXPECT_EQ(value, 0U);
    EXPECT_EQ(mask("xq7h0c", "xq8", value).out, "[getBoardIdMask #] model[xq8] not found\n");
    EXPECT_EQ(value, 0U);
    EXPECT_EQ(mask("xq", "xq7", value).out, "[getBoardIdMask #] model[xq7] not found\n");
    EXPECT_EQ(value, 0U);
    EXPECT_EQ(mask("xq7x0c", "xq7", value).out, "[getBoardIdMask #] invalid board format\n");
    EXPECT_EQ(value, 0U);
    EXPECT_EQ(mask("xq7", "xq7", value).out, "[getBoardIdMask #] invalid board format\n");
    EXPECT_EQ(value, 0U);
    EXPECT_EQ(mask("xq7h1\xe9", "xq7", value).out, "[getBoardIdMask #] non-ascii char[0xe9]\n");
    EXPECT_EQ(value, 0U);
}
