// Arbitrary bytes read as the update form of a type code that byte 0 picks
// (all fourteen codes and invalid ones), in the byte order byte 1 picks.
// IFieldType::ValidateSerializedLengthAndBody accepts exactly what a value's
// DeserializeLengthAndBody accepts, at the same place; the body it reports
// is the value's body (checked on little-endian input, where the body in
// the message is the body). Round trips of what reads are the per-type
// targets' part (NumericField, DateTimeField, ByteField).
#include "FieldFuzzCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace Zantor;
    using FieldFuzz::Require;
    if (size < 2 || size > 0xFFFF)
        return 0;
    const auto type = static_cast<unsigned char>(data[0] % 16);
    const auto endian = static_cast<MessageHandler::Endian>(data[1] & 1u);
    const auto length = static_cast<unsigned>(size - 2);
    MessageValidator checker(data + 2, length), reader(data + 2, length);
    checker.SetEndian(endian);
    reader.SetEndian(endian);
    unsigned offset = 0, bodyLength = 0;
    const StatusCode checked = IFieldType::ValidateSerializedLengthAndBody(type, checker, offset, bodyLength);
    std::unique_ptr<IFieldType> value(FieldTypeFactory::GetInstance().Create(type));
    if (value == nullptr)
        return Require(checked == STATUS_CODE_INVALID_PARAMETER && checker.GetCursor() == 0), 0;
    Require(value->DeserializeLengthAndBody(reader, ~0u) == checked && reader.GetCursor() == checker.GetCursor());
    if (checked != STATUS_CODE_SUCCESS)
        return Require(checker.GetCursor() == 0 && !value->IsInitialized()), 0;
    Require(offset + bodyLength == checker.GetCursor());
    bool different = true;
    if (endian == MessageHandler::ENDIAN_LITTLE)
        Require(value->IsDifferent(data + 2 + offset, bodyLength, different) == STATUS_CODE_SUCCESS && !different);
    return 0;
}
