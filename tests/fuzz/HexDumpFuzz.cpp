// Fuzzes the hex-dump reader on arbitrary text, and the dump/read round
// trip: the first byte picks the bytes per line, the rest is dumped and
// must read back unchanged.
#include <ZantorMiddleware/ZantorBase/HexDump.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace Zantor;

    const std::string text(reinterpret_cast<const char*>(data), size);
    {
        MessageBuilder builder;
        const StatusCode status = HexDumpStringToBuffer(text, builder);
        if (status != STATUS_CODE_SUCCESS && status != STATUS_CODE_INVALID_FORMAT &&
            status != STATUS_CODE_INVALID_PARAMETER)
            std::abort();
    }

    if (size == 0)
        return 0;
    // Multiples of 4 from 4 to 80: the widest ones are clamped to 72.
    const unsigned bytesPerLine = 4u * (1u + data[0] % 20u);
    const unsigned maxLines = (data[0] & 0x80u) != 0 ? 1u + data[0] % 3u : 0u;
    const uint8_t* bytes = data + 1;
    const auto count = static_cast<unsigned>(size - 1);
    const std::string dump = BufferToHexDumpString(bytes, count, bytesPerLine, maxLines);

    MessageBuilder builder;
    if (HexDumpStringToBuffer(dump, builder) != STATUS_CODE_SUCCESS)
        std::abort();
    unsigned expected = count;
    if (maxLines != 0)
    {
        const unsigned width = bytesPerLine > HEX_DUMP_MAX_BYTES_PER_LINE ? HEX_DUMP_MAX_BYTES_PER_LINE : bytesPerLine;
        if (expected > maxLines * width)
            expected = maxLines * width;
    }
    if (builder.GetLength() != expected || (expected != 0 && std::memcmp(builder.GetBuffer(), bytes, expected) != 0))
        std::abort();
    return 0;
}
