// Translation between errno values and the library's OS error numbers, which
// are Win32 error numbers on every platform. Private to the Linux sources:
// every Linux file that reports an OS error goes through these two functions
// (or GetLastOsError()), so a status, a log line or an OsException means the
// same on Linux and on Windows.
//
// Encoding: an errno with a Win32 or Windows Sockets equivalent becomes that
// number (ENOENT 2, EACCES and EPERM 5, EEXIST 80, EINVAL 87, ETIMEDOUT 10060,
// ...). Every other errno e is kept losslessly as 0x20000000 | e: bit 29 is
// the Win32 "customer" bit, which no system error number uses. errno 0 is 0.
//
// Thread safety: pure functions over constant tables.
//
//   if (::ftruncate(fd, size) != 0)
//       return OsErrorToStatusCode(ErrnoToOsError(errno), STATUS_CODE_FAILURE);
#pragma once

#include <cstdint>

namespace Zantor {

// Bit 29 marks an errno value without a Win32 equivalent.
inline constexpr std::uint32_t OS_ERROR_ERRNO_FLAG = 0x20000000;

// The Win32 number of an errno value (0 for 0). A negative value or one of
// 2^28 or more (never an errno) keeps only its low 28 bits under the flag.
std::uint32_t ErrnoToOsError(int errnoValue) noexcept;

// The errno value of a Win32 number: the inverse of ErrnoToOsError (where
// several errno values share a number, the first of the table, e.g. EACCES
// for 5), also for a few Win32 numbers that only Windows produces (183
// ERROR_ALREADY_EXISTS gives EEXIST). 0 gives 0; a number without an errno
// equivalent gives -1.
int OsErrorToErrno(std::uint32_t osError) noexcept;

} // namespace Zantor
