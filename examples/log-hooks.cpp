// Routing the library's diagnostics: log through the default printer, install
// application hooks that tag each line with its type, silence everything,
// then put the saved defaults back.
#include <ZantorMiddleware/ZantorBase/LogMessage.h>

#include <boost/format.hpp>

#include <cstdint>
#include <cstdio>

namespace {

// Hooks may be called from any thread, so they only write whole lines.
void TaggedLog(unsigned char logType, const char* message)
{
    std::printf("[log %s] %s\n", Zantor::LogTypeToString(logType).c_str(), message);
    std::fflush(stdout);
}

void TaggedAlert(unsigned char alertType, std::uint32_t alertId, const char* message)
{
    std::printf("[alert %s, %s] %s\n", Zantor::AlertTypeToString(alertType).c_str(),
                Zantor::AlertIdToString(alertId).c_str(), message);
    std::fflush(stdout);
}

} // namespace

int main()
{
    using namespace Zantor;

    std::printf("1. default printers (time-stamped; errors and alerts on standard error):\n");
    std::fflush(stdout);
    LogMessage(LOG_TYPE_INFO, "feed handler started");
    LogMessage(LOG_TYPE_ERROR, boost::format("connection to %1%:%2% refused") % "quotes.example" % 7001);
    AlertMessage(ALERT_TYPE_OPEN, ALERT_ID_NO_DATA, "no data from feed EUREX for 30 s");

    const LogMessageFunction savedLog = GetLogMessageFunction();
    const AlertMessageFunction savedAlert = GetAlertMessageFunction();

    std::printf("2. application hooks:\n");
    SetLogMessageFunction(&TaggedLog);
    SetAlertMessageFunction(&TaggedAlert);
    LogMessage(LOG_TYPE_DEBUG, "decoded 3 fields");
    LogMessage(LOG_TYPE_WARNING, std::string("queue at 80 %"));
    LogMessage(7, "a type this program does not know");
    AlertMessage(ALERT_TYPE_UPDATE, ALERT_ID_QUEUE_LIMIT_REACHED, boost::format("queue %1% full") % "orders");
    AlertMessage(ALERT_TYPE_CLOSE, 99, "an id this program does not know");

    std::printf("3. null hooks silence everything (nothing between the markers):\n>>>\n");
    std::fflush(stdout);
    SetLogMessageFunction(nullptr);
    SetAlertMessageFunction(nullptr);
    LogMessage(LOG_TYPE_ERROR, "this is not printed");
    AlertMessage(ALERT_TYPE_ISOLATED, ALERT_ID_MANUAL, "neither is this");
    std::printf("<<< the silent hook is %s the default printer\n",
                GetLogMessageFunction() == &PrintfLogMessage ? "still" : "not");

    std::printf("4. saved defaults restored:\n");
    std::fflush(stdout);
    SetLogMessageFunction(savedLog);
    SetAlertMessageFunction(savedAlert);
    LogMessage(LOG_TYPE_INFO, "feed handler stopped");
    return 0;
}
