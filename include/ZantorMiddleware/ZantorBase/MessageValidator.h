// MessageValidator: the reading counterpart of MessageBuilder. A cursor over
// a received message that checks each field as it is consumed (enough bytes
// left, characters of the right class, value in range or in an allowed set)
// and hands the field out as a pointer into the message or as a copy.
//
// Ownership: the validator never copies or frees the caller's buffer, which
// must outlive it and must not change while it is read. Thread safety: a
// validator belongs to one thread at a time.
//
//   MessageValidator validator(bytes, length);
//   std::uint32_t price;
//   StatusCode status = validator.ValidateUnsignedAsciiIntegral(10, &price);
//
// Common contract of every Validate member (size = the field's bytes):
// - size 0 succeeds without consuming anything (a data output receives the
//   cursor's address, a text output becomes empty), except when a converted
//   value is asked for (a non-null value, numerator or divisor pointer):
//   STATUS_CODE_INVALID_PARAMETER;
// - a field running past the end of the message: STATUS_CODE_INVALID_PARAMETER;
// - a character of the wrong class, or exact bytes that differ:
//   STATUS_CODE_INVALID_FORMAT;
// - a value that overflows its type, lies outside [min, max] or is not in
//   the allowed list or set: STATUS_CODE_OUT_OF_RANGE (min > max refuses
//   every value); a wrong character anywhere wins over an overflow;
// - on success the outputs are delivered and the cursor advances by size:
//   plain forms store the field's address in *data (when data is not null),
//   Copy forms copy the field's raw bytes to destination (when not null),
//   typed forms store the converted value in *value (when not null);
// - on failure nothing changes: cursor and outputs are left as they were.
//
// Field grammars:
// - unsigned decimal: digits only, leading zeros allowed, any size;
// - signed decimal: one optional leading '+' or '-', then digits; the limit
//   is symmetric (the text of a type's most negative value is
//   STATUS_CODE_OUT_OF_RANGE) and a lone sign is 0;
// - hexadecimal: an even size of at most 16 (else
//   STATUS_CODE_INVALID_PARAMETER), pairs of 0-9, A-F, a-f, high nibble first;
//   ENDIAN_LITTLE makes the first pair the least significant byte,
//   ENDIAN_BIG the most significant ("0100" is 1 and 256);
// - binary: 1 to 8 bytes (else STATUS_CODE_INVALID_PARAMETER) in the given
//   order; signed forms read two's complement of that width, sign-extended;
// - real: an optional sign (signed forms only), digits with at most one '.',
//   at least one digit, at most 9 digits after the point ("12", "12.5",
//   ".5", "5." are accepted; "", ".", "-" are STATUS_CODE_INVALID_FORMAT;
//   a tenth fraction digit is STATUS_CODE_OUT_OF_RANGE). The numerator is
//   the digits without the point as a 64-bit integer (unsigned: at most
//   2^64-1; signed: magnitude at most 2^63-1, else STATUS_CODE_OUT_OF_RANGE),
//   the divisor 10^(fraction digits). Typed float, double and long double
//   members receive numerator / divisor rounded once to the nearest value of
//   their type (ties to even), as strtod would; range and list members
//   compare the quotient rounded to long double;
// - string: the field's size delimits the text; all size bytes, zero bytes
//   included, make the std::string.
#pragma once

#include <ZantorMiddleware/ZantorBase/Detail/MessageValidatorDetail.h>
#include <ZantorMiddleware/ZantorBase/Export.h>
#include <ZantorMiddleware/ZantorBase/MessageHandler.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace Zantor {

class ZANTOR_BASE_API MessageValidator : public MessageHandler
{
public:
    // A validator over length bytes at buffer, cursor at 0. buffer may be
    // null when length is 0.
    MessageValidator(const void* buffer, unsigned length) noexcept
        : buffer_(static_cast<const unsigned char*>(buffer)), length_(length), cursor_(0)
    {
    }

