// MessageBuilder: the byte buffer every wire form of the library is written
// with. It appends, inserts, overwrites and erases raw bytes and integers of
// 1, 2, 4 and 8 bytes at any position, in either byte order.
//
// Storage: the builder starts in a caller-supplied initial buffer (which it
// never frees; it may be null with size 0). A growable builder moves to a
// heap block it owns when the initial buffer is full, growing by half again
// (rounded up to a multiple of 4), and frees that block when it is destroyed
// or shrinks back. A builder that is not growable answers
// STATUS_CODE_BUFFER_OVERFLOW instead.
//
// Contracts: every operation returns a StatusCode. On failure nothing
// changes (length, bytes and storage), except where an operation says so
// (AppendPrintf, AppendPrintfString).
//
// Thread safety: a builder belongs to one thread at a time.
//
//   unsigned char storage[64];
//   MessageBuilder builder(storage, sizeof storage);
//   builder.AppendUInt32(price, MessageHandler::ENDIAN_BIG);
#pragma once

#include <ZantorMiddleware/ZantorBase/Export.h>
#include <ZantorMiddleware/ZantorBase/MessageHandler.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace Zantor {

class ZANTOR_BASE_API MessageBuilder : public MessageHandler
{
public:
    // An empty growable builder with no initial buffer: the first write
    // allocates.
    MessageBuilder() noexcept;
    // A builder over the caller's initialBuffer of initialSize bytes. The
    // buffer must outlive the builder; the builder never frees it.
    MessageBuilder(void* initialBuffer, unsigned initialSize, bool growable = true) noexcept;
    ~MessageBuilder();

    MessageBuilder(const MessageBuilder&) = delete;
    MessageBuilder& operator=(const MessageBuilder&) = delete;

    // The message written so far: GetLength() bytes at GetBuffer(). The
    // pointer changes when the builder grows.
    const unsigned char* GetBuffer() const noexcept { return buffer_; }
    unsigned char* GetBuffer() noexcept { return buffer_; }
    unsigned GetLength() const noexcept { return length_; }
    unsigned GetCapacity() const noexcept { return capacity_; }
    unsigned GetInitialSize() const noexcept { return initialSize_; }
    bool IsGrowable() const noexcept { return growable_; }
    // True while the builder writes into the caller's initial buffer.
    bool IsUsingInitialBuffer() const noexcept { return buffer_ == initialBuffer_; }
    // Forgets the message (length 0) and keeps the storage.
    void Reset() noexcept { length_ = 0; }

    // Raw bytes. data may point into this builder's own message. A null data
    // with a non-zero size gives STATUS_CODE_INVALID_PARAMETER. With reverse set the bytes are stored last to first, which
    // is how a multi-byte value is written big-endian.
    // Insert and Overwrite fail with STATUS_CODE_INVALID_PARAMETER when
    // position > GetLength(); Overwrite may extend the message past its end
    // but never leaves a gap. Erase fails with STATUS_CODE_INVALID_PARAMETER
    // when position + size > GetLength().
    StatusCode AppendBuffer(const void* data, unsigned size, bool reverse = false);
    StatusCode InsertBuffer(unsigned position, const void* data, unsigned size, bool reverse = false);
    StatusCode OverwriteBuffer(unsigned position, const void* data, unsigned size, bool reverse = false);
    StatusCode EraseBuffer(unsigned position, unsigned size);

