// The date field value, the proleptic Gregorian calendar arithmetic (all of
// it through the Julian day number) and the wall clock broken down into
// calendar fields.
#include <ZantorMiddleware/ZantorBase/FieldTypes/Date.h>

#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/DateTime.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include "CalendarClock.h"
#include "LocalTime.h"

#include <chrono>
#include <cstdio>

namespace Zantor {

namespace {

constexpr unsigned char kDaysInMonth[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
constexpr const char* kDayNames[7] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
constexpr const char* kMonthNames[12] = {"January", "February", "March",     "April",   "May",      "June",
                                         "July",    "August",   "September", "October", "November", "December"};
constexpr const char* kUnknownName = "Unknown";

// Julian day number of 1970-01-01, the start of the system clock's epoch.
constexpr std::int64_t kUnixEpochJulianDay = 2440588;

// Leap-year rule on signed years: the zero tests of truncating division
// hold for negative years as well (year -1 is not a leap year, 0 is).
constexpr bool IsLeap(std::int64_t year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

// Julian day number of a date with month 1..12 and year -1 or later (the
// terms stay positive there, so truncating division is floor division).
constexpr std::int64_t JulianDay(std::int64_t year, unsigned int month, unsigned int day)
{
    const std::int64_t march = (14 - static_cast<std::int64_t>(month)) / 12; // 1 for January and February
    const std::int64_t y = year + 4800 - march;
    const std::int64_t m = month + 12 * march - 3; // months counted from March
    return day + (153 * m + 2) / 5 + 365 * y + y / 4 - y / 100 + y / 400 - 32045;
}

// The date of a Julian day number of 0 or more.
constexpr void FromJulianDay(std::int64_t julian, std::int64_t& year, unsigned int& month, unsigned int& day)
{
    const std::int64_t a = julian + 32044;
    const std::int64_t b = (4 * a + 3) / 146097; // 400-year cycles
    const std::int64_t c = a - 146097 * b / 4;
    const std::int64_t d = (4 * c + 3) / 1461; // 4-year cycles
    const std::int64_t e = c - 1461 * d / 4;
    const std::int64_t m = (5 * e + 2) / 153; // months counted from March
    day = static_cast<unsigned int>(e - (153 * m + 2) / 5 + 1);
    month = static_cast<unsigned int>(m + 3 - 12 * (m / 10));
    year = 100 * b + d - 4800 + m / 10;
}

constexpr std::int64_t kFirstJulianDay = JulianDay(0, 1, 1);
constexpr std::int64_t kLastJulianDay = JulianDay(Date::MAX_YEAR, 12, 31);
static_assert(kFirstJulianDay == 1721060 && JulianDay(2000, 1, 1) == 2451545);

bool IsValidDate(std::uint32_t year, unsigned int month, unsigned int day) noexcept
{
    return year <= Date::MAX_YEAR && day != 0 && day <= Date::GetDaysInMonth(year, month);
}

// The packed body number, which orders as year, month, day do.
std::uint32_t Packed(std::uint32_t year, unsigned int month, unsigned int day) noexcept
{
    return year << 9 | month << 5 | day;
}

int Sign(std::int64_t difference) noexcept
{
    return difference < 0 ? -1 : (difference > 0 ? 1 : 0);
}

// Reads digits decimal digits into value and checks it against [low, high]
// (STATUS_CODE_OUT_OF_RANGE outside); the cursor moves on success only.
template <typename T>
StatusCode ReadNumber(MessageValidator& text, unsigned int digits, unsigned int low, unsigned int high, T& value)
{
    MessageValidator reader = text;
    T number = 0;
    const StatusCode status = reader.ValidateUnsignedAsciiIntegral(digits, &number);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (number < low || number > high)
        return STATUS_CODE_OUT_OF_RANGE;
    value = number;
    text = reader;
    return STATUS_CODE_SUCCESS;
}

} // namespace

Date::Date() noexcept
    : IFieldType(FIELD_TYPE_DATE), year_(0), month_(0), day_(0)
{
}

Date::Date(std::uint32_t year, unsigned char month, unsigned char day)
    : Date()
{
    if (Set(year, month, day) != STATUS_CODE_SUCCESS)
        ZANTOR_THROW(StatusCodeException, STATUS_CODE_OUT_OF_RANGE);
}

StatusCode Date::Set(std::uint32_t year, unsigned char month, unsigned char day) noexcept
{
    if (!IsValidDate(year, month, day))
        return STATUS_CODE_OUT_OF_RANGE;
    year_ = year;
    month_ = month;
    day_ = day;
    SetInitialized(true);
    return STATUS_CODE_SUCCESS;
}

StatusCode Date::MoveBy(std::int64_t days) noexcept
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    if (day_ == 0)
        return STATUS_CODE_INVALID_PARAMETER;
    const std::int64_t julian = JulianDay(year_, month_, day_) + days;
    if (julian < kFirstJulianDay || julian > kLastJulianDay)
        return STATUS_CODE_OUT_OF_RANGE;
    std::int64_t year = 0;
    unsigned int month = 0, day = 0;
    FromJulianDay(julian, year, month, day);
    year_ = static_cast<std::uint32_t>(year);
    month_ = static_cast<unsigned char>(month);
    day_ = static_cast<unsigned char>(day);
    return STATUS_CODE_SUCCESS;
}

StatusCode Date::Add(const Days& days) noexcept
{
    return MoveBy(days.GetCount());
}

StatusCode Date::Subtract(const Days& days) noexcept
{
    return MoveBy(-static_cast<std::int64_t>(days.GetCount()));
}

Date Date::CreateUtcDate()
{
    return DateTime::CreateUtcDateTime(false).GetDate();
}

Date Date::CreateLocalDate()
{
    return DateTime::CreateLocalDateTime(false).GetDate();
}

bool Date::operator==(const Date& other) const noexcept
{
    return initialized_ == other.initialized_ &&
           (!IsInitialized() || Packed(year_, month_, day_) == Packed(other.year_, other.month_, other.day_));
}

void Date::Reset() noexcept
{
    SetInitialized(false);
}

void Date::Release() noexcept
{
    Reset();
}

StatusCode Date::Compare(const void* body, unsigned int bodyLength, int& result) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    Date other;
    const StatusCode status = other.DeserializeBody(body, bodyLength);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    result = Sign(static_cast<std::int64_t>(Packed(year_, month_, day_)) -
                  Packed(other.year_, other.month_, other.day_));
    return STATUS_CODE_SUCCESS;
}

StatusCode Date::Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                         int& result) noexcept
{
    Date first;
    const StatusCode status = first.DeserializeBody(body1, length1);
    return status != STATUS_CODE_SUCCESS ? status : first.Compare(body2, length2, result);
}

