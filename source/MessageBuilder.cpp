// MessageBuilder: growth, raw byte operations and formatted text.
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace Zantor {

namespace {

constexpr unsigned kPrintfGrowthRounds = 16;
constexpr unsigned kPrintfMinimumCapacity = 64;

// Copies size bytes between ranges that do not overlap, last to first when
// reverse is set. Short copies use a byte loop: for the few bytes of a field
// that beats a call to memcpy.
inline void CopyBytes(unsigned char* destination, const unsigned char* source, unsigned size, bool reverse) noexcept
{
    if (reverse)
    {
        for (unsigned i = 0; i < size; ++i)
            destination[i] = source[size - 1 - i];
    }
    else if (size >= 10)
    {
        std::memcpy(destination, source, size);
    }
    else
    {
        for (unsigned i = 0; i < size; ++i)
            destination[i] = source[i];
    }
}

// Copies size bytes between ranges that may overlap.
inline void MoveBytes(unsigned char* destination, const unsigned char* source, unsigned size, bool reverse) noexcept
{
    std::memmove(destination, source, size);
    if (reverse)
        std::reverse(destination, destination + size);
}

// Copies 1 to 16 bytes with fixed-size loads and stores (a field body is
// mostly this short), all loads before any store, so that the ranges may
// overlap. Cheaper than a call to memmove.
inline void MoveShort(unsigned char* destination, const unsigned char* source, unsigned size) noexcept
{
    if (size >= 8)
    {
        std::uint64_t head, tail;
        std::memcpy(&head, source, 8);
        std::memcpy(&tail, source + size - 8, 8);
        std::memcpy(destination, &head, 8);
        std::memcpy(destination + size - 8, &tail, 8);
    }
    else if (size >= 4)
    {
        std::uint32_t head, tail;
        std::memcpy(&head, source, 4);
        std::memcpy(&tail, source + size - 4, 4);
        std::memcpy(destination, &head, 4);
        std::memcpy(destination + size - 4, &tail, 4);
    }
    else
    {
        const unsigned char first = source[0], middle = source[size / 2], last = source[size - 1];
        destination[0] = first;
        destination[size / 2] = middle;
        destination[size - 1] = last;
    }
}

// Whether [source, source + size) and [block, block + blockSize) share a
// byte. An empty block only occurs before the first growth, which replaces
// it, so what this says of one never reaches a copy.
inline bool Overlaps(const unsigned char* source, unsigned size, const unsigned char* block, std::uint32_t blockSize) noexcept
{
    const auto s = reinterpret_cast<std::uintptr_t>(source);
    const auto b = reinterpret_cast<std::uintptr_t>(block);
    return s < b + blockSize && b < s + size;
}

} // namespace

StatusCode MessageBuilder::AdjustBufferSize(unsigned size)
{
    if (size < length_)
        return STATUS_CODE_INVALID_PARAMETER;

    if (size > initialSize_)
    {
        unsigned char* block;
        if (buffer_ == initialBuffer_)
        {
            block = static_cast<unsigned char*>(std::malloc(size));
            if (block == nullptr)
                return STATUS_CODE_HEAP_EMPTY;
            if (capacity_ != 0)
                std::memcpy(block, buffer_, capacity_);
        }
        else
        {
            block = static_cast<unsigned char*>(std::realloc(buffer_, size));
            if (block == nullptr)
                return STATUS_CODE_HEAP_EMPTY;
        }
        buffer_ = block;
        capacity_ = size;
        return STATUS_CODE_SUCCESS;
    }

    if (buffer_ != initialBuffer_)
    {
        if (size != 0)
            std::memcpy(initialBuffer_, buffer_, size);
        std::free(buffer_);
        buffer_ = initialBuffer_;
    }
    capacity_ = initialSize_;
    return STATUS_CODE_SUCCESS;
}

StatusCode MessageBuilder::GrowthTarget(unsigned extra, unsigned& target) const noexcept
{
    if (!growable_)
        return STATUS_CODE_BUFFER_OVERFLOW;

    const std::uint64_t needed = std::uint64_t{length_} + extra;
    if (needed <= initialSize_)
    {
        target = initialSize_;
        return STATUS_CODE_SUCCESS;
    }
    if (needed > MAX_CAPACITY)
        return STATUS_CODE_HEAP_EMPTY; // the message cannot pass 4 GiB
    std::uint64_t size = std::uint64_t{capacity_} + capacity_ / 2;
    if (size < needed)
        size = needed;
    size = (size + 3) & ~std::uint64_t{3};
    target = static_cast<unsigned>(std::min<std::uint64_t>(size, MAX_CAPACITY));
    return STATUS_CODE_SUCCESS;
}

StatusCode MessageBuilder::MaybeAdjustBufferSize(unsigned extra)
{
    unsigned target = 0;
    const StatusCode status = GrowthTarget(extra, target);
    if (status != STATUS_CODE_SUCCESS)
        return status;
    return AdjustBufferSize(target);
}

// Makes the storage hold end bytes. The caller's source may lie in this
// builder's own storage (to duplicate a field, for example): when growth
// reallocates a heap block, source is moved along with it. aliased tells
// whether source overlaps the storage afterwards, in which case the caller
// must copy with overlap in mind. Nothing is allocated for aliasing.
StatusCode MessageBuilder::MakeRoom(std::uint64_t end, const unsigned char*& source, unsigned size, bool& aliased)
{
    aliased = Overlaps(source, size, buffer_, capacity_);
    if (end <= capacity_)
        return STATUS_CODE_SUCCESS;

    const auto start = reinterpret_cast<std::uintptr_t>(source);
    const auto block = reinterpret_cast<std::uintptr_t>(buffer_);
    // The initial buffer stays intact when the builder moves to the heap, so
    // only a source inside a heap block needs to follow it.
    const bool follow = aliased && buffer_ != initialBuffer_ && start >= block;
    const std::uintptr_t offset = follow ? start - block : 0;

    const StatusCode status = MaybeAdjustBufferSize(static_cast<unsigned>(end - length_));
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (follow)
        source = buffer_ + offset;
    aliased = Overlaps(source, size, buffer_, capacity_);
    return STATUS_CODE_SUCCESS;
}

StatusCode MessageBuilder::AppendBuffer(const void* data, unsigned size, bool reverse)
{
    // Room in the current storage: no growth and nothing to move. memmove,
    // because data may lie in this builder's own storage.
    const std::uint32_t length = length_;
    if (data != nullptr && size <= capacity_ - length) [[likely]]
    {
        if (size - 1u < 16u && !reverse)
            MoveShort(buffer_ + length, static_cast<const unsigned char*>(data), size);
        else
            MoveBytes(buffer_ + length, static_cast<const unsigned char*>(data), size, reverse);
        length_ = length + size;
        return STATUS_CODE_SUCCESS;
    }
    return InsertBuffer(length, data, size, reverse);
}

StatusCode MessageBuilder::InsertBuffer(unsigned position, const void* data, unsigned size, bool reverse)
{
    if (position > length_ || (data == nullptr && size != 0))
        return STATUS_CODE_INVALID_PARAMETER;
    if (size == 0)
        return STATUS_CODE_SUCCESS;

    auto source = static_cast<const unsigned char*>(data);
    bool aliased = false;
    const StatusCode status = MakeRoom(std::uint64_t{length_} + size, source, size, aliased);
    if (status != STATUS_CODE_SUCCESS)
        return status;

    unsigned char* target = buffer_ + position;
    if (!aliased)
    {
        if (position != length_)
            std::memmove(target + size, target, length_ - position);
        CopyBytes(target, source, size, reverse);
    }
    else
    {
        // The source is part of this storage and may be shifted by the
        // insertion: append the bytes, then rotate them into place.
        unsigned char* end = buffer_ + length_;
        MoveBytes(end, source, size, reverse);
        std::rotate(target, end, end + size);
    }
    length_ += size;
    return STATUS_CODE_SUCCESS;
}

StatusCode MessageBuilder::OverwriteBuffer(unsigned position, const void* data, unsigned size, bool reverse)
{
    if (position > length_ || (data == nullptr && size != 0))
        return STATUS_CODE_INVALID_PARAMETER;
    if (size == 0)
        return STATUS_CODE_SUCCESS;

    auto source = static_cast<const unsigned char*>(data);
    bool aliased = false;
    const std::uint64_t end = std::uint64_t{position} + size;
    const StatusCode status = MakeRoom(end, source, size, aliased);
    if (status != STATUS_CODE_SUCCESS)
        return status;

    if (aliased)
        MoveBytes(buffer_ + position, source, size, reverse);
    else
        CopyBytes(buffer_ + position, source, size, reverse);
    if (end > length_)
        length_ = static_cast<std::uint32_t>(end);
    return STATUS_CODE_SUCCESS;
}

StatusCode MessageBuilder::EraseBuffer(unsigned position, unsigned size)
{
    if (std::uint64_t{position} + size > length_)
        return STATUS_CODE_INVALID_PARAMETER;
    if (size == 0)
        return STATUS_CODE_SUCCESS;
    std::memmove(buffer_ + position, buffer_ + position + size, length_ - position - size);
    length_ -= size;
    return STATUS_CODE_SUCCESS;
}

// Grows to size bytes (more than the capacity) for formatted text. The
// arguments of the text may point into the heap block the builder had when
// the call began (entryBlock), so that block is not reallocated in place but
// replaced by a copy and handed back in retired, to be freed once the text
// is written.
StatusCode MessageBuilder::GrowKeepingBlock(unsigned size, const unsigned char* entryBlock, unsigned char*& retired)
{
    if (buffer_ != entryBlock || buffer_ == initialBuffer_)
        return AdjustBufferSize(size);
    auto block = static_cast<unsigned char*>(std::malloc(size));
    if (block == nullptr)
        return STATUS_CODE_HEAP_EMPTY;
    std::memcpy(block, buffer_, capacity_);
    retired = buffer_;
    buffer_ = block;
    capacity_ = size;
    return STATUS_CODE_SUCCESS;
}

StatusCode MessageBuilder::FormatText(const char* format, va_list args, const unsigned char* entryBlock, unsigned char*& retired)
{
    if (format == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;

    for (unsigned growthRounds = 0;; ++growthRounds)
    {
        const unsigned freeBytes = capacity_ - length_;
        if (freeBytes != 0)
        {
            char* target = reinterpret_cast<char*>(buffer_ + length_);
            va_list attempt;
            va_copy(attempt, args);
            errno = 0;
            const int written = std::vsnprintf(target, freeBytes, format, attempt);
            const int error = errno;
            va_end(attempt);
            target[freeBytes - 1] = '\0';
            if (written >= 0 && static_cast<unsigned>(written) < freeBytes - 1)
            {
                length_ += static_cast<unsigned>(written);
                return STATUS_CODE_SUCCESS;
            }
            if (written < 0)
            {
#ifdef EOVERFLOW
                if (error == EOVERFLOW) // longer than the formatter can count
                    return STATUS_CODE_BUFFER_OVERFLOW;
#endif
                (void)error;
                return STATUS_CODE_INVALID_FORMAT;
            }
        }
        if (growthRounds == kPrintfGrowthRounds)
            return STATUS_CODE_BUFFER_OVERFLOW;

        std::uint64_t size = std::uint64_t{capacity_} + capacity_ / 2;
        if (size < kPrintfMinimumCapacity + 1)
            size = kPrintfMinimumCapacity;
        if (size > MAX_CAPACITY)
        {
            if (capacity_ >= MAX_CAPACITY)
                return STATUS_CODE_BUFFER_OVERFLOW;
            size = MAX_CAPACITY;
        }
        // Formatted text grows the builder whether it is growable or not.
        const StatusCode status = GrowKeepingBlock(static_cast<unsigned>(size), entryBlock, retired);
        if (status != STATUS_CODE_SUCCESS)
            return status;
    }
}

StatusCode MessageBuilder::AppendVprintf(const char* format, va_list args)
{
    unsigned char* retired = nullptr;
    const StatusCode status = FormatText(format, args, buffer_, retired);
    std::free(retired);
    return status;
}

StatusCode MessageBuilder::AppendPrintf(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const StatusCode status = AppendVprintf(format, args);
    va_end(args);
    return status;
}

StatusCode MessageBuilder::AppendPrintfString(const char* format, ...)
{
    if (format == nullptr)
        return STATUS_CODE_INVALID_PARAMETER;

    // The placeholder for the length grows the builder as an append does,
    // keeping the old block alive for the arguments like the text does.
    const unsigned char* entryBlock = buffer_;
    unsigned char* retired = nullptr;
    StatusCode status = STATUS_CODE_SUCCESS;
    if (capacity_ - length_ < 2)
    {
        unsigned target = 0;
        status = GrowthTarget(2, target);
        if (status == STATUS_CODE_SUCCESS)
            status = GrowKeepingBlock(target, entryBlock, retired);
        if (status != STATUS_CODE_SUCCESS)
            return status;
    }
    const std::uint32_t start = length_;
    buffer_[start] = 0;
    buffer_[start + 1] = 0;
    length_ += 2;

    va_list args;
    va_start(args, format);
    status = FormatText(format, args, entryBlock, retired);
    va_end(args);
    std::free(retired);
    if (status != STATUS_CODE_SUCCESS)
        return status;

    const std::uint32_t textLength = length_ - start - 2;
    if (textLength > 0xFFFF)
        return STATUS_CODE_INVALID_PARAMETER;
    return OverwriteBuiltIn(start, static_cast<std::uint16_t>(textLength));
}

} // namespace Zantor
