// The wire coding shared by the integer field values (UInt, SInt) and the
// magnitudes of the rational ones: shortest widths, loads and stores of 1 to
// 8 bytes in either byte order, and the record, update and body forms of an
// integer held as 64 bits. Private to the library.
#pragma once

#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace Zantor::IntegerCoding {

using Endian = MessageHandler::Endian;

inline unsigned UnsignedWidth(std::uint64_t value) noexcept
{
    return value < 0x100u ? 1 : value < 0x10000u ? 2 : value < 0x100000000u ? 4 : 8;
}

inline unsigned SignedWidth(std::int64_t value) noexcept
{
    if (value >= -0x80 && value < 0x80)
        return 1;
    if (value >= -0x8000 && value < 0x8000)
        return 2;
    return value >= -0x80000000LL && value < 0x80000000LL ? 4 : 8;
}

// N (2, 4 or 8) bytes at p, zero-extended: one load, byte-swapped for the
// big-endian order (the machines served are little-endian).
template <unsigned N>
inline std::uint64_t Load(const unsigned char* p, bool bigEndian) noexcept
{
    using Word = std::conditional_t<N == 2, std::uint16_t, std::conditional_t<N == 4, std::uint32_t, std::uint64_t>>;
    Word value;
    std::memcpy(&value, p, N);
    if (!bigEndian)
        return value;
    if constexpr (N == 2)
        return __builtin_bswap16(value);
    else if constexpr (N == 4)
        return __builtin_bswap32(value);
    else
        return __builtin_bswap64(value);
}

// The length (1, 2, 4 or 8) bytes at p, zero-extended.
inline std::uint64_t LoadWidth(const unsigned char* p, unsigned length, bool bigEndian) noexcept
{
    switch (length)
    {
    case 1: return p[0];
    case 2: return Load<2>(p, bigEndian);
    case 4: return Load<4>(p, bigEndian);
    default: return Load<8>(p, bigEndian);
    }
}

// The length (1 to 8) bytes at p as a 64-bit pattern, sign-extended when
// isSigned, zero-extended otherwise. The odd widths 3, 5, 6 and 7 go through
// the validator's multi-byte integer read.
inline std::uint64_t Decode(const unsigned char* p, unsigned length, Endian endian, bool isSigned) noexcept
{
    const bool big = MessageHandler::IsBigEndian(endian);
    if (length == 1 || length == 2 || length == 4 || length == 8)
    {
        const std::uint64_t bits = LoadWidth(p, length, big);
        if (!isSigned || length == 8)
            return bits;
        const unsigned shift = 64 - 8 * length;
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(bits << shift) >> shift);
    }
    MessageValidator reader(p, length);
    if (isSigned)
    {
        std::int64_t value = 0;
        reader.ValidateSignedBinaryIntegral(length, endian, &value);
        return static_cast<std::uint64_t>(value);
    }
    std::uint64_t value = 0;
    reader.ValidateUnsignedBinaryIntegral(length, endian, &value);
    return value;
}

// The low length bytes of bits at p, least significant first.
inline void StoreLittle(unsigned char* p, std::uint64_t bits, unsigned length) noexcept
{
    for (unsigned i = 0; i < length; ++i)
        p[i] = static_cast<unsigned char>(bits >> (8 * i));
}

// The low length (1 to 8) bytes of bits, in the builder's byte order.
inline StatusCode Append(MessageBuilder& builder, std::uint64_t bits, unsigned length)
{
    const Endian endian = builder.GetEndian();
    switch (length)
    {
    case 1: return builder.AppendUInt8(static_cast<std::uint8_t>(bits));
    case 2: return builder.AppendUInt16(static_cast<std::uint16_t>(bits), endian);
    case 4: return builder.AppendUInt32(static_cast<std::uint32_t>(bits), endian);
    case 8: return builder.AppendUInt64(bits, endian);
    default:
    {
        unsigned char bytes[8];
        StoreLittle(bytes, bits, length);
        return builder.AppendBuffer(bytes, length, MessageHandler::IsBigEndian(endian));
    }
    }
}

