// PlaySoundA: the checks of the sound image (Linux) and the status when no
// sound server can be reached. The tests point PulseAudio at a server that
// does not exist, so nothing is ever played and a well-formed image gives
// STATUS_CODE_FAILURE whether or not PulseAudio is installed.
#include <ZantorMiddleware/ZantorBase/PlaySound.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace Zantor {
namespace {

#ifndef _WIN32

using Bytes = std::vector<unsigned char>;

void Put16(Bytes& bytes, std::size_t at, std::uint16_t value)
{
    bytes[at] = static_cast<unsigned char>(value);
    bytes[at + 1] = static_cast<unsigned char>(value >> 8);
}

void Put32(Bytes& bytes, std::size_t at, std::uint32_t value)
{
    for (int i = 0; i < 4; ++i)
        bytes[at + static_cast<std::size_t>(i)] = static_cast<unsigned char>(value >> (8 * i));
}

// 16-bit mono PCM at 8000 frames per second with four frames of silence:
//   0 "RIFF" 4 length=44 8 "WAVE"
//  12 "fmt " 16 length=16 20 format=1 22 channels=1 24 rate=8000
//  28 byte rate=16000 32 block align=2 34 bits=16
//  36 "data" 40 length=8 44 samples
const Bytes kValid = {
    'R', 'I', 'F', 'F', 44, 0, 0, 0, 'W', 'A', 'V', 'E',
    'f', 'm', 't', ' ', 16, 0, 0, 0, 1, 0, 1, 0, 0x40, 0x1f, 0, 0,
    0x80, 0x3e, 0, 0, 2, 0, 16, 0,
    'd', 'a', 't', 'a', 8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
};
constexpr std::size_t kChannels = 22, kRate = 24, kBlockAlign = 32, kBits = 34, kFormatLength = 16, kDataLength = 40;

// Plays a copy held in a block of exactly its size, so that AddressSanitizer
// reports any read past the end.
StatusCode Play(const Bytes& image, bool async = false)
{
    std::unique_ptr<unsigned char[]> exact(new unsigned char[image.size()]);
    if (!image.empty())
        std::memcpy(exact.get(), image.data(), image.size());
    return PlaySoundA(exact.get(), static_cast<unsigned>(image.size()), async);
}

// The image with its RIFF length set to match its size again.
Bytes Repaired(Bytes image)
{
    Put32(image, 4, static_cast<std::uint32_t>(image.size() - 8));
    return image;
}

class PlaySoundTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_EQ(0, setenv("PULSE_SERVER", "unix:/nonexistent/zantor-test-no-server", 1)); }
};

TEST_F(PlaySoundTest, WellFormedImageReachesTheServer)
{
    EXPECT_EQ(STATUS_CODE_FAILURE, Play(kValid));
    EXPECT_EQ(STATUS_CODE_FAILURE, Play(kValid, true));
}

TEST_F(PlaySoundTest, NullImageIsAnInvalidParameter)
{
    EXPECT_EQ(STATUS_CODE_INVALID_PARAMETER, PlaySoundA(nullptr, 0, false));
    EXPECT_EQ(STATUS_CODE_INVALID_PARAMETER, PlaySoundA(nullptr, 44, true));
}

TEST_F(PlaySoundTest, EveryTruncatedPrefixIsRefused)
{
    for (std::size_t length = 0; length < kValid.size(); ++length)
    {
        SCOPED_TRACE(length);
        EXPECT_EQ(STATUS_CODE_INVALID_FORMAT, Play(Bytes(kValid.begin(), kValid.begin() + static_cast<long>(length))));
    }
}

TEST_F(PlaySoundTest, EveryTruncatedPrefixWithRepairedLengthIsRefused)
{
    // Past the RIFF header the chunk walk itself must notice the cut.
    for (std::size_t length = 12; length < kValid.size(); ++length)
    {
        SCOPED_TRACE(length);
        EXPECT_EQ(STATUS_CODE_INVALID_FORMAT, Play(Repaired(Bytes(kValid.begin(), kValid.begin() + static_cast<long>(length)))));
    }
}

struct Edit
{
    int line;
    std::size_t at;
    unsigned width; // 2 or 4 bytes
    std::uint32_t value;
    bool valid;
};

TEST_F(PlaySoundTest, HeaderFieldsLastValidAndFirstInvalid)
{
    const Edit edits[] = {
        {__LINE__, 4, 4, 3, false},                    // RIFF length below "WAVE"
        {__LINE__, 4, 4, 45, false},                   // RIFF length past the image
        {__LINE__, 4, 4, 0xFFFFFFFFu, false},
        {__LINE__, 20, 2, 3, false},                   // IEEE float
        {__LINE__, 20, 2, 0xFFFE, false},              // extensible
        {__LINE__, kChannels, 2, 0, false},
        {__LINE__, kRate, 4, 999, false},
        {__LINE__, kRate, 4, 1000, true},
        {__LINE__, kRate, 4, 384000, true},
        {__LINE__, kRate, 4, 384001, false},
        {__LINE__, kBits, 2, 12, false},
        {__LINE__, kBits, 2, 8, false},                // block align 2 no longer matches
        {__LINE__, kBlockAlign, 2, 4, false},
        {__LINE__, kFormatLength, 4, 15, false},       // shorter than a PCM format
        {__LINE__, kFormatLength, 4, 0xFFFFFFFFu, false},
        {__LINE__, kDataLength, 4, 9, false},          // data runs past the end
        {__LINE__, kDataLength, 4, 0xFFFFFFFFu, false},
        {__LINE__, kDataLength, 4, 7, true},           // odd length: pad byte present, half frame dropped
        {__LINE__, kDataLength, 4, 0, true},           // empty data, then its 8 zero bytes read as an empty chunk
    };
    for (const Edit& edit : edits)
    {
        SCOPED_TRACE(edit.line);
        Bytes image = kValid;
        if (edit.width == 2)
            Put16(image, edit.at, static_cast<std::uint16_t>(edit.value));
        else
            Put32(image, edit.at, edit.value);
        const StatusCode status = Play(image);
        if (edit.valid)
            EXPECT_NE(STATUS_CODE_INVALID_FORMAT, status);
        else
            EXPECT_EQ(STATUS_CODE_INVALID_FORMAT, status);
    }
}

