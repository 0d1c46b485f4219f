// GenericHash against values printed by Bob Jenkins's lookup2.c hash(), as
// listed by public ports of it that check against the C code: tails of 0 to
// 11 bytes, one and several 12-byte blocks, bytes with the top bit set, the
// length counted, and chaining through the initial value.
#include <ZantorMiddleware/ZantorBase/GenericHash.h>

#include <gtest/gtest.h>

#include <string>

using Zantor::GenericHash;

TEST(GenericHashTest, PublishedValues)
{
    const std::string fox = "The quick brown fox jumps over the lazy dog";
    struct Row { int line; std::string key; std::uint32_t expected; std::uint32_t initialValue = 0; };
    const Row rows[] = {
        {__LINE__, "", 3175731469u},
        {__LINE__, "a", 703514648u},
        {__LINE__, "abcd", 1525030821u},
        {__LINE__, "hello", 3070638494u},
        {__LINE__, "abcdefgh", 88045406u},
        {__LINE__, "this is 12ch", 313177311u},                                    // one block, no tail
        {__LINE__, "this is >12ch", 2321813933u},
        {__LINE__, "My hovercraft is full of eels.", 2243816318u},                 // two blocks and 6
        {__LINE__, "this is much large than 12 characters", 2771373033u},          // three blocks and 1
        {__LINE__, fox + fox + fox + fox + fox, 2138388378u},                      // 17 blocks and 11
        {__LINE__, std::string(1, '\0'), 1843378377u},                             // zeros: only the length counts
        {__LINE__, std::string(2, '\0'), 1948748577u},
        {__LINE__, std::string("\xff\x80\x40\x01", 4), 3359486273u},               // bytes read unsigned
        {__LINE__, "hello", 1535955511u, 3070638494u},                             // chained
        {__LINE__, std::string(1, '\0'), 1948748577u, 1},
    };
    // Each key read from an odd address: the words are loaded at any alignment.
    for (const Row& row : rows)
        EXPECT_EQ(row.expected, GenericHash(("." + row.key).data() + 1, static_cast<unsigned>(row.key.size()), row.initialValue))
            << "row at line " << row.line;
    EXPECT_EQ(3175731469u, GenericHash(nullptr, 0, 0));
}