    const unsigned char* GetBuffer() const noexcept { return buffer_; }
    unsigned GetLength() const noexcept { return length_; }
    // Offset of the next unread byte.
    unsigned GetCursor() const noexcept { return cursor_; }
    unsigned GetRemaining() const noexcept { return length_ - cursor_; }
    // Address of the next unread byte.
    const unsigned char* GetCursorPointer() const noexcept { return buffer_ + cursor_; }
    bool IsAtEnd() const noexcept { return cursor_ == length_; }

    // ---- Bytes --------------------------------------------------------------
    // Any bytes (skips the field).
    StatusCode ValidateBytes(unsigned size, const void** data = nullptr) noexcept
    {
        return Deliver(size, FieldOutput{data, nullptr});
    }
    // Exactly the size bytes at expected, else STATUS_CODE_INVALID_FORMAT. A
    // null expected with a non-zero size is STATUS_CODE_INVALID_PARAMETER.
    StatusCode ValidateBytes(unsigned size, const void* expected, const void** data) noexcept
    {
        return ExactBytes(size, expected, FieldOutput{data, nullptr});
    }
    // Every byte equal to byte, else STATUS_CODE_OUT_OF_RANGE.
    StatusCode ValidateBytes(unsigned size, unsigned char byte, const void** data);
    // Every byte within [low, high], else STATUS_CODE_OUT_OF_RANGE.
    StatusCode ValidateBytes(unsigned size, unsigned char low, unsigned char high, const void** data);
    // Every byte in set, else STATUS_CODE_OUT_OF_RANGE.
    StatusCode ValidateBytes(unsigned size, const std::vector<unsigned char>& set, const void** data);
    // The field equal to one of list (same size and bytes), else
    // STATUS_CODE_OUT_OF_RANGE.
    StatusCode ValidateBytes(unsigned size, const std::vector<std::string>& list, const void** data);

    StatusCode ValidateBytesCopy(unsigned size, void* destination) noexcept
    {
        return Deliver(size, FieldOutput{nullptr, destination});
    }
    StatusCode ValidateBytesCopy(unsigned size, const void* expected, void* destination) noexcept
    {
        return ExactBytes(size, expected, FieldOutput{nullptr, destination});
    }
    StatusCode ValidateBytesCopy(unsigned size, unsigned char byte, void* destination);
    StatusCode ValidateBytesCopy(unsigned size, unsigned char low, unsigned char high, void* destination);
    StatusCode ValidateBytesCopy(unsigned size, const std::vector<unsigned char>& set, void* destination);
    StatusCode ValidateBytesCopy(unsigned size, const std::vector<std::string>& list, void* destination);

    // ---- Unsigned decimal text ---------------------------------------------
    // Digits only, any size, no conversion.
    StatusCode ValidateUnsignedAsciiIntegral(unsigned size, const void** data = nullptr);
    // Converted in 64 bits and within [min, max]; *value receives it.
    StatusCode ValidateUnsignedAsciiIntegral(unsigned size, std::uint64_t min, std::uint64_t max,
                                             std::uint64_t* value = nullptr, const void** data = nullptr);
    // Converted in 64 bits and equal to one entry of list.
    StatusCode ValidateUnsignedAsciiIntegral(unsigned size, const std::vector<std::uint64_t>& list,
                                             std::uint64_t* value = nullptr, const void** data = nullptr);
    // Converted into the pointed-to type; overflow is STATUS_CODE_OUT_OF_RANGE.
    StatusCode ValidateUnsignedAsciiIntegral(unsigned size, unsigned char* value, const void** data = nullptr) noexcept
    {
        return UnsignedDecimal(size, value, FieldOutput{data, nullptr});
    }
    StatusCode ValidateUnsignedAsciiIntegral(unsigned size, unsigned short* value, const void** data = nullptr) noexcept
    {
        return UnsignedDecimal(size, value, FieldOutput{data, nullptr});
    }
    StatusCode ValidateUnsignedAsciiIntegral(unsigned size, unsigned int* value, const void** data = nullptr) noexcept
    {
        return UnsignedDecimal(size, value, FieldOutput{data, nullptr});
    }
    StatusCode ValidateUnsignedAsciiIntegral(unsigned size, unsigned long* value, const void** data = nullptr) noexcept
    {
        return UnsignedDecimal(size, value, FieldOutput{data, nullptr});
    }
    StatusCode ValidateUnsignedAsciiIntegral(unsigned size, unsigned long long* value, const void** data = nullptr) noexcept
    {
        return UnsignedDecimal(size, value, FieldOutput{data, nullptr});
    }

