// MessageValidator: the checks that are not inline in the header (byte sets,
// lists, ranges, hexadecimal and binary integers, reals and texts).
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <type_traits>

namespace Zantor {

namespace {

constexpr std::uint64_t maxUInt64 = std::numeric_limits<std::uint64_t>::max();
constexpr std::int64_t maxInt64 = std::numeric_limits<std::int64_t>::max();
constexpr unsigned maxHexadecimalSize = 16;
constexpr unsigned maxBinarySize = 8;

// A 256-bit membership table of a set of bytes.
class ByteSet
{
public:
    template <typename Container>
    explicit ByteSet(const Container& bytes) noexcept
    {
        for (const auto byte : bytes)
        {
            const unsigned index = static_cast<unsigned char>(byte);
            words_[index >> 6] |= std::uint64_t{1} << (index & 63);
        }
    }

    bool Contains(unsigned char byte) const noexcept { return (words_[byte >> 6] >> (byte & 63)) & 1; }

    bool ContainsAll(const unsigned char* bytes, unsigned size) const noexcept
    {
        for (unsigned i = 0; i < size; ++i)
            if (!Contains(bytes[i]))
                return false;
        return true;
    }

private:
    std::array<std::uint64_t, 4> words_{};
};

bool EqualsOneOf(const unsigned char* field, unsigned size, const std::vector<std::string>& list) noexcept
{
    for (const std::string& entry : list)
        if (entry.size() == size && std::memcmp(entry.data(), field, size) == 0)
            return true;
    return false;
}

bool AllEqual(const unsigned char* field, unsigned size, unsigned char byte) noexcept
{
    for (unsigned i = 0; i < size; ++i)
        if (field[i] != byte)
            return false;
    return true;
}

bool AllWithin(const unsigned char* field, unsigned size, unsigned char low, unsigned char high) noexcept
{
    for (unsigned i = 0; i < size; ++i)
        if (field[i] < low || field[i] > high)
            return false;
    return true;
}

template <typename T>
bool IsListed(const std::vector<T>& list, T value) noexcept
{
    return std::find(list.begin(), list.end(), value) != list.end();
}

// Checks a converted value against an optional range and an optional list.
template <typename T>
bool IsAccepted(T value, const T* min, const T* max, const std::vector<T>* list) noexcept
{
    if (min != nullptr && (value < *min || value > *max))
        return false;
    return list == nullptr || IsListed(*list, value);
}

bool IsAcceptedReal(long double value, const long double* min, const long double* max,
                    const std::vector<long double>* list) noexcept
{
    if (min != nullptr && !(value >= *min && value <= *max))
        return false;
    if (list == nullptr)
        return true;
    for (const long double entry : *list)
        if (entry == value)
            return true;
    return false;
}

// numerator / 10^places rounded once to the nearest T (ties to even), for
// a numerator too large to be exact in T. numerator / 10^places equals
// (numerator / 5^places) * 2^-places, and the division by 5^places is done
// in integers: the quotient is extended with binary fraction bits until it
// has two bits more than T's mantissa, and a non-zero remainder is folded
// into its lowest bit. The one conversion of that integer to T then rounds
// exactly as the true quotient would; the scaling by a power of two is
// exact. Dividing in a floating type instead would round twice (first to
// the division's own precision, then to T) and miss the nearest value for
// about one large numerator in ten thousand.
template <typename T>
T RoundedDecimalQuotient(std::uint64_t numerator, unsigned places) noexcept
{
    constexpr int targetBits = std::numeric_limits<T>::digits + 2;
    static_assert(targetBits <= 64, "the quotient is built in 64 bits");
    constexpr unsigned maxStep = 40; // a remainder below 5^9 < 2^21 shifted by 40 fits 64 bits
    std::uint64_t powerOfFive = 1;
    for (unsigned i = 0; i < places; ++i)
        powerOfFive *= 5;
    std::uint64_t quotient = numerator / powerOfFive;
    std::uint64_t remainder = numerator % powerOfFive;
    int scale = 0;
    while (static_cast<int>(std::bit_width(quotient)) < targetBits)
    {
        const unsigned missing = static_cast<unsigned>(targetBits - static_cast<int>(std::bit_width(quotient)));
        const unsigned step = std::min(missing, maxStep);
        remainder <<= step;
        quotient = (quotient << step) | (remainder / powerOfFive);
        remainder %= powerOfFive;
        scale += static_cast<int>(step);
    }
    if (remainder != 0)
        quotient |= 1;
    return std::ldexp(static_cast<T>(quotient), -(scale + static_cast<int>(places)));
}

// numerator / divisor (divisor = 10^places, places at most 9) rounded once
// to the nearest T. When the numerator is exact in T the floating division
// rounds once by itself (every divisor up to 10^9 is exact in every
// floating type).
template <typename T>
T FractionToFloating(bool negative, std::uint64_t numerator, std::uint64_t divisor) noexcept
{
    constexpr int digits = std::numeric_limits<T>::digits;
    T result;
    if constexpr (digits >= 64)
    {
        result = static_cast<T>(numerator) / static_cast<T>(divisor);
    }
    else
    {
        if (numerator <= (std::uint64_t{1} << digits))
        {
            result = static_cast<T>(numerator) / static_cast<T>(divisor);
        }
        else
        {
            unsigned places = 0;
            for (std::uint64_t power = divisor; power > 1; power /= 10)
                ++places;
            result = RoundedDecimalQuotient<T>(numerator, places);
        }
    }
    return negative ? -result : result;
}

bool IsSign(unsigned char character) noexcept
{
    return character == '+' || character == '-';
}

} // namespace

// ---- Common ------------------------------------------------------------------

template <typename Check>
StatusCode MessageValidator::CheckField(unsigned size, FieldOutput output, Check check)
{
    if (size == 0)
        return Deliver(0, output);
    if (!Fits(size))
        return STATUS_CODE_INVALID_PARAMETER;
    const StatusCode status = check(buffer_ + cursor_, size);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    return Commit(size, output);
}

namespace {

// Adapts a byte predicate to a check that answers STATUS_CODE_OUT_OF_RANGE.
template <typename Predicate>
auto OutOfRangeUnless(Predicate predicate)
{
    return [predicate](const unsigned char* field, unsigned size) -> StatusCode {
        return predicate(field, size) ? STATUS_CODE_SUCCESS : STATUS_CODE_OUT_OF_RANGE;
    };
}

auto EqualByte(unsigned char byte)
{
    return OutOfRangeUnless([byte](const unsigned char* field, unsigned size) { return AllEqual(field, size, byte); });
}

auto WithinBytes(unsigned char low, unsigned char high)
{
    return OutOfRangeUnless(
        [low, high](const unsigned char* field, unsigned size) { return AllWithin(field, size, low, high); });
}

auto InByteSet(const ByteSet& set)
{
    return OutOfRangeUnless(
        [&set](const unsigned char* field, unsigned size) { return set.ContainsAll(field, size); });
}

auto OneOfStrings(const std::vector<std::string>& list)
{
    return OutOfRangeUnless(
        [&list](const unsigned char* field, unsigned size) { return EqualsOneOf(field, size, list); });
}

StatusCode DigitsOnly(const unsigned char* field, unsigned size) noexcept
{
    return Detail::AreAllDigits(field, size) ? STATUS_CODE_SUCCESS : STATUS_CODE_INVALID_FORMAT;
}

StatusCode SignAndDigits(const unsigned char* field, unsigned size) noexcept
{
    if (IsSign(field[0]))
        return DigitsOnly(field + 1, size - 1);
    return DigitsOnly(field, size);
}

} // namespace

// ---- Bytes ------------------------------------------------------------------

StatusCode MessageValidator::ValidateBytes(unsigned size, unsigned char byte, const void** data)
{
    return CheckField(size, FieldOutput{data, nullptr}, EqualByte(byte));
}

StatusCode MessageValidator::ValidateBytes(unsigned size, unsigned char low, unsigned char high, const void** data)
{
    return CheckField(size, FieldOutput{data, nullptr}, WithinBytes(low, high));
}

StatusCode MessageValidator::ValidateBytes(unsigned size, const std::vector<unsigned char>& set, const void** data)
{
    const ByteSet bytes(set);
    return CheckField(size, FieldOutput{data, nullptr}, InByteSet(bytes));
}

StatusCode MessageValidator::ValidateBytes(unsigned size, const std::vector<std::string>& list, const void** data)
{
    return CheckField(size, FieldOutput{data, nullptr}, OneOfStrings(list));
}

StatusCode MessageValidator::ValidateBytesCopy(unsigned size, unsigned char byte, void* destination)
{
    return CheckField(size, FieldOutput{nullptr, destination}, EqualByte(byte));
}

StatusCode MessageValidator::ValidateBytesCopy(unsigned size, unsigned char low, unsigned char high,
                                               void* destination)
{
    return CheckField(size, FieldOutput{nullptr, destination}, WithinBytes(low, high));
}

StatusCode MessageValidator::ValidateBytesCopy(unsigned size, const std::vector<unsigned char>& set,
                                               void* destination)
{
    const ByteSet bytes(set);
    return CheckField(size, FieldOutput{nullptr, destination}, InByteSet(bytes));
}

StatusCode MessageValidator::ValidateBytesCopy(unsigned size, const std::vector<std::string>& list,
                                               void* destination)
{
    return CheckField(size, FieldOutput{nullptr, destination}, OneOfStrings(list));
}

// ---- Decimal integers ---------------------------------------------------------

StatusCode MessageValidator::UnsignedDecimalRange(unsigned size, const std::uint64_t* min, const std::uint64_t* max,
                                                  const std::vector<std::uint64_t>* list, std::uint64_t* value,
                                                  FieldOutput output)
{
    if (size == 0)
        return value != nullptr ? STATUS_CODE_INVALID_PARAMETER : Deliver(0, output);
    if (!Fits(size))
        return STATUS_CODE_INVALID_PARAMETER;
    std::uint64_t converted;
    const StatusCode status = Detail::ParseUnsignedDecimal(buffer_ + cursor_, size, maxUInt64, converted);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (!IsAccepted(converted, min, max, list))
        return STATUS_CODE_OUT_OF_RANGE;
    if (value != nullptr)
        *value = converted;
    return Commit(size, output);
}

StatusCode MessageValidator::SignedDecimalRange(unsigned size, const std::int64_t* min, const std::int64_t* max,
                                                const std::vector<std::int64_t>* list, std::int64_t* value,
                                                FieldOutput output)
{
    if (size == 0)
        return value != nullptr ? STATUS_CODE_INVALID_PARAMETER : Deliver(0, output);
    if (!Fits(size))
        return STATUS_CODE_INVALID_PARAMETER;
    std::int64_t converted;
    const StatusCode status =
        Detail::ParseSignedDecimal(buffer_ + cursor_, size, static_cast<std::uint64_t>(maxInt64), converted);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (!IsAccepted(converted, min, max, list))
        return STATUS_CODE_OUT_OF_RANGE;
    if (value != nullptr)
        *value = converted;
    return Commit(size, output);
}

StatusCode MessageValidator::ValidateUnsignedAsciiIntegral(unsigned size, const void** data)
{
    return CheckField(size, FieldOutput{data, nullptr}, DigitsOnly);
}

StatusCode MessageValidator::ValidateUnsignedAsciiIntegral(unsigned size, std::uint64_t min, std::uint64_t max,
                                                           std::uint64_t* value, const void** data)
{
    return UnsignedDecimalRange(size, &min, &max, nullptr, value, FieldOutput{data, nullptr});
}

StatusCode MessageValidator::ValidateUnsignedAsciiIntegral(unsigned size, const std::vector<std::uint64_t>& list,
                                                           std::uint64_t* value, const void** data)
{
    return UnsignedDecimalRange(size, nullptr, nullptr, &list, value, FieldOutput{data, nullptr});
}

StatusCode MessageValidator::ValidateUnsignedAsciiIntegralCopy(unsigned size, void* destination)
{
    return CheckField(size, FieldOutput{nullptr, destination}, DigitsOnly);
}

StatusCode MessageValidator::ValidateUnsignedAsciiIntegralCopy(unsigned size, std::uint64_t min, std::uint64_t max,
                                                               std::uint64_t* value, void* destination)
{
    return UnsignedDecimalRange(size, &min, &max, nullptr, value, FieldOutput{nullptr, destination});
}

StatusCode MessageValidator::ValidateUnsignedAsciiIntegralCopy(unsigned size, const std::vector<std::uint64_t>& list,
                                                               std::uint64_t* value, void* destination)
{
    return UnsignedDecimalRange(size, nullptr, nullptr, &list, value, FieldOutput{nullptr, destination});
}

StatusCode MessageValidator::ValidateSignedAsciiIntegral(unsigned size, const void** data)
{
    return CheckField(size, FieldOutput{data, nullptr}, SignAndDigits);
}

StatusCode MessageValidator::ValidateSignedAsciiIntegral(unsigned size, std::int64_t min, std::int64_t max,
                                                         std::int64_t* value, const void** data)
{
    return SignedDecimalRange(size, &min, &max, nullptr, value, FieldOutput{data, nullptr});
}

StatusCode MessageValidator::ValidateSignedAsciiIntegral(unsigned size, const std::vector<std::int64_t>& list,
                                                         std::int64_t* value, const void** data)
{
    return SignedDecimalRange(size, nullptr, nullptr, &list, value, FieldOutput{data, nullptr});
}

StatusCode MessageValidator::ValidateSignedAsciiIntegralCopy(unsigned size, void* destination)
{
    return CheckField(size, FieldOutput{nullptr, destination}, SignAndDigits);
}

StatusCode MessageValidator::ValidateSignedAsciiIntegralCopy(unsigned size, std::int64_t min, std::int64_t max,
                                                             std::int64_t* value, void* destination)
{
    return SignedDecimalRange(size, &min, &max, nullptr, value, FieldOutput{nullptr, destination});
}

StatusCode MessageValidator::ValidateSignedAsciiIntegralCopy(unsigned size, const std::vector<std::int64_t>& list,
                                                             std::int64_t* value, void* destination)
{
    return SignedDecimalRange(size, nullptr, nullptr, &list, value, FieldOutput{nullptr, destination});
}

// ---- Hexadecimal text ---------------------------------------------------------

StatusCode MessageValidator::Hexadecimal(unsigned size, Endian endian, std::uint64_t maxValue,
                                         const std::uint64_t* min, const std::uint64_t* max,
                                         const std::vector<std::uint64_t>* list, bool valueRequested,
                                         std::uint64_t* value, FieldOutput output)
{
    if (size == 0)
        return valueRequested ? STATUS_CODE_INVALID_PARAMETER : Deliver(0, output);
    if (size % 2 != 0 || size > maxHexadecimalSize || !Fits(size))
        return STATUS_CODE_INVALID_PARAMETER;
    std::uint64_t converted;
    const StatusCode status = Detail::ParseHexadecimal(buffer_ + cursor_, size, IsBigEndian(endian), converted);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (converted > maxValue || !IsAccepted(converted, min, max, list))
        return STATUS_CODE_OUT_OF_RANGE;
    if (value != nullptr)
        *value = converted;
    return Commit(size, output);
}

template <typename T>
StatusCode MessageValidator::TypedHexadecimal(unsigned size, Endian endian, T* value, FieldOutput output)
{
    std::uint64_t converted{};
    const StatusCode status = Hexadecimal(size, endian, std::numeric_limits<T>::max(), nullptr, nullptr, nullptr,
                                          value != nullptr, &converted, output);
    if (status == STATUS_CODE_SUCCESS && value != nullptr)
        *value = static_cast<T>(converted);
    return status;
}

StatusCode MessageValidator::ValidateAsciiHexadecimalIntegral(unsigned size, Endian endian, const void** data)
{
    return Hexadecimal(size, endian, maxUInt64, nullptr, nullptr, nullptr, false, nullptr, FieldOutput{data, nullptr});
}

StatusCode MessageValidator::ValidateAsciiHexadecimalIntegral(unsigned size, Endian endian, std::uint64_t min,
                                                              std::uint64_t max, std::uint64_t* value,
                                                              const void** data)
{
    return Hexadecimal(size, endian, maxUInt64, &min, &max, nullptr, value != nullptr, value,
                       FieldOutput{data, nullptr});
}

StatusCode MessageValidator::ValidateAsciiHexadecimalIntegral(unsigned size, Endian endian,
                                                              const std::vector<std::uint64_t>& list,
                                                              std::uint64_t* value, const void** data)
{
    return Hexadecimal(size, endian, maxUInt64, nullptr, nullptr, &list, value != nullptr, value,
                       FieldOutput{data, nullptr});
}

StatusCode MessageValidator::ValidateAsciiHexadecimalIntegralCopy(unsigned size, Endian endian, void* destination)
{
    return Hexadecimal(size, endian, maxUInt64, nullptr, nullptr, nullptr, false, nullptr,
                       FieldOutput{nullptr, destination});
}

StatusCode MessageValidator::ValidateAsciiHexadecimalIntegralCopy(unsigned size, Endian endian, std::uint64_t min,
                                                                  std::uint64_t max, std::uint64_t* value,
                                                                  void* destination)
{
    return Hexadecimal(size, endian, maxUInt64, &min, &max, nullptr, value != nullptr, value,
                       FieldOutput{nullptr, destination});
}

StatusCode MessageValidator::ValidateAsciiHexadecimalIntegralCopy(unsigned size, Endian endian,
                                                                  const std::vector<std::uint64_t>& list,
                                                                  std::uint64_t* value, void* destination)
{
    return Hexadecimal(size, endian, maxUInt64, nullptr, nullptr, &list, value != nullptr, value,
                       FieldOutput{nullptr, destination});
}

// ---- Binary integers ----------------------------------------------------------

StatusCode MessageValidator::UnsignedBinary(unsigned size, Endian endian, std::uint64_t maxValue,
                                            const std::uint64_t* min, const std::uint64_t* max,
                                            const std::vector<std::uint64_t>* list, bool valueRequested,
                                            std::uint64_t* value, FieldOutput output)
{
    if (size == 0)
        return valueRequested ? STATUS_CODE_INVALID_PARAMETER : Deliver(0, output);
    if (size > maxBinarySize || !Fits(size))
        return STATUS_CODE_INVALID_PARAMETER;
    const std::uint64_t converted = Detail::AssembleUnsigned(buffer_ + cursor_, size, IsBigEndian(endian));
    if (converted > maxValue || !IsAccepted(converted, min, max, list))
        return STATUS_CODE_OUT_OF_RANGE;
    if (value != nullptr)
        *value = converted;
    return Commit(size, output);
}

StatusCode MessageValidator::SignedBinary(unsigned size, Endian endian, std::int64_t minValue, std::int64_t maxValue,
                                          const std::int64_t* min, const std::int64_t* max,
                                          const std::vector<std::int64_t>* list, bool valueRequested,
                                          std::int64_t* value, FieldOutput output)
{
    if (size == 0)
        return valueRequested ? STATUS_CODE_INVALID_PARAMETER : Deliver(0, output);
    if (size > maxBinarySize || !Fits(size))
        return STATUS_CODE_INVALID_PARAMETER;
    const std::int64_t converted = Detail::AssembleSigned(buffer_ + cursor_, size, IsBigEndian(endian));
    if (converted < minValue || converted > maxValue || !IsAccepted(converted, min, max, list))
        return STATUS_CODE_OUT_OF_RANGE;
    if (value != nullptr)
        *value = converted;
    return Commit(size, output);
}

template <typename T>
StatusCode MessageValidator::TypedUnsignedBinary(unsigned size, Endian endian, T* value, FieldOutput output)
{
    if constexpr (sizeof(T) <= maxBinarySize && std::endian::native == std::endian::little)
    {
        // The direct read: the field is exactly one little-endian T.
        if (size == sizeof(T) && !IsBigEndian(endian) && Fits(size))
        {
            if (value != nullptr)
                std::memcpy(value, buffer_ + cursor_, sizeof(T));
            return Commit(size, output);
        }
    }
    std::uint64_t converted{};
    const StatusCode status = UnsignedBinary(size, endian, std::numeric_limits<T>::max(), nullptr, nullptr, nullptr,
                                             value != nullptr, &converted, output);
    if (status == STATUS_CODE_SUCCESS && value != nullptr)
        *value = static_cast<T>(converted);
    return status;
}

template <typename T>
StatusCode MessageValidator::TypedSignedBinary(unsigned size, Endian endian, T* value, FieldOutput output)
{
    std::int64_t converted{};
    const StatusCode status =
        SignedBinary(size, endian, std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), nullptr, nullptr,
                     nullptr, value != nullptr, &converted, output);
    if (status == STATUS_CODE_SUCCESS && value != nullptr)
        *value = static_cast<T>(converted);
    return status;
}

