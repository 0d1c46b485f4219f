// Fuzzes the hex-dump reader on arbitrary text, and the dump/read round
// trip: the first byte picks the bytes per line (1 to 120), the second the
// line limit (0 to 3), the rest is dumped. Every line of the dump must keep
// to 255 characters, and reading it back must give the dumped bytes (up to
// the line limit) for every width whose dump reads back, and a prefix of
// them for the others.
#include <ZantorMiddleware/ZantorBase/HexDump.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

// Checks the lines of dump: how many there are and that none is longer
// than 255 characters before its ending ("\r\n", or " ..." and a line
// end on the last line of a cut dump).
void CheckLines(const std::string& dump, std::uint64_t expectedLines, bool cut)
{
    std::uint64_t lines = 0;
    std::size_t start = 0;
    while (start < dump.size())
    {
        const std::size_t newline = dump.find('\n', start);
        if (newline == std::string::npos)
            std::abort();
        ++lines;
        std::size_t length = newline - start;
        if (length != 0 && dump[newline - 1] == '\r')
            --length;
        if (cut && newline + 1 == dump.size())
        {
            if (length < 4 || dump.compare(start + length - 4, 4, " ...") != 0)
                std::abort();
            length -= 4;
        }
        if (length > 255 || length < 14)
            std::abort();
        start = newline + 1;
    }
    if (lines != expectedLines)
        std::abort();
}

} // namespace

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

    if (size < 2)
        return 0;
    const unsigned bytesPerLine = 1u + data[0] % 120u;
    const unsigned maxLines = data[1] % 4u;
    const uint8_t* bytes = data + 2;
    const auto count = static_cast<unsigned>(size - 2);
    const std::string dump = BufferToHexDumpString(bytes, count, bytesPerLine, maxLines);

    const std::uint64_t lineCount = (std::uint64_t{count} + bytesPerLine - 1) / bytesPerLine;
    const bool cut = maxLines != 0 && lineCount > maxLines;
    CheckLines(dump, cut ? maxLines : lineCount, cut);

    std::uint64_t expected = count;
    if (cut)
        expected = std::uint64_t{maxLines} * bytesPerLine;

    // Multiples of 4 up to 104 bytes per line keep their whole hex column;
    // so does a dump of one partial line.
    const bool readable = bytesPerLine <= 104 && (bytesPerLine % 4 == 0 || count < bytesPerLine);
    MessageBuilder builder;
    const StatusCode status = HexDumpStringToBuffer(dump, builder);
    if (status != STATUS_CODE_SUCCESS && status != STATUS_CODE_INVALID_FORMAT)
        std::abort();
    if (builder.GetLength() > expected ||
        (builder.GetLength() != 0 && std::memcmp(builder.GetBuffer(), bytes, builder.GetLength()) != 0))
        std::abort();
    if (readable && (status != STATUS_CODE_SUCCESS || builder.GetLength() != expected))
        std::abort();
    return 0;
}