    StatusCode ValidateUnsignedAsciiIntegralCopy(unsigned size, void* destination);
    StatusCode ValidateUnsignedAsciiIntegralCopy(unsigned size, std::uint64_t min, std::uint64_t max,
                                                 std::uint64_t* value, void* destination);
    StatusCode ValidateUnsignedAsciiIntegralCopy(unsigned size, const std::vector<std::uint64_t>& list,
                                                 std::uint64_t* value, void* destination);
    StatusCode ValidateUnsignedAsciiIntegralCopy(unsigned size, unsigned char* value, void* destination) noexcept
    {
        return UnsignedDecimal(size, value, FieldOutput{nullptr, destination});
    }
    StatusCode ValidateUnsignedAsciiIntegralCopy(unsigned size, unsigned short* value, void* destination) noexcept
    {
        return UnsignedDecimal(size, value, FieldOutput{nullptr, destination});
    }
    StatusCode ValidateUnsignedAsciiIntegralCopy(unsigned size, unsigned int* value, void* destination) noexcept
    {
        return UnsignedDecimal(size, value, FieldOutput{nullptr, destination});
    }
    StatusCode ValidateUnsignedAsciiIntegralCopy(unsigned size, unsigned long* value, void* destination) noexcept
    {
        return UnsignedDecimal(size, value, FieldOutput{nullptr, destination});
    }
    StatusCode ValidateUnsignedAsciiIntegralCopy(unsigned size, unsigned long long* value, void* destination) noexcept
    {
        return UnsignedDecimal(size, value, FieldOutput{nullptr, destination});
    }

    // ---- Signed decimal text -----------------------------------------------
    // One optional leading sign, then digits; no conversion.
    StatusCode ValidateSignedAsciiIntegral(unsigned size, const void** data = nullptr);
    // Converted in 64 bits (|value| at most 2^63-1) and within [min, max].
    StatusCode ValidateSignedAsciiIntegral(unsigned size, std::int64_t min, std::int64_t max,
                                           std::int64_t* value = nullptr, const void** data = nullptr);
    StatusCode ValidateSignedAsciiIntegral(unsigned size, const std::vector<std::int64_t>& list,
                                           std::int64_t* value = nullptr, const void** data = nullptr);
    StatusCode ValidateSignedAsciiIntegral(unsigned size, signed char* value, const void** data = nullptr) noexcept
    {
        return SignedDecimal(size, value, FieldOutput{data, nullptr});
    }
    StatusCode ValidateSignedAsciiIntegral(unsigned size, short* value, const void** data = nullptr) noexcept
    {
        return SignedDecimal(size, value, FieldOutput{data, nullptr});
    }
    StatusCode ValidateSignedAsciiIntegral(unsigned size, int* value, const void** data = nullptr) noexcept
    {
        return SignedDecimal(size, value, FieldOutput{data, nullptr});
    }
    StatusCode ValidateSignedAsciiIntegral(unsigned size, long* value, const void** data = nullptr) noexcept
    {
        return SignedDecimal(size, value, FieldOutput{data, nullptr});
    }
    StatusCode ValidateSignedAsciiIntegral(unsigned size, long long* value, const void** data = nullptr) noexcept
    {
        return SignedDecimal(size, value, FieldOutput{data, nullptr});
    }

