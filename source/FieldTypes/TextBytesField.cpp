// TextBytesField: value handling shared by the string and array types.
#include <ZantorMiddleware/ZantorBase/Detail/TextBytesField.h>

#include "FieldTypes/ByteFieldWire.h"

#include <cstring>

namespace Zantor::Detail {

namespace {

bool IsStringType(unsigned char type) noexcept
{
    return type == FIELD_TYPE_TEXTSTRING || type == FIELD_TYPE_BINARYSTRING;
}

} // namespace

bool StringOrArrayBytes(const IFieldType* field, const unsigned char*& data, unsigned int& length) noexcept
{
    if (field == nullptr)
        return false;
    const unsigned char type = field->GetType();
    if (!IsStringType(type) && type != FIELD_TYPE_TEXTARRAY && type != FIELD_TYPE_BINARYARRAY)
        return false;
    data = static_cast<const TextBytesField*>(field)->GetData();
    length = static_cast<const TextBytesField*>(field)->GetLength();
    return true;
}

StatusCode TextBytesField::Set(const void* data, unsigned int length) noexcept
{
    const StatusCode status = bytes_.Assign(data, length);
    if (status == STATUS_CODE_SUCCESS)
        SetInitialized(true);
    return status;
}

StatusCode TextBytesField::Set(std::string_view text) noexcept
{
    if (!FitsLength(text.size()))
        return STATUS_CODE_INVALID_PARAMETER;
    return Set(text.data(), static_cast<unsigned int>(text.size()));
}

void TextBytesField::Adopt(FieldBytes&& bytes) noexcept
{
    bytes_ = static_cast<FieldBytes&&>(bytes);
    SetInitialized(true);
}

void TextBytesField::Reset() noexcept
{
    bytes_.Clear();
    SetInitialized(false);
}

void TextBytesField::Release() noexcept
{
    bytes_.Release();
    SetInitialized(false);
}

bool TextBytesField::IsValidBody(const void* body, unsigned int length) const noexcept
{
    return body != nullptr && length != 0 && (!IsStringType(GetType()) || length <= SHORT_BODY_MAX);
}

StatusCode TextBytesField::Compare(const void* body, unsigned int bodyLength, int& result) const
{
    if (!IsValidBody(body, bodyLength))
        return STATUS_CODE_INVALID_PARAMETER;
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    result = CompareRuns(bytes_.Data(), bytes_.Length(), static_cast<const unsigned char*>(body), bodyLength);
    return STATUS_CODE_SUCCESS;
}

StatusCode TextBytesField::Convert(const IFieldType* other)
{
    if (other == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    const unsigned char* data = nullptr;
    unsigned int length = 0;
    if (!StringOrArrayBytes(other, data, length))
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

std::string TextBytesField::ToString() const
{
    if (!IsInitialized())
        return NOT_INITIALIZED_TEXT;
    return std::string(reinterpret_cast<const char*>(bytes_.Data()), bytes_.Length());
}

StatusCode TextBytesField::FromString(MessageValidator& text)
{
    StatusCode status;
    if (FromNotInitializedText(text, status))
        return status;
    status = Set(text.GetCursorPointer(), text.GetRemaining());
    if (status == STATUS_CODE_SUCCESS)
        text.ValidateBytes(text.GetRemaining());
    return status;
}

const char* TextBytesField::GetFromStringFormat() const noexcept
{
    return "text";
}

StatusCode TextBytesField::DeserializeBody(const void* body, unsigned int length)
{
    if (!IsValidBody(body, length))
        return STATUS_CODE_INVALID_PARAMETER;
    return Set(body, length);
}

StatusCode TextBytesField::SetFrom(MessageValidator& validator, unsigned int maxLength, ReadBytes read)
{
    MessageValidator reader = validator;
    const unsigned char* data = nullptr;
    unsigned int length = 0;
    StatusCode status = read(reader, maxLength, data, length);
    if (status == STATUS_CODE_SUCCESS)
        status = Set(data, length);
    if (status == STATUS_CODE_SUCCESS)
        validator = reader;
    return status;
}

unsigned int TextBytesField::GetSerializedBodyLength() const noexcept
{
    return IsInitialized() ? bytes_.Length() : 0;
}

StatusCode TextBytesField::IsDifferent(const void* body, unsigned int bodyLength, bool& different) const
{
    if (!IsValidBody(body, bodyLength))
        return STATUS_CODE_INVALID_PARAMETER;
    different = !IsInitialized() || bodyLength != bytes_.Length() ||
                std::memcmp(body, bytes_.Data(), bodyLength) != 0;
    return STATUS_CODE_SUCCESS;
}

} // namespace Zantor::Detail
