// CrcBlob: a Blob (FIELD_TYPE_CRCBLOB) whose wire forms carry a CRC-32 of
// the data, checked on every read.
//
// The CRC is the reflected CRC-32 of IEEE 802.3 (polynomial 0xEDB88320),
// computed by CalculateCrc(data, length, 0) over the data alone whenever
// the value is set, so GetCrc() always matches the data. Storage, text
// form (header and data; the CRC is not printed), conversion and ordering
// (header, then data) are Blob's. One thread at a time.
//
//   CrcBlob blob("abc", 7);
//   blob.SerializeLengthAndBody(builder, 1024);   // 0b 00 00 00, CRC, 07 00 00 00, 'a' 'b' 'c'
//   std::uint32_t crc = CrcBlob::CalculateCrc(data, length, 0);
//
// Wire forms: a four-byte length (data length + 8) in the builder's or
// validator's byte order, then the body: the CRC and the header word (both
// little-endian wherever the body stands) and the data. Failures as
// Blob's with a minimum body of 9 bytes, and one more: a body whose CRC
// does not match its data is STATUS_CODE_INVALID_FORMAT on every read
// (Deserialize*, DeserializeBody, ValidateSerializedLengthAndBody,
// Compare). IsDifferent compares CRC, header and data as they stand.
// Nothing changes on failure (value, cursor, builder).
#pragma once

#include <ZantorMiddleware/ZantorBase/FieldTypes/Blob.h>

#include <cstdint>

namespace Zantor {

class ZANTOR_BASE_API CrcBlob : public Blob
{
public:
    using IFieldType::Deserialize;
    using IFieldType::DeserializeBody;
    using IFieldType::DeserializeLengthAndBody;
    using IFieldType::Serialize;
    using IFieldType::SerializeBody;
    using IFieldType::SerializeLengthAndBody;

    CrcBlob() noexcept
        : Blob(FIELD_TYPE_CRCBLOB), crc_(0)
    {
    }
    // Holds data and header; throws as Blob's constructor.
    explicit CrcBlob(std::string_view data, std::uint32_t header = 0);

    // As Blob's, and the CRC of the data is computed.
    StatusCode Set(const void* data, unsigned int length, std::uint32_t header) noexcept;
    StatusCode Set(std::string_view data, std::uint32_t header = 0) noexcept;
    // The CRC of the data; 0 when not initialized.
    std::uint32_t GetCrc() const noexcept { return crc_; }

    void Reset() noexcept override;
    void Release() noexcept override;
    StatusCode Compare(const void* body, unsigned int bodyLength, int& result) const override;
    StatusCode Convert(const IFieldType* other) override;
    StatusCode FromString(MessageValidator& text) override;
    StatusCode Serialize(MessageBuilder& builder, unsigned int maxLength) const override;
    StatusCode SerializeBody(void* buffer, unsigned int length, unsigned int& written) const override;
    StatusCode SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const override;
    StatusCode Deserialize(MessageValidator& validator, unsigned int maxLength) override;
    StatusCode DeserializeBody(const void* body, unsigned int length) override;
    StatusCode DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength) override;
    // Data length + 12 and data length + 8; 0 when not initialized.
    unsigned int GetSerializedLength() const noexcept override;
    unsigned int GetSerializedBodyLength() const noexcept override;
    StatusCode IsDifferent(const void* body, unsigned int bodyLength, bool& different) const override;

    // Raw data without a value object; the writing forms compute the CRC.
    static StatusCode Serialize(MessageBuilder& builder, unsigned int maxLength, const unsigned char* data,
                                unsigned int length, std::uint32_t header);
    static StatusCode SerializeBody(void* buffer, unsigned int bufferLength, unsigned int& written,
                                    const unsigned char* data, unsigned int length, std::uint32_t header) noexcept;
    static StatusCode SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength,
                                             const unsigned char* data, unsigned int length, std::uint32_t header);
    // Reads a field and checks its CRC: data points into the validator's
    // buffer (nothing is copied) and the cursor moves past the field.
    static StatusCode Deserialize(MessageValidator& validator, unsigned int maxLength, const unsigned char*& data,
                                  unsigned int& length, std::uint32_t& crc, std::uint32_t& header) noexcept;
    static StatusCode DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength,
                                               const unsigned char*& data, unsigned int& length, std::uint32_t& crc,
                                               std::uint32_t& header) noexcept;
    // Splits a body of at least 9 bytes into CRC, header and data and
    // checks the CRC.
    static StatusCode DeserializeBody(const void* body, unsigned int length, const unsigned char*& data,
                                      unsigned int& dataLength, std::uint32_t& crc, std::uint32_t& header) noexcept;
    // Checks the update form at the cursor (its CRC included), moves past
    // it and reports the body's offset and length.
    static StatusCode ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                      unsigned int& bodyLength) noexcept;
    // Orders two bodies by header, then data: result -1, 0 or 1.
    static StatusCode Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                              int& result) noexcept;

    // The CRC-32 of length bytes at data, chained from initial (the CRC of
    // the bytes before): the running value starts as ~initial and the
    // result is complemented; a length of 0 returns initial.
    // CalculateCrc("123456789", 9, 0) == 0xCBF43926.
    static std::uint32_t CalculateCrc(const unsigned char* data, unsigned int length, std::uint32_t initial) noexcept;

private:
    std::uint32_t crc_;
};

} // namespace Zantor
