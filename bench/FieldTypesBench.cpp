// Field values on the wire: a quote update of ten fields (a short symbol,
// bid, ask and last as Rational with 2 and 4 decimal places and 1/256
// fractions, bid and ask sizes as UInt, a TRational last trade, a Boolean,
// a Date and a Time with milliseconds) encoded with SerializeLengthAndBody
// and decoded with DeserializeLengthAndBody, side by side with
// - a hand-written encoder/decoder that produces the same bytes without
//   checks or virtual calls (the practical limit), and
// - the same quote as a Protocol Buffers message (the peer a user would
//   otherwise pick).
// The setup aborts unless the library and the hand-written encoder give
// identical bytes. Every benchmark counts heap allocations per message; the
// wire size of each form is reported as a counter.
#include <ZantorMiddleware/ZantorBase/FieldTypes/Boolean.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Date.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Rational.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/TRational.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/TextString.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Time.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/UInt.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include "Quote.pb.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

// Every allocation of the program is counted, so each benchmark can report
// the allocations its loop made. The replacement pair is malloc and free,
// which GCC cannot see through.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif
namespace {
std::size_t g_allocations = 0;
}
void* operator new(std::size_t size)
{
    ++g_allocations;
    if (void* p = std::malloc(size != 0 ? size : 1))
        return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {

using namespace Zantor;

// The quote's values, as a feed handler holds them before encoding.
struct Quote
{
    std::string symbol = "EURUSD.SPOT";
    std::int64_t bid = 108421;         // 1084.21, 2 places
    std::int64_t ask = -10843375;      // -1084.3375, 4 places
    std::int64_t last = 277571;        // 1084 67/256
    std::uint64_t bidSize = 1500000;
    std::uint64_t askSize = 250;
    std::int64_t trade = 108422;       // 1084.22, tick 1, trends 2 and 1
    unsigned tick = 1, firstTrend = 2, secondTrend = 1;
    bool halted = false;
    unsigned year = 2026, month = 11, day = 23;
    unsigned hour = 14, minute = 30, second = 5, millisecond = 789;
};
constexpr unsigned kBid = 2, kAsk = 4, kLast = 26, kTrade = 2; // denominator codes

// ---- the library's field values ----

struct LibraryQuote
{
    TextString symbol;
    Rational bid, ask, last;
    UInt bidSize, askSize;
    TRational trade;
    Boolean halted;
    Date date;
    Time time;

    explicit LibraryQuote(const Quote& q)
        : symbol(q.symbol),
          bid(q.bid, static_cast<Rational::Denominator>(kBid)),
          ask(q.ask, static_cast<Rational::Denominator>(kAsk)),
          last(q.last, static_cast<Rational::Denominator>(kLast)),
          bidSize(q.bidSize),
          askSize(q.askSize),
          trade(q.trade, static_cast<Rational::Denominator>(kTrade), static_cast<TRational::Tick>(q.tick),
                static_cast<TRational::Trend>(q.firstTrend), static_cast<TRational::Trend>(q.secondTrend)),
          halted(q.halted),
          date(q.year, static_cast<unsigned char>(q.month), static_cast<unsigned char>(q.day)),
          time(static_cast<unsigned char>(q.hour), static_cast<unsigned char>(q.minute),
               static_cast<unsigned char>(q.second), q.millisecond)
    {
    }
    LibraryQuote() = default;
};

[[gnu::noinline]] StatusCode EncodeLibrary(MessageBuilder& b, const LibraryQuote& q)
{
    StatusCode s = q.symbol.SerializeLengthAndBody(b, 255);
    s |= q.bid.SerializeLengthAndBody(b, 9);
    s |= q.ask.SerializeLengthAndBody(b, 9);
    s |= q.last.SerializeLengthAndBody(b, 9);
    s |= q.bidSize.SerializeLengthAndBody(b, 8);
    s |= q.askSize.SerializeLengthAndBody(b, 8);
    s |= q.trade.SerializeLengthAndBody(b, 10);
    s |= q.halted.SerializeLengthAndBody(b, 1);
    s |= q.date.SerializeLengthAndBody(b, 3);
    s |= q.time.SerializeLengthAndBody(b, 4);
    return s;
}

[[gnu::noinline]] StatusCode DecodeLibrary(MessageValidator& v, LibraryQuote& q)
{
    StatusCode s = q.symbol.DeserializeLengthAndBody(v, 255);
    s |= q.bid.DeserializeLengthAndBody(v, 9);
    s |= q.ask.DeserializeLengthAndBody(v, 9);
    s |= q.last.DeserializeLengthAndBody(v, 9);
    s |= q.bidSize.DeserializeLengthAndBody(v, 8);
    s |= q.askSize.DeserializeLengthAndBody(v, 8);
    s |= q.trade.DeserializeLengthAndBody(v, 10);
    s |= q.halted.DeserializeLengthAndBody(v, 1);
    s |= q.date.DeserializeLengthAndBody(v, 3);
    s |= q.time.DeserializeLengthAndBody(v, 4);
    return s;
}

// ---- hand-written: the same bytes, no checks, no virtual calls ----

inline unsigned WidthCode(std::uint64_t magnitude)
{
    return magnitude < 0x100 ? 0 : magnitude < 0x10000 ? 1 : magnitude < 0x100000000 ? 2 : 3;
}

inline unsigned char* PutLittle(unsigned char* p, std::uint64_t value, unsigned size)
{
    std::memcpy(p, &value, size); // little-endian machine
    return p + size;
}

inline unsigned char* PutRational(unsigned char* p, std::int64_t numerator, unsigned denominator)
{
    const std::uint64_t magnitude = numerator < 0 ? 0 - static_cast<std::uint64_t>(numerator) : numerator;
    const unsigned w = WidthCode(magnitude);
    *p++ = static_cast<unsigned char>((numerator < 0 ? 0x80 : 0) | w << 5 | denominator);
    return PutLittle(p, magnitude, 1u << w);
}

[[gnu::noinline]] unsigned EncodeHandWritten(unsigned char* out, const Quote& q)
{
    unsigned char* p = out;
    *p++ = static_cast<unsigned char>(q.symbol.size());
    std::memcpy(p, q.symbol.data(), q.symbol.size());
    p += q.symbol.size();
    p = PutRational(p, q.bid, kBid);
    p = PutRational(p, q.ask, kAsk);
    p = PutRational(p, q.last, kLast);
    for (const std::uint64_t size : {q.bidSize, q.askSize})
    {
        const unsigned width = 1u << WidthCode(size);
        *p++ = static_cast<unsigned char>(width);
        p = PutLittle(p, size, width);
    }
    p = PutRational(p, q.trade, kTrade);
    *p++ = static_cast<unsigned char>(q.tick << 4 | q.firstTrend << 2 | q.secondTrend);
    *p++ = q.halted ? 1 : 0;
    p = PutLittle(p, q.year << 9 | q.month << 5 | q.day, 3);
    const std::uint32_t time = 0x80000000u | q.millisecond << 17 | q.second << 11 | q.minute << 5 | q.hour;
    *p++ = static_cast<unsigned char>(time >> 24);
    *p++ = static_cast<unsigned char>(time >> 16);
    *p++ = static_cast<unsigned char>(time >> 8);
    *p++ = static_cast<unsigned char>(time);
    return static_cast<unsigned>(p - out);
}

inline const unsigned char* GetRational(const unsigned char* p, std::int64_t& numerator, unsigned& denominator)
{
    const unsigned head = *p++;
    const unsigned size = 1u << (head >> 5 & 3);
    std::uint64_t magnitude = 0;
    std::memcpy(&magnitude, p, size);
    numerator = head & 0x80 ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
    denominator = head & 0x1F;
    return p + size;
}

[[gnu::noinline]] void DecodeHandWritten(const unsigned char* p, Quote& q, char (&symbol)[32], unsigned& symbolLength)
{
    symbolLength = *p++;
    std::memcpy(symbol, p, symbolLength);
    p += symbolLength;
    unsigned denominator = 0;
    p = GetRational(p, q.bid, denominator);
    p = GetRational(p, q.ask, denominator);
    p = GetRational(p, q.last, denominator);
    for (std::uint64_t* size : {&q.bidSize, &q.askSize})
    {
        const unsigned width = *p++;
        *size = 0;
        std::memcpy(size, p, width);
        p += width;
    }
    p = GetRational(p, q.trade, denominator);
    q.tick = *p >> 4 & 3;
    q.firstTrend = *p >> 2 & 3;
    q.secondTrend = *p++ & 3;
    q.halted = *p++ != 0;
    const std::uint32_t date = p[0] | p[1] << 8 | p[2] << 16;
    p += 3;
    q.year = date >> 9;
    q.month = date >> 5 & 0xF;
    q.day = date & 0x1F;
    const std::uint32_t time = std::uint32_t{p[0]} << 24 | p[1] << 16 | p[2] << 8 | p[3];
    q.millisecond = time >> 17 & 0x3FF;
    q.second = time >> 11 & 0x3F;
    q.minute = time >> 5 & 0x3F;
    q.hour = time & 0x1F;
}

// ---- Protocol Buffers ----

zantorbench::Quote ToProtobuf(const Quote& q)
{
    zantorbench::Quote m;
    m.set_symbol(q.symbol);
    m.set_bid(q.bid);
    m.set_bid_denominator(kBid);
    m.set_ask(q.ask);
    m.set_ask_denominator(kAsk);
    m.set_last(q.last);
    m.set_last_denominator(kLast);
    m.set_bid_size(q.bidSize);
    m.set_ask_size(q.askSize);
    m.set_trade(q.trade);
    m.set_trade_denominator(kTrade);
    m.set_trade_codes(q.tick << 4 | q.firstTrend << 2 | q.secondTrend);
    m.set_halted(q.halted);
    m.set_date(q.year * 10000 + q.month * 100 + q.day);
    m.set_time(((q.hour * 60 + q.minute) * 60 + q.second) * 1000 + q.millisecond);
    return m;
}

// ---- the set-up check and the benchmarks ----

struct Encoded
{
    unsigned char bytes[128];
    unsigned length;
};

const Encoded& LibraryBytes()
{
    static const Encoded encoded = [] {
        Encoded e{};
        MessageBuilder builder(e.bytes, sizeof e.bytes, false);
        const LibraryQuote quote{Quote()};
        unsigned char reference[128];
        const unsigned referenceLength = EncodeHandWritten(reference, Quote());
        if (EncodeLibrary(builder, quote) != STATUS_CODE_SUCCESS || builder.GetLength() != referenceLength ||
            std::memcmp(e.bytes, reference, referenceLength) != 0)
        {
            std::fprintf(stderr, "the library and the hand-written encoder disagree\n");
            std::abort();
        }
        e.length = builder.GetLength();
        return e;
    }();
    return encoded;
}

void Report(benchmark::State& state, std::size_t allocationsBefore, unsigned wireBytes)
{
    state.counters["allocs/msg"] = static_cast<double>(g_allocations - allocationsBefore) /
                                   static_cast<double>(state.iterations());
    state.counters["wire_bytes"] = wireBytes;
}

void BM_Encode_Library(benchmark::State& state)
{
    const LibraryQuote quote{Quote()};
    unsigned char storage[128];
    const std::size_t before = g_allocations;
    for (auto _ : state)
    {
        MessageBuilder builder(storage, sizeof storage, false);
        benchmark::DoNotOptimize(EncodeLibrary(builder, quote));
        benchmark::DoNotOptimize(storage);
    }
    Report(state, before, LibraryBytes().length);
}

void BM_Encode_HandWritten(benchmark::State& state)
{
    const Quote quote;
    unsigned char storage[128];
    const std::size_t before = g_allocations;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(EncodeHandWritten(storage, quote));
        benchmark::DoNotOptimize(storage);
    }
    Report(state, before, LibraryBytes().length);
}

void BM_Encode_Protobuf(benchmark::State& state)
{
    const Quote quote;
    const zantorbench::Quote message = ToProtobuf(quote);
    unsigned char storage[128];
    const std::size_t before = g_allocations;
    for (auto _ : state)
    {
        // The message is filled per message, as the library's values are
        // filled before they are encoded.
        zantorbench::Quote m = message;
        benchmark::DoNotOptimize(m.SerializeToArray(storage, sizeof storage));
        benchmark::DoNotOptimize(storage);
    }
    Report(state, before, static_cast<unsigned>(message.ByteSizeLong()));
}

void BM_Encode_ProtobufPrefilled(benchmark::State& state)
{
    const zantorbench::Quote message = ToProtobuf(Quote());
    unsigned char storage[128];
    const std::size_t before = g_allocations;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(message.SerializeToArray(storage, sizeof storage));
        benchmark::DoNotOptimize(storage);
    }
    Report(state, before, static_cast<unsigned>(message.ByteSizeLong()));
}

