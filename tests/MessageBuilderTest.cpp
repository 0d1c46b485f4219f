// MessageBuilder: wire bytes of every typed form, positions, growth,
// failures that must leave the builder unchanged, formatted text, aliasing
// and a randomized comparison against a plain byte vector.
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

#if defined(__linux__)
#  include <sys/resource.h>
#endif

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#  define ZANTOR_TEST_SANITIZED 1
#elif defined(__has_feature)
#  if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#    define ZANTOR_TEST_SANITIZED 1
#  endif
#endif

namespace {

using Zantor::MessageBuilder;
using Zantor::MessageHandler;
using Zantor::StatusCode;
using Bytes = std::vector<unsigned char>;
using namespace std::string_literals;

constexpr auto LE = MessageHandler::ENDIAN_LITTLE;
constexpr auto BE = MessageHandler::ENDIAN_BIG;
constexpr StatusCode OK = Zantor::STATUS_CODE_SUCCESS;
constexpr StatusCode OVERFLOW_ = Zantor::STATUS_CODE_BUFFER_OVERFLOW;
constexpr StatusCode INVALID = Zantor::STATUS_CODE_INVALID_PARAMETER;
constexpr StatusCode HEAP_EMPTY = Zantor::STATUS_CODE_HEAP_EMPTY;

Bytes Contents(const MessageBuilder& builder)
{
    if (builder.GetLength() == 0)
        return {};
    return Bytes(builder.GetBuffer(), builder.GetBuffer() + builder.GetLength());
}

Bytes Text(const std::string& text) { return Bytes(text.begin(), text.end()); }

// Everything a failure must leave as it was.
struct Snapshot
{
    explicit Snapshot(const MessageBuilder& builder)
        : bytes(Contents(builder)),
          capacity(builder.GetCapacity()),
          buffer(builder.GetBuffer()),
          onInitial(builder.IsUsingInitialBuffer())
    {
    }
    bool operator==(const Snapshot&) const = default;

