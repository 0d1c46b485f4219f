// Uses the installed package the way an application would: builds a
// big-endian integer and prints it with a status text.
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <cstdio>

int main()
{
    unsigned char storage[16];
    Zantor::MessageBuilder builder(storage, sizeof storage, false);
    builder.AppendUInt32(0x01020304u, Zantor::MessageHandler::ENDIAN_BIG);
    for (unsigned i = 0; i < builder.GetLength(); ++i)
        std::printf("%02x ", builder.GetBuffer()[i]);
    std::printf("| %s\n", Zantor::StatusCodeToString(Zantor::STATUS_CODE_INVALID_PARAMETER).c_str());
    return 0;
}
