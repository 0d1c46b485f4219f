// Rational: the price type of the market data (FIELD_TYPE_RATIONAL): a
// signed 64-bit numerator over a denominator code from a fixed table of
// decimal fractions (1/10^n), decimal multipliers (10^n) and binary
// fractions (1/2^n), n = 1..9, plus the whole-number code and two special
// values (cabinet, undefined) whose numerator is always 0.
//
// The value owns no storage and is copyable. Thread safety: a value belongs
// to one thread at a time; the static members and the table may be used
// from any thread.
//
//   Rational price(-5, Rational::DENOMINATOR_DECIMAL_2); // -0.05
//   price.SerializeLengthAndBody(builder, 9);           // 0x82, 0x05
//   price.Add(Rational(1, Rational::DENOMINATOR_WHOLE)); // 0.95
//
// Invariant: the magnitude of the numerator is at most 2^63-1 (-2^63 has no
// place in the sign-and-magnitude body), and the code is 0..29.
//
// Body (2, 3, 5 or 9 bytes, no length prefix in records and updates): byte 0
// holds the sign (bit 7, 1 = negative), the width code w (bits 5-6; the
// magnitude takes 2^w bytes) and the denominator code (bits 0-4); then the
// magnitude of the numerator in its shortest width. The magnitude goes
// through a builder or validator in its byte order (GetEndian()); in a
// caller's buffer it is little-endian.
// - Serialize, SerializeLengthAndBody: the body; maxLength below its length
//   gives STATUS_CODE_INVALID_PARAMETER. SerializeBody: written receives the
//   body's length; a buffer shorter than that gives
//   STATUS_CODE_INVALID_PARAMETER.
// - Reading: an empty body, a body whose length disagrees with its width
//   code, or one running past the end: STATUS_CODE_INVALID_PARAMETER; a
//   denominator code of 30 or more: STATUS_CODE_INVALID_FORMAT; a special
//   value with a magnitude, or a magnitude above 2^63-1:
//   STATUS_CODE_OUT_OF_RANGE. The length (Deserialize) or maxLength
//   (DeserializeLengthAndBody) given is the most the field may take; a
//   body announcing more gives STATUS_CODE_OUT_OF_RANGE.
// Serializing a value that is not initialized gives
// STATUS_CODE_NOT_INITIALIZED. Nothing changes on failure.
//
// Text (ToString; FromString reads exactly these forms back, and
// "[NotInitialized]"; other text: STATUS_CODE_INVALID_FORMAT, a numerator
// beyond 2^63-1: STATUS_CODE_OUT_OF_RANGE):
// - whole number: "-12"; multiplier: "-12*10^3";
// - decimal fraction: "-0.05", the fraction zero-padded to the code's
//   places, so the code is read back from the number of digits ("1.50" is
//   150 over 1/100);
// - binary fraction: "[-][whole ]remainder/divisor" with the whole part and
//   its blank left out when the whole part is 0 and the remainder always
//   printed: 0 at 1/4 is "0/4", 5 is "5 0/4", -1.25 is "-1 1/4", -0.25
//   is "-1/4". FromString also takes a whole part of 0 ("0 1/4"); the
//   remainder must be below the divisor;
// - "[CabinetValue]", "[UndefinedValue]".
//
// Values: comparisons are exact (128-bit cross products), also where a
// common denominator would overflow. The special values order before every
// number, undefined before cabinet, and each equals itself only.
#pragma once

#include <ZantorMiddleware/ZantorBase/FieldTypes/IFieldType.h>
#include <ZantorMiddleware/ZantorBase/MessageHandler.h>

#include <cstdint>
#include <string>

