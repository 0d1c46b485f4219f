// PlaySoundA: the checks of the sound image (Linux) and the status when no
// sound server can be reached. The tests point PulseAudio at a server that
// does not exist, so nothing is ever played and a well-formed image gives
// STATUS_CODE_FAILURE whether or not PulseAudio is installed. The playback
// path itself runs against a stand-in library (PlaySoundPlayback).
#include <ZantorMiddleware/ZantorBase/PlaySound.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#ifndef _WIN32
#include <dlfcn.h>
#endif

namespace Zantor {
namespace {

#ifndef _WIN32

using Bytes = std::vector<unsigned char>;

// Writes width (1, 2 or 4) bytes of value, little-endian.
void Put(Bytes& bytes, std::size_t at, unsigned width, std::uint32_t value)
{
    for (unsigned i = 0; i < width; ++i)
        bytes[at + i] = static_cast<unsigned char>(value >> (8 * i));
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
    Put(image, 4, 4, static_cast<std::uint32_t>(image.size() - 8));
    return image;
}

// kValid with width bytes at `at` set to value.
Bytes Edited(std::size_t at, unsigned width, std::uint32_t value)
{
    Bytes image = kValid;
    Put(image, at, width, value);
    return image;
}

// kValid with other channels and sample bits, block align to match.
Bytes Shaped(std::uint16_t channels, std::uint16_t bits)
{
    Bytes image = Edited(kChannels, 2, channels);
    Put(image, kBits, 2, bits);
    Put(image, kBlockAlign, 2, static_cast<std::uint16_t>(channels * (bits / 8)));
    return image;
}

Bytes Chunk(const char* tag, const Bytes& body)
{
    Bytes chunk(tag, tag + 4);
    chunk.resize(8);
    Put(chunk, 4, 4, static_cast<std::uint32_t>(body.size()));
    chunk.insert(chunk.end(), body.begin(), body.end());
    return chunk;
}

// A RIFF image of the chunks and trailing bytes.
Bytes Image(const std::vector<Bytes>& chunks, const Bytes& trailer = {})
{
    Bytes image = {'R', 'I', 'F', 'F', 0, 0, 0, 0, 'W', 'A', 'V', 'E'};
    for (const Bytes& chunk : chunks)
        image.insert(image.end(), chunk.begin(), chunk.end());
    image.insert(image.end(), trailer.begin(), trailer.end());
    return Repaired(image);
}

class PlaySoundTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_EQ(0, setenv("PULSE_SERVER", "unix:/nonexistent/zantor-test-no-server", 1)); }
};

TEST_F(PlaySoundTest, NullImageIsAnInvalidParameterAndAWellFormedOneReachesTheServer)
{
    EXPECT_EQ(STATUS_CODE_INVALID_PARAMETER, PlaySoundA(nullptr, 44, true));
    EXPECT_EQ(STATUS_CODE_FAILURE, Play(kValid, true));
}

