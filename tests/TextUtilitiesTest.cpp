// Bounded formatting, quoted string lists and environment expansion.
#include <ZantorMiddleware/ZantorBase/TextUtilities.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace Zantor {
namespace {

unsigned CallVsnprintf(char* buffer, unsigned size, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const unsigned written = Vsnprintf(buffer, size, format, args);
    va_end(args);
    return written;
}

// ---------------------------------------------------------------- Snprintf

// The text written into size characters, through Snprintf and through
// Vsnprintf: at most size - 1 characters and a zero, nothing at or past
// size, nothing at all for size 0.
TEST(SnprintfTest, LastFittingLengthAndFirstTruncatedSideBySide)
{
    struct Row { int line; const char* text; unsigned size; unsigned expectedReturn; const char* expectedText; };
    const Row rows[] = {
        {__LINE__, "0123456789", 4, 3, "012"},
        {__LINE__, "abc", 4, 3, "abc"},   // fits exactly with its zero
        {__LINE__, "abcd", 4, 3, "abc"},  // one too long
        {__LINE__, "", 4, 0, ""},
        {__LINE__, "a", 1, 0, ""},        // room for the zero only
        {__LINE__, "", 1, 0, ""},
        {__LINE__, "ab", 3, 2, "ab"},
        {__LINE__, "abc", 3, 2, "ab"},
        {__LINE__, "abc", 0, 0, nullptr}, // touches nothing
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        for (bool throughVaList : {false, true})
        {
            char buffer[16];
            std::memset(buffer, '#', sizeof buffer);
            EXPECT_EQ(row.expectedReturn, throughVaList ? CallVsnprintf(buffer, row.size, "%s", row.text)
                                                        : Snprintf(buffer, row.size, "%s", row.text));
            if (row.expectedText != nullptr) {
                EXPECT_STREQ(row.expectedText, buffer);
            }
            EXPECT_EQ(std::string(16 - row.size, '#'), std::string(buffer + row.size, 16 - row.size)) << "wrote past size";
        }
    }
    EXPECT_EQ(0u, Snprintf(nullptr, 0, "%d", 42));
}

TEST(SnprintfTest, FormatsArguments)
{
    char buffer[32];
    EXPECT_EQ(12u, Snprintf(buffer, sizeof buffer, "%s=%05d;%x", "key", 42, 255u));
    EXPECT_STREQ("key=00042;ff", buffer);
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(4u, CallVsnprintf(buffer, 5, "%d-%d", 12, 345));
    EXPECT_STREQ("12-3", buffer);
    EXPECT_EQ('#', buffer[5]);
    EXPECT_EQ(6u, CallVsnprintf(buffer, 8, "%d-%d", 12, 345));
    EXPECT_STREQ("12-345", buffer);
}

// ----------------------------------------------------- StringListToString

TEST(StringListToStringTest, QuotingAndSeparators)
{
    const char* const abc[] = {"a", "b", "c"};
    const char* const withNull[] = {"x", nullptr};
    struct Row { int line; const char* const* list; unsigned count; const char* lastSeparator; const char* expected; };
    const Row rows[] = {
        {__LINE__, abc, 0, nullptr, ""},
        {__LINE__, abc, 0, " or", ""},
        {__LINE__, nullptr, 3, " or", ""},
        {__LINE__, abc, 1, nullptr, "\"a\""},
        {__LINE__, abc, 1, " or", "\"a\""},
        {__LINE__, abc, 2, nullptr, "\"a\", \"b\""},
        {__LINE__, abc, 2, " or", "\"a\" or \"b\""},
        {__LINE__, abc, 3, nullptr, "\"a\", \"b\", \"c\""},
        {__LINE__, abc, 3, " or", "\"a\", \"b\" or \"c\""},
        {__LINE__, abc, 3, " and", "\"a\", \"b\" and \"c\""},
        {__LINE__, abc, 3, "", "\"a\", \"b\" \"c\""},
        {__LINE__, withNull, 2, " or", "\"x\" or \"\""},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(row.expected, StringListToString(row.list, row.count, row.lastSeparator));
    }
}

// ---------------------------------------------- ReplaceEnvironmentVariables

void SetVariable(const char* name, const char* value)
{
#ifdef _WIN32
    ASSERT_EQ(0, _putenv_s(name, value));
#else
    ASSERT_EQ(0, setenv(name, value, 1));
#endif
}

class ReplaceEnvironmentVariablesTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        SetVariable("ZT_ALPHA", "one");
        SetVariable("ZT_BETA", "two words");
        SetVariable("ZT_PERCENT", "%ZT_ALPHA%");
        SetVariable("ZT_LONG", std::string(1000, 'L').c_str());
        SetVariable("ZT_500", std::string(500, 'F').c_str());
#ifndef _WIN32
        SetVariable("ZT_EQ", "B=C");
        SetVariable("ZT_EMPTY", "");
#endif
    }
};

