// The inline-or-heap byte storage of the text, binary and blob values.
#include <ZantorMiddleware/ZantorBase/Detail/FieldBytes.h>

#include <ZantorMiddleware/ZantorBase/Exception.h>

#include <cstdlib>
#include <cstring>

namespace Zantor::Detail {

FieldBytes::FieldBytes(const FieldBytes& other)
    : FieldBytes()
{
    if (Store(other.data_, other.length_) != STATUS_CODE_SUCCESS)
        ZANTOR_THROW(StatusCodeException, STATUS_CODE_HEAP_EMPTY);
}

FieldBytes& FieldBytes::operator=(const FieldBytes& other)
{
    if (this != &other && Store(other.data_, other.length_) != STATUS_CODE_SUCCESS)
        ZANTOR_THROW(StatusCodeException, STATUS_CODE_HEAP_EMPTY);
    return *this;
}

FieldBytes::FieldBytes(FieldBytes&& other) noexcept
    : FieldBytes()
{
    *this = static_cast<FieldBytes&&>(other);
}

FieldBytes& FieldBytes::operator=(FieldBytes&& other) noexcept
{
    if (this == &other)
        return *this;
    std::free(heap_);
    heap_ = other.heap_;
    capacity_ = other.capacity_;
    heapOwned_ = other.heapOwned_;
    length_ = other.length_;
    if (other.data_ == other.inline_)
    {
        std::memcpy(inline_, other.inline_, INLINE_SIZE);
        data_ = inline_;
    }
    else
    {
        data_ = heap_;
    }
    other.heap_ = nullptr;
    other.capacity_ = 0;
    other.heapOwned_ = 0;
    other.Clear();
    return *this;
}

FieldBytes::~FieldBytes()
{
    std::free(heap_);
}

StatusCode FieldBytes::Assign(const void* data, unsigned int length) noexcept
{
    if (data == nullptr && length != 0)
        return STATUS_CODE_INVALID_PARAMETER;
    return Store(data, length);
}

StatusCode FieldBytes::Resize(unsigned int length) noexcept
{
    return Store(nullptr, length);
}

void FieldBytes::Release() noexcept
{
    std::free(heap_);
    heap_ = nullptr;
    capacity_ = 0;
    heapOwned_ = 0;
    Clear();
}

StatusCode FieldBytes::Store(const void* source, unsigned int length) noexcept
{
    unsigned char* target = inline_;
    if (length > INLINE_SIZE)
    {
        if (heap_ == nullptr || capacity_ < length)
        {
            // A new block; the old one is freed only after the copy, since
            // the source may lie in it.
            auto* block = static_cast<unsigned char*>(std::malloc(length));
            if (block == nullptr)
                return STATUS_CODE_HEAP_EMPTY;
            if (source != nullptr)
                std::memcpy(block, source, length);
            std::free(heap_);
            heap_ = block;
            capacity_ = length;
            heapOwned_ = 1;
            data_ = block;
            length_ = length;
            return STATUS_CODE_SUCCESS;
        }
        target = heap_;
    }
    if (source != nullptr && length != 0)
        std::memmove(target, source, length);
    data_ = target;
    length_ = length;
    return STATUS_CODE_SUCCESS;
}

} // namespace Zantor::Detail
