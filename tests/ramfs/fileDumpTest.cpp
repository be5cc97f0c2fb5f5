/// The readable dump: text and hexadecimal, the borders of the regions, and the limit.
#include <optional>
#include <ostream>
#include <stdexcept>
#include <streambuf>
#include <string>

#include <gtest/gtest.h>

#include "tests/ramfs/ramfsTestSupport.h"
#include "tests/support/fullBuffer.h"

namespace Corvane::RamFs::V1 {
namespace {

constexpr unsigned int cut = 0xFFFFFFFF;

/// A file, a dump of it from a position on, and what comes of it.
struct Dump
{
    const char* title;
    std::string header;
    std::string content;
    std::string footer;
    unsigned int from;
    std::optional<unsigned int> limit; // of readReadable(); none for dump()
    std::string text;
    unsigned int result;
    unsigned int endPosition;
};

void PrintTo(const Dump& dump, std::ostream* out)
{
    *out << dump.title;
}

/// Returns  all 256 bytes, as they are or in hexadecimal.
std::string everyByte(bool inHexadecimal)
{
    std::string all;
    for (unsigned int byte = 0; byte < 256; ++byte) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02X", byte);
        all += inHexadecimal ? std::string(digits) : std::string(1, static_cast<char>(byte));
    }
    return all;
}

constexpr auto none = std::nullopt;

const Dump dumps[] = {
    {"HeaderAndFooterAreTextAndTheContentBetweenIsHexadecimal", "HDR:", "\x01\x41\xFF", "END\n", 0, none,
     "HDR:0141FFEND\n", 11, 11},
    {"AnEmptyFileIsALineFeed", "", "", "", 0, none, "\n", 1, 0},
    {"ADumpAtTheEndOfAFileIsALineFeed", "", "abc", "", 3, none, "\n", 1, 3},
    {"AfterAByteInHexadecimalTheContentStaysSo", "", {"ab\0c", 4}, "", 0, none, "ab0063\n", 5, 4},
    {"NoLineFeedIsAddedAfterALineFeedInText", "", "a b\tc\n", "", 0, none, "a b\tc\n", 6, 6},
    {"ALineFeedIsAddedAfterOneInHexadecimal", "", "\x07\n", "", 0, none, "070A\n", 3, 2},
    // The mode for the next byte counts, and after a header that is hexadecimal.
    {"ALineFeedIsAddedAfterAHeaderThatEndsWithOne", "HDR\n", "", "", 0, none, "HDR\n\n", 5, 4},
    {"EveryByteHasTwoUpperCaseDigits", "", everyByte(false), "", 0, none, everyByte(true) + "\n", 257, 256},
    {"BytesAboveAsciiAreShownInHexadecimal", "", "a\xE9z", "", 0, none, "aE97A\n", 4, 3},
    {"AHeaderStaysInHexadecimalAfterItsFirstSuchByte", "H\x01R", "A", "", 0, none, "H015241\n", 5, 4},
    {"AFooterGoesBackToTextAfterEachByteInHexadecimal", "", "\x01", "a\x02z", 0, none, "01a02z\n", 5, 4},
    {"AFooterAloneIsText", "", "", "\x01ok\n", 0, none, "01ok\n", 4, 4},
    // Four bytes are shown as the header, though only two of them are, and the footer begins after eleven.
    {"RegionsAreCountedFromTheStartOfTheCall", "HDR:", "ABCDEFG", "END", 2, none, "R:AB4344454647454ED\n", 13, 14},
    {"ADumpOfTheFooterAloneIsText", "HDR:", "ABCDEFG", "END", 11, none, "END\n", 4, 14},
    {"ALimitOfSixStopsAfterFourCharacters", "HDR:", "\x01\x41\xFF", "END\n", 0, 6, "HDR:", cut, 4},
    {"AnEmptyFileWithALimitIsNothing", "", "", "", 0, 10, "", 0, 0},
    {"AnEmptyFileIsNothingEvenWithTheSmallestLimit", "", "", "", 0, 2, "", 0, 0},
    {"ALimitOfZeroIsNeverReached", "", "abc\x01", "", 0, 0, "abc01", 5, 4},
    {"ALimitOfOneIsNeverReached", "", "abc\x01", "", 0, 1, "abc01", 5, 4},
    {"ALimitOfTwoStopsAfterTheFirstByte", "", "abc", "", 0, 2, "a", cut, 1},
    {"ALimitOfThreeStopsAfterTheFirstByte", "", "abc", "", 0, 3, "a", cut, 1},
    {"ALimitOfFourStopsAfterTheSecondByte", "", "abc", "", 0, 4, "ab", cut, 2},
    {"TheLastByteOfAFileMayReachTheLimit", "", "abc", "", 0, 5, "abc", cut, 3},
    {"AFileThatEndsBeforeTheLimitIsNotCut", "", "abc", "", 0, 6, "abc", 3, 3},
    {"AByteInHexadecimalMayPassTheLimitByOne", "", "\x01\x02\x03", "", 0, 5, "0102", cut, 2},
    {"ALimitedDumpGoesOnAtThePosition", "", "abcdef", "", 2, 100, "cdef", 4, 6},
};

class FileDumpStreamTest : public testing::Test
{
protected:
    void makeFile(const std::string& header, const std::string& content, const std::string& footer)
    {
        handle.insertHeader(header);
        handle.append(content);
        handle.appendFooter(bytes(footer.data()), static_cast<unsigned int>(footer.size()));
        handle.setPos(0);
    }
    unsigned int pos() const { return FileHandleTestAccess::pos(handle); }

