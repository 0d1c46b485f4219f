// MessageBuilder against a hand-written encoder: a 64-byte market-data update
// of mixed 1-, 2-, 4- and 8-byte integers, in both byte orders, field by
// field and as one record (AppendBuiltIns), and the
// growth of a builder fed 1 MiB in 8-byte pieces.
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

using Zantor::MessageBuilder;
using Zantor::MessageHandler;

// A quote update as a feed handler sends it: 64 bytes on the wire.
struct Update
{
    std::uint8_t messageType;
    std::uint8_t flags;
    std::uint16_t marketId;
    std::uint32_t instrumentId;
    std::uint64_t sequence;
    std::int64_t bidPrice;
    std::int64_t askPrice;
    std::uint32_t bidSize;
    std::uint32_t askSize;
    std::uint64_t exchangeTime;
    std::int64_t lastPrice;
    std::uint32_t lastSize;
    std::int8_t priceExponent;
    std::uint8_t tradingStatus;
    std::uint16_t conditions;
};
constexpr unsigned kUpdateSize = 64;

Update SampleUpdate()
{
    return Update{0x51, 0x03, 0x0102, 4242, 0x0001020304050607, 1234567, 1234589, 500, 700,
                  0x17D4A5B3C2E10000, -1234570, 100, -4, 2, 0x8001};
}

// Each encoder is a function called once per message, as in a feed handler;
// the byte order is a constant at the call site.
template <MessageHandler::Endian e>
[[gnu::noinline]] void BuildWithBuilder(MessageBuilder& b, const Update& u)
{
    b.AppendUInt8(u.messageType);
    b.AppendUInt8(u.flags);
    b.AppendUInt16(u.marketId, e);
    b.AppendUInt32(u.instrumentId, e);
    b.AppendUInt64(u.sequence, e);
    b.AppendInt64(u.bidPrice, e);
    b.AppendInt64(u.askPrice, e);
    b.AppendUInt32(u.bidSize, e);
    b.AppendUInt32(u.askSize, e);
    b.AppendUInt64(u.exchangeTime, e);
    b.AppendInt64(u.lastPrice, e);
    b.AppendUInt32(u.lastSize, e);
    b.AppendInt8(u.priceExponent);
    b.AppendUInt8(u.tradingStatus);
    b.AppendUInt16(u.conditions, e);
}

// The same message with one bounds check for the whole record.
template <MessageHandler::Endian e>
[[gnu::noinline]] void BuildWithBuilderBatched(MessageBuilder& b, const Update& u)
{
    b.AppendBuiltIns(e, u.messageType, u.flags, u.marketId, u.instrumentId, u.sequence, u.bidPrice, u.askPrice,
                     u.bidSize, u.askSize, u.exchangeTime, u.lastPrice, u.lastSize, u.priceExponent,
                     u.tradingStatus, u.conditions);
}

// The encoder a user would write by hand: fixed offsets, no checks.
template <bool Big, typename T>
inline void Store(unsigned char* p, T value)
{
    if constexpr (Big && sizeof(T) == 2)
        value = static_cast<T>(__builtin_bswap16(static_cast<std::uint16_t>(value)));
    else if constexpr (Big && sizeof(T) == 4)
        value = static_cast<T>(__builtin_bswap32(static_cast<std::uint32_t>(value)));
    else if constexpr (Big && sizeof(T) == 8)
        value = static_cast<T>(__builtin_bswap64(static_cast<std::uint64_t>(value)));
    std::memcpy(p, &value, sizeof(T));
}

template <bool Big>
[[gnu::noinline]] void BuildByHand(unsigned char* p, const Update& u)
{
    Store<Big>(p + 0, u.messageType);
    Store<Big>(p + 1, u.flags);
    Store<Big>(p + 2, u.marketId);
    Store<Big>(p + 4, u.instrumentId);
    Store<Big>(p + 8, u.sequence);
    Store<Big>(p + 16, u.bidPrice);
    Store<Big>(p + 24, u.askPrice);
    Store<Big>(p + 32, u.bidSize);
    Store<Big>(p + 36, u.askSize);
    Store<Big>(p + 40, u.exchangeTime);
    Store<Big>(p + 48, u.lastPrice);
    Store<Big>(p + 56, u.lastSize);
    Store<Big>(p + 60, u.priceExponent);
    Store<Big>(p + 61, u.tradingStatus);
    Store<Big>(p + 62, u.conditions);
}