StatusCode MessageValidator::ValidateUnsignedBinaryIntegral(unsigned size, Endian endian, const void** data)
{
    return UnsignedBinary(size, endian, maxUInt64, nullptr, nullptr, nullptr, false, nullptr,
                          FieldOutput{data, nullptr});
}

StatusCode MessageValidator::ValidateUnsignedBinaryIntegral(unsigned size, Endian endian, std::uint64_t min,
                                                            std::uint64_t max, std::uint64_t* value, const void** data)
{
    return UnsignedBinary(size, endian, maxUInt64, &min, &max, nullptr, value != nullptr, value,
                          FieldOutput{data, nullptr});
}

StatusCode MessageValidator::ValidateUnsignedBinaryIntegral(unsigned size, Endian endian,
                                                            const std::vector<std::uint64_t>& list,
                                                            std::uint64_t* value, const void** data)
{
    return UnsignedBinary(size, endian, maxUInt64, nullptr, nullptr, &list, value != nullptr, value,
                          FieldOutput{data, nullptr});
}

StatusCode MessageValidator::ValidateUnsignedBinaryIntegralCopy(unsigned size, Endian endian, void* destination)
{
    return UnsignedBinary(size, endian, maxUInt64, nullptr, nullptr, nullptr, false, nullptr,
                          FieldOutput{nullptr, destination});
}

