// Hex dumps: exact dump texts, the 255-character line bound, round trips,
// every truncated prefix, one bad character in each column, malformed lines.
#include <ZantorMiddleware/ZantorBase/HexDump.h>

#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
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
std::string Line16(const std::string& offset, const std::string& hexColumn, const std::string& text,
                   const std::string& end = "\r\n")
{
    EXPECT_EQ(36u, hexColumn.size()) << "row error: the 16-byte hex column is 36 characters";
    return "0x" + offset + ":   " + hexColumn + "    " + text + end;
}

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

TEST(BufferToHexDumpStringTest, ExactDumps)
{
    struct Row
    {
        int line;
        std::vector<unsigned char> bytes;
        unsigned bytesPerLine;
        unsigned maxLines;
        std::string expected;
    };
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
        // 40 bytes, maxLines 1 and 2: the last line written ends in " ..."
        // and the platform's end of line; 3 lines or no limit: all of it.
        {__LINE__, Sequence(40, 0x41), 16, 1,
         Line16("00000000", " 41424344 45464748 494a4b4c 4d4e4f50", "ABCDEFGHIJKLMNOP", " ..." + kPlatformEol)},
        {__LINE__, Sequence(40, 0x41), 16, 2,
         Line16("00000000", " 41424344 45464748 494a4b4c 4d4e4f50", "ABCDEFGHIJKLMNOP") +
             Line16("00000010", " 51525354 55565758 595a5b5c 5d5e5f60", "QRSTUVWXYZ[\\]^_`", " ..." + kPlatformEol)},
        {__LINE__, Sequence(40, 0x41), 16, 3,
         Line16("00000000", " 41424344 45464748 494a4b4c 4d4e4f50", "ABCDEFGHIJKLMNOP") +
             Line16("00000010", " 51525354 55565758 595a5b5c 5d5e5f60", "QRSTUVWXYZ[\\]^_`") +
             Line16("00000020", " 61626364 65666768" + std::string(18, ' '), "abcdefgh")},
        {__LINE__, Sequence(40, 0x41), 16, 0,
         Line16("00000000", " 41424344 45464748 494a4b4c 4d4e4f50", "ABCDEFGHIJKLMNOP") +
             Line16("00000010", " 51525354 55565758 595a5b5c 5d5e5f60", "QRSTUVWXYZ[\\]^_`") +
             Line16("00000020", " 61626364 65666768" + std::string(18, ' '), "abcdefgh")},
        // Exactly maxLines lines: nothing remains, so no mark.
        {__LINE__, Sequence(32, 0x41), 16, 2,
         Line16("00000000", " 41424344 45464748 494a4b4c 4d4e4f50", "ABCDEFGHIJKLMNOP") +
             Line16("00000010", " 51525354 55565758 595a5b5c 5d5e5f60", "QRSTUVWXYZ[\\]^_`")},
        {__LINE__, {0x00, 0x1f, 0x20, 0x7e, 0x7f, 0x80, 0xff, '%'}, 16, 0,
         Line16("00000000", " 001f207e 7f80ff25" + std::string(18, ' '), ".. ~...%")},
        // Other widths: the field is 2 * n + n / 4 characters.
        {__LINE__, Sequence(10, 'a'), 8, 0,
         "0x00000000:    61626364 65666768    abcdefgh\r\n"
         "0x00000008:    696a                 ij\r\n"},
        {__LINE__, Sequence(8, 'a'), 4, 1, "0x00000000:    61626364    abcd ..." + kPlatformEol},
        // Not a multiple of 4: a full line loses its last hex digit.
        {__LINE__, Sequence(7, 'A'), 5, 0,
         "0x00000000:    41424344 4    ABCDE\r\n"
         "0x00000005:    4647          FG\r\n"},
        {__LINE__, Sequence(3, 'A'), 3, 0, "0x00000000:    41424    ABC\r\n"},
        {__LINE__, Sequence(4, 'A'), 2, 0, "0x00000000:    414    AB\r\n0x00000002:    434    CD\r\n"},
        {__LINE__, Sequence(2, 'A'), 1, 0, "0x00000000:    4    A\r\n0x00000001:    4    B\r\n"},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(row.expected, BufferToHexDumpString(row.bytes.data(), static_cast<unsigned>(row.bytes.size()),
                                                      row.bytesPerLine, row.maxLines));
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

std::vector<std::string> SplitLines(const std::string& dump)
{
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < dump.size())
    {
        const std::size_t end = dump.find("\r\n", start);
        if (end == std::string::npos)
        {
            lines.push_back(dump.substr(start));
            break;
        }
        lines.push_back(dump.substr(start, end - start));
        start = end + 2;
    }
    return lines;
}

