// Time: the time-of-day field value (FIELD_TYPE_TIME) with optional
// milliseconds, and Time::Milliseconds, a duration.
//
// A Time holds hour (0..23), minute (0..59), second (0..59) and millisecond
// (0..999); it owns no heap storage and is a plain copyable value. Thread
// safety: a value belongs to one thread at a time; the static members may
// be used from any thread.
//
//   Time trade(12, 34, 56, 789);
//   trade.ToString(true);                      // "12:34:56.789"
//   trade.SerializeLengthAndBody(builder, 4);  // 4 bytes: milliseconds kept
//
// Wire forms (fixed layouts: the byte order of a builder or validator does
// not apply; there is no length prefix):
// - 3 bytes: hour, minute, second (milliseconds 0);
// - 4 bytes: one 32-bit word, most significant byte first: bit 31 set (marks
//   the form), bits 27-30 reserved (written 0, ignored on reading), bits
//   17-26 millisecond, 11-16 second, 5-10 minute, 0-4 hour.
// The update form picks its length by the top bit of its first byte.
//
// Lengths of the serializing operations: 3 writes the 3-byte form and drops
// the milliseconds (deliberately); 4, 0xFFFFFFFE or 0xFFFFFFFF ("any": the
// caller's buffer then holds 4 bytes) writes the 4-byte form when the
// millisecond is not 0 and the 3-byte form otherwise; any other length
// gives STATUS_CODE_INVALID_PARAMETER. Reading: a 3-byte body needs hour
// below 24 and minute and second below 60; a 4-byte body needs its top bit
// (else STATUS_CODE_INVALID_FORMAT), the same ranges and a millisecond below
// 1000; other lengths and range violations give
// STATUS_CODE_INVALID_PARAMETER.
//
// Text: "hh:mm:ss[.mmm]". FromString reads two digits each of hour, minute
// and second separated by ":", then, when a "." follows, three digits of
// milliseconds. Input that ends early gives STATUS_CODE_INVALID_PARAMETER,
// a non-digit STATUS_CODE_INVALID_FORMAT, a separator other than ":"
// STATUS_CODE_OUT_OF_RANGE, as does an hour above 23 or a minute or second
// above 59; anything after the seconds other than "." and three digits, or
// after the milliseconds, gives STATUS_CODE_INVALID_LENGTH.
//
// Every operation leaves the value (and a validator's cursor) unchanged on
// failure. Nothing throws except the checking constructor.
#pragma once

#include <ZantorMiddleware/ZantorBase/Export.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/IFieldType.h>

#include <cstdint>
#include <string>

namespace Zantor {

class ZANTOR_BASE_API Time : public IFieldType
{
public:
    // A duration in milliseconds.
    class ZANTOR_BASE_API Milliseconds
    {
    public:
        constexpr explicit Milliseconds(std::uint64_t count = 0) noexcept
            : count_(count)
        {
        }
        constexpr std::uint64_t GetCount() const noexcept { return count_; }
        std::string ToString() const { return DurationToString(count_); }

        // "hh:mm:ss:mmm" (hours of the last day 00..23), preceded by
        // "1 day " or "<n> days " when the duration reaches a day:
        // 90061001 gives "1 day 01:01:01:001".
        static std::string DurationToString(std::uint64_t milliseconds);

    private:
        std::uint64_t count_;
    };

    static constexpr unsigned int SHORT_BODY_LENGTH = 3;
    static constexpr unsigned int LONG_BODY_LENGTH = 4;

    // Not initialized; the getters give 0.
    Time() noexcept;
    // An initialized time. Throws StatusCodeException with
    // STATUS_CODE_OUT_OF_RANGE when Set would refuse it.
    Time(unsigned char hour, unsigned char minute, unsigned char second, std::uint32_t millisecond = 0);

    using IFieldType::Deserialize;
    using IFieldType::DeserializeBody;
    using IFieldType::DeserializeLengthAndBody;
    using IFieldType::Serialize;
    using IFieldType::SerializeBody;
    using IFieldType::SerializeLengthAndBody;

