// DES (FIPS 46-3): 8-byte blocks, 8-byte keys of which 56 bits count. Bit 1 of the standard is the most significant bit
// of the first byte; the halves of a block are big-endian words.
#include "crypto/cipher/des.h"

#include <array>
#include <bit>

#include "crypto/base/bytes.h"
#include "crypto/cipher/creators.h"
#include "crypto/cipher/member.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t KEY_BYTES = 8;
constexpr std::uint32_t ROUNDS = 16;

// Permutations name, for each bit of the output, the bit of the input. PC1 gives C and D, PC2 picks a round key.
constexpr std::uint8_t PC1[56] = {57, 49, 41, 33, 25, 17, 9,  1,  58, 50, 42, 34, 26, 18, 10, 2,  59, 51, 43,
                                  35, 27, 19, 11, 3,  60, 52, 44, 36, 63, 55, 47, 39, 31, 23, 15, 7,  62, 54,
                                  46, 38, 30, 22, 14, 6,  61, 53, 45, 37, 29, 21, 13, 5,  28, 20, 12, 4};
constexpr std::uint8_t PC2[48] = {14, 17, 11, 24, 1,  5,  3,  28, 15, 6,  21, 10, 23, 19, 12, 4,
                                  26, 8,  16, 7,  27, 20, 13, 2,  41, 52, 31, 37, 47, 55, 30, 40,
                                  51, 45, 33, 48, 44, 49, 39, 56, 34, 53, 46, 42, 50, 36, 29, 32};
constexpr std::uint8_t SHIFTS[ROUNDS] = {1, 1, 2, 2, 2, 2, 2, 2, 1, 2, 2, 2, 2, 2, 2, 1};
constexpr std::uint8_t P[32] = {16, 7, 20, 21, 29, 12, 28, 17, 1,  15, 23, 26, 5,  18, 31, 10,
                                2,  8, 24, 14, 32, 27, 3,  9,  19, 13, 30, 6,  22, 11, 4,  25};

// Row: the first and the last of the six bits; column: the four between.
constexpr std::uint8_t S[8][4][16] = {
    {{14, 4, 13, 1, 2, 15, 11, 8, 3, 10, 6, 12, 5, 9, 0, 7},
     {0, 15, 7, 4, 14, 2, 13, 1, 10, 6, 12, 11, 9, 5, 3, 8},
     {4, 1, 14, 8, 13, 6, 2, 11, 15, 12, 9, 7, 3, 10, 5, 0},
     {15, 12, 8, 2, 4, 9, 1, 7, 5, 11, 3, 14, 10, 0, 6, 13}},
    {{15, 1, 8, 14, 6, 11, 3, 4, 9, 7, 2, 13, 12, 0, 5, 10},
     {3, 13, 4, 7, 15, 2, 8, 14, 12, 0, 1, 10, 6, 9, 11, 5},
     {0, 14, 7, 11, 10, 4, 13, 1, 5, 8, 12, 6, 9, 3, 2, 15},
     {13, 8, 10, 1, 3, 15, 4, 2, 11, 6, 7, 12, 0, 5, 14, 9}},
    {{10, 0, 9, 14, 6, 3, 15, 5, 1, 13, 12, 7, 11, 4, 2, 8},
     {13, 7, 0, 9, 3, 4, 6, 10, 2, 8, 5, 14, 12, 11, 15, 1},
     {13, 6, 4, 9, 8, 15, 3, 0, 11, 1, 2, 12, 5, 10, 14, 7},
     {1, 10, 13, 0, 6, 9, 8, 7, 4, 15, 14, 3, 11, 5, 2, 12}},
    {{7, 13, 14, 3, 0, 6, 9, 10, 1, 2, 8, 5, 11, 12, 4, 15},
     {13, 8, 11, 5, 6, 15, 0, 3, 4, 7, 2, 12, 1, 10, 14, 9},
     {10, 6, 9, 0, 12, 11, 7, 13, 15, 1, 3, 14, 5, 2, 8, 4},
     {3, 15, 0, 6, 10, 1, 13, 8, 9, 4, 5, 11, 12, 7, 2, 14}},
    {{2, 12, 4, 1, 7, 10, 11, 6, 8, 5, 3, 15, 13, 0, 14, 9},
     {14, 11, 2, 12, 4, 7, 13, 1, 5, 0, 15, 10, 3, 9, 8, 6},
     {4, 2, 1, 11, 10, 13, 7, 8, 15, 9, 12, 5, 6, 3, 0, 14},
     {11, 8, 12, 7, 1, 14, 2, 13, 6, 15, 0, 9, 10, 4, 5, 3}},
    {{12, 1, 10, 15, 9, 2, 6, 8, 0, 13, 3, 4, 14, 7, 5, 11},
     {10, 15, 4, 2, 7, 12, 9, 5, 6, 1, 13, 14, 0, 11, 3, 8},
     {9, 14, 15, 5, 2, 8, 12, 3, 7, 0, 4, 10, 1, 13, 11, 6},
     {4, 3, 2, 12, 9, 5, 15, 10, 11, 14, 1, 7, 6, 0, 8, 13}},
    {{4, 11, 2, 14, 15, 0, 8, 13, 3, 12, 9, 7, 5, 10, 6, 1},
     {13, 0, 11, 7, 4, 9, 1, 10, 14, 3, 5, 12, 2, 15, 8, 6},
     {1, 4, 11, 13, 12, 3, 7, 14, 10, 15, 6, 8, 0, 5, 9, 2},
     {6, 11, 13, 8, 1, 4, 10, 7, 9, 5, 0, 15, 14, 2, 3, 12}},
    {{13, 2, 8, 4, 6, 15, 11, 1, 10, 9, 3, 14, 5, 0, 12, 7},
     {1, 15, 13, 8, 10, 3, 7, 4, 12, 5, 6, 11, 0, 14, 9, 2},
     {7, 11, 4, 1, 9, 12, 14, 2, 0, 6, 10, 13, 15, 3, 5, 8},
     {2, 1, 14, 7, 4, 10, 8, 13, 15, 12, 9, 0, 3, 5, 6, 11}},
};