// Each line is formatted into 256 characters: wide lines keep their first
// 255 characters, and the number of lines and their offsets stay those of
// the bytes per line asked for.
TEST(BufferToHexDumpStringTest, LinesAreCutAt255Characters)
{
    const auto bytes = Sequence(300, 0x20);
    struct Row
    {
        int line;
        unsigned bytesPerLine;
        std::size_t lines;
        std::size_t firstLineLength; // 18 + 2n + n / 4 + n, at most 255
        std::size_t textKept;        // characters of the first line's text column
    };
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
        const std::vector<std::string> lines =
            SplitLines(BufferToHexDumpString(bytes.data(), 300, row.bytesPerLine, 0));
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
}

TEST(HexDumpTest, WritesSixteenBytesPerLine)
{
    const auto bytes = Sequence(17, 0x20);
    std::ostringstream os;
    HexDump(bytes.data(), 17, os);
    EXPECT_EQ(Line16("00000000", " 20212223 24252627 28292a2b 2c2d2e2f", " !\"#$%&'()*+,-./") +
                  Line16("00000010", " 30" + std::string(33, ' '), "0"),
              os.str());
}

// ------------------------------------------------------------ reading back

std::string WithLineFeeds(std::string dump)
{
    std::string::size_type at;
    while ((at = dump.find("\r\n")) != std::string::npos)
        dump.erase(at, 1);
    return dump;
}

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
                const std::size_t kept = maxLines == 0 ? size : std::min<std::size_t>(size, maxLines * width);
                const std::vector<unsigned char> expected(bytes.begin(), bytes.begin() + static_cast<long>(kept));
                MessageBuilder crlf;
                ASSERT_EQ(STATUS_CODE_SUCCESS, HexDumpStringToBuffer(dump, crlf));
                EXPECT_EQ(expected, Bytes(crlf));
                MessageBuilder lf;
                ASSERT_EQ(STATUS_CODE_SUCCESS, HexDumpStringToBuffer(WithLineFeeds(dump), lf));
                EXPECT_EQ(expected, Bytes(lf));
            }
        }
    }
}

TEST(HexDumpStringToBufferTest, WidestReadableLines)
{
    const auto bytes = Sequence(250, 0);
    // 104 bytes per line: only text is cut, the hex column ends in two blanks.
    MessageBuilder last;
    EXPECT_EQ(STATUS_CODE_SUCCESS, HexDumpStringToBuffer(BufferToHexDumpString(bytes.data(), 250, 104, 0), last));
    EXPECT_EQ(bytes, Bytes(last));
    // 108: the line ends inside the hex column, after 26 groups and three
    // pairs; those 107 bytes stay.
    MessageBuilder first;
    EXPECT_EQ(STATUS_CODE_INVALID_FORMAT,
              HexDumpStringToBuffer(BufferToHexDumpString(bytes.data(), 250, 108, 0), first));
    EXPECT_EQ(Sequence(107, 0), Bytes(first));
}

// The bytes a prefix of a dump holds: those of its complete lines and the
// complete digit pairs of the partial line. Pair k of a line begins at
// column 15 + 2k + k/4.
std::size_t BytesInPrefix(const std::string& dump, std::size_t prefix, unsigned bytesPerLine, unsigned size,
                          bool& atLineStart)
{
    std::size_t bytes = 0;
    std::size_t lineStart = 0;
    for (;;)
    {
        const std::size_t lineEnd = dump.find('\n', lineStart) + 1;
        const unsigned count = std::min<unsigned>(bytesPerLine, size - static_cast<unsigned>(bytes));
        if (lineEnd <= prefix)
        {
            bytes += count;
            lineStart = lineEnd;
            continue;
        }
        atLineStart = prefix == lineStart;
        for (unsigned k = 0; k < count; ++k)
            if (lineStart + 15 + 2 * k + k / 4 + 2 <= prefix)
                ++bytes;
        return bytes;
    }
}

