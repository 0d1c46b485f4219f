// Text, binary and blob field values as text and in order: text forms and
// their parsing, Base64 (RFC 4648 vectors and what each variant refuses),
// the CRC-32, Compare and IsDifferent.
#include <ZantorMiddleware/ZantorBase/FieldTypes/BinaryArray.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/BinaryString.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/CrcBlob.h>
#include <ZantorMiddleware/ZantorBase/FieldTypes/FieldTypeFactory.h>
#include <ZantorMiddleware/ZantorBase/MessageValidator.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace Zantor {
namespace {

using Bytes = std::vector<unsigned char>;
constexpr StatusCode OK = STATUS_CODE_SUCCESS, PARAMETER = STATUS_CODE_INVALID_PARAMETER, FORMAT = STATUS_CODE_INVALID_FORMAT;
constexpr unsigned char TS = FIELD_TYPE_TEXTSTRING, TA = FIELD_TYPE_TEXTARRAY, BS = FIELD_TYPE_BINARYSTRING,
                        BA = FIELD_TYPE_BINARYARRAY, BL = FIELD_TYPE_BLOB, CB = FIELD_TYPE_CRCBLOB;
const std::string NI = IFieldType::NOT_INITIALIZED_TEXT;

std::unique_ptr<IFieldType> Parse(unsigned char type, const std::string& text, StatusCode& status, unsigned& remaining)
{
    std::unique_ptr<IFieldType> value(FieldTypeFactory::GetInstance().Create(type));
    MessageValidator validator(text.data(), unsigned(text.size()));
    const Blob blob("keep", 1);
    const TextArray array("keep");
    EXPECT_EQ(OK, value->Convert(type >= BL ? static_cast<const IFieldType*>(&blob) : &array));
    status = value->FromString(validator);
    remaining = validator.GetRemaining();
    return value;
}

TEST(ByteFieldText, ToString)
{
    BinaryString binary(std::string("\x0a\xff\x00", 3));
    EXPECT_EQ("0x0aff00 0x0aff00", binary.ToString() + " " + binary.ToString(true));
    EXPECT_EQ(std::string("\x0a\xff\x00", 3), binary.ToString(false));
    EXPECT_EQ(std::string("a\0b", 3), TextString(std::string("a\0b", 3)).ToString());
    EXPECT_EQ("0x01ab \x01\xab", BinaryArray("\x01\xab").ToString() + " " + BinaryArray("\x01\xab").ToString(false));
    EXPECT_EQ("01000000 0x6162", Blob("ab", 1).ToString());
    EXPECT_EQ("78563412 0x", Blob("", 0x12345678).ToString()); // the header's bytes in memory order
    EXPECT_EQ("0a000000 0x00ff", CrcBlob(std::string("\0\xff", 2), 10).ToString());
}

// What each type reads; on failure the value ("keep", header 1) and the cursor stay.
TEST(ByteFieldText, FromString)
{
    struct Row { int line; unsigned char type; std::string text; StatusCode status; std::string after; };
    const std::string kept = "keep", keptHex = "0x6b656570", keptBlob = "01000000 0x6b656570";
    for (const Row& row : std::initializer_list<Row>{
             {__LINE__, TS, "", OK, ""},
             {__LINE__, TA, "any text 0x", OK, "any text 0x"},
             {__LINE__, TS, "[NotInitialized]", OK, NI},
             {__LINE__, TA, "[NotInitialized] ", STATUS_CODE_INVALID_LENGTH, kept},
             {__LINE__, BS, "0x0aFF", OK, "0x0aff"},
             {__LINE__, BS, "0X0a", OK, "0x0a"},
             {__LINE__, BA, "0aff", OK, "0x0aff"},  // the prefix is optional
             {__LINE__, BA, "0x", OK, "0x"},        // empty
             {__LINE__, BS, "0x0", FORMAT, keptHex}, // odd digit count
             {__LINE__, BA, "0x0g", FORMAT, keptHex},
             {__LINE__, BS, "0x 0a", FORMAT, keptHex},
             {__LINE__, BA, "[NotInitialized]", OK, NI},
             {__LINE__, BL, "0a000000 0x616263", OK, "0a000000 0x616263"},
             {__LINE__, CB, "0A000000 0X", OK, "0a000000 0x"},
             {__LINE__, BL, "0a00000 0x61", FORMAT, keptBlob},  // seven header digits
             {__LINE__, CB, "0a000000 6162", FORMAT, keptBlob},
             {__LINE__, BL, "0a000000-0x61", FORMAT, keptBlob},
             {__LINE__, CB, "0a00000g 0x61", FORMAT, keptBlob},
             {__LINE__, BL, "0a000000 0x616", FORMAT, keptBlob},
             {__LINE__, CB, "0a000000 0y61", FORMAT, keptBlob},
             {__LINE__, BL, "0a000000  0x61", FORMAT, keptBlob},
             {__LINE__, CB, "[NotInitialized]", OK, NI}})
    {
        StatusCode status;
        unsigned remaining = 0;
        const auto value = Parse(row.type, row.text, status, remaining);
        EXPECT_EQ(row.status, status) << "row at line " << row.line;
        EXPECT_EQ(row.after, value->ToString()) << "row at line " << row.line;
        EXPECT_EQ(status == OK ? 0 : row.text.size(), remaining) << "row at line " << row.line;
        std::unique_ptr<IFieldType> fresh(FieldTypeFactory::GetInstance().Create(row.type)); // not initialized before
        MessageValidator again(row.text.data(), unsigned(row.text.size()));
        EXPECT_TRUE(row.status != OK || (fresh->FromString(again) == OK && fresh->ToString() == row.after)) << row.line;
    }
    CrcBlob crc;
    MessageValidator text("0a000000 0x616263", 17);
    ASSERT_EQ(OK, crc.FromString(text));
    EXPECT_TRUE(crc.GetCrc() == 0x352441C2 && crc.GetHeader() == 10);
    // Every byte value survives the text form.
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    for (const unsigned char type : {BS, BA, BL, CB})
    {
        StatusCode status;
        unsigned remaining = 0;
        const std::string form = type >= BL ? Blob(all, 0xfedcba98).ToString() : BinaryArray(all).ToString();
        EXPECT_EQ(form, Parse(type, form, status, remaining)->ToString()) << int(type);
    }
}

TEST(ByteFieldText, Base64Vectors)
{
    struct Row { std::string bytes; std::string padded; };
    for (const Row& row : std::initializer_list<Row>{{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"},
             {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"}, {"\xfb\xff", "+/8="}, {std::string("\0\x10\x83", 3), "ABCD"}})
    {
        const std::string& raw = row.bytes, &padded = row.padded, unpadded = padded.substr(0, padded.find('='));
        const BinaryArray value(raw);
        EXPECT_EQ(padded, value.ToBase64String<true>()) << padded;
        EXPECT_EQ(unpadded, value.ToBase64String<false>()) << padded;
        BinaryArray fromPadded, fromUnpadded;
        EXPECT_EQ(OK, fromPadded.FromBase64String<true>(padded)) << padded;
        EXPECT_EQ(OK, fromUnpadded.FromBase64String<false>(unpadded)) << padded;
        EXPECT_EQ(raw, fromPadded.ToString(false)) << padded;
        EXPECT_EQ(raw, fromUnpadded.ToString(false)) << padded;
    }
    BinaryArray value("x");
    value.Reset();
    EXPECT_EQ(NI, value.ToBase64String<true>());
    EXPECT_EQ(OK, value.FromBase64String<false>("TWFu"));
    EXPECT_EQ(OK, value.FromBase64String<false>(NI));
    EXPECT_FALSE(value.IsInitialized());
    unsigned char out[4];
    unsigned length = 9;
    EXPECT_EQ(STATUS_CODE_BUFFER_OVERFLOW, BinaryArray::FromBase64("Zm9vYg==", 8, true, out, 3, length));
    EXPECT_EQ(PARAMETER, BinaryArray::FromBase64(nullptr, 4, true, out, 4, length));
    EXPECT_EQ(OK, BinaryArray::FromBase64("Zm9vYg==", 8, true, out, 4, length));
    EXPECT_EQ(4u, length);
}

// Each decoder refuses what its encoder cannot write; the value stays.
TEST(ByteFieldText, Base64Refusals)
{
    struct Row { int line; bool padded; const char* text; };
    for (const Row& row : std::initializer_list<Row>{
             {__LINE__, true, "Zg"},        // padding missing
             {__LINE__, true, "Zg="},       // not a multiple of four
             {__LINE__, true, "Zh=="},      // unused bits set (one byte)
             {__LINE__, true, "Zm9="},      // unused bits set (two bytes)
             {__LINE__, true, "Z==="},
             {__LINE__, true, "===="},
             {__LINE__, true, "Zg==Zm9v"},  // padding inside
             {__LINE__, true, "Zm=v"},
             {__LINE__, true, "Zm9v\n"},
             {__LINE__, true, "Zm-v"},      // the URL-safe alphabet
             {__LINE__, true, "Zm9 "},
             {__LINE__, false, "Zg=="},     // padding present
             {__LINE__, false, "Z"},        // one more than a multiple of four
             {__LINE__, false, "Zm9vY"},
             {__LINE__, false, "Zh"},
             {__LINE__, false, "Zm9"},
             {__LINE__, false, "Zm_v"},
             {__LINE__, false, "[NotInitialized"}})
    {
        BinaryArray value("keep");
        const std::string text = row.text;
        EXPECT_EQ(FORMAT, row.padded ? value.FromBase64String<true>(text) : value.FromBase64String<false>(text)) << "row at line " << row.line;
        EXPECT_EQ("keep", value.ToString(false)) << "row at line " << row.line;
        unsigned char out[16];
        unsigned length = 99;
        EXPECT_EQ(FORMAT, BinaryArray::FromBase64(row.text, text.size(), row.padded, out, sizeof out, length)) << row.line;
        EXPECT_EQ(99u, length) << "row at line " << row.line;
    }
}

TEST(ByteFieldText, Crc)
{
    const auto* digits = reinterpret_cast<const unsigned char*>("123456789");
    EXPECT_EQ(0xCBF43926u, CrcBlob::CalculateCrc(digits, 9, 0));
    EXPECT_EQ(0xCBF43926u, CrcBlob::CalculateCrc(digits + 4, 5, CrcBlob::CalculateCrc(digits, 4, 0))); // chained
    EXPECT_EQ(0x12345678u, CrcBlob::CalculateCrc(digits, 0, 0x12345678));
}

// Order and difference against bodies: byte-wise, a prefix first; blobs by
// header before data.
TEST(ByteFieldText, CompareAndIsDifferent)
{
    struct Row { int line; unsigned char type; std::string value; std::uint32_t header; Bytes body; StatusCode status; int order; };
    for (const Row& row : std::initializer_list<Row>{
             {__LINE__, TS, "abc", 0, {'a', 'b', 'd'}, OK, -1},
             {__LINE__, BS, "abc", 0, {'a', 'b'}, OK, 1},
             {__LINE__, TA, "ab", 0, {'a', 'b', 'c'}, OK, -1},
             {__LINE__, BA, "\xff", 0, {0x01}, OK, 1}, // unsigned bytes
             {__LINE__, TS, "abc", 0, {'a', 'b', 'c'}, OK, 0},
             {__LINE__, TS, "a", 0, {}, PARAMETER, 0},
             {__LINE__, TS, "a", 0, Bytes(256, 'a'), PARAMETER, 0},
             {__LINE__, TA, "a", 0, {}, PARAMETER, 0},
             {__LINE__, BL, "a", 2, {1, 0, 0, 0, 'b'}, OK, 1},           // header first
             {__LINE__, BL, "b", 0xFFFFFFFF, {0, 0, 0, 0x80, 'b'}, OK, 1}, // as unsigned numbers
             {__LINE__, BL, "ab", 2, {2, 0, 0, 0, 'a'}, OK, 1},
             {__LINE__, BL, "a", 2, {2, 0, 0, 0, 'a'}, OK, 0},
             {__LINE__, BL, "a", 2, {2, 0, 0, 0}, PARAMETER, 0},
             {__LINE__, CB, "abc", 5, {0xc2, 0x41, 0x24, 0x35, 5, 0, 0, 0, 'a', 'b', 'c'}, OK, 0},
             {__LINE__, CB, "abc", 4, {0xc2, 0x41, 0x24, 0x35, 5, 0, 0, 0, 'a', 'b', 'c'}, OK, -1},
             {__LINE__, CB, "abc", 5, {0xc2, 0x41, 0x24, 0x35, 5, 0, 0, 0, 'a', 'b', 'd'}, FORMAT, 0},
             {__LINE__, CB, "abc", 5, {0xc2, 0x41, 0x24, 0x35, 5, 0, 0, 0}, PARAMETER, 0}})
    {
        std::unique_ptr<IFieldType> value(FieldTypeFactory::GetInstance().Create(row.type));
        const Blob source(row.value, row.header);
        const TextArray text(row.value);
        ASSERT_EQ(OK, value->Convert(row.type >= BL ? static_cast<const IFieldType*>(&source) : &text));
        int order = 7;
        bool different = false;
        EXPECT_EQ(row.status, value->Compare(row.body.data(), unsigned(row.body.size()), order)) << "row at line " << row.line;
        EXPECT_EQ(row.status == OK ? row.order : 7, order) << "row at line " << row.line;
        EXPECT_TRUE(row.status == FORMAT || (value->IsDifferent(row.body.data(), unsigned(row.body.size()), different) == row.status &&
                                             (row.status != OK || different == (row.order != 0)))) << "row at line " << row.line;
        if (row.type < BL)
        {
            value->Reset();
            EXPECT_EQ(row.status == OK ? STATUS_CODE_NOT_INITIALIZED : row.status, value->Compare(row.body.data(), unsigned(row.body.size()), order)) << row.line;
            continue;
        }
        // The statics over two bodies agree with the value's order.
        Bytes mine(value->GetSerializedBodyLength());
        unsigned written = 0;
        ASSERT_EQ(OK, value->SerializeBody(mine.data(), unsigned(mine.size()), written));
        order = 7;
        using StaticCompare = StatusCode (*)(const void*, unsigned, const void*, unsigned, int&) noexcept;
        const StaticCompare compare = row.type == BL ? static_cast<StaticCompare>(&Blob::Compare) : static_cast<StaticCompare>(&CrcBlob::Compare);
        EXPECT_EQ(row.status, compare(mine.data(), written, row.body.data(), unsigned(row.body.size()), order)) << row.line;
        EXPECT_EQ(row.status == OK ? row.order : 7, order) << "row at line " << row.line;
        value->Reset();
        EXPECT_EQ(row.status == OK ? STATUS_CODE_NOT_INITIALIZED : row.status, value->Compare(row.body.data(), unsigned(row.body.size()), order)) << row.line;
        EXPECT_TRUE(row.status != OK || (value->IsDifferent(row.body.data(), unsigned(row.body.size()), different) == OK && different)) << row.line;
    }
    // A body that differs only in its CRC is a different body.
    bool different = false;
    const Bytes otherCrc = {0, 0, 0, 0, 5, 0, 0, 0, 'a', 'b', 'c'};
    EXPECT_TRUE(CrcBlob("abc", 5).IsDifferent(otherCrc.data(), 11, different) == OK && different);
}

} // namespace
} // namespace Zantor