StatusCode MessageValidator::ValidateUnsignedBinaryIntegralCopy(unsigned size, Endian endian, std::uint64_t min,
                                                                std::uint64_t max, std::uint64_t* value,
                                                                void* destination)
{
    return UnsignedBinary(size, endian, maxUInt64, &min, &max, nullptr, value != nullptr, value,
                          FieldOutput{nullptr, destination});
}

StatusCode MessageValidator::ValidateUnsignedBinaryIntegralCopy(unsigned size, Endian endian,
                                                                const std::vector<std::uint64_t>& list,
                                                                std::uint64_t* value, void* destination)
{
    return UnsignedBinary(size, endian, maxUInt64, nullptr, nullptr, &list, value != nullptr, value,
                          FieldOutput{nullptr, destination});
}

StatusCode MessageValidator::ValidateSignedBinaryIntegral(unsigned size, Endian endian, const void** data)
{
    return SignedBinary(size, endian, std::numeric_limits<std::int64_t>::min(), maxInt64, nullptr, nullptr, nullptr,
                        false, nullptr, FieldOutput{data, nullptr});
}

StatusCode MessageValidator::ValidateSignedBinaryIntegral(unsigned size, Endian endian, std::int64_t min,
                                                          std::int64_t max, std::int64_t* value, const void** data)
{
    return SignedBinary(size, endian, std::numeric_limits<std::int64_t>::min(), maxInt64, &min, &max, nullptr,
                        value != nullptr, value, FieldOutput{data, nullptr});
}

