// PlaySoundA on Windows: winmm.dll is loaded on first use and kept for the
// life of the process; its PlaySoundA is looked up on every call.
// mmsystem.h is not included: its PlaySoundA would meet Zantor::PlaySoundA,
// so the entry's type and flags are declared here.
#include <ZantorMiddleware/ZantorBase/PlaySound.h>

#include <windows.h>

#include <atomic>

namespace Zantor {

namespace {

using PlaySoundFunction = BOOL(WINAPI*)(LPCSTR sound, HMODULE module, DWORD flags);

constexpr DWORD kSoundAsync = 0x0001;    // SND_ASYNC
constexpr DWORD kSoundMemory = 0x0004;   // SND_MEMORY
constexpr DWORD kSoundNoWait = 0x2000;   // SND_NOWAIT

std::atomic<HMODULE> g_winmm{nullptr};

} // namespace

StatusCode PlaySoundA(const void* sound, unsigned size, bool async)
{
    static_cast<void>(size);

    HMODULE winmm = g_winmm.load(std::memory_order_acquire);
    if (winmm == nullptr)
    {
        winmm = LoadLibraryA("winmm.dll");
        if (winmm == nullptr)
            return OsErrorToStatusCode(GetLastOsError(), STATUS_CODE_FAILURE);
        HMODULE previous = g_winmm.exchange(winmm, std::memory_order_acq_rel);
        if (previous != nullptr)
            FreeLibrary(previous); // another thread loaded it first: drop our extra reference
    }

    const auto play = reinterpret_cast<PlaySoundFunction>(reinterpret_cast<void (*)()>(GetProcAddress(winmm, "PlaySoundA")));
    if (play == nullptr)
        return OsErrorToStatusCode(GetLastOsError(), STATUS_CODE_FAILURE);

    DWORD flags = kSoundMemory | kSoundNoWait;
    if (async)
        flags |= kSoundAsync;
    return play(static_cast<LPCSTR>(sound), nullptr, flags) ? STATUS_CODE_SUCCESS : STATUS_CODE_FAILURE;
}

} // namespace Zantor
