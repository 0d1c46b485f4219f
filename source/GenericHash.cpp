// Bob Jenkins's lookup2 hash (1996): three 32-bit words of state, mixed
// after every 12 bytes of key and once more after the tail and the length.
#include <ZantorMiddleware/ZantorBase/GenericHash.h>

#include <cstring>

namespace Zantor {

namespace {

// Reads a little-endian 32-bit word from any address.
inline std::uint32_t LoadLittle32(const unsigned char* p) noexcept
{
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    std::uint32_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
#else
    return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
           (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
#endif
}

inline void Mix(std::uint32_t& a, std::uint32_t& b, std::uint32_t& c) noexcept
{
    a -= b; a -= c; a ^= (c >> 13);
    b -= c; b -= a; b ^= (a << 8);
    c -= a; c -= b; c ^= (b >> 13);
    a -= b; a -= c; a ^= (c >> 12);
    b -= c; b -= a; b ^= (a << 16);
    c -= a; c -= b; c ^= (b >> 5);
    a -= b; a -= c; a ^= (c >> 3);
    b -= c; b -= a; b ^= (a << 10);
    c -= a; c -= b; c ^= (b >> 15);
}

} // namespace

std::uint32_t GenericHash(const void* data, unsigned size, std::uint32_t initialValue)
{
    const auto* k = static_cast<const unsigned char*>(data);
    std::uint32_t a = 0x9e3779b9u; // the golden ratio; an arbitrary value
    std::uint32_t b = 0x9e3779b9u;
    std::uint32_t c = initialValue;

    unsigned remaining = size;
    while (remaining >= 12)
    {
        a += LoadLittle32(k);
        b += LoadLittle32(k + 4);
        c += LoadLittle32(k + 8);
        Mix(a, b, c);
        k += 12;
        remaining -= 12;
    }

    // The tail; the lowest byte of c is taken by the length.
    c += size;
    switch (remaining)
    {
    case 11: c += static_cast<std::uint32_t>(k[10]) << 24; [[fallthrough]];
    case 10: c += static_cast<std::uint32_t>(k[9]) << 16; [[fallthrough]];
    case 9: c += static_cast<std::uint32_t>(k[8]) << 8; [[fallthrough]];
    case 8: b += static_cast<std::uint32_t>(k[7]) << 24; [[fallthrough]];
    case 7: b += static_cast<std::uint32_t>(k[6]) << 16; [[fallthrough]];
    case 6: b += static_cast<std::uint32_t>(k[5]) << 8; [[fallthrough]];
    case 5: b += k[4]; [[fallthrough]];
    case 4: a += static_cast<std::uint32_t>(k[3]) << 24; [[fallthrough]];
    case 3: a += static_cast<std::uint32_t>(k[2]) << 16; [[fallthrough]];
    case 2: a += static_cast<std::uint32_t>(k[1]) << 8; [[fallthrough]];
    case 1: a += k[0]; [[fallthrough]];
    default: break;
    }
    Mix(a, b, c);
    return c;
}

} // namespace Zantor