StatusCode MessageValidator::ValidateSignedBinaryIntegral(unsigned size, Endian endian,
                                                          const std::vector<std::int64_t>& list, std::int64_t* value,
                                                          const void** data)
{
    return SignedBinary(size, endian, std::numeric_limits<std::int64_t>::min(), maxInt64, nullptr, nullptr, &list,
                        value != nullptr, value, FieldOutput{data, nullptr});
}

StatusCode MessageValidator::ValidateSignedBinaryIntegralCopy(unsigned size, Endian endian, void* destination)
{
    return SignedBinary(size, endian, std::numeric_limits<std::int64_t>::min(), maxInt64, nullptr, nullptr, nullptr,
                        false, nullptr, FieldOutput{nullptr, destination});
}

StatusCode MessageValidator::ValidateSignedBinaryIntegralCopy(unsigned size, Endian endian, std::int64_t min,
                                                              std::int64_t max, std::int64_t* value,
                                                              void* destination)
{
    return SignedBinary(size, endian, std::numeric_limits<std::int64_t>::min(), maxInt64, &min, &max, nullptr,
                        value != nullptr, value, FieldOutput{nullptr, destination});
}

StatusCode MessageValidator::ValidateSignedBinaryIntegralCopy(unsigned size, Endian endian,
                                                              const std::vector<std::int64_t>& list,
                                                              std::int64_t* value, void* destination)
{
    return SignedBinary(size, endian, std::numeric_limits<std::int64_t>::min(), maxInt64, nullptr, nullptr, &list,
                        value != nullptr, value, FieldOutput{nullptr, destination});
}

