// cByteBuffer: a growable block of bytes from the system's global heap. What it held is wiped before it is released.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"

namespace toolbelt {

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
    // Releases the block and takes a new one with length bytes in use, their contents zero. False when memory runs out.
    [[nodiscard]] bool allocate(std::uint32_t length);
    // Makes room for at least capacity bytes; what is in use stays. False, and nothing changed, when memory runs out.
    [[nodiscard]] bool reserve(std::uint32_t capacity);
    // Adds size bytes in use at the end, their contents zero. False, and nothing changed, when memory runs out.
    [[nodiscard]] bool grow(std::uint32_t size);
    // Adds a copy of the bytes at the end.
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