    // Makes the value the given time: hour 0..23, minute and second 0..59,
    // millisecond 0..999. STATUS_CODE_OUT_OF_RANGE otherwise; nothing
    // changes then.
    StatusCode Set(unsigned char hour, unsigned char minute, unsigned char second,
                   std::uint32_t millisecond = 0) noexcept;
    // The parts; meaningful only while the value is initialized.
    unsigned char GetHour() const noexcept { return hour_; }
    unsigned char GetMinute() const noexcept { return minute_; }
    unsigned char GetSecond() const noexcept { return second_; }
    std::uint32_t GetMillisecond() const noexcept { return millisecond_; }

    // The time of day now in UTC, and in the machine's local time zone (not
    // initialized when the platform cannot give the local time); with
    // withMilliseconds false the millisecond is 0.
    static Time CreateUtcTime(bool withMilliseconds);
    static Time CreateLocalTime(bool withMilliseconds);
    // The local time zone's offset from UTC now, in seconds (positive east
    // of Greenwich, daylight saving included); 0 when the platform cannot
    // tell.
    static std::int32_t GetTimeZoneOffset();

    // Equal when both are not initialized, or both hold the same time.
    bool operator==(const Time& other) const noexcept;

    void Reset() noexcept override;
    void Release() noexcept override;
    // Orders by hour, minute, second, millisecond.
    // STATUS_CODE_NOT_INITIALIZED when this value is not initialized; a body
    // that does not read gives its status.
    StatusCode Compare(const void* body, unsigned int bodyLength, int& result) const override;
    // From a Time, or the time part of a DateTime (flag included); another
    // type gives STATUS_CODE_MISMATCH, null STATUS_CODE_INVALID_PARAMETER.
    StatusCode Convert(const IFieldType* other) override;
    // "hh:mm:ss", without the milliseconds.
    std::string ToString() const override;
    // "hh:mm:ss", with ".mmm" appended when withMilliseconds is true.
    std::string ToString(bool withMilliseconds) const;
    StatusCode FromString(MessageValidator& text) override;
    const char* GetFromStringFormat() const noexcept override;
    StatusCode Serialize(MessageBuilder& builder, unsigned int maxLength) const override;
    StatusCode SerializeBody(void* buffer, unsigned int length, unsigned int& written) const override;
    StatusCode SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const override;
    // Reads length bytes (3 or 4, which must be there).
    StatusCode Deserialize(MessageValidator& validator, unsigned int length) override;
    StatusCode DeserializeBody(const void* body, unsigned int length) override;
    // Reads a body of 3 or 4 bytes as its first byte's top bit says.
    // maxLength below 3 gives STATUS_CODE_INVALID_PARAMETER; a 4-byte body
    // with maxLength 3 STATUS_CODE_OUT_OF_RANGE.
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
    // Checks the time body at the validator's position (3 or 4 bytes by the
    // top bit of its first byte, checked as DeserializeBody would), advances
    // past it and reports its offset and length. A missing byte:
    // STATUS_CODE_INVALID_PARAMETER. Nothing changes on failure.
    static StatusCode ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                      unsigned int& bodyLength) noexcept;

private:
    friend class DateTime;

    // Body and text codecs shared with DateTime; each changes its outputs
    // only on success.
    static StatusCode Decode(const unsigned char* body, unsigned int length, Time& time) noexcept;
    // The body length SerializeBody picks for length, 0 when it refuses it.
    unsigned int BodyLengthFor(unsigned int length) const noexcept;
    void Encode(unsigned char* body, unsigned int bodyLength) const noexcept;
    static StatusCode ParseText(MessageValidator& text, Time& time) noexcept;
    void Format(char* text, unsigned int size, bool withMilliseconds) const noexcept;

    unsigned char hour_;
    unsigned char minute_;
    unsigned char second_;
    std::uint32_t millisecond_;
};

} // namespace Zantor