// Valid images reach the (missing) server; the others are refused.
TEST_F(PlaySoundTest, ImageValidation)
{
    const Bytes format(kValid.begin() + 20, kValid.begin() + 36);
    const Bytes fmt = Chunk("fmt ", format), data = Chunk("data", Bytes(8, 0)), odd = Chunk("LIST", Bytes(3, 'x'));
    Bytes oddPadded = odd, longFormat = format, trailed = kValid;
    oddPadded.push_back(0);
    longFormat.resize(18, 0); // cbSize present
    trailed.insert(trailed.end(), {'t', 'r', 'a', 'i', 'l'});
    struct Row { int line; Bytes image; bool valid; };
    const Row rows[] = {
        // Header fields, last valid and first invalid.
        {__LINE__, Edited(4, 4, 3), false},                    // RIFF length below "WAVE"
        {__LINE__, Edited(4, 4, 45), false},                   // RIFF length past the image
        {__LINE__, Edited(4, 4, 0xFFFFFFFFu), false},
        {__LINE__, Edited(20, 2, 3), false},                   // IEEE float
        {__LINE__, Edited(kChannels, 2, 0), false},
        {__LINE__, Edited(kRate, 4, 999), false},
        {__LINE__, Edited(kRate, 4, 1000), true},
        {__LINE__, Edited(kRate, 4, 384001), false},
        {__LINE__, Edited(kBits, 2, 8), false},                // block align 2 no longer matches
        {__LINE__, Edited(kBlockAlign, 2, 4), false},
        {__LINE__, Edited(kFormatLength, 4, 15), false},       // shorter than a PCM format
        {__LINE__, Edited(kFormatLength, 4, 0xFFFFFFFFu), false},
        {__LINE__, Edited(kDataLength, 4, 9), false},          // data runs past the end
        {__LINE__, Edited(kDataLength, 4, 0xFFFFFFFFu), false},
        {__LINE__, Edited(kDataLength, 4, 7), true},           // odd length: pad byte present, half frame dropped
        {__LINE__, Edited(kDataLength, 4, 0), true},           // empty data, then its 8 zero bytes read as an empty chunk
        // Wrong tags.
        {__LINE__, Edited(3, 1, '?'), false}, {__LINE__, Edited(8, 1, '?'), false},
        // Channels and sample widths.
        {__LINE__, Shaped(8, 16), true}, {__LINE__, Shaped(9, 16), false}, // 8, 24 and 32 bits: PlaySoundPlayback
        {__LINE__, Shaped(1, 0), false}, {__LINE__, Shaped(1, 64), false},
        // Chunk order and layout.
        {__LINE__, trailed, true},                                 // bytes behind the RIFF chunk are ignored
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
    for (std::size_t i = 0; i < std::size(rows); ++i)
    {
        SCOPED_TRACE(testing::Message() << "row " << i << " at line " << rows[i].line);
        EXPECT_EQ(rows[i].valid ? STATUS_CODE_FAILURE : STATUS_CODE_INVALID_FORMAT, Play(rows[i].image));
    }
}

// Run by the PlaySoundPlayback test with the stand-in libpulse-simple.so.0
// (tests/support) first on LD_LIBRARY_PATH; skipped where it is not.
TEST(PlaySoundPlayback, TheStreamFollowsTheImage)
{
    void* fake = dlopen("libpulse-simple.so.0", RTLD_NOW);
    const auto reset = fake ? reinterpret_cast<void (*)(bool, bool)>(dlsym(fake, "FakePulseReset")) : nullptr;
    const auto log = fake ? reinterpret_cast<const char* (*)(int)>(dlsym(fake, "FakePulseLog")) : nullptr;
    if (reset == nullptr || log == nullptr)
        GTEST_SKIP() << "needs the stand-in libpulse-simple.so.0 on LD_LIBRARY_PATH";
    const auto numbered = [](Bytes image) { // samples 01 02 ... 08
        for (unsigned i = 0; i < 8; ++i)
            image[44 + i] = static_cast<unsigned char>(i + 1);
        return image;
    };
    const std::string opened = "new ZantorBase PlaySound dir 1 format ", all = " write 01 02 03 04 05 06 07 08;";
    const std::string mono16 = opened + "3 rate 8000 channels 1;";
    const struct { Bytes image; bool async, failCreate, failWrite; StatusCode status; std::string log; } rows[] = {
        {numbered(kValid), false, false, false, STATUS_CODE_SUCCESS, mono16 + all + " drain; free;"},
        {numbered(kValid), true, false, false, STATUS_CODE_SUCCESS, mono16 + all + " drain; free;"},
        {numbered(Shaped(2, 8)), false, false, false, STATUS_CODE_SUCCESS, opened + "0 rate 8000 channels 2;" + all + " drain; free;"},
        {numbered(Shaped(1, 32)), true, false, false, STATUS_CODE_SUCCESS, opened + "7 rate 8000 channels 1;" + all + " drain; free;"},
        {numbered(Shaped(1, 24)), false, false, false, STATUS_CODE_SUCCESS,
         opened + "9 rate 8000 channels 1; write 01 02 03 04 05 06; drain; free;"}, // whole frames only
        {Edited(kDataLength, 4, 0), false, false, false, STATUS_CODE_SUCCESS, mono16 + " drain; free;"},
        {numbered(kValid), false, false, true, STATUS_CODE_FAILURE, mono16 + all + " free;"},
        {numbered(kValid), true, false, true, STATUS_CODE_SUCCESS, mono16 + all + " free;"},
        {numbered(kValid), false, true, false, STATUS_CODE_FAILURE, mono16},
    };
    for (const auto& row : rows)
    {
        reset(row.failCreate, row.failWrite);
        EXPECT_EQ(row.status, Play(row.image, row.async));
        EXPECT_EQ(row.log, log(row.failCreate ? 0 : 1)) << &row - rows;
    }
    dlclose(fake);
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
