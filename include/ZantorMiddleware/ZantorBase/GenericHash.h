// GenericHash: a general-purpose 32-bit hash of a byte string for hash
// tables and bucket selection (Bob Jenkins's 1996 "lookup2" hash). Every bit
// of the key affects every bit of the result. Not for cryptographic use.
//
// The key's bytes are read as little-endian 32-bit words on every platform,
// so a given key and initial value hash to the same value everywhere.
// Thread safety: a pure function.
//
//   std::uint32_t h = GenericHash(key.data(), static_cast<unsigned>(key.size()), 0);
//   h = GenericHash(next, nextSize, h);   // chains several pieces
#pragma once

#include <ZantorMiddleware/ZantorBase/Export.h>

#include <cstdint>

namespace Zantor {

// Returns the lookup2 hash of the size bytes at data, started from
// initialValue (any value; the previous hash when chaining). data may be
// null when size is 0.
ZANTOR_BASE_API std::uint32_t GenericHash(const void* data, unsigned size, std::uint32_t initialValue);

} // namespace Zantor
