// %NAME% expansion on Windows through ExpandEnvironmentStringsA: first into
// a local buffer of 512 characters, then, when the reported length is
// larger, into a heap buffer of twice the reported length.
#include "Environment.h"

#include <windows.h>

#include <memory>

namespace Zantor::Detail {

namespace {
constexpr DWORD kLocalBufferSize = 512;
}

bool ExpandEnvironmentReferences(const char* text, std::string& expanded)
{
    char local[kLocalBufferSize];
    const DWORD reported = ExpandEnvironmentStringsA(text, local, kLocalBufferSize);
    if (reported == 0)
        return false;
    if (reported <= kLocalBufferSize)
    {
        expanded.assign(local);
        return true;
    }

    if (reported > 0x7FFFFFFFu)
        return false;
    const DWORD size = 2 * reported;
    std::unique_ptr<char[]> heap(new char[size]);
    const DWORD second = ExpandEnvironmentStringsA(text, heap.get(), size);
    if (second == 0 || second > size)
        return false;
    expanded.assign(heap.get());
    return true;
}

} // namespace Zantor::Detail
