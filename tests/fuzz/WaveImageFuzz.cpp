// Fuzzes the checked reading of RIFF/WAVE images. An accepted image must
// describe samples that lie inside the input.
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
        if (wave.channels == 0 || wave.channels > WAVE_MAX_CHANNELS || wave.blockAlign == 0 ||
            wave.sampleBytes % wave.blockAlign != 0 || wave.samples < image ||
            wave.samples + wave.sampleBytes > image + size)
            std::abort();
    }
    else if (status != STATUS_CODE_INVALID_FORMAT)
    {
        std::abort();
    }
    return 0;
}
