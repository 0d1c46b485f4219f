// Fuzzes every reader of Date, Time and DateTime on arbitrary bytes: the
// body, record and update forms, Compare,
// IsDifferent and FromString. Properties: nothing crashes; the forms agree
// on what they accept; whatever reads (bytes or text) serializes, and its
// text parses, back to an equal value; a failed read leaves the value and
// the cursor as they were.
#include <ZantorMiddleware/ZantorBase/FieldTypes/Date.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/DateTime.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Time.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using namespace Zantor;

void Require(bool condition)
{
    if (!condition)
        std::abort();
}

// The text to parse back; empty for a year above 9999, whose five digits
// the four-digit text form does not read.
std::string FullText(const Date& value) { return value.GetYear() > 9999 ? std::string() : value.ToString(); }
std::string FullText(const Time& value) { return value.ToString(true); }
std::string FullText(const DateTime& value) { return FullText(value.GetDate()).empty() ? std::string() : value.ToString(true); }

// value must hold what it read: it serializes in the "any" length, reads
// back equal, and its full text parses back equal.
template <typename Value>
void CheckRoundTrip(const Value& value)
{
    unsigned char body[8];
    unsigned int written = 0;
    Require(value.SerializeBody(body, 0xFFFFFFFFu, written) == STATUS_CODE_SUCCESS);
    Require(written == value.GetSerializedLength());
    Value back;
    Require(back.DeserializeBody(body, written) == STATUS_CODE_SUCCESS && back == value);
    bool different = true;
    int order = 1;
    Require(value.IsDifferent(body, written, different) == STATUS_CODE_SUCCESS && !different);
    Require(Value::Compare(body, written, body, written, order) == STATUS_CODE_SUCCESS && order == 0);
    const std::string text = FullText(value);
    if (text.empty())
        return;
    MessageValidator reader(text.data(), static_cast<unsigned int>(text.size()));
    Value parsed;
    Require(parsed.FromString(reader) == STATUS_CODE_SUCCESS && parsed == value);
}

template <typename Value>
void Fuzz(const std::uint8_t* data, unsigned int size, const std::string& known)
{
    Value reference;
    MessageValidator knownText(known.data(), static_cast<unsigned int>(known.size()));
    Require(reference.FromString(knownText) == STATUS_CODE_SUCCESS);

    // The body and the record form of the whole input, and comparisons with
    // it as a body, read it alike.
    Value body = reference, record = reference;
    const StatusCode status = body.DeserializeBody(data, size);
    MessageValidator recordInput(data, size);
    Require(record.Deserialize(recordInput, size) == status && body == record);
    Require(status == STATUS_CODE_SUCCESS ? recordInput.IsAtEnd() : body == reference && recordInput.GetCursor() == 0);
    if (status == STATUS_CODE_SUCCESS)
        CheckRoundTrip(body);
    bool different = false;
    int order = 7;
    const StatusCode differentStatus = reference.IsDifferent(data, size, different);
    Require(size == 0 ? differentStatus == STATUS_CODE_SUCCESS && different : differentStatus == status);
    Require(reference.Compare(data, size, order) == status && (status != STATUS_CODE_SUCCESS || (order == 0) == !different));

    // The update form from the start of the input (the static check is
    // fuzzed against it by UpdateFormFuzz.cpp).
    Value update = reference;
    MessageValidator updateInput(data, size);
    if (update.DeserializeLengthAndBody(updateInput, 0xFFFFFFFFu) == STATUS_CODE_SUCCESS)
        CheckRoundTrip(update);
    else
        Require(update == reference && updateInput.GetCursor() == 0);

    // The input as text.
    Value parsed = reference;
    MessageValidator text(data, size);
    const StatusCode textStatus = parsed.FromString(text);
    Require(textStatus == STATUS_CODE_SUCCESS ? text.IsAtEnd() : parsed == reference && text.GetCursor() == 0);
    if (textStatus == STATUS_CODE_SUCCESS && parsed.IsInitialized())
        CheckRoundTrip(parsed);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto length = static_cast<unsigned int>(size > 64 ? 64 : size);
    Fuzz<Date>(data, length, "1999-12-31");
    Fuzz<Time>(data, length, "01:02:03.004");
    Fuzz<DateTime>(data, length, "1999-12-31 01:02:03.004");
    return 0;
}
