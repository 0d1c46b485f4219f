// Drives every MessageValidator family over arbitrary bytes and checks each
// answer against a slow reference model of the validator's rules.
//
// The input is a program: byte 0 gives the number of operations (1 to 8),
// each operation takes 20 bytes (opcode, size, flags, two 8-byte
// parameters, a spare byte), and the remaining bytes are the message.
// Operations run one after another on one validator, so later ones start
// from wherever the earlier ones left the cursor.
//
// For every call the model predicts the exact status (size 0, bounds, size
// rules, character class, overflow, range, list), and the harness checks:
// - the status is the predicted one;
// - a failure leaves the cursor, the data pointer, the copy destination and
//   every converted output as they were;
// - a success advances the cursor by exactly the size, points data at the
//   field or copies exactly the field, and delivers the value the model
//   computed (integers digit by digit with string comparisons for overflow,
//   reals through strtof, strtod and strtold, which round correctly).
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

using namespace Zantor;

namespace {

constexpr std::size_t operationSize = 20;
constexpr StatusCode OK = STATUS_CODE_SUCCESS;
constexpr StatusCode PARAM = STATUS_CODE_INVALID_PARAMETER;
constexpr StatusCode FORMAT = STATUS_CODE_INVALID_FORMAT;
constexpr StatusCode RANGE = STATUS_CODE_OUT_OF_RANGE;

void Require(bool condition, const char* what)
{
    if (!condition)
    {
        std::fprintf(stderr, "MessageValidator invariant broken: %s\n", what);
        std::abort();
    }
}

struct Operation
{
    unsigned opcode;
    unsigned size;
    unsigned flags;
    std::uint64_t a;
    std::uint64_t b;
    unsigned spare;
};

std::uint64_t Load64(const std::uint8_t* bytes)
{
    std::uint64_t value = 0;
    for (unsigned i = 0; i < 8; ++i)
        value |= static_cast<std::uint64_t>(bytes[i]) << (8 * i);
    return value;
}

bool IsDigit(unsigned char c)
{
    return c >= '0' && c <= '9';
}

// ---- Reference model ----------------------------------------------------------

// Decimal digits without leading zeros ("0" for none), compared with a
// limit as text: longer is larger, equal lengths compare lexically.
bool DigitsExceed(const std::string& digits, std::uint64_t limit)
{
    const std::size_t first = digits.find_first_not_of('0');
    const std::string significant = first == std::string::npos ? "0" : digits.substr(first);
    const std::string max = std::to_string(limit);
    return significant.size() > max.size() || (significant.size() == max.size() && significant > max);
}

std::uint64_t DigitsValue(const std::string& digits)
{
    return digits.empty() ? 0 : std::strtoull(digits.c_str(), nullptr, 10);
}

// Unsigned decimal text: digits only, value at most max.
StatusCode ReferenceUnsigned(const unsigned char* text, unsigned size, std::uint64_t max, std::uint64_t& value)
{
    std::string digits;
    for (unsigned i = 0; i < size; ++i)
    {
        if (!IsDigit(text[i]))
            return FORMAT;
        digits += static_cast<char>(text[i]);
    }
    if (DigitsExceed(digits, max))
        return RANGE;
    value = DigitsValue(digits);
    return OK;
}

// Signed decimal text: one optional leading sign, then digits; magnitude
// at most max (symmetric); a lone sign is 0.
StatusCode ReferenceSigned(const unsigned char* text, unsigned size, std::uint64_t max, std::int64_t& value)
{
    bool negative = false;
    unsigned start = 0;
    if (size != 0 && (text[0] == '+' || text[0] == '-'))
    {
        negative = text[0] == '-';
        start = 1;
    }
    std::uint64_t magnitude = 0;
    const StatusCode status = ReferenceUnsigned(text + start, size - start, max, magnitude);
    if (status == OK)
        value = negative ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
    return status;
}

int HexValue(unsigned char c)
{
    if (IsDigit(c))
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// Hexadecimal text of an even size of at most 16 (the caller checks), one
// byte per pair, high nibble first; big-endian puts the first pair highest.
StatusCode ReferenceHex(const unsigned char* text, unsigned size, bool bigEndian, std::uint64_t& value)
{
    for (unsigned i = 0; i < size; ++i)
        if (HexValue(text[i]) < 0)
            return FORMAT;
    const unsigned bytes = size / 2;
    std::uint64_t result = 0;
    for (unsigned i = 0; i < bytes; ++i)
    {
        const std::uint64_t byte = static_cast<std::uint64_t>(HexValue(text[2 * i]) * 16 + HexValue(text[2 * i + 1]));
        result |= byte << (8 * (bigEndian ? bytes - 1 - i : i));
    }
    value = result;
    return OK;
}

std::uint64_t ReferenceBinary(const unsigned char* bytes, unsigned size, bool bigEndian)
{
    std::uint64_t value = 0;
    for (unsigned i = 0; i < size; ++i)
        value |= static_cast<std::uint64_t>(bytes[i]) << (8 * (bigEndian ? size - 1 - i : i));
    return value;
}

std::int64_t SignExtend(std::uint64_t bits, unsigned size)
{
    if (size < 8 && ((bits >> (8 * size - 1)) & 1) != 0)
        bits |= ~std::uint64_t{0} << (8 * size);
    return static_cast<std::int64_t>(bits);
}

// Decimal real text: [sign] digits with at most one '.', at least one
// digit, at most 9 after the point, numerator at most numeratorMax.
struct Real
{
    bool negative = false;
    std::uint64_t numerator = 0;
    std::uint64_t divisor = 1;
};

StatusCode ReferenceReal(const unsigned char* text, unsigned size, bool allowSign, Real& real)
{
    unsigned i = 0;
    bool negative = false;
    if (allowSign && size != 0 && (text[0] == '+' || text[0] == '-'))
    {
        negative = text[0] == '-';
        i = 1;
    }
    std::string digits;
    unsigned fraction = 0;
    bool point = false;
    for (; i < size; ++i)
    {
        if (IsDigit(text[i]))
        {
            digits += static_cast<char>(text[i]);
            fraction += point ? 1 : 0;
        }
        else if (text[i] == '.' && !point)
            point = true;
        else
            return FORMAT;
    }
    if (digits.empty())
        return FORMAT;
    const std::uint64_t max = allowSign ? static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())
                                        : std::numeric_limits<std::uint64_t>::max();
    if (DigitsExceed(digits, max) || fraction > 9)
        return RANGE;
    real.negative = negative;
    real.numerator = DigitsValue(digits);
    real.divisor = 1;
    for (unsigned k = 0; k < fraction; ++k)
        real.divisor *= 10;
    return OK;
}

// The correctly rounded value of a well-formed real text.
template <typename T>
T ReferenceFloating(const unsigned char* text, unsigned size)
{
    const std::string copy(reinterpret_cast<const char*>(text), size);
    if constexpr (std::is_same_v<T, float>)
        return std::strtof(copy.c_str(), nullptr);
    else if constexpr (std::is_same_v<T, double>)
        return std::strtod(copy.c_str(), nullptr);
    else
        return std::strtold(copy.c_str(), nullptr);
}

// ---- Harness ----------------------------------------------------------------

class Harness
{
public:
    Harness(const std::uint8_t* message, unsigned length) : message_(message), validator_(message, length) {}

