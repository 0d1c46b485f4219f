// Rational and TRational: exact bodies of every denominator family in both
// byte orders, round trips of every code through every form and through
// text, every reading failure, the denominator look-ups, scaling,
// compression, arithmetic and exact comparison, and the conversion matrix
// of the five numeric field types.
#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Boolean.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/FieldTypeFactory.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/TRational.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/UInt.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
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
                     FORMAT = STATUS_CODE_INVALID_FORMAT, FAIL = STATUS_CODE_FAILURE, MISMATCH = STATUS_CODE_MISMATCH;
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max(), kMin = std::numeric_limits<std::int64_t>::min();

Bytes Written(const MessageBuilder& b) { return Bytes(b.GetBuffer(), b.GetBuffer() + b.GetLength()); }
std::string Name(std::int64_t n, unsigned d) { return std::to_string(n) + " over code " + std::to_string(d); }

// Writes field as body, record and update (both orders); each must give the
// expected bytes and read back to the same text.
void ExpectWire(const IFieldType& field, const Bytes& little, const Bytes& big)
{
    unsigned char body[16];
    unsigned written = 0;
    ASSERT_EQ(OK, field.SerializeBody(body, sizeof body, written));
    EXPECT_EQ(little, Bytes(body, body + written));
    for (Endian endian : {LE, BE})
        for (bool update : {false, true})
        {
            MessageBuilder builder;
            builder.SetEndian(endian);
            EXPECT_EQ(OK, update ? field.SerializeLengthAndBody(builder, 10) : field.Serialize(builder, 10));
            EXPECT_EQ(endian == LE ? little : big, Written(builder));
            std::unique_ptr<IFieldType> back(FieldTypeFactory::GetInstance().Create(field.GetType()));
            MessageValidator validator(builder.GetBuffer(), builder.GetLength());
            validator.SetEndian(endian);
            EXPECT_EQ(OK, update ? back->DeserializeLengthAndBody(validator, 10) : back->Deserialize(validator, 10));
            EXPECT_TRUE(validator.IsAtEnd());
            EXPECT_EQ(field.ToString(), back->ToString());
        }
    std::unique_ptr<IFieldType> back(FieldTypeFactory::GetInstance().Create(field.GetType()));
    EXPECT_EQ(OK, back->DeserializeBody(little.data(), static_cast<unsigned>(little.size())));
    EXPECT_EQ(field.ToString(), back->ToString());
}

