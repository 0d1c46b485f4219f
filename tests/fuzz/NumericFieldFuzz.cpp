// Fuzzes the readers of UInt, SInt, Boolean, Rational and TRational (body,
// record, update, text and the update-form check) with the properties of
// FieldFuzzCheck.h.
#include "FieldFuzzCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    for (unsigned char type : {Zantor::FIELD_TYPE_UINT, Zantor::FIELD_TYPE_SINT, Zantor::FIELD_TYPE_BOOLEAN,
                               Zantor::FIELD_TYPE_RATIONAL, Zantor::FIELD_TYPE_TRATIONAL})
        FieldFuzz::Check(type, data, size);
    return 0;
}
