#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/LogMessage.h>
#include <ZantorMiddleware/ZantorBase/MessageException.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <boost/exception/get_error_info.hpp>
#include <boost/format.hpp>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <iomanip>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <typeinfo>
#include <vector>

// Throw sites whose names the tests check. They live in a named namespace so
// that the expected names do not depend on how a compiler spells an
// anonymous one. g_line is set where a test checks the exact line.
namespace Zantor::ThrowSite {

int g_line = 0;

[[noreturn]] void Free()
{
    g_line = __LINE__ + 1;
    ZANTOR_THROW(StatusCodeException, STATUS_CODE_PATH_NOT_FOUND);
}

template <typename T>
[[noreturn]] void Template(T value)
{
    g_line = __LINE__ + 1;
    ZANTOR_THROW(StatusCodeException, static_cast<std::uint32_t>(value));
}

template <typename T>
struct Box
{
    [[noreturn]] void Get() const { ZANTOR_THROW(StatusCodeException, STATUS_CODE_EMPTY); }
};

class Widget
{
public:
    explicit Widget(int code)
    {
        g_line = __LINE__ + 1;
        ZANTOR_THROW(OsException, static_cast<std::uint32_t>(code));
    }
    Widget() = default;

    [[noreturn]] void Member() const& { ZANTOR_THROW(BaseException, BaseException::THREAD_ALREADY_STARTED); }
    [[noreturn]] static std::vector<int> Static() { ZANTOR_THROW(CrtException, ENOENT); }
    [[noreturn]] void operator()() { ZANTOR_THROW(StatusCodeException, STATUS_CODE_FAILURE); }
    [[noreturn]] bool operator<(const Widget&) const { ZANTOR_THROW(StatusCodeException, STATUS_CODE_FAILURE); }
    [[noreturn]] operator const char*() const { ZANTOR_THROW(StatusCodeException, STATUS_CODE_FAILURE); }
    void Lambda() const
    {
        auto thrower = [](int code) { ZANTOR_THROW(StatusCodeException, static_cast<std::uint32_t>(code)); };
        thrower(1);
    }
    ~Widget() noexcept(false)
    {
        if (m_throwOnDestruction)
            ZANTOR_THROW(StatusCodeException, STATUS_CODE_WRONG_STATE);
    }

    bool m_throwOnDestruction = false;
};

// Lambdas: the name is that of the function the lambda is written in.
void FreeLambda() { [] { ZANTOR_THROW(StatusCodeException, STATUS_CODE_BUSY); }(); }
void GenericLambda() { [](auto code) { ZANTOR_THROW(StatusCodeException, code); }(STATUS_CODE_BUSY); }
void NestedLambda() { [] { [] { ZANTOR_THROW(StatusCodeException, STATUS_CODE_BUSY); }(); }(); }
template <typename T>
void TemplateLambda() { [] { ZANTOR_THROW(StatusCodeException, STATUS_CODE_BUSY); }(); }
struct Gadget
{
    Gadget() { [] { ZANTOR_THROW(StatusCodeException, STATUS_CODE_BUSY); }(); }
};

[[noreturn]] void Message(const char* text)
{
    g_line = __LINE__ + 1;
    ZANTOR_THROW(LogMessageException, LOG_TYPE_ERROR, text);
}

[[noreturn]] void Alert()
{
    g_line = __LINE__ + 1;
    ZANTOR_THROW(AlertMessageException, ALERT_TYPE_OPEN, ALERT_ID_NO_DATA, std::string("no data"));
}

[[noreturn]] void Standard() { ZANTOR_THROW(std::runtime_error, "standard"); }

// A located exception with a further constructor argument.
struct TextException : Exception
{
    TextException(const char* file, const char* function, std::uint32_t line, std::uint32_t code, std::string text)
        : Exception(file, function, line, code), m_text(std::move(text)) {}
    std::string ToString() const override { return m_text; }
    std::string m_text;
};

[[noreturn]] void WithText() { ZANTOR_THROW(TextException, 7, std::string("seven")); }

} // namespace Zantor::ThrowSite

