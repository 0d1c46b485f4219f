// Date, Time and DateTime: exact wire bytes in every form and byte order,
// each reading check with its boundary, update-form lengths, text forms
// and their errors, the calendar against std::chrono, comparisons,
// conversions and the clock.
#include <ZantorMiddleware/ZantorBase/FieldTypes/Date.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/DateTime.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/FieldTypeFactory.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Time.h>

#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace Zantor;
using namespace std::chrono;
using Bytes = std::vector<unsigned char>;

constexpr StatusCode OK = STATUS_CODE_SUCCESS, PARAMETER = STATUS_CODE_INVALID_PARAMETER,
                     FORMAT = STATUS_CODE_INVALID_FORMAT, RANGE = STATUS_CODE_OUT_OF_RANGE,
                     LENGTH = STATUS_CODE_INVALID_LENGTH, NOT_INITIALIZED = STATUS_CODE_NOT_INITIALIZED;
constexpr unsigned ANY = 0xFFFFFFFFu, ANY2 = 0xFFFFFFFEu;
constexpr unsigned char D = FIELD_TYPE_DATE, T = FIELD_TYPE_TIME, DT = FIELD_TYPE_DATETIME;

static std::unique_ptr<IFieldType> Make(unsigned char type) { return std::unique_ptr<IFieldType>(FieldTypeFactory::GetInstance().Create(type)); }
// A value of type read from text, which must parse.
static std::unique_ptr<IFieldType> Parse(unsigned char type, const std::string& text)
{
    auto value = Make(type);
    MessageValidator validator(text.data(), unsigned(text.size()));
    EXPECT_EQ(OK, value->FromString(validator)) << text;
    return value;
}
// The text form with milliseconds where the type has them.
static std::string Text(const IFieldType& value)
{
    if (value.GetType() == T) return static_cast<const Time&>(value).ToString(true);
    if (value.GetType() == DT) return static_cast<const DateTime&>(value).ToString(true);
    return value.ToString();
}
static const char* Known(unsigned char type) { return type == D ? "1999-12-31" : type == T ? "01:02:03.004" : "1999-12-31 01:02:03.004"; }

// Each value in each form: SerializeBody, and Serialize and
// SerializeLengthAndBody through builders of both byte orders (the layouts
// are fixed, so the bytes are the same), read back as the update form.
TEST(DateTimeFieldTest, WireVectors)
{
    struct Row { int line; unsigned char type; const char* text; unsigned length; Bytes bytes; const char* readBack; };
    for (const Row& row : std::initializer_list<Row>{
             {__LINE__, D, "2024-02-29", 3, {0x5D, 0xD0, 0x0F}, "2024-02-29"},
             {__LINE__, D, "0000-01-01", ANY, {0x21, 0x00, 0x00}, "0000-01-01"},
             {__LINE__, D, "2024-12-31", 3, {0x9F, 0xD1, 0x0F}, "2024-12-31"},
             {__LINE__, T, "12:34:56.789", 4, {0x86, 0x2B, 0xC4, 0x4C}, "12:34:56.789"},
             {__LINE__, T, "12:34:56.789", 3, {12, 34, 56}, "12:34:56.000"}, // milliseconds dropped
             {__LINE__, T, "12:34:56", 4, {12, 34, 56}, "12:34:56.000"},       // no milliseconds: 3 bytes
             {__LINE__, T, "23:59:59.999", ANY2, {0x87, 0xCF, 0xDF, 0x77}, "23:59:59.999"},
             {__LINE__, T, "00:00:00.001", ANY, {0x80, 0x02, 0x00, 0x00}, "00:00:00.001"},
             {__LINE__, T, "00:00:00.000", ANY, {0, 0, 0}, "00:00:00.000"},
             {__LINE__, DT, "2024-02-29 12:34:56.789", 7, {0x5D, 0xD0, 0x0F, 0x86, 0x2B, 0xC4, 0x4C}, "2024-02-29 12:34:56.789"},
             {__LINE__, DT, "2024-02-29 12:34:56.789", 6, {0x5D, 0xD0, 0x0F, 12, 34, 56}, "2024-02-29 12:34:56.000"},
             {__LINE__, DT, "2024-02-29 12:34:56", 7, {0x5D, 0xD0, 0x0F, 12, 34, 56}, "2024-02-29 12:34:56.000"},
             {__LINE__, DT, "0000-01-01 00:00:00.001", ANY2, {0x21, 0, 0, 0x80, 0x02, 0, 0}, "0000-01-01 00:00:00.001"},
             {__LINE__, DT, "2024-02-29 12:34:56", ANY, {0x5D, 0xD0, 0x0F, 12, 34, 56}, "2024-02-29 12:34:56.000"}})
    {
        SCOPED_TRACE(row.line);
        const auto value = Parse(row.type, row.text);
        unsigned char buffer[8] = {};
        unsigned written = 0, size = unsigned(row.bytes.size());
        EXPECT_EQ(OK, value->SerializeBody(buffer, row.length, written));
        EXPECT_EQ(row.bytes, Bytes(buffer, buffer + written));
        if (row.length >= ANY2) { EXPECT_EQ(2 * size, value->GetSerializedLength() + value->GetSerializedBodyLength()); }
        for (const auto endian : {MessageHandler::ENDIAN_LITTLE, MessageHandler::ENDIAN_BIG})
        {
            MessageBuilder builder;
            builder.SetEndian(endian);
            EXPECT_EQ(OK, value->Serialize(builder, row.length) | value->SerializeLengthAndBody(builder, row.length));
            EXPECT_EQ(row.bytes, Bytes(builder.GetBuffer(), builder.GetBuffer() + size));
            EXPECT_EQ(row.bytes, Bytes(builder.GetBuffer() + size, builder.GetBuffer() + builder.GetLength()));
            MessageValidator validator(builder.GetBuffer(), builder.GetLength());
            validator.SetEndian(endian);
            const auto back = Make(row.type);
            unsigned offset = 0, length = 0;
            EXPECT_EQ(OK, back->DeserializeLengthAndBody(validator, ANY) | IFieldType::ValidateSerializedLengthAndBody(row.type, validator, offset, length));
            EXPECT_EQ((std::pair{size, size}), (std::pair{offset, length}));
            EXPECT_TRUE(validator.IsAtEnd());
            EXPECT_EQ(row.readBack, Text(*back));
        }
    }
}