    void Run(const Operation& op)
    {
        op_ = op;
        before_ = validator_.GetCursor();
        remaining_ = validator_.GetLength() - before_;
        switch (op.opcode % 16)
        {
        case 0: Bytes(); break;
        case 1: UnsignedDecimal(); break;
        case 2: SignedDecimal(); break;
        case 3: Hexadecimal(); break;
        case 4: UnsignedBinary(); break;
        case 5: SignedBinary(); break;
        case 6: RealFraction<false>(); break;
        case 7: RealFraction<true>(); break;
        case 8: RealValues(); break;
        case 9: Strings(); break;
        case 10: TypedUnsignedDecimal(); break;
        case 11: TypedSignedDecimal(); break;
        case 12: TypedHexadecimal(); break;
        case 13: TypedBinary(); break;
        case 14: TypedReal(); break;
        default: StaticHelpers(); break;
        }
        Require(validator_.GetCursor() <= validator_.GetLength(), "cursor past the end");
    }

private:
    bool CopyForm() const { return (op_.flags & 1) != 0; }
    bool WantValue() const { return (op_.flags & 4) == 0; }
    // Any byte is a valid order: 0 is little-endian, everything else big.
    MessageHandler::Endian Order() const
    {
        if ((op_.flags & 32) != 0)
            return static_cast<MessageHandler::Endian>(op_.spare);
        return (op_.flags & 2) != 0 ? MessageHandler::ENDIAN_BIG : MessageHandler::ENDIAN_LITTLE;
    }
    bool BigEndian() const { return Order() != MessageHandler::ENDIAN_LITTLE; }

    const unsigned char* Field() const { return message_ + before_; }
    unsigned Size() const { return op_.size; }

    // The common frame: size 0 (refused only when a value is asked for),
    // then the bounds. Returns true when it decides the status.
    bool FrameDecides(bool valueRequested, StatusCode& status) const
    {
        if (Size() == 0)
        {
            status = valueRequested ? PARAM : OK;
            return true;
        }
        if (Size() > remaining_)
        {
            status = PARAM;
            return true;
        }
        return false;
    }

    // Calls call(data, destination) in the plain or the Copy form, checks the
    // status against expected and the frame invariants, and returns whether
    // the call succeeded.
    template <typename Call>
    bool Check(StatusCode expected, Call call)
    {
        const void* data = &sentinel_;
        unsigned char destination[256];
        std::memset(destination, 0xA5, sizeof destination);
        const bool copy = CopyForm();
        const StatusCode status = copy ? call(static_cast<const void**>(nullptr), static_cast<void*>(destination))
                                       : call(&data, static_cast<void*>(nullptr));
        Require(status == expected, "status differs from the reference");
        if (status != OK)
        {
            Require(validator_.GetCursor() == before_, "cursor moved on failure");
            Require(data == &sentinel_, "data written on failure");
            Require(destination[0] == 0xA5, "destination written on failure");
            return false;
        }
        Require(validator_.GetCursor() == before_ + Size(), "cursor not advanced by the size");
        if (copy)
        {
            Require(Size() == 0 || std::memcmp(destination, Field(), Size()) == 0, "copy differs from the field");
            Require(Size() == sizeof destination || destination[Size()] == 0xA5, "copy longer than the field");
        }
        else
            Require(data == Field(), "data does not point at the field");
        return true;
    }

    // ---- Bytes ----------------------------------------------------------

