// IFieldType: the interface of every typed market-data field value, the
// fourteen field type codes with their names and length-prefix widths, and
// the operations that work from a type code alone.
//
// A value is created "not initialized" (it holds nothing), becomes
// initialized by a successful Deserialize*, FromString, Convert, Assign or a
// typed setter of its class, and returns to not initialized by Reset,
// Release, FromString("[NotInitialized]") or a conversion from a value that
// is not initialized. Every serializing operation of a value that is not
// initialized fails with STATUS_CODE_NOT_INITIALIZED, and GetSerializedLength
// and GetSerializedBodyLength then give 0.
//
// Wire forms: a value writes its record form (Serialize), its update form
// (SerializeLengthAndBody: a length prefix of FieldTypeToUpdateLengthSize
// bytes, then the body) or its body alone (SerializeBody). Lengths and
// integers go through a builder or validator in that handler's byte order
// (MessageHandler::GetEndian); a body in a caller's buffer is little-endian.
//
// Contracts: nothing throws; on every failure the value is left as it was,
// unless the operation says otherwise. Reading a body of a length the type
// does not allow: STATUS_CODE_INVALID_PARAMETER; text followed by more
// text: STATUS_CODE_INVALID_LENGTH; text that does not parse:
// STATUS_CODE_INVALID_FORMAT; a requested length shorter than the value
// needs or longer than the type allows: STATUS_CODE_INVALID_PARAMETER; a
// builder that cannot grow: its status, unchanged.
//
// Thread safety: a value belongs to one thread at a time; the free
// functions, the static members and the factory may be used from any
// number of threads at once.
//
//   IFieldType* price = FieldTypeFactory::GetInstance().Create(FIELD_TYPE_RATIONAL);
//   MessageValidator text("101.25", 6);
//   if (price->FromString(text) == STATUS_CODE_SUCCESS)
//       price->SerializeLengthAndBody(builder, 9);
//   delete price;
#pragma once

#include <ZantorMiddleware/ZantorBase/Export.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <string>

namespace Zantor {

class MessageBuilder;
class MessageValidator;

// Field type codes: the wire value of each type; the order must not change.
inline constexpr unsigned char FIELD_TYPE_DATE = 0;
inline constexpr unsigned char FIELD_TYPE_TIME = 1;
inline constexpr unsigned char FIELD_TYPE_DATETIME = 2;
inline constexpr unsigned char FIELD_TYPE_SINT = 3;
inline constexpr unsigned char FIELD_TYPE_UINT = 4;
inline constexpr unsigned char FIELD_TYPE_RATIONAL = 5;
inline constexpr unsigned char FIELD_TYPE_TRATIONAL = 6;
inline constexpr unsigned char FIELD_TYPE_TEXTSTRING = 7;
inline constexpr unsigned char FIELD_TYPE_TEXTARRAY = 8;
inline constexpr unsigned char FIELD_TYPE_BINARYSTRING = 9;
inline constexpr unsigned char FIELD_TYPE_BINARYARRAY = 10;
inline constexpr unsigned char FIELD_TYPE_BLOB = 11;
inline constexpr unsigned char FIELD_TYPE_CRCBLOB = 12;
inline constexpr unsigned char FIELD_TYPE_BOOLEAN = 13;
inline constexpr unsigned char FIELD_TYPE_LAST = FIELD_TYPE_BOOLEAN;
// What StringToFieldType answers for a name it does not know.
inline constexpr unsigned char FIELD_TYPE_UNKNOWN = 255;

// The name of a type code ("Date" ... "Boolean"); "Unknown" above 13. The
// text lives as long as the process.
ZANTOR_BASE_API const char* FieldTypeToString(unsigned char type) noexcept;
// The code of an exact, case-sensitive name; FIELD_TYPE_UNKNOWN otherwise.
ZANTOR_BASE_API unsigned char StringToFieldType(const std::string& name) noexcept;
// Width in bytes of the length prefix before the body in a record, and in
// an update; 0 means no prefix, and 0 for any code above 13.
ZANTOR_BASE_API unsigned int FieldTypeToRecordLengthSize(unsigned char type) noexcept;
ZANTOR_BASE_API unsigned int FieldTypeToUpdateLengthSize(unsigned char type) noexcept;

class ZANTOR_BASE_API IFieldType
{
public:
    // The text of a value that holds nothing. Use its value: a program
    // linked against the Windows DLL cannot take the member's address (bind
    // it to a reference), since MinGW does not export constexpr members.
    static constexpr const char* NOT_INITIALIZED_TEXT = "[NotInitialized]";

    // Frees any heap storage the value owns.
    virtual ~IFieldType() = default;