// Lengths a value cannot be written in, and values that hold nothing:
// nothing is written, written and the builder stay as they were.
TEST(DateTimeFieldTest, SerializeRefusals)
{
    struct Row { int line; unsigned char type; const char* text; unsigned length; StatusCode status; };
    for (const Row& row : std::initializer_list<Row>{
             {__LINE__, D, "2024-02-29", 2, PARAMETER}, {__LINE__, D, "2024-02-29", 4, PARAMETER},
             {__LINE__, D, "2024-02-29", ANY2, PARAMETER}, // only all ones means "any" for a date
             {__LINE__, T, "12:34:56.789", 2, PARAMETER}, {__LINE__, T, "12:34:56", 5, PARAMETER},
             {__LINE__, T, "12:34:56.789", 0xFFFFFFFDu, PARAMETER},
             {__LINE__, DT, "2024-02-29 12:34:56.789", 5, PARAMETER}, {__LINE__, DT, "2024-02-29 12:34:56", 8, PARAMETER},
             {__LINE__, DT, "2024-02-29 12:34:56", 3, PARAMETER}, {__LINE__, DT, "2024-02-29 12:34:56", 0xFFFFFFFDu, PARAMETER},
             {__LINE__, D, "[NotInitialized]", ANY, NOT_INITIALIZED}, {__LINE__, T, "[NotInitialized]", ANY, NOT_INITIALIZED},
             {__LINE__, DT, "[NotInitialized]", ANY, NOT_INITIALIZED}})
    {
        SCOPED_TRACE(row.line);
        const auto value = Parse(row.type, row.text);
        unsigned char buffer[8] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
        unsigned written = 99;
        MessageBuilder builder;
        EXPECT_EQ(row.status, value->SerializeBody(buffer, row.length, written));
        EXPECT_EQ(row.status, value->Serialize(builder, row.length));
        EXPECT_EQ(row.status, value->SerializeLengthAndBody(builder, row.length));
        EXPECT_EQ((std::pair{99u, Bytes(8, 0xEE)}), (std::pair{written + builder.GetLength(), Bytes(buffer, buffer + 8)}));
        EXPECT_EQ(PARAMETER, Parse(row.type, Known(row.type))->SerializeBody(nullptr, ANY, written));
    }
}