    Bytes bytes;
    unsigned capacity;
    const unsigned char* buffer;
    bool onInitial;
};

enum class Side : std::uint16_t
{
    Bid = 0x0102,
    Ask = 0xA1A2
};

void Fill(MessageBuilder& builder, const Bytes& bytes)
{
    ASSERT_EQ(OK, builder.AppendBuffer(bytes.data(), static_cast<unsigned>(bytes.size())));
}

// ---------------------------------------------------------------------------
// Typed forms: exact bytes in both orders, through the inline fast paths and
// through the out-of-line paths that grow.

using Operation = std::function<StatusCode(MessageBuilder&)>;

struct TypedRow
{
    int line;
    Bytes start;
    Operation operation;
    Bytes expected;
};

const std::vector<TypedRow>& TypedRows()
{
    static const std::vector<TypedRow> rows = {
        // Appends.
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendUInt8(0xAB); }, {0xAB}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendUInt8(0xAB, BE); }, {0xAB}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendInt8(-2); }, {0xFE}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendInt8(-128, BE); }, {0x80}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendUInt16(0x0102, LE); }, {0x02, 0x01}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendUInt16(0x0102, BE); }, {0x01, 0x02}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendUInt16(0xFFFE, BE); }, {0xFF, 0xFE}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendInt16(-2, LE); }, {0xFE, 0xFF}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendInt16(-2, BE); }, {0xFF, 0xFE}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendInt16(INT16_MIN, BE); }, {0x80, 0x00}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendUInt32(0x01020304, BE); }, {0x01, 0x02, 0x03, 0x04}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendUInt32(0x01020304, LE); }, {0x04, 0x03, 0x02, 0x01}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendUInt32(0xA0B0C0D0, BE); }, {0xA0, 0xB0, 0xC0, 0xD0}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendInt32(-2, LE); }, {0xFE, 0xFF, 0xFF, 0xFF}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendInt32(-2, BE); }, {0xFF, 0xFF, 0xFF, 0xFE}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendInt32(-0x01020304, BE); }, {0xFE, 0xFD, 0xFC, 0xFC}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendInt32(-0x01020304, LE); }, {0xFC, 0xFC, 0xFD, 0xFE}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendUInt64(0x0102030405060708, LE); },
         {0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendUInt64(0x0102030405060708, BE); },
         {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendInt64(-2, LE); },
         {0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendInt64(-2, BE); },
         {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendInt64(INT64_MIN, LE); },
         {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendInt64(-0x0102030405060708, BE); },
         {0xFE, 0xFD, 0xFC, 0xFB, 0xFA, 0xF9, 0xF8, 0xF8}},
        // Any non-zero byte order is big-endian.
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendUInt16(0x0102, static_cast<MessageHandler::Endian>(2)); }, {0x01, 0x02}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendUInt32(0x01020304, static_cast<MessageHandler::Endian>(0xFF)); },
         {0x01, 0x02, 0x03, 0x04}},
        // The machine-order templates of the four widths.
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendBuiltIn<signed char>(-1); }, {0xFF}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendBuiltIn<short>(0x1234); }, {0x34, 0x12}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendBuiltIn<unsigned int>(0xA1B2C3D4); }, {0xD4, 0xC3, 0xB2, 0xA1}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendBuiltIn<std::int64_t>(0x1122334455667788); },
         {0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11}},
        // Several integers under one bounds check, each in the given order.
        {__LINE__, {}, [](MessageBuilder& b) {
             return b.AppendBuiltIns(BE, std::uint8_t{0x51}, std::uint16_t{0x0102}, std::uint32_t{0x03040506},
                                     std::int64_t{-2});
         },
         {0x51, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}},
        {__LINE__, {}, [](MessageBuilder& b) {
             return b.AppendBuiltIns(LE, std::uint8_t{0x51}, std::uint16_t{0x0102}, std::uint32_t{0x03040506},
                                     std::int64_t{-2});
         },
         {0x51, 0x02, 0x01, 0x06, 0x05, 0x04, 0x03, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.AppendBuiltIns(BE, true, Side::Ask, std::int8_t{-4}); },
         {0x01, 0xA1, 0xA2, 0xFC}},
        {__LINE__, {0x7F}, [](MessageBuilder& b) { return b.AppendBuiltIns(BE, std::int16_t{-2}); }, {0x7F, 0xFF, 0xFE}},
        // Appends after existing bytes.
        {__LINE__, {0xEE, 0xEE, 0xEE}, [](MessageBuilder& b) { return b.AppendUInt32(0x01020304, BE); },
         {0xEE, 0xEE, 0xEE, 0x01, 0x02, 0x03, 0x04}},
        {__LINE__, {0xEE}, [](MessageBuilder& b) { return b.AppendInt16(-3, LE); }, {0xEE, 0xFD, 0xFF}},
        // Inserts in the middle, at the start and at the end.
        {__LINE__, {'x', 'y'}, [](MessageBuilder& b) { return b.InsertUInt8(1, 0x80); }, {'x', 0x80, 'y'}},
        {__LINE__, {'x', 'y'}, [](MessageBuilder& b) { return b.InsertInt8(0, -1); }, {0xFF, 'x', 'y'}},
        {__LINE__, {'x', 'y'}, [](MessageBuilder& b) { return b.InsertUInt16(1, 0x0102, LE); }, {'x', 0x02, 0x01, 'y'}},
        {__LINE__, {'x', 'y'}, [](MessageBuilder& b) { return b.InsertUInt16(1, 0x0102, BE); }, {'x', 0x01, 0x02, 'y'}},
        {__LINE__, {'x', 'y'}, [](MessageBuilder& b) { return b.InsertInt16(2, -2, BE); }, {'x', 'y', 0xFF, 0xFE}},
        {__LINE__, {'x', 'y'}, [](MessageBuilder& b) { return b.InsertInt16(0, -2, LE); }, {0xFE, 0xFF, 'x', 'y'}},
        {__LINE__, {'x', 'y'}, [](MessageBuilder& b) { return b.InsertUInt32(1, 0x01020304, BE); },
         {'x', 0x01, 0x02, 0x03, 0x04, 'y'}},
        {__LINE__, {'x', 'y'}, [](MessageBuilder& b) { return b.InsertUInt32(1, 0x01020304, LE); },
         {'x', 0x04, 0x03, 0x02, 0x01, 'y'}},
        {__LINE__, {'x', 'y'}, [](MessageBuilder& b) { return b.InsertInt32(0, -2, BE); },
         {0xFF, 0xFF, 0xFF, 0xFE, 'x', 'y'}},
        {__LINE__, {'x', 'y'}, [](MessageBuilder& b) { return b.InsertInt32(2, -2, LE); },
         {'x', 'y', 0xFE, 0xFF, 0xFF, 0xFF}},
        {__LINE__, {'x', 'y'}, [](MessageBuilder& b) { return b.InsertUInt64(1, 0x0102030405060708, BE); },
         {'x', 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 'y'}},
        {__LINE__, {'x', 'y'}, [](MessageBuilder& b) { return b.InsertUInt64(1, 0x0102030405060708, LE); },
         {'x', 0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01, 'y'}},
        {__LINE__, {'x', 'y'}, [](MessageBuilder& b) { return b.InsertInt64(0, -2, BE); },
         {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 'x', 'y'}},
        {__LINE__, {'x', 'y'}, [](MessageBuilder& b) { return b.InsertInt64(2, -2, LE); },
         {'x', 'y', 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {__LINE__, {'x', 'y'}, [](MessageBuilder& b) { return b.InsertBuiltIn<unsigned int>(1, 0xA1B2C3D4); },
         {'x', 0xD4, 0xC3, 0xB2, 0xA1, 'y'}},
        // Overwrites inside the message.
        {__LINE__, Bytes(8, 0xEE), [](MessageBuilder& b) { return b.OverwriteUInt8(7, 0x01); },
         {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0x01}},
        {__LINE__, Bytes(8, 0xEE), [](MessageBuilder& b) { return b.OverwriteInt8(0, -128); },
         {0x80, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}},
        {__LINE__, Bytes(8, 0xEE), [](MessageBuilder& b) { return b.OverwriteUInt16(2, 0x0102, BE); },
         {0xEE, 0xEE, 0x01, 0x02, 0xEE, 0xEE, 0xEE, 0xEE}},
        {__LINE__, Bytes(8, 0xEE), [](MessageBuilder& b) { return b.OverwriteUInt16(2, 0x0102, LE); },
         {0xEE, 0xEE, 0x02, 0x01, 0xEE, 0xEE, 0xEE, 0xEE}},
        {__LINE__, Bytes(8, 0xEE), [](MessageBuilder& b) { return b.OverwriteInt16(6, -2, BE); },
         {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xFF, 0xFE}},
        {__LINE__, Bytes(8, 0xEE), [](MessageBuilder& b) { return b.OverwriteUInt32(1, 0x01020304, BE); },
         {0xEE, 0x01, 0x02, 0x03, 0x04, 0xEE, 0xEE, 0xEE}},
        {__LINE__, Bytes(8, 0xEE), [](MessageBuilder& b) { return b.OverwriteUInt32(4, 0x01020304, LE); },
         {0xEE, 0xEE, 0xEE, 0xEE, 0x04, 0x03, 0x02, 0x01}},
        {__LINE__, Bytes(8, 0xEE), [](MessageBuilder& b) { return b.OverwriteInt32(0, -2, LE); },
         {0xFE, 0xFF, 0xFF, 0xFF, 0xEE, 0xEE, 0xEE, 0xEE}},
        {__LINE__, Bytes(8, 0xEE), [](MessageBuilder& b) { return b.OverwriteInt32(0, -2, BE); },
         {0xFF, 0xFF, 0xFF, 0xFE, 0xEE, 0xEE, 0xEE, 0xEE}},
        {__LINE__, Bytes(8, 0xEE), [](MessageBuilder& b) { return b.OverwriteUInt64(0, 0x0102030405060708, BE); },
         {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08}},
        {__LINE__, Bytes(8, 0xEE), [](MessageBuilder& b) { return b.OverwriteUInt64(0, 0x0102030405060708, LE); },
         {0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01}},
        {__LINE__, Bytes(8, 0xEE), [](MessageBuilder& b) { return b.OverwriteInt64(0, -2, BE); },
         {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}},
        {__LINE__, Bytes(8, 0xEE), [](MessageBuilder& b) { return b.OverwriteBuiltIn<short>(3, 0x1234); },
         {0xEE, 0xEE, 0xEE, 0x34, 0x12, 0xEE, 0xEE, 0xEE}},
        // Overwrites that reach past the end extend the message.
        {__LINE__, {0xEE, 0xEE, 0xEE}, [](MessageBuilder& b) { return b.OverwriteUInt32(1, 0x01020304, BE); },
         {0xEE, 0x01, 0x02, 0x03, 0x04}},
        {__LINE__, {0xEE, 0xEE, 0xEE}, [](MessageBuilder& b) { return b.OverwriteInt64(3, -2, LE); },
         {0xEE, 0xEE, 0xEE, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {__LINE__, {0xEE, 0xEE, 0xEE}, [](MessageBuilder& b) { return b.OverwriteUInt16(2, 0x0102, LE); },
         {0xEE, 0xEE, 0x02, 0x01}},
        {__LINE__, {}, [](MessageBuilder& b) { return b.OverwriteUInt8(0, 0x7F); }, {0x7F}},
        // Raw bytes, forward and reversed, below and above the block-copy size.
        {__LINE__, {0xEE}, [](MessageBuilder& b) { const unsigned char d[] = {1, 2, 3}; return b.AppendBuffer(d, 3, true); },
         {0xEE, 3, 2, 1}},
        {__LINE__, {}, [](MessageBuilder& b) { const unsigned char d[] = {1, 2, 3, 4, 5, 6, 7, 8, 9}; return b.AppendBuffer(d, 9); },
         {1, 2, 3, 4, 5, 6, 7, 8, 9}},
        {__LINE__, {}, [](MessageBuilder& b) { const unsigned char d[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}; return b.AppendBuffer(d, 12); },
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
        {__LINE__, {}, [](MessageBuilder& b) { const unsigned char d[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}; return b.AppendBuffer(d, 12, true); },
         {12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1}},
        {__LINE__, {'a', 'b'}, [](MessageBuilder& b) { const unsigned char d[] = {1, 2, 3}; return b.InsertBuffer(1, d, 3, true); },
         {'a', 3, 2, 1, 'b'}},
        {__LINE__, {'a', 'b', 'c'}, [](MessageBuilder& b) { const unsigned char d[] = {1, 2, 3}; return b.OverwriteBuffer(1, d, 3, true); },
         {'a', 3, 2, 1}},
        {__LINE__, {'a'}, [](MessageBuilder& b) { return b.AppendString("bcd"); }, {'a', 'b', 'c', 'd'}},
        {__LINE__, {'a', 'd'}, [](MessageBuilder& b) { return b.InsertString(1, "bc"); }, {'a', 'b', 'c', 'd'}},
        {__LINE__, {'a', 'x', 'y'}, [](MessageBuilder& b) { return b.OverwriteString(1, "bcd"); }, {'a', 'b', 'c', 'd'}},
    };
    return rows;
}

TEST(MessageBuilderTyped, ExactBytesWithRoomInTheInitialBuffer)
{
    for (const TypedRow& row : TypedRows())
    {
        SCOPED_TRACE(testing::Message() << "row at line " << row.line);
        unsigned char storage[64];
        MessageBuilder builder(storage, sizeof storage);
        Fill(builder, row.start);
        EXPECT_EQ(OK, row.operation(builder));
        EXPECT_EQ(row.expected, Contents(builder));
        EXPECT_TRUE(builder.IsUsingInitialBuffer());
    }
}

TEST(MessageBuilderTyped, ExactBytesWhenTheOperationMustGrow)
{
    for (const TypedRow& row : TypedRows())
    {
        SCOPED_TRACE(testing::Message() << "row at line " << row.line);
        // An initial buffer holding exactly the starting bytes: the operation
        // moves the message to the heap.
        Bytes storage(row.start.size() + 1);
        MessageBuilder tight(storage.data(), static_cast<unsigned>(row.start.size()));
        Fill(tight, row.start);
        EXPECT_EQ(OK, row.operation(tight));
        EXPECT_EQ(row.expected, Contents(tight));
        // No initial buffer at all.
        MessageBuilder empty;
        Fill(empty, row.start);
        EXPECT_EQ(OK, row.operation(empty));
        EXPECT_EQ(row.expected, Contents(empty));
    }
}

TEST(MessageBuilderTyped, NonGrowableBufferExactFitPassesOneByteLessFails)
{
    for (const TypedRow& row : TypedRows())
    {
        SCOPED_TRACE(testing::Message() << "row at line " << row.line);
        Bytes exact(row.expected.size() + 1);
        MessageBuilder fits(exact.data(), static_cast<unsigned>(row.expected.size()), false);
        Fill(fits, row.start);
        EXPECT_EQ(OK, row.operation(fits));
        EXPECT_EQ(row.expected, Contents(fits));

        if (row.expected.size() == row.start.size())
            continue; // nothing is added
        Bytes short_(row.expected.size());
        MessageBuilder full(short_.data(), static_cast<unsigned>(row.expected.size() - 1), false);
        Fill(full, row.start);
        const Snapshot before(full);
        EXPECT_EQ(OVERFLOW_, row.operation(full));
        EXPECT_EQ(before, Snapshot(full));
    }
}

// ---------------------------------------------------------------------------
// Positions: start, middle, end, one past the end.

struct PositionRow
{
    int line;
    Operation operation;
    StatusCode status;
    std::string expected; // the message afterwards
};

TEST(MessageBuilderPositions, InsertOverwriteEraseAtEveryPositionClass)
{
    static const unsigned char xy[] = {'x', 'y'};
    static const unsigned char wxyz[] = {'w', 'x', 'y', 'z'};
    const std::vector<PositionRow> rows = {
        {__LINE__, [](MessageBuilder& b) { return b.InsertBuffer(0, xy, 2); }, OK, "xyABCDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.InsertBuffer(3, xy, 2); }, OK, "ABCxyDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.InsertBuffer(5, xy, 2); }, OK, "ABCDExyF"},
        {__LINE__, [](MessageBuilder& b) { return b.InsertBuffer(6, xy, 2); }, OK, "ABCDEFxy"},
        {__LINE__, [](MessageBuilder& b) { return b.InsertBuffer(7, xy, 2); }, INVALID, "ABCDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.InsertBuffer(7, xy, 0); }, INVALID, "ABCDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.InsertBuffer(0xFFFFFFFF, xy, 2); }, INVALID, "ABCDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.InsertBuffer(3, xy, 0); }, OK, "ABCDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.InsertUInt16(7, 1, LE); }, INVALID, "ABCDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.OverwriteBuffer(0, xy, 2); }, OK, "xyCDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.OverwriteBuffer(3, xy, 2); }, OK, "ABCxyF"},
        {__LINE__, [](MessageBuilder& b) { return b.OverwriteBuffer(4, xy, 2); }, OK, "ABCDxy"},
        {__LINE__, [](MessageBuilder& b) { return b.OverwriteBuffer(5, xy, 2); }, OK, "ABCDExy"},
        {__LINE__, [](MessageBuilder& b) { return b.OverwriteBuffer(6, xy, 2); }, OK, "ABCDEFxy"},
        {__LINE__, [](MessageBuilder& b) { return b.OverwriteBuffer(4, wxyz, 4); }, OK, "ABCDwxyz"}, // length - 2: +2
        {__LINE__, [](MessageBuilder& b) { return b.OverwriteBuffer(7, xy, 2); }, INVALID, "ABCDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.OverwriteBuffer(7, xy, 0); }, INVALID, "ABCDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.OverwriteBuffer(6, xy, 0); }, OK, "ABCDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.OverwriteUInt32(4, 0x7A797877, LE); }, OK, "ABCDwxyz"},
        {__LINE__, [](MessageBuilder& b) { return b.OverwriteUInt32(7, 0, LE); }, INVALID, "ABCDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.OverwriteUInt8(0xFFFFFFFF, 0); }, INVALID, "ABCDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.EraseBuffer(0, 2); }, OK, "CDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.EraseBuffer(2, 2); }, OK, "ABEF"},
        {__LINE__, [](MessageBuilder& b) { return b.EraseBuffer(4, 2); }, OK, "ABCD"},
        {__LINE__, [](MessageBuilder& b) { return b.EraseBuffer(0, 6); }, OK, ""},
        {__LINE__, [](MessageBuilder& b) { return b.EraseBuffer(6, 0); }, OK, "ABCDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.EraseBuffer(5, 2); }, INVALID, "ABCDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.EraseBuffer(0, 7); }, INVALID, "ABCDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.EraseBuffer(7, 0); }, INVALID, "ABCDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.EraseBuffer(1, 0xFFFFFFFF); }, INVALID, "ABCDEF"},
        {__LINE__, [](MessageBuilder& b) { return b.EraseBuffer(0xFFFFFFFF, 2); }, INVALID, "ABCDEF"},
    };
    for (const PositionRow& row : rows)
    {
        SCOPED_TRACE(testing::Message() << "row at line " << row.line);
        for (unsigned initialSize : {64u, 6u})
        {
            unsigned char storage[64];
            MessageBuilder builder(storage, initialSize);
            Fill(builder, Text("ABCDEF"));
            const Snapshot before(builder);
            EXPECT_EQ(row.status, row.operation(builder));
            EXPECT_EQ(Text(row.expected), Contents(builder));
            if (row.status != OK) {
                EXPECT_EQ(before, Snapshot(builder));
            }
        }
    }
}