    void Bytes()
    {
        const unsigned size = Size();
        const unsigned char low = static_cast<unsigned char>(op_.a);
        const unsigned char high = static_cast<unsigned char>(op_.a >> 8);
        // A pattern taken from the message, one byte changed on request, so
        // that both outcomes of a comparison are reached.
        std::string pattern(size, static_cast<char>(low));
        for (unsigned i = 0; i < size && i < remaining_; ++i)
            pattern[i] = static_cast<char>(Field()[i]);
        if ((op_.flags & 8) != 0 && size != 0)
            pattern[op_.b % size] = static_cast<char>(pattern[op_.b % size] ^ (1u << (op_.spare % 8)));
        std::vector<unsigned char> set;
        for (unsigned i = 0; i < (op_.spare >> 4) % 9; ++i)
            set.push_back(static_cast<unsigned char>(op_.b >> (8 * i)));
        const std::vector<std::string> list = {pattern.substr(0, size / 2), std::string(size, static_cast<char>(high)),
                                               pattern};
        const std::vector<std::string> emptyList;
        const std::vector<std::string>& chosenList = (op_.flags & 16) != 0 ? emptyList : list;

        StatusCode expected = OK;
        const bool decided = FrameDecides(false, expected);
        const unsigned char* field = Field();
        auto all = [&](auto predicate) {
            for (unsigned i = 0; i < size; ++i)
                if (!predicate(field[i]))
                    return false;
            return true;
        };
        switch (op_.spare % 7)
        {
        case 0:
            Check(expected, [&](const void** d, void* c) {
                return c != nullptr ? validator_.ValidateBytesCopy(size, c) : validator_.ValidateBytes(size, d);
            });
            break;
        case 1:
            if (!decided)
                expected = std::memcmp(field, pattern.data(), size) == 0 ? OK : FORMAT;
            Check(expected, [&](const void** d, void* c) {
                return c != nullptr ? validator_.ValidateBytesCopy(size, pattern.data(), c)
                                    : validator_.ValidateBytes(size, pattern.data(), d);
            });
            break;
        case 2:
            // A null expected text is a bad parameter unless the size is 0.
            if (size != 0)
                expected = PARAM;
            Check(expected, [&](const void** d, void* c) {
                return c != nullptr ? validator_.ValidateBytesCopy(size, static_cast<const void*>(nullptr), c)
                                    : validator_.ValidateBytes(size, static_cast<const void*>(nullptr), d);
            });
            break;
        case 3:
            if (!decided)
                expected = all([&](unsigned char x) { return x == low; }) ? OK : RANGE;
            Check(expected, [&](const void** d, void* c) {
                return c != nullptr ? validator_.ValidateBytesCopy(size, low, c)
                                    : validator_.ValidateBytes(size, low, d);
            });
            break;
        case 4:
            if (!decided)
                expected = all([&](unsigned char x) { return x >= low && x <= high; }) ? OK : RANGE;
            Check(expected, [&](const void** d, void* c) {
                return c != nullptr ? validator_.ValidateBytesCopy(size, low, high, c)
                                    : validator_.ValidateBytes(size, low, high, d);
            });
            break;
        case 5:
            if (!decided)
            {
                const auto inSet = [&](unsigned char x) { return std::find(set.begin(), set.end(), x) != set.end(); };
                expected = all(inSet) ? OK : RANGE;
            }
            Check(expected, [&](const void** d, void* c) {
                return c != nullptr ? validator_.ValidateBytesCopy(size, set, c)
                                    : validator_.ValidateBytes(size, set, d);
            });
            break;
        default:
            if (!decided)
                expected = std::find(chosenList.begin(), chosenList.end(),
                                     std::string(reinterpret_cast<const char*>(field), size)) != chosenList.end()
                               ? OK
                               : RANGE;
            Check(expected, [&](const void** d, void* c) {
                return c != nullptr ? validator_.ValidateBytesCopy(size, chosenList, c)
                                    : validator_.ValidateBytes(size, chosenList, d);
            });
            break;
        }
    }

    // ---- Ranges and lists ---------------------------------------------------

    // Bounds from the operation's parameters, in any order (min > max refuses
    // every value), and a list of 0 to 4 entries.
    std::uint64_t UnsignedMin() const { return op_.a >> (op_.spare % 64); }
    std::uint64_t UnsignedMax() const { return op_.b >> ((op_.flags >> 2) % 64); }
    std::int64_t SignedMin() const { return static_cast<std::int64_t>(op_.a) >> (op_.spare % 64); }
    std::int64_t SignedMax() const { return static_cast<std::int64_t>(op_.b) >> ((op_.flags >> 2) % 64); }
    std::vector<std::uint64_t> UnsignedList() const
    {
        const std::vector<std::uint64_t> all = {op_.a % 1000, op_.b % 65536, op_.a, op_.b};
        return std::vector<std::uint64_t>(all.begin(), all.begin() + (op_.spare >> 3) % 5);
    }
    std::vector<std::int64_t> SignedList() const
    {
        const std::vector<std::int64_t> all = {static_cast<std::int64_t>(op_.a % 1000) - 500,
                                               static_cast<std::int8_t>(op_.b), static_cast<std::int64_t>(op_.a),
                                               static_cast<std::int64_t>(op_.b)};
        return std::vector<std::int64_t>(all.begin(), all.begin() + (op_.spare >> 3) % 5);
    }

    // Which member of a family to call: 0 plain, 1 range, 2 list.
    unsigned Variant() const { return (op_.flags >> 3) % 3; }

