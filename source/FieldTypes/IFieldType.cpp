// The field type table, the type-dispatching members of IFieldType and the
// text every FromString shares.
#include <ZantorMiddleware/ZantorBase/FieldTypes/IFieldType.h>

#include <ZantorMiddleware/ZantorBase/FieldTypes/Blob.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Boolean.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/CrcBlob.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Date.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/DateTime.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/FieldTypeFactory.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Rational.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/SInt.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/TRational.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/TextArray.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/TextString.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Time.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <cstring>
#include <memory>

namespace Zantor {

namespace {

struct FieldTypeRow
{
    const char* name;
    unsigned char recordLengthSize;
    unsigned char updateLengthSize;
};

// One row per code, in code order.
constexpr FieldTypeRow kFieldTypes[] = {
    {"Date", 0, 0},         {"Time", 0, 0},        {"DateTime", 0, 0},      {"SInt", 0, 1},
    {"UInt", 0, 1},         {"Rational", 0, 0},    {"TRational", 0, 0},     {"TextString", 1, 1},
    {"TextArray", 0, 1},    {"BinaryString", 1, 1}, {"BinaryArray", 0, 1},  {"Blob", 4, 4},
    {"CrcBlob", 4, 4},      {"Boolean", 0, 0},
};
static_assert(std::size(kFieldTypes) == FIELD_TYPE_LAST + 1u);

std::unique_ptr<IFieldType> MakeTemporary(unsigned char type)
{
    return std::unique_ptr<IFieldType>(FieldTypeFactory::GetInstance().Create(type));
}

} // namespace

const char* FieldTypeToString(unsigned char type) noexcept
{
    return type <= FIELD_TYPE_LAST ? kFieldTypes[type].name : "Unknown";
}

unsigned char StringToFieldType(const std::string& name) noexcept
{
    for (unsigned char type = 0; type <= FIELD_TYPE_LAST; ++type)
        if (name == kFieldTypes[type].name)
            return type;
    return FIELD_TYPE_UNKNOWN;
}

unsigned int FieldTypeToRecordLengthSize(unsigned char type) noexcept
{
    return type <= FIELD_TYPE_LAST ? kFieldTypes[type].recordLengthSize : 0;
}

unsigned int FieldTypeToUpdateLengthSize(unsigned char type) noexcept
{
    return type <= FIELD_TYPE_LAST ? kFieldTypes[type].updateLengthSize : 0;
}

bool IFieldType::IsValidSerializedBodyLength(unsigned char type, unsigned int length) noexcept
{
    switch (type)
    {
    case FIELD_TYPE_DATE: return length == 3;
    case FIELD_TYPE_TIME: return length == 3 || length == 4;
    case FIELD_TYPE_DATETIME: return length == 6 || length == 7;
    case FIELD_TYPE_SINT:
    case FIELD_TYPE_UINT: return length == 1 || length == 2 || length == 4 || length == 8;
    case FIELD_TYPE_RATIONAL: return length == 2 || length == 3 || length == 5 || length == 9;
    case FIELD_TYPE_TRATIONAL: return length == 3 || length == 4 || length == 6 || length == 10;
    case FIELD_TYPE_TEXTSTRING:
    case FIELD_TYPE_BINARYSTRING: return length >= 1 && length <= 255;
    case FIELD_TYPE_TEXTARRAY:
    case FIELD_TYPE_BINARYARRAY: return length != 0;
    case FIELD_TYPE_BLOB: return length >= 5;
    case FIELD_TYPE_CRCBLOB: return length >= 9;
    case FIELD_TYPE_BOOLEAN: return length == 1;
    default: return false;
    }
}

StatusCode IFieldType::Assign(const IFieldType* other)
{
    if (other == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    if (other->type_ != type_)
        return STATUS_CODE_MISMATCH;
    return Convert(other);
}

// The members that write or read a value as another type go through a
// temporary of that type; with the value's own type they call the virtual
// operation directly.
namespace {

template <typename Write>
StatusCode WriteAs(const IFieldType& field, unsigned char type, Write write)
{
    if (type == field.GetType())
        return write(field);
    const std::unique_ptr<IFieldType> temporary = MakeTemporary(type);
    if (!temporary)
        return STATUS_CODE_HEAP_EMPTY;
    const StatusCode status = temporary->Convert(&field);
    return status != STATUS_CODE_SUCCESS ? status : write(*temporary);
}

template <typename Read>
StatusCode ReadAs(IFieldType& field, unsigned char type, Read read)
{
    if (type == field.GetType())
        return read(field);
    const std::unique_ptr<IFieldType> temporary = MakeTemporary(type);
    if (!temporary)
        return STATUS_CODE_HEAP_EMPTY;
    const StatusCode status = read(*temporary);
    return status != STATUS_CODE_SUCCESS ? status : field.Convert(temporary.get());
}

// Reading from a validator goes through a copy of it, so that the caller's
// cursor moves only when the conversion succeeds as well.
template <typename Read>
StatusCode ReadAs(IFieldType& field, unsigned char type, MessageValidator& validator, Read read)
{
    MessageValidator reader = validator;
    const StatusCode status = ReadAs(field, type, [&](IFieldType& target) { return read(target, reader); });
    if (status == STATUS_CODE_SUCCESS)
        validator = reader;
    return status;
}

} // namespace

StatusCode IFieldType::Serialize(unsigned char type, MessageBuilder& builder, unsigned int maxLength) const
{
    return WriteAs(*this, type, [&](const IFieldType& field) { return field.Serialize(builder, maxLength); });
}

StatusCode IFieldType::SerializeBody(unsigned char type, void* buffer, unsigned int length,
                                     unsigned int& written) const
{
    return WriteAs(*this, type, [&](const IFieldType& field) { return field.SerializeBody(buffer, length, written); });
}

StatusCode IFieldType::SerializeLengthAndBody(unsigned char type, MessageBuilder& builder,
                                              unsigned int maxLength) const
{
    return WriteAs(*this, type, [&](const IFieldType& field) { return field.SerializeLengthAndBody(builder, maxLength); });
}

StatusCode IFieldType::Deserialize(unsigned char type, MessageValidator& validator, unsigned int length)
{
    return ReadAs(*this, type, validator,
                  [&](IFieldType& field, MessageValidator& reader) { return field.Deserialize(reader, length); });
}

StatusCode IFieldType::DeserializeBody(unsigned char type, const void* body, unsigned int length)
{
    return ReadAs(*this, type, [&](IFieldType& field) { return field.DeserializeBody(body, length); });
}

StatusCode IFieldType::DeserializeLengthAndBody(unsigned char type, MessageValidator& validator,
                                                unsigned int maxLength)
{
    return ReadAs(*this, type, validator, [&](IFieldType& field, MessageValidator& reader) {
        return field.DeserializeLengthAndBody(reader, maxLength);
    });
}

// The byte-carrying codes go to their class's static operation; the other
// value types cannot be made from raw bytes.
StatusCode IFieldType::Serialize(unsigned char type, MessageBuilder& builder, unsigned int maxLength,
                                 const unsigned char* data, unsigned int length)
{
    switch (type)
    {
    case FIELD_TYPE_TEXTSTRING:
    case FIELD_TYPE_BINARYSTRING: return TextString::Serialize(builder, maxLength, data, length);
    case FIELD_TYPE_TEXTARRAY:
    case FIELD_TYPE_BINARYARRAY: return TextArray::Serialize(builder, maxLength, data, length);
    case FIELD_TYPE_BLOB: return Blob::Serialize(builder, maxLength, data, length, 0);
    case FIELD_TYPE_CRCBLOB: return CrcBlob::Serialize(builder, maxLength, data, length, 0);
    default: return type < FIELD_TYPE_TEXTSTRING ? STATUS_CODE_NOT_SUPPORTED : STATUS_CODE_INVALID_PARAMETER;
    }
}

StatusCode IFieldType::SerializeBody(unsigned char type, void* buffer, unsigned int bufferLength,
                                     unsigned int& written, const unsigned char* data, unsigned int length)
{
    switch (type)
    {
    case FIELD_TYPE_TEXTSTRING:
    case FIELD_TYPE_BINARYSTRING: return TextString::SerializeBody(buffer, bufferLength, written, data, length);
    case FIELD_TYPE_TEXTARRAY:
    case FIELD_TYPE_BINARYARRAY: return TextArray::SerializeBody(buffer, bufferLength, written, data, length);
    case FIELD_TYPE_BLOB: return Blob::SerializeBody(buffer, bufferLength, written, data, length, 0);
    case FIELD_TYPE_CRCBLOB: return CrcBlob::SerializeBody(buffer, bufferLength, written, data, length, 0);
    default: return type < FIELD_TYPE_TEXTSTRING ? STATUS_CODE_NOT_SUPPORTED : STATUS_CODE_INVALID_PARAMETER;
    }
}

StatusCode IFieldType::SerializeLengthAndBody(unsigned char type, MessageBuilder& builder, unsigned int maxLength,
                                              const unsigned char* data, unsigned int length)
{
    switch (type)
    {
    case FIELD_TYPE_TEXTSTRING:
    case FIELD_TYPE_BINARYSTRING: return TextString::SerializeLengthAndBody(builder, maxLength, data, length);
    case FIELD_TYPE_TEXTARRAY:
    case FIELD_TYPE_BINARYARRAY: return TextArray::SerializeLengthAndBody(builder, maxLength, data, length);
    case FIELD_TYPE_BLOB: return Blob::SerializeLengthAndBody(builder, maxLength, data, length, 0);
    case FIELD_TYPE_CRCBLOB: return CrcBlob::SerializeLengthAndBody(builder, maxLength, data, length, 0);
    default: return type < FIELD_TYPE_TEXTSTRING ? STATUS_CODE_NOT_SUPPORTED : STATUS_CODE_INVALID_PARAMETER;
    }
}

StatusCode IFieldType::ValidateSerializedLengthAndBody(unsigned char type, MessageValidator& validator,
                                                       unsigned int& bodyOffset, unsigned int& bodyLength)
{
    switch (type)
    {
    case FIELD_TYPE_TEXTSTRING:
    case FIELD_TYPE_BINARYSTRING: return TextString::ValidateSerializedLengthAndBody(validator, bodyOffset, bodyLength);
    case FIELD_TYPE_TEXTARRAY:
    case FIELD_TYPE_BINARYARRAY: return TextArray::ValidateSerializedLengthAndBody(validator, bodyOffset, bodyLength);
    case FIELD_TYPE_BLOB: return Blob::ValidateSerializedLengthAndBody(validator, bodyOffset, bodyLength);
    case FIELD_TYPE_CRCBLOB: return CrcBlob::ValidateSerializedLengthAndBody(validator, bodyOffset, bodyLength);
    case FIELD_TYPE_SINT:
    case FIELD_TYPE_UINT: return SInt::ValidateSerializedLengthAndBody(validator, bodyOffset, bodyLength);
    case FIELD_TYPE_RATIONAL: return Rational::ValidateSerializedLengthAndBody(validator, bodyOffset, bodyLength);
    case FIELD_TYPE_TRATIONAL: return TRational::ValidateSerializedLengthAndBody(validator, bodyOffset, bodyLength);
    case FIELD_TYPE_BOOLEAN: return Boolean::ValidateSerializedLengthAndBody(validator, bodyOffset, bodyLength);
    case FIELD_TYPE_DATE: return Date::ValidateSerializedLengthAndBody(validator, bodyOffset, bodyLength);
    case FIELD_TYPE_TIME: return Time::ValidateSerializedLengthAndBody(validator, bodyOffset, bodyLength);
    case FIELD_TYPE_DATETIME: return DateTime::ValidateSerializedLengthAndBody(validator, bodyOffset, bodyLength);
    default: return STATUS_CODE_INVALID_PARAMETER;
    }
}

bool IFieldType::FromNotInitializedText(MessageValidator& text, StatusCode& status) noexcept
{
    constexpr unsigned size = 16; // std::strlen(NOT_INITIALIZED_TEXT)
    static_assert(std::char_traits<char>::length(NOT_INITIALIZED_TEXT) == size);
    if (text.GetRemaining() < size ||
        std::memcmp(text.GetBuffer() + text.GetCursor(), NOT_INITIALIZED_TEXT, size) != 0)
        return false;
    if (text.GetRemaining() != size)
    {
        status = STATUS_CODE_INVALID_LENGTH;
        return true;
    }
    text.ValidateBytes(size);
    Reset();
    status = STATUS_CODE_SUCCESS;
    return true;
}

} // namespace Zantor
