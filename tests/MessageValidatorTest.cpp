#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace Zantor {
namespace {

constexpr StatusCode OK = STATUS_CODE_SUCCESS;
constexpr StatusCode PARAM = STATUS_CODE_INVALID_PARAMETER;
constexpr StatusCode FORMAT = STATUS_CODE_INVALID_FORMAT;
constexpr StatusCode RANGE = STATUS_CODE_OUT_OF_RANGE;
constexpr MessageHandler::Endian LE = MessageHandler::ENDIAN_LITTLE;
constexpr MessageHandler::Endian BE = MessageHandler::ENDIAN_BIG;

// A validator over bytes that outlive it: a named string or a literal.
MessageValidator Over(const std::string& bytes)
{
    return MessageValidator(bytes.data(), static_cast<unsigned>(bytes.size()));
}
MessageValidator Over(std::string&&) = delete;
MessageValidator Over(const char* literal)
{
    return MessageValidator(literal, static_cast<unsigned>(std::strlen(literal)));
}

unsigned Size(const std::string& text)
{
    return static_cast<unsigned>(text.size());
}

constexpr unsigned char U8(int byte)
{
    return static_cast<unsigned char>(byte);
}

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

// Runs call(validator, data, destination) with the cursor at rest (one byte
// before it is consumed, so the cursor is not 0), once in the plain form
// (data not null) and once in the Copy form (destination not null). Expects
// status; on success the first size bytes of rest are delivered and the
// cursor advances by size, on failure cursor, data and destination stay.
template <typename F>
void CheckFrame(const std::string& rest, unsigned size, StatusCode status, const F& call)
{
    const std::string message = "#" + rest;
    for (const bool copyForm : {false, true})
    {
        SCOPED_TRACE(copyForm ? "Copy form" : "plain form");
        MessageValidator validator = Over(message);
        ASSERT_EQ(validator.ValidateBytes(1), OK);
        const void* data = &message;
        char destination[64];
        std::memset(destination, '.', sizeof destination);
        EXPECT_EQ(call(validator, copyForm ? nullptr : &data, copyForm ? destination : nullptr), status);
        const unsigned delivered = status == OK ? size : 0;
        EXPECT_EQ(validator.GetCursor(), 1 + delivered);
        if (copyForm)
        {
            ASSERT_LT(delivered, sizeof destination);
            EXPECT_EQ(std::string(destination, delivered), message.substr(1, delivered));
            EXPECT_EQ(destination[delivered], '.');
        }
        else
            EXPECT_EQ(data, status == OK ? message.data() + 1 : static_cast<const void*>(&message));
    }
}

// ---- Calls of any member, each checked in both forms by CheckFrame -----------

// Outputs a call may fill; on failure every one keeps its initial value.
struct Outputs
{
    std::uint64_t u64 = 7;
    std::int64_t s64 = 7;
    std::uint64_t divisor = 7;
    float f = 7;
    double dbl = 7;
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
};

#define CALL(Member, ...)                                                                                            \
    [](MessageValidator& v, [[maybe_unused]] unsigned size, [[maybe_unused]] Outputs& out, const void** data,      \
       void* destination) { return PLAIN_OR_COPY(Member, __VA_ARGS__); }

// Text members (deliversText) put the field's size bytes into out.text.
void RunCalls(const std::vector<CallRow>& rows, bool deliversText = false)
{
    for (const CallRow& row : rows)
    {
        SCOPED_TRACE("row at line " + std::to_string(row.line));
        CheckFrame(row.field, row.size, row.status, [&](MessageValidator& v, const void** data, void* destination) {
            Outputs out;
            const StatusCode status = row.call(v, row.size, out, data, destination);
            if (status != OK)
            {
                EXPECT_TRUE(out == Outputs()) << "an output changed on failure";
            }
            else if (deliversText)
            {
                EXPECT_EQ(out.text, row.field.substr(0, row.size));
            }
            return status;
        });
    }
}

// ---- Every integer check, every width, both byte orders ----------------------

enum Width
{
    W8,
    W16,
    W32,
    W64
};

// The integer families.
enum Family
{
    UDEC, // unsigned decimal text
    SDEC, // signed decimal text
    HEX,  // hexadecimal text
    UBIN, // unsigned binary
    SBIN  // signed binary
};

bool HasByteOrder(Family family)
{
    return family == HEX || family == UBIN || family == SBIN;
}

// The same field in little-endian order: binary bytes reversed, hexadecimal
// pairs reversed (an odd text is left as it is).
std::string LittleEndian(Family family, const std::string& field)
{
    if (family == HEX)
    {
        if (field.size() % 2 != 0)
            return field;
        std::string reversed;
        for (std::size_t i = field.size(); i >= 2; i -= 2)
            reversed += field.substr(i - 2, 2);
        return reversed;
    }
    return std::string(field.rbegin(), field.rend());
}

// The typed member of a family for T.
template <typename T>
StatusCode Typed(Family family, MessageValidator& v, unsigned size, MessageHandler::Endian endian, T* value,
                 const void** data, void* destination)
{
    if constexpr (std::is_signed_v<T>)
        return family == SDEC ? PLAIN_OR_COPY(ValidateSignedAsciiIntegral, size, value)
                              : PLAIN_OR_COPY(ValidateSignedBinaryIntegral, size, endian, value);
    else if (family == UDEC)
        return PLAIN_OR_COPY(ValidateUnsignedAsciiIntegral, size, value);
    else if (family == HEX)
        return PLAIN_OR_COPY(ValidateAsciiHexadecimalIntegral, size, endian, value);
    else
        return PLAIN_OR_COPY(ValidateUnsignedBinaryIntegral, size, endian, value);
}

// The 64-bit range member (bounds = {min, max}) or allowed-list member
// (bounds = the list) of a family; for unsigned families bounds and value
// are bit patterns.
StatusCode Bounded(Family family, MessageValidator& v, unsigned size, MessageHandler::Endian endian, bool list,
                   const std::vector<std::int64_t>& bounds, std::int64_t* value, const void** data, void* destination)
{
    if (family == SDEC)
        return list ? PLAIN_OR_COPY(ValidateSignedAsciiIntegral, size, bounds, value)
                    : PLAIN_OR_COPY(ValidateSignedAsciiIntegral, size, bounds[0], bounds[1], value);
    if (family == SBIN)
        return list ? PLAIN_OR_COPY(ValidateSignedBinaryIntegral, size, endian, bounds, value)
                    : PLAIN_OR_COPY(ValidateSignedBinaryIntegral, size, endian, bounds[0], bounds[1], value);
    const std::vector<std::uint64_t> u(bounds.begin(), bounds.end());
    std::uint64_t converted = 0;
    std::uint64_t* out = value != nullptr ? &converted : nullptr;
    StatusCode status;
    if (family == UDEC)
        status = list ? PLAIN_OR_COPY(ValidateUnsignedAsciiIntegral, size, u, out)
                      : PLAIN_OR_COPY(ValidateUnsignedAsciiIntegral, size, u[0], u[1], out);
    else if (family == HEX)
        status = list ? PLAIN_OR_COPY(ValidateAsciiHexadecimalIntegral, size, endian, u, out)
                      : PLAIN_OR_COPY(ValidateAsciiHexadecimalIntegral, size, endian, u[0], u[1], out);
    else
        status = list ? PLAIN_OR_COPY(ValidateUnsignedBinaryIntegral, size, endian, u, out)
                      : PLAIN_OR_COPY(ValidateUnsignedBinaryIntegral, size, endian, u[0], u[1], out);
    if (status == OK && value != nullptr)
        *value = static_cast<std::int64_t>(converted);
    return status;
}

// The member of a family without conversion.
StatusCode Unconverted(Family family, MessageValidator& v, unsigned size, MessageHandler::Endian endian,
                       const void** data, void* destination)
{
    switch (family)
    {
    case UDEC: return PLAIN_OR_COPY(ValidateUnsignedAsciiIntegral, size);
    case SDEC: return PLAIN_OR_COPY(ValidateSignedAsciiIntegral, size);
    case HEX: return PLAIN_OR_COPY(ValidateAsciiHexadecimalIntegral, size, endian);
    case UBIN: return PLAIN_OR_COPY(ValidateUnsignedBinaryIntegral, size, endian);
    case SBIN: return PLAIN_OR_COPY(ValidateSignedBinaryIntegral, size, endian);
    }
    return STATUS_CODE_UNKNOWN;
}

constexpr unsigned WHOLE = ~0u; // the size asked for is the field's size

struct IntegerRow
{
    int line;
    Family family;
    Width width;
    std::string field;  // text or bytes; hexadecimal pairs and binary bytes most significant first
    unsigned size;      // bytes asked for; WHOLE for the field's size
    StatusCode status;  // of the typed member
    std::int64_t value; // the converted value, as its bit pattern for unsigned rows
};

// The row's field and, for a whole decimal field, the same text with zeros
// after the sign and, for a signed text without a sign, with a '+': all read
// the same.
std::vector<std::string> Spellings(const IntegerRow& row)
{
    if ((row.family != UDEC && row.family != SDEC) || row.size != WHOLE)
        return {row.field};
    const std::size_t sign =
        row.family == SDEC && !row.field.empty() && (row.field[0] == '-' || row.field[0] == '+') ? 1 : 0;
    const std::string zeros = row.field.substr(0, sign) + "000" + row.field.substr(sign);
    if (row.family == UDEC || sign != 0)
        return {row.field, zeros};
    return {row.field, zeros, "+" + row.field, "+" + zeros};
}

// The typed member for T, the 64-bit range member bounded by T's limits (the
// signed decimal limit is symmetric, as the typed members are), the list
// member holding the row's value and the member without conversion, each in
// both forms and on the field in both byte orders.
template <typename T>
void RunIntegerRow(const IntegerRow& row)
{
    using Orders = std::vector<MessageHandler::Endian>;
    const std::int64_t max = static_cast<std::int64_t>(std::numeric_limits<T>::max());
    const std::vector<std::int64_t> limits = {
        row.family == SDEC ? -max : static_cast<std::int64_t>(std::numeric_limits<T>::min()), max};
    for (const MessageHandler::Endian endian : HasByteOrder(row.family) ? Orders{BE, LE} : Orders{LE})
    {
        for (const std::string& spelling : Spellings(row))
        {
            SCOPED_TRACE(std::string(endian == BE ? "big-endian" : "little-endian") +
                         (HasByteOrder(row.family) ? "" : ", \"" + spelling + "\""));
            const std::string field =
                HasByteOrder(row.family) && endian == LE ? LittleEndian(row.family, spelling) : spelling;
            const unsigned size = row.size == WHOLE ? Size(field) : row.size;
            // A whole field is followed by a byte that would spoil it if read.
            const std::string rest = row.size == WHOLE ? field + "#" : field;
            CheckFrame(rest, size, row.status, [&](MessageValidator& v, const void** data, void* destination) {
                T value = static_cast<T>(0x5A);
                const StatusCode status = Typed<T>(row.family, v, size, endian, &value, data, destination);
                EXPECT_EQ(value, status == OK ? static_cast<T>(row.value) : static_cast<T>(0x5A));
                return status;
            });
            for (const bool list : {false, true})
            {
                SCOPED_TRACE(list ? "list member" : "range member");
                CheckFrame(rest, size, row.status, [&](MessageValidator& v, const void** data, void* destination) {
                    std::int64_t value = 0x5A;
                    const StatusCode status = Bounded(row.family, v, size, endian, list,
                                                      list ? std::vector<std::int64_t>{row.value} : limits, &value,
                                                      data, destination);
                    EXPECT_EQ(value, status == OK ? row.value : 0x5A);
                    return status;
                });
            }
            // Without a conversion there is no overflow, and size 0 asks for nothing.
            SCOPED_TRACE("member without conversion");
            CheckFrame(rest, size, (row.status == RANGE || size == 0) ? OK : row.status,
                       [&](MessageValidator& v, const void** data, void* destination) {
                           return Unconverted(row.family, v, size, endian, data, destination);
                       });
        }
    }
}

template <typename Signed, typename Unsigned>
void RunIntegerRowAs(const IntegerRow& row)
{
    if (row.family == SDEC || row.family == SBIN)
        RunIntegerRow<Signed>(row);
    else
        RunIntegerRow<Unsigned>(row);
}

// The row with the types of its width; long is 32 bits on some platforms and
// 64 on others: its members follow the rows of its width.
void RunIntegerRowOfEveryType(const IntegerRow& row)
{
    SCOPED_TRACE("row at line " + std::to_string(row.line));
    switch (row.width)
    {
    case W8: RunIntegerRowAs<signed char, unsigned char>(row); break;
    case W16: RunIntegerRowAs<short, unsigned short>(row); break;
    case W32: RunIntegerRowAs<int, unsigned int>(row); break;
    case W64: RunIntegerRowAs<long long, unsigned long long>(row); break;
    }
    if (row.width == (sizeof(long) == 4 ? W32 : W64))
    {
        SCOPED_TRACE("long");
        RunIntegerRowAs<long, unsigned long>(row);
    }
}

TEST(MessageValidatorTest, IntegerChecksForEveryWidthAndByteOrder)
{
    const std::string nine = Hex("010000000000000000"); // 2^64: one byte too wide
    const std::string counting = Hex("010203040506070809");
    const IntegerRow rows[] = {
        // unsigned decimal: limits side by side, character class (a wrong
        // character wins over an overflow), past the end, size 0
        {__LINE__, UDEC, W8, "255", WHOLE, OK, 255},
        {__LINE__, UDEC, W8, "256", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W8, "999", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W8, "0", WHOLE, OK, 0},
        {__LINE__, UDEC, W8, "25x", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W8, "999x", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W8, "255", 4, PARAM, 0},
        {__LINE__, UDEC, W16, "65535", WHOLE, OK, 65535},
        {__LINE__, UDEC, W16, "65536", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W16, "0000065535", WHOLE, OK, 65535},
        {__LINE__, UDEC, W16, "0000065536", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W16, "6553.", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W16, "65535", 6, PARAM, 0},
        {__LINE__, UDEC, W32, "4294967295", WHOLE, OK, 4294967295},
        {__LINE__, UDEC, W32, "4294967296", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W32, "4294967290", WHOLE, OK, 4294967290},
        {__LINE__, UDEC, W32, "4294967300", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W32, "9999999999", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W32, "42949672950", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W32, "00000000000000000000004294967295", WHOLE, OK, 4294967295},
        {__LINE__, UDEC, W32, "00000000000000000000004294967296", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W32, "1000000000", WHOLE, OK, 1000000000},
        {__LINE__, UDEC, W32, "12345678", WHOLE, OK, 12345678},
        {__LINE__, UDEC, W32, "123456789", WHOLE, OK, 123456789},
        {__LINE__, UDEC, W32, "256", WHOLE, OK, 256},
        {__LINE__, UDEC, W32, "42949672-5", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W32, "12a", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W32, "12a4", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W32, " 12", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W32, "12 ", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W32, "+12", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W32, "-12", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W32, "1234567/", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W32, "1234567:", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W32, "/2345678", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W32, "12345678:0", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W32, "99999999999x", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W32, "4294967295", 11, PARAM, 0},
        {__LINE__, UDEC, W64, "18446744073709551615", WHOLE, OK, -1},
        {__LINE__, UDEC, W64, "18446744073709551616", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W64, "0018446744073709551615", WHOLE, OK, -1},
        {__LINE__, UDEC, W64, "0018446744073709551616", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W64, "18446744073709551619", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W64, "18446744073709551610", WHOLE, OK, -6},
        {__LINE__, UDEC, W64, "99999999999999999999", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W64, "184467440737095516150", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W64, "9999999999999999999", WHOLE, OK, static_cast<std::int64_t>(9999999999999999999u)},
        {__LINE__, UDEC, W64, "4294967296", WHOLE, OK, 4294967296},
        {__LINE__, UDEC, W64, "1844674407370955161 ", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W64, std::string("1\0", 2), WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W64, "9999999999999999999999x", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W64, "18446744073709551615", 21, PARAM, 0},
        // signed decimal: both limits (symmetric), signs, a lone sign, character
        // class, past the end, size 0
        {__LINE__, SDEC, W8, "127", WHOLE, OK, 127},
        {__LINE__, SDEC, W8, "128", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W8, "-127", WHOLE, OK, -127},
        {__LINE__, SDEC, W8, "-128", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W8, "+0127", WHOLE, OK, 127},
        {__LINE__, SDEC, W8, "1+2", WHOLE, FORMAT, 0},
        {__LINE__, SDEC, W8, "-1-", WHOLE, FORMAT, 0},
        {__LINE__, SDEC, W8, "-x", WHOLE, FORMAT, 0},
        {__LINE__, SDEC, W8, "x", WHOLE, FORMAT, 0},
        {__LINE__, SDEC, W8, "-12", 4, PARAM, 0},
        {__LINE__, SDEC, W16, "32767", WHOLE, OK, 32767},
        {__LINE__, SDEC, W16, "32768", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W16, "-32767", WHOLE, OK, -32767},
        {__LINE__, SDEC, W16, "-32768", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W16, "--1", WHOLE, FORMAT, 0},
        {__LINE__, SDEC, W16, "-32767", 7, PARAM, 0},
        {__LINE__, SDEC, W32, "2147483647", WHOLE, OK, 2147483647},
        {__LINE__, SDEC, W32, "2147483648", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W32, "-2147483647", WHOLE, OK, -2147483647},
        {__LINE__, SDEC, W32, "-2147483648", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W32, "-9999999999", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W32, "12", WHOLE, OK, 12},
        {__LINE__, SDEC, W32, "-12", WHOLE, OK, -12},
        {__LINE__, SDEC, W32, "-128", WHOLE, OK, -128},
        {__LINE__, SDEC, W32, "-", WHOLE, OK, 0},
        {__LINE__, SDEC, W32, "+", WHOLE, OK, 0},
        {__LINE__, SDEC, W32, "-0", WHOLE, OK, 0},
        {__LINE__, SDEC, W32, "1-2", WHOLE, FORMAT, 0},
        {__LINE__, SDEC, W32, "12-", WHOLE, FORMAT, 0},
        {__LINE__, SDEC, W32, "--1", WHOLE, FORMAT, 0},
        {__LINE__, SDEC, W32, "+-1", WHOLE, FORMAT, 0},
        {__LINE__, SDEC, W32, " -1", WHOLE, FORMAT, 0},
        {__LINE__, SDEC, W32, "-214748364-", WHOLE, FORMAT, 0},
        {__LINE__, SDEC, W32, "-2147483647", 12, PARAM, 0},
        {__LINE__, SDEC, W64, "9223372036854775807", WHOLE, OK, 9223372036854775807},
        {__LINE__, SDEC, W64, "9223372036854775808", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W64, "-9223372036854775807", WHOLE, OK, -9223372036854775807},
        {__LINE__, SDEC, W64, "-9223372036854775808", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W64, "-18446744073709551616", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W64, "-99999999999999999999999", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W64, "+922337203685477580x", WHOLE, FORMAT, 0},
        {__LINE__, SDEC, W64, "-9999999999999999999999x", WHOLE, FORMAT, 0},
        {__LINE__, SDEC, W64, "-9223372036854775807", 21, PARAM, 0},
        // hexadecimal: limits, zero high bytes, both cases, character class in
        // each position of a pair, odd sizes (even with a wrong character),
        // over-long (more than 16 characters), past the end, size 0
        {__LINE__, HEX, W8, "FF", WHOLE, OK, 0xFF},
        {__LINE__, HEX, W8, "ff", WHOLE, OK, 0xFF},
        {__LINE__, HEX, W8, "0001", WHOLE, OK, 1},
        {__LINE__, HEX, W8, "00ff", WHOLE, OK, 0xFF},
        {__LINE__, HEX, W8, "00FF", WHOLE, OK, 0xFF},
        {__LINE__, HEX, W8, "0100", WHOLE, RANGE, 0},
        {__LINE__, HEX, W8, "01FF", WHOLE, RANGE, 0},
        {__LINE__, HEX, W8, "0g", WHOLE, FORMAT, 0},
        {__LINE__, HEX, W8, "zz", WHOLE, FORMAT, 0},
        {__LINE__, HEX, W8, "0FF", WHOLE, PARAM, 0},
        {__LINE__, HEX, W8, "12x", WHOLE, PARAM, 0},
        {__LINE__, HEX, W8, "0000000000000000FF", WHOLE, PARAM, 0},
        {__LINE__, HEX, W8, "FF", 4, PARAM, 0},
        {__LINE__, HEX, W16, "FFFF", WHOLE, OK, 0xFFFF},
        {__LINE__, HEX, W16, "0100", WHOLE, OK, 0x100},
        {__LINE__, HEX, W16, "0001", WHOLE, OK, 1},
        {__LINE__, HEX, W16, "00FfFf", WHOLE, OK, 0xFFFF},
        {__LINE__, HEX, W16, "00FFFF", WHOLE, OK, 0xFFFF},
        {__LINE__, HEX, W16, "010000", WHOLE, RANGE, 0},
        {__LINE__, HEX, W16, "01FFFF", WHOLE, RANGE, 0},
        {__LINE__, HEX, W16, "FF:F", WHOLE, FORMAT, 0},
        {__LINE__, HEX, W16, "0G", WHOLE, FORMAT, 0},
        {__LINE__, HEX, W16, "0g", WHOLE, FORMAT, 0},
        {__LINE__, HEX, W16, "G0", WHOLE, FORMAT, 0},
        {__LINE__, HEX, W16, "0:", WHOLE, FORMAT, 0},
        {__LINE__, HEX, W16, "@0", WHOLE, FORMAT, 0},
        {__LINE__, HEX, W16, "0/", WHOLE, FORMAT, 0},
        {__LINE__, HEX, W16, "0 ", WHOLE, FORMAT, 0},
        {__LINE__, HEX, W16, "FFFFF", WHOLE, PARAM, 0},
        {__LINE__, HEX, W16, "00000000000000FFFF", WHOLE, PARAM, 0},
        {__LINE__, HEX, W16, "0100", 3, PARAM, 0},
        {__LINE__, HEX, W16, "FFFF", 6, PARAM, 0},
        {__LINE__, HEX, W32, "FFFFFFFF", WHOLE, OK, 0xFFFFFFFF},
        {__LINE__, HEX, W32, "12345678", WHOLE, OK, 0x12345678},
        {__LINE__, HEX, W32, "00FFFFFFFF", WHOLE, OK, 0xFFFFFFFF},
        {__LINE__, HEX, W32, "0000000001", WHOLE, OK, 1},
        {__LINE__, HEX, W32, "0100000000", WHOLE, RANGE, 0},
        {__LINE__, HEX, W32, "01FFFFFFFF", WHOLE, RANGE, 0},
        {__LINE__, HEX, W32, "FFFFFFFF00", WHOLE, RANGE, 0},
        {__LINE__, HEX, W32, "FFFFFF@F", WHOLE, FORMAT, 0},
        {__LINE__, HEX, W32, "FFFFFFFFF", WHOLE, PARAM, 0},
        {__LINE__, HEX, W32, "0000000000FFFFFFFF", WHOLE, PARAM, 0},
        {__LINE__, HEX, W32, "FFFFFFFF", 10, PARAM, 0},
        {__LINE__, HEX, W64, "FFFFFFFFFFFFFFFF", WHOLE, OK, -1},
        {__LINE__, HEX, W64, "8000000000000001", WHOLE, OK, std::numeric_limits<std::int64_t>::min() + 1},
        {__LINE__, HEX, W64, "0123456789ABCDEF", WHOLE, OK, 0x0123456789ABCDEF},
        {__LINE__, HEX, W64, "efcdab8967452301", WHOLE, OK, static_cast<std::int64_t>(0xEFCDAB8967452301)},
        {__LINE__, HEX, W64, "aBcDeF", WHOLE, OK, 0xABCDEF},
        {__LINE__, HEX, W64, "FFFFFFFFFFFFFFG0", WHOLE, FORMAT, 0},
        {__LINE__, HEX, W64, "x000000000000000", WHOLE, FORMAT, 0},
        {__LINE__, HEX, W64, "1", WHOLE, PARAM, 0},
        {__LINE__, HEX, W64, "123", WHOLE, PARAM, 0},
        {__LINE__, HEX, W64, "000000000000000", WHOLE, PARAM, 0},
        {__LINE__, HEX, W64, "0FFFFFFFFFFFFFFFF", WHOLE, PARAM, 0},
        {__LINE__, HEX, W64, "010000000000000000", WHOLE, PARAM, 0}, // 2^64 needs a ninth pair
        {__LINE__, HEX, W64, "000000000000000000", WHOLE, PARAM, 0},
        {__LINE__, HEX, W64, "01FFFFFFFFFFFFFFFF", WHOLE, PARAM, 0},
        {__LINE__, HEX, W64, "FFFFFFFFFFFFFF", 16, PARAM, 0},
        // unsigned binary: limits, zero high bytes, fewer bytes than the type,
        // nine bytes, past the end, size 0
        {__LINE__, UBIN, W8, Hex("FF"), WHOLE, OK, 0xFF},
        {__LINE__, UBIN, W8, Hex("0000FF"), WHOLE, OK, 0xFF},
        {__LINE__, UBIN, W8, Hex("00000000000000FF"), WHOLE, OK, 0xFF},
        {__LINE__, UBIN, W8, Hex("0100"), WHOLE, RANGE, 0},
        {__LINE__, UBIN, W8, Hex("010203"), WHOLE, RANGE, 0},
        {__LINE__, UBIN, W8, Hex("030201"), WHOLE, RANGE, 0},
        {__LINE__, UBIN, W8, nine, WHOLE, PARAM, 0},
        {__LINE__, UBIN, W8, counting, WHOLE, PARAM, 0},
        {__LINE__, UBIN, W8, Hex("FF"), 2, PARAM, 0},
        {__LINE__, UBIN, W16, Hex("FFFF"), WHOLE, OK, 0xFFFF},
        {__LINE__, UBIN, W16, Hex("1234"), WHOLE, OK, 0x1234},
        {__LINE__, UBIN, W16, Hex("00FFFF"), WHOLE, OK, 0xFFFF},
        {__LINE__, UBIN, W16, Hex("0000FFFF"), WHOLE, OK, 0xFFFF},
        {__LINE__, UBIN, W16, Hex("010000"), WHOLE, RANGE, 0},
        {__LINE__, UBIN, W16, Hex("00010000"), WHOLE, RANGE, 0},
        {__LINE__, UBIN, W16, Hex("8000000000000000"), WHOLE, RANGE, 0},
        {__LINE__, UBIN, W16, nine, WHOLE, PARAM, 0},
        {__LINE__, UBIN, W16, Hex("FFFF"), 3, PARAM, 0},
        {__LINE__, UBIN, W32, Hex("FFFFFFFF"), WHOLE, OK, 0xFFFFFFFF},
        {__LINE__, UBIN, W32, Hex("00FFFFFFFF"), WHOLE, OK, 0xFFFFFFFF},
        {__LINE__, UBIN, W32, Hex("00000000FFFFFFFF"), WHOLE, OK, 0xFFFFFFFF},
        {__LINE__, UBIN, W32, Hex("123456"), WHOLE, OK, 0x123456},
        {__LINE__, UBIN, W32, Hex("010203"), WHOLE, OK, 0x010203},
        {__LINE__, UBIN, W32, Hex("030201"), WHOLE, OK, 0x030201},
        {__LINE__, UBIN, W32, Hex("0100000000"), WHOLE, RANGE, 0},
        {__LINE__, UBIN, W32, Hex("8000000000000000"), WHOLE, RANGE, 0},
        {__LINE__, UBIN, W32, nine, WHOLE, PARAM, 0},
        {__LINE__, UBIN, W32, Hex("FFFFFFFF"), 5, PARAM, 0},
        {__LINE__, UBIN, W64, Hex("FFFFFFFFFFFFFFFF"), WHOLE, OK, -1},
        {__LINE__, UBIN, W64, Hex("0102030405060708"), WHOLE, OK, 0x0102030405060708},
        {__LINE__, UBIN, W64, Hex("0807060504030201"), WHOLE, OK, 0x0807060504030201},
        {__LINE__, UBIN, W64, Hex("0102030405"), WHOLE, OK, 0x0102030405},
        {__LINE__, UBIN, W64, Hex("80000000000000"), WHOLE, OK, 0x80000000000000},
        {__LINE__, UBIN, W64, nine, WHOLE, PARAM, 0},
        {__LINE__, UBIN, W64, Hex("090807060504030201"), WHOLE, PARAM, 0},
        {__LINE__, UBIN, W64, Hex("FFFFFFFFFFFFFF"), 8, PARAM, 0},
        // signed binary: both limits and one past each (in a wider field), sign
        // extension of a narrower and a wider field, nine bytes, past the end,
        // size 0
        {__LINE__, SBIN, W8, Hex("7F"), WHOLE, OK, 127},
        {__LINE__, SBIN, W8, Hex("80"), WHOLE, OK, -128},
        {__LINE__, SBIN, W8, Hex("FF"), WHOLE, OK, -1},
        {__LINE__, SBIN, W8, Hex("FF80"), WHOLE, OK, -128},
        {__LINE__, SBIN, W8, Hex("FFFFFF"), WHOLE, OK, -1},
        {__LINE__, SBIN, W8, Hex("FFFFFFFFFFFFFF80"), WHOLE, OK, -128},
        {__LINE__, SBIN, W8, Hex("0080"), WHOLE, RANGE, 0},
        {__LINE__, SBIN, W8, Hex("FF7F"), WHOLE, RANGE, 0},
        {__LINE__, SBIN, W8, nine, WHOLE, PARAM, 0},
        {__LINE__, SBIN, W8, Hex("FF"), 2, PARAM, 0},
        {__LINE__, SBIN, W16, Hex("7FFF"), WHOLE, OK, 32767},
        {__LINE__, SBIN, W16, Hex("8000"), WHOLE, OK, -32768},
        {__LINE__, SBIN, W16, Hex("FFFFFE"), WHOLE, OK, -2},
        {__LINE__, SBIN, W16, Hex("FF8000"), WHOLE, OK, -32768},
        {__LINE__, SBIN, W16, Hex("008000"), WHOLE, RANGE, 0},
        {__LINE__, SBIN, W16, Hex("FF7FFF"), WHOLE, RANGE, 0},
        {__LINE__, SBIN, W16, nine, WHOLE, PARAM, 0},
        {__LINE__, SBIN, W16, Hex("7FFF"), 3, PARAM, 0},
        {__LINE__, SBIN, W32, Hex("7FFFFFFF"), WHOLE, OK, 2147483647},
        {__LINE__, SBIN, W32, Hex("80000000"), WHOLE, OK, -2147483647 - 1},
        {__LINE__, SBIN, W32, Hex("800000"), WHOLE, OK, -8388608},
        {__LINE__, SBIN, W32, Hex("FEFFFF"), WHOLE, OK, -65537},
        {__LINE__, SBIN, W32, Hex("FF7F"), WHOLE, OK, -129},
        {__LINE__, SBIN, W32, Hex("0080000000"), WHOLE, RANGE, 0},
        {__LINE__, SBIN, W32, Hex("FF7FFFFFFF"), WHOLE, RANGE, 0},
        {__LINE__, SBIN, W32, Hex("FFFFFFFF7FFFFFFF"), WHOLE, RANGE, 0},
        {__LINE__, SBIN, W32, nine, WHOLE, PARAM, 0},
        {__LINE__, SBIN, W32, Hex("7FFFFFFF"), 5, PARAM, 0},
        {__LINE__, SBIN, W64, Hex("7FFFFFFFFFFFFFFF"), WHOLE, OK, std::numeric_limits<std::int64_t>::max()},
        {__LINE__, SBIN, W64, Hex("8000000000000000"), WHOLE, OK, std::numeric_limits<std::int64_t>::min()},
        {__LINE__, SBIN, W64, Hex("FFFFFFFFFFFFFF"), WHOLE, OK, -1},
        {__LINE__, SBIN, W64, Hex("8000000000"), WHOLE, OK, -549755813888},
        {__LINE__, SBIN, W64, nine, WHOLE, PARAM, 0},
        {__LINE__, SBIN, W64, counting, WHOLE, PARAM, 0},
        {__LINE__, SBIN, W64, Hex("80000000000000"), 8, PARAM, 0},
    };
    for (const IntegerRow& row : rows)
        RunIntegerRowOfEveryType(row);
    // Size 0 with a value asked for, in every family and width.
    for (const Family family : {UDEC, SDEC, HEX, UBIN, SBIN})
        for (const Width width : {W8, W16, W32, W64})
            RunIntegerRowOfEveryType({__LINE__, family, width, "", 0, PARAM, 0});
}

TEST(MessageValidatorTest, RangeAndListMembers)
{
    struct Row
    {
        int line;
        Family family;
        MessageHandler::Endian endian;
        std::string field;
        bool list;                        // bounds is the allowed list, else {min, max}
        std::vector<std::int64_t> bounds; // bit patterns for unsigned families
        StatusCode status;
        std::int64_t value;
    };
    const Row rows[] = {
        {__LINE__, UDEC, LE, "01", false, {1, 12}, OK, 1},
        {__LINE__, UDEC, LE, "12", false, {1, 11}, RANGE, 0},
        {__LINE__, UDEC, LE, "12", false, {12, 12}, OK, 12},
        {__LINE__, UDEC, LE, "00", false, {1, 12}, RANGE, 0},
        {__LINE__, UDEC, LE, "00", false, {5, 4}, RANGE, 0}, // min > max refuses all
        {__LINE__, UDEC, LE, "4", false, {0, 9}, OK, 4},
        {__LINE__, UDEC, LE, "256", false, {0, 255}, RANGE, 0},
        {__LINE__, UDEC, LE, "256", false, {0, 256}, OK, 256},
        {__LINE__, UDEC, LE, "12x4", false, {0, 9999}, FORMAT, 0},
        {__LINE__, UDEC, LE, "18446744073709551615", true, {3, -1}, OK, -1},
        {__LINE__, UDEC, LE, "3", true, {3, -1}, OK, 3},
        {__LINE__, UDEC, LE, "4", true, {3, -1}, RANGE, 0},
        {__LINE__, UDEC, LE, "4", true, {}, RANGE, 0},
        {__LINE__, UDEC, LE, "256", true, {255}, RANGE, 0},
        {__LINE__, UDEC, LE, "256", true, {256}, OK, 256},
        {__LINE__, SDEC, LE, "-5", false, {-4, 4}, RANGE, 0},
        {__LINE__, SDEC, LE, "-5", false, {-5, -5}, OK, -5},
        {__LINE__, SDEC, LE, "-128", false, {-127, 0}, RANGE, 0},
        {__LINE__, SDEC, LE, "-128", false, {-128, 0}, OK, -128},
        {__LINE__, SDEC, LE, "+7", true, {-7, 8}, RANGE, 0},
        {__LINE__, SDEC, LE, "+7", true, {-7, 7}, OK, 7},
        {__LINE__, SDEC, LE, "-128", true, {128}, RANGE, 0},
        {__LINE__, SDEC, LE, "-128", true, {-128}, OK, -128},
        {__LINE__, HEX, LE, "0A", false, {11, 20}, RANGE, 0},
        {__LINE__, HEX, BE, "0A", false, {10, 10}, OK, 10},
        {__LINE__, HEX, BE, "0100", false, {0, 255}, RANGE, 0},
        {__LINE__, HEX, BE, "0100", false, {256, 256}, OK, 256},
        {__LINE__, HEX, BE, "0B", true, {10, 12}, RANGE, 0},
        {__LINE__, HEX, BE, "0B", true, {10, 11}, OK, 11},
        {__LINE__, HEX, LE, "0100", true, {256}, RANGE, 0},
        {__LINE__, HEX, LE, "0100", true, {1}, OK, 1},
        {__LINE__, UBIN, BE, Hex("0010"), false, {0, 15}, RANGE, 0},
        {__LINE__, UBIN, BE, Hex("0010"), false, {16, 16}, OK, 16},
        {__LINE__, UBIN, BE, Hex("010203"), false, {0, 66050}, RANGE, 0},
        {__LINE__, UBIN, BE, Hex("010203"), false, {0, 66051}, OK, 66051},
        {__LINE__, UBIN, LE, std::string(9, '\0'), false, {0, 0}, PARAM, 0},
        {__LINE__, UBIN, LE, Hex("010203"), true, {66051}, RANGE, 0},
        {__LINE__, UBIN, LE, Hex("010203"), true, {0x030201}, OK, 0x030201},
        {__LINE__, UBIN, LE, Hex("01"), true, {2}, RANGE, 0},
        {__LINE__, SBIN, BE, Hex("FFF0"), false, {-15, 15}, RANGE, 0},
        {__LINE__, SBIN, BE, Hex("FF7F"), false, {-128, 0}, RANGE, 0},
        {__LINE__, SBIN, BE, Hex("FF7F"), false, {-129, 0}, OK, -129},
        {__LINE__, SBIN, BE, Hex("FFF0"), true, {-16, 16}, OK, -16},
        {__LINE__, SBIN, BE, Hex("FF7F"), true, {0xFF7F}, RANGE, 0},
        {__LINE__, SBIN, BE, Hex("FF7F"), true, {-129}, OK, -129},
        {__LINE__, SBIN, LE, Hex("01"), true, {}, RANGE, 0},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE("row at line " + std::to_string(row.line));
        const unsigned size = Size(row.field);
        CheckFrame(row.field + "#", size, row.status, [&](MessageValidator& v, const void** data, void* destination) {
            std::int64_t value = 0x5A;
            const StatusCode status =
                Bounded(row.family, v, size, row.endian, row.list, row.bounds, &value, data, destination);
            EXPECT_EQ(value, status == OK ? row.value : 0x5A);
            return status;
        });
        // No value asked for: the same answer.
        MessageValidator validator = Over(row.field);
        EXPECT_EQ(Bounded(row.family, validator, size, row.endian, row.list, row.bounds, nullptr, nullptr, nullptr),
                  row.status);
    }
}

TEST(MessageValidatorTest, UnsignedDecimalAgreesWithReferenceOnRandomTexts)
{
    // Random digit strings of 1 to 24 characters against a reference that
    // accumulates with an overflow check on every digit.
    std::mt19937 random(7);
    for (int round = 0; round < 20000; ++round)
    {
        const unsigned length = 1 + random() % 24;
        std::string text;
        for (unsigned i = 0; i < length; ++i)
            text += static_cast<char>('0' + (i < length / 2 && random() % 2 ? 0 : random() % 10));
        // Reference: compare the text without leading zeros with the limit's
        // text, and convert with strtoull when it fits.
        const std::size_t first = text.find_first_not_of('0');
        const std::string significant = first == std::string::npos ? "0" : text.substr(first);
        const std::string limit = "18446744073709551615";
        const bool overflow = significant.size() > limit.size() ||
                              (significant.size() == limit.size() && significant > limit);
        const std::uint64_t reference = overflow ? 0 : std::strtoull(significant.c_str(), nullptr, 10);
        SCOPED_TRACE(text);
        std::uint64_t value64 = 0;
        std::uint32_t value32 = 0;
        MessageValidator validator = Over(text);
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(length, &value64), overflow ? RANGE : OK);
        if (!overflow)
        {
            EXPECT_EQ(value64, static_cast<std::uint64_t>(reference));
        }
        MessageValidator validator32 = Over(text);
        const bool overflow32 = overflow || reference > 4294967295u;
        EXPECT_EQ(validator32.ValidateUnsignedAsciiIntegral(length, &value32), overflow32 ? RANGE : OK);
        if (!overflow32)
        {
            EXPECT_EQ(value32, static_cast<std::uint32_t>(reference));
        }
    }
}

