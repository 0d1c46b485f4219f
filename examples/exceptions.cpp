// Exceptions of ZantorBase: a status-code exception thrown deep inside a
// call, caught, and reported through an outer exception that carries a chain
// of further causes; then a message exception, which logs its text when it
// is made and names its throw location in what().
#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/LogMessage.h>
#include <ZantorMiddleware/ZantorBase/MessageException.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <boost/format.hpp>

#include <iostream>

namespace Zantor::Example {

struct QuoteFeed
{
    void ParseQuote(int denominatorCode)
    {
        if (denominatorCode > 9)
            ZANTOR_THROW(StatusCodeException, STATUS_CODE_OUT_OF_RANGE);
    }

    void Subscribe()
    {
        try
        {
            ParseQuote(12);
        }
        catch (const StatusCodeException& cause)
        {
            // The outer exception reports the failure of this function and
            // carries its causes: the parse error, the OS error seen while
            // reopening the feed, and an internal failure.
            StatusCodeException outer(__FILE__, "Zantor::Example::QuoteFeed::Subscribe", __LINE__,
                                      STATUS_CODE_INVALID_RECORD);
            outer.AddException(new StatusCodeException(cause));
            outer.AddException(new OsException(__FILE__, "Zantor::Example::QuoteFeed::Reopen", __LINE__, 10061));
            outer.AddException(
                new BaseException(__FILE__, "Zantor::Example::QuoteFeed::Subscribe", __LINE__,
                                  BaseException::PRIVATE_EVENT_ALLOCATION));
            throw outer;
        }
    }
};

[[noreturn]] void CheckDepth(unsigned depth)
{
    ZANTOR_THROW(LogMessageException, LOG_TYPE_WARNING, boost::format("queue depth %1% over limit") % depth);
}

} // namespace Zantor::Example

int main()
{
    using namespace Zantor;

    try
    {
        Example::QuoteFeed feed;
        feed.Subscribe();
    }
    catch (const Exception& e)
    {
        std::cout << "caught located exception, code " << e.GetCode() << " (" << e.ToString() << "):\n"
                  << e << "\n\n";
    }

    // The hook prints "hh:mm:ss queue depth ..." when the exception is made.
    std::cout << "log line written while constructing a message exception:\n" << std::flush;
    try
    {
        Example::CheckDepth(1500);
    }
    catch (const std::exception& e)
    {
        std::cout << "what(): " << e.what() << '\n';
    }
    return 0;
}