    template <typename T>
    static StatusCode Accept(StatusCode status, T value, unsigned variant, T min, T max, const std::vector<T>& list)
    {
        if (status != OK)
            return status;
        if (variant == 1 && (value < min || value > max))
            return RANGE;
        if (variant == 2 && std::find(list.begin(), list.end(), value) == list.end())
            return RANGE;
        return OK;
    }

    // Runs a family's plain, range or list member on 64-bit values. sizeRule
    // is the family's own size check (after the frame), reference the status
    // and value of the field's contents.
    template <typename T, typename Plain, typename Ranged, typename Listed, typename Reference>
    void IntegerFamily(StatusCode sizeRule, Plain plain, Ranged ranged, Listed listed, Reference reference, T min,
                       T max, const std::vector<T>& list)
    {
        const unsigned variant = Variant();
        T value = static_cast<T>(7);
        T* out = variant != 0 && WantValue() ? &value : nullptr;
        StatusCode expected = OK;
        T converted = 0;
        if (!FrameDecides(out != nullptr, expected))
        {
            expected = sizeRule;
            if (expected == OK)
            {
                expected = reference(converted);
                // The plain member only checks the form: overflow is not its business.
                if (variant == 0 && expected == RANGE)
                    expected = OK;
                expected = Accept(expected, converted, variant, min, max, list);
            }
        }
        const bool ok = Check(expected, [&](const void** d, void* c) {
            if (variant == 0)
                return plain(d, c);
            if (variant == 1)
                return ranged(out, d, c);
            return listed(out, d, c);
        });
        if (ok && out != nullptr)
            Require(value == converted, "converted value differs from the reference");
        else
            Require(value == static_cast<T>(7), "value written without a conversion");
    }

    // ---- Decimal integers ---------------------------------------------------

    void UnsignedDecimal()
    {
        const unsigned size = Size();
        const std::uint64_t min = UnsignedMin();
        const std::uint64_t max = UnsignedMax();
        const std::vector<std::uint64_t> list = UnsignedList();
        IntegerFamily<std::uint64_t>(
            OK,
            [&](const void** d, void* c) {
                return c != nullptr ? validator_.ValidateUnsignedAsciiIntegralCopy(size, c)
                                    : validator_.ValidateUnsignedAsciiIntegral(size, d);
            },
            [&](std::uint64_t* out, const void** d, void* c) {
                return c != nullptr ? validator_.ValidateUnsignedAsciiIntegralCopy(size, min, max, out, c)
                                    : validator_.ValidateUnsignedAsciiIntegral(size, min, max, out, d);
            },
            [&](std::uint64_t* out, const void** d, void* c) {
                return c != nullptr ? validator_.ValidateUnsignedAsciiIntegralCopy(size, list, out, c)
                                    : validator_.ValidateUnsignedAsciiIntegral(size, list, out, d);
            },
            [&](std::uint64_t& value) {
                return ReferenceUnsigned(Field(), size, std::numeric_limits<std::uint64_t>::max(), value);
            },
            min, max, list);
    }

    void SignedDecimal()
    {
        const unsigned size = Size();
        const std::int64_t min = SignedMin();
        const std::int64_t max = SignedMax();
        const std::vector<std::int64_t> list = SignedList();
        IntegerFamily<std::int64_t>(
            OK,
            [&](const void** d, void* c) {
                return c != nullptr ? validator_.ValidateSignedAsciiIntegralCopy(size, c)
                                    : validator_.ValidateSignedAsciiIntegral(size, d);
            },
            [&](std::int64_t* out, const void** d, void* c) {
                return c != nullptr ? validator_.ValidateSignedAsciiIntegralCopy(size, min, max, out, c)
                                    : validator_.ValidateSignedAsciiIntegral(size, min, max, out, d);
            },
            [&](std::int64_t* out, const void** d, void* c) {
                return c != nullptr ? validator_.ValidateSignedAsciiIntegralCopy(size, list, out, c)
                                    : validator_.ValidateSignedAsciiIntegral(size, list, out, d);
            },
            [&](std::int64_t& value) {
                return ReferenceSigned(Field(), size,
                                       static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()), value);
            },
            min, max, list);
    }

    // ---- Hexadecimal and binary ---------------------------------------------

    StatusCode HexSizeRule() const { return (Size() % 2 != 0 || Size() > 16) ? PARAM : OK; }
    StatusCode BinarySizeRule() const { return Size() > 8 ? PARAM : OK; }

    void Hexadecimal()
    {
        const unsigned size = Size();
        const auto endian = Order();
        const std::uint64_t min = UnsignedMin();
        const std::uint64_t max = UnsignedMax();
        const std::vector<std::uint64_t> list = UnsignedList();
        IntegerFamily<std::uint64_t>(
            HexSizeRule(),
            [&](const void** d, void* c) {
                return c != nullptr ? validator_.ValidateAsciiHexadecimalIntegralCopy(size, endian, c)
                                    : validator_.ValidateAsciiHexadecimalIntegral(size, endian, d);
            },
            [&](std::uint64_t* out, const void** d, void* c) {
                return c != nullptr ? validator_.ValidateAsciiHexadecimalIntegralCopy(size, endian, min, max, out, c)
                                    : validator_.ValidateAsciiHexadecimalIntegral(size, endian, min, max, out, d);
            },
            [&](std::uint64_t* out, const void** d, void* c) {
                return c != nullptr ? validator_.ValidateAsciiHexadecimalIntegralCopy(size, endian, list, out, c)
                                    : validator_.ValidateAsciiHexadecimalIntegral(size, endian, list, out, d);
            },
            [&](std::uint64_t& value) { return ReferenceHex(Field(), size, BigEndian(), value); }, min, max, list);
    }