// Each reading check with its boundary: the body alone and the record form
// (of the body's own length); a refused body leaves value and cursor.
TEST(DateTimeFieldTest, ReadingChecks)
{
    struct Row { int line; unsigned char type; Bytes body; StatusCode status; const char* text = nullptr; };
    for (const Row& row : std::initializer_list<Row>{
             {__LINE__, D, {0x9F, 0xFF, 0xFF}, OK, "32767-12-31"},
             {__LINE__, D, {0x01, 0xD0, 0x0F}, PARAMETER}, // month 0
             {__LINE__, D, {0x9F, 0xD1, 0x0F}, OK, "2024-12-31"}, {__LINE__, D, {0xA1, 0xD1, 0x0F}, PARAMETER}, // month 13
             {__LINE__, D, {0x5D, 0xD0, 0x0F}, OK, "2024-02-29"}, {__LINE__, D, {0x5D, 0xCE, 0x0F}, PARAMETER}, // 2023-02-29
             {__LINE__, D, {0x5C, 0xCE, 0x0F}, OK, "2023-02-28"}, {__LINE__, D, {0x5D, 0xD8, 0x0E}, PARAMETER}, // 1900-02-29
             {__LINE__, D, {0x5D, 0xA0, 0x0F}, OK, "2000-02-29"},
             {__LINE__, D, {0x9E, 0xD0, 0x0F}, OK, "2024-04-30"}, {__LINE__, D, {0x9F, 0xD0, 0x0F}, PARAMETER}, // 04-31
             {__LINE__, D, {0x60, 0xD0, 0x0F}, OK, "2024-03-00"}, // day 0 reads as it stands
             {__LINE__, D, {0x5D, 0xD0}, PARAMETER}, {__LINE__, D, {0x5D, 0xD0, 0x0F, 0}, PARAMETER},
             {__LINE__, T, {23, 59, 59}, OK, "23:59:59.000"}, {__LINE__, T, {24, 0, 0}, PARAMETER},
             {__LINE__, T, {0, 60, 0}, PARAMETER}, {__LINE__, T, {0, 0, 60}, PARAMETER},
             {__LINE__, T, {0x87, 0xCF, 0xDF, 0x77}, OK, "23:59:59.999"}, {__LINE__, T, {0x87, 0xD0, 0x00, 0x00}, PARAMETER}, // ms 1000
             {__LINE__, T, {0x07, 0xCF, 0xDF, 0x77}, FORMAT}, // top bit clear
             {__LINE__, T, {0x80, 0x00, 0x00, 0x18}, PARAMETER}, {__LINE__, T, {0x80, 0x00, 0x07, 0x80}, PARAMETER},
             {__LINE__, T, {0x80, 0x01, 0xE0, 0x00}, PARAMETER},
             {__LINE__, T, {0xF8, 0x00, 0x00, 0x00}, OK, "00:00:00.000"}, // reserved bits are not checked
             {__LINE__, T, {0, 0}, PARAMETER}, {__LINE__, T, {0x80, 0, 0, 0, 0}, PARAMETER},
             {__LINE__, DT, {0x5D, 0xD0, 0x0F, 23, 59, 59}, OK, "2024-02-29 23:59:59.000"},
             {__LINE__, DT, {0x5D, 0xD0, 0x0F, 0x87, 0xCF, 0xDF, 0x77}, OK, "2024-02-29 23:59:59.999"},
             {__LINE__, DT, {0x5D, 0xCE, 0x0F, 0, 0, 0}, PARAMETER}, {__LINE__, DT, {0x5D, 0xD0, 0x0F, 24, 0, 0}, PARAMETER},
             {__LINE__, DT, {0x5D, 0xD0, 0x0F, 0x07, 0xCF, 0xDF, 0x77}, FORMAT},
             {__LINE__, DT, {0x5D, 0xD0, 0x0F, 0, 0}, PARAMETER}, {__LINE__, DT, {0x5D, 0xD0, 0x0F, 0x80, 0, 0, 0, 0}, PARAMETER}})
    {
        SCOPED_TRACE(row.line);
        const std::string expected = row.status == OK ? row.text : Known(row.type);
        const auto value = Parse(row.type, Known(row.type));
        EXPECT_EQ(row.status, value->DeserializeBody(row.body.data(), unsigned(row.body.size())));
        EXPECT_EQ(expected, Text(*value));
        const auto record = Parse(row.type, Known(row.type));
        MessageValidator validator(row.body.data(), unsigned(row.body.size()));
        EXPECT_EQ(row.status, record->Deserialize(validator, unsigned(row.body.size())));
        EXPECT_EQ(row.status == OK, validator.IsAtEnd());
        EXPECT_EQ(expected, Text(*record));
    }
    Date date;
    EXPECT_EQ(PARAMETER, date.DeserializeBody(nullptr, 3));
    MessageValidator shortInput("\x5D\xD0", 2); // the record form's length must be there
    EXPECT_EQ(PARAMETER, date.Deserialize(shortInput, 3));
}

