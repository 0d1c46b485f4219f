#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
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

// Decimal text of a value plus one (works past 2^64-1).
std::string PlusOne(std::string text)
{
    for (std::size_t i = text.size(); i-- > 0;)
    {
        if (text[i] != '9')
        {
            ++text[i];
            return text;
        }
        text[i] = '0';
    }
    return "1" + text;
}

// ---- Unsigned decimal: the table -------------------------------------------

enum Width
{
    W8,
    W16,
    W32,
    W64
};

struct UnsignedRow
{
    int line;
    Width width;
    std::string text;
    StatusCode status;
    std::uint64_t value;
};

template <typename T>
void RunUnsigned(const UnsignedRow& row)
{
    std::string message = row.text + "#";
    MessageValidator validator = Over(message);
    T value = static_cast<T>(0x5A);
    const void* data = nullptr;
    EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(Size(row.text), &value, &data), row.status);
    if (row.status == OK)
    {
        EXPECT_EQ(value, static_cast<T>(row.value));
        EXPECT_EQ(validator.GetCursor(), Size(row.text));
        EXPECT_EQ(data, message.data());
    }
    else
    {
        EXPECT_EQ(value, static_cast<T>(0x5A));
        EXPECT_EQ(validator.GetCursor(), 0u);
        EXPECT_EQ(data, nullptr);
    }
}

TEST(MessageValidatorTest, UnsignedDecimalTable)
{
    const UnsignedRow rows[] = {
        // boundaries side by side: max passes, max + 1 fails, with leading zeros
        {__LINE__, W8, "255", OK, 255},
        {__LINE__, W8, "256", RANGE, 0},
        {__LINE__, W8, "000255", OK, 255},
        {__LINE__, W8, "000256", RANGE, 0},
        {__LINE__, W8, "999", RANGE, 0},
        {__LINE__, W8, "0", OK, 0},
        {__LINE__, W16, "65535", OK, 65535},
        {__LINE__, W16, "65536", RANGE, 0},
        {__LINE__, W16, "0000065535", OK, 65535},
        {__LINE__, W16, "0000065536", RANGE, 0},
        {__LINE__, W32, "4294967295", OK, 4294967295u},
        {__LINE__, W32, "4294967296", RANGE, 0},
        {__LINE__, W32, "0004294967295", OK, 4294967295u},
        {__LINE__, W32, "0004294967296", RANGE, 0},
        {__LINE__, W32, "4294967290", OK, 4294967290u},
        {__LINE__, W32, "4294967300", RANGE, 0},
        {__LINE__, W32, "9999999999", RANGE, 0},
        {__LINE__, W32, "42949672950", RANGE, 0},
        {__LINE__, W32, "00000000000000000000004294967295", OK, 4294967295u},
        {__LINE__, W32, "00000000000000000000004294967296", RANGE, 0},
        {__LINE__, W32, "1000000000", OK, 1000000000u},
        {__LINE__, W32, "12345678", OK, 12345678u},
        {__LINE__, W32, "123456789", OK, 123456789u},
        {__LINE__, W64, "18446744073709551615", OK, 18446744073709551615u},
        {__LINE__, W64, "18446744073709551616", RANGE, 0},
        {__LINE__, W64, "0018446744073709551615", OK, 18446744073709551615u},
        {__LINE__, W64, "0018446744073709551616", RANGE, 0},
        {__LINE__, W64, "18446744073709551619", RANGE, 0},
        {__LINE__, W64, "18446744073709551610", OK, 18446744073709551610u},
        {__LINE__, W64, "99999999999999999999", RANGE, 0},
        {__LINE__, W64, "184467440737095516150", RANGE, 0},
        {__LINE__, W64, "9999999999999999999", OK, 9999999999999999999u},
        {__LINE__, W64, "4294967296", OK, 4294967296u},
        // character class
        {__LINE__, W32, "12a", FORMAT, 0},
        {__LINE__, W32, " 12", FORMAT, 0},
        {__LINE__, W32, "12 ", FORMAT, 0},
        {__LINE__, W32, "+12", FORMAT, 0},
        {__LINE__, W32, "-12", FORMAT, 0},
        {__LINE__, W32, "1234567/", FORMAT, 0},
        {__LINE__, W32, "1234567:", FORMAT, 0},
        {__LINE__, W32, "/2345678", FORMAT, 0},
        {__LINE__, W32, "12345678:0", FORMAT, 0},
        {__LINE__, W64, std::string("1\0", 2), FORMAT, 0},
        // a wrong character wins over an overflow, wherever it stands
        {__LINE__, W32, "99999999999x", FORMAT, 0},
        {__LINE__, W64, "9999999999999999999999x", FORMAT, 0},
        {__LINE__, W8, "999x", FORMAT, 0},
    };
    for (const UnsignedRow& row : rows)
    {
        SCOPED_TRACE("row at line " + std::to_string(row.line));
        switch (row.width)
        {
        case W8: RunUnsigned<unsigned char>(row); break;
        case W16: RunUnsigned<unsigned short>(row); break;
        case W32: RunUnsigned<unsigned int>(row); break;
        case W64: RunUnsigned<unsigned long long>(row); break;
        }
    }
}

// Every typed unsigned member at its own limit, whatever its width on this
// platform (unsigned long is 64-bit here and 32-bit on Windows).
template <typename T>
void CheckUnsignedLimits()
{
    const std::string max = std::to_string(std::numeric_limits<T>::max());
    const std::string over = PlusOne(max);
    for (const std::string& zeros : {std::string(), std::string("000")})
    {
        SCOPED_TRACE(zeros + max);
        T value = 0;
        const std::string message = zeros + max + zeros + over;
        MessageValidator validator = Over(message);
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(Size(zeros + max), &value), OK);
        EXPECT_EQ(value, std::numeric_limits<T>::max());
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(Size(zeros + over), &value), RANGE);
        EXPECT_EQ(validator.GetCursor(), Size(zeros + max));
        unsigned char copy[32] = {};
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegralCopy(Size(zeros + over), &value, copy), RANGE);
        EXPECT_EQ(copy[0], 0);
    }
}

TEST(MessageValidatorTest, UnsignedDecimalLimitsOfEveryType)
{
    CheckUnsignedLimits<unsigned char>();
    CheckUnsignedLimits<unsigned short>();
    CheckUnsignedLimits<unsigned int>();
    CheckUnsignedLimits<unsigned long>();
    CheckUnsignedLimits<unsigned long long>();
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

TEST(MessageValidatorTest, UnsignedDecimalRangeAndList)
{
    std::uint64_t value = 0;
    {
        MessageValidator validator = Over("0112");
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(2, 1, 12, &value), OK); // "01"
        EXPECT_EQ(value, 1u);
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(2, 1, 11, &value), RANGE); // "12"
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(2, 12, 12, &value), OK);
        EXPECT_EQ(value, 12u);
    }
    {
        MessageValidator validator = Over("00");
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(2, 1, 12), RANGE);
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(2, 5, 4), RANGE); // min > max refuses all
        EXPECT_EQ(validator.GetCursor(), 0u);
    }
    {
        const std::vector<std::uint64_t> list = {3, 18446744073709551615u};
        MessageValidator validator = Over("18446744073709551615" "4" "3");
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(20, list, &value), OK);
        EXPECT_EQ(value, 18446744073709551615u);
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(1, list, &value), RANGE);
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(1, std::vector<std::uint64_t>{}, &value), RANGE);
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(1, 0, 9), OK);
        char copy[2] = {};
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegralCopy(1, list, &value, copy), OK);
        EXPECT_EQ(copy[0], '3');
        EXPECT_EQ(value, 3u);
    }
    {
        // Overflow of the 64-bit conversion is out of range for range forms too.
        MessageValidator validator = Over("18446744073709551616");
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(20, 0, std::numeric_limits<std::uint64_t>::max()), RANGE);
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(20), OK); // the plain form checks digits only
    }
    {
        MessageValidator validator = Over("12x4");
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(4), FORMAT);
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(4, 0, 9999), FORMAT);
        EXPECT_EQ(validator.ValidateUnsignedAsciiIntegralCopy(4, nullptr), FORMAT);
        EXPECT_EQ(validator.GetCursor(), 0u);
    }
}

// ---- Signed decimal ----------------------------------------------------------

struct SignedRow
{
    int line;
    Width width;
    std::string text;
    StatusCode status;
    std::int64_t value;
};

template <typename T>
void RunSigned(const SignedRow& row)
{
    MessageValidator validator = Over(row.text);
    T value = static_cast<T>(0x5A);
    EXPECT_EQ(validator.ValidateSignedAsciiIntegral(Size(row.text), &value), row.status);
    if (row.status == OK)
    {
        EXPECT_EQ(value, static_cast<T>(row.value));
        EXPECT_EQ(validator.GetCursor(), Size(row.text));
    }
    else
    {
        EXPECT_EQ(value, static_cast<T>(0x5A));
        EXPECT_EQ(validator.GetCursor(), 0u);
    }
    // The 64-bit range form agrees on every text that fits 64 bits.
    if (row.width == W64)
    {
        MessageValidator again = Over(row.text);
        std::int64_t wide = 0;
        EXPECT_EQ(again.ValidateSignedAsciiIntegral(Size(row.text), std::numeric_limits<std::int64_t>::min(),
                                                    std::numeric_limits<std::int64_t>::max(), &wide),
                  row.status);
        if (row.status == OK)
        {
            EXPECT_EQ(wide, row.value);
        }
    }
}

TEST(MessageValidatorTest, SignedDecimalTable)
{
    const SignedRow rows[] = {
        {__LINE__, W32, "+12", OK, 12},
        {__LINE__, W32, "-12", OK, -12},
        {__LINE__, W32, "12", OK, 12},
        {__LINE__, W32, "1-2", FORMAT, 0},
        {__LINE__, W32, "12-", FORMAT, 0},
        {__LINE__, W32, "--1", FORMAT, 0},
        {__LINE__, W32, "+-1", FORMAT, 0},
        {__LINE__, W32, " -1", FORMAT, 0},
        {__LINE__, W32, "-", OK, 0},
        {__LINE__, W32, "+", OK, 0},
        {__LINE__, W32, "-0", OK, 0},
        // symmetric limits, side by side
        {__LINE__, W8, "127", OK, 127},
        {__LINE__, W8, "128", RANGE, 0},
        {__LINE__, W8, "-127", OK, -127},
        {__LINE__, W8, "-128", RANGE, 0},
        {__LINE__, W8, "+0127", OK, 127},
        {__LINE__, W8, "-000128", RANGE, 0},
        {__LINE__, W16, "32767", OK, 32767},
        {__LINE__, W16, "32768", RANGE, 0},
        {__LINE__, W16, "-32767", OK, -32767},
        {__LINE__, W16, "-32768", RANGE, 0},
        {__LINE__, W32, "2147483647", OK, 2147483647},
        {__LINE__, W32, "2147483648", RANGE, 0},
        {__LINE__, W32, "+2147483647", OK, 2147483647},
        {__LINE__, W32, "+2147483648", RANGE, 0},
        {__LINE__, W32, "-2147483647", OK, -2147483647},
        {__LINE__, W32, "-2147483648", RANGE, 0},
        {__LINE__, W32, "-0002147483647", OK, -2147483647},
        {__LINE__, W32, "-0002147483648", RANGE, 0},
        {__LINE__, W32, "-9999999999", RANGE, 0},
        {__LINE__, W64, "9223372036854775807", OK, 9223372036854775807},
        {__LINE__, W64, "9223372036854775808", RANGE, 0},
        {__LINE__, W64, "-9223372036854775807", OK, -9223372036854775807},
        {__LINE__, W64, "-9223372036854775808", RANGE, 0},
        {__LINE__, W64, "+0009223372036854775807", OK, 9223372036854775807},
        {__LINE__, W64, "-18446744073709551616", RANGE, 0},
        {__LINE__, W64, "-99999999999999999999999", RANGE, 0},
        {__LINE__, W64, "-9999999999999999999999x", FORMAT, 0},
    };
    for (const SignedRow& row : rows)
    {
        SCOPED_TRACE("row at line " + std::to_string(row.line));
        switch (row.width)
        {
        case W8: RunSigned<signed char>(row); break;
        case W16: RunSigned<short>(row); break;
        case W32: RunSigned<int>(row); break;
        case W64: RunSigned<long long>(row); break;
        }
    }
}

