// OS error numbers on Linux: errno values translated into Win32 numbers and
// described through strerror. The one errno/Win32 table of the library.
#include "Linux/OsErrorLinux.h"
#include "SystemErrorText.h"

#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string.h>

namespace Zantor {

namespace {

struct ErrnoMapping
{
    int errnoValue;
    std::uint32_t osError;
};

// errno values with a Win32 or Windows Sockets equivalent. Where two errno
// values share a number, the first row is the one the number maps back to.
constexpr ErrnoMapping kErrnoMappings[] = {
    {ENOTTY, 1},           // ERROR_INVALID_FUNCTION
    {ENOENT, 2},           // ERROR_FILE_NOT_FOUND
    {EMFILE, 4},           // ERROR_TOO_MANY_OPEN_FILES
    {ENFILE, 4},
    {EACCES, 5},           // ERROR_ACCESS_DENIED
    {EPERM, 5},
    {EBADF, 6},            // ERROR_INVALID_HANDLE
    {ENOMEM, 8},           // ERROR_NOT_ENOUGH_MEMORY
    {ENOEXEC, 11},         // ERROR_BAD_FORMAT
    {EBADMSG, 13},         // ERROR_INVALID_DATA
    {EXDEV, 17},           // ERROR_NOT_SAME_DEVICE
    {EROFS, 19},           // ERROR_WRITE_PROTECT
    {ENODEV, 20},          // ERROR_BAD_UNIT
    {ENOMEDIUM, 21},       // ERROR_NOT_READY
    {ETXTBSY, 32},         // ERROR_SHARING_VIOLATION
    {ENOTSUP, 50},         // ERROR_NOT_SUPPORTED (EOPNOTSUPP is the same value)
    {ENOSYS, 50},
    {EEXIST, 80},          // ERROR_FILE_EXISTS
    {EINVAL, 87},          // ERROR_INVALID_PARAMETER
    {EPIPE, 109},          // ERROR_BROKEN_PIPE
    {ENOSPC, 112},         // ERROR_DISK_FULL
    {ETIME, 121},          // ERROR_SEM_TIMEOUT
    {ERANGE, 122},         // ERROR_INSUFFICIENT_BUFFER
    {ECHILD, 128},         // ERROR_WAIT_NO_CHILDREN
    {ESPIPE, 132},         // ERROR_SEEK_ON_DEVICE
    {ENOTEMPTY, 145},      // ERROR_DIR_NOT_EMPTY
    {ENOLCK, 167},         // ERROR_LOCK_FAILED
    {EBUSY, 170},          // ERROR_BUSY
    {ENAMETOOLONG, 206},   // ERROR_FILENAME_EXCED_RANGE
    {EFBIG, 223},          // ERROR_FILE_TOO_LARGE
    {ENOTDIR, 267},        // ERROR_DIRECTORY
    {EISDIR, 336},         // ERROR_DIRECTORY_NOT_SUPPORTED
    {EFAULT, 487},         // ERROR_INVALID_ADDRESS
    {EOVERFLOW, 534},      // ERROR_ARITHMETIC_OVERFLOW
    {ECANCELED, 995},      // ERROR_OPERATION_ABORTED
    {EILSEQ, 1113},        // ERROR_NO_UNICODE_TRANSLATION
    {EIO, 1117},           // ERROR_IO_DEVICE
    {EDEADLK, 1131},       // ERROR_POSSIBLE_DEADLOCK
    {EMLINK, 1142},        // ERROR_TOO_MANY_LINKS
    {ELOOP, 1921},         // ERROR_CANT_RESOLVE_FILENAME
    {EINTR, 10004},        // WSAEINTR
    {EAGAIN, 10035},       // WSAEWOULDBLOCK (EWOULDBLOCK is the same value)
    {EINPROGRESS, 10036},  // WSAEINPROGRESS
    {EALREADY, 10037},     // WSAEALREADY
    {ENOTSOCK, 10038},     // WSAENOTSOCK
    {EDESTADDRREQ, 10039}, // WSAEDESTADDRREQ
    {EMSGSIZE, 10040},     // WSAEMSGSIZE
    {EPROTOTYPE, 10041},   // WSAEPROTOTYPE
    {ENOPROTOOPT, 10042},  // WSAENOPROTOOPT
    {EPROTONOSUPPORT, 10043}, // WSAEPROTONOSUPPORT
    {ESOCKTNOSUPPORT, 10044}, // WSAESOCKTNOSUPPORT
    {EPFNOSUPPORT, 10046}, // WSAEPFNOSUPPORT
    {EAFNOSUPPORT, 10047}, // WSAEAFNOSUPPORT
    {EADDRINUSE, 10048},   // WSAEADDRINUSE
    {EADDRNOTAVAIL, 10049}, // WSAEADDRNOTAVAIL
    {ENETDOWN, 10050},     // WSAENETDOWN
    {ENETUNREACH, 10051},  // WSAENETUNREACH
    {ENETRESET, 10052},    // WSAENETRESET
    {ECONNABORTED, 10053}, // WSAECONNABORTED
    {ECONNRESET, 10054},   // WSAECONNRESET
    {ENOBUFS, 10055},      // WSAENOBUFS
    {EISCONN, 10056},      // WSAEISCONN
    {ENOTCONN, 10057},     // WSAENOTCONN
    {ESHUTDOWN, 10058},    // WSAESHUTDOWN
    {ETOOMANYREFS, 10059}, // WSAETOOMANYREFS
    {ETIMEDOUT, 10060},    // WSAETIMEDOUT
    {ECONNREFUSED, 10061}, // WSAECONNREFUSED
    {EHOSTDOWN, 10064},    // WSAEHOSTDOWN
    {EHOSTUNREACH, 10065}, // WSAEHOSTUNREACH
    {EUSERS, 10068},       // WSAEUSERS
    {EDQUOT, 10069},       // WSAEDQUOT
    {ESTALE, 10070},       // WSAESTALE
    {EREMOTE, 10071},      // WSAEREMOTE
};

// Win32 numbers that Linux never produces from an errno but that describe
// the same condition, so their text is the errno's.
constexpr ErrnoMapping kReverseOnlyMappings[] = {
    {ENOMEM, 14},          // ERROR_OUTOFMEMORY
    {ENOSYS, 120},         // ERROR_CALL_NOT_IMPLEMENTED
    {EEXIST, 183},         // ERROR_ALREADY_EXISTS
    {ECONNREFUSED, 1225},  // ERROR_CONNECTION_REFUSED
    {ETIMEDOUT, 1460},     // ERROR_TIMEOUT
    {EACCES, 10013},       // WSAEACCES
    {EFAULT, 10014},       // WSAEFAULT
    {EINVAL, 10022},       // WSAEINVAL
    {EMFILE, 10024},       // WSAEMFILE
    {ENOTSUP, 10045},      // WSAEOPNOTSUPP
};

struct OwnText
{
    std::uint32_t osError;
    const char* text;
};

// Win32 numbers that no errno describes, or whose errno twin's text names a
// different condition (ENOTTY's "Inappropriate ioctl for device" for
// ERROR_INVALID_FUNCTION, ERANGE's "Numerical result out of range" for
// ERROR_INSUFFICIENT_BUFFER): their text is the library's, worded after the
// Windows message and in strerror's style.
constexpr OwnText kOwnTexts[] = {
    {1, "Incorrect function"},                                  // ERROR_INVALID_FUNCTION
    {3, "The system cannot find the path specified"},           // ERROR_PATH_NOT_FOUND
    {86, "The specified network password is not correct"},      // ERROR_INVALID_PASSWORD
    {122, "The data area passed to a system call is too small"}, // ERROR_INSUFFICIENT_BUFFER
    {11001, "No such host is known"},                           // WSAHOST_NOT_FOUND
};

constexpr bool TablesAreConsistent()
{
    for (std::size_t i = 0; i < std::size(kErrnoMappings); ++i)
    {
        const ErrnoMapping& row = kErrnoMappings[i];
        if (row.errnoValue <= 0 || row.osError == 0 || (row.osError & OS_ERROR_ERRNO_FLAG) != 0)
            return false;
        for (std::size_t j = i + 1; j < std::size(kErrnoMappings); ++j)
        {
            if (kErrnoMappings[j].errnoValue == row.errnoValue)
                return false; // an errno value with two numbers
        }
    }
    for (const ErrnoMapping& extra : kReverseOnlyMappings)
    {
        for (const ErrnoMapping& row : kErrnoMappings)
        {
            if (row.osError == extra.osError)
                return false; // the number already maps back through the main table
        }
    }
    return true;
}
static_assert(TablesAreConsistent());

constexpr std::uint32_t kErrnoPayloadMask = 0x0FFFFFFF;
constexpr std::uint32_t kErrnoFlagMask = 0xF0000000;

// strerror_r exists in a GNU form (returns the text) and an XSI form
// (returns 0 and fills the buffer); these pick the text from either.
[[maybe_unused]] const char* StrerrorResult(int result, const char* buffer) noexcept
{
    return result == 0 ? buffer : nullptr;
}

[[maybe_unused]] const char* StrerrorResult(const char* result, const char*) noexcept
{
    return result;
}

// True when the C library has a description of errnoValue.
bool IsKnownErrno(int errnoValue) noexcept
{
#if defined(__GLIBC__) && (__GLIBC__ > 2 || (__GLIBC__ == 2 && __GLIBC_MINOR__ >= 32))
    return ::strerrordesc_np(errnoValue) != nullptr;
#else
    return errnoValue > 0;
#endif
}

} // namespace

std::uint32_t ErrnoToOsError(int errnoValue) noexcept
{
    if (errnoValue == 0)
        return 0;
    for (const ErrnoMapping& row : kErrnoMappings)
    {
        if (row.errnoValue == errnoValue)
            return row.osError;
    }
    return OS_ERROR_ERRNO_FLAG | (static_cast<std::uint32_t>(errnoValue) & kErrnoPayloadMask);
}

int OsErrorToErrno(std::uint32_t osError) noexcept
{
    if (osError == 0)
        return 0;
    if ((osError & kErrnoFlagMask) == OS_ERROR_ERRNO_FLAG)
    {
        const std::uint32_t payload = osError & kErrnoPayloadMask;
        return payload != 0 ? static_cast<int>(payload) : -1;
    }
    for (const ErrnoMapping& row : kErrnoMappings)
    {
        if (row.osError == osError)
            return row.errnoValue;
    }
    for (const ErrnoMapping& row : kReverseOnlyMappings)
    {
        if (row.osError == osError)
            return row.errnoValue;
    }
    return -1;
}

bool Detail::GetSystemErrorText(std::uint32_t osError, std::string& text)
{
    for (const OwnText& own : kOwnTexts)
    {
        if (own.osError == osError)
        {
            text = own.text;
            return true;
        }
    }
    const int errnoValue = OsErrorToErrno(osError);
    if (errnoValue < 0 || !IsKnownErrno(errnoValue))
        return false;
    char buffer[256];
    const char* result = StrerrorResult(::strerror_r(errnoValue, buffer, sizeof buffer), buffer);
    if (result == nullptr || *result == '\0')
        return false;
    text = result;
    return true;
}

std::uint32_t GetLastOsError()
{
    return ErrnoToOsError(errno);
}

} // namespace Zantor