namespace Zantor {
namespace {

std::string Report(const Exception& e)
{
    std::ostringstream stream;
    stream << e;
    return stream.str();
}

// Runs f, which must throw E, and returns the exception.
template <typename E, typename F>
E Catch(F&& f)
{
    try
    {
        f();
    }
    catch (const E& e)
    {
        return e;
    }
    ADD_FAILURE() << "nothing thrown";
    throw std::logic_error("nothing thrown");
}

// Counts live instances, to see who deletes a chain.
class CountedException : public StatusCodeException
{
public:
    CountedException(std::uint32_t line, std::uint32_t code)
        : StatusCodeException(".\\Counted", "Zantor::Counted", line, code)
    {
        ++s_alive;
    }
    CountedException(const CountedException& other) : StatusCodeException(other) { ++s_alive; }
    ~CountedException() override { --s_alive; }

    static int s_alive;
};

int CountedException::s_alive = 0;

// ---------------------------------------------------------------- report

TEST(ExceptionTest, ReportIsOneLineNamingTheFileWithoutItsDirectory)
{
    struct Row
    {
        int line;
        const char* file;
        const char* function;
        std::uint32_t at;
        std::uint32_t code;
        const char* report;
    };
    const Row rows[] = {
        {__LINE__, ".\\Foo", "Zantor::Foo::Bar", 21, STATUS_CODE_INVALID_PARAMETER,
         "Foo:Zantor::Foo::Bar:21 - invalid parameter"},
        {__LINE__, nullptr, nullptr, 1, STATUS_CODE_FAILURE, "::1 - failure"},
        {__LINE__, ".\\Foo", "F", 7, STATUS_CODE_TIMEOUT, "Foo:F:7 - timeout"},
        {__LINE__, ".\\Foo.cpp", "F", 7, STATUS_CODE_TIMEOUT, "Foo.cpp:F:7 - timeout"},
        {__LINE__, "C:\\src\\Base\\File.cpp", "F", 7, STATUS_CODE_TIMEOUT, "File.cpp:F:7 - timeout"},
        {__LINE__, "\\\\build\\src\\File.cpp", "F", 7, STATUS_CODE_TIMEOUT, "File.cpp:F:7 - timeout"},
        {__LINE__, "source/Linux/File.cpp", "F", 7, STATUS_CODE_TIMEOUT, "File.cpp:F:7 - timeout"},
        {__LINE__, "/work/source/File.cpp", "F", 7, STATUS_CODE_TIMEOUT, "File.cpp:F:7 - timeout"},
        {__LINE__, "File.cpp", "F", 7, STATUS_CODE_TIMEOUT, "File.cpp:F:7 - timeout"},
        {__LINE__, "", "F", 7, STATUS_CODE_TIMEOUT, ":F:7 - timeout"},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(Report(StatusCodeException(row.file, row.function, row.at, row.code)), row.report);
    }
    const Exception plain("dir\\sub\\Plain.cpp", "Zantor::F", 4294967295u, 99); // empty text, no chain
    EXPECT_EQ(Report(plain), "Plain.cpp:Zantor::F:4294967295 - ");
    EXPECT_EQ(plain.GetNext(), nullptr);
}

// A numpunct that groups digits in threes, as many user locales do.
struct ThousandsGrouping : std::numpunct<char>
{
    char do_thousands_sep() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
};

// The report is the same text whatever state the caller left the stream in:
// the line stays decimal and ungrouped, and nothing is padded.
TEST(ExceptionTest, ReportIgnoresTheStreamsFormatState)
{
    struct Row
    {
        int line;
        void (*prepare)(std::ostream&);
    };
    const Row rows[] = {
        {__LINE__, [](std::ostream&) {}},
        {__LINE__, [](std::ostream& s) { s << std::hex << std::showbase << std::uppercase; }},
        {__LINE__, [](std::ostream& s) { s << std::oct; }},
        {__LINE__, [](std::ostream& s) { s << std::showpos; }},
        {__LINE__, [](std::ostream& s) { s << std::setw(80) << std::setfill('*') << std::right; }},
        {__LINE__, [](std::ostream& s) { s << std::setw(80) << std::left; }},
        {__LINE__, [](std::ostream& s) { s.imbue(std::locale(std::locale::classic(), new ThousandsGrouping)); }},
    };
    const StatusCodeException outer(".\\Foo", "Zantor::Foo::Bar", 12345, STATUS_CODE_INVALID_PARAMETER);
    outer.AddException(new StatusCodeException(".\\E1", "Zantor::E1", 1000000, STATUS_CODE_TIMEOUT));
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        std::ostringstream stream;
        row.prepare(stream);
        stream << outer << '|'; // a width meant for the report is used up by it
        EXPECT_EQ(stream.str(), "Foo:Zantor::Foo::Bar:12345 - invalid parameter via:\n"
                                "E1:Zantor::E1:1000000 - timeout|");
    }
}

// An added exception becomes the head and links the old head. Behind the
// head the chain is reported tail first, each entry with its own chain, then
// the head's report, which repeats the entries behind it.
TEST(ExceptionTest, ChainOfOneTwoAndThree)
{
    const StatusCodeException outer(".\\Outer.cpp", "Zantor::Outer", 1, STATUS_CODE_FAILURE);
    Exception* first = new OsException(".\\E1.cpp", "Zantor::E1", 2, 0x3FFFFFFF);
    Exception* second = new BaseException(".\\E2.cpp", "Zantor::E2", 3, 12);
    Exception* third = new Exception("C", "C", 4, 0);
    const std::string head = "Outer.cpp:Zantor::Outer:1 - failure via:\n";
    const std::string a = "E1.cpp:Zantor::E1:2 - error 1073741823";
    const std::string b = "E2.cpp:Zantor::E2:3 - thread already started via:\n" + a;

    outer.AddException(first);
    EXPECT_EQ(outer.GetNext(), first);
    EXPECT_EQ(first->GetNext(), nullptr);
    EXPECT_EQ(Report(outer), head + a);
    outer.AddException(second);
    EXPECT_EQ(outer.GetNext(), second);
    EXPECT_EQ(second->GetNext(), first);
    EXPECT_EQ(Report(outer), head + a + "\n" + b);
    outer.AddException(third);
    EXPECT_EQ(third->GetNext(), second);
    EXPECT_EQ(Report(outer), head + a + "\n" + b + "\nC:C:4 -  via:\n" + a + "\n" + b);
    outer.AddException(nullptr);
    EXPECT_EQ(outer.GetNext(), third);
}

// ---------------------------------------------------------------- ownership

// A copy takes the chain: the source's destruction leaves it alone, the
// copy's deletes all of it. A thrown copy keeps it up to the catch.
TEST(ExceptionTest, CopyTakesTheChainAndDestructionDeletesIt)
{
    CountedException::s_alive = 0;
    try
    {
        auto* source = new StatusCodeException(".\\S", "Zantor::S", 5, STATUS_CODE_BUSY);
        source->AddException(new CountedException(1, STATUS_CODE_TIMEOUT));
        source->AddException(new CountedException(2, STATUS_CODE_EMPTY));
        const StatusCodeException copy(*source);
        EXPECT_EQ(source->GetNext(), nullptr);
        EXPECT_EQ(Report(*source), "S:Zantor::S:5 - busy");
        delete source;
        EXPECT_EQ(CountedException::s_alive, 2);
        throw copy;
    }
    catch (const StatusCodeException& thrown)
    {
        const StatusCodeException caught(thrown);
        EXPECT_EQ(thrown.GetNext(), nullptr);
        EXPECT_EQ(CountedException::s_alive, 2);
        EXPECT_EQ(Report(caught), "S:Zantor::S:5 - busy via:\n"
                                  "Counted:Zantor::Counted:1 - timeout\n"
                                  "Counted:Zantor::Counted:2 - empty via:\n"
                                  "Counted:Zantor::Counted:1 - timeout");
        EXPECT_EQ(caught.GetLine(), 5u);
        EXPECT_EQ(caught.GetCode(), STATUS_CODE_BUSY);
    }
    EXPECT_EQ(CountedException::s_alive, 0);
}

TEST(ExceptionTest, AssignmentReplacesOwnChainWithTheSources)
{
    CountedException::s_alive = 0;
    StatusCodeException target(".\\A", "Zantor::A", 1, STATUS_CODE_FAILURE);
    target.AddException(new CountedException(1, STATUS_CODE_TIMEOUT));
    StatusCodeException source(".\\B", "Zantor::B", 2, STATUS_CODE_BUSY);
    source.AddException(new CountedException(2, STATUS_CODE_EMPTY));
    source.AddException(new CountedException(3, STATUS_CODE_FULL));
    EXPECT_EQ(CountedException::s_alive, 3);

    target = source;
    EXPECT_EQ(CountedException::s_alive, 2);
    EXPECT_EQ(source.GetNext(), nullptr);
    EXPECT_EQ(target.GetLine(), 2u);
    EXPECT_EQ(Report(target), "B:Zantor::B:2 - busy via:\n"
                              "Counted:Zantor::Counted:2 - empty\n"
                              "Counted:Zantor::Counted:3 - full via:\n"
                              "Counted:Zantor::Counted:2 - empty");
    StatusCodeException& alias = target;
    target = alias; // self-assignment keeps the chain
    ASSERT_NE(target.GetNext(), nullptr);
    EXPECT_EQ(CountedException::s_alive, 2);
}

TEST(ExceptionTest, AddingExceptionWithOwnChainToAChainDropsItsOwnChain)
{
    CountedException::s_alive = 0;
    const Exception outer("O", "O", 0, 0);
    outer.AddException(new CountedException(1, STATUS_CODE_FAILURE));
    auto* inner = new CountedException(2, STATUS_CODE_FAILURE);
    inner->AddException(new CountedException(3, STATUS_CODE_FAILURE));
    EXPECT_EQ(CountedException::s_alive, 3);
    outer.AddException(inner);
    EXPECT_EQ(CountedException::s_alive, 2); // no leak: inner's own chain is gone
    ASSERT_NE(inner->GetNext(), nullptr);
    EXPECT_EQ(inner->GetNext()->GetLine(), 1u);
}

// ---------------------------------------------------------------- texts

template <typename E>
std::string Text(std::uint32_t code)
{
    return E("f", "g", 1, code).ToString();
}

TEST(ExceptionTest, TextsOfEachType)
{
    // BaseException codes 0 to 12 in order; every other code is unknown.
    const char* const baseTexts[] = {
        "invalid registry value type", "failed to allocate shared mutex", "failed to allocate private mutex",
        "failed to initialize private mutex", "failed to allocate shared event", "failed to allocate private event",
        "failed to allocate shared semaphore", "failed to allocate private semaphore", "failed to allocate version",
        "failed to allocate shared memory", "failed to allocate metered section", "failed to allocate Uuid",
        "thread already started",
    };
    for (std::uint32_t code = 0; code < std::size(baseTexts); ++code)
        EXPECT_EQ(Text<BaseException>(code), baseTexts[code]) << code;
    for (const std::uint32_t code : {13u, 14u, 0xFFFFFFFFu})
        EXPECT_EQ(Text<BaseException>(code), "unknown error") << code;

    struct Row
    {
        int line;
        std::string text;
        std::string expected;
    };
    const Row rows[] = {
        {__LINE__, Text<StatusCodeException>(0), "success"},
        {__LINE__, Text<StatusCodeException>(80), "function unavailable"},
        {__LINE__, Text<StatusCodeException>(81), "status code 81"},
        {__LINE__, Text<StatusCodeException>(255), "unknown"},
        // Not a status code: the full value, never a truncated one.
        {__LINE__, Text<StatusCodeException>(256), "status code 256"},
        {__LINE__, Text<StatusCodeException>(0x117), "status code 279"},
        {__LINE__, Text<OsException>(2), OsErrorToString(2)},
        {__LINE__, Text<CrtException>(EINVAL), std::strerror(EINVAL)},
        {__LINE__, Text<Exception>(23), ""},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.text, row.expected) << "row at line " << row.line;
}

// ---------------------------------------------------------------- throw macro

// ZANTOR_THROW records the file, the line and the name of the enclosing
// function, whatever kind of function it is, and passes further arguments to
// the type. Class-template arguments appear as the compiler prints them; the
// template-argument list it appends to a signature never does.
TEST(ExceptionTest, ThrowSites)
{
    using ThrowSite::Widget;
#if defined(__clang__)
    const char* const boxName = "Zantor::ThrowSite::Box<std::pair<int, std::vector<int>>>::Get";
    const char* const conversionName = "Zantor::ThrowSite::Widget::operator const char *";
    const char* const templateLambdaName = "Zantor::ThrowSite::TemplateLambda";
#else
    const char* const boxName = "Zantor::ThrowSite::Box<T>::Get";
    const char* const conversionName = "Zantor::ThrowSite::Widget::operator const char*";
    // GCC names the specialization the lambda belongs to.
    const char* const templateLambdaName = "Zantor::ThrowSite::TemplateLambda<int>";
#endif
    struct Row
    {
        int line;
        void (*thrower)();
        const char* name;
        std::uint32_t code;
        std::string text;
        const std::type_info* type = &typeid(StatusCodeException); // thrown exactly
    };
    const Row rows[] = {
        {__LINE__, [] { ThrowSite::Free(); }, "Zantor::ThrowSite::Free", STATUS_CODE_PATH_NOT_FOUND, "path not found"},
        {__LINE__, [] { ThrowSite::Template(3); }, "Zantor::ThrowSite::Template", 3, "shutting down"},
        {__LINE__, [] { ThrowSite::Template(3.5); }, "Zantor::ThrowSite::Template", 3, "shutting down"},
        {__LINE__, [] { ThrowSite::Box<std::pair<int, std::vector<int>>>().Get(); }, boxName, STATUS_CODE_EMPTY,
         "empty"},
        {__LINE__, [] { Widget w(5); }, "Zantor::ThrowSite::Widget::Widget", 5, OsErrorToString(5),
         &typeid(OsException)},
        {__LINE__, [] { Widget().Member(); }, "Zantor::ThrowSite::Widget::Member", 12, "thread already started",
         &typeid(BaseException)},
        {__LINE__, [] { Widget::Static(); }, "Zantor::ThrowSite::Widget::Static", ENOENT, std::strerror(ENOENT),
         &typeid(CrtException)},
        {__LINE__, [] { Widget()(); }, "Zantor::ThrowSite::Widget::operator()", 1, "failure"},
        {__LINE__, [] { (void)(Widget() < Widget()); }, "Zantor::ThrowSite::Widget::operator<", 1, "failure"},
        {__LINE__, [] { (void)static_cast<const char*>(Widget()); }, conversionName, 1, "failure"},
        {__LINE__,
         [] {
             Widget w;
             w.m_throwOnDestruction = true;
         },
         "Zantor::ThrowSite::Widget::~Widget", STATUS_CODE_WRONG_STATE, "wrong state"},
        {__LINE__, [] { Widget().Lambda(); }, "Zantor::ThrowSite::Widget::Lambda", 1, "failure"},
        {__LINE__, [] { ThrowSite::FreeLambda(); }, "Zantor::ThrowSite::FreeLambda", STATUS_CODE_BUSY, "busy"},
        {__LINE__, [] { ThrowSite::GenericLambda(); }, "Zantor::ThrowSite::GenericLambda", STATUS_CODE_BUSY, "busy"},
        {__LINE__, [] { ThrowSite::NestedLambda(); }, "Zantor::ThrowSite::NestedLambda", STATUS_CODE_BUSY, "busy"},
        {__LINE__, [] { ThrowSite::TemplateLambda<int>(); }, templateLambdaName, STATUS_CODE_BUSY, "busy"},
        {__LINE__, [] { ThrowSite::Gadget(); }, "Zantor::ThrowSite::Gadget::Gadget", STATUS_CODE_BUSY, "busy"},
        {__LINE__, [] { ThrowSite::WithText(); }, "Zantor::ThrowSite::WithText", 7, "seven",
         &typeid(ThrowSite::TextException)},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        ThrowSite::g_line = 0;
        try
        {
            row.thrower();
            ADD_FAILURE() << "nothing thrown";
        }
        catch (const Exception& e) // every located type is caught through the root
        {
            EXPECT_STREQ(e.GetFunction(), row.name);
            EXPECT_STREQ(e.GetFile(), __FILE__);
            EXPECT_GT(e.GetLine(), 0u);
            if (ThrowSite::g_line != 0)
            {
                EXPECT_EQ(e.GetLine(), static_cast<std::uint32_t>(ThrowSite::g_line));
            }
            EXPECT_EQ(e.GetCode(), row.code);
            EXPECT_EQ(e.ToString(), row.text);
            EXPECT_TRUE(typeid(e) == *row.type) << typeid(e).name();
            EXPECT_EQ(Report(e), "ExceptionTest.cpp:" + std::string(row.name) + ":" + std::to_string(e.GetLine()) +
                                     " - " + row.text);
        }
    }
}

TEST(ExceptionTest, ThrowOfOtherTypesBuildsThemFromTheArguments)
{
    EXPECT_STREQ(Catch<std::runtime_error>([] { ThrowSite::Standard(); }).what(), "standard");
}

// The function-name reduction on signatures as GCC, clang and other
// compilers print them, including forms this compiler does not produce.
TEST(ExceptionTest, FunctionNameFromSignature)
{
    struct Row
    {
        std::string_view signature; // names its row
        std::string_view name;
    };
    const Row rows[] = {
        {"void Zantor::Foo::Bar()", "Zantor::Foo::Bar"}, {"int Zantor::f(int, char)", "Zantor::f"},
        {"void Zantor::Foo::Bar() const &", "Zantor::Foo::Bar"}, {"Zantor::Foo::Foo(int)", "Zantor::Foo::Foo"},
        {"Zantor::Foo::~Foo()", "Zantor::Foo::~Foo"}, {"static std::vector<int> Zantor::Foo::S()", "Zantor::Foo::S"},
        {"virtual void Zantor::Foo::V()", "Zantor::Foo::V"},
        {"const std::string &Zantor::Foo::Get() const", "Zantor::Foo::Get"},
        {"const char* Zantor::Foo::Name()", "Zantor::Foo::Name"},
        {"void Zantor::{anonymous}::Anon()", "Zantor::{anonymous}::Anon"},
        {"void Zantor::(anonymous namespace)::Anon()", "Zantor::(anonymous namespace)::Anon"},
        {"T Zantor::Tmpl(T) [with T = int]", "Zantor::Tmpl"}, {"T Zantor::Tmpl(T) [T = int]", "Zantor::Tmpl"},
        {"Zantor::Box<T>::Box() [with T = std::pair<int, std::vector<int> >]", "Zantor::Box<T>::Box"},
        {"void Zantor::Box<std::pair<int, std::vector<int>>>::Get() const [T = std::pair<int, int>]",
         "Zantor::Box<std::pair<int, std::vector<int>>>::Get"},
        {"std::map<int, std::pair<int, int> > Zantor::M()", "Zantor::M"},
        {"Zantor::Box<(1 > 2)>::Box()", "Zantor::Box<(1 > 2)>::Box"},
        {"Zantor::Box<void (int)>::Box()", "Zantor::Box<void (int)>::Box"},
        {"bool Zantor::Foo::operator<(const Zantor::Foo&) const", "Zantor::Foo::operator<"},
        {"Zantor::Foo& Zantor::Foo::operator<<(int)", "Zantor::Foo::operator<<"},
        {"Zantor::Foo &Zantor::Foo::operator>>=(int)", "Zantor::Foo::operator>>="},
        {"auto Zantor::Foo::operator<=>(const Zantor::Foo&) const", "Zantor::Foo::operator<=>"},
        {"Zantor::Foo* Zantor::Foo::operator->()", "Zantor::Foo::operator->"},
        {"void Zantor::Foo::operator()()", "Zantor::Foo::operator()"},
        {"int Zantor::Foo::operator[](int)", "Zantor::Foo::operator[]"},
        {"Zantor::Foo::operator int() const", "Zantor::Foo::operator int"},
        {"int Zantor::Foo::operator int() const", "Zantor::Foo::operator int"},
        {"const char *Zantor::Foo::operator const char *() const", "Zantor::Foo::operator const char *"},
        {"Zantor::Foo::operator std::function<void(int)>() const", "Zantor::Foo::operator std::function<void(int)>"},
        {"static void* Zantor::Foo::operator new(std::size_t)", "Zantor::Foo::operator new"},
        {"static void Zantor::Foo::operator delete [](void*)", "Zantor::Foo::operator delete []"},
        {"Zantor::Foo::L()::<lambda(int)>", "Zantor::Foo::L"},
        {"auto Zantor::Foo::L()::(anonymous class)::operator()(int) const", "Zantor::Foo::L"},
        {"void (* Zantor::FP())(int)", "Zantor::FP"}, {"void (*Zantor::FP())(int)", "Zantor::FP"},
        {"void __cdecl Zantor::Foo::Bar(void)", "Zantor::Foo::Bar"},
        {"void __thiscall Zantor::Foo::Bar(int)", "Zantor::Foo::Bar"},
        {"long __stdcall Zantor::WindowProc(void *, unsigned)", "Zantor::WindowProc"},
        {"void __attribute__((stdcall)) Zantor::Foo::Std()", "Zantor::Foo::Std"},
        {"decltype(auto) Zantor::Foo::D()", "Zantor::Foo::D"},
        {"void Zantor::F() requires C<T> [with T = int]", "Zantor::F"}, {"Bar", "Bar"}, {"", ""},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.signature);
        const Detail::FunctionNameRange range = Detail::FindFunctionName(row.signature);
        ASSERT_LE(range.begin, range.end);
        ASSERT_LE(range.end, row.signature.size());
        EXPECT_EQ(row.signature.substr(range.begin, range.end - range.begin), row.name);
    }
}

