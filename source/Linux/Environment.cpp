// %NAME% expansion on Linux, with the observable rules of Windows'
// ExpandEnvironmentStringsA: known names are replaced, unknown names, "%%"
// and an unmatched % stay as written; the text ends at its first zero
// character. Names are matched exactly (case-sensitively) through getenv.
#include <ZantorMiddleware/ZantorBase/TextUtilities.h>

#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string_view>

namespace Zantor {

namespace {

// The value of the variable called name, or null. An empty name, or one
// holding '=', names no variable (getenv would match a prefix of another
// entry for "A=B").
const char* FindVariable(std::string_view name)
{
    if (name.empty() || name.find('=') != std::string_view::npos)
        return nullptr;
    const std::string key(name);
    return std::getenv(key.c_str());
}

} // namespace

bool ReplaceEnvironmentVariables(const std::string& in, std::string& out)
{
    try
    {
        // The expansion works on a C string, as ExpandEnvironmentStringsA
        // does: a zero character ends the text.
        const std::string_view text(in.c_str());
        std::string result;
        result.reserve(text.size());
        std::size_t position = 0;
        while (position < text.size())
        {
            const std::size_t percent = text.find('%', position);
            if (percent == std::string_view::npos)
            {
                result.append(text.substr(position));
                break;
            }
            result.append(text.substr(position, percent - position));
            const std::size_t closing = text.find('%', percent + 1);
            if (closing == std::string_view::npos)
            {
                // No closing %: the rest is copied as it is.
                result.append(text.substr(percent));
                break;
            }
            const char* value = FindVariable(text.substr(percent + 1, closing - percent - 1));
            if (value != nullptr)
            {
                result.append(value);
                position = closing + 1;
            }
            else
            {
                // Keep the % and go on at the closing %, which may open the
                // next reference.
                result.push_back('%');
                position = percent + 1;
                result.append(text.substr(position, closing - position));
                position = closing;
            }
        }
        out.swap(result);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
    catch (const std::length_error&)
    {
        return false;
    }
}

} // namespace Zantor
