// WaveImage: the checked reading of a RIFF/WAVE image held in memory, used
// by PlaySoundA on platforms that play the samples themselves. Internal to
// the library.
#pragma once

#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <cstdint>

namespace Zantor {

struct WaveImage
{
    std::uint16_t channels = 0;        // 1 to 8
    std::uint32_t sampleRate = 0;      // frames per second
    std::uint16_t bitsPerSample = 0;   // 8, 16, 24 or 32; 8 is unsigned, the others signed little-endian
    std::uint16_t blockAlign = 0;      // bytes per frame
    const unsigned char* samples = nullptr; // inside the image
    std::uint32_t sampleBytes = 0;     // whole frames only
};

inline constexpr std::uint32_t WAVE_MIN_SAMPLE_RATE = 1000;
inline constexpr std::uint32_t WAVE_MAX_SAMPLE_RATE = 384000;
inline constexpr std::uint16_t WAVE_MAX_CHANNELS = 8;

// Checks the size bytes at image and describes its samples. Never reads
// past size. The RIFF header's length must lie within size (bytes behind
// the RIFF chunk are ignored); chunks are walked with their pad bytes; the
// "fmt " chunk (PCM, at least 16 bytes) must come before the one "data"
// chunk; both must lie wholly inside the RIFF chunk; a second "fmt " or
// "data" chunk, or a partial chunk header at the end, is refused.
// Returns STATUS_CODE_SUCCESS and fills wave; STATUS_CODE_INVALID_PARAMETER
// when image is null; STATUS_CODE_INVALID_FORMAT for everything else that
// is not such an image. wave is unchanged on failure.
StatusCode ParseWaveImage(const void* image, unsigned size, WaveImage& wave) noexcept;

} // namespace Zantor