// ---------------------------------------------------------------------------
// Growth.

TEST(MessageBuilderGrowth, FullTenByteBufferPlusOneByteMovesToSixteenByteHeapBlock)
{
    unsigned char storage[10];
    MessageBuilder builder(storage, sizeof storage);
    Fill(builder, Text("0123456789"));
    EXPECT_TRUE(builder.IsUsingInitialBuffer());
    EXPECT_EQ(10u, builder.GetCapacity());
    EXPECT_EQ(OK, builder.AppendUInt8('A'));
    EXPECT_FALSE(builder.IsUsingInitialBuffer());
    EXPECT_EQ(16u, builder.GetCapacity());
    EXPECT_EQ(Text("0123456789A"), Contents(builder));
    // Back to the initial buffer: only once the message fits it again.
    EXPECT_EQ(INVALID, builder.AdjustBufferSize(10));
    EXPECT_FALSE(builder.IsUsingInitialBuffer());
    EXPECT_EQ(OK, builder.EraseBuffer(0, 1));
    EXPECT_EQ(OK, builder.AdjustBufferSize(10));
    EXPECT_TRUE(builder.IsUsingInitialBuffer());
    EXPECT_EQ(storage, builder.GetBuffer());
    EXPECT_EQ(10u, builder.GetCapacity());
    EXPECT_EQ(Text("123456789A"), Contents(builder));
    // Full again: the next byte goes to a fresh heap block.
    EXPECT_EQ(OK, builder.AppendUInt8('B'));
    EXPECT_EQ(16u, builder.GetCapacity());
    EXPECT_EQ(Text("123456789AB"), Contents(builder));
}

