// TextString: short texts with a one-byte length in records and updates.
#include <ZantorMiddleware/ZantorBase/FieldTypes/TextString.h>

#include <ZantorMiddleware/ZantorBase/Exception.h>

#include "FieldTypes/ByteFieldWire.h"

#include <cstring>

namespace Zantor {

TextString::TextString(std::string_view text)
    : TextString()
{
    const StatusCode status = Set(text);
    if (status != STATUS_CODE_SUCCESS)
        ZANTOR_THROW(StatusCodeException, status);
}

StatusCode TextString::Serialize(MessageBuilder& builder, unsigned int maxLength) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    return Serialize(builder, maxLength, bytes_.Data(), bytes_.Length());
}

StatusCode TextString::SerializeBody(void* buffer, unsigned int length, unsigned int& written) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    return SerializeBody(buffer, length, written, bytes_.Data(), bytes_.Length());
}

StatusCode TextString::SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const
{
    return Serialize(builder, maxLength);
}

StatusCode TextString::Deserialize(MessageValidator& validator, unsigned int maxLength)
{
    return DeserializeLengthAndBody(validator, maxLength);
}

StatusCode TextString::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength)
{
    return SetFrom(validator, maxLength, &TextString::DeserializeLengthAndBody);
}

unsigned int TextString::GetSerializedLength() const noexcept
{
    return IsInitialized() ? 1 + bytes_.Length() : 0;
}

StatusCode TextString::Serialize(MessageBuilder& builder, unsigned int maxLength, const unsigned char* data,
                                 unsigned int length)
{
    if (length == 0 || length > Detail::SHORT_BODY_MAX || length > maxLength || data == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    const unsigned char prefix = static_cast<unsigned char>(length);
    return Detail::AppendParts(builder, &prefix, 1, data, length);
}

StatusCode TextString::SerializeBody(void* buffer, unsigned int bufferLength, unsigned int& written,
                                     const unsigned char* data, unsigned int length) noexcept
{
    if (length == 0 || length > Detail::SHORT_BODY_MAX || length > bufferLength || data == nullptr ||
        buffer == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    std::memmove(buffer, data, length);
    written = length;
    return STATUS_CODE_SUCCESS;
}

StatusCode TextString::SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength,
                                              const unsigned char* data, unsigned int length)
{
    return Serialize(builder, maxLength, data, length);
}

StatusCode TextString::Deserialize(MessageValidator& validator, unsigned int maxLength, const unsigned char*& data,
                                   unsigned int& length) noexcept
{
    return DeserializeLengthAndBody(validator, maxLength, data, length);
}

StatusCode TextString::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength,
                                                const unsigned char*& data, unsigned int& length) noexcept
{
    unsigned int offset = 0, bodyLength = 0;
    const StatusCode status = Detail::PeekShortBody(validator, maxLength, offset, bodyLength);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    validator.ValidateBytes(1 + bodyLength);
    data = validator.GetBuffer() + offset;
    length = bodyLength;
    return STATUS_CODE_SUCCESS;
}

StatusCode TextString::ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                       unsigned int& bodyLength) noexcept
{
    const StatusCode status = Detail::PeekShortBody(validator, Detail::SHORT_BODY_MAX, bodyOffset, bodyLength);
    if (status == STATUS_CODE_SUCCESS)
        validator.ValidateBytes(1 + bodyLength);
    return status;
}

} // namespace Zantor
