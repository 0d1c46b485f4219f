// Fuzzes the checked reading of RIFF/WAVE images. An accepted image must
// describe a playable PCM format and samples that lie inside the input,
// behind the RIFF header and the "fmt " and "data" chunk headers.
#include "../../source/WaveImage.h"

#include <cstdint>
#include <cstdlib>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace Zantor;
    if (size > 0xFFFFFFFFu)
        return 0;
    WaveImage wave;
    // A null pointer is a separate case; give the empty input an address.
    const uint8_t empty = 0;
    const uint8_t* image = size == 0 ? &empty : data;
    const StatusCode status = ParseWaveImage(image, static_cast<unsigned>(size), wave);
    if (status == STATUS_CODE_SUCCESS)
    {
        const bool knownWidth = wave.bitsPerSample == 8 || wave.bitsPerSample == 16 || wave.bitsPerSample == 24 ||
                                wave.bitsPerSample == 32;
        if (wave.channels == 0 || wave.channels > WAVE_MAX_CHANNELS || !knownWidth ||
            wave.blockAlign != wave.channels * (wave.bitsPerSample / 8) || wave.sampleRate < WAVE_MIN_SAMPLE_RATE ||
            wave.sampleRate > WAVE_MAX_SAMPLE_RATE || wave.sampleBytes % wave.blockAlign != 0 ||
            wave.samples < image + 44 || wave.samples + wave.sampleBytes > image + size)
            std::abort();
    }
    else if (status != STATUS_CODE_INVALID_FORMAT)
    {
        std::abort();
    }
    return 0;
}
