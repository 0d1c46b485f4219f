// TextString: short texts with a one-byte length in records and updates.
#include <ZantorMiddleware/ZantorBase/FieldTypes/TextString.h>

#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/TextArray.h>

#include "FieldTypes/ByteFieldWire.h"

#include <cstring>

namespace Zantor {

namespace Detail {

bool StringOrArrayBytes(const IFieldType* field, const unsigned char*& data, unsigned int& length) noexcept
{
    if (field == nullptr)
        return false;
    switch (field->GetType())
    {
    case FIELD_TYPE_TEXTSTRING:
    case FIELD_TYPE_BINARYSTRING:
        data = static_cast<const TextString*>(field)->GetData();
        length = static_cast<const TextString*>(field)->GetLength();
        return true;
    case FIELD_TYPE_TEXTARRAY:
    case FIELD_TYPE_BINARYARRAY:
        data = static_cast<const TextArray*>(field)->GetData();
        length = static_cast<const TextArray*>(field)->GetLength();
        return true;
    default: return false;
    }
}

} // namespace Detail

namespace {

// A body of a string: 1 to 255 bytes.
bool IsStringBody(const void* body, unsigned int length) noexcept
{
    return body != nullptr && length != 0 && length <= Detail::SHORT_BODY_MAX;
}

} // namespace

TextString::TextString(std::string_view text)
    : TextString()
{
    const StatusCode status = Set(text);
    if (status != STATUS_CODE_SUCCESS)
        ZANTOR_THROW(StatusCodeException, status);
}

StatusCode TextString::Set(const void* data, unsigned int length) noexcept
{
    const StatusCode status = bytes_.Assign(data, length);
    if (status == STATUS_CODE_SUCCESS)
        SetInitialized(true);
    return status;
}

StatusCode TextString::Set(std::string_view text) noexcept
{
    if (!Detail::FitsLength(text.size()))
        return STATUS_CODE_INVALID_PARAMETER;
    return Set(text.data(), static_cast<unsigned int>(text.size()));
}

void TextString::Adopt(Detail::FieldBytes&& bytes) noexcept
{
    bytes_ = static_cast<Detail::FieldBytes&&>(bytes);
    SetInitialized(true);
}

void TextString::Reset() noexcept
{
    bytes_.Clear();
    SetInitialized(false);
}

void TextString::Release() noexcept
{
    bytes_.Release();
    SetInitialized(false);
}

StatusCode TextString::Compare(const void* body, unsigned int bodyLength, int& result) const
{
    if (!IsStringBody(body, bodyLength))
        return STATUS_CODE_INVALID_PARAMETER;
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    result = Detail::CompareRuns(bytes_.Data(), bytes_.Length(), static_cast<const unsigned char*>(body), bodyLength);
    return STATUS_CODE_SUCCESS;
}

StatusCode TextString::Convert(const IFieldType* other)
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

std::string TextString::ToString() const
{
    if (!IsInitialized())
        return NOT_INITIALIZED_TEXT;
    return std::string(reinterpret_cast<const char*>(bytes_.Data()), bytes_.Length());
}

StatusCode TextString::FromString(MessageValidator& text)
{
    StatusCode status;
    if (FromNotInitializedText(text, status))
        return status;
    status = Set(text.GetCursorPointer(), text.GetRemaining());
    if (status == STATUS_CODE_SUCCESS)
        text.ValidateBytes(text.GetRemaining());
    return status;
}

const char* TextString::GetFromStringFormat() const noexcept
{
    return "text";
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

StatusCode TextString::DeserializeBody(const void* body, unsigned int length)
{
    if (!IsStringBody(body, length))
        return STATUS_CODE_INVALID_PARAMETER;
    return Set(body, length);
}

StatusCode TextString::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength)
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

unsigned int TextString::GetSerializedLength() const noexcept
{
    return IsInitialized() ? 1 + bytes_.Length() : 0;
}

unsigned int TextString::GetSerializedBodyLength() const noexcept
{
    return IsInitialized() ? bytes_.Length() : 0;
}

StatusCode TextString::IsDifferent(const void* body, unsigned int bodyLength, bool& different) const
{
    if (!IsStringBody(body, bodyLength))
        return STATUS_CODE_INVALID_PARAMETER;
    different = !IsInitialized() || bodyLength != bytes_.Length() ||
                std::memcmp(body, bytes_.Data(), bodyLength) != 0;
    return STATUS_CODE_SUCCESS;
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