template <typename T>
void CheckSignedLimits()
{
    const std::string max = std::to_string(std::numeric_limits<T>::max());
    const std::string over = PlusOne(max);
    for (const std::string& prefix : {std::string(), std::string("+"), std::string("-"), std::string("-00")})
    {
        SCOPED_TRACE(prefix + max);
        T value = 0;
        const std::string message = prefix + max + prefix + over;
        MessageValidator validator = Over(message);
        EXPECT_EQ(validator.ValidateSignedAsciiIntegral(Size(prefix + max), &value), OK);
        const bool negative = !prefix.empty() && prefix[0] == '-';
        EXPECT_EQ(value, negative ? static_cast<T>(-std::numeric_limits<T>::max()) : std::numeric_limits<T>::max());
        EXPECT_EQ(validator.ValidateSignedAsciiIntegral(Size(prefix + over), &value), RANGE);
        EXPECT_EQ(validator.GetCursor(), Size(prefix + max));
    }
}

TEST(MessageValidatorTest, SignedDecimalLimitsOfEveryType)
{
    CheckSignedLimits<signed char>();
    CheckSignedLimits<short>();
    CheckSignedLimits<int>();
    CheckSignedLimits<long>();
    CheckSignedLimits<long long>();
}

TEST(MessageValidatorTest, SignedDecimalPlainRangeAndList)
{
    MessageValidator validator = Over("-5+7-x");
    EXPECT_EQ(validator.ValidateSignedAsciiIntegral(2, -4, 4), RANGE);
    std::int64_t value = 0;
    EXPECT_EQ(validator.ValidateSignedAsciiIntegral(2, -5, -5, &value), OK);
    EXPECT_EQ(value, -5);
    EXPECT_EQ(validator.ValidateSignedAsciiIntegral(2, std::vector<std::int64_t>{-7, 8}, &value), RANGE);
    char copy[2] = {};
    EXPECT_EQ(validator.ValidateSignedAsciiIntegralCopy(2, std::vector<std::int64_t>{-7, 7}, &value, copy), OK);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(copy[0], '+');
    EXPECT_EQ(validator.ValidateSignedAsciiIntegral(2), FORMAT);
    EXPECT_EQ(validator.ValidateSignedAsciiIntegral(1), OK); // a lone sign is well formed
    EXPECT_EQ(validator.ValidateSignedAsciiIntegralCopy(1, nullptr), FORMAT);
    EXPECT_EQ(validator.GetCursor(), 5u);
}

// ---- Hexadecimal text --------------------------------------------------------

struct HexRow
{
    int line;
    Width width;
    MessageHandler::Endian endian;
    std::string text;
    StatusCode status;
    std::uint64_t value;
};

template <typename T>
void RunHex(const HexRow& row)
{
    MessageValidator validator = Over(row.text);
    T value = static_cast<T>(0x5A);
    EXPECT_EQ(validator.ValidateAsciiHexadecimalIntegral(Size(row.text), row.endian, &value), row.status);
    EXPECT_EQ(value, row.status == OK ? static_cast<T>(row.value) : static_cast<T>(0x5A));
    EXPECT_EQ(validator.GetCursor(), row.status == OK ? Size(row.text) : 0u);
}

TEST(MessageValidatorTest, HexadecimalTable)
{
    const HexRow rows[] = {
        {__LINE__, W16, LE, "0100", OK, 1},
        {__LINE__, W16, BE, "0100", OK, 256},
        {__LINE__, W8, LE, "0100", OK, 1},
        {__LINE__, W8, BE, "0100", RANGE, 0},
        {__LINE__, W8, LE, "FF", OK, 255},
        {__LINE__, W8, BE, "ff", OK, 255},
        {__LINE__, W8, LE, "FF01", RANGE, 0},
        {__LINE__, W8, BE, "00FF", OK, 255},
        {__LINE__, W16, LE, "FFFF", OK, 65535},
        {__LINE__, W16, LE, "FFFF01", RANGE, 0},
        {__LINE__, W16, BE, "00FFFF", OK, 65535},
        {__LINE__, W16, BE, "010000", RANGE, 0},
        {__LINE__, W32, LE, "78563412", OK, 0x12345678},
        {__LINE__, W32, BE, "12345678", OK, 0x12345678},
        {__LINE__, W32, BE, "FFFFFFFF", OK, 0xFFFFFFFF},
        {__LINE__, W32, LE, "FFFFFFFF00", OK, 0xFFFFFFFF},
        {__LINE__, W32, BE, "FFFFFFFF00", RANGE, 0},
        {__LINE__, W32, LE, "0000000001", RANGE, 0},
        {__LINE__, W32, BE, "0000000001", OK, 1},
        {__LINE__, W64, BE, "FFFFFFFFFFFFFFFF", OK, 0xFFFFFFFFFFFFFFFF},
        {__LINE__, W64, LE, "0123456789abcdef", OK, 0xEFCDAB8967452301},
        {__LINE__, W64, BE, "0123456789ABCDEF", OK, 0x0123456789ABCDEF},
        {__LINE__, W64, BE, "aBcDeF", OK, 0xABCDEF},
        // character class, in each position of a pair
        {__LINE__, W16, BE, "0G", FORMAT, 0},
        {__LINE__, W16, BE, "G0", FORMAT, 0},
        {__LINE__, W16, BE, "0g", FORMAT, 0},
        {__LINE__, W16, BE, "0:", FORMAT, 0},
        {__LINE__, W16, BE, "@0", FORMAT, 0},
        {__LINE__, W16, BE, "0/", FORMAT, 0},
        {__LINE__, W16, BE, "0 ", FORMAT, 0},
        {__LINE__, W64, LE, "00000000000000x0", FORMAT, 0},
        // odd and over-long sizes
        {__LINE__, W64, BE, "1", PARAM, 0},
        {__LINE__, W64, BE, "123", PARAM, 0},
        {__LINE__, W64, BE, "000000000000000", PARAM, 0},
        {__LINE__, W64, BE, "000000000000000000", PARAM, 0},
        {__LINE__, W8, LE, "12x", PARAM, 0},
    };
    for (const HexRow& row : rows)
    {
        SCOPED_TRACE("row at line " + std::to_string(row.line));
        switch (row.width)
        {
        case W8: RunHex<unsigned char>(row); break;
        case W16: RunHex<unsigned short>(row); break;
        case W32: RunHex<unsigned int>(row); break;
        case W64: RunHex<unsigned long long>(row); break;
        }
    }
}

TEST(MessageValidatorTest, HexadecimalPlainRangeListAndEveryType)
{
    MessageValidator validator = Over("0A0BzzFF");
    std::uint64_t value = 0;
    EXPECT_EQ(validator.ValidateAsciiHexadecimalIntegral(2, LE, 11, 20, &value), RANGE);
    EXPECT_EQ(validator.ValidateAsciiHexadecimalIntegral(2, BE, 10, 10, &value), OK);
    EXPECT_EQ(value, 10u);
    EXPECT_EQ(validator.ValidateAsciiHexadecimalIntegral(2, BE, std::vector<std::uint64_t>{10, 12}), RANGE);
    char copy[3] = {};
    EXPECT_EQ(validator.ValidateAsciiHexadecimalIntegralCopy(2, BE, std::vector<std::uint64_t>{10, 11}, &value, copy),
              OK);
    EXPECT_EQ(std::string(copy), "0B");
    EXPECT_EQ(validator.ValidateAsciiHexadecimalIntegral(2, LE), FORMAT);
    EXPECT_EQ(validator.ValidateAsciiHexadecimalIntegralCopy(2, LE, nullptr), FORMAT);
    EXPECT_EQ(validator.ValidateAsciiHexadecimalIntegral(1, LE), PARAM);
    EXPECT_EQ(validator.GetCursor(), 4u);

    // Every typed member at its own limit.
    const std::string all = "FFFFFFFFFFFFFFFF";
    auto check = [&all](auto* sample) {
        using T = std::remove_pointer_t<decltype(sample)>;
        const unsigned bytes = sizeof(T) <= 8 ? sizeof(T) : 8;
        const std::string text = all.substr(0, 2 * bytes) + "01";
        MessageValidator v = Over(text);
        T typed = 0;
        EXPECT_EQ(v.ValidateAsciiHexadecimalIntegral(2 * bytes, BE, &typed), OK);
        EXPECT_EQ(typed, std::numeric_limits<T>::max());
        MessageValidator w = Over(text);
        if (bytes < 8)
        {
            EXPECT_EQ(w.ValidateAsciiHexadecimalIntegralCopy(2 * bytes + 2, LE, &typed, nullptr), RANGE);
        }
        else
            EXPECT_EQ(w.ValidateAsciiHexadecimalIntegralCopy(2 * bytes + 2, LE, &typed, nullptr), PARAM);
        EXPECT_EQ(w.GetCursor(), 0u);
    };
    check(static_cast<unsigned char*>(nullptr));
    check(static_cast<unsigned short*>(nullptr));
    check(static_cast<unsigned int*>(nullptr));
    check(static_cast<unsigned long*>(nullptr));
    check(static_cast<unsigned long long*>(nullptr));
}

// ---- Binary integers ---------------------------------------------------------

struct BinaryRow
{
    int line;
    Width width;
    bool isSigned;
    MessageHandler::Endian endian;
    std::vector<unsigned char> bytes;
    StatusCode status;
    std::int64_t value; // the expected value, as its bit pattern for unsigned rows
};

template <typename T>
void RunBinary(const BinaryRow& row)
{
    const std::string message(row.bytes.begin(), row.bytes.end());
    const unsigned size = static_cast<unsigned>(row.bytes.size());
    MessageValidator validator = Over(message);
    T value = static_cast<T>(0x5A);
    StatusCode status;
    if constexpr (std::is_signed_v<T>)
        status = validator.ValidateSignedBinaryIntegral(size, row.endian, &value);
    else
        status = validator.ValidateUnsignedBinaryIntegral(size, row.endian, &value);
    EXPECT_EQ(status, row.status);
    EXPECT_EQ(value, row.status == OK ? static_cast<T>(row.value) : static_cast<T>(0x5A));
    EXPECT_EQ(validator.GetCursor(), row.status == OK ? size : 0u);
}