    // Built-in integers of 1, 2, 4 or 8 bytes in the machine's order
    // (little-endian on every platform the library serves).
    template <typename T>
    StatusCode AppendBuiltIn(T value)
    {
        static_assert(IsBuiltInWidth<T>(), "1-, 2-, 4- or 8-byte integer required");
        if (sizeof(T) <= capacity_ - length_) [[likely]]
        {
            std::memcpy(buffer_ + length_, &value, sizeof(T));
            length_ += sizeof(T);
            return STATUS_CODE_SUCCESS;
        }
        return AppendBuffer(&value, sizeof(T), false);
    }
    template <typename T>
    StatusCode InsertBuiltIn(unsigned position, T value)
    {
        static_assert(IsBuiltInWidth<T>(), "1-, 2-, 4- or 8-byte integer required");
        return InsertBuffer(position, &value, sizeof(T), false);
    }
    template <typename T>
    StatusCode OverwriteBuiltIn(unsigned position, T value)
    {
        static_assert(IsBuiltInWidth<T>(), "1-, 2-, 4- or 8-byte integer required");
        if (position <= length_ && sizeof(T) <= length_ - position)
        {
            std::memcpy(buffer_ + position, &value, sizeof(T));
            return STATUS_CODE_SUCCESS;
        }
        return OverwriteBuffer(position, &value, sizeof(T), false);
    }

    // Integers with an explicit byte order. ENDIAN_LITTLE stores the value
    // as it is; ENDIAN_BIG (any non-zero value) stores it byte-reversed.
    StatusCode AppendUInt8(std::uint8_t value) { return AppendBuiltIn(value); }
    StatusCode AppendInt8(std::int8_t value) { return AppendBuiltIn(value); }
    StatusCode AppendUInt16(std::uint16_t value, Endian endian) { return AppendBuiltIn(ToOrder(value, endian)); }
    StatusCode AppendInt16(std::int16_t value, Endian endian) { return AppendBuiltIn(ToOrder(value, endian)); }
    StatusCode AppendUInt32(std::uint32_t value, Endian endian) { return AppendBuiltIn(ToOrder(value, endian)); }
    StatusCode AppendInt32(std::int32_t value, Endian endian) { return AppendBuiltIn(ToOrder(value, endian)); }
    StatusCode AppendUInt64(std::uint64_t value, Endian endian) { return AppendBuiltIn(ToOrder(value, endian)); }
    StatusCode AppendInt64(std::int64_t value, Endian endian) { return AppendBuiltIn(ToOrder(value, endian)); }

    StatusCode InsertUInt8(unsigned position, std::uint8_t value) { return InsertBuiltIn(position, value); }
    StatusCode InsertInt8(unsigned position, std::int8_t value) { return InsertBuiltIn(position, value); }
    StatusCode InsertUInt16(unsigned position, std::uint16_t value, Endian endian) { return InsertBuiltIn(position, ToOrder(value, endian)); }
    StatusCode InsertInt16(unsigned position, std::int16_t value, Endian endian) { return InsertBuiltIn(position, ToOrder(value, endian)); }
    StatusCode InsertUInt32(unsigned position, std::uint32_t value, Endian endian) { return InsertBuiltIn(position, ToOrder(value, endian)); }
    StatusCode InsertInt32(unsigned position, std::int32_t value, Endian endian) { return InsertBuiltIn(position, ToOrder(value, endian)); }
    StatusCode InsertUInt64(unsigned position, std::uint64_t value, Endian endian) { return InsertBuiltIn(position, ToOrder(value, endian)); }
    StatusCode InsertInt64(unsigned position, std::int64_t value, Endian endian) { return InsertBuiltIn(position, ToOrder(value, endian)); }

    StatusCode OverwriteUInt8(unsigned position, std::uint8_t value) { return OverwriteBuiltIn(position, value); }
    StatusCode OverwriteInt8(unsigned position, std::int8_t value) { return OverwriteBuiltIn(position, value); }
    StatusCode OverwriteUInt16(unsigned position, std::uint16_t value, Endian endian) { return OverwriteBuiltIn(position, ToOrder(value, endian)); }
    StatusCode OverwriteInt16(unsigned position, std::int16_t value, Endian endian) { return OverwriteBuiltIn(position, ToOrder(value, endian)); }
    StatusCode OverwriteUInt32(unsigned position, std::uint32_t value, Endian endian) { return OverwriteBuiltIn(position, ToOrder(value, endian)); }
    StatusCode OverwriteInt32(unsigned position, std::int32_t value, Endian endian) { return OverwriteBuiltIn(position, ToOrder(value, endian)); }
    StatusCode OverwriteUInt64(unsigned position, std::uint64_t value, Endian endian) { return OverwriteBuiltIn(position, ToOrder(value, endian)); }
    StatusCode OverwriteInt64(unsigned position, std::int64_t value, Endian endian) { return OverwriteBuiltIn(position, ToOrder(value, endian)); }