TEST(HexDumpStringToBufferTest, EveryTruncatedPrefixIsRefused)
{
    struct Row
    {
        int line;
        unsigned size;
        unsigned bytesPerLine;
        unsigned maxLines;
    };
    const Row rows[] = {
        {__LINE__, 1, 16, 0}, {__LINE__, 16, 16, 0}, {__LINE__, 17, 16, 0}, {__LINE__, 40, 16, 0},
        {__LINE__, 40, 16, 2}, {__LINE__, 13, 8, 0},  {__LINE__, 9, 4, 0},
    };
    for (const Row& row : rows)
    {
        const auto bytes = Sequence(row.size, 0xF0);
        const std::string dump = BufferToHexDumpString(bytes.data(), row.size, row.bytesPerLine, row.maxLines);
        for (std::size_t prefix = 0; prefix < dump.size(); ++prefix)
        {
            SCOPED_TRACE(testing::Message() << "row " << row.line << ", prefix " << prefix);
            bool atLineStart = false;
            const std::size_t kept = BytesInPrefix(dump, prefix, row.bytesPerLine, row.size, atLineStart);
            MessageBuilder builder;
            EXPECT_EQ(atLineStart ? STATUS_CODE_SUCCESS : STATUS_CODE_INVALID_PARAMETER,
                      HexDumpStringToBuffer(dump.substr(0, prefix), builder));
            EXPECT_EQ(std::vector<unsigned char>(bytes.begin(), bytes.begin() + static_cast<long>(kept)),
                      Bytes(builder));
        }
    }
}

// One bad character in each column of a line. The line is the second of
// the dump, so the first line's 16 bytes must stay whatever happens.
TEST(HexDumpStringToBufferTest, OneBadCharacterInEachColumn)
{
    struct Row
    {
        int line;
        std::size_t first; // columns first..last of the line
        std::size_t last;
        StatusCode status;
        std::size_t bytesOfTheLine; // kept from the broken line
    };
    // Second line of 32 bytes: "0x00000010:    " at 0-14, pairs at 15-22,
    // 24-31, 33-40, 42-49 with blanks at 23, 32, 41, then four blanks at
    // 50-53, text at 54-69, "\r\n" at 70-71.
    const Row full[] = {
        {__LINE__, 0, 1, STATUS_CODE_INVALID_FORMAT, 0},   // "0x"
        {__LINE__, 2, 9, STATUS_CODE_INVALID_FORMAT, 0},   // offset digits
        {__LINE__, 10, 14, STATUS_CODE_INVALID_FORMAT, 0}, // ":    "
        {__LINE__, 15, 16, STATUS_CODE_INVALID_FORMAT, 0},
        {__LINE__, 17, 18, STATUS_CODE_INVALID_FORMAT, 1},
        {__LINE__, 19, 20, STATUS_CODE_INVALID_FORMAT, 2},
        {__LINE__, 21, 22, STATUS_CODE_INVALID_FORMAT, 3},
        {__LINE__, 23, 25, STATUS_CODE_INVALID_FORMAT, 4}, // the group blank, or the pair behind it
        {__LINE__, 26, 27, STATUS_CODE_INVALID_FORMAT, 5},
        {__LINE__, 28, 29, STATUS_CODE_INVALID_FORMAT, 6},
        {__LINE__, 30, 31, STATUS_CODE_INVALID_FORMAT, 7},
        {__LINE__, 32, 34, STATUS_CODE_INVALID_FORMAT, 8},
        {__LINE__, 35, 36, STATUS_CODE_INVALID_FORMAT, 9},
        {__LINE__, 37, 38, STATUS_CODE_INVALID_FORMAT, 10},
        {__LINE__, 39, 40, STATUS_CODE_INVALID_FORMAT, 11},
        {__LINE__, 41, 43, STATUS_CODE_INVALID_FORMAT, 12},
        {__LINE__, 44, 45, STATUS_CODE_INVALID_FORMAT, 13},
        {__LINE__, 46, 47, STATUS_CODE_INVALID_FORMAT, 14},
        {__LINE__, 48, 49, STATUS_CODE_INVALID_FORMAT, 15},
        {__LINE__, 50, 51, STATUS_CODE_INVALID_FORMAT, 16}, // the two blanks that end the column
        {__LINE__, 52, 70, STATUS_CODE_SUCCESS, 16},        // skipped: blanks, text, '\r'
        {__LINE__, 71, 71, STATUS_CODE_INVALID_PARAMETER, 16}, // no end of line
    };
    // Second line of 21 bytes: pairs at 15-22 and 24-25, then blanks.
    const Row partial[] = {
        {__LINE__, 0, 16, STATUS_CODE_INVALID_FORMAT, 0},
        {__LINE__, 17, 18, STATUS_CODE_INVALID_FORMAT, 1},
        {__LINE__, 19, 20, STATUS_CODE_INVALID_FORMAT, 2},
        {__LINE__, 21, 22, STATUS_CODE_INVALID_FORMAT, 3},
        {__LINE__, 23, 25, STATUS_CODE_INVALID_FORMAT, 4},
        {__LINE__, 26, 27, STATUS_CODE_INVALID_FORMAT, 5},  // the two blanks behind the last pair
        {__LINE__, 28, 59, STATUS_CODE_SUCCESS, 5},
        {__LINE__, 60, 60, STATUS_CODE_INVALID_PARAMETER, 5},
    };
    struct Case
    {
        unsigned size;
        const Row* rows;
        std::size_t count;
    };
    const Case cases[] = {{32, full, std::size(full)}, {21, partial, std::size(partial)}};
    for (const Case& test : cases)
    {
        const auto bytes = Sequence(test.size, 0x41);
        const std::string dump = BufferToHexDumpString(bytes.data(), test.size, 16, 0);
        const std::size_t lineStart = dump.find('\n') + 1;
        ASSERT_EQ(72u, lineStart);
        for (const Row* row = test.rows; row != test.rows + test.count; ++row)
        {
            for (std::size_t column = row->first; column <= row->last; ++column)
            {
                for (char bad : {'g', 'G', '\0', '\t'})
                {
                    SCOPED_TRACE(testing::Message() << "row " << row->line << ", size " << test.size << ", column "
                                                    << column << ", character " << static_cast<int>(bad));
                    std::string broken = dump;
                    ASSERT_LT(lineStart + column, broken.size());
                    broken[lineStart + column] = bad;
                    MessageBuilder builder;
                    EXPECT_EQ(row->status, HexDumpStringToBuffer(broken, builder));
                    const auto kept = static_cast<long>(16 + row->bytesOfTheLine);
                    EXPECT_EQ(std::vector<unsigned char>(bytes.begin(), bytes.begin() + kept), Bytes(builder));
                }
            }
        }
    }
}

