// The one door to memory. Library code allocates here and nowhere else, so that tests can make the n-th allocation fail
// and look at every block that is released. Nothing here throws.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>
#include <utility>

#include "crypto/base/export.h"

namespace toolbelt {

// Overwrites size bytes with zeros; the compiler cannot drop it.
TB_API void wipe(void* block, std::size_t size) noexcept;

namespace heap {

// A block of size bytes, aligned to 8, or null when memory has run out. Contents are undefined. A size of 0 gives a
// block of one byte.
TB_API void* allocate(std::size_t size) noexcept;
// Returns a block as it is. Null is ignored.
TB_API void release(void* block) noexcept;
// Wipes the first size bytes (the whole of what was asked for), then returns the block. Null is ignored.
TB_API void releaseSecret(void* block, std::size_t size) noexcept;

// The same on the system's global heap (GlobalAlloc), where the byte buffer keeps its block.
void* globalAllocate(std::size_t size) noexcept;
void globalReleaseSecret(void* block, std::size_t size) noexcept;

// What lies under the door. A test replaces it; secretSize is what was wiped just before, 0 for a block released as it
// is.
struct Backend
{
    void* (*allocate)(std::size_t size, bool global) noexcept;
    void (*release)(void* block, std::size_t secretSize, bool global) noexcept;
};
// Puts another backend in place (null: the default one) and returns the one before. Not exported, not for two threads.
const Backend* setBackend(const Backend* backend) noexcept;

} // namespace heap

// HeapObject: a base without data that makes `new (std::nothrow) T` use the door; null when memory has run out.
struct HeapObject
{
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return heap::allocate(size); }
    static void operator delete(void* object) noexcept { heap::release(object); }
    static void operator delete(void* object, const std::nothrow_t&) noexcept { heap::release(object); }
};

// SecretArray: an owned array of plain values that is wiped before it is released. Test it before use: a failed
// allocation leaves it empty. Contents start undefined.
template <typename T>
class SecretArray
{
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T> && alignof(T) <= 8);

public:
    SecretArray() noexcept = default;
    explicit SecretArray(std::size_t count) noexcept
    {
        if (count <= std::size_t(-1) / 2 / sizeof(T)) data_ = static_cast<T*>(heap::allocate(count * sizeof(T)));
        count_ = data_ ? count : 0;
    }
    SecretArray(SecretArray&& other) noexcept { swap(other); }
    SecretArray& operator=(SecretArray&& other) noexcept
    {
        swap(other);
        return *this;
    }
    SecretArray(const SecretArray&) = delete;
    SecretArray& operator=(const SecretArray&) = delete;
    ~SecretArray() { heap::releaseSecret(data_, count_ * sizeof(T)); }

    explicit operator bool() const noexcept { return data_ != nullptr; }
    T* data() noexcept { return data_; }
    const T* data() const noexcept { return data_; }
    std::size_t size() const noexcept { return count_; }
    T& operator[](std::size_t index) noexcept { return data_[index]; }
    const T& operator[](std::size_t index) const noexcept { return data_[index]; }
    void swap(SecretArray& other) noexcept
    {
        std::swap(data_, other.data_);
        std::swap(count_, other.count_);
    }

private:
    T* data_ = nullptr;
    std::size_t count_ = 0;
};

using SecretBytes = SecretArray<std::uint8_t>;

// WipeOnExit: wipes a local object that held secrets when the scope ends, whichever way it ends.
template <typename T>
class WipeOnExit
{
    static_assert(std::is_trivially_copyable_v<T>);

public:
    explicit WipeOnExit(T& object) noexcept : object_(object) {}
    ~WipeOnExit() { wipe(&object_, sizeof(T)); }
    WipeOnExit(const WipeOnExit&) = delete;
    WipeOnExit& operator=(const WipeOnExit&) = delete;

private:
    T& object_;
};

} // namespace toolbelt