namespace Zantor {

class TRational;

class ZANTOR_BASE_API Rational : public IFieldType
{
public:
    // The denominator codes (the wire value, 5 bits in the body).
    enum Denominator : std::uint32_t
    {
        DENOMINATOR_WHOLE = 0,          // whole number: divisor 1
        DENOMINATOR_DECIMAL_1 = 1,      // 1/10 ... DENOMINATOR_DECIMAL_n: 1/10^n
        DENOMINATOR_DECIMAL_2,
        DENOMINATOR_DECIMAL_3,
        DENOMINATOR_DECIMAL_4,
        DENOMINATOR_DECIMAL_5,
        DENOMINATOR_DECIMAL_6,
        DENOMINATOR_DECIMAL_7,
        DENOMINATOR_DECIMAL_8,
        DENOMINATOR_DECIMAL_9,          // 1/10^9
        DENOMINATOR_MULTIPLIER_1 = 10,  // times 10 ... DENOMINATOR_MULTIPLIER_n: times 10^n
        DENOMINATOR_MULTIPLIER_2,
        DENOMINATOR_MULTIPLIER_3,
        DENOMINATOR_MULTIPLIER_4,
        DENOMINATOR_MULTIPLIER_5,
        DENOMINATOR_MULTIPLIER_6,
        DENOMINATOR_MULTIPLIER_7,
        DENOMINATOR_MULTIPLIER_8,
        DENOMINATOR_MULTIPLIER_9,       // times 10^9
        DENOMINATOR_BINARY_1 = 19,      // 1/2 ... DENOMINATOR_BINARY_n: 1/2^n
        DENOMINATOR_BINARY_2,
        DENOMINATOR_BINARY_3,
        DENOMINATOR_BINARY_4,
        DENOMINATOR_BINARY_5,
        DENOMINATOR_BINARY_6,
        DENOMINATOR_BINARY_7,
        DENOMINATOR_BINARY_8,
        DENOMINATOR_BINARY_9,           // 1/512
        DENOMINATOR_CABINET = 28,       // the cabinet value (numerator 0)
        DENOMINATOR_UNDEFINED = 29,     // the undefined value (numerator 0)
    };
    // Codes of this value or more are invalid.
    static constexpr std::uint32_t DENOMINATOR_COUNT = 30;

    // A value that is not initialized.
    Rational() noexcept
        : IFieldType(FIELD_TYPE_RATIONAL), numerator_(0), denominator_(DENOMINATOR_WHOLE)
    {
    }
    // An initialized value; what Set refuses throws StatusCodeException
    // carrying Set's status.
    Rational(std::int64_t numerator, Denominator denominator);
    Rational(const Rational&) = default;
    Rational& operator=(const Rational&) = default;

    std::int64_t GetNumerator() const noexcept { return numerator_; }
    Denominator GetDenominator() const noexcept { return denominator_; }
    bool IsCabinetValue() const noexcept { return IsInitialized() && denominator_ == DENOMINATOR_CABINET; }
    bool IsUndefinedValue() const noexcept { return IsInitialized() && denominator_ == DENOMINATOR_UNDEFINED; }
    // Stores the value; it becomes initialized. A code of 30 or more or the
    // numerator -2^63: STATUS_CODE_INVALID_PARAMETER; a special code with a
    // numerator other than 0: STATUS_CODE_OUT_OF_RANGE. Nothing changes on
    // failure.
    StatusCode Set(std::int64_t numerator, Denominator denominator) noexcept;
    // The value as numerator / divisor: a fraction gives its numerator and
    // divisor, a whole number or multiplier the whole value over 1 (beyond
    // 64 bits: STATUS_CODE_OUT_OF_RANGE), the cabinet value 0 over 1.
    // STATUS_CODE_NOT_INITIALIZED, or STATUS_CODE_OUT_OF_RANGE for the
    // undefined value; the outputs change on success only.
    StatusCode GetNumeratorAndDivisor(std::int64_t& numerator, std::uint64_t& divisor) const noexcept;
    // The value brought to a whole number as sign and magnitude: a fraction
    // divided by its divisor (truncated toward zero), a multiplier scaled up
    // (beyond 2^64-1: STATUS_CODE_OUT_OF_RANGE), the cabinet value 0.
    // STATUS_CODE_NOT_INITIALIZED, or STATUS_CODE_OUT_OF_RANGE for the
    // undefined value, which has neither divisor nor multiplier. negative is
    // the sign of the numerator (so -0.5 gives negative and 0).
    StatusCode GetWholeNumber(bool& negative, std::uint64_t& magnitude) const noexcept;

