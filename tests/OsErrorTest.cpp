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

// The Win32 numbers that map to a status: each has a text without trailing
// white space and, on Linux where the library words what strerror lacks,
// never the "error %u" fallback (Windows gives what its message table has).
TEST(OsErrorTest, MappedNumbersHaveCleanTexts)
{
    for (const std::uint32_t osError : {0u, 2u, 3u, 5u, 6u, 8u, 11u, 14u, 80u, 86u, 87u, 121u, 267u, 1225u, 10013u,
                                        10022u, 10038u, 10049u, 10051u, 10060u, 10061u, 10065u, 10069u, 11001u})
    {
        const std::string text = OsErrorToString(osError);
#if !defined(_WIN32)
        EXPECT_NE(text, "error " + std::to_string(osError));
#endif
        ASSERT_FALSE(text.empty()) << osError;
        EXPECT_FALSE(std::isspace(static_cast<unsigned char>(text.back()))) << '"' << text << '"';
    }
    for (const std::uint32_t osError : {0x3FFFFFFFu, 0xFFFFFFFFu, 0x20000000u})
        EXPECT_EQ(OsErrorToString(osError), "error " + std::to_string(osError));
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

#else

struct ErrnoRow
{
    int errnoValue;
    std::uint32_t osError;
    int textErrno = 0; // the number's text is that of this errno, the first of a shared number; 0: errnoValue
};

// The Win32 numbers of errno values, written out from the Win32 headers.
const ErrnoRow kErrnoRows[] = {
    {ENOTTY, 1}, {ENOENT, 2}, {EMFILE, 4}, {ENFILE, 4, EMFILE}, {EACCES, 5}, {EPERM, 5, EACCES}, {EBADF, 6},
    {ENOMEM, 8}, {ENOEXEC, 11}, {EBADMSG, 13}, {EXDEV, 17}, {EROFS, 19}, {ENODEV, 20}, {ENOMEDIUM, 21},
    {ETXTBSY, 32}, {ENOTSUP, 50}, {EOPNOTSUPP, 50}, {ENOSYS, 50, ENOTSUP}, {EEXIST, 80}, {EINVAL, 87}, {EPIPE, 109},
    {ENOSPC, 112}, {ETIME, 121}, {ERANGE, 122}, {ECHILD, 128}, {ESPIPE, 132}, {ENOTEMPTY, 145}, {ENOLCK, 167},
    {EBUSY, 170}, {ENAMETOOLONG, 206}, {EFBIG, 223}, {ENOTDIR, 267}, {EISDIR, 336}, {EFAULT, 487}, {EOVERFLOW, 534},
    {ECANCELED, 995}, {EILSEQ, 1113}, {EIO, 1117}, {EDEADLK, 1131}, {EMLINK, 1142}, {ELOOP, 1921}, {EINTR, 10004},
    {EAGAIN, 10035}, {EWOULDBLOCK, 10035}, {EINPROGRESS, 10036}, {EALREADY, 10037}, {ENOTSOCK, 10038},
    {EDESTADDRREQ, 10039}, {EMSGSIZE, 10040}, {EPROTOTYPE, 10041}, {ENOPROTOOPT, 10042}, {EPROTONOSUPPORT, 10043},
    {ESOCKTNOSUPPORT, 10044}, {EPFNOSUPPORT, 10046}, {EAFNOSUPPORT, 10047}, {EADDRINUSE, 10048},
    {EADDRNOTAVAIL, 10049}, {ENETDOWN, 10050}, {ENETUNREACH, 10051}, {ENETRESET, 10052}, {ECONNABORTED, 10053},
    {ECONNRESET, 10054}, {ENOBUFS, 10055}, {EISCONN, 10056}, {ENOTCONN, 10057}, {ESHUTDOWN, 10058},
    {ETOOMANYREFS, 10059}, {ETIMEDOUT, 10060}, {ECONNREFUSED, 10061}, {EHOSTDOWN, 10064}, {EHOSTUNREACH, 10065},
    {EUSERS, 10068}, {EDQUOT, 10069}, {ESTALE, 10070}, {EREMOTE, 10071},
};

std::uint32_t LastOsErrorFor(int errnoValue)
{
    errno = errnoValue;
    const std::uint32_t osError = GetLastOsError();
    EXPECT_EQ(errno, errnoValue); // reading does not change errno
    return osError;
}

// errno to Win32 number and back to the errno's text, except for the numbers
// whose errno text names another condition than the Win32 number.
TEST(OsErrorTest, LinuxErrnoToWin32AndBack)
{
    for (const ErrnoRow& row : kErrnoRows)
    {
        SCOPED_TRACE(testing::Message() << "errno " << row.errnoValue);
        EXPECT_EQ(LastOsErrorFor(row.errnoValue), row.osError);
        if (row.osError != 1 && row.osError != 122) {
            EXPECT_EQ(OsErrorToString(row.osError), std::strerror(row.textErrno != 0 ? row.textErrno : row.errnoValue));
        }
    }
    EXPECT_EQ(LastOsErrorFor(0), 0u);
    EXPECT_EQ(OsErrorToString(0), std::strerror(0));
}

// An errno without a Win32 equivalent is kept under the customer bit with
// its own text. Numbers only Windows produces take the text of the errno of
// the same condition; those no errno describes have the library's own text.
TEST(OsErrorTest, LinuxTextsBeyondTheErrnoTable)
{
    for (int errnoValue : {ESRCH, EDOM, EPROTO, EHWPOISON})
    {
        EXPECT_EQ(LastOsErrorFor(errnoValue), 0x20000000u | static_cast<std::uint32_t>(errnoValue));
        EXPECT_EQ(OsErrorToString(0x20000000u | static_cast<std::uint32_t>(errnoValue)), std::strerror(errnoValue));
    }
    EXPECT_EQ(LastOsErrorFor(0xFFFF), 0x2000FFFFu);
    const struct { std::uint32_t osError; std::string text; } rows[] = {
        {14, std::strerror(ENOMEM)}, {120, std::strerror(ENOSYS)}, {183, std::strerror(EEXIST)},
        {1225, std::strerror(ECONNREFUSED)}, {1460, std::strerror(ETIMEDOUT)}, {10013, std::strerror(EACCES)},
        {10014, std::strerror(EFAULT)}, {10022, std::strerror(EINVAL)}, {10024, std::strerror(EMFILE)},
        {10045, std::strerror(ENOTSUP)}, {1, "Incorrect function"}, {3, "The system cannot find the path specified"},
        {86, "The specified network password is not correct"}, {11001, "No such host is known"},
        {122, "The data area passed to a system call is too small"}, {1234, "error 1234"},
        {0x2000FFFF, "error 536936447"}, {0x40000002, "error 1073741826"}, // unknown to the C library
    };
    for (const auto& row : rows)
        EXPECT_EQ(OsErrorToString(row.osError), row.text) << row.osError;
}

#endif

} // namespace
} // namespace Zantor
