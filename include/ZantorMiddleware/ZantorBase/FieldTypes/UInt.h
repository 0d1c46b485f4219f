// UInt: an unsigned 64-bit field value (FIELD_TYPE_UINT). It travels in the
// shortest of 1, 2, 4 and 8 bytes that holds it, which keeps updates small.
//
// The value owns no storage and is copyable. Thread safety: a value belongs
// to one thread at a time; the static members may be used from any thread.
//
//   UInt size(300);
//   size.SerializeLengthAndBody(builder, 8); // 0x02, then 300 in two bytes
//   size.Add(UInt(5));                       // 305
//
// Wire forms (IFieldType gives the common contract; lengths and bodies go
// through a builder or validator in its byte order, GetEndian(); a body in a
// caller's buffer is little-endian):
// - record (Serialize(builder, length)): the value in exactly length bytes,
//   no prefix; length must be at most 8 and at least the shortest width
//   (else STATUS_CODE_INVALID_PARAMETER). Widths 3, 5, 6 and 7 are written
//   as that many low-order bytes.
// - update (SerializeLengthAndBody(builder, maxLength)): one byte holding
//   the shortest width, then the value in that width; a shortest width above
//   maxLength: STATUS_CODE_INVALID_PARAMETER.
// - body (SerializeBody(buffer, length, written)): written is set to length
//   first; length above 8 or below the shortest width (or a null buffer):
//   STATUS_CODE_INVALID_PARAMETER.
// - reading a body or record of length 1 to 8 zero-extends it (else
//   STATUS_CODE_INVALID_PARAMETER, also for a record running past the end);
//   the update form: maxLength 0 or a missing length byte gives
//   STATUS_CODE_INVALID_PARAMETER, a length byte of 0 or above the smaller
//   of maxLength and 8 STATUS_CODE_OUT_OF_RANGE, a body running past the end
//   STATUS_CODE_INVALID_PARAMETER. SInt::ValidateSerializedLengthAndBody
//   checks the update form of both integer types.
// Every serializing operation of a value that is not initialized gives
// STATUS_CODE_NOT_INITIALIZED. Nothing changes on failure (the cursor moves
// only on success).
//
// Text: decimal without leading zeros ("[NotInitialized]" when not
// initialized). FromString reads one unsigned decimal number that must end
// the text: no digit at all gives STATUS_CODE_INVALID_FORMAT, text after the
// digits STATUS_CODE_INVALID_LENGTH, a number above 2^64-1
// STATUS_CODE_OUT_OF_RANGE.
//
// Conversion (Convert) from UInt, SInt, Rational and TRational: a source
// that is not initialized resets this value and succeeds; a negative source
// (an SInt below 0, a rational with a negative numerator) gives
// STATUS_CODE_FAILURE; a rational is brought to a whole number (see
// Rational::GetWholeNumber: truncated toward zero by its divisor, or scaled
// by its multiplier) and an undefined rational or one that does not fit
// gives STATUS_CODE_OUT_OF_RANGE; any other type STATUS_CODE_MISMATCH, and a
// null source STATUS_CODE_INVALID_PARAMETER.
#pragma once

#include <ZantorMiddleware/ZantorBase/FieldTypes/IFieldType.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Rational.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/SInt.h>

#include <cstdint>
#include <string>

namespace Zantor {

class ZANTOR_BASE_API UInt : public IFieldType
{
public:
    // A value that is not initialized.
    UInt() noexcept
        : IFieldType(FIELD_TYPE_UINT), value_(0)
    {
    }
    explicit UInt(std::uint64_t value) noexcept
        : IFieldType(FIELD_TYPE_UINT), value_(value)
    {
        SetInitialized(true);
    }
    UInt(const UInt&) = default;
    UInt& operator=(const UInt&) = default;

    std::uint64_t GetValue() const noexcept { return value_; }
    // Stores value; the field becomes initialized.
    void SetValue(std::uint64_t value) noexcept
    {
        value_ = value;
        SetInitialized(true);
    }

    // Arithmetic: STATUS_CODE_SUCCESS, or STATUS_CODE_NOT_INITIALIZED when
    // either operand is not initialized, or STATUS_CODE_OUT_OF_RANGE when the
    // result would lie outside 0..2^64-1 or the divisor is 0. Nothing changes
    // on failure. Division truncates.
    StatusCode Add(const UInt& other) noexcept;
    StatusCode Subtract(const UInt& other) noexcept;
    StatusCode Multiply(const UInt& other) noexcept;
    StatusCode Divide(const UInt& other) noexcept;
    // result: negative, 0 or positive as this value is below, equal to or
    // above other. STATUS_CODE_NOT_INITIALIZED when either is not
    // initialized.
    StatusCode Compare(const UInt& other, int& result) const noexcept;
    // Compares two serialized bodies (1 to 8 bytes each, little-endian) by
    // value; a body that does not read gives its status.
    static StatusCode Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                              int& result) noexcept;

    // A value that is not initialized gives one that is not initialized; a
    // value of 2^63 or more throws StatusCodeException carrying
    // STATUS_CODE_OUT_OF_RANGE.
    operator SInt() const;
    // Same rule; otherwise the value over the whole-number denominator.
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
    std::uint64_t value_;
};

} // namespace Zantor
