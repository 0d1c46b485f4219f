// Hex dumps: exact dump texts, the 255-character line bound, round trips,
// every truncated prefix and one bad character in each column of a line,
// malformed lines.
#include <ZantorMiddleware/ZantorBase/HexDump.h>

#include <ZantorMiddleware/ZantorBase/File.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using namespace Zantor;
using Bytes = std::vector<unsigned char>;

constexpr StatusCode OK = STATUS_CODE_SUCCESS, FORMAT = STATUS_CODE_INVALID_FORMAT, PARAMETER = STATUS_CODE_INVALID_PARAMETER;

static Bytes Sequence(unsigned n, unsigned char first) { Bytes b(n); std::generate(b.begin(), b.end(), [&] { return first++; }); return b; }
static std::string Dump(const Bytes& b, unsigned n, unsigned max = 0) { return BufferToHexDumpString(b.data(), unsigned(b.size()), n, max); }
// The status of reading dump back, and the bytes read.
static std::pair<StatusCode, Bytes> Read(const std::string& dump)
{
    MessageBuilder builder;
    return {HexDumpStringToBuffer(dump, builder), Bytes(builder.GetBuffer(), builder.GetBuffer() + builder.GetLength())};
}
// The last line written when lines remain: " ..." and the platform's end
// of line in place of "\r\n".
static std::string Marked(const std::string& dump) { return dump.substr(0, dump.size() - 2) + " ..." + File::GetEndOfLine(); }

// A line: "0x", the offset as 8 digits, ":   ", the hex column (a blank
// before each group of four) in a field of 2n + n/4 characters, four
// blanks, the text column.
TEST(BufferToHexDumpStringTest, ExactDumps)
{
    const std::string l0 = "0x00000000:    41424344 45464748 494a4b4c 4d4e4f50    ABCDEFGHIJKLMNOP\r\n";
    const std::string l1 = "0x00000010:    51525354 55565758 595a5b5c 5d5e5f60    QRSTUVWXYZ[\\]^_`\r\n";
    const std::string l2 = "0x00000020:    61626364 65666768" + std::string(18, ' ') + "    abcdefgh\r\n";
    EXPECT_EQ("", Dump({}, 16) + Dump(Sequence(16, 0), 0, 1) + BufferToHexDumpString(nullptr, 16, 16, 0)); // nothing to dump
    EXPECT_EQ("0x00000000:    001f207e 7f80ff25" + std::string(18, ' ') + "    .. ~...%\r\n", // text: 0x20 to 0x7e
              Dump({0, 0x1f, 0x20, 0x7e, 0x7f, 0x80, 0xff, '%'}, 16));
    // The last line written is marked when lines remain; exactly maxLines lines are all.
    EXPECT_EQ(l0 + Marked(l1), Dump(Sequence(40, 'A'), 16, 2));
    EXPECT_EQ(l0 + l1 + l2, Dump(Sequence(40, 'A'), 16, 3));
    // Not a multiple of 4: a full line loses its last hex digit.
    EXPECT_EQ("0x00000000:    61626364 65666768    abcdefgh\r\n0x00000008:    696a                 ij\r\n", Dump(Sequence(10, 'a'), 8));
    EXPECT_EQ("0x00000000:    41424344 4    ABCDE\r\n0x00000005:    4647          FG\r\n", Dump(Sequence(7, 'A'), 5));
    std::ostringstream os; // 16 bytes per line, no limit
    HexDump(Sequence(40, 'A').data(), 40, os);
    EXPECT_EQ(l0 + l1 + l2, os.str());
    // Offsets are 8 lower-case digits (here on a line cut at 255 characters).
    const std::string two = Dump(Bytes(0x01abcdef + 1), 0x01abcdef);
    EXPECT_EQ("0x01abcdef:    00" + std::string(238, ' ') + "\r\n", two.substr(two.find('\n') + 1));
}

