// Hex dumps: exact dump texts, the 255-character line bound, round trips,
// every truncated prefix, one bad character in each column, malformed lines.
#include <ZantorMiddleware/ZantorBase/HexDump.h>

#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace Zantor {
namespace {

#ifdef _WIN32
const std::string kPlatformEol = "\r\n";
#else
const std::string kPlatformEol = "\n";
#endif

std::vector<unsigned char> Sequence(unsigned size, unsigned first)
{
    std::vector<unsigned char> bytes(size);
    for (unsigned i = 0; i < size; ++i)
        bytes[i] = static_cast<unsigned char>(first + i);
    return bytes;
}

std::vector<unsigned char> Bytes(const MessageBuilder& builder)
{
    return std::vector<unsigned char>(builder.GetBuffer(), builder.GetBuffer() + builder.GetLength());
}

// Text of a 16-byte-per-line dump, written out part by part: "0x", the
// offset, ":   ", the hex column in a field of 36 characters, four blanks and
// the text column.
std::string Line16(const std::string& offset, const std::string& hexColumn, const std::string& text)
{
    EXPECT_EQ(36u, hexColumn.size()) << "row error: the 16-byte hex column is 36 characters";
    return "0x" + offset + ":   " + hexColumn + "    " + text + "\r\n";
}

// The last line written when lines remain: " ..." and the platform's end
// of line in place of "\r\n".
std::string Marked(const std::string& dump) { return dump.substr(0, dump.size() - 2) + " ..." + kPlatformEol; }

// The hex column of count bytes first, first + 1, ...: a blank before every
// group of four, two lower-case digits per byte.
std::string HexColumn(unsigned first, unsigned count)
{
    static const char digits[] = "0123456789abcdef";
    std::string column;
    for (unsigned k = 0; k < count; ++k)
    {
        const auto value = static_cast<unsigned char>(first + k);
        if (k % 4 == 0)
            column += ' ';
        column += digits[value >> 4];
        column += digits[value & 0x0F];
    }
    return column;
}

// ------------------------------------------------------------- the dump

// With 16 bytes per line and no limit, HexDump must write the same text.
TEST(BufferToHexDumpStringTest, ExactDumpsAndHexDumpToAStream)
{
    struct Row { int line; std::vector<unsigned char> bytes; unsigned bytesPerLine, maxLines; std::string expected; };
    // The lines of Sequence(40, 'A').
    const std::string l0 = Line16("00000000", " 41424344 45464748 494a4b4c 4d4e4f50", "ABCDEFGHIJKLMNOP");
    const std::string l1 = Line16("00000010", " 51525354 55565758 595a5b5c 5d5e5f60", "QRSTUVWXYZ[\\]^_`");
    const std::string l2 = Line16("00000020", " 61626364 65666768" + std::string(18, ' '), "abcdefgh");
    const Row rows[] = {
        {__LINE__, {}, 16, 0, ""},
        {__LINE__, Sequence(16, 0), 0, 0, ""},
        {__LINE__, Sequence(16, 0), 0, 1, ""},
        {__LINE__, {'A'}, 16, 0, Line16("00000000", " 41" + std::string(33, ' '), "A")},
        // A full line: four groups of a blank and eight digits fill the 36.
        {__LINE__, Sequence(16, 0x30), 16, 0,
         Line16("00000000", std::string(" 30313233") + " 34353637" + " 38393a3b" + " 3c3d3e3f", "0123456789:;<=>?")},
        // 17 bytes: two lines, the second's hex column padded to 36.
        {__LINE__, Sequence(17, 0), 16, 0,
         Line16("00000000", " 00010203 04050607 08090a0b 0c0d0e0f", "................") +
             Line16("00000010", " 10" + std::string(33, ' '), ".")},
        {__LINE__, Sequence(17, 0x20), 16, 0,
         Line16("00000000", " 20212223 24252627 28292a2b 2c2d2e2f", " !\"#$%&'()*+,-./") +
             Line16("00000010", " 30" + std::string(33, ' '), "0")},
        // 40 bytes, maxLines 1 and 2: the last line written is marked; 3
        // lines or no limit: all of it.
        {__LINE__, Sequence(40, 0x41), 16, 1, Marked(l0)},
        {__LINE__, Sequence(40, 0x41), 16, 2, l0 + Marked(l1)},
        {__LINE__, Sequence(40, 0x41), 16, 3, l0 + l1 + l2},
        {__LINE__, Sequence(40, 0x41), 16, 0, l0 + l1 + l2},
        {__LINE__, Sequence(32, 0x41), 16, 2, l0 + l1}, // exactly maxLines lines: nothing remains, so no mark
        {__LINE__, {0x00, 0x1f, 0x20, 0x7e, 0x7f, 0x80, 0xff, '%'}, 16, 0,
         Line16("00000000", " 001f207e 7f80ff25" + std::string(18, ' '), ".. ~...%")},
        // Other widths: the field is 2 * n + n / 4 characters.
        {__LINE__, Sequence(10, 'a'), 8, 0, "0x00000000:    61626364 65666768    abcdefgh\r\n0x00000008:    696a                 ij\r\n"},
        {__LINE__, Sequence(8, 'a'), 4, 1, "0x00000000:    61626364    abcd ..." + kPlatformEol},
        // Not a multiple of 4: a full line loses its last hex digit.
        {__LINE__, Sequence(7, 'A'), 5, 0, "0x00000000:    41424344 4    ABCDE\r\n0x00000005:    4647          FG\r\n"},
        {__LINE__, Sequence(3, 'A'), 3, 0, "0x00000000:    41424    ABC\r\n"},
        {__LINE__, Sequence(4, 'A'), 2, 0, "0x00000000:    414    AB\r\n0x00000002:    434    CD\r\n"},
        {__LINE__, Sequence(2, 'A'), 1, 0, "0x00000000:    4    A\r\n0x00000001:    4    B\r\n"},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        const auto size = static_cast<unsigned>(row.bytes.size());
        EXPECT_EQ(row.expected, BufferToHexDumpString(row.bytes.data(), size, row.bytesPerLine, row.maxLines));
        if (row.bytesPerLine == 16 && row.maxLines == 0)
        {
            std::ostringstream os;
            HexDump(row.bytes.data(), size, os);
            EXPECT_EQ(row.expected, os.str());
        }
    }
    EXPECT_EQ("", BufferToHexDumpString(nullptr, 16, 16, 0));
}

TEST(BufferToHexDumpStringTest, OffsetsAreEightLowerCaseDigits)
{
    const std::vector<unsigned char> bytes(0x10001, 0xab);
    const std::string dump = BufferToHexDumpString(bytes.data(), static_cast<unsigned>(bytes.size()), 16, 0);
    const std::string line = "0x0000fff0:    abababab abababab abababab abababab    ................\r\n";
    const std::string last = "0x00010000:    ab                                     .\r\n";
    ASSERT_EQ(4096 * line.size() + last.size(), dump.size());
    EXPECT_EQ(line, dump.substr(4095 * line.size(), line.size()));
    EXPECT_EQ(last, dump.substr(4096 * line.size()));
}

// Each line is formatted into 256 characters: wide lines keep their first
// 255 characters, and the number of lines and their offsets stay those of
// the bytes per line asked for.
TEST(BufferToHexDumpStringTest, LinesAreCutAt255Characters)
{
    const auto bytes = Sequence(300, 0x20);
    // The first line is 18 + 2n + n / 4 + n characters, at most 255; of its
    // text column textKept characters stay.
    struct Row { int line; unsigned bytesPerLine; std::size_t lines, firstLineLength, textKept; };
    const Row rows[] = {
        {__LINE__, 72, 5, 252, 72},   // the widest multiple of 4 written whole
        {__LINE__, 73, 5, 255, 73},   // the widest line written whole
        {__LINE__, 74, 5, 255, 71},   // 258 characters: three text characters dropped
        {__LINE__, 76, 4, 255, 66},
        {__LINE__, 100, 3, 255, 12},
        {__LINE__, 104, 3, 255, 3},
        {__LINE__, 108, 3, 255, 0},   // the hex column itself is cut
        {__LINE__, 300, 1, 255, 0},
        {__LINE__, 301, 1, 255, 0},
        {__LINE__, 0xFFFFFFFFu, 1, 255, 0},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        const std::string dump = BufferToHexDumpString(bytes.data(), 300, row.bytesPerLine, 0);
        std::vector<std::string> lines;
        for (std::size_t start = 0, end; start < dump.size(); start = end + 2)
        {
            end = std::min(dump.find("\r\n", start), dump.size());
            lines.push_back(dump.substr(start, end - start));
        }
        ASSERT_EQ(row.lines, lines.size());
        EXPECT_EQ(row.firstLineLength, lines[0].size());
        const std::string text(bytes.begin(), bytes.begin() + static_cast<long>(row.textKept));
        if (row.textKept != 0)
        {
            EXPECT_EQ("    " + text, lines[0].substr(lines[0].size() - 4 - row.textKept));
        }
        for (std::size_t i = 0; i < lines.size(); ++i)
        {
            char offset[16];
            std::snprintf(offset, sizeof offset, "0x%08zx:   ", i * row.bytesPerLine);
            EXPECT_EQ(offset, lines[i].substr(0, 14)) << "line " << i;
            EXPECT_LE(lines[i].size(), 255u) << "line " << i;
        }
    }

    // A single line of 200 bytes: its hex column runs to the bound, 26
    // groups and three digit pairs of the 27th.
    const std::string widest = "0x00000000:   " + HexColumn(0x20, 104) + " 88898a\r\n";
    EXPECT_EQ(widest, BufferToHexDumpString(bytes.data(), 200, 200, 0));
    EXPECT_EQ(widest, BufferToHexDumpString(bytes.data(), 200, 0xFFFFFFFFu, 0));
    // The mark and the end of line follow the cut line.
    EXPECT_EQ(widest.substr(0, 255) + " ..." + kPlatformEol, BufferToHexDumpString(bytes.data(), 300, 200, 1));
    // Read back, 108 bytes per line end inside the hex column after 26
    // groups and three pairs: those 107 bytes stay.
    MessageBuilder builder;
    EXPECT_EQ(STATUS_CODE_INVALID_FORMAT, HexDumpStringToBuffer(BufferToHexDumpString(bytes.data(), 300, 108, 0), builder));
    EXPECT_EQ(Sequence(107, 0x20), Bytes(builder));
}

// ------------------------------------------------------------ reading back

TEST(HexDumpStringToBufferTest, RoundTripsAroundLineBoundaries)
{
    std::mt19937 random(20240611);
    const unsigned sizes[] = {0,  1,  2,  3,  4,  5,  7,   8,   11,  12,  15,  16,  17,  31,   32,  33,
                              47, 48, 49, 63, 64, 65, 100, 255, 256, 257, 511, 512, 513, 1000, 4099};
    const unsigned widths[] = {4, 8, 12, 16, 20, 32, 64, 72, 76, 100, 104};
    for (unsigned size : sizes)
    {
        std::vector<unsigned char> bytes(size);
        for (auto& b : bytes)
            b = static_cast<unsigned char>(random());
        for (unsigned width : widths)
        {
            for (unsigned maxLines : {0u, 1u, 2u})
            {
                SCOPED_TRACE(testing::Message() << "size " << size << ", bytes per line " << width << ", max lines "
                                                << maxLines);
                const std::string dump = BufferToHexDumpString(bytes.data(), size, width, maxLines);
                std::string lineFeeds = dump;
                lineFeeds.erase(std::remove(lineFeeds.begin(), lineFeeds.end(), '\r'), lineFeeds.end());
                const std::size_t kept = maxLines == 0 ? size : std::min<std::size_t>(size, maxLines * width);
                for (const std::string& text : {dump, lineFeeds})
                {
                    MessageBuilder builder;
                    ASSERT_EQ(STATUS_CODE_SUCCESS, HexDumpStringToBuffer(text, builder));
                    EXPECT_EQ(std::vector<unsigned char>(bytes.begin(), bytes.begin() + static_cast<long>(kept)), Bytes(builder));
                }
            }
        }
    }
}

// Every prefix of a dump: one ending at a line start is read in full, any
// other is refused. The bytes kept are those of the complete lines and the
// complete digit pairs of the partial line; pair k of a line begins at
// column 15 + 2k + k/4.
TEST(HexDumpStringToBufferTest, EveryTruncatedPrefixIsRefused)
{
    struct Row { int line; unsigned size, bytesPerLine, maxLines; };
    const Row rows[] = {
        {__LINE__, 1, 16, 0}, {__LINE__, 16, 16, 0}, {__LINE__, 17, 16, 0}, {__LINE__, 40, 16, 0},
        {__LINE__, 40, 16, 2}, {__LINE__, 13, 8, 0},  {__LINE__, 9, 4, 0},
    };
    for (const Row& row : rows)
    {
        const auto bytes = Sequence(row.size, 0xF0);
        const std::string dump = BufferToHexDumpString(bytes.data(), row.size, row.bytesPerLine, row.maxLines);
        std::size_t lineStart = 0, kept = 0; // of the line the prefix ends in
        for (std::size_t prefix = 0; prefix < dump.size(); ++prefix)
        {
            SCOPED_TRACE(testing::Message() << "row " << row.line << ", prefix " << prefix);
            if (prefix == dump.find('\n', lineStart) + 1)
            {
                kept += std::min<std::size_t>(row.bytesPerLine, row.size - kept);
                lineStart = prefix;
            }
            const std::size_t count = std::min<std::size_t>(row.bytesPerLine, row.size - kept);
            std::size_t pairs = 0;
            for (std::size_t k = 0; k < count; ++k)
                pairs += lineStart + 15 + 2 * k + k / 4 + 2 <= prefix;
            MessageBuilder builder;
            EXPECT_EQ(prefix == lineStart ? STATUS_CODE_SUCCESS : STATUS_CODE_INVALID_PARAMETER,
                      HexDumpStringToBuffer(dump.substr(0, prefix), builder));
            EXPECT_EQ(std::vector<unsigned char>(bytes.begin(), bytes.begin() + static_cast<long>(kept + pairs)), Bytes(builder));
        }
    }
}

// One bad character in each column of a line. The line is the second of
// the dump, so the first line's 16 bytes must stay whatever happens; it
// holds 16 bytes or 5. Its layout: "0x00000010:    " at 0-14, pair k at
// 15 + 2k + k/4 with a blank before each group of four, two blanks that end
// the hex column, then blanks and text up to "\r\n".
TEST(HexDumpStringToBufferTest, OneBadCharacterInEachColumn)
{
    for (unsigned count : {16u, 5u})
    {
        const auto bytes = Sequence(16 + count, 0x41);
        const std::string dump = BufferToHexDumpString(bytes.data(), 16 + count, 16, 0);
        const std::size_t lineStart = dump.find('\n') + 1, lineLength = dump.size() - lineStart;
        ASSERT_EQ(72u, lineStart);
        ASSERT_EQ(count == 16 ? 72u : 61u, lineLength);
        // Columns first..last broken give the status and keep kept bytes of the line.
        const auto expect = [&](std::size_t first, std::size_t last, StatusCode status, std::size_t kept) {
            for (std::size_t column = first; column <= last; ++column)
            {
                for (char bad : {'g', 'G', '\0', '\t'})
                {
                    SCOPED_TRACE(testing::Message() << count << " bytes, column " << column << ", character " << static_cast<int>(bad));
                    std::string broken = dump;
                    broken[lineStart + column] = bad;
                    MessageBuilder builder;
                    EXPECT_EQ(status, HexDumpStringToBuffer(broken, builder));
                    EXPECT_EQ(std::vector<unsigned char>(bytes.begin(), bytes.begin() + static_cast<long>(16 + kept)), Bytes(builder));
                }
            }
        };
        expect(0, 14, STATUS_CODE_INVALID_FORMAT, 0); // "0x", offset digits, ":    "
        for (std::size_t k = 0; k < count; ++k)       // a pair, or the group blank before it
            expect(15 + 2 * k + k / 4 - (k % 4 == 0 && k != 0), 15 + 2 * k + k / 4 + 1, STATUS_CODE_INVALID_FORMAT, k);
        const std::size_t end = 15 + 2 * count + (count - 1) / 4;
        expect(end, end + 1, STATUS_CODE_INVALID_FORMAT, count);                // the two blanks that end the column
        expect(end + 2, lineLength - 2, STATUS_CODE_SUCCESS, count);            // skipped: blanks, text, '\r'
        expect(lineLength - 1, lineLength - 1, STATUS_CODE_INVALID_PARAMETER, count); // no end of line
    }
}

TEST(HexDumpStringToBufferTest, LineRules)
{
    // Each dump of a row gives its status and bytes.
    struct Row { int line; StatusCode status; std::vector<unsigned char> bytes; std::vector<std::string> dumps; };
    const std::string good = "0x00000000:    41  A\r\n";
    const Row rows[] = {
        {__LINE__, STATUS_CODE_SUCCESS, {}, {""}},
        {__LINE__, STATUS_CODE_SUCCESS, {0x41}, {good}},
        {__LINE__, STATUS_CODE_SUCCESS, {0x41, 0x42}, {"0x00000000:    41  A\n0x00000001:    42  B\n"}},
        {__LINE__, STATUS_CODE_SUCCESS, {0xab, 0xcd}, {"0x0000000A:    AbcD  x\r\n"}},
        {__LINE__, STATUS_CODE_SUCCESS, {0x41, 0x42, 0x43}, {"0x00000000:    41 42 43  x\r\n"}},
        {__LINE__, STATUS_CODE_SUCCESS, {0x00}, {"0xffffffff:    00  anything at all \t here\r\n"}},
        // The start of the line, and hex pairs.
        {__LINE__, STATUS_CODE_INVALID_FORMAT, {},
         {"1x00000000:    41  A\r\n", "0X00000000:    41  A\r\n", "0x0000000g:    41  A\r\n", "0x 0000000:    41  A\r\n",
          "0x00000000;    41  A\r\n", "0x00000000:   41  A\r\n", "0x00000000:\t   41  A\r\n", "0x00000000:     41  A\r\n", "\r\n",
          "0x00000000:    4g  A\r\n"}},
        {__LINE__, STATUS_CODE_INVALID_FORMAT, {0x41, 0x42}, {"0x00000000:    41424g  A\r\n"}},
        {__LINE__, STATUS_CODE_INVALID_FORMAT, {0x41}, {"0x00000000:    41\t  A\r\n", "0x00000000:    41 \r\n"}},
        {__LINE__, STATUS_CODE_INVALID_FORMAT, {0x41, 0x42, 0x43, 0x44}, {"0x00000000:    41424344 4    ABCDE\r\n"}},
        // Running out of text inside a line.
        {__LINE__, STATUS_CODE_INVALID_PARAMETER, {}, {"0", "\n", "0x0000", "0x00000000:  ", "0x00000000:    4"}},
        {__LINE__, STATUS_CODE_INVALID_PARAMETER, {0x41},
         {"0x00000000:    41", "0x00000000:    41 ", "0x00000000:    41  A", "0x00000000:    41  A\r"}},
        // A bad line after good ones keeps the bytes read before it.
        {__LINE__, STATUS_CODE_INVALID_FORMAT, {0x41}, {good + "xx\r\n", good + "\r\n"}},
        {__LINE__, STATUS_CODE_INVALID_PARAMETER, {0x41, 0x41}, {good + good + "0x00000002:    4"}},
    };
    for (const Row& row : rows)
    {
        for (const std::string& dump : row.dumps)
        {
            SCOPED_TRACE(testing::Message() << "row " << row.line << ", dump \"" << dump << '"');
            MessageBuilder builder;
            EXPECT_EQ(row.status, HexDumpStringToBuffer(dump, builder));
            EXPECT_EQ(row.bytes, Bytes(builder));
        }
    }
}

// The bytes go behind what the builder holds, and its failure is passed on
// with the bytes that fitted.
TEST(HexDumpStringToBufferTest, WritesIntoTheGivenBuilder)
{
    MessageBuilder behind;
    ASSERT_EQ(STATUS_CODE_SUCCESS, behind.AppendUInt8(0xEE));
    ASSERT_EQ(STATUS_CODE_SUCCESS, HexDumpStringToBuffer(BufferToHexDumpString(Sequence(5, 0x10).data(), 5, 16, 0), behind));
    EXPECT_EQ(std::vector<unsigned char>({0xEE, 0x10, 0x11, 0x12, 0x13, 0x14}), Bytes(behind));

    const auto bytes = Sequence(20, 1);
    const std::string dump = BufferToHexDumpString(bytes.data(), 20, 16, 0);
    unsigned char storage[20];
    for (unsigned capacity = 0; capacity <= 20; ++capacity)
    {
        SCOPED_TRACE(capacity);
        MessageBuilder builder(storage, capacity, false);
        EXPECT_EQ(capacity < 20 ? STATUS_CODE_BUFFER_OVERFLOW : STATUS_CODE_SUCCESS, HexDumpStringToBuffer(dump, builder));
        EXPECT_EQ(Sequence(capacity, 1), Bytes(builder));
    }
}

} // namespace
} // namespace Zantor