TEST(HexDumpStringToBufferTest, LineRules)
{
    struct Row
    {
        int line;
        std::string dump;
        StatusCode status;
        std::vector<unsigned char> bytes;
    };
    const std::string good = "0x00000000:    41  A\r\n";
    const Row rows[] = {
        {__LINE__, "", STATUS_CODE_SUCCESS, {}},
        {__LINE__, good, STATUS_CODE_SUCCESS, {0x41}},
        {__LINE__, "0x00000000:    41  A\n0x00000001:    42  B\n", STATUS_CODE_SUCCESS, {0x41, 0x42}},
        {__LINE__, "0x0000000A:    AbcD  x\r\n", STATUS_CODE_SUCCESS, {0xab, 0xcd}},
        {__LINE__, "0x00000000:    41 42 43  x\r\n", STATUS_CODE_SUCCESS, {0x41, 0x42, 0x43}},
        {__LINE__, "0xffffffff:    00  anything at all \t here\r\n", STATUS_CODE_SUCCESS, {0x00}},
        // The start of the line.
        {__LINE__, "1x00000000:    41  A\r\n", STATUS_CODE_INVALID_FORMAT, {}},
        {__LINE__, "0X00000000:    41  A\r\n", STATUS_CODE_INVALID_FORMAT, {}},
        {__LINE__, "0x0000000g:    41  A\r\n", STATUS_CODE_INVALID_FORMAT, {}},
        {__LINE__, "0x 0000000:    41  A\r\n", STATUS_CODE_INVALID_FORMAT, {}},
        {__LINE__, "0x00000000;    41  A\r\n", STATUS_CODE_INVALID_FORMAT, {}},
        {__LINE__, "0x00000000:   41  A\r\n", STATUS_CODE_INVALID_FORMAT, {}},
        {__LINE__, "0x00000000:\t   41  A\r\n", STATUS_CODE_INVALID_FORMAT, {}},
        {__LINE__, "0x00000000:     41  A\r\n", STATUS_CODE_INVALID_FORMAT, {}},
        {__LINE__, "\r\n", STATUS_CODE_INVALID_FORMAT, {}},
        // Hex pairs.
        {__LINE__, "0x00000000:    4g  A\r\n", STATUS_CODE_INVALID_FORMAT, {}},
        {__LINE__, "0x00000000:    41424g  A\r\n", STATUS_CODE_INVALID_FORMAT, {0x41, 0x42}},
        {__LINE__, "0x00000000:    41\t  A\r\n", STATUS_CODE_INVALID_FORMAT, {0x41}},
        {__LINE__, "0x00000000:    41 \r\n", STATUS_CODE_INVALID_FORMAT, {0x41}},
        {__LINE__, "0x00000000:    41424344 4    ABCDE\r\n", STATUS_CODE_INVALID_FORMAT, {0x41, 0x42, 0x43, 0x44}},
        // Running out of text inside a line.
        {__LINE__, "0", STATUS_CODE_INVALID_PARAMETER, {}},
        {__LINE__, "\n", STATUS_CODE_INVALID_PARAMETER, {}},
        {__LINE__, "0x0000", STATUS_CODE_INVALID_PARAMETER, {}},
        {__LINE__, "0x00000000:  ", STATUS_CODE_INVALID_PARAMETER, {}},
        {__LINE__, "0x00000000:    4", STATUS_CODE_INVALID_PARAMETER, {}},
        {__LINE__, "0x00000000:    41", STATUS_CODE_INVALID_PARAMETER, {0x41}},
        {__LINE__, "0x00000000:    41 ", STATUS_CODE_INVALID_PARAMETER, {0x41}},
        {__LINE__, "0x00000000:    41  A", STATUS_CODE_INVALID_PARAMETER, {0x41}},
        {__LINE__, "0x00000000:    41  A\r", STATUS_CODE_INVALID_PARAMETER, {0x41}},
        // A bad line after good ones keeps the bytes read before it.
        {__LINE__, good + "xx\r\n", STATUS_CODE_INVALID_FORMAT, {0x41}},
        {__LINE__, good + "\r\n", STATUS_CODE_INVALID_FORMAT, {0x41}},
        {__LINE__, good + good + "0x00000002:    4", STATUS_CODE_INVALID_PARAMETER, {0x41, 0x41}},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        MessageBuilder builder;
        EXPECT_EQ(row.status, HexDumpStringToBuffer(row.dump, builder));
        EXPECT_EQ(row.bytes, Bytes(builder));
    }
}

