// Drives MessageValidator over arbitrary bytes and checks properties that
// need no second implementation of its rules:
// - nothing crashes or reads outside the message (the message has an
//   allocation of its own, so the sanitizers see any overrun);
// - the plain and the Copy form of a member give the same status and the
//   same value; the cursor moves only on success and then by exactly the
//   size; data points at the field, the Copy destination holds exactly its
//   bytes;
// - an integer (or a real without fraction) written again by MessageBuilder
//   reads back equal;
// - exact bytes equal to the field pass; with one byte changed they fail.
//
// Input: byte 0 gives the number of fields (1 to 4), then two bytes per
// field: the member (its high bit picks the byte order, bit 4 the width of
// a binary integer) and the size; the rest is the message, read field after
// field.
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <cinttypes>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

using namespace Zantor;

namespace {

constexpr StatusCode OK = STATUS_CODE_SUCCESS;
#define REQUIRE(condition) ((condition) ? void() : std::abort())

// Reads a field with read(v, size, value, data, destination) in the plain
// form, and in the Copy form on a copy of the validator, and checks the
// frame. A value read is written again by write(builder, value) (unless that
// answers otherwise than success) and must read back equal.
template <typename T, typename Read, typename Write>
StatusCode Value(MessageValidator& validator, unsigned size, Read read, Write write)
{
    MessageValidator copy = validator;
    const unsigned char* field = validator.GetCursorPointer();
    const void* data = nullptr;
    unsigned char destination[257];
    std::memset(destination, 0xA5, sizeof destination);
    T value[3] = {};
    const StatusCode status = read(validator, size, &value[0], &data, nullptr);
    const unsigned moved = status == OK ? size : 0;
    REQUIRE(read(copy, size, &value[1], nullptr, destination) == status && copy.GetCursor() == validator.GetCursor());
    REQUIRE(validator.GetCursorPointer() == field + moved && data == (status == OK ? field : nullptr));
    REQUIRE(destination[moved] == 0xA5 && (moved == 0 || std::memcmp(destination, field, moved) == 0));
    REQUIRE(value[0] == value[1]);
    MessageBuilder builder;
    if (status != OK || write(builder, value[0]) != OK)
        return status;
    MessageValidator written(builder.GetBuffer(), builder.GetLength());
    REQUIRE(read(written, builder.GetLength(), &value[2], nullptr, nullptr) == OK && value[2] == value[0]);
    return status;
}

// Reads T with Member(args...) (n is the size, value the output) and has
// MessageBuilder b write x of type T.
#define VALUE(T, write, Member, ...)                                                                                 \
    Value<T>(                                                                                                        \
        validator, size,                                                                                             \
        [&](MessageValidator& v, unsigned n, [[maybe_unused]] T* value, const void** data, void* destination) {      \
            return destination != nullptr ? v.Member##Copy(__VA_ARGS__, destination) : v.Member(__VA_ARGS__, data);  \
        },                                                                                                           \
        [&]([[maybe_unused]] MessageBuilder& b, [[maybe_unused]] T x) { return write; })
#define DECIMAL b.AppendString(std::to_string(x))
#define WHOLE_REAL (divisor == 1 ? DECIMAL : STATUS_CODE_UNKNOWN) // a real without fraction, as an integer
#define NONE STATUS_CODE_UNKNOWN                                    // not written again
#define BINARY(T, Kind) VALUE(T, b.AppendBuiltIns(endian, x), Validate##Kind##BinaryIntegral, n, endian, value)

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t length)
{
    const std::size_t fields = length == 0 ? 0 : 1 + input[0] % 4;
    if (length < 1 + 2 * fields)
        return 0;
    const std::vector<std::uint8_t> message(input + 1 + 2 * fields, input + length);
    MessageValidator validator(message.data(), static_cast<unsigned>(message.size()));
    for (std::size_t i = 0; i < fields; ++i)
    {
        const unsigned member = input[1 + 2 * i];
        const unsigned size = input[2 + 2 * i];
        const auto endian = (member & 0x80) != 0 ? MessageHandler::ENDIAN_BIG : MessageHandler::ENDIAN_LITTLE;
        const bool fits = size <= validator.GetRemaining();
        std::uint64_t divisor = 0;
        switch (member % 16)
        {
        case 0: VALUE(std::uint64_t, DECIMAL, ValidateUnsignedAsciiIntegral, n, value); break;
        case 1: VALUE(unsigned short, DECIMAL, ValidateUnsignedAsciiIntegral, n, value); break;
        case 2: VALUE(long long, DECIMAL, ValidateSignedAsciiIntegral, n, value); break;
        case 3: VALUE(signed char, DECIMAL, ValidateSignedAsciiIntegral, n, value); break;
        case 4: // written with its pairs in the field's order
            VALUE(std::uint64_t, b.AppendPrintf("%016" PRIX64, (member & 0x80) != 0 ? x : __builtin_bswap64(x)),
                  ValidateAsciiHexadecimalIntegral, n, endian, value); break;
        // binary, every width: bit 4 of the member picks the narrower type of the case
        case 5: (member & 0x10) != 0 ? BINARY(std::uint8_t, Unsigned) : BINARY(std::uint16_t, Unsigned); break;
        case 6: (member & 0x10) != 0 ? BINARY(std::uint32_t, Unsigned) : BINARY(std::uint64_t, Unsigned); break;
        case 7: (member & 0x10) != 0 ? BINARY(std::int8_t, Signed) : BINARY(std::int16_t, Signed); break;
        case 8: (member & 0x10) != 0 ? BINARY(std::int32_t, Signed) : BINARY(std::int64_t, Signed); break;
        case 9: VALUE(std::uint64_t, WHOLE_REAL, ValidateUnsignedAsciiReal, n, value, &divisor); break;
        case 10: VALUE(std::int64_t, WHOLE_REAL, ValidateSignedAsciiReal, n, value, &divisor); break;
        case 11: VALUE(float, NONE, ValidateUnsignedAsciiReal, n, value); break;
        case 12: VALUE(double, NONE, ValidateSignedAsciiReal, n, value); break;
        case 13: VALUE(long double, NONE, ValidateSignedAsciiReal, n, -1e18L, 1e18L, value); break;
        case 14: VALUE(std::string, NONE, ValidateString, n, ' ', '~', value); break;
        default: { // exact bytes: a copy of the field, with one byte changed when bit 6 is set
            const unsigned char* field = validator.GetCursorPointer();
            std::vector<unsigned char> expected(field, field + (fits ? size : 0));
            const bool changed = (member & 0x40) != 0 && !expected.empty();
            if (changed)
                expected[(member >> 1) % expected.size()] ^= 1;
            REQUIRE(VALUE(char, NONE, ValidateBytes, n, static_cast<const void*>(expected.data())) ==
                    (!fits ? STATUS_CODE_INVALID_PARAMETER : changed ? STATUS_CODE_INVALID_FORMAT : OK));
        }
        }
    }
    return 0;
}