// ---- Round trips with MessageBuilder ----------------------------------------

// Values written by MessageBuilder in both orders and all widths read back.
template <typename T>
void RoundTrip(StatusCode (MessageBuilder::*append)(T, MessageHandler::Endian), MessageHandler::Endian endian,
               std::mt19937_64& random)
{
    std::vector<T> values = {0, 1, std::numeric_limits<T>::max(), std::numeric_limits<T>::min(),
                             static_cast<T>(std::numeric_limits<T>::max() - 1)};
    for (int i = 0; i < 50; ++i)
        values.push_back(static_cast<T>(random()));
    MessageBuilder builder;
    for (T value : values)
        ASSERT_EQ((builder.*append)(value, endian), OK);
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    for (T expected : values)
    {
        T value = 0;
        if constexpr (std::is_signed_v<T>)
            ASSERT_EQ(validator.ValidateSignedBinaryIntegral(sizeof(T), endian, &value), OK);
        else
            ASSERT_EQ(validator.ValidateUnsignedBinaryIntegral(sizeof(T), endian, &value), OK);
        EXPECT_EQ(value, expected);
    }
    EXPECT_TRUE(validator.IsAtEnd());
}

TEST(MessageValidatorTest, BinaryRoundTripWithBuilder)
{
    std::mt19937_64 random(11);
    for (MessageHandler::Endian endian : {LE, BE})
    {
        SCOPED_TRACE(endian == LE ? "little-endian" : "big-endian");
        RoundTrip<std::uint8_t>(&MessageBuilder::AppendUInt8, endian, random);
        RoundTrip<std::int8_t>(&MessageBuilder::AppendInt8, endian, random);
        RoundTrip<std::uint16_t>(&MessageBuilder::AppendUInt16, endian, random);
        RoundTrip<std::int16_t>(&MessageBuilder::AppendInt16, endian, random);
        RoundTrip<std::uint32_t>(&MessageBuilder::AppendUInt32, endian, random);
        RoundTrip<std::int32_t>(&MessageBuilder::AppendInt32, endian, random);
        RoundTrip<std::uint64_t>(&MessageBuilder::AppendUInt64, endian, random);
        RoundTrip<std::int64_t>(&MessageBuilder::AppendInt64, endian, random);
    }
}

