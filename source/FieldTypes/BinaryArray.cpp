// BinaryArray: TextArray's value with hexadecimal and Base64 text forms.
#include <ZantorMiddleware/ZantorBase/FieldTypes/BinaryArray.h>

#include <ZantorMiddleware/ZantorBase/Exception.h>

#include "FieldTypes/ByteFieldWire.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace Zantor {

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The two characters of every 12-bit value as they lie in memory: a group
// of three bytes is two look-ups and one four-byte store.
constexpr std::array<std::uint16_t, 4096> kPairs = [] {
    std::array<std::uint16_t, 4096> table{};
    for (unsigned value = 0; value < 4096; ++value)
    {
        const auto first = static_cast<unsigned char>(kAlphabet[value >> 6]);
        const auto second = static_cast<unsigned char>(kAlphabet[value & 63]);
        table[value] = static_cast<std::uint16_t>(std::endian::native == std::endian::little ? first | second << 8
                                                                                              : first << 8 | second);
    }
    return table;
}();

// Marks a character outside the alphabet; it survives the OR of a group.
constexpr std::uint32_t kBad = 0x01000000;

// kDecode[i][c]: the six bits of character c shifted to their place as the
// i-th character of a group, or kBad. The OR of a group's four entries is
// its 24 bits (plus kBad when any character is wrong).
constexpr std::array<std::array<std::uint32_t, 256>, 4> kDecode = [] {
    std::array<std::array<std::uint32_t, 256>, 4> table{};
    for (unsigned position = 0; position < 4; ++position)
    {
        for (auto& entry : table[position])
            entry = kBad;
        for (unsigned value = 0; value < 64; ++value)
            table[position][static_cast<unsigned char>(kAlphabet[value])] = std::uint32_t{value}
                                                                            << (18 - 6 * position);
    }
    return table;
}();

// How text of length characters splits into whole groups and a tail of 0,
// 2 or 3 data characters, and the bytes it decodes to.
StatusCode Base64Layout(const char* text, std::size_t length, bool padded, std::size_t& groups, unsigned& tail,
                        std::size_t& decoded) noexcept
{
    if (padded)
    {
        if (length % 4 != 0)
            return STATUS_CODE_INVALID_FORMAT;
        const unsigned pad = length == 0 || text[length - 1] != '=' ? 0 : text[length - 2] == '=' ? 2 : 1;
        groups = length / 4 - (pad != 0 ? 1 : 0);
        tail = pad != 0 ? 4 - pad : 0;
    }
    else
    {
        if (length % 4 == 1)
            return STATUS_CODE_INVALID_FORMAT;
        groups = length / 4;
        tail = static_cast<unsigned>(length % 4);
    }
    decoded = groups * 3 + (tail != 0 ? tail - 1 : 0);
    return STATUS_CODE_SUCCESS;
}

// Decodes the groups and the tail laid out by Base64Layout into target.
// Wrong characters are collected over the whole text and reported at the
// end, so the loop carries no branch.
StatusCode Base64Decode(const char* text, std::size_t groups, unsigned tail, unsigned char* target) noexcept
{
    const auto* in = reinterpret_cast<const unsigned char*>(text);
    std::uint32_t bad = 0;
    // All groups but the last store four bytes at once (the fourth is
    // overwritten by the next group).
    for (std::size_t i = 1; i < groups; ++i, in += 4, target += 3)
    {
        const std::uint32_t word = kDecode[0][in[0]] | kDecode[1][in[1]] | kDecode[2][in[2]] | kDecode[3][in[3]];
        bad |= word;
        const std::uint32_t bytes = std::endian::native == std::endian::little ? __builtin_bswap32(word << 8) : word << 8;
        std::memcpy(target, &bytes, 4);
    }
    for (std::size_t i = groups != 0 ? groups - 1 : 0; i < groups; ++i, in += 4, target += 3)
    {
        const std::uint32_t word = kDecode[0][in[0]] | kDecode[1][in[1]] | kDecode[2][in[2]] | kDecode[3][in[3]];
        bad |= word;
        target[0] = static_cast<unsigned char>(word >> 16);
        target[1] = static_cast<unsigned char>(word >> 8);
        target[2] = static_cast<unsigned char>(word);
    }
    if (tail != 0)
    {
        std::uint32_t word = kDecode[0][in[0]] | kDecode[1][in[1]];
        if (tail == 3)
            word |= kDecode[2][in[2]];
        // The bits below the last whole byte must be zero.
        const std::uint32_t unused = tail == 2 ? 0xF000u : 0xC0u;
        bad |= word | ((word & unused) != 0 ? kBad : 0);
        target[0] = static_cast<unsigned char>(word >> 16);
        if (tail == 3)
            target[1] = static_cast<unsigned char>(word >> 8);
    }
    return (bad & kBad) != 0 ? STATUS_CODE_INVALID_FORMAT : STATUS_CODE_SUCCESS;
}

} // namespace

