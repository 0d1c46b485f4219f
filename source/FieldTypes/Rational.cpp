// Rational: the price field value, its denominator table and its exact
// arithmetic and comparisons.
#include <ZantorMiddleware/ZantorBase/FieldTypes/Rational.h>

#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/SInt.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/TRational.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/UInt.h>

#include "IntegerCoding.h"

#include <array>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <limits>

namespace Zantor {

namespace Coding = IntegerCoding;

namespace {

using Denominator = Rational::Denominator;

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr const char* kCabinetText = "[CabinetValue]";
constexpr const char* kUndefinedText = "[UndefinedValue]";

struct Row
{
    std::uint64_t divisor;
    std::uint64_t multiplier;
    unsigned char power;
    unsigned char places;
};

constexpr std::uint64_t Power(std::uint64_t base, unsigned exponent)
{
    std::uint64_t value = 1;
    while (exponent-- != 0)
        value *= base;
    return value;
}

constexpr std::array<Row, Rational::DENOMINATOR_COUNT> MakeTable()
{
    std::array<Row, Rational::DENOMINATOR_COUNT> rows{};
    rows[0] = {1, 1, 0, 0};
    for (unsigned char n = 1; n <= 9; ++n)
    {
        rows[n] = {Power(10, n), 0, n, n};
        rows[9 + n] = {0, Power(10, n), n, 0};
        rows[18 + n] = {Power(2, n), 0, n, static_cast<unsigned char>((n + 2) / 3)};
    }
    rows[Rational::DENOMINATOR_CABINET] = {1, 0, 0, 0};
    rows[Rational::DENOMINATOR_UNDEFINED] = {0, 0, 0, 0};
    return rows;
}

// One row per denominator code; constant data, shared by every thread.
constexpr std::array<Row, Rational::DENOMINATOR_COUNT> kTable = MakeTable();
static_assert(kTable[27].divisor == 512 && kTable[27].places == 3 && kTable[18].multiplier == 1000000000);

constexpr bool IsNumeric(Denominator d) noexcept { return d < Rational::DENOMINATOR_CABINET; }
constexpr bool IsBinary(Denominator d) noexcept
{
    return d >= Rational::DENOMINATOR_BINARY_1 && d <= Rational::DENOMINATOR_BINARY_9;
}
constexpr bool IsMultiplier(Denominator d) noexcept
{
    return d >= Rational::DENOMINATOR_MULTIPLIER_1 && d <= Rational::DENOMINATOR_MULTIPLIER_9;
}
// The decimal exponent of a code of the decimal family (0..18): -n for
// 1/10^n, +n for 10^n.
constexpr int DecimalExponent(Denominator d) noexcept
{
    return d <= Rational::DENOMINATOR_DECIMAL_9 ? -static_cast<int>(d) : static_cast<int>(d) - 9;
}
constexpr Denominator DecimalCode(int exponent) noexcept
{
    return static_cast<Denominator>(exponent <= 0 ? -exponent : 9 + exponent);
}
// The binary power of the whole number (0) or a binary code.
constexpr unsigned BinaryPower(Denominator d) noexcept
{
    return IsBinary(d) ? d - 18u : 0u;
}
constexpr Denominator BinaryCode(unsigned power) noexcept
{
    return static_cast<Denominator>(power == 0 ? 0u : 18u + power);
}
// The value of one unit of the numerator as scale / unit divisor.
constexpr std::uint64_t Scale(Denominator d) noexcept { return IsMultiplier(d) ? kTable[d].multiplier : 1; }
constexpr std::uint64_t UnitDivisor(Denominator d) noexcept { return IsMultiplier(d) ? 1 : kTable[d].divisor; }

std::uint64_t Gcd(std::uint64_t a, std::uint64_t b) noexcept
{
    while (b != 0)
    {
        const std::uint64_t r = a % b;
        a = b;
        b = r;
    }
    return a;
}

std::uint64_t MagnitudeOf(std::int64_t value) noexcept
{
    return value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
}

// The numerator invariant: |numerator| <= 2^63-1.
StatusCode Checked(std::int64_t value, std::int64_t& out) noexcept
{
    if (value == kMin)
        return STATUS_CODE_OUT_OF_RANGE;
    out = value;
    return STATUS_CODE_SUCCESS;
}

// The full 128-bit product of two 64-bit numbers, compared as a pair.
struct Wide
{
    std::uint64_t high;
    std::uint64_t low;
};

Wide MultiplyWide(std::uint64_t a, std::uint64_t b) noexcept
{
    const std::uint64_t aLow = a & 0xFFFFFFFFu, aHigh = a >> 32, bLow = b & 0xFFFFFFFFu, bHigh = b >> 32;
    const std::uint64_t lowLow = aLow * bLow, lowHigh = aLow * bHigh, highLow = aHigh * bLow;
    const std::uint64_t middle = (lowLow >> 32) + (lowHigh & 0xFFFFFFFFu) + (highLow & 0xFFFFFFFFu);
    return {aHigh * bHigh + (lowHigh >> 32) + (highLow >> 32) + (middle >> 32),
            (middle << 32) | (lowLow & 0xFFFFFFFFu)};
}

int OrderWide(Wide a, Wide b) noexcept
{
    if (a.high != b.high)
        return a.high < b.high ? -1 : 1;
    return Coding::Order(a.low, b.low);
}

// A cursor over the text of a rational.
struct Scanner
{
    const char* text;
    unsigned size;
    unsigned position;