    // The table: divisor (0 for multipliers and the undefined value),
    // multiplier (1 for the whole number, 0 for fractions and special
    // values), power (the decimal, binary or multiplier exponent) and places
    // (digits printed after the point, or in a binary fraction's remainder).
    // Every one gives 0 for a code of 30 or more.
    static std::uint64_t GetDivisor(Denominator denominator) noexcept;
    static std::uint64_t GetMultiplier(Denominator denominator) noexcept;
    static unsigned int GetPower(Denominator denominator) noexcept;
    static unsigned int GetPlaces(Denominator denominator) noexcept;

    // Look-ups: STATUS_CODE_SUCCESS and the code, or STATUS_CODE_NOT_FOUND
    // (nothing changes) when no row matches. Places and decimal power 0..9
    // give codes 0..9; binary power 1..9 gives 19..27; multiplier power 1..9
    // gives 10..18. A divisor of 1 gives the whole number (not the cabinet
    // value), 10^n and 2^n their fractions; a multiplier of 1 the whole
    // number, 10^n the multiplier codes.
    static StatusCode GetDenominatorByDecimalPlaces(unsigned int places, Denominator& denominator) noexcept;
    static StatusCode GetDenominatorByDecimalPower(unsigned int power, Denominator& denominator) noexcept;
    static StatusCode GetDenominatorByBinaryPower(unsigned int power, Denominator& denominator) noexcept;
    static StatusCode GetDenominatorByMultiplierPower(unsigned int power, Denominator& denominator) noexcept;
    static StatusCode GetDenominatorByDivisor(std::uint64_t divisor, Denominator& denominator) noexcept;
    static StatusCode GetDenominatorByMultiplier(std::uint64_t multiplier, Denominator& denominator) noexcept;
    // The code that represents values of both codes exactly with the least
    // resolution: the finer of two decimal or two binary fractions, the
    // smaller of two multipliers, a fraction over the whole number or a
    // multiplier, and 1/10^max(n, m) for 1/10^n with 1/2^m. A special or
    // invalid code: STATUS_CODE_INVALID_PARAMETER (nothing changes).
    static StatusCode GetLowestCommonDenominator(Denominator a, Denominator b, Denominator& common) noexcept;
    // numerator over from, expressed exactly over to. A special or invalid
    // code: STATUS_CODE_INVALID_PARAMETER; a value that to cannot hold
    // exactly (a lost digit) or whose numerator would pass 2^63-1:
    // STATUS_CODE_OUT_OF_RANGE. scaled changes on success only.
    static StatusCode ScaleNumerator(std::int64_t numerator, Denominator from, Denominator to,
                                     std::int64_t& scaled) noexcept;
    // Reduces a fraction to the coarsest code of its family that holds it
    // exactly: trailing decimal zeros (decimal codes) or factors of 2
    // (binary codes) are stripped from the numerator down to the whole
    // number; 0 becomes 0 over the whole number. Whole numbers, multipliers,
    // special and invalid codes are left as they are.
    static void CompressNumeratorAndDenominator(std::int64_t& numerator, Denominator& denominator) noexcept;