TEST_F(PlaySoundTest, ChannelAndSampleWidthsAccepted)
{
    struct Shape
    {
        int line;
        std::uint16_t channels;
        std::uint16_t bits;
        bool valid;
    };
    const Shape shapes[] = {
        {__LINE__, 1, 8, true},  {__LINE__, 2, 16, true}, {__LINE__, 1, 24, true}, {__LINE__, 1, 32, true},
        {__LINE__, 8, 16, true}, {__LINE__, 9, 16, false}, {__LINE__, 1, 0, false}, {__LINE__, 1, 64, false},
    };
    for (const Shape& shape : shapes)
    {
        SCOPED_TRACE(shape.line);
        Bytes image = kValid;
        Put16(image, kChannels, shape.channels);
        Put16(image, kBits, shape.bits);
        Put16(image, kBlockAlign, static_cast<std::uint16_t>(shape.channels * (shape.bits / 8)));
        const StatusCode status = Play(image);
        if (shape.valid)
            EXPECT_EQ(STATUS_CODE_FAILURE, status);
        else
            EXPECT_EQ(STATUS_CODE_INVALID_FORMAT, status);
    }
}

Bytes Chunk(const char* tag, const Bytes& body)
{
    Bytes chunk(tag, tag + 4);
    chunk.resize(8);
    Put32(chunk, 4, static_cast<std::uint32_t>(body.size()));
    chunk.insert(chunk.end(), body.begin(), body.end());
    return chunk;
}

Bytes Image(const std::vector<Bytes>& chunks, const Bytes& trailer = {})
{
    Bytes image = {'R', 'I', 'F', 'F', 0, 0, 0, 0, 'W', 'A', 'V', 'E'};
    for (const Bytes& chunk : chunks)
        image.insert(image.end(), chunk.begin(), chunk.end());
    image.insert(image.end(), trailer.begin(), trailer.end());
    return Repaired(image);
}

TEST_F(PlaySoundTest, ChunkOrderAndLayout)
{
    const Bytes format(kValid.begin() + 20, kValid.begin() + 36);
    const Bytes samples(8, 0);
    const Bytes fmt = Chunk("fmt ", format);
    const Bytes data = Chunk("data", samples);
    const Bytes odd = Chunk("LIST", Bytes(3, 'x'));
    Bytes oddPadded = odd;
    oddPadded.push_back(0);
    Bytes longFormat = format;
    longFormat.resize(18, 0); // cbSize present
    struct Row
    {
        int line;
        Bytes image;
        bool valid;
    };
    const Row rows[] = {
        {__LINE__, Image({fmt, data}), true},
        {__LINE__, Image({Chunk("LIST", Bytes(4, 'x')), fmt, data}), true},
        {__LINE__, Image({oddPadded, fmt, data}), true},
        {__LINE__, Image({fmt, data, odd}), true},                 // pad byte left out at the very end
        {__LINE__, Image({Chunk("fmt ", longFormat), data}), true},
        {__LINE__, Image({fmt, Chunk("data", {})}), true},         // nothing to play
        {__LINE__, Image({odd, fmt, data}), false},                // missing pad byte shifts the walk
        {__LINE__, Image({data, fmt}), false},
        {__LINE__, Image({fmt, fmt, data}), false},
        {__LINE__, Image({fmt, data, data}), false},
        {__LINE__, Image({fmt}), false},
        {__LINE__, Image({data}), false},
        {__LINE__, Image({}), false},
        {__LINE__, Image({fmt, data}, {'J', 'U', 'N', 'K'}), false}, // partial chunk header
        {__LINE__, Image({Chunk("fmt ", Bytes(format.begin(), format.begin() + 14)), data}), false},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line);
        const StatusCode status = Play(row.image);
        if (row.valid)
            EXPECT_EQ(STATUS_CODE_FAILURE, status);
        else
            EXPECT_EQ(STATUS_CODE_INVALID_FORMAT, status);
    }
}

TEST_F(PlaySoundTest, BytesBehindTheRiffChunkAreIgnored)
{
    Bytes image = kValid;
    image.insert(image.end(), {'t', 'r', 'a', 'i', 'l'});
    EXPECT_EQ(STATUS_CODE_FAILURE, Play(image));
}

TEST_F(PlaySoundTest, WrongTagsAreRefused)
{
    for (std::size_t at : {0u, 3u, 8u, 11u})
    {
        SCOPED_TRACE(at);
        Bytes image = kValid;
        image[at] = '?';
        EXPECT_EQ(STATUS_CODE_INVALID_FORMAT, Play(image));
    }
}

#else

TEST(PlaySoundTest, NullImageStopsSoundsOnWindows)
{
    // PlaySoundA(NULL, ...) stops any sound playing; it succeeds or, without
    // a sound device, fails with a plain failure.
    const StatusCode status = PlaySoundA(nullptr, 0, false);
    EXPECT_TRUE(status == STATUS_CODE_SUCCESS || status == STATUS_CODE_FAILURE) << static_cast<int>(status);
}

#endif

} // namespace
} // namespace Zantor
