// The date-and-time field value: a Date body followed by a Time body.
#include <ZantorMiddleware/ZantorBase/FieldTypes/DateTime.h>

#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include "CalendarClock.h"

namespace Zantor {

namespace {

// A clock reading as a value; not initialized when the clock cannot be
// read or its year does not fit the date.
DateTime FromClock(bool local, bool withMilliseconds)
{
    Detail::CalendarInstant now{};
    Date date;
    Time time;
    if (Detail::ReadCalendarClock(local, now) && now.year >= 0 && now.year <= Date::MAX_YEAR)
    {
        date.Set(static_cast<std::uint32_t>(now.year), static_cast<unsigned char>(now.month),
                 static_cast<unsigned char>(now.day));
        time.Set(static_cast<unsigned char>(now.hour), static_cast<unsigned char>(now.minute),
                 static_cast<unsigned char>(now.second), withMilliseconds ? now.millisecond : 0);
    }
    DateTime value;
    value.Set(date, time);
    return value;
}

// Milliseconds since 0000-01-01 00:00 in a calendar of 32-day months and
// 16-month years: not a time line, but ordered as date, then time, are.
std::int64_t Key(const DateTime& value) noexcept
{
    const Date& date = value.GetDate();
    const Time& time = value.GetTime();
    const std::int64_t day = (static_cast<std::int64_t>(date.GetYear()) * 16 + date.GetMonth()) * 32 + date.GetDay();
    const std::int64_t millisecond =
        ((time.GetHour() * 60 + time.GetMinute()) * 60 + time.GetSecond()) * 1000LL + time.GetMillisecond();
    return day * 86400000 + millisecond;
}

} // namespace

DateTime::DateTime() noexcept
    : IFieldType(FIELD_TYPE_DATETIME)
{
}

DateTime::DateTime(const Date& date, const Time& time)
    : DateTime()
{
    if (Set(date, time) != STATUS_CODE_SUCCESS)
        ZANTOR_THROW(StatusCodeException, STATUS_CODE_NOT_INITIALIZED);
}

StatusCode DateTime::Set(const Date& date, const Time& time) noexcept
{
    if (!date.IsInitialized() || !time.IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    date_ = date;
    time_ = time;
    SetInitialized(true);
    return STATUS_CODE_SUCCESS;
}

DateTime DateTime::CreateUtcDateTime(bool withMilliseconds)
{
    return FromClock(false, withMilliseconds);
}

DateTime DateTime::CreateLocalDateTime(bool withMilliseconds)
{
    return FromClock(true, withMilliseconds);
}

std::int32_t DateTime::GetTimeZoneOffset()
{
    return Detail::GetLocalOffsetSeconds();
}

bool DateTime::operator==(const DateTime& other) const noexcept
{
    return initialized_ == other.initialized_ && date_ == other.date_ && time_ == other.time_;
}

void DateTime::Reset() noexcept
{
    SetInitialized(false);
    date_.Reset();
    time_.Reset();
}

void DateTime::Release() noexcept
{
    Reset();
}

StatusCode DateTime::Compare(const void* body, unsigned int bodyLength, int& result) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    DateTime other;
    const StatusCode status = other.DeserializeBody(body, bodyLength);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    const std::int64_t difference = Key(*this) - Key(other);
    result = difference < 0 ? -1 : (difference > 0 ? 1 : 0);
    return STATUS_CODE_SUCCESS;
}

StatusCode DateTime::Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                             int& result) noexcept
{
    DateTime first;
    const StatusCode status = first.DeserializeBody(body1, length1);
    return status != STATUS_CODE_SUCCESS ? status : first.Compare(body2, length2, result);
}

