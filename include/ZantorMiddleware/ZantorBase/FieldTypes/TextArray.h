// TextArray: a text field value (FIELD_TYPE_TEXTARRAY) whose record form
// has the fixed length of its field definition and whose update form
// carries a one-byte length. BinaryArray (FIELD_TYPE_BINARYARRAY) derives
// from it and differs only in its text forms; the static operations here
// serve both array codes.
//
// Storage as TextString's: up to 32 bytes inline without allocation, longer
// values in an owned heap block that Release frees. Copies are deep. One
// thread at a time.
//
//   TextArray name("ACME");
//   name.Serialize(builder, 8);          // 'A' 'C' 'M' 'E' 00 00 00 00
//   name.SerializeLengthAndBody(builder, 8);   // 04 'A' 'C' 'M' 'E'
//
// Wire forms:
// - record form (Serialize, Deserialize; maxLength / length is the record
//   length of the field definition): exactly that many bytes, the value
//   followed by zero bytes up to the record length. A record length of 0,
//   or a value longer than it: STATUS_CODE_INVALID_PARAMETER. Reading takes
//   the record length's bytes as they are, padding included (a value that
//   was padded reads back with its zero bytes).
// - update form: one length byte (1..255, at most maxLength), then the
//   bytes; a value longer than 255 bytes has no update form.
// - body: the bytes alone, any non-zero length.
// An empty value cannot be serialized in any form
// (STATUS_CODE_INVALID_PARAMETER); a value that is not initialized gives
// STATUS_CODE_NOT_INITIALIZED; a caller buffer shorter than the body:
// STATUS_CODE_INVALID_PARAMETER; a builder that cannot grow: its status.
// Reading a length of 0, above maxLength, or past the end of the message
// or body: STATUS_CODE_INVALID_PARAMETER; allocation failure:
// STATUS_CODE_HEAP_EMPTY. Nothing changes on failure (value, cursor,
// builder).
//
// Text form, Compare and IsDifferent as TextString's (an empty body is
// STATUS_CODE_INVALID_PARAMETER).
#pragma once

#include <ZantorMiddleware/ZantorBase/Detail/TextBytesField.h>
#include <ZantorMiddleware/ZantorBase/Export.h>

#include <string>
#include <string_view>

namespace Zantor {

class ZANTOR_BASE_API TextArray : public Detail::TextBytesField
{
public:
    using IFieldType::Deserialize;
    using IFieldType::DeserializeLengthAndBody;
    using IFieldType::Serialize;
    using IFieldType::SerializeBody;
    using IFieldType::SerializeLengthAndBody;

    TextArray() noexcept
        : TextBytesField(FIELD_TYPE_TEXTARRAY)
    {
    }
    // Holds text; throws StatusCodeException(STATUS_CODE_HEAP_EMPTY) when
    // memory runs out, STATUS_CODE_INVALID_PARAMETER at 4 GiB or more.
    explicit TextArray(std::string_view text);
    TextArray(const TextArray&) = default;
    TextArray& operator=(const TextArray&) = default;
    ~TextArray() override = default;

    // Set, GetData, GetLength, UsesInlineBuffer, OwnsHeapBuffer, Reset,
    // Release, Compare, Convert, the text forms, DeserializeBody and
    // IsDifferent come from TextBytesField, as TextString's.
    StatusCode Serialize(MessageBuilder& builder, unsigned int maxLength) const override;
    StatusCode SerializeBody(void* buffer, unsigned int length, unsigned int& written) const override;
    StatusCode SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const override;
    StatusCode Deserialize(MessageValidator& validator, unsigned int length) override;
    StatusCode DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength) override;
    // The value's length (a record is as long as its field definition says);
    // 0 when not initialized.
    unsigned int GetSerializedLength() const noexcept override;

    // Raw bytes without a value object, for both array codes. Serialize
    // writes the record form with maxLength as the record length;
    // SerializeLengthAndBody the update form; SerializeBody the bytes.
    static StatusCode Serialize(MessageBuilder& builder, unsigned int maxLength, const unsigned char* data,
                                unsigned int length);
    static StatusCode SerializeBody(void* buffer, unsigned int bufferLength, unsigned int& written,
                                    const unsigned char* data, unsigned int length) noexcept;
    static StatusCode SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength,
                                             const unsigned char* data, unsigned int length);
    // Deserialize takes a record of maxLength bytes, DeserializeLengthAndBody
    // an update-form field: data points into the validator's buffer
    // (nothing is copied) and the cursor moves past the field.
    static StatusCode Deserialize(MessageValidator& validator, unsigned int maxLength, const unsigned char*& data,
                                  unsigned int& length) noexcept;
    static StatusCode DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength,
                                               const unsigned char*& data, unsigned int& length) noexcept;
    // Checks the update form at the cursor, moves past it and reports the
    // body's offset in the validator's buffer and its length.
    static StatusCode ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                      unsigned int& bodyLength) noexcept;

protected:
    explicit TextArray(unsigned char type) noexcept
        : TextBytesField(type)
    {
    }
};

} // namespace Zantor
