// GenericHash against published lookup2 values and against a second,
// independently written lookup2.
#include <ZantorMiddleware/ZantorBase/GenericHash.h>

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace Zantor {
namespace {

// Values printed by Bob Jenkins's lookup2.c hash() with the given initial
// value, as listed by public ports of it that check against the C code.
TEST(GenericHashTest, PublishedValues)
{
    const std::string fox = "The quick brown fox jumps over the lazy dog";
    struct Row { int line; std::string key; std::uint32_t expected; std::uint32_t initialValue = 0; };
    const Row rows[] = {
        {__LINE__, "", 3175731469u},
        {__LINE__, "a", 703514648u},
        {__LINE__, "ab", 2558110785u},
        {__LINE__, "abc", 622741395u},
        {__LINE__, "abcd", 1525030821u},
        {__LINE__, "abcdefgh", 88045406u},
        {__LINE__, "hello", 3070638494u},
        {__LINE__, "wow", 627410295u},
        {__LINE__, std::string(1, '\0'), 1843378377u},
        {__LINE__, std::string(2, '\0'), 1948748577u},
        {__LINE__, std::string(3, '\0'), 49118037u},
        {__LINE__, std::string(4, '\0'), 2305145833u},
        {__LINE__, std::string(1, '\1'), 3107525544u},
        {__LINE__, std::string("\xff\x80\x40\x01", 4), 3359486273u},
        {__LINE__, "this is 11c", 3384459500u},
        {__LINE__, "this is 12ch", 313177311u},
        {__LINE__, "hello, world", 933292425u},
        {__LINE__, "this is >12ch", 2321813933u},
        {__LINE__, "message digest", 1183305218u},
        {__LINE__, "My hovercraft is full of eels.", 2243816318u},
        {__LINE__, "this is much large than 12 characters", 2771373033u},
        {__LINE__, fox + fox + fox + fox + fox, 2138388378u},
        // Chained: the previous hash as the initial value.
        {__LINE__, "hello", 1535955511u, 3070638494u},
        {__LINE__, "wow", 320141986u, 627410295u},
        {__LINE__, std::string(1, '\0'), 1948748577u, 1},
        {__LINE__, std::string(2, '\0'), 49118037u, 1},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(row.expected, GenericHash(row.key.data(), static_cast<unsigned>(row.key.size()), row.initialValue));
    }
    EXPECT_EQ(3175731469u, GenericHash(nullptr, 0, 0));
}

// A second lookup2, written from the algorithm's description: state words
// filled byte by byte, one mix per 12 bytes, the tail added by position.
std::uint32_t ReferenceLookup2(const std::vector<unsigned char>& key, std::uint32_t initialValue)
{
    std::uint32_t state[3] = {0x9e3779b9u, 0x9e3779b9u, initialValue};
    auto mix = [&state]() {
        const int shifts[9] = {13, -8, 13, 12, -16, 5, 3, -10, 15}; // negative: shift left
        for (int round = 0; round < 9; ++round)
        {
            std::uint32_t& target = state[round % 3];
            const std::uint32_t& x = state[(round + 1) % 3];
            const std::uint32_t& y = state[(round + 2) % 3];
            target = target - x - y;
            const int s = shifts[round];
            const std::uint32_t source = y;
            target ^= s > 0 ? (source >> s) : (source << -s);
        }
    };
    std::size_t i = 0;
    for (; key.size() - i >= 12; i += 12)
    {
        for (std::size_t j = 0; j < 12; ++j)
            state[j / 4] += static_cast<std::uint32_t>(key[i + j]) << (8 * (j % 4));
        mix();
    }
    state[2] += static_cast<std::uint32_t>(key.size());
    for (std::size_t j = 0; i + j < key.size(); ++j)
    {
        const std::size_t word = j / 4;
        const std::size_t shift = word == 2 ? 8 * (j % 4 + 1) : 8 * (j % 4);
        state[word] += static_cast<std::uint32_t>(key[i + j]) << shift;
    }
    mix();
    return state[2];
}

TEST(GenericHashTest, AgreesWithSecondImplementation)
{
    std::mt19937 random(1996);
    for (unsigned size = 0; size <= 200; ++size)
    {
        std::vector<unsigned char> key(size);
        for (auto& b : key)
            b = static_cast<unsigned char>(random());
        const std::uint32_t initialValue = random();
        SCOPED_TRACE(size);
        EXPECT_EQ(ReferenceLookup2(key, initialValue), GenericHash(key.data(), size, initialValue));
    }
}

// The same key at every alignment hashes alike; its length and the initial
// value both count.
TEST(GenericHashTest, AlignmentLengthAndInitialValue)
{
    const std::string key = "an unaligned key of some length";
    const std::uint32_t expected = GenericHash(key.data(), static_cast<unsigned>(key.size()), 7);
    std::vector<unsigned char> storage(key.size() + 16);
    for (std::size_t offset = 0; offset < 16; ++offset)
    {
        std::memcpy(storage.data() + offset, key.data(), key.size());
        EXPECT_EQ(expected, GenericHash(storage.data() + offset, static_cast<unsigned>(key.size()), 7)) << offset;
    }
    const std::vector<unsigned char> zeros(24, 0);
    EXPECT_NE(GenericHash(zeros.data(), 23, 0), GenericHash(zeros.data(), 24, 0));
    EXPECT_NE(GenericHash(zeros.data(), 24, 0), GenericHash(zeros.data(), 24, 1));
}

} // namespace
} // namespace Zantor