    bool AtEnd() const noexcept { return position == size; }
    bool Take(char c) noexcept
    {
        if (position < size && text[position] == c)
        {
            ++position;
            return true;
        }
        return false;
    }
    bool Take(const char* word) noexcept
    {
        const unsigned length = static_cast<unsigned>(std::strlen(word));
        if (size - position < length || std::memcmp(text + position, word, length) != 0)
            return false;
        position += length;
        return true;
    }
    // One or more digits: STATUS_CODE_INVALID_FORMAT without a digit,
    // STATUS_CODE_OUT_OF_RANGE beyond 64 bits. digits counts them.
    StatusCode Number(std::uint64_t& value, unsigned& digits) noexcept
    {
        value = 0;
        digits = 0;
        while (position < size && text[position] >= '0' && text[position] <= '9')
        {
            const unsigned digit = static_cast<unsigned>(text[position++] - '0');
            if (__builtin_mul_overflow(value, 10u, &value) || __builtin_add_overflow(value, digit, &value))
                return STATUS_CODE_OUT_OF_RANGE;
            ++digits;
        }
        return digits == 0 ? STATUS_CODE_INVALID_FORMAT : STATUS_CODE_SUCCESS;
    }
};

} // namespace

// ---- Construction and access ----------------------------------------------

Rational::Rational(std::int64_t numerator, Denominator denominator)
    : Rational()
{
    const StatusCode status = Set(numerator, denominator);
    if (status != STATUS_CODE_SUCCESS)
        ZANTOR_THROW(StatusCodeException, status);
}

StatusCode Rational::Set(std::int64_t numerator, Denominator denominator) noexcept
{
    if (denominator >= DENOMINATOR_COUNT || numerator == kMin)
        return STATUS_CODE_INVALID_PARAMETER;
    if (!IsNumeric(denominator) && numerator != 0)
        return STATUS_CODE_OUT_OF_RANGE;
    Store(numerator, denominator);
    return STATUS_CODE_SUCCESS;
}

StatusCode Rational::GetNumeratorAndDivisor(std::int64_t& numerator, std::uint64_t& divisor) const noexcept
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    if (denominator_ == DENOMINATOR_UNDEFINED)
        return STATUS_CODE_OUT_OF_RANGE;
    std::int64_t value = numerator_;
    if (IsMultiplier(denominator_) &&
        __builtin_mul_overflow(numerator_, static_cast<std::int64_t>(kTable[denominator_].multiplier), &value))
        return STATUS_CODE_OUT_OF_RANGE;
    numerator = value;
    divisor = UnitDivisor(denominator_);
    return STATUS_CODE_SUCCESS;
}

StatusCode Rational::GetWholeNumber(bool& negative, std::uint64_t& magnitude) const noexcept
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    if (denominator_ == DENOMINATOR_UNDEFINED)
        return STATUS_CODE_OUT_OF_RANGE;
    std::uint64_t whole = MagnitudeOf(numerator_) / UnitDivisor(denominator_);
    if (__builtin_mul_overflow(whole, Scale(denominator_), &whole))
        return STATUS_CODE_OUT_OF_RANGE;
    negative = numerator_ < 0;
    magnitude = whole;
    return STATUS_CODE_SUCCESS;
}

std::uint64_t Rational::GetDivisor(Denominator denominator) noexcept
{
    return denominator < DENOMINATOR_COUNT ? kTable[denominator].divisor : 0;
}

std::uint64_t Rational::GetMultiplier(Denominator denominator) noexcept
{
    return denominator < DENOMINATOR_COUNT ? kTable[denominator].multiplier : 0;
}

