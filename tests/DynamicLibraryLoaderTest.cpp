// DllFunctionWrapper: finding functions of system libraries at run time.
#include <ZantorMiddleware/Misc/Detail/DynamicLibraryLoaderDetail.h>

#include <gtest/gtest.h>

#include <cstddef>

namespace Zantor {
namespace {

#ifdef _WIN32
constexpr char kSystemLibrary[] = "kernel32.dll";
constexpr char kLengthFunction[] = "lstrlenA";
using LengthFunction = int(__stdcall*)(const char*);
#else
constexpr char kSystemLibrary[] = "libc.so.6";
constexpr char kLengthFunction[] = "strlen";
using LengthFunction = std::size_t (*)(const char*);
#endif

TEST(DllFunctionWrapperTest, FindsAndCallsAFunction)
{
    DllFunctionWrapper<LengthFunction> length(kSystemLibrary, kLengthFunction);
    ASSERT_TRUE(length.IsAvailable());
    EXPECT_EQ(5, static_cast<int>(length("Hello")));
    EXPECT_EQ(length.Get(), length.Get());
}

// A missing library or function is unavailable; the platform part refuses
// null names.
TEST(DllFunctionWrapperTest, MissingLibraryFunctionOrNameIsUnavailable)
{
    DllFunctionWrapper<void()> noLibrary("zantor-no-such-library.so.0", "Anything");
    EXPECT_FALSE(noLibrary.IsAvailable());
    EXPECT_EQ(nullptr, noLibrary.Get());
    DllFunctionWrapper<void()> noFunction(kSystemLibrary, "ZantorNoSuchFunction");
    EXPECT_FALSE(noFunction.IsAvailable());
    EXPECT_EQ(nullptr, Detail::LoadSystemLibrary(nullptr));
    EXPECT_EQ(nullptr, Detail::FindLibraryFunction(nullptr, "strlen"));
    EXPECT_EQ(nullptr, Detail::FindLibraryFunction(Detail::LoadSystemLibrary(kSystemLibrary), nullptr));
}

} // namespace
} // namespace Zantor