void BM_Decode_Library(benchmark::State& state)
{
    const Encoded& encoded = LibraryBytes();
    LibraryQuote quote;
    const std::size_t before = g_allocations;
    for (auto _ : state)
    {
        MessageValidator validator(encoded.bytes, encoded.length);
        benchmark::DoNotOptimize(DecodeLibrary(validator, quote));
        benchmark::ClobberMemory();
    }
    Report(state, before, encoded.length);
}

void BM_Decode_HandWritten(benchmark::State& state)
{
    const Encoded& encoded = LibraryBytes();
    Quote quote;
    char symbol[32];
    unsigned symbolLength = 0;
    const std::size_t before = g_allocations;
    for (auto _ : state)
    {
        DecodeHandWritten(encoded.bytes, quote, symbol, symbolLength);
        benchmark::DoNotOptimize(quote);
        benchmark::DoNotOptimize(symbol);
    }
    Report(state, before, encoded.length);
}

void BM_Decode_Protobuf(benchmark::State& state)
{
    const zantorbench::Quote message = ToProtobuf(Quote());
    const std::string bytes = message.SerializeAsString();
    zantorbench::Quote decoded;
    const std::size_t before = g_allocations;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(decoded.ParseFromArray(bytes.data(), static_cast<int>(bytes.size())));
        benchmark::ClobberMemory();
    }
    Report(state, before, static_cast<unsigned>(bytes.size()));
}

BENCHMARK(BM_Encode_Library);
BENCHMARK(BM_Encode_HandWritten);
BENCHMARK(BM_Encode_Protobuf);
BENCHMARK(BM_Encode_ProtobufPrefilled);
BENCHMARK(BM_Decode_Library);
BENCHMARK(BM_Decode_HandWritten);
BENCHMARK(BM_Decode_Protobuf);

} // namespace
