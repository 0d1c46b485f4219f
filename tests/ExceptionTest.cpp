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
#include <vector>

// Throw sites whose names the tests check. They live in a named namespace so
// that the expected names do not depend on how a compiler spells an
// anonymous one.
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
    [[noreturn]] void Get() const
    {
        ZANTOR_THROW(StatusCodeException, STATUS_CODE_EMPTY);
    }
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

    [[noreturn]] void Member() const&
    {
        ZANTOR_THROW(BaseException, BaseException::THREAD_ALREADY_STARTED);
    }
    [[noreturn]] static std::vector<int> Static()
    {
        ZANTOR_THROW(CrtException, ENOENT);
    }
    [[noreturn]] void operator()()
    {
        ZANTOR_THROW(StatusCodeException, STATUS_CODE_FAILURE);
    }
    [[noreturn]] bool operator<(const Widget&) const
    {
        ZANTOR_THROW(StatusCodeException, STATUS_CODE_FAILURE);
    }
    [[noreturn]] operator const char*() const
    {
        ZANTOR_THROW(StatusCodeException, STATUS_CODE_FAILURE);
    }
    [[noreturn]] void Lambda() const
    {
        auto thrower = [](int code) { ZANTOR_THROW(StatusCodeException, static_cast<std::uint32_t>(code)); };
        thrower(1);
        throw std::logic_error("not reached");
    }
    ~Widget() noexcept(false)
    {
        if (m_throwOnDestruction)
            ZANTOR_THROW(StatusCodeException, STATUS_CODE_WRONG_STATE);
    }

    bool m_throwOnDestruction = false;
};

// Lambdas: the name is that of the function the lambda is written in.
[[noreturn]] void FreeLambda()
{
    [] { ZANTOR_THROW(StatusCodeException, STATUS_CODE_BUSY); }();
    throw std::logic_error("not reached");
}

[[noreturn]] void GenericLambda()
{
    [](auto code) { ZANTOR_THROW(StatusCodeException, code); }(STATUS_CODE_BUSY);
    throw std::logic_error("not reached");
}

[[noreturn]] void NestedLambda()
{
    [] { [] { ZANTOR_THROW(StatusCodeException, STATUS_CODE_BUSY); }(); }();
    throw std::logic_error("not reached");
}

template <typename T>
[[noreturn]] void TemplateLambda()
{
    [] { ZANTOR_THROW(StatusCodeException, STATUS_CODE_BUSY); }();
    throw std::logic_error("not reached");
}

