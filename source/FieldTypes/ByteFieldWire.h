// Wire helpers shared by the text, binary and blob values: appending a
// length prefix and a body as one unit, reading one- and four-byte length
// prefixes, little-endian words, byte-run ordering and the hexadecimal text
// form.
#pragma once

#include <ZantorMiddleware/ZantorBase/Detail/FieldBytes.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/IFieldType.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <cstdint>
#include <string>

namespace Zantor::Detail {

// Largest body of a field with a one-byte length.
inline constexpr unsigned int SHORT_BODY_MAX = 255;

inline void StoreLittle32(unsigned char* target, std::uint32_t value) noexcept
{
    target[0] = static_cast<unsigned char>(value);
    target[1] = static_cast<unsigned char>(value >> 8);
    target[2] = static_cast<unsigned char>(value >> 16);
    target[3] = static_cast<unsigned char>(value >> 24);
}

inline std::uint32_t LoadLittle32(const unsigned char* source) noexcept
{
    return std::uint32_t{source[0]} | std::uint32_t{source[1]} << 8 | std::uint32_t{source[2]} << 16 |
           std::uint32_t{source[3]} << 24;
}

// A four-byte length in a handler's byte order.
inline void StoreLength32(unsigned char* target, std::uint32_t value, MessageHandler::Endian endian) noexcept
{
    StoreLittle32(target, MessageHandler::IsBigEndian(endian) ? __builtin_bswap32(value) : value);
}

inline std::uint32_t LoadLength32(const unsigned char* source, MessageHandler::Endian endian) noexcept
{
    const std::uint32_t value = LoadLittle32(source);
    return MessageHandler::IsBigEndian(endian) ? __builtin_bswap32(value) : value;
}

// Appends prefixLength bytes of prefix, length bytes of data and padding
// zero bytes as one unit: either all or, on failure, nothing (the
// builder's status). data may lie inside the builder's storage.
StatusCode AppendParts(MessageBuilder& builder, const unsigned char* prefix, unsigned int prefixLength,
                       const unsigned char* data, unsigned int length, unsigned int padding = 0);

// A one-byte length (1 to 255, at most maxLength) and that many bytes at
// the validator's cursor: the body's offset and length. The cursor does
// not move. STATUS_CODE_INVALID_PARAMETER when the length is 0, above
// maxLength or runs past the end.
StatusCode PeekShortBody(const MessageValidator& validator, unsigned int maxLength, unsigned int& bodyOffset,
                         unsigned int& bodyLength) noexcept;
// A four-byte length in the validator's byte order (at least minBody, at
// most maxLength) and that many bytes; as PeekShortBody otherwise.
StatusCode PeekLongBody(const MessageValidator& validator, unsigned int maxLength, unsigned int minBody,
                        unsigned int& bodyOffset, unsigned int& bodyLength) noexcept;

// Byte-wise order of two runs; a run that is a prefix of the other comes
// first. -1, 0 or 1.
int CompareRuns(const unsigned char* first, unsigned int firstLength, const unsigned char* second,
                unsigned int secondLength) noexcept;

// Appends length bytes as lower-case hexadecimal, two digits per byte,
// high digit first.
void AppendHex(std::string& text, const unsigned char* data, unsigned int length);
// Reads pairs of hexadecimal digits (either case) into bytes: a fresh
// storage on success; STATUS_CODE_INVALID_FORMAT for an odd count or
// another character, STATUS_CODE_HEAP_EMPTY when storage cannot be had.
StatusCode ParseHex(const unsigned char* text, unsigned int length, FieldBytes& bytes) noexcept;
// Skips a leading "0x" or "0X" of text.
void SkipHexPrefix(const unsigned char*& text, unsigned int& length) noexcept;

} // namespace Zantor::Detail

namespace Zantor::Detail {

// The bytes of a string or array value (codes 7 to 10): false for any other
// type or a null field.
bool StringOrArrayBytes(const IFieldType* field, const unsigned char*& data, unsigned int& length) noexcept;

// A length that fits the wire's 32-bit lengths.
inline bool FitsLength(std::size_t length) noexcept
{
    return length <= 0xFFFFFFFFu;
}

} // namespace Zantor::Detail

namespace Zantor::Detail {

// "0x" and the bytes in lower-case hexadecimal.
std::string HexText(const unsigned char* data, unsigned int length);
// The validator's whole remaining text as an optional "0x" or "0X" and
// pairs of hexadecimal digits, into a fresh bytes; the cursor moves to the
// end only on success. Statuses as ParseHex.
StatusCode ParseHexText(MessageValidator& text, FieldBytes& bytes) noexcept;

} // namespace Zantor::Detail

namespace Zantor::Detail {

// The order of two blob values: header words as unsigned numbers first,
// then the data as CompareRuns orders it; -1, 0 or 1.
inline int CompareHeaded(std::uint32_t firstHeader, const unsigned char* first, unsigned int firstLength,
                         std::uint32_t secondHeader, const unsigned char* second, unsigned int secondLength) noexcept
{
    if (firstHeader != secondHeader)
        return firstHeader < secondHeader ? -1 : 1;
    return CompareRuns(first, firstLength, second, secondLength);
}

// The blob text form: the header word's four bytes in memory order as hex,
// " 0x", the data as hex.
std::string BlobText(std::uint32_t header, const unsigned char* data, unsigned int length);
// Reads the whole remaining text in that form (digits of either case, "0X"
// allowed) into a fresh bytes and header; the cursor moves to the end only
// on success. STATUS_CODE_INVALID_FORMAT for any other text,
// STATUS_CODE_HEAP_EMPTY.
StatusCode ParseBlobText(MessageValidator& text, FieldBytes& bytes, std::uint32_t& header) noexcept;

} // namespace Zantor::Detail
