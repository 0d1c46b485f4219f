// MessageBuilder: growth, raw byte operations and formatted text.
#include <ZantorMiddleware/ZantorBase/MessageBuilder.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace Zantor {

namespace {

// Copies size bytes, last to first when reverse is set. Short copies use a
// byte loop: for the few bytes of a field that beats a call to memcpy.
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

struct FreeDeleter
{
    void operator()(void* p) const noexcept { std::free(p); }
};
using HeapCopy = std::unique_ptr<unsigned char, FreeDeleter>;

constexpr std::uint64_t kMaxCapacity = 0xFFFFFFFCu; // largest multiple of 4 in 32 bits
constexpr unsigned kPrintfGrowthRounds = 16;
constexpr unsigned kPrintfMinimumCapacity = 64;


} // namespace

MessageBuilder::MessageBuilder() noexcept
    : MessageBuilder(nullptr, 0, true)
{
}

MessageBuilder::MessageBuilder(void* initialBuffer, unsigned initialSize, bool growable) noexcept
    : growable_(growable),
      initialBuffer_(static_cast<unsigned char*>(initialBuffer)),
      initialSize_(initialBuffer != nullptr ? initialSize : 0),
      buffer_(initialBuffer_),
      capacity_(initialSize_),
      length_(0)
{
}

MessageBuilder::~MessageBuilder()
{
    if (buffer_ != initialBuffer_)
        std::free(buffer_);
}

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
        if (length_ != 0)
            std::memcpy(initialBuffer_, buffer_, length_);
        std::free(buffer_);
        buffer_ = initialBuffer_;
    }
    capacity_ = initialSize_;
    return STATUS_CODE_SUCCESS;
}

StatusCode MessageBuilder::MaybeAdjustBufferSize(unsigned extra)
{
    if (!growable_)
        return STATUS_CODE_BUFFER_OVERFLOW;

    const std::uint64_t needed = std::uint64_t{length_} + extra;
    if (needed <= initialSize_)
        return AdjustBufferSize(initialSize_);

    std::uint64_t target = std::uint64_t{capacity_} + capacity_ / 2;
    if (target < needed)
        target = needed;
    target = (target + 3) & ~std::uint64_t{3};
    if (target > kMaxCapacity)
    {
        // Growth by half again would pass 4 GiB: settle for what is needed.
        if (needed > kMaxCapacity)
            return STATUS_CODE_HEAP_EMPTY;
        target = kMaxCapacity;
    }
    return AdjustBufferSize(static_cast<unsigned>(target));
}

StatusCode MessageBuilder::AppendBuffer(const void* data, unsigned size, bool reverse)
{
    return InsertBuffer(length_, data, size, reverse);
}

// The caller may pass bytes of this very message (to duplicate a field, for
// example). Growth can move the storage and insertion shifts it, so such a
// source is copied aside first. This is the rare path; the common one
// allocates nothing.
StatusCode MessageBuilder::SecureSource(const unsigned char*& source, unsigned size, void*& aside) const
{
    aside = nullptr;
    if (buffer_ == nullptr || source >= buffer_ + capacity_ || source + size <= buffer_)
        return STATUS_CODE_SUCCESS;
    aside = std::malloc(size);
    if (aside == nullptr)
        return STATUS_CODE_HEAP_EMPTY;
    std::memcpy(aside, source, size);
    source = static_cast<const unsigned char*>(aside);
    return STATUS_CODE_SUCCESS;
}

StatusCode MessageBuilder::InsertBuffer(unsigned position, const void* data, unsigned size, bool reverse)
{
    if (position > length_ || (data == nullptr && size != 0))
        return STATUS_CODE_INVALID_PARAMETER;
    if (size == 0)
        return STATUS_CODE_SUCCESS;

    auto source = static_cast<const unsigned char*>(data);
    void* aside;
    StatusCode status = SecureSource(source, size, aside);
    HeapCopy asideOwner(static_cast<unsigned char*>(aside));
    if (status != STATUS_CODE_SUCCESS)
        return status;
    if (size > capacity_ - length_)
    {
        status = MaybeAdjustBufferSize(size);
        if (status != STATUS_CODE_SUCCESS)
            return status;
    }

    unsigned char* target = buffer_ + position;
    if (position != length_)
        std::memmove(target + size, target, length_ - position);
    CopyBytes(target, source, size, reverse);
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
    void* aside;
    StatusCode status = SecureSource(source, size, aside);
    HeapCopy asideOwner(static_cast<unsigned char*>(aside));
    if (status != STATUS_CODE_SUCCESS)
        return status;

    const std::uint64_t end = std::uint64_t{position} + size;
    if (end > length_)
    {
        if (end > capacity_)
        {
            if (end > kMaxCapacity)
                return STATUS_CODE_HEAP_EMPTY;
            status = MaybeAdjustBufferSize(static_cast<unsigned>(end - length_));
            if (status != STATUS_CODE_SUCCESS)
                return status;
        }
        length_ = static_cast<std::uint32_t>(end);
    }
    CopyBytes(buffer_ + position, source, size, reverse);
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

StatusCode MessageBuilder::AppendPrintf(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const StatusCode status = AppendVprintf(format, args);
    va_end(args);
    return status;
}

StatusCode MessageBuilder::AppendVprintf(const char* format, va_list args)
{
    for (unsigned growthRounds = 0;; ++growthRounds)
    {
        const unsigned freeBytes = capacity_ - length_;
        if (freeBytes != 0)
        {
            char* target = reinterpret_cast<char*>(buffer_ + length_);
            va_list attempt;
            va_copy(attempt, args);
            const int written = std::vsnprintf(target, freeBytes, format, attempt);
            va_end(attempt);
            target[freeBytes - 1] = '\0';
            if (written >= 0 && static_cast<unsigned>(written) < freeBytes - 1)
            {
                length_ += static_cast<unsigned>(written);
                return STATUS_CODE_SUCCESS;
            }
            if (written < 0)
                return STATUS_CODE_INVALID_FORMAT; // the format itself is bad
        }
        if (growthRounds == kPrintfGrowthRounds)
            return STATUS_CODE_BUFFER_OVERFLOW;

        std::uint64_t target = std::uint64_t{capacity_} + capacity_ / 2;
        if (target < kPrintfMinimumCapacity + 1)
            target = kPrintfMinimumCapacity;
        if (target > kMaxCapacity)
            return STATUS_CODE_BUFFER_OVERFLOW;
        // Formatted text grows the builder whether it is growable or not.
        if (AdjustBufferSize(static_cast<unsigned>(target)) != STATUS_CODE_SUCCESS)
            return STATUS_CODE_HEAP_EMPTY;
    }
}

StatusCode MessageBuilder::AppendPrintfString(const char* format, ...)
{
    const std::uint32_t start = length_;
    StatusCode status = AppendBuiltIn(std::uint16_t{0});
    if (status != STATUS_CODE_SUCCESS)
        return status;

    va_list args;
    va_start(args, format);
    status = AppendVprintf(format, args);
    va_end(args);
    if (status != STATUS_CODE_SUCCESS)
        return status;

    const std::uint32_t textLength = length_ - start - 2;
    if (textLength > 0xFFFF)
        return STATUS_CODE_INVALID_PARAMETER;
    return OverwriteBuiltIn(start, static_cast<std::uint16_t>(textLength));
}

} // namespace Zantor
