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
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <tuple>
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
auto Snapshot(const MessageBuilder& b)
{
    return std::tuple(Contents(b), b.GetCapacity(), b.GetBuffer(), b.IsUsingInitialBuffer());
}

enum class Side : std::uint16_t { Bid = 0x0102, Ask = 0xA1A2 };

// An operation under test, written as the call on the builder b.
using Operation = std::function<StatusCode(MessageBuilder&)>;
#define OP(...) [&](MessageBuilder& b) { return b.__VA_ARGS__; }

constexpr unsigned NO_BUFFER = ~0u;

// A builder over initialSize bytes of storage (none at all for NO_BUFFER),
// moved to a heap block of `heap` bytes when that is not 0, holding start.
struct Built
{
    Built(unsigned initialSize, bool growable, const Bytes& start, unsigned heap = 0)
        : storage(initialSize == NO_BUFFER ? 1 : initialSize + 1, '?'),
          initial(initialSize == NO_BUFFER ? nullptr : storage.data()),
          builder(initial, initialSize == NO_BUFFER ? 0 : initialSize, growable)
    {
        if (heap != 0) {
            EXPECT_EQ(OK, builder.AdjustBufferSize(heap));
        }
        EXPECT_EQ(OK, builder.AppendBuffer(start.data(), static_cast<unsigned>(start.size())));
    }
    Bytes storage;
    unsigned char* initial;
    MessageBuilder builder;
};

// Applies the operation: on success the message must be expected, on
// failure nothing may change.
void Expect(MessageBuilder& builder, const Operation& operation, StatusCode status, const Bytes& expected = {})
{
    const auto before = Snapshot(builder);
    EXPECT_EQ(status, operation(builder));
    if (status == OK)
        EXPECT_EQ(expected, Contents(builder));
    else
        EXPECT_EQ(before, Snapshot(builder));
}

// The message, the capacity and whether the initial buffer (or, with none,
// no storage at all) holds it.
void ExpectState(const Built& built, const std::string& message, unsigned capacity, bool onInitial)
{
    EXPECT_EQ(Text(message), Contents(built.builder));
    EXPECT_EQ(capacity, built.builder.GetCapacity());
    EXPECT_EQ(onInitial, built.builder.IsUsingInitialBuffer());
    if (onInitial) {
        EXPECT_EQ(built.initial, built.builder.GetBuffer());
    }
}

// Operations applied one after another to one builder, each checked.
struct Step { int line; Operation operation; StatusCode status; std::string message; unsigned capacity; bool onInitial; };

void RunSteps(Built& built, const std::vector<Step>& steps)
{
    for (const Step& step : steps)
    {
        SCOPED_TRACE(testing::Message() << "step at line " << step.line);
        EXPECT_EQ(step.status, step.operation(built.builder));
        ExpectState(built, step.message, step.capacity, step.onInitial);
    }
}

// ---------------------------------------------------------------------------
// Typed forms: exact bytes in both orders, through the inline fast paths and
// through the out-of-line paths that grow.

struct TypedRow { int line; Bytes start; Operation operation; Bytes expected; StatusCode status = OK; }; // failures: unchanged