TEST_F(ReplaceEnvironmentVariablesTest, ExpansionRules)
{
    struct Row { int line; std::string in; std::string expected; };
    const Row rows[] = {
        {__LINE__, "", ""},
        {__LINE__, "no references at all", "no references at all"},
        {__LINE__, "%ZT_ALPHA%", "one"},
        {__LINE__, "x%ZT_ALPHA%y%ZT_BETA%z", "xoneytwo wordsz"},
        {__LINE__, "%ZT_ALPHA%%ZT_ALPHA%", "oneone"},
        {__LINE__, "%ZT_UNKNOWN_NAME%", "%ZT_UNKNOWN_NAME%"},
        {__LINE__, "a %ZT_UNKNOWN_NAME% b", "a %ZT_UNKNOWN_NAME% b"},
        {__LINE__, "%%", "%%"},
        {__LINE__, "100%", "100%"},
        {__LINE__, "%", "%"},
        {__LINE__, "%ZT_ALPHA", "%ZT_ALPHA"},
        {__LINE__, "%ZT_ALPHA% 100%", "one 100%"},
        {__LINE__, "%ZT_PERCENT%", "%ZT_ALPHA%"}, // values are not expanded again
        {__LINE__, "[%ZT_LONG%]", "[" + std::string(1000, 'L') + "]"},
        {__LINE__, "%ZT_LONG%%ZT_LONG%", std::string(2000, 'L')},
        {__LINE__, "%ZT_500%.%ZT_500%.%ZT_500%.%ZT_500%.%ZT_500%.", [] { // the expansion makes the result long
             std::string five;
             for (int i = 0; i < 5; ++i)
                 five += std::string(500, 'F') + ".";
             return five;
         }()},
        // The text is read as a C string on every platform: a zero character
        // ends it.
        {__LINE__, std::string("ab\0cd", 5), "ab"},
        {__LINE__, std::string("%ZT_ALPHA%\0%ZT_BETA%", 20), "one"},
        {__LINE__, std::string("%ZT_\0ALPHA%", 11), "%ZT_"},
        {__LINE__, std::string("\0%ZT_ALPHA%", 11), ""},
#ifndef _WIN32
        // Linux name matching.
        {__LINE__, "%zt_alpha%", "%zt_alpha%"},                // exact, case-sensitive
        {__LINE__, "%ZT_EQ=B%", "%ZT_EQ=B%"},                  // '=' is never part of a name
        {__LINE__, "%ZT_EMPTY%", ""},                          // set but empty
        {__LINE__, "%ZT_UNKNOWN%ZT_ALPHA%", "%ZT_UNKNOWNone"}, // closing % opens the next name
        {__LINE__, "%%ZT_ALPHA%", "%one"},
        {__LINE__, "%ZT_ALPHA%%", "one%"},
        {__LINE__, "%%%", "%%%"},
#endif
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        std::string out = "previous contents";
        ASSERT_TRUE(ReplaceEnvironmentVariables(row.in, out));
        EXPECT_EQ(row.expected, out);
    }
    std::string text = "a%ZT_ALPHA%b%ZT_UNKNOWN_NAME%c"; // out may be in
    ASSERT_TRUE(ReplaceEnvironmentVariables(text, text));
    EXPECT_EQ("aoneb%ZT_UNKNOWN_NAME%c", text);
}

// Windows expands into 512 characters first (the reported length counts
// the terminating zero) and into twice the reported length when that is
// too small: results on both sides of each step.
TEST_F(ReplaceEnvironmentVariablesTest, ResultsAroundTheBufferSizes)
{
    for (std::size_t length : {510u, 511u, 512u, 513u, 1023u, 1024u, 1025u, 2049u})
    {
        SCOPED_TRACE(length);
        const std::string lead(length - 500, 'x');
        std::string out;
        ASSERT_TRUE(ReplaceEnvironmentVariables(lead + "%ZT_500%", out));
        EXPECT_EQ(lead + std::string(500, 'F'), out);
        ASSERT_TRUE(ReplaceEnvironmentVariables(lead, out));
        EXPECT_EQ(lead, out);
    }
}

} // namespace
} // namespace Zantor
