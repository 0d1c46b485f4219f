// Blob: large binary values with a four-byte length and a header word.
#include <ZantorMiddleware/ZantorBase/FieldTypes/Blob.h>

#include <ZantorMiddleware/ZantorBase/Exception.h>

#include "FieldTypes/ByteFieldWire.h"

#include <cstring>

namespace Zantor {

namespace {

constexpr unsigned int kHeaderSize = 4;
constexpr unsigned int kMinBody = kHeaderSize + 1;

bool IsBlobBody(const void* body, unsigned int length) noexcept
{
    return body != nullptr && length >= kMinBody;
}

} // namespace

Blob::Blob(std::string_view data, std::uint32_t header)
    : Blob()
{
    const StatusCode status = Set(data, header);
    if (status != STATUS_CODE_SUCCESS)
        ZANTOR_THROW(StatusCodeException, status);
}

StatusCode Blob::Set(const void* data, unsigned int length, std::uint32_t header) noexcept
{
    const StatusCode status = bytes_.Assign(data, length);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    header_ = header;
    SetInitialized(true);
    return STATUS_CODE_SUCCESS;
}

StatusCode Blob::Set(std::string_view data, std::uint32_t header) noexcept
{
    if (!Detail::FitsLength(data.size()))
        return STATUS_CODE_INVALID_PARAMETER;
    return Set(data.data(), static_cast<unsigned int>(data.size()), header);
}

void Blob::Reset() noexcept
{
    bytes_.Clear();
    header_ = 0;
    SetInitialized(false);
}

void Blob::Release() noexcept
{
    bytes_.Release();
    header_ = 0;
    SetInitialized(false);
}

StatusCode Blob::Compare(const void* body, unsigned int bodyLength, int& result) const
{
    if (!IsBlobBody(body, bodyLength))
        return STATUS_CODE_INVALID_PARAMETER;
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    const auto* bytes = static_cast<const unsigned char*>(body);
    result = Detail::CompareHeaded(header_, bytes_.Data(), bytes_.Length(), Detail::LoadLittle32(bytes),
                                   bytes + kHeaderSize, bodyLength - kHeaderSize);
    return STATUS_CODE_SUCCESS;
}

StatusCode Blob::ConvertFrom(const IFieldType* other)
{
    if (other == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    const unsigned char* data = nullptr;
    unsigned int length = 0;
    std::uint32_t header = 0;
    if (other != nullptr && (other->GetType() == FIELD_TYPE_BLOB || other->GetType() == FIELD_TYPE_CRCBLOB))
    {
        const auto* blob = static_cast<const Blob*>(other);
        data = blob->GetData();
        length = blob->GetLength();
        header = blob->GetHeader();
    }
    else if (!Detail::StringOrArrayBytes(other, data, length))
    {
        return STATUS_CODE_MISMATCH;
    }
    if (other == this)
        return STATUS_CODE_SUCCESS;
    if (!other->IsInitialized())
    {
        Reset();
        return STATUS_CODE_SUCCESS;
    }
    return Blob::Set(data, length, header);
}

StatusCode Blob::Convert(const IFieldType* other)
{
    return ConvertFrom(other);
}

std::string Blob::ToString() const
{
    return IsInitialized() ? Detail::BlobText(header_, bytes_.Data(), bytes_.Length()) : NOT_INITIALIZED_TEXT;
}

StatusCode Blob::FromString(MessageValidator& text)
{
    StatusCode status;
    if (FromNotInitializedText(text, status))
        return status;
    Detail::FieldBytes bytes;
    std::uint32_t header = 0;
    status = Detail::ParseBlobText(text, bytes, header);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    bytes_ = static_cast<Detail::FieldBytes&&>(bytes);
    header_ = header;
    SetInitialized(true);
    return STATUS_CODE_SUCCESS;
}

const char* Blob::GetFromStringFormat() const noexcept
{
    return "hhhhhhhh 0x[hexadecimal digit pairs]";
}

StatusCode Blob::Serialize(MessageBuilder& builder, unsigned int maxLength) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    return Serialize(builder, maxLength, bytes_.Data(), bytes_.Length(), header_);
}

StatusCode Blob::SerializeBody(void* buffer, unsigned int length, unsigned int& written) const
{
    if (!IsInitialized())
        return STATUS_CODE_NOT_INITIALIZED;
    return SerializeBody(buffer, length, written, bytes_.Data(), bytes_.Length(), header_);
}

StatusCode Blob::SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const
{
    return Serialize(builder, maxLength);
}

StatusCode Blob::Deserialize(MessageValidator& validator, unsigned int maxLength)
{
    return DeserializeLengthAndBody(validator, maxLength);
}

StatusCode Blob::DeserializeBody(const void* body, unsigned int length)
{
    const unsigned char* data = nullptr;
    unsigned int dataLength = 0;
    std::uint32_t header = 0;
    const StatusCode status = DeserializeBody(body, length, data, dataLength, header);
    return status != STATUS_CODE_SUCCESS ? status : Set(data, dataLength, header);
}

StatusCode Blob::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength)
{
    MessageValidator reader = validator;
    const unsigned char* data = nullptr;
    unsigned int length = 0;
    std::uint32_t header = 0;
    StatusCode status = DeserializeLengthAndBody(reader, maxLength, data, length, header);
    if (status == STATUS_CODE_SUCCESS)
        status = Set(data, length, header);
    if (status == STATUS_CODE_SUCCESS)
        validator = reader;
    return status;
}

