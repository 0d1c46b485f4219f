// UInt: the unsigned integer field value.
#include <ZantorMiddleware/ZantorBase/FieldTypes/UInt.h>

#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/TRational.h>

#include "IntegerCoding.h"

#include <cinttypes>
#include <cstdio>
#include <limits>

namespace Zantor {

namespace Coding = IntegerCoding;

StatusCode UInt::Add(const UInt& other) noexcept
{
    if (!IsInitialized() || !other.IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    std::uint64_t sum;
    if (__builtin_add_overflow(value_, other.value_, &sum))
        return STATUS_CODE_OUT_OF_RANGE;
    value_ = sum;
    return STATUS_CODE_SUCCESS;
}

StatusCode UInt::Subtract(const UInt& other) noexcept
{
    if (!IsInitialized() || !other.IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    if (other.value_ > value_)
        return STATUS_CODE_OUT_OF_RANGE;
    value_ -= other.value_;
    return STATUS_CODE_SUCCESS;
}

StatusCode UInt::Multiply(const UInt& other) noexcept
{
    if (!IsInitialized() || !other.IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    std::uint64_t product;
    if (__builtin_mul_overflow(value_, other.value_, &product))
        return STATUS_CODE_OUT_OF_RANGE;
    value_ = product;
    return STATUS_CODE_SUCCESS;
}

StatusCode UInt::Divide(const UInt& other) noexcept
{
    if (!IsInitialized() || !other.IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    if (other.value_ == 0)
        return STATUS_CODE_OUT_OF_RANGE;
    value_ /= other.value_;
    return STATUS_CODE_SUCCESS;
}

StatusCode UInt::Compare(const UInt& other, int& result) const noexcept
{
    if (!IsInitialized() || !other.IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    result = Coding::Order(value_, other.value_);
    return STATUS_CODE_SUCCESS;
}

StatusCode UInt::Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                         int& result) noexcept
{
    std::uint64_t a, b;
    StatusCode status = Coding::ReadBody(body1, length1, false, a);
    if (status == STATUS_CODE_SUCCESS)
        status = Coding::ReadBody(body2, length2, false, b);
    if (status == STATUS_CODE_SUCCESS)
        result = Coding::Order(a, b);
    return status;
}

StatusCode UInt::Compare(const void* body, unsigned int bodyLength, int& result) const
{
    UInt other;
    const StatusCode status = other.DeserializeBody(body, bodyLength);
    return status != STATUS_CODE_SUCCESS ? status : Compare(other, result);
}

UInt::operator SInt() const
{
    if (!IsInitialized())
        return SInt();
    if (value_ > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        ZANTOR_THROW(StatusCodeException, STATUS_CODE_OUT_OF_RANGE);
    return SInt(static_cast<std::int64_t>(value_));
}

UInt::operator Rational() const
{
    if (!IsInitialized())
        return Rational();
    if (value_ > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        ZANTOR_THROW(StatusCodeException, STATUS_CODE_OUT_OF_RANGE);
    return Rational(static_cast<std::int64_t>(value_), Rational::DENOMINATOR_WHOLE);
}

StatusCode UInt::Convert(const IFieldType* other)
{
    if (other == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    const Rational* rational = nullptr;
    switch (other->GetType())
    {
    case FIELD_TYPE_UINT: *this = *static_cast<const UInt*>(other); return STATUS_CODE_SUCCESS;
    case FIELD_TYPE_SINT:
    {
        const SInt& source = *static_cast<const SInt*>(other);
        if (!source.IsInitialized())
            break;
        if (source.GetValue() < 0)
            return STATUS_CODE_FAILURE;
        SetValue(static_cast<std::uint64_t>(source.GetValue()));
        return STATUS_CODE_SUCCESS;
    }
    case FIELD_TYPE_RATIONAL: rational = static_cast<const Rational*>(other); break;
    case FIELD_TYPE_TRATIONAL: rational = &static_cast<const TRational*>(other)->GetRational(); break;
    default: return STATUS_CODE_MISMATCH;
    }
    if (rational != nullptr && rational->IsInitialized())
    {
        if (rational->GetNumerator() < 0)
            return STATUS_CODE_FAILURE;
        bool negative = false;
        std::uint64_t magnitude = 0;
        const StatusCode status = rational->GetWholeNumber(negative, magnitude);
        if (status != STATUS_CODE_SUCCESS)
            return status;
        SetValue(magnitude);
        return STATUS_CODE_SUCCESS;
    }
    Reset();
    return STATUS_CODE_SUCCESS;
}

std::string UInt::ToString() const
{
    if (!IsInitialized())
        return NOT_INITIALIZED_TEXT;
    char text[24];
    std::snprintf(text, sizeof text, "%" PRIu64, value_);
    return text;
}

StatusCode UInt::FromString(MessageValidator& text)
{
    StatusCode status;
    if (FromNotInitializedText(text, status))
        return status;
    MessageValidator reader = text;
    unsigned digits = 0;
    const unsigned char* p = reader.GetCursorPointer();
    while (digits < reader.GetRemaining() && p[digits] >= '0' && p[digits] <= '9')
        ++digits;
    if (digits == 0)
        return STATUS_CODE_INVALID_FORMAT;
    std::uint64_t value = 0;
    status = reader.ValidateUnsignedAsciiIntegral(digits, 0, std::numeric_limits<std::uint64_t>::max(), &value);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (!reader.IsAtEnd())
        return STATUS_CODE_INVALID_LENGTH;
    text = reader;
    SetValue(value);
    return STATUS_CODE_SUCCESS;
}

const char* UInt::GetFromStringFormat() const noexcept
{
    return "0..18446744073709551615";
}

StatusCode UInt::Serialize(MessageBuilder& builder, unsigned int maxLength) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    return Coding::SerializeRecord(builder, maxLength, value_, Coding::UnsignedWidth(value_));
}

StatusCode UInt::SerializeBody(void* buffer, unsigned int length, unsigned int& written) const
{
    written = length;
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    return Coding::SerializeBody(buffer, length, written, value_, Coding::UnsignedWidth(value_));
}

StatusCode UInt::SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    return Coding::SerializeUpdate(builder, maxLength, value_, Coding::UnsignedWidth(value_));
}

StatusCode UInt::Deserialize(MessageValidator& validator, unsigned int length)
{
    std::uint64_t bits;
    const StatusCode status = Coding::ReadRecord(validator, length, false, bits);
    if (status == STATUS_CODE_SUCCESS)
        SetValue(bits);
    return status;
}

StatusCode UInt::DeserializeBody(const void* body, unsigned int length)
{
    std::uint64_t bits;
    const StatusCode status = Coding::ReadBody(body, length, false, bits);
    if (status == STATUS_CODE_SUCCESS)
        SetValue(bits);
    return status;
}

StatusCode UInt::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength)
{
    std::uint64_t bits;
    const StatusCode status = Coding::ReadUpdate(validator, maxLength, false, bits);
    if (status == STATUS_CODE_SUCCESS)
        SetValue(bits);
    return status;
}

unsigned int UInt::GetSerializedLength() const noexcept
{
    return IsInitialized() ? Coding::UnsignedWidth(value_) : 0;
}

unsigned int UInt::GetSerializedBodyLength() const noexcept
{
    return GetSerializedLength();
}

StatusCode UInt::IsDifferent(const void* body, unsigned int bodyLength, bool& different) const
{
    UInt other;
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