    // Byte strings, without terminating zero or length prefix.
    StatusCode AppendString(std::string_view text) { return AppendBuffer(text.data(), static_cast<unsigned>(text.size())); }
    StatusCode InsertString(unsigned position, std::string_view text) { return InsertBuffer(position, text.data(), static_cast<unsigned>(text.size())); }
    StatusCode OverwriteString(unsigned position, std::string_view text) { return OverwriteBuffer(position, text.data(), static_cast<unsigned>(text.size())); }

    // Appends printf-formatted text without a terminating zero. Formatted
    // text always grows the builder, growable or not (by half again, at
    // least to 64 bytes); after 16 growth rounds that still do not fit it
    // returns STATUS_CODE_BUFFER_OVERFLOW with the storage possibly grown and
    // the length unchanged; a failed allocation gives STATUS_CODE_HEAP_EMPTY
    // and a format the runtime rejects STATUS_CODE_INVALID_FORMAT.
    StatusCode AppendPrintf(const char* format, ...) ZANTOR_PRINTF_FORMAT(2, 3);
    StatusCode AppendVprintf(const char* format, va_list args);
    // Appends a 16-bit little-endian length followed by the formatted text.
    // A text over 65535 bytes gives STATUS_CODE_INVALID_PARAMETER. There is
    // no roll-back: on failure the placeholder (and text) stay in the
    // message, which the caller is expected to discard.
    StatusCode AppendPrintfString(const char* format, ...) ZANTOR_PRINTF_FORMAT(2, 3);

    // Makes room for extra more bytes: STATUS_CODE_BUFFER_OVERFLOW when not
    // growable, else grows to the larger of length + extra and capacity
    // times 1.5 rounded up to a multiple of 4 (or to the initial size when
    // that is enough).
    StatusCode MaybeAdjustBufferSize(unsigned extra);
    // Sets the storage to size bytes: a heap block above the initial size,
    // else the initial buffer again (the heap block is freed). Length is not
    // changed. STATUS_CODE_HEAP_EMPTY when allocation fails, and
    // STATUS_CODE_INVALID_PARAMETER when size < GetLength(); nothing changes
    // on failure.
    StatusCode AdjustBufferSize(unsigned size);

private:
    template <typename T>
    static constexpr bool IsBuiltInWidth()
    {
        return std::is_integral_v<T> && (sizeof(T) == 1 || sizeof(T) == 2 || sizeof(T) == 4 || sizeof(T) == 8);
    }

    template <typename T>
    static T ToOrder(T value, Endian endian) noexcept
    {
        if (!IsBigEndian(endian))
            return value;
        using U = std::make_unsigned_t<T>;
        U bits = static_cast<U>(value);
        if constexpr (sizeof(T) == 2)
            bits = static_cast<U>(__builtin_bswap16(bits));
        else if constexpr (sizeof(T) == 4)
            bits = static_cast<U>(__builtin_bswap32(bits));
        else if constexpr (sizeof(T) == 8)
            bits = static_cast<U>(__builtin_bswap64(bits));
        return static_cast<T>(bits);
    }

    StatusCode SecureSource(const unsigned char*& source, unsigned size, void*& aside) const;

    bool growable_;
    unsigned char* initialBuffer_;
    std::uint32_t initialSize_;
    unsigned char* buffer_;
    std::uint32_t capacity_;
    std::uint32_t length_;
};

} // namespace Zantor