// Typed hexadecimal and binary members, one per integer type.
#define ZANTOR_VALIDATOR_TYPED(Type)                                                                               \
    StatusCode MessageValidator::ValidateAsciiHexadecimalIntegral(unsigned size, Endian endian, Type* value,       \
                                                                  const void** data)                               \
    {                                                                                                              \
        return TypedHexadecimal(size, endian, value, FieldOutput{data, nullptr});                                  \
    }                                                                                                              \
    StatusCode MessageValidator::ValidateAsciiHexadecimalIntegralCopy(unsigned size, Endian endian, Type* value,   \
                                                                      void* destination)                           \
    {                                                                                                              \
        return TypedHexadecimal(size, endian, value, FieldOutput{nullptr, destination});                           \
    }                                                                                                              \
    StatusCode MessageValidator::ValidateUnsignedBinaryIntegral(unsigned size, Endian endian, Type* value,         \
                                                                const void** data)                                 \
    {                                                                                                              \
        return TypedUnsignedBinary(size, endian, value, FieldOutput{data, nullptr});                               \
    }                                                                                                              \
    StatusCode MessageValidator::ValidateUnsignedBinaryIntegralCopy(unsigned size, Endian endian, Type* value,     \
                                                                    void* destination)                             \
    {                                                                                                              \
        return TypedUnsignedBinary(size, endian, value, FieldOutput{nullptr, destination});                        \
    }