StatusCode DateTime::Convert(const IFieldType* other)
{
    if (other == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    if (other->GetType() != FIELD_TYPE_DATETIME)
        return STATUS_CODE_MISMATCH;
    *this = *static_cast<const DateTime*>(other);
    return STATUS_CODE_SUCCESS;
}

std::string DateTime::ToString() const
{
    return ToString(false);
}

std::string DateTime::ToString(bool withMilliseconds) const
{
    if (!IsInitialized())
        return NOT_INITIALIZED_TEXT;
    char text[40];
    date_.Format(text, 16);
    const std::size_t dateLength = std::char_traits<char>::length(text);
    text[dateLength] = ' ';
    time_.Format(text + dateLength + 1, 16, withMilliseconds);
    return text;
}

StatusCode DateTime::FromString(MessageValidator& text)
{
    StatusCode status = STATUS_CODE_SUCCESS;
    if (FromNotInitializedText(text, status))
        return status;
    MessageValidator reader = text;
    Date date;
    Time time;
    const unsigned char blank = ' ';
    status = Date::ParseText(reader, date);
    if (status == STATUS_CODE_SUCCESS)
        status = reader.ValidateBytes(1, blank, nullptr);
    if (status == STATUS_CODE_SUCCESS)
        status = Time::ParseText(reader, time);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (!reader.IsAtEnd())
        return STATUS_CODE_INVALID_LENGTH;
    Set(date, time);
    text = reader;
    return STATUS_CODE_SUCCESS;
}

const char* DateTime::GetFromStringFormat() const noexcept
{
    return "yyyy-mm-dd hh:mm:ss[.mmm]";
}

StatusCode DateTime::SerializeBody(void* buffer, unsigned int length, unsigned int& written) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    // The time part takes what is left after the date; "any" stays "any".
    unsigned int timeLength = 0;
    if (length >= 0xFFFFFFFEu)
        timeLength = length;
    else if (length == SHORT_BODY_LENGTH || length == LONG_BODY_LENGTH)
        timeLength = length - Date::BODY_LENGTH;
    const unsigned int bodyLength = time_.BodyLengthFor(timeLength);
    if (buffer == nullptr || bodyLength == 0)
        return STATUS_CODE_INVALID_PARAMETER;
    unsigned char* const body = static_cast<unsigned char*>(buffer);
    date_.Encode(body);
    time_.Encode(body + Date::BODY_LENGTH, bodyLength);
    written = Date::BODY_LENGTH + bodyLength;
    return STATUS_CODE_SUCCESS;
}

StatusCode DateTime::Serialize(MessageBuilder& builder, unsigned int maxLength) const
{
    unsigned char body[LONG_BODY_LENGTH];
    unsigned int written = 0;
    const StatusCode status = SerializeBody(body, maxLength, written);
    return status != STATUS_CODE_SUCCESS ? status : builder.AppendBuffer(body, written);
}

StatusCode DateTime::SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const
{
    return Serialize(builder, maxLength);
}

StatusCode DateTime::Decode(const unsigned char* body, unsigned int length, DateTime& value) noexcept
{
    if (length != SHORT_BODY_LENGTH && length != LONG_BODY_LENGTH)
        return STATUS_CODE_INVALID_PARAMETER;
    Date date;
    Time time;
    StatusCode status = date.DeserializeBody(body, Date::BODY_LENGTH);
    if (status == STATUS_CODE_SUCCESS)
        status = Time::Decode(body + Date::BODY_LENGTH, length - Date::BODY_LENGTH, time);
    if (status == STATUS_CODE_SUCCESS)
        value.Set(date, time);
    return status;
}

StatusCode DateTime::DeserializeBody(const void* body, unsigned int length)
{
    if (body == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    return Decode(static_cast<const unsigned char*>(body), length, *this);
}

StatusCode DateTime::Deserialize(MessageValidator& validator, unsigned int length)
{
    if (validator.GetRemaining() < length)
        return STATUS_CODE_INVALID_PARAMETER;
    const StatusCode status = DeserializeBody(validator.GetCursorPointer(), length);
    if (status == STATUS_CODE_SUCCESS)
        validator.ValidateBytes(length);
    return status;
}

StatusCode DateTime::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength)
{
    if (maxLength < SHORT_BODY_LENGTH || validator.GetRemaining() <= Date::BODY_LENGTH)
        return STATUS_CODE_INVALID_PARAMETER;
    const unsigned int length =
        (validator.GetCursorPointer()[Date::BODY_LENGTH] & 0x80) != 0 ? LONG_BODY_LENGTH : SHORT_BODY_LENGTH;
    return length > maxLength ? STATUS_CODE_OUT_OF_RANGE : Deserialize(validator, length);
}

StatusCode DateTime::ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                     unsigned int& bodyLength) noexcept
{
    DateTime value;
    const unsigned int offset = validator.GetCursor();
    const StatusCode status = value.DeserializeLengthAndBody(validator, LONG_BODY_LENGTH);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    bodyOffset = offset;
    bodyLength = validator.GetCursor() - offset;
    return STATUS_CODE_SUCCESS;
}

unsigned int DateTime::GetSerializedLength() const noexcept
{
    return IsInitialized() ? Date::BODY_LENGTH + time_.GetSerializedLength() : 0;
}

unsigned int DateTime::GetSerializedBodyLength() const noexcept
{
    return GetSerializedLength();
}

StatusCode DateTime::IsDifferent(const void* body, unsigned int bodyLength, bool& different) const
{
    DateTime other;
    if (bodyLength != 0)
    {
        const StatusCode status = other.DeserializeBody(body, bodyLength);
        if (status != STATUS_CODE_SUCCESS)
            return status;
    }
    different = !(*this == other);
    return STATUS_CODE_SUCCESS;
}

} // namespace Zantor
