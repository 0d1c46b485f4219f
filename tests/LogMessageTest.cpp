#include <ZantorMiddleware/ZantorBase/LogMessage.h>

#include <boost/format.hpp>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
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

namespace {

using namespace Zantor;

// Read during the test program's static initialization, before any test can
// have replaced the hooks.
const LogMessageFunction g_hookAtLoad = GetLogMessageFunction();
const AlertMessageFunction g_alertHookAtLoad = GetAlertMessageFunction();

std::string Log(unsigned type, const char* message)
{
    return "log " + std::to_string(type) + " " + (message != nullptr ? message : "(null)");
}

std::string Alert(unsigned type, std::uint32_t id, const char* message)
{
    return "alert " + std::to_string(type) + " " + std::to_string(id) + " " + (message != nullptr ? message : "(null)");
}

std::vector<std::string> g_records;

void RecordLog(unsigned char type, const char* message) { g_records.push_back(Log(type, message)); }
void RecordLogOther(unsigned char type, const char* message) { g_records.push_back("other " + Log(type, message)); }
void RecordAlert(unsigned char type, std::uint32_t id, const char* message)
{
    g_records.push_back(Alert(type, id, message));
}

class LogMessageTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        savedLog_ = GetLogMessageFunction();
        savedAlert_ = GetAlertMessageFunction();
        g_records.clear();
    }
    void TearDown() override
    {
        SetLogMessageFunction(savedLog_);
        SetAlertMessageFunction(savedAlert_);
        g_records.clear();
    }

private:
    LogMessageFunction savedLog_ = nullptr;
    AlertMessageFunction savedAlert_ = nullptr;
};

TEST(LogMessageDefaults, PrintersAreInstalledAtLoad)
{
    EXPECT_EQ(g_hookAtLoad, &PrintfLogMessage);
    EXPECT_EQ(g_alertHookAtLoad, &PrintfAlertMessage);
}

TEST(LogMessageTexts, EveryConstantAndUnknownValues)
{
    const struct
    {
        int line;
        unsigned char logType;
        const char* logText;
        unsigned char alertType;
        const char* alertText;
    } types[] = {
        {__LINE__, LOG_TYPE_DEBUG, "Debug", ALERT_TYPE_ISOLATED, "Isolated"},
        {__LINE__, LOG_TYPE_INFO, "Info", ALERT_TYPE_OPEN, "Open"},
        {__LINE__, LOG_TYPE_WARNING, "Warning", ALERT_TYPE_UPDATE, "Update"},
        {__LINE__, LOG_TYPE_ERROR, "Error", ALERT_TYPE_CLOSE, "Close"},
        {__LINE__, 4, "unknown (0x04)", 4, "unknown (0x04)"},
        {__LINE__, 0xab, "unknown (0xab)", 0xab, "unknown (0xab)"},
        {__LINE__, 255, "unknown (0xff)", 255, "unknown (0xff)"},
    };
    for (const auto& row : types) {
        EXPECT_EQ(LogTypeToString(row.logType), row.logText) << "row at line " << row.line;
        EXPECT_EQ(AlertTypeToString(row.alertType), row.alertText) << "row at line " << row.line;
    }
    const struct
    {
        std::uint32_t id; // names its row
        const char* text;
    } ids[] = {
        {0, "unknown (0x00000000)"}, {ALERT_ID_MANUAL, "Manual"}, {ALERT_ID_MISCELLANEOUS, "Miscellaneous"},
        {ALERT_ID_AUTHENTICATION, "Authentication"}, {ALERT_ID_PROCESS_DIE, "Process die"},
        {ALERT_ID_PROCESS_FAILED_TO_START, "Process failed to start"},
        {ALERT_ID_SERVICE_STATE_CHANGE, "Service state change"}, {ALERT_ID_DATABASE_INTEGRITY, "Database integrity"},
        {ALERT_ID_NO_DATA, "No data"}, {ALERT_ID_CROSSED_ORDER_BOOK, "Crossed order book"},
        {ALERT_ID_FEED_CONFLATION_CHANGE, "Feed conflation change"},
        {ALERT_ID_QUEUE_LIMIT_REACHED, "Queue limit reached"}, {12, "unknown (0x0000000c)"},
        {255, "unknown (0x000000ff)"}, {0x80000000u, "unknown (0x80000000)"}, {0xffffffffu, "unknown (0xffffffff)"},
    };
    for (const auto& row : ids)
        EXPECT_EQ(AlertIdToString(row.id), row.text) << "id " << row.id;
    EXPECT_EQ(LogTypesToString(), "");
}

