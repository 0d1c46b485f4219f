// The message exceptions: the hook call on construction and what() with the
// throw location.
#include <ZantorMiddleware/ZantorBase/MessageException.h>

#include <ZantorMiddleware/ZantorBase/LogMessage.h>

#include <boost/exception/get_error_info.hpp>
#include <boost/format.hpp>

namespace Zantor {

namespace {

std::string TextOf(const char* message)
{
    return message != nullptr ? std::string(message) : std::string();
}

// The message, followed by " (thrown from line %d of %s)" when both the
// throw file and the throw line are set; kept in a per-thread string.
const char* DescribeWithLocation(const boost::exception& exception, const std::string& message) noexcept
{
    thread_local std::string description;
    try
    {
        description = message;
        const char* const* file = boost::get_error_info<boost::throw_file>(exception);
        const int* line = boost::get_error_info<boost::throw_line>(exception);
        if (file != nullptr && *file != nullptr && line != nullptr)
        {
            description += " (thrown from line ";
            description += std::to_string(*line);
            description += " of ";
            description += *file;
            description += ')';
        }
        return description.c_str();
    }
    catch (...)
    {
        // Out of memory while formatting: the message alone.
        return message.c_str();
    }
}

} // namespace

LogMessageException::LogMessageException(unsigned char logType, const char* message)
    : LogMessageException(logType, TextOf(message))
{
}

LogMessageException::LogMessageException(unsigned char logType, const std::string& message) : m_message(message)
{
    GetLogMessageFunction()(logType, m_message.c_str());
}

LogMessageException::LogMessageException(unsigned char logType, const boost::format& message)
    : LogMessageException(logType, message.str())
{
}

LogMessageException::~LogMessageException() noexcept = default;

const char* LogMessageException::what() const noexcept
{
    return DescribeWithLocation(*this, m_message);
}

AlertMessageException::AlertMessageException(unsigned char alertType, std::uint32_t alertId, const char* message)
    : AlertMessageException(alertType, alertId, TextOf(message))
{
}

AlertMessageException::AlertMessageException(unsigned char alertType, std::uint32_t alertId,
                                             const std::string& message)
    : m_message(message)
{
    GetAlertMessageFunction()(alertType, alertId, m_message.c_str());
}

AlertMessageException::AlertMessageException(unsigned char alertType, std::uint32_t alertId,
                                             const boost::format& message)
    : AlertMessageException(alertType, alertId, message.str())
{
}

AlertMessageException::~AlertMessageException() noexcept = default;

const char* AlertMessageException::what() const noexcept
{
    return DescribeWithLocation(*this, m_message);
}

} // namespace Zantor
