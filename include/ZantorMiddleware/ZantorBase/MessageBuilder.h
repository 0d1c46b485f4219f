// MessageBuilder: the byte buffer every wire form of the library is written
// with. It appends, inserts, overwrites and erases raw bytes and integers of
// 1, 2, 4 and 8 bytes at any position, in either byte order.
//
// Storage: the builder starts in a caller-supplied initial buffer, which it
// never frees (it may be null with size 0). A growable builder moves to a
// heap block it owns when the initial buffer is full, growing by half again
// (rounded up to a multiple of 4), and frees that block when it is destroyed
// or returns to the initial buffer. A builder that is not growable answers
// STATUS_CODE_BUFFER_OVERFLOW instead. A message is limited to 0xFFFFFFFC
// bytes; asking for more is treated as a failed allocation.
//
// Contracts: every operation returns a StatusCode. On failure nothing
// changes (length, bytes and storage) unless the operation says otherwise
// (AppendPrintf, AppendPrintfString). Data passed in may lie inside this
// builder's own storage (to duplicate a field, for example).
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
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace Zantor {

class ZANTOR_BASE_API MessageBuilder : public MessageHandler
{
public:
    // Largest capacity (and so length) a builder can reach.
    static constexpr std::uint32_t MAX_CAPACITY = 0xFFFFFFFCu;

    // An empty growable builder with no initial buffer: the first write
    // allocates.
    MessageBuilder() noexcept
        : MessageBuilder(nullptr, 0, true)
    {
    }
    // A builder over the caller's initialBuffer of initialSize bytes. The
    // buffer must outlive the builder; the builder never frees it. A null
    // initialBuffer counts as size 0.
    MessageBuilder(void* initialBuffer, unsigned initialSize, bool growable = true) noexcept
        : growable_(growable),
          initialBuffer_(static_cast<unsigned char*>(initialBuffer)),
          initialSize_(initialBuffer != nullptr ? initialSize : 0),
          buffer_(initialBuffer_),
          capacity_(initialSize_),
          length_(0)
    {
    }
    ~MessageBuilder()
    {
        if (buffer_ != initialBuffer_)
            std::free(buffer_);
    }

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

    // Raw bytes. With reverse set the bytes are stored last to first, which
    // is how a multi-byte value is written big-endian. A size of 0 succeeds
    // and changes nothing; a null data with a non-zero size gives
    // STATUS_CODE_INVALID_PARAMETER.
    // Append: adds size bytes at the end. STATUS_CODE_BUFFER_OVERFLOW when
    // more room is needed and the builder is not growable,
    // STATUS_CODE_HEAP_EMPTY when growing fails. Nothing changes on failure.
    StatusCode AppendBuffer(const void* data, unsigned size, bool reverse = false);
    // Insert: moves the bytes from position on up by size and stores the
    // data at position; position == GetLength() appends. Fails with
    // STATUS_CODE_INVALID_PARAMETER when position > GetLength(), else as
    // Append. Nothing changes on failure.
    StatusCode InsertBuffer(unsigned position, const void* data, unsigned size, bool reverse = false);
    // Overwrite: stores the data at position, extending the message when it
    // reaches past the end (never leaving a gap). Fails with
    // STATUS_CODE_INVALID_PARAMETER when position > GetLength(), else as
    // Append for the extension. Nothing changes on failure.
    StatusCode OverwriteBuffer(unsigned position, const void* data, unsigned size, bool reverse = false);
    // Erase: removes size bytes at position, moving the tail down. Fails
    // with STATUS_CODE_INVALID_PARAMETER when position + size > GetLength();
    // nothing changes on failure.
    StatusCode EraseBuffer(unsigned position, unsigned size);

    // Built-in integers (or enumerations) of 1, 2, 4 or 8 bytes in the
    // machine's order, little-endian on every platform the library serves.
    // Statuses as for the raw byte operations; nothing changes on failure.
    template <typename T>
    StatusCode AppendBuiltIn(T value)
    {
        static_assert(IsBuiltInWidth<T>(), "1-, 2-, 4- or 8-byte integer required");
        const std::uint32_t length = length_;
        if (sizeof(T) <= capacity_ - length) [[likely]]
        {
            std::memcpy(buffer_ + length, &value, sizeof(T));
            length_ = length + static_cast<std::uint32_t>(sizeof(T));
            return STATUS_CODE_SUCCESS;
        }
        return AppendSlow(value);
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
        if (position <= length_ && sizeof(T) <= length_ - position) [[likely]]
        {
            std::memcpy(buffer_ + position, &value, sizeof(T));
            return STATUS_CODE_SUCCESS;
        }
        return OverwriteSlow(position, value);
    }

    // Integers with an explicit byte order. ENDIAN_LITTLE stores the value
    // as it is; ENDIAN_BIG (any non-zero value) stores it byte-reversed. The
    // byte order of the 1-byte forms is accepted for uniformity and has no
    // effect. Statuses as for the raw byte operations.
    StatusCode AppendUInt8(std::uint8_t value, Endian = ENDIAN_LITTLE) { return AppendBuiltIn(value); }
    StatusCode AppendInt8(std::int8_t value, Endian = ENDIAN_LITTLE) { return AppendBuiltIn(value); }
    StatusCode AppendUInt16(std::uint16_t value, Endian endian) { return AppendBuiltIn(ToOrder(value, endian)); }
    StatusCode AppendInt16(std::int16_t value, Endian endian) { return AppendBuiltIn(ToOrder(value, endian)); }
    StatusCode AppendUInt32(std::uint32_t value, Endian endian) { return AppendBuiltIn(ToOrder(value, endian)); }
    StatusCode AppendInt32(std::int32_t value, Endian endian) { return AppendBuiltIn(ToOrder(value, endian)); }
    StatusCode AppendUInt64(std::uint64_t value, Endian endian) { return AppendBuiltIn(ToOrder(value, endian)); }
    StatusCode AppendInt64(std::int64_t value, Endian endian) { return AppendBuiltIn(ToOrder(value, endian)); }

    StatusCode InsertUInt8(unsigned position, std::uint8_t value, Endian = ENDIAN_LITTLE) { return InsertBuiltIn(position, value); }
    StatusCode InsertInt8(unsigned position, std::int8_t value, Endian = ENDIAN_LITTLE) { return InsertBuiltIn(position, value); }
    StatusCode InsertUInt16(unsigned position, std::uint16_t value, Endian endian) { return InsertBuiltIn(position, ToOrder(value, endian)); }
    StatusCode InsertInt16(unsigned position, std::int16_t value, Endian endian) { return InsertBuiltIn(position, ToOrder(value, endian)); }
    StatusCode InsertUInt32(unsigned position, std::uint32_t value, Endian endian) { return InsertBuiltIn(position, ToOrder(value, endian)); }
    StatusCode InsertInt32(unsigned position, std::int32_t value, Endian endian) { return InsertBuiltIn(position, ToOrder(value, endian)); }
    StatusCode InsertUInt64(unsigned position, std::uint64_t value, Endian endian) { return InsertBuiltIn(position, ToOrder(value, endian)); }
    StatusCode InsertInt64(unsigned position, std::int64_t value, Endian endian) { return InsertBuiltIn(position, ToOrder(value, endian)); }

    StatusCode OverwriteUInt8(unsigned position, std::uint8_t value, Endian = ENDIAN_LITTLE) { return OverwriteBuiltIn(position, value); }
    StatusCode OverwriteInt8(unsigned position, std::int8_t value, Endian = ENDIAN_LITTLE) { return OverwriteBuiltIn(position, value); }
    StatusCode OverwriteUInt16(unsigned position, std::uint16_t value, Endian endian) { return OverwriteBuiltIn(position, ToOrder(value, endian)); }
    StatusCode OverwriteInt16(unsigned position, std::int16_t value, Endian endian) { return OverwriteBuiltIn(position, ToOrder(value, endian)); }
    StatusCode OverwriteUInt32(unsigned position, std::uint32_t value, Endian endian) { return OverwriteBuiltIn(position, ToOrder(value, endian)); }
    StatusCode OverwriteInt32(unsigned position, std::int32_t value, Endian endian) { return OverwriteBuiltIn(position, ToOrder(value, endian)); }
    StatusCode OverwriteUInt64(unsigned position, std::uint64_t value, Endian endian) { return OverwriteBuiltIn(position, ToOrder(value, endian)); }
    StatusCode OverwriteInt64(unsigned position, std::int64_t value, Endian endian) { return OverwriteBuiltIn(position, ToOrder(value, endian)); }

    // Appends several integers of 1, 2, 4 or 8 bytes in the order given,
    // each in the given byte order, under one bounds check: the form to
    // encode a fixed-layout record (a quote update, a header) at the speed
    // of hand-written stores. Either every value is appended or, on failure,
    // none (statuses as for AppendBuffer).
    //   builder.AppendBuiltIns(MessageHandler::ENDIAN_BIG, type, instrument, price, size);
    template <typename... T>
    StatusCode AppendBuiltIns(Endian endian, const T&... values)
    {
        static_assert(sizeof...(T) != 0, "at least one value required");
        static_assert((IsBuiltInWidth<T>() && ...), "1-, 2-, 4- or 8-byte integers required");
        constexpr std::uint32_t total = static_cast<std::uint32_t>((sizeof(T) + ...));
        const std::uint32_t length = length_;
        if (total <= capacity_ - length) [[likely]]
        {
            StoreAll(buffer_ + length, endian, values...);
            length_ = length + total;
            return STATUS_CODE_SUCCESS;
        }
        return AppendBuiltInsSlow(total, endian, values...);
    }

    // Byte strings, without terminating zero or length prefix. Statuses as
    // for the raw byte operations; a text of 4 GiB or more cannot fit and
    // fails like an allocation (STATUS_CODE_BUFFER_OVERFLOW when not
    // growable).
    StatusCode AppendString(std::string_view text) { return InsertString(length_, text); }
    StatusCode InsertString(unsigned position, std::string_view text)
    {
        if (text.size() > 0xFFFFFFFFu && position <= length_)
            return growable_ ? STATUS_CODE_HEAP_EMPTY : STATUS_CODE_BUFFER_OVERFLOW;
        return InsertBuffer(position, text.data(), static_cast<unsigned>(text.size()));
    }
    StatusCode OverwriteString(unsigned position, std::string_view text)
    {
        if (text.size() > 0xFFFFFFFFu && position <= length_)
            return growable_ ? STATUS_CODE_HEAP_EMPTY : STATUS_CODE_BUFFER_OVERFLOW;
        return OverwriteBuffer(position, text.data(), static_cast<unsigned>(text.size()));
    }

    // Appends printf-formatted text without a terminating zero. The text is
    // formatted into the free space; when it does not fit the storage grows
    // by half again (to at least 64 bytes) and the text is formatted again.
    // Formatted text always grows the builder, growable or not. Returns
    // STATUS_CODE_BUFFER_OVERFLOW when the text still does not fit after 16
    // growth rounds (the storage may have grown, the length is unchanged),
    // STATUS_CODE_HEAP_EMPTY when growing fails and STATUS_CODE_INVALID_FORMAT
    // when the runtime's formatter reports an error; the length is unchanged
    // on every failure. Arguments may point into this builder's storage.
    StatusCode AppendPrintf(const char* format, ...) ZANTOR_PRINTF_FORMAT(2, 3);
    StatusCode AppendVprintf(const char* format, va_list args) ZANTOR_PRINTF_FORMAT(2, 0);
    // Appends a 16-bit little-endian length followed by the formatted text
    // (without terminating zero); an empty text gives two zero bytes. The
    // placeholder for the length grows the builder as Append does, then the
    // text is added as by AppendPrintf. A text over 65535 bytes gives
    // STATUS_CODE_INVALID_PARAMETER. There is no roll-back: on a failure
    // after the placeholder was written, the placeholder (and any text) stay
    // in the message, which the caller is expected to discard.
    StatusCode AppendPrintfString(const char* format, ...) ZANTOR_PRINTF_FORMAT(2, 3);

    // Makes room for extra more bytes. STATUS_CODE_BUFFER_OVERFLOW when the
    // builder is not growable. When GetLength() + extra fits the initial
    // size the storage becomes the initial buffer; otherwise it grows to the
    // larger of GetLength() + extra and GetCapacity() * 1.5, rounded up to a
    // multiple of 4 (through AdjustBufferSize). STATUS_CODE_HEAP_EMPTY when
    // allocation fails or the size would pass MAX_CAPACITY; nothing changes
    // on failure.
    StatusCode MaybeAdjustBufferSize(unsigned extra);
    // Sets the storage to size bytes: a heap block when size exceeds the
    // initial size (the bytes of the current storage are carried over), else
    // the initial buffer again (the first size bytes are copied back and the
    // heap block is freed). The length is not changed.
    // STATUS_CODE_INVALID_PARAMETER when size < GetLength(),
    // STATUS_CODE_HEAP_EMPTY when allocation fails; nothing changes on
    // failure.
    StatusCode AdjustBufferSize(unsigned size);

private:
    template <typename T>
    static constexpr bool IsBuiltInWidth()
    {
        return (std::is_integral_v<T> || std::is_enum_v<T>)
            && (sizeof(T) == 1 || sizeof(T) == 2 || sizeof(T) == 4 || sizeof(T) == 8);
    }

    template <typename T>
    static T ToOrder(T value, Endian endian) noexcept
    {
        if constexpr (sizeof(T) == 1)
        {
            return value; // one byte has no order (and bool has no unsigned form)
        }
        else
        {
            if (!IsBigEndian(endian))
                return value;
            using U = std::make_unsigned_t<T>;
            U bits = static_cast<U>(value);
            if constexpr (sizeof(T) == 2)
                bits = static_cast<U>(__builtin_bswap16(bits));
            else if constexpr (sizeof(T) == 4)
                bits = static_cast<U>(__builtin_bswap32(bits));
            else
                bits = static_cast<U>(__builtin_bswap64(bits));
            return static_cast<T>(bits);
        }
    }

    // The rare paths of the inline forms, out of line so that the value
    // stays in a register on the fast path.
    template <typename T>
    [[gnu::noinline, gnu::cold]] StatusCode AppendSlow(T value)
    {
        return AppendBuffer(&value, sizeof(T), false);
    }
    // Takes the values by value: growing may move the storage they were in.
    template <typename... T>
    [[gnu::noinline, gnu::cold]] StatusCode AppendBuiltInsSlow(std::uint32_t total, Endian endian, T... values)
    {
        const StatusCode status = MaybeAdjustBufferSize(total);
        if (status != STATUS_CODE_SUCCESS)
            return status;
        StoreAll(buffer_ + length_, endian, values...);
        length_ += total;
        return STATUS_CODE_SUCCESS;
    }

    // Stores the values one after another from target on; the offsets are
    // constants, so each value is one store.
    template <typename... T>
    static void StoreAll(unsigned char* target, Endian endian, const T&... values) noexcept
    {
        std::size_t offset = 0;
        ((Store(target + offset, ToOrder(values, endian)), offset += sizeof(T)), ...);
    }
    template <typename T>
    static void Store(unsigned char* target, T value) noexcept
    {
        std::memcpy(target, &value, sizeof(T));
    }

    template <typename T>
    [[gnu::noinline, gnu::cold]] StatusCode OverwriteSlow(unsigned position, T value)
    {
        return OverwriteBuffer(position, &value, sizeof(T), false);
    }

    StatusCode GrowthTarget(unsigned extra, unsigned& target) const noexcept;
    StatusCode MakeRoom(std::uint64_t end, const unsigned char*& source, unsigned size, bool& aliased);
    StatusCode GrowKeepingBlock(unsigned size, const unsigned char* entryBlock, unsigned char*& retired);
    StatusCode FormatText(const char* format, va_list args, const unsigned char* entryBlock, unsigned char*& retired)
        ZANTOR_PRINTF_FORMAT(2, 0);

    bool growable_;
    unsigned char* initialBuffer_;
    std::uint32_t initialSize_;
    unsigned char* buffer_;
    std::uint32_t capacity_;
    std::uint32_t length_;
};

} // namespace Zantor