BinaryArray::BinaryArray(std::string_view data)
    : BinaryArray()
{
    const StatusCode status = Set(data);
    if (status != STATUS_CODE_SUCCESS)
        ZANTOR_THROW(StatusCodeException, status);
}

std::string BinaryArray::ToString() const
{
    return IsInitialized() ? Detail::HexText(bytes_.Data(), bytes_.Length()) : NOT_INITIALIZED_TEXT;
}

std::string BinaryArray::ToString(bool asHex) const
{
    return asHex ? ToString() : TextArray::ToString();
}

StatusCode BinaryArray::FromString(MessageValidator& text)
{
    StatusCode status;
    if (FromNotInitializedText(text, status))
        return status;
    Detail::FieldBytes bytes;
    status = Detail::ParseHexText(text, bytes);
    if (status == STATUS_CODE_SUCCESS)
        Adopt(static_cast<Detail::FieldBytes&&>(bytes));
    return status;
}

const char* BinaryArray::GetFromStringFormat() const noexcept
{
    return "0x[hexadecimal digit pairs]";
}

std::string BinaryArray::ToBase64(const unsigned char* data, unsigned int length, bool padded)
{
    const std::size_t groups = length / 3;
    const unsigned rest = length % 3;
    std::string text(groups * 4 + (rest == 0 ? 0 : padded ? 4 : rest + 1), '=');
    char* out = text.data();
    for (std::size_t i = 0; i < groups; ++i, data += 3, out += 4)
    {
        const std::uint32_t word = std::uint32_t{data[0]} << 16 | std::uint32_t{data[1]} << 8 | data[2];
        const std::uint32_t high = kPairs[word >> 12], low = kPairs[word & 0xFFF];
        const std::uint32_t chars = std::endian::native == std::endian::little ? high | low << 16 : high << 16 | low;
        std::memcpy(out, &chars, 4);
    }
    if (rest != 0)
    {
        const std::uint32_t word = std::uint32_t{data[0]} << 16 | (rest == 2 ? std::uint32_t{data[1]} << 8 : 0);
        out[0] = kAlphabet[word >> 18];
        out[1] = kAlphabet[(word >> 12) & 63];
        if (rest == 2)
            out[2] = kAlphabet[(word >> 6) & 63];
    }
    return text;
}

StatusCode BinaryArray::FromBase64(const char* text, std::size_t textLength, bool padded, unsigned char* data,
                                   std::size_t capacity, unsigned int& length) noexcept
{
    if (text == nullptr && textLength != 0)
        return STATUS_CODE_INVALID_PARAMETER;
    std::size_t groups = 0, decoded = 0;
    unsigned tail = 0;
    StatusCode status = Base64Layout(text, textLength, padded, groups, tail, decoded);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (!Detail::FitsLength(decoded) || (data == nullptr && decoded != 0))
        return STATUS_CODE_INVALID_PARAMETER;
    if (decoded > capacity)
        return STATUS_CODE_BUFFER_OVERFLOW;
    status = Base64Decode(text, groups, tail, data);
    if (status == STATUS_CODE_SUCCESS)
        length = static_cast<unsigned int>(decoded);
    return status;
}

template <bool Padded>
std::string BinaryArray::ToBase64String() const
{
    return IsInitialized() ? ToBase64(bytes_.Data(), bytes_.Length(), Padded) : NOT_INITIALIZED_TEXT;
}

template <bool Padded>
StatusCode BinaryArray::FromBase64String(const std::string& text)
{
    if (text == NOT_INITIALIZED_TEXT)
    {
        Reset();
        return STATUS_CODE_SUCCESS;
    }
    std::size_t groups = 0, decoded = 0;
    unsigned tail = 0;
    StatusCode status = Base64Layout(text.data(), text.size(), Padded, groups, tail, decoded);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (!Detail::FitsLength(decoded))
        return STATUS_CODE_INVALID_PARAMETER;
    // Decoded into fresh storage, so that a refusal leaves the value alone.
    Detail::FieldBytes bytes;
    status = bytes.Resize(static_cast<unsigned int>(decoded));
    if (status == STATUS_CODE_SUCCESS)
        status = Base64Decode(text.data(), groups, tail, bytes.MutableData());
    if (status == STATUS_CODE_SUCCESS)
        Adopt(static_cast<Detail::FieldBytes&&>(bytes));
    return status;
}

template ZANTOR_BASE_API std::string BinaryArray::ToBase64String<true>() const;
template ZANTOR_BASE_API std::string BinaryArray::ToBase64String<false>() const;
template ZANTOR_BASE_API StatusCode BinaryArray::FromBase64String<true>(const std::string& text);
template ZANTOR_BASE_API StatusCode BinaryArray::FromBase64String<false>(const std::string& text);

} // namespace Zantor