unsigned int Rational::GetPower(Denominator denominator) noexcept
{
    return denominator < DENOMINATOR_COUNT ? kTable[denominator].power : 0;
}

unsigned int Rational::GetPlaces(Denominator denominator) noexcept
{
    return denominator < DENOMINATOR_COUNT ? kTable[denominator].places : 0;
}

// ---- Look-ups -------------------------------------------------------------

StatusCode Rational::GetDenominatorByDecimalPlaces(unsigned int places, Denominator& denominator) noexcept
{
    if (places > 9)
        return STATUS_CODE_NOT_FOUND;
    denominator = static_cast<Denominator>(places);
    return STATUS_CODE_SUCCESS;
}

StatusCode Rational::GetDenominatorByDecimalPower(unsigned int power, Denominator& denominator) noexcept
{
    return GetDenominatorByDecimalPlaces(power, denominator);
}

StatusCode Rational::GetDenominatorByBinaryPower(unsigned int power, Denominator& denominator) noexcept
{
    if (power == 0 || power > 9)
        return STATUS_CODE_NOT_FOUND;
    denominator = static_cast<Denominator>(18 + power);
    return STATUS_CODE_SUCCESS;
}

StatusCode Rational::GetDenominatorByMultiplierPower(unsigned int power, Denominator& denominator) noexcept
{
    if (power == 0 || power > 9)
        return STATUS_CODE_NOT_FOUND;
    denominator = static_cast<Denominator>(9 + power);
    return STATUS_CODE_SUCCESS;
}

StatusCode Rational::GetDenominatorByDivisor(std::uint64_t divisor, Denominator& denominator) noexcept
{
    for (std::uint32_t code = 0; code < DENOMINATOR_CABINET; ++code)
        if (kTable[code].divisor == divisor && !IsMultiplier(static_cast<Denominator>(code)))
        {
            denominator = static_cast<Denominator>(code);
            return STATUS_CODE_SUCCESS;
        }
    return STATUS_CODE_NOT_FOUND;
}

StatusCode Rational::GetDenominatorByMultiplier(std::uint64_t multiplier, Denominator& denominator) noexcept
{
    for (std::uint32_t code = 0; code < DENOMINATOR_CABINET; ++code)
        if (multiplier != 0 && kTable[code].multiplier == multiplier)
        {
            denominator = static_cast<Denominator>(code);
            return STATUS_CODE_SUCCESS;
        }
    return STATUS_CODE_NOT_FOUND;
}

StatusCode Rational::GetLowestCommonDenominator(Denominator a, Denominator b, Denominator& common) noexcept
{
    if (!IsNumeric(a) || !IsNumeric(b))
        return STATUS_CODE_INVALID_PARAMETER;
    if (!IsBinary(a) && !IsBinary(b))
    {
        const int ea = DecimalExponent(a), eb = DecimalExponent(b);
        common = DecimalCode(ea < eb ? ea : eb);
    }
    else if ((IsBinary(a) || a == DENOMINATOR_WHOLE) && (IsBinary(b) || b == DENOMINATOR_WHOLE))
    {
        const unsigned pa = BinaryPower(a), pb = BinaryPower(b);
        common = BinaryCode(pa > pb ? pa : pb);
    }
    else
    {
        // One binary fraction, one decimal fraction or multiplier.
        const Denominator binary = IsBinary(a) ? a : b;
        const int exponent = DecimalExponent(IsBinary(a) ? b : a);
        const int power = static_cast<int>(BinaryPower(binary));
        common = exponent > 0 ? binary : DecimalCode(-exponent > power ? exponent : -power);
    }
    return STATUS_CODE_SUCCESS;
}

StatusCode Rational::ScaleNumerator(std::int64_t numerator, Denominator from, Denominator to,
                                    std::int64_t& scaled) noexcept
{
    if (!IsNumeric(from) || !IsNumeric(to))
        return STATUS_CODE_INVALID_PARAMETER;
    // value = numerator * Scale(from) / UnitDivisor(from) = scaled * Scale(to) / UnitDivisor(to)
    std::uint64_t factor = Scale(from) * UnitDivisor(to), divisor = UnitDivisor(from) * Scale(to);
    const std::uint64_t gcd = Gcd(factor, divisor);
    factor /= gcd;
    divisor /= gcd;
    const auto signedDivisor = static_cast<std::int64_t>(divisor);
    if (numerator % signedDivisor != 0)
        return STATUS_CODE_OUT_OF_RANGE;
    std::int64_t result;
    if (__builtin_mul_overflow(numerator / signedDivisor, static_cast<std::int64_t>(factor), &result))
        return STATUS_CODE_OUT_OF_RANGE;
    return Checked(result, scaled);
}

