// Status codes: the 8-bit result of nearly every operation of the library,
// their texts, and the translation of operating-system error numbers.
//
// OS error numbers are Win32 error numbers on every platform: on Linux the
// library translates errno values into them, so a status,
// a log line or an OsException means the same everywhere.
//
// Thread safety: all functions may be called from any thread. The text table
// is built on the first call of StatusCodeToString (thread-safe static init)
// and never destroyed, so texts stay valid while the process exits.
//
//   StatusCode status = builder.AppendUInt32(value, MessageHandler::ENDIAN_BIG);
//   if (status != STATUS_CODE_SUCCESS)
//       LogMessage(LOG_TYPE_ERROR, StatusCodeToString(status));
#pragma once

#include <ZantorMiddleware/ZantorBase/Export.h>

#include <cstdint>
#include <string>

namespace Zantor {

using StatusCode = unsigned char;

// The numbers are part of the wire and of the interface: never renumber.
inline constexpr StatusCode STATUS_CODE_SUCCESS = 0;
inline constexpr StatusCode STATUS_CODE_FAILURE = 1;
inline constexpr StatusCode STATUS_CODE_EXIT = 2;
inline constexpr StatusCode STATUS_CODE_SHUTTING_DOWN = 3;
inline constexpr StatusCode STATUS_CODE_UNHANDLED_EXCEPTION = 4;
inline constexpr StatusCode STATUS_CODE_UNRECOGNIZED = 5;
inline constexpr StatusCode STATUS_CODE_NOT_FOUND = 6;
inline constexpr StatusCode STATUS_CODE_TIMEOUT = 7;
inline constexpr StatusCode STATUS_CODE_UNCHANGED = 8;
inline constexpr StatusCode STATUS_CODE_PENDING = 9;
inline constexpr StatusCode STATUS_CODE_ACCESS_DENIED = 10;
inline constexpr StatusCode STATUS_CODE_BUFFER_OVERFLOW = 11;
inline constexpr StatusCode STATUS_CODE_BUFFER_UNDERRUN = 12;
inline constexpr StatusCode STATUS_CODE_NOT_SUPPORTED = 13;
inline constexpr StatusCode STATUS_CODE_NOT_INITIALIZED = 14;
inline constexpr StatusCode STATUS_CODE_MISSING_ARGS = 15;
inline constexpr StatusCode STATUS_CODE_NOT_OPEN = 16;
inline constexpr StatusCode STATUS_CODE_ALREADY_OPEN = 17;
inline constexpr StatusCode STATUS_CODE_DISABLED = 18;
inline constexpr StatusCode STATUS_CODE_INVALID_ENDPOINT = 19;
inline constexpr StatusCode STATUS_CODE_INVALID_PORT = 20;
inline constexpr StatusCode STATUS_CODE_INVALID_VERSION = 21;
inline constexpr StatusCode STATUS_CODE_INVALID_LENGTH = 22;
inline constexpr StatusCode STATUS_CODE_INVALID_PARAMETER = 23;
inline constexpr StatusCode STATUS_CODE_INVALID_NAME = 24;
inline constexpr StatusCode STATUS_CODE_INVALID_FORMAT = 25;
inline constexpr StatusCode STATUS_CODE_INVALID_INDEX = 26;
inline constexpr StatusCode STATUS_CODE_INVALID_KEY = 27;
inline constexpr StatusCode STATUS_CODE_INVALID_FIELD_TYPE = 28;
inline constexpr StatusCode STATUS_CODE_INVALID_FIELD = 29;
inline constexpr StatusCode STATUS_CODE_INVALID_RECORD = 30;
inline constexpr StatusCode STATUS_CODE_INVALID_TABLE = 31;
inline constexpr StatusCode STATUS_CODE_INVALID_PROTOCOL = 32;
inline constexpr StatusCode STATUS_CODE_UNDEFINED_FIELD = 33;
inline constexpr StatusCode STATUS_CODE_NO_PRIMARY_KEY = 34;
inline constexpr StatusCode STATUS_CODE_MISMATCH = 35;
inline constexpr StatusCode STATUS_CODE_OUT_OF_RANGE = 36;
inline constexpr StatusCode STATUS_CODE_STALE_DATA = 37;
inline constexpr StatusCode STATUS_CODE_ITEM_DELETED = 38;
inline constexpr StatusCode STATUS_CODE_EMPTY = 39;
inline constexpr StatusCode STATUS_CODE_FULL = 40;
inline constexpr StatusCode STATUS_CODE_HEAP_EMPTY = 41;
inline constexpr StatusCode STATUS_CODE_WRONG_STATE = 42;
inline constexpr StatusCode STATUS_CODE_NOT_CONNECTED = 43;
inline constexpr StatusCode STATUS_CODE_ALREADY_CONNECTED = 44;
inline constexpr StatusCode STATUS_CODE_ALREADY_DEFINED = 45;
inline constexpr StatusCode STATUS_CODE_NOT_CREATED = 46;
inline constexpr StatusCode STATUS_CODE_ALREADY_EXISTS = 47;
inline constexpr StatusCode STATUS_CODE_IN_USE = 48;
inline constexpr StatusCode STATUS_CODE_END_OF_DATA = 49;
inline constexpr StatusCode STATUS_CODE_ALREADY_LISTENING = 50;
inline constexpr StatusCode STATUS_CODE_NOT_SHAREABLE = 51;
inline constexpr StatusCode STATUS_CODE_CONNECTION_REFUSED = 52;
inline constexpr StatusCode STATUS_CODE_INTERRUPTED = 53;
inline constexpr StatusCode STATUS_CODE_IGNORED = 54;
inline constexpr StatusCode STATUS_CODE_TOO_MANY_REQUESTS_OUTSTANDING = 55;
inline constexpr StatusCode STATUS_CODE_INVALID_ENDPOINT_PORT = 56;
inline constexpr StatusCode STATUS_CODE_HOST_NOT_FOUND = 57;
inline constexpr StatusCode STATUS_CODE_INVALID_USER = 58;
inline constexpr StatusCode STATUS_CODE_INVALID_PASSWORD = 59;
inline constexpr StatusCode STATUS_CODE_INVALID_URL = 60;
inline constexpr StatusCode STATUS_CODE_NOT_A_DIRECTORY = 61;
inline constexpr StatusCode STATUS_CODE_BUSY = 62;
inline constexpr StatusCode STATUS_CODE_EXPIRED = 63;
inline constexpr StatusCode STATUS_CODE_HOST_UNREACHABLE = 64;
inline constexpr StatusCode STATUS_CODE_NETWORK_UNREACHABLE = 65;
inline constexpr StatusCode STATUS_CODE_ADDRESS_NOT_AVAILABLE = 67;
inline constexpr StatusCode STATUS_CODE_NO_SUCH_DEVICE = 68;
inline constexpr StatusCode STATUS_CODE_QUOTA_EXCEEDED = 69;
inline constexpr StatusCode STATUS_CODE_INVALID_SERVICE_ID = 70;
inline constexpr StatusCode STATUS_CODE_PATH_NOT_FOUND = 71;
inline constexpr StatusCode STATUS_CODE_INVALID_HANDLE = 72;
inline constexpr StatusCode STATUS_CODE_INVALID_ADDRESS = 73;
inline constexpr StatusCode STATUS_CODE_INSUFFICIENT_RESOURCES = 74;
inline constexpr StatusCode STATUS_CODE_INVALID_REQUEST = 75;
inline constexpr StatusCode STATUS_CODE_NO_PROXY_CONFIGURED = 76;
inline constexpr StatusCode STATUS_CODE_MISSING_FIELDS = 77;
inline constexpr StatusCode STATUS_CODE_INVALID_USER_TYPE = 78;
inline constexpr StatusCode STATUS_CODE_UNDEFINED_LENGTH = 79;
inline constexpr StatusCode STATUS_CODE_FUNCTION_UNAVAILABLE = 80;
inline constexpr StatusCode STATUS_CODE_UNKNOWN = 255;

// Returns the text of a status code: the named texts above, "status code %u"
// for every other value. The reference lives for the whole process.
ZANTOR_BASE_API const std::string& StatusCodeToString(unsigned char statusCode);

// Returns the status code of a Win32 or Windows Sockets error number, or
// defaultStatusCode when the number is not in the mapping table. Error 0 is
// always STATUS_CODE_SUCCESS.
ZANTOR_BASE_API StatusCode OsErrorToStatusCode(std::uint32_t osError, unsigned char defaultStatusCode);

// Returns a readable text for a Win32 error number: the system's message
// without trailing white space, or "error %u" when there is none. On Linux
// the number is described through its errno equivalent and strerror, and the
// numbers no errno describes with the same meaning (every number of the
// mapping table among them) have texts of the library's own, so a text never
// names another condition than the number's.
ZANTOR_BASE_API std::string OsErrorToString(std::uint32_t osError);

// The calling thread's last OS error as a Win32 error number: GetLastError()
// on Windows, errno translated to its Win32 number on Linux.
ZANTOR_BASE_API std::uint32_t GetLastOsError();

} // namespace Zantor
