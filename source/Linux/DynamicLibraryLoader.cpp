// Run-time loading of system libraries on Linux: dlopen and dlsym.
#include <ZantorMiddleware/Misc/Detail/DynamicLibraryLoaderDetail.h>

#include <dlfcn.h>

namespace Zantor {
namespace Detail {

void* LoadSystemLibrary(const char* name) noexcept
{
    if (name == nullptr)
        return nullptr;
    return ::dlopen(name, RTLD_NOW | RTLD_LOCAL);
}

GenericFunction FindLibraryFunction(void* library, const char* name) noexcept
{
    if (library == nullptr || name == nullptr)
        return nullptr;
    return reinterpret_cast<GenericFunction>(::dlsym(library, name));
}

} // namespace Detail
} // namespace Zantor