// Every overload reaches the installed hook, in order, until another one is
// installed; restoring a saved hook gives it back.
TEST_F(LogMessageTest, EveryOverloadReachesTheInstalledHook)
{
    const LogMessageFunction saved = GetLogMessageFunction();
    SetLogMessageFunction(&RecordLog);
    SetAlertMessageFunction(&RecordAlert);
    EXPECT_EQ(GetLogMessageFunction(), &RecordLog);
    EXPECT_EQ(GetAlertMessageFunction(), &RecordAlert);

    LogMessage(LOG_TYPE_WARNING, "plain");
    LogMessage(LOG_TYPE_DEBUG, std::string("from string"));
    LogMessage(LOG_TYPE_ERROR, boost::format("%1% at %2$04d") % "bid" % 42);
    LogMessage(200, "unknown type passes through");
    AlertMessage(ALERT_TYPE_OPEN, ALERT_ID_NO_DATA, "feed silent");
    AlertMessage(ALERT_TYPE_CLOSE, 0xdeadbeefu, std::string("id kept"));
    AlertMessage(ALERT_TYPE_UPDATE, ALERT_ID_QUEUE_LIMIT_REACHED, boost::format("depth %d") % 1000);
    SetLogMessageFunction(&RecordLogOther);
    LogMessage(LOG_TYPE_INFO, "second");
    SetLogMessageFunction(&RecordLog);
    LogMessage(LOG_TYPE_INFO, "third");
    SetLogMessageFunction(saved);
    EXPECT_EQ(GetLogMessageFunction(), saved);

    const std::vector<std::string> expected = {
        Log(LOG_TYPE_WARNING, "plain"),
        Log(LOG_TYPE_DEBUG, "from string"),
        Log(LOG_TYPE_ERROR, "bid at 0042"),
        Log(200, "unknown type passes through"),
        Alert(ALERT_TYPE_OPEN, ALERT_ID_NO_DATA, "feed silent"),
        Alert(ALERT_TYPE_CLOSE, 0xdeadbeefu, "id kept"),
        Alert(ALERT_TYPE_UPDATE, ALERT_ID_QUEUE_LIMIT_REACHED, "depth 1000"),
        "other " + Log(LOG_TYPE_INFO, "second"),
        Log(LOG_TYPE_INFO, "third"),
    };
    EXPECT_EQ(g_records, expected);
}

TEST_F(LogMessageTest, IncompleteFormatThrowsBeforeTheHook)
{
    SetLogMessageFunction(&RecordLog);
    SetAlertMessageFunction(&RecordAlert);
    boost::format incomplete("%1% and %2%");
    incomplete % "one";
    EXPECT_THROW(LogMessage(LOG_TYPE_INFO, incomplete), boost::io::too_few_args);
    EXPECT_THROW(AlertMessage(ALERT_TYPE_OPEN, ALERT_ID_MANUAL, incomplete), boost::io::too_few_args);
    EXPECT_TRUE(g_records.empty());
}