TEST(ExceptionTest, FunctionNameIsAConstantExpression)
{
    static constexpr auto name = Detail::MakeFunctionName("static const char* Zantor::Foo::Bar(int) const");
    static_assert(std::string_view(name.text) == "Zantor::Foo::Bar");
    EXPECT_STREQ(name.text, "Zantor::Foo::Bar");
}

// ---------------------------------------------------------------- message exceptions

std::string LogCall(unsigned char type, const char* message)
{
    return "log " + std::to_string(type) + " " + (message != nullptr ? message : "(null)");
}

std::string AlertCall(unsigned char type, std::uint32_t id, const char* message)
{
    return "alert " + std::to_string(type) + " " + std::to_string(id) + " " + (message != nullptr ? message : "(null)");
}

std::vector<std::string> g_calls;

class MessageExceptionTest : public testing::Test
{
protected:
    void SetUp() override
    {
        g_calls.clear();
        m_savedLog = GetLogMessageFunction();
        m_savedAlert = GetAlertMessageFunction();
        SetLogMessageFunction([](unsigned char type, const char* message) {
            g_calls.push_back(LogCall(type, message));
        });
        SetAlertMessageFunction([](unsigned char type, std::uint32_t id, const char* message) {
            g_calls.push_back(AlertCall(type, id, message));
        });
    }
    void TearDown() override
    {
        SetLogMessageFunction(m_savedLog);
        SetAlertMessageFunction(m_savedAlert);
    }

private:
    LogMessageFunction m_savedLog = nullptr;
    AlertMessageFunction m_savedAlert = nullptr;
};

