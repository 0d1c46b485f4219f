#include <ZantorMiddleware/ZantorBase/LogMessage.h>

#include <boost/format.hpp>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <regex>
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

struct Record
{
    int hook;
    unsigned type;
    std::uint32_t id;
    std::string message;
};

std::vector<Record> g_records;

void RecordLog(unsigned char type, const char* message)
{
    g_records.push_back({1, type, 0, message != nullptr ? message : "(null)"});
}

void RecordLogOther(unsigned char type, const char* message)
{
    g_records.push_back({2, type, 0, message != nullptr ? message : "(null)"});
}

void RecordAlert(unsigned char type, std::uint32_t id, const char* message)
{
    g_records.push_back({3, type, id, message != nullptr ? message : "(null)"});
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

struct TextRow
{
    int line;
    std::string (*function)(std::uint32_t);
    std::uint32_t value;
    const char* text;
};

std::string LogText(std::uint32_t value) { return LogTypeToString(static_cast<unsigned char>(value)); }
std::string AlertTypeText(std::uint32_t value) { return AlertTypeToString(static_cast<unsigned char>(value)); }
std::string AlertIdText(std::uint32_t value) { return AlertIdToString(value); }

TEST(LogMessageTexts, EveryConstantAndUnknownValues)
{
    const TextRow rows[] = {
        {__LINE__, LogText, LOG_TYPE_DEBUG, "Debug"},
        {__LINE__, LogText, LOG_TYPE_INFO, "Info"},
        {__LINE__, LogText, LOG_TYPE_WARNING, "Warning"},
        {__LINE__, LogText, LOG_TYPE_ERROR, "Error"},
        {__LINE__, LogText, 4, "unknown (0x04)"},
        {__LINE__, LogText, 0xab, "unknown (0xab)"},
        {__LINE__, LogText, 255, "unknown (0xff)"},
        {__LINE__, AlertTypeText, ALERT_TYPE_ISOLATED, "Isolated"},
        {__LINE__, AlertTypeText, ALERT_TYPE_OPEN, "Open"},
        {__LINE__, AlertTypeText, ALERT_TYPE_UPDATE, "Update"},
        {__LINE__, AlertTypeText, ALERT_TYPE_CLOSE, "Close"},
        {__LINE__, AlertTypeText, 4, "unknown (0x04)"},
        {__LINE__, AlertTypeText, 255, "unknown (0xff)"},
        {__LINE__, AlertIdText, 0, "unknown (0x00000000)"},
        {__LINE__, AlertIdText, ALERT_ID_MANUAL, "Manual"},
        {__LINE__, AlertIdText, ALERT_ID_MISCELLANEOUS, "Miscellaneous"},
        {__LINE__, AlertIdText, ALERT_ID_AUTHENTICATION, "Authentication"},
        {__LINE__, AlertIdText, ALERT_ID_PROCESS_DIE, "Process die"},
        {__LINE__, AlertIdText, ALERT_ID_PROCESS_FAILED_TO_START, "Process failed to start"},
        {__LINE__, AlertIdText, ALERT_ID_SERVICE_STATE_CHANGE, "Service state change"},
        {__LINE__, AlertIdText, ALERT_ID_DATABASE_INTEGRITY, "Database integrity"},
        {__LINE__, AlertIdText, ALERT_ID_NO_DATA, "No data"},
        {__LINE__, AlertIdText, ALERT_ID_CROSSED_ORDER_BOOK, "Crossed order book"},
        {__LINE__, AlertIdText, ALERT_ID_FEED_CONFLATION_CHANGE, "Feed conflation change"},
        {__LINE__, AlertIdText, ALERT_ID_QUEUE_LIMIT_REACHED, "Queue limit reached"},
        {__LINE__, AlertIdText, 12, "unknown (0x0000000c)"},
        {__LINE__, AlertIdText, 255, "unknown (0x000000ff)"},
        {__LINE__, AlertIdText, 0x80000000u, "unknown (0x80000000)"},
        {__LINE__, AlertIdText, 0xffffffffu, "unknown (0xffffffff)"},
    };
    for (const TextRow& row : rows)
        EXPECT_EQ(row.function(row.value), row.text) << "row at line " << row.line;
}

TEST(LogMessageTexts, LogTypesListIsEmpty)
{
    EXPECT_EQ(LogTypesToString(), "");
}

TEST_F(LogMessageTest, EveryOverloadReachesTheInstalledHook)
{
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

    const Record expected[] = {
        {1, LOG_TYPE_WARNING, 0, "plain"},
        {1, LOG_TYPE_DEBUG, 0, "from string"},
        {1, LOG_TYPE_ERROR, 0, "bid at 0042"},
        {1, 200, 0, "unknown type passes through"},
        {3, ALERT_TYPE_OPEN, ALERT_ID_NO_DATA, "feed silent"},
        {3, ALERT_TYPE_CLOSE, 0xdeadbeefu, "id kept"},
        {3, ALERT_TYPE_UPDATE, ALERT_ID_QUEUE_LIMIT_REACHED, "depth 1000"},
    };
    ASSERT_EQ(g_records.size(), std::size(expected));
    for (std::size_t i = 0; i < g_records.size(); ++i) {
        EXPECT_EQ(g_records[i].hook, expected[i].hook) << "call " << i;
        EXPECT_EQ(g_records[i].type, expected[i].type) << "call " << i;
        EXPECT_EQ(g_records[i].id, expected[i].id) << "call " << i;
        EXPECT_EQ(g_records[i].message, expected[i].message) << "call " << i;
    }
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

TEST_F(LogMessageTest, ReplaceAndRestore)
{
    const LogMessageFunction saved = GetLogMessageFunction();
    SetLogMessageFunction(&RecordLog);
    LogMessage(LOG_TYPE_INFO, "first");
    SetLogMessageFunction(&RecordLogOther);
    LogMessage(LOG_TYPE_INFO, "second");
    SetLogMessageFunction(&RecordLog);
    LogMessage(LOG_TYPE_INFO, "third");
    SetLogMessageFunction(saved);
    EXPECT_EQ(GetLogMessageFunction(), saved);

    ASSERT_EQ(g_records.size(), 3u);
    EXPECT_EQ(g_records[0].hook, 1);
    EXPECT_EQ(g_records[1].hook, 2);
    EXPECT_EQ(g_records[2].hook, 1);
    EXPECT_EQ(g_records[2].message, "third");
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
    ASSERT_EQ(g_records.size(), 1u);
    EXPECT_EQ(g_records[0].message, "heard");
}

std::atomic<unsigned> g_countA{0};
std::atomic<unsigned> g_countB{0};
std::atomic<unsigned> g_countC{0};
std::atomic<unsigned> g_alertCountA{0};
std::atomic<unsigned> g_alertCountB{0};

// Count only the text the loggers send, so a hook that receives a wrong
// pointer is not counted.
bool IsLoggedText(const char* message)
{
    return message != nullptr && std::string_view(message) == "message";
}

void CountA(unsigned char, const char* message)
{
    if (IsLoggedText(message))
        g_countA.fetch_add(1, std::memory_order_relaxed);
}

void CountB(unsigned char, const char* message)
{
    if (IsLoggedText(message))
        g_countB.fetch_add(1, std::memory_order_relaxed);
}

void CountC(unsigned char, const char* message)
{
    if (IsLoggedText(message))
        g_countC.fetch_add(1, std::memory_order_relaxed);
}

void CountAlertA(unsigned char, std::uint32_t id, const char*)
{
    if (id == ALERT_ID_NO_DATA)
        g_alertCountA.fetch_add(1, std::memory_order_relaxed);
}

void CountAlertB(unsigned char, std::uint32_t id, const char*)
{
    if (id == ALERT_ID_NO_DATA)
        g_alertCountB.fetch_add(1, std::memory_order_relaxed);
}

// While one thread keeps replacing the hooks, every message of the loggers
// reaches exactly one of the installed hooks: none is lost, none is
// delivered twice.
TEST_F(LogMessageTest, HooksReplacedWhileOtherThreadsLog)
{
    g_countA = 0;
    g_countB = 0;
    g_countC = 0;
    g_alertCountA = 0;
    g_alertCountB = 0;
    SetLogMessageFunction(&CountA);
    SetAlertMessageFunction(&CountAlertA);

    constexpr unsigned messagesPerThread = 20000;
    std::atomic<bool> loggersDone{false};
    std::atomic<bool> switching{false};
    std::thread switcher([&loggersDone, &switching] {
        static constexpr LogMessageFunction logHooks[] = {&CountA, &CountB, &CountC};
        for (unsigned round = 0; !loggersDone.load(); ++round) {
            SetLogMessageFunction(logHooks[round % 3]);
            SetAlertMessageFunction(round % 2 == 0 ? &CountAlertB : &CountAlertA);
            switching = true;
        }
    });
    // The loggers start once the hooks are being replaced.
    auto waitForSwitching = [&switching] {
        while (!switching.load())
            std::this_thread::yield();
    };
    std::thread logger1([&waitForSwitching] {
        waitForSwitching();
        for (unsigned i = 0; i < messagesPerThread; ++i)
            LogMessage(LOG_TYPE_INFO, "message");
    });
    std::thread logger2([&waitForSwitching] {
        waitForSwitching();
        for (unsigned i = 0; i < messagesPerThread; ++i) {
            LogMessage(LOG_TYPE_DEBUG, std::string("message"));
            AlertMessage(ALERT_TYPE_UPDATE, ALERT_ID_NO_DATA, "alert");
        }
    });
    logger1.join();
    logger2.join();
    loggersDone = true;
    switcher.join();

    EXPECT_EQ(g_countA.load() + g_countB.load() + g_countC.load(), 2 * messagesPerThread);
    EXPECT_EQ(g_alertCountA.load() + g_alertCountB.load(), messagesPerThread);
}

#if !defined(_WIN32)

// Redirects descriptors 1 and 2 into temporary files for its lifetime.
class CapturedOutput
{
public:
    CapturedOutput()
    {
        std::fflush(stdout);
        std::fflush(stderr);
        savedOut_ = ::dup(STDOUT_FILENO);
        savedErr_ = ::dup(STDERR_FILENO);
        out_ = std::tmpfile();
        err_ = std::tmpfile();
        ::dup2(::fileno(out_), STDOUT_FILENO);
        ::dup2(::fileno(err_), STDERR_FILENO);
    }
    ~CapturedOutput()
    {
        Stop();
        std::fclose(out_);
        std::fclose(err_);
    }
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    void Stop()
    {
        if (savedOut_ < 0)
            return;
        std::fflush(stdout);
        std::fflush(stderr);
        ::dup2(savedOut_, STDOUT_FILENO);
        ::dup2(savedErr_, STDERR_FILENO);
        ::close(savedOut_);
        ::close(savedErr_);
        savedOut_ = savedErr_ = -1;
    }
    std::string Out() { return Read(out_); }
    std::string Err() { return Read(err_); }

private:
    static std::string Read(std::FILE* file)
    {
        std::string text;
        std::rewind(file);
        char buffer[512];
        std::size_t got;
        while ((got = std::fread(buffer, 1, sizeof buffer, file)) > 0)
            text.append(buffer, got);
        return text;
    }

    int savedOut_ = -1;
    int savedErr_ = -1;
    std::FILE* out_ = nullptr;
    std::FILE* err_ = nullptr;
};

int SecondOfDay()
{
    const std::time_t now = std::time(nullptr);
    struct tm local {};
    ::localtime_r(&now, &local);
    return local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec;
}

// Checks that text is exactly one line "hh:mm:ss <message>\n" stamped with a
// local time between before and after.
void ExpectStampedLine(const std::string& text, const std::string& message, int before, int after, int line)
{
    static const std::regex pattern("^([0-9]{2}):([0-9]{2}):([0-9]{2}) ([^\n]*)\n$");
    std::smatch match;
    ASSERT_TRUE(std::regex_match(text, match, pattern)) << "row at line " << line << ": \"" << text << "\"";
    EXPECT_EQ(match[4].str(), message) << "row at line " << line;
    const int stamp = std::stoi(match[1]) * 3600 + std::stoi(match[2]) * 60 + std::stoi(match[3]);
    if (after >= before) {
        EXPECT_GE(stamp, before) << "row at line " << line;
        EXPECT_LE(stamp, after) << "row at line " << line;
    }
}

struct ConsoleRow
{
    int line;
    bool alert;
    unsigned char type;
    const char* message;
    const char* printed;
    bool toStandardError;
};

TEST_F(LogMessageTest, ConsoleLinesGoToTheRightStream)
{
    const ConsoleRow rows[] = {
        {__LINE__, false, LOG_TYPE_INFO, "quote 101.25 accepted", "quote 101.25 accepted", false},
        {__LINE__, false, LOG_TYPE_DEBUG, "debug %s %d", "debug %s %d", false},
        {__LINE__, false, LOG_TYPE_WARNING, "warning", "warning", false},
        {__LINE__, false, LOG_TYPE_ERROR, "error text", "error text", true},
        {__LINE__, false, 4, "unknown type", "unknown type", false},
        {__LINE__, false, 255, "", "", false},
        {__LINE__, false, LOG_TYPE_ERROR, nullptr, "", true},
        {__LINE__, true, ALERT_TYPE_ISOLATED, "process died", "process died", true},
        {__LINE__, true, ALERT_TYPE_CLOSE, "closed", "closed", true},
        {__LINE__, true, 77, nullptr, "", true},
    };
    for (const ConsoleRow& row : rows) {
        const int before = SecondOfDay();
        CapturedOutput output;
        if (row.alert)
            PrintfAlertMessage(row.type, ALERT_ID_PROCESS_DIE, row.message);
        else
            PrintfLogMessage(row.type, row.message);
        output.Stop();
        const int after = SecondOfDay();
        const std::string used = row.toStandardError ? output.Err() : output.Out();
        const std::string unused = row.toStandardError ? output.Out() : output.Err();
        ExpectStampedLine(used, row.printed, before, after, row.line);
        EXPECT_EQ(unused, "") << "row at line " << row.line;
    }
}

// Sets the time zone so that the local time of the second `now` is
// secondOfDay, and restores the previous zone when destroyed.
class LocalTimeOfDay
{
public:
    LocalTimeOfDay(std::time_t now, int secondOfDay)
    {
        const char* zone = std::getenv("TZ");
        hadZone_ = zone != nullptr;
        if (hadZone_)
            savedZone_ = zone;
        struct tm utc {};
        ::gmtime_r(&now, &utc);
        const int utcSecond = utc.tm_hour * 3600 + utc.tm_min * 60 + utc.tm_sec;
        // A POSIX zone "XXX+hh:mm:ss" is that far west of UTC: local = UTC - offset.
        const int offset = ((utcSecond - secondOfDay) % 86400 + 86400) % 86400;
        char text[32];
        std::snprintf(text, sizeof text, "ZZT+%02d:%02d:%02d", offset / 3600, offset / 60 % 60, offset % 60);
        ::setenv("TZ", text, 1);
        ::tzset();
    }
    ~LocalTimeOfDay()
    {
        if (hadZone_)
            ::setenv("TZ", savedZone_.c_str(), 1);
        else
            ::unsetenv("TZ");
        ::tzset();
    }
    LocalTimeOfDay(const LocalTimeOfDay&) = delete;
    LocalTimeOfDay& operator=(const LocalTimeOfDay&) = delete;

private:
    bool hadZone_ = false;
    std::string savedZone_;
};

// The exact console line at a chosen local time: each field is two digits
// with a leading zero, followed by one blank, the message and a newline.
TEST_F(LogMessageTest, ConsoleLineAtAChosenLocalTime)
{
    struct Row
    {
        int line;
        bool alert;
        unsigned char type;
        int secondOfDay;
        const char* printed;
        bool toStandardError;
    };
    const Row rows[] = {
        {__LINE__, false, LOG_TYPE_INFO, 9 * 3600 + 5 * 60 + 7, "09:05:07 x\n", false},
        {__LINE__, false, LOG_TYPE_ERROR, 9 * 3600 + 5 * 60 + 7, "09:05:07 x\n", true},
        {__LINE__, false, LOG_TYPE_WARNING, 0, "00:00:00 x\n", false},
        {__LINE__, false, LOG_TYPE_DEBUG, 23 * 3600 + 59 * 60 + 59, "23:59:59 x\n", false},
        {__LINE__, true, ALERT_TYPE_OPEN, 12 * 3600 + 1, "12:00:01 x\n", true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "row at line " << row.line);
        // The zone is set for the current second; a print that falls into
        // the next second is repeated.
        bool printedInTheSameSecond = false;
        for (int attempt = 0; attempt < 5 && !printedInTheSameSecond; ++attempt) {
            const std::time_t now = std::time(nullptr);
            const LocalTimeOfDay zone(now, row.secondOfDay);
            CapturedOutput output;
            if (row.alert)
                PrintfAlertMessage(row.type, ALERT_ID_MANUAL, "x");
            else
                PrintfLogMessage(row.type, "x");
            output.Stop();
            if (std::time(nullptr) != now)
                continue;
            printedInTheSameSecond = true;
            EXPECT_EQ(row.toStandardError ? output.Err() : output.Out(), row.printed);
            EXPECT_EQ(row.toStandardError ? output.Out() : output.Err(), "");
        }
        if (!printedInTheSameSecond)
            GTEST_SKIP() << "every attempt crossed a second boundary";
    }
}

TEST_F(LogMessageTest, DefaultHookPrintsThroughLogMessage)
{
    SetLogMessageFunction(&PrintfLogMessage);
    SetAlertMessageFunction(&PrintfAlertMessage);
    const int before = SecondOfDay();
    CapturedOutput output;
    LogMessage(LOG_TYPE_INFO, boost::format("%1% quotes") % 3);
    AlertMessage(ALERT_TYPE_OPEN, ALERT_ID_NO_DATA, std::string("no data"));
    output.Stop();
    const int after = SecondOfDay();
    ExpectStampedLine(output.Out(), "3 quotes", before, after, __LINE__);
    ExpectStampedLine(output.Err(), "no data", before, after, __LINE__);
}

// Runs the printers in a child process whose standard error is prepared by
// prepareStandardError, with standard output in a temporary file; returns
// what reached standard output, or "child failed".
std::string RunPrintersInChild(void (*prepareStandardError)())
{
    std::FILE* out = std::tmpfile();
    if (out == nullptr)
        return "no temporary file";
    std::fflush(stdout);
    std::fflush(stderr);
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(::fileno(out), STDOUT_FILENO);
        prepareStandardError();
        PrintfLogMessage(LOG_TYPE_DEBUG, "debug to the system log");
        PrintfLogMessage(LOG_TYPE_INFO, "info to the system log");
        PrintfLogMessage(LOG_TYPE_WARNING, "warning to the system log");
        PrintfLogMessage(LOG_TYPE_ERROR, "error to the system log");
        PrintfLogMessage(9, nullptr);
        PrintfAlertMessage(ALERT_TYPE_OPEN, ALERT_ID_PROCESS_DIE, "alert to the system log");
        std::fflush(stdout);
        ::_exit(0);
    }
    int status = 0;
    const bool ok = child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status)
                    && WEXITSTATUS(status) == 0;
    std::string text;
    std::rewind(out);
    char buffer[512];
    std::size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, out)) > 0)
        text.append(buffer, got);
    std::fclose(out);
    return ok ? text : "child failed";
}