    void UnsignedBinary()
    {
        const unsigned size = Size();
        const auto endian = Order();
        const std::uint64_t min = UnsignedMin();
        const std::uint64_t max = UnsignedMax();
        const std::vector<std::uint64_t> list = UnsignedList();
        IntegerFamily<std::uint64_t>(
            BinarySizeRule(),
            [&](const void** d, void* c) {
                return c != nullptr ? validator_.ValidateUnsignedBinaryIntegralCopy(size, endian, c)
                                    : validator_.ValidateUnsignedBinaryIntegral(size, endian, d);
            },
            [&](std::uint64_t* out, const void** d, void* c) {
                return c != nullptr ? validator_.ValidateUnsignedBinaryIntegralCopy(size, endian, min, max, out, c)
                                    : validator_.ValidateUnsignedBinaryIntegral(size, endian, min, max, out, d);
            },
            [&](std::uint64_t* out, const void** d, void* c) {
                return c != nullptr ? validator_.ValidateUnsignedBinaryIntegralCopy(size, endian, list, out, c)
                                    : validator_.ValidateUnsignedBinaryIntegral(size, endian, list, out, d);
            },
            [&](std::uint64_t& value) {
                value = ReferenceBinary(Field(), size, BigEndian());
                return OK;
            },
            min, max, list);
    }

    void SignedBinary()
    {
        const unsigned size = Size();
        const auto endian = Order();
        const std::int64_t min = SignedMin();
        const std::int64_t max = SignedMax();
        const std::vector<std::int64_t> list = SignedList();
        IntegerFamily<std::int64_t>(
            BinarySizeRule(),
            [&](const void** d, void* c) {
                return c != nullptr ? validator_.ValidateSignedBinaryIntegralCopy(size, endian, c)
                                    : validator_.ValidateSignedBinaryIntegral(size, endian, d);
            },
            [&](std::int64_t* out, const void** d, void* c) {
                return c != nullptr ? validator_.ValidateSignedBinaryIntegralCopy(size, endian, min, max, out, c)
                                    : validator_.ValidateSignedBinaryIntegral(size, endian, min, max, out, d);
            },
            [&](std::int64_t* out, const void** d, void* c) {
                return c != nullptr ? validator_.ValidateSignedBinaryIntegralCopy(size, endian, list, out, c)
                                    : validator_.ValidateSignedBinaryIntegral(size, endian, list, out, d);
            },
            [&](std::int64_t& value) {
                value = SignExtend(ReferenceBinary(Field(), size, BigEndian()), size);
                return OK;
            },
            min, max, list);
    }

    // ---- Typed integers -----------------------------------------------------

    // A typed member of any width: the model's 64-bit status and value, then
    // the type's own limit.
    template <typename T, typename Call, typename Reference>
    void Typed(StatusCode sizeRule, Call call, Reference reference)
    {
        T value = static_cast<T>(7);
        T* out = WantValue() ? &value : nullptr;
        StatusCode expected = OK;
        T converted = 0;
        if (!FrameDecides(out != nullptr, expected))
        {
            expected = sizeRule;
            if (expected == OK)
                expected = reference(converted);
        }
        const bool ok = Check(expected, [&](const void** d, void* c) { return call(out, d, c); });
        if (ok && out != nullptr)
            Require(value == converted, "typed value differs from the reference");
        else
            Require(value == static_cast<T>(7), "typed value written without a conversion");
    }

    template <typename T>
    void UnsignedDecimalOf()
    {
        const unsigned size = Size();
        Typed<T>(
            OK,
            [&](T* out, const void** d, void* c) {
                return c != nullptr ? validator_.ValidateUnsignedAsciiIntegralCopy(size, out, c)
                                    : validator_.ValidateUnsignedAsciiIntegral(size, out, d);
            },
            [&](T& converted) {
                std::uint64_t value = 0;
                const StatusCode status = ReferenceUnsigned(Field(), size, std::numeric_limits<T>::max(), value);
                converted = static_cast<T>(value);
                return status;
            });
    }

    template <typename T>
    void SignedDecimalOf()
    {
        const unsigned size = Size();
        Typed<T>(
            OK,
            [&](T* out, const void** d, void* c) {
                return c != nullptr ? validator_.ValidateSignedAsciiIntegralCopy(size, out, c)
                                    : validator_.ValidateSignedAsciiIntegral(size, out, d);
            },
            [&](T& converted) {
                std::int64_t value = 0;
                const StatusCode status =
                    ReferenceSigned(Field(), size, static_cast<std::uint64_t>(std::numeric_limits<T>::max()), value);
                converted = static_cast<T>(value);
                return status;
            });
    }

    template <typename T>
    void HexadecimalOf()
    {
        const unsigned size = Size();
        const auto endian = Order();
        Typed<T>(
            HexSizeRule(),
            [&](T* out, const void** d, void* c) {
                return c != nullptr ? validator_.ValidateAsciiHexadecimalIntegralCopy(size, endian, out, c)
                                    : validator_.ValidateAsciiHexadecimalIntegral(size, endian, out, d);
            },
            [&](T& converted) {
                std::uint64_t value = 0;
                StatusCode status = ReferenceHex(Field(), size, BigEndian(), value);
                if (status == OK && value > std::numeric_limits<T>::max())
                    status = RANGE;
                converted = static_cast<T>(value);
                return status;
            });
    }

