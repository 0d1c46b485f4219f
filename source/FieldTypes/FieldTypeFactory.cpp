// The field type factory: one switch from type code to concrete class.
#include <ZantorMiddleware/ZantorBase/FieldTypes/FieldTypeFactory.h>

#include <ZantorMiddleware/ZantorBase/FieldTypes/BinaryArray.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/BinaryString.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Blob.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Boolean.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/CrcBlob.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Date.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/DateTime.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Rational.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/SInt.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/TRational.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/TextArray.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/TextString.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Time.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/UInt.h>

#include <new>

namespace Zantor {

FieldTypeFactory& FieldTypeFactory::GetInstance() noexcept
{
    // Stateless and trivially destructible, so one constant instance serves
    // every thread from the start of the process to its very end.
    static FieldTypeFactory instance;
    return instance;
}

IFieldType* FieldTypeFactory::Create(unsigned char type) const noexcept
{
    switch (type)
    {
    case FIELD_TYPE_SINT: return new (std::nothrow) SInt;
    case FIELD_TYPE_UINT: return new (std::nothrow) UInt;
    case FIELD_TYPE_RATIONAL: return new (std::nothrow) Rational;
    case FIELD_TYPE_TRATIONAL: return new (std::nothrow) TRational;
    case FIELD_TYPE_BOOLEAN: return new (std::nothrow) Boolean;
    case FIELD_TYPE_DATE: return new (std::nothrow) Date;
    case FIELD_TYPE_TIME: return new (std::nothrow) Time;
    case FIELD_TYPE_DATETIME: return new (std::nothrow) DateTime;
    case FIELD_TYPE_TEXTSTRING: return new (std::nothrow) TextString;
    case FIELD_TYPE_TEXTARRAY: return new (std::nothrow) TextArray;
    case FIELD_TYPE_BINARYSTRING: return new (std::nothrow) BinaryString;
    case FIELD_TYPE_BINARYARRAY: return new (std::nothrow) BinaryArray;
    case FIELD_TYPE_BLOB: return new (std::nothrow) Blob;
    case FIELD_TYPE_CRCBLOB: return new (std::nothrow) CrcBlob;
    default: return nullptr;
    }
}

IFieldType* FieldTypeFactory::Clone(const IFieldType* field) const noexcept
{
    return Convert(field != nullptr ? field->GetType() : FIELD_TYPE_UNKNOWN, field);
}

IFieldType* FieldTypeFactory::Convert(unsigned char type, const IFieldType* field) const noexcept
{
    if (field == nullptr)
        return nullptr;
    IFieldType* value = Create(type);
    if (value != nullptr && value->Convert(field) != STATUS_CODE_SUCCESS)
    {
        delete value;
        return nullptr;
    }
    return value;
}

} // namespace Zantor
