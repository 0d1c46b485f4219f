// GenericHash against XXH32 on short keys and 64 KiB buffers, and the hex
// dump against a minimal dump that calls snprintf for every byte.
#include <ZantorMiddleware/ZantorBase/GenericHash.h>
#include <ZantorMiddleware/ZantorBase/HexDump.h>

#include <benchmark/benchmark.h>
#include <xxhash.h>

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kKeySize = 16;
constexpr std::size_t kBufferSize = 64 * 1024;

std::vector<unsigned char> RandomBytes(std::size_t size)
{
    std::mt19937 random(42);
    std::vector<unsigned char> bytes(size);
    for (auto& b : bytes)
        b = static_cast<unsigned char>(random());
    return bytes;
}

void BM_GenericHash16(benchmark::State& state)
{
    const auto key = RandomBytes(kKeySize);
    std::uint32_t h = 0;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(key.data());
        h = Zantor::GenericHash(key.data(), kKeySize, h);
        benchmark::DoNotOptimize(h);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kKeySize));
}
BENCHMARK(BM_GenericHash16);

void BM_XXH32_16(benchmark::State& state)
{
    const auto key = RandomBytes(kKeySize);
    std::uint32_t h = 0;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(key.data());
        h = XXH32(key.data(), kKeySize, h);
        benchmark::DoNotOptimize(h);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kKeySize));
}
BENCHMARK(BM_XXH32_16);

void BM_GenericHash64K(benchmark::State& state)
{
    const auto buffer = RandomBytes(kBufferSize);
    for (auto _ : state)
        benchmark::DoNotOptimize(Zantor::GenericHash(buffer.data(), kBufferSize, 0));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kBufferSize));
}
BENCHMARK(BM_GenericHash64K);

void BM_XXH32_64K(benchmark::State& state)
{
    const auto buffer = RandomBytes(kBufferSize);
    for (auto _ : state)
        benchmark::DoNotOptimize(XXH32(buffer.data(), kBufferSize, 0));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kBufferSize));
}
BENCHMARK(BM_XXH32_64K);

// The peer: the obvious dump, one snprintf per byte and per line part, in
// the same layout (16 bytes per line).
std::string SnprintfHexDump(const unsigned char* data, unsigned size)
{
    std::string dump;
    for (unsigned offset = 0; offset < size; offset += 16)
    {
        const unsigned count = size - offset < 16 ? size - offset : 16;
        char hex[256] = "";
        char text[256] = "";
        int hexLength = 0;
        for (unsigned k = 0; k < count; ++k)
        {
            hexLength += std::snprintf(hex + hexLength, sizeof hex - static_cast<unsigned>(hexLength), "%s%02x",
                                       k % 4 == 0 ? " " : "", data[offset + k]);
            const unsigned char c = data[offset + k];
            text[k] = (c >= 0x20 && c <= 0x7e) ? static_cast<char>(c) : '.';
            text[k + 1] = '\0';
        }
        char line[256];
        std::snprintf(line, sizeof line, "%s%0*x%s%-*.*s%s%s", "0x", 8, offset, ":   ", 36, 36, hex, "    ", text);
        dump += line;
        dump += "\r\n";
    }
    return dump;
}

void BM_HexDump64K(benchmark::State& state)
{
    const auto buffer = RandomBytes(kBufferSize);
    for (auto _ : state)
        benchmark::DoNotOptimize(Zantor::BufferToHexDumpString(buffer.data(), kBufferSize, 16, 0));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kBufferSize));
}
BENCHMARK(BM_HexDump64K);

void BM_SnprintfHexDump64K(benchmark::State& state)
{
    const auto buffer = RandomBytes(kBufferSize);
    if (SnprintfHexDump(buffer.data(), kBufferSize) != Zantor::BufferToHexDumpString(buffer.data(), kBufferSize, 16, 0))
    {
        state.SkipWithError("the two dumps differ");
        return;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(SnprintfHexDump(buffer.data(), kBufferSize));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kBufferSize));
}
BENCHMARK(BM_SnprintfHexDump64K);

} // namespace
