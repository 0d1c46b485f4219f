// CrcBlob: Blob's value with a CRC-32 of the data in its wire forms.
#include <ZantorMiddleware/ZantorBase/FieldTypes/CrcBlob.h>

#include <ZantorMiddleware/ZantorBase/Exception.h>

#include "FieldTypes/ByteFieldWire.h"

#include <array>
#include <cstring>

namespace Zantor {

namespace {

constexpr unsigned int kCrcAndHeaderSize = 8;
constexpr unsigned int kMinBody = kCrcAndHeaderSize + 1;

// The reflected CRC-32 of every byte value (polynomial 0xEDB88320).
constexpr std::array<std::uint32_t, 256> kCrcTable = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t value = 0; value < 256; ++value)
    {
        std::uint32_t crc = value;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) != 0 ? 0xEDB88320u ^ (crc >> 1) : crc >> 1;
        table[value] = crc;
    }
    return table;
}();

} // namespace

std::uint32_t CrcBlob::CalculateCrc(const unsigned char* data, unsigned int length, std::uint32_t initial) noexcept
{
    if (length == 0 || data == nullptr)
        return initial;
    std::uint32_t crc = ~initial;
    for (unsigned int i = 0; i < length; ++i)
        crc = kCrcTable[(crc ^ data[i]) & 0xFF] ^ (crc >> 8);
    return ~crc;
}

CrcBlob::CrcBlob(std::string_view data, std::uint32_t header)
    : CrcBlob()
{
    const StatusCode status = Set(data, header);
    if (status != STATUS_CODE_SUCCESS)
        ZANTOR_THROW(StatusCodeException, status);
}

StatusCode CrcBlob::Set(const void* data, unsigned int length, std::uint32_t header) noexcept
{
    const StatusCode status = Blob::Set(data, length, header);
    if (status == STATUS_CODE_SUCCESS)
        crc_ = CalculateCrc(bytes_.Data(), bytes_.Length(), 0);
    return status;
}

StatusCode CrcBlob::Set(std::string_view data, std::uint32_t header) noexcept
{
    if (!Detail::FitsLength(data.size()))
        return STATUS_CODE_INVALID_PARAMETER;
    return Set(data.data(), static_cast<unsigned int>(data.size()), header);
}

void CrcBlob::Reset() noexcept
{
    Blob::Reset();
    crc_ = 0;
}

void CrcBlob::Release() noexcept
{
    Blob::Release();
    crc_ = 0;
}

StatusCode CrcBlob::Compare(const void* body, unsigned int bodyLength, int& result) const
{
    const unsigned char* data = nullptr;
    unsigned int length = 0;
    std::uint32_t crc = 0, header = 0;
    const StatusCode status = DeserializeBody(body, bodyLength, data, length, crc, header);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    result = Detail::CompareHeaded(header_, bytes_.Data(), bytes_.Length(), header, data, length);
    return STATUS_CODE_SUCCESS;
}

StatusCode CrcBlob::Convert(const IFieldType* other)
{
    const StatusCode status = ConvertFrom(other);
    if (status == STATUS_CODE_SUCCESS && IsInitialized())
        crc_ = CalculateCrc(bytes_.Data(), bytes_.Length(), 0);
    return status;
}

StatusCode CrcBlob::FromString(MessageValidator& text)
{
    const StatusCode status = Blob::FromString(text);
    if (status == STATUS_CODE_SUCCESS && IsInitialized())
        crc_ = CalculateCrc(bytes_.Data(), bytes_.Length(), 0);
    return status;
}

StatusCode CrcBlob::Serialize(MessageBuilder& builder, unsigned int maxLength) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    return Serialize(builder, maxLength, bytes_.Data(), bytes_.Length(), header_);
}

StatusCode CrcBlob::SerializeBody(void* buffer, unsigned int length, unsigned int& written) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    return SerializeBody(buffer, length, written, bytes_.Data(), bytes_.Length(), header_);
}

StatusCode CrcBlob::SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const
{
    return Serialize(builder, maxLength);
}

StatusCode CrcBlob::Deserialize(MessageValidator& validator, unsigned int maxLength)
{
    return DeserializeLengthAndBody(validator, maxLength);
}

StatusCode CrcBlob::DeserializeBody(const void* body, unsigned int length)
{
    const unsigned char* data = nullptr;
    unsigned int dataLength = 0;
    std::uint32_t crc = 0, header = 0;
    const StatusCode status = DeserializeBody(body, length, data, dataLength, crc, header);
    return status != STATUS_CODE_SUCCESS ? status : Set(data, dataLength, header);
}

StatusCode CrcBlob::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength)
{
    MessageValidator reader = validator;
    const unsigned char* data = nullptr;
    unsigned int length = 0;
    std::uint32_t crc = 0, header = 0;
    StatusCode status = DeserializeLengthAndBody(reader, maxLength, data, length, crc, header);
    if (status == STATUS_CODE_SUCCESS)
        status = Set(data, length, header);
    if (status == STATUS_CODE_SUCCESS)
        validator = reader;
    return status;
}

unsigned int CrcBlob::GetSerializedLength() const noexcept
{
    return IsInitialized() ? bytes_.Length() + kCrcAndHeaderSize + 4 : 0;
}

unsigned int CrcBlob::GetSerializedBodyLength() const noexcept
{
    return IsInitialized() ? bytes_.Length() + kCrcAndHeaderSize : 0;
}