TEST_F(LogMessageTest, NullInstallsSilenceNotThePrinter)
{
    SetLogMessageFunction(&RecordLog);
    SetAlertMessageFunction(&RecordAlert);
    SetLogMessageFunction(nullptr);
    SetAlertMessageFunction(nullptr);

    const LogMessageFunction silentLog = GetLogMessageFunction();
    const AlertMessageFunction silentAlert = GetAlertMessageFunction();
    ASSERT_NE(silentLog, nullptr);
    ASSERT_NE(silentAlert, nullptr);
    EXPECT_NE(silentLog, &PrintfLogMessage);
    EXPECT_NE(silentAlert, &PrintfAlertMessage);
    EXPECT_NE(silentLog, &RecordLog);
    EXPECT_NE(silentAlert, &RecordAlert);

    LogMessage(LOG_TYPE_ERROR, "dropped");
    AlertMessage(ALERT_TYPE_OPEN, ALERT_ID_MANUAL, "dropped");
    silentLog(LOG_TYPE_ERROR, nullptr);
    silentAlert(ALERT_TYPE_OPEN, ALERT_ID_MANUAL, nullptr);
    EXPECT_TRUE(g_records.empty());

    // A second null keeps the same silent function; a real hook replaces it.
    SetLogMessageFunction(nullptr);
    EXPECT_EQ(GetLogMessageFunction(), silentLog);
    SetLogMessageFunction(&RecordLog);
    LogMessage(LOG_TYPE_INFO, "heard");
    EXPECT_EQ(g_records, std::vector<std::string>{Log(LOG_TYPE_INFO, "heard")});
}

std::atomic<unsigned> g_logCounts[3];
std::atomic<unsigned> g_alertCounts[2];

// Count only what the loggers send, so a hook that receives a wrong pointer
// is not counted.
template <int N>
void CountLog(unsigned char, const char* message)
{
    if (message != nullptr && std::string_view(message) == "message")
        g_logCounts[N].fetch_add(1, std::memory_order_relaxed);
}

template <int N>
void CountAlert(unsigned char, std::uint32_t id, const char*)
{
    if (id == ALERT_ID_NO_DATA)
        g_alertCounts[N].fetch_add(1, std::memory_order_relaxed);
}

// While one thread keeps replacing the hooks, every message of the loggers
// reaches exactly one of the installed hooks: none is lost, none is
// delivered twice.
TEST_F(LogMessageTest, HooksReplacedWhileOtherThreadsLog)
{
    for (auto& count : g_logCounts)
        count = 0;
    for (auto& count : g_alertCounts)
        count = 0;
    SetLogMessageFunction(&CountLog<0>);
    SetAlertMessageFunction(&CountAlert<0>);

    constexpr unsigned messagesPerThread = 20000;
    std::atomic<bool> loggersDone{false};
    std::atomic<bool> switching{false};
    std::thread switcher([&loggersDone, &switching] {
        static constexpr LogMessageFunction logHooks[] = {&CountLog<0>, &CountLog<1>, &CountLog<2>};
        for (unsigned round = 0; !loggersDone.load(); ++round) {
            SetLogMessageFunction(logHooks[round % 3]);
            SetAlertMessageFunction(round % 2 == 0 ? &CountAlert<1> : &CountAlert<0>);
            switching = true;
        }
    });
    // The loggers start once the hooks are being replaced.
    while (!switching.load())
        std::this_thread::yield();
    std::thread logger1([] {
        for (unsigned i = 0; i < messagesPerThread; ++i)
            LogMessage(LOG_TYPE_INFO, "message");
    });
    std::thread logger2([] {
        for (unsigned i = 0; i < messagesPerThread; ++i) {
            LogMessage(LOG_TYPE_DEBUG, std::string("message"));
            AlertMessage(ALERT_TYPE_UPDATE, ALERT_ID_NO_DATA, "alert");
        }
    });
    logger1.join();
    logger2.join();
    loggersDone = true;
    switcher.join();

    EXPECT_EQ(g_logCounts[0].load() + g_logCounts[1].load() + g_logCounts[2].load(), 2 * messagesPerThread);
    EXPECT_EQ(g_alertCounts[0].load() + g_alertCounts[1].load(), messagesPerThread);
}