TEST(RationalField, WireVectorsOfEveryFamily)
{
    struct Row { std::int64_t numerator; D denominator; Bytes little, big; };
    const Row rows[] = {
        {-5, R::DENOMINATOR_DECIMAL_2, {0x82, 0x05}, {0x82, 0x05}},
        {300, R::DENOMINATOR_WHOLE, {0x20, 0x2C, 0x01}, {0x20, 0x01, 0x2C}},
        {70000, R::DENOMINATOR_DECIMAL_4, {0x44, 0x70, 0x11, 0x01, 0x00}, {0x44, 0x00, 0x01, 0x11, 0x70}},
        {-kMax, R::DENOMINATOR_MULTIPLIER_9, {0xF2, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F},
         {0xF2, 0x7F, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {12, R::DENOMINATOR_MULTIPLIER_3, {0x0C, 0x0C}, {0x0C, 0x0C}},
        {-3, R::DENOMINATOR_BINARY_2, {0x94, 0x03}, {0x94, 0x03}},
        {511, R::DENOMINATOR_BINARY_9, {0x3B, 0xFF, 0x01}, {0x3B, 0x01, 0xFF}},
        {0, R::DENOMINATOR_CABINET, {0x1C, 0x00}, {0x1C, 0x00}},
        {0, R::DENOMINATOR_UNDEFINED, {0x1D, 0x00}, {0x1D, 0x00}},
    };
    for (const Row& r : rows)
    {
        SCOPED_TRACE(Name(r.numerator, r.denominator));
        ExpectWire(R(r.numerator, r.denominator), r.little, r.big);
        Bytes little = r.little, big = r.big;
        little.push_back(0x19);
        big.push_back(0x19);
        ExpectWire(T(r.numerator, r.denominator, T::TICK_UP, T::TREND_DOWN, T::TREND_UP), little, big);
    }
    EXPECT_EQ("-0.05", R(-5, R::DENOMINATOR_DECIMAL_2).ToString());
    EXPECT_EQ("-0.05<+-+>", T(-5, R::DENOMINATOR_DECIMAL_2, T::TICK_UP, T::TREND_DOWN, T::TREND_UP).ToString());
}

TEST(RationalField, EveryCodeRoundTripsThroughEveryFormAndText)
{
    const std::int64_t numerators[] = {0, 1, -1, 255, 256, -65535, 65536, 1LL << 31, -(1LL << 32), kMax, -kMax};
    for (std::uint32_t code = 0; code < R::DENOMINATOR_COUNT; ++code)
        for (std::int64_t numerator : numerators)
        {
            if (code >= R::DENOMINATOR_CABINET && numerator != 0)
                continue;
            const auto d = static_cast<D>(code);
            SCOPED_TRACE(Name(numerator, code));
            const T value(numerator, d, static_cast<T::Tick>(1 + code % 3), static_cast<T::Trend>(code % 4),
                          static_cast<T::Trend>(numerator & 3));
            for (const IFieldType* field : {static_cast<const IFieldType*>(&value.GetRational()),
                                            static_cast<const IFieldType*>(&value)})
                for (Endian endian : {LE, BE})
                {
                    MessageBuilder builder;
                    builder.SetEndian(endian);
                    ASSERT_EQ(OK, field->SerializeLengthAndBody(builder, 10));
                    ASSERT_EQ(OK, field->Serialize(builder, field->GetSerializedLength()));
                    EXPECT_EQ(2 * field->GetSerializedLength(), builder.GetLength());
                    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
                    validator.SetEndian(endian);
                    std::unique_ptr<IFieldType> back(FieldTypeFactory::GetInstance().Create(field->GetType()));
                    bool different = true;
                    for (int i = 0; i < 2; ++i)
                    {
                        ASSERT_EQ(OK, i ? back->Deserialize(validator, 10) : back->DeserializeLengthAndBody(validator, 10));
                        EXPECT_EQ(field->ToString(), back->ToString());
                    }
                    EXPECT_TRUE(validator.IsAtEnd());
                    unsigned char body[10];
                    unsigned written = 0;
                    ASSERT_EQ(OK, back->SerializeBody(body, sizeof body, written));
                    EXPECT_EQ(OK, field->IsDifferent(body, written, different));
                    EXPECT_FALSE(different);
                    const std::string text = field->ToString();
                    MessageValidator reader(text.data(), static_cast<unsigned>(text.size()));
                    std::unique_ptr<IFieldType> parsed(FieldTypeFactory::GetInstance().Create(field->GetType()));
                    ASSERT_EQ(OK, parsed->FromString(reader)) << text;
                    const Rational& rational =
                        field == &value ? static_cast<const T&>(*parsed).GetRational() : static_cast<const R&>(*parsed);
                    EXPECT_EQ(numerator, rational.GetNumerator()) << text;
                    EXPECT_EQ(d, rational.GetDenominator()) << text;
                    EXPECT_EQ(text, parsed->ToString());
                }
        }
}

TEST(RationalField, ReadingFailuresLeaveValueAndCursor)
{
    // body: DeserializeBody of all the bytes; stream: reading them from a validator
    struct Row { bool trational; Bytes bytes; StatusCode body, stream; };
    const Bytes max63 = {0x60, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F};
    const Row rows[] = {
        {false, {}, PARAM, PARAM}, {false, {0x00}, PARAM, PARAM}, {false, {0x20, 0x2C}, PARAM, PARAM},
        {false, {0x00, 0x05, 0x09}, PARAM, OK}, {false, {0x1E, 0x00}, FORMAT, FORMAT},
        {false, {0x1F, 0x00}, FORMAT, FORMAT}, {false, {0x1D, 0x01}, RANGE, RANGE},
        {false, {0x3C, 0x00, 0x01}, RANGE, RANGE}, {false, {0x9D, 0x00}, OK, OK}, {false, max63, OK, OK},
        {false, {0x60, 0, 0, 0, 0, 0, 0, 0, 0x80}, RANGE, RANGE},
        {false, {0xE0, 0, 0, 0, 0, 0, 0, 0, 0x80}, RANGE, RANGE},
        {false, {0x60, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, RANGE, RANGE}, {true, {}, PARAM, PARAM},
        {true, {0x02, 0x05}, PARAM, PARAM}, {true, {0x02, 0x05, 0x00}, FORMAT, FORMAT},
        {true, {0x02, 0x05, 0x0F}, FORMAT, FORMAT}, {true, {0x02, 0x05, 0x50}, FORMAT, FORMAT},
        {true, {0x02, 0x05, 0x90}, FORMAT, FORMAT}, {true, {0x02, 0x05, 0x10}, OK, OK},
        {true, {0x1E, 0x00, 0x10}, FORMAT, FORMAT}, {true, {0x1C, 0x01, 0x10}, RANGE, RANGE},
        {true, {0x20, 0x05, 0x00, 0x10, 0x00}, PARAM, OK},
    };
    for (const Row& r : rows)
        for (bool update : {false, true})
        {
            SCOPED_TRACE(std::string(r.trational ? "TRational" : "Rational") + " of " + std::to_string(r.bytes.size()) +
                         " bytes, first " + std::to_string(r.bytes.empty() ? -1 : r.bytes[0]));
            const unsigned char type = r.trational ? FIELD_TYPE_TRATIONAL : FIELD_TYPE_RATIONAL;
            std::unique_ptr<IFieldType> field(FieldTypeFactory::GetInstance().Create(type));
            MessageValidator preset(r.trational ? "7<+==>" : "7", r.trational ? 6 : 1);
            ASSERT_EQ(OK, field->FromString(preset));
            const unsigned size = static_cast<unsigned>(r.bytes.size());
            if (r.body != OK)
            {
                EXPECT_EQ(r.body, field->DeserializeBody(r.bytes.data(), size));
                EXPECT_EQ(preset.GetBuffer()[0] == '7' ? (r.trational ? "7<+==>" : "7") : "", field->ToString());
            }
            MessageValidator validator(r.bytes.data(), size), checker(r.bytes.data(), size);
            unsigned offset = 99, length = 99;
            EXPECT_EQ(r.stream, update ? field->DeserializeLengthAndBody(validator, 10) : field->Deserialize(validator, 10));
            EXPECT_EQ(r.stream, IFieldType::ValidateSerializedLengthAndBody(type, checker, offset, length));
            EXPECT_EQ(validator.GetCursor(), checker.GetCursor());
            EXPECT_EQ(r.stream == OK ? checker.GetCursor() : 99u, length);
            EXPECT_EQ(r.stream == OK ? 0u : 99u, offset);
            if (r.stream != OK)
            {
                EXPECT_EQ(r.trational ? "7<+==>" : "7", field->ToString());
            }
        }
    const unsigned char three[] = {0x20, 0x2C, 0x01, 0x10};
    MessageValidator validator(three, sizeof three);
    EXPECT_EQ(RANGE, Rational().Deserialize(validator, 2));
    EXPECT_EQ(RANGE, TRational().DeserializeLengthAndBody(validator, 3));
    EXPECT_EQ(0u, validator.GetCursor());
}

TEST(RationalField, WritingFailures)
{
    MessageBuilder builder;
    unsigned char body[10];
    unsigned written = 0;
    EXPECT_EQ(STATUS_CODE_NOT_INITIALIZED, R().Serialize(builder, 9));
    EXPECT_EQ(STATUS_CODE_NOT_INITIALIZED, T().SerializeLengthAndBody(builder, 9));
    EXPECT_EQ(STATUS_CODE_NOT_INITIALIZED, T().SerializeBody(body, 10, written));
    EXPECT_EQ(PARAM, R(300, R::DENOMINATOR_WHOLE).Serialize(builder, 2));
    EXPECT_EQ(PARAM, T(300, R::DENOMINATOR_WHOLE, T::TICK_UP, T::TREND_UP, T::TREND_UP).Serialize(builder, 3));
    EXPECT_EQ(0u, builder.GetLength());
    EXPECT_EQ(PARAM, R(300, R::DENOMINATOR_WHOLE).SerializeBody(body, 2, written));
    EXPECT_EQ(3u, written);
    EXPECT_EQ(PARAM, T(300, R::DENOMINATOR_WHOLE, T::TICK_UP, T::TREND_UP, T::TREND_UP).SerializeBody(body, 3, written));
    EXPECT_EQ(4u, written);
}

TEST(RationalField, TextForms)
{
    struct Row
    {
        std::string text;
        StatusCode status;
        std::int64_t numerator = 0;
        std::uint32_t denominator = 0;
        std::string printed = {}; // when it is not the text itself
    };
    const Row rows[] = {
        {"-0.05", OK, -5, 2, ""},          {"1.50", OK, 150, 2, ""},         {"0.000000001", OK, 1, 9, ""},
        {"5 0/4", OK, 20, 20, ""},         {"0/4", OK, 0, 20, ""},           {"0 1/4", OK, 1, 20, "1/4"},
        {"-1 1/4", OK, -5, 20, ""},        {"-1/4", OK, -1, 20, ""},         {"3/512", OK, 3, 27, ""},
        {"12*10^3", OK, 12, 12, ""},       {"-7*10^9", OK, -7, 18, ""},     {"-0", OK, 0, 0, "0"},
        {"[CabinetValue]", OK, 0, 28, ""}, {"[UndefinedValue]", OK, 0, 29, ""},
        {"9223372036854775807", OK, kMax, 0, ""},
        {"9223372036854775808", RANGE},    {"-92233720368547758.08", RANGE}, {"99999999999999999999", RANGE},
        {"1/3", FORMAT},                   {"5/4", FORMAT},                  {"1/1", FORMAT},
        {"1.1234567890", FORMAT},          {"", FORMAT},                     {"1.5x", FORMAT},
        {"1*10^0", FORMAT},                {"1*10^10", FORMAT},              {"- 1", FORMAT},
        {"1.", FORMAT},                    {".5", FORMAT},                   {"1 /4", FORMAT},
        {"1 1/2 ", FORMAT},                {"[CabinetValue]x", FORMAT},      {"+1", FORMAT},
    };
    for (const Row& r : rows)
    {
        SCOPED_TRACE("\"" + r.text + "\"");
        R value(77, R::DENOMINATOR_WHOLE);
        MessageValidator text(r.text.data(), static_cast<unsigned>(r.text.size()));
        EXPECT_EQ(r.status, value.FromString(text));
        EXPECT_EQ(r.status == OK ? r.text.size() : 0u, text.GetCursor());
        EXPECT_EQ(r.status == OK ? r.numerator : 77, value.GetNumerator());
        EXPECT_EQ(r.status == OK ? r.denominator : 0u, value.GetDenominator());
        EXPECT_EQ(r.status != OK ? "77" : r.printed.empty() ? r.text : r.printed, value.ToString());
    }
    struct TRow { std::string text; StatusCode status; };
    for (const TRow& r : {TRow{"1.25<+-+>", OK}, TRow{"[CabinetValue]< = >", OK}, TRow{"[NotInitialized]", OK},
                          TRow{"1.25<=++>", FORMAT}, TRow{"1.25", FORMAT}, TRow{"1.25<+-+", FORMAT},
                          TRow{"<+-+>", FORMAT}, TRow{"1.25<+?+>", FORMAT}, TRow{"1.25 <+-+>", FORMAT}})
    {
        SCOPED_TRACE("\"" + r.text + "\"");
        T value(7, R::DENOMINATOR_WHOLE, T::TICK_DOWN, T::TREND_NONE, T::TREND_UNCHANGED);
        MessageValidator text(r.text.data(), static_cast<unsigned>(r.text.size()));
        EXPECT_EQ(r.status, value.FromString(text));
        EXPECT_EQ(r.status == OK ? r.text : "7<- =>", value.ToString());
    }
    EXPECT_STREQ("?", T::TickToString(T::TICK_INVALID));
    EXPECT_STREQ("?", T::TickToString(static_cast<T::Tick>(4)));
    EXPECT_STREQ(" ", T::TrendToString(T::TREND_NONE));
    EXPECT_STREQ("?", T::TrendToString(static_cast<T::Trend>(4)));
}

TEST(RationalField, ToStringAtAnotherDenominator)
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

TEST(RationalField, SetAndNumeratorAndDivisor)
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
    struct Row { std::int64_t numerator; D denominator; StatusCode status; std::int64_t scaled = 99; std::uint64_t divisor = 99; };
    for (const Row& r : {Row{-15, R::DENOMINATOR_DECIMAL_1, OK, -15, 10}, Row{-3, R::DENOMINATOR_BINARY_1, OK, -3, 2},
                         Row{12, R::DENOMINATOR_MULTIPLIER_9, OK, 12000000000, 1}, Row{kMax / 5, R::DENOMINATOR_MULTIPLIER_1, RANGE},
                         Row{0, R::DENOMINATOR_UNDEFINED, RANGE}, Row{0, R::DENOMINATOR_CABINET, OK, 0, 1}})
    {
        SCOPED_TRACE(Name(r.numerator, r.denominator));
        std::uint64_t divisor = 99;
        std::int64_t scaled = 99;
        EXPECT_EQ(r.status, R(r.numerator, r.denominator).GetNumeratorAndDivisor(scaled, divisor));
        EXPECT_EQ(r.scaled, scaled);
        EXPECT_EQ(r.divisor, divisor);
    }
    std::int64_t numerator = 0;
    std::uint64_t divisor = 0;
    EXPECT_EQ(STATUS_CODE_NOT_INITIALIZED, R().GetNumeratorAndDivisor(numerator, divisor));
}

TEST(RationalField, DenominatorLookUps)
{
    using LookUp = StatusCode (*)(std::uint64_t, D&);
    const LookUp places = [](std::uint64_t n, D& d) { return R::GetDenominatorByDecimalPlaces(static_cast<unsigned>(n), d); };
    const LookUp power = [](std::uint64_t n, D& d) { return R::GetDenominatorByDecimalPower(static_cast<unsigned>(n), d); };
    const LookUp binary = [](std::uint64_t n, D& d) { return R::GetDenominatorByBinaryPower(static_cast<unsigned>(n), d); };
    const LookUp multiplierPower = [](std::uint64_t n, D& d) {
        return R::GetDenominatorByMultiplierPower(static_cast<unsigned>(n), d);
    };
    // code 99: STATUS_CODE_NOT_FOUND
    struct Row { const char* name; LookUp lookUp; std::uint64_t argument; std::uint32_t code; };
    const Row rows[] = {
        {"places", places, 0, 0},          {"places", places, 9, 9},          {"places", places, 10, 99},
        {"power", power, 3, 3},            {"power", power, 10, 99},          {"binary", binary, 0, 99},
        {"binary", binary, 1, 19},         {"binary", binary, 9, 27},         {"binary", binary, 10, 99},
        {"mpower", multiplierPower, 0, 99}, {"mpower", multiplierPower, 1, 10}, {"mpower", multiplierPower, 9, 18},
        {"mpower", multiplierPower, 10, 99}, {"divisor", R::GetDenominatorByDivisor, 1, 0},
        {"divisor", R::GetDenominatorByDivisor, 1000, 3}, {"divisor", R::GetDenominatorByDivisor, 512, 27},
        {"divisor", R::GetDenominatorByDivisor, 2, 19}, {"divisor", R::GetDenominatorByDivisor, 0, 99},
        {"divisor", R::GetDenominatorByDivisor, 1024, 99}, {"multiplier", R::GetDenominatorByMultiplier, 1, 0},
        {"multiplier", R::GetDenominatorByMultiplier, 10, 10}, {"multiplier", R::GetDenominatorByMultiplier, 1000000000, 18},
        {"multiplier", R::GetDenominatorByMultiplier, 0, 99}, {"multiplier", R::GetDenominatorByMultiplier, 2, 99},
    };
    for (const Row& r : rows)
    {
        SCOPED_TRACE(std::string(r.name) + " " + std::to_string(r.argument));
        D d = static_cast<D>(77);
        EXPECT_EQ(r.code == 99 ? STATUS_CODE_NOT_FOUND : OK, r.lookUp(r.argument, d));
        EXPECT_EQ(r.code == 99 ? 77u : r.code, d);
    }
    EXPECT_EQ(3u, R::GetPlaces(R::DENOMINATOR_BINARY_7));
    EXPECT_EQ(0u, R::GetDivisor(static_cast<D>(30)));
}

TEST(RationalField, CommonDenominatorsScalingAndCompression)
{
    // common 99: STATUS_CODE_INVALID_PARAMETER
    struct Common { std::uint32_t a, b, common; };
    for (const Common& r : {Common{2, 5, 5}, Common{12, 10, 10}, Common{11, 0, 0}, Common{3, 13, 3}, Common{21, 23, 23},
                            Common{21, 0, 21}, Common{22, 2, 4}, Common{20, 3, 3}, Common{20, 11, 20}, Common{28, 2, 99},
                            Common{2, 29, 99}, Common{30, 0, 99}})
    {
        SCOPED_TRACE(std::to_string(r.a) + " and " + std::to_string(r.b));
        D common = static_cast<D>(77);
        EXPECT_EQ(r.common == 99 ? PARAM : OK, R::GetLowestCommonDenominator(static_cast<D>(r.a), static_cast<D>(r.b), common));
        EXPECT_EQ(r.common == 99 ? 77u : r.common, common);
    }
    struct Scale { std::int64_t numerator; std::uint32_t from, to; StatusCode status; std::int64_t scaled = 0; };
    for (const Scale& r : {Scale{125, 2, 4, OK, 12500}, Scale{12500, 4, 2, OK, 125}, Scale{125, 2, 1, RANGE},
                           Scale{3, 11, 0, OK, 300}, Scale{300, 0, 11, OK, 3}, Scale{1, 19, 1, OK, 5},
                           Scale{-1, 21, 3, OK, -125}, Scale{1, 22, 3, RANGE}, Scale{kMax, 0, 1, RANGE},
                           Scale{1LL << 62, 0, 19, RANGE}, Scale{-(1LL << 62), 0, 19, RANGE}, Scale{1, 29, 0, PARAM},
                           Scale{1, 0, 28, PARAM}})
    {
        SCOPED_TRACE(Name(r.numerator, r.from) + " to " + std::to_string(r.to));
        std::int64_t scaled = 77;
        EXPECT_EQ(r.status, R::ScaleNumerator(r.numerator, static_cast<D>(r.from), static_cast<D>(r.to), scaled));
        EXPECT_EQ(r.status == OK ? r.scaled : 77, scaled);
    }
    struct Compress { std::int64_t numerator; std::uint32_t code; std::int64_t toNumerator; std::uint32_t toCode; };
    for (const Compress& r : {Compress{1500, 3, 15, 1}, Compress{0, 5, 0, 0}, Compress{8, 21, 1, 0}, Compress{12, 21, 3, 19},
                              Compress{100, 0, 100, 0}, Compress{100, 11, 100, 11}, Compress{-120, 1, -12, 0},
                              Compress{0, 28, 0, 28}, Compress{5, 1, 5, 1}})
    {
        SCOPED_TRACE(Name(r.numerator, r.code));
        std::int64_t numerator = r.numerator;
        D d = static_cast<D>(r.code);
        R::CompressNumeratorAndDenominator(numerator, d);
        EXPECT_EQ(r.toNumerator, numerator);
        EXPECT_EQ(r.toCode, d);
    }
}

TEST(RationalField, ArithmeticAtACommonDenominator)
{
    enum Op { ADD, SUB, MUL, DIV };
    struct Row
    {
        Op op;
        std::int64_t a;
        std::uint32_t da;
        std::int64_t b;
        std::uint32_t db;
        bool compress;
        StatusCode status;
        std::int64_t result = 0;
        std::uint32_t code = 0;
    };
    const Row rows[] = {
        {ADD, 125, 2, 5, 1, false, OK, 175, 2},       {ADD, 15, 1, 15, 1, true, OK, 3, 0},
        {ADD, 1, 20, 1, 1, false, OK, 35, 2},          {ADD, kMax, 0, 1, 0, false, RANGE},
        {ADD, kMax, 0, 1, 1, false, RANGE},            {ADD, 0, 28, 1, 0, false, PARAM},
        {SUB, 1, 12, 1, 0, false, OK, 999, 0},         {SUB, -kMax, 0, 1, 0, false, RANGE},
        {SUB, kMin + 1, 0, kMax, 0, false, RANGE},     {SUB, 1, 0, 0, 29, false, PARAM},
        {MUL, 15, 1, 15, 1, false, OK, 225, 2},        {MUL, 15, 1, 2, 0, false, OK, 30, 1},
        {MUL, 15, 1, 2, 0, true, OK, 3, 0},            {MUL, 3, 14, 4, 15, false, OK, 1200, 18},
        {MUL, 1, 9, 5, 1, false, OK, 0, 9},            {MUL, 3, 23, 3, 23, false, OK, 4, 27},
        {MUL, 1, 20, 1, 1, false, OK, 25, 3},          {MUL, 3, 20, 5, 0, false, OK, 15, 20},
        {MUL, kMax, 0, 2, 0, false, RANGE},            {MUL, 1LL << 62, 0, -2, 0, false, RANGE},
        {MUL, kMax, 18, 10, 18, false, RANGE},         {MUL, 1, 27, kMax, 1, false, RANGE},
        {DIV, 1, 0, 3, 0, false, OK, 0, 0},            {DIV, 100, 2, 3, 0, false, OK, 33, 2},
        {DIV, 5, 12, 2, 12, false, OK, 2, 0},          {DIV, 1, 0, 0, 2, false, RANGE},
        {DIV, 5, 1, 1, 19, false, OK, 10, 1},          {DIV, 5, 1, 1, 19, true, OK, 1, 0},
        {DIV, kMax, 3, 1, 0, false, RANGE},            {DIV, 1, 0, 0, 28, false, PARAM},
    };
    for (const Row& r : rows)
    {
        SCOPED_TRACE(Name(r.a, r.da) + " op " + std::to_string(r.op) + " " + Name(r.b, r.db));
        R a(r.a, static_cast<D>(r.da));
        const R b(r.b, static_cast<D>(r.db));
        EXPECT_EQ(r.status, r.op == ADD ? a.Add(b, r.compress) : r.op == SUB ? a.Subtract(b, r.compress)
                            : r.op == MUL ? a.Multiply(b, r.compress) : a.Divide(b, r.compress));
        EXPECT_EQ(r.status == OK ? r.result : r.a, a.GetNumerator());
        EXPECT_EQ(r.status == OK ? r.code : r.da, a.GetDenominator());
    }
    R value(1, R::DENOMINATOR_WHOLE);
    EXPECT_EQ(STATUS_CODE_NOT_INITIALIZED, value.Add(R()));
    EXPECT_EQ(STATUS_CODE_NOT_INITIALIZED, R().Divide(value));
}

TEST(RationalField, ComparesExactlyByValue)
{
    struct Row { std::int64_t a; std::uint32_t da; std::int64_t b; std::uint32_t db; int order; };
    for (const Row& r : {Row{1, 19, 5, 1, 0}, Row{1, 27, 2, 3, -1}, Row{kMax, 18, kMax, 9, 1}, Row{-1, 0, 0, 29, 1},
                         Row{0, 28, 0, 29, 1}, Row{0, 28, 0, 28, 0}, Row{0, 29, 0, 29, 0}, Row{-kMax, 18, -kMax, 17, -1},
                         Row{-1, 1, 1, 9, -1}, Row{0, 3, 0, 11, 0}, Row{3, 10, 30, 0, 0}, Row{kMax, 9, kMax - 1, 9, 1},
                         Row{-kMax, 0, kMax, 0, -1}, Row{-3, 20, -1, 0, 1}})
    {
        SCOPED_TRACE(Name(r.a, r.da) + " against " + Name(r.b, r.db));
        int result = 99;
        EXPECT_EQ(OK, R(r.a, static_cast<D>(r.da)).Compare(R(r.b, static_cast<D>(r.db)), result));
        EXPECT_EQ(r.order, (result > 0) - (result < 0));
    }
    const unsigned char half[] = {0x13, 0x01, 0x10}, fiveTenths[] = {0x01, 0x05, 0x33}, quarter[] = {0x14, 0x01, 0x10};
    int result = 99;
    EXPECT_EQ(OK, R::Compare(half, 2, fiveTenths, 2, result));
    EXPECT_EQ(0, result);
    EXPECT_EQ(OK, T::Compare(quarter, 3, fiveTenths, 3, result));
    EXPECT_LT(result, 0);
    EXPECT_EQ(PARAM, T::Compare(quarter, 3, fiveTenths, 2, result));
    EXPECT_EQ(OK, R(1, R::DENOMINATOR_BINARY_2).Compare(quarter, 2, result));
    EXPECT_EQ(0, result);
    bool different = false;
    EXPECT_EQ(OK, T(5, R::DENOMINATOR_DECIMAL_1, T::TICK_UP, T::TREND_UNCHANGED, T::TREND_UNCHANGED).IsDifferent(fiveTenths, 3, different));
    EXPECT_TRUE(different); // same price, other codes
    EXPECT_EQ(OK, T(5, R::DENOMINATOR_DECIMAL_1, T::TICK_NONE, T::TREND_UNCHANGED, T::TREND_NONE).IsDifferent(fiveTenths, 3, different));
    EXPECT_FALSE(different);
    EXPECT_EQ(OK, R().IsDifferent(nullptr, 0, different));
    EXPECT_FALSE(different);
    EXPECT_EQ(STATUS_CODE_NOT_INITIALIZED, R().Compare(half, 2, result));
}

// The conversion matrix of the five numeric types: each target starts
// holding 77 (true for Boolean) so that a failure shows it unchanged.
TEST(RationalField, ConversionMatrix)
{
    using Source = std::function<std::unique_ptr<IFieldType>()>;
    auto make = [](auto value) -> Source { return [value] { return std::make_unique<decltype(value)>(value); }; };
    const unsigned char U = FIELD_TYPE_UINT, S = FIELD_TYPE_SINT, RA = FIELD_TYPE_RATIONAL, TR = FIELD_TYPE_TRATIONAL,
                        B = FIELD_TYPE_BOOLEAN;
    const std::string ni = "[NotInitialized]";
    struct Row { const char* source; Source make; unsigned char target; StatusCode status; std::string printed; };
    const T tr(125, R::DENOMINATOR_DECIMAL_2, T::TICK_DOWN, T::TREND_UP, T::TREND_NONE);
    const Row rows[] = {
        {"UInt 5", make(UInt(5)), U, OK, "5"},            {"UInt 5", make(UInt(5)), S, OK, "5"},
        {"UInt 5", make(UInt(5)), RA, OK, "5"},           {"UInt 5", make(UInt(5)), TR, OK, "5<+==>"},
        {"UInt 5", make(UInt(5)), B, MISMATCH, "true"},   {"UInt 2^63", make(UInt(1ull << 63)), S, RANGE, "77"},
        {"UInt 2^63", make(UInt(1ull << 63)), RA, FAIL, "77"}, {"UInt 2^63", make(UInt(1ull << 63)), U, OK, "9223372036854775808"},
        {"UInt -", make(UInt()), S, OK, ni},              {"UInt -", make(UInt()), TR, OK, ni},
        {"SInt -5", make(SInt(-5)), U, FAIL, "77"},       {"SInt -5", make(SInt(-5)), RA, OK, "-5"},
        {"SInt min", make(SInt(kMin)), RA, PARAM, "77"},  {"SInt min", make(SInt(kMin)), TR, PARAM, "77<+==>"},
        {"SInt min", make(SInt(kMin)), S, OK, "-9223372036854775808"}, {"SInt -", make(SInt()), U, OK, ni},
        {"SInt -", make(SInt()), RA, OK, ni},             {"-1.5", make(R(-15, R::DENOMINATOR_DECIMAL_1)), U, FAIL, "77"},
        {"-1.5", make(R(-15, R::DENOMINATOR_DECIMAL_1)), S, OK, "-1"}, {"2.5", make(R(25, R::DENOMINATOR_DECIMAL_1)), U, OK, "2"},
        {"max*10^9", make(R(kMax, R::DENOMINATOR_MULTIPLIER_9)), U, RANGE, "77"},
        {"max*10^9", make(R(kMax, R::DENOMINATOR_MULTIPLIER_9)), S, RANGE, "77"},
        {"12*10^9", make(R(12, R::DENOMINATOR_MULTIPLIER_9)), U, OK, "12000000000"},
        {"max*10", make(R(kMax / 5, R::DENOMINATOR_MULTIPLIER_1)), S, RANGE, "77"},
        {"undefined", make(R(0, R::DENOMINATOR_UNDEFINED)), U, RANGE, "77"},
        {"undefined", make(R(0, R::DENOMINATOR_UNDEFINED)), S, RANGE, "77"},
        {"undefined", make(R(0, R::DENOMINATOR_UNDEFINED)), TR, OK, "[UndefinedValue]<+==>"},
        {"cabinet", make(R(0, R::DENOMINATOR_CABINET)), S, OK, "0"}, {"Rational -", make(R()), U, OK, ni},
        {"Rational -", make(R()), S, OK, ni},             {"Rational 2.5", make(R(25, R::DENOMINATOR_DECIMAL_1)), B, MISMATCH, "true"},
        {"TRational", make(tr), RA, OK, "1.25"},          {"TRational", make(tr), TR, OK, "1.25<-+ >"},
        {"TRational", make(tr), S, OK, "1"},              {"TRational", make(tr), U, OK, "1"},
        {"TRational -", make(T()), TR, OK, ni},           {"Boolean", make(Boolean(false)), B, OK, "false"},
        {"Boolean", make(Boolean(true)), RA, MISMATCH, "77"}, {"Boolean", make(Boolean(true)), U, MISMATCH, "77"},
        {"Boolean -", make(Boolean()), B, OK, ni},        {"Boolean -", make(Boolean()), S, MISMATCH, "77"},
    };
    for (const Row& r : rows)
    {
        SCOPED_TRACE(std::string(r.source) + " into " + FieldTypeToString(r.target));
        std::unique_ptr<IFieldType> target(FieldTypeFactory::GetInstance().Create(r.target));
        const std::string preset = r.target == B ? "true" : r.target == TR ? "77<+==>" : "77";
        MessageValidator text(preset.data(), static_cast<unsigned>(preset.size()));
        ASSERT_EQ(OK, target->FromString(text));
        EXPECT_EQ(r.status, target->Convert(r.make().get()));
        EXPECT_EQ(r.printed, target->ToString());
        EXPECT_EQ(r.target, target->GetType());
        EXPECT_EQ(PARAM, target->Convert(nullptr));
    }
    for (unsigned char type : {U, S, RA, TR, B})
    {
        std::unique_ptr<IFieldType> created(FieldTypeFactory::GetInstance().Create(type));
        EXPECT_EQ(type, created->GetType());
        EXPECT_FALSE(created->IsInitialized());
    }
}

} // namespace
} // namespace Zantor