void StandardErrorToDevNull()
{
    const int null = ::open("/dev/null", O_WRONLY);
    ::dup2(null, STDERR_FILENO);
    ::close(null);
}

void StandardErrorClosed()
{
    ::close(STDERR_FILENO);
}

void StandardErrorToFile()
{
    std::FILE* file = std::tmpfile();
    ::dup2(::fileno(file), STDERR_FILENO);
}

TEST(LogMessageSystemLog, NoConsoleWhenStandardErrorIsDevNull)
{
    EXPECT_EQ(RunPrintersInChild(&StandardErrorToDevNull), "");
}

TEST(LogMessageSystemLog, NoConsoleWhenStandardErrorIsClosed)
{
    EXPECT_EQ(RunPrintersInChild(&StandardErrorClosed), "");
}

TEST(LogMessageSystemLog, ConsoleWhenStandardErrorIsAFile)
{
    // The same child with a real standard error prints the non-error logs.
    const std::string text = RunPrintersInChild(&StandardErrorToFile);
    static const std::regex pattern("^[0-9]{2}:[0-9]{2}:[0-9]{2} debug to the system log\n"
                                    "[0-9]{2}:[0-9]{2}:[0-9]{2} info to the system log\n"
                                    "[0-9]{2}:[0-9]{2}:[0-9]{2} warning to the system log\n"
                                    "[0-9]{2}:[0-9]{2}:[0-9]{2} \n$");
    EXPECT_TRUE(std::regex_match(text, pattern)) << text;
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

    PrintfLogMessage(LOG_TYPE_DEBUG, "debug line");
    PrintfLogMessage(LOG_TYPE_INFO, "info line");
    PrintfLogMessage(LOG_TYPE_WARNING, "warning line");
    PrintfLogMessage(LOG_TYPE_ERROR, "error line");
    PrintfLogMessage(9, nullptr);
    PrintfAlertMessage(ALERT_TYPE_OPEN, ALERT_ID_PROCESS_DIE, "alert line");
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
    std::FILE* result = std::tmpfile();
    ASSERT_NE(result, nullptr);
    std::fflush(stdout);
    std::fflush(stderr);
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(CaptureSystemLog(result));
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == kNoNamespace)
    {
        std::fclose(result);
        GTEST_SKIP() << "no mount namespace for a private /dev/log here";
    }
    ASSERT_EQ(WEXITSTATUS(status), 0);

    std::vector<std::string> lines;
    std::rewind(result);
    char line[1100];
    while (std::fgets(line, sizeof line, result) != nullptr)
    {
        std::string text(line);
        if (!text.empty() && text.back() == '\n')
            text.pop_back();
        lines.push_back(text);
    }
    std::fclose(result);

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