TEST(MessageBuilderGrowth, AdjustBufferSizeBelowInitialSizeReturnsToInitialBuffer)
{
    unsigned char storage[32];
    MessageBuilder builder(storage, sizeof storage);
    Fill(builder, Text("abc"));
    EXPECT_EQ(OK, builder.AdjustBufferSize(100));
    EXPECT_FALSE(builder.IsUsingInitialBuffer());
    EXPECT_EQ(100u, builder.GetCapacity());
    EXPECT_EQ(OK, builder.AdjustBufferSize(3)); // at most the initial size: back
    EXPECT_TRUE(builder.IsUsingInitialBuffer());
    EXPECT_EQ(32u, builder.GetCapacity());
    EXPECT_EQ(Text("abc"), Contents(builder));
    EXPECT_EQ(OK, builder.AdjustBufferSize(0xFFFFu + 1)); // and out again, then down by realloc
    EXPECT_EQ(OK, builder.AdjustBufferSize(40));
    EXPECT_EQ(40u, builder.GetCapacity());
    EXPECT_EQ(Text("abc"), Contents(builder));
    // MaybeAdjustBufferSize also returns when length + extra fits the initial buffer.
    EXPECT_EQ(OK, builder.MaybeAdjustBufferSize(29));
    EXPECT_TRUE(builder.IsUsingInitialBuffer());
    EXPECT_EQ(Text("abc"), Contents(builder));
    // An empty builder with no initial buffer returns to no storage at all.
    MessageBuilder empty;
    EXPECT_EQ(OK, empty.AppendUInt32(1, LE));
    EXPECT_EQ(OK, empty.EraseBuffer(0, 4));
    EXPECT_EQ(OK, empty.AdjustBufferSize(0));
    EXPECT_EQ(0u, empty.GetCapacity());
    EXPECT_EQ(nullptr, empty.GetBuffer());
}

TEST(MessageBuilderGrowth, MaybeAdjustBufferSizeTargets)
{
    struct Row
    {
        int line;
        unsigned initialSize;
        unsigned heapCapacity; // 0: stay in the initial buffer
        unsigned length;
        unsigned extra;
        unsigned expectedCapacity;
        bool expectedInitial;
    };
    const Row rows[] = {
        {__LINE__, 10, 0, 10, 1, 16, false},     // 15 rounded up
        {__LINE__, 10, 0, 10, 20, 32, false},    // needed 30 beats 15, rounded up
        {__LINE__, 12, 0, 12, 1, 20, false},     // 18 rounded up
        {__LINE__, 12, 0, 12, 6, 20, false},     // needed 18 == 12 * 1.5, rounded up
        {__LINE__, 16, 0, 16, 8, 24, false},     // exact multiple of 4
        {__LINE__, 0, 0, 0, 1, 4, false},        // from nothing
        {__LINE__, 0, 0, 0, 8, 8, false},
        {__LINE__, 0, 0, 0, 9, 12, false},
        {__LINE__, 100, 0, 0, 50, 100, true},    // fits the initial size
        {__LINE__, 100, 0, 0, 100, 100, true},
        {__LINE__, 100, 0, 0, 101, 152, false},  // 150 rounded up
        {__LINE__, 10, 16, 11, 6, 24, false},    // heap 16 -> 24
        {__LINE__, 10, 101, 101, 1, 152, false}, // 151 rounded up
        {__LINE__, 10, 16, 5, 4, 10, true},      // needed 9 fits the initial size: back
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(testing::Message() << "row at line " << row.line);
        Bytes storage(row.initialSize + 1);
        MessageBuilder builder(row.initialSize ? storage.data() : nullptr, row.initialSize);
        if (row.heapCapacity != 0) {
            ASSERT_EQ(OK, builder.AdjustBufferSize(row.heapCapacity));
        }
        Fill(builder, Bytes(row.length, 0x5A));
        ASSERT_EQ(row.heapCapacity ? row.heapCapacity : row.initialSize, builder.GetCapacity());
        EXPECT_EQ(OK, builder.MaybeAdjustBufferSize(row.extra));
        EXPECT_EQ(row.expectedCapacity, builder.GetCapacity());
        EXPECT_EQ(row.expectedInitial, builder.IsUsingInitialBuffer());
        EXPECT_EQ(Bytes(row.length, 0x5A), Contents(builder));
    }
}

TEST(MessageBuilderGrowth, CapacitySequenceFromEmptyAndReallocationCountForOneMebibyte)
{
    // Half again each time, rounded up to a multiple of 4, never below what
    // is needed.
    const std::vector<unsigned> expected = {
        8, 16, 24, 36, 56, 84, 128, 192, 288, 432, 648, 972, 1460, 2192, 3288, 4932,
        7400, 11100, 16652, 24980, 37472, 56208, 84312, 126468, 189704, 284556, 426836,
        640256, 960384, 1440576};
    MessageBuilder builder;
    std::vector<unsigned> capacities;
    for (std::uint64_t i = 0; i < (1u << 20) / 8; ++i)
    {
        const unsigned before = builder.GetCapacity();
        ASSERT_EQ(OK, builder.AppendUInt64(i, LE));
        if (builder.GetCapacity() != before)
            capacities.push_back(builder.GetCapacity());
    }
    EXPECT_EQ(expected, capacities);
    EXPECT_LE(capacities.size(), 35u);
    ASSERT_EQ(1u << 20, builder.GetLength());
    for (std::uint64_t i = 0; i < (1u << 20) / 8; i += 4099)
    {
        std::uint64_t value;
        std::memcpy(&value, builder.GetBuffer() + 8 * i, 8);
        EXPECT_EQ(i, value);
    }
}

TEST(MessageBuilderGrowth, NonGrowableFourByteBufferTakesUnsignedIntThenRefusesSignedChar)
{
    unsigned char storage[4];
    MessageBuilder builder(storage, sizeof storage, false);
    EXPECT_EQ(OK, builder.AppendBuiltIn<unsigned int>(0x01020304));
    EXPECT_EQ(4u, builder.GetLength());
    EXPECT_EQ(OVERFLOW_, builder.AppendBuiltIn<signed char>(1));
    EXPECT_EQ(4u, builder.GetLength());
    EXPECT_EQ(4u, builder.GetCapacity());
    EXPECT_EQ((Bytes{0x04, 0x03, 0x02, 0x01}), Contents(builder));
    EXPECT_EQ(OVERFLOW_, builder.MaybeAdjustBufferSize(0));
    EXPECT_EQ(OK, builder.OverwriteUInt16(2, 0x0A0B, BE)); // inside: fine
    EXPECT_EQ((Bytes{0x04, 0x03, 0x0A, 0x0B}), Contents(builder));
}

// ---------------------------------------------------------------------------
// Failures leave everything as it was.

