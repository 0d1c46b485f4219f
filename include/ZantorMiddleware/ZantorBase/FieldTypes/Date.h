// Date: the calendar date field value (FIELD_TYPE_DATE), and the proleptic
// Gregorian calendar functions the date and time types share.
//
// A Date holds year (0..32767), month (1..12) and day; it owns no heap
// storage and is a plain copyable value. Thread safety: a value belongs to
// one thread at a time; the static members may be used from any thread.
//
//   Date settlement(2024, 2, 29);
//   settlement.Add(Date::Days(2));              // 2024-03-02
//   settlement.SerializeLengthAndBody(builder, 3);
//
// Wire form: three bytes, least significant first, of the 24-bit number
// (year << 9) | (month << 5) | day. The body has no length prefix in a
// record or an update, and its layout is fixed: the byte order of a
// builder or validator does not apply to it.
//
// Lengths: the serializing operations take 3, or 0xFFFFFFFF for "any" (the
// caller's buffer then holds at least 3 bytes); any other length gives
// STATUS_CODE_INVALID_PARAMETER. Reading takes exactly 3 bytes; the month
// must be 1..12 and the day must not exceed the days of that month
// (STATUS_CODE_INVALID_PARAMETER otherwise). A day of 0 passes the wire
// check as it stands: such a date reads, prints ("2024-03-00"), parses back
// and serializes, but the calendar operations refuse it.
//
// Text: "yyyy-mm-dd". FromString reads four digits of year, "-", two of
// month, "-", two of day: input that ends early gives
// STATUS_CODE_INVALID_PARAMETER, a non-digit STATUS_CODE_INVALID_FORMAT, a
// separator other than "-" STATUS_CODE_OUT_OF_RANGE, a month of 0 or above
// 12 or a day above the days of the month STATUS_CODE_OUT_OF_RANGE, text
// after the day STATUS_CODE_INVALID_LENGTH. ToString prints a year above
// 9999 with all its digits; such a text does not parse back.
//
// Every operation leaves the value (and a validator's cursor) unchanged on
// failure. Nothing throws except the checking constructor.
#pragma once

#include <ZantorMiddleware/ZantorBase/Export.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/IFieldType.h>

#include <cstdint>
#include <string>

namespace Zantor {

class ZANTOR_BASE_API Date : public IFieldType
{
public:
    // A count of days for Add and Subtract; a negative count moves the
    // other way.
    class Days
    {
    public:
        constexpr explicit Days(std::int32_t count = 0) noexcept
            : count_(count)
        {
        }
        constexpr std::int32_t GetCount() const noexcept { return count_; }

    private:
        std::int32_t count_;
    };

    // The largest year the wire form carries (15 bits).
    static constexpr std::uint32_t MAX_YEAR = 32767;
    // The one body length.
    static constexpr unsigned int BODY_LENGTH = 3;
    // The "any" length of the serializing operations.
    static constexpr unsigned int ANY_LENGTH = 0xFFFFFFFFu;

    // Not initialized; the getters give 0.
    Date() noexcept;
    // An initialized date. Throws StatusCodeException with
    // STATUS_CODE_OUT_OF_RANGE when Set would refuse the date.
    Date(std::uint32_t year, unsigned char month, unsigned char day);

    using IFieldType::Deserialize;
    using IFieldType::DeserializeBody;
    using IFieldType::DeserializeLengthAndBody;
    using IFieldType::Serialize;
    using IFieldType::SerializeBody;
    using IFieldType::SerializeLengthAndBody;

    // Makes the value the given date: year 0..MAX_YEAR, month 1..12, day
    // 1..GetDaysInMonth(year, month). Returns STATUS_CODE_OUT_OF_RANGE for
    // any other date; nothing changes then.
    StatusCode Set(std::uint32_t year, unsigned char month, unsigned char day) noexcept;
    // The parts; meaningful only while the value is initialized.
    std::uint32_t GetYear() const noexcept { return year_; }
    unsigned char GetMonth() const noexcept { return month_; }
    unsigned char GetDay() const noexcept { return day_; }

    // Moves the date days.GetCount() days forward (Add) or back (Subtract)
    // through the Julian day number. STATUS_CODE_NOT_INITIALIZED when not
    // initialized, STATUS_CODE_INVALID_PARAMETER for a date with day 0,
    // STATUS_CODE_OUT_OF_RANGE when the result leaves the years
    // 0..MAX_YEAR; nothing changes on failure.
    StatusCode Add(const Days& days) noexcept;
    StatusCode Subtract(const Days& days) noexcept;