// Each line is formatted into 256 characters: wide lines keep their first
// 255 characters; the number of lines stays that of the bytes per line.
TEST(BufferToHexDumpStringTest, LinesAreCutAt255Characters)
{
    const auto bytes = Sequence(300, 0x20);
    // A line is 18 + 2n + n / 4 + n characters before the cut; of the first
    // line's text column textKept characters stay. The last lines of 73 and
    // 74 are short: 8 and 4 bytes.
    struct Row { int line; unsigned bytesPerLine; long lines, firstLineLength, textKept; std::size_t lastLineLength; };
    for (const Row& row : std::initializer_list<Row>{
             {__LINE__, 73, 5, 255, 73, 190}, // the widest line written whole
             {__LINE__, 74, 5, 255, 71, 188}, // 258 characters: three text characters dropped
             {__LINE__, 104, 3, 255, 3, 255}, // the widest whose hex column is whole
             {__LINE__, 108, 3, 255, 0, 255}, // the hex column itself is cut
             {__LINE__, 0xFFFFFFFFu, 1, 255, 0, 255}})
    {
        const std::string dump = Dump(bytes, row.bytesPerLine), first = dump.substr(0, dump.find('\r'));
        EXPECT_EQ(row.lines, std::count(dump.begin(), dump.end(), '\n')) << "row at line " << row.line;
        EXPECT_EQ(row.firstLineLength, static_cast<long>(first.size())) << "row at line " << row.line;
        EXPECT_EQ(row.lastLineLength + 3, dump.size() - dump.rfind('\n', dump.size() - 2)) << "row at line " << row.line;
        EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + row.textKept), first.substr(first.size() - row.textKept)) << row.line;
    }
    // One line of 200 bytes: its hex column, the 16-byte columns of the same
    // bytes one after another, runs to the bound (26 groups, three pairs).
    std::string widest = "0x00000000:   ", sixteen = Dump(Sequence(112, 0x20), 16);
    for (std::size_t line = 0; line < 7; ++line)
        widest += sixteen.substr(line * 72 + 14, 36);
    EXPECT_EQ(widest.substr(0, 255) + "\r\n", Dump(Sequence(200, 0x20), 200));
    EXPECT_EQ(Marked(widest.substr(0, 255) + "\r\n"), Dump(bytes, 200, 1));
    // Read back, 108 bytes per line end inside the hex column: 107 bytes stay.
    EXPECT_EQ(std::pair(FORMAT, Sequence(107, 0x20)), Read(Dump(bytes, 108)));
}

// The second line of a dump (16 or 5 bytes) cut short, or with one bad
// character, in each column. Its layout: "0x00000010:    " at 0-14, pair k
// at 15 + 2k + k/4 after a blank before each group of four, two blanks that
// end the hex column at `end`, then blanks and text up to "\r\n". The first
// line's 16 bytes stay, and of this line the pairs complete before the
// column.
TEST(HexDumpStringToBufferTest, EveryTruncatedPrefixAndOneBadCharacterInEachColumn)
{
    for (unsigned count : {16u, 5u})
    {
        const std::string dump = Dump(Sequence(16 + count, 0x41), 16);
        const std::size_t length = dump.size() - 72, end = 15 + 2 * count + (count - 1) / 4;
        for (std::size_t column = 0; column < length; ++column)
        {
            unsigned pairs = 0;
            for (std::size_t k = 0; k < count; ++k)
                pairs += 15 + 2 * k + k / 4 + 2 <= column;
            const Bytes kept = Sequence(16 + pairs, 0x41);
            const StatusCode bad = column < end + 2 ? FORMAT : column < length - 1 ? OK : PARAMETER;
            EXPECT_EQ(std::pair(column == 0 ? OK : PARAMETER, kept), Read(dump.substr(0, 72 + column))) << count << ", cut at " << column;
            for (char c : {'g', 'G', '\0', '\t'})
                EXPECT_EQ(std::pair(bad, kept), Read(dump.substr(0, 72 + column) + c + dump.substr(73 + column)))
                    << count << " bytes, column " << column << ", character " << int{c};
        }
    }
}

TEST(HexDumpStringToBufferTest, LineRulesAndTheBuildersFailure)
{
    EXPECT_EQ(std::pair(OK, Bytes{}), Read(""));
    EXPECT_EQ(std::pair(OK, Bytes{0xab, 0xcd}), Read("0x0000000A:    AbcD  x\r\n"));              // either case
    EXPECT_EQ(std::pair(OK, Bytes{0x41, 0x42, 0x43}), Read("0x00000000:    41 42 43  x\r\n"));    // single blanks skipped
    EXPECT_EQ(std::pair(OK, Bytes{0x00}), Read("0xffffffff:    00  anything at all \t here\n")); // offset not checked
    EXPECT_EQ(std::pair(FORMAT, Bytes{}), Read("0x00000000:     41  A\r\n"));                 // a blank too many
    EXPECT_EQ(std::pair(FORMAT, Bytes{}), Read("\r\n"));
    EXPECT_EQ(std::pair(FORMAT, Sequence(4, 0x41)), Read("0x00000000:    41424344 4    ABCDE\r\n"));
    // The bytes go behind what the builder holds; its failure is passed on
    // with the bytes that fitted.
    unsigned char storage[17];
    MessageBuilder fixed(storage, sizeof storage, false);
    ASSERT_EQ(OK, fixed.AppendUInt8(0));
    EXPECT_EQ(STATUS_CODE_BUFFER_OVERFLOW, HexDumpStringToBuffer(Dump(Sequence(20, 1), 16), fixed));
    EXPECT_EQ(Sequence(17, 0), Bytes(fixed.GetBuffer(), fixed.GetBuffer() + fixed.GetLength()));
}
