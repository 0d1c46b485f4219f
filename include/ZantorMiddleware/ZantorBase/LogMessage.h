// Log and alert messages: the library never writes diagnostics itself; it
// hands them to two process-wide hooks, the log message function and the
// alert message function. Logs are for developers, alerts for operators (a
// process died, a queue limit was reached). An application replaces the hooks
// to route messages into its own logging; until it does, the default printers
// PrintfLogMessage and PrintfAlertMessage are installed.
//
// Ownership: the hooks are plain function pointers; nothing is owned.
//
// Thread safety: every function may be called from any thread at any time.
// The hook pointers are replaced by atomic exchange and read without a lock,
// so a hook may run on one thread while another thread replaces it: a hook
// must be safe to call concurrently, and must stay callable after it has been
// replaced (a thread may still be inside it).
//
//   LogMessageFunction saved = GetLogMessageFunction();
//   SetLogMessageFunction(&MyLogger);           // route into the application
//   LogMessage(LOG_TYPE_WARNING, boost::format("queue at %1%") % depth);
#pragma once

#include <ZantorMiddleware/ZantorBase/Export.h>

#include <boost/format/format_fwd.hpp>

#include <cstdint>
#include <string>

namespace Zantor {

// Log types (8 bits).
inline constexpr unsigned char LOG_TYPE_DEBUG = 0;
inline constexpr unsigned char LOG_TYPE_INFO = 1;
inline constexpr unsigned char LOG_TYPE_WARNING = 2;
inline constexpr unsigned char LOG_TYPE_ERROR = 3;

// Alert types (8 bits).
inline constexpr unsigned char ALERT_TYPE_ISOLATED = 0;
inline constexpr unsigned char ALERT_TYPE_OPEN = 1;
inline constexpr unsigned char ALERT_TYPE_UPDATE = 2;
inline constexpr unsigned char ALERT_TYPE_CLOSE = 3;

// Alert ids (32 bits). 0 is not a valid id and has no text.
inline constexpr std::uint32_t ALERT_ID_MANUAL = 1;
inline constexpr std::uint32_t ALERT_ID_MISCELLANEOUS = 2;
inline constexpr std::uint32_t ALERT_ID_AUTHENTICATION = 3;
inline constexpr std::uint32_t ALERT_ID_PROCESS_DIE = 4;
inline constexpr std::uint32_t ALERT_ID_PROCESS_FAILED_TO_START = 5;
inline constexpr std::uint32_t ALERT_ID_SERVICE_STATE_CHANGE = 6;
inline constexpr std::uint32_t ALERT_ID_DATABASE_INTEGRITY = 7;
inline constexpr std::uint32_t ALERT_ID_NO_DATA = 8;
inline constexpr std::uint32_t ALERT_ID_CROSSED_ORDER_BOOK = 9;
inline constexpr std::uint32_t ALERT_ID_FEED_CONFLATION_CHANGE = 10;
inline constexpr std::uint32_t ALERT_ID_QUEUE_LIMIT_REACHED = 11;

using LogMessageFunction = void (*)(unsigned char logType, const char* message);
using AlertMessageFunction = void (*)(unsigned char alertType, std::uint32_t alertId, const char* message);

// Calls the current log hook with the type and the message. The string and
// format overloads render the text first (a format with missing arguments
// throws boost::io::too_few_args before the hook is called).
ZANTOR_BASE_API void LogMessage(unsigned char logType, const char* message);
ZANTOR_BASE_API void LogMessage(unsigned char logType, const std::string& message);
ZANTOR_BASE_API void LogMessage(unsigned char logType, const boost::format& message);

// Calls the current alert hook with the type, the id and the message; the
// overloads as for LogMessage.
ZANTOR_BASE_API void AlertMessage(unsigned char alertType, std::uint32_t alertId, const char* message);
ZANTOR_BASE_API void AlertMessage(unsigned char alertType, std::uint32_t alertId, const std::string& message);
ZANTOR_BASE_API void AlertMessage(unsigned char alertType, std::uint32_t alertId, const boost::format& message);

// Installs a hook by atomic exchange. Null installs a function that does
// nothing (silence); it does not bring back the default printer. To restore
// the default, save Get...() first or install PrintfLogMessage explicitly.
ZANTOR_BASE_API void SetLogMessageFunction(LogMessageFunction function);
ZANTOR_BASE_API void SetAlertMessageFunction(AlertMessageFunction function);

// Return the hook currently installed, never null: after Set...(nullptr) they
// return the do-nothing function, not the default printer.
ZANTOR_BASE_API LogMessageFunction GetLogMessageFunction();
ZANTOR_BASE_API AlertMessageFunction GetAlertMessageFunction();

// The default hooks, installed when the library is loaded and exported so an
// application hook may chain to them. A null message is printed as empty.
//
// With a console, each writes one line "hh:mm:ss message\n" stamped with the
// local time: PrintfLogMessage to standard error for LOG_TYPE_ERROR and to
// standard output otherwise (flushed at once); PrintfAlertMessage always to
// standard error. Neither type nor id is printed.
//
// Without a console the message goes to the system log with two insertion
// strings, the program's base name and the message:
// - Windows: the process has a console when GetConsoleWindow() is not null.
//   The event log is the Windows event log, source = the "EventLogName" string
//   value (not empty) under HKEY_LOCAL_MACHINE "SOFTWARE\Pellmont\Common",
//   else under "SOFTWARE\ZANTOR", else "ZANTOR"; the source is registered once
//   per process, on first use. Logs are reported as Warning, Error or
//   Information events, alerts always as Error events. When the event source
//   cannot be registered (no rights to the Eventlog registry key) the message
//   is dropped.
// - Linux: the process has a console when standard error is an open
//   descriptor that is not /dev/null, nor a syslog(3) socket (which takes
//   descriptor 2 once a process has closed its standard error); checked on
//   every call, so a process that redirects its standard error is followed
//   at once. Otherwise the message goes to the system log socket (/dev/log)
//   as syslog(3) would send it, with facility LOG_USER, the identity
//   "ZANTOR[<pid>]" and the text "<program>: <message>", where <program> is
//   the executable's base name without extension; LOG_TYPE_WARNING maps to
//   LOG_WARNING, LOG_TYPE_ERROR to LOG_ERR, every other log type to
//   LOG_INFO, and alerts to LOG_ERR. The library keeps its own connection
//   (on a descriptor above 2) and never calls openlog, so an application's
//   own syslog identity and facility stay as the application set them.
// No failure is reported: a message that cannot be written is lost.
ZANTOR_BASE_API void PrintfLogMessage(unsigned char logType, const char* message);
ZANTOR_BASE_API void PrintfAlertMessage(unsigned char alertType, std::uint32_t alertId, const char* message);

// Texts of the constants above ("Debug", "Isolated", "Process die", ...).
// Any other value gives "unknown (0x..)" in lower-case hexadecimal, padded
// with zeros to 2 digits for the two type functions and 8 for alert ids, so
// AlertIdToString(0) is "unknown (0x00000000)".
ZANTOR_BASE_API std::string LogTypeToString(unsigned char logType);
ZANTOR_BASE_API std::string AlertTypeToString(unsigned char alertType);
ZANTOR_BASE_API std::string AlertIdToString(std::uint32_t alertId);

// Always returns the empty string: the list of log types is joined with a
// count of zero. Existing callers print it as an (empty) hint and rely on
// that result, so it is kept.
ZANTOR_BASE_API std::string LogTypesToString();

} // namespace Zantor