    // Today in UTC, and in the machine's local time zone (not initialized
    // when the platform cannot give the local time).
    static Date CreateUtcDate();
    static Date CreateLocalDate();

    // Equal when both are not initialized, or both hold the same date.
    bool operator==(const Date& other) const noexcept;

    void Reset() noexcept override;
    void Release() noexcept override;
    // Orders by year, month, day. STATUS_CODE_NOT_INITIALIZED when this
    // value is not initialized; a body that does not read gives its status.
    StatusCode Compare(const void* body, unsigned int bodyLength, int& result) const override;
    // From a Date, or the date part of a DateTime (flag included); another
    // type gives STATUS_CODE_MISMATCH, null STATUS_CODE_INVALID_PARAMETER.
    StatusCode Convert(const IFieldType* other) override;
    std::string ToString() const override;
    StatusCode FromString(MessageValidator& text) override;
    const char* GetFromStringFormat() const noexcept override;
    StatusCode Serialize(MessageBuilder& builder, unsigned int maxLength) const override;
    StatusCode SerializeBody(void* buffer, unsigned int length, unsigned int& written) const override;
    StatusCode SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const override;
    // Reads length bytes (which must be 3 and must be there).
    StatusCode Deserialize(MessageValidator& validator, unsigned int length) override;
    StatusCode DeserializeBody(const void* body, unsigned int length) override;
    // Reads the 3-byte body; maxLength below 3 gives
    // STATUS_CODE_INVALID_PARAMETER.
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
    // Checks the date body at the validator's position (as DeserializeBody
    // would), advances past it and reports its offset and length (3). A
    // body running past the end: STATUS_CODE_INVALID_PARAMETER. Nothing
    // changes on failure.
    static StatusCode ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                      unsigned int& bodyLength) noexcept;

    // Calendar functions of the proleptic Gregorian calendar (year 0 is a
    // leap year). A valid date has year 0..MAX_YEAR, month 1..12 and day
    // 1..GetDaysInMonth(year, month).
    static bool IsLeapYear(std::uint32_t year) noexcept;
    // 28..31; 0 for a month outside 1..12.
    static unsigned int GetDaysInMonth(std::uint32_t year, unsigned int month) noexcept;
    // 0 = Sunday .. 6 = Saturday; 7 for a date that is not valid.
    static unsigned int GetDayOfWeek(std::uint32_t year, unsigned int month, unsigned int day) noexcept;
    // 1..366; 0 for a date that is not valid.
    static unsigned int GetDayOfYear(std::uint32_t year, unsigned int month, unsigned int day) noexcept;
    // The ISO 8601 week number 1..53: weeks start on Monday and week 1 is
    // the one holding the year's first Thursday, so early January days may
    // lie in week 52 or 53 of the year before and late December days in
    // week 1 of the next. 0 for a date that is not valid.
    static unsigned int GetWeekOfYear(std::uint32_t year, unsigned int month, unsigned int day) noexcept;
    // The Julian day number (2451545 for 2000-01-01); 0 for a date that is
    // not valid (no valid date has it).
    static std::uint32_t ConvertGregorianToJulianDate(std::uint32_t year, unsigned int month,
                                                       unsigned int day) noexcept;
    // The date of a Julian day number. STATUS_CODE_OUT_OF_RANGE for a
    // number outside 0000-01-01..32767-12-31; the outputs change only on
    // success.
    static StatusCode ConvertJulianToGregorianDate(std::uint32_t julian, std::uint32_t& year, unsigned char& month,
                                                   unsigned char& day) noexcept;
    // English names: "Sunday".."Saturday" for 0..6, "January".."December"
    // for 1..12; "Unknown" for anything else. The texts live as long as the
    // process.
    static const char* DayOfWeekToString(unsigned int day) noexcept;
    static const char* MonthToString(unsigned int month) noexcept;

private:
    friend class DateTime;

    // Body and text codecs shared with DateTime; each changes its outputs
    // only on success.
    static StatusCode Decode(const unsigned char* body, std::uint32_t& year, unsigned char& month,
                             unsigned char& day) noexcept;
    void Encode(unsigned char* body) const noexcept;
    static StatusCode ParseText(MessageValidator& text, Date& date) noexcept;
    // "yyyy-mm-dd" into text (at least 11 characters with the zero).
    void Format(char* text, unsigned int size) const noexcept;
    StatusCode MoveBy(std::int64_t days) noexcept;

    std::uint32_t year_;
    unsigned char month_;
    unsigned char day_;
};

} // namespace Zantor
