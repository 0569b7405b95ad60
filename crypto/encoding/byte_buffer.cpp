// cByteBuffer. Invariants: length_ <= capacity_; data_ is null exactly when capacity_ is 0; the wiped size is always
// the whole block, since bytes behind length_ may have been in use before.
#include "crypto/encoding/byte_buffer.h"

#include <cstring>
#include <utility>

#include "crypto/base/heap.h"

namespace toolbelt {

cByteBuffer::~cByteBuffer()
{
    release();
}

void cByteBuffer::release()
{
    heap::globalReleaseSecret(std::exchange(data_, nullptr), std::exchange(capacity_, 0));
    length_ = 0;
}

bool cByteBuffer::allocate(std::uint32_t length)
{
    release(); // before the new block is asked for: both together may not fit
    return grow(length);
}

bool cByteBuffer::reserve(std::uint32_t capacity)
{
    if (capacity <= capacity_) return true;
    auto* block = static_cast<std::uint8_t*>(heap::globalAllocate(capacity));
    if (block == nullptr) return false;
    if (length_ != 0) std::memcpy(block, data_, length_);
    heap::globalReleaseSecret(data_, capacity_);
    data_ = block;
    capacity_ = capacity;
    return true;
}

bool cByteBuffer::grow(std::uint32_t size)
{
    if (size > UINT32_MAX - length_) return false;
    const std::uint32_t needed = length_ + size;
    if (needed > capacity_) {
        const std::uint32_t half = capacity_ / 2;
        const std::uint32_t larger = half > UINT32_MAX - capacity_ ? UINT32_MAX : capacity_ + half;
        const bool roomy = larger > needed && reserve(larger);
        if (!roomy && !reserve(needed)) return false;
    }
    if (size != 0) std::memset(data_ + length_, 0, size);
    length_ = needed;
    return true;
}

bool cByteBuffer::append(const void* bytes, std::uint32_t size)
{
    const std::uint32_t end = length_;
    if (!grow(size)) return false;
    if (size != 0) std::memcpy(data_ + end, bytes, size);
    return true;
}

void cByteBuffer::truncate(std::uint32_t length)
{
    if (length >= length_) return;
    wipe(data_ + length, length_ - length);
    length_ = length;
}

void cByteBuffer::swap(cByteBuffer& other) noexcept
{
    std::swap(data_, other.data_);
    std::swap(length_, other.length_);
    std::swap(capacity_, other.capacity_);
}

} // namespace toolbelt