TEST(MessageValidatorTest, BinaryTable)
{
    const BinaryRow rows[] = {
        {__LINE__, W32, false, BE, {0x01, 0x02, 0x03}, OK, 66051},
        {__LINE__, W32, false, LE, {0x01, 0x02, 0x03}, OK, 0x030201},
        {__LINE__, W8, false, BE, {0x01, 0x02, 0x03}, RANGE, 0},
        {__LINE__, W8, false, LE, {0x01, 0x02, 0x03}, RANGE, 0},
        {__LINE__, W8, false, BE, {0x00, 0x00, 0xFF}, OK, 255},
        {__LINE__, W8, false, LE, {0xFF, 0x00, 0x00}, OK, 255},
        {__LINE__, W8, false, LE, {0x00, 0x01}, RANGE, 0},
        {__LINE__, W8, false, BE, {0x01, 0x00}, RANGE, 0},
        {__LINE__, W16, false, LE, {0x34, 0x12}, OK, 0x1234},
        {__LINE__, W16, false, BE, {0x12, 0x34}, OK, 0x1234},
        {__LINE__, W16, false, BE, {0x00, 0xFF, 0xFF}, OK, 0xFFFF},
        {__LINE__, W16, false, BE, {0x01, 0x00, 0x00}, RANGE, 0},
        {__LINE__, W16, false, LE, {0xFF, 0xFF, 0x00, 0x00}, OK, 0xFFFF},
        {__LINE__, W16, false, LE, {0x00, 0x00, 0x01, 0x00}, RANGE, 0},
        {__LINE__, W32, false, LE, {0xFF, 0xFF, 0xFF, 0xFF}, OK, 0xFFFFFFFF},
        {__LINE__, W32, false, BE, {0x00, 0xFF, 0xFF, 0xFF, 0xFF}, OK, 0xFFFFFFFF},
        {__LINE__, W32, false, BE, {0x01, 0x00, 0x00, 0x00, 0x00}, RANGE, 0},
        {__LINE__, W32, false, LE, {0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00}, OK, 0xFFFFFFFF},
        {__LINE__, W32, false, LE, {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80}, RANGE, 0},
        {__LINE__, W64, false, LE, {1, 2, 3, 4, 5, 6, 7, 8}, OK, 0x0807060504030201},
        {__LINE__, W64, false, BE, {1, 2, 3, 4, 5, 6, 7, 8}, OK, 0x0102030405060708},
        {__LINE__, W64, false, BE, {1, 2, 3, 4, 5}, OK, 0x0102030405},
        {__LINE__, W64, false, LE, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, OK, -1},
        {__LINE__, W64, false, LE, {1, 2, 3, 4, 5, 6, 7, 8, 9}, PARAM, 0},
        {__LINE__, W8, false, BE, {1, 2, 3, 4, 5, 6, 7, 8, 9}, PARAM, 0},
        // signed: two's complement of the field's width, sign-extended
        {__LINE__, W8, true, LE, {0xFF}, OK, -1},
        {__LINE__, W8, true, LE, {0x7F}, OK, 127},
        {__LINE__, W8, true, LE, {0x80}, OK, -128},
        {__LINE__, W8, true, LE, {0x80, 0x00}, RANGE, 0},
        {__LINE__, W8, true, LE, {0x80, 0xFF}, OK, -128},
        {__LINE__, W8, true, BE, {0xFF, 0x7F}, RANGE, 0},
        {__LINE__, W8, true, BE, {0xFF, 0xFF, 0xFF}, OK, -1},
        {__LINE__, W16, true, LE, {0x00, 0x80}, OK, -32768},
        {__LINE__, W16, true, BE, {0x80, 0x00}, OK, -32768},
        {__LINE__, W16, true, BE, {0x00, 0x80, 0x00}, RANGE, 0},
        {__LINE__, W16, true, BE, {0xFF, 0x7F, 0xFF}, RANGE, 0},
        {__LINE__, W16, true, BE, {0xFF, 0x80, 0x00}, OK, -32768},
        {__LINE__, W32, true, BE, {0xFE, 0xFF, 0xFF}, OK, -65537},
        {__LINE__, W32, true, LE, {0xFF, 0xFF, 0xFF, 0x7F}, OK, 2147483647},
        {__LINE__, W32, true, LE, {0x00, 0x00, 0x00, 0x80}, OK, -2147483647 - 1},
        {__LINE__, W32, true, LE, {0x00, 0x00, 0x00, 0x80, 0x00}, RANGE, 0},
        {__LINE__, W32, true, LE, {0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF, 0xFF}, RANGE, 0},
        {__LINE__, W64, true, LE, {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80}, OK,
         std::numeric_limits<std::int64_t>::min()},
        {__LINE__, W64, true, BE, {0x80, 0x00, 0x00, 0x00, 0x00}, OK, -549755813888},
        {__LINE__, W64, true, BE, {1, 2, 3, 4, 5, 6, 7, 8, 9}, PARAM, 0},
    };
    for (const BinaryRow& row : rows)
    {
        SCOPED_TRACE("row at line " + std::to_string(row.line));
        if (row.isSigned)
        {
            switch (row.width)
            {
            case W8: RunBinary<signed char>(row); break;
            case W16: RunBinary<short>(row); break;
            case W32: RunBinary<int>(row); break;
            case W64: RunBinary<long long>(row); break;
            }
        }
        else
        {
            switch (row.width)
            {
            case W8: RunBinary<unsigned char>(row); break;
            case W16: RunBinary<unsigned short>(row); break;
            case W32: RunBinary<unsigned int>(row); break;
            case W64: RunBinary<unsigned long long>(row); break;
            }
        }
    }
}

TEST(MessageValidatorTest, BinaryPlainRangeAndList)
{
    const unsigned char bytes[] = {0x00, 0x10, 0xFF, 0xF0, 0x01};
    MessageValidator validator(bytes, sizeof bytes);
    std::uint64_t value = 0;
    EXPECT_EQ(validator.ValidateUnsignedBinaryIntegral(2, BE, 0, 15, &value), RANGE);
    EXPECT_EQ(validator.ValidateUnsignedBinaryIntegral(2, BE, 16, 16, &value), OK);
    EXPECT_EQ(value, 16u);
    std::int64_t signedValue = 0;
    EXPECT_EQ(validator.ValidateSignedBinaryIntegral(2, BE, -15, 15, &signedValue), RANGE);
    EXPECT_EQ(validator.ValidateSignedBinaryIntegral(2, BE, std::vector<std::int64_t>{-16, 16}, &signedValue), OK);
    EXPECT_EQ(signedValue, -16);
    EXPECT_EQ(validator.ValidateUnsignedBinaryIntegral(1, LE, std::vector<std::uint64_t>{2}), RANGE);
    EXPECT_EQ(validator.ValidateSignedBinaryIntegral(1, LE, std::vector<std::int64_t>{}), RANGE);
    EXPECT_EQ(validator.ValidateUnsignedBinaryIntegral(2, LE), PARAM); // 2 bytes, 1 left
    unsigned char copy = 0;
    EXPECT_EQ(validator.ValidateSignedBinaryIntegralCopy(1, LE, &copy), OK);
    EXPECT_EQ(copy, 0x01);
    EXPECT_TRUE(validator.IsAtEnd());

    const unsigned char nine[9] = {};
    MessageValidator wide(nine, sizeof nine);
    EXPECT_EQ(wide.ValidateUnsignedBinaryIntegral(9, LE), PARAM);
    EXPECT_EQ(wide.ValidateSignedBinaryIntegralCopy(9, BE, nullptr), PARAM);
    EXPECT_EQ(wide.ValidateUnsignedBinaryIntegral(9, LE, std::uint64_t{0}, std::uint64_t{0}), PARAM);
    EXPECT_EQ(wide.ValidateUnsignedBinaryIntegral(8, LE), OK);
}