TEST(MessageValidatorTest, BuilderWiresReadBackWiderAndNarrower)
{
    // The builder's 0x01020304 big-endian is 01 02 03 04; read as 3 + 1 bytes.
    MessageBuilder builder;
    ASSERT_EQ(builder.AppendUInt32(0x01020304, BE), OK);
    ASSERT_EQ(builder.AppendInt16(-2, LE), OK);
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    std::uint32_t high = 0;
    unsigned char low = 0;
    EXPECT_EQ(validator.ValidateUnsignedBinaryIntegral(3, BE, &high), OK);
    EXPECT_EQ(high, 0x010203u);
    EXPECT_EQ(validator.ValidateUnsignedBinaryIntegral(1, BE, &low), OK);
    EXPECT_EQ(low, 4);
    long long wide = 0;
    EXPECT_EQ(validator.ValidateSignedBinaryIntegral(2, LE, &wide), OK);
    EXPECT_EQ(wide, -2);
}

TEST(MessageValidatorTest, DecimalAndHexadecimalRoundTripWithBuilder)
{
    std::mt19937_64 random(5);
    std::vector<std::uint64_t> values = {0, 9, 10, 4294967295u, 4294967296u, 18446744073709551615u};
    for (int i = 0; i < 200; ++i)
        values.push_back(random() >> (random() % 64));
    MessageBuilder builder;
    for (std::uint64_t value : values)
    {
        ASSERT_EQ(builder.AppendPrintf("%020" PRIu64, value), OK);
        ASSERT_EQ(builder.AppendPrintf("%016" PRIX64, value), OK);
        ASSERT_EQ(builder.AppendPrintf("%+020" PRId64, static_cast<std::int64_t>(value >> 1)), OK);
        ASSERT_EQ(builder.AppendPrintf("%020" PRId64, -static_cast<std::int64_t>(value >> 1)), OK);
    }
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    for (std::uint64_t expected : values)
    {
        unsigned long long decimal = 0;
        unsigned long long hexadecimal = 0;
        long long positive = 0;
        long long negative = 0;
        ASSERT_EQ(validator.ValidateUnsignedAsciiIntegral(20, &decimal), OK);
        ASSERT_EQ(validator.ValidateAsciiHexadecimalIntegral(16, BE, &hexadecimal), OK);
        ASSERT_EQ(validator.ValidateSignedAsciiIntegral(20, &positive), OK);
        ASSERT_EQ(validator.ValidateSignedAsciiIntegral(20, &negative), OK);
        EXPECT_EQ(decimal, expected);
        EXPECT_EQ(hexadecimal, expected);
        EXPECT_EQ(positive, static_cast<long long>(expected >> 1));
        EXPECT_EQ(negative, -static_cast<long long>(expected >> 1));
    }
    EXPECT_TRUE(validator.IsAtEnd());
}

