// BinaryString: TextString's value with a hexadecimal text form.
#include <ZantorMiddleware/ZantorBase/FieldTypes/BinaryString.h>

#include <ZantorMiddleware/ZantorBase/Exception.h>

#include "FieldTypes/ByteFieldWire.h"

namespace Zantor {

BinaryString::BinaryString(std::string_view data)
    : BinaryString()
{
    const StatusCode status = Set(data);
    if (status != STATUS_CODE_SUCCESS)
        ZANTOR_THROW(StatusCodeException, status);
}

std::string BinaryString::ToString() const
{
    return IsInitialized() ? Detail::HexText(bytes_.Data(), bytes_.Length()) : NOT_INITIALIZED_TEXT;
}

std::string BinaryString::ToString(bool asHex) const
{
    return asHex ? ToString() : TextString::ToString();
}

StatusCode BinaryString::FromString(MessageValidator& text)
{
    StatusCode status;
    if (FromNotInitializedText(text, status))
        return status;
    Detail::FieldBytes bytes;
    status = Detail::ParseHexText(text, bytes);
    if (status == STATUS_CODE_SUCCESS)
        Adopt(static_cast<Detail::FieldBytes&&>(bytes));
    return status;
}

const char* BinaryString::GetFromStringFormat() const noexcept
{
    return "0x[hexadecimal digit pairs]";
}

} // namespace Zantor
