// The located exceptions (report, chain ownership, texts), the throw
// locations ZANTOR_THROW records, and the message exceptions.
#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/MessageException.h> // and LogMessage.h
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <boost/exception/get_error_info.hpp>
#include <boost/format.hpp>

#include <gtest/gtest.h>

#include <cstring>
#include <iomanip>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

// Throw sites whose names the tests check, in a named namespace so that the
// expected names do not depend on how a compiler spells an anonymous one.
// THROW_HERE sets g_line to the line of the throw.
namespace Zantor::ThrowSite {

int g_line = 0;
#define THROW_HERE(...) do { g_line = __LINE__; ZANTOR_THROW(__VA_ARGS__); } while (false)

[[noreturn]] void Free() { THROW_HERE(StatusCodeException, STATUS_CODE_PATH_NOT_FOUND); }
struct Widget
{
    explicit Widget(int code) { THROW_HERE(OsException, static_cast<std::uint32_t>(code)); }
};
void Lambda() { [] { [](auto code) { THROW_HERE(StatusCodeException, code); }(STATUS_CODE_BUSY); }(); }
[[noreturn]] void Message(const char* text) { THROW_HERE(LogMessageException, LOG_TYPE_ERROR, text); }
[[noreturn]] void Alert() { THROW_HERE(AlertMessageException, ALERT_TYPE_OPEN, ALERT_ID_NO_DATA, std::string("no data")); }
[[noreturn]] void Standard() { ZANTOR_THROW(std::runtime_error, "standard"); }

} // namespace Zantor::ThrowSite

