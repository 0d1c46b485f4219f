// The message exceptions: standard exceptions with a text that, as a side
// effect of being constructed, send that text to the log hook
// (LogMessageException) or to the alert hook (AlertMessageException). Each
// construction makes exactly one hook call, whether or not the exception is
// thrown; copies make none. Thrown with ZANTOR_THROW, they also carry boost's
// throw location (file, function, line), which what() appends.
//
// Ownership: the exception owns a copy of its text.
//
// Thread safety: an exception object belongs to one thread at a time; what()
// keeps its result per thread, so threads may call it at once. The hooks are
// read atomically (LogMessage.h).
//
//   ZANTOR_THROW(LogMessageException, LOG_TYPE_ERROR, "queue is full");
//   catch (const std::exception& e) { e.what(); }
//   // "queue is full (thrown from line 42 of ./source/Queue.cpp)"
#pragma once

#include <ZantorMiddleware/ZantorBase/Exception.h> // ZANTOR_THROW
#include <ZantorMiddleware/ZantorBase/Export.h>
#include <ZantorMiddleware/ZantorBase/LogMessage.h> // LOG_TYPE_*, ALERT_*

#include <boost/exception/exception.hpp>
#include <boost/format/format_fwd.hpp>

#include <cstdint>
#include <exception>
#include <string>

namespace Zantor {

// Carries a text and logs it when constructed.
class ZANTOR_BASE_API LogMessageException : public virtual std::exception, public virtual boost::exception
{
public:
    // Store the message (a null text is empty; a format is rendered first),
    // then call the current log hook once with logType and the message.
    LogMessageException(unsigned char logType, const char* message);
    LogMessageException(unsigned char logType, const std::string& message);
    LogMessageException(unsigned char logType, const boost::format& message);
    ~LogMessageException() noexcept override;

    // The message; with a throw location, followed by
    // " (thrown from line <line> of <file>)". The pointer stays valid until
    // the next what() of a message exception on the same thread.
    const char* what() const noexcept override;

    // The message alone.
    const std::string& GetText() const noexcept { return m_message; }

private:
    std::string m_message;
};

// Carries a text and raises it as an alert when constructed. The alert type
// and id are passed to the hook only, not stored.
class ZANTOR_BASE_API AlertMessageException : public virtual std::exception, public virtual boost::exception
{
public:
    // Store the message (as for LogMessageException), then call the current
    // alert hook once with alertType, alertId and the message.
    AlertMessageException(unsigned char alertType, std::uint32_t alertId, const char* message);
    AlertMessageException(unsigned char alertType, std::uint32_t alertId, const std::string& message);
    AlertMessageException(unsigned char alertType, std::uint32_t alertId, const boost::format& message);
    ~AlertMessageException() noexcept override;

    // As LogMessageException::what().
    const char* what() const noexcept override;

    const std::string& GetText() const noexcept { return m_message; }

private:
    std::string m_message;
};

} // namespace Zantor
