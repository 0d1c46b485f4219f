// Wire helpers shared by the text, binary and blob values.
#include "FieldTypes/ByteFieldWire.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace Zantor::Detail {

namespace {

constexpr char kHexDigits[] = "0123456789abcdef";

// The value of each hexadecimal character, 0xFF for every other byte.
constexpr std::array<unsigned char, 256> kHexValues = [] {
    std::array<unsigned char, 256> table{};
    for (auto& entry : table)
        entry = 0xFF;
    for (unsigned digit = 0; digit < 10; ++digit)
        table['0' + digit] = static_cast<unsigned char>(digit);
    for (unsigned digit = 0; digit < 6; ++digit)
    {
        table['a' + digit] = static_cast<unsigned char>(10 + digit);
        table['A' + digit] = static_cast<unsigned char>(10 + digit);
    }
    return table;
}();

} // namespace

StatusCode AppendParts(MessageBuilder& builder, const unsigned char* prefix, unsigned int prefixLength,
                       const unsigned char* data, unsigned int length, unsigned int padding)
{
    if (data == nullptr && length != 0)
        return STATUS_CODE_INVALID_PARAMETER;
    const std::uint64_t total = std::uint64_t{prefixLength} + length + padding;
    if (total > builder.GetCapacity() - builder.GetLength())
    {
        if (total > MessageBuilder::MAX_CAPACITY)
            return builder.IsGrowable() ? STATUS_CODE_HEAP_EMPTY : STATUS_CODE_BUFFER_OVERFLOW;
        // Growing moves a heap block, and data with it when it lies there;
        // the caller's initial buffer stays where it is.
        const auto start = reinterpret_cast<std::uintptr_t>(data);
        const auto block = reinterpret_cast<std::uintptr_t>(builder.GetBuffer());
        const bool follow = data != nullptr && !builder.IsUsingInitialBuffer() && start >= block &&
                            start < block + builder.GetCapacity();
        const StatusCode status = builder.MaybeAdjustBufferSize(static_cast<unsigned>(total));
        if (status != STATUS_CODE_SUCCESS)
            return status;
        if (follow)
            data = builder.GetBuffer() + (start - block);
    }
    // The room is there: none of these appends can fail or move the storage.
    builder.AppendBuffer(prefix, prefixLength);
    builder.AppendBuffer(data, length);
    static constexpr unsigned char zeros[64] = {};
    for (unsigned int left = padding; left != 0;)
    {
        const unsigned int step = left < sizeof zeros ? left : static_cast<unsigned int>(sizeof zeros);
        builder.AppendBuffer(zeros, step);
        left -= step;
    }
    return STATUS_CODE_SUCCESS;
}

StatusCode PeekShortBody(const MessageValidator& validator, unsigned int maxLength, unsigned int& bodyOffset,
                         unsigned int& bodyLength) noexcept
{
    const unsigned int remaining = validator.GetRemaining();
    if (remaining == 0)
        return STATUS_CODE_INVALID_PARAMETER;
    const unsigned int length = *validator.GetCursorPointer();
    if (length == 0 || length > maxLength || length > remaining - 1)
        return STATUS_CODE_INVALID_PARAMETER;
    bodyOffset = validator.GetCursor() + 1;
    bodyLength = length;
    return STATUS_CODE_SUCCESS;
}

StatusCode PeekLongBody(const MessageValidator& validator, unsigned int maxLength, unsigned int minBody,
                        unsigned int& bodyOffset, unsigned int& bodyLength) noexcept
{
    const unsigned int remaining = validator.GetRemaining();
    if (remaining < 4)
        return STATUS_CODE_INVALID_PARAMETER;
    const std::uint32_t length = LoadLength32(validator.GetCursorPointer(), validator.GetEndian());
    if (length < minBody || length > maxLength || length > remaining - 4)
        return STATUS_CODE_INVALID_PARAMETER;
    bodyOffset = validator.GetCursor() + 4;
    bodyLength = length;
    return STATUS_CODE_SUCCESS;
}