StatusCode Date::Convert(const IFieldType* other)
{
    if (other == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    if (other->GetType() == FIELD_TYPE_DATE)
        *this = *static_cast<const Date*>(other);
    else if (other->GetType() == FIELD_TYPE_DATETIME)
        *this = static_cast<const DateTime*>(other)->GetDate();
    else
        return STATUS_CODE_MISMATCH;
    if (!other->IsInitialized())
        Reset();
    return STATUS_CODE_SUCCESS;
}

void Date::Format(char* text, unsigned int size) const noexcept
{
    std::snprintf(text, size, "%04u-%02u-%02u", static_cast<unsigned int>(year_), static_cast<unsigned int>(month_),
                  static_cast<unsigned int>(day_));
}

std::string Date::ToString() const
{
    if (!IsInitialized())
        return NOT_INITIALIZED_TEXT;
    char text[16];
    Format(text, sizeof text);
    return text;
}

StatusCode Date::ParseText(MessageValidator& text, Date& date) noexcept
{
    MessageValidator reader = text;
    std::uint32_t year = 0;
    unsigned char month = 0, day = 0;
    const unsigned char dash = '-';
    StatusCode status = ReadNumber(reader, 4, 0, 9999, year);
    if (status == STATUS_CODE_SUCCESS)
        status = reader.ValidateBytes(1, dash, nullptr);
    if (status == STATUS_CODE_SUCCESS)
        status = ReadNumber(reader, 2, 1, 12, month);
    if (status == STATUS_CODE_SUCCESS)
        status = reader.ValidateBytes(1, dash, nullptr);
    // A day of 0 is taken as the wire form takes it, so that every value
    // that prints parses back.
    if (status == STATUS_CODE_SUCCESS)
        status = ReadNumber(reader, 2, 0, GetDaysInMonth(year, month), day);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    date.year_ = year;
    date.month_ = month;
    date.day_ = day;
    date.SetInitialized(true);
    text = reader;
    return STATUS_CODE_SUCCESS;
}

StatusCode Date::FromString(MessageValidator& text)
{
    StatusCode status = STATUS_CODE_SUCCESS;
    if (FromNotInitializedText(text, status))
        return status;
    MessageValidator reader = text;
    Date date;
    status = ParseText(reader, date);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (!reader.IsAtEnd())
        return STATUS_CODE_INVALID_LENGTH;
    *this = date;
    text = reader;
    return STATUS_CODE_SUCCESS;
}

const char* Date::GetFromStringFormat() const noexcept
{
    return "yyyy-mm-dd";
}

void Date::Encode(unsigned char* body) const noexcept
{
    const std::uint32_t packed = Packed(year_, month_, day_);
    body[0] = static_cast<unsigned char>(packed);
    body[1] = static_cast<unsigned char>(packed >> 8);
    body[2] = static_cast<unsigned char>(packed >> 16);
}

StatusCode Date::Decode(const unsigned char* body, std::uint32_t& year, unsigned char& month,
                        unsigned char& day) noexcept
{
    const std::uint32_t packed = body[0] | static_cast<std::uint32_t>(body[1]) << 8 |
                                 static_cast<std::uint32_t>(body[2]) << 16;
    const std::uint32_t y = packed >> 9;
    const unsigned int m = packed >> 5 & 0x0F, d = packed & 0x1F;
    const unsigned int days = GetDaysInMonth(y, m);
    if (days == 0 || d > days)
        return STATUS_CODE_INVALID_PARAMETER;
    year = y;
    month = static_cast<unsigned char>(m);
    day = static_cast<unsigned char>(d);
    return STATUS_CODE_SUCCESS;
}

StatusCode Date::SerializeBody(void* buffer, unsigned int length, unsigned int& written) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    if (buffer == nullptr || (length != BODY_LENGTH && length != ANY_LENGTH))
        return STATUS_CODE_INVALID_PARAMETER;
    Encode(static_cast<unsigned char*>(buffer));
    written = BODY_LENGTH;
    return STATUS_CODE_SUCCESS;
}