struct Gadget
{
    Gadget()
    {
        [] { ZANTOR_THROW(StatusCodeException, STATUS_CODE_BUSY); }();
    }
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

[[noreturn]] void Standard()
{
    ZANTOR_THROW(std::runtime_error, "standard");
}

// A located exception with a further constructor argument.
class TextException : public Exception
{
public:
    TextException(const char* file, const char* function, std::uint32_t line, std::uint32_t code,
                  std::string text)
        : Exception(file, function, line, code), m_text(std::move(text))
    {
    }
    std::string ToString() const override { return m_text; }

private:
    std::string m_text;
};

[[noreturn]] void WithText()
{
    ZANTOR_THROW(TextException, 7, std::string("seven"));
}

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

TEST(ExceptionTest, ReportIsOneLineWithoutDirectory)
{
    const StatusCodeException e(".\\Foo", "Zantor::Foo::Bar", 21, STATUS_CODE_INVALID_PARAMETER);
    EXPECT_EQ(Report(e), "Foo:Zantor::Foo::Bar:21 - invalid parameter");
}

TEST(ExceptionTest, ReportOfPlainExceptionHasEmptyTextAndNoVia)
{
    const Exception e("dir\\sub\\Plain.cpp", "Zantor::F", 4294967295u, 99);
    EXPECT_EQ(Report(e), "Plain.cpp:Zantor::F:4294967295 - ");
    EXPECT_EQ(e.GetNext(), nullptr);
}

TEST(ExceptionTest, ReportWithNullFileAndFunctionDoesNotCrash)
{
    const StatusCodeException e(nullptr, nullptr, 1, STATUS_CODE_FAILURE);
    EXPECT_EQ(Report(e), "::1 - failure");
}

TEST(ExceptionTest, ReportNamesTheFileWithoutItsDirectory)
{
    struct Row
    {
        int line;
        const char* file;
        const char* report;
    };
    const Row rows[] = {
        {__LINE__, ".\\Foo", "Foo:F:7 - timeout"},
        {__LINE__, ".\\Foo.cpp", "Foo.cpp:F:7 - timeout"},
        {__LINE__, "C:\\src\\Base\\File.cpp", "File.cpp:F:7 - timeout"},
        {__LINE__, "\\\\build\\src\\File.cpp", "File.cpp:F:7 - timeout"},
        {__LINE__, "source/Linux/File.cpp", "File.cpp:F:7 - timeout"},
        {__LINE__, "/work/source/File.cpp", "File.cpp:F:7 - timeout"},
        {__LINE__, "File.cpp", "File.cpp:F:7 - timeout"},
        {__LINE__, "", ":F:7 - timeout"},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(Report(StatusCodeException(row.file, "F", 7, STATUS_CODE_TIMEOUT)), row.report);
    }
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

TEST(ExceptionTest, ChainOfOne)
{
    const StatusCodeException outer(".\\Outer.cpp", "Zantor::Outer", 1, STATUS_CODE_FAILURE);
    outer.AddException(new OsException(".\\E1.cpp", "Zantor::E1", 2, 0x3FFFFFFF));
    EXPECT_EQ(Report(outer), "Outer.cpp:Zantor::Outer:1 - failure via:\n"
                             "E1.cpp:Zantor::E1:2 - error 1073741823");
}

TEST(ExceptionTest, ChainOfTwoRepeatsTheFirstUnderTheHead)
{
    const StatusCodeException outer(".\\Outer.cpp", "Zantor::Outer", 1, STATUS_CODE_FAILURE);
    outer.AddException(new StatusCodeException(".\\E1.cpp", "Zantor::E1", 2, STATUS_CODE_TIMEOUT));
    outer.AddException(new BaseException(".\\E2.cpp", "Zantor::E2", 3, 12));
    EXPECT_EQ(Report(outer), "Outer.cpp:Zantor::Outer:1 - failure via:\n"
                             "E1.cpp:Zantor::E1:2 - timeout\n"
                             "E2.cpp:Zantor::E2:3 - thread already started via:\n"
                             "E1.cpp:Zantor::E1:2 - timeout");
}

TEST(ExceptionTest, ChainOfThree)
{
    const Exception outer("O", "O", 0, 0);
    outer.AddException(new Exception("A", "A", 1, 0));
    outer.AddException(new Exception("B", "B", 2, 0));
    outer.AddException(new Exception("C", "C", 3, 0));
    // Head C links to B, B to A. Behind the head, tail first: A, then B's
    // report (B via A); then the head's report (C via: A, B via A).
    EXPECT_EQ(Report(outer), "O:O:0 -  via:\n"
                             "A:A:1 - \n"
                             "B:B:2 -  via:\n"
                             "A:A:1 - \n"
                             "C:C:3 -  via:\n"
                             "A:A:1 - \n"
                             "B:B:2 -  via:\n"
                             "A:A:1 - ");
}

TEST(ExceptionTest, AddedExceptionBecomesHeadAndLinksOldHead)
{
    const Exception outer("O", "O", 0, 0);
    Exception* first = new Exception("A", "A", 1, 0);
    Exception* second = new Exception("B", "B", 2, 0);
    outer.AddException(first);
    EXPECT_EQ(outer.GetNext(), first);
    EXPECT_EQ(first->GetNext(), nullptr);
    outer.AddException(second);
    EXPECT_EQ(outer.GetNext(), second);
    EXPECT_EQ(second->GetNext(), first);
    outer.AddException(nullptr);
    EXPECT_EQ(outer.GetNext(), second);
}

// ---------------------------------------------------------------- ownership

TEST(ExceptionTest, DestructionDeletesWholeChain)
{
    CountedException::s_alive = 0;
    {
        const Exception outer("O", "O", 0, 0);
        for (std::uint32_t i = 0; i < 5; ++i)
            outer.AddException(new CountedException(i, STATUS_CODE_FAILURE));
        EXPECT_EQ(CountedException::s_alive, 5);
    }
    EXPECT_EQ(CountedException::s_alive, 0);
}

TEST(ExceptionTest, CopyTakesTheChainAndSourceNoLongerOwnsIt)
{
    CountedException::s_alive = 0;
    auto* source = new StatusCodeException(".\\S", "Zantor::S", 5, STATUS_CODE_BUSY);
    source->AddException(new CountedException(1, STATUS_CODE_TIMEOUT));
    source->AddException(new CountedException(2, STATUS_CODE_EMPTY));
    const std::string expected = Report(*source);

    StatusCodeException copy(*source);
    EXPECT_EQ(source->GetNext(), nullptr);
    EXPECT_EQ(Report(*source), "S:Zantor::S:5 - busy");
    delete source;
    EXPECT_EQ(CountedException::s_alive, 2);
    EXPECT_EQ(Report(copy), expected);
    EXPECT_EQ(copy.GetLine(), 5u);
    EXPECT_EQ(copy.GetCode(), STATUS_CODE_BUSY);
}

TEST(ExceptionTest, ChainSurvivesThrowAndCatchByValue)
{
    CountedException::s_alive = 0;
    try
    {
        StatusCodeException e(".\\T", "Zantor::T", 1, STATUS_CODE_FAILURE);
        e.AddException(new CountedException(2, STATUS_CODE_TIMEOUT));
        throw e;
    }
    catch (const StatusCodeException& thrown)
    {
        const StatusCodeException caught(thrown); // takes the chain from the thrown object
        EXPECT_EQ(thrown.GetNext(), nullptr);
        ASSERT_NE(caught.GetNext(), nullptr);
        EXPECT_EQ(CountedException::s_alive, 1);
        EXPECT_EQ(Report(caught), "T:Zantor::T:1 - failure via:\nCounted:Zantor::Counted:2 - timeout");
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

TEST(ExceptionTest, BaseExceptionTexts)
{
    struct Row
    {
        int line;
        std::uint32_t code;
        const char* text;
    };
    const Row rows[] = {
        {__LINE__, 0, "invalid registry value type"},
        {__LINE__, 1, "failed to allocate shared mutex"},
        {__LINE__, 2, "failed to allocate private mutex"},
        {__LINE__, 3, "failed to initialize private mutex"},
        {__LINE__, 4, "failed to allocate shared event"},
        {__LINE__, 5, "failed to allocate private event"},
        {__LINE__, 6, "failed to allocate shared semaphore"},
        {__LINE__, 7, "failed to allocate private semaphore"},
        {__LINE__, 8, "failed to allocate version"},
        {__LINE__, 9, "failed to allocate shared memory"},
        {__LINE__, 10, "failed to allocate metered section"},
        {__LINE__, 11, "failed to allocate Uuid"},
        {__LINE__, 12, "thread already started"},
        {__LINE__, 13, "unknown error"},
        {__LINE__, 14, "unknown error"},
        {__LINE__, 0xFFFFFFFF, "unknown error"},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(BaseException("f", "g", 1, row.code).ToString(), row.text);
    }
}

TEST(ExceptionTest, StatusCodeExceptionTexts)
{
    EXPECT_EQ(StatusCodeException("f", "g", 1, 0).ToString(), "success");
    EXPECT_EQ(StatusCodeException("f", "g", 1, 80).ToString(), "function unavailable");
    EXPECT_EQ(StatusCodeException("f", "g", 1, 81).ToString(), "status code 81");
    EXPECT_EQ(StatusCodeException("f", "g", 1, 255).ToString(), "unknown");
    // Not a status code: the full value, never a truncated one.
    EXPECT_EQ(StatusCodeException("f", "g", 1, 256).ToString(), "status code 256");
    EXPECT_EQ(StatusCodeException("f", "g", 1, 0x117).ToString(), "status code 279");
}

TEST(ExceptionTest, OsAndCrtExceptionTexts)
{
    EXPECT_EQ(OsException("f", "g", 1, 2).ToString(), OsErrorToString(2));
    EXPECT_EQ(OsException("f", "g", 1, 0x3FFFFFFF).ToString(), "error 1073741823");
    EXPECT_EQ(CrtException("f", "g", 1, ENOENT).ToString(), std::strerror(ENOENT));
    EXPECT_EQ(CrtException("f", "g", 1, EINVAL).ToString(), std::strerror(EINVAL));
    EXPECT_EQ(Exception("f", "g", 1, 23).ToString(), "");
}

// ---------------------------------------------------------------- throw macro

TEST(ExceptionTest, ThrowRecordsFileFunctionAndLine)
{
    const auto e = Catch<StatusCodeException>([] { ThrowSite::Free(); });
    EXPECT_STREQ(e.GetFunction(), "Zantor::ThrowSite::Free");
    EXPECT_STREQ(e.GetFile(), __FILE__);
    EXPECT_EQ(e.GetLine(), static_cast<std::uint32_t>(ThrowSite::g_line));
    EXPECT_EQ(e.GetCode(), STATUS_CODE_PATH_NOT_FOUND);
    EXPECT_EQ(Report(e), "ExceptionTest.cpp:Zantor::ThrowSite::Free:" + std::to_string(ThrowSite::g_line) +
                             " - path not found");
}

TEST(ExceptionTest, ThrowIsCaughtThroughTheRoot)
{
    try
    {
        ThrowSite::Free();
    }
    catch (const Exception& e)
    {
        EXPECT_EQ(e.ToString(), "path not found");
        EXPECT_NE(dynamic_cast<const StatusCodeException*>(&e), nullptr);
        return;
    }
    ADD_FAILURE() << "not caught as Exception";
}

// The name of the enclosing function of ZANTOR_THROW, whatever kind of
// function it is. Class-template arguments appear as the compiler prints
// them; the template-argument list it appends to a signature never does.
TEST(ExceptionTest, ThrowFunctionNames)
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
    };
    const Row rows[] = {
        {__LINE__, [] { ThrowSite::Free(); }, "Zantor::ThrowSite::Free"},
        {__LINE__, [] { ThrowSite::Template(3); }, "Zantor::ThrowSite::Template"},
        {__LINE__, [] { ThrowSite::Template(3.5); }, "Zantor::ThrowSite::Template"},
        {__LINE__, [] { ThrowSite::Box<std::pair<int, std::vector<int>>>().Get(); }, boxName},
        {__LINE__, [] { Widget w(5); }, "Zantor::ThrowSite::Widget::Widget"},
        {__LINE__, [] { Widget().Member(); }, "Zantor::ThrowSite::Widget::Member"},
        {__LINE__, [] { Widget::Static(); }, "Zantor::ThrowSite::Widget::Static"},
        {__LINE__, [] { Widget()(); }, "Zantor::ThrowSite::Widget::operator()"},
        {__LINE__, [] { (void)(Widget() < Widget()); }, "Zantor::ThrowSite::Widget::operator<"},
        {__LINE__, [] { (void)static_cast<const char*>(Widget()); }, conversionName},
        {__LINE__,
         [] {
             Widget w;
             w.m_throwOnDestruction = true;
         },
         "Zantor::ThrowSite::Widget::~Widget"},
        {__LINE__, [] { Widget().Lambda(); }, "Zantor::ThrowSite::Widget::Lambda"},
        {__LINE__, [] { ThrowSite::FreeLambda(); }, "Zantor::ThrowSite::FreeLambda"},
        {__LINE__, [] { ThrowSite::GenericLambda(); }, "Zantor::ThrowSite::GenericLambda"},
        {__LINE__, [] { ThrowSite::NestedLambda(); }, "Zantor::ThrowSite::NestedLambda"},
        {__LINE__, [] { ThrowSite::TemplateLambda<int>(); }, templateLambdaName},
        {__LINE__, [] { ThrowSite::Gadget(); }, "Zantor::ThrowSite::Gadget::Gadget"},
        {__LINE__, [] { ThrowSite::WithText(); }, "Zantor::ThrowSite::WithText"},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        const auto e = Catch<Exception>(row.thrower);
        EXPECT_STREQ(e.GetFunction(), row.name);
        EXPECT_STREQ(e.GetFile(), __FILE__);
        EXPECT_GT(e.GetLine(), 0u);
    }
}

TEST(ExceptionTest, ThrowRecordsLineAndCodeOfEachSite)
{
    const auto fromTemplate = Catch<StatusCodeException>([] { ThrowSite::Template(3.5); });
    EXPECT_EQ(fromTemplate.GetLine(), static_cast<std::uint32_t>(ThrowSite::g_line));
    EXPECT_EQ(fromTemplate.GetCode(), 3u);
    const auto constructed = Catch<OsException>([] { ThrowSite::Widget w(5); });
    EXPECT_EQ(constructed.GetLine(), static_cast<std::uint32_t>(ThrowSite::g_line));
    EXPECT_EQ(constructed.GetCode(), 5u);
    const auto crt = Catch<CrtException>([] { ThrowSite::Widget::Static(); });
    EXPECT_EQ(crt.GetCode(), static_cast<std::uint32_t>(ENOENT));
    EXPECT_EQ(Catch<BaseException>([] { ThrowSite::Widget().Member(); }).ToString(), "thread already started");
    EXPECT_EQ(Catch<StatusCodeException>([] { ThrowSite::GenericLambda(); }).ToString(), "busy");
}

TEST(ExceptionTest, ThrowPassesFurtherArgumentsToLocatedTypes)
{
    const auto e = Catch<ThrowSite::TextException>([] { ThrowSite::WithText(); });
    EXPECT_EQ(e.GetCode(), 7u);
    EXPECT_EQ(e.ToString(), "seven");
    EXPECT_STREQ(e.GetFunction(), "Zantor::ThrowSite::WithText");
}

TEST(ExceptionTest, ThrowOfOtherTypesBuildsThemFromTheArguments)
{
    const auto e = Catch<std::runtime_error>([] { ThrowSite::Standard(); });
    EXPECT_STREQ(e.what(), "standard");
}

// The function-name reduction on signatures as GCC, clang and other
// compilers print them, including forms this compiler does not produce.
TEST(ExceptionTest, FunctionNameFromSignature)
{
    struct Row
    {
        int line;
        std::string_view signature;
        std::string_view name;
    };
    const Row rows[] = {
        {__LINE__, "void Zantor::Foo::Bar()", "Zantor::Foo::Bar"},
        {__LINE__, "int Zantor::f(int, char)", "Zantor::f"},
        {__LINE__, "void Zantor::Foo::Bar() const &", "Zantor::Foo::Bar"},
        {__LINE__, "Zantor::Foo::Foo(int)", "Zantor::Foo::Foo"},
        {__LINE__, "Zantor::Foo::~Foo()", "Zantor::Foo::~Foo"},
        {__LINE__, "static std::vector<int> Zantor::Foo::S()", "Zantor::Foo::S"},
        {__LINE__, "virtual void Zantor::Foo::V()", "Zantor::Foo::V"},
        {__LINE__, "const std::string &Zantor::Foo::Get() const", "Zantor::Foo::Get"},
        {__LINE__, "const char* Zantor::Foo::Name()", "Zantor::Foo::Name"},
        {__LINE__, "void Zantor::{anonymous}::Anon()", "Zantor::{anonymous}::Anon"},
        {__LINE__, "void Zantor::(anonymous namespace)::Anon()", "Zantor::(anonymous namespace)::Anon"},
        {__LINE__, "T Zantor::Tmpl(T) [with T = int]", "Zantor::Tmpl"},
        {__LINE__, "T Zantor::Tmpl(T) [T = int]", "Zantor::Tmpl"},
        {__LINE__, "Zantor::Box<T>::Box() [with T = std::pair<int, std::vector<int> >]", "Zantor::Box<T>::Box"},
        {__LINE__, "void Zantor::Box<std::pair<int, std::vector<int>>>::Get() const [T = std::pair<int, int>]",
         "Zantor::Box<std::pair<int, std::vector<int>>>::Get"},
        {__LINE__, "std::map<int, std::pair<int, int> > Zantor::M()", "Zantor::M"},
        {__LINE__, "Zantor::Box<(1 > 2)>::Box()", "Zantor::Box<(1 > 2)>::Box"},
        {__LINE__, "Zantor::Box<void (int)>::Box()", "Zantor::Box<void (int)>::Box"},
        {__LINE__, "bool Zantor::Foo::operator<(const Zantor::Foo&) const", "Zantor::Foo::operator<"},
        {__LINE__, "Zantor::Foo& Zantor::Foo::operator<<(int)", "Zantor::Foo::operator<<"},
        {__LINE__, "Zantor::Foo &Zantor::Foo::operator>>=(int)", "Zantor::Foo::operator>>="},
        {__LINE__, "auto Zantor::Foo::operator<=>(const Zantor::Foo&) const", "Zantor::Foo::operator<=>"},
        {__LINE__, "Zantor::Foo* Zantor::Foo::operator->()", "Zantor::Foo::operator->"},
        {__LINE__, "void Zantor::Foo::operator()()", "Zantor::Foo::operator()"},
        {__LINE__, "int Zantor::Foo::operator[](int)", "Zantor::Foo::operator[]"},
        {__LINE__, "Zantor::Foo::operator int() const", "Zantor::Foo::operator int"},
        {__LINE__, "int Zantor::Foo::operator int() const", "Zantor::Foo::operator int"},
        {__LINE__, "const char *Zantor::Foo::operator const char *() const", "Zantor::Foo::operator const char *"},
        {__LINE__, "Zantor::Foo::operator std::function<void(int)>() const",
         "Zantor::Foo::operator std::function<void(int)>"},
        {__LINE__, "static void* Zantor::Foo::operator new(std::size_t)", "Zantor::Foo::operator new"},
        {__LINE__, "static void Zantor::Foo::operator delete [](void*)", "Zantor::Foo::operator delete []"},
        {__LINE__, "Zantor::Foo::L()::<lambda(int)>", "Zantor::Foo::L"},
        {__LINE__, "auto Zantor::Foo::L()::(anonymous class)::operator()(int) const", "Zantor::Foo::L"},
        {__LINE__, "void (* Zantor::FP())(int)", "Zantor::FP"},
        {__LINE__, "void (*Zantor::FP())(int)", "Zantor::FP"},
        {__LINE__, "void __cdecl Zantor::Foo::Bar(void)", "Zantor::Foo::Bar"},
        {__LINE__, "void __thiscall Zantor::Foo::Bar(int)", "Zantor::Foo::Bar"},
        {__LINE__, "long __stdcall Zantor::WindowProc(void *, unsigned)", "Zantor::WindowProc"},
        {__LINE__, "void __attribute__((stdcall)) Zantor::Foo::Std()", "Zantor::Foo::Std"},
        {__LINE__, "decltype(auto) Zantor::Foo::D()", "Zantor::Foo::D"},
        {__LINE__, "void Zantor::F() requires C<T> [with T = int]", "Zantor::F"},
        {__LINE__, "Bar", "Bar"},
        {__LINE__, "", ""},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
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

struct LogCall
{
    unsigned char type;
    std::string message;
};

struct AlertCall
{
    unsigned char type;
    std::uint32_t id;
    std::string message;
};

std::vector<LogCall> g_logCalls;
std::vector<AlertCall> g_alertCalls;

void RecordLog(unsigned char type, const char* message)
{
    g_logCalls.push_back({type, message});
}

void RecordAlert(unsigned char type, std::uint32_t id, const char* message)
{
    g_alertCalls.push_back({type, id, message});
}

class MessageExceptionTest : public testing::Test
{
protected:
    void SetUp() override
    {
        g_logCalls.clear();
        g_alertCalls.clear();
        m_savedLog = GetLogMessageFunction();
        m_savedAlert = GetAlertMessageFunction();
        SetLogMessageFunction(&RecordLog);
        SetAlertMessageFunction(&RecordAlert);
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

TEST_F(MessageExceptionTest, ConstructionLogsOnceEvenWhenNotThrown)
{
    {
        const LogMessageException e(LOG_TYPE_ERROR, "disk full");
        ASSERT_EQ(g_logCalls.size(), 1u);
        EXPECT_EQ(g_logCalls[0].type, LOG_TYPE_ERROR);
        EXPECT_EQ(g_logCalls[0].message, "disk full");
        const LogMessageException copy(e); // copies do not log
        EXPECT_EQ(copy.GetText(), "disk full");
    }
    EXPECT_EQ(g_logCalls.size(), 1u);
    EXPECT_TRUE(g_alertCalls.empty());
}

TEST_F(MessageExceptionTest, EveryConstructorLogsItsText)
{
    const LogMessageException fromString(LOG_TYPE_WARNING, std::string("from string"));
    const LogMessageException fromFormat(LOG_TYPE_INFO, boost::format("%1% of %2%") % 3 % 7);
    const LogMessageException fromNull(LOG_TYPE_DEBUG, static_cast<const char*>(nullptr));
    ASSERT_EQ(g_logCalls.size(), 3u);
    EXPECT_EQ(g_logCalls[0].type, LOG_TYPE_WARNING);
    EXPECT_EQ(g_logCalls[0].message, "from string");
    EXPECT_EQ(g_logCalls[1].type, LOG_TYPE_INFO);
    EXPECT_EQ(g_logCalls[1].message, "3 of 7");
    EXPECT_EQ(g_logCalls[2].message, "");
    EXPECT_STREQ(fromFormat.what(), "3 of 7");
    EXPECT_STREQ(fromNull.what(), "");
}

TEST_F(MessageExceptionTest, AlertConstructionRaisesOneAlert)
{
    const AlertMessageException e(ALERT_TYPE_CLOSE, ALERT_ID_QUEUE_LIMIT_REACHED, "queue limit");
    const AlertMessageException f(ALERT_TYPE_UPDATE, 0xFFFFFFFF, boost::format("%1%%%") % 95);
    ASSERT_EQ(g_alertCalls.size(), 2u);
    EXPECT_EQ(g_alertCalls[0].type, ALERT_TYPE_CLOSE);
    EXPECT_EQ(g_alertCalls[0].id, ALERT_ID_QUEUE_LIMIT_REACHED);
    EXPECT_EQ(g_alertCalls[0].message, "queue limit");
    EXPECT_EQ(g_alertCalls[1].id, 0xFFFFFFFFu);
    EXPECT_EQ(g_alertCalls[1].message, "95%");
    EXPECT_TRUE(g_logCalls.empty());
    EXPECT_STREQ(e.what(), "queue limit");
}

TEST_F(MessageExceptionTest, WhatWithoutLocationIsTheMessage)
{
    const LogMessageException e(LOG_TYPE_ERROR, "plain");
    EXPECT_STREQ(e.what(), "plain");
}

TEST_F(MessageExceptionTest, WhatAppendsTheThrowLocation)
{
    const auto e = Catch<LogMessageException>([] { ThrowSite::Message("boom"); });
    const std::string expected = "boom (thrown from line " + std::to_string(ThrowSite::g_line) + " of " + __FILE__ + ")";
    EXPECT_EQ(std::string(e.what()), expected);
    EXPECT_EQ(e.GetText(), "boom");
    const char* const* function = boost::get_error_info<boost::throw_function>(e);
    ASSERT_NE(function, nullptr);
    EXPECT_STREQ(*function, "Zantor::ThrowSite::Message");
    ASSERT_EQ(g_logCalls.size(), 1u); // thrown and copied: still one call
    EXPECT_EQ(g_logCalls[0].message, "boom");
}

TEST_F(MessageExceptionTest, AlertWhatAppendsTheThrowLocation)
{
    const auto e = Catch<AlertMessageException>([] { ThrowSite::Alert(); });
    const std::string expected =
        "no data (thrown from line " + std::to_string(ThrowSite::g_line) + " of " + __FILE__ + ")";
    EXPECT_EQ(std::string(e.what()), expected);
    ASSERT_EQ(g_alertCalls.size(), 1u);
    EXPECT_EQ(g_alertCalls[0].type, ALERT_TYPE_OPEN);
    EXPECT_EQ(g_alertCalls[0].id, ALERT_ID_NO_DATA);
}

TEST_F(MessageExceptionTest, WhatNeedsBothFileAndLine)
{
    const LogMessageException onlyFile = [] {
        LogMessageException e(LOG_TYPE_ERROR, "only file");
        e << boost::throw_file("x.cpp");
        return e;
    }();
    EXPECT_STREQ(onlyFile.what(), "only file");
    const LogMessageException onlyLine = [] {
        LogMessageException e(LOG_TYPE_ERROR, "only line");
        e << boost::throw_line(12);
        return e;
    }();
    EXPECT_STREQ(onlyLine.what(), "only line");
}

TEST_F(MessageExceptionTest, CaughtAsStandardException)
{
    try
    {
        ThrowSite::Message("std");
    }
    catch (const std::exception& e)
    {
        EXPECT_EQ(std::string(e.what()).rfind("std (thrown from line ", 0), 0u);
        return;
    }
    ADD_FAILURE() << "not caught as std::exception";
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