const std::vector<TypedRow>& TypedRows()
{
    static const Bytes e8(8, 0xEE), six = Text("ABCDEF"), letters = Text("ABCDEFGH");
    static const unsigned char xy[] = {'x', 'y'}, wxyz[] = {'w', 'x', 'y', 'z'};
    static const unsigned char n12[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    static const std::vector<TypedRow> rows = {
        // Appends.
        {__LINE__, {}, OP(AppendUInt8(0xAB)), {0xAB}},
        {__LINE__, {}, OP(AppendUInt8(0xAB, BE)), {0xAB}},
        {__LINE__, {}, OP(AppendInt8(-2)), {0xFE}},
        {__LINE__, {}, OP(AppendInt8(-128, BE)), {0x80}},
        {__LINE__, {}, OP(AppendUInt16(0x0102, LE)), {0x02, 0x01}},
        {__LINE__, {}, OP(AppendUInt16(0x0102, BE)), {0x01, 0x02}},
        {__LINE__, {}, OP(AppendUInt16(0xFFFE, BE)), {0xFF, 0xFE}},
        {__LINE__, {}, OP(AppendInt16(-2, LE)), {0xFE, 0xFF}},
        {__LINE__, {}, OP(AppendInt16(-2, BE)), {0xFF, 0xFE}},
        {__LINE__, {}, OP(AppendInt16(INT16_MIN, BE)), {0x80, 0x00}},
        {__LINE__, {}, OP(AppendUInt32(0x01020304, BE)), {0x01, 0x02, 0x03, 0x04}},
        {__LINE__, {}, OP(AppendUInt32(0x01020304, LE)), {0x04, 0x03, 0x02, 0x01}},
        {__LINE__, {}, OP(AppendUInt32(0xA0B0C0D0, BE)), {0xA0, 0xB0, 0xC0, 0xD0}},
        {__LINE__, {}, OP(AppendInt32(-2, LE)), {0xFE, 0xFF, 0xFF, 0xFF}},
        {__LINE__, {}, OP(AppendInt32(-2, BE)), {0xFF, 0xFF, 0xFF, 0xFE}},
        {__LINE__, {}, OP(AppendInt32(-0x01020304, BE)), {0xFE, 0xFD, 0xFC, 0xFC}},
        {__LINE__, {}, OP(AppendInt32(-0x01020304, LE)), {0xFC, 0xFC, 0xFD, 0xFE}},
        {__LINE__, {}, OP(AppendUInt64(0x0102030405060708, LE)), {0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01}},
        {__LINE__, {}, OP(AppendUInt64(0x0102030405060708, BE)), {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08}},
        {__LINE__, {}, OP(AppendInt64(-2, LE)), {0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {__LINE__, {}, OP(AppendInt64(-2, BE)), {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}},
        {__LINE__, {}, OP(AppendInt64(INT64_MIN, LE)), {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80}},
        {__LINE__, {}, OP(AppendInt64(-0x0102030405060708, BE)), {0xFE, 0xFD, 0xFC, 0xFB, 0xFA, 0xF9, 0xF8, 0xF8}},
        // Any non-zero byte order is big-endian.
        {__LINE__, {}, OP(AppendUInt16(0x0102, static_cast<MessageHandler::Endian>(2))), {0x01, 0x02}},
        {__LINE__, {}, OP(AppendUInt32(0x01020304, static_cast<MessageHandler::Endian>(0xFF))), {0x01, 0x02, 0x03, 0x04}},
        // The machine-order templates of the four widths.
        {__LINE__, {}, OP(AppendBuiltIn<signed char>(-1)), {0xFF}},
        {__LINE__, {}, OP(AppendBuiltIn<short>(0x1234)), {0x34, 0x12}},
        {__LINE__, {}, OP(AppendBuiltIn<unsigned int>(0xA1B2C3D4)), {0xD4, 0xC3, 0xB2, 0xA1}},
        {__LINE__, {}, OP(AppendBuiltIn<std::int64_t>(0x1122334455667788)), {0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11}},
        // Several integers under one bounds check, each in the given order.
        {__LINE__, {}, OP(AppendBuiltIns(BE, std::uint8_t{0x51}, std::uint16_t{0x0102}, std::uint32_t{0x03040506}, std::int64_t{-2})),
         {0x51, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}},
        {__LINE__, {}, OP(AppendBuiltIns(LE, std::uint8_t{0x51}, std::uint16_t{0x0102}, std::uint32_t{0x03040506}, std::int64_t{-2})),
         {0x51, 0x02, 0x01, 0x06, 0x05, 0x04, 0x03, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {__LINE__, {}, OP(AppendBuiltIns(BE, true, Side::Ask, std::int8_t{-4})), {0x01, 0xA1, 0xA2, 0xFC}},
        {__LINE__, {0x7F}, OP(AppendBuiltIns(BE, std::int16_t{-2})), {0x7F, 0xFF, 0xFE}},
        // Appends after existing bytes.
        {__LINE__, {0xEE, 0xEE, 0xEE}, OP(AppendUInt32(0x01020304, BE)), {0xEE, 0xEE, 0xEE, 0x01, 0x02, 0x03, 0x04}},
        {__LINE__, {0xEE}, OP(AppendInt16(-3, LE)), {0xEE, 0xFD, 0xFF}},
        // Inserts in the middle, at the start and at the end.
        {__LINE__, {'x', 'y'}, OP(InsertUInt8(1, 0x80)), {'x', 0x80, 'y'}},
        {__LINE__, {'x', 'y'}, OP(InsertInt8(0, -1)), {0xFF, 'x', 'y'}},
        {__LINE__, {'x', 'y'}, OP(InsertUInt16(1, 0x0102, LE)), {'x', 0x02, 0x01, 'y'}},
        {__LINE__, {'x', 'y'}, OP(InsertUInt16(1, 0x0102, BE)), {'x', 0x01, 0x02, 'y'}},
        {__LINE__, {'x', 'y'}, OP(InsertInt16(2, -2, BE)), {'x', 'y', 0xFF, 0xFE}},
        {__LINE__, {'x', 'y'}, OP(InsertInt16(0, -2, LE)), {0xFE, 0xFF, 'x', 'y'}},
        {__LINE__, {'x', 'y'}, OP(InsertUInt32(1, 0x01020304, BE)), {'x', 0x01, 0x02, 0x03, 0x04, 'y'}},
        {__LINE__, {'x', 'y'}, OP(InsertUInt32(1, 0x01020304, LE)), {'x', 0x04, 0x03, 0x02, 0x01, 'y'}},
        {__LINE__, {'x', 'y'}, OP(InsertInt32(0, -2, BE)), {0xFF, 0xFF, 0xFF, 0xFE, 'x', 'y'}},
        {__LINE__, {'x', 'y'}, OP(InsertInt32(2, -2, LE)), {'x', 'y', 0xFE, 0xFF, 0xFF, 0xFF}},
        {__LINE__, {'x', 'y'}, OP(InsertUInt64(1, 0x0102030405060708, BE)), {'x', 1, 2, 3, 4, 5, 6, 7, 8, 'y'}},
        {__LINE__, {'x', 'y'}, OP(InsertUInt64(1, 0x0102030405060708, LE)), {'x', 8, 7, 6, 5, 4, 3, 2, 1, 'y'}},
        {__LINE__, {'x', 'y'}, OP(InsertInt64(0, -2, BE)), {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 'x', 'y'}},
        {__LINE__, {'x', 'y'}, OP(InsertInt64(2, -2, LE)), {'x', 'y', 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {__LINE__, {'x', 'y'}, OP(InsertBuiltIn<unsigned int>(1, 0xA1B2C3D4)), {'x', 0xD4, 0xC3, 0xB2, 0xA1, 'y'}},
        // Overwrites inside the message, then overwrites that reach past the
        // end and extend it.
        {__LINE__, e8, OP(OverwriteUInt8(7, 0x01)), {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0x01}},
        {__LINE__, e8, OP(OverwriteInt8(0, -128)), {0x80, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}},
        {__LINE__, e8, OP(OverwriteUInt16(2, 0x0102, BE)), {0xEE, 0xEE, 0x01, 0x02, 0xEE, 0xEE, 0xEE, 0xEE}},
        {__LINE__, e8, OP(OverwriteUInt16(2, 0x0102, LE)), {0xEE, 0xEE, 0x02, 0x01, 0xEE, 0xEE, 0xEE, 0xEE}},
        {__LINE__, e8, OP(OverwriteInt16(6, -2, BE)), {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xFF, 0xFE}},
        {__LINE__, e8, OP(OverwriteUInt32(1, 0x01020304, BE)), {0xEE, 0x01, 0x02, 0x03, 0x04, 0xEE, 0xEE, 0xEE}},
        {__LINE__, e8, OP(OverwriteUInt32(4, 0x01020304, LE)), {0xEE, 0xEE, 0xEE, 0xEE, 0x04, 0x03, 0x02, 0x01}},
        {__LINE__, e8, OP(OverwriteInt32(0, -2, LE)), {0xFE, 0xFF, 0xFF, 0xFF, 0xEE, 0xEE, 0xEE, 0xEE}},
        {__LINE__, e8, OP(OverwriteInt32(0, -2, BE)), {0xFF, 0xFF, 0xFF, 0xFE, 0xEE, 0xEE, 0xEE, 0xEE}},
        {__LINE__, e8, OP(OverwriteUInt64(0, 0x0102030405060708, BE)), {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08}},
        {__LINE__, e8, OP(OverwriteUInt64(0, 0x0102030405060708, LE)), {0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01}},
        {__LINE__, e8, OP(OverwriteInt64(0, -2, BE)), {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}},
        {__LINE__, e8, OP(OverwriteBuiltIn<short>(3, 0x1234)), {0xEE, 0xEE, 0xEE, 0x34, 0x12, 0xEE, 0xEE, 0xEE}},
        {__LINE__, {0xEE, 0xEE, 0xEE}, OP(OverwriteUInt32(1, 0x01020304, BE)), {0xEE, 0x01, 0x02, 0x03, 0x04}},
        {__LINE__, {0xEE, 0xEE, 0xEE}, OP(OverwriteInt64(3, -2, LE)), {0xEE, 0xEE, 0xEE, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {__LINE__, {0xEE, 0xEE, 0xEE}, OP(OverwriteUInt16(2, 0x0102, LE)), {0xEE, 0xEE, 0x02, 0x01}},
        {__LINE__, {}, OP(OverwriteUInt8(0, 0x7F)), {0x7F}},
        // Raw bytes, forward and reversed, below and above the block-copy size.
        {__LINE__, {0xEE}, OP(AppendBuffer(n12, 3, true)), {0xEE, 3, 2, 1}},
        {__LINE__, {}, OP(AppendBuffer(n12, 9)), {1, 2, 3, 4, 5, 6, 7, 8, 9}},
        {__LINE__, {}, OP(AppendBuffer(n12, 12)), {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
        {__LINE__, {}, OP(AppendBuffer(n12, 12, true)), {12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1}},
        {__LINE__, {'a', 'b'}, OP(InsertBuffer(1, n12, 3, true)), {'a', 3, 2, 1, 'b'}},
        {__LINE__, {'a', 'b', 'c'}, OP(OverwriteBuffer(1, n12, 3, true)), {'a', 3, 2, 1}},
        {__LINE__, {'a'}, OP(AppendString("bcd")), {'a', 'b', 'c', 'd'}},
        {__LINE__, {'a', 'd'}, OP(InsertString(1, "bc")), {'a', 'b', 'c', 'd'}},
        {__LINE__, {'a', 'x', 'y'}, OP(OverwriteString(1, "bcd")), {'a', 'b', 'c', 'd'}},
        // Positions: start, middle, end, one past the end.
        {__LINE__, six, OP(InsertBuffer(0, xy, 2)), Text("xyABCDEF")},
        {__LINE__, six, OP(InsertBuffer(3, xy, 2)), Text("ABCxyDEF")},
        {__LINE__, six, OP(InsertBuffer(5, xy, 2)), Text("ABCDExyF")},
        {__LINE__, six, OP(InsertBuffer(6, xy, 2)), Text("ABCDEFxy")},
        {__LINE__, six, OP(InsertBuffer(7, xy, 2)), {}, INVALID},
        {__LINE__, six, OP(InsertBuffer(7, xy, 0)), {}, INVALID},
        {__LINE__, six, OP(InsertBuffer(0xFFFFFFFF, xy, 2)), {}, INVALID},
        {__LINE__, six, OP(InsertBuffer(3, xy, 0)), Text("ABCDEF")},
        {__LINE__, six, OP(InsertUInt16(7, 1, LE)), {}, INVALID},
        {__LINE__, six, OP(OverwriteBuffer(0, xy, 2)), Text("xyCDEF")},
        {__LINE__, six, OP(OverwriteBuffer(3, xy, 2)), Text("ABCxyF")},
        {__LINE__, six, OP(OverwriteBuffer(4, xy, 2)), Text("ABCDxy")},
        {__LINE__, six, OP(OverwriteBuffer(5, xy, 2)), Text("ABCDExy")},
        {__LINE__, six, OP(OverwriteBuffer(6, xy, 2)), Text("ABCDEFxy")},
        {__LINE__, six, OP(OverwriteBuffer(4, wxyz, 4)), Text("ABCDwxyz")}, // length - 2: +2
        {__LINE__, six, OP(OverwriteBuffer(7, xy, 2)), {}, INVALID},
        {__LINE__, six, OP(OverwriteBuffer(7, xy, 0)), {}, INVALID},
        {__LINE__, six, OP(OverwriteBuffer(6, xy, 0)), Text("ABCDEF")},
        {__LINE__, six, OP(OverwriteUInt32(4, 0x7A797877, LE)), Text("ABCDwxyz")},
        {__LINE__, six, OP(OverwriteUInt32(7, 0, LE)), {}, INVALID},
        {__LINE__, six, OP(OverwriteUInt8(0xFFFFFFFF, 0)), {}, INVALID},
        {__LINE__, six, OP(EraseBuffer(0, 2)), Text("CDEF")},
        {__LINE__, six, OP(EraseBuffer(2, 2)), Text("ABEF")},
        {__LINE__, six, OP(EraseBuffer(4, 2)), Text("ABCD")},
        {__LINE__, six, OP(EraseBuffer(0, 6)), Text("")},
        {__LINE__, six, OP(EraseBuffer(6, 0)), Text("ABCDEF")},
        {__LINE__, six, OP(EraseBuffer(5, 2)), {}, INVALID},
        {__LINE__, six, OP(EraseBuffer(0, 7)), {}, INVALID},
        {__LINE__, six, OP(EraseBuffer(7, 0)), {}, INVALID},
        {__LINE__, six, OP(EraseBuffer(1, 0xFFFFFFFF)), {}, INVALID},
        {__LINE__, six, OP(EraseBuffer(0xFFFFFFFF, 2)), {}, INVALID},
        // Sources inside the builder's own storage: the tight builder is an
        // initial buffer of exactly the message, the one with none a heap block
        // of exactly the message. Append:
        {__LINE__, letters, OP(AppendBuffer(b.GetBuffer() + 1, 3)), Text("ABCDEFGHBCD")},
        {__LINE__, letters, OP(AppendBuffer(b.GetBuffer(), 8)), Text("ABCDEFGHABCDEFGH")},
        {__LINE__, letters, OP(AppendBuffer(b.GetBuffer() + 4, 4, true)), Text("ABCDEFGHHGFE")},
        {__LINE__, letters, OP(AppendBuffer(b.GetBuffer(), 8, true)), Text("ABCDEFGHHGFEDCBA")},
        // Insert: source before, after and across the insertion point.
        {__LINE__, letters, OP(InsertBuffer(4, b.GetBuffer(), 2)), Text("ABCDABEFGH")},
        {__LINE__, letters, OP(InsertBuffer(1, b.GetBuffer() + 5, 3)), Text("AFGHBCDEFGH")},
        {__LINE__, letters, OP(InsertBuffer(3, b.GetBuffer() + 1, 4)), Text("ABCBCDEDEFGH")},
        {__LINE__, letters, OP(InsertBuffer(3, b.GetBuffer() + 1, 4, true)), Text("ABCEDCBDEFGH")},
        {__LINE__, letters, OP(InsertBuffer(0, b.GetBuffer() + 4, 4)), Text("EFGHABCDEFGH")},
        {__LINE__, letters, OP(InsertBuffer(8, b.GetBuffer(), 8, true)), Text("ABCDEFGHHGFEDCBA")},
        {__LINE__, letters, OP(InsertBuffer(2, b.GetBuffer(), 8)), Text("ABABCDEFGHCDEFGH")},
        // Overwrite: overlapping forward and backward, in place reversed, extending.
        {__LINE__, letters, OP(OverwriteBuffer(1, b.GetBuffer(), 4)), Text("AABCDFGH")},
        {__LINE__, letters, OP(OverwriteBuffer(0, b.GetBuffer() + 2, 4)), Text("CDEFEFGH")},
        {__LINE__, letters, OP(OverwriteBuffer(0, b.GetBuffer(), 8, true)), Text("HGFEDCBA")},
        {__LINE__, letters, OP(OverwriteBuffer(2, b.GetBuffer() + 1, 3, true)), Text("ABDCBFGH")},
        {__LINE__, letters, OP(OverwriteBuffer(6, b.GetBuffer(), 4)), Text("ABCDEFABCD")},
        {__LINE__, letters, OP(OverwriteBuffer(6, b.GetBuffer(), 8, true)), Text("ABCDEFHGFEDCBA")},
    };
    return rows;
}

// Each row through five builders: room in the initial buffer; an initial
// buffer holding exactly the starting bytes, and none at all, so that the
// operation must grow; a fixed buffer of exactly the size needed; and one
// byte less, which must fail and change nothing.
TEST(MessageBuilderTyped, ExactBytesWithRoomWhenGrowingAndInFixedBuffers)
{
    for (const TypedRow& row : TypedRows())
    {
        SCOPED_TRACE(testing::Message() << "row at line " << row.line);
        const auto start = static_cast<unsigned>(row.start.size());
        const auto end = row.status == OK ? static_cast<unsigned>(row.expected.size()) : start;
        Built roomy(64, true, row.start), tight(start, true, row.start), none(NO_BUFFER, true, row.start),
            fits(std::max(start, end), false, row.start);
        for (Built* built : {&roomy, &tight, &none, &fits})
        {
            SCOPED_TRACE(built == &roomy ? "room" : built == &tight ? "tight" : built == &none ? "none" : "exact fixed");
            Expect(built->builder, row.operation, row.status, row.expected);
        }
        EXPECT_TRUE(roomy.builder.IsUsingInitialBuffer());
        if (end > start)
        {
            Built full(end - 1, false, row.start);
            Expect(full.builder, row.operation, OVERFLOW_);
        }
    }
}

// ---------------------------------------------------------------------------
// Growth.

TEST(MessageBuilderGrowth, FullTenByteBufferPlusOneByteMovesToSixteenByteHeapBlockAndBack)
{
    Built built(10, true, Text("0123456789"));
    ExpectState(built, "0123456789", 10, true);
    RunSteps(built, {
        {__LINE__, OP(AppendUInt8('A')), OK, "0123456789A", 16, false},
        // Back to the initial buffer: only once the message fits it again.
        {__LINE__, OP(AdjustBufferSize(10)), INVALID, "0123456789A", 16, false},
        {__LINE__, OP(EraseBuffer(0, 1)), OK, "123456789A", 16, false},
        {__LINE__, OP(AdjustBufferSize(10)), OK, "123456789A", 10, true},
        // Full again: the next byte goes to a fresh heap block.
        {__LINE__, OP(AppendUInt8('B')), OK, "123456789AB", 16, false},
    });
    // AdjustBufferSize to at most the initial size returns to the initial buffer.
    Built abc(32, true, Text("abc"));
    RunSteps(abc, {
        {__LINE__, OP(AdjustBufferSize(100)), OK, "abc", 100, false},
        {__LINE__, OP(AdjustBufferSize(3)), OK, "abc", 32, true},
        {__LINE__, OP(AdjustBufferSize(0xFFFFu + 1)), OK, "abc", 0x10000, false}, // out again, then down by realloc
        {__LINE__, OP(AdjustBufferSize(40)), OK, "abc", 40, false},
        // MaybeAdjustBufferSize also returns when length + extra fits the initial buffer.
        {__LINE__, OP(MaybeAdjustBufferSize(29)), OK, "abc", 32, true},
    });
    // An empty builder with no initial buffer returns to no storage at all.
    Built empty(NO_BUFFER, true, {});
    RunSteps(empty, {
        {__LINE__, OP(AppendUInt32(1, LE)), OK, "\1\0\0\0"s, 4, false},
        {__LINE__, OP(EraseBuffer(0, 4)), OK, "", 4, false},
        {__LINE__, OP(AdjustBufferSize(0)), OK, "", 0, true},
    });
}

TEST(MessageBuilderGrowth, MaybeAdjustBufferSizeTargets)
{
    // No initial buffer for initialSize 0; a heap block of heapCapacity unless 0.
    struct Row { int line; unsigned initialSize, heapCapacity, length, extra, expectedCapacity; bool expectedInitial; };
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
        Built built(row.initialSize ? row.initialSize : NO_BUFFER, true, Bytes(row.length, 'Z'), row.heapCapacity);
        ASSERT_EQ(row.heapCapacity ? row.heapCapacity : row.initialSize, built.builder.GetCapacity());
        EXPECT_EQ(OK, built.builder.MaybeAdjustBufferSize(row.extra));
        ExpectState(built, std::string(row.length, 'Z'), row.expectedCapacity, row.expectedInitial);
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
    Built built(4, false, {});
    RunSteps(built, {
        {__LINE__, OP(AppendBuiltIn<unsigned int>(0x01020304)), OK, "\4\3\2\1", 4, true},
        {__LINE__, OP(AppendBuiltIn<signed char>(1)), OVERFLOW_, "\4\3\2\1", 4, true},
        {__LINE__, OP(MaybeAdjustBufferSize(0)), OVERFLOW_, "\4\3\2\1", 4, true},
        {__LINE__, OP(OverwriteUInt16(2, 0x0A0B, BE)), OK, "\4\3\x0A\x0B", 4, true}, // inside: fine
    });
}

// ---------------------------------------------------------------------------
// Failures leave everything as it was.

TEST(MessageBuilderFailures, EveryFailureLeavesTheBuilderUnchanged)
{
    static const unsigned char data[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    enum Kind { GROWABLE_INITIAL, GROWABLE_HEAP, FIXED_FULL };
    struct Row { int line; Kind kind; Operation operation; StatusCode status; };
    const std::vector<Row> rows = {
        // Bounds.
        {__LINE__, GROWABLE_INITIAL, OP(InsertBuffer(9, data, 1)), INVALID},
        {__LINE__, GROWABLE_HEAP, OP(InsertUInt64(9, 1, BE)), INVALID},
        {__LINE__, FIXED_FULL, OP(OverwriteBuffer(9, data, 1)), INVALID},
        {__LINE__, GROWABLE_HEAP, OP(OverwriteInt32(9, 1, LE)), INVALID},
        {__LINE__, GROWABLE_INITIAL, OP(EraseBuffer(8, 1)), INVALID},
        {__LINE__, FIXED_FULL, OP(EraseBuffer(1, 8)), INVALID},
        {__LINE__, GROWABLE_HEAP, OP(AppendBuffer(nullptr, 1)), INVALID},
        {__LINE__, GROWABLE_INITIAL, OP(InsertBuffer(0, nullptr, 4)), INVALID},
        {__LINE__, GROWABLE_HEAP, OP(OverwriteBuffer(0, nullptr, 4)), INVALID},
        {__LINE__, GROWABLE_HEAP, OP(AdjustBufferSize(7)), INVALID},
        {__LINE__, GROWABLE_INITIAL, OP(AdjustBufferSize(0)), INVALID},
        {__LINE__, GROWABLE_HEAP, OP(AppendPrintf(nullptr)), INVALID},
        // A full buffer that may not grow.
        {__LINE__, FIXED_FULL, OP(AppendBuffer(data, 1)), OVERFLOW_},
        {__LINE__, FIXED_FULL, OP(AppendBuffer(data, 16, true)), OVERFLOW_},
        {__LINE__, FIXED_FULL, OP(InsertBuffer(0, data, 1)), OVERFLOW_},
        {__LINE__, FIXED_FULL, OP(InsertBuffer(4, data, 12)), OVERFLOW_},
        {__LINE__, FIXED_FULL, OP(OverwriteBuffer(7, data, 2)), OVERFLOW_},
        {__LINE__, FIXED_FULL, OP(OverwriteBuffer(8, data, 1)), OVERFLOW_},
        {__LINE__, FIXED_FULL, OP(AppendUInt8(1)), OVERFLOW_},
        {__LINE__, FIXED_FULL, OP(AppendInt64(1, BE)), OVERFLOW_},
        {__LINE__, FIXED_FULL, OP(InsertUInt16(3, 1, LE)), OVERFLOW_},
        {__LINE__, FIXED_FULL, OP(OverwriteUInt32(6, 1, BE)), OVERFLOW_},
        {__LINE__, FIXED_FULL, OP(AppendString("x")), OVERFLOW_},
        {__LINE__, FIXED_FULL, OP(AppendPrintfString("%d", 1)), OVERFLOW_},
        {__LINE__, FIXED_FULL, OP(MaybeAdjustBufferSize(1)), OVERFLOW_},
        {__LINE__, FIXED_FULL, OP(AppendBuffer(data, 0xFFFFFFFF)), OVERFLOW_},
        {__LINE__, FIXED_FULL, OP(OverwriteBuffer(8, data, 0xFFFFFFFF)), OVERFLOW_},
        // The message cannot pass 4 GiB: length + size overflowing 32 bits is
        // a failed allocation, not a wrapped length.
        {__LINE__, GROWABLE_INITIAL, OP(AppendBuffer(data, 0xFFFFFFFF)), HEAP_EMPTY},
        {__LINE__, GROWABLE_HEAP, OP(AppendBuffer(data, 0xFFFFFFF8)), HEAP_EMPTY},
        {__LINE__, GROWABLE_HEAP, OP(InsertBuffer(0, data, 0xFFFFFFFC)), HEAP_EMPTY},
        {__LINE__, GROWABLE_INITIAL, OP(OverwriteBuffer(8, data, 0xFFFFFFFF)), HEAP_EMPTY},
        {__LINE__, GROWABLE_HEAP, OP(OverwriteBuffer(4, data, 0xFFFFFFFD)), HEAP_EMPTY},
        {__LINE__, GROWABLE_HEAP, OP(MaybeAdjustBufferSize(0xFFFFFFFF)), HEAP_EMPTY},
        {__LINE__, GROWABLE_INITIAL, OP(MaybeAdjustBufferSize(0xFFFFFFF5)), HEAP_EMPTY},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(testing::Message() << "row at line " << row.line);
        Built built(row.kind == FIXED_FULL ? 8 : 16, row.kind != FIXED_FULL, Text("abcdefgh"), row.kind == GROWABLE_HEAP ? 40 : 0);
        Expect(built.builder, row.operation, row.status);
    }
}

TEST(MessageBuilderFailures, HugeAdjustBufferSizeFailsWithHeapEmptyAndChangesNothing)
{
    Built built(8, true, Text("abc"));
    const auto before = Snapshot(built.builder);
    const StatusCode status = built.builder.AdjustBufferSize(0xFFFFFFF0);
    if (status == OK)
        GTEST_SKIP() << "the machine granted a 4 GiB block; see HeapEmptyUnderAnAddressSpaceLimit";
    EXPECT_EQ(HEAP_EMPTY, status);
    EXPECT_EQ(before, Snapshot(built.builder));
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

    const auto initialBefore = Snapshot(fromInitial), heapBefore = Snapshot(onHeap);
    const auto fails = [](MessageBuilder& b, StatusCode status, const decltype(initialBefore)& before) {
        return status != HEAP_EMPTY || !(before == Snapshot(b));
    };
    if (fails(fromInitial, fromInitial.AppendBuffer(text.data(), 20 * kMiB), initialBefore))
        return 5;
    if (fails(fromInitial, fromInitial.AdjustBufferSize(64 * kMiB), initialBefore))
        return 6;
    if (fails(onHeap, onHeap.AppendBuffer(text.data(), 33 * kMiB), heapBefore))
        return 7;
    if (fails(onHeap, onHeap.MaybeAdjustBufferSize(32 * kMiB), heapBefore))
        return 8;
    if (fails(onHeap, onHeap.InsertBuffer(1, text.data(), 33 * kMiB), heapBefore))
        return 9;
    // Formatted text that needs more than the heap block: the growth to
    // 48 MiB fails, the length is unchanged.
    if (onHeap.AppendPrintf("%s", text.c_str()) != HEAP_EMPTY || onHeap.GetLength() != 3 || Contents(onHeap) != Text("xyz"))
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

// Each row from a fresh builder: the status, the message, the capacity and
// whether the initial buffer holds it.
TEST(MessageBuilderPrintf, TextLengthPrefixesAndGrowthRounds)
{
    const std::string q100(100, 'q'), z27992(27992, 'z'), z27991(27991, 'z'), huge(1u << 20, 'h'), m300(300, 'm');
    const std::string l65535(65535, 'L'), l65536(65536, 'L');
    const auto own = [](MessageBuilder& b) { return reinterpret_cast<const char*>(b.GetBuffer()); };
    struct Row { int line; unsigned initialSize; bool growable; std::string start; Operation operation; StatusCode status;
                 std::string message; unsigned capacity; };
    const std::vector<Row> rows = {
        // No terminating zero.
        {__LINE__, 64, true, "<", OP(AppendPrintf("%s=%05d/%" PRIx64, "px", 42, std::uint64_t{0xABCDEF0123})), OK, "<px=00042/abcdef0123", 64},
        {__LINE__, 64, true, "<", OP(AppendPrintf("%s", "")), OK, "<", 64},
        // 10 bytes free: text of free - 2 fits; free - 1 grows, though not
        // growable, to 64 since 18 is below 65.
        {__LINE__, 12, false, "ab", OP(AppendPrintf("%s", "12345678")), OK, "ab12345678", 12},
        {__LINE__, 12, false, "ab", OP(AppendPrintf("%s", "123456789")), OK, "ab123456789", 64},
        {__LINE__, 8, false, "", OP(AppendPrintf("%s!", q100.c_str())), OK, q100 + "!", 144}, // 8 -> 64 -> 96 -> 144
        // From 8 bytes: 64, 96, 144, ..., 18663, 27994 after 16 rounds. A text
        // of 27992 characters fits the last round; one more does not
        // (2 + 27991 + 1 > 27994 - 1), and the length stays.
        {__LINE__, 8, false, "", OP(AppendPrintf("%s", z27992.c_str())), OK, z27992, 27994},
        {__LINE__, 8, true, "", OP(AppendPrintf("%s", z27992.c_str())), OK, z27992, 27994},
        {__LINE__, 8, false, "ab", OP(AppendPrintf("%s", z27991.c_str())), OVERFLOW_, "ab", 27994},
        {__LINE__, 8, true, "ab", OP(AppendPrintf("%s", z27991.c_str())), OVERFLOW_, "ab", 27994},
        {__LINE__, NO_BUFFER, true, "", OP(AppendPrintf("%s", huge.c_str())), OVERFLOW_, "", 27994}, // 0 -> 64 -> ... -> 27994
        // A little-endian length, then the text.
        {__LINE__, NO_BUFFER, true, "", OP(AppendPrintfString("%s", "")), OK, "\0\0"s, 4},
        {__LINE__, NO_BUFFER, true, "\0\0"s, OP(AppendPrintfString("abc")), OK, "\0\0\3\0abc"s, 64},
        {__LINE__, NO_BUFFER, true, "\0\0\3\0abc"s, OP(AppendPrintfString("%d-%s", 7, "x")), OK, "\0\0\3\0abc\3\0" "7-x"s, 64},
        {__LINE__, NO_BUFFER, true, "", OP(AppendPrintfString("%s", m300.c_str())), OK, "\x2C\x01"s + m300, 324},
        // The length limit; past it no roll-back: the zero placeholder and
        // the text stay.
        {__LINE__, 70000, false, "", OP(AppendPrintfString("%s", l65535.c_str())), OK, "\xFF\xFF"s + l65535, 70000},
        {__LINE__, 70000, false, "h", OP(AppendPrintfString("%s", l65536.c_str())), INVALID, "h\0\0"s + l65536, 70000},
        // The placeholder grows (7.5 -> 8; the zero fits), then "z" and its
        // zero need a round; without growth it overflows.
        {__LINE__, 5, true, "abcd", OP(AppendPrintfString("%s", "")), OK, "abcd\0\0"s, 8},
        {__LINE__, 5, true, "abcd\0\0"s, OP(AppendPrintfString("z")), OK, "abcd\0\0\1\0z"s, 64},
        {__LINE__, 5, false, "abcd", OP(AppendPrintfString("z")), OVERFLOW_, "abcd", 5},
        // Arguments inside the builder while it grows, from an initial
        // buffer and from a heap block each holding exactly the message.
        {__LINE__, 8, true, "ABCDEFGH", OP(AppendPrintf("<%.*s>", 8, own(b))), OK, "ABCDEFGH<ABCDEFGH>", 64},
        {__LINE__, NO_BUFFER, true, "ABCDEFGH", OP(AppendPrintf("<%.*s>", 8, own(b))), OK, "ABCDEFGH<ABCDEFGH>", 64},
        {__LINE__, NO_BUFFER, true, "ABCDEFGH", OP(AppendPrintfString("%.*s", 3, own(b))), OK, "ABCDEFGH\x03\x00" "ABC"s, 64},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(testing::Message() << "row at line " << row.line);
        Built built(row.initialSize, row.growable, Text(row.start));
        EXPECT_EQ(row.status, row.operation(built.builder));
        ExpectState(built, row.message, row.capacity, row.capacity == row.initialSize);
    }
    // After growing for text, other operations still respect the flag.
    Built fixed(8, false, {});
    RunSteps(fixed, {
        {__LINE__, OP(AppendPrintf("%s!", q100.c_str())), OK, q100 + "!", 144, false},
        {__LINE__, OP(AppendBuffer(q100.data(), 43)), OK, q100 + "!" + q100.substr(0, 43), 144, false},
    });
    Expect(fixed.builder, OP(AppendUInt8(1)), OVERFLOW_);
}

// ---------------------------------------------------------------------------
// Randomized: every operation applied to the builder and to a byte vector
// with the same growth rules; bytes, statuses and storage compared each step.

struct Model
{
    unsigned initialSize;
    bool growable;
    unsigned capacity;
    bool onInitial;
    Bytes bytes;

    StatusCode Reserve(std::uint64_t needed) // as MaybeAdjustBufferSize(needed - length)
    {
        if (!growable)
            return OVERFLOW_;
        if (needed <= initialSize)
            return Adjust(initialSize);
        std::uint64_t size = std::max<std::uint64_t>(needed, capacity + capacity / 2);
        return Adjust(static_cast<unsigned>((size + 3) / 4 * 4));
    }
    StatusCode Adjust(unsigned size)
    {
        if (size < bytes.size())
            return INVALID;
        onInitial = size <= initialSize;
        capacity = onInitial ? initialSize : size;
        return OK;
    }
    // Inserts data at position, or overwrites from there and extends.
    StatusCode Write(unsigned position, Bytes data, bool reverse, bool insert)
    {
        if (position > bytes.size())
            return INVALID;
        if (data.empty())
            return OK;
        const std::size_t end = insert ? bytes.size() + data.size() : std::max(bytes.size(), position + data.size());
        if (end > capacity)
            if (StatusCode status = Reserve(end); status != OK)
                return status;
        if (reverse)
            std::reverse(data.begin(), data.end());
        if (!insert)
            bytes.erase(bytes.begin() + position, bytes.begin() + std::min(bytes.size(), position + data.size()));
        bytes.insert(bytes.begin() + position, data.begin(), data.end());
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
        for (unsigned round = 0; capacity - bytes.size() < text.size() + 2; ++round) // room for the text and a zero
        {
            if (round == 16)
                return OVERFLOW_;
            Adjust(std::max(capacity + capacity / 2, 64u));
        }
        bytes.insert(bytes.end(), text.begin(), text.end());
        return OK;
    }
    StatusCode PrintfString(const std::string& text)
    {
        if (capacity - bytes.size() < 2)
            if (StatusCode status = Reserve(bytes.size() + 2); status != OK)
                return status;
        const std::size_t start = bytes.size();
        bytes.insert(bytes.end(), 2, 0);
        if (StatusCode status = Printf(text); status != OK)
            return status;
        bytes[start] = static_cast<unsigned char>(text.size());
        bytes[start + 1] = static_cast<unsigned char>(text.size() >> 8);
        return OK;
    }
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
        Model model{initialSize, growable, initialSize, true, {}};

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
            const auto u16 = static_cast<std::uint16_t>(value);
            const auto i16 = static_cast<std::int16_t>(value);
            const auto u32 = static_cast<std::uint32_t>(value);
            const auto i32 = static_cast<std::int32_t>(value);
            const auto i64 = static_cast<std::int64_t>(value);
            const auto i8 = static_cast<std::int8_t>(value);
            const unsigned eraseSize = below(8), target = below(3) == 0 ? length + below(4) : below(length + 80);
            const unsigned extra = below(30);
            const std::string lower(below(90), static_cast<char>('a' + below(26)));
            const std::string upper(below(90), static_cast<char>('A' + below(26)));

            static const char* const kNames[] = {
                "AppendBuffer", "InsertBuffer", "InsertBuffer", "OverwriteBuffer", "OverwriteBuffer", "EraseBuffer",
                "AppendUInt16", "AppendInt32", "AppendUInt64", "AppendInt8", "InsertInt64", "OverwriteUInt32",
                "OverwriteInt16", "AdjustBufferSize", "MaybeAdjustBufferSize", "AppendPrintf", "AppendPrintfString"};
            const unsigned kind = below(17);
            StatusCode expected = OK, actual = OK;
            switch (kind)
            {
            case 0: expected = model.Write(length, copy, reverse, true), actual = builder.AppendBuffer(data, dataSize, reverse); break;
            case 1:
            case 2:
                expected = model.Write(position, copy, reverse, true), actual = builder.InsertBuffer(position, data, dataSize, reverse);
                break;
            case 3:
            case 4:
                expected = model.Write(position, copy, reverse, false);
                actual = builder.OverwriteBuffer(position, data, dataSize, reverse);
                break;
            case 5: expected = model.Erase(position, eraseSize), actual = builder.EraseBuffer(position, eraseSize); break;
            case 6: expected = model.Write(length, Encode(u16, big), false, true), actual = builder.AppendUInt16(u16, endian); break;
            case 7: expected = model.Write(length, Encode(i32, big), false, true), actual = builder.AppendInt32(i32, endian); break;
            case 8: expected = model.Write(length, Encode(value, big), false, true), actual = builder.AppendUInt64(value, endian); break;
            case 9: expected = model.Write(length, Encode(i8, false), false, true), actual = builder.AppendInt8(i8); break;
            case 10:
                expected = model.Write(position, Encode(i64, big), false, true), actual = builder.InsertInt64(position, i64, endian);
                break;
            case 11:
                expected = model.Write(position, Encode(u32, big), false, false);
                actual = builder.OverwriteUInt32(position, u32, endian);
                break;
            case 12:
                expected = model.Write(position, Encode(i16, big), false, false);
                actual = builder.OverwriteInt16(position, i16, endian);
                break;
            case 13: expected = model.Adjust(target), actual = builder.AdjustBufferSize(target); break;
            case 14: expected = model.Reserve(std::uint64_t{length} + extra), actual = builder.MaybeAdjustBufferSize(extra); break;
            case 15: expected = model.Printf(lower), actual = builder.AppendPrintf("%s", lower.c_str()); break;
            default: expected = model.PrintfString(upper), actual = builder.AppendPrintfString("%s", upper.c_str()); break;
            }
            const auto where = [&] { return testing::Message() << kNames[kind] << " at builder " << b << " step " << step; };
            ASSERT_EQ(expected, actual) << where();
            ASSERT_EQ(model.bytes, Contents(builder)) << where();
            ASSERT_EQ(model.capacity, builder.GetCapacity()) << where();
            ASSERT_EQ(model.onInitial, builder.IsUsingInitialBuffer()) << where();
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
