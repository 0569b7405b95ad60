// HashObject: the adapter from cHashAlg to the context routines of one algorithm. A digest is declared in one line:
//
//   using cHashMD5 = HashObject<Md5Context, 16, Release::AS_IS, md5Reset, md5Update, md5Final>;
//
// The object owns its context, a plain structure of its own block on the engine's heap. A digest with faster twins of
// its compression has the one to use in its context and names, last, the routine that chooses it for the processor.
#pragma once

#include <cstdint>
#include <new>
#include <type_traits>

#include "crypto/hash/hash.h"

namespace toolbelt {

// How a context goes back to the heap.
enum class Release
{
    AS_IS,
    WIPED,
};

// A new context, contents undefined; CRYPT_E_CONTEXT_ALLOC and null when memory has run out.
template <typename Context>
[[nodiscard]] Status allocateContext(Context** context)
{
    static_assert(alignof(Context) <= 8, "the heap aligns no further");
    *context = static_cast<Context*>(heap::allocate(sizeof(Context)));
    return *context != nullptr ? CRYPT_OK : CRYPT_E_CONTEXT_ALLOC;
}

// A core without tiers has nothing to choose.
template <typename Context>
void chooseNothing(Context*)
{}

template <typename Context, std::uint32_t DIGEST_SIZE, Release RELEASE, Status (*RESET)(Context*),
          Status (*UPDATE)(Context*, const std::uint8_t*, std::uint32_t), Status (*FINAL)(Context*, std::uint8_t*),
          void (*CHOOSE)(Context*) = chooseNothing<Context>>
class HashObject final : public cHashAlg
{
    static_assert(std::is_trivially_copyable_v<Context> && std::is_trivially_default_constructible_v<Context>);

public:
    static constexpr std::uint32_t SIZE = DIGEST_SIZE;

    // A new object, reset; null when there is no memory for it or for its context.
    static cHashAlg* create()
    {
        HashObject* object = new (std::nothrow) HashObject;
        if (object == nullptr) return nullptr;
        if (allocateContext(&object->context_) != CRYPT_OK) {
            delete object;
            return nullptr;
        }
        CHOOSE(object->context_);
        (void)object->reset();
        return object;
    }

    std::uint32_t getSize() override { return SIZE; }
    Status update(const std::uint8_t* data, std::uint32_t length) override { return UPDATE(context_, data, length); }
    Status final(std::uint8_t* output) override { return FINAL(context_, output); }
    Status reset() override { return RESET(context_); }

    ~HashObject() override
    {
        if constexpr (RELEASE == Release::WIPED)
            heap::releaseSecret(context_, sizeof(Context));
        else
            heap::release(context_);
    }
    HashObject(const HashObject&) = delete;
    HashObject& operator=(const HashObject&) = delete;

private:
    HashObject() = default;

    Context* context_ = nullptr;
};

} // namespace toolbelt