void Rational::CompressNumeratorAndDenominator(std::int64_t& numerator, Denominator& denominator) noexcept
{
    if (!IsNumeric(denominator))
        return;
    if (numerator == 0)
    {
        denominator = DENOMINATOR_WHOLE;
        return;
    }
    if (IsBinary(denominator))
    {
        unsigned power = BinaryPower(denominator);
        while (power != 0 && numerator % 2 == 0)
        {
            numerator /= 2;
            --power;
        }
        denominator = BinaryCode(power);
        return;
    }
    while (denominator >= DENOMINATOR_DECIMAL_1 && denominator <= DENOMINATOR_DECIMAL_9 && numerator % 10 == 0)
    {
        numerator /= 10;
        denominator = static_cast<Denominator>(denominator - 1);
    }
}

// ---- Arithmetic and comparison ---------------------------------------------

namespace {

// Both initialized and numeric, else the status of the pair.
StatusCode Operands(const Rational& a, const Rational& b) noexcept
{
    if (!a.IsInitialized() || !b.IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    if (!IsNumeric(a.GetDenominator()) || !IsNumeric(b.GetDenominator()))
        return STATUS_CODE_INVALID_PARAMETER;
    return STATUS_CODE_SUCCESS;
}

// Both numerators over their lowest common denominator.
StatusCode Common(const Rational& a, const Rational& b, std::int64_t& na, std::int64_t& nb, Denominator& common) noexcept
{
    StatusCode status = Rational::GetLowestCommonDenominator(a.GetDenominator(), b.GetDenominator(), common);
    if (status == STATUS_CODE_SUCCESS)
        status = Rational::ScaleNumerator(a.GetNumerator(), a.GetDenominator(), common, na);
    if (status == STATUS_CODE_SUCCESS)
        status = Rational::ScaleNumerator(b.GetNumerator(), b.GetDenominator(), common, nb);
    return status;
}

} // namespace

StatusCode Rational::Add(const Rational& other, bool compress) noexcept
{
    StatusCode status = Operands(*this, other);
    std::int64_t a = 0, b = 0, sum = 0;
    Denominator common = DENOMINATOR_WHOLE;
    if (status == STATUS_CODE_SUCCESS)
        status = Common(*this, other, a, b, common);
    if (status == STATUS_CODE_SUCCESS && (__builtin_add_overflow(a, b, &sum) || sum == kMin))
        status = STATUS_CODE_OUT_OF_RANGE;
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (compress)
        CompressNumeratorAndDenominator(sum, common);
    Store(sum, common);
    return STATUS_CODE_SUCCESS;
}

StatusCode Rational::Subtract(const Rational& other, bool compress) noexcept
{
    StatusCode status = Operands(*this, other);
    std::int64_t a = 0, b = 0, difference = 0;
    Denominator common = DENOMINATOR_WHOLE;
    if (status == STATUS_CODE_SUCCESS)
        status = Common(*this, other, a, b, common);
    if (status == STATUS_CODE_SUCCESS && (__builtin_sub_overflow(a, b, &difference) || difference == kMin))
        status = STATUS_CODE_OUT_OF_RANGE;
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (compress)
        CompressNumeratorAndDenominator(difference, common);
    Store(difference, common);
    return STATUS_CODE_SUCCESS;
}

StatusCode Rational::Multiply(const Rational& other, bool compress) noexcept
{
    StatusCode status = Operands(*this, other);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    std::int64_t a = numerator_, b = other.numerator_;
    Denominator da = denominator_, db = other.denominator_;
    // A binary fraction meeting a decimal fraction or multiplier is written
    // as the decimal fraction of the same power (times 5^n).
    const bool decimalA = !IsBinary(da) && da != DENOMINATOR_WHOLE, decimalB = !IsBinary(db) && db != DENOMINATOR_WHOLE;
    if ((IsBinary(da) && decimalB) || (IsBinary(db) && decimalA))
    {
        std::int64_t& n = IsBinary(da) ? a : b;
        Denominator& d = IsBinary(da) ? da : db;
        const auto power = BinaryPower(d);
        if (__builtin_mul_overflow(n, static_cast<std::int64_t>(Power(5, power)), &n))
            return STATUS_CODE_OUT_OF_RANGE;
        d = static_cast<Denominator>(power);
    }
    std::int64_t product;
    if (__builtin_mul_overflow(a, b, &product))
        return STATUS_CODE_OUT_OF_RANGE;
    Denominator result;
    if (IsBinary(da) || IsBinary(db))
    {
        const unsigned power = BinaryPower(da) + BinaryPower(db);
        if (power > 9)
            product /= static_cast<std::int64_t>(Power(2, power - 9));
        result = BinaryCode(power > 9 ? 9 : power);
    }
    else
    {
        const int exponent = DecimalExponent(da) + DecimalExponent(db);
        if (exponent < -9)
            product /= static_cast<std::int64_t>(Power(10, static_cast<unsigned>(-9 - exponent)));
        else if (exponent > 9 &&
                 __builtin_mul_overflow(product, static_cast<std::int64_t>(Power(10, static_cast<unsigned>(exponent - 9))),
                                        &product))
            return STATUS_CODE_OUT_OF_RANGE;
        result = DecimalCode(exponent < -9 ? -9 : (exponent > 9 ? 9 : exponent));
    }
    if (product == kMin)
        return STATUS_CODE_OUT_OF_RANGE;
    if (compress)
        CompressNumeratorAndDenominator(product, result);
    Store(product, result);
    return STATUS_CODE_SUCCESS;
}

StatusCode Rational::Divide(const Rational& other, bool compress) noexcept
{
    StatusCode status = Operands(*this, other);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (other.numerator_ == 0)
        return STATUS_CODE_OUT_OF_RANGE;
    std::int64_t a = 0, b = 0;
    Denominator common = DENOMINATOR_WHOLE;
    status = Common(*this, other, a, b, common);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    // a / b is the quotient's value; over a fraction it is scaled by the
    // divisor first, a multiplier gives way to the whole number.
    if (IsMultiplier(common))
        common = DENOMINATOR_WHOLE;
    std::int64_t quotient;
    if (__builtin_mul_overflow(a, static_cast<std::int64_t>(kTable[common].divisor), &quotient))
        return STATUS_CODE_OUT_OF_RANGE;
    if (quotient == kMin && b == -1)
        return STATUS_CODE_OUT_OF_RANGE;
    quotient /= b;
    if (quotient == kMin)
        return STATUS_CODE_OUT_OF_RANGE;
    if (compress)
        CompressNumeratorAndDenominator(quotient, common);
    Store(quotient, common);
    return STATUS_CODE_SUCCESS;
}

int Rational::Order(std::int64_t n1, Denominator d1, std::int64_t n2, Denominator d2) noexcept
{
    // Special values first: undefined, cabinet, then every number.
    const int rank1 = IsNumeric(d1) ? 2 : (d1 == DENOMINATOR_CABINET ? 1 : 0);
    const int rank2 = IsNumeric(d2) ? 2 : (d2 == DENOMINATOR_CABINET ? 1 : 0);
    if (rank1 != 2 || rank2 != 2)
        return Coding::Order(rank1, rank2);
    const int sign1 = (n1 > 0) - (n1 < 0), sign2 = (n2 > 0) - (n2 < 0);
    if (sign1 != sign2 || sign1 == 0)
        return Coding::Order(sign1, sign2);
    // |n1| * scale1 / unit1 against |n2| * scale2 / unit2, cross-multiplied
    // (each factor is at most 10^18).
    const Wide left = MultiplyWide(MagnitudeOf(n1), Scale(d1) * UnitDivisor(d2));
    const Wide right = MultiplyWide(MagnitudeOf(n2), Scale(d2) * UnitDivisor(d1));
    return sign1 * OrderWide(left, right);
}

StatusCode Rational::Compare(const Rational& other, int& result) const noexcept
{
    if (!IsInitialized() || !other.IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    result = Order(numerator_, denominator_, other.numerator_, other.denominator_);
    return STATUS_CODE_SUCCESS;
}

StatusCode Rational::Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                             int& result) noexcept
{
    Rational a, b;
    StatusCode status = a.DeserializeBody(body1, length1);
    if (status == STATUS_CODE_SUCCESS)
        status = b.DeserializeBody(body2, length2);
    return status != STATUS_CODE_SUCCESS ? status : a.Compare(b, result);
}

StatusCode Rational::Compare(const void* body, unsigned int bodyLength, int& result) const
{
    Rational other;
    const StatusCode status = other.DeserializeBody(body, bodyLength);
    return status != STATUS_CODE_SUCCESS ? status : Compare(other, result);
}

// ---- Conversion -------------------------------------------------------------

StatusCode Rational::Convert(const IFieldType* other)
{
    if (other == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    switch (other->GetType())
    {
    case FIELD_TYPE_RATIONAL: *this = *static_cast<const Rational*>(other); return STATUS_CODE_SUCCESS;
    case FIELD_TYPE_TRATIONAL: *this = static_cast<const TRational*>(other)->GetRational(); return STATUS_CODE_SUCCESS;
    case FIELD_TYPE_UINT:
    {
        const UInt& source = *static_cast<const UInt*>(other);
        if (source.IsInitialized() && source.GetValue() > static_cast<std::uint64_t>(kMax))
            return STATUS_CODE_FAILURE;
        if (source.IsInitialized())
            Store(static_cast<std::int64_t>(source.GetValue()), DENOMINATOR_WHOLE);
        else
            Reset();
        return STATUS_CODE_SUCCESS;
    }
    case FIELD_TYPE_SINT:
    {
        const SInt& source = *static_cast<const SInt*>(other);
        if (source.IsInitialized() && source.GetValue() == kMin)
            return STATUS_CODE_INVALID_PARAMETER;
        if (source.IsInitialized())
            Store(source.GetValue(), DENOMINATOR_WHOLE);
        else
            Reset();
        return STATUS_CODE_SUCCESS;
    }
    default: return STATUS_CODE_MISMATCH;
    }
}

// ---- Text ---------------------------------------------------------------------

std::string Rational::ToString() const
{
    if (!IsInitialized())
        return NOT_INITIALIZED_TEXT;
    if (denominator_ == DENOMINATOR_UNDEFINED)
        return kUndefinedText;
    if (denominator_ == DENOMINATOR_CABINET)
        return kCabinetText;
    char text[320]; // room for any width the compiler cannot bound
    const Row& row = kTable[denominator_];
    const std::uint64_t magnitude = MagnitudeOf(numerator_);
    const char* sign = numerator_ < 0 ? "-" : "";
    if (denominator_ == DENOMINATOR_WHOLE)
        std::snprintf(text, sizeof text, "%" PRId64, numerator_);
    else if (IsMultiplier(denominator_))
        std::snprintf(text, sizeof text, "%" PRId64 "*10^%u", numerator_, static_cast<unsigned>(row.power));
    else if (!IsBinary(denominator_))
        std::snprintf(text, sizeof text, "%s%" PRIu64 ".%0*" PRIu64, sign, magnitude / row.divisor,
                      static_cast<int>(row.places), magnitude % row.divisor);
    else if (magnitude / row.divisor != 0)
        std::snprintf(text, sizeof text, "%s%" PRIu64 " %" PRIu64 "/%" PRIu64, sign, magnitude / row.divisor,
                      magnitude % row.divisor, row.divisor);
    else
        std::snprintf(text, sizeof text, "%s%" PRIu64 "/%" PRIu64, sign, magnitude, row.divisor);
    return text;
}

std::string Rational::ToString(Denominator denominator) const
{
    if (!IsInitialized() || !IsNumeric(denominator_))
        return ToString();
    std::int64_t scaled = 0;
    const StatusCode status = ScaleNumerator(numerator_, denominator_, denominator, scaled);
    if (status != STATUS_CODE_SUCCESS)
        ZANTOR_THROW(StatusCodeException, status);
    Rational rescaled;
    rescaled.Store(scaled, denominator);
    return rescaled.ToString();
}

StatusCode Rational::ParseText(const char* text, unsigned size, std::int64_t& numerator,
                               Denominator& denominator) noexcept
{
    Scanner scanner{text, size, 0};
    if (scanner.Take(kCabinetText) || scanner.Take(kUndefinedText))
    {
        if (!scanner.AtEnd())
            return STATUS_CODE_INVALID_FORMAT;
        numerator = 0;
        denominator = text[1] == 'C' ? DENOMINATOR_CABINET : DENOMINATOR_UNDEFINED;
        return STATUS_CODE_SUCCESS;
    }
    const bool negative = scanner.Take('-');
    std::uint64_t first = 0, magnitude = 0;
    unsigned digits = 0;
    StatusCode status = scanner.Number(first, digits);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    Denominator code = DENOMINATOR_WHOLE;
    magnitude = first;
    if (scanner.Take("*10^"))
    {
        std::uint64_t power = 0;
        status = scanner.Number(power, digits);
        if (status != STATUS_CODE_SUCCESS || power == 0 || power > 9)
            return STATUS_CODE_INVALID_FORMAT;
        code = static_cast<Denominator>(9 + power);
    }
    else if (scanner.Take('.'))
    {
        std::uint64_t fraction = 0;
        status = scanner.Number(fraction, digits);
        if (status != STATUS_CODE_SUCCESS || digits > 9)
            return STATUS_CODE_INVALID_FORMAT;
        code = static_cast<Denominator>(digits);
        if (__builtin_mul_overflow(first, kTable[code].divisor, &magnitude) ||
            __builtin_add_overflow(magnitude, fraction, &magnitude))
            return STATUS_CODE_OUT_OF_RANGE;
    }
    else if (scanner.position < size && (text[scanner.position] == ' ' || text[scanner.position] == '/'))
    {
        // [whole ]remainder/divisor
        std::uint64_t whole = 0, remainder = first, divisor = 0;
        if (scanner.Take(' '))
        {
            whole = first;
            status = scanner.Number(remainder, digits);
            if (status != STATUS_CODE_SUCCESS)
                return STATUS_CODE_INVALID_FORMAT;
        }
        if (!scanner.Take('/') || scanner.Number(divisor, digits) != STATUS_CODE_SUCCESS)
            return STATUS_CODE_INVALID_FORMAT;
        if (GetDenominatorByDivisor(divisor, code) != STATUS_CODE_SUCCESS || !IsBinary(code) || remainder >= divisor)
            return STATUS_CODE_INVALID_FORMAT;
        if (__builtin_mul_overflow(whole, divisor, &magnitude) || __builtin_add_overflow(magnitude, remainder, &magnitude))
            return STATUS_CODE_OUT_OF_RANGE;
    }
    if (!scanner.AtEnd())
        return STATUS_CODE_INVALID_FORMAT;
    if (magnitude > static_cast<std::uint64_t>(kMax))
        return STATUS_CODE_OUT_OF_RANGE;
    numerator = negative ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
    denominator = code;
    return STATUS_CODE_SUCCESS;
}

StatusCode Rational::FromString(MessageValidator& text)
{
    StatusCode status;
    if (FromNotInitializedText(text, status))
        return status;
    std::int64_t numerator = 0;
    Denominator denominator = DENOMINATOR_WHOLE;
    const unsigned size = text.GetRemaining();
    status = ParseText(reinterpret_cast<const char*>(text.GetCursorPointer()), size, numerator, denominator);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    text.ValidateBytes(size);
    Store(numerator, denominator);
    return STATUS_CODE_SUCCESS;
}

const char* Rational::GetFromStringFormat() const noexcept
{
    return "[-]n | [-]n.f | [-][n ]r/2^k | [-]n*10^k | [CabinetValue] | [UndefinedValue]";
}

// ---- Wire forms ---------------------------------------------------------------

unsigned char Rational::Lead(unsigned width) const noexcept
{
    static constexpr unsigned char widthCode[9] = {0, 0, 1, 0, 2, 0, 0, 0, 3};
    return static_cast<unsigned char>((numerator_ < 0 ? 0x80u : 0u) | (widthCode[width] << 5) | denominator_);
}

std::uint64_t Rational::Magnitude() const noexcept
{
    return MagnitudeOf(numerator_);
}

StatusCode Rational::ParseBody(const unsigned char* body, unsigned length, MessageHandler::Endian endian,
                               std::int64_t& numerator, Denominator& denominator) noexcept
{
    if (length == 0 || body == nullptr || BodyLength(body[0]) != length)
        return STATUS_CODE_INVALID_PARAMETER;
    const auto code = static_cast<Denominator>(body[0] & 0x1Fu);
    if (code >= DENOMINATOR_COUNT)
        return STATUS_CODE_INVALID_FORMAT;
    const std::uint64_t magnitude = Coding::LoadWidth(body + 1, length - 1, MessageHandler::IsBigEndian(endian));
    if ((!IsNumeric(code) && magnitude != 0) || magnitude > static_cast<std::uint64_t>(kMax))
        return STATUS_CODE_OUT_OF_RANGE;
    numerator = (body[0] & 0x80u) != 0 ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
    denominator = code;
    return STATUS_CODE_SUCCESS;
}

StatusCode Rational::AppendBody(MessageBuilder& builder, unsigned maxLength, bool withTrailer,
                                unsigned char trailer) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    const std::uint64_t magnitude = Magnitude();
    const unsigned width = Coding::UnsignedWidth(magnitude);
    if (1 + width + (withTrailer ? 1 : 0) > maxLength)
        return STATUS_CODE_INVALID_PARAMETER;
    const unsigned char lead = Lead(width);
    if (!withTrailer)
        return Coding::AppendAfterByte(builder, lead, magnitude, width);
    const MessageHandler::Endian endian = builder.GetEndian();
    switch (width)
    {
    case 1: return builder.AppendBuiltIns(endian, lead, static_cast<std::uint8_t>(magnitude), trailer);
    case 2: return builder.AppendBuiltIns(endian, lead, static_cast<std::uint16_t>(magnitude), trailer);
    case 4: return builder.AppendBuiltIns(endian, lead, static_cast<std::uint32_t>(magnitude), trailer);
    default: return builder.AppendBuiltIns(endian, lead, magnitude, trailer);
    }
}

void Rational::StoreBody(unsigned char* buffer) const noexcept
{
    const std::uint64_t magnitude = Magnitude();
    const unsigned width = Coding::UnsignedWidth(magnitude);
    buffer[0] = Lead(width);
    Coding::StoreLittle(buffer + 1, magnitude, width);
}

StatusCode Rational::Serialize(MessageBuilder& builder, unsigned int maxLength) const
{
    return AppendBody(builder, maxLength, false, 0);
}

StatusCode Rational::SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const
{
    return AppendBody(builder, maxLength, false, 0);
}

StatusCode Rational::SerializeBody(void* buffer, unsigned int length, unsigned int& written) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    written = GetSerializedBodyLength();
    if (length < written || buffer == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    StoreBody(static_cast<unsigned char*>(buffer));
    return STATUS_CODE_SUCCESS;
}

namespace {

// A rational body at the cursor of at most limit bytes; its length is
// reported and the cursor stays.
template <typename Parse>
StatusCode PeekAt(const MessageValidator& validator, unsigned limit, unsigned extra, unsigned& length, Parse parse)
{
    if (validator.GetRemaining() == 0)
        return STATUS_CODE_INVALID_PARAMETER;
    const unsigned char* body = validator.GetCursorPointer();
    const unsigned announced = 1u + (1u << ((body[0] >> 5) & 3u)) + extra;
    if (announced > limit)
        return STATUS_CODE_OUT_OF_RANGE;
    if (announced > validator.GetRemaining())
        return STATUS_CODE_INVALID_PARAMETER;
    length = announced;
    return parse(body, announced);
}

} // namespace

StatusCode Rational::Deserialize(MessageValidator& validator, unsigned int length)
{
    std::int64_t numerator = 0;
    Denominator denominator = DENOMINATOR_WHOLE;
    unsigned size = 0;
    const StatusCode status = PeekAt(validator, length, 0, size, [&](const unsigned char* body, unsigned n) {
        return ParseBody(body, n, validator.GetEndian(), numerator, denominator);
    });
    if (status != STATUS_CODE_SUCCESS)
        return status;
    validator.ValidateBytes(size);
    Store(numerator, denominator);
    return STATUS_CODE_SUCCESS;
}

StatusCode Rational::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength)
{
    return Deserialize(validator, maxLength);
}