    template <typename T>
    void BinaryOf()
    {
        const unsigned size = Size();
        const auto endian = Order();
        Typed<T>(
            BinarySizeRule(),
            [&](T* out, const void** d, void* c) {
                if constexpr (std::is_signed_v<T>)
                    return c != nullptr ? validator_.ValidateSignedBinaryIntegralCopy(size, endian, out, c)
                                        : validator_.ValidateSignedBinaryIntegral(size, endian, out, d);
                else
                    return c != nullptr ? validator_.ValidateUnsignedBinaryIntegralCopy(size, endian, out, c)
                                        : validator_.ValidateUnsignedBinaryIntegral(size, endian, out, d);
            },
            [&](T& converted) {
                const std::uint64_t bits = ReferenceBinary(Field(), size, BigEndian());
                bool fits;
                if constexpr (std::is_signed_v<T>)
                {
                    const std::int64_t value = SignExtend(bits, size);
                    fits = value >= std::numeric_limits<T>::min() && value <= std::numeric_limits<T>::max();
                    converted = static_cast<T>(value);
                }
                else
                {
                    fits = bits <= std::numeric_limits<T>::max();
                    converted = static_cast<T>(bits);
                }
                return fits ? OK : RANGE;
            });
    }

    void TypedUnsignedDecimal()
    {
        switch (op_.spare % 5)
        {
        case 0: UnsignedDecimalOf<unsigned char>(); break;
        case 1: UnsignedDecimalOf<unsigned short>(); break;
        case 2: UnsignedDecimalOf<unsigned int>(); break;
        case 3: UnsignedDecimalOf<unsigned long>(); break;
        default: UnsignedDecimalOf<unsigned long long>(); break;
        }
    }

    void TypedSignedDecimal()
    {
        switch (op_.spare % 5)
        {
        case 0: SignedDecimalOf<signed char>(); break;
        case 1: SignedDecimalOf<short>(); break;
        case 2: SignedDecimalOf<int>(); break;
        case 3: SignedDecimalOf<long>(); break;
        default: SignedDecimalOf<long long>(); break;
        }
    }

    void TypedHexadecimal()
    {
        switch (op_.a % 5)
        {
        case 0: HexadecimalOf<unsigned char>(); break;
        case 1: HexadecimalOf<unsigned short>(); break;
        case 2: HexadecimalOf<unsigned int>(); break;
        case 3: HexadecimalOf<unsigned long>(); break;
        default: HexadecimalOf<unsigned long long>(); break;
        }
    }

    void TypedBinary()
    {
        switch (op_.a % 10)
        {
        case 0: BinaryOf<unsigned char>(); break;
        case 1: BinaryOf<unsigned short>(); break;
        case 2: BinaryOf<unsigned int>(); break;
        case 3: BinaryOf<unsigned long>(); break;
        case 4: BinaryOf<unsigned long long>(); break;
        case 5: BinaryOf<signed char>(); break;
        case 6: BinaryOf<short>(); break;
        case 7: BinaryOf<int>(); break;
        case 8: BinaryOf<long>(); break;
        default: BinaryOf<long long>(); break;
        }
    }

    // ---- Reals --------------------------------------------------------------

    // Numerator and divisor outputs (each may be null), or the plain member.
    template <bool isSigned>
    void RealFraction()
    {
        using Numerator = std::conditional_t<isSigned, std::int64_t, std::uint64_t>;
        const unsigned size = Size();
        const bool plain = (op_.flags & 16) != 0;
        Numerator numerator = 7;
        std::uint64_t divisor = 7;
        Numerator* n = !plain && WantValue() ? &numerator : nullptr;
        std::uint64_t* dv = !plain && (op_.flags & 8) == 0 ? &divisor : nullptr;
        StatusCode expected = OK;
        Real real;
        if (!FrameDecides(n != nullptr || dv != nullptr, expected))
            expected = ReferenceReal(Field(), size, isSigned, real);
        const bool ok = Check(expected, [&](const void** d, void* c) {
            if (plain)
            {
                if constexpr (isSigned)
                    return c != nullptr ? validator_.ValidateSignedAsciiRealCopy(size, c)
                                        : validator_.ValidateSignedAsciiReal(size, d);
                else
                    return c != nullptr ? validator_.ValidateUnsignedAsciiRealCopy(size, c)
                                        : validator_.ValidateUnsignedAsciiReal(size, d);
            }
            if constexpr (isSigned)
                return c != nullptr ? validator_.ValidateSignedAsciiRealCopy(size, n, dv, c)
                                    : validator_.ValidateSignedAsciiReal(size, n, dv, d);
            else
                return c != nullptr ? validator_.ValidateUnsignedAsciiRealCopy(size, n, dv, c)
                                    : validator_.ValidateUnsignedAsciiReal(size, n, dv, d);
        });
        Numerator expectedNumerator = 7;
        std::uint64_t expectedDivisor = 7;
        if (ok && size != 0)
        {
            if (n != nullptr)
            {
                if constexpr (isSigned)
                    expectedNumerator = real.negative ? -static_cast<std::int64_t>(real.numerator)
                                                      : static_cast<std::int64_t>(real.numerator);
                else
                    expectedNumerator = real.numerator;
            }
            if (dv != nullptr)
                expectedDivisor = real.divisor;
        }
        Require(numerator == expectedNumerator && divisor == expectedDivisor, "numerator or divisor wrong");
    }