    // Marks the value not initialized; keeps any storage.
    virtual void Reset() noexcept = 0;
    // Frees any heap storage (text, binary and blob types) and marks the
    // value not initialized.
    virtual void Release() noexcept = 0;
    // Compares this value with a serialized body of the same type: result
    // negative, 0 or positive. A body that does not read gives that status.
    virtual StatusCode Compare(const void* body, unsigned int bodyLength, int& result) const = 0;
    // Takes the value of another field, converting where the type allows
    // (STATUS_CODE_MISMATCH otherwise, whether or not the source holds a
    // value); an accepted source that is not initialized makes this value
    // not initialized and succeeds. A null source:
    // STATUS_CODE_INVALID_PARAMETER.
    virtual StatusCode Convert(const IFieldType* other) = 0;
    // The text form; "[NotInitialized]" when not initialized.
    virtual std::string ToString() const = 0;
    // Parses the whole remaining text of the validator; the exact text
    // "[NotInitialized]" resets the value.
    virtual StatusCode FromString(MessageValidator& text) = 0;
    // A text naming the input form FromString accepts ("true|false", ...).
    virtual const char* GetFromStringFormat() const noexcept = 0;
    // Appends the record form (the field definition's length for the
    // fixed-size types).
    virtual StatusCode Serialize(MessageBuilder& builder, unsigned int maxLength) const = 0;
    // Writes the body alone into buffer; written receives its length.
    virtual StatusCode SerializeBody(void* buffer, unsigned int length, unsigned int& written) const = 0;
    // Appends the update form: a length prefix of the update length size,
    // then the body.
    virtual StatusCode SerializeLengthAndBody(MessageBuilder& builder, unsigned int maxLength) const = 0;
    // Reads the record form; the cursor moves only on success.
    virtual StatusCode Deserialize(MessageValidator& validator, unsigned int length) = 0;
    // Takes the value from a body.
    virtual StatusCode DeserializeBody(const void* body, unsigned int length) = 0;
    // Reads the update form; the cursor moves only on success.
    virtual StatusCode DeserializeLengthAndBody(MessageValidator& validator, unsigned int maxLength) = 0;
    // Bytes Serialize and SerializeBody would write; 0 when not initialized.
    virtual unsigned int GetSerializedLength() const noexcept = 0;
    virtual unsigned int GetSerializedBodyLength() const noexcept = 0;
    // Whether a serialized body holds a different value (flag included).
    virtual StatusCode IsDifferent(const void* body, unsigned int bodyLength, bool& different) const = 0;

    bool IsInitialized() const noexcept { return initialized_ != 0; }
    unsigned char GetType() const noexcept { return type_; }

    // Copies value and flag from a field of the same type; another type
    // gives STATUS_CODE_MISMATCH, a null one STATUS_CODE_INVALID_PARAMETER,
    // and nothing changes.
    StatusCode Assign(const IFieldType* other);

    // The value written as the type a field definition demands: with this
    // field's own code the virtual operation is called; otherwise a
    // temporary of type (STATUS_CODE_HEAP_EMPTY when it cannot be made)
    // converts from this field and is serialized. The conversion's or the
    // serialization's status is returned.
    StatusCode Serialize(unsigned char type, MessageBuilder& builder, unsigned int maxLength) const;
    StatusCode SerializeBody(unsigned char type, void* buffer, unsigned int length, unsigned int& written) const;
    StatusCode SerializeLengthAndBody(unsigned char type, MessageBuilder& builder, unsigned int maxLength) const;
    // The reading counterparts: a temporary of type reads the input and, on
    // success, this field converts from it. The cursor moves only when the
    // whole operation succeeds.
    StatusCode Deserialize(unsigned char type, MessageValidator& validator, unsigned int length);
    StatusCode DeserializeBody(unsigned char type, const void* body, unsigned int length);
    StatusCode DeserializeLengthAndBody(unsigned char type, MessageValidator& validator, unsigned int maxLength);

    // Raw bytes written as a byte-carrying type without a value object:
    // codes 7 and 9 as TextString, 8 and 10 as TextArray, 11 as Blob with
    // header word 0, 12 as CrcBlob with the CRC of the data and header word
    // 0. Codes 0 to 6: STATUS_CODE_NOT_SUPPORTED; FIELD_TYPE_BOOLEAN and
    // invalid codes: STATUS_CODE_INVALID_PARAMETER.
    static StatusCode Serialize(unsigned char type, MessageBuilder& builder, unsigned int maxLength,
                                const unsigned char* data, unsigned int length);
    static StatusCode SerializeBody(unsigned char type, void* buffer, unsigned int bufferLength,
                                    unsigned int& written, const unsigned char* data, unsigned int length);
    static StatusCode SerializeLengthAndBody(unsigned char type, MessageBuilder& builder, unsigned int maxLength,
                                             const unsigned char* data, unsigned int length);
    // Checks that an update-form field of type stands at the validator's
    // position, advances past it and reports where its body lies (offset
    // from the start of the validator's buffer). Invalid code:
    // STATUS_CODE_INVALID_PARAMETER. The cursor moves only on success.
    static StatusCode ValidateSerializedLengthAndBody(unsigned char type, MessageValidator& validator,
                                                      unsigned int& bodyOffset, unsigned int& bodyLength);
    // Whether a body of length bytes is valid for type; false above 13.
    static bool IsValidSerializedBodyLength(unsigned char type, unsigned int length) noexcept;

protected:
    explicit IFieldType(unsigned char type) noexcept
        : initialized_(0), type_(type)
    {
    }
    IFieldType(const IFieldType&) = default;
    IFieldType& operator=(const IFieldType&) = default;

    void SetInitialized(bool initialized) noexcept { initialized_ = initialized ? 1 : 0; }

    // Handles the one text every FromString accepts: when the validator's
    // remaining text starts with "[NotInitialized]", the value is reset
    // (text after it: STATUS_CODE_INVALID_LENGTH, nothing changes), the
    // cursor moves to the end, status is set and true returned; otherwise
    // false and nothing is touched.
    bool FromNotInitializedText(MessageValidator& text, StatusCode& status) noexcept;

    unsigned char initialized_; // 0: holds no value; 1: holds a value
    unsigned char type_;        // the field type code, fixed at construction
};

} // namespace Zantor
