// TRational: a rational price with a tick and two trend codes.
#include <ZantorMiddleware/ZantorBase/FieldTypes/TRational.h>

#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

namespace Zantor {

namespace {

constexpr const char* kSymbols[4] = {"=", "+", "-", " "};

// The code of a symbol character, or 4 when it is none.
unsigned SymbolCode(char symbol) noexcept
{
    for (unsigned code = 0; code < 4; ++code)
        if (kSymbols[code][0] == symbol)
            return code;
    return 4;
}

} // namespace

const char* TRational::TickToString(Tick tick) noexcept
{
    return tick >= 1 && tick <= 3 ? kSymbols[tick] : "?";
}

const char* TRational::TrendToString(Trend trend) noexcept
{
    return trend <= 3 ? kSymbols[trend] : "?";
}

TRational::TRational(std::int64_t numerator, Rational::Denominator denominator, Tick tick, Trend first, Trend second)
    : TRational()
{
    StatusCode status = SetTick(tick);
    if (status == STATUS_CODE_SUCCESS)
        status = SetFirstTrend(first);
    if (status == STATUS_CODE_SUCCESS)
        status = SetSecondTrend(second);
    if (status == STATUS_CODE_SUCCESS)
        status = Set(numerator, denominator);
    if (status != STATUS_CODE_SUCCESS)
        ZANTOR_THROW(StatusCodeException, status);
}

StatusCode TRational::Set(std::int64_t numerator, Rational::Denominator denominator) noexcept
{
    const StatusCode status = rational_.Set(numerator, denominator);
    if (status == STATUS_CODE_SUCCESS)
        Mark(true);
    return status;
}

StatusCode TRational::SetTick(Tick tick) noexcept
{
    if (tick == TICK_INVALID || tick > TICK_NONE)
        return STATUS_CODE_INVALID_PARAMETER;
    tick_ = tick;
    return STATUS_CODE_SUCCESS;
}

StatusCode TRational::SetFirstTrend(Trend trend) noexcept
{
    if (trend > TREND_NONE)
        return STATUS_CODE_INVALID_PARAMETER;
    firstTrend_ = trend;
    return STATUS_CODE_SUCCESS;
}

StatusCode TRational::SetSecondTrend(Trend trend) noexcept
{
    if (trend > TREND_NONE)
        return STATUS_CODE_INVALID_PARAMETER;
    secondTrend_ = trend;
    return STATUS_CODE_SUCCESS;
}

StatusCode TRational::Compare(const TRational& other, int& result) const noexcept
{
    return rational_.Compare(other.rational_, result);
}

StatusCode TRational::Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                              int& result) noexcept
{
    TRational a, b;
    StatusCode status = a.DeserializeBody(body1, length1);
    if (status == STATUS_CODE_SUCCESS)
        status = b.DeserializeBody(body2, length2);
    return status != STATUS_CODE_SUCCESS ? status : a.Compare(b, result);
}

StatusCode TRational::Compare(const void* body, unsigned int bodyLength, int& result) const
{
    TRational other;
    const StatusCode status = other.DeserializeBody(body, bodyLength);
    return status != STATUS_CODE_SUCCESS ? status : Compare(other, result);
}

StatusCode TRational::ParseBody(const unsigned char* body, unsigned length, MessageHandler::Endian endian,
                                TRational& value) noexcept
{
    if (length == 0 || body == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    const unsigned rationalLength = Rational::BodyLength(body[0]);
    if (length != rationalLength + 1)
        return STATUS_CODE_INVALID_PARAMETER;
    std::int64_t numerator = 0;
    Rational::Denominator denominator = Rational::DENOMINATOR_WHOLE;
    const StatusCode status = Rational::ParseBody(body, rationalLength, endian, numerator, denominator);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    const unsigned trailer = body[rationalLength];
    if ((trailer & 0xC0u) != 0 || (trailer >> 4) == 0)
        return STATUS_CODE_INVALID_FORMAT;
    value.rational_.Store(numerator, denominator);
    value.Mark(true);
    value.tick_ = static_cast<Tick>(trailer >> 4);
    value.firstTrend_ = static_cast<Trend>((trailer >> 2) & 3u);
    value.secondTrend_ = static_cast<Trend>(trailer & 3u);
    return STATUS_CODE_SUCCESS;
}

StatusCode TRational::PeekBody(const MessageValidator& validator, unsigned limit, TRational& value,
                               unsigned& length) noexcept
{
    if (validator.GetRemaining() == 0)
        return STATUS_CODE_INVALID_PARAMETER;
    const unsigned char* body = validator.GetCursorPointer();
    const unsigned announced = Rational::BodyLength(body[0]) + 1;
    if (announced > limit)
        return STATUS_CODE_OUT_OF_RANGE;
    if (announced > validator.GetRemaining())
        return STATUS_CODE_INVALID_PARAMETER;
    length = announced;
    return ParseBody(body, announced, validator.GetEndian(), value);
}

StatusCode TRational::ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                      unsigned int& bodyLength) noexcept
{
    TRational value;
    unsigned length = 0;
    const StatusCode status = PeekBody(validator, ~0u, value, length);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    bodyOffset = validator.GetCursor();
    bodyLength = length;
    validator.ValidateBytes(length);
    return STATUS_CODE_SUCCESS;
}

