// Fuzzes the readers of the text, binary and blob values and both Base64
// decoders. Byte 0 below 128 reads wire forms: it picks the type (codes 7
// to 12) and the byte order, byte 1 the form and the maximum length; the
// rest is the input. Whatever reads must write back as the very bytes it
// was read from (the update form's static check is fuzzed against the
// update reader by UpdateFormFuzz.cpp). Byte 0 from 128 reads text: its
// low three bits pick the reader (a type's FromString or a Base64 decoder),
// the rest is the text. A text that reads must print as a text that reads
// back to the same value; a Base64 text that decodes must be exactly what
// the encoder writes.
#include <ZantorMiddleware/ZantorBase/FieldTypes/BinaryArray.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/FieldTypeFactory.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using namespace Zantor;

static void Check(bool condition)
{
    if (!condition)
        std::abort();
}

static int ReadText(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size >= 1 && size <= 0xFFFF && data[0] >= 128)
        return ReadText(data, size);
    if (size < 2 || size > 0xFFFF)
        return 0;
    const auto type = static_cast<unsigned char>(FIELD_TYPE_TEXTSTRING + data[0] % 6);
    const auto endian = static_cast<MessageHandler::Endian>(data[0] / 6 % 2);
    const unsigned form = data[1] % 3, max = data[1] < 192 ? data[1] : ~0u;
    const uint8_t* input = data + 2;
    const auto length = static_cast<unsigned>(size - 2);
    std::unique_ptr<IFieldType> value(FieldTypeFactory::GetInstance().Create(type));

    MessageValidator validator(input, length);
    validator.SetEndian(endian);
    StatusCode status;
    if (form == 0)
        status = value->DeserializeBody(input, length);
    else if (form == 1)
        status = value->Deserialize(validator, max);
    else
        status = value->DeserializeLengthAndBody(validator, ~0u);
    if (status != STATUS_CODE_SUCCESS)
        return 0;

    std::vector<unsigned char> body(value->GetSerializedBodyLength());
    unsigned written = 0;
    Check(value->SerializeBody(body.data(), static_cast<unsigned>(body.size()), written) == STATUS_CODE_SUCCESS);
    bool different = true;
    int order = 1;
    Check(value->IsDifferent(body.data(), written, different) == STATUS_CODE_SUCCESS && !different);
    Check(value->Compare(body.data(), written, order) == STATUS_CODE_SUCCESS && order == 0);
    if (form == 0)
    {
        Check(written == length && std::memcmp(body.data(), input, length) == 0);
        return 0;
    }
    MessageBuilder builder;
    builder.SetEndian(endian);
    Check((form == 1 ? value->Serialize(builder, max) : value->SerializeLengthAndBody(builder, ~0u)) == STATUS_CODE_SUCCESS);
    Check(builder.GetLength() == validator.GetCursor() && std::memcmp(builder.GetBuffer(), input, builder.GetLength()) == 0);
    return 0;
}

static int ReadText(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    const unsigned reader = data[0] % 8;
    if (reader >= 6)
    {
        BinaryArray value;
        const bool padded = reader == 6;
        const StatusCode status = padded ? value.FromBase64String<true>(text) : value.FromBase64String<false>(text);
        Check(status == STATUS_CODE_SUCCESS || status == STATUS_CODE_INVALID_FORMAT);
        if (status == STATUS_CODE_SUCCESS)
            Check((padded ? value.ToBase64String<true>() : value.ToBase64String<false>()) == text);
        return 0;
    }
    const auto type = static_cast<unsigned char>(FIELD_TYPE_TEXTSTRING + reader);
    std::unique_ptr<IFieldType> value(FieldTypeFactory::GetInstance().Create(type)),
        again(FieldTypeFactory::GetInstance().Create(type));
    MessageValidator validator(text.data(), static_cast<unsigned>(text.size()));
    if (value->FromString(validator) != STATUS_CODE_SUCCESS)
    {
        Check(validator.GetCursor() == 0);
        return 0;
    }
    Check(validator.IsAtEnd());
    const std::string printed = value->ToString();
    MessageValidator reread(printed.data(), static_cast<unsigned>(printed.size()));
    Check(again->FromString(reread) == STATUS_CODE_SUCCESS && again->ToString() == printed);
    if (type == FIELD_TYPE_TEXTSTRING || type == FIELD_TYPE_TEXTARRAY)
        Check(printed == text);
    return 0;
}
