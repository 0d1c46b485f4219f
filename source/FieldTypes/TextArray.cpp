// TextArray: texts of a fixed record length, with a one-byte length in updates.
#include <ZantorMiddleware/ZantorBase/FieldTypes/TextArray.h>

#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/TextString.h>

#include "FieldTypes/ByteFieldWire.h"

#include <cstring>

namespace Zantor {

TextArray::TextArray(std::string_view text)
    : TextArray()
{
    const StatusCode status = Set(text);
    if (status != STATUS_CODE_SUCCESS)
        ZANTOR_THROW(StatusCodeException, status);
}

StatusCode TextArray::Serialize(MessageBuilder& builder, unsigned int maxLength) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    return Serialize(builder, maxLength, bytes_.Data(), bytes_.Length());
}

StatusCode TextArray::SerializeBody(void* buffer, unsigned int length, unsigned int& written) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    return SerializeBody(buffer, length, written, bytes_.Data(), bytes_.Length());
}

StatusCode TextArray::SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    return SerializeLengthAndBody(builder, maxLength, bytes_.Data(), bytes_.Length());
}

StatusCode TextArray::Deserialize(MessageValidator& validator, unsigned int length)
{
    return SetFrom(validator, length, &TextArray::Deserialize);
}

StatusCode TextArray::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength)
{
    return SetFrom(validator, maxLength, &TextArray::DeserializeLengthAndBody);
}

unsigned int TextArray::GetSerializedLength() const noexcept
{
    return IsInitialized() ? bytes_.Length() : 0;
}

StatusCode TextArray::Serialize(MessageBuilder& builder, unsigned int maxLength, const unsigned char* data,
                                unsigned int length)
{
    if (length == 0 || length > maxLength || data == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    return Detail::AppendParts(builder, nullptr, 0, data, length, maxLength - length);
}

StatusCode TextArray::SerializeBody(void* buffer, unsigned int bufferLength, unsigned int& written,
                                    const unsigned char* data, unsigned int length) noexcept
{
    if (length == 0 || length > bufferLength || data == nullptr || buffer == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    std::memmove(buffer, data, length);
    written = length;
    return STATUS_CODE_SUCCESS;
}

StatusCode TextArray::SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength,
                                             const unsigned char* data, unsigned int length)
{
    return TextString::SerializeLengthAndBody(builder, maxLength, data, length);
}

StatusCode TextArray::Deserialize(MessageValidator& validator, unsigned int maxLength, const unsigned char*& data,
                                  unsigned int& length) noexcept
{
    const void* record = nullptr;
    if (maxLength == 0 || validator.ValidateBytes(maxLength, &record) != STATUS_CODE_SUCCESS)
        return STATUS_CODE_INVALID_PARAMETER;
    data = static_cast<const unsigned char*>(record);
    length = maxLength;
    return STATUS_CODE_SUCCESS;
}

StatusCode TextArray::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength,
                                               const unsigned char*& data, unsigned int& length) noexcept
{
    return TextString::DeserializeLengthAndBody(validator, maxLength, data, length);
}

StatusCode TextArray::ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                       unsigned int& bodyLength) noexcept
{
    return TextString::ValidateSerializedLengthAndBody(validator, bodyOffset, bodyLength);
}

} // namespace Zantor