// Values written by MessageBuilder in both orders and all widths read back.
template <typename T, typename Append>
void RoundTrip(Append append, MessageHandler::Endian endian, std::mt19937_64& random)
{
    std::vector<T> values = {0, 1, std::numeric_limits<T>::max(), std::numeric_limits<T>::min(),
                             static_cast<T>(std::numeric_limits<T>::max() - 1)};
    for (int i = 0; i < 50; ++i)
        values.push_back(static_cast<T>(random()));
    MessageBuilder builder;
    for (T value : values)
        ASSERT_EQ(append(builder, value, endian), OK);
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
        RoundTrip<std::uint8_t>([](MessageBuilder& b, std::uint8_t v, MessageHandler::Endian) { return b.AppendUInt8(v); },
                                endian, random);
        RoundTrip<std::int8_t>([](MessageBuilder& b, std::int8_t v, MessageHandler::Endian) { return b.AppendInt8(v); },
                               endian, random);
        RoundTrip<std::uint16_t>(
            [](MessageBuilder& b, std::uint16_t v, MessageHandler::Endian e) { return b.AppendUInt16(v, e); }, endian,
            random);
        RoundTrip<std::int16_t>(
            [](MessageBuilder& b, std::int16_t v, MessageHandler::Endian e) { return b.AppendInt16(v, e); }, endian,
            random);
        RoundTrip<std::uint32_t>(
            [](MessageBuilder& b, std::uint32_t v, MessageHandler::Endian e) { return b.AppendUInt32(v, e); }, endian,
            random);
        RoundTrip<std::int32_t>(
            [](MessageBuilder& b, std::int32_t v, MessageHandler::Endian e) { return b.AppendInt32(v, e); }, endian,
            random);
        RoundTrip<std::uint64_t>(
            [](MessageBuilder& b, std::uint64_t v, MessageHandler::Endian e) { return b.AppendUInt64(v, e); }, endian,
            random);
        RoundTrip<std::int64_t>(
            [](MessageBuilder& b, std::int64_t v, MessageHandler::Endian e) { return b.AppendInt64(v, e); }, endian,
            random);
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

// ---- Every integer check, every width, both byte orders ----------------------

// The integer families and their typed members.
enum Family
{
    UDEC, // unsigned decimal text
    SDEC, // signed decimal text
    HEX,  // hexadecimal text
    UBIN, // unsigned binary
    SBIN  // signed binary
};

constexpr unsigned WHOLE = ~0u; // the size asked for is the field's size

struct IntegerRow
{
    int line;
    Family family;
    Width width;
    std::string field; // text or bytes; hexadecimal pairs and binary bytes most significant first
    unsigned size;     // bytes asked for; WHOLE for the field's size
    StatusCode status; // of the typed member
    std::int64_t value; // the converted value, as its bit pattern for unsigned rows
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

template <typename T>
StatusCode Typed(Family family, MessageValidator& v, unsigned size, MessageHandler::Endian endian, T* value,
                 const void** data, void* destination)
{
    const bool copy = destination != nullptr;
    if constexpr (std::is_signed_v<T>)
    {
        if (family == SDEC)
            return copy ? v.ValidateSignedAsciiIntegralCopy(size, value, destination)
                        : v.ValidateSignedAsciiIntegral(size, value, data);
        return copy ? v.ValidateSignedBinaryIntegralCopy(size, endian, value, destination)
                    : v.ValidateSignedBinaryIntegral(size, endian, value, data);
    }
    else
    {
        if (family == UDEC)
            return copy ? v.ValidateUnsignedAsciiIntegralCopy(size, value, destination)
                        : v.ValidateUnsignedAsciiIntegral(size, value, data);
        if (family == HEX)
            return copy ? v.ValidateAsciiHexadecimalIntegralCopy(size, endian, value, destination)
                        : v.ValidateAsciiHexadecimalIntegral(size, endian, value, data);
        return copy ? v.ValidateUnsignedBinaryIntegralCopy(size, endian, value, destination)
                    : v.ValidateUnsignedBinaryIntegral(size, endian, value, data);
    }
}

// The 64-bit range member bounded by T's limits (the signed decimal limit is
// symmetric, as the typed members are), the allowed-list member with the
// row's value, and the member without conversion.
template <typename T>
StatusCode Ranged(Family family, MessageValidator& v, unsigned size, MessageHandler::Endian endian,
                  std::int64_t* value)
{
    if constexpr (std::is_signed_v<T>)
    {
        const std::int64_t max = std::numeric_limits<T>::max();
        if (family == SDEC)
            return v.ValidateSignedAsciiIntegral(size, -max, max, value);
        return v.ValidateSignedBinaryIntegral(size, endian, std::numeric_limits<T>::min(), max, value);
    }
    else
    {
        std::uint64_t converted = 0;
        const std::uint64_t max = std::numeric_limits<T>::max();
        StatusCode status;
        if (family == UDEC)
            status = v.ValidateUnsignedAsciiIntegral(size, 0, max, value != nullptr ? &converted : nullptr);
        else if (family == HEX)
            status = v.ValidateAsciiHexadecimalIntegral(size, endian, 0, max, value != nullptr ? &converted : nullptr);
        else
            status = v.ValidateUnsignedBinaryIntegral(size, endian, 0, max, value != nullptr ? &converted : nullptr);
        if (status == OK && value != nullptr)
            *value = static_cast<std::int64_t>(converted);
        return status;
    }
}

template <typename T>
StatusCode Listed(Family family, MessageValidator& v, unsigned size, MessageHandler::Endian endian,
                  std::int64_t listed)
{
    if constexpr (std::is_signed_v<T>)
    {
        const std::vector<std::int64_t> list = {listed};
        std::int64_t value = 0;
        return family == SDEC ? v.ValidateSignedAsciiIntegral(size, list, &value)
                              : v.ValidateSignedBinaryIntegral(size, endian, list, &value);
    }
    else
    {
        const std::vector<std::uint64_t> list = {static_cast<std::uint64_t>(listed)};
        std::uint64_t value = 0;
        if (family == UDEC)
            return v.ValidateUnsignedAsciiIntegral(size, list, &value);
        if (family == HEX)
            return v.ValidateAsciiHexadecimalIntegral(size, endian, list, &value);
        return v.ValidateUnsignedBinaryIntegral(size, endian, list, &value);
    }
}

StatusCode Unconverted(Family family, MessageValidator& v, unsigned size, MessageHandler::Endian endian)
{
    switch (family)
    {
    case UDEC: return v.ValidateUnsignedAsciiIntegral(size);
    case SDEC: return v.ValidateSignedAsciiIntegral(size);
    case HEX: return v.ValidateAsciiHexadecimalIntegral(size, endian);
    case UBIN: return v.ValidateUnsignedBinaryIntegral(size, endian);
    case SBIN: return v.ValidateSignedBinaryIntegral(size, endian);
    }
    return STATUS_CODE_UNKNOWN;
}

template <typename T>
void RunIntegerRow(const IntegerRow& row)
{
    using Orders = std::vector<MessageHandler::Endian>;
    const Orders orders = HasByteOrder(row.family) ? Orders{BE, LE} : Orders{LE};
    for (const MessageHandler::Endian endian : orders)
    {
        SCOPED_TRACE(endian == BE ? "big-endian" : "little-endian");
        const std::string field =
            HasByteOrder(row.family) && endian == LE ? LittleEndian(row.family, row.field) : row.field;
        const unsigned size = row.size == WHOLE ? Size(field) : row.size;
        // One consumed byte before the field, so the cursor does not start at 0.
        const std::string message = "#" + field;
        for (const bool copyForm : {false, true})
        {
            SCOPED_TRACE(copyForm ? "Copy form" : "plain form");
            MessageValidator validator = Over(message);
            ASSERT_EQ(validator.ValidateBytes(1), OK);
            T value = static_cast<T>(0x5A);
            const void* data = &row;
            char destination[32];
            std::memset(destination, '.', sizeof destination);
            const StatusCode status = Typed<T>(row.family, validator, size, endian, &value,
                                               copyForm ? nullptr : &data, copyForm ? destination : nullptr);
            EXPECT_EQ(status, row.status);
            if (status == OK)
            {
                EXPECT_EQ(value, static_cast<T>(row.value));
                EXPECT_EQ(validator.GetCursor(), 1 + size);
                if (copyForm)
                {
                    EXPECT_EQ(std::string(destination, size), field.substr(0, size));
                }
                else
                    EXPECT_EQ(data, message.data() + 1);
            }
            else
            {
                EXPECT_EQ(value, static_cast<T>(0x5A));
                EXPECT_EQ(validator.GetCursor(), 1u);
                EXPECT_EQ(data, &row);
                EXPECT_EQ(destination[0], '.');
            }
        }
        // The 64-bit range and list members agree with the typed member.
        MessageValidator ranged = Over(message);
        ASSERT_EQ(ranged.ValidateBytes(1), OK);
        std::int64_t wide = 0x5A;
        EXPECT_EQ(Ranged<T>(row.family, ranged, size, endian, &wide), row.status);
        EXPECT_EQ(wide, row.status == OK ? row.value : 0x5A);
        EXPECT_EQ(ranged.GetCursor(), row.status == OK ? 1 + size : 1u);
        MessageValidator listed = Over(message);
        ASSERT_EQ(listed.ValidateBytes(1), OK);
        EXPECT_EQ(Listed<T>(row.family, listed, size, endian, row.value), row.status);
        EXPECT_EQ(listed.GetCursor(), row.status == OK ? 1 + size : 1u);
        // Without a conversion there is no overflow, and size 0 asks for nothing.
        MessageValidator unconverted = Over(message);
        ASSERT_EQ(unconverted.ValidateBytes(1), OK);
        const StatusCode plainStatus = (row.status == RANGE || size == 0) ? OK : row.status;
        EXPECT_EQ(Unconverted(row.family, unconverted, size, endian), plainStatus);
        EXPECT_EQ(unconverted.GetCursor(), plainStatus == OK ? 1 + size : 1u);
    }
}

std::string Bytes(std::initializer_list<unsigned char> bytes)
{
    return std::string(bytes.begin(), bytes.end());
}

TEST(MessageValidatorTest, IntegerChecksForEveryWidthAndByteOrder)
{
    const std::string nine = Bytes({0x01, 0, 0, 0, 0, 0, 0, 0, 0}); // 2^64: one byte too wide
    const std::string ff = Bytes({0xFF});
    const IntegerRow rows[] = {
        // unsigned decimal: last value, next value, wrong character, past the end, size 0
        {__LINE__, UDEC, W8, "255", WHOLE, OK, 255},
        {__LINE__, UDEC, W8, "256", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W8, "25x", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W8, "255", 4, PARAM, 0},
        {__LINE__, UDEC, W8, "", 0, PARAM, 0},
        {__LINE__, UDEC, W16, "65535", WHOLE, OK, 65535},
        {__LINE__, UDEC, W16, "65536", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W16, "6553.", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W16, "65535", 6, PARAM, 0},
        {__LINE__, UDEC, W16, "", 0, PARAM, 0},
        {__LINE__, UDEC, W32, "4294967295", WHOLE, OK, 4294967295},
        {__LINE__, UDEC, W32, "4294967296", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W32, "42949672-5", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W32, "4294967295", 11, PARAM, 0},
        {__LINE__, UDEC, W32, "", 0, PARAM, 0},
        {__LINE__, UDEC, W64, "18446744073709551615", WHOLE, OK, -1},
        {__LINE__, UDEC, W64, "18446744073709551616", WHOLE, RANGE, 0},
        {__LINE__, UDEC, W64, "1844674407370955161 ", WHOLE, FORMAT, 0},
        {__LINE__, UDEC, W64, "18446744073709551615", 21, PARAM, 0},
        {__LINE__, UDEC, W64, "", 0, PARAM, 0},
        // signed decimal: both limits (symmetric), wrong character, past the end, size 0
        {__LINE__, SDEC, W8, "127", WHOLE, OK, 127},
        {__LINE__, SDEC, W8, "128", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W8, "-127", WHOLE, OK, -127},
        {__LINE__, SDEC, W8, "-128", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W8, "1+2", WHOLE, FORMAT, 0},
        {__LINE__, SDEC, W8, "-12", 4, PARAM, 0},
        {__LINE__, SDEC, W8, "", 0, PARAM, 0},
        {__LINE__, SDEC, W16, "32767", WHOLE, OK, 32767},
        {__LINE__, SDEC, W16, "32768", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W16, "-32767", WHOLE, OK, -32767},
        {__LINE__, SDEC, W16, "-32768", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W16, "--1", WHOLE, FORMAT, 0},
        {__LINE__, SDEC, W16, "-32767", 7, PARAM, 0},
        {__LINE__, SDEC, W16, "", 0, PARAM, 0},
        {__LINE__, SDEC, W32, "2147483647", WHOLE, OK, 2147483647},
        {__LINE__, SDEC, W32, "2147483648", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W32, "-2147483647", WHOLE, OK, -2147483647},
        {__LINE__, SDEC, W32, "-2147483648", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W32, "-214748364-", WHOLE, FORMAT, 0},
        {__LINE__, SDEC, W32, "-2147483647", 12, PARAM, 0},
        {__LINE__, SDEC, W32, "", 0, PARAM, 0},
        {__LINE__, SDEC, W64, "9223372036854775807", WHOLE, OK, 9223372036854775807},
        {__LINE__, SDEC, W64, "9223372036854775808", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W64, "-9223372036854775807", WHOLE, OK, -9223372036854775807},
        {__LINE__, SDEC, W64, "-9223372036854775808", WHOLE, RANGE, 0},
        {__LINE__, SDEC, W64, "+922337203685477580x", WHOLE, FORMAT, 0},
        {__LINE__, SDEC, W64, "-9223372036854775807", 21, PARAM, 0},
        {__LINE__, SDEC, W64, "", 0, PARAM, 0},
        // hexadecimal: last value, next value, a zero high byte, wrong
        // character, odd, over-long (17 and 18 characters), past the end, size 0
        {__LINE__, HEX, W8, "FF", WHOLE, OK, 0xFF},
        {__LINE__, HEX, W8, "0100", WHOLE, RANGE, 0},
        {__LINE__, HEX, W8, "00ff", WHOLE, OK, 0xFF},
        {__LINE__, HEX, W8, "0g", WHOLE, FORMAT, 0},
        {__LINE__, HEX, W8, "0FF", WHOLE, PARAM, 0},
        {__LINE__, HEX, W8, "0000000000000000FF", WHOLE, PARAM, 0},
        {__LINE__, HEX, W8, "FF", 4, PARAM, 0},
        {__LINE__, HEX, W8, "", 0, PARAM, 0},
        {__LINE__, HEX, W16, "FFFF", WHOLE, OK, 0xFFFF},
        {__LINE__, HEX, W16, "010000", WHOLE, RANGE, 0},
        {__LINE__, HEX, W16, "00FfFf", WHOLE, OK, 0xFFFF},
        {__LINE__, HEX, W16, "FF:F", WHOLE, FORMAT, 0},
        {__LINE__, HEX, W16, "FFFFF", WHOLE, PARAM, 0},
        {__LINE__, HEX, W16, "00000000000000FFFF", WHOLE, PARAM, 0},
        {__LINE__, HEX, W16, "FFFF", 6, PARAM, 0},
        {__LINE__, HEX, W16, "", 0, PARAM, 0},
        {__LINE__, HEX, W32, "FFFFFFFF", WHOLE, OK, 0xFFFFFFFF},
        {__LINE__, HEX, W32, "0100000000", WHOLE, RANGE, 0},
        {__LINE__, HEX, W32, "00FFFFFFFF", WHOLE, OK, 0xFFFFFFFF},
        {__LINE__, HEX, W32, "FFFFFF@F", WHOLE, FORMAT, 0},
        {__LINE__, HEX, W32, "FFFFFFFFF", WHOLE, PARAM, 0},
        {__LINE__, HEX, W32, "0000000000FFFFFFFF", WHOLE, PARAM, 0},
        {__LINE__, HEX, W32, "FFFFFFFF", 10, PARAM, 0},
        {__LINE__, HEX, W32, "", 0, PARAM, 0},
        {__LINE__, HEX, W64, "FFFFFFFFFFFFFFFF", WHOLE, OK, -1},
        {__LINE__, HEX, W64, "8000000000000001", WHOLE, OK, std::numeric_limits<std::int64_t>::min() + 1},
        {__LINE__, HEX, W64, "010000000000000000", WHOLE, PARAM, 0}, // 2^64 needs a ninth pair
        {__LINE__, HEX, W64, "FFFFFFFFFFFFFFG0", WHOLE, FORMAT, 0},
        {__LINE__, HEX, W64, "0FFFFFFFFFFFFFFFF", WHOLE, PARAM, 0},
        {__LINE__, HEX, W64, "FFFFFFFFFFFFFF", 16, PARAM, 0},
        {__LINE__, HEX, W64, "", 0, PARAM, 0},
        // unsigned binary: last value, next value, a zero high byte, nine
        // bytes, past the end, size 0
        {__LINE__, UBIN, W8, ff, WHOLE, OK, 0xFF},
        {__LINE__, UBIN, W8, Bytes({0x01, 0x00}), WHOLE, RANGE, 0},
        {__LINE__, UBIN, W8, Bytes({0, 0, 0, 0, 0, 0, 0, 0xFF}), WHOLE, OK, 0xFF},
        {__LINE__, UBIN, W8, nine, WHOLE, PARAM, 0},
        {__LINE__, UBIN, W8, ff, 2, PARAM, 0},
        {__LINE__, UBIN, W8, "", 0, PARAM, 0},
        {__LINE__, UBIN, W16, Bytes({0xFF, 0xFF}), WHOLE, OK, 0xFFFF},
        {__LINE__, UBIN, W16, Bytes({0x01, 0x00, 0x00}), WHOLE, RANGE, 0},
        {__LINE__, UBIN, W16, Bytes({0x00, 0xFF, 0xFF}), WHOLE, OK, 0xFFFF},
        {__LINE__, UBIN, W16, Bytes({0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}), WHOLE, RANGE, 0},
        {__LINE__, UBIN, W16, nine, WHOLE, PARAM, 0},
        {__LINE__, UBIN, W16, Bytes({0xFF, 0xFF}), 3, PARAM, 0},
        {__LINE__, UBIN, W16, "", 0, PARAM, 0},
        {__LINE__, UBIN, W32, Bytes({0xFF, 0xFF, 0xFF, 0xFF}), WHOLE, OK, 0xFFFFFFFF},
        {__LINE__, UBIN, W32, Bytes({0x01, 0x00, 0x00, 0x00, 0x00}), WHOLE, RANGE, 0},
        {__LINE__, UBIN, W32, Bytes({0x00, 0xFF, 0xFF, 0xFF, 0xFF}), WHOLE, OK, 0xFFFFFFFF},
        {__LINE__, UBIN, W32, Bytes({0x12, 0x34, 0x56}), WHOLE, OK, 0x123456},
        {__LINE__, UBIN, W32, nine, WHOLE, PARAM, 0},
        {__LINE__, UBIN, W32, Bytes({0xFF, 0xFF, 0xFF, 0xFF}), 5, PARAM, 0},
        {__LINE__, UBIN, W32, "", 0, PARAM, 0},
        {__LINE__, UBIN, W64, Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), WHOLE, OK, -1},
        {__LINE__, UBIN, W64, Bytes({0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08}), WHOLE, OK, 0x0102030405060708},
        {__LINE__, UBIN, W64, Bytes({0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}), WHOLE, OK, 0x80000000000000},
        {__LINE__, UBIN, W64, nine, WHOLE, PARAM, 0},
        {__LINE__, UBIN, W64, Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), 8, PARAM, 0},
        {__LINE__, UBIN, W64, "", 0, PARAM, 0},
        // signed binary: both limits and one past each (in a wider field),
        // sign extension of a wider field, nine bytes, past the end, size 0
        {__LINE__, SBIN, W8, Bytes({0x7F}), WHOLE, OK, 127},
        {__LINE__, SBIN, W8, Bytes({0x00, 0x80}), WHOLE, RANGE, 0},
        {__LINE__, SBIN, W8, Bytes({0x80}), WHOLE, OK, -128},
        {__LINE__, SBIN, W8, Bytes({0xFF, 0x7F}), WHOLE, RANGE, 0},
        {__LINE__, SBIN, W8, Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x80}), WHOLE, OK, -128},
        {__LINE__, SBIN, W8, nine, WHOLE, PARAM, 0},
        {__LINE__, SBIN, W8, ff, 2, PARAM, 0},
        {__LINE__, SBIN, W8, "", 0, PARAM, 0},
        {__LINE__, SBIN, W16, Bytes({0x7F, 0xFF}), WHOLE, OK, 32767},
        {__LINE__, SBIN, W16, Bytes({0x00, 0x80, 0x00}), WHOLE, RANGE, 0},
        {__LINE__, SBIN, W16, Bytes({0x80, 0x00}), WHOLE, OK, -32768},
        {__LINE__, SBIN, W16, Bytes({0xFF, 0x7F, 0xFF}), WHOLE, RANGE, 0},
        {__LINE__, SBIN, W16, Bytes({0xFF, 0xFF, 0xFE}), WHOLE, OK, -2},
        {__LINE__, SBIN, W16, nine, WHOLE, PARAM, 0},
        {__LINE__, SBIN, W16, Bytes({0x7F, 0xFF}), 3, PARAM, 0},
        {__LINE__, SBIN, W16, "", 0, PARAM, 0},
        {__LINE__, SBIN, W32, Bytes({0x7F, 0xFF, 0xFF, 0xFF}), WHOLE, OK, 2147483647},
        {__LINE__, SBIN, W32, Bytes({0x00, 0x80, 0x00, 0x00, 0x00}), WHOLE, RANGE, 0},
        {__LINE__, SBIN, W32, Bytes({0x80, 0x00, 0x00, 0x00}), WHOLE, OK, -2147483647 - 1},
        {__LINE__, SBIN, W32, Bytes({0xFF, 0x7F, 0xFF, 0xFF, 0xFF}), WHOLE, RANGE, 0},
        {__LINE__, SBIN, W32, Bytes({0x80, 0x00, 0x00}), WHOLE, OK, -8388608},
        {__LINE__, SBIN, W32, nine, WHOLE, PARAM, 0},
        {__LINE__, SBIN, W32, Bytes({0x7F, 0xFF, 0xFF, 0xFF}), 5, PARAM, 0},
        {__LINE__, SBIN, W32, "", 0, PARAM, 0},
        {__LINE__, SBIN, W64, Bytes({0x7F, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), WHOLE, OK,
         std::numeric_limits<std::int64_t>::max()},
        {__LINE__, SBIN, W64, Bytes({0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}), WHOLE, OK,
         std::numeric_limits<std::int64_t>::min()},
        {__LINE__, SBIN, W64, Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), WHOLE, OK, -1},
        {__LINE__, SBIN, W64, nine, WHOLE, PARAM, 0},
        {__LINE__, SBIN, W64, Bytes({0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}), 8, PARAM, 0},
        {__LINE__, SBIN, W64, "", 0, PARAM, 0},
    };
    for (const IntegerRow& row : rows)
    {
        SCOPED_TRACE("row at line " + std::to_string(row.line));
        const bool isSigned = row.family == SDEC || row.family == SBIN;
        switch (row.width)
        {
        case W8: isSigned ? RunIntegerRow<signed char>(row) : RunIntegerRow<unsigned char>(row); break;
        case W16: isSigned ? RunIntegerRow<short>(row) : RunIntegerRow<unsigned short>(row); break;
        case W32: isSigned ? RunIntegerRow<int>(row) : RunIntegerRow<unsigned int>(row); break;
        case W64: isSigned ? RunIntegerRow<long long>(row) : RunIntegerRow<unsigned long long>(row); break;
        }
    }
}

