// %NAME% expansion on Linux, with the observable rules of Windows'
// ExpandEnvironmentStringsA: known names are replaced, unknown names, "%%"
// and an unmatched % stay as written. Names are matched exactly
// (case-sensitively) through getenv.
#include "Environment.h"

#include <cstdlib>
#include <string_view>

namespace Zantor::Detail {

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

bool ExpandEnvironmentReferences(const char* characters, std::string& result)
{
    const std::string_view text(characters);
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
    return true;
}

} // namespace Zantor::Detail