// ---- Reals -------------------------------------------------------------------

TEST(MessageValidatorTest, RealTable)
{
    struct Row
    {
        int line;
        bool isSigned;
        std::string text;
        StatusCode status;
        std::int64_t numerator; // for unsigned rows the bit pattern of the unsigned numerator
        std::uint64_t divisor;
    };
    const Row rows[] = {
        {__LINE__, false, "12", OK, 12, 1},
        {__LINE__, false, "12.5", OK, 125, 10},
        {__LINE__, false, "0.05", OK, 5, 100},
        {__LINE__, false, "100.00", OK, 10000, 100},
        {__LINE__, false, ".5", OK, 5, 10},
        {__LINE__, false, "5.", OK, 5, 1},
        {__LINE__, false, "1.123456789", OK, 1123456789, 1000000000},
        {__LINE__, false, "1.000000000", OK, 1000000000, 1000000000},
        {__LINE__, false, "1.1234567890", RANGE, 0, 0},
        {__LINE__, false, "1.0000000000", RANGE, 0, 0},
        {__LINE__, false, "0.0000000000", RANGE, 0, 0},
        {__LINE__, false, "18446744073709551615", OK, -1, 1},
        {__LINE__, false, "18446744073709551616", RANGE, 0, 0},
        {__LINE__, false, "1844674407370955161.5", OK, -1, 10},
        {__LINE__, false, "1844674407370955161.6", RANGE, 0, 0},
        {__LINE__, false, "-1", FORMAT, 0, 0},
        {__LINE__, false, "-1.5", FORMAT, 0, 0},
        {__LINE__, false, "+1", FORMAT, 0, 0},
        {__LINE__, false, ".", FORMAT, 0, 0},
        {__LINE__, false, "1.2.3", FORMAT, 0, 0},
        {__LINE__, false, "1,5", FORMAT, 0, 0},
        {__LINE__, false, "1e5", FORMAT, 0, 0},
        {__LINE__, false, " 1", FORMAT, 0, 0},
        {__LINE__, false, "99999999999999999999x", FORMAT, 0, 0},
        {__LINE__, true, "-0.05", OK, -5, 100},
        {__LINE__, true, "+3.25", OK, 325, 100},
        {__LINE__, true, "-12", OK, -12, 1},
        {__LINE__, true, "-1.5", OK, -15, 10},
        {__LINE__, true, "-.5", OK, -5, 10},
        {__LINE__, true, "-", FORMAT, 0, 0},
        {__LINE__, true, "+.", FORMAT, 0, 0},
        {__LINE__, true, "1-", FORMAT, 0, 0},
        {__LINE__, true, "--1", FORMAT, 0, 0},
        {__LINE__, true, "9223372036854775807", OK, 9223372036854775807, 1},
        {__LINE__, true, "9223372036854775808", RANGE, 0, 0},
        {__LINE__, true, "-922337203685477580.7", OK, -9223372036854775807, 10},
        {__LINE__, true, "-9223372036854775808", RANGE, 0, 0},
        {__LINE__, true, "-0.000000001", OK, -1, 1000000000},
        {__LINE__, true, "-0.0000000001", RANGE, 0, 0},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE("row at line " + std::to_string(row.line) + ": " + row.text);
        const unsigned size = Size(row.text);
        // The field is followed by a byte that would spoil it if read.
        CheckFrame(row.text + "#", size, row.status, [&](MessageValidator& v, const void** data, void* destination) {
            std::uint64_t divisor = 77;
            std::int64_t numerator = 77;
            std::uint64_t unsignedNumerator = 77;
            const StatusCode status =
                row.isSigned ? PLAIN_OR_COPY(ValidateSignedAsciiReal, size, &numerator, &divisor)
                             : PLAIN_OR_COPY(ValidateUnsignedAsciiReal, size, &unsignedNumerator, &divisor);
            EXPECT_EQ(row.isSigned ? numerator : static_cast<std::int64_t>(unsignedNumerator),
                      status == OK ? row.numerator : 77);
            EXPECT_EQ(divisor, status == OK ? row.divisor : 77u);
            return status;
        });
        // The member without conversion accepts exactly what converts.
        CheckFrame(row.text + "#", size, row.status, [&](MessageValidator& v, const void** data, void* destination) {
            return row.isSigned ? PLAIN_OR_COPY(ValidateSignedAsciiReal, size)
                                : PLAIN_OR_COPY(ValidateUnsignedAsciiReal, size);
        });
        // So do the static conversions.
        std::int64_t numerator = 0;
        std::uint64_t unsignedNumerator = 0;
        std::uint64_t divisor = 0;
        EXPECT_EQ(row.isSigned ? MessageValidator::CopySignedAsciiRealToNumeratorAndDivisor(row.text.data(), size,
                                                                                            numerator, divisor)
                               : MessageValidator::CopyUnsignedAsciiRealToNumeratorAndDivisor(
                                     row.text.data(), size, unsignedNumerator, divisor),
                  row.status);
        if (row.status == OK)
        {
            EXPECT_EQ(row.isSigned ? numerator : static_cast<std::int64_t>(unsignedNumerator), row.numerator);
            EXPECT_EQ(divisor, row.divisor);
        }
    }
}

