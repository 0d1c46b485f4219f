// MessageHandler: the common base of MessageBuilder and MessageValidator. It
// owns the byte-order enumeration used by every operation that writes or
// reads a multi-byte integer, and the handler's own byte order: the order in
// which field values (FieldTypes/) write and read their lengths and integer
// bodies through this builder or validator. It is little-endian unless the
// owner sets another; operations that take an explicit Endian ignore it.
#pragma once

#include <ZantorMiddleware/ZantorBase/Export.h>

namespace Zantor {

class ZANTOR_BASE_API MessageHandler
{
public:
    // Byte order of an integer on the wire. Any non-zero value is treated as
    // big-endian.
    enum Endian : unsigned char
    {
        ENDIAN_LITTLE = 0, // least significant byte first: the machine's order
        ENDIAN_BIG = 1     // most significant byte first (network order)
    };

    static constexpr bool IsBigEndian(Endian endian) noexcept { return endian != ENDIAN_LITTLE; }

    // The byte order field values use through this handler.
    Endian GetEndian() const noexcept { return endian_; }
    void SetEndian(Endian endian) noexcept { endian_ = endian; }

protected:
    MessageHandler() noexcept = default;
    ~MessageHandler() = default;

private:
    Endian endian_ = ENDIAN_LITTLE;
};

} // namespace Zantor