    // Range and list members, compared in long double.
    void RealValues()
    {
        const unsigned size = Size();
        const bool isSigned = (op_.flags & 16) != 0;
        const bool ranged = (op_.flags & 8) != 0;
        const long double a = static_cast<long double>(static_cast<std::int64_t>(op_.a)) /
                              static_cast<long double>(std::uint64_t{1} << (op_.spare % 32));
        const long double b = static_cast<long double>(static_cast<std::int64_t>(op_.b)) / 1000.0L;
        const std::vector<long double> all = {a, b, 0.5L, 12.25L};
        const std::vector<long double> list(all.begin(), all.begin() + (op_.spare >> 5) % 5);
        long double value = 7;
        long double* out = WantValue() ? &value : nullptr;
        StatusCode expected = OK;
        long double converted = 0;
        if (!FrameDecides(out != nullptr, expected))
        {
            Real real;
            expected = ReferenceReal(Field(), size, isSigned, real);
            if (expected == OK)
            {
                converted = ReferenceFloating<long double>(Field(), size);
                if (ranged ? !(converted >= a && converted <= b)
                           : std::find(list.begin(), list.end(), converted) == list.end())
                    expected = RANGE;
            }
        }
        const bool ok = Check(expected, [&](const void** d, void* c) {
            if (isSigned)
            {
                if (ranged)
                    return c != nullptr ? validator_.ValidateSignedAsciiRealCopy(size, a, b, out, c)
                                        : validator_.ValidateSignedAsciiReal(size, a, b, out, d);
                return c != nullptr ? validator_.ValidateSignedAsciiRealCopy(size, list, out, c)
                                    : validator_.ValidateSignedAsciiReal(size, list, out, d);
            }
            if (ranged)
                return c != nullptr ? validator_.ValidateUnsignedAsciiRealCopy(size, a, b, out, c)
                                    : validator_.ValidateUnsignedAsciiReal(size, a, b, out, d);
            return c != nullptr ? validator_.ValidateUnsignedAsciiRealCopy(size, list, out, c)
                                : validator_.ValidateUnsignedAsciiReal(size, list, out, d);
        });
        if (ok && out != nullptr)
            Require(value == converted, "real value differs from the reference");
        else
            Require(value == 7, "real value written without a conversion");
    }

    template <typename T>
    void RealOf()
    {
        const unsigned size = Size();
        const bool isSigned = (op_.flags & 16) != 0;
        T value = static_cast<T>(7);
        T* out = WantValue() ? &value : nullptr;
        StatusCode expected = OK;
        T converted = 0;
        if (!FrameDecides(out != nullptr, expected))
        {
            Real real;
            expected = ReferenceReal(Field(), size, isSigned, real);
            if (expected == OK)
                converted = ReferenceFloating<T>(Field(), size);
        }
        const bool ok = Check(expected, [&](const void** d, void* c) {
            if (isSigned)
                return c != nullptr ? validator_.ValidateSignedAsciiRealCopy(size, out, c)
                                    : validator_.ValidateSignedAsciiReal(size, out, d);
            return c != nullptr ? validator_.ValidateUnsignedAsciiRealCopy(size, out, c)
                                : validator_.ValidateUnsignedAsciiReal(size, out, d);
        });
        if (ok && out != nullptr)
            Require(value == converted, "typed real is not the nearest value");
        else
            Require(value == static_cast<T>(7), "typed real written without a conversion");
    }

    // A real text made from the operation's parameters: any 64-bit
    // numerator with 0 to 9 places and an optional sign. Random message bytes
    // seldom form long digit runs; this reaches the large numerators (beyond
    // 2^53) where a conversion that rounds twice goes wrong.
    template <typename T>
    void SyntheticRealOf() const
    {
        const bool isSigned = (op_.flags & 16) != 0;
        const unsigned places = static_cast<unsigned>(op_.b % 10);
        std::string digits = std::to_string(op_.a);
        if (digits.size() <= places)
            digits.insert(0, places + 1 - digits.size(), '0');
        std::string text = digits.substr(0, digits.size() - places);
        if (places != 0 || (op_.b & 16) != 0)
            text += "." + digits.substr(digits.size() - places);
        if (isSigned && (op_.b & 32) != 0)
            text.insert(0, (op_.b & 64) != 0 ? "-" : "+");
        const unsigned size = static_cast<unsigned>(text.size());
        const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
        Real real;
        const StatusCode expected = ReferenceReal(bytes, size, isSigned, real);
        MessageValidator validator(text.data(), size);
        T value = static_cast<T>(7);
        const StatusCode status = isSigned ? validator.ValidateSignedAsciiReal(size, &value)
                                           : validator.ValidateUnsignedAsciiReal(size, &value);
        Require(status == expected, "synthetic real status differs from the reference");
        Require(status == OK ? value == ReferenceFloating<T>(bytes, size) : value == static_cast<T>(7),
                "synthetic real is not the nearest value");
    }

    void TypedReal()
    {
        switch (op_.spare % 3)
        {
        case 0:
            RealOf<float>();
            SyntheticRealOf<float>();
            break;
        case 1:
            RealOf<double>();
            SyntheticRealOf<double>();
            break;
        default:
            RealOf<long double>();
            SyntheticRealOf<long double>();
            break;
        }
    }