TEST(MessageValidatorTest, RealTypedRangeAndList)
{
    RunCalls({
        {__LINE__, "-1.5", 4, FORMAT, CALL(ValidateUnsignedAsciiReal, size, &out.dbl)},
        {__LINE__, "-1.5", 4, OK, CALL(ValidateSignedAsciiReal, size, &out.dbl)},
        {__LINE__, "-1.5", 4, RANGE, CALL(ValidateSignedAsciiReal, size, -1.4L, 0.0L, &out.ld)},
        {__LINE__, "-1.5", 4, OK, CALL(ValidateSignedAsciiReal, size, -1.5L, 0.0L, &out.ld)},
        {__LINE__, "-1.5", 4, RANGE, CALL(ValidateSignedAsciiReal, size, std::vector<long double>{1.5L}, &out.ld)},
        {__LINE__, "-1.5", 4, OK, CALL(ValidateSignedAsciiReal, size, std::vector<long double>{-1.5L}, &out.ld)},
    });

    MessageValidator validator = Over("0.1" "-2.5" "1.5" "2.5" "1.25");
    double d = 0;
    long double l = 0;
    EXPECT_EQ(validator.ValidateSignedAsciiReal(3, &l), OK);
    EXPECT_EQ(l, 0.1L);
    EXPECT_EQ(validator.ValidateUnsignedAsciiReal(4, &d), FORMAT);
    EXPECT_EQ(validator.ValidateSignedAsciiRealCopy(4, &d, nullptr), OK);
    EXPECT_EQ(d, -2.5);
    EXPECT_EQ(validator.ValidateUnsignedAsciiReal(3, 1.6L, 3.0L, &l), RANGE);
    EXPECT_EQ(validator.ValidateUnsignedAsciiReal(3, 1.5L, 1.5L, &l), OK);
    EXPECT_EQ(l, 1.5L);
    EXPECT_EQ(validator.ValidateSignedAsciiReal(3, std::vector<long double>{2.4L, 2.6L}, &l), RANGE);
    EXPECT_EQ(validator.ValidateSignedAsciiReal(3, std::vector<long double>{2.5L}, &l), OK);
    EXPECT_EQ(l, 2.5L);
    char copy[4] = {};
    EXPECT_EQ(validator.ValidateUnsignedAsciiRealCopy(4, std::vector<long double>{1.25L}, &l, copy), OK);
    EXPECT_EQ(std::string(copy, 4), "1.25");
    EXPECT_TRUE(validator.IsAtEnd());

    // A large numerator: the conversion stays correctly rounded.
    MessageValidator large = Over("123456789.123456789");
    EXPECT_EQ(large.ValidateUnsignedAsciiReal(19, &l), OK);
    EXPECT_EQ(l, 123456789123456789.0L / 1000000000.0L);
}

