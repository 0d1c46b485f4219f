// The log and alert hooks, the type and id texts, and the default printers:
// the console line, or the system log when there is no console.
#include <ZantorMiddleware/ZantorBase/LogMessage.h>

#include <boost/format.hpp>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#if !defined(_WIN32)
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>
#endif

// Each test installs the hooks it uses.
namespace {

using namespace Zantor;

// Read during the program's static initialization, before any test ran.
const bool g_printersAtLoad = GetLogMessageFunction() == &PrintfLogMessage && GetAlertMessageFunction() == &PrintfAlertMessage;

// The texts of the constants; other values give "unknown (0x..)" in
// lower-case hexadecimal, padded to 2 digits for the types and 8 for the ids.
TEST(LogMessageTest, Texts)
{
    const char* const types[][2] = {{"Debug", "Isolated"}, {"Info", "Open"}, {"Warning", "Update"}, {"Error", "Close"},
                                    {"unknown (0x04)", "unknown (0x04)"}};
    for (unsigned char type = 0; type < std::size(types); ++type)
        EXPECT_EQ(LogTypeToString(type) + "|" + AlertTypeToString(type), types[type][0] + std::string("|") + types[type][1]);
    EXPECT_EQ(LogTypeToString(0xab) + "|" + AlertTypeToString(0xff) + "|" + LogTypesToString(), "unknown (0xab)|unknown (0xff)|");
    const char* const alertIds[] = {
        "unknown (0x00000000)", "Manual", "Miscellaneous", "Authentication", "Process die", "Process failed to start",
        "Service state change", "Database integrity", "No data", "Crossed order book", "Feed conflation change",
        "Queue limit reached", "unknown (0x0000000c)"};
    for (std::uint32_t id = 0; id < std::size(alertIds); ++id)
        EXPECT_EQ(AlertIdToString(id), alertIds[id]);
    EXPECT_EQ(AlertIdToString(0xffffffffu), "unknown (0xffffffff)");
}

std::vector<std::string> g_records;
std::atomic<unsigned> g_heard{0}; // what the logging thread sends, so a hook given a wrong pointer counts nothing

void RecordLog(unsigned char type, const char* message) { g_records.push_back("log " + std::to_string(type) + " " + message); }
void RecordAlert(unsigned char type, std::uint32_t id, const char* message)
{
    g_records.push_back("alert " + std::to_string(type) + " " + std::to_string(id) + " " + message);
}
template <int> void CountLog(unsigned char, const char* message) { g_heard += std::string(message) == "message"; }

// The default printers are in place before any static constructor runs.
// Every overload reaches the installed hook, in order; a format with missing
// arguments throws before the hook is called. Null installs a hook that does
// nothing, not the default printer. While one thread keeps replacing the
// hook, every message of another reaches exactly one of the installed hooks.
TEST(LogMessageTest, Hooks)
{
    SetLogMessageFunction(&RecordLog);
    SetAlertMessageFunction(&RecordAlert);
    EXPECT_TRUE(g_printersAtLoad && GetLogMessageFunction() == &RecordLog && GetAlertMessageFunction() == &RecordAlert);
    LogMessage(LOG_TYPE_WARNING, "plain");
    LogMessage(200, std::string("string"));
    LogMessage(LOG_TYPE_ERROR, boost::format("%1% at %2$04d") % "bid" % 42);
    AlertMessage(ALERT_TYPE_OPEN, ALERT_ID_NO_DATA, "feed silent");
    AlertMessage(ALERT_TYPE_CLOSE, 0xdeadbeefu, std::string("string"));
    AlertMessage(ALERT_TYPE_UPDATE, ALERT_ID_QUEUE_LIMIT_REACHED, boost::format("depth %d") % 1000);
    EXPECT_THROW(LogMessage(LOG_TYPE_INFO, boost::format("%1% and %2%") % "one"), boost::io::too_few_args);
    EXPECT_THROW(AlertMessage(ALERT_TYPE_OPEN, ALERT_ID_MANUAL, boost::format("%1%")), boost::io::too_few_args);
    SetLogMessageFunction(nullptr);
    SetAlertMessageFunction(nullptr);
    EXPECT_TRUE(GetLogMessageFunction() != &PrintfLogMessage && GetAlertMessageFunction() != &PrintfAlertMessage);
    LogMessage(LOG_TYPE_ERROR, "dropped");
    AlertMessage(ALERT_TYPE_OPEN, ALERT_ID_MANUAL, "dropped");
    EXPECT_EQ(g_records, (std::vector<std::string>{"log 2 plain", "log 200 string", "log 3 bid at 0042", "alert 1 8 feed silent",
                                                    "alert 3 3735928559 string", "alert 2 11 depth 1000"}));

    SetLogMessageFunction(&CountLog<0>);
    std::thread logger([] { for (unsigned i = 0; i < 40000; ++i) LogMessage(LOG_TYPE_DEBUG, std::string("message")); });
    for (unsigned round = 0; round < 40000; ++round)
        SetLogMessageFunction(round % 2 == 0 ? &CountLog<1> : &CountLog<0>);
    logger.join();
    EXPECT_EQ(g_heard, 40000u);
}

#if !defined(_WIN32)

constexpr int kNoNamespace = 77; // the machine does not allow a mount namespace (no privilege)

// In the child: a time zone in which the local time is now secondOfDay.
void SetLocalTime(long secondOfDay)
{
    // A POSIX zone "XXX+hh:mm:ss" is that far west of UTC: local = UTC - offset.
    const long offset = ((std::time(nullptr) - secondOfDay) % 86400 + 86400) % 86400;
    char zone[32];
    std::snprintf(zone, sizeof zone, "ZZT+%02ld:%02ld:%02ld", offset / 3600, offset / 60 % 60, offset % 60);
    ::setenv("TZ", zone, 1);
    ::tzset();
}

// A message of each log type and an alert; then the datagrams the system
// log socket holds, one a line, written past the buffer of stdout.
void PrintEveryType(int log)
{
    for (const unsigned char type : {LOG_TYPE_DEBUG, LOG_TYPE_INFO, LOG_TYPE_WARNING, LOG_TYPE_ERROR})
        PrintfLogMessage(type, LogTypeToString(type).c_str());
    PrintfAlertMessage(ALERT_TYPE_OPEN, ALERT_ID_PROCESS_DIE, "alert");
    char datagram[1024];
    for (ssize_t got; (got = ::recv(log, datagram, sizeof datagram, MSG_DONTWAIT)) > 0;)
        ::dprintf(STDOUT_FILENO, "%.*s\n", static_cast<int>(got), datagram);
}

// The child, standard output and standard error on files: first with a
// console; then without one: standard input and standard error closed, and
// both on /dev/null. Then, in a mount namespace of its own with an empty /dev
// where it binds the system log socket itself: standard error closed after
// the log daemon restarted, and taken by the socket of the C library's
// syslog(3), which is no console either. The library's own socket stays above
// descriptor 2, and the application's syslog identity survives the library's
// messages.
int PrintEverywhere(std::FILE* const (&files)[2])
{
    for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO}) ::dup2(::fileno(files[descriptor - 1]), descriptor);
    SetLocalTime(9 * 3600 + 5 * 60 + 7);
    PrintfLogMessage(LOG_TYPE_INFO, "%s 101.25");
    PrintfLogMessage(LOG_TYPE_ERROR, nullptr);
    SetLocalTime(24 * 3600 - 10);
    PrintfLogMessage(4, "");
    PrintfAlertMessage(77, 0, nullptr);

    const int null = ::open("/dev/null", O_WRONLY);
    int log = ::socket(AF_UNIX, SOCK_DGRAM, 0);
    sockaddr_un address{AF_UNIX, "/dev/log"};
    const bool isolated = ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                          ::mount("zantor-test", "/dev", "tmpfs", 0, nullptr) == 0 &&
                          ::bind(log, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    for (const int descriptor : {STDIN_FILENO, STDERR_FILENO}) ::close(descriptor);
    PrintEveryType(log);
    bool lowDescriptorTaken = ::fcntl(STDIN_FILENO, F_GETFD) != -1 || ::fcntl(STDERR_FILENO, F_GETFD) != -1;
    for (const int descriptor : {STDIN_FILENO, STDERR_FILENO}) ::dup2(null, descriptor);
    PrintEveryType(log);
    if (!isolated)
        return lowDescriptorTaken ? 3 : kNoNamespace;
    ::close(log);
    ::unlink("/dev/log");
    ::bind(log = ::socket(AF_UNIX, SOCK_DGRAM, 0), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    ::close(STDERR_FILENO);
    PrintEveryType(log);
    lowDescriptorTaken = lowDescriptorTaken || ::fcntl(STDERR_FILENO, F_GETFD) != -1;
    ::openlog("application", 0, LOG_LOCAL0);
    ::syslog(LOG_NOTICE, "%s", "application line");
    PrintEveryType(log);
    ::syslog(LOG_NOTICE, "%s", "application again");
    PrintEveryType(log);
    return lowDescriptorTaken ? 3 : 0;
}

// With a console, one line "hh:mm:ss <message>\n" in local time (a second may
// pass while printing), each field two digits, the message as it is (a null
// one empty): errors and every alert on standard error, other logs on standard
// output. Without one, nothing is printed; the system log gets
// "<priority>Mmm dd hh:mm:ss ZANTOR[<pid>]: <program>: <message>", the
// priority being LOG_USER (8) + LOG_INFO (6), LOG_WARNING (4) or LOG_ERR (3);
// the application's LOG_LOCAL0 (128) notices (5) are as syslog(3) sends them.
TEST(LogMessageTest, PrintersOnTheConsoleOrTheSystemLog)
{
    std::FILE* const files[] = {std::tmpfile(), std::tmpfile()};
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(PrintEverywhere(files));
    int status = 0;
    ASSERT_TRUE(::waitpid(child, &status, 0) == child && WIFEXITED(status));
    const auto readAll = [](std::FILE* file) { // everything written to file
        char text[8192];
        return std::string(text, static_cast<std::size_t>(::pread(::fileno(file), text, sizeof text, 0)));
    };
    EXPECT_TRUE(std::regex_match(readAll(files[1]), std::regex("09:05:0[7-9] \n23:59:5[0-9] \n")));
    const int code = WEXITSTATUS(status);
    ASSERT_TRUE(code == 0 || code == kNoNamespace) << code;
    const std::string console = "09:05:0[7-9] %s 101.25\n23:59:5[0-9] \n";
    std::string every;
    for (const char* line : {"14Debug", "14Info", "12Warning", "11Error", "11alert"})
        every += "<" + std::string(line, 2) + ">[A-Z][a-z]{2} [ 0-9][0-9] 23:59:5[0-9] ZANTOR\\[" + std::to_string(child) +
                 "\\]: LogMessageTest: " + (line + 2) + "\n";
    const std::string application = "<133>[A-Z][a-z]{2} [ 0-9][0-9] 23:59:5[0-9] application: application ";
    const std::string out = readAll(files[0]);
    EXPECT_TRUE(std::regex_match(out, std::regex(code == kNoNamespace ? console : console + every + every + every + application +
                                                                                       "line\n" + every + application + "again\n" + every)))
        << out;
    if (code == kNoNamespace)
        GTEST_SKIP() << "no mount namespace for a private /dev/log here";
}

// Without a console, a line the system log cannot take is dropped: a log
// daemon that stops reading must not block the threads that log.
TEST(LogMessageTest, FullSystemLogDropsInsteadOfBlocking)
{
    const pid_t child = ::fork();
    if (child == 0)
    {
        // A private /dev/log that is never read, as a stalled log daemon.
        if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("zantor-test", "/dev", "tmpfs", 0, nullptr) != 0)
            ::_exit(77);
        const int log = ::socket(AF_UNIX, SOCK_DGRAM, 0);
        sockaddr_un address{AF_UNIX, "/dev/log"};
        if (::bind(log, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
            ::_exit(2);
        ::close(STDERR_FILENO); // no console
        ::alarm(10);            // a blocked child dies of SIGALRM
        for (int i = 0; i < 100; ++i)
            PrintfLogMessage(LOG_TYPE_INFO, "never read");
        ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 77)
        GTEST_SKIP() << "no mount namespace here";
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the logging call blocked or failed";
}

#endif // !_WIN32

} // namespace
