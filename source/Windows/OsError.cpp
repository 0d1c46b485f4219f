// OS error numbers on Windows: the system message table and GetLastError().
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <windows.h>

#include <cstdio>
#include <locale>

namespace Zantor {

std::string OsErrorToString(std::uint32_t osError)
{
    char buffer[255];
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        osError, 0x400, buffer, sizeof buffer, nullptr);
    if (length != 0)
    {
        std::string text(buffer, length < sizeof buffer ? length : sizeof buffer);
        const std::locale locale;
        while (!text.empty() && std::isspace(text.back(), locale))
            text.pop_back();
        return text;
    }
    char text[32];
    std::snprintf(text, sizeof text, "error %u", static_cast<unsigned>(osError));
    return text;
}

std::uint32_t GetLastOsError()
{
    return GetLastError();
}

} // namespace Zantor