ZANTOR_VALIDATOR_TYPED(unsigned char)
ZANTOR_VALIDATOR_TYPED(unsigned short)
ZANTOR_VALIDATOR_TYPED(unsigned int)
ZANTOR_VALIDATOR_TYPED(unsigned long)
ZANTOR_VALIDATOR_TYPED(unsigned long long)
#undef ZANTOR_VALIDATOR_TYPED

#define ZANTOR_VALIDATOR_TYPED(Type)                                                                               \
    StatusCode MessageValidator::ValidateSignedBinaryIntegral(unsigned size, Endian endian, Type* value,           \
                                                              const void** data)                                   \
    {                                                                                                              \
        return TypedSignedBinary(size, endian, value, FieldOutput{data, nullptr});                                 \
    }                                                                                                              \
    StatusCode MessageValidator::ValidateSignedBinaryIntegralCopy(unsigned size, Endian endian, Type* value,       \
                                                                  void* destination)                               \
    {                                                                                                              \
        return TypedSignedBinary(size, endian, value, FieldOutput{nullptr, destination});                          \
    }

ZANTOR_VALIDATOR_TYPED(signed char)
ZANTOR_VALIDATOR_TYPED(short)
ZANTOR_VALIDATOR_TYPED(int)
ZANTOR_VALIDATOR_TYPED(long)
ZANTOR_VALIDATOR_TYPED(long long)
#undef ZANTOR_VALIDATOR_TYPED

// ---- Decimal reals ------------------------------------------------------------

// Parses the real at the cursor; the callers have handled size 0.
StatusCode MessageValidator::Real(unsigned size, bool allowSign, bool& negative, std::uint64_t& numerator,
                                  std::uint64_t& divisor)
{
    if (!Fits(size))
        return STATUS_CODE_INVALID_PARAMETER;
    return Detail::ParseDecimalReal(buffer_ + cursor_, size, allowSign,
                                    allowSign ? static_cast<std::uint64_t>(maxInt64) : maxUInt64, negative, numerator,
                                    divisor);
}

template <typename Numerator>
StatusCode MessageValidator::RealFraction(unsigned size, bool allowSign, Numerator* numerator, std::uint64_t* divisor,
                                          FieldOutput output)
{
    if (size == 0)
        return (numerator != nullptr || divisor != nullptr) ? STATUS_CODE_INVALID_PARAMETER : Deliver(0, output);
    bool negative = false;
    std::uint64_t magnitude = 0;
    std::uint64_t power = 1;
    const StatusCode status = Real(size, allowSign, negative, magnitude, power);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (numerator != nullptr)
    {
        if constexpr (std::is_signed_v<Numerator>)
            *numerator = negative ? -static_cast<Numerator>(magnitude) : static_cast<Numerator>(magnitude);
        else
            *numerator = magnitude;
    }
    if (divisor != nullptr)
        *divisor = power;
    return Commit(size, output);
}

