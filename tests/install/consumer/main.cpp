// Uses the installed package the way an application would: builds a
// big-endian integer, reads it back through the validator, and throws and
// prints a located exception across the library boundary.
#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <cstdio>
#include <iostream>

namespace Consumer {

void Fail()
{
    ZANTOR_THROW(Zantor::StatusCodeException, Zantor::STATUS_CODE_INVALID_PARAMETER);
}

} // namespace Consumer

int main()
{
    unsigned char storage[16];
    Zantor::MessageBuilder builder(storage, sizeof storage, false);
    builder.AppendUInt32(0x01020304u, Zantor::MessageHandler::ENDIAN_BIG);
    for (unsigned i = 0; i < builder.GetLength(); ++i)
        std::printf("%02x ", builder.GetBuffer()[i]);

    Zantor::MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    std::uint32_t value = 0;
    const Zantor::StatusCode status =
        validator.ValidateUnsignedBinaryIntegral(4, Zantor::MessageHandler::ENDIAN_BIG, &value);
    std::printf("| %u %s | ", static_cast<unsigned>(value), Zantor::StatusCodeToString(status).c_str());
    std::fflush(stdout);
    try
    {
        Consumer::Fail();
    }
    catch (const Zantor::Exception& e)
    {
        std::cout << e << std::endl;
    }
    return 0;
}
