// Run-time loading of system libraries on Windows: LoadLibraryA and
// GetProcAddress.
#include <ZantorMiddleware/Misc/Detail/DynamicLibraryLoaderDetail.h>

#include <windows.h>

namespace Zantor {
namespace Detail {

void* LoadSystemLibrary(const char* name) noexcept
{
    if (name == nullptr)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return static_cast<void*>(LoadLibraryA(name));
}

GenericFunction FindLibraryFunction(void* library, const char* name) noexcept
{
    if (library == nullptr || name == nullptr)
        return nullptr;
    return reinterpret_cast<GenericFunction>(GetProcAddress(static_cast<HMODULE>(library), name));
}

} // namespace Detail
} // namespace Zantor
