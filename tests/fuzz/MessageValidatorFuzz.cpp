// Drives every MessageValidator family over arbitrary bytes. The input is a
// program: byte 0 gives the number of operations (1 to 8), each operation
// takes 20 bytes (opcode, size, flags, two 8-byte parameters, a spare byte),
// and the remaining bytes are the message. After every operation:
// - the status is one the validator may answer;
// - the cursor never passes the length;
// - a failure leaves the cursor and every output unchanged;
// - a success advances the cursor by exactly the size, points data at the
//   field, copies the field, and gives a value inside the requested range or
//   list that agrees with a slow reference conversion.
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

using namespace Zantor;

namespace {

constexpr std::size_t operationSize = 20;

void Require(bool condition)
{
    if (!condition)
        std::abort();
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

// Slow references: digit by digit with an overflow check on every step.
bool ReferenceUnsigned(const unsigned char* text, unsigned size, std::uint64_t max, std::uint64_t& value)
{
    std::uint64_t result = 0;
    for (unsigned i = 0; i < size; ++i)
    {
        if (text[i] < '0' || text[i] > '9')
            return false;
        const unsigned digit = text[i] - '0';
        if (result > (max - digit) / 10)
            return false;
        result = result * 10 + digit;
    }
    value = result;
    return true;
}

bool ReferenceSigned(const unsigned char* text, unsigned size, std::int64_t max, std::int64_t& value)
{
    bool negative = false;
    if (size != 0 && (text[0] == '+' || text[0] == '-'))
    {
        negative = text[0] == '-';
        ++text;
        --size;
    }
    std::uint64_t magnitude = 0;
    if (!ReferenceUnsigned(text, size, static_cast<std::uint64_t>(max), magnitude))
        return false;
    value = negative ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
    return true;
}

class Harness
{
public:
    Harness(const std::uint8_t* message, unsigned length) : message_(message), validator_(message, length) {}

    void Run(const Operation& op)
    {
        op_ = op;
        before_ = validator_.GetCursor();
        switch (op.opcode % 16)
        {
        case 0: Bytes(); break;
        case 1: UnsignedDecimal(); break;
        case 2: SignedDecimal(); break;
        case 3: Hexadecimal(); break;
        case 4: UnsignedBinary(); break;
        case 5: SignedBinary(); break;
        case 6: UnsignedReal(); break;
        case 7: SignedReal(); break;
        case 8: RealValues(); break;
        case 9: Strings(); break;
        case 10: TypedUnsignedDecimal(); break;
        case 11: TypedSignedDecimal(); break;
        case 12: TypedHexadecimal(); break;
        case 13: TypedBinary(); break;
        case 14: TypedReal(); break;
        default: StaticHelpers(); break;
        }
        Require(validator_.GetCursor() <= validator_.GetLength());
    }

private:
    bool CopyForm() const { return (op_.flags & 1) != 0; }
    MessageHandler::Endian Order() const { return (op_.flags & 2) ? MessageHandler::ENDIAN_BIG : MessageHandler::ENDIAN_LITTLE; }
    bool WantValue() const { return (op_.flags & 4) == 0; }

    // Calls call(data, destination) in the plain or the Copy form and checks
    // the frame. Returns true on success.
    template <typename Call>
    bool Frame(Call call)
    {
        const void* data = &sentinel_;
        unsigned char destination[64];
        std::memset(destination, 0xA5, sizeof destination);
        const unsigned size = op_.size;
        const bool copy = CopyForm() && size <= sizeof destination;
        const StatusCode status = copy ? call(static_cast<const void**>(nullptr), static_cast<void*>(destination))
                                       : call(&data, static_cast<void*>(nullptr));
        Require(status == STATUS_CODE_SUCCESS || status == STATUS_CODE_INVALID_PARAMETER ||
                status == STATUS_CODE_INVALID_FORMAT || status == STATUS_CODE_OUT_OF_RANGE);
        if (status != STATUS_CODE_SUCCESS)
        {
            Require(validator_.GetCursor() == before_);
            Require(data == &sentinel_);
            Require(destination[0] == 0xA5);
            return false;
        }
        Require(validator_.GetCursor() == before_ + size);
        if (!copy)
            Require(data == message_ + before_);
        else if (size != 0)
            Require(std::memcmp(destination, message_ + before_, size) == 0);
        return true;
    }

    const unsigned char* Field() const { return message_ + before_; }
    bool Empty() const { return op_.size == 0; }

    void Bytes()
    {
        const unsigned size = op_.size;
        const unsigned char low = static_cast<unsigned char>(op_.a);
        const unsigned char high = static_cast<unsigned char>(op_.a >> 8);
        const std::vector<unsigned char> set = {low, high, static_cast<unsigned char>(op_.b)};
        const std::string pattern(size, static_cast<char>(low));
        const std::vector<std::string> list = {pattern, std::string(size, static_cast<char>(high))};
        bool ok = false;
        switch (op_.spare % 6)
        {
        case 0:
            ok = Frame([&](const void** d, void* c) { return d || !c ? validator_.ValidateBytes(size, d) : validator_.ValidateBytesCopy(size, c); });
            break;
        case 1:
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateBytesCopy(size, pattern.data(), c) : validator_.ValidateBytes(size, pattern.data(), d);
            });
            if (ok && size != 0)
                Require(std::memcmp(Field(), pattern.data(), size) == 0);
            break;
        case 2:
            ok = Frame([&](const void** d, void* c) { return c ? validator_.ValidateBytesCopy(size, low, c) : validator_.ValidateBytes(size, low, d); });
            if (ok)
                Require(std::all_of(Field(), Field() + size, [low](unsigned char x) { return x == low; }));
            break;
        case 3:
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateBytesCopy(size, low, high, c) : validator_.ValidateBytes(size, low, high, d);
            });
            if (ok)
                Require(std::all_of(Field(), Field() + size, [&](unsigned char x) { return x >= low && x <= high; }));
            break;
        case 4:
            ok = Frame([&](const void** d, void* c) { return c ? validator_.ValidateBytesCopy(size, set, c) : validator_.ValidateBytes(size, set, d); });
            if (ok)
                Require(std::all_of(Field(), Field() + size, [&](unsigned char x) {
                    return std::find(set.begin(), set.end(), x) != set.end();
                }));
            break;
        default:
            ok = Frame([&](const void** d, void* c) { return c ? validator_.ValidateBytesCopy(size, list, c) : validator_.ValidateBytes(size, list, d); });
            if (ok && size != 0)
                Require(std::memcmp(Field(), list[0].data(), size) == 0 || std::memcmp(Field(), list[1].data(), size) == 0);
            break;
        }
    }

    void UnsignedDecimal()
    {
        const unsigned size = op_.size;
        const std::uint64_t min = std::min(op_.a, op_.b) % (op_.spare & 1 ? 1000 : ~0ull);
        const std::uint64_t max = std::max(op_.a, op_.b);
        const std::vector<std::uint64_t> list = {op_.a % 1000, op_.b % 100, op_.a};
        std::uint64_t value = 7;
        std::uint64_t* out = WantValue() ? &value : nullptr;
        bool ok;
        if (op_.spare & 2)
        {
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateUnsignedAsciiIntegralCopy(size, min, max, out, c)
                         : validator_.ValidateUnsignedAsciiIntegral(size, min, max, out, d);
            });
            if (ok && out != nullptr && !Empty())
                Require(value >= min && value <= max);
        }
        else
        {
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateUnsignedAsciiIntegralCopy(size, list, out, c)
                         : validator_.ValidateUnsignedAsciiIntegral(size, list, out, d);
            });
            if (ok && out != nullptr && !Empty())
                Require(std::find(list.begin(), list.end(), value) != list.end());
        }
        if (!ok)
            Require(value == 7);
        if (ok && out != nullptr && !Empty())
        {
            std::uint64_t reference = 0;
            Require(ReferenceUnsigned(Field(), size, ~0ull, reference) && reference == value);
        }
        if (ok && Empty())
            Require(out == nullptr && value == 7);
    }

    void SignedDecimal()
    {
        const unsigned size = op_.size;
        const std::int64_t a = static_cast<std::int64_t>(op_.a) >> (op_.spare % 64);
        const std::int64_t b = static_cast<std::int64_t>(op_.b) >> (op_.spare % 64);
        const std::int64_t min = std::min(a, b);
        const std::int64_t max = std::max(a, b);
        const std::vector<std::int64_t> list = {a % 1000, -(b % 1000), 0};
        std::int64_t value = 7;
        std::int64_t* out = WantValue() ? &value : nullptr;
        bool ok;
        if (op_.flags & 8)
        {
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateSignedAsciiIntegralCopy(size, min, max, out, c)
                         : validator_.ValidateSignedAsciiIntegral(size, min, max, out, d);
            });
            if (ok && out != nullptr && !Empty())
                Require(value >= min && value <= max);
        }
        else if (op_.flags & 16)
        {
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateSignedAsciiIntegralCopy(size, list, out, c)
                         : validator_.ValidateSignedAsciiIntegral(size, list, out, d);
            });
            if (ok && out != nullptr && !Empty())
                Require(std::find(list.begin(), list.end(), value) != list.end());
        }
        else
        {
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateSignedAsciiIntegralCopy(size, c) : validator_.ValidateSignedAsciiIntegral(size, d);
            });
            if (ok && size != 0)
            {
                // Well formed: sign then digits.
                const unsigned start = (Field()[0] == '+' || Field()[0] == '-') ? 1 : 0;
                Require(std::all_of(Field() + start, Field() + size, [](unsigned char x) { return x >= '0' && x <= '9'; }));
            }
            return;
        }
        if (!ok || out == nullptr)
            Require(value == 7);
        if (ok && out != nullptr && !Empty())
        {
            std::int64_t reference = 0;
            Require(ReferenceSigned(Field(), size, std::numeric_limits<std::int64_t>::max(), reference) &&
                    reference == value);
        }
    }

    void Hexadecimal()
    {
        const unsigned size = op_.size;
        const std::uint64_t min = std::min(op_.a, op_.b);
        const std::uint64_t max = std::max(op_.a, op_.b);
        const std::vector<std::uint64_t> list = {op_.a & 0xFFFF, op_.b & 0xFF, 0};
        std::uint64_t value = 7;
        std::uint64_t* out = WantValue() ? &value : nullptr;
        const auto endian = Order();
        bool ok;
        switch (op_.spare % 3)
        {
        case 0:
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateAsciiHexadecimalIntegralCopy(size, endian, min, max, out, c)
                         : validator_.ValidateAsciiHexadecimalIntegral(size, endian, min, max, out, d);
            });
            if (ok && out != nullptr && !Empty())
                Require(value >= min && value <= max);
            break;
        case 1:
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateAsciiHexadecimalIntegralCopy(size, endian, list, out, c)
                         : validator_.ValidateAsciiHexadecimalIntegral(size, endian, list, out, d);
            });
            if (ok && out != nullptr && !Empty())
                Require(std::find(list.begin(), list.end(), value) != list.end());
            break;
        default:
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateAsciiHexadecimalIntegralCopy(size, endian, c)
                         : validator_.ValidateAsciiHexadecimalIntegral(size, endian, d);
            });
            out = nullptr;
            break;
        }
        if (ok)
            Require(size % 2 == 0 && size <= 16);
        if (!ok)
            Require(value == 7);
        if (ok && out != nullptr && !Empty())
            Require(value == ReferenceHex(Field(), size, endian));
    }

    static std::uint64_t ReferenceHex(const unsigned char* text, unsigned size, MessageHandler::Endian endian)
    {
        std::uint64_t value = 0;
        for (unsigned i = 0; i < size / 2; ++i)
        {
            const std::string pair(reinterpret_cast<const char*>(text) + 2 * i, 2);
            const std::uint64_t byte = std::strtoull(pair.c_str(), nullptr, 16);
            const unsigned shift = endian == MessageHandler::ENDIAN_BIG ? 8 * (size / 2 - 1 - i) : 8 * i;
            value |= byte << shift;
        }
        return value;
    }

    static std::uint64_t ReferenceBinary(const unsigned char* bytes, unsigned size, MessageHandler::Endian endian)
    {
        std::uint64_t value = 0;
        for (unsigned i = 0; i < size; ++i)
        {
            const unsigned shift = endian == MessageHandler::ENDIAN_BIG ? 8 * (size - 1 - i) : 8 * i;
            value |= static_cast<std::uint64_t>(bytes[i]) << shift;
        }
        return value;
    }

    void UnsignedBinary()
    {
        const unsigned size = op_.size;
        const std::uint64_t min = std::min(op_.a, op_.b) >> (op_.spare % 64);
        const std::uint64_t max = std::max(op_.a, op_.b);
        const std::vector<std::uint64_t> list = {op_.a & 0xFF, op_.b, 0};
        std::uint64_t value = 7;
        std::uint64_t* out = WantValue() ? &value : nullptr;
        const auto endian = Order();
        bool ok;
        if (op_.flags & 8)
        {
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateUnsignedBinaryIntegralCopy(size, endian, min, max, out, c)
                         : validator_.ValidateUnsignedBinaryIntegral(size, endian, min, max, out, d);
            });
            if (ok && out != nullptr && !Empty())
                Require(value >= min && value <= max);
        }
        else
        {
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateUnsignedBinaryIntegralCopy(size, endian, list, out, c)
                         : validator_.ValidateUnsignedBinaryIntegral(size, endian, list, out, d);
            });
            if (ok && out != nullptr && !Empty())
                Require(std::find(list.begin(), list.end(), value) != list.end());
        }
        if (ok)
            Require(size <= 8);
        if (!ok)
            Require(value == 7);
        if (ok && !Empty() && out != nullptr)
            Require(value == ReferenceBinary(Field(), size, endian));
    }

    void SignedBinary()
    {
        const unsigned size = op_.size;
        const std::int64_t a = static_cast<std::int64_t>(op_.a) >> (op_.spare % 64);
        const std::int64_t b = static_cast<std::int64_t>(op_.b);
        const std::int64_t min = std::min(a, b);
        const std::int64_t max = std::max(a, b);
        const std::vector<std::int64_t> list = {static_cast<std::int8_t>(op_.a), b, -1};
        std::int64_t value = 7;
        std::int64_t* out = WantValue() ? &value : nullptr;
        const auto endian = Order();
        bool ok;
        if (op_.flags & 8)
        {
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateSignedBinaryIntegralCopy(size, endian, min, max, out, c)
                         : validator_.ValidateSignedBinaryIntegral(size, endian, min, max, out, d);
            });
            if (ok && out != nullptr && !Empty())
                Require(value >= min && value <= max);
        }
        else if (op_.flags & 16)
        {
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateSignedBinaryIntegralCopy(size, endian, list, out, c)
                         : validator_.ValidateSignedBinaryIntegral(size, endian, list, out, d);
            });
            if (ok && out != nullptr && !Empty())
                Require(std::find(list.begin(), list.end(), value) != list.end());
        }
        else
        {
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateSignedBinaryIntegralCopy(size, endian, c)
                         : validator_.ValidateSignedBinaryIntegral(size, endian, d);
            });
            out = nullptr;
        }
        if (ok)
            Require(size <= 8);
        if (!ok)
            Require(value == 7);
        if (ok && !Empty() && out != nullptr)
        {
            const std::uint64_t bits = ReferenceBinary(Field(), size, endian);
            const bool negative = (bits >> (8 * size - 1)) & 1;
            const std::uint64_t extended = negative && size < 8 ? bits | (~0ull << (8 * size)) : bits;
            Require(value == static_cast<std::int64_t>(extended));
        }
    }

    void UnsignedReal()
    {
        const unsigned size = op_.size;
        std::uint64_t numerator = 7;
        std::uint64_t divisor = 7;
        std::uint64_t* n = WantValue() ? &numerator : nullptr;
        std::uint64_t* dv = (op_.flags & 8) ? nullptr : &divisor;
        const bool ok = Frame([&](const void** d, void* c) {
            return c ? validator_.ValidateUnsignedAsciiRealCopy(size, n, dv, c) : validator_.ValidateUnsignedAsciiReal(size, n, dv, d);
        });
        if (!ok || Empty())
        {
            Require(numerator == 7 && divisor == 7);
            return;
        }
        std::uint64_t staticNumerator = 0;
        std::uint64_t staticDivisor = 0;
        Require(MessageValidator::CopyUnsignedAsciiRealToNumeratorAndDivisor(Field(), size, staticNumerator,
                                                                            staticDivisor) == STATUS_CODE_SUCCESS);
        if (n != nullptr)
            Require(numerator == staticNumerator);
        if (dv != nullptr)
            Require(divisor == staticDivisor);
        CheckFraction(Field(), size, false, staticNumerator, staticDivisor);
    }

    void SignedReal()
    {
        const unsigned size = op_.size;
        std::int64_t numerator = 7;
        std::uint64_t divisor = 7;
        std::int64_t* n = WantValue() ? &numerator : nullptr;
        std::uint64_t* dv = (op_.flags & 8) ? nullptr : &divisor;
        const bool ok = Frame([&](const void** d, void* c) {
            return c ? validator_.ValidateSignedAsciiRealCopy(size, n, dv, c) : validator_.ValidateSignedAsciiReal(size, n, dv, d);
        });
        if (!ok || Empty())
        {
            Require(numerator == 7 && divisor == 7);
            return;
        }
        std::int64_t staticNumerator = 0;
        std::uint64_t staticDivisor = 0;
        Require(MessageValidator::CopySignedAsciiRealToNumeratorAndDivisor(Field(), size, staticNumerator,
                                                                          staticDivisor) == STATUS_CODE_SUCCESS);
        if (n != nullptr)
            Require(numerator == staticNumerator);
        const bool negative = Field()[0] == '-';
        const std::uint64_t magnitude =
            negative ? 0 - static_cast<std::uint64_t>(staticNumerator) : static_cast<std::uint64_t>(staticNumerator);
        CheckFraction(Field(), size, true, magnitude, staticDivisor);
    }

    // The digits without the point give the magnitude; the fraction digits
    // give the divisor.
    static void CheckFraction(const unsigned char* text, unsigned size, bool allowSign, std::uint64_t magnitude,
                              std::uint64_t divisor)
    {
        std::string digits;
        unsigned fraction = 0;
        bool point = false;
        for (unsigned i = 0; i < size; ++i)
        {
            const unsigned char x = text[i];
            if (x >= '0' && x <= '9')
            {
                digits += static_cast<char>(x);
                fraction += point;
            }
            else if (x == '.')
            {
                Require(!point);
                point = true;
            }
            else
                Require(allowSign && i == 0 && (x == '+' || x == '-'));
        }
        Require(!digits.empty() && fraction <= 9);
        std::uint64_t power = 1;
        for (unsigned i = 0; i < fraction; ++i)
            power *= 10;
        Require(divisor == power);
        std::uint64_t reference = 0;
        Require(ReferenceUnsigned(reinterpret_cast<const unsigned char*>(digits.data()),
                                  static_cast<unsigned>(digits.size()),
                                  allowSign ? static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()) : ~0ull,
                                  reference));
        Require(reference == magnitude);
    }

    void RealValues()
    {
        const unsigned size = op_.size;
        const long double a = static_cast<long double>(static_cast<std::int64_t>(op_.a)) / 1000.0L;
        const long double b = static_cast<long double>(static_cast<std::int64_t>(op_.b)) / 1000.0L;
        const long double min = std::min(a, b);
        const long double max = std::max(a, b);
        const std::vector<long double> list = {a, b, 0.5L};
        const bool allowSign = (op_.flags & 16) != 0;
        long double value = 7;
        long double* out = WantValue() ? &value : nullptr;
        bool ok;
        if (op_.flags & 8)
        {
            ok = Frame([&](const void** d, void* c) {
                if (allowSign)
                    return c ? validator_.ValidateSignedAsciiRealCopy(size, min, max, out, c)
                             : validator_.ValidateSignedAsciiReal(size, min, max, out, d);
                return c ? validator_.ValidateUnsignedAsciiRealCopy(size, min, max, out, c)
                         : validator_.ValidateUnsignedAsciiReal(size, min, max, out, d);
            });
            if (ok && !Empty() && out != nullptr)
                Require(value >= min && value <= max);
        }
        else
        {
            ok = Frame([&](const void** d, void* c) {
                if (allowSign)
                    return c ? validator_.ValidateSignedAsciiRealCopy(size, list, out, c)
                             : validator_.ValidateSignedAsciiReal(size, list, out, d);
                return c ? validator_.ValidateUnsignedAsciiRealCopy(size, list, out, c)
                         : validator_.ValidateUnsignedAsciiReal(size, list, out, d);
            });
            if (ok && !Empty() && out != nullptr)
                Require(std::find(list.begin(), list.end(), value) != list.end());
        }
        if (!ok || out == nullptr)
            Require(value == 7);
    }

    void Strings()
    {
        const unsigned size = op_.size;
        const unsigned char low = static_cast<unsigned char>(op_.a);
        const unsigned char high = static_cast<unsigned char>(op_.a >> 8);
        const std::string set(reinterpret_cast<const char*>(&op_.b), 3);
        const std::vector<std::string> list = {set.substr(0, size % 4), std::string(size, static_cast<char>(low))};
        std::string text = "sentinel";
        std::string* out = WantValue() ? &text : nullptr;
        bool ok;
        switch (op_.spare % 4)
        {
        case 0:
            ok = Frame([&](const void** d, void* c) { return c ? validator_.ValidateStringCopy(size, out, c) : validator_.ValidateString(size, out, d); });
            break;
        case 1:
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateStringCopy(size, low, high, out, c) : validator_.ValidateString(size, low, high, out, d);
            });
            break;
        case 2:
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateStringCopy(size, set, out, c) : validator_.ValidateString(size, set, out, d);
            });
            break;
        default:
            ok = Frame([&](const void** d, void* c) {
                return c ? validator_.ValidateStringCopy(size, list, out, c) : validator_.ValidateString(size, list, out, d);
            });
            if (ok && size != 0)
                Require(std::find(list.begin(), list.end(), std::string(reinterpret_cast<const char*>(Field()), size)) !=
                        list.end());
            break;
        }
        if (!ok || out == nullptr)
            Require(text == "sentinel");
        else
            Require(text == std::string(reinterpret_cast<const char*>(Field()), size));
    }

    template <typename T, typename Member>
    void TypedDecimal(Member member, bool isSigned)
    {
        const unsigned size = op_.size;
        T value = static_cast<T>(7);
        T* out = WantValue() ? &value : nullptr;
        const bool ok = Frame([&](const void** d, void* c) { return member(size, out, d, c); });
        if (!ok)
        {
            Require(value == static_cast<T>(7));
            return;
        }
        if (Empty())
        {
            Require(out == nullptr);
            return;
        }
        if (out == nullptr)
            return;
        if (isSigned)
        {
            std::int64_t reference = 0;
            Require(ReferenceSigned(Field(), size, static_cast<std::int64_t>(std::numeric_limits<T>::max()), reference));
            Require(static_cast<std::int64_t>(value) == reference);
        }
        else
        {
            std::uint64_t reference = 0;
            Require(ReferenceUnsigned(Field(), size, static_cast<std::uint64_t>(std::numeric_limits<T>::max()), reference));
            Require(static_cast<std::uint64_t>(value) == reference);
        }
    }

    template <typename T>
    void UnsignedTyped()
    {
        TypedDecimal<T>(
            [this](unsigned size, T* out, const void** d, void* c) {
                return c ? validator_.ValidateUnsignedAsciiIntegralCopy(size, out, c) : validator_.ValidateUnsignedAsciiIntegral(size, out, d);
            },
            false);
    }

    template <typename T>
    void SignedTyped()
    {
        TypedDecimal<T>(
            [this](unsigned size, T* out, const void** d, void* c) {
                return c ? validator_.ValidateSignedAsciiIntegralCopy(size, out, c) : validator_.ValidateSignedAsciiIntegral(size, out, d);
            },
            true);
    }

    void TypedUnsignedDecimal()
    {
        switch (op_.spare % 5)
        {
        case 0: UnsignedTyped<unsigned char>(); break;
        case 1: UnsignedTyped<unsigned short>(); break;
        case 2: UnsignedTyped<unsigned int>(); break;
        case 3: UnsignedTyped<unsigned long>(); break;
        default: UnsignedTyped<unsigned long long>(); break;
        }
    }

    void TypedSignedDecimal()
    {
        switch (op_.spare % 5)
        {
        case 0: SignedTyped<signed char>(); break;
        case 1: SignedTyped<short>(); break;
        case 2: SignedTyped<int>(); break;
        case 3: SignedTyped<long>(); break;
        default: SignedTyped<long long>(); break;
        }
    }

    template <typename T>
    void HexTyped()
    {
        const unsigned size = op_.size;
        const auto endian = Order();
        T value = static_cast<T>(7);
        T* out = WantValue() ? &value : nullptr;
        const bool ok = Frame([&](const void** d, void* c) {
            return c ? validator_.ValidateAsciiHexadecimalIntegralCopy(size, endian, out, c)
                     : validator_.ValidateAsciiHexadecimalIntegral(size, endian, out, d);
        });
        if (!ok)
            Require(value == static_cast<T>(7));
        else if (!Empty() && out != nullptr)
        {
            const std::uint64_t reference = ReferenceHex(Field(), size, endian);
            Require(reference <= std::numeric_limits<T>::max() && value == reference);
        }
    }

    void TypedHexadecimal()
    {
        switch (op_.spare % 5)
        {
        case 0: HexTyped<unsigned char>(); break;
        case 1: HexTyped<unsigned short>(); break;
        case 2: HexTyped<unsigned int>(); break;
        case 3: HexTyped<unsigned long>(); break;
        default: HexTyped<unsigned long long>(); break;
        }
    }

    template <typename T>
    void BinaryTyped()
    {
        const unsigned size = op_.size;
        const auto endian = Order();
        T value = static_cast<T>(7);
        T* out = WantValue() ? &value : nullptr;
        const bool ok = Frame([&](const void** d, void* c) {
            if constexpr (std::is_signed_v<T>)
                return c ? validator_.ValidateSignedBinaryIntegralCopy(size, endian, out, c)
                         : validator_.ValidateSignedBinaryIntegral(size, endian, out, d);
            else
                return c ? validator_.ValidateUnsignedBinaryIntegralCopy(size, endian, out, c)
                         : validator_.ValidateUnsignedBinaryIntegral(size, endian, out, d);
        });
        if (!ok)
        {
            Require(value == static_cast<T>(7));
            return;
        }
        Require(size <= 8);
        if (Empty() || out == nullptr)
            return;
        const std::uint64_t bits = ReferenceBinary(Field(), size, endian);
        if constexpr (std::is_signed_v<T>)
        {
            const bool negative = (bits >> (8 * size - 1)) & 1;
            const std::int64_t extended =
                static_cast<std::int64_t>(negative && size < 8 ? bits | (~0ull << (8 * size)) : bits);
            Require(extended >= std::numeric_limits<T>::min() && extended <= std::numeric_limits<T>::max());
            Require(static_cast<std::int64_t>(value) == extended);
        }
        else
        {
            Require(bits <= std::numeric_limits<T>::max() && value == bits);
        }
    }

    void TypedBinary()
    {
        switch (op_.spare % 10)
        {
        case 0: BinaryTyped<unsigned char>(); break;
        case 1: BinaryTyped<unsigned short>(); break;
        case 2: BinaryTyped<unsigned int>(); break;
        case 3: BinaryTyped<unsigned long>(); break;
        case 4: BinaryTyped<unsigned long long>(); break;
        case 5: BinaryTyped<signed char>(); break;
        case 6: BinaryTyped<short>(); break;
        case 7: BinaryTyped<int>(); break;
        case 8: BinaryTyped<long>(); break;
        default: BinaryTyped<long long>(); break;
        }
    }

    template <typename T>
    void RealTyped()
    {
        const unsigned size = op_.size;
        const bool allowSign = (op_.flags & 16) != 0;
        T value = static_cast<T>(7);
        T* out = WantValue() ? &value : nullptr;
        const bool ok = Frame([&](const void** d, void* c) {
            if (allowSign)
                return c ? validator_.ValidateSignedAsciiRealCopy(size, out, c) : validator_.ValidateSignedAsciiReal(size, out, d);
            return c ? validator_.ValidateUnsignedAsciiRealCopy(size, out, c) : validator_.ValidateUnsignedAsciiReal(size, out, d);
        });
        if (!ok || out == nullptr)
        {
            Require(value == static_cast<T>(7));
            return;
        }
        if (Empty())
            return;
        std::int64_t numerator = 0;
        std::uint64_t divisor = 1;
        if (allowSign)
        {
            Require(MessageValidator::CopySignedAsciiRealToNumeratorAndDivisor(Field(), size, numerator, divisor) ==
                    STATUS_CODE_SUCCESS);
            Require((value < 0) == (numerator < 0) || numerator == 0);
        }
        else
        {
            std::uint64_t unsignedNumerator = 0;
            Require(MessageValidator::CopyUnsignedAsciiRealToNumeratorAndDivisor(Field(), size, unsignedNumerator,
                                                                                divisor) == STATUS_CODE_SUCCESS);
            Require(value >= 0);
        }
    }

    void TypedReal()
    {
        switch (op_.spare % 3)
        {
        case 0: RealTyped<float>(); break;
        case 1: RealTyped<double>(); break;
        default: RealTyped<long double>(); break;
        }
    }

    void StaticHelpers()
    {
        // Over the rest of the message from the cursor, at most size bytes.
        const unsigned size = std::min(op_.size, validator_.GetRemaining());
        std::uint64_t numerator = 7;
        std::uint64_t divisor = 7;
        const StatusCode status =
            MessageValidator::CopyUnsignedAsciiRealToNumeratorAndDivisor(Field(), size, numerator, divisor);
        Require(status == STATUS_CODE_SUCCESS || status == STATUS_CODE_INVALID_FORMAT ||
                status == STATUS_CODE_OUT_OF_RANGE);
        if (status == STATUS_CODE_SUCCESS)
            CheckFraction(Field(), size, false, numerator, divisor);
        else
            Require(numerator == 7 && divisor == 7);
        Require(validator_.GetCursor() == before_);
    }

    const std::uint8_t* message_;
    MessageValidator validator_;
    Operation op_{};
    unsigned before_ = 0;
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