// Without a throw location what() is the message alone.
TEST_F(MessageExceptionTest, EachConstructionCallsItsHookOnceCopiesDoNot)
{
    {
        const LogMessageException e(LOG_TYPE_ERROR, "disk full");
        const LogMessageException copy(e);
        EXPECT_EQ(copy.GetText(), "disk full");
        EXPECT_STREQ(e.what(), "disk full");
    }
    const LogMessageException fromString(LOG_TYPE_WARNING, std::string("from string"));
    const LogMessageException fromFormat(LOG_TYPE_INFO, boost::format("%1% of %2%") % 3 % 7);
    const LogMessageException fromNull(LOG_TYPE_DEBUG, static_cast<const char*>(nullptr));
    const AlertMessageException alert(ALERT_TYPE_CLOSE, ALERT_ID_QUEUE_LIMIT_REACHED, "queue limit");
    const AlertMessageException alertFromFormat(ALERT_TYPE_UPDATE, 0xFFFFFFFF, boost::format("%1%%%") % 95);
    EXPECT_STREQ(fromFormat.what(), "3 of 7");
    EXPECT_STREQ(fromNull.what(), "");
    EXPECT_STREQ(alert.what(), "queue limit");
    const std::vector<std::string> expected = {
        LogCall(LOG_TYPE_ERROR, "disk full"),
        LogCall(LOG_TYPE_WARNING, "from string"),
        LogCall(LOG_TYPE_INFO, "3 of 7"),
        LogCall(LOG_TYPE_DEBUG, ""),
        AlertCall(ALERT_TYPE_CLOSE, ALERT_ID_QUEUE_LIMIT_REACHED, "queue limit"),
        AlertCall(ALERT_TYPE_UPDATE, 0xFFFFFFFF, "95%"),
    };
    EXPECT_EQ(g_calls, expected);
}