// The update form finds its length from the top bit of the first time
// byte; the static check accepts exactly what the reader accepts.
TEST(DateTimeFieldTest, UpdateFormLengths)
{
    struct Row { int line; unsigned char type; Bytes input; unsigned maxLength; StatusCode status; unsigned consumed; };
    for (const Row& row : std::initializer_list<Row>{
             {__LINE__, D, {0x5D, 0xD0, 0x0F, 0xFF}, ANY, OK, 3}, {__LINE__, D, {0x5D, 0xD0}, ANY, PARAMETER, 0},
             {__LINE__, D, {0x5D, 0xD0, 0x0F}, 2, PARAMETER, 0}, {__LINE__, D, {0x5D, 0xCE, 0x0F}, ANY, PARAMETER, 0},
             {__LINE__, T, {12, 34, 56, 0x86}, ANY, OK, 3}, {__LINE__, T, {0x86, 0x2B, 0xC4, 0x4C}, ANY, OK, 4},
             {__LINE__, T, {0x86, 0x2B, 0xC4}, ANY, PARAMETER, 0}, {__LINE__, T, {}, ANY, PARAMETER, 0},
             {__LINE__, T, {0x86, 0x2B, 0xC4, 0x4C}, 4, OK, 4}, {__LINE__, T, {0x86, 0x2B, 0xC4, 0x4C}, 3, RANGE, 0},
             {__LINE__, T, {12, 34, 56}, 3, OK, 3}, {__LINE__, T, {12, 34, 56}, 2, PARAMETER, 0},
             {__LINE__, T, {0x87, 0xD0, 0x00, 0x00}, ANY, PARAMETER, 0},
             {__LINE__, DT, {0x5D, 0xD0, 0x0F, 12, 34, 56}, 6, OK, 6}, {__LINE__, DT, {0x5D, 0xD0, 0x0F, 12, 34, 56}, 5, PARAMETER, 0},
             {__LINE__, DT, {0x5D, 0xD0, 0x0F, 0x86, 0x2B, 0xC4, 0x4C}, 7, OK, 7},
             {__LINE__, DT, {0x5D, 0xD0, 0x0F, 0x86, 0x2B, 0xC4, 0x4C}, 6, RANGE, 0},
             {__LINE__, DT, {0x5D, 0xD0, 0x0F, 0x86, 0x2B, 0xC4}, ANY, PARAMETER, 0},
             {__LINE__, DT, {0x5D, 0xD0, 0x0F}, ANY, PARAMETER, 0}, {__LINE__, DT, {0x5D, 0xD0, 0x0F, 0x86}, ANY, PARAMETER, 0}})
    {
        SCOPED_TRACE(row.line);
        const auto value = Parse(row.type, Known(row.type));
        MessageValidator validator(row.input.data(), unsigned(row.input.size()));
        EXPECT_EQ(row.status, value->DeserializeLengthAndBody(validator, row.maxLength));
        EXPECT_EQ(row.consumed, validator.GetCursor());
        EXPECT_TRUE(row.status == OK || Known(row.type) == Text(*value));
        if (row.maxLength != ANY)
            continue;
        MessageValidator check(row.input.data(), unsigned(row.input.size()));
        unsigned offset = 77, length = 77;
        EXPECT_EQ(row.status, IFieldType::ValidateSerializedLengthAndBody(row.type, check, offset, length));
        EXPECT_EQ(row.consumed, check.GetCursor());
        EXPECT_EQ((row.status == OK ? std::pair{0u, row.consumed} : std::pair{77u, 77u}), (std::pair{offset, length}));
    }
    MessageValidator any("\x5D\xD0\x0F", 3);
    unsigned offset = 0, length = 0;
    EXPECT_EQ(PARAMETER, IFieldType::ValidateSerializedLengthAndBody(FIELD_TYPE_UNKNOWN, any, offset, length));
}

