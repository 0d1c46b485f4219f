// The time-of-day field value and the millisecond duration text.
#include <ZantorMiddleware/ZantorBase/FieldTypes/Time.h>

#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/DateTime.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include "CalendarClock.h"

#include <cinttypes>
#include <cstdio>

namespace Zantor {

namespace {

// Bit 31 of the 4-byte form's word marks the form.
constexpr std::uint32_t kLongFormMark = 0x80000000u;
constexpr std::uint32_t kMillisecondsPerDay = 86400000u;

bool IsValidTime(unsigned int hour, unsigned int minute, unsigned int second, std::uint32_t millisecond) noexcept
{
    return hour < 24 && minute < 60 && second < 60 && millisecond < 1000;
}

// Milliseconds since midnight, which orders as the parts do.
std::int64_t Key(const Time& time) noexcept
{
    return ((time.GetHour() * 60 + time.GetMinute()) * 60 + time.GetSecond()) * 1000LL + time.GetMillisecond();
}

int Sign(std::int64_t difference) noexcept
{
    return difference < 0 ? -1 : (difference > 0 ? 1 : 0);
}

// Reads digits decimal digits into value and checks it against high
// (STATUS_CODE_OUT_OF_RANGE above); the cursor moves on success only.
template <typename T>
StatusCode ReadNumber(MessageValidator& text, unsigned int digits, unsigned int high, T& value)
{
    MessageValidator reader = text;
    T number = 0;
    const StatusCode status = reader.ValidateUnsignedAsciiIntegral(digits, &number);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (number > high)
        return STATUS_CODE_OUT_OF_RANGE;
    value = number;
    text = reader;
    return STATUS_CODE_SUCCESS;
}

} // namespace

std::string Time::Milliseconds::DurationToString(std::uint64_t milliseconds)
{
    const std::uint64_t days = milliseconds / kMillisecondsPerDay;
    const auto rest = static_cast<std::uint32_t>(milliseconds % kMillisecondsPerDay);
    char text[64];
    int used = 0;
    if (days != 0)
        used = std::snprintf(text, sizeof text, "%" PRIu64 " %s ", days, days == 1 ? "day" : "days");
    std::snprintf(text + used, sizeof text - static_cast<unsigned int>(used), "%02u:%02u:%02u:%03u",
                  static_cast<unsigned int>(rest / 3600000), static_cast<unsigned int>(rest / 60000 % 60),
                  static_cast<unsigned int>(rest / 1000 % 60), static_cast<unsigned int>(rest % 1000));
    return text;
}

Time::Time() noexcept
    : IFieldType(FIELD_TYPE_TIME), hour_(0), minute_(0), second_(0), millisecond_(0)
{
}

Time::Time(unsigned char hour, unsigned char minute, unsigned char second, std::uint32_t millisecond)
    : Time()
{
    if (Set(hour, minute, second, millisecond) != STATUS_CODE_SUCCESS)
        ZANTOR_THROW(StatusCodeException, STATUS_CODE_OUT_OF_RANGE);
}

StatusCode Time::Set(unsigned char hour, unsigned char minute, unsigned char second,
                     std::uint32_t millisecond) noexcept
{
    if (!IsValidTime(hour, minute, second, millisecond))
        return STATUS_CODE_OUT_OF_RANGE;
    hour_ = hour;
    minute_ = minute;
    second_ = second;
    millisecond_ = millisecond;
    SetInitialized(true);
    return STATUS_CODE_SUCCESS;
}

Time Time::CreateUtcTime(bool withMilliseconds)
{
    return DateTime::CreateUtcDateTime(withMilliseconds).GetTime();
}

Time Time::CreateLocalTime(bool withMilliseconds)
{
    return DateTime::CreateLocalDateTime(withMilliseconds).GetTime();
}

std::int32_t Time::GetTimeZoneOffset()
{
    return Detail::GetLocalOffsetSeconds();
}

bool Time::operator==(const Time& other) const noexcept
{
    return initialized_ == other.initialized_ && (!IsInitialized() || Key(*this) == Key(other));
}

void Time::Reset() noexcept
{
    SetInitialized(false);
}

void Time::Release() noexcept
{
    Reset();
}

StatusCode Time::Compare(const void* body, unsigned int bodyLength, int& result) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    Time other;
    const StatusCode status = other.DeserializeBody(body, bodyLength);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    result = Sign(Key(*this) - Key(other));
    return STATUS_CODE_SUCCESS;
}