// Every encoder must produce the same bytes, or the comparison means nothing.
template <MessageHandler::Endian E>
void VerifySameBytes()
{
    const Update update = SampleUpdate();
    unsigned char hand[kUpdateSize];
    BuildByHand<E == MessageHandler::ENDIAN_BIG>(hand, update);
    for (auto encode : {&BuildWithBuilder<E>, &BuildWithBuilderBatched<E>})
    {
        unsigned char storage[128];
        MessageBuilder builder(storage, sizeof storage);
        encode(builder, update);
        if (builder.GetLength() != kUpdateSize || std::memcmp(builder.GetBuffer(), hand, kUpdateSize) != 0)
        {
            std::fprintf(stderr, "MessageBuilderBench: a builder encoder and the hand-written one differ (%s)\n",
                         E == MessageHandler::ENDIAN_BIG ? "big-endian" : "little-endian");
            std::abort();
        }
    }
}

using BuilderEncoder = void (*)(MessageBuilder&, const Update&);

// A builder over the caller's stack buffer for every message, as a feed
// handler does, filled by one of the builder encoders.
template <MessageHandler::Endian E, BuilderEncoder Encode>
void Builder(benchmark::State& state)
{
    VerifySameBytes<E>();
    Update update = SampleUpdate();
    unsigned char storage[128];
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(update);
        MessageBuilder builder(storage, sizeof storage);
        Encode(builder, update);
        benchmark::DoNotOptimize(builder.GetBuffer());
        benchmark::ClobberMemory();
        ++update.sequence;
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kUpdateSize);
}

template <bool Big>
void HandWritten(benchmark::State& state)
{
    VerifySameBytes<(Big ? MessageHandler::ENDIAN_BIG : MessageHandler::ENDIAN_LITTLE)>();
    Update update = SampleUpdate();
    unsigned char storage[128];
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(update);
        unsigned char* p = storage;
        benchmark::DoNotOptimize(p);
        BuildByHand<Big>(p, update);
        benchmark::ClobberMemory();
        ++update.sequence;
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kUpdateSize);
}

constexpr auto LE = MessageHandler::ENDIAN_LITTLE;
constexpr auto BE = MessageHandler::ENDIAN_BIG;
BENCHMARK(Builder<LE, &BuildWithBuilder<LE>>)->Name("Update64/LE/MessageBuilder");
BENCHMARK(Builder<LE, &BuildWithBuilderBatched<LE>>)->Name("Update64/LE/MessageBuilderBatched");
BENCHMARK(HandWritten<false>)->Name("Update64/LE/HandWritten");
BENCHMARK(Builder<BE, &BuildWithBuilder<BE>>)->Name("Update64/BE/MessageBuilder");
BENCHMARK(Builder<BE, &BuildWithBuilderBatched<BE>>)->Name("Update64/BE/MessageBuilderBatched");
BENCHMARK(HandWritten<true>)->Name("Update64/BE/HandWritten");

// 1 MiB in 8-byte pieces from an empty growable builder.
constexpr unsigned kMiB = 1u << 20;

void GrowOneMebibyte(benchmark::State& state)
{
    unsigned reallocations = 0;
    for (auto _ : state)
    {
        MessageBuilder builder;
        for (std::uint64_t i = 0; i < kMiB / 8; ++i)
            builder.AppendUInt64(i, MessageHandler::ENDIAN_LITTLE);
        benchmark::DoNotOptimize(builder.GetBuffer());
        if (builder.GetLength() != kMiB)
            std::abort();
    }
    {
        // Counted outside the timed loop: every capacity change is one
        // allocation or reallocation.
        MessageBuilder builder;
        for (std::uint64_t i = 0; i < kMiB / 8; ++i)
        {
            const unsigned before = builder.GetCapacity();
            builder.AppendUInt64(i, MessageHandler::ENDIAN_LITTLE);
            reallocations += builder.GetCapacity() != before;
        }
    }
    state.counters["reallocations"] = reallocations;
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kMiB);
}

// The peer: a std::vector grown by the standard library's own rule.
void GrowOneMebibyteVector(benchmark::State& state)
{
    for (auto _ : state)
    {
        std::vector<unsigned char> bytes;
        for (std::uint64_t i = 0; i < kMiB / 8; ++i)
        {
            const auto* p = reinterpret_cast<const unsigned char*>(&i);
            bytes.insert(bytes.end(), p, p + 8);
        }
        benchmark::DoNotOptimize(bytes.data());
    }
    unsigned reallocations = 0;
    std::vector<unsigned char> bytes;
    for (std::uint64_t i = 0; i < kMiB / 8; ++i)
    {
        const std::size_t before = bytes.capacity();
        const auto* p = reinterpret_cast<const unsigned char*>(&i);
        bytes.insert(bytes.end(), p, p + 8);
        reallocations += bytes.capacity() != before;
    }
    state.counters["reallocations"] = reallocations;
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kMiB);
}

BENCHMARK(GrowOneMebibyte)->Name("Append1MiB/8ByteUInt64/MessageBuilder")->Unit(benchmark::kMicrosecond);
BENCHMARK(GrowOneMebibyteVector)->Name("Append1MiB/8ByteUInt64/StdVector")->Unit(benchmark::kMicrosecond);

} // namespace
