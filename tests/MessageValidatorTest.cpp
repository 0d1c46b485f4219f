#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace Zantor {
namespace {

constexpr StatusCode OK = STATUS_CODE_SUCCESS, PARAM = STATUS_CODE_INVALID_PARAMETER;
constexpr StatusCode FORMAT = STATUS_CODE_INVALID_FORMAT, RANGE = STATUS_CODE_OUT_OF_RANGE;
constexpr MessageHandler::Endian LE = MessageHandler::ENDIAN_LITTLE, BE = MessageHandler::ENDIAN_BIG;
using Texts = std::vector<std::string>;
using Reals = std::vector<long double>;

unsigned Size(const std::string& text) { return static_cast<unsigned>(text.size()); }

// The bytes written as hexadecimal pairs: Hex("00FF") is {0x00, 0xFF}.
std::string Hex(const std::string& pairs)
{
    std::string bytes;
    for (std::size_t i = 0; i + 1 < pairs.size(); i += 2)
        bytes += static_cast<char>(std::stoul(pairs.substr(i, 2), nullptr, 16));
    return bytes;
}

// Calls member in its plain form (with data) or, when destination is not
// null, in its Copy form (with destination). Needs v, data and destination.
#define PLAIN_OR_COPY(Member, ...)                                                                                   \
    (destination != nullptr ? v.Member##Copy(__VA_ARGS__, destination) : v.Member(__VA_ARGS__, data))

// Runs call(validator, data, destination) with the cursor at rest (after one
// consumed byte), in the plain form and in the Copy form. Expects status; on
// success the first size bytes of rest are delivered and the cursor advances
// by size; on failure cursor, data and destination stay as they were.
template <typename F>
void CheckFrame(const std::string& rest, unsigned size, StatusCode status, const F& call)
{
    const std::string message = "#" + rest;
    for (const bool copyForm : {false, true})
    {
        SCOPED_TRACE(copyForm ? "Copy form" : "plain form");
        MessageValidator validator(message.data(), Size(message));
        ASSERT_EQ(validator.ValidateBytes(1), OK);
        const void* data = &message;
        std::string destination(64, '.');
        EXPECT_EQ(call(validator, copyForm ? nullptr : &data, copyForm ? destination.data() : nullptr), status);
        const unsigned delivered = status == OK ? size : 0;
        const auto* buffer = reinterpret_cast<const unsigned char*>(message.data());
        EXPECT_TRUE(validator.GetCursor() == 1 + delivered && validator.IsAtEnd() == (delivered == Size(rest)));
        EXPECT_TRUE(validator.GetCursorPointer() == buffer + 1 + delivered && validator.GetBuffer() == buffer);
        EXPECT_TRUE(validator.GetRemaining() == Size(rest) - delivered && validator.GetLength() == Size(message));
        EXPECT_EQ(data, status == OK && !copyForm ? buffer + 1 : static_cast<const void*>(&message));
        EXPECT_EQ(destination.substr(0, delivered + 1),
                  (copyForm ? message.substr(1, delivered) : std::string(delivered, '.')) + ".");
    }
}

// ---- Calls of any member, each checked in both forms by CheckFrame -----------

// What a call may fill: unchanged on failure, a row's after on success.
struct Outputs
{
    std::int64_t s64 = 7;
    std::uint64_t u64 = 7, divisor = 7;
    float f = 7;
    double d = 7;
    long double ld = 7;
    std::string text = "unchanged";
    bool operator==(const Outputs&) const = default;
};

struct CallRow
{
    int line;
    std::string field; // the bytes at the cursor
    unsigned size;     // bytes the call reads
    StatusCode status;
    StatusCode (*call)(MessageValidator& v, unsigned size, Outputs& out, const void** data, void* destination);
    Outputs after = {};
};

#define CALL(Member, ...)                                                                                            \
    [](MessageValidator& v, [[maybe_unused]] unsigned size, [[maybe_unused]] Outputs& out, const void** data,      \
       void* destination) { return PLAIN_OR_COPY(Member, __VA_ARGS__); }

// The real members with numerator and divisor; the static conversion of the
// same text agrees (past the end it is given a null text, which it refuses;
// size 0 is a wrong format to it).
#define REAL(Member, Static, numerator)                                                                              \
    [](MessageValidator& v, unsigned size, Outputs& out, const void** data, void* destination) {                    \
        Outputs copy;                                                                                                \
        const auto* text = size <= v.GetRemaining() ? v.GetCursorPointer() : nullptr;                               \
        const StatusCode copied = MessageValidator::Static(text, size, copy.numerator, copy.divisor);                \
        const StatusCode status = PLAIN_OR_COPY(Member, size, &out.numerator, &out.divisor);                         \
        EXPECT_TRUE(copied == (size == 0 ? FORMAT : status) && copy == out);                                         \
        return status;                                                                                               \
    }
#define UREAL REAL(ValidateUnsignedAsciiReal, CopyUnsignedAsciiRealToNumeratorAndDivisor, u64)
#define SREAL REAL(ValidateSignedAsciiReal, CopySignedAsciiRealToNumeratorAndDivisor, s64)

// Each row, and each successful row of a non-empty field again with the
// field's last byte cut off the message: past the end.
void RunCalls(const std::vector<CallRow>& rows)
{
    for (const CallRow& row : rows)
        for (int cut = 0; cut <= (row.status == OK && row.size != 0); ++cut)
        {
            SCOPED_TRACE("row at line " + std::to_string(row.line) + (cut ? ", cut" : ""));
            const std::string field = cut ? row.field.substr(0, row.size - 1) : row.field;
            CheckFrame(field, row.size, cut ? PARAM : row.status, [&](auto& v, auto data, auto destination) {
                Outputs out;
                const StatusCode status = row.call(v, row.size, out, data, destination);
                EXPECT_TRUE(out == (status == OK ? row.after : Outputs())) << "outputs";
                return status;
            });
        }
}

// ---- Integers: every family, width and byte order -----------------------------

enum Family { UDEC, SDEC, HEX, UBIN, SBIN }; // decimal, signed decimal, hexadecimal, binary, signed binary

constexpr unsigned WHOLE = ~0u; // the size asked for is the field's size

struct IntegerRow
{
    int line;
    Family family;
    unsigned bits;      // the typed members of this width are run
    std::string field;  // text, or binary bytes as hexadecimal pairs; most significant first
    StatusCode status;  // of the typed members
    std::int64_t value; // converted, as a bit pattern for unsigned families
    unsigned size = WHOLE;
};

// The row in both byte orders (little-endian reverses the pairs) through five
// members, both forms each: the typed member for T, the 64-bit range member
// bounded by T's limits (symmetric for signed decimal), the list members with
// and without the value, and the member without conversion.
template <typename T>
void RunTypedRow(const IntegerRow& row)
{
    using B = std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>;
    const B max = std::numeric_limits<T>::max();
    const B min = row.family == SDEC ? B(0) - max : B(std::numeric_limits<T>::min());
    const B value = static_cast<B>(row.value);
    for (const MessageHandler::Endian endian : {BE, LE})
    {
        std::string field = row.field;
        for (std::size_t i = 0; endian == LE && field.size() % 2 == 0 && i < field.size(); i += 2)
            field.replace(i, 2, row.field.substr(field.size() - i - 2, 2));
        field = row.family >= UBIN ? Hex(field) : field;
        const unsigned size = row.size == WHOLE ? Size(field) : row.size;
        for (int member = 0; member < 5 && (endian == BE || row.family >= HEX); ++member)
        {
            SCOPED_TRACE(std::string(endian == BE ? "big" : "little") + "-endian, member " + std::to_string(member));
            // The member without conversion asks for no value; the list without the value refuses it.
            const StatusCode expected = member == 4 && (row.status == RANGE || size == 0) ? OK
                                        : (member == 3 && row.status == OK ? RANGE : row.status);
            // A whole field ends the message or, for members 1 and 3, is
            // followed by a byte that would spoil it if read.
            const std::string rest = row.size == WHOLE && member % 2 != 0 ? field + "#" : field;
            CheckFrame(rest, size, expected, [&](auto& v, auto data, auto destination) {
                T typed = static_cast<T>(0x5A);
                B wide = 0x5A;
                const auto call = [&](auto... args) { // the member of the row's family taking args
                    if constexpr (std::is_signed_v<T>)
                        return row.family == SDEC ? PLAIN_OR_COPY(ValidateSignedAsciiIntegral, size, args...)
                                                  : PLAIN_OR_COPY(ValidateSignedBinaryIntegral, size, endian, args...);
                    else if (row.family == UDEC)
                        return PLAIN_OR_COPY(ValidateUnsignedAsciiIntegral, size, args...);
                    else if (row.family == HEX)
                        return PLAIN_OR_COPY(ValidateAsciiHexadecimalIntegral, size, endian, args...);
                    else
                        return PLAIN_OR_COPY(ValidateUnsignedBinaryIntegral, size, endian, args...);
                };
                const StatusCode status = member == 0   ? call(&typed)
                                          : member == 1 ? call(min, max, &wide)
                                          : member < 4  ? call(std::vector<B>{value ^ (member - 2)}, &wide)
                                                        : call();
                EXPECT_EQ(typed, static_cast<T>(status == OK && member == 0 ? value : 0x5A));
                EXPECT_EQ(wide, status == OK && member != 0 && member != 4 ? value : B(0x5A));
                return status;
            });
        }
    }
}

// The row through each of Types of its width and signedness.
template <typename... Types>
void RunIntegerRow(const IntegerRow& row)
{
    SCOPED_TRACE("row at line " + std::to_string(row.line) + ": " + row.field + ", " + std::to_string(row.bits));
    const bool isSigned = row.family == SDEC || row.family == SBIN;
    ((row.bits == 8 * sizeof(Types) && std::is_signed_v<Types> == isSigned ? RunTypedRow<Types>(row) : void()), ...);
}

TEST(MessageValidatorTest, IntegerChecksForEveryWidthAndByteOrder)
{
    std::vector<IntegerRow> rows = {
        // unsigned decimal: up to 19 digits summed unchecked, beyond checked
        // digit by digit; a wrong character wins over an overflow
        {__LINE__, UDEC, 8, "0", OK, 0},
        {__LINE__, UDEC, 32, "00000000000000000000004294967295", OK, 4294967295},
        {__LINE__, UDEC, 32, "00000000000000000000004294967296", RANGE, 0},
        {__LINE__, UDEC, 32, "99999999999999999999", RANGE, 0}, // over within the first 19
        {__LINE__, UDEC, 64, "9999999999999999999", OK, static_cast<std::int64_t>(9999999999999999999u)},
        {__LINE__, UDEC, 64, "184467440737095516150", RANGE, 0},
        // signed decimal: one leading sign; a lone sign is 0
        {__LINE__, SDEC, 8, "+0127", OK, 127},
        {__LINE__, SDEC, 8, "-", OK, 0},
        // hexadecimal: an even size up to 16 (an odd size wins over a wrong character), both cases
        {__LINE__, HEX, 8, "00ff", OK, 0xFF},
        {__LINE__, HEX, 8, "0FF", PARAM, 0},
        {__LINE__, HEX, 8, "12x", PARAM, 0},
        {__LINE__, HEX, 64, "0123456789ABCDEF", OK, 0x0123456789ABCDEF},
        {__LINE__, HEX, 64, "efcdab8967452301", OK, static_cast<std::int64_t>(0xEFCDAB8967452301)},
        {__LINE__, HEX, 64, "000000000000000000", PARAM, 0},
        // binary: 1 to 8 bytes, zero high bytes, sign extension
        {__LINE__, UBIN, 8, "0000FF", OK, 0xFF},
        {__LINE__, UBIN, 16, "1234", OK, 0x1234},
        {__LINE__, UBIN, 32, "123456", OK, 0x123456},
        {__LINE__, UBIN, 64, "0102030405060708", OK, 0x0102030405060708},
        {__LINE__, UBIN, 64, "010000000000000000", PARAM, 0},
        {__LINE__, SBIN, 8, "FF80", OK, -128},
        {__LINE__, SBIN, 32, "FEFFFF", OK, -65537},
        {__LINE__, SBIN, 64, "010000000000000000", PARAM, 0},
    };
    // Wrong characters: one below '0' and one above '9' among eight digits, a
    // sign where none may be, one among the first 19 digits of a longer text
    // and one after an overflow; each neighbour of the hexadecimal classes as
    // high and as low nibble.
    for (const char* text : {"/2345678", "1234567:", "+12", "999x", "9x999999999999999999999", "9999999999999999999999x"})
        rows.push_back({__LINE__, UDEC, 64, text, FORMAT, 0});
    for (const char* text : {"1-2", "+-1", "-x", "-9999999999999999999999x"})
        rows.push_back({__LINE__, SDEC, 64, text, FORMAT, 0});
    for (const char* text : {"/0", "0:", "@0", "0G", "`0", "0g"})
        rows.push_back({__LINE__, HEX, 16, text, FORMAT, 0});
    // The limits of each width: the last value passes, the next one fails.
    const char* const limits[][4] = {{"255", "256", "127", "128"}, {"65535", "65536", "32767", "32768"},
                                     {"4294967295", "4294967296", "2147483647", "2147483648"},
                                     {"18446744073709551615", "18446744073709551616", "9223372036854775807",
                                      "9223372036854775808"}};
    for (unsigned bytes = 1, w = 0; bytes <= 8; bytes *= 2, ++w)
    {
        const unsigned bits = 8 * bytes;
        const auto max = static_cast<std::int64_t>(~0ull >> (64 - bits));
        const auto signedMax = static_cast<std::int64_t>(~0ull >> (65 - bits));
        const std::string f(2 * bytes - 2, 'F'), z(2 * bytes - 2, '0'), minus = "-";
        rows.insert(rows.end(), {{__LINE__, UDEC, bits, limits[w][0], OK, max},
                                 {__LINE__, UDEC, bits, limits[w][1], RANGE, 0},
                                 {__LINE__, SDEC, bits, limits[w][2], OK, signedMax},
                                 {__LINE__, SDEC, bits, limits[w][3], RANGE, 0},
                                 {__LINE__, SDEC, bits, minus + limits[w][2], OK, -signedMax},
                                 {__LINE__, SDEC, bits, minus + limits[w][3], RANGE, 0}, // symmetric
                                 {__LINE__, HEX, bits, "FF" + f, OK, max},
                                 {__LINE__, UBIN, bits, "FF" + f, OK, max},
                                 {__LINE__, SBIN, bits, "7F" + f, OK, signedMax},
                                 {__LINE__, SBIN, bits, "80" + z, OK, -signedMax - 1}});
        if (bytes < 8) // one past each limit, in a wider field
            rows.insert(rows.end(), {{__LINE__, HEX, bits, "0100" + z, RANGE, 0},
                                     {__LINE__, UBIN, bits, "0100" + z, RANGE, 0},
                                     {__LINE__, SBIN, bits, "0080" + z, RANGE, 0},
                                     {__LINE__, SBIN, bits, "FF7F" + f, RANGE, 0}});
        for (const Family family : {UDEC, SDEC, HEX, UBIN, SBIN}) // size 0 with a value asked for; past the end
            rows.insert(rows.end(), {{__LINE__, family, bits, "", PARAM, 0, 0}, {__LINE__, family, bits, "", PARAM, 0, bytes}});
    }
    for (const IntegerRow& row : rows) // long is 32 or 64 bits
        RunIntegerRow<signed char, unsigned char, short, unsigned short, int, unsigned, long, unsigned long, long long,
                      unsigned long long>(row);
}

// ---- Every other member: one table -------------------------------------------

TEST(MessageValidatorTest, RangeListRealByteStringAndFrameRules)
{
    RunCalls({
        // ranges and lists
        {__LINE__, "12", 2, RANGE, CALL(ValidateUnsignedAsciiIntegral, size, 13, 12, &out.u64)}, // min > max
        {__LINE__, "-1.5", 4, RANGE, CALL(ValidateSignedAsciiReal, size, -1.4L, 0.0L, &out.ld)},
        {__LINE__, "-1.5", 4, RANGE, CALL(ValidateSignedAsciiReal, size, -2.0L, -1.6L, &out.ld)},
        {__LINE__, "-1.5", 4, RANGE, CALL(ValidateSignedAsciiReal, size, Reals{1.5L}, &out.ld)},
        {__LINE__, "-1.5", 4, OK, CALL(ValidateSignedAsciiReal, size, Reals{1.5L, -1.5L}, &out.ld), {.ld = -1.5L}},
        {__LINE__, "0.1", 3, OK, CALL(ValidateUnsignedAsciiReal, size, 0.1L, 0.1L, &out.ld), {.ld = 0.1L}},
        // the real grammar; each field is followed by a byte that would spoil it
        {__LINE__, ".5#", 2, OK, UREAL, {.u64 = 5, .divisor = 10}},
        {__LINE__, "5.#", 2, OK, UREAL, {.u64 = 5, .divisor = 1}},
        {__LINE__, "1.123456789#", 11, OK, UREAL, {.u64 = 1123456789, .divisor = 1000000000}},
        {__LINE__, "1.1234567890#", 12, RANGE, UREAL}, // a tenth fraction digit
        {__LINE__, "18446744073709551615#", 20, OK, UREAL, {.u64 = 18446744073709551615u, .divisor = 1}},
        {__LINE__, "18446744073709551616#", 20, RANGE, UREAL},
        {__LINE__, "-1#", 2, FORMAT, UREAL},
        {__LINE__, "1.2.3#", 5, FORMAT, UREAL},
        {__LINE__, "99999999999999999999x#", 21, FORMAT, UREAL},
        {__LINE__, "-0.05#", 5, OK, SREAL, {.s64 = -5, .divisor = 100}},
        {__LINE__, "+3.25#", 5, OK, SREAL, {.s64 = 325, .divisor = 100}},
        {__LINE__, "-#", 1, FORMAT, SREAL},
        {__LINE__, "--1#", 3, FORMAT, SREAL},
        {__LINE__, "9223372036854775808#", 19, RANGE, SREAL},
        {__LINE__, "-922337203685477580.7#", 21, OK, SREAL, {.s64 = -9223372036854775807, .divisor = 10}},
        {__LINE__, "-9223372036854775808#", 20, RANGE, SREAL},
        {__LINE__, "-1", 2, FORMAT, CALL(ValidateUnsignedAsciiReal, size)}, // without a conversion
        {__LINE__, "-1.5", 4, OK, CALL(ValidateSignedAsciiReal, size)},
        // typed reals: numerators too large to be exact in float or double;
        // dividing in a wider type would round twice and can miss the
        // nearest value, written here exactly; ties go to even
        {__LINE__, "18014399583223809", 17, OK, CALL(ValidateUnsignedAsciiReal, size, &out.f), {.f = 0x1.000002p+54f}},
        {__LINE__, "410766920.195533067", 19, OK, CALL(ValidateUnsignedAsciiReal, size, &out.d), {.d = 0x1.87bce48320e75p+28}},
        {__LINE__, "9007199254740995", 16, OK, CALL(ValidateUnsignedAsciiReal, size, &out.d), {.d = 0x1.0000000000002p+53}}, // a tie
        {__LINE__, "16777217", 8, OK, CALL(ValidateSignedAsciiReal, size, &out.f), {.f = 0x1p+24f}}, // a float tie
        {__LINE__, "-0.000000001", 12, OK, CALL(ValidateSignedAsciiReal, size, &out.d), {.d = -0x1.12e0be826d695p-30}},
        {__LINE__, "-1.5", 4, OK, CALL(ValidateSignedAsciiReal, size, &out.ld), {.ld = -1.5L}},
        // bytes
        {__LINE__, "HDR1", 4, PARAM, CALL(ValidateBytes, size, static_cast<const void*>(nullptr))},
        {__LINE__, "xxxy", 4, RANGE, CALL(ValidateBytes, size, 'x')},
        {__LINE__, "xxxx", 4, OK, CALL(ValidateBytes, size, 'x')},
        {__LINE__, "az", 2, RANGE, CALL(ValidateBytes, size, 'b', 'z')},
        {__LINE__, "az", 2, RANGE, CALL(ValidateBytes, size, 'a', 'y')},
        {__LINE__, "az", 2, OK, CALL(ValidateBytes, size, 'a', 'z')},
        {__LINE__, "\x80\xFF", 2, OK, CALL(ValidateBytes, size, '\x80', '\xFF')}, // bytes compare unsigned
        {__LINE__, "0102", 4, RANGE, CALL(ValidateBytes, size, std::vector<unsigned char>{'0', '1'})},
        {__LINE__, "\x7F", 1, RANGE, CALL(ValidateBytes, size, std::vector<unsigned char>{0x80, 0xFF})},
        {__LINE__, std::string("\0?@\x7F\x80\xBF\xC0\xFF", 8), 8, OK, // each quarter's first and last
         CALL(ValidateBytes, size, std::vector<unsigned char>{0, 63, 64, 127, 128, 191, 192, 255})},
        {__LINE__, "SELL", 4, RANGE, CALL(ValidateBytes, size, Texts{"BUY", "SELLS", "sell"})},
        {__LINE__, "SELL", 4, OK, CALL(ValidateBytes, size, Texts{"BUY", "SELL"})},
        // strings: the size bytes, zero bytes included; size 0 empties the text
        {__LINE__, "ab1", 3, OK, CALL(ValidateString, size, '1', 'b', &out.text), {.text = "ab1"}},
        {__LINE__, "ab1", 3, RANGE, CALL(ValidateString, size, '2', 'b', &out.text)},
        {__LINE__, "ab1", 3, RANGE, CALL(ValidateString, size, std::string("ab"), &out.text)},
        {__LINE__, "ab1", 3, OK, CALL(ValidateString, size, std::string("1ab"), &out.text), {.text = "ab1"}},
        {__LINE__, "SELL", 3, RANGE, CALL(ValidateString, size, Texts{"SELL"}, &out.text)},
        {__LINE__, "SELL", 4, OK, CALL(ValidateString, size, Texts{"BUY", "SELL"}, &out.text), {.text = "SELL"}},
        {__LINE__, std::string("a\0b", 3), 3, OK, CALL(ValidateString, size, &out.text), {.text = {"a\0b", 3}}},
        {__LINE__, "", 0, OK, CALL(ValidateString, size, &out.text), {.text = ""}},
        // size 0: a converted value asked for is refused; nothing asked for
        // succeeds without consuming, also at the end
        {__LINE__, "9", 0, PARAM, CALL(ValidateUnsignedAsciiReal, size, &out.ld)},
        {__LINE__, "9", 0, PARAM, CALL(ValidateSignedAsciiReal, size, Reals{}, &out.ld)},
        {__LINE__, "9", 0, PARAM, UREAL},
        {__LINE__, "9", 0, PARAM, CALL(ValidateSignedAsciiReal, size, &out.s64, nullptr)},
        {__LINE__, "9", 0, PARAM, CALL(ValidateSignedAsciiReal, size, static_cast<std::int64_t*>(nullptr), &out.divisor)},
        {__LINE__, "9", 0, OK, CALL(ValidateBytes, size, static_cast<const void*>(nullptr))},
        {__LINE__, "9", 0, OK, CALL(ValidateBytes, size, Texts{})},
        {__LINE__, "9", 0, OK, CALL(ValidateUnsignedAsciiIntegral, size, static_cast<unsigned*>(nullptr))},
        {__LINE__, "9", 0, OK, CALL(ValidateSignedAsciiIntegral, size, 5, 6, nullptr)},
        {__LINE__, "9", 0, OK, CALL(ValidateUnsignedBinaryIntegral, size, LE, std::vector<std::uint64_t>{}, nullptr)},
        {__LINE__, "9", 0, OK, CALL(ValidateSignedAsciiReal, size, 1.0L, 0.0L, nullptr)},
        {__LINE__, "9", 0, OK, CALL(ValidateUnsignedAsciiReal, size, static_cast<float*>(nullptr))},
    });
}

TEST(MessageValidatorTest, ExactBytesCatchOneDifferenceInEveryPosition)
{
    // Sizes 1 to 24 (the short inline compares and the block compare), one
    // flipped byte in each at; a flipped byte after the field is no difference.
    const std::string expected = "abcdefghijklmnopqrstuvwxyz";
    for (unsigned size = 1; size <= 24; ++size)
        for (unsigned at = 0; at <= size; ++at)
        {
            SCOPED_TRACE("size " + std::to_string(size) + ", position " + std::to_string(at));
            const std::string different = expected.substr(0, at) + char(expected[at] ^ 1) + expected.substr(at + 1);
            CheckFrame(expected, size, at < size ? FORMAT : OK, [&](auto& v, auto data, auto destination) {
                return PLAIN_OR_COPY(ValidateBytes, size, different.data());
            });
        }
}

} // namespace
} // namespace Zantor