StatusCode Time::Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                         int& result) noexcept
{
    Time first;
    const StatusCode status = first.DeserializeBody(body1, length1);
    return status != STATUS_CODE_SUCCESS ? status : first.Compare(body2, length2, result);
}

StatusCode Time::Convert(const IFieldType* other)
{
    if (other == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    if (other->GetType() == FIELD_TYPE_TIME)
        *this = *static_cast<const Time*>(other);
    else if (other->GetType() == FIELD_TYPE_DATETIME)
        *this = static_cast<const DateTime*>(other)->GetTime();
    else
        return STATUS_CODE_MISMATCH;
    if (!other->IsInitialized())
        Reset();
    return STATUS_CODE_SUCCESS;
}

void Time::Format(char* text, unsigned int size, bool withMilliseconds) const noexcept
{
    if (withMilliseconds)
        std::snprintf(text, size, "%02u:%02u:%02u.%03u", static_cast<unsigned int>(hour_),
                      static_cast<unsigned int>(minute_), static_cast<unsigned int>(second_),
                      static_cast<unsigned int>(millisecond_));
    else
        std::snprintf(text, size, "%02u:%02u:%02u", static_cast<unsigned int>(hour_),
                      static_cast<unsigned int>(minute_), static_cast<unsigned int>(second_));
}

std::string Time::ToString() const
{
    return ToString(false);
}

std::string Time::ToString(bool withMilliseconds) const
{
    if (!IsInitialized())
        return NOT_INITIALIZED_TEXT;
    char text[16];
    Format(text, sizeof text, withMilliseconds);
    return text;
}

StatusCode Time::ParseText(MessageValidator& text, Time& time) noexcept
{
    MessageValidator reader = text;
    unsigned char hour = 0, minute = 0, second = 0;
    unsigned short millisecond = 0;
    const unsigned char colon = ':';
    StatusCode status = ReadNumber(reader, 2, 23, hour);
    if (status == STATUS_CODE_SUCCESS)
        status = reader.ValidateBytes(1, colon, nullptr);
    if (status == STATUS_CODE_SUCCESS)
        status = ReadNumber(reader, 2, 59, minute);
    if (status == STATUS_CODE_SUCCESS)
        status = reader.ValidateBytes(1, colon, nullptr);
    if (status == STATUS_CODE_SUCCESS)
        status = ReadNumber(reader, 2, 59, second);
    // The milliseconds are optional: only a "." opens them; whatever else
    // follows is left for the caller's end-of-text check.
    if (status == STATUS_CODE_SUCCESS && !reader.IsAtEnd() && *reader.GetCursorPointer() == '.')
    {
        reader.ValidateBytes(1);
        status = ReadNumber(reader, 3, 999, millisecond);
    }
    if (status != STATUS_CODE_SUCCESS)
        return status;
    time.Set(hour, minute, second, millisecond);
    text = reader;
    return STATUS_CODE_SUCCESS;
}

StatusCode Time::FromString(MessageValidator& text)
{
    StatusCode status = STATUS_CODE_SUCCESS;
    if (FromNotInitializedText(text, status))
        return status;
    MessageValidator reader = text;
    Time time;
    status = ParseText(reader, time);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (!reader.IsAtEnd())
        return STATUS_CODE_INVALID_LENGTH;
    *this = time;
    text = reader;
    return STATUS_CODE_SUCCESS;
}

const char* Time::GetFromStringFormat() const noexcept
{
    return "hh:mm:ss[.mmm]";
}

unsigned int Time::BodyLengthFor(unsigned int length) const noexcept
{
    if (length == SHORT_BODY_LENGTH)
        return SHORT_BODY_LENGTH;
    if (length == LONG_BODY_LENGTH || length >= 0xFFFFFFFEu)
        return millisecond_ != 0 ? LONG_BODY_LENGTH : SHORT_BODY_LENGTH;
    return 0;
}

void Time::Encode(unsigned char* body, unsigned int bodyLength) const noexcept
{
    if (bodyLength == SHORT_BODY_LENGTH)
    {
        body[0] = hour_;
        body[1] = minute_;
        body[2] = second_;
        return;
    }
    const std::uint32_t word = kLongFormMark | millisecond_ << 17 | static_cast<std::uint32_t>(second_) << 11 |
                               static_cast<std::uint32_t>(minute_) << 5 | hour_;
    body[0] = static_cast<unsigned char>(word >> 24);
    body[1] = static_cast<unsigned char>(word >> 16);
    body[2] = static_cast<unsigned char>(word >> 8);
    body[3] = static_cast<unsigned char>(word);
}

StatusCode Time::Decode(const unsigned char* body, unsigned int length, Time& time) noexcept
{
    unsigned int hour = 0, minute = 0, second = 0;
    std::uint32_t millisecond = 0;
    if (length == SHORT_BODY_LENGTH)
    {
        hour = body[0];
        minute = body[1];
        second = body[2];
    }
    else if (length == LONG_BODY_LENGTH)
    {
        const std::uint32_t word = static_cast<std::uint32_t>(body[0]) << 24 |
                                   static_cast<std::uint32_t>(body[1]) << 16 |
                                   static_cast<std::uint32_t>(body[2]) << 8 | body[3];
        if ((word & kLongFormMark) == 0)
            return STATUS_CODE_INVALID_FORMAT;
        // Bits 27 to 30 are reserved: written as 0, not checked.
        hour = word & 0x1F;
        minute = word >> 5 & 0x3F;
        second = word >> 11 & 0x3F;
        millisecond = word >> 17 & 0x3FF;
    }
    else
    {
        return STATUS_CODE_INVALID_PARAMETER;
    }
    if (!IsValidTime(hour, minute, second, millisecond))
        return STATUS_CODE_INVALID_PARAMETER;
    time.Set(static_cast<unsigned char>(hour), static_cast<unsigned char>(minute),
             static_cast<unsigned char>(second), millisecond);
    return STATUS_CODE_SUCCESS;
}

StatusCode Time::SerializeBody(void* buffer, unsigned int length, unsigned int& written) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    const unsigned int bodyLength = BodyLengthFor(length);
    if (buffer == nullptr || bodyLength == 0)
        return STATUS_CODE_INVALID_PARAMETER;
    Encode(static_cast<unsigned char*>(buffer), bodyLength);
    written = bodyLength;
    return STATUS_CODE_SUCCESS;
}

