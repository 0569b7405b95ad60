// ARIA on 32 blocks side by side: compiled with flags of its own. No memory is addressed by secret data here.
#include <utility>

#include "crypto/cipher/aria_rounds.h"
#include "crypto/cipher/sliced_vaes.h"

namespace toolbelt {
namespace {

constexpr AffineMap S1ToS2 = makeMap([](std::uint32_t x) { return S2[X1[x]]; }); // turns S1 into S2, behind it
constexpr AffineMap X1ToX2 = makeMap([](std::uint32_t x) { return S1[X2[x]]; }); // turns X1 into X2, before it

struct Bytes
{
    __m256i b[4];

    [[gnu::always_inline]] Bytes& operator^=(const Bytes& other)
    {
        for (int i = 0; i < 4; ++i) b[i] ^= other.b[i];
        return *this;
    }
};
using Blocks = ValueOf<Bytes>;

// Adds the key and substitutes: layer SL1 starts with S1, SL2 with X1.
template <bool SL1>
[[gnu::always_inline]] inline void substitute(Blocks& v, const Value& key)
{
    for (int i = 0; i < 4; ++i) {
        auto& b = v.w[i].b;
        for (int j = 0; j < 4; ++j) b[j] ^= byteOf(key.w[i], j);
        auto &s1 = b[SL1 ? 0 : 2], &s2 = b[SL1 ? 1 : 3], &x1 = b[SL1 ? 2 : 0], &x2 = b[SL1 ? 3 : 1];
        s1 = applyBox(s1);
        s2 = apply(S1ToS2, applyBox(s2));
        x1 = applyInverseBox(x1);
        x2 = applyInverseBox(apply(X1ToX2, x2));
    }
}

// The diffusion in its four steps.
[[gnu::always_inline]] inline void diffuse(Blocks& v)
{
    for (auto& [b] : v.w) {
        const __m256i sum = b[0] ^ b[1] ^ b[2] ^ b[3];
        for (__m256i& byte : b) byte ^= sum;
    }
    mixWords(v);
    for (int i = 0; i < 4; i += 2) std::swap(v.w[1].b[i], v.w[1].b[i + 1]);
    for (int i = 0; i < 2; ++i) std::swap(v.w[2].b[i], v.w[2].b[i + 2]), std::swap(v.w[3].b[i], v.w[3].b[3 - i]);
    mixWords(v);
}

} // namespace

std::uint32_t ariaTransformVaes(const void* keys, const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks)
{
    const auto& schedule = *static_cast<const ARIAKeys*>(keys);
    return transformSliced(
        in, out, blocks, [&schedule](__m256i(&x)[16]) __attribute__((always_inline)) {
            Blocks v;
            for (int i = 0; i < 16; ++i) v.w[i / 4].b[i % 4] = x[i];
            const Value* key = schedule.key;
            for (std::uint32_t round = 2;; round += 2, key += 2) {
                substitute<true>(v, key[0]);
                diffuse(v);
                substitute<false>(v, key[1]);
                if (round == schedule.rounds) break; // the last round has a key in place of the diffusion
                diffuse(v);
            }
            for (int i = 0; i < 16; ++i) x[i] = v.w[i / 4].b[i % 4] ^ byteOf(key[2].w[i / 4], i % 4);
        });
}

} // namespace toolbelt
