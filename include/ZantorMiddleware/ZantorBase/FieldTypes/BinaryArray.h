// BinaryArray: a binary field value (FIELD_TYPE_BINARYARRAY). Wire forms,
// storage, comparison and conversion are TextArray's; the text forms are
// hexadecimal (as BinaryString's) and Base64.
//
// Base64 (RFC 4648, standard alphabet A-Z a-z 0-9 + /): ToBase64String<true>
// pads the last group to four characters with '=', ToBase64String<false>
// leaves the padding out. Each decoder reads exactly what its encoder
// writes: FromBase64String<true> wants a multiple of four characters with
// '=' only as the last one or two; FromBase64String<false> wants no '=' and
// a length that is not 1 more than a multiple of four. Both refuse a
// character outside the alphabet, line breaks and blanks, and unused low
// bits of the last character that are not zero. The value that is not
// initialized is written "[NotInitialized]", and that exact text resets the
// value. Every refusal is STATUS_CODE_INVALID_FORMAT (STATUS_CODE_HEAP_EMPTY
// when memory runs out) and leaves the value as it was.
//
//   BinaryArray image;
//   image.FromBase64String<true>("TWFu");      // bytes 'M' 'a' 'n'
//   std::string text = image.ToBase64String<false>();
#pragma once

#include <ZantorMiddleware/ZantorBase/FieldTypes/TextArray.h>

#include <cstddef>

namespace Zantor {

class ZANTOR_BASE_API BinaryArray : public TextArray
{
public:
    BinaryArray() noexcept
        : TextArray(FIELD_TYPE_BINARYARRAY)
    {
    }
    // Holds the raw bytes of data; throws as TextArray's constructor.
    explicit BinaryArray(std::string_view data);

    // The hexadecimal form "0x..."; "[NotInitialized]" when not initialized.
    std::string ToString() const override;
    // The hexadecimal form when asHex, else the raw bytes.
    std::string ToString(bool asHex) const;
    // An optional "0x" or "0X", then pairs of hexadecimal digits of either
    // case ("0x" alone is the empty value); else STATUS_CODE_INVALID_FORMAT.
    StatusCode FromString(MessageValidator& text) override;
    const char* GetFromStringFormat() const noexcept override;

    // Base64 of the value, padded with '=' when Padded.
    template <bool Padded>
    std::string ToBase64String() const;
    template <bool Padded>
    StatusCode FromBase64String(const std::string& text);

    // Raw forms. ToBase64 encodes length bytes at data (std::bad_alloc when
    // the text does not fit in memory).
    static std::string ToBase64(const unsigned char* data, unsigned int length, bool padded);
    // The number of bytes textLength characters of Base64 decode to at
    // most.
    static std::size_t MaxBase64DecodedLength(std::size_t textLength) noexcept { return textLength / 4 * 3 + 2; }
    // Decodes textLength characters at text into data (capacity bytes);
    // length receives the byte count. STATUS_CODE_INVALID_FORMAT for text
    // the encoder cannot produce; STATUS_CODE_BUFFER_OVERFLOW when capacity
    // is too small; STATUS_CODE_INVALID_PARAMETER for null pointers with
    // non-zero sizes or a result of 4 GiB or more. On failure length is
    // unchanged and data holds unspecified bytes.
    static StatusCode FromBase64(const char* text, std::size_t textLength, bool padded, unsigned char* data,
                                 std::size_t capacity, unsigned int& length) noexcept;
};

extern template ZANTOR_BASE_API std::string BinaryArray::ToBase64String<true>() const;
extern template ZANTOR_BASE_API std::string BinaryArray::ToBase64String<false>() const;
extern template ZANTOR_BASE_API StatusCode BinaryArray::FromBase64String<true>(const std::string& text);
extern template ZANTOR_BASE_API StatusCode BinaryArray::FromBase64String<false>(const std::string& text);

} // namespace Zantor