// Each S-box with the permutation P behind it.
constexpr std::array<std::array<std::uint32_t, 64>, 8> SP = [] {
    std::array<std::array<std::uint32_t, 64>, 8> tables = {};
    for (std::uint32_t box = 0; box < 8; ++box)
        for (std::uint32_t x = 0; x < 64; ++x) {
            const std::uint32_t word = std::uint32_t(S[box][(x >> 4 & 2) | (x & 1)][x >> 1 & 15]) << (28 - 4 * box);
            for (const std::uint8_t bit : P) tables[box][x] = tables[box][x] << 1 | (word >> (32 - bit) & 1);
        }
    return tables;
}();

// The 48 bits that E makes of R are R in two rotations: every other group of six begins on a byte of either.
template <std::uint32_t N>
[[gnu::always_inline]] inline Words<N> f(Words<N> R, const std::uint32_t (&key)[2])
{
    const Words<N> odd = rotr(R, 1) ^ key[0], even = rotl(R, 3) ^ key[1];
    return look(SP[0], odd >> 26) ^ look(SP[2], odd >> 18 & 63) ^ look(SP[4], odd >> 10 & 63) ^
           look(SP[6], odd >> 2 & 63) ^ look(SP[1], even >> 26) ^ look(SP[3], even >> 18 & 63) ^
           look(SP[5], even >> 10 & 63) ^ look(SP[7], even >> 2 & 63);
}

// Exchanges the bits of a that lie `by` above the mask with the bits of b under the mask.
template <std::uint32_t N>
[[gnu::always_inline]] inline void exchange(Words<N>& a, Words<N>& b, int by, std::uint32_t mask)
{
    const Words<N> difference = ((a >> by) ^ b) & mask;
    b ^= difference;
    a ^= difference << by;
}

std::uint32_t rotateHalfKey(std::uint32_t half, std::uint32_t by)
{
    return (half << by | half >> (28 - by)) & 0x0FFFFFFF;
}

} // namespace

void desExpandKey(DesSchedule& schedule, const std::uint8_t* key) noexcept
{
    std::uint32_t CD[2] = {};
    const WipeOnExit wipeCD(CD);
    for (std::uint32_t i = 0; i < 56; ++i) {
        const std::uint32_t bit = PC1[i] - 1u;
        CD[i / 28] = CD[i / 28] << 1 | (key[bit / 8] >> (7 - bit % 8) & 1);
    }
    for (std::uint32_t round = 0; round < ROUNDS; ++round) {
        for (std::uint32_t& half : CD) half = rotateHalfKey(half, SHIFTS[round]);
        auto& words = schedule.roundKeys[round];
        words[0] = words[1] = 0;
        for (std::uint32_t i = 0; i < 48; ++i) {
            const std::uint32_t bit = PC2[i] - 1u, box = i / 6;
            words[box % 2] |= (CD[bit / 28] >> (27 - bit % 28) & 1) << (31 - 8 * (box / 2) - i % 6);
        }
    }
}