int CompareRuns(const unsigned char* first, unsigned int firstLength, const unsigned char* second,
                unsigned int secondLength) noexcept
{
    const unsigned int common = firstLength < secondLength ? firstLength : secondLength;
    const int order = common != 0 ? std::memcmp(first, second, common) : 0;
    if (order != 0)
        return order < 0 ? -1 : 1;
    return firstLength < secondLength ? -1 : firstLength > secondLength ? 1 : 0;
}

void AppendHex(std::string& text, const unsigned char* data, unsigned int length)
{
    const std::size_t start = text.size();
    text.resize(start + 2 * std::size_t{length});
    char* target = text.data() + start;
    for (unsigned int i = 0; i < length; ++i)
    {
        target[2 * i] = kHexDigits[data[i] >> 4];
        target[2 * i + 1] = kHexDigits[data[i] & 0xF];
    }
}

StatusCode ParseHex(const unsigned char* text, unsigned int length, FieldBytes& bytes) noexcept
{
    if (length % 2 != 0)
        return STATUS_CODE_INVALID_FORMAT;
    for (unsigned int i = 0; i < length; ++i)
        if (kHexValues[text[i]] == 0xFF)
            return STATUS_CODE_INVALID_FORMAT;
    const StatusCode status = bytes.Resize(length / 2);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    unsigned char* target = bytes.MutableData();
    for (unsigned int i = 0; i < length / 2; ++i)
        target[i] = static_cast<unsigned char>(kHexValues[text[2 * i]] << 4 | kHexValues[text[2 * i + 1]]);
    return STATUS_CODE_SUCCESS;
}

void SkipHexPrefix(const unsigned char*& text, unsigned int& length) noexcept
{
    if (length >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X'))
    {
        text += 2;
        length -= 2;
    }
}

} // namespace Zantor::Detail

namespace Zantor::Detail {

std::string HexText(const unsigned char* data, unsigned int length)
{
    std::string text = "0x";
    AppendHex(text, data, length);
    return text;
}

StatusCode ParseHexText(MessageValidator& text, FieldBytes& bytes) noexcept
{
    const unsigned char* digits = text.GetCursorPointer();
    unsigned int length = text.GetRemaining();
    SkipHexPrefix(digits, length);
    const StatusCode status = ParseHex(digits, length, bytes);
    if (status == STATUS_CODE_SUCCESS)
        text.ValidateBytes(text.GetRemaining());
    return status;
}

} // namespace Zantor::Detail

namespace Zantor::Detail {

std::string BlobText(std::uint32_t header, const unsigned char* data, unsigned int length)
{
    unsigned char word[4];
    StoreLittle32(word, header);
    std::string text;
    text.reserve(11 + 2 * std::size_t{length});
    AppendHex(text, word, 4);
    text += " 0x";
    AppendHex(text, data, length);
    return text;
}

StatusCode ParseBlobText(MessageValidator& text, FieldBytes& bytes, std::uint32_t& header) noexcept
{
    const unsigned char* characters = text.GetCursorPointer();
    const unsigned int length = text.GetRemaining();
    constexpr unsigned int headerDigits = 8;
    if (length < headerDigits + 3 || characters[headerDigits] != ' ' || characters[headerDigits + 1] != '0' ||
        (characters[headerDigits + 2] | 0x20) != 'x')
        return STATUS_CODE_INVALID_FORMAT;
    FieldBytes word;
    StatusCode status = ParseHex(characters, headerDigits, word);
    if (status == STATUS_CODE_SUCCESS)
        status = ParseHex(characters + headerDigits + 3, length - headerDigits - 3, bytes);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    header = LoadLittle32(word.Data());
    text.ValidateBytes(length);
    return STATUS_CODE_SUCCESS;
}

} // namespace Zantor::Detail
