// Boolean: the one-byte true/false field value.
#include <ZantorMiddleware/ZantorBase/FieldTypes/Boolean.h>

#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

namespace Zantor {

namespace {

// Whether the size bytes at text equal word (lower case) in any case.
bool EqualsFolded(const unsigned char* text, unsigned size, const char* word) noexcept
{
    for (unsigned i = 0; i < size; ++i)
    {
        const unsigned char c = text[i];
        const unsigned char lower = (c >= 'A' && c <= 'Z') ? static_cast<unsigned char>(c + ('a' - 'A')) : c;
        if (word[i] == '\0' || lower != static_cast<unsigned char>(word[i]))
            return false;
    }
    return word[size] == '\0';
}

} // namespace

StatusCode Boolean::Compare(const Boolean& other, int& result) const noexcept
{
    if (!IsInitialized() || !other.IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    result = static_cast<int>(value_) - static_cast<int>(other.value_);
    return STATUS_CODE_SUCCESS;
}

StatusCode Boolean::Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                            int& result) noexcept
{
    Boolean a, b;
    StatusCode status = a.DeserializeBody(body1, length1);
    if (status == STATUS_CODE_SUCCESS)
        status = b.DeserializeBody(body2, length2);
    return status != STATUS_CODE_SUCCESS ? status : a.Compare(b, result);
}

StatusCode Boolean::Compare(const void* body, unsigned int bodyLength, int& result) const
{
    Boolean other;
    const StatusCode status = other.DeserializeBody(body, bodyLength);
    return status != STATUS_CODE_SUCCESS ? status : Compare(other, result);
}

StatusCode Boolean::ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                    unsigned int& bodyLength) noexcept
{
    if (validator.GetRemaining() == 0)
        return STATUS_CODE_INVALID_PARAMETER;
    bodyOffset = validator.GetCursor();
    bodyLength = 1;
    validator.ValidateBytes(1);
    return STATUS_CODE_SUCCESS;
}

StatusCode Boolean::Convert(const IFieldType* other)
{
    if (other == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    if (other->GetType() != FIELD_TYPE_BOOLEAN)
        return STATUS_CODE_MISMATCH;
    *this = *static_cast<const Boolean*>(other);
    return STATUS_CODE_SUCCESS;
}

std::string Boolean::ToString() const
{
    if (!IsInitialized())
        return NOT_INITIALIZED_TEXT;
    return value_ ? "true" : "false";
}

StatusCode Boolean::FromString(MessageValidator& text)
{
    StatusCode status;
    if (FromNotInitializedText(text, status))
        return status;
    const unsigned size = text.GetRemaining();
    const unsigned char* p = text.GetCursorPointer();
    if (EqualsFolded(p, size, "true"))
        SetValue(true);
    else if (EqualsFolded(p, size, "false"))
        SetValue(false);
    else
        return STATUS_CODE_INVALID_FORMAT;
    text.ValidateBytes(size);
    return STATUS_CODE_SUCCESS;
}

const char* Boolean::GetFromStringFormat() const noexcept
{
    return "true|false";
}

StatusCode Boolean::Serialize(MessageBuilder& builder, unsigned int maxLength) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    if (maxLength == 0)
        return STATUS_CODE_INVALID_PARAMETER;
    return builder.AppendUInt8(value_ ? 1 : 0);
}

StatusCode Boolean::SerializeBody(void* buffer, unsigned int length, unsigned int& written) const
{
    written = 1;
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    if (length == 0 || buffer == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    *static_cast<unsigned char*>(buffer) = value_ ? 1 : 0;
    return STATUS_CODE_SUCCESS;
}

StatusCode Boolean::SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const
{
    return Serialize(builder, maxLength);
}

StatusCode Boolean::Deserialize(MessageValidator& validator, unsigned int length)
{
    if (length != 1 || validator.GetRemaining() == 0)
        return STATUS_CODE_INVALID_PARAMETER;
    SetValue(validator.GetCursorPointer()[0] != 0);
    validator.ValidateBytes(1);
    return STATUS_CODE_SUCCESS;
}

StatusCode Boolean::DeserializeBody(const void* body, unsigned int length)
{
    if (length != 1 || body == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    SetValue(*static_cast<const unsigned char*>(body) != 0);
    return STATUS_CODE_SUCCESS;
}

StatusCode Boolean::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength)
{
    return maxLength == 0 ? STATUS_CODE_INVALID_PARAMETER : Deserialize(validator, 1);
}

unsigned int Boolean::GetSerializedLength() const noexcept
{
    return IsInitialized() ? 1 : 0;
}

unsigned int Boolean::GetSerializedBodyLength() const noexcept
{
    return GetSerializedLength();
}

StatusCode Boolean::IsDifferent(const void* body, unsigned int bodyLength, bool& different) const
{
    Boolean other;
    if (bodyLength != 0)
    {
        const StatusCode status = other.DeserializeBody(body, bodyLength);
        if (status != STATUS_CODE_SUCCESS)
            return status;
    }
    different = other.IsInitialized() != IsInitialized() || (IsInitialized() && other.value_ != value_);
    return STATUS_CODE_SUCCESS;
}

} // namespace Zantor