// Thrown and copied, what() read through std::exception; each hook was still
// called once.
TEST_F(MessageExceptionTest, WhatAppendsTheThrowLocation)
{
    const auto log = Catch<LogMessageException>([] { ThrowSite::Message("boom"); });
    const int logLine = ThrowSite::g_line;
    const auto alert = Catch<AlertMessageException>([] { ThrowSite::Alert(); });
    const std::string of = std::string(" of ") + __FILE__ + ")";
    EXPECT_EQ(std::string(static_cast<const std::exception&>(log).what()),
              "boom (thrown from line " + std::to_string(logLine) + of);
    EXPECT_EQ(std::string(static_cast<const std::exception&>(alert).what()),
              "no data (thrown from line " + std::to_string(ThrowSite::g_line) + of);
    EXPECT_EQ(log.GetText(), "boom");
    const char* const* function = boost::get_error_info<boost::throw_function>(log);
    ASSERT_NE(function, nullptr);
    EXPECT_STREQ(*function, "Zantor::ThrowSite::Message");
    const std::vector<std::string> expected = {LogCall(LOG_TYPE_ERROR, "boom"),
                                               AlertCall(ALERT_TYPE_OPEN, ALERT_ID_NO_DATA, "no data")};
    EXPECT_EQ(g_calls, expected);
}

TEST_F(MessageExceptionTest, WhatNeedsBothFileAndLine)
{
    LogMessageException onlyFile(LOG_TYPE_ERROR, "only file");
    onlyFile << boost::throw_file("x.cpp");
    EXPECT_STREQ(onlyFile.what(), "only file");
    LogMessageException onlyLine(LOG_TYPE_ERROR, "only line");
    onlyLine << boost::throw_line(12);
    EXPECT_STREQ(onlyLine.what(), "only line");
}

TEST_F(MessageExceptionTest, WhatResultIsKeptPerThread)
{
    const LogMessageException mine(LOG_TYPE_INFO, "mine");
    const LogMessageException theirs(LOG_TYPE_INFO, "theirs");
    const char* text = mine.what();
    std::string seen;
    std::thread other([&] { seen = theirs.what(); });
    other.join();
    EXPECT_EQ(seen, "theirs");
    EXPECT_STREQ(text, "mine"); // the other thread did not overwrite this one's result
}

} // namespace
} // namespace Zantor