    StatusCode ValidateSignedAsciiIntegralCopy(unsigned size, void* destination);
    StatusCode ValidateSignedAsciiIntegralCopy(unsigned size, std::int64_t min, std::int64_t max, std::int64_t* value,
                                               void* destination);
    StatusCode ValidateSignedAsciiIntegralCopy(unsigned size, const std::vector<std::int64_t>& list,
                                               std::int64_t* value, void* destination);
    StatusCode ValidateSignedAsciiIntegralCopy(unsigned size, signed char* value, void* destination) noexcept
    {
        return SignedDecimal(size, value, FieldOutput{nullptr, destination});
    }
    StatusCode ValidateSignedAsciiIntegralCopy(unsigned size, short* value, void* destination) noexcept
    {
        return SignedDecimal(size, value, FieldOutput{nullptr, destination});
    }
    StatusCode ValidateSignedAsciiIntegralCopy(unsigned size, int* value, void* destination) noexcept
    {
        return SignedDecimal(size, value, FieldOutput{nullptr, destination});
    }
    StatusCode ValidateSignedAsciiIntegralCopy(unsigned size, long* value, void* destination) noexcept
    {
        return SignedDecimal(size, value, FieldOutput{nullptr, destination});
    }
    StatusCode ValidateSignedAsciiIntegralCopy(unsigned size, long long* value, void* destination) noexcept
    {
        return SignedDecimal(size, value, FieldOutput{nullptr, destination});
    }

    // ---- Hexadecimal text --------------------------------------------------
    // Even size of at most 16 and hexadecimal characters; no conversion.
    StatusCode ValidateAsciiHexadecimalIntegral(unsigned size, Endian endian, const void** data = nullptr);
    StatusCode ValidateAsciiHexadecimalIntegral(unsigned size, Endian endian, std::uint64_t min, std::uint64_t max,
                                                std::uint64_t* value = nullptr, const void** data = nullptr);
    StatusCode ValidateAsciiHexadecimalIntegral(unsigned size, Endian endian, const std::vector<std::uint64_t>& list,
                                                std::uint64_t* value = nullptr, const void** data = nullptr);
    StatusCode ValidateAsciiHexadecimalIntegral(unsigned size, Endian endian, unsigned char* value,
                                                const void** data = nullptr);
    StatusCode ValidateAsciiHexadecimalIntegral(unsigned size, Endian endian, unsigned short* value,
                                                const void** data = nullptr);
    StatusCode ValidateAsciiHexadecimalIntegral(unsigned size, Endian endian, unsigned int* value,
                                                const void** data = nullptr);
    StatusCode ValidateAsciiHexadecimalIntegral(unsigned size, Endian endian, unsigned long* value,
                                                const void** data = nullptr);
    StatusCode ValidateAsciiHexadecimalIntegral(unsigned size, Endian endian, unsigned long long* value,
                                                const void** data = nullptr);

    StatusCode ValidateAsciiHexadecimalIntegralCopy(unsigned size, Endian endian, void* destination);
    StatusCode ValidateAsciiHexadecimalIntegralCopy(unsigned size, Endian endian, std::uint64_t min, std::uint64_t max,
                                                    std::uint64_t* value, void* destination);
    StatusCode ValidateAsciiHexadecimalIntegralCopy(unsigned size, Endian endian,
                                                    const std::vector<std::uint64_t>& list, std::uint64_t* value,
                                                    void* destination);
    StatusCode ValidateAsciiHexadecimalIntegralCopy(unsigned size, Endian endian, unsigned char* value,
                                                    void* destination);
    StatusCode ValidateAsciiHexadecimalIntegralCopy(unsigned size, Endian endian, unsigned short* value,
                                                    void* destination);
    StatusCode ValidateAsciiHexadecimalIntegralCopy(unsigned size, Endian endian, unsigned int* value,
                                                    void* destination);
    StatusCode ValidateAsciiHexadecimalIntegralCopy(unsigned size, Endian endian, unsigned long* value,
                                                    void* destination);
    StatusCode ValidateAsciiHexadecimalIntegralCopy(unsigned size, Endian endian, unsigned long long* value,
                                                    void* destination);