StatusCode Rational::DeserializeBody(const void* body, unsigned int length)
{
    std::int64_t numerator = 0;
    Denominator denominator = DENOMINATOR_WHOLE;
    const StatusCode status = ParseBody(static_cast<const unsigned char*>(body), length,
                                        MessageHandler::ENDIAN_LITTLE, numerator, denominator);
    if (status == STATUS_CODE_SUCCESS)
        Store(numerator, denominator);
    return status;
}

StatusCode Rational::ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                     unsigned int& bodyLength) noexcept
{
    std::int64_t numerator = 0;
    Denominator denominator = DENOMINATOR_WHOLE;
    unsigned size = 0;
    const StatusCode status = PeekAt(validator, ~0u, 0, size, [&](const unsigned char* body, unsigned n) {
        return ParseBody(body, n, validator.GetEndian(), numerator, denominator);
    });
    if (status != STATUS_CODE_SUCCESS)
        return status;
    bodyOffset = validator.GetCursor();
    bodyLength = size;
    validator.ValidateBytes(size);
    return STATUS_CODE_SUCCESS;
}

unsigned int Rational::GetSerializedLength() const noexcept
{
    return IsInitialized() ? 1 + Coding::UnsignedWidth(Magnitude()) : 0;
}

unsigned int Rational::GetSerializedBodyLength() const noexcept
{
    return GetSerializedLength();
}

StatusCode Rational::IsDifferent(const void* body, unsigned int bodyLength, bool& different) const
{
    Rational other;
    if (bodyLength != 0)
    {
        const StatusCode status = other.DeserializeBody(body, bodyLength);
        if (status != STATUS_CODE_SUCCESS)
            return status;
    }
    different = other.IsInitialized() != IsInitialized() ||
                (IsInitialized() && Order(numerator_, denominator_, other.numerator_, other.denominator_) != 0);
    return STATUS_CODE_SUCCESS;
}

} // namespace Zantor