    // The static helpers read any text, here up to size bytes from the
    // cursor; they never touch the validator.
    void StaticHelpers()
    {
        const unsigned size = std::min(Size(), remaining_);
        const bool isSigned = (op_.flags & 16) != 0;
        const bool nullText = (op_.flags & 8) != 0 && size != 0;
        const unsigned char* text = nullText ? nullptr : Field();
        Real real;
        const StatusCode expected = nullText ? PARAM : ReferenceReal(text, size, isSigned, real);
        std::uint64_t divisor = 7;
        StatusCode status;
        bool valueRight;
        if (isSigned)
        {
            std::int64_t numerator = 7;
            status = MessageValidator::CopySignedAsciiRealToNumeratorAndDivisor(text, size, numerator, divisor);
            const std::int64_t expectedNumerator = real.negative ? -static_cast<std::int64_t>(real.numerator)
                                                                 : static_cast<std::int64_t>(real.numerator);
            valueRight = status == OK ? numerator == expectedNumerator : numerator == 7;
        }
        else
        {
            std::uint64_t numerator = 7;
            status = MessageValidator::CopyUnsignedAsciiRealToNumeratorAndDivisor(text, size, numerator, divisor);
            valueRight = status == OK ? numerator == real.numerator : numerator == 7;
        }
        Require(status == expected, "static helper status differs from the reference");
        Require(valueRight && divisor == (status == OK ? real.divisor : 7), "static helper outputs wrong");
        Require(validator_.GetCursor() == before_, "static helper moved the cursor");
    }

    // ---- Strings ------------------------------------------------------------

    void Strings()
    {
        const unsigned size = Size();
        const unsigned char low = static_cast<unsigned char>(op_.a);
        const unsigned char high = static_cast<unsigned char>(op_.a >> 8);
        std::string allowed;
        for (unsigned i = 0; i < (op_.spare >> 4) % 9; ++i)
            allowed += static_cast<char>(op_.b >> (8 * i));
        const std::string field(reinterpret_cast<const char*>(Field()), std::min(size, remaining_));
        const std::vector<std::string> list = {field.substr(0, size / 2), std::string(size, static_cast<char>(low)),
                                               (op_.flags & 8) != 0 ? field : std::string("x")};
        std::string text = "sentinel";
        std::string* out = WantValue() ? &text : nullptr;
        StatusCode expected = OK;
        const bool decided = FrameDecides(false, expected);
        auto all = [&](auto predicate) { return std::all_of(field.begin(), field.end(), predicate); };
        bool ok;
        switch (op_.spare % 4)
        {
        case 0:
            ok = Check(expected, [&](const void** d, void* c) {
                return c != nullptr ? validator_.ValidateStringCopy(size, out, c)
                                    : validator_.ValidateString(size, out, d);
            });
            break;
        case 1:
            if (!decided)
                expected = all([&](char x) {
                    const auto u = static_cast<unsigned char>(x);
                    return u >= low && u <= high;
                })
                               ? OK
                               : RANGE;
            ok = Check(expected, [&](const void** d, void* c) {
                return c != nullptr ? validator_.ValidateStringCopy(size, low, high, out, c)
                                    : validator_.ValidateString(size, low, high, out, d);
            });
            break;
        case 2:
            if (!decided)
                expected = all([&](char x) { return allowed.find(x) != std::string::npos; }) ? OK : RANGE;
            ok = Check(expected, [&](const void** d, void* c) {
                return c != nullptr ? validator_.ValidateStringCopy(size, allowed, out, c)
                                    : validator_.ValidateString(size, allowed, out, d);
            });
            break;
        default:
            if (!decided)
                expected = std::find(list.begin(), list.end(), field) != list.end() ? OK : RANGE;
            ok = Check(expected, [&](const void** d, void* c) {
                return c != nullptr ? validator_.ValidateStringCopy(size, list, out, c)
                                    : validator_.ValidateString(size, list, out, d);
            });
            break;
        }
        // Size 0 empties the text; a success delivers the field, zero bytes included.
        if (ok && out != nullptr)
            Require(text == (size == 0 ? std::string() : field), "text differs from the field");
        else
            Require(text == "sentinel", "text written on failure");
    }

    const std::uint8_t* message_;
    MessageValidator validator_;
    Operation op_{};
    unsigned before_ = 0;
    unsigned remaining_ = 0;
    int sentinel_ = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 1)
        return 0;
    const unsigned count = 1 + data[0] % 8;
    std::size_t header = 1 + count * operationSize;
    if (size < header)
        header = size;
    const unsigned operations = static_cast<unsigned>((header - 1) / operationSize);
    // The message gets its own allocation so that ASan sees any overrun.
    const std::size_t length = size - header;
    std::vector<std::uint8_t> message(data + header, data + size);
    Harness harness(message.empty() ? nullptr : message.data(), static_cast<unsigned>(length));
    for (unsigned i = 0; i < operations; ++i)
    {
        const std::uint8_t* p = data + 1 + i * operationSize;
        Operation op;
        op.opcode = p[0];
        // Sizes cluster around the interesting widths; above 200 they run past the end.
        op.size = p[1] < 200 ? p[1] % 32 : p[1];
        op.flags = p[2];
        op.a = Load64(p + 3);
        op.b = Load64(p + 11);
        op.spare = p[19];
        harness.Run(op);
    }
    return 0;
}