// One row per text rule; a refused text leaves the value and the cursor.
TEST(DateTimeFieldTest, FromString)
{
    struct Row { int line; unsigned char type; std::string text; StatusCode status; const char* result = nullptr; };
    for (const Row& row : std::initializer_list<Row>{
             {__LINE__, D, "2024-02-29", OK, "2024-02-29"}, {__LINE__, D, "2023-02-29", RANGE},
             {__LINE__, D, "2024-12-31", OK, "2024-12-31"}, {__LINE__, D, "2024-13-01", RANGE},
             {__LINE__, D, "2024-00-01", RANGE}, {__LINE__, D, "2024-01-00", OK, "2024-01-00"},
             {__LINE__, D, "2024/01/01", RANGE}, {__LINE__, D, "2024-01_01", RANGE}, // the separator rule
             {__LINE__, D, "2024-01-0", PARAMETER}, {__LINE__, D, "2024-01", PARAMETER}, {__LINE__, D, "", PARAMETER},
             {__LINE__, D, "2024-0a-01", FORMAT}, {__LINE__, D, "+024-01-01", FORMAT}, {__LINE__, D, "2024-01-01 ", LENGTH},
             {__LINE__, D, "[NotInitialized]", OK, "[NotInitialized]"}, {__LINE__, D, "[NotInitialized] ", LENGTH},
             {__LINE__, T, "23:59:59.999", OK, "23:59:59.999"}, {__LINE__, T, "12:34:56", OK, "12:34:56.000"},
             {__LINE__, T, "24:00:00", RANGE}, {__LINE__, T, "00:60:00", RANGE}, {__LINE__, T, "00:00:60", RANGE},
             {__LINE__, T, "12-00:00", RANGE}, {__LINE__, T, "12:00-00", RANGE},
             {__LINE__, T, "12:00:00.5", PARAMETER}, {__LINE__, T, "12:00", PARAMETER}, {__LINE__, T, "12:00:00.", PARAMETER},
             {__LINE__, T, "1a:00:00", FORMAT}, {__LINE__, T, "12:00:00.5x0", FORMAT},
             {__LINE__, T, "12:00:00.5000", LENGTH}, {__LINE__, T, "12:00:00,500", LENGTH},
             {__LINE__, DT, "2024-02-29 12:34:56.789", OK, "2024-02-29 12:34:56.789"},
             {__LINE__, DT, "2024-02-29T12:34:56", RANGE}, {__LINE__, DT, "2024-02-29", PARAMETER},
             {__LINE__, DT, "2024-02-30 12:34:56", RANGE}, {__LINE__, DT, "2024-02-29 12:61:00", RANGE},
             {__LINE__, DT, "2024-02-29 12:34:56 ", LENGTH}, {__LINE__, DT, "[NotInitialized]", OK, "[NotInitialized]"}})
    {
        SCOPED_TRACE(row.line);
        const auto value = Parse(row.type, Known(row.type));
        MessageValidator validator(row.text.data(), unsigned(row.text.size()));
        EXPECT_EQ(row.status, value->FromString(validator));
        EXPECT_EQ(row.status == OK ? row.result : Known(row.type), Text(*value));
        EXPECT_EQ(row.status == OK ? row.text.size() : 0u, validator.GetCursor());
    }
    EXPECT_EQ("12:34:56 2024-02-29 12:34:56", Parse(T, "12:34:56.789")->ToString() + " " + Parse(DT, "2024-02-29 12:34:56.789")->ToString());
    EXPECT_EQ("yyyy-mm-dd|hh:mm:ss[.mmm]|yyyy-mm-dd hh:mm:ss[.mmm]", std::string(Date().GetFromStringFormat()) + "|" +
                                                                         Time().GetFromStringFormat() + "|" + DateTime().GetFromStringFormat());
}

