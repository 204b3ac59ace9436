// What the board says of itself.

#include "cfg_set.h"
#include "doubles.h"
#include "firmware/board.h"

#include <cerrno>

using namespace cfg_set;
using namespace doubles;

using BoardTest = LibraryTest;

// clang-format off

// The answer of the board and the text that it leaves in a buffer of this size.
static std::string info(unsigned long index, int size = 32)
{
    std::string text(64, '~');
    text[0] = '\0';
    errno = ENOENT; // an old error must not be blamed
    const int result = cfg_getBoardInfo(index, text.data(), size);
    return words(result, text.substr(0, text.find('\0')));
}

static std::string bits()
{
    eth_support = -1;
    const int slip_ring = cfg_is_slip_ring_model(), differential = cfg_is_audio_differential();
    return words(slip_ring, cfg_check_eth_support_by_hwver(), differential);
}

// What is said of Ethernet first, and once the board answers 200.
static std::string ethernet()
{
    eth_support = -1;
    const int first = cfg_check_eth_support_by_hwver();
    refused.clear();
    answers["board hwver"] = "200";
    return words(first, cfg_check_eth_support_by_hwver());
}

TEST_F(BoardTest, AnswersAndBits)
{
    const std::string long_id = "0123456789abcdefgh";
    const Calls id = {"popen board boardid"}, sn = {"popen board sn"}, version = {"popen board hwver"};
    const Calls versions = {version[0], version[0], version[0]};
    const std::string none = "[cfg_getBoardInfo #] fgets fail, errno[0][Success]";
    EXPECT_EQ(eth_support, -1) << "before the first call";
    check({
        {{{"$ board boardid", "xq7h0c\nmore\n"}}, CALL_AS(cfg_getBoardInfo, info(0)), "0 xq7h0c", id},
        {{{"$ board sn", "B2"}}, CALL_AS(cfg_getBoardInfo, info(1)), "0 B2", sn},
        {{{"$ board hwver", "\n280\n"}}, CALL_AS(cfg_getBoardInfo, info(2)), "0 ", version},
        {{{"$ board boardid", long_id}}, CALL_AS(cfg_getBoardInfo, info(0, 17)), "0 0123456789abcdef", id},
        {{{"$ board sn", ""}}, CALL_AS(cfg_getBoardInfo, info(1)), "-1 ", sn, "fgets fail, errno[0][Success]"},
        {{}, {"popen board sn"}, CALL_AS(cfg_getBoardInfo, info(1)), "-1 ", sn,
            "pclose fail, errno[12][Cannot allocate memory]"},
        {CALL(cfg_getBoardInfo(3, nullptr, 0)), -1, {}, "unknown index[3]"},

        {{{"$ board hwver", "280\n"}}, CALL(bits()), "1 1 0", versions},
        {{{"$ board hwver", "80"}}, CALL(bits()), "1 0 0", versions},
        {{{"$ board hwver", "200"}}, CALL(bits()), "0 1 0", versions},
        {{{"$ board hwver", "0x400"}}, CALL(bits()), "0 0 1", versions},
        {{{"$ board hwver", " 7ff rev"}}, CALL(bits()), "1 1 1", versions},
        {{{"$ board hwver", "97f"}}, CALL(bits()), "0 0 0", versions},
        {{{"$ board hwver", "xyz"}}, CALL(bits()), "0 0 0", versions},
        {{{"$ board hwver", std::string(28, '0') + "2801"}}, CALL(bits()), "1 1 0", versions}, // 31 count
        {{{"$ board hwver", ""}}, CALL(bits()), "0 0 0", versions, none + "\n" + none + "\n" + none},
        {{{"$ board hwver", "200"}}, CALL(ethernet()), "1 1", version},
        {{{"$ board hwver", "0"}}, CALL(ethernet()), "0 0", version},
        {{{"$ board hwver", ""}}, CALL(ethernet()), "0 0", version, none},
    });
}

TEST_F(BoardTest, MaskIsTheHexadecimalTextAfterTheModel)
{
    check({
        {CALL(getBoardIdMask("xq7h0c", "xq7")), 0x0c},
        {CALL(getBoardIdMask("habch0f", "habc")), 0x0f},
        {CALL(getBoardIdMask("xq7hffffffff", "xq7")), UINT32_MAX},
        {CALL(getBoardIdMask("xq7h123456789", "xq7")), 0x12345678}, // eight digits at most
        {CALL(getBoardIdMask("xq7h", "xq7")), 0},
        {CALL(getBoardIdMask("xq7hzz", "xq7")), 0},
        {CALL(getBoardIdMask("abchh12", "abc")), 0},
        // The digits reach the end of the 16-byte field, which has no terminator.
        {CALL(getBoardIdMask("modelname01h1234ffff", "modelname01")), 0x1234},
        {CALL(getBoardIdMask("fifteenletters1h8", "fifteenletters1")), 0},
        {CALL(getBoardIdMask("xq7h0c", "seventeenletters1")), 0, {}, "dwBufSize[16] not enough"},
        {CALL(getBoardIdMask("xq7h0c", "xq8")), 0, {}, "model[xq8] not found"},
        {CALL(getBoardIdMask("xq", "xq7")), 0, {}, "model[xq7] not found"},
        {CALL(getBoardIdMask("xq7x0c", "xq7")), 0, {}, "invalid board format"},
        {CALL(getBoardIdMask("xq7", "xq7")), 0, {}, "invalid board format"},
        {CALL(getBoardIdMask("xq7h1\xe9", "xq7")), 0, {}, "non-ascii char[0xe9]"},
        {CALL(getBoardIdMask("xq7h\x80", "xq7")), 0, {}, "non-ascii char[0x80]"},
    });
}