#if !defined(_WIN32)

// Everything in file from its start; closes it.
std::string ReadAll(std::FILE* file)
{
    std::string text;
    std::rewind(file);
    char buffer[512];
    std::size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, file)) > 0)
        text.append(buffer, got);
    std::fclose(file);
    return text;
}

// Runs print with descriptors 1 and 2 captured, in a time zone where the
// local time is secondOfDay. The zone is set for the current second; a print
// that falls into the next second is repeated. False when every attempt did.
bool PrintAt(int secondOfDay, void (*print)(), std::string& out, std::string& err)
{
    const char* zone = std::getenv("TZ");
    const std::optional<std::string> savedZone = zone != nullptr ? std::optional<std::string>(zone) : std::nullopt;
    bool sameSecond = false;
    for (int attempt = 0; attempt < 5 && !sameSecond; ++attempt) {
        const std::time_t now = std::time(nullptr);
        struct tm utc {};
        ::gmtime_r(&now, &utc);
        // A POSIX zone "XXX+hh:mm:ss" is that far west of UTC: local = UTC - offset.
        const int utcSecond = utc.tm_hour * 3600 + utc.tm_min * 60 + utc.tm_sec;
        const int offset = ((utcSecond - secondOfDay) % 86400 + 86400) % 86400;
        char text[32];
        std::snprintf(text, sizeof text, "ZZT+%02d:%02d:%02d", offset / 3600, offset / 60 % 60, offset % 60);
        ::setenv("TZ", text, 1);
        ::tzset();

        std::FILE* files[] = {std::tmpfile(), std::tmpfile()}; // for descriptors 1 and 2
        int saved[2];
        std::fflush(nullptr);
        for (int fd : {1, 2}) {
            saved[fd - 1] = ::dup(fd);
            ::dup2(::fileno(files[fd - 1]), fd);
        }
        print();
        std::fflush(nullptr);
        for (int fd : {1, 2}) {
            ::dup2(saved[fd - 1], fd);
            ::close(saved[fd - 1]);
        }
        sameSecond = std::time(nullptr) == now;
        out = ReadAll(files[0]);
        err = ReadAll(files[1]);
    }
    if (savedZone)
        ::setenv("TZ", savedZone->c_str(), 1);
    else
        ::unsetenv("TZ");
    ::tzset();
    return sameSecond;
}

