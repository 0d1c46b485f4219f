// TextBytesField: the value handling TextString and TextArray (and so
// BinaryString and BinaryArray) have in common: the bytes in a FieldBytes,
// setting, resetting and releasing them, conversion between the four
// string and array codes, the raw text form, and the checks of a body.
// A body is any non-zero run; for the string codes at most 255 bytes.
// Not for use on its own: the field types derive from it.
#pragma once

#include <ZantorMiddleware/ZantorBase/Detail/FieldBytes.h>
#include <ZantorMiddleware/ZantorBase/Export.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/IFieldType.h>

#include <string>
#include <string_view>

namespace Zantor::Detail {

class ZANTOR_BASE_API TextBytesField : public IFieldType
{
public:
    using IFieldType::DeserializeBody;

    // Copies length bytes (which may lie in this value) and marks the value
    // initialized. STATUS_CODE_INVALID_PARAMETER for a null data with a
    // non-zero length (or a text of 4 GiB or more); STATUS_CODE_HEAP_EMPTY.
    // Nothing changes on failure.
    StatusCode Set(const void* data, unsigned int length) noexcept;
    StatusCode Set(std::string_view text) noexcept;
    // The bytes; length 0 when not initialized.
    const unsigned char* GetData() const noexcept { return bytes_.Data(); }
    unsigned int GetLength() const noexcept { return bytes_.Length(); }
    // Where the bytes live: the inline buffer, and whether a heap block is
    // owned (it may be, while a short value sits inline).
    bool UsesInlineBuffer() const noexcept { return bytes_.UsesInlineBuffer(); }
    bool OwnsHeapBuffer() const noexcept { return bytes_.OwnsHeapBuffer(); }

    void Reset() noexcept override;
    void Release() noexcept override;
    StatusCode Compare(const void* body, unsigned int bodyLength, int& result) const override;
    // From TextString, TextArray, BinaryString and BinaryArray (a copy of
    // the bytes); STATUS_CODE_MISMATCH for any other type.
    StatusCode Convert(const IFieldType* other) override;
    std::string ToString() const override;
    StatusCode FromString(MessageValidator& text) override;
    const char* GetFromStringFormat() const noexcept override;
    StatusCode DeserializeBody(const void* body, unsigned int length) override;
    // The value's length; 0 when not initialized.
    unsigned int GetSerializedBodyLength() const noexcept override;
    StatusCode IsDifferent(const void* body, unsigned int bodyLength, bool& different) const override;

protected:
    // Reads a field from a validator: data points into its buffer and the
    // cursor moves past the field.
    using ReadBytes = StatusCode (*)(MessageValidator& validator, unsigned int maxLength, const unsigned char*& data,
                                     unsigned int& length);

    explicit TextBytesField(unsigned char type) noexcept
        : IFieldType(type)
    {
    }
    TextBytesField(const TextBytesField&) = default;
    TextBytesField& operator=(const TextBytesField&) = default;
    ~TextBytesField() override = default;

    // Takes bytes (a decoded text form) as the value and marks it initialized.
    void Adopt(FieldBytes&& bytes) noexcept;
    // Reads with read from a copy of validator and sets the value; the
    // cursor moves only when both succeed.
    StatusCode SetFrom(MessageValidator& validator, unsigned int maxLength, ReadBytes read);
    // Whether body is a valid body for this value's type.
    bool IsValidBody(const void* body, unsigned int length) const noexcept;

    FieldBytes bytes_;
};

} // namespace Zantor::Detail
