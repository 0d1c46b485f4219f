// The log and alert hooks, their texts, the message overloads and the
// default printers; the console test, the time stamp and the system log are
// platform code (source/<platform>/LogSink.cpp).
#include <ZantorMiddleware/ZantorBase/LogMessage.h>

#include "LogSink.h"

#include <boost/format.hpp>

#include <atomic>
#include <cstdio>

namespace Zantor {

namespace {

void SilentLogMessage(unsigned char, const char*) {}
void SilentAlertMessage(unsigned char, std::uint32_t, const char*) {}

// Constant-initialized, so the default printers are in place before any
// static constructor of any library or program can log.
constinit std::atomic<LogMessageFunction> g_logMessageFunction{&PrintfLogMessage};
constinit std::atomic<AlertMessageFunction> g_alertMessageFunction{&PrintfAlertMessage};

std::string UnknownText(unsigned value, int width)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "unknown (0x%0*x)", width, value);
    return buffer;
}

} // namespace

void LogMessage(unsigned char logType, const char* message)
{
    g_logMessageFunction.load(std::memory_order_acquire)(logType, message);
}

void LogMessage(unsigned char logType, const std::string& message)
{
    LogMessage(logType, message.c_str());
}

void LogMessage(unsigned char logType, const boost::format& message)
{
    LogMessage(logType, message.str().c_str());
}

void AlertMessage(unsigned char alertType, std::uint32_t alertId, const char* message)
{
    g_alertMessageFunction.load(std::memory_order_acquire)(alertType, alertId, message);
}

void AlertMessage(unsigned char alertType, std::uint32_t alertId, const std::string& message)
{
    AlertMessage(alertType, alertId, message.c_str());
}

void AlertMessage(unsigned char alertType, std::uint32_t alertId, const boost::format& message)
{
    AlertMessage(alertType, alertId, message.str().c_str());
}

void SetLogMessageFunction(LogMessageFunction function)
{
    g_logMessageFunction.exchange(function != nullptr ? function : &SilentLogMessage,
                                  std::memory_order_acq_rel);
}

void SetAlertMessageFunction(AlertMessageFunction function)
{
    g_alertMessageFunction.exchange(function != nullptr ? function : &SilentAlertMessage,
                                    std::memory_order_acq_rel);
}

LogMessageFunction GetLogMessageFunction()
{
    return g_logMessageFunction.load(std::memory_order_acquire);
}

AlertMessageFunction GetAlertMessageFunction()
{
    return g_alertMessageFunction.load(std::memory_order_acquire);
}

void PrintfLogMessage(unsigned char logType, const char* message)
{
    if (message == nullptr)
        message = "";
    if (Detail::HasConsole())
    {
        Detail::PrintConsoleLine(logType == LOG_TYPE_ERROR ? stderr : stdout, message);
        return;
    }
    Detail::SystemLogSeverity severity = Detail::SystemLogSeverity::Information;
    if (logType == LOG_TYPE_WARNING)
        severity = Detail::SystemLogSeverity::Warning;
    else if (logType == LOG_TYPE_ERROR)
        severity = Detail::SystemLogSeverity::Error;
    Detail::WriteSystemLog(severity, message);
}

void PrintfAlertMessage(unsigned char, std::uint32_t, const char* message)
{
    if (message == nullptr)
        message = "";
    if (Detail::HasConsole())
    {
        Detail::PrintConsoleLine(stderr, message);
        return;
    }
    Detail::WriteSystemLog(Detail::SystemLogSeverity::Error, message);
}

std::string LogTypeToString(unsigned char logType)
{
    switch (logType) {
    case LOG_TYPE_DEBUG: return "Debug";
    case LOG_TYPE_INFO: return "Info";
    case LOG_TYPE_WARNING: return "Warning";
    case LOG_TYPE_ERROR: return "Error";
    default: return UnknownText(logType, 2);
    }
}

std::string AlertTypeToString(unsigned char alertType)
{
    switch (alertType) {
    case ALERT_TYPE_ISOLATED: return "Isolated";
    case ALERT_TYPE_OPEN: return "Open";
    case ALERT_TYPE_UPDATE: return "Update";
    case ALERT_TYPE_CLOSE: return "Close";
    default: return UnknownText(alertType, 2);
    }
}

std::string AlertIdToString(std::uint32_t alertId)
{
    switch (alertId) {
    case ALERT_ID_MANUAL: return "Manual";
    case ALERT_ID_MISCELLANEOUS: return "Miscellaneous";
    case ALERT_ID_AUTHENTICATION: return "Authentication";
    case ALERT_ID_PROCESS_DIE: return "Process die";
    case ALERT_ID_PROCESS_FAILED_TO_START: return "Process failed to start";
    case ALERT_ID_SERVICE_STATE_CHANGE: return "Service state change";
    case ALERT_ID_DATABASE_INTEGRITY: return "Database integrity";
    case ALERT_ID_NO_DATA: return "No data";
    case ALERT_ID_CROSSED_ORDER_BOOK: return "Crossed order book";
    case ALERT_ID_FEED_CONFLATION_CHANGE: return "Feed conflation change";
    case ALERT_ID_QUEUE_LIMIT_REACHED: return "Queue limit reached";
    default: return UnknownText(alertId, 8);
    }
}

std::string LogTypesToString()
{
    // The list is joined with a count of zero, which yields nothing; callers
    // depend on the empty result.
    return std::string();
}

} // namespace Zantor
