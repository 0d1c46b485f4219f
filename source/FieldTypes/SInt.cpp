// SInt: the signed integer field value.
#include <ZantorMiddleware/ZantorBase/FieldTypes/SInt.h>

#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/TRational.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/UInt.h>

#include "IntegerCoding.h"

#include <cinttypes>
#include <cstdio>
#include <limits>

namespace Zantor {

namespace Coding = IntegerCoding;

namespace {

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

std::uint64_t Bits(std::int64_t value) noexcept
{
    return static_cast<std::uint64_t>(value);
}

} // namespace

StatusCode SInt::Add(const SInt& other) noexcept
{
    if (!IsInitialized() || !other.IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    std::int64_t sum;
    if (__builtin_add_overflow(value_, other.value_, &sum))
        return STATUS_CODE_OUT_OF_RANGE;
    value_ = sum;
    return STATUS_CODE_SUCCESS;
}

StatusCode SInt::Subtract(const SInt& other) noexcept
{
    if (!IsInitialized() || !other.IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    std::int64_t difference;
    if (__builtin_sub_overflow(value_, other.value_, &difference))
        return STATUS_CODE_OUT_OF_RANGE;
    value_ = difference;
    return STATUS_CODE_SUCCESS;
}

StatusCode SInt::Multiply(const SInt& other) noexcept
{
    if (!IsInitialized() || !other.IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    std::int64_t product;
    if (__builtin_mul_overflow(value_, other.value_, &product))
        return STATUS_CODE_OUT_OF_RANGE;
    value_ = product;
    return STATUS_CODE_SUCCESS;
}

StatusCode SInt::Divide(const SInt& other) noexcept
{
    if (!IsInitialized() || !other.IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    if (other.value_ == 0 || (value_ == kMin && other.value_ == -1))
        return STATUS_CODE_OUT_OF_RANGE;
    value_ /= other.value_;
    return STATUS_CODE_SUCCESS;
}

StatusCode SInt::Compare(const SInt& other, int& result) const noexcept
{
    if (!IsInitialized() || !other.IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    result = Coding::Order(value_, other.value_);
    return STATUS_CODE_SUCCESS;
}

StatusCode SInt::Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                         int& result) noexcept
{
    std::uint64_t a, b;
    StatusCode status = Coding::ReadBody(body1, length1, true, a);
    if (status == STATUS_CODE_SUCCESS)
        status = Coding::ReadBody(body2, length2, true, b);
    if (status == STATUS_CODE_SUCCESS)
        result = Coding::Order(static_cast<std::int64_t>(a), static_cast<std::int64_t>(b));
    return status;
}

StatusCode SInt::Compare(const void* body, unsigned int bodyLength, int& result) const
{
    SInt other;
    const StatusCode status = other.DeserializeBody(body, bodyLength);
    return status != STATUS_CODE_SUCCESS ? status : Compare(other, result);
}

StatusCode SInt::ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                 unsigned int& bodyLength) noexcept
{
    return Coding::ValidateUpdate(validator, bodyOffset, bodyLength);
}

SInt::operator Rational() const
{
    if (!IsInitialized())
        return Rational();
    if (value_ == kMin)
        ZANTOR_THROW(StatusCodeException, STATUS_CODE_INVALID_PARAMETER);
    return Rational(value_, Rational::DENOMINATOR_WHOLE);
}

StatusCode SInt::Convert(const IFieldType* other)
{
    if (other == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    const Rational* rational = nullptr;
    switch (other->GetType())
    {
    case FIELD_TYPE_SINT: *this = *static_cast<const SInt*>(other); return STATUS_CODE_SUCCESS;
    case FIELD_TYPE_UINT:
    {
        const UInt& source = *static_cast<const UInt*>(other);
        if (!source.IsInitialized())
            break;
        if (source.GetValue() > static_cast<std::uint64_t>(kMax))
            return STATUS_CODE_OUT_OF_RANGE;
        SetValue(static_cast<std::int64_t>(source.GetValue()));
        return STATUS_CODE_SUCCESS;
    }
    case FIELD_TYPE_RATIONAL: rational = static_cast<const Rational*>(other); break;
    case FIELD_TYPE_TRATIONAL: rational = &static_cast<const TRational*>(other)->GetRational(); break;
    default: return STATUS_CODE_MISMATCH;
    }
    if (rational != nullptr && rational->IsInitialized())
    {
        bool negative = false;
        std::uint64_t magnitude = 0;
        const StatusCode status = rational->GetWholeNumber(negative, magnitude);
        if (status != STATUS_CODE_SUCCESS)
            return status;
        if (magnitude > Bits(kMax) + (negative ? 1u : 0u))
            return STATUS_CODE_OUT_OF_RANGE;
        SetValue(negative ? static_cast<std::int64_t>(0 - magnitude) : static_cast<std::int64_t>(magnitude));
        return STATUS_CODE_SUCCESS;
    }
    Reset();
    return STATUS_CODE_SUCCESS;
}

std::string SInt::ToString() const
{
    if (!IsInitialized())
        return NOT_INITIALIZED_TEXT;
    char text[24];
    std::snprintf(text, sizeof text, "%" PRId64, value_);
    return text;
}

StatusCode SInt::FromString(MessageValidator& text)
{
    StatusCode status;
    if (FromNotInitializedText(text, status))
        return status;
    MessageValidator reader = text;
    const unsigned char* p = reader.GetCursorPointer();
    const unsigned remaining = reader.GetRemaining();
    const unsigned sign = remaining != 0 && (p[0] == '-' || p[0] == '+') ? 1 : 0;
    unsigned end = sign;
    while (end < remaining && p[end] >= '0' && p[end] <= '9')
        ++end;
    if (end == sign)
        return STATUS_CODE_INVALID_FORMAT;
    // The magnitude is read unsigned so that -2^63, which ToString prints,
    // reads back too.
    const bool negative = sign != 0 && p[0] == '-';
    reader.ValidateBytes(sign);
    std::uint64_t magnitude = 0;
    status = reader.ValidateUnsignedAsciiIntegral(end - sign, 0, Bits(kMax) + (negative ? 1u : 0u), &magnitude);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    const std::int64_t value = negative ? static_cast<std::int64_t>(0 - magnitude) : static_cast<std::int64_t>(magnitude);
    if (!reader.IsAtEnd())
        return STATUS_CODE_INVALID_LENGTH;
    text = reader;
    SetValue(value);
    return STATUS_CODE_SUCCESS;
}

const char* SInt::GetFromStringFormat() const noexcept
{
    return "[-]0..9223372036854775807";
}

StatusCode SInt::Serialize(MessageBuilder& builder, unsigned int maxLength) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    return Coding::SerializeRecord(builder, maxLength, Bits(value_), Coding::SignedWidth(value_));
}

StatusCode SInt::SerializeBody(void* buffer, unsigned int length, unsigned int& written) const
{
    written = length;
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    return Coding::SerializeBody(buffer, length, written, Bits(value_), Coding::SignedWidth(value_));
}

StatusCode SInt::SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    return Coding::SerializeUpdate(builder, maxLength, Bits(value_), Coding::SignedWidth(value_));
}

StatusCode SInt::Deserialize(MessageValidator& validator, unsigned int length)
{
    std::uint64_t bits;
    const StatusCode status = Coding::ReadRecord(validator, length, true, bits);
    if (status == STATUS_CODE_SUCCESS)
        SetValue(static_cast<std::int64_t>(bits));
    return status;
}

StatusCode SInt::DeserializeBody(const void* body, unsigned int length)
{
    std::uint64_t bits;
    const StatusCode status = Coding::ReadBody(body, length, true, bits);
    if (status == STATUS_CODE_SUCCESS)
        SetValue(static_cast<std::int64_t>(bits));
    return status;
}

StatusCode SInt::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength)
{
    std::uint64_t bits;
    const StatusCode status = Coding::ReadUpdate(validator, maxLength, true, bits);
    if (status == STATUS_CODE_SUCCESS)
        SetValue(static_cast<std::int64_t>(bits));
    return status;
}

unsigned int SInt::GetSerializedLength() const noexcept
{
    return IsInitialized() ? Coding::SignedWidth(value_) : 0;
}

unsigned int SInt::GetSerializedBodyLength() const noexcept
{
    return GetSerializedLength();
}

StatusCode SInt::IsDifferent(const void* body, unsigned int bodyLength, bool& different) const
{
    SInt other;
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
