#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <gtest/gtest.h>

#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace Zantor {
namespace {

// A text a log line can carry: not empty, no trailing white space.
void ExpectCleanText(const std::string& text)
{
    EXPECT_FALSE(text.empty());
    if (!text.empty())
    {
        EXPECT_FALSE(std::isspace(static_cast<unsigned char>(text.back()))) << '"' << text << '"';
    }
}

TEST(OsErrorTest, UnknownNumbersAreFormatted)
{
    EXPECT_EQ(OsErrorToString(0x3FFFFFFF), "error 1073741823");
    EXPECT_EQ(OsErrorToString(0xFFFFFFFF), "error 4294967295");
    EXPECT_EQ(OsErrorToString(0x20000000), "error 536870912");
}

TEST(OsErrorTest, TextsHaveNoTrailingWhiteSpace)
{
    for (std::uint32_t osError = 0; osError < 12000; ++osError)
    {
        SCOPED_TRACE(osError);
        ExpectCleanText(OsErrorToString(osError));
    }
}

#if defined(_WIN32)

TEST(OsErrorTest, WindowsLastErrorIsReturnedAsIs)
{
    SetLastError(87);
    EXPECT_EQ(GetLastOsError(), 87u);
    SetLastError(10060);
    EXPECT_EQ(GetLastOsError(), 10060u);
    SetLastError(0);
    EXPECT_EQ(GetLastOsError(), 0u);
}

TEST(OsErrorTest, WindowsKnownNumbersHaveSystemTexts)
{
    for (std::uint32_t osError : {2u, 5u, 87u})
    {
        SCOPED_TRACE(osError);
        const std::string text = OsErrorToString(osError);
        ExpectCleanText(text);
        EXPECT_NE(text, "error " + std::to_string(osError));
        EXPECT_EQ(text.find('\r'), std::string::npos);
        EXPECT_EQ(text.find('\n'), std::string::npos);
    }
}

#else

struct ErrnoRow
{
    int line;
    int errnoValue;
    std::uint32_t osError;
    bool mapsBack; // the number maps back to this errno (the first of a shared number)
};

// The Win32 numbers of errno values, written out from the Win32 headers.
const ErrnoRow kErrnoRows[] = {
    {__LINE__, ENOTTY, 1, true},            // ERROR_INVALID_FUNCTION
    {__LINE__, ENOENT, 2, true},            // ERROR_FILE_NOT_FOUND
    {__LINE__, EMFILE, 4, true},            // ERROR_TOO_MANY_OPEN_FILES
    {__LINE__, ENFILE, 4, false},
    {__LINE__, EACCES, 5, true},            // ERROR_ACCESS_DENIED
    {__LINE__, EPERM, 5, false},
    {__LINE__, EBADF, 6, true},             // ERROR_INVALID_HANDLE
    {__LINE__, ENOMEM, 8, true},            // ERROR_NOT_ENOUGH_MEMORY
    {__LINE__, ENOEXEC, 11, true},          // ERROR_BAD_FORMAT
    {__LINE__, EBADMSG, 13, true},          // ERROR_INVALID_DATA
    {__LINE__, EXDEV, 17, true},            // ERROR_NOT_SAME_DEVICE
    {__LINE__, EROFS, 19, true},            // ERROR_WRITE_PROTECT
    {__LINE__, ENODEV, 20, true},           // ERROR_BAD_UNIT
    {__LINE__, ENOMEDIUM, 21, true},        // ERROR_NOT_READY
    {__LINE__, ETXTBSY, 32, true},          // ERROR_SHARING_VIOLATION
    {__LINE__, ENOTSUP, 50, true},          // ERROR_NOT_SUPPORTED
    {__LINE__, EOPNOTSUPP, 50, true},
    {__LINE__, ENOSYS, 50, false},
    {__LINE__, EEXIST, 80, true},           // ERROR_FILE_EXISTS
    {__LINE__, EINVAL, 87, true},           // ERROR_INVALID_PARAMETER
    {__LINE__, EPIPE, 109, true},           // ERROR_BROKEN_PIPE
    {__LINE__, ENOSPC, 112, true},          // ERROR_DISK_FULL
    {__LINE__, ETIME, 121, true},           // ERROR_SEM_TIMEOUT
    {__LINE__, ERANGE, 122, true},          // ERROR_INSUFFICIENT_BUFFER
    {__LINE__, ECHILD, 128, true},          // ERROR_WAIT_NO_CHILDREN
    {__LINE__, ESPIPE, 132, true},          // ERROR_SEEK_ON_DEVICE
    {__LINE__, ENOTEMPTY, 145, true},       // ERROR_DIR_NOT_EMPTY
    {__LINE__, ENOLCK, 167, true},          // ERROR_LOCK_FAILED
    {__LINE__, EBUSY, 170, true},           // ERROR_BUSY
    {__LINE__, ENAMETOOLONG, 206, true},    // ERROR_FILENAME_EXCED_RANGE
    {__LINE__, EFBIG, 223, true},           // ERROR_FILE_TOO_LARGE
    {__LINE__, ENOTDIR, 267, true},         // ERROR_DIRECTORY
    {__LINE__, EISDIR, 336, true},          // ERROR_DIRECTORY_NOT_SUPPORTED
    {__LINE__, EFAULT, 487, true},          // ERROR_INVALID_ADDRESS
    {__LINE__, EOVERFLOW, 534, true},       // ERROR_ARITHMETIC_OVERFLOW
    {__LINE__, ECANCELED, 995, true},       // ERROR_OPERATION_ABORTED
    {__LINE__, EILSEQ, 1113, true},         // ERROR_NO_UNICODE_TRANSLATION
    {__LINE__, EIO, 1117, true},            // ERROR_IO_DEVICE
    {__LINE__, EDEADLK, 1131, true},        // ERROR_POSSIBLE_DEADLOCK
    {__LINE__, EMLINK, 1142, true},         // ERROR_TOO_MANY_LINKS
    {__LINE__, ELOOP, 1921, true},          // ERROR_CANT_RESOLVE_FILENAME
    {__LINE__, EINTR, 10004, true},         // WSAEINTR
    {__LINE__, EAGAIN, 10035, true},        // WSAEWOULDBLOCK
    {__LINE__, EWOULDBLOCK, 10035, true},
    {__LINE__, EINPROGRESS, 10036, true},   // WSAEINPROGRESS
    {__LINE__, EALREADY, 10037, true},      // WSAEALREADY
    {__LINE__, ENOTSOCK, 10038, true},      // WSAENOTSOCK
    {__LINE__, EDESTADDRREQ, 10039, true},  // WSAEDESTADDRREQ
    {__LINE__, EMSGSIZE, 10040, true},      // WSAEMSGSIZE
    {__LINE__, EPROTOTYPE, 10041, true},    // WSAEPROTOTYPE
    {__LINE__, ENOPROTOOPT, 10042, true},   // WSAENOPROTOOPT
    {__LINE__, EPROTONOSUPPORT, 10043, true}, // WSAEPROTONOSUPPORT
    {__LINE__, ESOCKTNOSUPPORT, 10044, true}, // WSAESOCKTNOSUPPORT
    {__LINE__, EPFNOSUPPORT, 10046, true},  // WSAEPFNOSUPPORT
    {__LINE__, EAFNOSUPPORT, 10047, true},  // WSAEAFNOSUPPORT
    {__LINE__, EADDRINUSE, 10048, true},    // WSAEADDRINUSE
    {__LINE__, EADDRNOTAVAIL, 10049, true}, // WSAEADDRNOTAVAIL
    {__LINE__, ENETDOWN, 10050, true},      // WSAENETDOWN
    {__LINE__, ENETUNREACH, 10051, true},   // WSAENETUNREACH
    {__LINE__, ENETRESET, 10052, true},     // WSAENETRESET
    {__LINE__, ECONNABORTED, 10053, true},  // WSAECONNABORTED
    {__LINE__, ECONNRESET, 10054, true},    // WSAECONNRESET
    {__LINE__, ENOBUFS, 10055, true},       // WSAENOBUFS
    {__LINE__, EISCONN, 10056, true},       // WSAEISCONN
    {__LINE__, ENOTCONN, 10057, true},      // WSAENOTCONN
    {__LINE__, ESHUTDOWN, 10058, true},     // WSAESHUTDOWN
    {__LINE__, ETOOMANYREFS, 10059, true},  // WSAETOOMANYREFS
    {__LINE__, ETIMEDOUT, 10060, true},     // WSAETIMEDOUT
    {__LINE__, ECONNREFUSED, 10061, true},  // WSAECONNREFUSED
    {__LINE__, EHOSTDOWN, 10064, true},     // WSAEHOSTDOWN
    {__LINE__, EHOSTUNREACH, 10065, true},  // WSAEHOSTUNREACH
    {__LINE__, EUSERS, 10068, true},        // WSAEUSERS
    {__LINE__, EDQUOT, 10069, true},        // WSAEDQUOT
    {__LINE__, ESTALE, 10070, true},        // WSAESTALE
    {__LINE__, EREMOTE, 10071, true},       // WSAEREMOTE
};

std::uint32_t LastOsErrorFor(int errnoValue)
{
    errno = errnoValue;
    const std::uint32_t osError = GetLastOsError();
    EXPECT_EQ(errno, errnoValue); // reading does not change errno
    return osError;
}

TEST(OsErrorTest, LinuxErrnoToWin32AndBack)
{
    for (const ErrnoRow& row : kErrnoRows)
    {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(LastOsErrorFor(row.errnoValue), row.osError);
        const std::string text = OsErrorToString(row.osError);
        ExpectCleanText(text);
        if (row.mapsBack)
        {
            EXPECT_EQ(text, std::strerror(row.errnoValue));
        }
        else
        {
            EXPECT_NE(text, "error " + std::to_string(row.osError));
        }
    }
}

TEST(OsErrorTest, LinuxSharedNumbersDescribeTheFirstErrno)
{
    EXPECT_EQ(OsErrorToString(LastOsErrorFor(EPERM)), std::strerror(EACCES));
    EXPECT_EQ(OsErrorToString(LastOsErrorFor(ENOSYS)), std::strerror(ENOTSUP));
    EXPECT_EQ(OsErrorToString(LastOsErrorFor(ENFILE)), std::strerror(EMFILE));
}

TEST(OsErrorTest, LinuxErrnoZeroIsSuccess)
{
    EXPECT_EQ(LastOsErrorFor(0), 0u);
    EXPECT_EQ(OsErrorToStatusCode(LastOsErrorFor(0), STATUS_CODE_FAILURE), STATUS_CODE_SUCCESS);
    EXPECT_EQ(OsErrorToString(0), std::strerror(0));
}

TEST(OsErrorTest, LinuxErrnoWithoutEquivalentIsKeptUnderTheCustomerBit)
{
    for (int errnoValue : {ESRCH, E2BIG, EDOM, ENXIO, EPROTO, ENOTUNIQ, EOWNERDEAD, EHWPOISON})
    {
        SCOPED_TRACE(errnoValue);
        const std::uint32_t osError = LastOsErrorFor(errnoValue);
        EXPECT_EQ(osError, 0x20000000u | static_cast<std::uint32_t>(errnoValue));
        EXPECT_EQ(OsErrorToString(osError), std::strerror(errnoValue));
        EXPECT_EQ(OsErrorToStatusCode(osError, STATUS_CODE_MISMATCH), STATUS_CODE_MISMATCH);
    }
    // An errno value the C library does not know.
    EXPECT_EQ(LastOsErrorFor(0xFFFF), 0x2000FFFFu);
    EXPECT_EQ(OsErrorToString(0x2000FFFF), "error 536936447");
}

TEST(OsErrorTest, LinuxWindowsOnlyNumbersUseTheMatchingErrnoText)
{
    EXPECT_EQ(OsErrorToString(14), std::strerror(ENOMEM));          // ERROR_OUTOFMEMORY
    EXPECT_EQ(OsErrorToString(120), std::strerror(ENOSYS));         // ERROR_CALL_NOT_IMPLEMENTED
    EXPECT_EQ(OsErrorToString(183), std::strerror(EEXIST));         // ERROR_ALREADY_EXISTS
    EXPECT_EQ(OsErrorToString(1225), std::strerror(ECONNREFUSED));  // ERROR_CONNECTION_REFUSED
    EXPECT_EQ(OsErrorToString(10013), std::strerror(EACCES));       // WSAEACCES
    EXPECT_EQ(OsErrorToString(10022), std::strerror(EINVAL));       // WSAEINVAL
    // Numbers without an errno equivalent.
    EXPECT_EQ(OsErrorToString(3), "error 3");
    EXPECT_EQ(OsErrorToString(86), "error 86");
    EXPECT_EQ(OsErrorToString(1234), "error 1234");
    EXPECT_EQ(OsErrorToString(11001), "error 11001");
    EXPECT_EQ(OsErrorToString(0x40000002), "error 1073741826");
}

// An errno value reaches the status its Win32 number names.
TEST(OsErrorTest, LinuxErrnoToStatusCode)
{
    struct Row
    {
        int line;
        int errnoValue;
        StatusCode status;
    };
    const Row rows[] = {
        {__LINE__, ENOENT, STATUS_CODE_NOT_FOUND},
        {__LINE__, EACCES, STATUS_CODE_ACCESS_DENIED},
        {__LINE__, EPERM, STATUS_CODE_ACCESS_DENIED},
        {__LINE__, EBADF, STATUS_CODE_INVALID_HANDLE},
        {__LINE__, ENOMEM, STATUS_CODE_HEAP_EMPTY},
        {__LINE__, ENOEXEC, STATUS_CODE_INVALID_FORMAT},
        {__LINE__, EEXIST, STATUS_CODE_ALREADY_EXISTS},
        {__LINE__, EINVAL, STATUS_CODE_INVALID_PARAMETER},
        {__LINE__, ETIME, STATUS_CODE_TIMEOUT},
        {__LINE__, ENOTDIR, STATUS_CODE_NOT_A_DIRECTORY},
        {__LINE__, ENOTSOCK, STATUS_CODE_INVALID_HANDLE},
        {__LINE__, EADDRNOTAVAIL, STATUS_CODE_ADDRESS_NOT_AVAILABLE},
        {__LINE__, ENETUNREACH, STATUS_CODE_NETWORK_UNREACHABLE},
        {__LINE__, ETIMEDOUT, STATUS_CODE_TIMEOUT},
        {__LINE__, ECONNREFUSED, STATUS_CODE_CONNECTION_REFUSED},
        {__LINE__, EHOSTUNREACH, STATUS_CODE_HOST_UNREACHABLE},
        {__LINE__, EDQUOT, STATUS_CODE_QUOTA_EXCEEDED},
        {__LINE__, ENETDOWN, STATUS_CODE_UNKNOWN}, // 10050: not in the status table
        {__LINE__, ERANGE, STATUS_CODE_UNKNOWN},   // 122: not in the status table
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(OsErrorToStatusCode(LastOsErrorFor(row.errnoValue), STATUS_CODE_UNKNOWN), row.status);
    }
}

#endif

} // namespace
} // namespace Zantor