StatusCode Date::Serialize(MessageBuilder& builder, unsigned int maxLength) const
{
    unsigned char body[BODY_LENGTH];
    unsigned int written = 0;
    const StatusCode status = SerializeBody(body, maxLength, written);
    return status != STATUS_CODE_SUCCESS ? status : builder.AppendBuffer(body, written);
}

StatusCode Date::SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const
{
    return Serialize(builder, maxLength);
}

StatusCode Date::DeserializeBody(const void* body, unsigned int length)
{
    if (body == nullptr || length != BODY_LENGTH)
        return STATUS_CODE_INVALID_PARAMETER;
    const StatusCode status = Decode(static_cast<const unsigned char*>(body), year_, month_, day_);
    if (status == STATUS_CODE_SUCCESS)
        SetInitialized(true);
    return status;
}

StatusCode Date::Deserialize(MessageValidator& validator, unsigned int length)
{
    if (length != BODY_LENGTH || validator.GetRemaining() < length)
        return STATUS_CODE_INVALID_PARAMETER;
    const StatusCode status = DeserializeBody(validator.GetCursorPointer(), length);
    if (status == STATUS_CODE_SUCCESS)
        validator.ValidateBytes(length);
    return status;
}

StatusCode Date::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength)
{
    return maxLength < BODY_LENGTH ? STATUS_CODE_INVALID_PARAMETER : Deserialize(validator, BODY_LENGTH);
}

StatusCode Date::ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                 unsigned int& bodyLength) noexcept
{
    Date date;
    const unsigned int offset = validator.GetCursor();
    const StatusCode status = date.Deserialize(validator, BODY_LENGTH);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    bodyOffset = offset;
    bodyLength = BODY_LENGTH;
    return STATUS_CODE_SUCCESS;
}

unsigned int Date::GetSerializedLength() const noexcept
{
    return IsInitialized() ? BODY_LENGTH : 0;
}

unsigned int Date::GetSerializedBodyLength() const noexcept
{
    return GetSerializedLength();
}

StatusCode Date::IsDifferent(const void* body, unsigned int bodyLength, bool& different) const
{
    Date other;
    if (bodyLength != 0)
    {
        const StatusCode status = other.DeserializeBody(body, bodyLength);
        if (status != STATUS_CODE_SUCCESS)
            return status;
    }
    different = !(*this == other);
    return STATUS_CODE_SUCCESS;
}

// ---- Calendar ---------------------------------------------------------------

bool Date::IsLeapYear(std::uint32_t year) noexcept
{
    return IsLeap(year);
}

unsigned int Date::GetDaysInMonth(std::uint32_t year, unsigned int month) noexcept
{
    if (month < 1 || month > 12)
        return 0;
    return kDaysInMonth[month - 1] + (month == 2 && IsLeapYear(year) ? 1u : 0u);
}

unsigned int Date::GetDayOfWeek(std::uint32_t year, unsigned int month, unsigned int day) noexcept
{
    // Julian day 0 was a Monday.
    return IsValidDate(year, month, day) ? static_cast<unsigned int>((JulianDay(year, month, day) + 1) % 7) : 7;
}

