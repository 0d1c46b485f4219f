// The middleware's typical round trip on a few sample quotes: a feed handler
// creates field values by type code, fills them from text and writes them in
// their update form; a receiver reads them back, suppresses unchanged values
// with IsDifferent and prints what changed.
#include <ZantorMiddleware/ZantorBase/FieldTypes/FieldTypeFactory.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using namespace Zantor;

namespace {

// A quote's fields: the type code each is defined with and its largest body.
struct FieldDefinition
{
    const char* name;
    unsigned char type;
    unsigned maxLength;
};
const FieldDefinition kFields[] = {
    {"symbol", FIELD_TYPE_TEXTSTRING, 32}, {"bid", FIELD_TYPE_RATIONAL, 9},  {"ask", FIELD_TYPE_RATIONAL, 9},
    {"size", FIELD_TYPE_UINT, 8},          {"time", FIELD_TYPE_TIME, 4},     {"halted", FIELD_TYPE_BOOLEAN, 1}};
constexpr unsigned kFieldCount = sizeof kFields / sizeof kFields[0];

// Sample quotes as a feed delivers them: one text per field.
const char* const kQuotes[][kFieldCount] = {
    {"EURUSD", "1.08421", "1.08433", "1500000", "14:30:05.125", "false"},
    {"EURUSD", "1.08421", "1.08437", "1500000", "14:30:06.250", "false"},
    {"ES.Z26", "6012.25", "6012.50", "42", "14:30:07.300", "false"},
    {"GC.G27", "2650 3/8", "2650 1/2", "7", "14:30:08", "true"}};

using Value = std::unique_ptr<IFieldType>;

bool Check(StatusCode status, const char* what)
{
    if (status != STATUS_CODE_SUCCESS)
        std::printf("%s failed: %s\n", what, StatusCodeToString(status).c_str());
    return status == STATUS_CODE_SUCCESS;
}

} // namespace

int main()
{
    const FieldTypeFactory& factory = FieldTypeFactory::GetInstance();
    std::vector<Value> received; // the receiver's last value of each field
    for (const FieldDefinition& field : kFields)
        received.emplace_back(factory.Create(field.type));

    for (const auto& quote : kQuotes)
    {
        // Sender: values from text, written in their update form.
        MessageBuilder message;
        for (unsigned i = 0; i < kFieldCount; ++i)
        {
            const Value value(factory.Create(kFields[i].type));
            MessageValidator text(quote[i], static_cast<unsigned>(std::strlen(quote[i])));
            if (!Check(value->FromString(text), kFields[i].name) ||
                !Check(value->SerializeLengthAndBody(message, kFields[i].maxLength), kFields[i].name))
                return 1;
        }
        std::printf("message of %u bytes:", message.GetLength());
        for (unsigned i = 0; i < message.GetLength(); ++i)
            std::printf(" %02x", message.GetBuffer()[i]);
        std::printf("\n");

        // Receiver: each field's body is located, compared with the value
        // held, and read only when it changed. (Bodies compare as they lie
        // in the message because it is little-endian, the bodies' own order.)
        MessageValidator reader(message.GetBuffer(), message.GetLength());
        for (unsigned i = 0; i < kFieldCount; ++i)
        {
            MessageValidator field = reader;
            unsigned offset = 0, length = 0;
            if (!Check(IFieldType::ValidateSerializedLengthAndBody(kFields[i].type, reader, offset, length), "validate"))
                return 1;
            bool different = true;
            received[i]->IsDifferent(message.GetBuffer() + offset, length, different);
            if (!different)
                continue;
            if (!Check(received[i]->DeserializeLengthAndBody(field, kFields[i].maxLength), kFields[i].name))
                return 1;
            std::printf("  %-6s %s\n", kFields[i].name, received[i]->ToString().c_str());
        }
    }
    return 0;
}
