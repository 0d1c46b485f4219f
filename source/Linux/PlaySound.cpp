// PlaySoundA on Linux: the WAVE image is checked, then its samples are
// played through PulseAudio's simple API. libpulse-simple is loaded at run
// time, so the library neither links against nor needs PulseAudio; the few
// declarations used are those of <pulse/simple.h>.
#include <ZantorMiddleware/ZantorBase/PlaySound.h>

#include <ZantorMiddleware/Misc/Detail/DynamicLibraryLoaderDetail.h>

#include "WaveImage.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace Zantor {

namespace {

// From <pulse/sample.h>, <pulse/def.h> and <pulse/simple.h>.
struct pa_simple;
struct pa_channel_map;
struct pa_buffer_attr;

enum pa_sample_format_t : int
{
    PA_SAMPLE_U8 = 0,
    PA_SAMPLE_S16LE = 3,
    PA_SAMPLE_S32LE = 7,
    PA_SAMPLE_S24LE = 9
};

enum pa_stream_direction_t : int
{
    PA_STREAM_PLAYBACK = 1
};

struct pa_sample_spec
{
    pa_sample_format_t format;
    std::uint32_t rate;
    std::uint8_t channels;
};

using PaSimpleNew = pa_simple* (*)(const char* server, const char* name, pa_stream_direction_t direction,
                                   const char* device, const char* streamName, const pa_sample_spec* spec,
                                   const pa_channel_map* map, const pa_buffer_attr* attributes, int* error);
using PaSimpleWrite = int (*)(pa_simple* stream, const void* data, std::size_t bytes, int* error);
using PaSimpleDrain = int (*)(pa_simple* stream, int* error);
using PaSimpleFree = void (*)(pa_simple* stream);

constexpr char kPulseSimpleLibrary[] = "libpulse-simple.so.0";

DllFunctionWrapper<PaSimpleNew> g_paSimpleNew(kPulseSimpleLibrary, "pa_simple_new");
DllFunctionWrapper<PaSimpleWrite> g_paSimpleWrite(kPulseSimpleLibrary, "pa_simple_write");
DllFunctionWrapper<PaSimpleDrain> g_paSimpleDrain(kPulseSimpleLibrary, "pa_simple_drain");
DllFunctionWrapper<PaSimpleFree> g_paSimpleFree(kPulseSimpleLibrary, "pa_simple_free");

struct PulseFunctions
{
    PaSimpleNew create;
    PaSimpleWrite write;
    PaSimpleDrain drain;
    PaSimpleFree free;
};

bool FindPulseFunctions(PulseFunctions& functions) noexcept
{
    functions.create = g_paSimpleNew.Get();
    functions.write = g_paSimpleWrite.Get();
    functions.drain = g_paSimpleDrain.Get();
    functions.free = g_paSimpleFree.Get();
    return functions.create != nullptr && functions.write != nullptr && functions.drain != nullptr &&
           functions.free != nullptr;
}

pa_sample_format_t SampleFormat(std::uint16_t bitsPerSample) noexcept
{
    switch (bitsPerSample)
    {
    case 8: return PA_SAMPLE_U8;
    case 16: return PA_SAMPLE_S16LE;
    case 24: return PA_SAMPLE_S24LE;
    default: return PA_SAMPLE_S32LE;
    }
}

// Writes the samples and waits until they have been played; always frees
// the stream.
bool PlayAndClose(const PulseFunctions& functions, pa_simple* stream, const unsigned char* samples, std::size_t size) noexcept
{
    int error = 0;
    bool played = true;
    if (size != 0 && functions.write(stream, samples, size, &error) < 0)
        played = false;
    if (played && functions.drain(stream, &error) < 0)
        played = false;
    functions.free(stream);
    return played;
}

} // namespace

StatusCode PlaySoundA(const void* sound, unsigned size, bool async)
{
    WaveImage wave;
    const StatusCode status = ParseWaveImage(sound, size, wave);
    if (status != STATUS_CODE_SUCCESS)
        return status;

    PulseFunctions functions{};
    if (!FindPulseFunctions(functions))
        return STATUS_CODE_FAILURE;

    // Asynchronous play works on a private copy, made before connecting so
    // that a failed allocation leaves nothing behind.
    std::vector<unsigned char> copy;
    if (async)
    {
        try
        {
            copy.assign(wave.samples, wave.samples + wave.sampleBytes);
        }
        catch (const std::bad_alloc&)
        {
            return STATUS_CODE_HEAP_EMPTY;
        }
    }

    const pa_sample_spec spec{SampleFormat(wave.bitsPerSample), wave.sampleRate, static_cast<std::uint8_t>(wave.channels)};
    int error = 0;
    // The stream is freed here unless a player thread has taken it over.
    std::unique_ptr<pa_simple, PaSimpleFree> stream(
        functions.create(nullptr, "ZantorBase", PA_STREAM_PLAYBACK, nullptr, "PlaySound", &spec, nullptr, nullptr, &error),
        functions.free);
    if (!stream)
        return STATUS_CODE_FAILURE;

    if (!async)
        return PlayAndClose(functions, stream.release(), wave.samples, wave.sampleBytes) ? STATUS_CODE_SUCCESS
                                                                                           : STATUS_CODE_FAILURE;
    try
    {
        std::thread player([functions, raw = stream.get(), samples = std::move(copy)]() noexcept {
            PlayAndClose(functions, raw, samples.data(), samples.size());
        });
        stream.release();
        player.detach();
    }
    catch (const std::system_error&)
    {
        return STATUS_CODE_FAILURE;
    }
    catch (const std::bad_alloc&)
    {
        return STATUS_CODE_HEAP_EMPTY;
    }
    return STATUS_CODE_SUCCESS;
}

} // namespace Zantor
