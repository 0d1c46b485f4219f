// BinaryString: a short binary field value (FIELD_TYPE_BINARYSTRING). Wire
// forms, storage, comparison and conversion are TextString's; only the text
// forms differ: "0x" followed by the bytes in lower-case hexadecimal, two
// digits per byte, high digit first.
//
// FromString reads that form: an optional "0x" or "0X", then pairs of
// hexadecimal digits of either case, up to the end of the text ("0x" alone
// is the empty value). An odd number of digits or any other character:
// STATUS_CODE_INVALID_FORMAT, nothing changes.
//
//   BinaryString key;
//   MessageValidator text("0x0aff", 6);
//   key.FromString(text);          // bytes 0a ff; key.ToString() == "0x0aff"
#pragma once

#include <ZantorMiddleware/ZantorBase/FieldTypes/TextString.h>

namespace Zantor {

class ZANTOR_BASE_API BinaryString : public TextString
{
public:
    BinaryString() noexcept
        : TextString(FIELD_TYPE_BINARYSTRING)
    {
    }
    // Holds the raw bytes of data; throws as TextString's constructor.
    explicit BinaryString(std::string_view data);

    // The hexadecimal form; "[NotInitialized]" when not initialized.
    std::string ToString() const override;
    // The hexadecimal form when asHex, else the raw bytes.
    std::string ToString(bool asHex) const;
    StatusCode FromString(MessageValidator& text) override;
    const char* GetFromStringFormat() const noexcept override;
};

} // namespace Zantor