    // ---- Unsigned binary integers ------------------------------------------
    // Size 1 to 8; no conversion.
    StatusCode ValidateUnsignedBinaryIntegral(unsigned size, Endian endian, const void** data = nullptr);
    StatusCode ValidateUnsignedBinaryIntegral(unsigned size, Endian endian, std::uint64_t min, std::uint64_t max,
                                              std::uint64_t* value = nullptr, const void** data = nullptr);
    StatusCode ValidateUnsignedBinaryIntegral(unsigned size, Endian endian, const std::vector<std::uint64_t>& list,
                                              std::uint64_t* value = nullptr, const void** data = nullptr);
    StatusCode ValidateUnsignedBinaryIntegral(unsigned size, Endian endian, unsigned char* value,
                                              const void** data = nullptr);
    StatusCode ValidateUnsignedBinaryIntegral(unsigned size, Endian endian, unsigned short* value,
                                              const void** data = nullptr);
    StatusCode ValidateUnsignedBinaryIntegral(unsigned size, Endian endian, unsigned int* value,
                                              const void** data = nullptr);
    StatusCode ValidateUnsignedBinaryIntegral(unsigned size, Endian endian, unsigned long* value,
                                              const void** data = nullptr);
    StatusCode ValidateUnsignedBinaryIntegral(unsigned size, Endian endian, unsigned long long* value,
                                              const void** data = nullptr);

    StatusCode ValidateUnsignedBinaryIntegralCopy(unsigned size, Endian endian, void* destination);
    StatusCode ValidateUnsignedBinaryIntegralCopy(unsigned size, Endian endian, std::uint64_t min, std::uint64_t max,
                                                  std::uint64_t* value, void* destination);
    StatusCode ValidateUnsignedBinaryIntegralCopy(unsigned size, Endian endian, const std::vector<std::uint64_t>& list,
                                                  std::uint64_t* value, void* destination);
    StatusCode ValidateUnsignedBinaryIntegralCopy(unsigned size, Endian endian, unsigned char* value,
                                                  void* destination);
    StatusCode ValidateUnsignedBinaryIntegralCopy(unsigned size, Endian endian, unsigned short* value,
                                                  void* destination);
    StatusCode ValidateUnsignedBinaryIntegralCopy(unsigned size, Endian endian, unsigned int* value,
                                                  void* destination);
    StatusCode ValidateUnsignedBinaryIntegralCopy(unsigned size, Endian endian, unsigned long* value,
                                                  void* destination);
    StatusCode ValidateUnsignedBinaryIntegralCopy(unsigned size, Endian endian, unsigned long long* value,
                                                  void* destination);

    // ---- Signed binary integers (two's complement, sign-extended) ----------
    StatusCode ValidateSignedBinaryIntegral(unsigned size, Endian endian, const void** data = nullptr);
    StatusCode ValidateSignedBinaryIntegral(unsigned size, Endian endian, std::int64_t min, std::int64_t max,
                                            std::int64_t* value = nullptr, const void** data = nullptr);
    StatusCode ValidateSignedBinaryIntegral(unsigned size, Endian endian, const std::vector<std::int64_t>& list,
                                            std::int64_t* value = nullptr, const void** data = nullptr);
    StatusCode ValidateSignedBinaryIntegral(unsigned size, Endian endian, signed char* value,
                                            const void** data = nullptr);
    StatusCode ValidateSignedBinaryIntegral(unsigned size, Endian endian, short* value, const void** data = nullptr);
    StatusCode ValidateSignedBinaryIntegral(unsigned size, Endian endian, int* value, const void** data = nullptr);
    StatusCode ValidateSignedBinaryIntegral(unsigned size, Endian endian, long* value, const void** data = nullptr);
    StatusCode ValidateSignedBinaryIntegral(unsigned size, Endian endian, long long* value,
                                            const void** data = nullptr);

