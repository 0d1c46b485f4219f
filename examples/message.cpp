// Builds the same small quote message in little-endian and in big-endian
// order with a MessageBuilder and prints both as hex dumps.
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <cstdint>
#include <cstdio>

namespace {

using Zantor::MessageBuilder;
using Zantor::MessageHandler;
using Zantor::StatusCode;

struct Quote
{
    std::uint8_t messageType;
    std::uint32_t instrumentId;
    std::int64_t price; // in units of 10^-4
    std::uint32_t size;
    const char* symbol;
};

// type u8 | instrument u32 | price i64 | size u32 | symbol: u16 length + text
StatusCode BuildQuote(MessageBuilder& builder, const Quote& quote, MessageHandler::Endian endian)
{
    StatusCode status = builder.AppendUInt8(quote.messageType);
    if (status == Zantor::STATUS_CODE_SUCCESS)
        status = builder.AppendUInt32(quote.instrumentId, endian);
    if (status == Zantor::STATUS_CODE_SUCCESS)
        status = builder.AppendInt64(quote.price, endian);
    if (status == Zantor::STATUS_CODE_SUCCESS)
        status = builder.AppendUInt32(quote.size, endian);
    if (status == Zantor::STATUS_CODE_SUCCESS)
        status = builder.AppendPrintfString("%s", quote.symbol); // length always little-endian
    return status;
}

// Offset, 16 bytes in hex, then the printable characters.
void PrintHexDump(const unsigned char* bytes, unsigned length)
{
    for (unsigned line = 0; line < length; line += 16)
    {
        std::printf("  %04x ", line);
        for (unsigned i = line; i < line + 16; ++i)
        {
            if (i < length)
                std::printf(" %02x", bytes[i]);
            else
                std::printf("   ");
        }
        std::printf("  ");
        for (unsigned i = line; i < line + 16 && i < length; ++i)
            std::putchar(bytes[i] >= 0x20 && bytes[i] < 0x7F ? bytes[i] : '.');
        std::putchar('\n');
    }
}

} // namespace

int main()
{
    const Quote quote{0x51, 0x01020304, 1234500, 700, "ZNT.DE"};
    std::printf("Quote: type 0x%02x, instrument 0x%08x, price %lld (x 10^-4), size %u, symbol \"%s\"\n\n",
                static_cast<unsigned>(quote.messageType), static_cast<unsigned>(quote.instrumentId),
                static_cast<long long>(quote.price), static_cast<unsigned>(quote.size), quote.symbol);

    const struct
    {
        MessageHandler::Endian endian;
        const char* name;
    } orders[] = {{MessageHandler::ENDIAN_LITTLE, "little-endian"}, {MessageHandler::ENDIAN_BIG, "big-endian"}};

    for (const auto& order : orders)
    {
        unsigned char storage[64];
        MessageBuilder builder(storage, sizeof storage);
        const StatusCode status = BuildQuote(builder, quote, order.endian);
        if (status != Zantor::STATUS_CODE_SUCCESS)
        {
            std::fprintf(stderr, "building the %s quote failed: %s\n", order.name,
                         Zantor::StatusCodeToString(status).c_str());
            return 1;
        }
        std::printf("%s, %u bytes:\n", order.name, builder.GetLength());
        PrintHexDump(builder.GetBuffer(), builder.GetLength());
        std::putchar('\n');
    }
    std::printf("The instrument (01 02 03 04), price and size appear with their bytes reversed between the two"
                " orders;\nthe type byte, the symbol's 16-bit length prefix (always little-endian) and its text"
                " are identical.\n");
    return 0;
}
