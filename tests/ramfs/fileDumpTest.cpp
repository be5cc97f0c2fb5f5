/// The readable dump: text and hexadecimal, the borders of the regions, and the limit.
#include <ostream>
#include <stdexcept>
#include <streambuf>

#include <gtest/gtest.h>

#include "tests/ramfs/ramfsTestSupport.h"

namespace Corvane::RamFs::V1 {
namespace {

constexpr unsigned int cut = 0xFFFFFFFF;

class FileDumpTest : public testing::Test
{
protected:
    void makeFile(const std::string& header, const std::string& content, const std::string& footer)
    {
        handle.insertHeader(header);
        handle.append(content);
        handle.appendFooter(bytes(footer.data()), static_cast<unsigned int>(footer.size()));
        handle.setPos(0);
    }
    std::string dump()
    {
        std::ostringstream out;
        result = handle.dump(out);
        return out.str();
    }
    std::string readReadable(unsigned int maxLength)
    {
        std::ostringstream out;
        handle.setPos(0);
        result = handle.readReadable(out, maxLength);
        return out.str();
    }
    unsigned int pos() const { return FileHandleTestAccess::pos(handle); }

    FileHandleImpl handle{"log", FileEntry::create(3, 0)};
    unsigned int result = 0;
};

TEST_F(FileDumpTest, HeaderAndFooterAreTextAndTheContentBetweenIsHexadecimal)
{
    makeFile("HDR:", "\x01\x41\xFF", "END\n");
    EXPECT_EQ(dump(), "HDR:0141FFEND\n");
    EXPECT_EQ(result, 11U);
    EXPECT_EQ(pos(), 11U);
}

TEST_F(FileDumpTest, ALimitOfSixStopsAfterFourCharacters)
{
    makeFile("HDR:", "\x01\x41\xFF", "END\n");
    EXPECT_EQ(readReadable(6), "HDR:");
    EXPECT_EQ(result, cut);
    EXPECT_EQ(pos(), 4U);
}

TEST_F(FileDumpTest, AnEmptyFileIsOneLineFeedAndNothingWithALimit)
{
    EXPECT_EQ(dump(), "\n");
    EXPECT_EQ(result, 1U);
    EXPECT_EQ(readReadable(10), "");
    EXPECT_EQ(result, 0U);
    EXPECT_EQ(readReadable(2), "");
    EXPECT_EQ(result, 0U);
}

TEST_F(FileDumpTest, HexadecimalModeSticks)
{
    makeFile("", std::string("ab\0c", 4), "");
    EXPECT_EQ(dump(), "ab0063\n");
    EXPECT_EQ(result, 5U);
}

TEST_F(FileDumpTest, NoLineFeedIsAddedAfterALineFeedInText)
{
    makeFile("", "a b\tc\n", "");
    EXPECT_EQ(dump(), "a b\tc\n");
    EXPECT_EQ(result, 6U);
}

TEST_F(FileDumpTest, ALineFeedInHexadecimalDoesNotCount)
{
    makeFile("", "\x07\n", "");
    EXPECT_EQ(dump(), "070A\n");
    EXPECT_EQ(result, 3U);
}

TEST_F(FileDumpTest, AFileOfALastLineFeedWithAHeaderGetsAnother)
{
    // The mode for the next byte is what counts, and after the header it is hexadecimal.
    makeFile("HDR\n", "", "");
    EXPECT_EQ(dump(), "HDR\n\n");
    EXPECT_EQ(result, 5U);
}

TEST_F(FileDumpTest, TwoUpperCaseDigitsAreWrittenForEachByte)
{
    std::string all;
    std::string expected;
    for (unsigned int byte = 0; byte < 256; ++byte) {
        all += static_cast<char>(byte);
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02X", byte);
        expected += digits;
    }
    makeFile("", all, "");
    EXPECT_EQ(dump(), expected + "\n");
    EXPECT_EQ(result, 257U);
}

TEST_F(FileDumpTest, BytesAboveAsciiAreNoText)
{
    makeFile("", "a\xE9z", "");
    EXPECT_EQ(dump(), "aE97A\n");
}

TEST_F(FileDumpTest, ABinaryHeaderStaysHexadecimalToItsEnd)
{
    makeFile("H\x01R", "A", "");
    EXPECT_EQ(dump(), "H015241\n");
}

TEST_F(FileDumpTest, EveryFooterByteStartsInTextMode)
{
    makeFile("", "\x01", "a\x02z");
    EXPECT_EQ(dump(), "01a02z\n");
    EXPECT_EQ(result, 5U);
}

TEST_F(FileDumpTest, AFileOfAFooterAloneIsText)
{
    makeFile("", "", "\x01ok\n");
    EXPECT_EQ(dump(), "01ok\n");
    EXPECT_EQ(result, 4U);
}

TEST_F(FileDumpTest, BordersAreCountedFromTheStartOfTheCall)
{
    makeFile("HDR:", "ABCDEFG", "END");
    handle.setPos(2);
    // Four bytes are shown as the header, though only two of them are, and the footer begins after eleven.
    EXPECT_EQ(dump(), "R:AB4344454647454ED\n");
    EXPECT_EQ(result, 13U);
    handle.setPos(11);
    EXPECT_EQ(dump(), "END\n");
}

TEST_F(FileDumpTest, ADumpAtTheEndIsALineFeed)
{
    makeFile("", "abc", "");
    handle.setPos(3);
    EXPECT_EQ(dump(), "\n");
    EXPECT_EQ(result, 1U);
}

TEST_F(FileDumpTest, LimitsBelowTwoAreNone)
{
    makeFile("", "abc\x01", "");
    EXPECT_EQ(readReadable(0), "abc01");
    EXPECT_EQ(result, 5U);
    EXPECT_EQ(readReadable(1), "abc01");
    EXPECT_EQ(result, 5U);
}

TEST_F(FileDumpTest, ALimitOfTwoOrThreeStopsAfterTheFirstByte)
{
    makeFile("", "abc", "");
    EXPECT_EQ(readReadable(2), "a");
    EXPECT_EQ(result, cut);
    EXPECT_EQ(readReadable(3), "a");
    EXPECT_EQ(result, cut);
    EXPECT_EQ(readReadable(4), "ab");
    EXPECT_EQ(result, cut);
}

TEST_F(FileDumpTest, ALimitIsReachedByTheLastByteToo)
{
    makeFile("", "abc", "");
    EXPECT_EQ(readReadable(5), "abc");
    EXPECT_EQ(result, cut);
    EXPECT_EQ(readReadable(6), "abc");
    EXPECT_EQ(result, 3U);
}

TEST_F(FileDumpTest, AByteInHexadecimalMayPassTheLimitByOne)
{
    makeFile("", "\x01\x02\x03", "");
    EXPECT_EQ(readReadable(5), "0102");
    EXPECT_EQ(result, cut);
    EXPECT_EQ(pos(), 2U);
}

TEST_F(FileDumpTest, AnotherReadableGoesOnWhereTheLimitStoppedTheFirst)
{
    makeFile("", "abcdef", "");
    EXPECT_EQ(readReadable(4), "ab");
    std::ostringstream out;
    EXPECT_EQ(handle.readReadable(out, 100), 4U);
    EXPECT_EQ(out.str(), "cdef");
}

/// Takes `room` characters.
class FullBuffer : public std::streambuf
{
public:
    explicit FullBuffer(int room) : m_room(room) {}

protected:
    int_type overflow(int_type c) override
    {
        if (m_room-- == 0) {
            throw std::runtime_error("full");
        }
        return c;
    }

private:
    int m_room;
};

TEST_F(FileDumpTest, AStreamThatThrowsLeavesThePositionPastTheLastByteRead)
{
    makeFile("", "abcdef", "");
    FullBuffer buffer(2);
    std::ostream out(&buffer);
    out.exceptions(std::ios_base::badbit);
    EXPECT_THROW(handle.dump(out), std::runtime_error);
    EXPECT_EQ(pos(), 3U);
    EXPECT_EQ(handle.append("g"), 1U) << "the file isn't locked";
    handle.setPos(3);
    EXPECT_EQ(dump(), "defg\n");
}

TEST_F(FileDumpTest, AStreamThatFailsIsReadToTheEndAllTheSame)
{
    makeFile("", "abcdef", "");
    FullBuffer buffer(2);
    std::ostream out(&buffer);
    EXPECT_EQ(handle.dump(out), 7U);
    EXPECT_TRUE(out.bad());
    EXPECT_EQ(pos(), 6U);
}

TEST_F(FileDumpTest, TheFormatOfTheStreamDoesNotMatter)
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
