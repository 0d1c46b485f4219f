// MessageBuilder: exact bytes of every form in both byte orders over five
// builder set-ups, positions, aliasing, growth targets, failures that must
// leave the builder unchanged, the 4 GiB bound and formatted text.
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#if defined(__linux__)
#  include <sys/mman.h>
#  include "support/AddressSpaceLimit.h"
#  if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#    define ZANTOR_TEST_SANITIZED 1
#  elif defined(__has_feature)
#    define ZANTOR_TEST_SANITIZED (__has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer))
#  endif
#endif

namespace Zantor {
namespace {

using Endian = MessageHandler::Endian;
using Bytes = std::vector<unsigned char>;
using namespace std::string_literals;

constexpr Endian LE = MessageHandler::ENDIAN_LITTLE, BE = MessageHandler::ENDIAN_BIG;
constexpr StatusCode OK = STATUS_CODE_SUCCESS, OVERFLOW_ = STATUS_CODE_BUFFER_OVERFLOW, INVALID = STATUS_CODE_INVALID_PARAMETER,
                     HEAP_EMPTY = STATUS_CODE_HEAP_EMPTY;
const unsigned char n17[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}, xy[] = {'x', 'y'};
enum class Side : std::uint16_t { Bid = 0x0102, Ask = 0xA1A2 };

Bytes Contents(const MessageBuilder& b) { return b.GetLength() ? Bytes(b.GetBuffer(), b.GetBuffer() + b.GetLength()) : Bytes(); }
Bytes Text(const std::string& text) { return Bytes(text.begin(), text.end()); }
// Everything a failure must leave as it was.
auto Snapshot(const MessageBuilder& b) { return std::tuple(Contents(b), b.GetCapacity(), b.GetBuffer(), b.IsUsingInitialBuffer()); }

// An operation under test, written as the call on the builder b.
using Operation = std::function<StatusCode(MessageBuilder&)>;
#define OP(...) [&](MessageBuilder& b) { return b.__VA_ARGS__; }

// A builder over initialSize bytes of storage (none at all for 0), moved to
// a heap block of `heap` bytes when that is not 0, holding start.
struct Built
{
    Built(unsigned initialSize, bool growable, const Bytes& start, unsigned heap = 0)
        : storage(initialSize + 1, '?'), builder(initialSize ? storage.data() : nullptr, initialSize, growable)
    {
        EXPECT_EQ(OK, heap ? builder.AdjustBufferSize(heap) : OK);
        EXPECT_EQ(OK, builder.AppendBuffer(start.data(), static_cast<unsigned>(start.size())));
    }
    Bytes storage;
    MessageBuilder builder;
};

// On success the message must be expected; on failure nothing may change.
void Expect(MessageBuilder& builder, const Operation& operation, StatusCode status, const Bytes& expected = {})
{
    const auto before = Snapshot(builder);
    EXPECT_EQ(status, operation(builder));
    EXPECT_EQ(status == OK ? expected : std::get<0>(before), Contents(builder));
    EXPECT_TRUE(status == OK || before == Snapshot(builder)) << "a failure changed the storage";
}

// The operation on five builders holding start: room in the initial buffer;
// an initial buffer of exactly start, and none at all, which must grow; a
// fixed buffer of the size needed (answering fixed when that is not OK);
// one byte less, which must overflow (when the operation grows).
void ExpectEverywhere(const Bytes& start, const Operation& operation, StatusCode status, const Bytes& expected, StatusCode fixed = OK)
{
    const auto size = static_cast<unsigned>(start.size()), end = status == OK ? static_cast<unsigned>(expected.size()) : size;
    fixed = fixed == OK ? status : fixed;
    const bool grows = end > size && fixed == OK;
    Built roomy(64, true, start), tight(size, true, start), none(0, true, start), fits(std::max(size, end), false, start),
        full(grows ? end - 1 : size, false, start);
    for (int i = 0; auto [built, expect] : {std::pair(&roomy, status), {&tight, status}, {&none, status},
                                            {&fits, fixed}, {&full, grows ? OVERFLOW_ : fixed}})
    {
        SCOPED_TRACE(testing::Message() << "set-up " << i++);
        Expect(built->builder, operation, expect, expected);
    }
    EXPECT_TRUE(roomy.builder.IsUsingInitialBuffer());
}

// A named integer form of one width: the value's little-endian bytes
// (reversed for big-endian) appended, inserted at the start and inside,
// overwritten inside and across the end; positions past the end refused.
template <typename T>
void ExpectTyped(int line, StatusCode (MessageBuilder::*append)(T, Endian), StatusCode (MessageBuilder::*insert)(unsigned, T, Endian),
                 StatusCode (MessageBuilder::*overwrite)(unsigned, T, Endian), T value, std::string v)
{
    const std::string s = "ABCDEFGHIJ";
    const auto at = [&](std::size_t p, std::size_t erased) { return Text(std::string(s).replace(p, erased, v)); };
    for (Endian endian : {LE, BE, static_cast<Endian>(2)}) // any non-zero order is big-endian
    {
        SCOPED_TRACE(testing::Message() << "line " << line << ", order " << int{endian});
        if (endian == BE)
            std::reverse(v.begin(), v.end());
        const auto call = [&](auto method, auto... where) { return [=](MessageBuilder& b) { return (b.*method)(where..., value, endian); }; };
        ExpectEverywhere(Text(s), call(append), OK, at(10, 0));
        for (unsigned p : {0u, 1u, 11u})
            ExpectEverywhere(Text(s), call(insert, p), p <= 10 ? OK : INVALID, p <= 10 ? at(p, 0) : Bytes());
        for (unsigned p : {1u, 9u, 11u})
            ExpectEverywhere(Text(s), call(overwrite, p), p <= 10 ? OK : INVALID, p <= 10 ? at(p, v.size()) : Bytes());
    }
}
#define TYPED(Name, T, value, little) ExpectTyped<T>(__LINE__, &MessageBuilder::Append##Name, &MessageBuilder::Insert##Name, \
                                                 &MessageBuilder::Overwrite##Name, value, little)

TEST(MessageBuilderBytes, NamedIntegerFormsInBothByteOrders)
{
    TYPED(UInt8, std::uint8_t, 0xAB, "\xAB");
    TYPED(Int8, std::int8_t, -2, "\xFE");
    TYPED(UInt16, std::uint16_t, 0x0102, "\x02\x01");
    TYPED(Int16, std::int16_t, -2, "\xFE\xFF");
    TYPED(UInt32, std::uint32_t, 0xA0B0C0D0, "\xD0\xC0\xB0\xA0");
    TYPED(Int32, std::int32_t, -0x01020304, "\xFC\xFC\xFD\xFE");
    TYPED(UInt64, std::uint64_t, 0x0102030405060708, "\x08\x07\x06\x05\x04\x03\x02\x01");
    TYPED(Int64, std::int64_t, -0x0102030405060708, "\xF8\xF8\xF9\xFA\xFB\xFC\xFD\xFE");
}

// One row per rule, each through the five set-ups of ExpectEverywhere.
TEST(MessageBuilderBytes, RawBytesPositionsAliasingAndBounds)
{
    const Bytes six = Text("ABCDEF"), letters = Text("ABCDEFGH");
    struct Row { int line; Bytes start; Operation operation; Bytes expected; StatusCode status = OK; StatusCode fixed = OK; };
    const Row rows[] = {
        // Several integers under one bounds check, in the order given.
        {__LINE__, {}, OP(AppendBuiltIns(BE, std::uint8_t{0x51}, std::uint16_t{0x0102}, std::uint32_t{0x03040506}, std::int64_t{-2})),
         {0x51, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}},
        {__LINE__, {0x7F}, OP(AppendBuiltIns(LE, true, Side::Ask, std::int8_t{-4})), {0x7F, 0x01, 0xA2, 0xA1, 0xFC}},
        // Raw bytes, reversed and forward, below and above the block-copy size.
        {__LINE__, {0xEE}, OP(AppendBuffer(n17, 3, true)), {0xEE, 3, 2, 1}},
        {__LINE__, {}, OP(AppendBuffer(n17, 17)), {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}},
        {__LINE__, {'a'}, OP(AppendString("bcd")), Text("abcd")},
        {__LINE__, {'a', 'd'}, OP(InsertString(1, "bc")), Text("abcd")},
        {__LINE__, {'a', 'x', 'y'}, OP(OverwriteString(1, "bcd")), Text("abcd")},
        // Positions: start, middle, end, one past the end; size 0.
        {__LINE__, six, OP(InsertBuffer(3, nullptr, 0)), six},
        {__LINE__, six, OP(InsertBuffer(7, xy, 0)), {}, INVALID},
        {__LINE__, six, OP(OverwriteBuffer(4, xy, 2)), Text("ABCDxy")},
        {__LINE__, six, OP(OverwriteBuffer(6, xy, 2)), Text("ABCDEFxy")},
        {__LINE__, six, OP(OverwriteBuffer(6, nullptr, 0)), six},
        {__LINE__, six, OP(OverwriteBuffer(7, xy, 0)), {}, INVALID},
        {__LINE__, six, OP(EraseBuffer(2, 2)), Text("ABEF")},
        {__LINE__, six, OP(EraseBuffer(6, 0)), six},
        {__LINE__, six, OP(EraseBuffer(5, 2)), {}, INVALID},
        {__LINE__, six, OP(EraseBuffer(7, 0)), {}, INVALID},
        {__LINE__, six, OP(EraseBuffer(1, 0xFFFFFFFF)), {}, INVALID},
        {__LINE__, six, OP(AppendBuffer(nullptr, 1)), {}, INVALID},
        {__LINE__, six, OP(OverwriteBuffer(0, nullptr, 4)), {}, INVALID},
        {__LINE__, six, OP(AdjustBufferSize(5)), {}, INVALID},
        {__LINE__, six, OP(MaybeAdjustBufferSize(0)), six, OK, OVERFLOW_}, // not growable: no growth at all
        // The message cannot pass 0xFFFFFFFC bytes: a length that would, or
        // that overflows 32 bits, is a failed allocation, not a wrapped length.
        {__LINE__, six, OP(AppendBuffer(n17, 0xFFFFFFFF)), {}, HEAP_EMPTY, OVERFLOW_},
        {__LINE__, six, OP(InsertBuffer(0, n17, 0xFFFFFFF7)), {}, HEAP_EMPTY, OVERFLOW_},
        {__LINE__, six, OP(OverwriteBuffer(4, n17, 0xFFFFFFFD)), {}, HEAP_EMPTY, OVERFLOW_},
        {__LINE__, six, OP(MaybeAdjustBufferSize(0xFFFFFFF7)), {}, HEAP_EMPTY, OVERFLOW_},
        // Sources inside the builder's own storage; insert before, after and
        // across the insertion point; overwrite overlapping both ways.
        {__LINE__, letters, OP(AppendBuffer(b.GetBuffer(), 8)), Text("ABCDEFGHABCDEFGH")},
        {__LINE__, letters, OP(InsertBuffer(3, b.GetBuffer() + 1, 4, true)), Text("ABCEDCBDEFGH")},
        {__LINE__, letters, OP(InsertBuffer(2, b.GetBuffer(), 8)), Text("ABABCDEFGHCDEFGH")},
        {__LINE__, letters, OP(OverwriteBuffer(1, b.GetBuffer(), 4)), Text("AABCDFGH")},
        {__LINE__, letters, OP(OverwriteBuffer(0, b.GetBuffer() + 2, 4)), Text("CDEFEFGH")},
        {__LINE__, letters, OP(OverwriteBuffer(2, b.GetBuffer() + 1, 3, true)), Text("ABDCBFGH")},
        {__LINE__, letters, OP(OverwriteBuffer(6, b.GetBuffer(), 8, true)), Text("ABCDEFHGFEDCBA")},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(testing::Message() << "row at line " << row.line);
        ExpectEverywhere(row.start, row.operation, row.status, row.expected, row.fixed);
    }
}

// Each row from a fresh builder (Built's arguments): the status, the
// message, the capacity, and whether the initial buffer holds the message.
TEST(MessageBuilderStorage, GrowthTargetsReturnsAndFormattedText)
{
    const std::string d10 = "0123456789", q144(144, 'q'), z27992(27992, 'z'), z27991(27991, 'z'),
                      m300(300, 'm'), l65535(65535, 'L'), l65536(65536, 'L'), big(40 << 20, 'b');
    const auto own = [](MessageBuilder& b) { return reinterpret_cast<const char*>(b.GetBuffer()); };
    struct Row { int line; unsigned initialSize; bool growable; unsigned heap; std::string start; Operation operation; StatusCode status;
                 std::string message; unsigned capacity; };
    const Row rows[] = {
        // Half again, rounded up to a multiple of 4, at least what is needed.
        {__LINE__, 10, true, 0, d10, OP(MaybeAdjustBufferSize(1)), OK, d10, 16},
        {__LINE__, 10, true, 0, d10, OP(MaybeAdjustBufferSize(20)), OK, d10, 32},
        {__LINE__, 16, true, 0, "", OP(MaybeAdjustBufferSize(24)), OK, "", 24},
        {__LINE__, 100, true, 0, "", OP(MaybeAdjustBufferSize(101)), OK, "", 152},
        // Back to the initial buffer (bytes copied back) once the message fits it.
        {__LINE__, 10, true, 16, "12345", OP(MaybeAdjustBufferSize(5)), OK, "12345", 10},
        {__LINE__, 10, true, 16, d10 + "A", OP(AdjustBufferSize(10)), INVALID, d10 + "A", 16},
        {__LINE__, 0, true, 4, "", OP(AdjustBufferSize(0)), OK, "", 0},
        {__LINE__, 10, true, 16, d10, OP(AdjustBufferSize(0x10000)), OK, d10, 0x10000},
        {__LINE__, 10, true, 16, d10, OP(Reset(), OK), OK, "", 16},
        {__LINE__, 8, false, 144, q144, OP(AppendUInt8(1)), OVERFLOW_, q144, 144},
        // Formatted text, no terminating zero; the formatter's error.
        {__LINE__, 64, true, 0, "<", OP(AppendPrintf("%s=%05d/%x", "px", 42, 0xABCDEF01u)), OK, "<px=00042/abcdef01", 64},
#ifndef _WIN32 // the MinGW formatter drops what it cannot convert
        {__LINE__, 64, true, 0, "<", OP(AppendPrintf("%ls", L"\u263A")), STATUS_CODE_INVALID_FORMAT, "<", 64},
#endif
        {__LINE__, 64, true, 0, "<", OP(AppendPrintf(nullptr)), INVALID, "<", 64},
        // 10 bytes free: free - 2 fits; free - 1 grows, though not growable,
        // to 64 since 18 is below 65; then by half again.
        {__LINE__, 12, false, 0, "ab", OP(AppendPrintf("%s", "12345678")), OK, "ab12345678", 12},
        {__LINE__, 12, false, 0, "ab", OP(AppendPrintf("%s", "123456789")), OK, "ab123456789", 64},
        // From 0 or 8: 64, 96, ..., 27994 after 16 rounds. 27992 characters
        // fit the last round; one more does not, and the length stays.
        {__LINE__, 0, true, 0, "", OP(AppendPrintf("%s", z27992.c_str())), OK, z27992, 27994}, // 0 -> 64 -> ...
        {__LINE__, 8, true, 0, "ab", OP(AppendPrintf("%s", z27991.c_str())), OVERFLOW_, "ab", 27994},
        // A little-endian length, then the text.
        {__LINE__, 0, true, 0, "", OP(AppendPrintfString("%s", "")), OK, "\0\0"s, 4},
        {__LINE__, 0, true, 0, "", OP(AppendPrintfString("%s", m300.c_str())), OK, "\x2C\x01"s + m300, 324},
        {__LINE__, 8, true, 0, "ab", OP(AppendPrintfString(nullptr)), INVALID, "ab", 8},
        // The length limit; past it no roll-back: the placeholder and text stay.
        {__LINE__, 70000, false, 0, "", OP(AppendPrintfString("%s", l65535.c_str())), OK, "\xFF\xFF"s + l65535, 70000},
        {__LINE__, 70000, false, 0, "h", OP(AppendPrintfString("%s", l65536.c_str())), INVALID, "h\0\0"s + l65536, 70000},
        // The placeholder grows as Append does (2 -> 4, then the zero of the
        // text needs a round), not without growth.
        {__LINE__, 0, true, 2, "ab", OP(AppendPrintfString("%s", "")), OK, "ab\0\0"s, 64},
        {__LINE__, 5, true, 0, "abcd\0\0"s, OP(AppendPrintfString("z")), OK, "abcd\0\0\1\0z"s, 64},
        {__LINE__, 5, false, 0, "abcd", OP(AppendPrintfString("z")), OVERFLOW_, "abcd", 5},
        // Arguments inside the growing builder: initial buffer, heap block
        // (40 MiB: a block the allocator moves to grow, so the arguments must
        // outlive the move).
        {__LINE__, 8, true, 0, "ABCDEFGH", OP(AppendPrintf("<%.*s>", 8, own(b))), OK, "ABCDEFGH<ABCDEFGH>", 64},
        {__LINE__, 0, true, 40 << 20, "ABCDEFGH", OP(AppendPrintf("%.8s%s", own(b), big.c_str())), OK, "ABCDEFGHABCDEFGH" + big, 60 << 20},
        {__LINE__, 0, true, 0, "ABCDEFGH", OP(AppendPrintfString("%.*s", 3, own(b))), OK, "ABCDEFGH\x03\x00" "ABC"s, 64},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(testing::Message() << "row at line " << row.line);
        Built built(row.initialSize, row.growable, Text(row.start), row.heap);
        EXPECT_EQ(row.status, row.operation(built.builder));
        EXPECT_EQ(std::tuple(Text(row.message), row.capacity, row.capacity == row.initialSize),
                  std::tuple(Contents(built.builder), built.builder.GetCapacity(), built.builder.IsUsingInitialBuffer()));
    }
}

#if defined(__linux__) && UINTPTR_MAX > 0xFFFFFFFFu
// A text of 4 GiB + 1 (zero pages, never touched) fails like an allocation.
TEST(MessageBuilderFailures, TextOfFourGibibytesOrMore)
{
    void* pages = mmap(nullptr, 0x100000001, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(MAP_FAILED, pages);
    const std::string_view text(static_cast<const char*>(pages), 0x100000001);
    const std::pair<Operation, StatusCode> cases[] = {{OP(AppendString(text)), HEAP_EMPTY}, {OP(OverwriteString(3, text)), HEAP_EMPTY},
                                                      {OP(InsertString(4, text)), INVALID}, {OP(OverwriteString(4, text)), INVALID}};
    for (const auto& [operation, status] : cases)
        ExpectEverywhere(Text("abc"), operation, status, {}, status == INVALID ? INVALID : OVERFLOW_);
    munmap(pages, 0x100000001);
}
#endif

#if defined(__linux__) && !ZANTOR_TEST_SANITIZED
// In a child whose address space is capped just above what it uses, every
// large allocation fails: HEAP_EMPTY, and nothing changes.
TEST(MessageBuilderFailures, HeapEmptyUnderAnAddressSpaceLimit)
{
    // Returns 0 when all checks pass, else the number of the first that failed.
    const auto check = [] {
        const std::string text(40 << 20, 't');
        unsigned char storage[16];
        MessageBuilder fromInitial(storage, sizeof storage), onHeap;
        if (fromInitial.AppendBuffer("abc", 3) != OK || onHeap.AdjustBufferSize(32 << 20) != OK || onHeap.AppendBuffer("xyz", 3) != OK)
            return 1;
        const auto before = std::tuple(Snapshot(fromInitial), Snapshot(onHeap));
        return !CapAddressSpace(8 << 20)                                          ? 2
             : fromInitial.AppendBuffer(text.data(), 20 << 20) != HEAP_EMPTY     ? 3 // a first heap block
             : onHeap.InsertBuffer(1, text.data(), 33 << 20) != HEAP_EMPTY        ? 4 // a larger one
             : onHeap.AppendPrintf("%s", text.c_str()) != HEAP_EMPTY             ? 5 // 48 MiB for formatted text
             : before != std::tuple(Snapshot(fromInitial), Snapshot(onHeap)) ? 6 : 0;
    };
    EXPECT_EXIT(std::_Exit(check()), testing::ExitedWithCode(0), "");
}
#endif

} // namespace
} // namespace Zantor