unsigned int Date::GetDayOfYear(std::uint32_t year, unsigned int month, unsigned int day) noexcept
{
    if (!IsValidDate(year, month, day))
        return 0;
    return static_cast<unsigned int>(JulianDay(year, month, day) - JulianDay(year, 1, 1) + 1);
}

unsigned int Date::GetWeekOfYear(std::uint32_t year, unsigned int month, unsigned int day) noexcept
{
    if (!IsValidDate(year, month, day))
        return 0;
    // An ISO week belongs to the year of its Thursday and is counted from
    // that year's first Thursday.
    const std::int64_t julian = JulianDay(year, month, day);
    const std::int64_t thursday = julian - julian % 7 + 3;
    std::int64_t weekYear = year;
    if (thursday < JulianDay(year, 1, 1))
        weekYear = static_cast<std::int64_t>(year) - 1;
    else if (thursday >= JulianDay(static_cast<std::int64_t>(year) + 1, 1, 1))
        weekYear = static_cast<std::int64_t>(year) + 1;
    return static_cast<unsigned int>((thursday - JulianDay(weekYear, 1, 1)) / 7 + 1);
}

std::uint32_t Date::ConvertGregorianToJulianDate(std::uint32_t year, unsigned int month, unsigned int day) noexcept
{
    return IsValidDate(year, month, day) ? static_cast<std::uint32_t>(JulianDay(year, month, day)) : 0;
}

StatusCode Date::ConvertJulianToGregorianDate(std::uint32_t julian, std::uint32_t& year, unsigned char& month,
                                              unsigned char& day) noexcept
{
    if (julian < kFirstJulianDay || julian > kLastJulianDay)
        return STATUS_CODE_OUT_OF_RANGE;
    std::int64_t y = 0;
    unsigned int m = 0, d = 0;
    FromJulianDay(julian, y, m, d);
    year = static_cast<std::uint32_t>(y);
    month = static_cast<unsigned char>(m);
    day = static_cast<unsigned char>(d);
    return STATUS_CODE_SUCCESS;
}

const char* Date::DayOfWeekToString(unsigned int day) noexcept
{
    return day < 7 ? kDayNames[day] : kUnknownName;
}

const char* Date::MonthToString(unsigned int month) noexcept
{
    return month >= 1 && month <= 12 ? kMonthNames[month - 1] : kUnknownName;
}

// ---- Clock --------------------------------------------------------------------

namespace Detail {

bool ReadCalendarClock(bool local, CalendarInstant& now) noexcept
{
    using namespace std::chrono;
    const system_clock::time_point instant = system_clock::now();
    const sys_seconds second = floor<seconds>(instant);
    now.millisecond = static_cast<unsigned int>(duration_cast<milliseconds>(instant - second).count());
    if (local)
    {
        std::tm fields{};
        if (!ToLocalCalendarTime(second.time_since_epoch().count(), fields))
            return false;
        now.year = static_cast<std::int64_t>(fields.tm_year) + 1900;
        now.month = static_cast<unsigned int>(fields.tm_mon + 1);
        now.day = static_cast<unsigned int>(fields.tm_mday);
        now.hour = static_cast<unsigned int>(fields.tm_hour);
        now.minute = static_cast<unsigned int>(fields.tm_min);
        // A leap second shows as the last second of its minute.
        now.second = fields.tm_sec > 59 ? 59u : static_cast<unsigned int>(fields.tm_sec);
        return true;
    }
    const sys_days day = floor<days>(second);
    const std::int64_t secondOfDay = (second - day).count();
    FromJulianDay(kUnixEpochJulianDay + day.time_since_epoch().count(), now.year, now.month, now.day);
    now.hour = static_cast<unsigned int>(secondOfDay / 3600);
    now.minute = static_cast<unsigned int>(secondOfDay / 60 % 60);
    now.second = static_cast<unsigned int>(secondOfDay % 60);
    return true;
}

std::int32_t GetLocalOffsetSeconds() noexcept
{
    const std::int64_t seconds =
        std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()).time_since_epoch().count();
    std::tm fields{};
    if (!ToLocalCalendarTime(seconds, fields))
        return 0;
    const std::int64_t days =
        JulianDay(static_cast<std::int64_t>(fields.tm_year) + 1900, static_cast<unsigned int>(fields.tm_mon + 1),
                  static_cast<unsigned int>(fields.tm_mday)) -
        kUnixEpochJulianDay;
    const std::int64_t localSeconds = days * 86400 + fields.tm_hour * 3600 + fields.tm_min * 60 + fields.tm_sec;
    return static_cast<std::int32_t>(localSeconds - seconds);
}

} // namespace Detail

} // namespace Zantor
