#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <gtest/gtest.h>

#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

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

TEST(OsErrorTest, NumbersWithoutTextAreFormatted)
{
    std::vector<std::uint32_t> numbers = {0x3FFFFFFF, 0xFFFFFFFF, 0x20000000};
#if !defined(_WIN32)
    // Win32 numbers without an errno equivalent, and an errno value the C
    // library does not know, kept under the customer bit.
    numbers.insert(numbers.end(), {3, 86, 1234, 11001, 0x40000002, 0x2000FFFF});
#endif
    for (const std::uint32_t osError : numbers)
        EXPECT_EQ(OsErrorToString(osError), "error " + std::to_string(osError));
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
    for (const DWORD osError : {87u, 10060u, 0u})
    {
        SetLastError(osError);
        EXPECT_EQ(GetLastOsError(), osError);
    }
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
    int textErrno = 0; // the number's text is that of this errno, the first of a shared number; 0: errnoValue
};

// The Win32 numbers of errno values, written out from the Win32 headers.
const ErrnoRow kErrnoRows[] = {
    {__LINE__, ENOTTY, 1},         {__LINE__, ENOENT, 2},           // ERROR_INVALID_FUNCTION, ERROR_FILE_NOT_FOUND
    {__LINE__, EMFILE, 4},         {__LINE__, ENFILE, 4, EMFILE},   // ERROR_TOO_MANY_OPEN_FILES
    {__LINE__, EACCES, 5},         {__LINE__, EPERM, 5, EACCES},    // ERROR_ACCESS_DENIED
    {__LINE__, EBADF, 6},          {__LINE__, ENOMEM, 8},           // ERROR_INVALID_HANDLE, ERROR_NOT_ENOUGH_MEMORY
    {__LINE__, ENOEXEC, 11},       {__LINE__, EBADMSG, 13},         // ERROR_BAD_FORMAT, ERROR_INVALID_DATA
    {__LINE__, EXDEV, 17},         {__LINE__, EROFS, 19},           // ERROR_NOT_SAME_DEVICE, ERROR_WRITE_PROTECT
    {__LINE__, ENODEV, 20},        {__LINE__, ENOMEDIUM, 21},       // ERROR_BAD_UNIT, ERROR_NOT_READY
    {__LINE__, ETXTBSY, 32},       {__LINE__, ENOTSUP, 50},         // ERROR_SHARING_VIOLATION, ERROR_NOT_SUPPORTED
    {__LINE__, EOPNOTSUPP, 50},    {__LINE__, ENOSYS, 50, ENOTSUP},
    {__LINE__, EEXIST, 80},        {__LINE__, EINVAL, 87},          // ERROR_FILE_EXISTS, ERROR_INVALID_PARAMETER
    {__LINE__, EPIPE, 109},        {__LINE__, ENOSPC, 112},         // ERROR_BROKEN_PIPE, ERROR_DISK_FULL
    {__LINE__, ETIME, 121},        {__LINE__, ERANGE, 122},         // ERROR_SEM_TIMEOUT, ERROR_INSUFFICIENT_BUFFER
    {__LINE__, ECHILD, 128},       {__LINE__, ESPIPE, 132},         // ERROR_WAIT_NO_CHILDREN, ERROR_SEEK_ON_DEVICE
    {__LINE__, ENOTEMPTY, 145},    {__LINE__, ENOLCK, 167},         // ERROR_DIR_NOT_EMPTY, ERROR_LOCK_FAILED
    {__LINE__, EBUSY, 170},        {__LINE__, ENAMETOOLONG, 206},   // ERROR_BUSY, ERROR_FILENAME_EXCED_RANGE
    {__LINE__, EFBIG, 223},        {__LINE__, ENOTDIR, 267},        // ERROR_FILE_TOO_LARGE, ERROR_DIRECTORY
    {__LINE__, EISDIR, 336},       // ERROR_DIRECTORY_NOT_SUPPORTED
    {__LINE__, EFAULT, 487},       // ERROR_INVALID_ADDRESS
    {__LINE__, EOVERFLOW, 534},    // ERROR_ARITHMETIC_OVERFLOW
    {__LINE__, ECANCELED, 995},    // ERROR_OPERATION_ABORTED
    {__LINE__, EILSEQ, 1113},      {__LINE__, EIO, 1117},           // ERROR_NO_UNICODE_TRANSLATION, ERROR_IO_DEVICE
    {__LINE__, EDEADLK, 1131},     {__LINE__, EMLINK, 1142},        // ERROR_POSSIBLE_DEADLOCK, ERROR_TOO_MANY_LINKS
    {__LINE__, ELOOP, 1921},       {__LINE__, EINTR, 10004},        // ERROR_CANT_RESOLVE_FILENAME, WSAEINTR
    {__LINE__, EAGAIN, 10035},     {__LINE__, EWOULDBLOCK, 10035},  // WSAEWOULDBLOCK
    {__LINE__, EINPROGRESS, 10036}, {__LINE__, EALREADY, 10037},     // WSAEINPROGRESS, WSAEALREADY
    {__LINE__, ENOTSOCK, 10038},   {__LINE__, EDESTADDRREQ, 10039}, // WSAENOTSOCK, WSAEDESTADDRREQ
    {__LINE__, EMSGSIZE, 10040},   {__LINE__, EPROTOTYPE, 10041},   // WSAEMSGSIZE, WSAEPROTOTYPE
    {__LINE__, ENOPROTOOPT, 10042}, {__LINE__, EPROTONOSUPPORT, 10043}, // WSAENOPROTOOPT, WSAEPROTONOSUPPORT
    {__LINE__, ESOCKTNOSUPPORT, 10044}, {__LINE__, EPFNOSUPPORT, 10046}, // WSAESOCKTNOSUPPORT, WSAEPFNOSUPPORT
    {__LINE__, EAFNOSUPPORT, 10047}, {__LINE__, EADDRINUSE, 10048},   // WSAEAFNOSUPPORT, WSAEADDRINUSE
    {__LINE__, EADDRNOTAVAIL, 10049}, {__LINE__, ENETDOWN, 10050},     // WSAEADDRNOTAVAIL, WSAENETDOWN
    {__LINE__, ENETUNREACH, 10051}, {__LINE__, ENETRESET, 10052},    // WSAENETUNREACH, WSAENETRESET
    {__LINE__, ECONNABORTED, 10053}, {__LINE__, ECONNRESET, 10054},   // WSAECONNABORTED, WSAECONNRESET
    {__LINE__, ENOBUFS, 10055},    {__LINE__, EISCONN, 10056},      // WSAENOBUFS, WSAEISCONN
    {__LINE__, ENOTCONN, 10057},   {__LINE__, ESHUTDOWN, 10058},    // WSAENOTCONN, WSAESHUTDOWN
    {__LINE__, ETOOMANYREFS, 10059}, {__LINE__, ETIMEDOUT, 10060},    // WSAETOOMANYREFS, WSAETIMEDOUT
    {__LINE__, ECONNREFUSED, 10061}, {__LINE__, EHOSTDOWN, 10064},    // WSAECONNREFUSED, WSAEHOSTDOWN
    {__LINE__, EHOSTUNREACH, 10065}, {__LINE__, EUSERS, 10068},       // WSAEHOSTUNREACH, WSAEUSERS
    {__LINE__, EDQUOT, 10069},     {__LINE__, ESTALE, 10070},       // WSAEDQUOT, WSAESTALE
    {__LINE__, EREMOTE, 10071},    // WSAEREMOTE
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
        SCOPED_TRACE(testing::Message() << "row at line " << row.line << ", errno " << row.errnoValue);
        EXPECT_EQ(LastOsErrorFor(row.errnoValue), row.osError);
        const std::string text = OsErrorToString(row.osError);
        ExpectCleanText(text);
        EXPECT_EQ(text, std::strerror(row.textErrno != 0 ? row.textErrno : row.errnoValue));
    }
}

TEST(OsErrorTest, LinuxErrnoZeroIsSuccess)
{
    EXPECT_EQ(LastOsErrorFor(0), 0u);
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
    EXPECT_EQ(LastOsErrorFor(0xFFFF), 0x2000FFFFu); // unknown to the C library: text "error 536936447"
}

TEST(OsErrorTest, LinuxWindowsOnlyNumbersUseTheMatchingErrnoText)
{
    EXPECT_EQ(OsErrorToString(14), std::strerror(ENOMEM));          // ERROR_OUTOFMEMORY
    EXPECT_EQ(OsErrorToString(120), std::strerror(ENOSYS));         // ERROR_CALL_NOT_IMPLEMENTED
    EXPECT_EQ(OsErrorToString(183), std::strerror(EEXIST));         // ERROR_ALREADY_EXISTS
    EXPECT_EQ(OsErrorToString(1225), std::strerror(ECONNREFUSED));  // ERROR_CONNECTION_REFUSED
    EXPECT_EQ(OsErrorToString(10013), std::strerror(EACCES));       // WSAEACCES
    EXPECT_EQ(OsErrorToString(10022), std::strerror(EINVAL));       // WSAEINVAL
}

#endif

} // namespace
} // namespace Zantor
