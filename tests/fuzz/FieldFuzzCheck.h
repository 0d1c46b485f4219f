// The properties every field type's readers must keep on arbitrary bytes,
// shared by the field fuzz targets. Byte 0 of the input steers (bit 0: byte
// order, bits 1-4: record length); the rest is read as a body, a record, an
// update and a text. Whatever reads successfully must write itself back in
// every form and read back to an equal value; the cursor moves only on
// success and by the exact size.
#pragma once

#include <ZantorMiddleware/ZantorBase/FieldTypes/FieldTypeFactory.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace FieldFuzz {

using namespace Zantor;

// Aborts, naming the failed check's line, when condition is false.
inline void Require(bool condition, int line = __builtin_LINE())
{
    if (condition)
        return;
    std::fprintf(stderr, "FieldFuzzCheck.h:%d: property violated\n", line);
    std::abort();
}

inline std::unique_ptr<IFieldType> Fresh(unsigned char type)
{
    std::unique_ptr<IFieldType> value(FieldTypeFactory::GetInstance().Create(type));
    Require(value != nullptr);
    return value;
}

// other holds the same value as value (flag included).
inline void RequireEqual(const IFieldType& value, const IFieldType& other)
{
    Require(value.ToString() == other.ToString());
    if (!other.IsInitialized())
        return Require(!value.IsInitialized());
    unsigned char body[16];
    unsigned written = 0;
    Require(other.SerializeBody(body, other.GetSerializedBodyLength(), written) == STATUS_CODE_SUCCESS);
    bool different = true;
    int order = 1;
    Require(value.IsDifferent(body, written, different) == STATUS_CODE_SUCCESS && !different);
    Require(value.Compare(body, written, order) == STATUS_CODE_SUCCESS && order == 0);
}

inline void RequireRoundTrip(const IFieldType& value, MessageHandler::Endian endian)
{
    if (!value.IsInitialized())
        return;
    const unsigned char type = value.GetType();
    MessageBuilder builder;
    builder.SetEndian(endian);
    Require(value.SerializeLengthAndBody(builder, 255) == STATUS_CODE_SUCCESS);
    const unsigned updateSize = builder.GetLength();
    Require(value.Serialize(builder, value.GetSerializedLength()) == STATUS_CODE_SUCCESS);
    Require(builder.GetLength() == updateSize + value.GetSerializedLength());
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    validator.SetEndian(endian);
    std::unique_ptr<IFieldType> update = Fresh(type), record = Fresh(type);
    Require(update->DeserializeLengthAndBody(validator, 255) == STATUS_CODE_SUCCESS);
    Require(validator.GetCursor() == updateSize);
    Require(record->Deserialize(validator, value.GetSerializedLength()) == STATUS_CODE_SUCCESS);
    Require(validator.IsAtEnd());
    RequireEqual(value, *update);
    RequireEqual(value, *record);
    const std::string text = value.ToString();
    MessageValidator reader(text.data(), static_cast<unsigned>(text.size()));
    std::unique_ptr<IFieldType> parsed = Fresh(type);
    Require(parsed->FromString(reader) == STATUS_CODE_SUCCESS && reader.IsAtEnd());
    RequireEqual(value, *parsed);
}

inline void Check(unsigned char type, const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return;
    const auto endian = static_cast<MessageHandler::Endian>(data[0] & 1u);
    const unsigned recordLength = (data[0] >> 1) & 15u;
    const std::uint8_t* bytes = data + 1;
    const auto length = static_cast<unsigned>(size - 1);

    std::unique_ptr<IFieldType> body = Fresh(type);
    if (body->DeserializeBody(bytes, length) == STATUS_CODE_SUCCESS)
        RequireRoundTrip(*body, endian);

    MessageValidator recordReader(bytes, length);
    recordReader.SetEndian(endian);
    std::unique_ptr<IFieldType> record = Fresh(type);
    if (record->Deserialize(recordReader, recordLength) == STATUS_CODE_SUCCESS)
    {
        // Integers take the whole record length, rationals the length their
        // first byte announces (a wider one than needed is read too).
        Require(recordReader.GetCursor() > 0 && recordReader.GetCursor() <= recordLength);
        RequireRoundTrip(*record, endian);
    }
    else
        Require(recordReader.GetCursor() == 0 && !record->IsInitialized());

    // The static check against the update reader: UpdateFormFuzz.cpp.
    MessageValidator updateReader(bytes, length);
    updateReader.SetEndian(endian);
    std::unique_ptr<IFieldType> update = Fresh(type);
    if (update->DeserializeLengthAndBody(updateReader, 255) == STATUS_CODE_SUCCESS)
        RequireRoundTrip(*update, endian);
    else
        Require(updateReader.GetCursor() == 0 && !update->IsInitialized());

    MessageValidator text(bytes, length);
    std::unique_ptr<IFieldType> parsed = Fresh(type);
    if (parsed->FromString(text) == STATUS_CODE_SUCCESS)
    {
        Require(text.IsAtEnd());
        RequireRoundTrip(*parsed, endian);
    }
    else
        Require(text.GetCursor() == 0);
}

} // namespace FieldFuzz