TEST(MessageBuilderFailures, EveryFailureLeavesTheBuilderUnchanged)
{
    static const unsigned char data[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    enum Kind { GROWABLE_INITIAL, GROWABLE_HEAP, FIXED_FULL };
    struct Row
    {
        int line;
        Kind kind;
        Operation operation;
        StatusCode status;
    };
    const std::vector<Row> rows = {
        // Bounds.
        {__LINE__, GROWABLE_INITIAL, [](MessageBuilder& b) { return b.InsertBuffer(9, data, 1); }, INVALID},
        {__LINE__, GROWABLE_HEAP, [](MessageBuilder& b) { return b.InsertUInt64(9, 1, BE); }, INVALID},
        {__LINE__, FIXED_FULL, [](MessageBuilder& b) { return b.OverwriteBuffer(9, data, 1); }, INVALID},
        {__LINE__, GROWABLE_HEAP, [](MessageBuilder& b) { return b.OverwriteInt32(9, 1, LE); }, INVALID},
        {__LINE__, GROWABLE_INITIAL, [](MessageBuilder& b) { return b.EraseBuffer(8, 1); }, INVALID},
        {__LINE__, FIXED_FULL, [](MessageBuilder& b) { return b.EraseBuffer(1, 8); }, INVALID},
        {__LINE__, GROWABLE_HEAP, [](MessageBuilder& b) { return b.AppendBuffer(nullptr, 1); }, INVALID},
        {__LINE__, GROWABLE_INITIAL, [](MessageBuilder& b) { return b.InsertBuffer(0, nullptr, 4); }, INVALID},
        {__LINE__, GROWABLE_HEAP, [](MessageBuilder& b) { return b.OverwriteBuffer(0, nullptr, 4); }, INVALID},
        {__LINE__, GROWABLE_HEAP, [](MessageBuilder& b) { return b.AdjustBufferSize(7); }, INVALID},
        {__LINE__, GROWABLE_INITIAL, [](MessageBuilder& b) { return b.AdjustBufferSize(0); }, INVALID},
        {__LINE__, GROWABLE_HEAP, [](MessageBuilder& b) { return b.AppendPrintf(nullptr); }, INVALID},
        // A full buffer that may not grow.
        {__LINE__, FIXED_FULL, [](MessageBuilder& b) { return b.AppendBuffer(data, 1); }, OVERFLOW_},
        {__LINE__, FIXED_FULL, [](MessageBuilder& b) { return b.AppendBuffer(data, 16, true); }, OVERFLOW_},
        {__LINE__, FIXED_FULL, [](MessageBuilder& b) { return b.InsertBuffer(0, data, 1); }, OVERFLOW_},
        {__LINE__, FIXED_FULL, [](MessageBuilder& b) { return b.InsertBuffer(4, data, 12); }, OVERFLOW_},
        {__LINE__, FIXED_FULL, [](MessageBuilder& b) { return b.OverwriteBuffer(7, data, 2); }, OVERFLOW_},
        {__LINE__, FIXED_FULL, [](MessageBuilder& b) { return b.OverwriteBuffer(8, data, 1); }, OVERFLOW_},
        {__LINE__, FIXED_FULL, [](MessageBuilder& b) { return b.AppendUInt8(1); }, OVERFLOW_},
        {__LINE__, FIXED_FULL, [](MessageBuilder& b) { return b.AppendInt64(1, BE); }, OVERFLOW_},
        {__LINE__, FIXED_FULL, [](MessageBuilder& b) { return b.InsertUInt16(3, 1, LE); }, OVERFLOW_},
        {__LINE__, FIXED_FULL, [](MessageBuilder& b) { return b.OverwriteUInt32(6, 1, BE); }, OVERFLOW_},
        {__LINE__, FIXED_FULL, [](MessageBuilder& b) { return b.AppendString("x"); }, OVERFLOW_},
        {__LINE__, FIXED_FULL, [](MessageBuilder& b) { return b.AppendPrintfString("%d", 1); }, OVERFLOW_},
        {__LINE__, FIXED_FULL, [](MessageBuilder& b) { return b.MaybeAdjustBufferSize(1); }, OVERFLOW_},
        {__LINE__, FIXED_FULL, [](MessageBuilder& b) { return b.AppendBuffer(data, 0xFFFFFFFF); }, OVERFLOW_},
        {__LINE__, FIXED_FULL, [](MessageBuilder& b) { return b.OverwriteBuffer(8, data, 0xFFFFFFFF); }, OVERFLOW_},
        // The message cannot pass 4 GiB: length + size overflowing 32 bits is
        // a failed allocation, not a wrapped length.
        {__LINE__, GROWABLE_INITIAL, [](MessageBuilder& b) { return b.AppendBuffer(data, 0xFFFFFFFF); }, HEAP_EMPTY},
        {__LINE__, GROWABLE_HEAP, [](MessageBuilder& b) { return b.AppendBuffer(data, 0xFFFFFFF8); }, HEAP_EMPTY},
        {__LINE__, GROWABLE_HEAP, [](MessageBuilder& b) { return b.InsertBuffer(0, data, 0xFFFFFFFC); }, HEAP_EMPTY},
        {__LINE__, GROWABLE_INITIAL, [](MessageBuilder& b) { return b.OverwriteBuffer(8, data, 0xFFFFFFFF); }, HEAP_EMPTY},
        {__LINE__, GROWABLE_HEAP, [](MessageBuilder& b) { return b.OverwriteBuffer(4, data, 0xFFFFFFFD); }, HEAP_EMPTY},
        {__LINE__, GROWABLE_HEAP, [](MessageBuilder& b) { return b.MaybeAdjustBufferSize(0xFFFFFFFF); }, HEAP_EMPTY},
        {__LINE__, GROWABLE_INITIAL, [](MessageBuilder& b) { return b.MaybeAdjustBufferSize(0xFFFFFFF5); }, HEAP_EMPTY},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(testing::Message() << "row at line " << row.line);
        unsigned char storage[16];
        MessageBuilder builder(storage, row.kind == FIXED_FULL ? 8u : 16u, row.kind != FIXED_FULL);
        if (row.kind == GROWABLE_HEAP) {
            ASSERT_EQ(OK, builder.AdjustBufferSize(40));
        }
        Fill(builder, Text("abcdefgh"));
        const Snapshot before(builder);
        EXPECT_EQ(row.status, row.operation(builder));
        EXPECT_EQ(before, Snapshot(builder));
    }
}

TEST(MessageBuilderFailures, HugeAdjustBufferSizeFailsWithHeapEmptyAndChangesNothing)
{
    unsigned char storage[8];
    MessageBuilder builder(storage, sizeof storage);
    Fill(builder, Text("abc"));
    const Snapshot before(builder);
    const StatusCode status = builder.AdjustBufferSize(0xFFFFFFF0);
    if (status == OK)
        GTEST_SKIP() << "the machine granted a 4 GiB block; see HeapEmptyUnderAnAddressSpaceLimit";
    EXPECT_EQ(HEAP_EMPTY, status);
    EXPECT_EQ(before, Snapshot(builder));
}

#if defined(__linux__) && !defined(ZANTOR_TEST_SANITIZED)
// Runs in a child process whose address space is capped just above what it
// uses, so every large allocation fails. Returns the number of the first
// failed check, 0 when all pass.
int CheckAllocationFailures()
{
    constexpr unsigned kMiB = 1u << 20;
    const std::string text(40 * kMiB, 't');
    unsigned char storage[16];
    MessageBuilder fromInitial(storage, sizeof storage);
    if (fromInitial.AppendBuffer("abc", 3) != OK)
        return 1;
    MessageBuilder onHeap;
    if (onHeap.AdjustBufferSize(32 * kMiB) != OK || onHeap.AppendBuffer("xyz", 3) != OK)
        return 2;

    unsigned long pages = 0;
    if (FILE* statm = std::fopen("/proc/self/statm", "r"))
    {
        if (std::fscanf(statm, "%lu", &pages) != 1)
            pages = 0;
        std::fclose(statm);
    }
    if (pages == 0)
        return 3;
    const rlimit limit{pages * 4096 + 8 * kMiB, pages * 4096 + 8 * kMiB};
    if (setrlimit(RLIMIT_AS, &limit) != 0)
        return 4;

    const Snapshot initialBefore(fromInitial);
    if (fromInitial.AppendBuffer(text.data(), 20 * kMiB) != HEAP_EMPTY || !(initialBefore == Snapshot(fromInitial)))
        return 5;
    if (fromInitial.AdjustBufferSize(64 * kMiB) != HEAP_EMPTY || !(initialBefore == Snapshot(fromInitial)))
        return 6;
    const Snapshot heapBefore(onHeap);
    if (onHeap.AppendBuffer(text.data(), 33 * kMiB) != HEAP_EMPTY || !(heapBefore == Snapshot(onHeap)))
        return 7;
    if (onHeap.MaybeAdjustBufferSize(32 * kMiB) != HEAP_EMPTY || !(heapBefore == Snapshot(onHeap)))
        return 8;
    if (onHeap.InsertBuffer(1, text.data(), 33 * kMiB) != HEAP_EMPTY || !(heapBefore == Snapshot(onHeap)))
        return 9;
    // Formatted text that needs more than the heap block: the growth to
    // 48 MiB fails, the length is unchanged.
    if (onHeap.AppendPrintf("%s", text.c_str()) != HEAP_EMPTY || onHeap.GetLength() != 3
        || Contents(onHeap) != Text("xyz"))
        return 10;
    // Small operations still work afterwards.
    if (onHeap.AppendUInt16(0x0102, BE) != OK || Contents(onHeap) != (Bytes{'x', 'y', 'z', 1, 2}))
        return 11;
    return 0;
}

TEST(MessageBuilderFailures, HeapEmptyUnderAnAddressSpaceLimit)
{
    EXPECT_EXIT(std::_Exit(CheckAllocationFailures()), testing::ExitedWithCode(0), "");
}
#else
TEST(MessageBuilderFailures, HeapEmptyUnderAnAddressSpaceLimit)
{
    GTEST_SKIP() << "needs Linux address-space limits without a sanitizer allocator";
}
#endif

// ---------------------------------------------------------------------------
// Formatted text.

TEST(MessageBuilderPrintf, AppendsWithoutTerminatingZero)
{
    unsigned char storage[64];
    MessageBuilder builder(storage, sizeof storage);
    Fill(builder, Text("<"));
    EXPECT_EQ(OK, builder.AppendPrintf("%s=%05d/%" PRIx64, "px", 42, std::uint64_t{0xABCDEF0123}));
    EXPECT_EQ(Text("<px=00042/abcdef0123"), Contents(builder));
    EXPECT_EQ(OK, builder.AppendPrintf("%s", ""));
    EXPECT_EQ(Text("<px=00042/abcdef0123"), Contents(builder));
    EXPECT_TRUE(builder.IsUsingInitialBuffer());
}

TEST(MessageBuilderPrintf, TextOfFreeMinusTwoFitsFreeMinusOneGrows)
{
    unsigned char storage[12];
    {
        MessageBuilder builder(storage, sizeof storage, false);
        Fill(builder, Text("ab"));                       // 10 bytes free
        EXPECT_EQ(OK, builder.AppendPrintf("%s", "12345678")); // free - 2
        EXPECT_TRUE(builder.IsUsingInitialBuffer());
        EXPECT_EQ(Text("ab12345678"), Contents(builder));
    }
    {
        MessageBuilder builder(storage, sizeof storage, false);
        Fill(builder, Text("ab"));
        EXPECT_EQ(OK, builder.AppendPrintf("%s", "123456789")); // free - 1
        EXPECT_FALSE(builder.IsUsingInitialBuffer());             // grew, though not growable
        EXPECT_EQ(64u, builder.GetCapacity());                    // 18 is below 65
        EXPECT_EQ(Text("ab123456789"), Contents(builder));
    }
}

TEST(MessageBuilderPrintf, NonGrowableBuilderStillGrowsForFormattedText)
{
    unsigned char storage[8];
    MessageBuilder builder(storage, sizeof storage, false);
    const std::string text(100, 'q');
    EXPECT_EQ(OK, builder.AppendPrintf("%s!", text.c_str()));
    EXPECT_EQ(Text(text + "!"), Contents(builder));
    EXPECT_EQ(144u, builder.GetCapacity()); // 8 -> 64 -> 96 -> 144
    // Other operations still respect the flag.
    const unsigned free = builder.GetCapacity() - builder.GetLength();
    EXPECT_EQ(OK, builder.AppendBuffer(text.data(), free));
    const Snapshot before(builder);
    EXPECT_EQ(OVERFLOW_, builder.AppendUInt8(1));
    EXPECT_EQ(before, Snapshot(builder));
}

TEST(MessageBuilderPrintf, SixteenGrowthRoundsThenBufferOverflowWithLengthUnchanged)
{
    // From 8 bytes: 64, 96, 144, ..., 18663, 27994 after 16 rounds. A text
    // of 27992 characters fits the last round; one more does not.
    for (bool growable : {false, true})
    {
        SCOPED_TRACE(growable ? "growable" : "not growable");
        unsigned char storage[8];
        MessageBuilder fits(storage, sizeof storage, growable);
        const std::string longest(27992, 'z');
        EXPECT_EQ(OK, fits.AppendPrintf("%s", longest.c_str()));
        EXPECT_EQ(27994u, fits.GetCapacity());
        EXPECT_EQ(27992u, fits.GetLength());

        MessageBuilder tooLong(storage, sizeof storage, growable);
        Fill(tooLong, Text("ab"));
        const std::string text(27991, 'z'); // 2 + 27991 + 1 > 27994 - 1
        EXPECT_EQ(OVERFLOW_, tooLong.AppendPrintf("%s", text.c_str()));
        EXPECT_EQ(Text("ab"), Contents(tooLong));
        EXPECT_EQ(27994u, tooLong.GetCapacity());
    }
    MessageBuilder empty; // from no storage at all: 0 -> 64 -> ... -> 27994
    const std::string huge(1u << 20, 'h');
    EXPECT_EQ(OVERFLOW_, empty.AppendPrintf("%s", huge.c_str()));
    EXPECT_EQ(0u, empty.GetLength());
    EXPECT_EQ(27994u, empty.GetCapacity());
}

TEST(MessageBuilderPrintf, AppendPrintfStringWritesLittleEndianLengthThenText)
{
    MessageBuilder builder;
    EXPECT_EQ(OK, builder.AppendPrintfString("%s", ""));
    EXPECT_EQ((Bytes{0x00, 0x00}), Contents(builder));
    EXPECT_EQ(OK, builder.AppendPrintfString("abc"));
    EXPECT_EQ((Bytes{0x00, 0x00, 0x03, 0x00, 'a', 'b', 'c'}), Contents(builder));
    EXPECT_EQ(OK, builder.AppendPrintfString("%d-%s", 7, "x"));
    EXPECT_EQ((Bytes{0x00, 0x00, 0x03, 0x00, 'a', 'b', 'c', 0x03, 0x00, '7', '-', 'x'}), Contents(builder));

    const std::string text300(300, 'm');
    MessageBuilder wide;
    EXPECT_EQ(OK, wide.AppendPrintfString("%s", text300.c_str()));
    ASSERT_EQ(302u, wide.GetLength());
    EXPECT_EQ(0x2C, wide.GetBuffer()[0]);
    EXPECT_EQ(0x01, wide.GetBuffer()[1]);
}

TEST(MessageBuilderPrintf, AppendPrintfStringLengthLimit)
{
    std::vector<unsigned char> storage(70000);
    const std::string longest(65535, 'L');
    MessageBuilder fits(storage.data(), static_cast<unsigned>(storage.size()), false);
    EXPECT_EQ(OK, fits.AppendPrintfString("%s", longest.c_str()));
    ASSERT_EQ(65537u, fits.GetLength());
    EXPECT_EQ(0xFF, fits.GetBuffer()[0]);
    EXPECT_EQ(0xFF, fits.GetBuffer()[1]);

    const std::string tooLong(65536, 'L');
    MessageBuilder refused(storage.data(), static_cast<unsigned>(storage.size()), false);
    Fill(refused, Text("h"));
    EXPECT_EQ(INVALID, refused.AppendPrintfString("%s", tooLong.c_str()));
    // No roll-back: the zero placeholder and the text stay.
    ASSERT_EQ(1u + 2u + 65536u, refused.GetLength());
    EXPECT_EQ('h', refused.GetBuffer()[0]);
    EXPECT_EQ(0x00, refused.GetBuffer()[1]);
    EXPECT_EQ(0x00, refused.GetBuffer()[2]);
    EXPECT_EQ('L', refused.GetBuffer()[3]);
    EXPECT_EQ('L', refused.GetBuffer()[refused.GetLength() - 1]);
}

TEST(MessageBuilderPrintf, AppendPrintfStringPlaceholderGrowsOrOverflows)
{
    unsigned char storage[5];
    MessageBuilder growable(storage, sizeof storage);
    Fill(growable, Text("abcd"));
    EXPECT_EQ(OK, growable.AppendPrintfString("%s", ""));
    EXPECT_EQ(8u, growable.GetCapacity()); // placeholder: 7.5 -> 8; the zero fits
    EXPECT_EQ((Bytes{'a', 'b', 'c', 'd', 0, 0}), Contents(growable));
    EXPECT_EQ(OK, growable.AppendPrintfString("z")); // 2 free: "z" + zero needs a round
    EXPECT_EQ(64u, growable.GetCapacity());
    EXPECT_EQ((Bytes{'a', 'b', 'c', 'd', 0, 0, 1, 0, 'z'}), Contents(growable));

    MessageBuilder fixed(storage, sizeof storage, false);
    Fill(fixed, Text("abcd"));
    const Snapshot before(fixed);
    EXPECT_EQ(OVERFLOW_, fixed.AppendPrintfString("z"));
    EXPECT_EQ(before, Snapshot(fixed));
}

// ---------------------------------------------------------------------------
// Sources inside the builder's own storage.

struct AliasRow
{
    int line;
    unsigned initialSize; // 0: start on the heap with exactly the message
    std::function<StatusCode(MessageBuilder&)> operation;
    std::string expected;
};

TEST(MessageBuilderAliasing, SourcesInsideTheBuilder)
{
    const std::vector<AliasRow> rows = {
        // Append, without growth and with growth from the initial buffer and on the heap.
        {__LINE__, 64, [](MessageBuilder& b) { return b.AppendBuffer(b.GetBuffer() + 1, 3); }, "ABCDEFGHBCD"},
        {__LINE__, 8, [](MessageBuilder& b) { return b.AppendBuffer(b.GetBuffer(), 8); }, "ABCDEFGHABCDEFGH"},
        {__LINE__, 0, [](MessageBuilder& b) { return b.AppendBuffer(b.GetBuffer(), 8); }, "ABCDEFGHABCDEFGH"},
        {__LINE__, 0, [](MessageBuilder& b) { return b.AppendBuffer(b.GetBuffer() + 4, 4, true); }, "ABCDEFGHHGFE"},
        {__LINE__, 64, [](MessageBuilder& b) { return b.AppendBuffer(b.GetBuffer(), 8, true); }, "ABCDEFGHHGFEDCBA"},
        // Insert: source before, after and across the insertion point.
        {__LINE__, 64, [](MessageBuilder& b) { return b.InsertBuffer(4, b.GetBuffer(), 2); }, "ABCDABEFGH"},
        {__LINE__, 64, [](MessageBuilder& b) { return b.InsertBuffer(1, b.GetBuffer() + 5, 3); }, "AFGHBCDEFGH"},
        {__LINE__, 64, [](MessageBuilder& b) { return b.InsertBuffer(3, b.GetBuffer() + 1, 4); }, "ABCBCDEDEFGH"},
        {__LINE__, 64, [](MessageBuilder& b) { return b.InsertBuffer(3, b.GetBuffer() + 1, 4, true); }, "ABCEDCBDEFGH"},
        {__LINE__, 8, [](MessageBuilder& b) { return b.InsertBuffer(3, b.GetBuffer() + 1, 4); }, "ABCBCDEDEFGH"},
        {__LINE__, 0, [](MessageBuilder& b) { return b.InsertBuffer(0, b.GetBuffer() + 4, 4); }, "EFGHABCDEFGH"},
        {__LINE__, 0, [](MessageBuilder& b) { return b.InsertBuffer(8, b.GetBuffer(), 8, true); }, "ABCDEFGHHGFEDCBA"},
        {__LINE__, 0, [](MessageBuilder& b) { return b.InsertBuffer(2, b.GetBuffer(), 8); }, "ABABCDEFGHCDEFGH"},
        // Overwrite: overlapping forward and backward, in place reversed, extending.
        {__LINE__, 64, [](MessageBuilder& b) { return b.OverwriteBuffer(1, b.GetBuffer(), 4); }, "AABCDFGH"},
        {__LINE__, 64, [](MessageBuilder& b) { return b.OverwriteBuffer(0, b.GetBuffer() + 2, 4); }, "CDEFEFGH"},
        {__LINE__, 64, [](MessageBuilder& b) { return b.OverwriteBuffer(0, b.GetBuffer(), 8, true); }, "HGFEDCBA"},
        {__LINE__, 64, [](MessageBuilder& b) { return b.OverwriteBuffer(2, b.GetBuffer() + 1, 3, true); }, "ABDCBFGH"},
        {__LINE__, 64, [](MessageBuilder& b) { return b.OverwriteBuffer(6, b.GetBuffer(), 4); }, "ABCDEFABCD"},
        {__LINE__, 8, [](MessageBuilder& b) { return b.OverwriteBuffer(6, b.GetBuffer(), 4); }, "ABCDEFABCD"},
        {__LINE__, 0, [](MessageBuilder& b) { return b.OverwriteBuffer(6, b.GetBuffer(), 8, true); }, "ABCDEFHGFEDCBA"},
        // Formatted text reading the builder's own bytes while it grows.
        {__LINE__, 0, [](MessageBuilder& b) { return b.AppendPrintf("<%.*s>", 8, reinterpret_cast<const char*>(b.GetBuffer())); },
         "ABCDEFGH<ABCDEFGH>"},
        {__LINE__, 8, [](MessageBuilder& b) { return b.AppendPrintf("<%.*s>", 8, reinterpret_cast<const char*>(b.GetBuffer())); },
         "ABCDEFGH<ABCDEFGH>"},
        {__LINE__, 0, [](MessageBuilder& b) { return b.AppendPrintfString("%.*s", 3, reinterpret_cast<const char*>(b.GetBuffer())); },
         "ABCDEFGH\x03\x00" "ABC"s},
    };
    for (const AliasRow& row : rows)
    {
        SCOPED_TRACE(testing::Message() << "row at line " << row.line);
        unsigned char storage[64];
        std::fill(std::begin(storage), std::end(storage), '?');
        MessageBuilder builder(row.initialSize ? storage : nullptr, row.initialSize);
        if (row.initialSize == 0) {
            ASSERT_EQ(OK, builder.AdjustBufferSize(8)); // a heap block holding exactly the message
        }
        Fill(builder, Text("ABCDEFGH"));
        EXPECT_EQ(OK, row.operation(builder));
        EXPECT_EQ(Text(row.expected), Contents(builder));
    }
}

// ---------------------------------------------------------------------------
// Randomized: every operation applied to the builder and to a byte vector
// with the same growth rules; bytes, statuses and storage compared each step.

class Model
{
public:
    Model(unsigned initialSize, bool growable)
        : initialSize_(initialSize), growable_(growable), capacity_(initialSize)
    {
    }

    StatusCode Reserve(std::uint64_t needed) // as MaybeAdjustBufferSize(needed - length)
    {
        if (!growable_)
            return OVERFLOW_;
        if (needed <= initialSize_)
            return Adjust(initialSize_);
        std::uint64_t size = std::max<std::uint64_t>(needed, capacity_ + capacity_ / 2);
        return Adjust(static_cast<unsigned>((size + 3) / 4 * 4));
    }
    StatusCode Adjust(unsigned size)
    {
        if (size < bytes.size())
            return INVALID;
        onInitial_ = size <= initialSize_;
        capacity_ = onInitial_ ? initialSize_ : size;
        return OK;
    }
    StatusCode Insert(unsigned position, Bytes data, bool reverse)
    {
        if (position > bytes.size())
            return INVALID;
        if (data.empty())
            return OK;
        if (bytes.size() + data.size() > capacity_)
            if (StatusCode status = Reserve(bytes.size() + data.size()); status != OK)
                return status;
        if (reverse)
            std::reverse(data.begin(), data.end());
        bytes.insert(bytes.begin() + position, data.begin(), data.end());
        return OK;
    }
    StatusCode Overwrite(unsigned position, Bytes data, bool reverse)
    {
        if (position > bytes.size())
            return INVALID;
        if (data.empty())
            return OK;
        const std::size_t end = position + data.size();
        if (end > capacity_)
            if (StatusCode status = Reserve(end); status != OK)
                return status;
        if (reverse)
            std::reverse(data.begin(), data.end());
        bytes.resize(std::max(bytes.size(), end));
        std::copy(data.begin(), data.end(), bytes.begin() + position);
        return OK;
    }
    StatusCode Erase(unsigned position, unsigned size)
    {
        if (std::uint64_t{position} + size > bytes.size())
            return INVALID;
        bytes.erase(bytes.begin() + position, bytes.begin() + position + size);
        return OK;
    }
    StatusCode Printf(const std::string& text)
    {
        for (unsigned round = 0;; ++round)
        {
            const std::size_t free = capacity_ - bytes.size();
            if (free != 0 && text.size() < free - 1)
            {
                bytes.insert(bytes.end(), text.begin(), text.end());
                return OK;
            }
            if (round == 16)
                return OVERFLOW_;
            unsigned size = capacity_ + capacity_ / 2;
            if (size < 65)
                size = 64;
            Adjust(size);
        }
    }
    StatusCode PrintfString(const std::string& text)
    {
        if (capacity_ - bytes.size() < 2)
            if (StatusCode status = Reserve(bytes.size() + 2); status != OK)
                return status;
        const std::size_t start = bytes.size();
        bytes.push_back(0);
        bytes.push_back(0);
        if (StatusCode status = Printf(text); status != OK)
            return status;
        bytes[start] = static_cast<unsigned char>(text.size());
        bytes[start + 1] = static_cast<unsigned char>(text.size() >> 8);
        return OK;
    }

    Bytes bytes;
    unsigned capacity() const { return capacity_; }
    bool onInitial() const { return onInitial_; }

private:
    unsigned initialSize_;
    bool growable_;
    unsigned capacity_;
    bool onInitial_ = true;
};

template <typename T>
Bytes Encode(T value, bool big)
{
    Bytes bytes(sizeof(T));
    for (std::size_t i = 0; i < sizeof(T); ++i)
        bytes[big ? sizeof(T) - 1 - i : i] = static_cast<unsigned char>(static_cast<std::uint64_t>(value) >> (8 * i));
    return bytes;
}

TEST(MessageBuilderRandomized, MatchesAByteVectorModel)
{
    constexpr unsigned kBuilders = 40;
    constexpr unsigned kSteps = 400;
    std::mt19937 random(20240601);
    auto below = [&](unsigned n) { return n == 0 ? 0u : static_cast<unsigned>(random() % n); };
    unsigned checkedSteps = 0;
    unsigned invalid = 0, overflow = 0, aliased = 0;

    for (unsigned b = 0; b < kBuilders; ++b)
    {
        const unsigned initialSize = below(4) == 0 ? 0 : below(48);
        const bool growable = below(5) != 0;
        Bytes storage(64, 0xCC);
        MessageBuilder builder(initialSize ? storage.data() : nullptr, initialSize, growable);
        Model model(initialSize, growable);

        for (unsigned step = 0; step < kSteps; ++step)
        {
            const unsigned length = builder.GetLength();
            // The data: fresh bytes, or a range of the builder's own message.
            const unsigned size = below(4) == 0 ? below(40) : below(10);
            const bool internal = length != 0 && below(3) == 0;
            const unsigned from = internal ? below(length) : 0;
            const unsigned dataSize = internal ? std::min(size, length - from) : size;
            Bytes fresh(dataSize);
            for (auto& byte : fresh)
                byte = static_cast<unsigned char>(random());
            const unsigned char* data = internal ? builder.GetBuffer() + from : fresh.data();
            const Bytes copy = internal ? Bytes(model.bytes.begin() + from, model.bytes.begin() + from + dataSize) : fresh;
            const bool reverse = below(2) == 0;
            const unsigned position = below(length + 3); // sometimes past the end
            const std::uint64_t value = (std::uint64_t{random()} << 32) | random();
            const auto endian = static_cast<MessageHandler::Endian>(below(3));
            const bool big = endian != LE;

            StatusCode expected = OK;
            StatusCode actual = OK;
            std::string what;
            switch (below(17))
            {
            case 0:
                what = "AppendBuffer";
                expected = model.Insert(static_cast<unsigned>(model.bytes.size()), copy, reverse);
                actual = builder.AppendBuffer(data, dataSize, reverse);
                break;
            case 1:
            case 2:
                what = "InsertBuffer";
                expected = model.Insert(position, copy, reverse);
                actual = builder.InsertBuffer(position, data, dataSize, reverse);
                break;
            case 3:
            case 4:
                what = "OverwriteBuffer";
                expected = model.Overwrite(position, copy, reverse);
                actual = builder.OverwriteBuffer(position, data, dataSize, reverse);
                break;
            case 5:
            {
                what = "EraseBuffer";
                const unsigned eraseSize = below(8);
                expected = model.Erase(position, eraseSize);
                actual = builder.EraseBuffer(position, eraseSize);
                break;
            }
            case 6:
                what = "AppendUInt16";
                expected = model.Insert(length, Encode(static_cast<std::uint16_t>(value), big), false);
                actual = builder.AppendUInt16(static_cast<std::uint16_t>(value), endian);
                break;
            case 7:
                what = "AppendInt32";
                expected = model.Insert(length, Encode(static_cast<std::int32_t>(value), big), false);
                actual = builder.AppendInt32(static_cast<std::int32_t>(value), endian);
                break;
            case 8:
                what = "AppendUInt64";
                expected = model.Insert(length, Encode(value, big), false);
                actual = builder.AppendUInt64(value, endian);
                break;
            case 9:
                what = "AppendInt8";
                expected = model.Insert(length, Encode(static_cast<std::int8_t>(value), false), false);
                actual = builder.AppendInt8(static_cast<std::int8_t>(value));
                break;
            case 10:
                what = "InsertInt64";
                expected = model.Insert(position, Encode(static_cast<std::int64_t>(value), big), false);
                actual = builder.InsertInt64(position, static_cast<std::int64_t>(value), endian);
                break;
            case 11:
                what = "OverwriteUInt32";
                expected = model.Overwrite(position, Encode(static_cast<std::uint32_t>(value), big), false);
                actual = builder.OverwriteUInt32(position, static_cast<std::uint32_t>(value), endian);
                break;
            case 12:
                what = "OverwriteInt16";
                expected = model.Overwrite(position, Encode(static_cast<std::int16_t>(value), big), false);
                actual = builder.OverwriteInt16(position, static_cast<std::int16_t>(value), endian);
                break;
            case 13:
            {
                what = "AdjustBufferSize";
                const unsigned target = below(3) == 0 ? length + below(4) : below(length + 80);
                expected = model.Adjust(target);
                actual = builder.AdjustBufferSize(target);
                break;
            }
            case 14:
            {
                what = "MaybeAdjustBufferSize";
                const unsigned extra = below(30);
                expected = model.Reserve(std::uint64_t{length} + extra);
                actual = builder.MaybeAdjustBufferSize(extra);
                break;
            }
            case 15:
            {
                what = "AppendPrintf";
                const std::string text(below(90), static_cast<char>('a' + below(26)));
                expected = model.Printf(text);
                actual = builder.AppendPrintf("%s", text.c_str());
                break;
            }
            default:
            {
                what = "AppendPrintfString";
                const std::string text(below(90), static_cast<char>('A' + below(26)));
                expected = model.PrintfString(text);
                actual = builder.AppendPrintfString("%s", text.c_str());
                break;
            }
            }
            ASSERT_EQ(expected, actual) << what << " at builder " << b << " step " << step;
            ASSERT_EQ(model.bytes, Contents(builder)) << what << " at builder " << b << " step " << step;
            ASSERT_EQ(model.capacity(), builder.GetCapacity()) << what << " at builder " << b << " step " << step;
            ASSERT_EQ(model.onInitial(), builder.IsUsingInitialBuffer()) << what << " at builder " << b << " step " << step;
            ++checkedSteps;
            invalid += actual == INVALID;
            overflow += actual == OVERFLOW_;
            aliased += internal && dataSize != 0;
        }
    }
    EXPECT_EQ(kBuilders * kSteps, checkedSteps);
    // The mix reaches the failure and aliasing paths often.
    EXPECT_GT(invalid, kBuilders * kSteps / 50);
    EXPECT_GT(overflow, kBuilders * kSteps / 200);
    EXPECT_GT(aliased, kBuilders * kSteps / 20);
}

} // namespace
