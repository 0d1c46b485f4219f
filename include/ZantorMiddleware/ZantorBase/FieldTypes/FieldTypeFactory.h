// FieldTypeFactory: creates, clones and converts field values by type code.
//
// A process-wide singleton without state, created on first use and never
// destroyed, so it may be used from any thread at any time, also while the
// process exits. Values it returns belong to the caller, who deletes them
// through IFieldType's virtual destructor.
//
//   std::unique_ptr<IFieldType> size(FieldTypeFactory::GetInstance().Create(FIELD_TYPE_UINT));
#pragma once

#include <ZantorMiddleware/ZantorBase/Export.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/IFieldType.h>

namespace Zantor {

class ZANTOR_BASE_API FieldTypeFactory
{
public:
    static FieldTypeFactory& GetInstance() noexcept;

    // A new value of type, not initialized; null for a code above 13 or
    // when memory runs out.
    IFieldType* Create(unsigned char type) const noexcept;
    // A new value of field's type holding a copy of its value and flag;
    // null for a null field or when memory runs out.
    IFieldType* Clone(const IFieldType* field) const noexcept;
    // Create(type), then its Convert(field): the new value on success; null
    // on any failure (nothing is leaked). A null field gives null.
    IFieldType* Convert(unsigned char type, const IFieldType* field) const noexcept;

    FieldTypeFactory(const FieldTypeFactory&) = delete;
    FieldTypeFactory& operator=(const FieldTypeFactory&) = delete;

private:
    FieldTypeFactory() noexcept = default;
};

} // namespace Zantor