namespace Zantor {
namespace {

// A numpunct that groups digits in threes, as many user locales do.
struct ThousandsGrouping : std::numpunct<char>
{
    char do_thousands_sep() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
};

// The report, written to a stream in a format state it must ignore: the line
// stays decimal, unsigned and ungrouped, nothing is padded, and a width set
// for the report is used up by it (the empty text after it is not padded).
std::string Report(const Exception& e)
{
    std::ostringstream stream;
    stream.imbue(std::locale(std::locale::classic(), new ThousandsGrouping));
    stream << std::hex << std::showbase << std::showpos << std::setfill('*') << std::setw(80) << e << "";
    return stream.str();
}

// Runs f, which must throw E, and returns the exception.
template <typename E, typename F>
E Catch(F f)
{
    try { f(); } catch (const E& e) { return e; }
    throw std::logic_error("nothing thrown");
}

// Counts live instances, to see who deletes a chain.
struct Counted : StatusCodeException
{
    Counted(std::uint32_t line, std::uint32_t code) : StatusCodeException(".\\C", "C", line, code) { ++s_alive; }
    ~Counted() override { --s_alive; }
    static inline int s_alive = 0;
};

// "<file name>:<function>:<line> - <text>": the file without its directory,
// a null file or function as empty, the line as the full unsigned value.
TEST(ExceptionTest, ReportNamesTheFileWithoutItsDirectory)
{
    const std::pair<const char*, const char*> rows[] = {
        {"C:\\src\\Base\\File.cpp", "File.cpp"}, {"\\\\build\\src\\File.cpp", "File.cpp"}, {".\\Foo", "Foo"},
        {"source/Linux/File.cpp", "File.cpp"}, {"/work/File.cpp", "File.cpp"}, {"File.cpp", "File.cpp"},
        {"", ""}, {nullptr, ""}};
    for (const auto& [file, name] : rows)
        EXPECT_EQ(Report(StatusCodeException(file, "Zantor::F", 7, STATUS_CODE_TIMEOUT)),
                  std::string(name) + ":Zantor::F:7 - timeout");
    EXPECT_EQ(Report(StatusCodeException("F", nullptr, 1, STATUS_CODE_FAILURE)), "F::1 - failure");
    EXPECT_EQ(Report(Exception("d\\Plain.cpp", "Zantor::F", 4294967295u, 99)), "Plain.cpp:Zantor::F:4294967295 - ");
}

// An added exception becomes the head and links the old head; null is
// ignored. Behind the head the chain is reported tail first, then the head's
// own report, which repeats the entries behind it. One object owns a chain: a
// copy or an assignment takes it from the source, an assignment deletes the
// target's own chain first, the owner's destruction deletes it, and an
// exception added to a chain loses its own chain.
TEST(ExceptionTest, Chain)
{
    {
        auto* source = new StatusCodeException(".\\S.cpp", "Zantor::S", 5, STATUS_CODE_BUSY);
        source->AddException(new Counted(1, STATUS_CODE_TIMEOUT));
        EXPECT_EQ(Report(*source), "S.cpp:Zantor::S:5 - busy via:\nC:C:1 - timeout");
        source->AddException(new Counted(2, STATUS_CODE_EMPTY));
        source->AddException(nullptr);
        const StatusCodeException copy(*source);
        EXPECT_EQ(Report(*source), "S.cpp:Zantor::S:5 - busy");
        delete source;
        StatusCodeException target(".\\T", "Zantor::T", 9, STATUS_CODE_FAILURE);
        target.AddException(new Counted(3, STATUS_CODE_FULL));
        target = copy; // deletes the target's own chain
        EXPECT_EQ(copy.GetNext(), nullptr);
        StatusCodeException& alias = target;
        target = alias; // keeps the chain
        const std::string two = "C:C:1 - timeout\nC:C:2 - empty via:\nC:C:1 - timeout";
        EXPECT_EQ(Report(target), "S.cpp:Zantor::S:5 - busy via:\n" + two);
        auto* inner = new Counted(4, STATUS_CODE_FAILURE);
        inner->AddException(new Counted(5, STATUS_CODE_INVALID_PARAMETER));
        target.AddException(inner); // deletes inner's own chain
        EXPECT_EQ(Report(target), "S.cpp:Zantor::S:5 - busy via:\n" + two + "\nC:C:4 - failure via:\n" + two);
    }
    EXPECT_EQ(Counted::s_alive, 0);
}

template <typename E>
std::string Text(std::uint32_t code) { return E("f", "g", 1, code).ToString(); }

TEST(ExceptionTest, TextsOfEachType)
{
    const char* const baseTexts[] = { // codes 0 to 12
        "invalid registry value type", "failed to allocate shared mutex", "failed to allocate private mutex",
        "failed to initialize private mutex", "failed to allocate shared event", "failed to allocate private event",
        "failed to allocate shared semaphore", "failed to allocate private semaphore", "failed to allocate version",
        "failed to allocate shared memory", "failed to allocate metered section", "failed to allocate Uuid",
        "thread already started"};
    for (std::uint32_t code = 0; code < std::size(baseTexts); ++code)
        EXPECT_EQ(Text<BaseException>(code), baseTexts[code]) << code;
    const std::pair<std::string, std::string> rows[] = {
        {Text<BaseException>(13), "unknown error"}, {Text<BaseException>(0xFFFFFFFF), "unknown error"},
        // Above 255 a code is no status code: its full value, never a truncated one.
        {Text<StatusCodeException>(255), StatusCodeToString(255)}, {Text<StatusCodeException>(256), "status code 256"},
        {Text<StatusCodeException>(0xFFFFFFFF), "status code 4294967295"}, {Text<OsException>(2), OsErrorToString(2)},
        {Text<CrtException>(2), std::strerror(2)}, {Text<Exception>(23), ""}};
    for (const auto& [text, expected] : rows)
        EXPECT_EQ(text, expected);
}

// ZANTOR_THROW records the file, the line and the enclosing function's name
// (inside a lambda, the function the lambda is written in), and throws
// exactly the type built from them and the arguments; other types are built
// from the arguments alone.
TEST(ExceptionTest, ThrowSites)
{
    const struct { void (*thrower)(); std::string name; std::uint32_t code; const std::type_info& type; } rows[] = {
        {[] { ThrowSite::Free(); }, "Free", STATUS_CODE_PATH_NOT_FOUND, typeid(StatusCodeException)},
        {[] { ThrowSite::Widget w(5); }, "Widget::Widget", 5, typeid(OsException)},
        {[] { ThrowSite::Lambda(); }, "Lambda", STATUS_CODE_BUSY, typeid(StatusCodeException)}};
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        try { row.thrower(); ADD_FAILURE() << "nothing thrown"; }
        catch (const Exception& e)
        {
            EXPECT_EQ(e.GetFunction(), "Zantor::ThrowSite::" + row.name);
            EXPECT_EQ(e.GetFile() + (":" + std::to_string(e.GetLine())), __FILE__ ":" + std::to_string(ThrowSite::g_line));
            EXPECT_EQ(e.GetCode(), row.code);
            EXPECT_TRUE(typeid(e) == row.type);
        }
    }
    EXPECT_STREQ(Catch<std::runtime_error>(ThrowSite::Standard).what(), "standard");
}

// The function-name reduction on signatures as GCC, clang and MSVC print them.
TEST(ExceptionTest, FunctionNameFromSignature)
{
    const std::pair<std::string_view, std::string_view> rows[] = {
        {"", ""}, {"N::operator", "N::operator"}, {"std::map<int, std::pair<int, int> > N::M()", "N::M"},
        {"decltype(auto) N::D()", "N::D"}, {"void __attribute__((stdcall)) N::S()", "N::S"},
        {"long __stdcall N::P(void *, unsigned)", "N::P"}, {"void (* N::FP())(int)", "N::FP"}, {"void (*N::FP())(int)", "N::FP"},
        {"N::Box<(1 > 2)>::B()", "N::Box<(1 > 2)>::B"}, {"void N::{anonymous}::A()", "N::{anonymous}::A"},
        {"void N::(anonymous namespace)::A()", "N::(anonymous namespace)::A"}, {"N::T<int>()::<lambda()>", "N::T<int>"},
        {"void N::Box<T>::Get() const [with T = std::pair<int, std::vector<int> >]", "N::Box<T>::Get"},
        {"void N::Box<std::pair<int, std::vector<int>>>::Get() const [T = int]", "N::Box<std::pair<int, std::vector<int>>>::Get"},
        {"auto N::L()::(anonymous class)::operator()(int) const", "N::L"}, {"void N::W::operator()()", "N::W::operator()"},
        {"int N::W::operator[](int)", "N::W::operator[]"}, {"auto N::W::operator<=>(int)", "N::W::operator<=>"},
        {"N::W &N::W::operator>>=(int)", "N::W::operator>>="}, {"N::W::operator const char*() const", "N::W::operator const char*"},
        {"const char *N::W::operator const char *() const", "N::W::operator const char *"},
        {"N::W::operator std::function<void(int)>() const", "N::W::operator std::function<void(int)>"},
        {"static void N::W::operator delete [](void*)", "N::W::operator delete []"}};
    for (const auto& [signature, name] : rows)
    {
        const Detail::FunctionNameRange range = Detail::FindFunctionName(signature);
        EXPECT_EQ(signature.substr(range.begin, range.end - range.begin), name);
    }
    static constexpr auto bare = Detail::MakeFunctionName("Bar"); // no parameter list: the whole text
    EXPECT_STREQ(bare.text, "Bar");
}

// The hook calls of the message exceptions, as "log <type> <text>" and
// "alert <type> <id> <text>".
std::vector<std::string> g_calls;

// Each construction calls its hook once, copies do not. what(), read through
// std::exception, is the message, followed by the throw location when both
// its file and its line are known; the result is kept per thread: another
// thread's what() does not overwrite it.
TEST(MessageExceptionTest, HookCallsAndWhat)
{
    SetLogMessageFunction([](unsigned char type, const char* text) { g_calls.push_back("log " + std::to_string(type) + " " + text); });
    SetAlertMessageFunction([](unsigned char type, std::uint32_t id, const char* text) {
        g_calls.push_back("alert " + std::to_string(type) + " " + std::to_string(id) + " " + text);
    });
    const LogMessageException log(LOG_TYPE_ERROR, "disk full");
    const AlertMessageException alert(ALERT_TYPE_CLOSE, ALERT_ID_QUEUE_LIMIT_REACHED, "queue limit");
    EXPECT_STREQ(LogMessageException(log).what(), "disk full");
    EXPECT_STREQ(AlertMessageException(alert).what(), "queue limit");
    EXPECT_STREQ(LogMessageException(LOG_TYPE_WARNING, std::string("from string")).what(), "from string");
    EXPECT_STREQ(LogMessageException(LOG_TYPE_INFO, boost::format("%1% of %2%") % 3 % 7).what(), "3 of 7");
    EXPECT_STREQ(LogMessageException(LOG_TYPE_DEBUG, static_cast<const char*>(nullptr)).what(), "");
    EXPECT_STREQ(AlertMessageException(ALERT_TYPE_UPDATE, 0xFFFFFFFF, boost::format("%1%%%") % 95).what(), "95%");
    EXPECT_STREQ((LogMessageException(LOG_TYPE_ERROR, "file") << boost::throw_file("x.cpp")).what(), "file");
    EXPECT_STREQ((LogMessageException(LOG_TYPE_ERROR, "line") << boost::throw_line(12)).what(), "line");

    const auto thrownLog = Catch<LogMessageException>([] { ThrowSite::Message("boom"); });
    const std::string logLine = std::to_string(ThrowSite::g_line);
    const auto thrownAlert = Catch<AlertMessageException>(ThrowSite::Alert);
    const char* const logWhat = static_cast<const std::exception&>(thrownLog).what();
    std::string alertWhat;
    std::thread([&] { alertWhat = static_cast<const std::exception&>(thrownAlert).what(); }).join();
    EXPECT_EQ(logWhat, "boom (thrown from line " + logLine + " of " __FILE__ ")");
    EXPECT_EQ(alertWhat, "no data (thrown from line " + std::to_string(ThrowSite::g_line) + " of " __FILE__ ")");
    EXPECT_EQ(thrownLog.GetText(), "boom");
    EXPECT_STREQ(*boost::get_error_info<boost::throw_function>(thrownLog), "Zantor::ThrowSite::Message");
    EXPECT_EQ(g_calls, (std::vector<std::string>{"log 3 disk full", "alert 3 11 queue limit", "log 2 from string",
                                                  "log 1 3 of 7", "log 0 ", "alert 2 4294967295 95%", "log 3 file",
                                                  "log 3 line", "log 3 boom", "alert 1 8 no data"}));
}

} // namespace
} // namespace Zantor