// One leading byte, then the low width (1, 2, 4 or 8) bytes of bits in the
// builder's byte order, appended as a whole or not at all.
inline StatusCode AppendAfterByte(MessageBuilder& builder, std::uint8_t lead, std::uint64_t bits, unsigned width)
{
    const Endian endian = builder.GetEndian();
    switch (width)
    {
    case 1: return builder.AppendBuiltIns(endian, lead, static_cast<std::uint8_t>(bits));
    case 2: return builder.AppendBuiltIns(endian, lead, static_cast<std::uint16_t>(bits));
    case 4: return builder.AppendBuiltIns(endian, lead, static_cast<std::uint32_t>(bits));
    default: return builder.AppendBuiltIns(endian, lead, bits);
    }
}

// ---- The forms of an integer held as a 64-bit pattern ---------------------
// shortest is the value's shortest width; isSigned picks sign extension.

inline StatusCode SerializeRecord(MessageBuilder& builder, unsigned length, std::uint64_t bits, unsigned shortest)
{
    if (length > 8 || length < shortest)
        return STATUS_CODE_INVALID_PARAMETER;
    return Append(builder, bits, length);
}

inline StatusCode SerializeUpdate(MessageBuilder& builder, unsigned maxLength, std::uint64_t bits, unsigned shortest)
{
    if (shortest > maxLength)
        return STATUS_CODE_INVALID_PARAMETER;
    return AppendAfterByte(builder, static_cast<std::uint8_t>(shortest), bits, shortest);
}

inline StatusCode SerializeBody(void* buffer, unsigned length, unsigned& written, std::uint64_t bits,
                                unsigned shortest) noexcept
{
    written = length;
    if (length > 8 || length < shortest || buffer == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    StoreLittle(static_cast<unsigned char*>(buffer), bits, length);
    return STATUS_CODE_SUCCESS;
}

inline StatusCode ReadBody(const void* body, unsigned length, bool isSigned, std::uint64_t& bits) noexcept
{
    if (length == 0 || length > 8 || body == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    bits = Decode(static_cast<const unsigned char*>(body), length, MessageHandler::ENDIAN_LITTLE, isSigned);
    return STATUS_CODE_SUCCESS;
}

inline StatusCode ReadRecord(MessageValidator& validator, unsigned length, bool isSigned, std::uint64_t& bits) noexcept
{
    if (length == 0 || length > 8 || length > validator.GetRemaining())
        return STATUS_CODE_INVALID_PARAMETER;
    bits = Decode(validator.GetCursorPointer(), length, validator.GetEndian(), isSigned);
    validator.ValidateBytes(length);
    return STATUS_CODE_SUCCESS;
}

// The length byte of an update at the cursor: STATUS_CODE_INVALID_PARAMETER
// when it or the body it announces is missing, STATUS_CODE_OUT_OF_RANGE when
// it lies outside 1..limit (limit at most 8).
inline StatusCode PeekUpdateLength(const MessageValidator& validator, unsigned limit, unsigned& length) noexcept
{
    if (validator.GetRemaining() == 0)
        return STATUS_CODE_INVALID_PARAMETER;
    const unsigned announced = validator.GetCursorPointer()[0];
    if (announced == 0 || announced > limit)
        return STATUS_CODE_OUT_OF_RANGE;
    if (announced > validator.GetRemaining() - 1)
        return STATUS_CODE_INVALID_PARAMETER;
    length = announced;
    return STATUS_CODE_SUCCESS;
}

inline StatusCode ReadUpdate(MessageValidator& validator, unsigned maxLength, bool isSigned,
                             std::uint64_t& bits) noexcept
{
    if (maxLength == 0)
        return STATUS_CODE_INVALID_PARAMETER;
    unsigned length = 0;
    const StatusCode status = PeekUpdateLength(validator, maxLength < 8 ? maxLength : 8, length);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    bits = Decode(validator.GetCursorPointer() + 1, length, validator.GetEndian(), isSigned);
    validator.ValidateBytes(1 + length);
    return STATUS_CODE_SUCCESS;
}

inline StatusCode ValidateUpdate(MessageValidator& validator, unsigned& bodyOffset, unsigned& bodyLength) noexcept
{
    unsigned length = 0;
    const StatusCode status = PeekUpdateLength(validator, 8, length);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    bodyOffset = validator.GetCursor() + 1;
    bodyLength = length;
    validator.ValidateBytes(1 + length);
    return STATUS_CODE_SUCCESS;
}

// -1, 0 or 1 for a < b, a == b, a > b.
template <typename T>
inline int Order(T a, T b) noexcept
{
    return a < b ? -1 : (a > b ? 1 : 0);
}

} // namespace Zantor::IntegerCoding
