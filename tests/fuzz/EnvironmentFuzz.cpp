// Fuzzes the %NAME% expansion with a few variables set. The unit tests pin
// the rules; here: it never fails, a zero character ends the text, a text
// without '%' comes back as it is, and every '%' of the result comes from
// the text or from a variable's value.
#include <ZantorMiddleware/ZantorBase/TextUtilities.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool set = [] {
        clearenv(); // only the variables below exist
        setenv("A", "alpha", 1);
        setenv("ZF_B", "%A%", 1);
        setenv("Zb", "", 1);
        return true;
    }();
    (void)set;
    const std::string in(reinterpret_cast<const char*>(data), size);
    const std::string text = in.substr(0, in.find('\0'));
    std::string out = "unchanged", prefixOut = "unchanged";
    if (!Zantor::ReplaceEnvironmentVariables(in, out) || !Zantor::ReplaceEnvironmentVariables(text, prefixOut))
        std::abort();
    if (out != prefixOut)
        std::abort();
    if (text.find('%') == std::string::npos && out != text)
        std::abort();
    // Only ZF_B's value carries '%' here: each use adds two and removes the two around its name.
    if (std::count(out.begin(), out.end(), '%') > std::count(text.begin(), text.end(), '%') &&
        text.find("%ZF_B%") == std::string::npos)
        std::abort();
    return 0;
}
