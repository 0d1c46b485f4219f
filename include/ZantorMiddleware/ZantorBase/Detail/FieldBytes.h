// FieldBytes: the byte storage of the text, binary and blob field values. A
// run of up to INLINE_SIZE (32) bytes lives in an inline buffer and never
// allocates; a longer run lives in a heap block that the storage owns. The
// heap block is kept when a shorter value follows (so a field that changes
// size does not allocate on every update) until Release frees it.
//
// Ownership: the storage owns its heap block; copies are deep. Thread
// safety: one thread at a time. Heap blocks come from std::malloc; failure
// is reported as STATUS_CODE_HEAP_EMPTY by the status-returning members and
// thrown as StatusCodeException(STATUS_CODE_HEAP_EMPTY) by the copy
// constructor and copy assignment.
//
//   Detail::FieldBytes bytes;
//   if (bytes.Assign("abc", 3) == STATUS_CODE_SUCCESS)
//       use(bytes.Data(), bytes.Length());
#pragma once

#include <ZantorMiddleware/ZantorBase/Export.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <cstdint>

namespace Zantor::Detail {

class ZANTOR_BASE_API FieldBytes
{
public:
    static constexpr unsigned int INLINE_SIZE = 32;

    // Empty, pointing at the inline buffer.
    FieldBytes() noexcept
        : heapOwned_(0), data_(inline_), length_(0), heap_(nullptr), capacity_(0)
    {
    }
    // Deep copy; throws StatusCodeException(STATUS_CODE_HEAP_EMPTY) when
    // the heap block cannot be allocated.
    FieldBytes(const FieldBytes& other);
    // Deep copy with the strong guarantee (this is unchanged on a throw).
    FieldBytes& operator=(const FieldBytes& other);
    // Takes other's heap block; other is left empty and inline.
    FieldBytes(FieldBytes&& other) noexcept;
    FieldBytes& operator=(FieldBytes&& other) noexcept;
    ~FieldBytes();

    const unsigned char* Data() const noexcept { return data_; }
    unsigned char* MutableData() noexcept { return data_; }
    unsigned int Length() const noexcept { return length_; }
    bool UsesInlineBuffer() const noexcept { return data_ == inline_; }
    bool OwnsHeapBuffer() const noexcept { return heapOwned_ != 0; }

    // Copies length bytes from data, which may lie inside this storage.
    // STATUS_CODE_INVALID_PARAMETER for a null data with a non-zero length,
    // STATUS_CODE_HEAP_EMPTY when a heap block cannot be allocated; nothing
    // changes on failure.
    StatusCode Assign(const void* data, unsigned int length) noexcept;
    // Makes room for length bytes at MutableData() and sets the length; the
    // bytes themselves are unspecified. STATUS_CODE_HEAP_EMPTY (nothing
    // changes) when a heap block cannot be allocated.
    StatusCode Resize(unsigned int length) noexcept;
    // Length 0 at the inline buffer; a heap block is kept.
    void Clear() noexcept
    {
        data_ = inline_;
        length_ = 0;
    }
    // Frees the heap block and points back at the empty inline buffer.
    void Release() noexcept;

private:
    // Points data_ at storage for length bytes: the inline buffer, the owned
    // heap block when it is big enough, else a new block. When source is not
    // null its length bytes are copied (source may lie in this storage).
    StatusCode Store(const void* source, unsigned int length) noexcept;

    unsigned char inline_[INLINE_SIZE];
    unsigned char heapOwned_; // 1 while heap_ holds a block owned by this storage
    unsigned char* data_;     // inline_ or heap_
    std::uint32_t length_;
    unsigned char* heap_;
    std::uint32_t capacity_; // size of heap_
};

} // namespace Zantor::Detail