StatusCode CrcBlob::IsDifferent(const void* body, unsigned int bodyLength, bool& different) const
{
    if (body == nullptr || bodyLength < kMinBody)
        return STATUS_CODE_INVALID_PARAMETER;
    const auto* bytes = static_cast<const unsigned char*>(body);
    different = !IsInitialized() || Detail::LoadLittle32(bytes) != crc_ || Detail::LoadLittle32(bytes + 4) != header_ ||
                bodyLength - kCrcAndHeaderSize != bytes_.Length() ||
                std::memcmp(bytes + kCrcAndHeaderSize, bytes_.Data(), bytes_.Length()) != 0;
    return STATUS_CODE_SUCCESS;
}

StatusCode CrcBlob::Serialize(MessageBuilder& builder, unsigned int maxLength, const unsigned char* data,
                              unsigned int length, std::uint32_t header)
{
    if (length == 0 || data == nullptr || std::uint64_t{length} + kCrcAndHeaderSize > maxLength)
        return STATUS_CODE_INVALID_PARAMETER;
    unsigned char prefix[4 + kCrcAndHeaderSize];
    Detail::StoreLength32(prefix, length + kCrcAndHeaderSize, builder.GetEndian());
    Detail::StoreLittle32(prefix + 4, CalculateCrc(data, length, 0));
    Detail::StoreLittle32(prefix + 8, header);
    return Detail::AppendParts(builder, prefix, sizeof prefix, data, length);
}

StatusCode CrcBlob::SerializeBody(void* buffer, unsigned int bufferLength, unsigned int& written,
                                  const unsigned char* data, unsigned int length, std::uint32_t header) noexcept
{
    if (length == 0 || data == nullptr || buffer == nullptr ||
        std::uint64_t{length} + kCrcAndHeaderSize > bufferLength)
        return STATUS_CODE_INVALID_PARAMETER;
    const std::uint32_t crc = CalculateCrc(data, length, 0);
    auto* target = static_cast<unsigned char*>(buffer);
    std::memmove(target + kCrcAndHeaderSize, data, length);
    Detail::StoreLittle32(target, crc);
    Detail::StoreLittle32(target + 4, header);
    written = length + kCrcAndHeaderSize;
    return STATUS_CODE_SUCCESS;
}

StatusCode CrcBlob::SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength,
                                           const unsigned char* data, unsigned int length, std::uint32_t header)
{
    return Serialize(builder, maxLength, data, length, header);
}

StatusCode CrcBlob::Deserialize(MessageValidator& validator, unsigned int maxLength, const unsigned char*& data,
                                unsigned int& length, std::uint32_t& crc, std::uint32_t& header) noexcept
{
    return DeserializeLengthAndBody(validator, maxLength, data, length, crc, header);
}

StatusCode CrcBlob::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength,
                                             const unsigned char*& data, unsigned int& length, std::uint32_t& crc,
                                             std::uint32_t& header) noexcept
{
    unsigned int offset = 0, bodyLength = 0;
    StatusCode status = Detail::PeekLongBody(validator, maxLength, kMinBody, offset, bodyLength);
    if (status == STATUS_CODE_SUCCESS)
        status = DeserializeBody(validator.GetBuffer() + offset, bodyLength, data, length, crc, header);
    if (status == STATUS_CODE_SUCCESS)
        validator.ValidateBytes(4 + bodyLength);
    return status;
}

StatusCode CrcBlob::DeserializeBody(const void* body, unsigned int length, const unsigned char*& data,
                                    unsigned int& dataLength, std::uint32_t& crc, std::uint32_t& header) noexcept
{
    if (body == nullptr || length < kMinBody)
        return STATUS_CODE_INVALID_PARAMETER;
    const auto* bytes = static_cast<const unsigned char*>(body);
    const std::uint32_t stored = Detail::LoadLittle32(bytes);
    if (CalculateCrc(bytes + kCrcAndHeaderSize, length - kCrcAndHeaderSize, 0) != stored)
        return STATUS_CODE_INVALID_FORMAT;
    crc = stored;
    header = Detail::LoadLittle32(bytes + 4);
    data = bytes + kCrcAndHeaderSize;
    dataLength = length - kCrcAndHeaderSize;
    return STATUS_CODE_SUCCESS;
}

StatusCode CrcBlob::ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                    unsigned int& bodyLength) noexcept
{
    MessageValidator reader = validator;
    const unsigned char* data = nullptr;
    unsigned int length = 0;
    std::uint32_t crc = 0, header = 0;
    const StatusCode status = DeserializeLengthAndBody(reader, 0xFFFFFFFFu, data, length, crc, header);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    bodyOffset = static_cast<unsigned int>(data - validator.GetBuffer()) - kCrcAndHeaderSize;
    bodyLength = length + kCrcAndHeaderSize;
    validator = reader;
    return STATUS_CODE_SUCCESS;
}

StatusCode CrcBlob::Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                            int& result) noexcept
{
    const unsigned char *data1 = nullptr, *data2 = nullptr;
    unsigned int dataLength1 = 0, dataLength2 = 0;
    std::uint32_t crc1 = 0, crc2 = 0, header1 = 0, header2 = 0;
    StatusCode status = DeserializeBody(body1, length1, data1, dataLength1, crc1, header1);
    if (status == STATUS_CODE_SUCCESS)
        status = DeserializeBody(body2, length2, data2, dataLength2, crc2, header2);
    if (status == STATUS_CODE_SUCCESS)
        result = Detail::CompareHeaded(header1, data1, dataLength1, header2, data2, dataLength2);
    return status;
}

} // namespace Zantor
