// SInt: a signed 64-bit field value (FIELD_TYPE_SINT). It travels in the
// shortest of 1, 2, 4 and 8 bytes that holds it (two's complement).
//
// The value owns no storage and is copyable. Thread safety: a value belongs
// to one thread at a time; the static members may be used from any thread.
//
//   SInt change(-129);
//   change.SerializeLengthAndBody(builder, 8); // 0x02, then 0xFF7F in two bytes
//
// Wire forms and their statuses are those of UInt (see UInt.h), with two's
// complement bodies: reading a body or record of 1 to 8 bytes sign-extends
// it, also for the widths 3, 5, 6 and 7 (so that a value written in such a
// record width reads back as itself). The shortest width is 1 for
// -128..127, 2 for -32768..32767, 4 for -2^31..2^31-1, else 8.
//
// Text: "%" PRId64 ("[NotInitialized]" when not initialized). FromString
// reads an optional sign and decimal digits that must end the text: no digit
// gives STATUS_CODE_INVALID_FORMAT, text after the digits
// STATUS_CODE_INVALID_LENGTH, a value outside -2^63..2^63-1
// STATUS_CODE_OUT_OF_RANGE.
//
// Conversion (Convert) from UInt, SInt, Rational and TRational: a source
// that is not initialized resets this value and succeeds; a UInt of 2^63 or
// more gives STATUS_CODE_OUT_OF_RANGE; a rational is brought to a whole
// number (Rational::GetWholeNumber) and an undefined rational or one outside
// the signed range gives STATUS_CODE_OUT_OF_RANGE; any other type
// STATUS_CODE_MISMATCH, a null source STATUS_CODE_INVALID_PARAMETER.
#pragma once

#include <ZantorMiddleware/ZantorBase/FieldTypes/IFieldType.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Rational.h>

#include <cstdint>
#include <string>

namespace Zantor {

class ZANTOR_BASE_API SInt : public IFieldType
{
public:
    // A value that is not initialized.
    SInt() noexcept
        : IFieldType(FIELD_TYPE_SINT), value_(0)
    {
    }
    explicit SInt(std::int64_t value) noexcept
        : IFieldType(FIELD_TYPE_SINT), value_(value)
    {
        SetInitialized(true);
    }
    SInt(const SInt&) = default;
    SInt& operator=(const SInt&) = default;

    std::int64_t GetValue() const noexcept { return value_; }
    // Stores value; the field becomes initialized.
    void SetValue(std::int64_t value) noexcept
    {
        value_ = value;
        SetInitialized(true);
    }

    // Arithmetic: STATUS_CODE_SUCCESS, or STATUS_CODE_NOT_INITIALIZED when
    // either operand is not initialized, or STATUS_CODE_OUT_OF_RANGE when the
    // result would leave the signed 64-bit range (-2^63 / -1 included) or
    // the divisor is 0. Nothing changes on failure. Division truncates toward
    // zero.
    StatusCode Add(const SInt& other) noexcept;
    StatusCode Subtract(const SInt& other) noexcept;
    StatusCode Multiply(const SInt& other) noexcept;
    StatusCode Divide(const SInt& other) noexcept;
    // Signed ordering; STATUS_CODE_NOT_INITIALIZED when either is not
    // initialized.
    StatusCode Compare(const SInt& other, int& result) const noexcept;
    // Compares two serialized bodies (1 to 8 bytes each, little-endian) by
    // value; a body that does not read gives its status.
    static StatusCode Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                              int& result) noexcept;

    // Checks the update form of either integer type at the validator's
    // position: a missing length byte gives STATUS_CODE_INVALID_PARAMETER, a
    // length outside 1..8 STATUS_CODE_OUT_OF_RANGE, a body past the end
    // STATUS_CODE_INVALID_PARAMETER. On success bodyOffset (from the start of
    // the buffer) and bodyLength describe the body and the cursor moves past
    // it; nothing changes on failure.
    static StatusCode ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                      unsigned int& bodyLength) noexcept;

    // A value that is not initialized gives a rational that is not
    // initialized; otherwise the value over the whole-number denominator.
    // -2^63, which has no place in a rational's sign-and-magnitude body,
    // throws StatusCodeException carrying STATUS_CODE_INVALID_PARAMETER.
    operator Rational() const;

    using IFieldType::Deserialize;
    using IFieldType::DeserializeBody;
    using IFieldType::DeserializeLengthAndBody;
    using IFieldType::Serialize;
    using IFieldType::SerializeBody;
    using IFieldType::SerializeLengthAndBody;

    void Reset() noexcept override { SetInitialized(false); }
    void Release() noexcept override { SetInitialized(false); }
    StatusCode Compare(const void* body, unsigned int bodyLength, int& result) const override;
    StatusCode Convert(const IFieldType* other) override;
    std::string ToString() const override;
    StatusCode FromString(MessageValidator& text) override;
    const char* GetFromStringFormat() const noexcept override;
    StatusCode Serialize(MessageBuilder& builder, unsigned int maxLength) const override;
    StatusCode SerializeBody(void* buffer, unsigned int length, unsigned int& written) const override;
    StatusCode SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const override;
    StatusCode Deserialize(MessageValidator& validator, unsigned int length) override;
    StatusCode DeserializeBody(const void* body, unsigned int length) override;
    StatusCode DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength) override;
    unsigned int GetSerializedLength() const noexcept override;
    unsigned int GetSerializedBodyLength() const noexcept override;
    // A body of length 0 stands for a value that is not initialized.
    StatusCode IsDifferent(const void* body, unsigned int bodyLength, bool& different) const override;

private:
    std::int64_t value_;
};

} // namespace Zantor
