// TRational: a rational price with a tick and two trend indicators
// (FIELD_TYPE_TRATIONAL), each a 2-bit code: the tick 1 (up, "+"), 2 (down,
// "-") or 3 (none, " "); a trend 0 (unchanged, "="), 1 (up, "+"), 2 (down,
// "-") or 3 (none, " ").
//
// The value owns no storage and is copyable. Thread safety: a value belongs
// to one thread at a time; the static members may be used from any thread.
//
//   TRational last(10125, Rational::DENOMINATOR_DECIMAL_2, TRational::TICK_UP,
//                  TRational::TREND_DOWN, TRational::TREND_UP);
//   last.ToString(); // "101.25<+-+>"
//
// A new value has the tick TICK_NONE and both trends TREND_NONE; the codes
// stay when the rational part changes (Set, Convert from Rational or an
// integer) and are taken over only from another TRational.
//
// Body: the Rational body (see Rational.h; same rules and statuses) followed
// by one byte: bits 4-5 tick, bits 2-3 first trend, bits 0-1 second trend,
// bits 6-7 zero. Reading a tick of 0 or a set bit 6 or 7 gives
// STATUS_CODE_INVALID_FORMAT, an empty body STATUS_CODE_INVALID_PARAMETER.
//
// Text: the rational's text followed by "<tick first second>" symbols, as
// "101.25<+-+>"; FromString reads exactly that back (a tick "=" or a
// missing or malformed suffix: STATUS_CODE_INVALID_FORMAT). A value that is
// not initialized prints "[NotInitialized]" alone.
//
// Comparisons (Compare) look at the rational part only; IsDifferent also at
// the three codes.
#pragma once

#include <ZantorMiddleware/ZantorBase/FieldTypes/IFieldType.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Rational.h>

#include <cstdint>
#include <string>

namespace Zantor {

class ZANTOR_BASE_API TRational : public IFieldType
{
public:
    enum Tick : unsigned char
    {
        TICK_INVALID = 0, // never valid in a value or on the wire
        TICK_UP = 1,
        TICK_DOWN = 2,
        TICK_NONE = 3,
    };
    enum Trend : unsigned char
    {
        TREND_UNCHANGED = 0,
        TREND_UP = 1,
        TREND_DOWN = 2,
        TREND_NONE = 3,
    };

    // The symbol of a code: "=", "+", "-" or " "; "?" for a tick of 0 or a
    // code above 3.
    static const char* TickToString(Tick tick) noexcept;
    static const char* TrendToString(Trend trend) noexcept;

    // A value that is not initialized.
    TRational() noexcept
        : IFieldType(FIELD_TYPE_TRATIONAL), tick_(TICK_NONE), firstTrend_(TREND_NONE), secondTrend_(TREND_NONE)
    {
    }
    // An initialized value; what Set, SetTick or SetTrend refuse throws
    // StatusCodeException carrying their status.
    TRational(std::int64_t numerator, Rational::Denominator denominator, Tick tick, Trend first, Trend second);
    TRational(const TRational&) = default;
    TRational& operator=(const TRational&) = default;

    // The rational part; it is initialized exactly when this value is.
    const Rational& GetRational() const noexcept { return rational_; }
    std::int64_t GetNumerator() const noexcept { return rational_.GetNumerator(); }
    Rational::Denominator GetDenominator() const noexcept { return rational_.GetDenominator(); }
    // As Rational::Set; the value becomes initialized, the codes stay.
    StatusCode Set(std::int64_t numerator, Rational::Denominator denominator) noexcept;

    Tick GetTick() const noexcept { return tick_; }
    Trend GetFirstTrend() const noexcept { return firstTrend_; }
    Trend GetSecondTrend() const noexcept { return secondTrend_; }
    // A tick outside 1..3 or a trend above 3: STATUS_CODE_INVALID_PARAMETER,
    // nothing changes. The flag is not touched.
    StatusCode SetTick(Tick tick) noexcept;
    StatusCode SetFirstTrend(Trend trend) noexcept;
    StatusCode SetSecondTrend(Trend trend) noexcept;

    // Compares the rational parts (Rational::Compare).
    StatusCode Compare(const TRational& other, int& result) const noexcept;
    // Compares the rational parts of two serialized bodies (little-endian);
    // a body that does not read gives its status.
    static StatusCode Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                              int& result) noexcept;
    // Checks a TRational at the validator's position exactly as reading it
    // would (same statuses), reports where its body lies and moves past it;
    // nothing changes on failure.
    static StatusCode ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                      unsigned int& bodyLength) noexcept;

    using IFieldType::Deserialize;
    using IFieldType::DeserializeBody;
    using IFieldType::DeserializeLengthAndBody;
    using IFieldType::Serialize;
    using IFieldType::SerializeBody;
    using IFieldType::SerializeLengthAndBody;

    void Reset() noexcept override { Mark(false); }
    void Release() noexcept override { Mark(false); }
    StatusCode Compare(const void* body, unsigned int bodyLength, int& result) const override;
    // From TRational (value, flag and codes), Rational, UInt and SInt (the
    // rational part as Rational::Convert; the codes stay).
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
    // Compares value, flag and the three codes; a body of length 0 stands
    // for a value that is not initialized.
    StatusCode IsDifferent(const void* body, unsigned int bodyLength, bool& different) const override;

private:
    void Mark(bool initialized) noexcept
    {
        SetInitialized(initialized);
        rational_.SetInitialized(initialized);
    }
    unsigned char Trailer() const noexcept
    {
        return static_cast<unsigned char>((tick_ << 4) | (firstTrend_ << 2) | secondTrend_);
    }
    // Reads a body of exactly length bytes; outputs change on success only.
    static StatusCode ParseBody(const unsigned char* body, unsigned length, MessageHandler::Endian endian,
                                TRational& value) noexcept;
    // Reads the body at the validator's cursor, at most limit bytes; the
    // body's length is reported and the cursor is not moved.
    static StatusCode PeekBody(const MessageValidator& validator, unsigned limit, TRational& value,
                               unsigned& length) noexcept;

    Rational rational_;
    Tick tick_;
    Trend firstTrend_;
    Trend secondTrend_;
};

} // namespace Zantor