StatusCode MessageValidator::RealValue(unsigned size, bool allowSign, const long double* min, const long double* max,
                                       const std::vector<long double>* list, long double* value, FieldOutput output)
{
    if (size == 0)
        return value != nullptr ? STATUS_CODE_INVALID_PARAMETER : Deliver(0, output);
    bool negative = false;
    std::uint64_t magnitude = 0;
    std::uint64_t power = 1;
    const StatusCode status = Real(size, allowSign, negative, magnitude, power);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    const long double converted = FractionToFloating<long double>(negative, magnitude, power);
    if (!IsAcceptedReal(converted, min, max, list))
        return STATUS_CODE_OUT_OF_RANGE;
    if (value != nullptr)
        *value = converted;
    return Commit(size, output);
}

template <typename T>
StatusCode MessageValidator::TypedReal(unsigned size, bool allowSign, T* value, FieldOutput output)
{
    if (size == 0)
        return value != nullptr ? STATUS_CODE_INVALID_PARAMETER : Deliver(0, output);
    bool negative = false;
    std::uint64_t magnitude = 0;
    std::uint64_t power = 1;
    const StatusCode status = Real(size, allowSign, negative, magnitude, power);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (value != nullptr)
        *value = FractionToFloating<T>(negative, magnitude, power);
    return Commit(size, output);
}

#define ZANTOR_VALIDATOR_REAL(Name, allowSign, NumeratorType)                                                      \
    StatusCode MessageValidator::Name(unsigned size, const void** data)                                            \
    {                                                                                                              \
        return RealFraction<NumeratorType>(size, allowSign, nullptr, nullptr, FieldOutput{data, nullptr});         \
    }                                                                                                              \
    StatusCode MessageValidator::Name(unsigned size, NumeratorType* numerator, std::uint64_t* divisor,             \
                                      const void** data)                                                           \
    {                                                                                                              \
        return RealFraction(size, allowSign, numerator, divisor, FieldOutput{data, nullptr});                      \
    }                                                                                                              \
    StatusCode MessageValidator::Name(unsigned size, long double min, long double max, long double* value,         \
                                      const void** data)                                                           \
    {                                                                                                              \
        return RealValue(size, allowSign, &min, &max, nullptr, value, FieldOutput{data, nullptr});                 \
    }                                                                                                              \
    StatusCode MessageValidator::Name(unsigned size, const std::vector<long double>& list, long double* value,     \
                                      const void** data)                                                           \
    {                                                                                                              \
        return RealValue(size, allowSign, nullptr, nullptr, &list, value, FieldOutput{data, nullptr});             \
    }                                                                                                              \
    StatusCode MessageValidator::Name(unsigned size, float* value, const void** data)                              \
    {                                                                                                              \
        return TypedReal(size, allowSign, value, FieldOutput{data, nullptr});                                      \
    }                                                                                                              \
    StatusCode MessageValidator::Name(unsigned size, double* value, const void** data)                             \
    {                                                                                                              \
        return TypedReal(size, allowSign, value, FieldOutput{data, nullptr});                                      \
    }                                                                                                              \
    StatusCode MessageValidator::Name(unsigned size, long double* value, const void** data)                        \
    {                                                                                                              \
        return TypedReal(size, allowSign, value, FieldOutput{data, nullptr});                                      \
    }                                                                                                              \
    StatusCode MessageValidator::Name##Copy(unsigned size, void* destination)                                      \
    {                                                                                                              \
        return RealFraction<NumeratorType>(size, allowSign, nullptr, nullptr, FieldOutput{nullptr, destination});  \
    }                                                                                                              \
    StatusCode MessageValidator::Name##Copy(unsigned size, NumeratorType* numerator, std::uint64_t* divisor,       \
                                            void* destination)                                                     \
    {                                                                                                              \
        return RealFraction(size, allowSign, numerator, divisor, FieldOutput{nullptr, destination});               \
    }                                                                                                              \
    StatusCode MessageValidator::Name##Copy(unsigned size, long double min, long double max, long double* value,   \
                                            void* destination)                                                     \
    {                                                                                                              \
        return RealValue(size, allowSign, &min, &max, nullptr, value, FieldOutput{nullptr, destination});          \
    }                                                                                                              \
    StatusCode MessageValidator::Name##Copy(unsigned size, const std::vector<long double>& list,                   \
                                            long double* value, void* destination)                                 \
    {                                                                                                              \
        return RealValue(size, allowSign, nullptr, nullptr, &list, value, FieldOutput{nullptr, destination});      \
    }                                                                                                              \
    StatusCode MessageValidator::Name##Copy(unsigned size, float* value, void* destination)                        \
    {                                                                                                              \
        return TypedReal(size, allowSign, value, FieldOutput{nullptr, destination});                               \
    }                                                                                                              \
    StatusCode MessageValidator::Name##Copy(unsigned size, double* value, void* destination)                       \
    {                                                                                                              \
        return TypedReal(size, allowSign, value, FieldOutput{nullptr, destination});                               \
    }                                                                                                              \
    StatusCode MessageValidator::Name##Copy(unsigned size, long double* value, void* destination)                  \
    {                                                                                                              \
        return TypedReal(size, allowSign, value, FieldOutput{nullptr, destination});                               \
    }

