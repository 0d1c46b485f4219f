// The text, binary and blob field values on the wire: exact bytes of every
// form in both byte orders, round trips of all six types at the size
// boundaries, every reading failure leaving value and cursor alone, inline
// and heap storage, conversions among the six, and the raw-byte statics of
// IFieldType for every code.
#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/BinaryArray.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/BinaryString.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/CrcBlob.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/FieldTypeFactory.h>
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#if defined(__linux__)
#  include "support/AddressSpaceLimit.h"
#  if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#    define ZANTOR_TEST_SANITIZED 1
#  elif defined(__has_feature)
#    define ZANTOR_TEST_SANITIZED (__has_feature(address_sanitizer) || __has_feature(thread_sanitizer))
#  endif
#endif

namespace Zantor {
namespace {

using Bytes = std::vector<unsigned char>;
using Endian = MessageHandler::Endian;
constexpr StatusCode OK = STATUS_CODE_SUCCESS, PARAMETER = STATUS_CODE_INVALID_PARAMETER, FORMAT = STATUS_CODE_INVALID_FORMAT;
constexpr unsigned char TS = FIELD_TYPE_TEXTSTRING, TA = FIELD_TYPE_TEXTARRAY, BS = FIELD_TYPE_BINARYSTRING,
                        BA = FIELD_TYPE_BINARYARRAY, BL = FIELD_TYPE_BLOB, CB = FIELD_TYPE_CRCBLOB;
constexpr Endian LE = MessageHandler::ENDIAN_LITTLE, BE = MessageHandler::ENDIAN_BIG;
constexpr unsigned ANY = ~0u;
enum Form { RECORD, UPDATE, BODY };

Bytes operator+(Bytes a, const Bytes& b) { a.insert(a.end(), b.begin(), b.end()); return a; }
Bytes B(std::string_view text) { return Bytes(text.begin(), text.end()); }
Bytes Pattern(unsigned n) { Bytes b(n); for (unsigned i = 0; i < n; ++i) b[i] = static_cast<unsigned char>(i * 7); return b; }

// A value of type holding bytes (and header, for the blobs).
std::unique_ptr<IFieldType> Make(unsigned char type, const Bytes& bytes, std::uint32_t header = 0)
{
    std::unique_ptr<IFieldType> value(FieldTypeFactory::GetInstance().Create(type));
    Blob blob;
    TextArray array;
    EXPECT_EQ(OK, blob.Set(bytes.data(), unsigned(bytes.size()), header));
    EXPECT_EQ(OK, array.Set(bytes.data(), unsigned(bytes.size())));
    EXPECT_EQ(OK, value->Convert(type >= BL ? static_cast<IFieldType*>(&blob) : &array));
    return value;
}

// Writes value (or, without one, the raw bytes through IFieldType's statics) in a form.
StatusCode Write(const IFieldType* value, unsigned char type, const Bytes& raw, Form form, Endian endian, unsigned max, Bytes& out)
{
    MessageBuilder builder;
    builder.SetEndian(endian);
    Bytes buffer(max == ANY ? 1 << 17 : max);
    unsigned written = 0;
    StatusCode status;
    if (form == BODY)
        status = value ? value->SerializeBody(buffer.data(), unsigned(buffer.size()), written)
                       : IFieldType::SerializeBody(type, buffer.data(), unsigned(buffer.size()), written, raw.data(), unsigned(raw.size()));
    else if (form == RECORD)
        status = value ? value->Serialize(builder, max) : IFieldType::Serialize(type, builder, max, raw.data(), unsigned(raw.size()));
    else
        status = value ? value->SerializeLengthAndBody(builder, max)
                       : IFieldType::SerializeLengthAndBody(type, builder, max, raw.data(), unsigned(raw.size()));
    out = form == BODY ? Bytes(buffer.begin(), buffer.begin() + written) : Bytes(builder.GetBuffer(), builder.GetBuffer() + builder.GetLength());
    return status;
}

// Reads input in a form into value; consumed receives the cursor.
StatusCode Read(IFieldType& value, Form form, Endian endian, unsigned max, const Bytes& input, unsigned& consumed)
{
    if (form == BODY)
        return consumed = 0, value.DeserializeBody(input.data(), unsigned(input.size()));
    MessageValidator validator(input.data(), unsigned(input.size()));
    validator.SetEndian(endian);
    const StatusCode status = form == RECORD ? value.Deserialize(validator, max) : value.DeserializeLengthAndBody(validator, max);
    consumed = validator.GetCursor();
    return status;
}

TEST(ByteFieldWire, ExactBytes)
{
    struct Row { int line; unsigned char type; Form form; unsigned max; const char* value; std::uint32_t header; Bytes little, big; const char* readBack = nullptr; };
    const Bytes crc9 = {0x26, 0x39, 0xf4, 0xcb, 0, 0, 0, 0, '1', '2', '3', '4', '5', '6', '7', '8', '9'};
    for (const Row& row : std::initializer_list<Row>{
             {__LINE__, TS, RECORD, 3, "abc", 0, {3, 'a', 'b', 'c'}, {}},
             {__LINE__, BS, UPDATE, 255, "abc", 0, {3, 'a', 'b', 'c'}, {}},
             {__LINE__, TS, BODY, 3, "abc", 0, {'a', 'b', 'c'}, {}},
             {__LINE__, TA, RECORD, 3, "abc", 0, {'a', 'b', 'c'}, {}},
             {__LINE__, BA, RECORD, 5, "abc", 0, {'a', 'b', 'c', 0, 0}, {}, "0x6162630000"}, // padded; reads back padded
             {__LINE__, TA, UPDATE, 3, "abc", 0, {3, 'a', 'b', 'c'}, {}},
             {__LINE__, BA, BODY, 3, "abc", 0, {'a', 'b', 'c'}, {}},
             {__LINE__, BL, UPDATE, 7, "abc", 0, {7, 0, 0, 0, 0, 0, 0, 0, 'a', 'b', 'c'}, {0, 0, 0, 7, 0, 0, 0, 0, 'a', 'b', 'c'}},
             {__LINE__, BL, RECORD, 9, "abc", 0x01020304, {7, 0, 0, 0, 4, 3, 2, 1, 'a', 'b', 'c'}, {0, 0, 0, 7, 4, 3, 2, 1, 'a', 'b', 'c'}},
             {__LINE__, BL, BODY, 7, "abc", 0x01020304, {4, 3, 2, 1, 'a', 'b', 'c'}, {}},
             {__LINE__, CB, UPDATE, 17, "123456789", 0, Bytes{17, 0, 0, 0} + crc9, Bytes{0, 0, 0, 17} + crc9},
             {__LINE__, CB, BODY, 11, "abc", 5, {0xc2, 0x41, 0x24, 0x35, 5, 0, 0, 0, 'a', 'b', 'c'}, {}}})
    {
        for (const Endian endian : {LE, BE})
        {
            const Bytes& expected = endian == BE && !row.big.empty() ? row.big : row.little;
            const auto value = Make(row.type, B(row.value), row.header);
            Bytes out;
            EXPECT_EQ(OK, Write(value.get(), row.type, {}, row.form, endian, row.max, out)) << "row at line " << row.line;
            EXPECT_EQ(expected, out) << "row at line " << row.line << ", endian " << endian;
            if (row.header == 0) // the raw-byte statics write header 0
            {
                EXPECT_EQ(OK, Write(nullptr, row.type, B(row.value), row.form, endian, row.max, out)) << "row at line " << row.line;
                EXPECT_EQ(expected, out) << "raw, row at line " << row.line << ", endian " << endian;
            }
            const auto back = Make(row.type, B("old"), 1);
            unsigned consumed = 0;
            EXPECT_EQ(OK, Read(*back, row.form, endian, row.max, expected, consumed)) << "row at line " << row.line;
            EXPECT_EQ(row.form == BODY ? 0 : expected.size(), consumed) << "row at line " << row.line;
            EXPECT_EQ(row.readBack ? row.readBack : value->ToString(), back->ToString()) << "row at line " << row.line;
        }
    }
}

// Every type in every form and byte order at the size boundaries: 32 bytes
// inline / 33 on the heap, 255 / 256 for the one-byte lengths.
TEST(ByteFieldWire, RoundTrips)
{
    for (const unsigned char type : {TS, TA, BS, BA, BL, CB})
        for (const Endian endian : {LE, BE})
            for (const unsigned length : {1u, 32u, 33u, 255u, 256u, 70000u})
                for (const Form form : {RECORD, UPDATE, BODY})
                {
                    const std::string where = std::string(FieldTypeToString(type)) + " length " + std::to_string(length) +
                                              " form " + std::to_string(form) + " endian " + std::to_string(endian);
                    const bool fits = type >= BL || length <= 255 || ((type == TA || type == BA) && form != UPDATE);
                    const unsigned overhead = type == BL ? 4 : type == CB ? 8 : 0, max = length + overhead;
                    const auto value = Make(type, Pattern(length), 0xA5B6C7D8);
                    Bytes wire, body, raw;
                    ASSERT_EQ(fits ? OK : PARAMETER, Write(value.get(), type, {}, form, endian, max, wire)) << where;
                    if (!fits)
                        continue;
                    EXPECT_EQ(wire.size(), form == BODY ? value->GetSerializedBodyLength() : value->GetSerializedLength() + (form == UPDATE && (type == TA || type == BA))) << where;
                    const auto back = Make(type, B("other"));
                    unsigned consumed = 0;
                    ASSERT_EQ(OK, Read(*back, form, endian, max, wire, consumed)) << where;
                    ASSERT_EQ(form == BODY ? 0 : wire.size(), consumed) << where;
                    EXPECT_EQ(value->ToString(), back->ToString()) << where;
                    ASSERT_EQ(OK, Write(value.get(), type, {}, BODY, endian, max, body)) << where;
                    bool different = true;
                    int order = 1;
                    EXPECT_TRUE(back->IsDifferent(body.data(), unsigned(body.size()), different) == OK && !different) << where;
                    EXPECT_TRUE(back->Compare(body.data(), unsigned(body.size()), order) == OK && order == 0) << where;
                    if (form != UPDATE)
                        continue;
                    // The dispatcher finds the body where the update form put it.
                    MessageValidator validator(wire.data(), unsigned(wire.size()));
                    validator.SetEndian(endian);
                    unsigned offset = 0, bodyLength = 0;
                    ASSERT_EQ(OK, IFieldType::ValidateSerializedLengthAndBody(type, validator, offset, bodyLength)) << where;
                    EXPECT_EQ(wire.size(), validator.GetCursor()) << where;
                    EXPECT_EQ(body, Bytes(wire.begin() + offset, wire.begin() + offset + bodyLength)) << where;
                }
}

// Reading refuses what the type cannot hold; value and cursor stay as they were.
TEST(ByteFieldWire, ReadingFailuresChangeNothing)
{
    struct Row { int line; unsigned char type; Form form; unsigned max; Bytes input; StatusCode status; };
    for (const Row& row : std::initializer_list<Row>{
             {__LINE__, TS, UPDATE, ANY, {}, PARAMETER},                      // no length byte
             {__LINE__, TS, UPDATE, ANY, {0, 'a'}, PARAMETER},                // length 0
             {__LINE__, BS, RECORD, ANY, {3, 'a', 'b'}, PARAMETER},           // past the end
             {__LINE__, TS, UPDATE, 2, {3, 'a', 'b', 'c'}, PARAMETER},        // above maxLength
             {__LINE__, TS, BODY, ANY, {}, PARAMETER},
             {__LINE__, TS, BODY, ANY, Bytes(256, 'x'), PARAMETER},           // 255 is the longest body
             {__LINE__, TA, RECORD, 4, {'a', 'b', 'c'}, PARAMETER},           // a record shorter than its length
             {__LINE__, BA, RECORD, 0, {'a'}, PARAMETER},                     // record length 0
             {__LINE__, TA, UPDATE, ANY, {0}, PARAMETER},
             {__LINE__, BA, UPDATE, ANY, {2, 'a'}, PARAMETER},
             {__LINE__, TA, BODY, ANY, {}, PARAMETER},
             {__LINE__, BL, UPDATE, ANY, {7, 0, 0}, PARAMETER},               // a cut length
             {__LINE__, BL, UPDATE, ANY, {4, 0, 0, 0, 1, 2, 3, 4}, PARAMETER}, // body of 4 bytes
             {__LINE__, BL, RECORD, ANY, {6, 0, 0, 0, 0, 0, 0, 0, 'a'}, PARAMETER},
             {__LINE__, BL, UPDATE, 5, {6, 0, 0, 0, 0, 0, 0, 0, 'a', 'b'}, PARAMETER},
             {__LINE__, BL, BODY, ANY, {0, 0, 0, 0}, PARAMETER},
             {__LINE__, CB, UPDATE, ANY, {8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, PARAMETER},
             {__LINE__, CB, BODY, ANY, {0, 0, 0, 0, 0, 0, 0, 0}, PARAMETER},
             {__LINE__, CB, BODY, ANY, {0xc2, 0x41, 0x24, 0x35, 5, 0, 0, 0, 'a', 'b', 'd'}, FORMAT}, // CRC of "abc"
             {__LINE__, CB, RECORD, ANY, {11, 0, 0, 0, 0xc2, 0x41, 0x24, 0x35, 5, 0, 0, 0, 'a', 'b', 'd'}, FORMAT}})
    {
        const auto value = Make(row.type, B("keep"), 9);
        const std::string before = value->ToString();
        unsigned consumed = 99;
        EXPECT_EQ(row.status, Read(*value, row.form, LE, row.max, row.input, consumed)) << "row at line " << row.line;
        EXPECT_EQ(0u, consumed) << "row at line " << row.line;
        EXPECT_EQ(before, value->ToString()) << "row at line " << row.line;
        if (row.form == UPDATE && row.max == ANY)
        {
            MessageValidator validator(row.input.data(), unsigned(row.input.size()));
            unsigned offset = 7, length = 7;
            EXPECT_EQ(row.status, IFieldType::ValidateSerializedLengthAndBody(row.type, validator, offset, length)) << row.line;
            EXPECT_TRUE(validator.GetCursor() == 0 && offset == 7 && length == 7) << "row at line " << row.line;
        }
    }
}

// Writing refuses a value the form cannot carry; the builder stays as it was.
TEST(ByteFieldWire, WritingFailures)
{
    struct Row { int line; unsigned char type; Form form; unsigned max; unsigned length; StatusCode status; };
    for (const Row& row : std::initializer_list<Row>{
             {__LINE__, TS, UPDATE, 3, 0, PARAMETER},     // empty
             {__LINE__, TS, RECORD, 2, 3, PARAMETER},     // longer than maxLength
             {__LINE__, BS, BODY, 2, 3, PARAMETER},       // longer than the buffer
             {__LINE__, TA, RECORD, 2, 3, PARAMETER},     // longer than the record
             {__LINE__, BA, BODY, 3, 0, PARAMETER},
             {__LINE__, BL, UPDATE, 6, 3, PARAMETER},     // body 7 > 6
             {__LINE__, BL, RECORD, 100, 0, PARAMETER},   // no data
             {__LINE__, BL, BODY, 6, 3, PARAMETER},
             {__LINE__, CB, UPDATE, 10, 3, PARAMETER},    // body 11 > 10
             {__LINE__, CB, BODY, 10, 3, PARAMETER}})
    {
        Bytes out;
        EXPECT_EQ(row.status, Write(Make(row.type, Pattern(row.length)).get(), row.type, {}, row.form, LE, row.max, out)) << row.line;
        EXPECT_EQ(row.status, Write(nullptr, row.type, Pattern(row.length), row.form, LE, row.max, out)) << "raw, row at line " << row.line;
        EXPECT_TRUE(out.empty()) << "row at line " << row.line;
    }
    for (const unsigned char type : {TS, TA, BS, BA, BL, CB})
    {
        const std::unique_ptr<IFieldType> empty(FieldTypeFactory::GetInstance().Create(type));
        unsigned char storage[8];
        MessageBuilder full(storage, sizeof storage, false);
        full.AppendBuffer("12", 2);
        Bytes out;
        for (const Form form : {RECORD, UPDATE, BODY})
            EXPECT_EQ(STATUS_CODE_NOT_INITIALIZED, Write(empty.get(), type, {}, form, LE, 64, out)) << int(type) << form;
        EXPECT_EQ(STATUS_CODE_BUFFER_OVERFLOW, Make(type, Pattern(7))->SerializeLengthAndBody(full, 64)) << int(type);
        EXPECT_EQ(2u, full.GetLength()) << int(type);
        EXPECT_EQ(0u, empty->GetSerializedLength() + empty->GetSerializedBodyLength()) << int(type);
    }
}

// Data that lies in the builder's own heap block survives the block's growth.
TEST(ByteFieldWire, DataInsideTheBuilder)
{
    MessageBuilder builder;
    ASSERT_EQ(OK, builder.AdjustBufferSize(40));
    builder.AppendBuffer(Pattern(40).data(), 40);
    ASSERT_EQ(OK, IFieldType::Serialize(BL, builder, 100, builder.GetBuffer(), 40));
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    ASSERT_EQ(OK, validator.ValidateBytes(40));
    const unsigned char* data = nullptr;
    unsigned length = 0;
    std::uint32_t header = 1;
    ASSERT_EQ(OK, Blob::Deserialize(validator, 100, data, length, header));
    EXPECT_EQ(builder.GetBuffer() + 48, data); // pointing into the message, not a copy
    EXPECT_EQ(Pattern(40), Bytes(data, data + length));
    EXPECT_EQ(0u, header);
}

TEST(ByteFieldStorage, InlineHeapAndRelease)
{
    TextString text(std::string(32, 'a'));
    EXPECT_TRUE(text.UsesInlineBuffer() && !text.OwnsHeapBuffer());
    ASSERT_EQ(OK, text.Set(std::string(33, 'b')));
    EXPECT_TRUE(!text.UsesInlineBuffer() && text.OwnsHeapBuffer());
    const TextString copy = text; // deep
    EXPECT_NE(copy.GetData(), text.GetData());
    EXPECT_EQ(copy.ToString(), text.ToString());
    ASSERT_EQ(OK, text.Set(text.GetData() + 1, 32)); // from its own heap block, to inline
    EXPECT_TRUE(text.UsesInlineBuffer() && text.OwnsHeapBuffer());
    EXPECT_EQ(std::string(32, 'b'), text.ToString());
    const Bytes pattern = Pattern(40);
    ASSERT_EQ(OK, text.Set(pattern.data(), 40));
    ASSERT_EQ(OK, text.Set(text.GetData() + 2, 38)); // within its own heap block
    EXPECT_EQ(Bytes(pattern.begin() + 2, pattern.end()), Bytes(text.GetData(), text.GetData() + text.GetLength()));
    text.Release();
    EXPECT_TRUE(text.UsesInlineBuffer() && !text.OwnsHeapBuffer() && !text.IsInitialized() && text.GetLength() == 0);
    for (const unsigned char type : {TS, TA, BS, BA, BL, CB})
    {
        const auto value = Make(type, Pattern(33));
        value->Reset();
        EXPECT_EQ(std::string(IFieldType::NOT_INITIALIZED_TEXT), value->ToString()) << int(type);
        value->Release();
        EXPECT_FALSE(value->IsInitialized()) << int(type);
    }
    CrcBlob crc("abc", 5), crcCopy;
    crcCopy = crc;
    EXPECT_TRUE(crcCopy.GetCrc() == 0x352441C2 && crcCopy.GetHeader() == 5 && crcCopy.GetData() != crc.GetData());
    crc.Release();
    crcCopy.Reset();
    EXPECT_TRUE(crc.GetCrc() == 0 && crc.GetHeader() == 0 && crc.GetLength() == 0 && crcCopy.GetCrc() == 0);
}

// Which type converts from which; a source that is not initialized resets.
TEST(ByteFieldConvert, Matrix)
{
    for (const unsigned char target : {TS, TA, BS, BA, BL, CB})
        for (const unsigned char source : {TS, TA, BS, BA, BL, CB})
        {
            const auto to = Make(target, B("before"), 3), from = Make(source, B("xyz"), 7);
            const bool allowed = target >= BL || source < BL;
            ASSERT_EQ(allowed ? OK : STATUS_CODE_MISMATCH, to->Convert(from.get())) << int(target) << " from " << int(source);
            EXPECT_EQ(!allowed ? Make(target, B("before"), 3)->ToString() : Make(target, B("xyz"), source >= BL ? 7 : 0)->ToString(),
                      to->ToString()) << int(target) << " from " << int(source);
            from->Reset();
            EXPECT_EQ(allowed ? OK : STATUS_CODE_MISMATCH, to->Convert(from.get()));
            EXPECT_EQ(allowed, !to->IsInitialized()) << int(target) << " from " << int(source);
        }
    CrcBlob crc;
    ASSERT_EQ(OK, crc.Convert(Make(TS, B("abc")).get()));
    EXPECT_EQ(0x352441C2u, crc.GetCrc());
    EXPECT_EQ(OK, crc.Convert(&crc));
}

// Codes 0 to 6 have no raw form; 13 and above are not byte-carrying codes.
TEST(ByteFieldStatics, RawFormsPerCode)
{
    const Bytes data = B("abc"), update = {3, 'a', 'b', 'c'};
    for (unsigned code = 0; code <= 255; ++code)
    {
        const auto type = static_cast<unsigned char>(code);
        const StatusCode expected = code < TS ? STATUS_CODE_NOT_SUPPORTED : code > CB ? PARAMETER : OK;
        MessageBuilder builder;
        unsigned char buffer[16];
        unsigned written = 0, offset = 0, length = 0;
        EXPECT_EQ(expected, IFieldType::Serialize(type, builder, 100, data.data(), 3)) << code;
        EXPECT_EQ(expected, IFieldType::SerializeLengthAndBody(type, builder, 100, data.data(), 3)) << code;
        EXPECT_EQ(expected, IFieldType::SerializeBody(type, buffer, sizeof buffer, written, data.data(), 3)) << code;
        MessageValidator validator(update.data(), 4);
        if (code >= TS && code != FIELD_TYPE_BOOLEAN) // the other codes read their own forms
        {
            EXPECT_EQ(code == TS || code == TA || code == BS || code == BA ? OK : PARAMETER,
                      IFieldType::ValidateSerializedLengthAndBody(type, validator, offset, length)) << code;
        }
    }
}

#if defined(__linux__) && !ZANTOR_TEST_SANITIZED
// With the address space capped, large values cannot be stored: HEAP_EMPTY,
// and nothing changes; a copy throws.
TEST(ByteFieldStorage, HeapEmptyUnderAnAddressSpaceLimit)
{
    const auto check = [] {
        const Bytes big(32 << 20, 'A');
        Bytes wire((32 << 20) + 4);
        wire[0] = 2; // 0x02000000 bytes of body, big-endian
        const std::string base64(32 << 20, 'A');
        BinaryArray value("keep"), large;
        Blob blob("keep", 1);
        MessageValidator validator(wire.data(), unsigned(wire.size()));
        validator.SetEndian(BE);
        if (large.Set(big.data(), unsigned(big.size())) != OK)
            return 1;
        if (!CapAddressSpace(16 << 20))
            return 2;
        if (value.Set(big.data(), unsigned(big.size())) != STATUS_CODE_HEAP_EMPTY || value.ToString(false) != "keep")
            return 3;
        if (value.FromBase64String<true>(base64) != STATUS_CODE_HEAP_EMPTY || value.ToString(false) != "keep")
            return 4;
        if (blob.Deserialize(validator, ANY) != STATUS_CODE_HEAP_EMPTY || validator.GetCursor() != 0 || blob.ToString() != "01000000 0x6b656570")
            return 5;
        try { const BinaryArray copy(large); } catch (const StatusCodeException& e) { return e.GetCode() == STATUS_CODE_HEAP_EMPTY ? 0 : 6; }
        return 7;
    };
    EXPECT_EXIT(std::_Exit(check()), testing::ExitedWithCode(0), "");
}
#endif

} // namespace
} // namespace Zantor
