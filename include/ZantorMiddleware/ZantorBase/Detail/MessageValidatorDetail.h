// Conversion kernels of MessageValidator: decimal, hexadecimal and binary
// integers and decimal reals, on a byte range that the caller has already
// bounds-checked. Internal to the library's headers; use MessageValidator.
//
// Every function is noexcept, allocation-free and returns STATUS_CODE_SUCCESS,
// STATUS_CODE_INVALID_FORMAT (a character of the wrong class anywhere in the
// text) or STATUS_CODE_OUT_OF_RANGE (the text is well formed but its value
// does not fit). A wrong character wins over an overflow, wherever the two
// occur. The outputs are written on success only.
#pragma once

#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>

namespace Zantor::Detail {

// True when all eight bytes of a little-endian load are '0'..'9'.
[[nodiscard]] inline bool AreEightDigits(std::uint64_t chunk) noexcept
{
    return ((chunk & 0xF0F0F0F0F0F0F0F0ull) | (((chunk + 0x0606060606060606ull) & 0xF0F0F0F0F0F0F0F0ull) >> 4)) ==
           0x3333333333333333ull;
}

// The value of eight digits loaded little-endian (first digit in the lowest
// byte), checked by AreEightDigits.
[[nodiscard]] inline std::uint32_t EightDigitsValue(std::uint64_t chunk) noexcept
{
    constexpr std::uint64_t mask = 0x000000FF000000FFull;
    constexpr std::uint64_t mul1 = 100 + (1000000ull << 32);
    constexpr std::uint64_t mul2 = 1 + (10000ull << 32);
    chunk -= 0x3030303030303030ull;
    chunk = (chunk * 10) + (chunk >> 8);
    chunk = (((chunk & mask) * mul1) + (((chunk >> 16) & mask) * mul2)) >> 32;
    return static_cast<std::uint32_t>(chunk);
}

// Accumulates up to 19 digits (no overflow is possible in 64 bits). Returns
// false on a non-digit.
[[nodiscard]] inline bool AccumulateShortDecimal(const unsigned char* text, unsigned size, std::uint64_t& value) noexcept
{
    std::uint64_t result = 0;
    if constexpr (std::endian::native == std::endian::little)
    {
        while (size >= 8)
        {
            std::uint64_t chunk;
            std::memcpy(&chunk, text, 8);
            if (!AreEightDigits(chunk))
                return false;
            result = result * 100000000u + EightDigitsValue(chunk);
            text += 8;
            size -= 8;
        }
    }
    for (; size != 0; --size, ++text)
    {
        const unsigned digit = static_cast<unsigned>(*text) - '0';
        if (digit > 9)
            return false;
        result = result * 10 + digit;
    }
    value = result;
    return true;
}

// True when the size bytes at left and right are equal: words compared
// inline for short fields (two overlapping loads cover 4 to 16 bytes), a
// block compare for longer ones.
// Each branch reads only within size bytes, but once inlined where the
// expected bytes are a short literal and size is not a constant, GCC warns
// about the wider branches it cannot rule out; the warning is silenced here
// rather than in every caller.
#if defined(__GNUC__) && !defined(__clang__)
#  pragma GCC diagnostic push
#  pragma GCC diagnostic ignored "-Warray-bounds"
#  pragma GCC diagnostic ignored "-Wstringop-overread"
#endif
[[nodiscard]] inline bool BytesEqual(const unsigned char* left, const unsigned char* right, unsigned size) noexcept
{
    if (size >= 8 && size <= 16)
    {
        std::uint64_t a, b, c, d;
        std::memcpy(&a, left, 8);
        std::memcpy(&b, right, 8);
        std::memcpy(&c, left + size - 8, 8);
        std::memcpy(&d, right + size - 8, 8);
        return ((a ^ b) | (c ^ d)) == 0;
    }
    if (size >= 4 && size < 8)
    {
        std::uint32_t a, b, c, d;
        std::memcpy(&a, left, 4);
        std::memcpy(&b, right, 4);
        std::memcpy(&c, left + size - 4, 4);
        std::memcpy(&d, right + size - 4, 4);
        return ((a ^ b) | (c ^ d)) == 0;
    }
    if (size < 4)
    {
        unsigned difference = 0;
        for (unsigned i = 0; i < size; ++i)
            difference |= static_cast<unsigned>(left[i] ^ right[i]);
        return difference == 0;
    }
    return std::memcmp(left, right, size) == 0;
}
#if defined(__GNUC__) && !defined(__clang__)
#  pragma GCC diagnostic pop
#endif

// True when every byte is a digit.
[[nodiscard]] inline bool AreAllDigits(const unsigned char* text, unsigned size) noexcept
{
    for (unsigned i = 0; i < size; ++i)
        if (static_cast<unsigned>(text[i]) - '0' > 9)
            return false;
    return true;
}

// Unsigned decimal text of any length (leading zeros allowed) into a value
// at most max. The exact overflow test value > (max - digit) / 10 is applied
// from the 20th character on; the first 19 are accumulated unchecked and
// compared with max once.
[[nodiscard]] inline StatusCode ParseUnsignedDecimal(const unsigned char* text, unsigned size, std::uint64_t max,
                                                     std::uint64_t& value) noexcept
{
    constexpr unsigned uncheckedDigits = 19;
    std::uint64_t result;
    if (size <= uncheckedDigits) [[likely]]
    {
        if (!AccumulateShortDecimal(text, size, result))
            return STATUS_CODE_INVALID_FORMAT;
        if (result > max)
            return STATUS_CODE_OUT_OF_RANGE;
        value = result;
        return STATUS_CODE_SUCCESS;
    }
    if (!AccumulateShortDecimal(text, uncheckedDigits, result))
        return STATUS_CODE_INVALID_FORMAT;
    bool overflow = result > max;
    for (unsigned i = uncheckedDigits; i < size; ++i)
    {
        const unsigned digit = static_cast<unsigned>(text[i]) - '0';
        if (digit > 9)
            return STATUS_CODE_INVALID_FORMAT;
        if (overflow)
            continue;
        if (result > (max - digit) / 10)
            overflow = true;
        else
            result = result * 10 + digit;
    }
    if (overflow)
        return STATUS_CODE_OUT_OF_RANGE;
    value = result;
    return STATUS_CODE_SUCCESS;
}

// Signed decimal text: one optional leading '+' or '-', then digits. The
// magnitude must be at most maxMagnitude (the positive limit, so the most
// negative value of a type is refused). A lone sign is 0.
[[nodiscard]] inline StatusCode ParseSignedDecimal(const unsigned char* text, unsigned size, std::uint64_t maxMagnitude,
                                                   std::int64_t& value) noexcept
{
    bool negative = false;
    if (size != 0 && (text[0] == '-' || text[0] == '+'))
    {
        negative = text[0] == '-';
        ++text;
        --size;
    }
    std::uint64_t magnitude;
    const StatusCode status = ParseUnsignedDecimal(text, size, maxMagnitude, magnitude);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    value = negative ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
    return STATUS_CODE_SUCCESS;
}

// The value of one hexadecimal character, or 0xFF.
[[nodiscard]] inline unsigned HexDigitValue(unsigned char character) noexcept
{
    if (character >= '0' && character <= '9')
        return static_cast<unsigned>(character - '0');
    const unsigned lower = static_cast<unsigned>(character | 0x20);
    if (lower >= 'a' && lower <= 'f')
        return lower - 'a' + 10;
    return 0xFF;
}

// Hexadecimal text of an even size of at most 16 (checked by the caller),
// one byte per character pair, high nibble first; bigEndian puts the first
// pair in the most significant byte.
[[nodiscard]] inline StatusCode ParseHexadecimal(const unsigned char* text, unsigned size, bool bigEndian,
                                                 std::uint64_t& value) noexcept
{
    std::uint64_t result = 0;
    const unsigned bytes = size / 2;
    for (unsigned i = 0; i < bytes; ++i)
    {
        const unsigned high = HexDigitValue(text[2 * i]);
        const unsigned low = HexDigitValue(text[2 * i + 1]);
        if ((high | low) > 0xF)
            return STATUS_CODE_INVALID_FORMAT;
        const std::uint64_t byte = (high << 4) | low;
        if (bigEndian)
            result = (result << 8) | byte;
        else
            result |= byte << (8 * i);
    }
    value = result;
    return STATUS_CODE_SUCCESS;
}

// An unsigned binary integer of 1 to 8 bytes (checked by the caller).
[[nodiscard]] inline std::uint64_t AssembleUnsigned(const unsigned char* bytes, unsigned size, bool bigEndian) noexcept
{
    std::uint64_t result = 0;
    if (size == 8 && !bigEndian && std::endian::native == std::endian::little)
    {
        std::memcpy(&result, bytes, 8);
        return result;
    }
    if (bigEndian)
        for (unsigned i = 0; i < size; ++i)
            result = (result << 8) | bytes[i];
    else
        for (unsigned i = 0; i < size; ++i)
            result |= static_cast<std::uint64_t>(bytes[i]) << (8 * i);
    return result;
}

// A two's-complement binary integer of 1 to 8 bytes, sign-extended.
[[nodiscard]] inline std::int64_t AssembleSigned(const unsigned char* bytes, unsigned size, bool bigEndian) noexcept
{
    const std::uint64_t bits = AssembleUnsigned(bytes, size, bigEndian);
    const unsigned shift = 64 - 8 * size;
    return static_cast<std::int64_t>(bits << shift) >> shift;
}

inline constexpr unsigned maxRealFractionDigits = 9;

// Decimal real text: [sign] digits ['.' digits], at least one digit, at
// most 9 after the point, sign only when allowSign. The numerator is the
// digits without the point, at most maxNumerator; the divisor is
// 10^(digits after the point).
[[nodiscard]] inline StatusCode ParseDecimalReal(const unsigned char* text, unsigned size, bool allowSign,
                                                 std::uint64_t maxNumerator, bool& negative, std::uint64_t& numerator,
                                                 std::uint64_t& divisor) noexcept
{
    bool isNegative = false;
    if (allowSign && size != 0 && (text[0] == '-' || text[0] == '+'))
    {
        isNegative = text[0] == '-';
        ++text;
        --size;
    }
    std::uint64_t result = 0;
    unsigned digits = 0;
    unsigned fractionDigits = 0;
    bool seenPoint = false;
    bool overflow = false;
    for (unsigned i = 0; i < size; ++i)
    {
        const unsigned digit = static_cast<unsigned>(text[i]) - '0';
        if (digit <= 9)
        {
            ++digits;
            if (seenPoint)
                ++fractionDigits;
            if (!overflow)
            {
                if (result > (maxNumerator - digit) / 10)
                    overflow = true;
                else
                    result = result * 10 + digit;
            }
        }
        else if (text[i] == '.' && !seenPoint)
            seenPoint = true;
        else
            return STATUS_CODE_INVALID_FORMAT;
    }
    if (digits == 0)
        return STATUS_CODE_INVALID_FORMAT;
    if (overflow || fractionDigits > maxRealFractionDigits)
        return STATUS_CODE_OUT_OF_RANGE;
    std::uint64_t power = 1;
    for (unsigned i = 0; i < fractionDigits; ++i)
        power *= 10;
    negative = isNegative;
    numerator = result;
    divisor = power;
    return STATUS_CODE_SUCCESS;
}

} // namespace Zantor::Detail