// The exact console line: "hh:mm:ss <message>\n" in local time, each field
// two digits with a leading zero, the message printed as it is. Errors and
// every alert go to standard error, the other logs to standard output.
TEST_F(LogMessageTest, ConsoleLinesGoToTheRightStream)
{
    SetLogMessageFunction(&PrintfLogMessage);
    SetAlertMessageFunction(&PrintfAlertMessage);
    constexpr int kMorning = 9 * 3600 + 5 * 60 + 7;
    constexpr int kLast = 23 * 3600 + 59 * 60 + 59;
    constexpr int kNoon = 12 * 3600 + 1;
    const struct
    {
        int line;
        void (*print)();
        int secondOfDay;
        const char* out;
        const char* err;
    } rows[] = {
        {__LINE__, [] { PrintfLogMessage(LOG_TYPE_INFO, "quote 101.25 accepted"); }, kMorning,
         "09:05:07 quote 101.25 accepted\n", ""},
        {__LINE__, [] { PrintfLogMessage(LOG_TYPE_ERROR, "error text"); }, kMorning, "", "09:05:07 error text\n"},
        {__LINE__, [] { PrintfLogMessage(LOG_TYPE_WARNING, "warning"); }, 0, "00:00:00 warning\n", ""},
        {__LINE__, [] { PrintfLogMessage(LOG_TYPE_DEBUG, "debug %s %d"); }, kLast, "23:59:59 debug %s %d\n", ""},
        {__LINE__, [] { PrintfLogMessage(4, "unknown type"); }, kNoon, "12:00:01 unknown type\n", ""},
        {__LINE__, [] { PrintfLogMessage(255, ""); }, kMorning, "09:05:07 \n", ""},
        {__LINE__, [] { PrintfLogMessage(LOG_TYPE_ERROR, nullptr); }, kLast, "", "23:59:59 \n"},
        {__LINE__, [] { PrintfAlertMessage(ALERT_TYPE_ISOLATED, ALERT_ID_PROCESS_DIE, "process died"); }, 0, "",
         "00:00:00 process died\n"},
        {__LINE__, [] { PrintfAlertMessage(ALERT_TYPE_OPEN, ALERT_ID_MANUAL, "x"); }, kNoon, "", "12:00:01 x\n"},
        {__LINE__, [] { PrintfAlertMessage(ALERT_TYPE_CLOSE, ALERT_ID_PROCESS_DIE, "closed"); }, kMorning, "",
         "09:05:07 closed\n"},
        {__LINE__, [] { PrintfAlertMessage(77, ALERT_ID_PROCESS_DIE, nullptr); }, kLast, "", "23:59:59 \n"},
        // The printers installed as hooks print through LogMessage and AlertMessage.
        {__LINE__,
         [] {
             LogMessage(LOG_TYPE_INFO, boost::format("%1% quotes") % 3);
             AlertMessage(ALERT_TYPE_OPEN, ALERT_ID_NO_DATA, std::string("no data"));
         },
         kNoon, "12:00:01 3 quotes\n", "12:00:01 no data\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "row at line " << row.line);
        std::string out;
        std::string err;
        if (!PrintAt(row.secondOfDay, row.print, out, err))
            GTEST_SKIP() << "every attempt crossed a second boundary";
        EXPECT_EQ(out, row.out);
        EXPECT_EQ(err, row.err);
    }
}

// Prints a line of each log type and an alert.
void PrintEveryType()
{
    PrintfLogMessage(LOG_TYPE_DEBUG, "debug line");
    PrintfLogMessage(LOG_TYPE_INFO, "info line");
    PrintfLogMessage(LOG_TYPE_WARNING, "warning line");
    PrintfLogMessage(LOG_TYPE_ERROR, "error line");
    PrintfLogMessage(9, nullptr);
    PrintfAlertMessage(ALERT_TYPE_OPEN, ALERT_ID_PROCESS_DIE, "alert line");
}

// Runs body(file) in a child process; returns the child's exit code (-1 when
// it did not exit normally) and, in written, what it wrote to file.
template <typename Body>
int RunInChild(const Body& body, std::string& written, pid_t* pid = nullptr)
{
    std::FILE* file = std::tmpfile();
    if (file == nullptr)
        return -1;
    std::fflush(stdout);
    std::fflush(stderr);
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(body(file));
    if (pid != nullptr)
        *pid = child;
    int status = 0;
    const bool exited = child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status);
    written = ReadAll(file);
    return exited ? WEXITSTATUS(status) : -1;
}

// Whether the printers use the console depends on standard error: on
// /dev/null or closed there is none and nothing is printed; on a file the
// non-error logs are printed to standard output.
TEST(LogMessageSystemLog, ConsoleOnlyWhenStandardErrorIsReal)
{
    const struct
    {
        int line;
        void (*prepareStandardError)();
        const char* printed; // a pattern
    } rows[] = {
        {__LINE__, [] { ::dup2(::open("/dev/null", O_WRONLY), STDERR_FILENO); }, ""},
        {__LINE__, [] { ::close(STDERR_FILENO); }, ""},
        {__LINE__, [] { ::dup2(::fileno(std::tmpfile()), STDERR_FILENO); },
         "[0-9]{2}:[0-9]{2}:[0-9]{2} debug line\n"
         "[0-9]{2}:[0-9]{2}:[0-9]{2} info line\n"
         "[0-9]{2}:[0-9]{2}:[0-9]{2} warning line\n"
         "[0-9]{2}:[0-9]{2}:[0-9]{2} \n"},
    };
    for (const auto& row : rows) {
        std::string text;
        const int exitCode = RunInChild(
            [&row](std::FILE* out) {
                ::dup2(::fileno(out), STDOUT_FILENO);
                row.prepareStandardError();
                PrintEveryType();
                std::fflush(stdout);
                return 0;
            },
            text);
        EXPECT_EQ(exitCode, 0) << "row at line " << row.line;
        EXPECT_TRUE(std::regex_match(text, std::regex(row.printed))) << "row at line " << row.line << ": " << text;
    }
}