ZANTOR_VALIDATOR_REAL(ValidateUnsignedAsciiReal, false, std::uint64_t)
ZANTOR_VALIDATOR_REAL(ValidateSignedAsciiReal, true, std::int64_t)
#undef ZANTOR_VALIDATOR_REAL

StatusCode MessageValidator::CopyUnsignedAsciiRealToNumeratorAndDivisor(const void* text, unsigned size,
                                                                        std::uint64_t& numerator,
                                                                        std::uint64_t& divisor) noexcept
{
    if (text == nullptr && size != 0)
        return STATUS_CODE_INVALID_PARAMETER;
    bool negative = false;
    return Detail::ParseDecimalReal(static_cast<const unsigned char*>(text), size, false, maxUInt64, negative,
                                    numerator, divisor);
}

StatusCode MessageValidator::CopySignedAsciiRealToNumeratorAndDivisor(const void* text, unsigned size,
                                                                      std::int64_t& numerator,
                                                                      std::uint64_t& divisor) noexcept
{
    if (text == nullptr && size != 0)
        return STATUS_CODE_INVALID_PARAMETER;
    bool negative = false;
    std::uint64_t magnitude = 0;
    std::uint64_t power = 1;
    const StatusCode status = Detail::ParseDecimalReal(static_cast<const unsigned char*>(text), size, true,
                                                       static_cast<std::uint64_t>(maxInt64), negative, magnitude,
                                                       power);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    numerator = negative ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
    divisor = power;
    return STATUS_CODE_SUCCESS;
}

// ---- Text ---------------------------------------------------------------------

template <typename Check>
StatusCode MessageValidator::Text(unsigned size, std::string* text, FieldOutput output, Check check)
{
    if (size == 0)
    {
        if (text != nullptr)
            text->clear();
        return Deliver(0, output);
    }
    if (!Fits(size))
        return STATUS_CODE_INVALID_PARAMETER;
    const unsigned char* field = buffer_ + cursor_;
    const StatusCode status = check(field, size);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (text != nullptr)
        text->assign(reinterpret_cast<const char*>(field), size);
    return Commit(size, output);
}

namespace {

StatusCode AnyText(const unsigned char*, unsigned) noexcept
{
    return STATUS_CODE_SUCCESS;
}

} // namespace

StatusCode MessageValidator::ValidateString(unsigned size, std::string* text, const void** data)
{
    return Text(size, text, FieldOutput{data, nullptr}, AnyText);
}

StatusCode MessageValidator::ValidateString(unsigned size, unsigned char low, unsigned char high, std::string* text,
                                            const void** data)
{
    return Text(size, text, FieldOutput{data, nullptr}, WithinBytes(low, high));
}

StatusCode MessageValidator::ValidateString(unsigned size, const std::string& allowedCharacters, std::string* text,
                                            const void** data)
{
    const ByteSet characters(allowedCharacters);
    return Text(size, text, FieldOutput{data, nullptr}, InByteSet(characters));
}

StatusCode MessageValidator::ValidateString(unsigned size, const std::vector<std::string>& list, std::string* text,
                                            const void** data)
{
    return Text(size, text, FieldOutput{data, nullptr}, OneOfStrings(list));
}

StatusCode MessageValidator::ValidateStringCopy(unsigned size, std::string* text, void* destination)
{
    return Text(size, text, FieldOutput{nullptr, destination}, AnyText);
}

StatusCode MessageValidator::ValidateStringCopy(unsigned size, unsigned char low, unsigned char high,
                                                std::string* text, void* destination)
{
    return Text(size, text, FieldOutput{nullptr, destination}, WithinBytes(low, high));
}

StatusCode MessageValidator::ValidateStringCopy(unsigned size, const std::string& allowedCharacters,
                                                std::string* text, void* destination)
{
    const ByteSet characters(allowedCharacters);
    return Text(size, text, FieldOutput{nullptr, destination}, InByteSet(characters));
}

StatusCode MessageValidator::ValidateStringCopy(unsigned size, const std::vector<std::string>& list,
                                                std::string* text, void* destination)
{
    return Text(size, text, FieldOutput{nullptr, destination}, OneOfStrings(list));
}

} // namespace Zantor
