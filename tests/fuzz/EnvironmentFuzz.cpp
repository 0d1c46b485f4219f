// Fuzzes the %NAME% expansion with a few variables set, against a plain
// second implementation of the same rules: known names replaced, unknown
// names, "%%" and an unmatched % kept as written, the text ending at its
// first zero character.
#include <ZantorMiddleware/ZantorBase/TextUtilities.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>

namespace {

const std::map<std::string, std::string>& Variables()
{
    static const std::map<std::string, std::string> variables = [] {
        std::map<std::string, std::string> v = {
            {"A", "alpha"}, {"ZF_B", "%A%"}, {"Zb", ""}, {"Fa", "%"}, {"ab", "lower"},
        };
        unsetenv("_"); // set by shells; its name is made of the characters compared below
        for (const auto& [name, value] : v)
            setenv(name.c_str(), value.c_str(), 1);
        return v;
    }();
    return variables;
}

// The expansion reads its text as a C string: a zero character ends it.
std::string Expand(const std::string& whole)
{
    const std::string in = whole.substr(0, whole.find('\0'));
    const auto& variables = Variables();
    std::string out;
    std::size_t i = 0;
    while (i < in.size())
    {
        if (in[i] != '%')
        {
            out += in[i++];
            continue;
        }
        const std::size_t close = in.find('%', i + 1);
        if (close == std::string::npos)
        {
            out += in.substr(i);
            break;
        }
        const std::string name = in.substr(i + 1, close - i - 1);
        const auto found = variables.find(name);
        if (found != variables.end())
        {
            out += found->second;
            i = close + 1;
        }
        else
        {
            out += in.substr(i, close - i);
            i = close;
        }
    }
    return out;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Variables();
    const std::string in(reinterpret_cast<const char*>(data), size);
    // Texts that name a variable of the environment not set here cannot be
    // predicted; only names made of the characters below are compared.
    bool predictable = true;
    for (char c : in)
        if (!(c == '%' || c == ' ' || c == 'A' || c == 'B' || c == 'a' || c == 'b' || c == '=' || c == '_' ||
              c == 'Z' || c == 'F' || c == '\0' || c == 'x'))
            predictable = false;

    std::string out = "unchanged";
    if (!Zantor::ReplaceEnvironmentVariables(in, out))
        std::abort();
    const std::string text = in.substr(0, in.find('\0'));
    if (text.find('%') == std::string::npos && out != text)
        std::abort();
    if (predictable && out != Expand(in))
        std::abort();
    return 0;
}
