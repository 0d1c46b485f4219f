// Bounded formatting, environment expansion and quoted string lists. The
// expansion itself is platform code (source/<platform>/Environment.cpp).
#include <ZantorMiddleware/ZantorBase/TextUtilities.h>

#include "Environment.h"

#include <cstdio>
#include <cstring>
#include <new>
#include <stdexcept>

namespace Zantor {

unsigned Snprintf(char* buffer, unsigned size, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const unsigned written = Vsnprintf(buffer, size, format, args);
    va_end(args);
    return written;
}

unsigned Vsnprintf(char* buffer, unsigned size, const char* format, va_list args)
{
    if (size == 0)
        return 0;
    buffer[0] = '\0';
    const int reported = std::vsnprintf(buffer, size, format, args);
    buffer[size - 1] = '\0';
    if (reported < 0)
    {
        // An encoding error: report what is actually in the buffer.
        return static_cast<unsigned>(std::strlen(buffer));
    }
    if (static_cast<unsigned>(reported) >= size)
        return size - 1;
    return static_cast<unsigned>(reported);
}

bool ReplaceEnvironmentVariables(const std::string& in, std::string& out)
{
    try
    {
        // A C string on every platform: a zero character ends the text, as
        // it does for the Windows call.
        std::string expanded;
        if (!Detail::ExpandEnvironmentReferences(in.c_str(), expanded))
            return false;
        out.swap(expanded);
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

std::string StringListToString(const char* const* list, unsigned count, const char* lastSeparator)
{
    std::string result;
    if (list == nullptr)
        return result;
    for (unsigned i = 0; i < count; ++i)
    {
        if (i != 0)
        {
            if (i == count - 1 && lastSeparator != nullptr)
            {
                result += lastSeparator;
                result += ' ';
            }
            else
            {
                result += ", ";
            }
        }
        result += '"';
        if (list[i] != nullptr)
            result += list[i];
        result += '"';
    }
    return result;
}

} // namespace Zantor