// Every calendar function against std::chrono over the whole range of
// years, every 37th day, and every day of 1999 to 2030.
TEST(DateTimeFieldTest, CalendarMatchesChrono)
{
    const sys_days first = year{0} / January / 1, lastDay = year{32767} / December / 31;
    for (sys_days point = first; point <= lastDay; point += days{point >= sys_days{year{1999} / 1 / 1} && point < sys_days{year{2031} / 1 / 1} ? 1 : 37})
    {
        const year_month_day ymd{point};
        const unsigned y = unsigned(int(ymd.year())), m = unsigned(ymd.month()), d = unsigned(ymd.day());
        const sys_days thursday = point - (weekday{point}.iso_encoding() - 1) * days{1} + days{3};
        const unsigned isoWeek = unsigned((thursday - sys_days{year_month_day{thursday}.year() / 1 / 1}).count() / 7 + 1);
        const std::uint32_t julian = Date::ConvertGregorianToJulianDate(y, m, d);
        std::uint32_t y2 = 0;
        unsigned char m2 = 0, d2 = 0;
        ASSERT_EQ(std::uint32_t((point - sys_days{year{2000} / 1 / 1}).count() + 2451545), julian) << y << '-' << m << '-' << d;
        ASSERT_EQ(OK, Date::ConvertJulianToGregorianDate(julian, y2, m2, d2));
        ASSERT_EQ(ymd, year_month_day(year(int(y2)), month(m2), std::chrono::day(d2)));
        ASSERT_EQ(weekday{point}.c_encoding(), Date::GetDayOfWeek(y, m, d)) << y << '-' << m << '-' << d;
        ASSERT_EQ(unsigned((point - sys_days{ymd.year() / 1 / 1}).count() + 1), Date::GetDayOfYear(y, m, d));
        ASSERT_EQ(isoWeek, Date::GetWeekOfYear(y, m, d)) << y << '-' << m << '-' << d;
        ASSERT_EQ(unsigned((ymd.year() / ymd.month() / std::chrono::last).day()), Date::GetDaysInMonth(y, m));
        ASSERT_EQ(ymd.year().is_leap(), Date::IsLeapYear(y));
        Date moved(std::uint32_t(y), (unsigned char)m, (unsigned char)d);
        if (point + days{400} <= lastDay)
        {
            ASSERT_EQ(OK, moved.Add(Date::Days(400)));
            ASSERT_EQ(year_month_day{point + days{400}}, year_month_day(year(int(moved.GetYear())), month(moved.GetMonth()), std::chrono::day(moved.GetDay())));
            ASSERT_EQ(OK, moved.Subtract(Date::Days(400)));
            ASSERT_EQ(Date(y, (unsigned char)m, (unsigned char)d), moved);
        }
    }
}

// Invalid dates give the documented answers; Add and Subtract stop at the
// ends of the years a date can hold; names.
TEST(DateTimeFieldTest, CalendarEdges)
{
    EXPECT_EQ(0u, Date::GetDaysInMonth(2024, 0) + Date::GetDaysInMonth(2024, 13));
    EXPECT_EQ(7u, Date::GetDayOfWeek(2023, 2, 29));
    EXPECT_EQ(0u, Date::GetDayOfYear(2024, 3, 0) + Date::GetWeekOfYear(2024, 13, 1) + Date::ConvertGregorianToJulianDate(32768, 1, 1));
    EXPECT_EQ(1u, Date::GetWeekOfYear(2024, 12, 30)); // in week 1 of 2025
    EXPECT_EQ(53u, Date::GetWeekOfYear(2021, 1, 3));  // in week 53 of 2020
    std::uint32_t y = 9;
    unsigned char m = 9, d = 9;
    EXPECT_EQ(RANGE, Date::ConvertJulianToGregorianDate(1721059, y, m, d)); // the day before 0000-01-01
    EXPECT_EQ(RANGE, Date::ConvertJulianToGregorianDate(Date::ConvertGregorianToJulianDate(32767, 12, 31) + 1, y, m, d));
    EXPECT_TRUE(y == 9 && m == 9 && d == 9);
    Date date(32767, 12, 31), start(0, 1, 1), dayZero, march(2024, 3, 1);
    EXPECT_EQ(RANGE, date.Add(Date::Days(1)) | start.Subtract(Date::Days(1)) | start.Add(Date::Days(-1)));
    EXPECT_EQ(OK, date.Add(Date::Days(0)) | march.Subtract(Date::Days(1)));
    EXPECT_EQ(NOT_INITIALIZED, dayZero.Add(Date::Days(1)));
    dayZero.DeserializeBody("\x60\xD0\x0F", 3); // 2024-03-00
    EXPECT_EQ(PARAMETER, dayZero.Subtract(Date::Days(1)));
    EXPECT_EQ("32767-12-31 0000-01-01 2024-03-00 2024-02-29", date.ToString() + " " + start.ToString() + " " + dayZero.ToString() + " " + march.ToString());
    EXPECT_EQ("Sunday Saturday Unknown January December Unknown Unknown",
              std::string(Date::DayOfWeekToString(0)) + " " + Date::DayOfWeekToString(6) + " " + Date::DayOfWeekToString(7) + " " +
                  Date::MonthToString(1) + " " + Date::MonthToString(12) + " " + Date::MonthToString(0) + " " + Date::MonthToString(13));
}

