// OS error numbers on Windows: the system message table and GetLastError().
#include "SystemErrorText.h"

#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <windows.h>

namespace Zantor {

bool Detail::GetSystemErrorText(std::uint32_t osError, std::string& text)
{
    char buffer[255];
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        osError, 0x400, buffer, sizeof buffer, nullptr);
    if (length == 0)
        return false;
    text.assign(buffer, length < sizeof buffer ? length : sizeof buffer);
    return true;
}

std::uint32_t GetLastOsError()
{
    return GetLastError();
}

} // namespace Zantor