// Without a console the printers write to the system log. The child process
// gets a mount namespace of its own with an empty /dev, where it binds the
// system log socket itself, so the datagrams can be read back: the severity,
// the identity and the text "<program>: <message>" are checked. The child
// also logs through the C library's syslog(3) with an identity of its own,
// before and after the library: that identity must survive, and the C
// library's socket, which takes descriptor 2 once standard error is closed,
// must not be mistaken for a console.
// Exit code 77: the machine does not allow the namespace (no privilege).
constexpr int kNoNamespace = 77;

int CaptureSystemLog(std::FILE* result)
{
    if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0
        || ::mount("zantor-test", "/dev", "tmpfs", 0, nullptr) != 0)
        return kNoNamespace;
    const int log = ::socket(AF_UNIX, SOCK_DGRAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "/dev/log");
    if (log < 0 || ::bind(log, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return 2;
    ::close(STDERR_FILENO); // no console
    ::openlog("application", 0, LOG_LOCAL0);
    ::syslog(LOG_NOTICE, "%s", "application line");

    PrintEveryType();
    ::syslog(LOG_NOTICE, "%s", "application again");

    char datagram[1024];
    ssize_t got;
    while ((got = ::recv(log, datagram, sizeof datagram, MSG_DONTWAIT)) > 0)
    {
        std::fwrite(datagram, 1, static_cast<std::size_t>(got), result);
        std::fputc('\n', result);
    }
    std::fflush(result);
    return 0;
}

TEST(LogMessageSystemLog, SeveritiesIdentityAndTextReachTheSystemLog)
{
    std::string text;
    pid_t child = 0;
    const int exitCode = RunInChild(&CaptureSystemLog, text, &child);
    if (exitCode == kNoNamespace)
        GTEST_SKIP() << "no mount namespace for a private /dev/log here";
    ASSERT_EQ(exitCode, 0);
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);

    // LOG_USER is facility 1: priority 8 + LOG_INFO 6, LOG_WARNING 4, LOG_ERR 3.
    // The application's LOG_LOCAL0 (16) notices are 128 + 5.
    const std::string library = "ZANTOR\\[" + std::to_string(child) + "\\]: LogMessageTest: ";
    const std::string application = "application: ";
    const struct
    {
        int line;
        int priority;
        std::string identity;
        std::string message;
    } expected[] = {
        {__LINE__, 133, application, "application line"},
        {__LINE__, 14, library, "debug line"},
        {__LINE__, 14, library, "info line"},
        {__LINE__, 12, library, "warning line"},
        {__LINE__, 11, library, "error line"},
        {__LINE__, 14, library, ""},
        {__LINE__, 11, library, "alert line"},
        {__LINE__, 133, application, "application again"},
    };
    ASSERT_EQ(lines.size(), std::size(expected));
    for (std::size_t i = 0; i < lines.size(); ++i)
    {
        SCOPED_TRACE(testing::Message() << "row at line " << expected[i].line);
        const std::regex pattern("^<" + std::to_string(expected[i].priority) + ">[A-Z][a-z]{2} [ 0-9][0-9] " +
                                 "[0-9]{2}:[0-9]{2}:[0-9]{2} " + expected[i].identity + expected[i].message + "$");
        EXPECT_TRUE(std::regex_match(lines[i], pattern)) << lines[i];
    }
}

#endif // !_WIN32

} // namespace