// Setters refuse what the wire cannot carry and change nothing then; the
// constructors throw instead.
TEST(DateTimeFieldTest, SettersAndConstructors)
{
    Date date;
    Time time;
    EXPECT_EQ(0u, date.GetYear() + date.GetMonth() + date.GetDay() + time.GetHour() + time.GetMinute() + time.GetSecond() + time.GetMillisecond());
    EXPECT_EQ(RANGE, date.Set(Date::MAX_YEAR + 1, 1, 1) | date.Set(2024, 2, 30) | date.Set(2024, 1, 0) | date.Set(2024, 13, 1));
    EXPECT_EQ(RANGE, time.Set(24, 0, 0) | time.Set(0, 60, 0) | time.Set(0, 0, 60) | time.Set(0, 0, 0, 1000));
    EXPECT_FALSE(date.IsInitialized() || time.IsInitialized());
    EXPECT_EQ(OK, date.Set(Date::MAX_YEAR, 12, 31) | time.Set(23, 59, 59, 999));
    EXPECT_EQ(Date::MAX_YEAR * 10000 + 1231, date.GetYear() * 10000 + date.GetMonth() * 100 + date.GetDay());
    EXPECT_EQ(235959999u, ((time.GetHour() * 100u + time.GetMinute()) * 100 + time.GetSecond()) * 1000 + time.GetMillisecond());
    EXPECT_THROW(Date(2023, 2, 29), StatusCodeException);
    EXPECT_THROW(Time(12, 0, 0, 1000), StatusCodeException);
    EXPECT_THROW(DateTime(Date(), time), StatusCodeException);
    EXPECT_THROW(DateTime(date, Time()), StatusCodeException);
    EXPECT_EQ("[NotInitialized] [NotInitialized]", Time().ToString(true) + " " + DateTime().ToString(true));
    DateTime both(date, time);
    EXPECT_EQ("32767-12-31 23:59:59.999", both.ToString(true));
    both.Reset();
    EXPECT_FALSE(both.IsInitialized() || both.GetDate().IsInitialized() || both.GetTime().IsInitialized());
}

// Compare and IsDifferent against bodies, and the static Compare.
TEST(DateTimeFieldTest, Comparisons)
{
    struct Row { int line; unsigned char type; const char* text; Bytes body; int order; };
    for (const Row& row : std::initializer_list<Row>{
             {__LINE__, D, "2024-02-29", {0x5D, 0xD0, 0x0F}, 0}, {__LINE__, D, "2024-02-28", {0x5D, 0xD0, 0x0F}, -1},
             {__LINE__, D, "2024-03-01", {0x5D, 0xD0, 0x0F}, 1}, {__LINE__, D, "2025-01-01", {0x9F, 0xD1, 0x0F}, 1},
             {__LINE__, T, "12:34:56.789", {0x86, 0x2B, 0xC4, 0x4C}, 0}, {__LINE__, T, "12:34:56", {0x86, 0x2B, 0xC4, 0x4C}, -1},
             {__LINE__, T, "12:34:56.001", {12, 34, 56}, 1}, {__LINE__, T, "12:35:00", {12, 34, 59}, 1},
             {__LINE__, T, "13:00:00", {12, 59, 59}, 1}, {__LINE__, T, "12:34:55.999", {12, 34, 56}, -1},
             {__LINE__, DT, "2024-02-29 12:34:56", {0x5D, 0xD0, 0x0F, 12, 34, 56}, 0},
             {__LINE__, DT, "2024-02-28 23:59:59.999", {0x5D, 0xD0, 0x0F, 0, 0, 0}, -1},
             {__LINE__, DT, "2024-02-29 12:34:56.001", {0x5D, 0xD0, 0x0F, 12, 34, 56}, 1}})
    {
        SCOPED_TRACE(row.line);
        const auto value = Parse(row.type, row.text), empty = Make(row.type);
        const unsigned size = unsigned(row.body.size());
        int result = 99;
        bool different = row.order == 0, nothingDifferent = false, emptyDifferent = false, emptiesDifferent = true;
        EXPECT_EQ(OK, value->Compare(row.body.data(), size, result) | value->IsDifferent(row.body.data(), size, different));
        EXPECT_EQ((std::pair{row.order, row.order != 0}), (std::pair{result, different}));
        unsigned char own[8];
        unsigned written = 0;
        value->SerializeBody(own, ANY, written);
        using BodyCompare = StatusCode (*)(const void*, unsigned, const void*, unsigned, int&) noexcept;
        const BodyCompare Static = row.type == D ? BodyCompare(&Date::Compare) : row.type == T ? BodyCompare(&Time::Compare) : BodyCompare(&DateTime::Compare);
        EXPECT_EQ(OK, Static(row.body.data(), size, own, written, result));
        EXPECT_EQ(PARAMETER, Static(own, written, row.body.data(), 2, result) | Static(row.body.data(), 2, own, written, result));
        EXPECT_EQ(-row.order, result);
        // A body of length 0 stands for a value that holds nothing.
        EXPECT_EQ(OK, value->IsDifferent(nullptr, 0, nothingDifferent) | empty->IsDifferent(row.body.data(), size, emptyDifferent) | empty->IsDifferent(nullptr, 0, emptiesDifferent));
        EXPECT_TRUE(nothingDifferent && emptyDifferent && !emptiesDifferent);
        EXPECT_EQ(NOT_INITIALIZED, empty->Compare(row.body.data(), size, result));
    }
    bool different = false;
    EXPECT_EQ(FORMAT, Parse(T, "00:00:00")->IsDifferent("\x07\xCF\xDF\x77", 4, different));
}

