// Blob: a large binary field value (FIELD_TYPE_BLOB) with a 32-bit header
// word that the library carries and prints but does not interpret.
// CrcBlob derives from it and adds a CRC-32 of the data.
//
// Storage: the data as TextString's (up to 32 bytes inline without
// allocation, longer data in an owned heap block that Release frees) and
// the header word. The text form is built on demand into the returned
// std::string, so the value keeps no second buffer for it. Copies are
// deep. One thread at a time.
//
//   Blob blob("abc", 0);
//   blob.SerializeLengthAndBody(builder, 1024);   // 07 00 00 00, 00 00 00 00, 'a' 'b' 'c'
//   Blob::Deserialize(validator, 1024, data, length, header);
//
// Wire forms: record and update form alike: a four-byte length (data
// length + 4) in the builder's or validator's byte order, then the body.
// The body is the header word and the data; the header word is
// little-endian wherever the body stands, so a body inside a message is
// byte for byte what SerializeBody writes and DeserializeBody, Compare and
// IsDifferent read. Serializing a value that is not initialized:
// STATUS_CODE_NOT_INITIALIZED; empty data, a body longer than maxLength or
// than a caller buffer: STATUS_CODE_INVALID_PARAMETER; a builder that
// cannot grow: its status. Reading a body shorter than 5 bytes, a length
// above maxLength or running past the end: STATUS_CODE_INVALID_PARAMETER;
// allocation failure: STATUS_CODE_HEAP_EMPTY. Nothing changes on failure
// (value, cursor, builder).
//
// Text form: the header word as eight lower-case hexadecimal digits (its
// four bytes in memory order, high digit of each first), " 0x", then the
// data in lower-case hexadecimal: header 1 and data "ab" print
// "01000000 0x6162". FromString reads exactly that form (digits of either
// case, "0X" allowed); anything else is STATUS_CODE_INVALID_FORMAT.
// Compare orders by header word (as an unsigned number), then byte-wise by
// data, data that is a prefix of other data first; a value that is not
// initialized gives STATUS_CODE_NOT_INITIALIZED. IsDifferent says
// "different" for a value that is not initialized.
#pragma once

#include <ZantorMiddleware/ZantorBase/Detail/FieldBytes.h>
#include <ZantorMiddleware/ZantorBase/Export.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/IFieldType.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace Zantor {

class ZANTOR_BASE_API Blob : public IFieldType
{
public:
    using IFieldType::Deserialize;
    using IFieldType::DeserializeBody;
    using IFieldType::DeserializeLengthAndBody;
    using IFieldType::Serialize;
    using IFieldType::SerializeBody;
    using IFieldType::SerializeLengthAndBody;

    Blob() noexcept
        : IFieldType(FIELD_TYPE_BLOB), header_(0)
    {
    }
    // Holds data and header; throws StatusCodeException(STATUS_CODE_HEAP_EMPTY)
    // when memory runs out, STATUS_CODE_INVALID_PARAMETER at 4 GiB or more.
    explicit Blob(std::string_view data, std::uint32_t header = 0);
    Blob(const Blob&) = default;
    Blob& operator=(const Blob&) = default;
    ~Blob() override = default;

    // Copies length bytes (which may lie in this value) and the header word
    // and marks the value initialized. STATUS_CODE_INVALID_PARAMETER for a
    // null data with a non-zero length (or data of 4 GiB or more);
    // STATUS_CODE_HEAP_EMPTY. Nothing changes on failure.
    StatusCode Set(const void* data, unsigned int length, std::uint32_t header) noexcept;
    StatusCode Set(std::string_view data, std::uint32_t header = 0) noexcept;
    // The data; length 0 and header 0 when not initialized.
    const unsigned char* GetData() const noexcept { return bytes_.Data(); }
    unsigned int GetLength() const noexcept { return bytes_.Length(); }
    std::uint32_t GetHeader() const noexcept { return header_; }
    bool UsesInlineBuffer() const noexcept { return bytes_.UsesInlineBuffer(); }
    bool OwnsHeapBuffer() const noexcept { return bytes_.OwnsHeapBuffer(); }

    void Reset() noexcept override;
    void Release() noexcept override;
    StatusCode Compare(const void* body, unsigned int bodyLength, int& result) const override;
    // From the string and array types (header word 0), Blob and CrcBlob
    // (data and header word); STATUS_CODE_MISMATCH for any other type.
    StatusCode Convert(const IFieldType* other) override;
    std::string ToString() const override;
    StatusCode FromString(MessageValidator& text) override;
    const char* GetFromStringFormat() const noexcept override;
    StatusCode Serialize(MessageBuilder& builder, unsigned int maxLength) const override;
    StatusCode SerializeBody(void* buffer, unsigned int length, unsigned int& written) const override;
    StatusCode SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const override;
    StatusCode Deserialize(MessageValidator& validator, unsigned int maxLength) override;
    StatusCode DeserializeBody(const void* body, unsigned int length) override;
    StatusCode DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength) override;
    // Data length + 8 and data length + 4; 0 when not initialized.
    unsigned int GetSerializedLength() const noexcept override;
    unsigned int GetSerializedBodyLength() const noexcept override;
    StatusCode IsDifferent(const void* body, unsigned int bodyLength, bool& different) const override;

    // Raw data without a value object. Serialize and SerializeLengthAndBody
    // append the length, header and data; SerializeBody writes header and
    // data to buffer (written receives the count).
    static StatusCode Serialize(MessageBuilder& builder, unsigned int maxLength, const unsigned char* data,
                                unsigned int length, std::uint32_t header);
    static StatusCode SerializeBody(void* buffer, unsigned int bufferLength, unsigned int& written,
                                    const unsigned char* data, unsigned int length, std::uint32_t header) noexcept;
    static StatusCode SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength,
                                             const unsigned char* data, unsigned int length, std::uint32_t header);
    // Reads a field: data points into the validator's buffer (nothing is
    // copied) and the cursor moves past the field.
    static StatusCode Deserialize(MessageValidator& validator, unsigned int maxLength, const unsigned char*& data,
                                  unsigned int& length, std::uint32_t& header) noexcept;
    static StatusCode DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength,
                                               const unsigned char*& data, unsigned int& length,
                                               std::uint32_t& header) noexcept;
    // Splits a body of at least 5 bytes: the header word from the first 4,
    // data pointing after them.
    static StatusCode DeserializeBody(const void* body, unsigned int length, const unsigned char*& data,
                                      unsigned int& dataLength, std::uint32_t& header) noexcept;
    // Checks the update form at the cursor, moves past it and reports the
    // body's offset in the validator's buffer and its length.
    static StatusCode ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                      unsigned int& bodyLength) noexcept;
    // Orders two bodies (each at least 5 bytes, else
    // STATUS_CODE_INVALID_PARAMETER): result -1, 0 or 1.
    static StatusCode Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                              int& result) noexcept;

protected:
    explicit Blob(unsigned char type) noexcept
        : IFieldType(type), header_(0)
    {
    }
    // Takes the data and header of a field of codes 7 to 12 into this
    // value; statuses as Convert.
    StatusCode ConvertFrom(const IFieldType* other);

    Detail::FieldBytes bytes_;
    std::uint32_t header_;
};

} // namespace Zantor