    StatusCode ValidateSignedBinaryIntegralCopy(unsigned size, Endian endian, void* destination);
    StatusCode ValidateSignedBinaryIntegralCopy(unsigned size, Endian endian, std::int64_t min, std::int64_t max,
                                                std::int64_t* value, void* destination);
    StatusCode ValidateSignedBinaryIntegralCopy(unsigned size, Endian endian, const std::vector<std::int64_t>& list,
                                                std::int64_t* value, void* destination);
    StatusCode ValidateSignedBinaryIntegralCopy(unsigned size, Endian endian, signed char* value, void* destination);
    StatusCode ValidateSignedBinaryIntegralCopy(unsigned size, Endian endian, short* value, void* destination);
    StatusCode ValidateSignedBinaryIntegralCopy(unsigned size, Endian endian, int* value, void* destination);
    StatusCode ValidateSignedBinaryIntegralCopy(unsigned size, Endian endian, long* value, void* destination);
    StatusCode ValidateSignedBinaryIntegralCopy(unsigned size, Endian endian, long long* value, void* destination);

    // ---- Decimal reals -----------------------------------------------------
    // Well formed (see the grammar above); no conversion.
    StatusCode ValidateUnsignedAsciiReal(unsigned size, const void** data = nullptr);
    // *numerator and *divisor (each when not null) receive the fraction.
    StatusCode ValidateUnsignedAsciiReal(unsigned size, std::uint64_t* numerator, std::uint64_t* divisor,
                                         const void** data = nullptr);
    StatusCode ValidateUnsignedAsciiReal(unsigned size, long double min, long double max, long double* value = nullptr,
                                         const void** data = nullptr);
    StatusCode ValidateUnsignedAsciiReal(unsigned size, const std::vector<long double>& list,
                                         long double* value = nullptr, const void** data = nullptr);
    StatusCode ValidateUnsignedAsciiReal(unsigned size, float* value, const void** data = nullptr);
    StatusCode ValidateUnsignedAsciiReal(unsigned size, double* value, const void** data = nullptr);
    StatusCode ValidateUnsignedAsciiReal(unsigned size, long double* value, const void** data = nullptr);

    StatusCode ValidateUnsignedAsciiRealCopy(unsigned size, void* destination);
    StatusCode ValidateUnsignedAsciiRealCopy(unsigned size, std::uint64_t* numerator, std::uint64_t* divisor,
                                             void* destination);
    StatusCode ValidateUnsignedAsciiRealCopy(unsigned size, long double min, long double max, long double* value,
                                             void* destination);
    StatusCode ValidateUnsignedAsciiRealCopy(unsigned size, const std::vector<long double>& list, long double* value,
                                             void* destination);
    StatusCode ValidateUnsignedAsciiRealCopy(unsigned size, float* value, void* destination);
    StatusCode ValidateUnsignedAsciiRealCopy(unsigned size, double* value, void* destination);
    StatusCode ValidateUnsignedAsciiRealCopy(unsigned size, long double* value, void* destination);

    StatusCode ValidateSignedAsciiReal(unsigned size, const void** data = nullptr);
    StatusCode ValidateSignedAsciiReal(unsigned size, std::int64_t* numerator, std::uint64_t* divisor,
                                       const void** data = nullptr);
    StatusCode ValidateSignedAsciiReal(unsigned size, long double min, long double max, long double* value = nullptr,
                                       const void** data = nullptr);
    StatusCode ValidateSignedAsciiReal(unsigned size, const std::vector<long double>& list,
                                       long double* value = nullptr, const void** data = nullptr);
    StatusCode ValidateSignedAsciiReal(unsigned size, float* value, const void** data = nullptr);
    StatusCode ValidateSignedAsciiReal(unsigned size, double* value, const void** data = nullptr);
    StatusCode ValidateSignedAsciiReal(unsigned size, long double* value, const void** data = nullptr);

    StatusCode ValidateSignedAsciiRealCopy(unsigned size, void* destination);
    StatusCode ValidateSignedAsciiRealCopy(unsigned size, std::int64_t* numerator, std::uint64_t* divisor,
                                           void* destination);
    StatusCode ValidateSignedAsciiRealCopy(unsigned size, long double min, long double max, long double* value,
                                           void* destination);
    StatusCode ValidateSignedAsciiRealCopy(unsigned size, const std::vector<long double>& list, long double* value,
                                           void* destination);
    StatusCode ValidateSignedAsciiRealCopy(unsigned size, float* value, void* destination);
    StatusCode ValidateSignedAsciiRealCopy(unsigned size, double* value, void* destination);
    StatusCode ValidateSignedAsciiRealCopy(unsigned size, long double* value, void* destination);

