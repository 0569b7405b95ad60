// cByteBuffer: a growable block of bytes from the system's global heap. What it held is wiped before it is released.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"

namespace toolbelt {

// Never more than 2^32 - 1 bytes: what would not fit is refused like memory that has run out. Bytes to be added must
// not lie in the buffer's own block, which may move.
class TB_API cByteBuffer
{
public:
    cByteBuffer() noexcept = default;
    cByteBuffer(const cByteBuffer&) = delete;
    cByteBuffer& operator=(const cByteBuffer&) = delete;
    ~cByteBuffer();

    std::uint8_t* data() { return data_; } // null while the buffer has no block
    const std::uint8_t* data() const { return data_; }
    std::uint32_t length() const { return length_; }     // bytes in use
    std::uint32_t capacity() const { return capacity_; } // bytes in the block

    // Releases the block.
    void release();
    // Releases the block, then takes a new one of exactly length bytes, all in use, their contents zero (no block for
    // 0). False, and an empty buffer, when memory runs out.
    [[nodiscard]] bool allocate(std::uint32_t length);
    // Makes room for at least capacity bytes; what is in use stays. False, and nothing changed, when memory runs out.
    [[nodiscard]] bool reserve(std::uint32_t capacity);
    // Adds size bytes in use at the end, their contents zero. False, and nothing changed, when memory runs out. The
    // block grows by at least a half, so that many small additions cost linear time.
    [[nodiscard]] bool grow(std::uint32_t size);
    // Adds a copy of the bytes at the end, growing as above.
    [[nodiscard]] bool append(const void* bytes, std::uint32_t size);
    // Uses fewer bytes; the ones given up are wiped, the block stays.
    void truncate(std::uint32_t length);
    void swap(cByteBuffer& other) noexcept;

private:
    std::uint8_t* data_ = nullptr;
    std::uint32_t length_ = 0;
    std::uint32_t capacity_ = 0;
};

} // namespace toolbelt
