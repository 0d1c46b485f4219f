// A stand-in for libpulse-simple.so.0 that logs what it is asked, so that the
// tests check PlaySoundA's Linux playback path without a sound server. The
// PlaySoundPlayback test runs with this library first on LD_LIBRARY_PATH.
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>

namespace {

struct SampleSpec { int format; std::uint32_t rate; std::uint8_t channels; };

std::mutex g_mutex;
std::condition_variable g_freed;
std::string g_log;
int g_freeCount = 0;
bool g_failCreate = false, g_failWrite = false;
int g_stream; // its address is the one stream handed out

// Logs what was asked of the stream, and whether it is the one handed out.
void Log(const void* stream, const std::string& text)
{
    g_log += (stream == &g_stream ? " " : " wrong stream: ") + text + ";";
}

} // namespace

#define FAKE_API extern "C" __attribute__((visibility("default")))

FAKE_API void* pa_simple_new(const char*, const char* name, int direction, const char*, const char* streamName,
                             const SampleSpec* spec, const void*, const void*, int* error)
{
    std::lock_guard<std::mutex> lock(g_mutex);
    g_log += "new " + std::string(name) + " " + streamName + " dir " + std::to_string(direction) + " format " +
             std::to_string(spec->format) + " rate " + std::to_string(spec->rate) + " channels " +
             std::to_string(spec->channels) + ";";
    *error = g_failCreate ? 1 : 0;
    return g_failCreate ? nullptr : &g_stream;
}

FAKE_API int pa_simple_write(void* stream, const void* data, std::size_t bytes, int* error)
{
    std::lock_guard<std::mutex> lock(g_mutex);
    std::string text = "write";
    for (std::size_t i = 0; i < bytes; ++i)
    {
        char hex[4];
        std::snprintf(hex, sizeof hex, " %02x", static_cast<const unsigned char*>(data)[i]);
        text += hex;
    }
    Log(stream, text);
    *error = g_failWrite ? 1 : 0;
    return g_failWrite ? -1 : 0;
}

FAKE_API int pa_simple_drain(void* stream, int* error)
{
    std::lock_guard<std::mutex> lock(g_mutex);
    Log(stream, "drain");
    return *error = 0;
}

FAKE_API void pa_simple_free(void* stream)
{
    std::lock_guard<std::mutex> lock(g_mutex);
    Log(stream, "free");
    ++g_freeCount;
    g_freed.notify_all();
}

// Clears the log and sets which calls fail.
FAKE_API void FakePulseReset(bool failCreate, bool failWrite)
{
    std::lock_guard<std::mutex> lock(g_mutex);
    g_log.clear();
    g_freeCount = 0;
    g_failCreate = failCreate;
    g_failWrite = failWrite;
}

// The log once `frees` streams were freed, or after ten seconds.
FAKE_API const char* FakePulseLog(int frees)
{
    std::unique_lock<std::mutex> lock(g_mutex);
    g_freed.wait_for(lock, std::chrono::seconds(10), [frees] { return g_freeCount >= frees; });
    return g_log.c_str();
}