    FileHandleImpl handle{"log", FileEntry::create(3, 0)};
};

class FileDumpTest : public FileDumpStreamTest, public testing::WithParamInterface<Dump>
{
};

TEST_P(FileDumpTest, HasItsTextAndResult)
{
    const Dump& dump = GetParam();
    makeFile(dump.header, dump.content, dump.footer);
    handle.setPos(dump.from);
    std::ostringstream out;
    EXPECT_EQ(dump.limit ? handle.readReadable(out, *dump.limit) : handle.dump(out), dump.result);
    EXPECT_EQ(out.str(), dump.text);
    EXPECT_EQ(pos(), dump.endPosition);
}

INSTANTIATE_TEST_SUITE_P(EachDump, FileDumpTest, testing::ValuesIn(dumps),
                         [](const auto& dump) { return std::string(dump.param.title); });

TEST_F(FileDumpStreamTest, AStreamThatThrowsLeavesThePositionPastTheLastByteRead)
{
    makeFile("", "abcdef", "");
    Testing::ThrowingStream out(2);
    EXPECT_THROW(handle.dump(out), std::runtime_error);
    EXPECT_EQ(pos(), 3U);
    EXPECT_EQ(handle.append("g"), 1U) << "the file isn't locked";
    EXPECT_EQ(wholeFile(handle), "abcdefg");
}

TEST_F(FileDumpStreamTest, AStreamThatFailsDoesNotEndTheDump)
{
    makeFile("", "abcdef", "");
    Testing::FullBuffer buffer(2);
    std::ostream out(&buffer);
    EXPECT_EQ(handle.dump(out), 7U);
    EXPECT_TRUE(out.bad());
    EXPECT_EQ(pos(), 6U);
}

/// Has a put area of three characters.
class SmallBuffer : public std::streambuf
{
public:
    SmallBuffer() { setp(m_room, m_room + sizeof m_room); }

    std::string text() const { return m_text + std::string(pbase(), pptr()); }

    int overflows = 0;
    int syncs = 0;

protected:
    int_type overflow(int_type c) override
    {
        ++overflows;
        empty();
        return sputc(traits_type::to_char_type(c));
    }

    int sync() override
    {
        ++syncs;
        empty();
        return 0;
    }

private:
    void empty()
    {
        m_text.append(pbase(), pptr());
        setp(m_room, m_room + sizeof m_room);
    }

    char m_room[3] = {};
    std::string m_text;
};

TEST_F(FileDumpStreamTest, AFullPutAreaOverflows)
{
    makeFile("", "abc\x01", "");
    SmallBuffer buffer;
    std::ostream out(&buffer);
    EXPECT_EQ(handle.dump(out), 5U);
    EXPECT_EQ(buffer.text(), "abc01\n");
    EXPECT_EQ(buffer.overflows, 1);
    EXPECT_EQ(buffer.syncs, 0);
}

TEST_F(FileDumpStreamTest, AStreamThatFlushesItselfDoesSoAfterEachCharacter)
{
    makeFile("", "ab\x01", "");
    SmallBuffer buffer;
    std::ostream out(&buffer);
    out << std::unitbuf;
    handle.dump(out);
    EXPECT_EQ(buffer.text(), "ab01\n");
    EXPECT_EQ(buffer.syncs, 5);
}

TEST_F(FileDumpStreamTest, ATiedStreamIsFlushedBeforeEachCharacter)
{
    makeFile("", "ab\x01", "");
    SmallBuffer tiedBuffer;
    std::ostream tied(&tiedBuffer);
    SmallBuffer buffer;
    std::ostream out(&buffer);
    out.tie(&tied);
    handle.dump(out);
    EXPECT_EQ(buffer.text(), "ab01\n");
    EXPECT_EQ(tiedBuffer.syncs, 5);
}

TEST_F(FileDumpStreamTest, ABadStreamWithRoomGetsNothing)
{
    makeFile("", "ab", "");
    SmallBuffer buffer;
    std::ostream out(&buffer);
    out.setstate(std::ios_base::eofbit);
    EXPECT_EQ(handle.dump(out), 3U);
    EXPECT_EQ(buffer.text(), "");
    out.clear();
    out.rdbuf(nullptr);
    handle.setPos(0);
    EXPECT_EQ(handle.dump(out), 3U);
    EXPECT_TRUE(out.bad());
}

TEST_F(FileDumpStreamTest, TheFormatOfTheStreamDoesNotMatter)
{
    makeFile("", "a\x01", "");
    std::ostringstream out;
    out.fill('*');
    out.width(10);
    out.setf(std::ios_base::oct, std::ios_base::basefield);
    handle.dump(out);
    EXPECT_EQ(out.str(), "a01\n");
}

} // namespace
} // namespace Corvane::RamFs::V1