// The conversion matrix of the three types, through the factory too.
TEST(DateTimeFieldTest, Conversions)
{
    const auto stamp = Parse(DT, "2024-02-29 12:34:56.789");
    struct Row { int line; unsigned char target; const IFieldType* source; StatusCode status; const char* result = nullptr; };
    const auto date = Parse(D, "2000-01-01"), time = Parse(T, "00:00:01"), none = Make(DT);
    for (const Row& row : std::initializer_list<Row>{
             {__LINE__, D, stamp.get(), OK, "2024-02-29"}, {__LINE__, T, stamp.get(), OK, "12:34:56.789"},
             {__LINE__, DT, stamp.get(), OK, "2024-02-29 12:34:56.789"}, {__LINE__, D, date.get(), OK, "2000-01-01"},
             {__LINE__, T, time.get(), OK, "00:00:01.000"}, {__LINE__, D, none.get(), OK, "[NotInitialized]"},
             {__LINE__, T, none.get(), OK, "[NotInitialized]"}, {__LINE__, DT, none.get(), OK, "[NotInitialized]"}})
    {
        const auto value = Parse(row.target, Known(row.target));
        EXPECT_EQ(row.status, value->Convert(row.source)) << row.line;
        EXPECT_EQ(row.status == OK ? row.result : Known(row.target), Text(*value)) << row.line;
    }
}

TEST(DateTimeFieldTest, DurationText)
{
    struct Row { int line; std::uint64_t milliseconds; const char* text; };
    for (const Row& row : std::initializer_list<Row>{
             {__LINE__, 0, "00:00:00:000"}, {__LINE__, 86399999, "23:59:59:999"}, {__LINE__, 86400000, "1 day 00:00:00:000"},
             {__LINE__, 90061001, "1 day 01:01:01:001"}, {__LINE__, 2 * 86400000ull + 3723004, "2 days 01:02:03:004"},
             {__LINE__, 0xFFFFFFFFFFFFFFFFull, "213503982334 days 14:25:51:615"}})
        EXPECT_EQ(row.text, Time::Milliseconds(row.milliseconds).ToString()) << row.line;
}

// The clock: UTC agrees with std::chrono (read before and after), and
// local minus UTC is the time zone offset.
TEST(DateTimeFieldTest, Clock)
{
    const auto Seconds = [](const DateTime& v) {
        const auto day = sys_days{year(int(v.GetDate().GetYear())) / int(v.GetDate().GetMonth()) / int(v.GetDate().GetDay())};
        return (day.time_since_epoch() + hours(v.GetTime().GetHour()) + minutes(v.GetTime().GetMinute()) + seconds(v.GetTime().GetSecond())).count();
    };
    const auto before = floor<seconds>(system_clock::now()).time_since_epoch().count();
    const DateTime utc = DateTime::CreateUtcDateTime(false), local = DateTime::CreateLocalDateTime(true);
    const auto after = floor<seconds>(system_clock::now()).time_since_epoch().count();
    EXPECT_TRUE(before <= Seconds(utc) && Seconds(utc) <= after && utc.GetTime().GetMillisecond() == 0);
    EXPECT_NEAR(double(DateTime::GetTimeZoneOffset()), double(Seconds(local) - Seconds(utc)), 2.0);
    EXPECT_EQ(Time::GetTimeZoneOffset(), DateTime::GetTimeZoneOffset());
    EXPECT_TRUE(Date::CreateUtcDate().IsInitialized() && Date::CreateLocalDate().IsInitialized());
    EXPECT_TRUE(Time::CreateUtcTime(true).IsInitialized() && Time::CreateLocalTime(false).GetMillisecond() == 0);
}