TEST(HexDumpStringToBufferTest, BuilderFailureIsPassedOn)
{
    const auto bytes = Sequence(20, 1);
    const std::string dump = BufferToHexDumpString(bytes.data(), 20, 16, 0);
    unsigned char storage[20];
    for (unsigned capacity = 0; capacity < 20; ++capacity)
    {
        SCOPED_TRACE(capacity);
        MessageBuilder builder(storage, capacity, false);
        EXPECT_EQ(STATUS_CODE_BUFFER_OVERFLOW, HexDumpStringToBuffer(dump, builder));
        EXPECT_EQ(Sequence(capacity, 1), Bytes(builder));
    }
    MessageBuilder exact(storage, 20, false);
    EXPECT_EQ(STATUS_CODE_SUCCESS, HexDumpStringToBuffer(dump, exact));
    EXPECT_EQ(bytes, Bytes(exact));
}

TEST(HexDumpStringToBufferTest, AppendsBehindWhatTheBuilderHolds)
{
    const auto bytes = Sequence(5, 0x10);
    MessageBuilder builder;
    ASSERT_EQ(STATUS_CODE_SUCCESS, builder.AppendUInt8(0xEE));
    ASSERT_EQ(STATUS_CODE_SUCCESS, HexDumpStringToBuffer(BufferToHexDumpString(bytes.data(), 5, 16, 0), builder));
    EXPECT_EQ(std::vector<unsigned char>({0xEE, 0x10, 0x11, 0x12, 0x13, 0x14}), Bytes(builder));
}

} // namespace
} // namespace Zantor
