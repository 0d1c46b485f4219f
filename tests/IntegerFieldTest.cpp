// UInt, SInt and Boolean: exact wire bytes of every width and form in both
// byte orders, round trips at the width boundaries, every reading failure
// (value and cursor left alone), arithmetic limits, comparisons across
// widths, text forms, and encoding on four threads at once.
#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Boolean.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/FieldTypeFactory.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/UInt.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace Zantor {
namespace {

using Bytes = std::vector<unsigned char>;
using Endian = MessageHandler::Endian;
constexpr Endian LE = MessageHandler::ENDIAN_LITTLE, BE = MessageHandler::ENDIAN_BIG;
constexpr StatusCode OK = STATUS_CODE_SUCCESS, PARAM = STATUS_CODE_INVALID_PARAMETER, RANGE = STATUS_CODE_OUT_OF_RANGE;
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min(), kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t kUMax = std::numeric_limits<std::uint64_t>::max();

enum Form { BODY, RECORD, UPDATE };

std::unique_ptr<IFieldType> Make(unsigned char type, std::int64_t value)
{
    if (type == FIELD_TYPE_UINT)
        return std::make_unique<UInt>(static_cast<std::uint64_t>(value));
    return std::make_unique<SInt>(value);
}

Bytes Write(const IFieldType& field, Form form, unsigned length, Endian endian, StatusCode& status)
{
    MessageBuilder builder;
    builder.SetEndian(endian);
    unsigned char body[16];
    unsigned written = 0;
    if (form == BODY)
        status = field.SerializeBody(body, length, written);
    else
        status = form == RECORD ? field.Serialize(builder, length) : field.SerializeLengthAndBody(builder, length);
    if (form == BODY)
        return status == OK ? Bytes(body, body + written) : Bytes();
    return Bytes(builder.GetBuffer(), builder.GetBuffer() + builder.GetLength());
}

StatusCode Read(IFieldType& field, Form form, const Bytes& bytes, unsigned length, Endian endian, unsigned& cursor)
{
    MessageValidator validator(bytes.data(), static_cast<unsigned>(bytes.size()));
    validator.SetEndian(endian);
    StatusCode status = form == BODY     ? field.DeserializeBody(bytes.data(), static_cast<unsigned>(bytes.size()))
                        : form == RECORD ? field.Deserialize(validator, length)
                                         : field.DeserializeLengthAndBody(validator, length);
    cursor = form == BODY ? (status == OK ? static_cast<unsigned>(bytes.size()) : 0) : validator.GetCursor();
    return status;
}

struct Vector { unsigned char type; std::int64_t value; Form form; unsigned length; Endian endian; Bytes bytes; };

TEST(IntegerField, WireVectorsOfEveryWidthAndBothByteOrders)
{
    const unsigned char U = FIELD_TYPE_UINT, S = FIELD_TYPE_SINT;
    const Vector vectors[] = {
        {U, 255, UPDATE, 8, LE, {1, 0xFF}}, {U, 256, UPDATE, 8, LE, {2, 0x00, 0x01}},
        {U, 256, UPDATE, 8, BE, {2, 0x01, 0x00}}, {U, 300, UPDATE, 2, LE, {2, 0x2C, 0x01}},
        {U, 65535, UPDATE, 8, LE, {2, 0xFF, 0xFF}}, {U, 65536, UPDATE, 8, LE, {4, 0x00, 0x00, 0x01, 0x00}},
        {U, 65536, UPDATE, 8, BE, {4, 0x00, 0x01, 0x00, 0x00}},
        {U, 1LL << 32, UPDATE, 8, LE, {8, 0, 0, 0, 0, 1, 0, 0, 0}},
        {U, 1LL << 32, UPDATE, 8, BE, {8, 0, 0, 0, 1, 0, 0, 0, 0}}, {U, 300, RECORD, 4, LE, {0x2C, 0x01, 0x00, 0x00}},
        {U, 300, RECORD, 4, BE, {0x00, 0x00, 0x01, 0x2C}}, {U, 300, RECORD, 3, LE, {0x2C, 0x01, 0x00}},
        {U, 300, RECORD, 3, BE, {0x00, 0x01, 0x2C}}, {U, 0x0102, RECORD, 5, BE, {0, 0, 0, 1, 2}},
        {U, 0x01020304, RECORD, 6, LE, {4, 3, 2, 1, 0, 0}}, {U, 0x05, RECORD, 7, BE, {0, 0, 0, 0, 0, 0, 5}},
        {U, 300, BODY, 2, BE, {0x2C, 0x01}}, // a caller's buffer is always little-endian
        {S, -128, UPDATE, 8, LE, {1, 0x80}}, {S, -129, UPDATE, 8, LE, {2, 0x7F, 0xFF}},
        {S, -129, UPDATE, 8, BE, {2, 0xFF, 0x7F}}, {S, 32767, UPDATE, 8, LE, {2, 0xFF, 0x7F}},
        {S, -32769, UPDATE, 8, LE, {4, 0xFF, 0x7F, 0xFF, 0xFF}},
        {S, 0x7FFFFFFF, UPDATE, 8, LE, {4, 0xFF, 0xFF, 0xFF, 0x7F}},
        {S, -0x80000000LL, UPDATE, 8, BE, {4, 0x80, 0x00, 0x00, 0x00}},
        {S, 0x80000000LL, UPDATE, 8, LE, {8, 0x00, 0x00, 0x00, 0x80, 0, 0, 0, 0}},
        {S, kMin, UPDATE, 8, BE, {8, 0x80, 0, 0, 0, 0, 0, 0, 0}}, {S, -1, RECORD, 3, BE, {0xFF, 0xFF, 0xFF}},
        {S, -2, RECORD, 5, LE, {0xFE, 0xFF, 0xFF, 0xFF, 0xFF}},
        {S, -300, RECORD, 6, BE, {0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 0xD4}}, {S, 127, RECORD, 7, LE, {0x7F, 0, 0, 0, 0, 0, 0}},
        {S, -2, BODY, 8, BE, {0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
    };
    for (const Vector& v : vectors)
    {
        SCOPED_TRACE(std::string(FieldTypeToString(v.type)) + " " + std::to_string(v.value) + " form " +
                     std::to_string(v.form) + " length " + std::to_string(v.length) + (v.endian ? " BE" : " LE"));
        StatusCode status;
        EXPECT_EQ(v.bytes, Write(*Make(v.type, v.value), v.form, v.length, v.endian, status));
        EXPECT_EQ(OK, status);
        std::unique_ptr<IFieldType> back = Make(v.type, 99);
        unsigned cursor;
        EXPECT_EQ(OK, Read(*back, v.form, v.bytes, v.length, v.endian, cursor));
        EXPECT_EQ(v.bytes.size(), cursor);
        EXPECT_EQ(Make(v.type, v.value)->ToString(), back->ToString());
    }
}

TEST(IntegerField, RoundTripsAtEveryWidthBoundary)
{
    std::vector<std::int64_t> values = {0, kMax, kMin, -1};
    for (int k : {7, 8, 15, 16, 31, 32, 62})
        for (std::int64_t delta : {-1, 0, 1})
        {
            values.push_back((std::int64_t{1} << k) + delta);
            values.push_back(-(std::int64_t{1} << k) + delta);
        }
    for (unsigned char type : {FIELD_TYPE_UINT, FIELD_TYPE_SINT})
        for (std::int64_t value : values)
            for (Endian endian : {LE, BE})
                for (Form form : {BODY, RECORD, UPDATE})
                {
                    const std::unique_ptr<IFieldType> field = Make(type, value);
                    for (unsigned length : {field->GetSerializedLength(), 8u})
                    {
                        SCOPED_TRACE(field->ToString() + " form " + std::to_string(form) + " length " +
                                     std::to_string(length) + (endian ? " BE" : " LE"));
                        StatusCode status;
                        const Bytes bytes = Write(*field, form, length, endian, status);
                        ASSERT_EQ(OK, status);
                        EXPECT_EQ((form == UPDATE ? 1 : 0) + (form == UPDATE ? field->GetSerializedLength() : length),
                                  bytes.size());
                        const std::unique_ptr<IFieldType> back = Make(type, 99);
                        unsigned cursor;
                        EXPECT_EQ(OK, Read(*back, form, bytes, length, endian, cursor));
                        EXPECT_EQ(bytes.size(), cursor);
                        EXPECT_EQ(field->ToString(), back->ToString());
                    }
                }
}

// validateStatus: what IFieldType::ValidateSerializedLengthAndBody says of an update.
struct Failure { unsigned char type; Form form; Bytes bytes; unsigned length; StatusCode status, validateStatus; };

TEST(IntegerField, ReadingFailuresLeaveValueAndCursor)
{
    const unsigned char U = FIELD_TYPE_UINT, S = FIELD_TYPE_SINT, B = FIELD_TYPE_BOOLEAN;
    const Failure failures[] = {
        {U, BODY, {}, 0, PARAM, OK}, {S, BODY, {1, 2, 3, 4, 5, 6, 7, 8, 9}, 0, PARAM, OK}, {U, RECORD, {1}, 0, PARAM, OK},
        {U, RECORD, {1, 2, 3, 4, 5, 6, 7, 8, 9}, 9, PARAM, OK}, {S, RECORD, {1, 2, 3}, 4, PARAM, OK},
        {U, UPDATE, {1, 5}, 0, PARAM, OK}, {U, UPDATE, {}, 8, PARAM, PARAM}, {S, UPDATE, {0, 5}, 8, RANGE, RANGE},
        {U, UPDATE, {3, 1, 2, 3}, 2, RANGE, OK}, {U, UPDATE, {9, 1, 2, 3, 4, 5, 6, 7, 8, 9}, 255, RANGE, RANGE},
        {S, UPDATE, {4, 1, 2, 3}, 8, PARAM, PARAM}, {U, UPDATE, {1}, 8, PARAM, PARAM}, {B, BODY, {}, 0, PARAM, OK},
        {B, BODY, {1, 1}, 0, PARAM, OK}, {B, RECORD, {1}, 2, PARAM, OK}, {B, RECORD, {}, 1, PARAM, OK},
        {B, UPDATE, {1}, 0, PARAM, OK}, {B, UPDATE, {}, 1, PARAM, PARAM},
    };
    for (const Failure& f : failures)
    {
        SCOPED_TRACE(std::string(FieldTypeToString(f.type)) + " form " + std::to_string(f.form) + " of " +
                     std::to_string(f.bytes.size()) + " bytes, length " + std::to_string(f.length));
        std::unique_ptr<IFieldType> field(FieldTypeFactory::GetInstance().Create(f.type));
        MessageValidator text("1", 1);
        ASSERT_EQ(OK, field->FromString(text) == OK ? OK : field->DeserializeBody("\1", 1));
        const std::string before = field->ToString();
        unsigned cursor;
        EXPECT_EQ(f.status, Read(*field, f.form, f.bytes, f.length, LE, cursor));
        EXPECT_EQ(0u, cursor);
        EXPECT_EQ(before, field->ToString());
        if (f.form == UPDATE && f.length != 0)
        {
            MessageValidator validator(f.bytes.data(), static_cast<unsigned>(f.bytes.size()));
            unsigned offset = 77, length = 77;
            EXPECT_EQ(f.validateStatus, IFieldType::ValidateSerializedLengthAndBody(f.type, validator, offset, length));
            EXPECT_EQ(f.validateStatus == OK ? f.bytes.size() : 0u, validator.GetCursor());
            EXPECT_EQ(f.validateStatus == OK ? 1u : 77u, offset);
        }
    }
}

TEST(IntegerField, ValidateReportsTheBodyAndRefusesOtherCodes)
{
    const unsigned char bytes[] = {9, 3, 0xAA, 0xBB, 0xCC, 0x01};
    MessageValidator validator(bytes, sizeof bytes);
    validator.ValidateBytes(1);
    unsigned offset = 0, length = 0;
    EXPECT_EQ(OK, IFieldType::ValidateSerializedLengthAndBody(FIELD_TYPE_UINT, validator, offset, length));
    EXPECT_EQ(2u, offset);
    EXPECT_EQ(3u, length);
    EXPECT_EQ(OK, IFieldType::ValidateSerializedLengthAndBody(FIELD_TYPE_BOOLEAN, validator, offset, length));
    EXPECT_EQ(5u, offset);
    EXPECT_EQ(1u, length);
    EXPECT_TRUE(validator.IsAtEnd());
    MessageValidator other(bytes, sizeof bytes);
    EXPECT_EQ(PARAM, IFieldType::ValidateSerializedLengthAndBody(FIELD_TYPE_TEXTSTRING, other, offset, length));
    EXPECT_EQ(PARAM, IFieldType::ValidateSerializedLengthAndBody(14, other, offset, length));
}

TEST(IntegerField, WritingFailures)
{
    StatusCode status;
    for (Form form : {BODY, RECORD, UPDATE})
    {
        EXPECT_TRUE(Write(UInt(), form, 8, LE, status).empty());
        EXPECT_EQ(STATUS_CODE_NOT_INITIALIZED, status);
        EXPECT_EQ(STATUS_CODE_NOT_INITIALIZED, (Write(Boolean(), form, 1, LE, status), status));
        EXPECT_EQ(PARAM, (Write(Boolean(true), form, 0, LE, status), status));
    }
    EXPECT_TRUE(Write(UInt(300), RECORD, 1, LE, status).empty());
    EXPECT_EQ(PARAM, status);
    EXPECT_EQ(PARAM, (Write(SInt(-129), RECORD, 9, LE, status), status));
    EXPECT_EQ(PARAM, (Write(SInt(-129), UPDATE, 1, LE, status), status));
    unsigned char body[9];
    unsigned written = 0;
    EXPECT_EQ(PARAM, UInt(300).SerializeBody(body, 1, written));
    EXPECT_EQ(1u, written);
    EXPECT_EQ(PARAM, SInt(1).SerializeBody(body, 9, written));
    EXPECT_EQ(0u, UInt().GetSerializedLength());
    EXPECT_EQ(0u, Boolean().GetSerializedBodyLength());
}

TEST(IntegerField, BodiesExtendBySignOrZero)
{
    struct Row { unsigned char type; Bytes body; const char* value; };
    const unsigned char U = FIELD_TYPE_UINT, S = FIELD_TYPE_SINT;
    for (const Row& r : {Row{S, {0xFF}, "-1"}, Row{U, {0xFF}, "255"}, Row{S, {0x00, 0x80}, "-32768"}, Row{U, {0x00, 0x80}, "32768"},
                         Row{S, {0xFF, 0xFF, 0xFF}, "-1"}, Row{U, {0xFF, 0xFF, 0xFF}, "16777215"}, Row{U, {0, 0, 0, 0x80}, "2147483648"},
                         Row{S, {0, 0, 0, 0, 0x80}, "-549755813888"}, Row{U, {0, 0, 0, 0, 0, 0x80}, "140737488355328"},
                         Row{S, {0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, "-2"}, Row{S, {0, 0, 0, 0, 0, 0, 0, 0x80}, "-9223372036854775808"}})
    {
        SCOPED_TRACE(r.value);
        const std::unique_ptr<IFieldType> field = Make(r.type, 0);
        EXPECT_EQ(OK, field->DeserializeBody(r.body.data(), static_cast<unsigned>(r.body.size())));
        EXPECT_EQ(r.value, field->ToString());
    }
}

TEST(IntegerField, ArithmeticAtItsLimits)
{
    enum Op { ADD, SUB, MUL, DIV };
    struct Row { Op op; std::uint64_t a, b; StatusCode status; std::uint64_t result; };
    const Row unsignedRows[] = {
        {ADD, kUMax, 0, OK, kUMax},         {ADD, kUMax, 1, RANGE, kUMax},   {ADD, kUMax - 1, 1, OK, kUMax},
        {SUB, 5, 0, OK, 5},                 {SUB, 5, 5, OK, 0},               {SUB, 5, 6, RANGE, 5},
        {MUL, 1ull << 32, 1ull << 31, OK, 1ull << 63}, {MUL, 1ull << 32, 1ull << 32, RANGE, 1ull << 32},
        {MUL, 0, kUMax, OK, 0},             {MUL, 7, 0, OK, 0},               {MUL, kUMax, 1, OK, kUMax},
        {DIV, 7, 2, OK, 3},                 {DIV, 7, 0, RANGE, 7},            {DIV, 0, 3, OK, 0},
    };
    for (const Row& r : unsignedRows)
    {
        SCOPED_TRACE(std::to_string(r.a) + " op " + std::to_string(r.op) + " " + std::to_string(r.b));
        UInt a(r.a);
        const UInt b(r.b);
        EXPECT_EQ(r.status, r.op == ADD ? a.Add(b) : r.op == SUB ? a.Subtract(b) : r.op == MUL ? a.Multiply(b) : a.Divide(b));
        EXPECT_EQ(r.result, a.GetValue());
    }
    struct SignedRow { Op op; std::int64_t a, b; StatusCode status; std::int64_t result; };
    const SignedRow signedRows[] = {
        {ADD, kMax, 1, RANGE, kMax},  {ADD, kMin, -1, RANGE, kMin}, {ADD, kMax, kMin, OK, -1},
        {SUB, kMin, 1, RANGE, kMin},  {SUB, -1, kMax, OK, kMin},    {SUB, 0, kMin, RANGE, 0},
        {MUL, kMin, -1, RANGE, kMin}, {MUL, 1LL << 62, -2, OK, kMin}, {MUL, 1LL << 62, 2, RANGE, 1LL << 62},
        {DIV, kMin, -1, RANGE, kMin}, {DIV, -7, 2, OK, -3},         {DIV, 7, 0, RANGE, 7},
    };
    for (const SignedRow& r : signedRows)
    {
        SCOPED_TRACE(std::to_string(r.a) + " op " + std::to_string(r.op) + " " + std::to_string(r.b));
        SInt a(r.a);
        const SInt b(r.b);
        EXPECT_EQ(r.status, r.op == ADD ? a.Add(b) : r.op == SUB ? a.Subtract(b) : r.op == MUL ? a.Multiply(b) : a.Divide(b));
        EXPECT_EQ(r.result, a.GetValue());
    }
    UInt u(1);
    SInt s(1);
    EXPECT_EQ(STATUS_CODE_NOT_INITIALIZED, u.Add(UInt()));
    EXPECT_EQ(STATUS_CODE_NOT_INITIALIZED, UInt().Divide(u));
    EXPECT_EQ(STATUS_CODE_NOT_INITIALIZED, s.Multiply(SInt()));
    EXPECT_EQ(STATUS_CODE_NOT_INITIALIZED, SInt().Subtract(s));
}

// The static Compare of two bodies, then the second body against a value
// read from the first: the virtual Compare and IsDifferent must agree.
TEST(IntegerField, ComparesAndDiffersByValueAcrossWidths)
{
    using Static = StatusCode (*)(const void*, unsigned int, const void*, unsigned int, int&);
    struct Row { const char* name; Static compare; unsigned char type; Bytes a, b; StatusCode status; int order; };
    const unsigned char U = FIELD_TYPE_UINT, S = FIELD_TYPE_SINT, B = FIELD_TYPE_BOOLEAN;
    for (const Row& r : {Row{"UInt 5 in 1 and 8 bytes", UInt::Compare, U, {5}, {5, 0, 0, 0, 0, 0, 0, 0}, OK, 0},
                         Row{"UInt 65535 above 256", UInt::Compare, U, {0xFF, 0xFF}, {0, 1}, OK, 1},
                         Row{"SInt -1 below 5", SInt::Compare, S, {0xFF}, {5, 0, 0}, OK, -1},
                         Row{"SInt 256 above -1", SInt::Compare, S, {0, 1}, {0xFF, 0xFF, 0xFF, 0xFF}, OK, 1},
                         Row{"false below true", Boolean::Compare, B, {0}, {5}, OK, -1},
                         Row{"1 and 5 both true", Boolean::Compare, B, {1}, {5}, OK, 0},
                         Row{"SInt empty body", SInt::Compare, S, {5}, {}, PARAM, 0},
                         Row{"UInt 9 bytes", UInt::Compare, U, {5}, {1, 2, 3, 4, 5, 6, 7, 8, 9}, PARAM, 0},
                         Row{"Boolean 2 bytes", Boolean::Compare, B, {1}, {1, 1}, PARAM, 0}})
    {
        SCOPED_TRACE(r.name);
        const auto sizeA = static_cast<unsigned>(r.a.size()), sizeB = static_cast<unsigned>(r.b.size());
        int order = 9;
        EXPECT_EQ(r.status, r.compare(r.a.data(), sizeA, r.b.data(), sizeB, order));
        std::unique_ptr<IFieldType> value(FieldTypeFactory::GetInstance().Create(r.type));
        ASSERT_EQ(OK, value->DeserializeBody(r.a.data(), sizeA));
        int virtualOrder = 9;
        bool different = false;
        EXPECT_EQ(r.status, value->Compare(r.b.data(), sizeB, virtualOrder));
        // An empty body stands for a value that is not initialized.
        EXPECT_EQ(sizeB == 0 ? OK : r.status, value->IsDifferent(r.b.data(), sizeB, different));
        if (r.status == OK)
        {
            EXPECT_EQ(r.order, (order > 0) - (order < 0));
            EXPECT_EQ(r.order, (virtualOrder > 0) - (virtualOrder < 0));
        }
        EXPECT_EQ(r.status == OK ? r.order != 0 : sizeB == 0, different);
    }
    bool different = false;
    int order = 0;
    EXPECT_EQ(OK, SInt().IsDifferent(nullptr, 0, different));
    EXPECT_FALSE(different);
    EXPECT_EQ(OK, Boolean().IsDifferent("\1", 1, different));
    EXPECT_TRUE(different);
    EXPECT_EQ(STATUS_CODE_NOT_INITIALIZED, UInt().Compare("\5", 1, order));
    EXPECT_EQ(STATUS_CODE_NOT_INITIALIZED, Boolean(true).Compare(Boolean(), order));
}

TEST(IntegerField, TextForms)
{
    // printed: the value after reading (the preset "1" or "true" when reading fails)
    struct Row { unsigned char type; std::string text; StatusCode status; std::string printed; };
    const unsigned char U = FIELD_TYPE_UINT, S = FIELD_TYPE_SINT, B = FIELD_TYPE_BOOLEAN;
    const Row rows[] = {
        {U, "18446744073709551615", OK, "18446744073709551615"}, {U, "18446744073709551616", RANGE, "1"},
        {U, "007", OK, "7"}, {U, "", STATUS_CODE_INVALID_FORMAT, "1"}, {U, "-1", STATUS_CODE_INVALID_FORMAT, "1"},
        {U, "12x", STATUS_CODE_INVALID_LENGTH, "1"}, {U, "[NotInitialized]", OK, "[NotInitialized]"},
        {U, "[NotInitialized] ", STATUS_CODE_INVALID_LENGTH, "1"},
        {S, "-9223372036854775807", OK, "-9223372036854775807"}, {S, "-9223372036854775808", OK, "-9223372036854775808"},
        {S, "-9223372036854775809", RANGE, "1"}, {S, "9223372036854775808", RANGE, "1"}, {S, "+5", OK, "5"},
        {S, "-", STATUS_CODE_INVALID_FORMAT, "1"}, {S, "5 ", STATUS_CODE_INVALID_LENGTH, "1"}, {B, "TRUE", OK, "true"},
        {B, "fAlSe", OK, "false"}, {B, "yes", STATUS_CODE_INVALID_FORMAT, "true"},
        {B, "true ", STATUS_CODE_INVALID_FORMAT, "true"}, {B, "tru", STATUS_CODE_INVALID_FORMAT, "true"},
        {B, "[NotInitialized]", OK, "[NotInitialized]"},
    };
    for (const Row& r : rows)
    {
        SCOPED_TRACE(std::string(FieldTypeToString(r.type)) + " \"" + r.text + "\"");
        std::unique_ptr<IFieldType> field(FieldTypeFactory::GetInstance().Create(r.type));
        MessageValidator preset(r.type == B ? "true" : "1", r.type == B ? 4 : 1);
        ASSERT_EQ(OK, field->FromString(preset));
        MessageValidator text(r.text.data(), static_cast<unsigned>(r.text.size()));
        EXPECT_EQ(r.status, field->FromString(text));
        EXPECT_EQ(r.status == OK ? r.text.size() : 0u, text.GetCursor());
        EXPECT_EQ(r.printed, field->ToString());
    }
    EXPECT_STREQ("true|false", Boolean().GetFromStringFormat());
}

TEST(IntegerField, ConversionOperators)
{
    EXPECT_EQ(kMax, static_cast<SInt>(UInt(static_cast<std::uint64_t>(kMax))).GetValue());
    EXPECT_FALSE(static_cast<SInt>(UInt()).IsInitialized());
    EXPECT_FALSE(static_cast<Rational>(UInt()).IsInitialized());
    EXPECT_FALSE(static_cast<Rational>(SInt()).IsInitialized());
    EXPECT_EQ("-7", static_cast<Rational>(SInt(-7)).ToString());
    EXPECT_EQ("7", static_cast<Rational>(UInt(7)).ToString());
    for (auto convert : {+[] { (void)static_cast<SInt>(UInt(1ull << 63)); },
                         +[] { (void)static_cast<Rational>(UInt(1ull << 63)); }})
        try
        {
            convert();
            ADD_FAILURE() << "no exception";
        }
        catch (const StatusCodeException& e)
        {
            EXPECT_EQ(RANGE, e.GetCode());
        }
    EXPECT_THROW((void)static_cast<Rational>(SInt(kMin)), StatusCodeException);
}

// Four threads encode and decode their own values at once; the shared
// tables and the factory must not interfere.
TEST(IntegerField, EncodesAndDecodesOnFourThreads)
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
                Rational price(value % 1000000, Rational::DENOMINATOR_DECIMAL_3);
                field->SerializeLengthAndBody(builder, 8);
                price.Serialize(builder, 9);
                MessageValidator validator(builder.GetBuffer(), builder.GetLength());
                validator.SetEndian(builder.GetEndian());
                SInt back;
                Rational priceBack;
                int order = 1;
                if (back.DeserializeLengthAndBody(validator, 8) != OK || back.GetValue() != value ||
                    priceBack.Deserialize(validator, 9) != OK || priceBack.Compare(price, order) != OK || order != 0 ||
                    priceBack.ToString() != price.ToString())
                    ++mismatches;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(0, mismatches.load());
}

} // namespace
} // namespace Zantor