// ---- Reals -------------------------------------------------------------------

struct RealRow
{
    int line;
    bool isSigned;
    std::string text;
    StatusCode status;
    std::int64_t numerator; // for unsigned rows the bit pattern of the unsigned numerator
    std::uint64_t divisor;
};

TEST(MessageValidatorTest, RealTable)
{
    const RealRow rows[] = {
        {__LINE__, false, "12", OK, 12, 1},
        {__LINE__, false, "12.5", OK, 125, 10},
        {__LINE__, false, "0.05", OK, 5, 100},
        {__LINE__, false, "100.00", OK, 10000, 100},
        {__LINE__, false, ".5", OK, 5, 10},
        {__LINE__, false, "5.", OK, 5, 1},
        {__LINE__, false, "1.123456789", OK, 1123456789, 1000000000},
        {__LINE__, false, "1.1234567890", RANGE, 0, 0},
        {__LINE__, false, "0.0000000000", RANGE, 0, 0},
        {__LINE__, false, "18446744073709551615", OK, -1, 1},
        {__LINE__, false, "18446744073709551616", RANGE, 0, 0},
        {__LINE__, false, "1844674407370955161.5", OK, -1, 10},
        {__LINE__, false, "1844674407370955161.6", RANGE, 0, 0},
        {__LINE__, false, "-1", FORMAT, 0, 0},
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
    for (const RealRow& row : rows)
    {
        SCOPED_TRACE("row at line " + std::to_string(row.line) + ": " + row.text);
        const std::string message = row.text;
        MessageValidator validator = Over(message);
        std::uint64_t divisor = 77;
        StatusCode status;
        std::int64_t numerator = 77;
        if (row.isSigned)
        {
            status = validator.ValidateSignedAsciiReal(Size(message), &numerator, &divisor);
            std::int64_t staticNumerator = 0;
            std::uint64_t staticDivisor = 0;
            EXPECT_EQ(MessageValidator::CopySignedAsciiRealToNumeratorAndDivisor(message.data(), Size(message),
                                                                                 staticNumerator, staticDivisor),
                      row.status);
            if (row.status == OK)
            {
                EXPECT_EQ(staticNumerator, row.numerator);
            }
        }
        else
        {
            std::uint64_t unsignedNumerator = 77;
            status = validator.ValidateUnsignedAsciiReal(Size(message), &unsignedNumerator, &divisor);
            numerator = static_cast<std::int64_t>(unsignedNumerator);
            std::uint64_t staticNumerator = 0;
            std::uint64_t staticDivisor = 0;
            EXPECT_EQ(MessageValidator::CopyUnsignedAsciiRealToNumeratorAndDivisor(message.data(), Size(message),
                                                                                   staticNumerator, staticDivisor),
                      row.status);
            if (row.status == OK)
            {
                EXPECT_EQ(staticNumerator, static_cast<std::uint64_t>(row.numerator));
            }
        }
        EXPECT_EQ(status, row.status);
        EXPECT_EQ(numerator, row.status == OK ? row.numerator : 77);
        EXPECT_EQ(divisor, row.status == OK ? row.divisor : 77u);
        EXPECT_EQ(validator.GetCursor(), row.status == OK ? Size(message) : 0u);
        // The plain form accepts exactly what converts.
        MessageValidator plain = Over(message);
        EXPECT_EQ(row.isSigned ? plain.ValidateSignedAsciiReal(Size(message))
                               : plain.ValidateUnsignedAsciiReal(Size(message)),
                  row.status);
    }
}

TEST(MessageValidatorTest, RealTypedRangeAndList)
{
    MessageValidator validator = Over("0.1" "0.1" "0.1" "-2.5" "1.5" "2.5" "1.25");
    float f = 0;
    double d = 0;
    long double l = 0;
    EXPECT_EQ(validator.ValidateUnsignedAsciiReal(3, &f), OK);
    EXPECT_EQ(f, 0.1f);
    EXPECT_EQ(validator.ValidateUnsignedAsciiReal(3, &d), OK);
    EXPECT_EQ(d, 0.1);
    EXPECT_EQ(validator.ValidateSignedAsciiReal(3, &l), OK);
    EXPECT_EQ(l, 0.1L);
    EXPECT_EQ(validator.ValidateUnsignedAsciiReal(4, &d), FORMAT);
    EXPECT_EQ(validator.ValidateSignedAsciiRealCopy(4, &d, nullptr), OK);
    EXPECT_EQ(d, -2.5);
    long double value = 0;
    EXPECT_EQ(validator.ValidateUnsignedAsciiReal(3, 1.6L, 3.0L, &value), RANGE);
    EXPECT_EQ(validator.ValidateUnsignedAsciiReal(3, 1.5L, 1.5L, &value), OK);
    EXPECT_EQ(value, 1.5L);
    EXPECT_EQ(validator.ValidateSignedAsciiReal(3, std::vector<long double>{2.4L, 2.6L}, &value), RANGE);
    EXPECT_EQ(validator.ValidateSignedAsciiReal(3, std::vector<long double>{2.5L}, &value), OK);
    char copy[4] = {};
    EXPECT_EQ(validator.ValidateUnsignedAsciiRealCopy(4, std::vector<long double>{1.25L}, &value, copy), OK);
    EXPECT_EQ(std::string(copy, 4), "1.25");
    EXPECT_TRUE(validator.IsAtEnd());

    // Large numerators: the conversion stays correctly rounded.
    MessageValidator large = Over("9007199254740993" "123456789.123456789");
    EXPECT_EQ(large.ValidateUnsignedAsciiReal(16, &d), OK);
    EXPECT_EQ(d, 9007199254740992.0);
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
    for (const Row& row : rows)
    {
        SCOPED_TRACE("row at line " + std::to_string(row.line) + ": " + row.text);
        float f = 0;
        double d = 0;
        MessageValidator validator = Over(row.text);
        EXPECT_EQ(validator.ValidateUnsignedAsciiReal(Size(row.text), &f), OK);
        EXPECT_EQ(f, row.nearestFloat);
        MessageValidator again = Over(row.text);
        EXPECT_EQ(again.ValidateUnsignedAsciiRealCopy(Size(row.text), &d, nullptr), OK);
        EXPECT_EQ(d, row.nearestDouble);
        const std::string negative = "-" + row.text;
        MessageValidator signedValidator = Over(negative);
        EXPECT_EQ(signedValidator.ValidateSignedAsciiReal(Size(negative), &f), row.fitsSigned ? OK : RANGE);
        MessageValidator signedAgain = Over(negative);
        EXPECT_EQ(signedAgain.ValidateSignedAsciiReal(Size(negative), &d), row.fitsSigned ? OK : RANGE);
        if (row.fitsSigned)
        {
            EXPECT_EQ(f, -row.nearestFloat);
            EXPECT_EQ(d, -row.nearestDouble);
        }
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
    const std::string message = std::string("HDR1") + "xxxx" + "az" + "0101" + "SELL";
    MessageValidator validator = Over(message);
    const void* data = nullptr;
    EXPECT_EQ(validator.ValidateBytes(4, "HDR2", &data), FORMAT);
    EXPECT_EQ(validator.ValidateBytes(4, "XDR1", &data), FORMAT);
    EXPECT_EQ(validator.ValidateBytes(4, static_cast<const void*>(nullptr), &data), PARAM);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(validator.ValidateBytes(4, "HDR1", &data), OK);
    EXPECT_EQ(data, message.data());
    EXPECT_EQ(validator.ValidateBytes(4, static_cast<unsigned char>('y'), &data), RANGE);
    EXPECT_EQ(validator.ValidateBytes(4, static_cast<unsigned char>('x'), &data), OK);
    EXPECT_EQ(data, message.data() + 4);
    EXPECT_EQ(validator.ValidateBytes(2, static_cast<unsigned char>('b'), static_cast<unsigned char>('z'), &data),
              RANGE);
    EXPECT_EQ(validator.ValidateBytes(2, static_cast<unsigned char>('a'), static_cast<unsigned char>('y'), &data),
              RANGE);
    EXPECT_EQ(validator.ValidateBytes(2, static_cast<unsigned char>('a'), static_cast<unsigned char>('z'), &data),
              OK);
    EXPECT_EQ(validator.ValidateBytes(4, std::vector<unsigned char>{'0'}, &data), RANGE);
    EXPECT_EQ(validator.ValidateBytes(4, std::vector<unsigned char>{'1', '0'}, &data), OK);
    EXPECT_EQ(validator.ValidateBytes(4, std::vector<std::string>{"BUY", "SELLS", "sell"}, &data), RANGE);
    char copy[5] = {};
    EXPECT_EQ(validator.ValidateBytesCopy(4, std::vector<std::string>{"BUY", "SELL"}, copy), OK);
    EXPECT_EQ(std::string(copy), "SELL");
    EXPECT_TRUE(validator.IsAtEnd());
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

TEST(MessageValidatorTest, HighBytesCompareUnsigned)
{
    const unsigned char bytes[] = {0x80, 0xFF, 0x7F};
    MessageValidator validator(bytes, sizeof bytes);
    EXPECT_EQ(validator.ValidateBytes(2, static_cast<unsigned char>(0x80), static_cast<unsigned char>(0xFF), nullptr),
              OK);
    EXPECT_EQ(validator.ValidateBytes(1, std::vector<unsigned char>{0x80, 0xFF}, nullptr), RANGE);
    EXPECT_EQ(validator.ValidateBytes(1, std::vector<unsigned char>{0x7F}, nullptr), OK);
}

TEST(MessageValidatorTest, StringChecks)
{
    const std::string message = std::string("abc") + "aBc" + "12.5" + "SELL" + std::string("a\0b", 3);
    MessageValidator validator = Over(message);
    std::string text = "unchanged";
    EXPECT_EQ(validator.ValidateString(3, static_cast<unsigned char>('a'), static_cast<unsigned char>('z'), &text), OK);
    EXPECT_EQ(text, "abc");
    text = "unchanged";
    EXPECT_EQ(validator.ValidateString(3, static_cast<unsigned char>('a'), static_cast<unsigned char>('z'), &text),
              RANGE);
    EXPECT_EQ(text, "unchanged");
    EXPECT_EQ(validator.ValidateString(3, std::string("abcABC"), &text), OK);
    EXPECT_EQ(text, "aBc");
    EXPECT_EQ(validator.ValidateString(4, std::string("0123456789"), &text), RANGE);
    EXPECT_EQ(validator.ValidateString(4, std::string("0123456789."), &text), OK);
    EXPECT_EQ(text, "12.5");
    EXPECT_EQ(validator.ValidateString(3, std::vector<std::string>{"SELL"}, &text), RANGE);
    EXPECT_EQ(validator.ValidateString(4, std::vector<std::string>{"BUY", "SELL"}, &text), OK);
    EXPECT_EQ(text, "SELL");
    char copy[3] = {};
    EXPECT_EQ(validator.ValidateStringCopy(3, &text, copy), OK);
    EXPECT_EQ(text, std::string("a\0b", 3)); // the size delimits the text, zero bytes included
    EXPECT_EQ(copy[2], 'b');
    EXPECT_TRUE(validator.IsAtEnd());
    EXPECT_EQ(validator.ValidateString(1, &text), PARAM);
    EXPECT_EQ(validator.ValidateString(0, &text), OK);
    EXPECT_EQ(text, "");
}

// ---- The common frame --------------------------------------------------------

// One failing and one passing call of each family, plain and Copy. The
// message starts with 2 bytes that are consumed first, so the cursor is not 0.
struct FrameCase
{
    int line;
    std::string name;
    std::string field;  // the bytes after the prefix
    StatusCode failure; // what `fail` returns
    std::function<StatusCode(MessageValidator&, const void**, void*)> fail;
    std::function<StatusCode(MessageValidator&, const void**, void*)> pass;
    unsigned consumed = 0; // bytes `pass` consumes; 0: the whole field
};

std::vector<FrameCase> FrameCases()
{
    using V = MessageValidator&;
    using D = const void**;
    using C = void*;
    static std::uint64_t u64;
    static std::int64_t s64;
    static unsigned char u8;
    static signed char s8;
    static unsigned int u32;
    static int s32;
    static long double ld;
    static double dbl;
    static std::string text;
    static std::uint64_t divisor;
    return {
        {__LINE__, "bytes exact", "ABCD", FORMAT,
         [](V v, D d, C c) { return d ? v.ValidateBytes(4, "ABCE", d) : v.ValidateBytesCopy(4, "ABCE", c); },
         [](V v, D d, C c) { return d ? v.ValidateBytes(4, "ABCD", d) : v.ValidateBytesCopy(4, "ABCD", c); }},
        {__LINE__, "bytes equal", "zzzz", RANGE,
         [](V v, D d, C c) {
             return d ? v.ValidateBytes(4, static_cast<unsigned char>('y'), d)
                      : v.ValidateBytesCopy(4, static_cast<unsigned char>('y'), c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateBytes(4, static_cast<unsigned char>('z'), d)
                      : v.ValidateBytesCopy(4, static_cast<unsigned char>('z'), c);
         }},
        {__LINE__, "bytes within", "abcd", RANGE,
         [](V v, D d, C c) {
             return d ? v.ValidateBytes(4, static_cast<unsigned char>('a'), static_cast<unsigned char>('c'), d)
                      : v.ValidateBytesCopy(4, static_cast<unsigned char>('a'), static_cast<unsigned char>('c'), c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateBytes(4, static_cast<unsigned char>('a'), static_cast<unsigned char>('d'), d)
                      : v.ValidateBytesCopy(4, static_cast<unsigned char>('a'), static_cast<unsigned char>('d'), c);
         }},
        {__LINE__, "bytes set", "abab", RANGE,
         [](V v, D d, C c) {
             return d ? v.ValidateBytes(4, std::vector<unsigned char>{'a'}, d)
                      : v.ValidateBytesCopy(4, std::vector<unsigned char>{'a'}, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateBytes(4, std::vector<unsigned char>{'b', 'a'}, d)
                      : v.ValidateBytesCopy(4, std::vector<unsigned char>{'b', 'a'}, c);
         }},
        {__LINE__, "bytes list", "SELL", RANGE,
         [](V v, D d, C c) {
             return d ? v.ValidateBytes(4, std::vector<std::string>{"BUY"}, d)
                      : v.ValidateBytesCopy(4, std::vector<std::string>{"BUY"}, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateBytes(4, std::vector<std::string>{"SELL"}, d)
                      : v.ValidateBytesCopy(4, std::vector<std::string>{"SELL"}, c);
         }},
        {__LINE__, "unsigned decimal plain", "12a4", FORMAT,
         [](V v, D d, C c) { return d ? v.ValidateUnsignedAsciiIntegral(4, d) : v.ValidateUnsignedAsciiIntegralCopy(4, c); },
         [](V v, D d, C c) { return d ? v.ValidateUnsignedAsciiIntegral(2, d) : v.ValidateUnsignedAsciiIntegralCopy(2, c); },
         2},
        {__LINE__, "unsigned decimal typed", "256", RANGE,
         [](V v, D d, C c) {
             return d ? v.ValidateUnsignedAsciiIntegral(3, &u8, d) : v.ValidateUnsignedAsciiIntegralCopy(3, &u8, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateUnsignedAsciiIntegral(3, &u32, d) : v.ValidateUnsignedAsciiIntegralCopy(3, &u32, c);
         }},
        {__LINE__, "unsigned decimal range", "256", RANGE,
         [](V v, D d, C c) {
             return d ? v.ValidateUnsignedAsciiIntegral(3, 0, 255, &u64, d)
                      : v.ValidateUnsignedAsciiIntegralCopy(3, 0, 255, &u64, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateUnsignedAsciiIntegral(3, 0, 256, &u64, d)
                      : v.ValidateUnsignedAsciiIntegralCopy(3, 0, 256, &u64, c);
         }},
        {__LINE__, "unsigned decimal list", "256", RANGE,
         [](V v, D d, C c) {
             const std::vector<std::uint64_t> list{255};
             return d ? v.ValidateUnsignedAsciiIntegral(3, list, &u64, d)
                      : v.ValidateUnsignedAsciiIntegralCopy(3, list, &u64, c);
         },
         [](V v, D d, C c) {
             const std::vector<std::uint64_t> list{256};
             return d ? v.ValidateUnsignedAsciiIntegral(3, list, &u64, d)
                      : v.ValidateUnsignedAsciiIntegralCopy(3, list, &u64, c);
         }},
        {__LINE__, "signed decimal plain", "-1-", FORMAT,
         [](V v, D d, C c) { return d ? v.ValidateSignedAsciiIntegral(3, d) : v.ValidateSignedAsciiIntegralCopy(3, c); },
         [](V v, D d, C c) { return d ? v.ValidateSignedAsciiIntegral(2, d) : v.ValidateSignedAsciiIntegralCopy(2, c); },
         2},
        {__LINE__, "signed decimal typed", "-128", RANGE,
         [](V v, D d, C c) {
             return d ? v.ValidateSignedAsciiIntegral(4, &s8, d) : v.ValidateSignedAsciiIntegralCopy(4, &s8, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateSignedAsciiIntegral(4, &s32, d) : v.ValidateSignedAsciiIntegralCopy(4, &s32, c);
         }},
        {__LINE__, "signed decimal range", "-128", RANGE,
         [](V v, D d, C c) {
             return d ? v.ValidateSignedAsciiIntegral(4, -127, 0, &s64, d)
                      : v.ValidateSignedAsciiIntegralCopy(4, -127, 0, &s64, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateSignedAsciiIntegral(4, -128, 0, &s64, d)
                      : v.ValidateSignedAsciiIntegralCopy(4, -128, 0, &s64, c);
         }},
        {__LINE__, "signed decimal list", "-128", RANGE,
         [](V v, D d, C c) {
             const std::vector<std::int64_t> list{128};
             return d ? v.ValidateSignedAsciiIntegral(4, list, &s64, d)
                      : v.ValidateSignedAsciiIntegralCopy(4, list, &s64, c);
         },
         [](V v, D d, C c) {
             const std::vector<std::int64_t> list{-128};
             return d ? v.ValidateSignedAsciiIntegral(4, list, &s64, d)
                      : v.ValidateSignedAsciiIntegralCopy(4, list, &s64, c);
         }},
        {__LINE__, "hexadecimal odd", "0100", PARAM,
         [](V v, D d, C c) {
             return d ? v.ValidateAsciiHexadecimalIntegral(3, BE, d) : v.ValidateAsciiHexadecimalIntegralCopy(3, BE, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateAsciiHexadecimalIntegral(4, BE, d) : v.ValidateAsciiHexadecimalIntegralCopy(4, BE, c);
         }},
        {__LINE__, "hexadecimal typed", "0100", RANGE,
         [](V v, D d, C c) {
             return d ? v.ValidateAsciiHexadecimalIntegral(4, BE, &u8, d)
                      : v.ValidateAsciiHexadecimalIntegralCopy(4, BE, &u8, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateAsciiHexadecimalIntegral(4, LE, &u8, d)
                      : v.ValidateAsciiHexadecimalIntegralCopy(4, LE, &u8, c);
         }},
        {__LINE__, "hexadecimal range", "0100", RANGE,
         [](V v, D d, C c) {
             return d ? v.ValidateAsciiHexadecimalIntegral(4, BE, 0, 255, &u64, d)
                      : v.ValidateAsciiHexadecimalIntegralCopy(4, BE, 0, 255, &u64, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateAsciiHexadecimalIntegral(4, BE, 256, 256, &u64, d)
                      : v.ValidateAsciiHexadecimalIntegralCopy(4, BE, 256, 256, &u64, c);
         }},
        {__LINE__, "hexadecimal list", "0100", RANGE,
         [](V v, D d, C c) {
             const std::vector<std::uint64_t> list{256};
             return d ? v.ValidateAsciiHexadecimalIntegral(4, LE, list, &u64, d)
                      : v.ValidateAsciiHexadecimalIntegralCopy(4, LE, list, &u64, c);
         },
         [](V v, D d, C c) {
             const std::vector<std::uint64_t> list{1};
             return d ? v.ValidateAsciiHexadecimalIntegral(4, LE, list, &u64, d)
                      : v.ValidateAsciiHexadecimalIntegralCopy(4, LE, list, &u64, c);
         }},
        {__LINE__, "unsigned binary typed", "\x01\x02\x03", RANGE,
         [](V v, D d, C c) {
             return d ? v.ValidateUnsignedBinaryIntegral(3, BE, &u8, d)
                      : v.ValidateUnsignedBinaryIntegralCopy(3, BE, &u8, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateUnsignedBinaryIntegral(3, BE, &u32, d)
                      : v.ValidateUnsignedBinaryIntegralCopy(3, BE, &u32, c);
         }},
        {__LINE__, "unsigned binary range", "\x01\x02\x03", RANGE,
         [](V v, D d, C c) {
             return d ? v.ValidateUnsignedBinaryIntegral(3, BE, 0, 66050, &u64, d)
                      : v.ValidateUnsignedBinaryIntegralCopy(3, BE, 0, 66050, &u64, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateUnsignedBinaryIntegral(3, BE, 0, 66051, &u64, d)
                      : v.ValidateUnsignedBinaryIntegralCopy(3, BE, 0, 66051, &u64, c);
         }},
        {__LINE__, "unsigned binary list", "\x01\x02\x03", RANGE,
         [](V v, D d, C c) {
             const std::vector<std::uint64_t> list{66051};
             return d ? v.ValidateUnsignedBinaryIntegral(3, LE, list, &u64, d)
                      : v.ValidateUnsignedBinaryIntegralCopy(3, LE, list, &u64, c);
         },
         [](V v, D d, C c) {
             const std::vector<std::uint64_t> list{0x030201};
             return d ? v.ValidateUnsignedBinaryIntegral(3, LE, list, &u64, d)
                      : v.ValidateUnsignedBinaryIntegralCopy(3, LE, list, &u64, c);
         }},
        {__LINE__, "signed binary typed", "\xFF\x7F", RANGE,
         [](V v, D d, C c) {
             return d ? v.ValidateSignedBinaryIntegral(2, BE, &s8, d) : v.ValidateSignedBinaryIntegralCopy(2, BE, &s8, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateSignedBinaryIntegral(2, BE, &s32, d) : v.ValidateSignedBinaryIntegralCopy(2, BE, &s32, c);
         }},
        {__LINE__, "signed binary range", "\xFF\x7F", RANGE,
         [](V v, D d, C c) {
             return d ? v.ValidateSignedBinaryIntegral(2, BE, -128, 0, &s64, d)
                      : v.ValidateSignedBinaryIntegralCopy(2, BE, -128, 0, &s64, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateSignedBinaryIntegral(2, BE, -129, 0, &s64, d)
                      : v.ValidateSignedBinaryIntegralCopy(2, BE, -129, 0, &s64, c);
         }},
        {__LINE__, "signed binary list", "\xFF\x7F", RANGE,
         [](V v, D d, C c) {
             const std::vector<std::int64_t> list{0xFF7F};
             return d ? v.ValidateSignedBinaryIntegral(2, BE, list, &s64, d)
                      : v.ValidateSignedBinaryIntegralCopy(2, BE, list, &s64, c);
         },
         [](V v, D d, C c) {
             const std::vector<std::int64_t> list{-129};
             return d ? v.ValidateSignedBinaryIntegral(2, BE, list, &s64, d)
                      : v.ValidateSignedBinaryIntegralCopy(2, BE, list, &s64, c);
         }},
        {__LINE__, "binary too wide", "123456789", PARAM,
         [](V v, D d, C c) {
             return d ? v.ValidateUnsignedBinaryIntegral(9, LE, d) : v.ValidateSignedBinaryIntegralCopy(9, LE, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateUnsignedBinaryIntegral(8, LE, d) : v.ValidateSignedBinaryIntegralCopy(8, LE, c);
         },
         8},
        {__LINE__, "unsigned real", "-1.5", FORMAT,
         [](V v, D d, C c) {
             return d ? v.ValidateUnsignedAsciiReal(4, &u64, &divisor, d)
                      : v.ValidateUnsignedAsciiRealCopy(4, &u64, &divisor, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateSignedAsciiReal(4, &s64, &divisor, d)
                      : v.ValidateSignedAsciiRealCopy(4, &s64, &divisor, c);
         }},
        {__LINE__, "real typed", "-1.5", FORMAT,
         [](V v, D d, C c) { return d ? v.ValidateUnsignedAsciiReal(4, &dbl, d) : v.ValidateUnsignedAsciiRealCopy(4, &dbl, c); },
         [](V v, D d, C c) { return d ? v.ValidateSignedAsciiReal(4, &dbl, d) : v.ValidateSignedAsciiRealCopy(4, &dbl, c); }},
        {__LINE__, "real range", "-1.5", RANGE,
         [](V v, D d, C c) {
             return d ? v.ValidateSignedAsciiReal(4, -1.4L, 0.0L, &ld, d)
                      : v.ValidateSignedAsciiRealCopy(4, -1.4L, 0.0L, &ld, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateSignedAsciiReal(4, -1.5L, 0.0L, &ld, d)
                      : v.ValidateSignedAsciiRealCopy(4, -1.5L, 0.0L, &ld, c);
         }},
        {__LINE__, "real list", "-1.5", RANGE,
         [](V v, D d, C c) {
             const std::vector<long double> list{1.5L};
             return d ? v.ValidateSignedAsciiReal(4, list, &ld, d) : v.ValidateSignedAsciiRealCopy(4, list, &ld, c);
         },
         [](V v, D d, C c) {
             const std::vector<long double> list{-1.5L};
             return d ? v.ValidateSignedAsciiReal(4, list, &ld, d) : v.ValidateSignedAsciiRealCopy(4, list, &ld, c);
         }},
        {__LINE__, "real fraction digits", "1.0000000000", RANGE,
         [](V v, D d, C c) { return d ? v.ValidateUnsignedAsciiReal(12, d) : v.ValidateUnsignedAsciiRealCopy(12, c); },
         [](V v, D d, C c) { return d ? v.ValidateUnsignedAsciiReal(11, d) : v.ValidateUnsignedAsciiRealCopy(11, c); },
         11},
        {__LINE__, "string within", "ab1", RANGE,
         [](V v, D d, C c) {
             return d ? v.ValidateString(3, static_cast<unsigned char>('a'), static_cast<unsigned char>('z'), &text, d)
                      : v.ValidateStringCopy(3, static_cast<unsigned char>('a'), static_cast<unsigned char>('z'), &text, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateString(3, static_cast<unsigned char>('1'), static_cast<unsigned char>('z'), &text, d)
                      : v.ValidateStringCopy(3, static_cast<unsigned char>('1'), static_cast<unsigned char>('z'), &text, c);
         }},
        {__LINE__, "string set", "ab1", RANGE,
         [](V v, D d, C c) {
             return d ? v.ValidateString(3, std::string("ab"), &text, d) : v.ValidateStringCopy(3, std::string("ab"), &text, c);
         },
         [](V v, D d, C c) {
             return d ? v.ValidateString(3, std::string("1ab"), &text, d) : v.ValidateStringCopy(3, std::string("1ab"), &text, c);
         }},
        {__LINE__, "string list", "ab1", RANGE,
         [](V v, D d, C c) {
             const std::vector<std::string> list{"ab", "ab12"};
             return d ? v.ValidateString(3, list, &text, d) : v.ValidateStringCopy(3, list, &text, c);
         },
         [](V v, D d, C c) {
             const std::vector<std::string> list{"ab", "ab1"};
             return d ? v.ValidateString(3, list, &text, d) : v.ValidateStringCopy(3, list, &text, c);
         }},
        {__LINE__, "string past the end", "ab1", PARAM,
         [](V v, D d, C c) { return d ? v.ValidateString(4, &text, d) : v.ValidateStringCopy(4, &text, c); },
         [](V v, D d, C c) { return d ? v.ValidateString(3, &text, d) : v.ValidateStringCopy(3, &text, c); }},
    };
}

TEST(MessageValidatorTest, FailureLeavesCursorAndOutputsSuccessAdvancesBySize)
{
    for (const FrameCase& row : FrameCases())
    {
        for (const bool copyForm : {false, true})
        {
            SCOPED_TRACE("row at line " + std::to_string(row.line) + ": " + row.name + (copyForm ? " (Copy)" : ""));
            const std::string message = "##" + row.field;
            MessageValidator validator = Over(message);
            ASSERT_EQ(validator.ValidateBytes(2), OK);
            const void* data = &row;
            char destination[32];
            std::memset(destination, '.', sizeof destination);
            const void** dataOut = copyForm ? nullptr : &data;
            void* copyOut = copyForm ? destination : nullptr;
            // Copy rows pass a null data pointer; the lambdas pick the form by it.
            EXPECT_EQ(row.fail(validator, dataOut, copyOut), row.failure);
            EXPECT_EQ(validator.GetCursor(), 2u);
            EXPECT_EQ(data, &row);
            EXPECT_EQ(destination[0], '.');
            EXPECT_EQ(row.pass(validator, dataOut, copyOut), OK);
            EXPECT_EQ(validator.GetCursor(), 2 + (row.consumed != 0 ? row.consumed : Size(row.field)));
            if (copyForm)
            {
                EXPECT_EQ(destination[0], row.field[0]);
            }
            else
                EXPECT_EQ(data, message.data() + 2);
        }
    }
}

TEST(MessageValidatorTest, FieldPastTheEndFailsForEveryFamily)
{
    // 5 bytes asked when 4 remain (after a consumed byte): every family
    // answers STATUS_CODE_INVALID_PARAMETER and leaves the cursor.
    const std::string message = "#1234";
    MessageValidator validator = Over(message);
    ASSERT_EQ(validator.ValidateBytes(1), OK);
    std::uint64_t u64 = 0;
    std::int64_t s64 = 0;
    unsigned u32 = 0;
    int s32 = 0;
    unsigned char u8 = 0;
    double d = 0;
    long double ld = 0;
    std::string text;
    std::uint64_t divisor = 0;
    const std::vector<StatusCode> statuses = {
        validator.ValidateBytes(5),
        validator.ValidateBytes(5, "12345", nullptr),
        validator.ValidateBytes(5, static_cast<unsigned char>('1'), nullptr),
        validator.ValidateBytes(5, static_cast<unsigned char>(0), static_cast<unsigned char>(255), nullptr),
        validator.ValidateBytes(5, std::vector<unsigned char>{'1', '2', '3', '4'}, nullptr),
        validator.ValidateBytes(5, std::vector<std::string>{"12345"}, nullptr),
        validator.ValidateBytesCopy(5, nullptr),
        validator.ValidateUnsignedAsciiIntegral(5),
        validator.ValidateUnsignedAsciiIntegral(5, &u32),
        validator.ValidateUnsignedAsciiIntegral(5, &u8),
        validator.ValidateUnsignedAsciiIntegral(5, 0, 99999, &u64),
        validator.ValidateUnsignedAsciiIntegral(5, std::vector<std::uint64_t>{12345}, &u64),
        validator.ValidateSignedAsciiIntegral(5),
        validator.ValidateSignedAsciiIntegral(5, &s32),
        validator.ValidateSignedAsciiIntegral(5, -99999, 99999, &s64),
        validator.ValidateSignedAsciiIntegralCopy(5, &s32, nullptr),
        validator.ValidateAsciiHexadecimalIntegral(6, BE),
        validator.ValidateAsciiHexadecimalIntegral(6, LE, &u32),
        validator.ValidateUnsignedBinaryIntegral(5, LE),
        validator.ValidateUnsignedBinaryIntegral(5, BE, &u64),
        validator.ValidateUnsignedBinaryIntegral(8, LE, &u64),
        validator.ValidateSignedBinaryIntegral(5, LE, &s64),
        validator.ValidateSignedBinaryIntegral(8, LE, &s64),
        validator.ValidateUnsignedAsciiReal(5),
        validator.ValidateUnsignedAsciiReal(5, &u64, &divisor),
        validator.ValidateSignedAsciiReal(5, &d),
        validator.ValidateSignedAsciiReal(5, 0.0L, 1e6L, &ld),
        validator.ValidateString(5, &text),
        validator.ValidateStringCopy(5, std::vector<std::string>{"12345"}, &text, nullptr),
    };
    for (std::size_t i = 0; i < statuses.size(); ++i)
        EXPECT_EQ(statuses[i], PARAM) << "call " << i;
    EXPECT_EQ(validator.GetCursor(), 1u);
    EXPECT_EQ(validator.GetRemaining(), 4u);
    EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(4, &u32), OK);
    EXPECT_EQ(u32, 1234u);
    EXPECT_EQ(validator.ValidateBytes(1), PARAM);
    EXPECT_EQ(validator.ValidateBytes(0), OK);
}

TEST(MessageValidatorTest, SizeZeroRules)
{
    const std::string message = "9";
    MessageValidator validator = Over(message);
    unsigned u32 = 7;
    int s32 = 7;
    unsigned char u8 = 7;
    std::uint64_t u64 = 7;
    std::int64_t s64 = 7;
    float f = 7;
    std::uint64_t divisor = 7;
    // A converted value asked for: refused.
    EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(0, &u32), PARAM);
    EXPECT_EQ(validator.ValidateUnsignedAsciiIntegralCopy(0, &u8, nullptr), PARAM);
    EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(0, 0, 10, &u64), PARAM);
    EXPECT_EQ(validator.ValidateSignedAsciiIntegral(0, &s32), PARAM);
    EXPECT_EQ(validator.ValidateSignedAsciiIntegral(0, std::vector<std::int64_t>{0}, &s64), PARAM);
    EXPECT_EQ(validator.ValidateAsciiHexadecimalIntegral(0, LE, &u32), PARAM);
    EXPECT_EQ(validator.ValidateAsciiHexadecimalIntegral(0, LE, 0, 1, &u64), PARAM);
    EXPECT_EQ(validator.ValidateUnsignedBinaryIntegral(0, LE, &u32), PARAM);
    EXPECT_EQ(validator.ValidateSignedBinaryIntegral(0, BE, &s32), PARAM);
    EXPECT_EQ(validator.ValidateSignedBinaryIntegral(0, BE, -1, 1, &s64), PARAM);
    EXPECT_EQ(validator.ValidateUnsignedAsciiReal(0, &f), PARAM);
    EXPECT_EQ(validator.ValidateSignedAsciiReal(0, &s64, &divisor), PARAM);
    EXPECT_EQ(validator.ValidateSignedAsciiReal(0, nullptr, &divisor), PARAM);
    EXPECT_EQ(u32 + s32 + u8 + u64 + s64 + divisor, 42u);
    EXPECT_EQ(f, 7.0f);
    // Nothing asked for: success, nothing consumed, data points at the cursor.
    const void* data = nullptr;
    EXPECT_EQ(validator.ValidateBytes(0, &data), OK);
    EXPECT_EQ(data, message.data());
    EXPECT_EQ(validator.ValidateBytes(0, static_cast<const void*>(nullptr), nullptr), OK);
    EXPECT_EQ(validator.ValidateBytes(0, std::vector<std::string>{}, nullptr), OK);
    EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(0), OK);
    EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(0, static_cast<unsigned*>(nullptr)), OK);
    EXPECT_EQ(validator.ValidateUnsignedAsciiIntegral(0, 5, 6), OK);
    EXPECT_EQ(validator.ValidateSignedAsciiIntegral(0, static_cast<long*>(nullptr)), OK);
    EXPECT_EQ(validator.ValidateAsciiHexadecimalIntegral(0, BE), OK);
    EXPECT_EQ(validator.ValidateUnsignedBinaryIntegral(0, BE), OK);
    EXPECT_EQ(validator.ValidateSignedBinaryIntegralCopy(0, BE, nullptr), OK);
    EXPECT_EQ(validator.ValidateUnsignedAsciiReal(0), OK);
    EXPECT_EQ(validator.ValidateSignedAsciiReal(0, std::vector<long double>{}), OK);
    EXPECT_EQ(validator.GetCursor(), 0u);
    // A size-0 check on an exhausted validator succeeds as well.
    EXPECT_EQ(validator.ValidateBytes(1), OK);
    EXPECT_EQ(validator.ValidateString(0, static_cast<std::string*>(nullptr)), OK);
    EXPECT_TRUE(validator.IsAtEnd());
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
