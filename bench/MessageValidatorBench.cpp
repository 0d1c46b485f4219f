// MessageValidator hot paths side by side with the peers a user would pick:
// decimal fields into integers against std::from_chars on the same bytes,
// and exact-byte checks against memcmp.
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <benchmark/benchmark.h>

#include <charconv>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

using namespace Zantor;

namespace {

constexpr unsigned fieldCount = 1024;

// fieldCount decimal fields of exactly `digits` characters each, back to
// back, with values in [low, high].
std::string MakeFields(unsigned digits, std::uint64_t low, std::uint64_t high)
{
    std::mt19937_64 random(digits);
    std::uniform_int_distribution<std::uint64_t> distribution(low, high);
    std::string message;
    char text[32];
    for (unsigned i = 0; i < fieldCount; ++i)
    {
        std::snprintf(text, sizeof text, "%0*" PRIu64, static_cast<int>(digits), distribution(random));
        message.append(text, digits);
    }
    return message;
}

template <typename T>
void ValidatorDecimal(benchmark::State& state, unsigned digits, std::uint64_t low, std::uint64_t high)
{
    const std::string message = MakeFields(digits, low, high);
    for (auto _ : state)
    {
        MessageValidator validator(message.data(), static_cast<unsigned>(message.size()));
        T sum = 0;
        for (unsigned i = 0; i < fieldCount; ++i)
        {
            T value;
            if (validator.ValidateUnsignedAsciiIntegral(digits, &value) != STATUS_CODE_SUCCESS)
            {
                state.SkipWithError("validation failed");
                return;
            }
            sum += value;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * fieldCount);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * fieldCount * digits);
}

template <typename T>
void FromCharsDecimal(benchmark::State& state, unsigned digits, std::uint64_t low, std::uint64_t high)
{
    const std::string message = MakeFields(digits, low, high);
    for (auto _ : state)
    {
        const char* cursor = message.data();
        T sum = 0;
        for (unsigned i = 0; i < fieldCount; ++i)
        {
            T value;
            const auto result = std::from_chars(cursor, cursor + digits, value);
            if (result.ec != std::errc{} || result.ptr != cursor + digits)
            {
                state.SkipWithError("from_chars failed");
                return;
            }
            cursor += digits;
            sum += value;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * fieldCount);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * fieldCount * digits);
}

constexpr std::uint64_t max32 = 4294967295u;
constexpr std::uint64_t max64 = 18446744073709551615u;

void BM_Validator_UInt32_10Digits(benchmark::State& state) { ValidatorDecimal<std::uint32_t>(state, 10, 1000000000u, max32); }
void BM_FromChars_UInt32_10Digits(benchmark::State& state) { FromCharsDecimal<std::uint32_t>(state, 10, 1000000000u, max32); }
void BM_Validator_UInt64_10Digits(benchmark::State& state) { ValidatorDecimal<std::uint64_t>(state, 10, 0, 9999999999u); }
void BM_FromChars_UInt64_10Digits(benchmark::State& state) { FromCharsDecimal<std::uint64_t>(state, 10, 0, 9999999999u); }
void BM_Validator_UInt64_19Digits(benchmark::State& state)
{
    ValidatorDecimal<std::uint64_t>(state, 19, 1000000000000000000u, 9999999999999999999u);
}
void BM_FromChars_UInt64_19Digits(benchmark::State& state)
{
    FromCharsDecimal<std::uint64_t>(state, 19, 1000000000000000000u, 9999999999999999999u);
}
void BM_Validator_UInt64_20Digits(benchmark::State& state)
{
    ValidatorDecimal<std::uint64_t>(state, 20, 10000000000000000000u, max64);
}
void BM_FromChars_UInt64_20Digits(benchmark::State& state)
{
    FromCharsDecimal<std::uint64_t>(state, 20, 10000000000000000000u, max64);
}

BENCHMARK(BM_Validator_UInt32_10Digits);
BENCHMARK(BM_FromChars_UInt32_10Digits);
BENCHMARK(BM_Validator_UInt64_10Digits);
BENCHMARK(BM_FromChars_UInt64_10Digits);
BENCHMARK(BM_Validator_UInt64_19Digits);
BENCHMARK(BM_FromChars_UInt64_19Digits);
BENCHMARK(BM_Validator_UInt64_20Digits);
BENCHMARK(BM_FromChars_UInt64_20Digits);

// Exact bytes: a message of fieldCount copies of one pattern of size bytes.
std::string MakePattern(unsigned size)
{
    std::string pattern(size, '\0');
    for (unsigned i = 0; i < size; ++i)
        pattern[i] = static_cast<char>('A' + i % 26);
    return pattern;
}

std::string Repeat(const std::string& pattern)
{
    std::string message;
    for (unsigned i = 0; i < fieldCount; ++i)
        message += pattern;
    return message;
}

void BM_Validator_ExactBytes(benchmark::State& state)
{
    const unsigned size = static_cast<unsigned>(state.range(0));
    const std::string pattern = MakePattern(size);
    const std::string message = Repeat(pattern);
    for (auto _ : state)
    {
        MessageValidator validator(message.data(), static_cast<unsigned>(message.size()));
        unsigned matched = 0;
        for (unsigned i = 0; i < fieldCount; ++i)
            matched += validator.ValidateBytes(size, pattern.data(), nullptr) == STATUS_CODE_SUCCESS;
        benchmark::DoNotOptimize(matched);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * fieldCount * size);
}

void BM_Memcmp_ExactBytes(benchmark::State& state)
{
    const unsigned size = static_cast<unsigned>(state.range(0));
    const std::string pattern = MakePattern(size);
    const std::string message = Repeat(pattern);
    for (auto _ : state)
    {
        const char* cursor = message.data();
        const char* end = cursor + message.size();
        unsigned matched = 0;
        for (unsigned i = 0; i < fieldCount; ++i)
        {
            if (static_cast<std::size_t>(end - cursor) < size)
                break;
            if (std::memcmp(cursor, pattern.data(), size) == 0)
            {
                ++matched;
                cursor += size;
            }
        }
        benchmark::DoNotOptimize(matched);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * fieldCount * size);
}

BENCHMARK(BM_Validator_ExactBytes)->Arg(4)->Arg(16)->Arg(64);
BENCHMARK(BM_Memcmp_ExactBytes)->Arg(4)->Arg(16)->Arg(64);

} // namespace
