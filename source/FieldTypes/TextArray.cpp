// TextArray: texts of a fixed record length, with a one-byte length in updates.
#include <ZantorMiddleware/ZantorBase/FieldTypes/TextArray.h>

#include <ZantorMiddleware/ZantorBase/Exception.h>

#include "FieldTypes/ByteFieldWire.h"

#include <cstring>

namespace Zantor {

namespace {

// A body of an array: any non-zero length.
bool IsArrayBody(const void* body, unsigned int length) noexcept
{
    return body != nullptr && length != 0;
}

} // namespace

TextArray::TextArray(std::string_view text)
    : TextArray()
{
    const StatusCode status = Set(text);
    if (status != STATUS_CODE_SUCCESS)
        ZANTOR_THROW(StatusCodeException, status);
}

StatusCode TextArray::Set(const void* data, unsigned int length) noexcept
{
    const StatusCode status = bytes_.Assign(data, length);
    if (status == STATUS_CODE_SUCCESS)
        SetInitialized(true);
    return status;
}

StatusCode TextArray::Set(std::string_view text) noexcept
{
    if (!Detail::FitsLength(text.size()))
        return STATUS_CODE_INVALID_PARAMETER;
    return Set(text.data(), static_cast<unsigned int>(text.size()));
}

void TextArray::Adopt(Detail::FieldBytes&& bytes) noexcept
{
    bytes_ = static_cast<Detail::FieldBytes&&>(bytes);
    SetInitialized(true);
}

void TextArray::Reset() noexcept
{
    bytes_.Clear();
    SetInitialized(false);
}

void TextArray::Release() noexcept
{
    bytes_.Release();
    SetInitialized(false);
}

StatusCode TextArray::Compare(const void* body, unsigned int bodyLength, int& result) const
{
    if (!IsArrayBody(body, bodyLength))
        return STATUS_CODE_INVALID_PARAMETER;
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    result = Detail::CompareRuns(bytes_.Data(), bytes_.Length(), static_cast<const unsigned char*>(body), bodyLength);
    return STATUS_CODE_SUCCESS;
}

StatusCode TextArray::Convert(const IFieldType* other)
{
    if (other == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    const unsigned char* data = nullptr;
    unsigned int length = 0;
    if (!Detail::StringOrArrayBytes(other, data, length))
        return STATUS_CODE_MISMATCH;
    if (other == this)
        return STATUS_CODE_SUCCESS;
    if (!other->IsInitialized())
    {
        Reset();
        return STATUS_CODE_SUCCESS;
    }
    return Set(data, length);
}

std::string TextArray::ToString() const
{
    if (!IsInitialized())
        return NOT_INITIALIZED_TEXT;
    return std::string(reinterpret_cast<const char*>(bytes_.Data()), bytes_.Length());
}

StatusCode TextArray::FromString(MessageValidator& text)
{
    StatusCode status;
    if (FromNotInitializedText(text, status))
        return status;
    status = Set(text.GetCursorPointer(), text.GetRemaining());
    if (status == STATUS_CODE_SUCCESS)
        text.ValidateBytes(text.GetRemaining());
    return status;
}

const char* TextArray::GetFromStringFormat() const noexcept
{
    return "text";
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
    MessageValidator reader = validator;
    const unsigned char* data = nullptr;
    unsigned int dataLength = 0;
    StatusCode status = Deserialize(reader, length, data, dataLength);
    if (status == STATUS_CODE_SUCCESS)
        status = Set(data, dataLength);
    if (status == STATUS_CODE_SUCCESS)
        validator = reader;
    return status;
}

StatusCode TextArray::DeserializeBody(const void* body, unsigned int length)
{
    if (!IsArrayBody(body, length))
        return STATUS_CODE_INVALID_PARAMETER;
    return Set(body, length);
}

StatusCode TextArray::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength)
{
    MessageValidator reader = validator;
    const unsigned char* data = nullptr;
    unsigned int length = 0;
    StatusCode status = DeserializeLengthAndBody(reader, maxLength, data, length);
    if (status == STATUS_CODE_SUCCESS)
        status = Set(data, length);
    if (status == STATUS_CODE_SUCCESS)
        validator = reader;
    return status;
}

unsigned int TextArray::GetSerializedLength() const noexcept
{
    return IsInitialized() ? bytes_.Length() : 0;
}

unsigned int TextArray::GetSerializedBodyLength() const noexcept
{
    return IsInitialized() ? bytes_.Length() : 0;
}

StatusCode TextArray::IsDifferent(const void* body, unsigned int bodyLength, bool& different) const
{
    if (!IsArrayBody(body, bodyLength))
        return STATUS_CODE_INVALID_PARAMETER;
    different = !IsInitialized() || bodyLength != bytes_.Length() ||
                std::memcmp(body, bytes_.Data(), bodyLength) != 0;
    return STATUS_CODE_SUCCESS;
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
    if (length == 0 || length > Detail::SHORT_BODY_MAX || length > maxLength || data == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    const unsigned char prefix = static_cast<unsigned char>(length);
    return Detail::AppendParts(builder, &prefix, 1, data, length);
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
    unsigned int offset = 0, bodyLength = 0;
    const StatusCode status = Detail::PeekShortBody(validator, maxLength, offset, bodyLength);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    validator.ValidateBytes(1 + bodyLength);
    data = validator.GetBuffer() + offset;
    length = bodyLength;
    return STATUS_CODE_SUCCESS;
}

StatusCode TextArray::ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                       unsigned int& bodyLength) noexcept
{
    const StatusCode status = Detail::PeekShortBody(validator, Detail::SHORT_BODY_MAX, bodyOffset, bodyLength);
    if (status == STATUS_CODE_SUCCESS)
        validator.ValidateBytes(1 + bodyLength);
    return status;
}

} // namespace Zantor
