// DateTime: the date-and-time field value (FIELD_TYPE_DATETIME), a Date and
// a Time together.
//
// A DateTime holds a complete Date and a complete Time; it is initialized
// exactly when both parts are. It owns no heap storage and is a plain
// copyable value. Thread safety: a value belongs to one thread at a time;
// the static members may be used from any thread.
//
//   DateTime stamp = DateTime::CreateUtcDateTime(true);
//   std::string text = stamp.ToString(true);     // "2024-02-29 12:34:56.789"
//   stamp.SerializeLengthAndBody(builder, 7);
//
// Wire form: the 3-byte Date body, then the 3- or 4-byte Time body (6 or 7
// bytes; fixed layout, no length prefix, the byte order of a builder or
// validator does not apply). The update form picks its length by the top
// bit of the first time byte (the fourth byte).
//
// Lengths of the serializing operations: 6 writes the date and the 3-byte
// time (the milliseconds are dropped); 7, 0xFFFFFFFE or 0xFFFFFFFF ("any":
// the caller's buffer then holds 7 bytes) write the 4-byte time when the
// millisecond is not 0 and the 3-byte time otherwise; any other length
// gives STATUS_CODE_INVALID_PARAMETER. Reading takes 6 or 7 bytes checked
// as Date and Time check theirs (other lengths:
// STATUS_CODE_INVALID_PARAMETER).
//
// Text: the date text, one blank, the time text ("2024-02-29 12:34:56" or
// "2024-02-29 12:34:56.789"). FromString accepts exactly that form with
// the errors of Date and Time; a separator other than the blank gives
// STATUS_CODE_OUT_OF_RANGE, like the date's "-".
//
// Every operation leaves the value (and a validator's cursor) unchanged on
// failure. Nothing throws except the checking constructor.
#pragma once

#include <ZantorMiddleware/ZantorBase/Export.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Date.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/IFieldType.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Time.h>

#include <cstdint>
#include <string>

namespace Zantor {

class ZANTOR_BASE_API DateTime : public IFieldType
{
public:
    static constexpr unsigned int SHORT_BODY_LENGTH = 6;
    static constexpr unsigned int LONG_BODY_LENGTH = 7;

    // Not initialized (both parts too).
    DateTime() noexcept;
    // Both parts copied. Throws StatusCodeException with
    // STATUS_CODE_NOT_INITIALIZED when either part is not initialized.
    DateTime(const Date& date, const Time& time);

    using IFieldType::Deserialize;
    using IFieldType::DeserializeBody;
    using IFieldType::DeserializeLengthAndBody;
    using IFieldType::Serialize;
    using IFieldType::SerializeBody;
    using IFieldType::SerializeLengthAndBody;

    // Makes the value the given date and time. STATUS_CODE_NOT_INITIALIZED
    // when either is not initialized; nothing changes then.
    StatusCode Set(const Date& date, const Time& time) noexcept;
    const Date& GetDate() const noexcept { return date_; }
    const Time& GetTime() const noexcept { return time_; }

    // Now, in UTC and in the machine's local time zone, both parts taken
    // from the same instant (the local form is not initialized when the
    // platform cannot give the local time).
    static DateTime CreateUtcDateTime(bool withMilliseconds);
    static DateTime CreateLocalDateTime(bool withMilliseconds);
    // As Time::GetTimeZoneOffset: seconds east of UTC now.
    static std::int32_t GetTimeZoneOffset();

    // Equal when both are not initialized, or both hold the same value.
    bool operator==(const DateTime& other) const noexcept;

    void Reset() noexcept override;
    void Release() noexcept override;
    // Orders by date, then time. STATUS_CODE_NOT_INITIALIZED when this value
    // is not initialized; a body that does not read gives its status.
    StatusCode Compare(const void* body, unsigned int bodyLength, int& result) const override;
    // From a DateTime only (STATUS_CODE_MISMATCH otherwise, null
    // STATUS_CODE_INVALID_PARAMETER).
    StatusCode Convert(const IFieldType* other) override;
    // Date, blank, time without milliseconds.
    std::string ToString() const override;
    // Date, blank, time; the flag goes to the time part.
    std::string ToString(bool withMilliseconds) const;
    StatusCode FromString(MessageValidator& text) override;
    const char* GetFromStringFormat() const noexcept override;
    StatusCode Serialize(MessageBuilder& builder, unsigned int maxLength) const override;
    StatusCode SerializeBody(void* buffer, unsigned int length, unsigned int& written) const override;
    StatusCode SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const override;
    // Reads length bytes (6 or 7, which must be there).
    StatusCode Deserialize(MessageValidator& validator, unsigned int length) override;
    StatusCode DeserializeBody(const void* body, unsigned int length) override;
    // Reads a body of 6 or 7 bytes as the top bit of its fourth byte says.
    // maxLength below 6 gives STATUS_CODE_INVALID_PARAMETER; a 7-byte body
    // with maxLength 6 STATUS_CODE_OUT_OF_RANGE.
    StatusCode DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength) override;
    unsigned int GetSerializedLength() const noexcept override;
    unsigned int GetSerializedBodyLength() const noexcept override;
    // A body of length 0 stands for a value that is not initialized; a body
    // that does not read gives its status.
    StatusCode IsDifferent(const void* body, unsigned int bodyLength, bool& different) const override;

    // Orders two bodies; either body that does not read gives its status
    // and leaves result unchanged.
    static StatusCode Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                              int& result) noexcept;
    // Checks the date-time body at the validator's position (6 or 7 bytes
    // by the top bit of the fourth byte, checked as DeserializeBody would),
    // advances past it and reports its offset and length. Fewer than four
    // bytes, or a body running past the end: STATUS_CODE_INVALID_PARAMETER.
    // Nothing changes on failure.
    static StatusCode ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                      unsigned int& bodyLength) noexcept;

private:
    static StatusCode Decode(const unsigned char* body, unsigned int length, DateTime& value) noexcept;
    std::string Text(bool withMilliseconds) const;

    Date date_;
    Time time_;
};

} // namespace Zantor
