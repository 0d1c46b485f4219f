// Hex dumps. Lines are built directly in the result string from lookup
// tables (two hex digits and one text character per byte), with no
// formatting call per byte.
#include <ZantorMiddleware/ZantorBase/HexDump.h>

#include <ZantorMiddleware/ZantorBase/File.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <ostream>

namespace Zantor {

namespace {

struct DumpTables
{
    std::array<char, 512> hex{};   // two lower-case digits per byte value
    std::array<char, 256> text{};  // the byte itself when printable, else '.'
};

constexpr DumpTables MakeDumpTables()
{
    constexpr char digits[] = "0123456789abcdef";
    DumpTables tables;
    for (unsigned value = 0; value < 256; ++value)
    {
        tables.hex[2 * value] = digits[value >> 4];
        tables.hex[2 * value + 1] = digits[value & 0x0F];
        tables.text[value] = (value >= 0x20 && value <= 0x7E) ? static_cast<char>(value) : '.';
    }
    return tables;
}

constexpr DumpTables kTables = MakeDumpTables();

constexpr char kOffsetSeparator[] = ":   ";
constexpr char kColumnSeparator[] = "    ";
constexpr char kCutMark[] = " ...";
constexpr char kLineEnd[] = "\r\n";

inline char* PutHexByte(char* p, unsigned char value) noexcept
{
    std::memcpy(p, &kTables.hex[2u * value], 2);
    return p + 2;
}

inline char* PutLiteral(char* p, const char* literal, std::size_t length) noexcept
{
    std::memcpy(p, literal, length);
    return p + length;
}

} // namespace

std::string BufferToHexDumpString(const void* data, unsigned size, unsigned bytesPerLine, unsigned maxLines)
{
    std::string dump;
    if (bytesPerLine == 0 || size == 0 || data == nullptr)
        return dump;
    if (bytesPerLine > HEX_DUMP_MAX_BYTES_PER_LINE)
        bytesPerLine = HEX_DUMP_MAX_BYTES_PER_LINE;

    const auto* bytes = static_cast<const unsigned char*>(data);
    const unsigned width = 2 * bytesPerLine + bytesPerLine / 4;
    const unsigned lineCount = size / bytesPerLine + (size % bytesPerLine != 0 ? 1 : 0);
    const bool cut = maxLines != 0 && lineCount > maxLines;
    const unsigned linesToWrite = cut ? maxLines : lineCount;
    const std::string& endOfLine = File::GetEndOfLine();

    // The longest line: "0x", 8 digits, separator, the hex column (which may
    // run one character past its field before being cut), separator, text,
    // and its ending.
    const std::size_t lineCapacity = 2 + 8 + (sizeof kOffsetSeparator - 1) + width + 1 +
                                     (sizeof kColumnSeparator - 1) + bytesPerLine +
                                     (sizeof kCutMark - 1) + endOfLine.size() + 2;
    dump.resize(static_cast<std::size_t>(linesToWrite) * lineCapacity);
    char* const begin = dump.data();
    char* p = begin;

    unsigned offset = 0;
    for (unsigned line = 0; line < linesToWrite; ++line)
    {
        const unsigned count = (size - offset < bytesPerLine) ? size - offset : bytesPerLine;
        const unsigned char* lineBytes = bytes + offset;

        *p++ = '0';
        *p++ = 'x';
        p = PutHexByte(p, static_cast<unsigned char>(offset >> 24));
        p = PutHexByte(p, static_cast<unsigned char>(offset >> 16));
        p = PutHexByte(p, static_cast<unsigned char>(offset >> 8));
        p = PutHexByte(p, static_cast<unsigned char>(offset));
        p = PutLiteral(p, kOffsetSeparator, sizeof kOffsetSeparator - 1);

        char* const column = p;
        for (unsigned k = 0; k < count; ++k)
        {
            if (k % 4 == 0)
                *p++ = ' ';
            p = PutHexByte(p, lineBytes[k]);
        }
        const auto columnLength = static_cast<unsigned>(p - column);
        if (columnLength > width)
        {
            p = column + width;
        }
        else
        {
            std::memset(p, ' ', width - columnLength);
            p += width - columnLength;
        }

        p = PutLiteral(p, kColumnSeparator, sizeof kColumnSeparator - 1);
        for (unsigned k = 0; k < count; ++k)
            *p++ = kTables.text[lineBytes[k]];

        offset += count;
        if (cut && line + 1 == linesToWrite)
        {
            p = PutLiteral(p, kCutMark, sizeof kCutMark - 1);
            p = PutLiteral(p, endOfLine.data(), endOfLine.size());
        }
        else
        {
            p = PutLiteral(p, kLineEnd, sizeof kLineEnd - 1);
        }
    }
    dump.resize(static_cast<std::size_t>(p - begin));
    return dump;
}

void HexDump(const void* data, unsigned size, std::ostream& os)
{
    os << BufferToHexDumpString(data, size, 16, 0);
}

StatusCode HexDumpStringToBuffer(const std::string& dump, MessageBuilder& builder)
{
    if (dump.size() > std::numeric_limits<unsigned>::max())
        return STATUS_CODE_INVALID_PARAMETER;

    MessageValidator validator(dump.data(), static_cast<unsigned>(dump.size()));
    while (validator.GetRemaining() != 0)
    {
        StatusCode status = validator.ValidateBytes(2, "0x", nullptr);
        if (status != STATUS_CODE_SUCCESS)
            return status;
        std::uint32_t offset = 0;
        status = validator.ValidateAsciiHexadecimalIntegral(8, MessageHandler::ENDIAN_BIG, &offset);
        if (status != STATUS_CODE_SUCCESS)
            return status;
        // The separator and the blank that opens the first group.
        status = validator.ValidateBytes(5, ":    ", nullptr);
        if (status != STATUS_CODE_SUCCESS)
            return status;

        for (;;)
        {
            unsigned char value = 0;
            status = validator.ValidateAsciiHexadecimalIntegral(2, MessageHandler::ENDIAN_BIG, &value);
            if (status != STATUS_CODE_SUCCESS)
                return status;
            status = builder.AppendUInt8(value);
            if (status != STATUS_CODE_SUCCESS)
                return status;

            // A blank before the next pair is skipped; two blanks end the
            // column. A failed comparison does not move the cursor.
            status = validator.ValidateBytes(1, " ", nullptr);
            if (status == STATUS_CODE_INVALID_FORMAT)
                continue;
            if (status != STATUS_CODE_SUCCESS)
                return status;
            status = validator.ValidateBytes(1, " ", nullptr);
            if (status == STATUS_CODE_SUCCESS)
                break;
            if (status != STATUS_CODE_INVALID_FORMAT)
                return status;
        }

        // Skip the rest of the line, its end of line included.
        const char* rest = dump.data() + validator.GetCursor();
        const void* newline = std::memchr(rest, '\n', validator.GetRemaining());
        if (newline == nullptr)
            return STATUS_CODE_INVALID_PARAMETER;
        status = validator.ValidateBytes(static_cast<unsigned>(static_cast<const char*>(newline) - rest) + 1);
        if (status != STATUS_CODE_SUCCESS)
            return status;
    }
    return STATUS_CODE_SUCCESS;
}

} // namespace Zantor
