// Status code texts, the OS error to status code table and the OS error
// text. Portable: the system's own error texts and GetLastOsError are in
// source/<platform>/OsError.cpp.
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include "SystemErrorText.h"

#include <array>
#include <cstdio>
#include <locale>

namespace Zantor {

namespace {

struct NamedStatus
{
    StatusCode code;
    const char* text;
};

constexpr NamedStatus kNamedStatuses[] = {
    {STATUS_CODE_SUCCESS, "success"},
    {STATUS_CODE_FAILURE, "failure"},
    {STATUS_CODE_EXIT, "exit"},
    {STATUS_CODE_SHUTTING_DOWN, "shutting down"},
    {STATUS_CODE_UNHANDLED_EXCEPTION, "unhandled exception"},
    {STATUS_CODE_UNRECOGNIZED, "unrecognized"},
    {STATUS_CODE_NOT_FOUND, "not found"},
    {STATUS_CODE_TIMEOUT, "timeout"},
    {STATUS_CODE_UNCHANGED, "unchanged"},
    {STATUS_CODE_PENDING, "pending"},
    {STATUS_CODE_ACCESS_DENIED, "access denied"},
    {STATUS_CODE_BUFFER_OVERFLOW, "buffer overflow"},
    {STATUS_CODE_BUFFER_UNDERRUN, "buffer underrun"},
    {STATUS_CODE_NOT_SUPPORTED, "not supported"},
    {STATUS_CODE_NOT_INITIALIZED, "not initialized"},
    {STATUS_CODE_MISSING_ARGS, "missing args"},
    {STATUS_CODE_NOT_OPEN, "not open"},
    {STATUS_CODE_ALREADY_OPEN, "already open"},
    {STATUS_CODE_DISABLED, "disabled"},
    {STATUS_CODE_INVALID_ENDPOINT, "invalid endpoint"},
    {STATUS_CODE_INVALID_PORT, "invalid port"},
    {STATUS_CODE_INVALID_VERSION, "invalid version"},
    {STATUS_CODE_INVALID_LENGTH, "invalid length"},
    {STATUS_CODE_INVALID_PARAMETER, "invalid parameter"},
    {STATUS_CODE_INVALID_NAME, "invalid name"},
    {STATUS_CODE_INVALID_FORMAT, "invalid format"},
    {STATUS_CODE_INVALID_INDEX, "invalid index"},
    {STATUS_CODE_INVALID_KEY, "invalid key"},
    {STATUS_CODE_INVALID_FIELD_TYPE, "invalid field type"},
    {STATUS_CODE_INVALID_FIELD, "invalid field"},
    {STATUS_CODE_INVALID_RECORD, "invalid record"},
    {STATUS_CODE_INVALID_TABLE, "invalid table"},
    {STATUS_CODE_INVALID_PROTOCOL, "invalid protocol"},
    {STATUS_CODE_UNDEFINED_FIELD, "undefined field"},
    {STATUS_CODE_NO_PRIMARY_KEY, "no primary key"},
    {STATUS_CODE_MISMATCH, "mismatch"},
    {STATUS_CODE_OUT_OF_RANGE, "out of range"},
    {STATUS_CODE_STALE_DATA, "stale data"},
    {STATUS_CODE_ITEM_DELETED, "item deleted"},
    {STATUS_CODE_EMPTY, "empty"},
    {STATUS_CODE_FULL, "full"},
    {STATUS_CODE_HEAP_EMPTY, "heap empty"},
    {STATUS_CODE_WRONG_STATE, "wrong state"},
    {STATUS_CODE_NOT_CONNECTED, "not connected"},
    {STATUS_CODE_ALREADY_CONNECTED, "already connected"},
    {STATUS_CODE_ALREADY_DEFINED, "already defined"},
    {STATUS_CODE_NOT_CREATED, "not created"},
    {STATUS_CODE_ALREADY_EXISTS, "already exists"},
    {STATUS_CODE_IN_USE, "in use"},
    {STATUS_CODE_END_OF_DATA, "end of data"},
    {STATUS_CODE_ALREADY_LISTENING, "already listening"},
    {STATUS_CODE_NOT_SHAREABLE, "not shareable"},
    {STATUS_CODE_CONNECTION_REFUSED, "connection refused"},
    {STATUS_CODE_INTERRUPTED, "interrupted"},
    {STATUS_CODE_IGNORED, "ignored"},
    {STATUS_CODE_TOO_MANY_REQUESTS_OUTSTANDING, "too many requests outstanding"},
    {STATUS_CODE_INVALID_ENDPOINT_PORT, "invalid endpoint-port"},
    {STATUS_CODE_HOST_NOT_FOUND, "host not found"},
    {STATUS_CODE_INVALID_USER, "invalid user"},
    {STATUS_CODE_INVALID_PASSWORD, "invalid password"},
    {STATUS_CODE_INVALID_URL, "invalid url"},
    {STATUS_CODE_NOT_A_DIRECTORY, "not a directory"},
    {STATUS_CODE_BUSY, "busy"},
    {STATUS_CODE_EXPIRED, "expired"},
    {STATUS_CODE_HOST_UNREACHABLE, "host unreachable"},
    {STATUS_CODE_NETWORK_UNREACHABLE, "network unreachable"},
    {STATUS_CODE_ADDRESS_NOT_AVAILABLE, "address not available"},
    {STATUS_CODE_NO_SUCH_DEVICE, "no such device"},
    {STATUS_CODE_QUOTA_EXCEEDED, "quota exceeded"},
    {STATUS_CODE_INVALID_SERVICE_ID, "invalid service id"},
    {STATUS_CODE_PATH_NOT_FOUND, "path not found"},
    {STATUS_CODE_INVALID_HANDLE, "invalid handle"},
    {STATUS_CODE_INVALID_ADDRESS, "invalid address"},
    {STATUS_CODE_INSUFFICIENT_RESOURCES, "insufficient resources"},
    {STATUS_CODE_INVALID_REQUEST, "invalid request"},
    {STATUS_CODE_NO_PROXY_CONFIGURED, "no proxy configured"},
    {STATUS_CODE_MISSING_FIELDS, "missing fields"},
    {STATUS_CODE_INVALID_USER_TYPE, "invalid user type"},
    {STATUS_CODE_UNDEFINED_LENGTH, "undefined length"},
    {STATUS_CODE_FUNCTION_UNAVAILABLE, "function unavailable"},
    {STATUS_CODE_UNKNOWN, "unknown"},
};

using StatusTextTable = std::array<std::string, 256>;

StatusTextTable BuildStatusTextTable()
{
    StatusTextTable table;
    for (const NamedStatus& named : kNamedStatuses)
        table[named.code] = named.text;
    for (unsigned index = 0; index < table.size(); ++index)
    {
        if (table[index].empty())
        {
            char text[32];
            std::snprintf(text, sizeof text, "status code %u", index);
            table[index] = text;
        }
    }
    return table;
}

struct OsErrorMapping
{
    std::uint32_t osError;
    StatusCode status;
};

// Win32 and Windows Sockets error numbers with a status of their own. Both
// out-of-memory errors are "heap empty", and a socket that is not a socket
// is an invalid handle.
constexpr OsErrorMapping kOsErrorMappings[] = {
    {0, STATUS_CODE_SUCCESS},                 // ERROR_SUCCESS
    {2, STATUS_CODE_NOT_FOUND},               // ERROR_FILE_NOT_FOUND
    {3, STATUS_CODE_PATH_NOT_FOUND},          // ERROR_PATH_NOT_FOUND
    {5, STATUS_CODE_ACCESS_DENIED},           // ERROR_ACCESS_DENIED
    {6, STATUS_CODE_INVALID_HANDLE},          // ERROR_INVALID_HANDLE
    {8, STATUS_CODE_HEAP_EMPTY},              // ERROR_NOT_ENOUGH_MEMORY
    {11, STATUS_CODE_INVALID_FORMAT},         // ERROR_BAD_FORMAT
    {14, STATUS_CODE_HEAP_EMPTY},             // ERROR_OUTOFMEMORY
    {80, STATUS_CODE_ALREADY_EXISTS},         // ERROR_FILE_EXISTS
    {86, STATUS_CODE_INVALID_PASSWORD},       // ERROR_INVALID_PASSWORD
    {87, STATUS_CODE_INVALID_PARAMETER},      // ERROR_INVALID_PARAMETER
    {121, STATUS_CODE_TIMEOUT},               // ERROR_SEM_TIMEOUT
    {267, STATUS_CODE_NOT_A_DIRECTORY},       // ERROR_DIRECTORY
    {1225, STATUS_CODE_CONNECTION_REFUSED},   // ERROR_CONNECTION_REFUSED
    {10013, STATUS_CODE_ACCESS_DENIED},       // WSAEACCES
    {10022, STATUS_CODE_INVALID_PARAMETER},   // WSAEINVAL
    {10038, STATUS_CODE_INVALID_HANDLE},      // WSAENOTSOCK
    {10049, STATUS_CODE_ADDRESS_NOT_AVAILABLE}, // WSAEADDRNOTAVAIL
    {10051, STATUS_CODE_NETWORK_UNREACHABLE}, // WSAENETUNREACH
    {10060, STATUS_CODE_TIMEOUT},             // WSAETIMEDOUT
    {10061, STATUS_CODE_CONNECTION_REFUSED},  // WSAECONNREFUSED
    {10065, STATUS_CODE_HOST_UNREACHABLE},    // WSAEHOSTUNREACH
    {10069, STATUS_CODE_QUOTA_EXCEEDED},      // WSAEDQUOT
    {11001, STATUS_CODE_HOST_NOT_FOUND},      // WSAHOST_NOT_FOUND
};

} // namespace

const std::string& StatusCodeToString(unsigned char statusCode)
{
    // Never destroyed: destructors of globals and threads still running at
    // exit may log a status text after this function's statics would be gone.
    static const StatusTextTable& table = *new StatusTextTable(BuildStatusTextTable());
    return table[statusCode];
}

StatusCode OsErrorToStatusCode(std::uint32_t osError, unsigned char defaultStatusCode)
{
    for (const OsErrorMapping& mapping : kOsErrorMappings)
    {
        if (mapping.osError == osError)
            return mapping.status;
    }
    return defaultStatusCode;
}

std::string OsErrorToString(std::uint32_t osError)
{
    std::string text;
    if (Detail::GetSystemErrorText(osError, text))
    {
        // System texts end in a line break (Windows) that callers never want.
        const std::locale locale;
        while (!text.empty() && std::isspace(text.back(), locale))
            text.pop_back();
        return text;
    }
    char fallback[32];
    std::snprintf(fallback, sizeof fallback, "error %u", static_cast<unsigned>(osError));
    return fallback;
}

} // namespace Zantor
