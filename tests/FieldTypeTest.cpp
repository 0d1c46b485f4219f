// The field type table, the factory, the type-dispatching members of
// IFieldType, the raw-byte statics and the conversion matrix over all
// fourteen types.
#include <ZantorMiddleware/ZantorBase/FieldTypes/FieldTypeFactory.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/Rational.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/SInt.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/UInt.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

namespace Zantor {
namespace {

using Bytes = std::vector<unsigned char>;
using Field = std::unique_ptr<IFieldType>;

Bytes Contents(const MessageBuilder& b) { return Bytes(b.GetBuffer(), b.GetBuffer() + b.GetLength()); }
Field Create(unsigned char type) { return Field(FieldTypeFactory::GetInstance().Create(type)); }

TEST(FieldTypeTable, NamesAndLengthSizes)
{
    const struct { unsigned char type; const char* name; unsigned record, update; } rows[] = {
        {0, "Date", 0, 0},        {1, "Time", 0, 0},         {2, "DateTime", 0, 0},     {3, "SInt", 0, 1},
        {4, "UInt", 0, 1},        {5, "Rational", 0, 0},     {6, "TRational", 0, 0},    {7, "TextString", 1, 1},
        {8, "TextArray", 0, 1},   {9, "BinaryString", 1, 1}, {10, "BinaryArray", 0, 1}, {11, "Blob", 4, 4},
        {12, "CrcBlob", 4, 4},    {13, "Boolean", 0, 0},     {14, "Unknown", 0, 0},     {255, "Unknown", 0, 0}};
    for (const auto& row : rows)
    {
        SCOPED_TRACE(static_cast<int>(row.type));
        EXPECT_STREQ(FieldTypeToString(row.type), row.name);
        EXPECT_EQ(FieldTypeToRecordLengthSize(row.type), row.record);
        EXPECT_EQ(FieldTypeToUpdateLengthSize(row.type), row.update);
        EXPECT_EQ(StringToFieldType(row.name), row.type <= FIELD_TYPE_LAST ? row.type : FIELD_TYPE_UNKNOWN);
    }
    for (const char* name : {"date", "", "Date ", "UIntX", "Uint"})
        EXPECT_EQ(StringToFieldType(name), FIELD_TYPE_UNKNOWN) << name;
}

// The last invalid and the first valid length side by side.
TEST(FieldTypeTable, ValidBodyLengths)
{
    const struct { unsigned char type; std::vector<unsigned> valid, invalid; } rows[] = {
        {FIELD_TYPE_DATE, {3}, {0, 2, 4}},
        {FIELD_TYPE_TIME, {3, 4}, {2, 5}},
        {FIELD_TYPE_DATETIME, {6, 7}, {5, 8}},
        {FIELD_TYPE_SINT, {1, 2, 4, 8}, {0, 3, 5, 6, 7, 9}},
        {FIELD_TYPE_UINT, {1, 2, 4, 8}, {0, 3, 9}},
        {FIELD_TYPE_RATIONAL, {2, 3, 5, 9}, {1, 4, 6, 8, 10}},
        {FIELD_TYPE_TRATIONAL, {3, 4, 6, 10}, {2, 5, 7, 9, 11}},
        {FIELD_TYPE_TEXTSTRING, {1, 255}, {0, 256}},
        {FIELD_TYPE_BINARYSTRING, {1, 255}, {0, 256}},
        {FIELD_TYPE_TEXTARRAY, {1, 0xFFFFFFFF}, {0}},
        {FIELD_TYPE_BINARYARRAY, {1, 256}, {0}},
        {FIELD_TYPE_BLOB, {5, 0xFFFFFFFF}, {4}},
        {FIELD_TYPE_CRCBLOB, {9}, {8}},
        {FIELD_TYPE_BOOLEAN, {1}, {0, 2}},
        {14, {}, {1, 3, 9}}};
    for (const auto& row : rows)
    {
        for (unsigned length : row.valid)
            EXPECT_TRUE(IFieldType::IsValidSerializedBodyLength(row.type, length)) << int(row.type) << " " << length;
        for (unsigned length : row.invalid)
            EXPECT_FALSE(IFieldType::IsValidSerializedBodyLength(row.type, length)) << int(row.type) << " " << length;
    }
}

// One initialized sample of every type, by code, read from its text.
Field Sample(unsigned char type)
{
    static const char* const texts[FIELD_TYPE_LAST + 1] = {
        "2026-11-23", "14:30:05.789", "2026-11-23 14:30:05.789", "5", "5", "5.00", "7<+-=>", "abc", "abc",
        "0x616263", "0x616263", "01020304 0x616263", "01020304 0x616263", "true"};
    Field field = Create(type);
    MessageValidator text(texts[type], static_cast<unsigned>(std::strlen(texts[type])));
    EXPECT_EQ(field->FromString(text), STATUS_CODE_SUCCESS) << texts[type];
    return field;
}

// What each target type converts from: the closed matrix of the field
// types. Every pairing not listed gives STATUS_CODE_MISMATCH.
constexpr unsigned Bit(unsigned char type) { return 1u << type; }
constexpr unsigned kNumbers = Bit(FIELD_TYPE_UINT) | Bit(FIELD_TYPE_SINT) | Bit(FIELD_TYPE_RATIONAL) | Bit(FIELD_TYPE_TRATIONAL);
constexpr unsigned kBytes = Bit(FIELD_TYPE_TEXTSTRING) | Bit(FIELD_TYPE_TEXTARRAY) | Bit(FIELD_TYPE_BINARYSTRING) | Bit(FIELD_TYPE_BINARYARRAY);
constexpr unsigned kAccepted[FIELD_TYPE_LAST + 1] = {
    Bit(FIELD_TYPE_DATE) | Bit(FIELD_TYPE_DATETIME), Bit(FIELD_TYPE_TIME) | Bit(FIELD_TYPE_DATETIME),
    Bit(FIELD_TYPE_DATETIME), kNumbers, kNumbers, kNumbers, kNumbers, kBytes, kBytes, kBytes, kBytes,
    kBytes | Bit(FIELD_TYPE_BLOB) | Bit(FIELD_TYPE_CRCBLOB), kBytes | Bit(FIELD_TYPE_BLOB) | Bit(FIELD_TYPE_CRCBLOB),
    Bit(FIELD_TYPE_BOOLEAN)};

// Every pair: an accepted source converts (and its text survives where the
// two types print alike); a refused one leaves the target as it was. A
// source that is not initialized resets an accepting target.
TEST(FieldTypeConversion, FullMatrixAndTheFactory)
{
    const FieldTypeFactory& factory = FieldTypeFactory::GetInstance();
    for (unsigned char target = 0; target <= FIELD_TYPE_LAST; ++target)
        for (unsigned char source = 0; source <= FIELD_TYPE_LAST; ++source)
        {
            SCOPED_TRACE(std::string(FieldTypeToString(source)) + " -> " + FieldTypeToString(target));
            const bool accepted = (kAccepted[target] & Bit(source)) != 0;
            const Field from = Sample(source), to = Sample(target), empty = Create(source);
            ASSERT_NE(empty, nullptr);
            EXPECT_TRUE(empty->GetType() == source && !empty->IsInitialized() && empty->GetSerializedLength() == 0);
            EXPECT_EQ(empty->ToString(), "[NotInitialized]");
            const std::string before = to->ToString();
            EXPECT_EQ(to->Convert(from.get()), accepted ? STATUS_CODE_SUCCESS : STATUS_CODE_MISMATCH);
            EXPECT_TRUE(to->IsInitialized());
            if (!accepted || source == target)
            {
                EXPECT_EQ(to->ToString(), accepted ? from->ToString() : before);
            }
            EXPECT_EQ(to->Convert(empty.get()), accepted ? STATUS_CODE_SUCCESS : STATUS_CODE_MISMATCH);
            EXPECT_EQ(to->IsInitialized(), !accepted);
            // The factory's forms: a new value, or null when refused.
            const Field made(factory.Convert(target, from.get())), clone(factory.Clone(from.get()));
            EXPECT_EQ(made != nullptr, accepted);
            EXPECT_EQ(to->Convert(nullptr), STATUS_CODE_INVALID_PARAMETER);
            EXPECT_EQ(clone->ToString() + FieldTypeToString(clone->GetType()), from->ToString() + FieldTypeToString(source));
        }
    EXPECT_EQ(&factory, &FieldTypeFactory::GetInstance());
    EXPECT_TRUE(Create(FIELD_TYPE_LAST + 1) == nullptr && Create(FIELD_TYPE_UNKNOWN) == nullptr);
    EXPECT_TRUE(factory.Clone(nullptr) == nullptr && factory.Convert(FIELD_TYPE_UINT, nullptr) == nullptr);
    const UInt tooLarge(0x8000000000000000u);
    EXPECT_EQ(factory.Convert(FIELD_TYPE_SINT, &tooLarge), nullptr);
}

// Assign copies only from the same type, although Convert crosses types.
TEST(FieldTypeDispatch, AssignNeedsTheSameType)
{
    UInt target(7);
    const SInt other(5);
    const UInt same(9);
    EXPECT_TRUE(target.Assign(&other) == STATUS_CODE_MISMATCH && target.GetValue() == 7u);
    EXPECT_EQ(target.Convert(&other) | target.Assign(&same), STATUS_CODE_SUCCESS);
    EXPECT_EQ(target.GetValue(), 9u);
}

// A value written and read as the type a field definition demands.
TEST(FieldTypeDispatch, SerializeAndDeserializeAsAnotherType)
{
    const UInt price(300);
    unsigned char storage[16];
    MessageBuilder builder(storage, sizeof storage, false);
    ASSERT_EQ(price.SerializeLengthAndBody(FIELD_TYPE_RATIONAL, builder, 9), STATUS_CODE_SUCCESS);
    EXPECT_EQ(Contents(builder), (Bytes{0x20, 0x2C, 0x01}));
    unsigned written = 0;
    EXPECT_TRUE(price.SerializeBody(FIELD_TYPE_SINT, storage + 8, 8, written) == STATUS_CODE_SUCCESS && written == 8);
    builder.Reset();
    ASSERT_EQ(price.Serialize(FIELD_TYPE_SINT, builder, 2), STATUS_CODE_SUCCESS);
    EXPECT_EQ(Contents(builder), (Bytes{0x2C, 0x01}));
    // A conversion that fails writes nothing.
    const SInt negative(-1);
    builder.Reset();
    EXPECT_EQ(negative.SerializeLengthAndBody(FIELD_TYPE_UINT, builder, 8), STATUS_CODE_FAILURE);
    EXPECT_EQ(builder.GetLength(), 0u);

    // Reading: a rational body into an SInt; the cursor moves only when the
    // conversion succeeds too.
    const unsigned char rational[] = {0x20, 0x2C, 0x01, 0x80 | 0x01};
    SInt value;
    MessageValidator validator(rational, sizeof rational);
    ASSERT_EQ(value.DeserializeLengthAndBody(FIELD_TYPE_RATIONAL, validator, 9), STATUS_CODE_SUCCESS);
    EXPECT_EQ(value.GetValue(), 300);
    EXPECT_EQ(validator.GetCursor(), 3u);
    UInt unsignedValue(1);
    const unsigned char minusOne[] = {0xFF};
    MessageValidator negativeInput(minusOne, 1);
    EXPECT_EQ(unsignedValue.Deserialize(FIELD_TYPE_SINT, negativeInput, 1), STATUS_CODE_FAILURE);
    EXPECT_EQ(negativeInput.GetCursor(), 0u);
    EXPECT_EQ(unsignedValue.GetValue(), 1u);
    EXPECT_EQ(unsignedValue.DeserializeBody(FIELD_TYPE_SINT, minusOne, 1), STATUS_CODE_FAILURE);
    ASSERT_EQ(unsignedValue.DeserializeBody(FIELD_TYPE_RATIONAL, rational, 3), STATUS_CODE_SUCCESS);
    EXPECT_EQ(unsignedValue.GetValue(), 300u);
}

} // namespace
} // namespace Zantor