// The permutation transposes the block, seen as a matrix of eight bytes of eight bits, and sorts the rows; each
// exchange below does one step of the transposition on all its parts at once.
template <std::uint32_t N>
DesHalves<N> desInitialPermutation(const std::uint8_t* in) noexcept
{
    DesHalves<N> block = {loadWords<load32be, N>(in, 8), loadWords<load32be, N>(in + 4, 8)};
    exchange(block.L, block.R, 4, 0x0F0F0F0F);
    exchange(block.L, block.R, 16, 0x0000FFFF);
    exchange(block.R, block.L, 2, 0x33333333);
    exchange(block.R, block.L, 8, 0x00FF00FF);
    exchange(block.L, block.R, 1, 0x55555555);
    return block;
}

template <std::uint32_t N>
void desFinalPermutation(std::uint8_t* out, DesHalves<N> block) noexcept
{
    exchange(block.L, block.R, 1, 0x55555555);
    exchange(block.R, block.L, 8, 0x00FF00FF);
    exchange(block.R, block.L, 2, 0x33333333);
    exchange(block.L, block.R, 16, 0x0000FFFF);
    exchange(block.L, block.R, 4, 0x0F0F0F0F);
    storeWords<store32be>(out, 8, block.L);
    storeWords<store32be>(out + 4, 8, block.R);
}

template <std::uint32_t N>
DesHalves<N> desEncryptRounds(const DesSchedule& schedule, DesHalves<N> halves) noexcept
{
    auto [L, R] = halves;
    for (std::uint32_t i = 0; i < ROUNDS; i += 2) {
        L ^= f(R, schedule.roundKeys[i]);
        R ^= f(L, schedule.roundKeys[i + 1]);
    }
    return {R, L};
}

template <std::uint32_t N>
DesHalves<N> desDecryptRounds(const DesSchedule& schedule, DesHalves<N> halves) noexcept
{
    auto [L, R] = halves;
    for (std::uint32_t i = ROUNDS; i > 0; i -= 2) {
        L ^= f(R, schedule.roundKeys[i - 1]);
        R ^= f(L, schedule.roundKeys[i - 2]);
    }
    return {R, L};
}

template DesHalves<1> desInitialPermutation(const std::uint8_t*) noexcept;
template DesHalves<SIDE> desInitialPermutation(const std::uint8_t*) noexcept;
template void desFinalPermutation(std::uint8_t*, DesHalves<1>) noexcept;
template void desFinalPermutation(std::uint8_t*, DesHalves<SIDE>) noexcept;
template DesHalves<1> desEncryptRounds(const DesSchedule&, DesHalves<1>) noexcept;
template DesHalves<SIDE> desEncryptRounds(const DesSchedule&, DesHalves<SIDE>) noexcept;
template DesHalves<1> desDecryptRounds(const DesSchedule&, DesHalves<1>) noexcept;
template DesHalves<SIDE> desDecryptRounds(const DesSchedule&, DesHalves<SIDE>) noexcept;

namespace {

template <std::uint32_t N>
void encryptBlocks(const DesSchedule& key, const std::uint8_t* in, std::uint8_t* out)
{
    desFinalPermutation(out, desEncryptRounds(key, desInitialPermutation<N>(in)));
}

template <std::uint32_t N>
void decryptBlocks(const DesSchedule& key, const std::uint8_t* in, std::uint8_t* out)
{
    desFinalPermutation(out, desDecryptRounds(key, desInitialPermutation<N>(in)));
}

} // namespace

class cAlgDes final : public SideBySideCipher<8, DesSchedule, encryptBlocks<1>, encryptBlocks<SIDE>, decryptBlocks<1>,
                                              decryptBlocks<SIDE>>
{
public:
    using SideBySideCipher::SideBySideCipher;
};

cSymAlg* createDes(const std::uint8_t* key, std::uint32_t keyLength)
{
    const PaddedKey<KEY_BYTES> padded(key, keyLength);
    if (!padded) return nullptr;
    auto cipher = newCipher<cAlgDes>(KEY_BYTES);
    if (cipher) desExpandKey(*cipher->schedule, padded.data());
    return cipher.release();
}

} // namespace toolbelt