unsigned int Blob::GetSerializedLength() const noexcept
{
    return IsInitialized() ? bytes_.Length() + 2 * kHeaderSize : 0;
}

unsigned int Blob::GetSerializedBodyLength() const noexcept
{
    return IsInitialized() ? bytes_.Length() + kHeaderSize : 0;
}

StatusCode Blob::IsDifferent(const void* body, unsigned int bodyLength, bool& different) const
{
    if (!IsBlobBody(body, bodyLength))
        return STATUS_CODE_INVALID_PARAMETER;
    const auto* bytes = static_cast<const unsigned char*>(body);
    different = !IsInitialized() || Detail::LoadLittle32(bytes) != header_ ||
                bodyLength - kHeaderSize != bytes_.Length() ||
                std::memcmp(bytes + kHeaderSize, bytes_.Data(), bytes_.Length()) != 0;
    return STATUS_CODE_SUCCESS;
}

StatusCode Blob::Serialize(MessageBuilder& builder, unsigned int maxLength, const unsigned char* data,
                           unsigned int length, std::uint32_t header)
{
    if (length == 0 || data == nullptr || std::uint64_t{length} + kHeaderSize > maxLength)
        return STATUS_CODE_INVALID_PARAMETER;
    unsigned char prefix[4 + kHeaderSize];
    Detail::StoreLength32(prefix, length + kHeaderSize, builder.GetEndian());
    Detail::StoreLittle32(prefix + 4, header);
    return Detail::AppendParts(builder, prefix, sizeof prefix, data, length);
}

StatusCode Blob::SerializeBody(void* buffer, unsigned int bufferLength, unsigned int& written,
                               const unsigned char* data, unsigned int length, std::uint32_t header) noexcept
{
    if (length == 0 || data == nullptr || buffer == nullptr || std::uint64_t{length} + kHeaderSize > bufferLength)
        return STATUS_CODE_INVALID_PARAMETER;
    auto* target = static_cast<unsigned char*>(buffer);
    std::memmove(target + kHeaderSize, data, length);
    Detail::StoreLittle32(target, header);
    written = length + kHeaderSize;
    return STATUS_CODE_SUCCESS;
}

StatusCode Blob::SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength, const unsigned char* data,
                                        unsigned int length, std::uint32_t header)
{
    return Serialize(builder, maxLength, data, length, header);
}

StatusCode Blob::Deserialize(MessageValidator& validator, unsigned int maxLength, const unsigned char*& data,
                             unsigned int& length, std::uint32_t& header) noexcept
{
    return DeserializeLengthAndBody(validator, maxLength, data, length, header);
}

StatusCode Blob::DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength,
                                          const unsigned char*& data, unsigned int& length,
                                          std::uint32_t& header) noexcept
{
    unsigned int offset = 0, bodyLength = 0;
    const StatusCode status = Detail::PeekLongBody(validator, maxLength, kMinBody, offset, bodyLength);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    validator.ValidateBytes(4 + bodyLength);
    return DeserializeBody(validator.GetBuffer() + offset, bodyLength, data, length, header);
}

StatusCode Blob::DeserializeBody(const void* body, unsigned int length, const unsigned char*& data,
                                 unsigned int& dataLength, std::uint32_t& header) noexcept
{
    if (!IsBlobBody(body, length))
        return STATUS_CODE_INVALID_PARAMETER;
    const auto* bytes = static_cast<const unsigned char*>(body);
    header = Detail::LoadLittle32(bytes);
    data = bytes + kHeaderSize;
    dataLength = length - kHeaderSize;
    return STATUS_CODE_SUCCESS;
}

StatusCode Blob::ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                 unsigned int& bodyLength) noexcept
{
    const StatusCode status = Detail::PeekLongBody(validator, 0xFFFFFFFFu, kMinBody, bodyOffset, bodyLength);
    if (status == STATUS_CODE_SUCCESS)
        validator.ValidateBytes(4 + bodyLength);
    return status;
}

StatusCode Blob::Compare(const void* body1, unsigned int length1, const void* body2, unsigned int length2,
                         int& result) noexcept
{
    if (!IsBlobBody(body1, length1) || !IsBlobBody(body2, length2))
        return STATUS_CODE_INVALID_PARAMETER;
    const auto* first = static_cast<const unsigned char*>(body1);
    const auto* second = static_cast<const unsigned char*>(body2);
    result = Detail::CompareHeaded(Detail::LoadLittle32(first), first + kHeaderSize, length1 - kHeaderSize,
                                   Detail::LoadLittle32(second), second + kHeaderSize, length2 - kHeaderSize);
    return STATUS_CODE_SUCCESS;
}

} // namespace Zantor
