// Hex dumps: exact dump texts, reading dumps back, malformed lines.
#include <ZantorMiddleware/ZantorBase/HexDump.h>

#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>

#include <gtest/gtest.h>

#include <numeric>
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

// ------------------------------------------------------------- the dump

TEST(BufferToHexDumpStringTest, EmptyResults)
{
    const auto bytes = Sequence(16, 0);
    EXPECT_EQ("", BufferToHexDumpString(bytes.data(), 0, 16, 0));
    EXPECT_EQ("", BufferToHexDumpString(bytes.data(), 16, 0, 0));
    EXPECT_EQ("", BufferToHexDumpString(nullptr, 16, 16, 0));
}

TEST(BufferToHexDumpStringTest, OneByte)
{
    const unsigned char byte = 'A';
    EXPECT_EQ("0x00000000:    41                                     A\r\n",
              BufferToHexDumpString(&byte, 1, 16, 0));
}

TEST(BufferToHexDumpStringTest, SixteenBytesFillTheHexColumn)
{
    const auto bytes = Sequence(16, 0x30);
    EXPECT_EQ("0x00000000:    30313233 34353637 38393a3b 3c3d3e3f    0123456789:;<=>?\r\n",
              BufferToHexDumpString(bytes.data(), 16, 16, 0));
}

TEST(BufferToHexDumpStringTest, SeventeenBytesPadTheSecondLine)
{
    const auto bytes = Sequence(17, 0);
    EXPECT_EQ("0x00000000:    00010203 04050607 08090a0b 0c0d0e0f    ................\r\n"
              "0x00000010:    10                                     .\r\n",
              BufferToHexDumpString(bytes.data(), 17, 16, 0));
}

TEST(BufferToHexDumpStringTest, MaxLinesCutsWithMark)
{
    const auto bytes = Sequence(40, 0x41);
    EXPECT_EQ("0x00000000:    41424344 45464748 494a4b4c 4d4e4f50    ABCDEFGHIJKLMNOP ..." + kPlatformEol,
              BufferToHexDumpString(bytes.data(), 40, 16, 1));
    EXPECT_EQ("0x00000000:    41424344 45464748 494a4b4c 4d4e4f50    ABCDEFGHIJKLMNOP\r\n"
              "0x00000010:    51525354 55565758 595a5b5c 5d5e5f60    QRSTUVWXYZ[\\]^_` ..." + kPlatformEol,
              BufferToHexDumpString(bytes.data(), 40, 16, 2));
    // Exactly maxLines lines: nothing remains, so no mark.
    EXPECT_EQ(BufferToHexDumpString(bytes.data(), 40, 16, 0), BufferToHexDumpString(bytes.data(), 40, 16, 3));
    EXPECT_EQ(BufferToHexDumpString(bytes.data(), 32, 16, 0), BufferToHexDumpString(bytes.data(), 32, 16, 2));
}

TEST(BufferToHexDumpStringTest, EightBytesPerLine)
{
    const auto bytes = Sequence(10, 'a');
    EXPECT_EQ("0x00000000:    61626364 65666768    abcdefgh\r\n"
              "0x00000008:    696a                 ij\r\n",
              BufferToHexDumpString(bytes.data(), 10, 8, 0));
}

TEST(BufferToHexDumpStringTest, FiveBytesPerLineCutsTheLastDigit)
{
    const auto bytes = Sequence(7, 'A');
    EXPECT_EQ("0x00000000:    41424344 4    ABCDE\r\n"
              "0x00000005:    4647          FG\r\n",
              BufferToHexDumpString(bytes.data(), 7, 5, 0));
}

TEST(BufferToHexDumpStringTest, NonPrintableBytesShowAsDots)
{
    const unsigned char bytes[] = {0x00, 0x1f, 0x20, 0x7e, 0x7f, 0x80, 0xff, '%'};
    EXPECT_EQ("0x00000000:    001f207e 7f80ff25                      .. ~...%\r\n",
              BufferToHexDumpString(bytes, sizeof bytes, 16, 0));
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

TEST(BufferToHexDumpStringTest, WideLinesAreClampedToTheMaximum)
{
    const auto bytes = Sequence(200, 0);
    const std::string widest = BufferToHexDumpString(bytes.data(), 200, HEX_DUMP_MAX_BYTES_PER_LINE, 0);
    EXPECT_EQ(widest, BufferToHexDumpString(bytes.data(), 200, HEX_DUMP_MAX_BYTES_PER_LINE + 1, 0));
    EXPECT_EQ(widest, BufferToHexDumpString(bytes.data(), 200, 0xFFFFFFFFu, 0));
    const std::size_t firstLine = widest.find("\r\n");
    EXPECT_EQ(252u, firstLine);
    EXPECT_NE(BufferToHexDumpString(bytes.data(), 200, HEX_DUMP_MAX_BYTES_PER_LINE - 4, 0), widest);
}

TEST(HexDumpTest, WritesSixteenBytesPerLine)
{
    const auto bytes = Sequence(33, 0x20);
    std::ostringstream os;
    HexDump(bytes.data(), 33, os);
    EXPECT_EQ(BufferToHexDumpString(bytes.data(), 33, 16, 0), os.str());
}

// ------------------------------------------------------------ reading back

TEST(HexDumpStringToBufferTest, RoundTripsRandomBuffers)
{
    std::mt19937 random(20240611);
    const unsigned sizes[] = {0, 1, 2, 3, 4, 5, 7, 8, 11, 12, 15, 16, 17, 31, 32, 33, 63, 64, 65, 100, 255, 256, 257, 1000, 4099};
    const unsigned widths[] = {4, 8, 12, 16, 20, 32, 64, 72, 100};
    for (unsigned size : sizes)
    {
        std::vector<unsigned char> bytes(size);
        for (auto& b : bytes)
            b = static_cast<unsigned char>(random());
        for (unsigned width : widths)
        {
            SCOPED_TRACE(testing::Message() << "size " << size << ", bytes per line " << width);
            const std::string dump = BufferToHexDumpString(bytes.data(), size, width, 0);
            MessageBuilder builder;
            ASSERT_EQ(STATUS_CODE_SUCCESS, HexDumpStringToBuffer(dump, builder));
            EXPECT_EQ(bytes, Bytes(builder));
        }
    }
}

TEST(HexDumpStringToBufferTest, CutDumpReadsTheLinesWritten)
{
    const auto bytes = Sequence(40, 0x41);
    for (unsigned maxLines = 1; maxLines <= 3; ++maxLines)
    {
        SCOPED_TRACE(maxLines);
        MessageBuilder builder;
        ASSERT_EQ(STATUS_CODE_SUCCESS, HexDumpStringToBuffer(BufferToHexDumpString(bytes.data(), 40, 16, maxLines), builder));
        const std::size_t expected = maxLines < 3 ? 16u * maxLines : 40u;
        EXPECT_EQ(std::vector<unsigned char>(bytes.begin(), bytes.begin() + static_cast<long>(expected)), Bytes(builder));
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
    const auto bytes = Sequence(3, 1);
    unsigned char storage[2];
    MessageBuilder builder(storage, sizeof storage, false);
    EXPECT_EQ(STATUS_CODE_BUFFER_OVERFLOW, HexDumpStringToBuffer(BufferToHexDumpString(bytes.data(), 3, 16, 0), builder));
    EXPECT_EQ(std::vector<unsigned char>({1, 2}), Bytes(builder));
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
