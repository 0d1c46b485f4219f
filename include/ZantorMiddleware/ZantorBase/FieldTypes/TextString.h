// TextString: a short text field value (FIELD_TYPE_TEXTSTRING) of at most
// 255 bytes on the wire, carried with a one-byte length in records and
// updates alike. BinaryString (FIELD_TYPE_BINARYSTRING) derives from it and
// differs only in its text forms; the static operations here serve both
// string codes.
//
// Storage: up to 32 bytes live in an inline buffer and never allocate;
// longer values live in a heap block the value owns (kept for reuse until
// Release, which frees it and points back at the inline buffer). A value
// may hold any number of bytes, the empty run included; only serializing
// limits it to 1..255 bytes. Copies are deep. One thread at a time.
//
//   TextString symbol("EURUSD");
//   symbol.SerializeLengthAndBody(builder, 32);        // 06 'E' 'U' 'R' 'U' 'S' 'D'
//   TextString::Deserialize(validator, 32, data, length);   // points into the message
//
// Wire forms: record and update form are one length byte (1..255) and the
// bytes; the body is the bytes alone. Serializing a value that is not
// initialized: STATUS_CODE_NOT_INITIALIZED; an empty value, one longer than
// 255 bytes or longer than maxLength, or a caller buffer shorter than the
// body: STATUS_CODE_INVALID_PARAMETER; a builder that cannot grow: its
// status. Reading a length of 0, above maxLength, or running past the end
// of the message or body: STATUS_CODE_INVALID_PARAMETER; allocation
// failure: STATUS_CODE_HEAP_EMPTY. Nothing changes on failure (neither the
// value nor the validator's cursor nor the builder).
//
// Text form: the bytes as they are; FromString takes the whole remaining
// text (the empty text gives an initialized empty value).
// Compare orders byte-wise (result -1, 0 or 1), a run that is a prefix of
// another first; it
// answers STATUS_CODE_NOT_INITIALIZED for a value that is not initialized.
// IsDifferent says "different" for a value that is not initialized. Both
// check the body as DeserializeBody does.
#pragma once

#include <ZantorMiddleware/ZantorBase/Detail/TextBytesField.h>
#include <ZantorMiddleware/ZantorBase/Export.h>

#include <string>
#include <string_view>

namespace Zantor {

class ZANTOR_BASE_API TextString : public Detail::TextBytesField
{
public:
    using IFieldType::Deserialize;
    using IFieldType::DeserializeLengthAndBody;
    using IFieldType::Serialize;
    using IFieldType::SerializeBody;
    using IFieldType::SerializeLengthAndBody;

    // Not initialized, empty, inline.
    TextString() noexcept
        : TextBytesField(FIELD_TYPE_TEXTSTRING)
    {
    }
    // Holds text; throws StatusCodeException(STATUS_CODE_HEAP_EMPTY) when
    // memory runs out, STATUS_CODE_INVALID_PARAMETER at 4 GiB or more.
    explicit TextString(std::string_view text);
    TextString(const TextString&) = default;
    TextString& operator=(const TextString&) = default;
    ~TextString() override = default;

    // Set, GetData, GetLength, UsesInlineBuffer, OwnsHeapBuffer, Reset,
    // Release, Compare, Convert (from TextString, TextArray, BinaryString
    // and BinaryArray; STATUS_CODE_MISMATCH for any other type), the text
    // forms, DeserializeBody and IsDifferent come from TextBytesField.
    StatusCode Serialize(MessageBuilder& builder, unsigned int maxLength) const override;
    StatusCode SerializeBody(void* buffer, unsigned int length, unsigned int& written) const override;
    StatusCode SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const override;
    StatusCode Deserialize(MessageValidator& validator, unsigned int maxLength) override;
    StatusCode DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength) override;
    // 1 + length; 0 when not initialized.
    unsigned int GetSerializedLength() const noexcept override;

    // Raw bytes without a value object, for both string codes.
    // Serialize and SerializeLengthAndBody append the length byte and the
    // length bytes at data; SerializeBody copies them to buffer (written
    // receives the count).
    static StatusCode Serialize(MessageBuilder& builder, unsigned int maxLength, const unsigned char* data,
                                unsigned int length);
    static StatusCode SerializeBody(void* buffer, unsigned int bufferLength, unsigned int& written,
                                    const unsigned char* data, unsigned int length) noexcept;
    static StatusCode SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength,
                                             const unsigned char* data, unsigned int length);
    // Reads a length byte and the bytes: data points into the validator's
    // buffer (nothing is copied) and the cursor moves past the field.
    static StatusCode Deserialize(MessageValidator& validator, unsigned int maxLength, const unsigned char*& data,
                                  unsigned int& length) noexcept;
    static StatusCode DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength,
                                               const unsigned char*& data, unsigned int& length) noexcept;
    // Checks the update form at the cursor, moves past it and reports the
    // body's offset in the validator's buffer and its length.
    static StatusCode ValidateSerializedLengthAndBody(MessageValidator& validator, unsigned int& bodyOffset,
                                                      unsigned int& bodyLength) noexcept;

protected:
    explicit TextString(unsigned char type) noexcept
        : TextBytesField(type)
    {
    }
};

} // namespace Zantor