StatusCode TRational::Convert(const IFieldType* other)
{
    if (other != nullptr && other->GetType() == FIELD_TYPE_TRATIONAL)
    {
        *this = *static_cast<const TRational*>(other);
        return STATUS_CODE_SUCCESS;
    }
    Rational value = rational_;
    const StatusCode status = value.Convert(other);
    if (status == STATUS_CODE_SUCCESS)
    {
        rational_ = value;
        Mark(value.IsInitialized());
    }
    return status;
}

std::string TRational::ToString() const
{
    if (!IsInitialized())
        return NOT_INITIALIZED_TEXT;
    std::string text = rational_.ToString();
    text += '<';
    text += TickToString(tick_);
    text += TrendToString(firstTrend_);
    text += TrendToString(secondTrend_);
    text += '>';
    return text;
}

StatusCode TRational::FromString(MessageValidator& text)
{
    StatusCode status;
    if (FromNotInitializedText(text, status))
        return status;
    const unsigned size = text.GetRemaining();
    const char* p = reinterpret_cast<const char*>(text.GetCursorPointer());
    if (size < 5 || p[size - 5] != '<' || p[size - 1] != '>')
        return STATUS_CODE_INVALID_FORMAT;
    const unsigned tick = SymbolCode(p[size - 4]), first = SymbolCode(p[size - 3]), second = SymbolCode(p[size - 2]);
    if (tick == 0 || tick > 3 || first > 3 || second > 3)
        return STATUS_CODE_INVALID_FORMAT;
    std::int64_t numerator = 0;
    Rational::Denominator denominator = Rational::DENOMINATOR_WHOLE;
    status = Rational::ParseText(p, size - 5, numerator, denominator);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    text.ValidateBytes(size);
    rational_.Store(numerator, denominator);
    Mark(true);
    tick_ = static_cast<Tick>(tick);
    firstTrend_ = static_cast<Trend>(first);
    secondTrend_ = static_cast<Trend>(second);
    return STATUS_CODE_SUCCESS;
}

const char* TRational::GetFromStringFormat() const noexcept
{
    return "rational<tff> (rational as Rational; t: + - or blank; f: = + - or blank)";
}

StatusCode TRational::Serialize(MessageBuilder& builder, unsigned int maxLength) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    return rational_.AppendBody(builder, maxLength, true, Trailer());
}

StatusCode TRational::SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const
{
    return Serialize(builder, maxLength);
}

StatusCode TRational::SerializeBody(void* buffer, unsigned int length, unsigned int& written) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    written = GetSerializedBodyLength();
    if (length < written || buffer == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    auto* bytes = static_cast<unsigned char*>(buffer);
    rational_.StoreBody(bytes);
    bytes[written - 1] = Trailer();
    return STATUS_CODE_SUCCESS;
}

StatusCode TRational::Deserialize(MessageValidator& validator, unsigned int length)
{
    TRational value;
    unsigned size = 0;
    const StatusCode status = PeekBody(validator, length, value, size);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    validator.ValidateBytes(size);
    *this = value;
    return STATUS_CODE_SUCCESS;
}

StatusCode TRational::DeserializeBody(const void* body, unsigned int length)
{
    return ParseBody(static_cast<const unsigned char*>(body), length, MessageHandler::ENDIAN_LITTLE, *this);
}

StatusCode TRational::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength)
{
    return Deserialize(validator, maxLength);
}

unsigned int TRational::GetSerializedLength() const noexcept
{
    return IsInitialized() ? rational_.GetSerializedLength() + 1 : 0;
}

unsigned int TRational::GetSerializedBodyLength() const noexcept
{
    return GetSerializedLength();
}

StatusCode TRational::IsDifferent(const void* body, unsigned int bodyLength, bool& different) const
{
    TRational other;
    if (bodyLength != 0)
    {
        const StatusCode status = other.DeserializeBody(body, bodyLength);
        if (status != STATUS_CODE_SUCCESS)
            return status;
    }
    bool differentRational = false;
    if (IsInitialized() && other.IsInitialized())
    {
        int order = 0;
        rational_.Compare(other.rational_, order);
        differentRational = order != 0 || tick_ != other.tick_ || firstTrend_ != other.firstTrend_ ||
                            secondTrend_ != other.secondTrend_;
    }
    different = other.IsInitialized() != IsInitialized() || differentRational;
    return STATUS_CODE_SUCCESS;
}

} // namespace Zantor