    // Decimal real text of size bytes at text into numerator and divisor
    // (grammar above; size 0 is STATUS_CODE_INVALID_FORMAT). Returns
    // STATUS_CODE_SUCCESS, STATUS_CODE_INVALID_FORMAT or
    // STATUS_CODE_OUT_OF_RANGE, and STATUS_CODE_INVALID_PARAMETER for a null
    // text with a non-zero size; the outputs change on success only.
    static StatusCode CopyUnsignedAsciiRealToNumeratorAndDivisor(const void* text, unsigned size,
                                                                 std::uint64_t& numerator,
                                                                 std::uint64_t& divisor) noexcept;
    static StatusCode CopySignedAsciiRealToNumeratorAndDivisor(const void* text, unsigned size,
                                                               std::int64_t& numerator,
                                                               std::uint64_t& divisor) noexcept;

    // ---- Text --------------------------------------------------------------
    // *text (when not null) receives the size bytes as a std::string. Text
    // outputs may throw std::bad_alloc; nothing changes then.
    StatusCode ValidateString(unsigned size, std::string* text, const void** data = nullptr);
    // Every character (as an unsigned byte) within [low, high], else
    // STATUS_CODE_OUT_OF_RANGE.
    StatusCode ValidateString(unsigned size, unsigned char low, unsigned char high, std::string* text = nullptr,
                              const void** data = nullptr);
    // Every character one of allowedCharacters, else STATUS_CODE_OUT_OF_RANGE.
    StatusCode ValidateString(unsigned size, const std::string& allowedCharacters, std::string* text = nullptr,
                              const void** data = nullptr);
    // The text equal to one entry of list, else STATUS_CODE_OUT_OF_RANGE.
    StatusCode ValidateString(unsigned size, const std::vector<std::string>& list, std::string* text = nullptr,
                              const void** data = nullptr);

    StatusCode ValidateStringCopy(unsigned size, std::string* text, void* destination);
    StatusCode ValidateStringCopy(unsigned size, unsigned char low, unsigned char high, std::string* text,
                                  void* destination);
    StatusCode ValidateStringCopy(unsigned size, const std::string& allowedCharacters, std::string* text,
                                  void* destination);
    StatusCode ValidateStringCopy(unsigned size, const std::vector<std::string>& list, std::string* text,
                                  void* destination);

private:
    // Where a successful check delivers the field.
    struct FieldOutput
    {
        const void** data;
        void* destination;
    };

    // True when size bytes are left at the cursor.
    bool Fits(unsigned size) const noexcept { return size <= length_ - cursor_; }

    // Delivers the field at the cursor and advances, after checking that it
    // fits.
    StatusCode Deliver(unsigned size, FieldOutput output) noexcept
    {
        if (size > length_ - cursor_) [[unlikely]]
            return STATUS_CODE_INVALID_PARAMETER;
        return Commit(size, output);
    }

    // Delivers the field at the cursor and advances. The field fits and its
    // check has passed.
    StatusCode Commit(unsigned size, FieldOutput output) noexcept
    {
        const unsigned char* field = buffer_ + cursor_;
        if (output.data != nullptr)
            *output.data = field;
        if (output.destination != nullptr && size != 0)
            std::memcpy(output.destination, field, size);
        cursor_ += size;
        return STATUS_CODE_SUCCESS;
    }

    StatusCode ExactBytes(unsigned size, const void* expected, FieldOutput output) noexcept
    {
        if (size == 0)
            return Deliver(0, output);
        if (size > length_ - cursor_ || expected == nullptr) [[unlikely]]
            return STATUS_CODE_INVALID_PARAMETER;
        if (!Detail::BytesEqual(buffer_ + cursor_, static_cast<const unsigned char*>(expected), size))
            return STATUS_CODE_INVALID_FORMAT;
        return Commit(size, output);
    }

