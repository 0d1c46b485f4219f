// Bounded formatting, quoted string lists and environment expansion.
#include <ZantorMiddleware/ZantorBase/TextUtilities.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

using namespace Zantor;

// The text written into size characters: at most size - 1 characters and a
// zero, nothing at or past size, nothing at all for size 0. (Snprintf is
// Vsnprintf over its arguments.)
TEST(SnprintfTest, LastFittingLengthAndFirstTruncatedSideBySide)
{
    struct Row { int line; const char* text; unsigned size; unsigned expectedReturn; const char* expectedText; };
    const Row rows[] = {
        {__LINE__, "abc", 4, 3, "abc"},  // fits exactly with its zero
        {__LINE__, "abcd", 4, 3, "abc"}, // one too long
        {__LINE__, "a", 1, 0, ""},       // room for the zero only
        {__LINE__, "abc", 0, 0, ""},     // touches nothing
    };
    char buffer[16];
    for (const Row& row : rows)
    {
        std::memset(buffer, '#', sizeof buffer);
        EXPECT_EQ(row.expectedReturn, Snprintf(buffer, row.size, "%s", row.text)) << "row at line " << row.line;
        EXPECT_STREQ(row.expectedText, row.size != 0 ? buffer : "") << "row at line " << row.line;
        EXPECT_EQ(std::string(16 - row.size, '#'), std::string(buffer + row.size, 16 - row.size)) << "row at line " << row.line;
    }
    EXPECT_EQ(0u, Snprintf(nullptr, 0, "%d", 42));
    // An encoding error: the length of what was produced.
    const unsigned written = Snprintf(buffer, sizeof buffer, "ab%lsc", L"\u263A");
    EXPECT_EQ(std::strlen(buffer), written);
}

TEST(StringListToStringTest, QuotingAndSeparators)
{
    const char* const list[] = {"a", "b", "c", nullptr};
    struct Row { int line; const char* const* list; unsigned count; const char* lastSeparator; const char* expected; };
    const Row rows[] = {
        {__LINE__, list, 0, " or", ""},
        {__LINE__, nullptr, 3, " or", ""},
        {__LINE__, list, 1, " or", "\"a\""},
        {__LINE__, list, 3, nullptr, "\"a\", \"b\", \"c\""},
        {__LINE__, list, 3, " or", "\"a\", \"b\" or \"c\""},
        {__LINE__, list + 2, 2, " or", "\"c\" or \"\""}, // a null item
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.expected, StringListToString(row.list, row.count, row.lastSeparator)) << "row at line " << row.line;
}

// Each text expanded in place (out may be in); on Windows also around the
// 512-character first buffer.
TEST(ReplaceEnvironmentVariablesTest, ExpansionRules)
{
    static const std::string f500(500, 'F'), setting = "ZT_500=" + f500; // the environment keeps the pointer
    for (const char* variable : {"ZT_ALPHA=one", "ZT_BETA=two words", "ZT_PERCENT=%ZT_ALPHA%", "ZT_EQ=B=C", "ZT_EMPTY=", setting.c_str()})
        ASSERT_EQ(0, putenv(const_cast<char*>(variable)));
    struct Row { int line; std::string in; std::string expected; };
    std::vector<Row> rows = {
        {__LINE__, "x%ZT_ALPHA%y%ZT_BETA%z", "xoneytwo wordsz"},
        {__LINE__, "a %ZT_UNKNOWN_NAME% b", "a %ZT_UNKNOWN_NAME% b"}, // unknown: as written
        {__LINE__, "%%", "%%"},
        {__LINE__, "%ZT_ALPHA% 100%", "one 100%"},                   // no closing %
        {__LINE__, "%ZT_PERCENT%", "%ZT_ALPHA%"},                    // values are not expanded again
        {__LINE__, std::string("%ZT_ALPHA%\0%ZT_BETA%", 20), "one"}, // a C string: a zero ends it
#ifndef _WIN32
        // Linux name matching.
        {__LINE__, "%zt_alpha%", "%zt_alpha%"},                // exact, case-sensitive
        {__LINE__, "%ZT_EQ=B%", "%ZT_EQ=B%"},                  // '=' never belongs to a name
        {__LINE__, "%ZT_EMPTY%", ""},                          // set but empty
        {__LINE__, "%ZT_UNKNOWN%ZT_ALPHA%", "%ZT_UNKNOWNone"}, // closing % opens the next name
#endif
    };
    for (std::size_t length : {511u, 512u, 2049u}) // results just within, just past the first buffer, far past
        rows.push_back({__LINE__, std::string(length - 500, 'x') + "%ZT_500%", std::string(length - 500, 'x') + f500});
    const auto expand = [](std::string text) { return ReplaceEnvironmentVariables(text, text) ? text : "(failed)"; };
    for (const Row& row : rows)
        EXPECT_EQ(row.expected, expand(row.in)) << "row at line " << row.line;
}