TEST(MessageValidatorTest, TypedRealsRoundOnceToTheNearestValue)
{
    // Numerators too large to be exact in float or double. Dividing in a
    // wider floating type rounds twice and can miss the nearest value by one
    // unit in the last place; the expected values are the nearest ones,
    // written exactly.
    struct Row
    {
        int line;
        std::string text;
        float nearestFloat;
        double nearestDouble;
        bool fitsSigned; // the numerator is at most 2^63-1
    };
    const Row rows[] = {
        {__LINE__, "18014399583223809", 0x1.000002p+54f, 0x1.000001p+54, true}, // 2^54+2^30+1: just above a float tie
        {__LINE__, "1105512597651.942749", 0x1.0165bp+40f, 0x1.0165af8893f15p+40, true},
        {__LINE__, "410766920.195533067", 0x1.87bce4p+28f, 0x1.87bce48320e75p+28, true},
        {__LINE__, "77689577497.350914", 0x1.216a8ep+36f, 0x1.216a8e01959d5p+36, true},
        {__LINE__, "9007199254740993", 0x1p+53f, 0x1p+53, true},                 // a double tie, to even (down)
        {__LINE__, "9007199254740995", 0x1p+53f, 0x1.0000000000002p+53, true},   // a double tie, to even (up)
        {__LINE__, "18446744073.709551615", 0x1.12e0bep+34f, 0x1.12e0be826d695p+34, false},
        {__LINE__, "18446744073709551615", 0x1p+64f, 0x1p+64, false},
        {__LINE__, "16777217", 0x1p+24f, 0x1.000001p+24, true},                  // a float tie, to even
        {__LINE__, "0.1", 0x1.99999ap-4f, 0x1.999999999999ap-4, true},
        {__LINE__, "0.000000001", 0x1.12e0bep-30f, 0x1.12e0be826d695p-30, true},
    };
    // Unsigned and (negated) signed members, float and double, both forms.
    const auto check = [](const std::string& text, auto nearest, StatusCode expected) {
        CheckFrame(text, Size(text), expected, [&](MessageValidator& v, const void** data, void* destination) {
            decltype(nearest) value = 0;
            const StatusCode status = text[0] == '-' ? PLAIN_OR_COPY(ValidateSignedAsciiReal, Size(text), &value)
                                                     : PLAIN_OR_COPY(ValidateUnsignedAsciiReal, Size(text), &value);
            EXPECT_EQ(value, status == OK ? nearest : 0);
            return status;
        });
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE("row at line " + std::to_string(row.line) + ": " + row.text);
        check(row.text, row.nearestFloat, OK);
        check(row.text, row.nearestDouble, OK);
        check("-" + row.text, -row.nearestFloat, row.fitsSigned ? OK : RANGE);
        check("-" + row.text, -row.nearestDouble, row.fitsSigned ? OK : RANGE);
    }
}