    template <typename T>
    StatusCode UnsignedDecimal(unsigned size, T* value, FieldOutput output) noexcept
    {
        if (size == 0 || size > length_ - cursor_) [[unlikely]]
            return (size == 0 && value == nullptr) ? Deliver(0, output) : STATUS_CODE_INVALID_PARAMETER;
        std::uint64_t converted;
        const StatusCode status =
            Detail::ParseUnsignedDecimal(buffer_ + cursor_, size, std::numeric_limits<T>::max(), converted);
        if (status != STATUS_CODE_SUCCESS)
            return status;
        if (value != nullptr)
            *value = static_cast<T>(converted);
        return Commit(size, output);
    }

    template <typename T>
    StatusCode SignedDecimal(unsigned size, T* value, FieldOutput output) noexcept
    {
        if (size == 0 || size > length_ - cursor_) [[unlikely]]
            return (size == 0 && value == nullptr) ? Deliver(0, output) : STATUS_CODE_INVALID_PARAMETER;
        std::int64_t converted;
        const StatusCode status = Detail::ParseSignedDecimal(
            buffer_ + cursor_, size, static_cast<std::uint64_t>(std::numeric_limits<T>::max()), converted);
        if (status != STATUS_CODE_SUCCESS)
            return status;
        if (value != nullptr)
            *value = static_cast<T>(converted);
        return Commit(size, output);
    }

    // Runs check(field, size) -> StatusCode on the field at the cursor and
    // delivers it on success. Size 0 succeeds without a check.
    template <typename Check>
    StatusCode CheckField(unsigned size, FieldOutput output, Check check);
    StatusCode UnsignedDecimalRange(unsigned size, const std::uint64_t* min, const std::uint64_t* max,
                                    const std::vector<std::uint64_t>* list, std::uint64_t* value, FieldOutput output);
    StatusCode SignedDecimalRange(unsigned size, const std::int64_t* min, const std::int64_t* max,
                                  const std::vector<std::int64_t>* list, std::int64_t* value, FieldOutput output);
    StatusCode Hexadecimal(unsigned size, Endian endian, std::uint64_t maxValue, const std::uint64_t* min,
                           const std::uint64_t* max, const std::vector<std::uint64_t>* list, bool valueRequested,
                           std::uint64_t* value, FieldOutput output);
    StatusCode UnsignedBinary(unsigned size, Endian endian, std::uint64_t maxValue, const std::uint64_t* min,
                              const std::uint64_t* max, const std::vector<std::uint64_t>* list, bool valueRequested,
                              std::uint64_t* value, FieldOutput output);
    StatusCode SignedBinary(unsigned size, Endian endian, std::int64_t minValue, std::int64_t maxValue,
                            const std::int64_t* min, const std::int64_t* max, const std::vector<std::int64_t>* list,
                            bool valueRequested, std::int64_t* value, FieldOutput output);
    template <typename T>
    StatusCode TypedHexadecimal(unsigned size, Endian endian, T* value, FieldOutput output);
    template <typename T>
    StatusCode TypedUnsignedBinary(unsigned size, Endian endian, T* value, FieldOutput output);
    template <typename T>
    StatusCode TypedSignedBinary(unsigned size, Endian endian, T* value, FieldOutput output);
    StatusCode Real(unsigned size, bool allowSign, bool& negative, std::uint64_t& numerator, std::uint64_t& divisor);
    template <typename Numerator>
    StatusCode RealFraction(unsigned size, bool allowSign, Numerator* numerator, std::uint64_t* divisor,
                            FieldOutput output);
    StatusCode RealValue(unsigned size, bool allowSign, const long double* min, const long double* max,
                         const std::vector<long double>* list, long double* value, FieldOutput output);
    template <typename T>
    StatusCode TypedReal(unsigned size, bool allowSign, T* value, FieldOutput output);
    template <typename Check>
    StatusCode Text(unsigned size, std::string* text, FieldOutput output, Check check);

    const unsigned char* buffer_;
    std::uint32_t length_;
    std::uint32_t cursor_;
};

} // namespace Zantor
