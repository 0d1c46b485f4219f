// Boolean: a true/false field value (FIELD_TYPE_BOOLEAN), one byte on the
// wire everywhere (0 = false, 1 = true; any non-zero byte reads as true) and
// without a length prefix in records and updates.
//
// The value owns no storage and is copyable. Thread safety: a value belongs
// to one thread at a time; the static members may be used from any thread.
//
//   Boolean halted(true);
//   halted.Serialize(builder, 1); // 0x01
//
// Wire forms: Serialize, SerializeLengthAndBody and SerializeBody write the
// one byte; a maxLength or length of 0 gives STATUS_CODE_INVALID_PARAMETER
// (SerializeBody sets written to 1 first). Deserialize and DeserializeBody
// need a length of exactly 1, DeserializeLengthAndBody a maxLength of at
// least 1, and a byte to read (else STATUS_CODE_INVALID_PARAMETER).
// Serializing a value that is not initialized gives
// STATUS_CODE_NOT_INITIALIZED. Nothing changes on failure.
//
// Text: "true" or "false"; FromString accepts exactly those words in any
// case ("TRUE"), and "[NotInitialized]"; anything else gives
// STATUS_CODE_INVALID_FORMAT. Convert takes only another Boolean
// (STATUS_CODE_MISMATCH otherwise, STATUS_CODE_INVALID_PARAMETER for null).
#pragma once

#include <ZantorMiddleware/ZantorBase/FieldTypes/IFieldType.h>

#include <string>

namespace Zantor {

class ZANTOR_BASE_API Boolean : public IFieldType
{
public:
    // A value that is not initialized.
    Boolean() noexcept
        : IFieldType(FIELD_TYPE_BOOLEAN), value_(false)
    {
    }
    explicit Boolean(bool value) noexcept
        : IFieldType(FIELD_TYPE_BOOLEAN), value_(value)
    {
        SetInitialized(true);
    }
    Boolean(const Boolean&) = default;
    Boolean& operator=(const Boolean&) = default;

    bool GetValue() const noexcept { return value_; }
    // Stores value; the field becomes initialized.
    void SetValue(bool value) noexcept
    {
        value_ = value;
        SetInitialized(true);
    }

    // false orders before true; STATUS_CODE_NOT_INITIALIZED when either is
    // not initialized.
    StatusCode Compare(const Boolean& other, int& result) const noexcept;
    // Compares two one-byte bodies; another length gives
    // STATUS_CODE_INVALID_PARAMETER.
    static StatusCode Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                              int& result) noexcept;
    // Checks that one byte stands at the validator's position (else
    // STATUS_CODE_INVALID_PARAMETER), reports it as the body and moves past
    // it; nothing changes on failure.
    static StatusCode ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                      unsigned int& bodyLength) noexcept;

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
    bool value_;
};

} // namespace Zantor
