// RIFF/WAVE image checking: every length is compared with what is left
// before anything is read.
#include "WaveImage.h"

#include <cstring>

namespace Zantor {

namespace {

constexpr std::uint16_t kFormatPcm = 1;
constexpr std::uint32_t kRiffHeaderSize = 12; // "RIFF", length, "WAVE"
constexpr std::uint32_t kChunkHeaderSize = 8; // identifier, length
constexpr std::uint32_t kPcmFormatSize = 16;

inline std::uint16_t Read16(const unsigned char* p) noexcept
{
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

inline std::uint32_t Read32(const unsigned char* p) noexcept
{
    return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
           (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}

inline bool IsTag(const unsigned char* p, const char (&tag)[5]) noexcept
{
    return std::memcmp(p, tag, 4) == 0;
}

StatusCode ParseFormat(const unsigned char* body, std::uint32_t length, WaveImage& wave) noexcept
{
    if (length < kPcmFormatSize)
        return STATUS_CODE_INVALID_FORMAT;
    const std::uint16_t format = Read16(body);
    const std::uint16_t channels = Read16(body + 2);
    const std::uint32_t sampleRate = Read32(body + 4);
    const std::uint16_t blockAlign = Read16(body + 12);
    const std::uint16_t bits = Read16(body + 14);
    if (format != kFormatPcm)
        return STATUS_CODE_INVALID_FORMAT;
    if (channels == 0 || channels > WAVE_MAX_CHANNELS)
        return STATUS_CODE_INVALID_FORMAT;
    if (sampleRate < WAVE_MIN_SAMPLE_RATE || sampleRate > WAVE_MAX_SAMPLE_RATE)
        return STATUS_CODE_INVALID_FORMAT;
    if (bits != 8 && bits != 16 && bits != 24 && bits != 32)
        return STATUS_CODE_INVALID_FORMAT;
    if (blockAlign != channels * (bits / 8))
        return STATUS_CODE_INVALID_FORMAT;
    wave.channels = channels;
    wave.sampleRate = sampleRate;
    wave.bitsPerSample = bits;
    wave.blockAlign = blockAlign;
    return STATUS_CODE_SUCCESS;
}

} // namespace

StatusCode ParseWaveImage(const void* image, unsigned size, WaveImage& wave) noexcept
{
    if (image == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;
    const auto* bytes = static_cast<const unsigned char*>(image);
    if (size < kRiffHeaderSize || !IsTag(bytes, "RIFF") || !IsTag(bytes + 8, "WAVE"))
        return STATUS_CODE_INVALID_FORMAT;
    const std::uint32_t riffLength = Read32(bytes + 4);
    if (riffLength < 4 || riffLength > size - kChunkHeaderSize)
        return STATUS_CODE_INVALID_FORMAT;
    const std::uint32_t end = kChunkHeaderSize + riffLength;

    WaveImage found;
    bool haveFormat = false;
    bool haveData = false;
    // 64-bit positions: a step past a chunk's pad byte may go one byte past
    // end, even when end is the largest 32-bit value.
    std::uint64_t position = kRiffHeaderSize;
    while (position < end)
    {
        if (end - position < kChunkHeaderSize)
            return STATUS_CODE_INVALID_FORMAT;
        const unsigned char* header = bytes + position;
        const std::uint32_t length = Read32(header + 4);
        const std::uint64_t bodyPosition = position + kChunkHeaderSize;
        if (length > end - bodyPosition)
            return STATUS_CODE_INVALID_FORMAT;
        const unsigned char* body = bytes + bodyPosition;

        if (IsTag(header, "fmt "))
        {
            if (haveFormat || haveData)
                return STATUS_CODE_INVALID_FORMAT;
            const StatusCode status = ParseFormat(body, length, found);
            if (status != STATUS_CODE_SUCCESS)
                return status;
            haveFormat = true;
        }
        else if (IsTag(header, "data"))
        {
            if (!haveFormat || haveData)
                return STATUS_CODE_INVALID_FORMAT;
            found.samples = body;
            found.sampleBytes = length - length % found.blockAlign;
            haveData = true;
        }

        // Chunks of odd length are followed by a pad byte, which a writer
        // may leave out at the very end.
        position = bodyPosition + length + (length & 1u);
    }
    if (!haveFormat || !haveData)
        return STATUS_CODE_INVALID_FORMAT;
    wave = found;
    return STATUS_CODE_SUCCESS;
}

} // namespace Zantor
