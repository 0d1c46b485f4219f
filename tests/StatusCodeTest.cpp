#include <ZantorMiddleware/ZantorBase/File.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace Zantor {
namespace {

struct NamedRow
{
    unsigned value; // names its row
    StatusCode constant;
    const char* text;
};

// Written out from the published table, independently of the library's own.
const NamedRow kNamedRows[] = {
    {0, STATUS_CODE_SUCCESS, "success"}, {1, STATUS_CODE_FAILURE, "failure"}, {2, STATUS_CODE_EXIT, "exit"},
    {3, STATUS_CODE_SHUTTING_DOWN, "shutting down"}, {4, STATUS_CODE_UNHANDLED_EXCEPTION, "unhandled exception"},
    {5, STATUS_CODE_UNRECOGNIZED, "unrecognized"}, {6, STATUS_CODE_NOT_FOUND, "not found"},
    {7, STATUS_CODE_TIMEOUT, "timeout"}, {8, STATUS_CODE_UNCHANGED, "unchanged"}, {9, STATUS_CODE_PENDING, "pending"},
    {10, STATUS_CODE_ACCESS_DENIED, "access denied"}, {11, STATUS_CODE_BUFFER_OVERFLOW, "buffer overflow"},
    {12, STATUS_CODE_BUFFER_UNDERRUN, "buffer underrun"}, {13, STATUS_CODE_NOT_SUPPORTED, "not supported"},
    {14, STATUS_CODE_NOT_INITIALIZED, "not initialized"}, {15, STATUS_CODE_MISSING_ARGS, "missing args"},
    {16, STATUS_CODE_NOT_OPEN, "not open"}, {17, STATUS_CODE_ALREADY_OPEN, "already open"},
    {18, STATUS_CODE_DISABLED, "disabled"}, {19, STATUS_CODE_INVALID_ENDPOINT, "invalid endpoint"},
    {20, STATUS_CODE_INVALID_PORT, "invalid port"}, {21, STATUS_CODE_INVALID_VERSION, "invalid version"},
    {22, STATUS_CODE_INVALID_LENGTH, "invalid length"}, {23, STATUS_CODE_INVALID_PARAMETER, "invalid parameter"},
    {24, STATUS_CODE_INVALID_NAME, "invalid name"}, {25, STATUS_CODE_INVALID_FORMAT, "invalid format"},
    {26, STATUS_CODE_INVALID_INDEX, "invalid index"}, {27, STATUS_CODE_INVALID_KEY, "invalid key"},
    {28, STATUS_CODE_INVALID_FIELD_TYPE, "invalid field type"}, {29, STATUS_CODE_INVALID_FIELD, "invalid field"},
    {30, STATUS_CODE_INVALID_RECORD, "invalid record"}, {31, STATUS_CODE_INVALID_TABLE, "invalid table"},
    {32, STATUS_CODE_INVALID_PROTOCOL, "invalid protocol"}, {33, STATUS_CODE_UNDEFINED_FIELD, "undefined field"},
    {34, STATUS_CODE_NO_PRIMARY_KEY, "no primary key"}, {35, STATUS_CODE_MISMATCH, "mismatch"},
    {36, STATUS_CODE_OUT_OF_RANGE, "out of range"}, {37, STATUS_CODE_STALE_DATA, "stale data"},
    {38, STATUS_CODE_ITEM_DELETED, "item deleted"}, {39, STATUS_CODE_EMPTY, "empty"}, {40, STATUS_CODE_FULL, "full"},
    {41, STATUS_CODE_HEAP_EMPTY, "heap empty"}, {42, STATUS_CODE_WRONG_STATE, "wrong state"},
    {43, STATUS_CODE_NOT_CONNECTED, "not connected"}, {44, STATUS_CODE_ALREADY_CONNECTED, "already connected"},
    {45, STATUS_CODE_ALREADY_DEFINED, "already defined"}, {46, STATUS_CODE_NOT_CREATED, "not created"},
    {47, STATUS_CODE_ALREADY_EXISTS, "already exists"}, {48, STATUS_CODE_IN_USE, "in use"},
    {49, STATUS_CODE_END_OF_DATA, "end of data"}, {50, STATUS_CODE_ALREADY_LISTENING, "already listening"},
    {51, STATUS_CODE_NOT_SHAREABLE, "not shareable"}, {52, STATUS_CODE_CONNECTION_REFUSED, "connection refused"},
    {53, STATUS_CODE_INTERRUPTED, "interrupted"}, {54, STATUS_CODE_IGNORED, "ignored"},
    {55, STATUS_CODE_TOO_MANY_REQUESTS_OUTSTANDING, "too many requests outstanding"},
    {56, STATUS_CODE_INVALID_ENDPOINT_PORT, "invalid endpoint-port"},
    {57, STATUS_CODE_HOST_NOT_FOUND, "host not found"}, {58, STATUS_CODE_INVALID_USER, "invalid user"},
    {59, STATUS_CODE_INVALID_PASSWORD, "invalid password"}, {60, STATUS_CODE_INVALID_URL, "invalid url"},
    {61, STATUS_CODE_NOT_A_DIRECTORY, "not a directory"}, {62, STATUS_CODE_BUSY, "busy"},
    {63, STATUS_CODE_EXPIRED, "expired"}, {64, STATUS_CODE_HOST_UNREACHABLE, "host unreachable"},
    {65, STATUS_CODE_NETWORK_UNREACHABLE, "network unreachable"},
    {67, STATUS_CODE_ADDRESS_NOT_AVAILABLE, "address not available"},
    {68, STATUS_CODE_NO_SUCH_DEVICE, "no such device"}, {69, STATUS_CODE_QUOTA_EXCEEDED, "quota exceeded"},
    {70, STATUS_CODE_INVALID_SERVICE_ID, "invalid service id"}, {71, STATUS_CODE_PATH_NOT_FOUND, "path not found"},
    {72, STATUS_CODE_INVALID_HANDLE, "invalid handle"}, {73, STATUS_CODE_INVALID_ADDRESS, "invalid address"},
    {74, STATUS_CODE_INSUFFICIENT_RESOURCES, "insufficient resources"},
    {75, STATUS_CODE_INVALID_REQUEST, "invalid request"},
    {76, STATUS_CODE_NO_PROXY_CONFIGURED, "no proxy configured"}, {77, STATUS_CODE_MISSING_FIELDS, "missing fields"},
    {78, STATUS_CODE_INVALID_USER_TYPE, "invalid user type"}, {79, STATUS_CODE_UNDEFINED_LENGTH, "undefined length"},
    {80, STATUS_CODE_FUNCTION_UNAVAILABLE, "function unavailable"}, {255, STATUS_CODE_UNKNOWN, "unknown"},
};

// Every byte: a named value has its text, every other one is formatted with
// its number (66 is the one gap among the named values, 81..254 are unnamed).
TEST(StatusCodeTest, EveryByteHasItsText)
{
    std::string expected[256];
    for (unsigned value = 0; value <= 255; ++value)
        expected[value] = "status code " + std::to_string(value);
    for (const NamedRow& row : kNamedRows)
    {
        EXPECT_EQ(row.constant, row.value) << row.text;
        expected[row.value] = row.text;
    }
    for (unsigned value = 0; value <= 255; ++value)
        EXPECT_EQ(StatusCodeToString(static_cast<unsigned char>(value)), expected[value]) << value;
}

// The texts outlive every function-local static: this object was made before
// the tests made them, so it is destroyed after them, as a global or a
// thread that logs during exit would be. A freed text fails under ASan, a
// changed one ends the process with a failure status.
struct ReadAtExit
{
    ~ReadAtExit()
    {
        if (StatusCodeToString(STATUS_CODE_TOO_MANY_REQUESTS_OUTSTANDING) != "too many requests outstanding" ||
            StatusCodeToString(200) != "status code 200" || File::GetEndOfLine().empty())
            std::_Exit(3);
    }
} readAtExit;

// The Win32 and Windows Sockets numbers with a status; others give the
// caller's default, and error 0 is success whatever the default.
TEST(StatusCodeTest, OsErrorMapping)
{
    constexpr int kDefault = -1;
    const struct
    {
        std::uint32_t osError;
        int status;
    } rows[] = {
        {0, 0}, {2, 6}, {3, 71}, {5, 10}, {6, 72}, {8, 41}, {11, 25}, {14, 41}, {80, 47}, {86, 59}, {87, 23},
        {121, 7}, {267, 61}, {1225, 52}, {10013, 10}, {10022, 23}, {10038, 72}, {10049, 67}, {10051, 65},
        {10060, 7}, {10061, 52}, {10065, 64}, {10069, 69}, {11001, 57},
        {1, kDefault}, {4, kDefault}, {7, kDefault}, {122, kDefault}, {183, kDefault}, {1224, kDefault},
        {1226, kDefault}, {10050, kDefault}, {10062, kDefault}, {11000, kDefault}, {11002, kDefault},
        {0x20000002, kDefault}, {0x80000002u, kDefault}, {0xFFFFFFFF, kDefault},
    };
    for (const auto& row : rows)
    {
        for (const unsigned char defaultStatus : {STATUS_CODE_MISMATCH, STATUS_CODE_SUCCESS})
            EXPECT_EQ(OsErrorToStatusCode(row.osError, defaultStatus),
                      row.status == kDefault ? defaultStatus : static_cast<unsigned>(row.status))
                << "error " << row.osError;
    }
}

} // namespace
} // namespace Zantor
