// Fuzzes the text readers of the text, binary and blob values and both
// Base64 decoders. Byte 0 picks the reader; the rest is the text. A text
// that reads must print as a text that reads back to the same value; a
// Base64 text that decodes must be exactly what the encoder writes.
#include <ZantorMiddleware/ZantorBase/FieldTypes/BinaryArray.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/FieldTypeFactory.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

using namespace Zantor;

static void Check(bool condition)
{
    if (!condition)
        std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1 || size > 0xFFFF)
        return 0;
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