    // Arithmetic. STATUS_CODE_NOT_INITIALIZED when either operand is not
    // initialized; STATUS_CODE_INVALID_PARAMETER when either is a special
    // value; STATUS_CODE_OUT_OF_RANGE when a 64-bit step overflows or the
    // numerator would pass 2^63-1, and for a divisor of 0. Nothing changes
    // on failure. With compress the result goes through
    // CompressNumeratorAndDenominator.
    // Add, Subtract: both are scaled to the lowest common denominator, which
    // the result keeps.
    StatusCode Add(const Rational& other, bool compress = false) noexcept;
    StatusCode Subtract(const Rational& other, bool compress = false) noexcept;
    // Multiply: the numerators are multiplied and the exponents added (a
    // binary fraction meeting a decimal code is first written as a decimal
    // fraction), so the product is exact while the table has its row; past
    // 1/10^9 or 1/2^9 it is truncated toward zero at that row, past 10^9
    // the numerator is scaled up.
    StatusCode Multiply(const Rational& other, bool compress = false) noexcept;
    // Divide: the quotient over the lowest common denominator (over the
    // whole number when that is a multiplier), truncated toward zero.
    StatusCode Divide(const Rational& other, bool compress = false) noexcept;
    // Exact comparison by value; STATUS_CODE_NOT_INITIALIZED when either is
    // not initialized.
    StatusCode Compare(const Rational& other, int& result) const noexcept;
    // Compares two serialized bodies (little-endian) by value; a body that
    // does not read gives its status.
    static StatusCode Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                              int& result) noexcept;
    // Checks a rational at the validator's position exactly as reading it
    // would (same statuses), reports where its body lies (offset from the
    // start of the buffer) and moves past it; nothing changes on failure.
    static StatusCode ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                      unsigned int& bodyLength) noexcept;

    // The text of the value rescaled to denominator first (special values
    // and a value that is not initialized print as they are). Throws
    // StatusCodeException carrying ScaleNumerator's status when it cannot
    // be rescaled (STATUS_CODE_INVALID_PARAMETER for a code of 30 or more or
    // a special code, STATUS_CODE_OUT_OF_RANGE for a lost digit or overflow).
    std::string ToString(Denominator denominator) const;

    using IFieldType::Deserialize;
    using IFieldType::DeserializeBody;
    using IFieldType::DeserializeLengthAndBody;
    using IFieldType::Serialize;
    using IFieldType::SerializeBody;
    using IFieldType::SerializeLengthAndBody;

    void Reset() noexcept override { SetInitialized(false); }
    void Release() noexcept override { SetInitialized(false); }
    StatusCode Compare(const void* body, unsigned int bodyLength, int& result) const override;
    // From Rational, TRational (its rational part), UInt and SInt (over the
    // whole number). A UInt of 2^63 or more gives STATUS_CODE_FAILURE, the
    // SInt -2^63 STATUS_CODE_INVALID_PARAMETER; a source that is not
    // initialized resets this value and succeeds; any other type gives
    // STATUS_CODE_MISMATCH, null STATUS_CODE_INVALID_PARAMETER.
    StatusCode Convert(const IFieldType* other) override;
    std::string ToString() const override;
    StatusCode FromString(MessageValidator& text) override;
    const char* GetFromStringFormat() const noexcept override;
    StatusCode Serialize(MessageBuilder& builder, unsigned int maxLength) const override;
    StatusCode SerializeBody(void* buffer, unsigned int length, unsigned int& written) const override;
    StatusCode SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const override;
    StatusCode Deserialize(MessageValidator& validator, unsigned int length) override;
    StatusCode DeserializeBody(const void* body, unsigned int length) override;
    StatusCode DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength) override;
    unsigned int GetSerializedLength() const noexcept override;
    unsigned int GetSerializedBodyLength() const noexcept override;
    // Compares value and flag; a body of length 0 stands for a value that
    // is not initialized.
    StatusCode IsDifferent(const void* body, unsigned int bodyLength, bool& different) const override;

private:
    friend class TRational;

    // The body's length (2, 3, 5 or 9) when byte 0 is lead.
    static unsigned BodyLength(unsigned char lead) noexcept { return 1u + (1u << ((lead >> 5) & 3u)); }
    // Byte 0 of the body, for a magnitude of width bytes (1, 2, 4 or 8).
    unsigned char Lead(unsigned width) const noexcept;
    std::uint64_t Magnitude() const noexcept;
    // Reads a body of exactly length bytes, magnitude in the given order.
    static StatusCode ParseBody(const unsigned char* body, unsigned length, MessageHandler::Endian endian,
                                std::int64_t& numerator, Denominator& denominator) noexcept;
    // Appends the body, followed by trailer when withTrailer.
    StatusCode AppendBody(MessageBuilder& builder, unsigned maxLength, bool withTrailer,
                          unsigned char trailer) const;
    // Writes the little-endian body into buffer (which holds enough).
    void StoreBody(unsigned char* buffer) const noexcept;
    // Parses text of size bytes; the outputs change on success only.
    static StatusCode ParseText(const char* text, unsigned size, std::int64_t& numerator,
                                Denominator& denominator) noexcept;
    // Exact order of two initialized values.
    static int Order(std::int64_t n1, Denominator d1, std::int64_t n2, Denominator d2) noexcept;
    void Store(std::int64_t numerator, Denominator denominator) noexcept
    {
        numerator_ = numerator;
        denominator_ = denominator;
        SetInitialized(true);
    }

    std::int64_t numerator_;
    Denominator denominator_;
};

} // namespace Zantor