TEST(MessageValidatorTest, RealTextsOfRationalFields)
{
    // The decimal forms a rational prints: "-" then whole "." zero-padded fraction.
    char text[64];
    std::mt19937_64 random(3);
    for (int i = 0; i < 2000; ++i)
    {
        const unsigned places = 1 + static_cast<unsigned>(random() % 9);
        std::uint64_t divisor = 1;
        for (unsigned p = 0; p < places; ++p)
            divisor *= 10;
        const std::int64_t numerator = static_cast<std::int64_t>(random() >> (1 + random() % 63)) *
                                       (random() % 2 ? -1 : 1);
        const std::uint64_t magnitude =
            numerator < 0 ? static_cast<std::uint64_t>(-numerator) : static_cast<std::uint64_t>(numerator);
        const int length = std::snprintf(text, sizeof text, "%s%" PRIu64 ".%0*" PRIu64, numerator < 0 ? "-" : "",
                                         magnitude / divisor, static_cast<int>(places), magnitude % divisor);
        SCOPED_TRACE(text);
        std::int64_t readNumerator = 0;
        std::uint64_t readDivisor = 0;
        MessageValidator validator(text, static_cast<unsigned>(length));
        ASSERT_EQ(validator.ValidateSignedAsciiReal(static_cast<unsigned>(length), &readNumerator, &readDivisor), OK);
        EXPECT_EQ(readDivisor, divisor);
        // a whole part of 0 prints one digit; the numerator loses nothing
        EXPECT_EQ(readNumerator, numerator);
    }
}

// ---- Bytes and strings -------------------------------------------------------

TEST(MessageValidatorTest, ByteChecks)
{
    using Chars = std::vector<unsigned char>;
    using Texts = std::vector<std::string>;
    RunCalls({
        {__LINE__, "HDR1", 4, FORMAT, CALL(ValidateBytes, size, "HDR2")},
        {__LINE__, "HDR1", 4, FORMAT, CALL(ValidateBytes, size, "XDR1")},
        {__LINE__, "HDR1", 4, PARAM, CALL(ValidateBytes, size, static_cast<const void*>(nullptr))},
        {__LINE__, "HDR1", 4, OK, CALL(ValidateBytes, size, "HDR1")},
        {__LINE__, "ABCD", 4, FORMAT, CALL(ValidateBytes, size, "ABCE")},
        {__LINE__, "ABCD", 4, OK, CALL(ValidateBytes, size, "ABCD")},
        {__LINE__, "xxxx", 4, RANGE, CALL(ValidateBytes, size, U8('y'))},
        {__LINE__, "xxxx", 4, OK, CALL(ValidateBytes, size, U8('x'))},
        {__LINE__, "az", 2, RANGE, CALL(ValidateBytes, size, U8('b'), U8('z'))},
        {__LINE__, "az", 2, RANGE, CALL(ValidateBytes, size, U8('a'), U8('y'))},
        {__LINE__, "az", 2, OK, CALL(ValidateBytes, size, U8('a'), U8('z'))},
        {__LINE__, "abcd", 4, RANGE, CALL(ValidateBytes, size, U8('a'), U8('c'))},
        {__LINE__, "abcd", 4, OK, CALL(ValidateBytes, size, U8('a'), U8('d'))},
        {__LINE__, "\x80\xFF", 2, OK, CALL(ValidateBytes, size, U8(0x80), U8(0xFF))}, // bytes compare unsigned
        {__LINE__, "0101", 4, RANGE, CALL(ValidateBytes, size, Chars{'0'})},
        {__LINE__, "0101", 4, OK, CALL(ValidateBytes, size, Chars{'1', '0'})},
        {__LINE__, "\x7F", 1, RANGE, CALL(ValidateBytes, size, Chars{0x80, 0xFF})},
        {__LINE__, "\x7F", 1, OK, CALL(ValidateBytes, size, Chars{0x7F})},
        {__LINE__, "SELL", 4, RANGE, CALL(ValidateBytes, size, Texts{"BUY", "SELLS", "sell"})},
        {__LINE__, "SELL", 4, OK, CALL(ValidateBytes, size, Texts{"BUY", "SELL"})},
    });
}

