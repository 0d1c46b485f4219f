// %NAME% expansion on Windows through ExpandEnvironmentStringsA: first into
// a local buffer of 512 characters, then, when the reported length is
// larger, into a heap buffer of twice the reported length.
#include <ZantorMiddleware/ZantorBase/TextUtilities.h>

#include <windows.h>

#include <memory>
#include <new>
#include <stdexcept>

namespace Zantor {

namespace {
constexpr DWORD kLocalBufferSize = 512;
}

bool ReplaceEnvironmentVariables(const std::string& in, std::string& out)
{
    try
    {
        char local[kLocalBufferSize];
        const DWORD reported = ExpandEnvironmentStringsA(in.c_str(), local, kLocalBufferSize);
        if (reported == 0)
            return false;
        if (reported <= kLocalBufferSize)
        {
            out.assign(local);
            return true;
        }

        if (reported > 0x7FFFFFFFu)
            return false;
        const DWORD size = 2 * reported;
        std::unique_ptr<char[]> heap(new char[size]);
        const DWORD second = ExpandEnvironmentStringsA(in.c_str(), heap.get(), size);
        if (second == 0 || second > size)
            return false;
        out.assign(heap.get());
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
