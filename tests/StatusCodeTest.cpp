#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>

namespace Zantor {
namespace {

struct NamedRow
{
    int line;
    unsigned value;
    StatusCode constant;
    const char* text;
};

// Written out from the published table, independently of the library's own.
const NamedRow kNamedRows[] = {
    {__LINE__, 0, STATUS_CODE_SUCCESS, "success"},
    {__LINE__, 1, STATUS_CODE_FAILURE, "failure"},
    {__LINE__, 2, STATUS_CODE_EXIT, "exit"},
    {__LINE__, 3, STATUS_CODE_SHUTTING_DOWN, "shutting down"},
    {__LINE__, 4, STATUS_CODE_UNHANDLED_EXCEPTION, "unhandled exception"},
    {__LINE__, 5, STATUS_CODE_UNRECOGNIZED, "unrecognized"},
    {__LINE__, 6, STATUS_CODE_NOT_FOUND, "not found"},
    {__LINE__, 7, STATUS_CODE_TIMEOUT, "timeout"},
    {__LINE__, 8, STATUS_CODE_UNCHANGED, "unchanged"},
    {__LINE__, 9, STATUS_CODE_PENDING, "pending"},
    {__LINE__, 10, STATUS_CODE_ACCESS_DENIED, "access denied"},
    {__LINE__, 11, STATUS_CODE_BUFFER_OVERFLOW, "buffer overflow"},
    {__LINE__, 12, STATUS_CODE_BUFFER_UNDERRUN, "buffer underrun"},
    {__LINE__, 13, STATUS_CODE_NOT_SUPPORTED, "not supported"},
    {__LINE__, 14, STATUS_CODE_NOT_INITIALIZED, "not initialized"},
    {__LINE__, 15, STATUS_CODE_MISSING_ARGS, "missing args"},
    {__LINE__, 16, STATUS_CODE_NOT_OPEN, "not open"},
    {__LINE__, 17, STATUS_CODE_ALREADY_OPEN, "already open"},
    {__LINE__, 18, STATUS_CODE_DISABLED, "disabled"},
    {__LINE__, 19, STATUS_CODE_INVALID_ENDPOINT, "invalid endpoint"},
    {__LINE__, 20, STATUS_CODE_INVALID_PORT, "invalid port"},
    {__LINE__, 21, STATUS_CODE_INVALID_VERSION, "invalid version"},
    {__LINE__, 22, STATUS_CODE_INVALID_LENGTH, "invalid length"},
    {__LINE__, 23, STATUS_CODE_INVALID_PARAMETER, "invalid parameter"},
    {__LINE__, 24, STATUS_CODE_INVALID_NAME, "invalid name"},
    {__LINE__, 25, STATUS_CODE_INVALID_FORMAT, "invalid format"},
    {__LINE__, 26, STATUS_CODE_INVALID_INDEX, "invalid index"},
    {__LINE__, 27, STATUS_CODE_INVALID_KEY, "invalid key"},
    {__LINE__, 28, STATUS_CODE_INVALID_FIELD_TYPE, "invalid field type"},
    {__LINE__, 29, STATUS_CODE_INVALID_FIELD, "invalid field"},
    {__LINE__, 30, STATUS_CODE_INVALID_RECORD, "invalid record"},
    {__LINE__, 31, STATUS_CODE_INVALID_TABLE, "invalid table"},
    {__LINE__, 32, STATUS_CODE_INVALID_PROTOCOL, "invalid protocol"},
    {__LINE__, 33, STATUS_CODE_UNDEFINED_FIELD, "undefined field"},
    {__LINE__, 34, STATUS_CODE_NO_PRIMARY_KEY, "no primary key"},
    {__LINE__, 35, STATUS_CODE_MISMATCH, "mismatch"},
    {__LINE__, 36, STATUS_CODE_OUT_OF_RANGE, "out of range"},
    {__LINE__, 37, STATUS_CODE_STALE_DATA, "stale data"},
    {__LINE__, 38, STATUS_CODE_ITEM_DELETED, "item deleted"},
    {__LINE__, 39, STATUS_CODE_EMPTY, "empty"},
    {__LINE__, 40, STATUS_CODE_FULL, "full"},
    {__LINE__, 41, STATUS_CODE_HEAP_EMPTY, "heap empty"},
    {__LINE__, 42, STATUS_CODE_WRONG_STATE, "wrong state"},
    {__LINE__, 43, STATUS_CODE_NOT_CONNECTED, "not connected"},
    {__LINE__, 44, STATUS_CODE_ALREADY_CONNECTED, "already connected"},
    {__LINE__, 45, STATUS_CODE_ALREADY_DEFINED, "already defined"},
    {__LINE__, 46, STATUS_CODE_NOT_CREATED, "not created"},
    {__LINE__, 47, STATUS_CODE_ALREADY_EXISTS, "already exists"},
    {__LINE__, 48, STATUS_CODE_IN_USE, "in use"},
    {__LINE__, 49, STATUS_CODE_END_OF_DATA, "end of data"},
    {__LINE__, 50, STATUS_CODE_ALREADY_LISTENING, "already listening"},
    {__LINE__, 51, STATUS_CODE_NOT_SHAREABLE, "not shareable"},
    {__LINE__, 52, STATUS_CODE_CONNECTION_REFUSED, "connection refused"},
    {__LINE__, 53, STATUS_CODE_INTERRUPTED, "interrupted"},
    {__LINE__, 54, STATUS_CODE_IGNORED, "ignored"},
    {__LINE__, 55, STATUS_CODE_TOO_MANY_REQUESTS_OUTSTANDING, "too many requests outstanding"},
    {__LINE__, 56, STATUS_CODE_INVALID_ENDPOINT_PORT, "invalid endpoint-port"},
    {__LINE__, 57, STATUS_CODE_HOST_NOT_FOUND, "host not found"},
    {__LINE__, 58, STATUS_CODE_INVALID_USER, "invalid user"},
    {__LINE__, 59, STATUS_CODE_INVALID_PASSWORD, "invalid password"},
    {__LINE__, 60, STATUS_CODE_INVALID_URL, "invalid url"},
    {__LINE__, 61, STATUS_CODE_NOT_A_DIRECTORY, "not a directory"},
    {__LINE__, 62, STATUS_CODE_BUSY, "busy"},
    {__LINE__, 63, STATUS_CODE_EXPIRED, "expired"},
    {__LINE__, 64, STATUS_CODE_HOST_UNREACHABLE, "host unreachable"},
    {__LINE__, 65, STATUS_CODE_NETWORK_UNREACHABLE, "network unreachable"},
    {__LINE__, 67, STATUS_CODE_ADDRESS_NOT_AVAILABLE, "address not available"},
    {__LINE__, 68, STATUS_CODE_NO_SUCH_DEVICE, "no such device"},
    {__LINE__, 69, STATUS_CODE_QUOTA_EXCEEDED, "quota exceeded"},
    {__LINE__, 70, STATUS_CODE_INVALID_SERVICE_ID, "invalid service id"},
    {__LINE__, 71, STATUS_CODE_PATH_NOT_FOUND, "path not found"},
    {__LINE__, 72, STATUS_CODE_INVALID_HANDLE, "invalid handle"},
    {__LINE__, 73, STATUS_CODE_INVALID_ADDRESS, "invalid address"},
    {__LINE__, 74, STATUS_CODE_INSUFFICIENT_RESOURCES, "insufficient resources"},
    {__LINE__, 75, STATUS_CODE_INVALID_REQUEST, "invalid request"},
    {__LINE__, 76, STATUS_CODE_NO_PROXY_CONFIGURED, "no proxy configured"},
    {__LINE__, 77, STATUS_CODE_MISSING_FIELDS, "missing fields"},
    {__LINE__, 78, STATUS_CODE_INVALID_USER_TYPE, "invalid user type"},
    {__LINE__, 79, STATUS_CODE_UNDEFINED_LENGTH, "undefined length"},
    {__LINE__, 80, STATUS_CODE_FUNCTION_UNAVAILABLE, "function unavailable"},
    {__LINE__, 255, STATUS_CODE_UNKNOWN, "unknown"},
};

TEST(StatusCodeTest, NamedValuesAndTexts)
{
    for (const NamedRow& row : kNamedRows)
    {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(row.constant, row.value);
        EXPECT_EQ(StatusCodeToString(row.constant), row.text);
    }
}

TEST(StatusCodeTest, EveryOtherByteIsFormattedWithItsNumber)
{
    std::map<unsigned, std::string> named;
    for (const NamedRow& row : kNamedRows)
        named[row.value] = row.text;
    ASSERT_EQ(named.size(), 81u);

    unsigned unnamed = 0;
    for (unsigned value = 0; value <= 255; ++value)
    {
        SCOPED_TRACE(value);
        const auto found = named.find(value);
        if (found != named.end())
        {
            EXPECT_EQ(StatusCodeToString(static_cast<unsigned char>(value)), found->second);
        }
        else
        {
            EXPECT_EQ(StatusCodeToString(static_cast<unsigned char>(value)), "status code " + std::to_string(value));
            ++unnamed;
        }
    }
    EXPECT_EQ(unnamed, 256u - 81u);
}

TEST(StatusCodeTest, Boundaries)
{
    EXPECT_EQ(StatusCodeToString(65), "network unreachable");
    EXPECT_EQ(StatusCodeToString(66), "status code 66"); // the one gap among the named values
    EXPECT_EQ(StatusCodeToString(67), "address not available");
    EXPECT_EQ(StatusCodeToString(80), "function unavailable");
    EXPECT_EQ(StatusCodeToString(81), "status code 81");
    EXPECT_EQ(StatusCodeToString(254), "status code 254");
    EXPECT_EQ(StatusCodeToString(255), "unknown");
}

TEST(StatusCodeTest, TextLivesForTheProcess)
{
    const std::string& first = StatusCodeToString(STATUS_CODE_TIMEOUT);
    const std::string& unnamed = StatusCodeToString(200);
    for (unsigned value = 0; value <= 255; ++value)
        (void)StatusCodeToString(static_cast<unsigned char>(value));
    EXPECT_EQ(&first, &StatusCodeToString(STATUS_CODE_TIMEOUT));
    EXPECT_EQ(&unnamed, &StatusCodeToString(200));
    EXPECT_EQ(first, "timeout");
    EXPECT_EQ(unnamed, "status code 200");
}

struct OsRow
{
    int line;
    std::uint32_t osError;
    StatusCode status;
};

const OsRow kOsRows[] = {
    {__LINE__, 0, 0},       // ERROR_SUCCESS
    {__LINE__, 2, 6},       // ERROR_FILE_NOT_FOUND
    {__LINE__, 3, 71},      // ERROR_PATH_NOT_FOUND
    {__LINE__, 5, 10},      // ERROR_ACCESS_DENIED
    {__LINE__, 6, 72},      // ERROR_INVALID_HANDLE
    {__LINE__, 8, 41},      // ERROR_NOT_ENOUGH_MEMORY
    {__LINE__, 11, 25},     // ERROR_BAD_FORMAT
    {__LINE__, 14, 41},     // ERROR_OUTOFMEMORY
    {__LINE__, 80, 47},     // ERROR_FILE_EXISTS
    {__LINE__, 86, 59},     // ERROR_INVALID_PASSWORD
    {__LINE__, 87, 23},     // ERROR_INVALID_PARAMETER
    {__LINE__, 121, 7},     // ERROR_SEM_TIMEOUT
    {__LINE__, 267, 61},    // ERROR_DIRECTORY
    {__LINE__, 1225, 52},   // ERROR_CONNECTION_REFUSED
    {__LINE__, 10013, 10},  // WSAEACCES
    {__LINE__, 10022, 23},  // WSAEINVAL
    {__LINE__, 10038, 72},  // WSAENOTSOCK
    {__LINE__, 10049, 67},  // WSAEADDRNOTAVAIL
    {__LINE__, 10051, 65},  // WSAENETUNREACH
    {__LINE__, 10060, 7},   // WSAETIMEDOUT
    {__LINE__, 10061, 52},  // WSAECONNREFUSED
    {__LINE__, 10065, 64},  // WSAEHOSTUNREACH
    {__LINE__, 10069, 69},  // WSAEDQUOT
    {__LINE__, 11001, 57},  // WSAHOST_NOT_FOUND
};

TEST(StatusCodeTest, OsErrorMappingTable)
{
    for (const OsRow& row : kOsRows)
    {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(OsErrorToStatusCode(row.osError, STATUS_CODE_FAILURE), row.status);
        EXPECT_EQ(OsErrorToStatusCode(row.osError, STATUS_CODE_UNKNOWN), row.status);
    }
}

TEST(StatusCodeTest, UnmappedOsErrorsGiveTheDefault)
{
    struct Row
    {
        int line;
        std::uint32_t osError;
    };
    const Row rows[] = {
        {__LINE__, 1},     {__LINE__, 4},     {__LINE__, 7},          {__LINE__, 122},
        {__LINE__, 183},   {__LINE__, 1224},  {__LINE__, 1226},       {__LINE__, 10050},
        {__LINE__, 10062}, {__LINE__, 11000}, {__LINE__, 11002},      {__LINE__, 0x20000002},
        {__LINE__, 0x80000002u},
        {__LINE__, 0xFFFFFFFF},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(OsErrorToStatusCode(row.osError, STATUS_CODE_MISMATCH), STATUS_CODE_MISMATCH);
        EXPECT_EQ(OsErrorToStatusCode(row.osError, 200), 200);
    }
}

TEST(StatusCodeTest, ErrorZeroIsAlwaysSuccess)
{
    for (unsigned defaultStatus = 0; defaultStatus <= 255; ++defaultStatus)
    {
        SCOPED_TRACE(defaultStatus);
        EXPECT_EQ(OsErrorToStatusCode(0, static_cast<unsigned char>(defaultStatus)), STATUS_CODE_SUCCESS);
    }
}

} // namespace
} // namespace Zantor
