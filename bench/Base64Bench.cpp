// Base64 of 64 KiB, encode and decode, with and without padding, against
// Boost.Beast's Base64 (the header-only codec a user of Boost would pick).
// Throughput is reported as bytes of binary data per second.
#include <ZantorMiddleware/ZantorBase/FieldTypes/BinaryArray.h>

#include <boost/beast/core/detail/base64.hpp>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using Zantor::BinaryArray;

constexpr unsigned kSize = 64 * 1024;

std::vector<unsigned char> Data()
{
    std::vector<unsigned char> data(kSize);
    unsigned state = 12345;
    for (unsigned char& byte : data)
        byte = static_cast<unsigned char>((state = state * 1103515245u + 12345u) >> 16);
    return data;
}

void BM_Encode_Library(benchmark::State& state)
{
    const std::vector<unsigned char> data = Data();
    const bool padded = state.range(0) != 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(BinaryArray::ToBase64(data.data(), kSize, padded));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kSize);
}

void BM_Encode_BoostBeast(benchmark::State& state)
{
    const std::vector<unsigned char> data = Data();
    for (auto _ : state)
    {
        std::string text(boost::beast::detail::base64::encoded_size(kSize), '\0');
        text.resize(boost::beast::detail::base64::encode(text.data(), data.data(), kSize));
        benchmark::DoNotOptimize(text);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kSize);
}

void BM_Decode_Library(benchmark::State& state)
{
    const std::vector<unsigned char> data = Data();
    const bool padded = state.range(0) != 0;
    const std::string text = BinaryArray::ToBase64(data.data(), kSize, padded);
    std::vector<unsigned char> out(BinaryArray::MaxBase64DecodedLength(text.size()));
    unsigned length = 0;
    for (auto _ : state)
    {
        if (BinaryArray::FromBase64(text.data(), text.size(), padded, out.data(), out.size(), length) !=
                Zantor::STATUS_CODE_SUCCESS || length != kSize)
        {
            std::fprintf(stderr, "decode failed\n");
            std::abort();
        }
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kSize);
}

void BM_Decode_BoostBeast(benchmark::State& state)
{
    const std::vector<unsigned char> data = Data();
    const std::string text = BinaryArray::ToBase64(data.data(), kSize, true);
    std::vector<unsigned char> out(boost::beast::detail::base64::decoded_size(text.size()));
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(boost::beast::detail::base64::decode(out.data(), text.data(), text.size()));
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kSize);
}

BENCHMARK(BM_Encode_Library)->ArgName("padded")->Arg(1)->Arg(0);
BENCHMARK(BM_Encode_BoostBeast);
BENCHMARK(BM_Decode_Library)->ArgName("padded")->Arg(1)->Arg(0);
BENCHMARK(BM_Decode_BoostBeast);

} // namespace
