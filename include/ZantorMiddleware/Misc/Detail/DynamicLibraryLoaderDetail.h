// DynamicLibraryLoaderDetail: run-time lookup of functions in optional
// system libraries. A DllFunctionWrapper names a library and a function; it
// loads the library and finds the function on first use, so a program
// still starts (and the caller gets a status) when the library is missing.
//
// Ownership: a library, once loaded, stays loaded for the life of the
// process. Thread safety: a wrapper may be used from any thread; two
// threads racing on the first use both look the function up and store the
// same address. A failed lookup is tried again on the next use.
//
//   static DllFunctionWrapper<int(const char*)> puts_("libc.so.6", "puts");
//   if (puts_.IsAvailable())
//       puts_("hello");
#pragma once

#include <ZantorMiddleware/ZantorBase/Export.h>

#include <atomic>
#include <type_traits>
#include <utility>

namespace Zantor {
namespace Detail {

// The type every function address travels as between the platform part
// and the wrappers.
using GenericFunction = void (*)();

// Loads the system library name (dlopen with RTLD_NOW on Linux, LoadLibraryA
// on Windows) and returns its handle, or null when it cannot be loaded (on
// Windows GetLastError tells why). The handle is never released.
ZANTOR_BASE_API void* LoadSystemLibrary(const char* name) noexcept;

// Returns the address of the function name in library, or null when it is
// missing (or library is null).
ZANTOR_BASE_API GenericFunction FindLibraryFunction(void* library, const char* name) noexcept;

} // namespace Detail

// Signature is a function type (int(const char*)) or a function pointer
// type; pass a pointer type to keep a calling convention such as WINAPI.
template <typename Signature>
class DllFunctionWrapper
{
public:
    using FunctionPointer = std::conditional_t<std::is_pointer_v<Signature>, Signature, std::add_pointer_t<Signature>>;
    static_assert(std::is_function_v<std::remove_pointer_t<FunctionPointer>>, "a function type is required");

    // libraryName and functionName must outlive the wrapper (string literals).
    constexpr DllFunctionWrapper(const char* libraryName, const char* functionName) noexcept
        : libraryName_(libraryName), functionName_(functionName)
    {
    }

    DllFunctionWrapper(const DllFunctionWrapper&) = delete;
    DllFunctionWrapper& operator=(const DllFunctionWrapper&) = delete;

    // Returns the function's address, looking it up on first use; null when
    // the library or the function is missing.
    FunctionPointer Get() noexcept
    {
        Detail::GenericFunction function = function_.load(std::memory_order_acquire);
        if (function == nullptr)
        {
            void* library = Detail::LoadSystemLibrary(libraryName_);
            function = Detail::FindLibraryFunction(library, functionName_);
            if (function != nullptr)
                function_.store(function, std::memory_order_release);
        }
        return reinterpret_cast<FunctionPointer>(function);
    }

    bool IsAvailable() noexcept { return Get() != nullptr; }

    const char* GetLibraryName() const noexcept { return libraryName_; }
    const char* GetFunctionName() const noexcept { return functionName_; }

    // Calls the function. Requires IsAvailable().
    template <typename... Args>
    decltype(auto) operator()(Args&&... args)
    {
        return Get()(std::forward<Args>(args)...);
    }

private:
    const char* libraryName_;
    const char* functionName_;
    std::atomic<Detail::GenericFunction> function_{nullptr};
};

} // namespace Zantor