TEST(MessageValidatorTest, ExactBytesCatchOneDifferenceInEveryPosition)
{
    // Every size from 1 to 40 (the short inline compares and the block
    // compare), one flipped byte in each position.
    for (unsigned size = 1; size <= 40; ++size)
    {
        std::string expected;
        for (unsigned i = 0; i < size; ++i)
            expected += static_cast<char>('a' + i % 26);
        const std::string message = "#" + expected;
        for (unsigned position = 0; position < size; ++position)
        {
            SCOPED_TRACE("size " + std::to_string(size) + ", position " + std::to_string(position));
            std::string different = expected;
            different[position] = static_cast<char>(different[position] ^ 0x01);
            MessageValidator validator = Over(message);
            ASSERT_EQ(validator.ValidateBytes(1), OK);
            EXPECT_EQ(validator.ValidateBytes(size, different.data(), nullptr), FORMAT);
            EXPECT_EQ(validator.ValidateBytesCopy(size, different.data(), nullptr), FORMAT);
            EXPECT_EQ(validator.GetCursor(), 1u);
            EXPECT_EQ(validator.ValidateBytes(size, expected.data(), nullptr), OK);
            EXPECT_TRUE(validator.IsAtEnd());
        }
    }
}

TEST(MessageValidatorTest, StringChecks)
{
    using Texts = std::vector<std::string>;
    const bool deliversText = true;
    RunCalls(
        {
            {__LINE__, "abc", 3, OK, CALL(ValidateString, size, U8('a'), U8('z'), &out.text)},
            {__LINE__, "aBc", 3, RANGE, CALL(ValidateString, size, U8('a'), U8('z'), &out.text)},
            {__LINE__, "ab1", 3, RANGE, CALL(ValidateString, size, U8('a'), U8('z'), &out.text)},
            {__LINE__, "ab1", 3, OK, CALL(ValidateString, size, U8('1'), U8('z'), &out.text)},
            {__LINE__, "aBc", 3, OK, CALL(ValidateString, size, std::string("abcABC"), &out.text)},
            {__LINE__, "12.5", 4, RANGE, CALL(ValidateString, size, std::string("0123456789"), &out.text)},
            {__LINE__, "12.5", 4, OK, CALL(ValidateString, size, std::string("0123456789."), &out.text)},
            {__LINE__, "ab1", 3, RANGE, CALL(ValidateString, size, std::string("ab"), &out.text)},
            {__LINE__, "ab1", 3, OK, CALL(ValidateString, size, std::string("1ab"), &out.text)},
            {__LINE__, "SELL", 3, RANGE, CALL(ValidateString, size, Texts{"SELL"}, &out.text)},
            {__LINE__, "SELL", 4, OK, CALL(ValidateString, size, Texts{"BUY", "SELL"}, &out.text)},
            {__LINE__, "ab1", 3, RANGE, CALL(ValidateString, size, Texts{"ab", "ab12"}, &out.text)},
            {__LINE__, "ab1", 3, OK, CALL(ValidateString, size, Texts{"ab", "ab1"}, &out.text)},
            {__LINE__, "ab1", 3, OK, CALL(ValidateString, size, &out.text)},
            // the size delimits the text, zero bytes included
            {__LINE__, std::string("a\0b", 3), 3, OK, CALL(ValidateString, size, &out.text)},
            {__LINE__, "", 0, OK, CALL(ValidateString, size, &out.text)},
            {__LINE__, "", 1, PARAM, CALL(ValidateString, size, &out.text)},
        },
        deliversText);
}

// ---- The common frame --------------------------------------------------------

TEST(MessageValidatorTest, FieldPastTheEndFailsForEveryFamily)
{
    // 5 bytes asked when 4 remain. The integer families' rows of
    // IntegerChecksForEveryWidthAndByteOrder ask past the end as well.
    using Texts = std::vector<std::string>;
    RunCalls({
        {__LINE__, "1234", 5, PARAM, CALL(ValidateBytes, size)},
        {__LINE__, "1234", 5, PARAM, CALL(ValidateBytes, size, "12345")},
        {__LINE__, "1234", 5, PARAM, CALL(ValidateBytes, size, U8('1'))},
        {__LINE__, "1234", 5, PARAM, CALL(ValidateBytes, size, U8(0), U8(255))},
        {__LINE__, "1234", 5, PARAM, CALL(ValidateBytes, size, std::vector<unsigned char>{'1', '2', '3', '4'})},
        {__LINE__, "1234", 5, PARAM, CALL(ValidateBytes, size, Texts{"12345"})},
        {__LINE__, "1234", 5, PARAM, CALL(ValidateUnsignedAsciiReal, size)},
        {__LINE__, "1234", 5, PARAM, CALL(ValidateUnsignedAsciiReal, size, &out.u64, &out.divisor)},
        {__LINE__, "1234", 5, PARAM, CALL(ValidateSignedAsciiReal, size, &out.dbl)},
        {__LINE__, "1234", 5, PARAM, CALL(ValidateSignedAsciiReal, size, 0.0L, 1e6L, &out.ld)},
        {__LINE__, "1234", 5, PARAM, CALL(ValidateString, size, &out.text)},
        {__LINE__, "1234", 5, PARAM, CALL(ValidateString, size, Texts{"12345"}, &out.text)},
        {__LINE__, "1234", 4, OK, CALL(ValidateBytes, size, "1234")},
    });
}

TEST(MessageValidatorTest, SizeZeroRules)
{
    // A converted value asked for is refused (the integer families' size 0
    // rows are in IntegerChecksForEveryWidthAndByteOrder); nothing asked for
    // succeeds without consuming, data pointing at the cursor, also at the end.
    RunCalls({
        {__LINE__, "9", 0, PARAM, CALL(ValidateUnsignedAsciiReal, size, &out.f)},
        {__LINE__, "9", 0, PARAM, CALL(ValidateSignedAsciiReal, size, &out.s64, &out.divisor)},
        {__LINE__, "9", 0, PARAM,
         CALL(ValidateSignedAsciiReal, size, static_cast<std::int64_t*>(nullptr), &out.divisor)},
        {__LINE__, "9", 0, OK, CALL(ValidateBytes, size)},
        {__LINE__, "9", 0, OK, CALL(ValidateBytes, size, static_cast<const void*>(nullptr))},
        {__LINE__, "9", 0, OK, CALL(ValidateBytes, size, std::vector<std::string>{})},
        {__LINE__, "9", 0, OK, CALL(ValidateUnsignedAsciiIntegral, size, static_cast<unsigned*>(nullptr))},
        {__LINE__, "9", 0, OK, CALL(ValidateUnsignedAsciiIntegral, size, 5, 6, nullptr)},
        {__LINE__, "9", 0, OK, CALL(ValidateSignedAsciiIntegral, size, static_cast<long*>(nullptr))},
        {__LINE__, "9", 0, OK, CALL(ValidateUnsignedAsciiReal, size)},
        {__LINE__, "9", 0, OK, CALL(ValidateSignedAsciiReal, size, std::vector<long double>{}, nullptr)},
        {__LINE__, "", 0, OK, CALL(ValidateBytes, size)},
        {__LINE__, "", 0, OK, CALL(ValidateString, size, static_cast<std::string*>(nullptr))},
    });
}

TEST(MessageValidatorTest, EmptyAndNullBuffers)
{
    MessageValidator validator(nullptr, 0);
    unsigned value = 0;
    EXPECT_EQ(validator.GetLength(), 0u);
    EXPECT_EQ(validator.ValidateBytes(0), OK);
    EXPECT_EQ(validator.ValidateBytes(1), PARAM);
    EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(1, &value), PARAM);
    EXPECT_EQ(validator.ValidateUnsignedBinaryIntegral(4, LE, &value), PARAM);
    std::uint64_t numerator = 0;
    std::uint64_t divisor = 0;
    EXPECT_EQ(MessageValidator::CopyUnsignedAsciiRealToNumeratorAndDivisor(nullptr, 3, numerator, divisor), PARAM);
    EXPECT_EQ(MessageValidator::CopyUnsignedAsciiRealToNumeratorAndDivisor("", 0, numerator, divisor), FORMAT);
}

TEST(MessageValidatorTest, AccessorsFollowTheCursor)
{
    const std::string message = "abcdef";
    MessageValidator validator = Over(message);
    EXPECT_EQ(validator.GetBuffer(), reinterpret_cast<const unsigned char*>(message.data()));
    EXPECT_EQ(validator.GetLength(), 6u);
    EXPECT_EQ(validator.ValidateBytes(4), OK);
    EXPECT_EQ(validator.GetCursor(), 4u);
    EXPECT_EQ(validator.GetRemaining(), 2u);
    EXPECT_EQ(validator.GetCursorPointer(), validator.GetBuffer() + 4);
    EXPECT_FALSE(validator.IsAtEnd());
}

} // namespace
} // namespace Zantor
