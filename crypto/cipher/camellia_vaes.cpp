// Camellia on 32 blocks side by side: compiled with flags of its own. No memory is addressed by secret data here.
#include "crypto/cipher/camellia_rounds.h"
#include "crypto/cipher/sliced_vaes.h"

namespace toolbelt {
namespace {

// SBOX1 inverts in a field of its own. The affine map in front of it goes to Rijndael's field instead, by what each bit
// adds; what is then left behind Rijndael's S-box is affine too.
constexpr ByteBox toRijndael = [] {
    constexpr std::uint8_t column[8] = {0xB8, 0x03, 0xD9, 0x17, 0x0D, 0x59, 0x84, 0xEE};
    ByteBox box = {};
    for (std::uint32_t x = 0; x < 256; ++x) {
        box[x] = 0x0B;
        for (std::uint32_t bit = 0; bit < 8; ++bit)
            if (x >> bit & 1) box[x] ^= column[bit];
    }
    return box;
}();
constexpr ByteBox fromRijndael = [] {
    ByteBox box = {};
    for (std::uint32_t x = 0; x < 256; ++x) box[rijndaelBox[toRijndael[x]]] = SBOX1[x];
    return box;
}();
constexpr std::uint8_t rotated(std::uint32_t x, int by)
{
    return std::rotl(static_cast<std::uint8_t>(x), by);
}
// In front of and behind Rijndael's S-box, for SBOX1 to SBOX4.
constexpr AffineMap front = makeMap([](std::uint32_t x) { return toRijndael[x]; });
constexpr AffineMap front4 = makeMap([](std::uint32_t x) { return toRijndael[rotated(x, 1)]; });
constexpr AffineMap behind = makeMap([](std::uint32_t x) { return fromRijndael[x]; });
constexpr AffineMap behind2 = makeMap([](std::uint32_t x) { return rotated(fromRijndael[x], 1); });
constexpr AffineMap behind3 = makeMap([](std::uint32_t x) { return rotated(fromRijndael[x], 7); });

// The halves of blocks, the bytes in order: those of the left word, those of the right one.
struct Halves
{
    __m256i b[8];

    [[gnu::always_inline]] Halves& operator^=(const Half& key)
    {
        for (int i = 0; i < 4; ++i) b[i] ^= byteOf(key.left, i), b[i + 4] ^= byteOf(key.right, i);
        return *this;
    }
};

// As for one block, U and D are sums of all bytes of a word but one.
[[gnu::always_inline]] inline void addF(Halves& y, const Halves& x, const Half& k)
{
    Halves t = x;
    t ^= k;
    for (const int i : {0, 7}) t.b[i] = apply(behind, applyBox(apply(front, t.b[i])));
    for (const int i : {1, 4}) t.b[i] = apply(behind2, applyBox(apply(front, t.b[i])));
    for (const int i : {2, 5}) t.b[i] = apply(behind3, applyBox(apply(front, t.b[i])));
    for (const int i : {3, 6}) t.b[i] = apply(behind, applyBox(apply(front4, t.b[i])));
    const __m256i left = t.b[0] ^ t.b[1] ^ t.b[2] ^ t.b[3], right = t.b[4] ^ t.b[5] ^ t.b[6] ^ t.b[7];
    for (int i = 0; i < 4; ++i) {
        const __m256i both = left ^ t.b[(i + 1) % 4] ^ right ^ t.b[i + 4];
        y.b[i] ^= both;
        y.b[i + 4] ^= both ^ left ^ t.b[i]; // the byte of U before
    }
}

// right ^= rotl(left & key.left, 1)
[[gnu::always_inline]] inline void addRotated(Halves& x, const Half& k)
{
    __m256i masked[4];
    for (int i = 0; i < 4; ++i) masked[i] = x.b[i] & byteOf(k.left, i);
    for (int i = 0; i < 4; ++i) {
        const __m256i carried = _mm256_srli_epi16(masked[(i + 1) % 4], 7) & _mm256_set1_epi8(1);
        x.b[i + 4] ^= _mm256_add_epi8(masked[i], masked[i]) ^ carried;
    }
}
[[gnu::always_inline]] inline void addCombined(Halves& x, const Half& k)
{
    for (int i = 0; i < 4; ++i) x.b[i] ^= x.b[i + 4] | byteOf(k.right, i);
}

[[gnu::always_inline]] inline void applyFL(Halves& x, const Half& k)
{
    addRotated(x, k);
    addCombined(x, k);
}
[[gnu::always_inline]] inline void applyInverseFL(Halves& y, const Half& k)
{
    addCombined(y, k);
    addRotated(y, k);
}

} // namespace

std::uint32_t camelliaDecryptVaes(const void* keys, const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks)
{
    const auto& schedule = *static_cast<const CamelliaSchedule*>(keys);
    return transformSliced(
        in, out, blocks, [&schedule](__m256i(&x)[16]) __attribute__((always_inline)) {
            Halves D1, D2;
            for (int i = 0; i < 8; ++i) D1.b[i] = x[i], D2.b[i] = x[i + 8];
            decryptRounds(schedule, D1, D2);
            for (int i = 0; i < 8; ++i) x[i] = D2.b[i], x[i + 8] = D1.b[i];
        });
}

} // namespace toolbelt
