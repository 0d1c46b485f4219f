// UInt, SInt, Boolean, Rational and TRational: exact wire bytes of every
// width and denominator family in both byte orders, round trips at the
// boundaries through every form and through text, every reading and
// writing failure (value, cursor and builder left alone), text forms,
// arithmetic limits, exact comparisons, the denominator look-ups, the
// conversion matrix of the five types, and encoding on four threads.
// Values are written in their own text form ("-0.05", "1 1/4<+-+>").
#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Boolean.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/FieldTypeFactory.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/TRational.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/UInt.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace Zantor {
namespace {

using Bytes = std::vector<unsigned char>;
using R = Rational;
using T = TRational;
using D = Rational::Denominator;
using Endian = MessageHandler::Endian;
constexpr Endian LE = MessageHandler::ENDIAN_LITTLE, BE = MessageHandler::ENDIAN_BIG;
constexpr StatusCode OK = STATUS_CODE_SUCCESS, PARAM = STATUS_CODE_INVALID_PARAMETER, RANGE = STATUS_CODE_OUT_OF_RANGE,
                     FORMAT = STATUS_CODE_INVALID_FORMAT, LENGTH = STATUS_CODE_INVALID_LENGTH, FAIL = STATUS_CODE_FAILURE,
                     MISMATCH = STATUS_CODE_MISMATCH, NI = STATUS_CODE_NOT_INITIALIZED;
constexpr unsigned char U = FIELD_TYPE_UINT, S = FIELD_TYPE_SINT, RA = FIELD_TYPE_RATIONAL, TR = FIELD_TYPE_TRATIONAL,
                        B = FIELD_TYPE_BOOLEAN;
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max(), kMin = std::numeric_limits<std::int64_t>::min();

enum Form { BODY, RECORD, UPDATE };
const char* const kFormNames[] = {"body", "record", "update"};

// A value of type from its text; the empty text gives one that is not
// initialized.
std::unique_ptr<IFieldType> Value(unsigned char type, const std::string& text)
{
    std::unique_ptr<IFieldType> value(FieldTypeFactory::GetInstance().Create(type));
    MessageValidator reader(text.data(), static_cast<unsigned>(text.size()));
    if (!text.empty())
    {
        EXPECT_EQ(OK, value->FromString(reader)) << text;
    }
    return value;
}

// A value that reads successfully, so that a failure must leave it as is.
std::string Preset(unsigned char type) { return type == B ? "true" : type == TR ? "7<+==>" : "7"; }

Bytes Write(const IFieldType& field, Form form, unsigned length, Endian endian, StatusCode& status, unsigned* written = nullptr)
{
    MessageBuilder builder;
    builder.SetEndian(endian);
    unsigned char body[16];
    unsigned bodyLength = 0;
    if (form == BODY)
        status = field.SerializeBody(body, length, bodyLength);
    else
        status = form == RECORD ? field.Serialize(builder, length) : field.SerializeLengthAndBody(builder, length);
    if (written != nullptr)
        *written = bodyLength;
    if (form == BODY)
        return status == OK ? Bytes(body, body + bodyLength) : Bytes();
    return Bytes(builder.GetBuffer(), builder.GetBuffer() + builder.GetLength());
}

StatusCode Read(IFieldType& field, Form form, const Bytes& bytes, unsigned length, Endian endian, unsigned& cursor)
{
    MessageValidator validator(bytes.data(), static_cast<unsigned>(bytes.size()));
    validator.SetEndian(endian);
    const StatusCode status = form == BODY     ? field.DeserializeBody(bytes.data(), static_cast<unsigned>(bytes.size()))
                              : form == RECORD ? field.Deserialize(validator, length)
                                               : field.DeserializeLengthAndBody(validator, length);
    cursor = form == BODY ? (status == OK ? static_cast<unsigned>(bytes.size()) : 0) : validator.GetCursor();
    return status;
}

// value written in every form and byte order (bodies and records also 8
// bytes wide for the integers) reads back as itself, the cursor just past
// it; its body is not different from it; its text reads back as itself.
void ExpectRoundTrip(const IFieldType& value)
{
    const bool integer = value.GetType() == U || value.GetType() == S;
    const unsigned shortest = value.GetSerializedLength();
    for (Endian endian : {LE, BE})
        for (Form form : {BODY, RECORD, UPDATE})
            for (unsigned length : {form == UPDATE ? 10 : shortest, integer && form != UPDATE ? 8 : shortest})
            {
                SCOPED_TRACE(value.ToString() + " as " + kFormNames[form] + " of " + std::to_string(length) + (endian ? " BE" : " LE"));
                StatusCode status;
                const Bytes bytes = Write(value, form, length, endian, status);
                ASSERT_EQ(OK, status);
                EXPECT_EQ((form == UPDATE && integer ? 1 : 0) + (form == UPDATE || !integer ? shortest : length), bytes.size());
                const std::unique_ptr<IFieldType> back = Value(value.GetType(), "");
                unsigned cursor = 0;
                EXPECT_EQ(OK, Read(*back, form, bytes, length, endian, cursor));
                EXPECT_EQ(bytes.size(), cursor);
                EXPECT_EQ(value.ToString(), back->ToString());
            }
    unsigned char body[16];
    unsigned written = 0;
    bool different = true;
    ASSERT_EQ(OK, value.SerializeBody(body, value.GetSerializedBodyLength(), written));
    EXPECT_EQ(OK, value.IsDifferent(body, written, different));
    EXPECT_FALSE(different);
    EXPECT_EQ(value.ToString(), Value(value.GetType(), value.ToString())->ToString());
}

struct Vector { unsigned char type; const char* value; Form form; unsigned length; Endian endian; Bytes bytes; };

TEST(NumericField, WireVectorsOfEveryWidthAndFamilyInBothByteOrders)
{
    const Vector vectors[] = {
        {U, "255", UPDATE, 8, LE, {1, 0xFF}}, {U, "256", UPDATE, 8, LE, {2, 0x00, 0x01}}, {U, "256", UPDATE, 8, BE, {2, 0x01, 0x00}},
        {U, "300", UPDATE, 2, LE, {2, 0x2C, 0x01}}, {U, "65535", UPDATE, 8, LE, {2, 0xFF, 0xFF}},
        {U, "65536", UPDATE, 8, LE, {4, 0x00, 0x00, 0x01, 0x00}}, {U, "65536", UPDATE, 8, BE, {4, 0x00, 0x01, 0x00, 0x00}},
        {U, "4294967296", UPDATE, 8, LE, {8, 0, 0, 0, 0, 1, 0, 0, 0}}, {U, "4294967296", UPDATE, 8, BE, {8, 0, 0, 0, 1, 0, 0, 0, 0}},
        {U, "300", RECORD, 4, LE, {0x2C, 0x01, 0x00, 0x00}}, {U, "300", RECORD, 4, BE, {0x00, 0x00, 0x01, 0x2C}},
        {U, "300", RECORD, 3, LE, {0x2C, 0x01, 0x00}}, {U, "300", RECORD, 3, BE, {0x00, 0x01, 0x2C}},
        {U, "258", RECORD, 5, BE, {0, 0, 0, 1, 2}}, {U, "16909060", RECORD, 6, LE, {4, 3, 2, 1, 0, 0}},
        {U, "5", RECORD, 7, BE, {0, 0, 0, 0, 0, 0, 5}}, {U, "300", BODY, 2, BE, {0x2C, 0x01}}, // a buffer is little-endian
        {S, "-128", UPDATE, 8, LE, {1, 0x80}}, {S, "-129", UPDATE, 8, LE, {2, 0x7F, 0xFF}}, {S, "-129", UPDATE, 8, BE, {2, 0xFF, 0x7F}},
        {S, "32767", UPDATE, 8, LE, {2, 0xFF, 0x7F}}, {S, "-32768", UPDATE, 8, LE, {2, 0x00, 0x80}}, {S, "-32769", UPDATE, 8, LE, {4, 0xFF, 0x7F, 0xFF, 0xFF}},
        {S, "2147483647", UPDATE, 8, LE, {4, 0xFF, 0xFF, 0xFF, 0x7F}}, {S, "-2147483648", UPDATE, 8, BE, {4, 0x80, 0, 0, 0}},
        {S, "2147483648", UPDATE, 8, LE, {8, 0, 0, 0, 0x80, 0, 0, 0, 0}},
        {S, "-9223372036854775808", UPDATE, 8, BE, {8, 0x80, 0, 0, 0, 0, 0, 0, 0}},
        {S, "-1", RECORD, 3, BE, {0xFF, 0xFF, 0xFF}}, {S, "-2", RECORD, 5, LE, {0xFE, 0xFF, 0xFF, 0xFF, 0xFF}},
        {S, "-300", RECORD, 6, BE, {0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 0xD4}}, {S, "127", RECORD, 7, LE, {0x7F, 0, 0, 0, 0, 0, 0}},
        {S, "-2", BODY, 8, BE, {0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {B, "true", UPDATE, 1, BE, {1}}, {B, "false", RECORD, 1, LE, {0}}, {B, "true", BODY, 1, LE, {1}},
        {RA, "-0.05", UPDATE, 9, LE, {0x82, 0x05}}, {RA, "300", UPDATE, 9, LE, {0x20, 0x2C, 0x01}},
        {RA, "300", RECORD, 9, BE, {0x20, 0x01, 0x2C}}, {RA, "7.0000", BODY, 9, BE, {0x44, 0x70, 0x11, 0x01, 0x00}},
        {RA, "7.0000", UPDATE, 9, BE, {0x44, 0x00, 0x01, 0x11, 0x70}}, {RA, "12*10^3", UPDATE, 2, LE, {0x0C, 0x0C}},
        {RA, "-9223372036854775807*10^9", RECORD, 9, LE, {0xF2, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F}},
        {RA, "-9223372036854775807*10^9", UPDATE, 9, BE, {0xF2, 0x7F, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {RA, "-3/4", UPDATE, 9, LE, {0x94, 0x03}}, {RA, "511/512", RECORD, 3, BE, {0x3B, 0x01, 0xFF}},
        {RA, "511/512", BODY, 3, BE, {0x3B, 0xFF, 0x01}}, {RA, "[CabinetValue]", UPDATE, 2, LE, {0x1C, 0x00}},
        {RA, "[UndefinedValue]", BODY, 2, LE, {0x1D, 0x00}}, {TR, "0.05<+-+>", UPDATE, 10, LE, {0x02, 0x05, 0x19}},
        {TR, "300< = >", RECORD, 10, BE, {0x20, 0x01, 0x2C, 0x33}}, {TR, "-1 1/4<-+=>", BODY, 10, LE, {0x94, 0x05, 0x24}},
    };
    for (const Vector& v : vectors)
    {
        SCOPED_TRACE(std::string(FieldTypeToString(v.type)) + " " + v.value + " as " + kFormNames[v.form] + " of " +
                     std::to_string(v.length) + (v.endian ? " BE" : " LE"));
        StatusCode status;
        EXPECT_EQ(v.bytes, Write(*Value(v.type, v.value), v.form, v.length, v.endian, status));
        EXPECT_EQ(OK, status);
        const std::unique_ptr<IFieldType> back = Value(v.type, Preset(v.type));
        unsigned cursor;
        EXPECT_EQ(OK, Read(*back, v.form, v.bytes, v.length, v.endian, cursor));
        EXPECT_EQ(v.bytes.size(), cursor);
        EXPECT_EQ(v.value, back->ToString());
    }
}

TEST(NumericField, RoundTripsAtTheBoundaryOfEveryWidthAndCode)
{
    std::vector<std::int64_t> values = {0, kMax, kMin, -1};
    for (int k : {7, 8, 15, 16, 31, 32, 62})
        for (std::int64_t delta : {-1, 0, 1})
            for (std::int64_t sign : {1, -1})
                values.push_back(sign * (std::int64_t{1} << k) + delta);
    for (std::int64_t value : values)
    {
        ExpectRoundTrip(UInt(static_cast<std::uint64_t>(value)));
        ExpectRoundTrip(SInt(value));
    }
    ExpectRoundTrip(Boolean(true));
    ExpectRoundTrip(Boolean(false));
    for (std::uint32_t code = 0; code < R::DENOMINATOR_COUNT; ++code)
        for (std::int64_t numerator : std::vector<std::int64_t>{0, 1, -1, 255, 256, -65535, 65536, 1LL << 31, -(1LL << 32), kMax, -kMax})
            if (code < R::DENOMINATOR_CABINET || numerator == 0)
            {
                const T value(numerator, static_cast<D>(code), static_cast<T::Tick>(1 + code % 3),
                              static_cast<T::Trend>(code % 4), static_cast<T::Trend>(numerator & 3));
                ExpectRoundTrip(value.GetRational());
                ExpectRoundTrip(value);
            }
}

// validate: what IFieldType::ValidateSerializedLengthAndBody says of an update.
struct Failure { unsigned char type; Form form; Bytes bytes; unsigned length; StatusCode status, validate = OK; };

TEST(NumericField, ReadingFailuresLeaveValueAndCursor)
{
    const Bytes zero8 = {0, 0, 0, 0, 0, 0, 0, 0x80}, ones8 = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    auto with = [](Bytes head, const Bytes& tail) { head.insert(head.end(), tail.begin(), tail.end()); return head; };
    const Failure failures[] = {
        {U, BODY, {}, 0, PARAM}, {S, BODY, {1, 2, 3, 4, 5, 6, 7, 8, 9}, 0, PARAM}, {U, RECORD, {1}, 0, PARAM},
        {U, RECORD, {1, 2, 3, 4, 5, 6, 7, 8, 9}, 9, PARAM}, {S, RECORD, {1, 2, 3}, 4, PARAM}, {U, UPDATE, {1, 5}, 0, PARAM},
        {U, UPDATE, {}, 8, PARAM, PARAM}, {S, UPDATE, {0, 5}, 8, RANGE, RANGE}, {U, UPDATE, {3, 1, 2, 3}, 2, RANGE, OK},
        {U, UPDATE, {9, 1, 2, 3, 4, 5, 6, 7, 8, 9}, 255, RANGE, RANGE}, {S, UPDATE, {4, 1, 2, 3}, 8, PARAM, PARAM},
        {U, UPDATE, {1}, 8, PARAM, PARAM}, {B, BODY, {}, 0, PARAM}, {B, BODY, {1, 1}, 0, PARAM}, {B, RECORD, {1}, 2, PARAM},
        {B, RECORD, {}, 1, PARAM}, {B, UPDATE, {1}, 0, PARAM, OK}, {B, UPDATE, {}, 1, PARAM, PARAM},
        {RA, BODY, {}, 0, PARAM}, {RA, BODY, {0x00}, 0, PARAM}, {RA, BODY, {0x00, 5, 9}, 0, PARAM}, {RA, BODY, {0x1E, 0}, 0, FORMAT},
        {RA, BODY, {0x1D, 1}, 0, RANGE}, {RA, BODY, {0x3C, 0, 1}, 0, RANGE}, {RA, BODY, with({0x60}, zero8), 0, RANGE},
        {RA, BODY, with({0xE0}, zero8), 0, RANGE}, {RA, BODY, with({0x60}, ones8), 0, RANGE},
        {RA, UPDATE, {}, 10, PARAM, PARAM}, {RA, UPDATE, {0x20, 0x2C}, 10, PARAM, PARAM}, {RA, UPDATE, {0x1F, 0}, 10, FORMAT, FORMAT},
        {RA, UPDATE, {0x1C, 1}, 10, RANGE, RANGE}, {RA, UPDATE, with({0xE0}, zero8), 10, RANGE, RANGE},
        {RA, UPDATE, {0x20, 0x2C, 0x01}, 2, RANGE, OK}, {RA, RECORD, {0x1E, 0}, 9, FORMAT}, {RA, RECORD, {0x00}, 9, PARAM},
        {TR, BODY, {}, 0, PARAM}, {TR, BODY, {0x02, 5}, 0, PARAM}, {TR, BODY, {0x02, 5, 0x00}, 0, FORMAT},
        {TR, BODY, {0x02, 5, 0x50}, 0, FORMAT}, {TR, BODY, {0x02, 5, 0x90}, 0, FORMAT}, {TR, BODY, {0x20, 5, 0, 0x10, 0}, 0, PARAM},
        {TR, UPDATE, {0x02, 5, 0x00}, 10, FORMAT, FORMAT}, {TR, UPDATE, {0x02, 5}, 10, PARAM, PARAM},
        {TR, UPDATE, {0x1C, 1, 0x10}, 10, RANGE, RANGE}, {TR, UPDATE, {0x1E, 0, 0x10}, 10, FORMAT, FORMAT},
        {TR, RECORD, {0x20, 0x2C, 0x01, 0x10}, 3, RANGE}, {TR, RECORD, {0x02, 5, 0x0F}, 10, FORMAT},
    };
    for (const Failure& f : failures)
    {
        SCOPED_TRACE(std::string(FieldTypeToString(f.type)) + " " + kFormNames[f.form] + " of " + std::to_string(f.bytes.size()) +
                     " bytes, first " + (f.bytes.empty() ? "-" : std::to_string(f.bytes[0])) + ", length " + std::to_string(f.length));
        const std::unique_ptr<IFieldType> field = Value(f.type, Preset(f.type));
        unsigned cursor;
        EXPECT_EQ(f.status, Read(*field, f.form, f.bytes, f.length, LE, cursor));
        EXPECT_EQ(0u, cursor);
        EXPECT_EQ(Preset(f.type), field->ToString());
        if (f.form == UPDATE && f.length != 0)
        {
            MessageValidator validator(f.bytes.data(), static_cast<unsigned>(f.bytes.size()));
            unsigned offset = 77, length = 77;
            EXPECT_EQ(f.validate, IFieldType::ValidateSerializedLengthAndBody(f.type, validator, offset, length));
            EXPECT_EQ(f.validate == OK ? f.bytes.size() : 0u, validator.GetCursor());
            EXPECT_EQ(f.validate != OK ? 77u : f.type == U ? 1u : 0u, offset);
        }
    }
}

TEST(NumericField, OddButValidBodiesRead)
{
    struct Row { unsigned char type; Bytes body; const char* value; };
    for (const Row& r : {Row{S, {0xFF}, "-1"}, Row{U, {0xFF}, "255"}, Row{S, {0x00, 0x80}, "-32768"}, Row{U, {0x00, 0x80}, "32768"},
                         Row{S, {0xFF, 0xFF, 0xFF}, "-1"}, Row{U, {0xFF, 0xFF, 0xFF}, "16777215"}, Row{U, {0, 0, 0, 0x80}, "2147483648"},
                         Row{S, {0, 0, 0, 0, 0x80}, "-549755813888"}, Row{U, {0, 0, 0, 0, 0, 0x80}, "140737488355328"},
                         Row{S, {0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, "-2"}, Row{B, {5}, "true"},
                         Row{RA, {0x9D, 0x00}, "[UndefinedValue]"}, Row{RA, {0x80, 0x00}, "0"}, Row{RA, {0x41, 5, 0, 0, 0}, "0.5"},
                         Row{RA, {0x60, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F}, "9223372036854775807"},
                         Row{TR, {0x02, 5, 0x10}, "0.05<+==>"}})
    {
        SCOPED_TRACE(r.value);
        const std::unique_ptr<IFieldType> field = Value(r.type, "");
        EXPECT_EQ(OK, field->DeserializeBody(r.body.data(), static_cast<unsigned>(r.body.size())));
        EXPECT_EQ(r.value, field->ToString());
    }
}

TEST(NumericField, ValidateReportsTheBodyAndRefusesOtherCodes)
{
    const unsigned char bytes[] = {9, 3, 0xAA, 0xBB, 0xCC, 0x01, 0x20, 0x2C, 0x01, 0x02, 0x05, 0x19};
    MessageValidator validator(bytes, sizeof bytes);
    validator.ValidateBytes(1);
    unsigned offset = 0, length = 0;
    for (auto [type, expectedOffset, expectedLength] : {std::tuple{S, 2u, 3u}, std::tuple{B, 5u, 1u}, std::tuple{RA, 6u, 3u},
                                                        std::tuple{TR, 9u, 3u}})
    {
        EXPECT_EQ(OK, IFieldType::ValidateSerializedLengthAndBody(type, validator, offset, length));
        EXPECT_EQ(expectedOffset, offset);
        EXPECT_EQ(expectedLength, length);
    }
    EXPECT_TRUE(validator.IsAtEnd());
    MessageValidator other(bytes, sizeof bytes);
    EXPECT_EQ(PARAM, IFieldType::ValidateSerializedLengthAndBody(14, other, offset, length));
}

TEST(NumericField, WritingFailuresWriteNothing)
{
    // written: what SerializeBody reports
    struct Row { unsigned char type; const char* value; Form form; unsigned length; StatusCode status; unsigned written = 0; };
    for (const Row& r : {Row{U, "", BODY, 8, NI, 8}, Row{S, "", RECORD, 8, NI}, Row{S, "", UPDATE, 8, NI}, Row{B, "", UPDATE, 1, NI}, Row{RA, "", UPDATE, 9, NI},
                         Row{TR, "", BODY, 10, NI}, Row{U, "300", RECORD, 1, PARAM}, Row{S, "-129", RECORD, 9, PARAM},
                         Row{S, "-129", UPDATE, 1, PARAM}, Row{U, "300", BODY, 1, PARAM, 1}, Row{S, "1", BODY, 9, PARAM, 9},
                         Row{B, "true", RECORD, 0, PARAM}, Row{B, "true", UPDATE, 0, PARAM}, Row{B, "true", BODY, 0, PARAM, 1},
                         Row{RA, "300", RECORD, 2, PARAM}, Row{RA, "300", BODY, 2, PARAM, 3}, Row{TR, "300<+++>", UPDATE, 3, PARAM},
                         Row{TR, "300<+++>", BODY, 3, PARAM, 4}})
    {
        SCOPED_TRACE(std::string(FieldTypeToString(r.type)) + " " + r.value + " as " + kFormNames[r.form] + " of " + std::to_string(r.length));
        StatusCode status;
        unsigned written = 0;
        EXPECT_TRUE(Write(*Value(r.type, r.value), r.form, r.length, LE, status, &written).empty());
        EXPECT_EQ(r.status, status);
        EXPECT_EQ(r.written, written);
    }
    EXPECT_EQ(0u, UInt().GetSerializedLength());
    EXPECT_EQ(0u, TRational().GetSerializedBodyLength());
}

TEST(NumericField, TextForms)
{
    // printed: nullptr for the text itself after success, the preset after a failure
    struct Row { unsigned char type; std::string text; StatusCode status; const char* printed = nullptr; };
    const Row rows[] = {
        {U, "18446744073709551615", OK}, {U, "18446744073709551616", RANGE}, {U, "007", OK, "7"}, {U, "", FORMAT},
        {U, "-1", FORMAT}, {U, "12x", LENGTH}, {U, "[NotInitialized]", OK}, {U, "[NotInitialized] ", LENGTH},
        {S, "-9223372036854775808", OK}, {S, "-9223372036854775809", RANGE}, {S, "9223372036854775808", RANGE},
        {S, "+5", OK, "5"}, {S, "-", FORMAT}, {S, "5 ", LENGTH}, {B, "TRUE", OK, "true"}, {B, "fAlSe", OK, "false"},
        {B, "yes", FORMAT}, {B, "true ", FORMAT}, {B, "tru", FORMAT}, {B, "[NotInitialized]", OK},
        {RA, "-0.05", OK}, {RA, "1.50", OK}, {RA, "0.000000001", OK}, {RA, "5 0/4", OK}, {RA, "0/4", OK}, {RA, "0 1/4", OK, "1/4"},
        {RA, "-1 1/4", OK}, {RA, "-1/4", OK}, {RA, "3/512", OK}, {RA, "12*10^3", OK}, {RA, "-7*10^9", OK}, {RA, "-0", OK, "0"},
        {RA, "[CabinetValue]", OK}, {RA, "[UndefinedValue]", OK}, {RA, "[NotInitialized]", OK}, {RA, "9223372036854775807", OK},
        {RA, "9223372036854775808", RANGE}, {RA, "-92233720368547758.08", RANGE}, {RA, "99999999999999999999", RANGE},
        {RA, "1/3", FORMAT}, {RA, "5/4", FORMAT}, {RA, "1/1", FORMAT}, {RA, "1.1234567890", FORMAT}, {RA, "", FORMAT},
        {RA, "1.5x", FORMAT}, {RA, "1*10^0", FORMAT}, {RA, "1*10^10", FORMAT}, {RA, "- 1", FORMAT}, {RA, "1.", FORMAT},
        {RA, ".5", FORMAT}, {RA, "1 /4", FORMAT}, {RA, "1 1/2 ", FORMAT}, {RA, "[CabinetValue]x", FORMAT}, {RA, "+1", FORMAT},
        {TR, "1.25<+-+>", OK}, {TR, "[CabinetValue]< = >", OK}, {TR, "[NotInitialized]", OK}, {TR, "1.25<=++>", FORMAT},
        {TR, "1.25", FORMAT}, {TR, "1.25<+-+", FORMAT}, {TR, "<+-+>", FORMAT}, {TR, "1.25<+?+>", FORMAT}, {TR, "1.25 <+-+>", FORMAT},
    };
    for (const Row& r : rows)
    {
        SCOPED_TRACE(std::string(FieldTypeToString(r.type)) + " \"" + r.text + "\"");
        const std::unique_ptr<IFieldType> field = Value(r.type, Preset(r.type));
        MessageValidator text(r.text.data(), static_cast<unsigned>(r.text.size()));
        EXPECT_EQ(r.status, field->FromString(text));
        EXPECT_EQ(r.status == OK ? r.text.size() : 0u, text.GetCursor());
        EXPECT_EQ(r.printed != nullptr ? r.printed : r.status == OK ? r.text : Preset(r.type), field->ToString());
    }
    // The text ends where the validator ends, not at a terminating zero.
    MessageValidator signedPrefix("-12345", 3), unsignedPrefix("123", 2);
    const std::unique_ptr<IFieldType> minusTwelve = Value(S, ""), twelve = Value(U, "");
    EXPECT_TRUE(minusTwelve->FromString(signedPrefix) == OK && twelve->FromString(unsignedPrefix) == OK);
    EXPECT_EQ("-12 12", minusTwelve->ToString() + " " + twelve->ToString());
    EXPECT_STREQ("true|false", Boolean().GetFromStringFormat());
    // Symbols: tick 0 and codes above 3 are "?"; trend 3 is a blank.
    EXPECT_EQ("?? ?", std::string(T::TickToString(T::TICK_INVALID)) + T::TickToString(static_cast<T::Tick>(4)) +
                          T::TrendToString(T::TREND_NONE) + T::TrendToString(static_cast<T::Trend>(4)));
}

template <typename X, typename... Compress>
StatusCode Apply(IFieldType& a, char op, const IFieldType& b, Compress... compress)
{
    X& x = static_cast<X&>(a);
    const X& y = static_cast<const X&>(b);
    switch (op)
    {
    case '+': return x.Add(y, compress...);
    case '-': return x.Subtract(y, compress...);
    case '*': return x.Multiply(y, compress...);
    default: return x.Divide(y, compress...);
    }
}

TEST(NumericField, ArithmeticAtItsLimits)
{
    // The value is unchanged after a failure; "" is a value that is not initialized.
    struct Row { unsigned char type; const char* a; char op; const char* b; StatusCode status; const char* result = ""; bool compress = false; };
    const char* const umax = "18446744073709551615";
    const char* const smax = "9223372036854775807";
    const char* const smin = "-9223372036854775808";
    const Row rows[] = {
        {U, umax, '+', "0", OK, umax}, {U, umax, '+', "1", RANGE}, {U, "18446744073709551614", '+', "1", OK, umax},
        {U, "5", '-', "5", OK, "0"}, {U, "5", '-', "6", RANGE}, {U, "4294967296", '*', "2147483648", OK, "9223372036854775808"},
        {U, "4294967296", '*', "4294967296", RANGE}, {U, "0", '*', umax, OK, "0"}, {U, "7", '*', "0", OK, "0"},
        {U, umax, '*', "1", OK, umax}, {U, "7", '/', "2", OK, "3"}, {U, "7", '/', "0", RANGE}, {U, "", '+', "1", NI}, {U, "1", '+', "", NI},
        {S, smax, '+', "1", RANGE}, {S, smin, '+', "-1", RANGE}, {S, smax, '+', smin, OK, "-1"}, {S, smin, '-', "1", RANGE},
        {S, "-1", '-', smax, OK, smin}, {S, "0", '-', smin, RANGE}, {S, smin, '*', "-1", RANGE},
        {S, "4611686018427387904", '*', "-2", OK, smin}, {S, "4611686018427387904", '*', "2", RANGE}, {S, smin, '/', "-1", RANGE},
        {S, "-7", '/', "2", OK, "-3"}, {S, "7", '/', "0", RANGE}, {S, "1", '*', "", NI},
        {RA, "1.25", '+', "0.5", OK, "1.75"}, {RA, "1.5", '+', "1.5", OK, "3", true}, {RA, "1/4", '+', "0.1", OK, "0.35"},
        {RA, smax, '+', "1", RANGE}, {RA, smax, '+', "0.1", RANGE}, {RA, "[CabinetValue]", '+', "1", PARAM},
        {RA, "1*10^3", '-', "1", OK, "999"}, {RA, "-9223372036854775807", '-', "1", RANGE},
        {RA, "-9223372036854775807", '-', smax, RANGE}, {RA, "1", '-', "[UndefinedValue]", PARAM},
        {RA, "1.5", '*', "1.5", OK, "2.25"}, {RA, "1.5", '*', "2", OK, "3.0"}, {RA, "1.5", '*', "2", OK, "3", true},
        {RA, "3*10^5", '*', "4*10^6", OK, "1200*10^9"}, {RA, "0.000000001", '*', "0.5", OK, "0.000000000"},
        {RA, "3/32", '*', "3/32", OK, "4/512"}, {RA, "1/4", '*', "0.1", OK, "0.025"}, {RA, "3/4", '*', "5", OK, "3 3/4"},
        {RA, smax, '*', "2", RANGE}, {RA, "4611686018427387904", '*', "-2", RANGE},
        {RA, "9223372036854775807*10^9", '*', "10*10^9", RANGE}, {RA, "1/512", '*', "922337203685477580.7", RANGE},
        {RA, "1", '/', "3", OK, "0"}, {RA, "5", '/', "-1", OK, "-5"}, {RA, "1.00", '/', "3", OK, "0.33"}, {RA, "5*10^3", '/', "2*10^3", OK, "2"},
        {RA, "1", '/', "0.00", RANGE}, {RA, "0.5", '/', "1/2", OK, "1.0"}, {RA, "0.5", '/', "1/2", OK, "1", true},
        {RA, "9223372036854775.807", '/', "1", RANGE}, {RA, "1", '/', "[CabinetValue]", PARAM}, {RA, "", '/', "1", NI},
        {RA, "1", '+', "", NI},
    };
    for (const Row& r : rows)
    {
        SCOPED_TRACE(std::string(FieldTypeToString(r.type)) + " " + r.a + " " + r.op + " " + r.b + (r.compress ? ", compressed" : ""));
        const std::unique_ptr<IFieldType> a = Value(r.type, r.a), b = Value(r.type, r.b);
        const std::string before = a->ToString();
        EXPECT_EQ(r.status, r.type == U ? Apply<UInt>(*a, r.op, *b) : r.type == S ? Apply<SInt>(*a, r.op, *b)
                                                                              : Apply<Rational>(*a, r.op, *b, r.compress));
        EXPECT_EQ(r.status == OK ? std::string(r.result) : before, a->ToString());
    }
}

// Two values in their shortest bodies: the static Compare of the bodies,
// the virtual Compare of the first value with the second body, and
// IsDifferent (which also looks at a TRational's codes) must agree.
TEST(NumericField, ComparesExactlyByValue)
{
    using Static = StatusCode (*)(const void*, unsigned int, const void*, unsigned int, int&);
    struct Row { unsigned char type; const char* a; const char* b; int order; };
    const Row rows[] = {
        {U, "65535", "256", 1}, {U, "5", "5", 0}, {S, "-1", "5", -1}, {S, "256", "-1", 1}, {B, "false", "true", -1},
        {B, "true", "true", 0}, {RA, "1/2", "0.5", 0}, {RA, "1/512", "0.002", -1},
        {RA, "9223372036854775807*10^9", "9223372036.854775807", 1}, {RA, "-1", "[UndefinedValue]", 1},
        {RA, "[CabinetValue]", "[UndefinedValue]", 1}, {RA, "[CabinetValue]", "[CabinetValue]", 0},
        {RA, "[UndefinedValue]", "[UndefinedValue]", 0}, {RA, "-9223372036854775807*10^9", "-9223372036854775807*10^8", -1},
        {RA, "-0.1", "0.000000001", -1}, {RA, "0.000", "0*10^2", 0}, {RA, "3*10^1", "30", 0},
        {RA, "9223372036.854775807", "9223372036.854775806", 1}, {RA, "-9223372036854775807", "9223372036854775807", -1},
        {RA, "-3/4", "-1", 1}, {RA, "9*10^9", "9000000000.000000000", 0}, {RA, "9*10^9", "9000000000.000000001", -1}, {TR, "0.5<+==>", "1/2<+==>", 0}, {TR, "0.25<+==>", "0.5<-++>", -1}, {TR, "0.5<+==>", "0.5<-==>", 0},
    };
    for (const Row& r : rows)
    {
        SCOPED_TRACE(std::string(r.a) + " against " + r.b);
        const std::unique_ptr<IFieldType> a = Value(r.type, r.a), b = Value(r.type, r.b);
        unsigned char bodyA[10], bodyB[10];
        unsigned lengthA = 0, lengthB = 0;
        ASSERT_EQ(OK, a->SerializeBody(bodyA, a->GetSerializedBodyLength(), lengthA));
        ASSERT_EQ(OK, b->SerializeBody(bodyB, b->GetSerializedBodyLength(), lengthB));
        const Static compare = r.type == U ? static_cast<Static>(UInt::Compare) : r.type == S ? static_cast<Static>(SInt::Compare)
                             : r.type == B ? static_cast<Static>(Boolean::Compare) : r.type == RA ? static_cast<Static>(Rational::Compare)
                                                                                   : static_cast<Static>(TRational::Compare);
        int order = 9, virtualOrder = 9;
        bool different = false;
        EXPECT_EQ(OK, compare(bodyA, lengthA, bodyB, lengthB, order));
        EXPECT_EQ(OK, a->Compare(bodyB, lengthB, virtualOrder));
        EXPECT_EQ(OK, a->IsDifferent(bodyB, lengthB, different));
        EXPECT_EQ(r.order, (order > 0) - (order < 0));
        EXPECT_EQ(r.order, (virtualOrder > 0) - (virtualOrder < 0));
        const bool codesDiffer = r.type == TR && std::string(std::strchr(r.a, '<')) != std::strchr(r.b, '<');
        EXPECT_EQ(r.order != 0 || codesDiffer, different);
    }
    const unsigned char five[] = {5, 0, 0, 0, 0, 0, 0, 0, 0};
    int order = 9;
    bool different = false;
    EXPECT_EQ(OK, UInt::Compare(five, 1, five, 8, order));
    EXPECT_EQ(0, order);
    EXPECT_EQ(PARAM, SInt::Compare(five, 1, five, 0, order));
    EXPECT_EQ(PARAM, UInt::Compare(five, 1, five, 9, order));
    EXPECT_EQ(PARAM, Boolean::Compare(five, 1, five, 2, order));
    EXPECT_EQ(FORMAT, TRational::Compare(five, 3, five, 3, order)); // tick 0
    EXPECT_EQ(OK, UInt(5).IsDifferent(nullptr, 0, different));
    EXPECT_TRUE(different);
    EXPECT_EQ(OK, Rational().IsDifferent(nullptr, 0, different));
    EXPECT_FALSE(different);
    EXPECT_EQ(PARAM, SInt(5).IsDifferent(five, 9, different));
    EXPECT_EQ(NI, UInt().Compare(five, 1, order));
    EXPECT_EQ(NI, Rational().Compare(R(1, R::DENOMINATOR_WHOLE), order));
    EXPECT_EQ(NI, Boolean(true).Compare(Boolean(), order));
    EXPECT_EQ(NI, SInt(1).Compare(SInt(), order));
    EXPECT_EQ(NI, UInt(1).Compare(UInt(), order));
}

TEST(NumericField, ToStringAtAnotherDenominator)
{
    const R price(125, R::DENOMINATOR_DECIMAL_2);
    EXPECT_EQ("1.2500", price.ToString(R::DENOMINATOR_DECIMAL_4));
    EXPECT_EQ("1 1/4", price.ToString(R::DENOMINATOR_BINARY_2));
    EXPECT_EQ("[CabinetValue]", R(0, R::DENOMINATOR_CABINET).ToString(R::DENOMINATOR_DECIMAL_1));
    EXPECT_EQ("[NotInitialized]", R().ToString(R::DENOMINATOR_DECIMAL_1));
    for (auto [target, status] : {std::pair{R::DENOMINATOR_DECIMAL_1, RANGE}, std::pair{static_cast<D>(30), PARAM},
                                  std::pair{R::DENOMINATOR_UNDEFINED, PARAM}})
        try
        {
            (void)price.ToString(target);
            ADD_FAILURE() << "no exception for code " << target;
        }
        catch (const StatusCodeException& e)
        {
            EXPECT_EQ(status, e.GetCode());
        }
}

TEST(NumericField, SettersAndNumeratorAndDivisor)
{
    R value(3, R::DENOMINATOR_DECIMAL_1);
    EXPECT_EQ(PARAM, value.Set(kMin, R::DENOMINATOR_WHOLE));
    EXPECT_EQ(PARAM, value.Set(1, static_cast<D>(30)));
    EXPECT_EQ(RANGE, value.Set(1, R::DENOMINATOR_CABINET));
    EXPECT_EQ("0.3", value.ToString());
    EXPECT_THROW(R(1, R::DENOMINATOR_UNDEFINED), StatusCodeException);
    EXPECT_THROW(T(1, R::DENOMINATOR_WHOLE, T::TICK_INVALID, T::TREND_UP, T::TREND_UP), StatusCodeException);
    T t;
    EXPECT_EQ(PARAM, t.SetSecondTrend(static_cast<T::Trend>(4)));
    EXPECT_EQ(PARAM, t.SetTick(static_cast<T::Tick>(4)));
    struct Row { const char* value; StatusCode status; std::int64_t scaled = 99; std::uint64_t divisor = 99; };
    for (const Row& r : {Row{"-1.5", OK, -15, 10}, Row{"-1 1/2", OK, -3, 2}, Row{"12*10^9", OK, 12000000000, 1},
                         Row{"1844674407370955161*10^1", RANGE}, Row{"[UndefinedValue]", RANGE}, Row{"[CabinetValue]", OK, 0, 1},
                         Row{"", NI}})
    {
        SCOPED_TRACE(r.value);
        std::uint64_t divisor = 99;
        std::int64_t scaled = 99;
        EXPECT_EQ(r.status, static_cast<R&>(*Value(RA, r.value)).GetNumeratorAndDivisor(scaled, divisor));
        EXPECT_EQ(r.scaled, scaled);
        EXPECT_EQ(r.divisor, divisor);
    }
}

TEST(NumericField, DenominatorLookUps)
{
    using LookUp = StatusCode (*)(std::uint64_t, D&);
    const LookUp places = [](std::uint64_t n, D& d) { return R::GetDenominatorByDecimalPlaces(static_cast<unsigned>(n), d); };
    const LookUp power = [](std::uint64_t n, D& d) { return R::GetDenominatorByDecimalPower(static_cast<unsigned>(n), d); };
    const LookUp binary = [](std::uint64_t n, D& d) { return R::GetDenominatorByBinaryPower(static_cast<unsigned>(n), d); };
    const LookUp multiplier = [](std::uint64_t n, D& d) { return R::GetDenominatorByMultiplierPower(static_cast<unsigned>(n), d); };
    // code 99: STATUS_CODE_NOT_FOUND
    struct Row { const char* name; LookUp lookUp; std::uint64_t argument; std::uint32_t code; };
    for (const Row& r : {Row{"places", places, 0, 0}, Row{"places", places, 9, 9}, Row{"places", places, 10, 99},
                         Row{"power", power, 3, 3}, Row{"power", power, 10, 99}, Row{"binary", binary, 0, 99},
                         Row{"binary", binary, 1, 19}, Row{"binary", binary, 9, 27}, Row{"binary", binary, 10, 99},
                         Row{"multiplier power", multiplier, 0, 99}, Row{"multiplier power", multiplier, 1, 10},
                         Row{"multiplier power", multiplier, 9, 18}, Row{"multiplier power", multiplier, 10, 99},
                         Row{"divisor", R::GetDenominatorByDivisor, 1, 0}, Row{"divisor", R::GetDenominatorByDivisor, 1000, 3},
                         Row{"divisor", R::GetDenominatorByDivisor, 512, 27}, Row{"divisor", R::GetDenominatorByDivisor, 2, 19},
                         Row{"divisor", R::GetDenominatorByDivisor, 0, 99}, Row{"divisor", R::GetDenominatorByDivisor, 1024, 99},
                         Row{"multiplier", R::GetDenominatorByMultiplier, 1, 0}, Row{"multiplier", R::GetDenominatorByMultiplier, 10, 10},
                         Row{"multiplier", R::GetDenominatorByMultiplier, 1000000000, 18},
                         Row{"multiplier", R::GetDenominatorByMultiplier, 0, 99}, Row{"multiplier", R::GetDenominatorByMultiplier, 2, 99}})
    {
        SCOPED_TRACE(std::string(r.name) + " " + std::to_string(r.argument));
        D d = static_cast<D>(77);
        EXPECT_EQ(r.code == 99 ? STATUS_CODE_NOT_FOUND : OK, r.lookUp(r.argument, d));
        EXPECT_EQ(r.code == 99 ? 77u : r.code, d);
    }
    EXPECT_EQ(3u, R::GetPlaces(R::DENOMINATOR_BINARY_7));
    EXPECT_EQ(0u, R::GetDivisor(static_cast<D>(30)));
}

TEST(NumericField, CommonDenominatorsScalingAndCompression)
{
    // common 99: STATUS_CODE_INVALID_PARAMETER
    struct Common { std::uint32_t a, b, common; };
    for (const Common& r : {Common{2, 5, 5}, Common{12, 10, 10}, Common{11, 0, 0}, Common{3, 13, 3}, Common{21, 23, 23},
                            Common{21, 0, 21}, Common{22, 2, 4}, Common{20, 3, 3}, Common{20, 11, 20}, Common{19, 10, 19}, Common{28, 2, 99},
                            Common{2, 29, 99}, Common{30, 0, 99}})
    {
        SCOPED_TRACE(std::to_string(r.a) + " and " + std::to_string(r.b));
        D common = static_cast<D>(77);
        EXPECT_EQ(r.common == 99 ? PARAM : OK, R::GetLowestCommonDenominator(static_cast<D>(r.a), static_cast<D>(r.b), common));
        EXPECT_EQ(r.common == 99 ? 77u : r.common, common);
    }
    struct Scale { std::int64_t numerator; std::uint32_t from, to; StatusCode status; std::int64_t scaled = 77; };
    for (const Scale& r : {Scale{125, 2, 4, OK, 12500}, Scale{12500, 4, 2, OK, 125}, Scale{125, 2, 1, RANGE},
                           Scale{3, 11, 0, OK, 300}, Scale{300, 0, 11, OK, 3}, Scale{1, 19, 1, OK, 5}, Scale{-1, 21, 3, OK, -125},
                           Scale{1, 22, 3, RANGE}, Scale{kMax, 0, 1, RANGE}, Scale{1LL << 62, 0, 19, RANGE},
                           Scale{-(1LL << 62), 0, 19, RANGE}, Scale{1, 29, 0, PARAM}, Scale{1, 0, 28, PARAM}})
    {
        SCOPED_TRACE(std::to_string(r.numerator) + " from code " + std::to_string(r.from) + " to " + std::to_string(r.to));
        std::int64_t scaled = 77;
        EXPECT_EQ(r.status, R::ScaleNumerator(r.numerator, static_cast<D>(r.from), static_cast<D>(r.to), scaled));
        EXPECT_EQ(r.scaled, scaled);
    }
    struct Compress { std::int64_t numerator; std::uint32_t code; std::int64_t toNumerator; std::uint32_t toCode; };
    for (const Compress& r : {Compress{1500, 3, 15, 1}, Compress{0, 5, 0, 0}, Compress{8, 21, 1, 0}, Compress{12, 21, 3, 19},
                              Compress{100, 0, 100, 0}, Compress{100, 11, 100, 11}, Compress{-120, 1, -12, 0},
                              Compress{0, 28, 0, 28}, Compress{5, 1, 5, 1}})
    {
        SCOPED_TRACE(std::to_string(r.numerator) + " over code " + std::to_string(r.code));
        std::int64_t numerator = r.numerator;
        D d = static_cast<D>(r.code);
        R::CompressNumeratorAndDenominator(numerator, d);
        EXPECT_EQ(r.toNumerator, numerator);
        EXPECT_EQ(r.toCode, d);
    }
}

// Each target starts holding a value, so that a failure shows it unchanged.
TEST(NumericField, ConversionMatrix)
{
    struct Row { unsigned char source; const char* value; unsigned char target; StatusCode status; const char* printed; };
    const char* const ni = "[NotInitialized]";
    const Row rows[] = {
        {U, "5", U, OK, "5"}, {U, "5", S, OK, "5"}, {U, "5", RA, OK, "5"}, {U, "5", TR, OK, "5<+==>"}, {U, "5", B, MISMATCH, "true"},
        {U, "9223372036854775808", S, RANGE, "7"}, {U, "9223372036854775808", RA, FAIL, "7"},
        {U, "9223372036854775807", S, OK, "9223372036854775807"}, {U, "", S, OK, ni}, {U, "", TR, OK, ni},
        {S, "-5", U, FAIL, "7"}, {S, "0", U, OK, "0"}, {S, "-5", RA, OK, "-5"}, {S, "-9223372036854775808", RA, PARAM, "7"},
        {S, "-9223372036854775808", TR, PARAM, "7<+==>"}, {S, "-9223372036854775808", S, OK, "-9223372036854775808"},
        {S, "", U, OK, ni}, {S, "", RA, OK, ni}, {RA, "-1.5", U, FAIL, "7"}, {RA, "-1.5", S, OK, "-1"}, {RA, "2.5", U, OK, "2"},
        {RA, "-7 3/4", S, OK, "-7"}, {RA, "9223372036854775807*10^9", U, RANGE, "7"}, {RA, "9223372036854775807*10^9", S, RANGE, "7"},
        {RA, "12*10^9", U, OK, "12000000000"}, {RA, "1844674407370955161*10^1", S, RANGE, "7"},
        {RA, "1844674407370955161*10^1", U, OK, "18446744073709551610"}, {RA, "-922337203685477580*10^1", S, OK, "-9223372036854775800"},
        {RA, "[UndefinedValue]", U, RANGE, "7"}, {RA, "[UndefinedValue]", S, RANGE, "7"},
        {RA, "[UndefinedValue]", TR, OK, "[UndefinedValue]<+==>"}, {RA, "[CabinetValue]", S, OK, "0"}, {RA, "", U, OK, ni},
        {RA, "", S, OK, ni}, {RA, "2.5", B, MISMATCH, "true"}, {TR, "1.25<-+ >", RA, OK, "1.25"},
        {TR, "1.25<-+ >", TR, OK, "1.25<-+ >"}, {TR, "1.25<-+ >", S, OK, "1"}, {TR, "1.25<-+ >", U, OK, "1"}, {TR, "", TR, OK, ni},
        {TR, "", RA, OK, ni}, {B, "false", B, OK, "false"}, {B, "true", RA, MISMATCH, "7"}, {B, "true", U, MISMATCH, "7"},
        {B, "", B, OK, ni}, {B, "", S, MISMATCH, "7"},
    };
    for (const Row& r : rows)
    {
        SCOPED_TRACE(std::string(FieldTypeToString(r.source)) + " " + r.value + " into " + FieldTypeToString(r.target));
        const std::unique_ptr<IFieldType> target = Value(r.target, Preset(r.target));
        EXPECT_EQ(r.status, target->Convert(Value(r.source, r.value).get()));
        EXPECT_EQ(r.printed, target->ToString());
        EXPECT_EQ(r.target, target->GetType());
    }
}

TEST(NumericField, ConversionOperators)
{
    EXPECT_EQ(kMax, static_cast<SInt>(UInt(static_cast<std::uint64_t>(kMax))).GetValue());
    EXPECT_FALSE(static_cast<SInt>(UInt()).IsInitialized());
    EXPECT_FALSE(static_cast<Rational>(UInt()).IsInitialized());
    EXPECT_FALSE(static_cast<Rational>(SInt()).IsInitialized());
    EXPECT_EQ("-7", static_cast<Rational>(SInt(-7)).ToString());
    EXPECT_EQ("7", static_cast<Rational>(UInt(7)).ToString());
    for (auto convert : {+[] { (void)static_cast<SInt>(UInt(1ull << 63)); }, +[] { (void)static_cast<Rational>(UInt(1ull << 63)); },
                         +[] { (void)static_cast<Rational>(SInt(kMin)); }})
        try
        {
            convert();
            ADD_FAILURE() << "no exception";
        }
        catch (const StatusCodeException& e)
        {
            EXPECT_TRUE(e.GetCode() == RANGE || e.GetCode() == PARAM) << e.GetCode();
        }
}

// Four threads encode and decode their own values at once; the shared
// tables and the factory must not interfere.
TEST(NumericField, EncodesAndDecodesOnFourThreads)
{
    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t, &mismatches] {
            for (std::int64_t i = 0; i < 20000; ++i)
            {
                const std::int64_t value = (i * 7919 + t) << (i % 40);
                MessageBuilder builder;
                builder.SetEndian(t % 2 ? BE : LE);
                std::unique_ptr<IFieldType> field(FieldTypeFactory::GetInstance().Create(FIELD_TYPE_SINT));
                static_cast<SInt&>(*field).SetValue(value);
                const Rational price(value % 1000000, static_cast<D>(i % 28));
                field->SerializeLengthAndBody(builder, 8);
                price.Serialize(builder, 9);
                MessageValidator validator(builder.GetBuffer(), builder.GetLength());
                validator.SetEndian(builder.GetEndian());
                SInt back;
                Rational priceBack;
                if (back.DeserializeLengthAndBody(validator, 8) != OK || back.GetValue() != value ||
                    priceBack.Deserialize(validator, 9) != OK || priceBack.ToString() != price.ToString())
                    ++mismatches;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(0, mismatches.load());
}

} // namespace
} // namespace Zantor