StatusCode Time::Serialize(MessageBuilder& builder, unsigned int maxLength) const
{
    unsigned char body[LONG_BODY_LENGTH];
    unsigned int written = 0;
    const StatusCode status = SerializeBody(body, maxLength, written);
    return status != STATUS_CODE_SUCCESS ? status : builder.AppendBuffer(body, written);
}

StatusCode Time::SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const
{
    return Serialize(builder, maxLength);
}

StatusCode Time::DeserializeBody(const void* body, unsigned int length)
{
    if (body == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    return Decode(static_cast<const unsigned char*>(body), length, *this);
}

StatusCode Time::Deserialize(MessageValidator& validator, unsigned int length)
{
    if (validator.GetRemaining() < length)
        return STATUS_CODE_INVALID_PARAMETER;
    const StatusCode status = DeserializeBody(validator.GetCursorPointer(), length);
    if (status == STATUS_CODE_SUCCESS)
        validator.ValidateBytes(length);
    return status;
}

StatusCode Time::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength)
{
    if (maxLength < SHORT_BODY_LENGTH || validator.IsAtEnd())
        return STATUS_CODE_INVALID_PARAMETER;
    const unsigned int length =
        (*validator.GetCursorPointer() & 0x80) != 0 ? LONG_BODY_LENGTH : SHORT_BODY_LENGTH;
    return length > maxLength ? STATUS_CODE_OUT_OF_RANGE : Deserialize(validator, length);
}

StatusCode Time::ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                 unsigned int& bodyLength) noexcept
{
    Time time;
    const unsigned int offset = validator.GetCursor();
    const StatusCode status = time.DeserializeLengthAndBody(validator, LONG_BODY_LENGTH);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    bodyOffset = offset;
    bodyLength = validator.GetCursor() - offset;
    return STATUS_CODE_SUCCESS;
}

unsigned int Time::GetSerializedLength() const noexcept
{
    return IsInitialized() ? BodyLengthFor(LONG_BODY_LENGTH) : 0;
}

unsigned int Time::GetSerializedBodyLength() const noexcept
{
    return GetSerializedLength();
}

StatusCode Time::IsDifferent(const void* body, unsigned int bodyLength, bool& different) const
{
    Time other;
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
