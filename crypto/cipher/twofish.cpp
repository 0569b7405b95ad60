// Twofish (Schneier, Kelsey, Whiting, Wagner, Hall, Ferguson, 1998) with 16-byte blocks, always on the schedule of the
// 256-bit key. Words are little-endian; the key-dependent S-boxes are joined with the MDS matrix into four tables of
// words.
#include <bit>

#include "crypto/base/bytes.h"
#include "crypto/cipher/creators.h"
#include "crypto/cipher/gf256.h"
#include "crypto/cipher/side_by_side.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t KEY_BYTES = 32;
constexpr std::uint32_t ROUNDS = 16;
constexpr std::uint32_t MDS_POLYNOMIAL = 0x169, RS_POLYNOMIAL = 0x14D;

// The nibble permutations that the byte permutations q0 and q1 are made of.
constexpr std::uint8_t nibbles[2][4][16] = {
    {{0x8, 0x1, 0x7, 0xD, 0x6, 0xF, 0x3, 0x2, 0x0, 0xB, 0x5, 0x9, 0xE, 0xC, 0xA, 0x4},
     {0xE, 0xC, 0xB, 0x8, 0x1, 0x2, 0x3, 0x5, 0xF, 0x4, 0xA, 0x6, 0x7, 0x0, 0x9, 0xD},
     {0xB, 0xA, 0x5, 0xE, 0x6, 0xD, 0x9, 0x0, 0xC, 0x8, 0xF, 0x3, 0x2, 0x4, 0x7, 0x1},
     {0xD, 0x7, 0xF, 0x4, 0x1, 0x2, 0x6, 0xE, 0x9, 0xB, 0x3, 0x0, 0x8, 0x5, 0xC, 0xA}},
    {{0x2, 0x8, 0xB, 0xD, 0xF, 0x7, 0x6, 0xE, 0x3, 0x1, 0x9, 0x4, 0x0, 0xA, 0xC, 0x5},
     {0x1, 0xE, 0x2, 0xB, 0x4, 0xC, 0x3, 0x7, 0x6, 0xD, 0xA, 0x5, 0xF, 0x9, 0x0, 0x8},
     {0x4, 0xC, 0x7, 0x5, 0x1, 0x6, 0x9, 0xA, 0x0, 0xE, 0xD, 0x8, 0x2, 0xB, 0x3, 0xF},
     {0xB, 0x9, 0x5, 0x1, 0xC, 0x3, 0xD, 0xE, 0x6, 0x4, 0x7, 0xF, 0x2, 0x0, 0x8, 0xA}}};

constexpr ByteBox makeQ(const std::uint8_t (&t)[4][16])
{
    ByteBox q = {};
    const auto mix = [](std::uint32_t a, std::uint32_t b) { return (a ^ b >> 1 ^ b << 3 ^ a << 3) & 15; };
    for (std::uint32_t x = 0; x < 256; ++x) {
        std::uint32_t a = x >> 4, b = x & 15;
        for (int half = 0; half < 2; ++half) {
            const std::uint32_t sum = a ^ b, other = mix(a, b);
            a = t[2 * half][sum];
            b = t[2 * half + 1][other];
        }
        q[x] = static_cast<std::uint8_t>(b << 4 | a);
    }
    return q;
}

constexpr ByteBox q0 = makeQ(nibbles[0]);
constexpr ByteBox q1 = makeQ(nibbles[1]);

using Table = std::array<std::uint32_t, 256>;

// The byte permutations of each position of h, the last one behind: q1 or q0.
constexpr bool isQ1[4][5] = {{1, 1, 0, 0, 1}, {0, 1, 1, 0, 0}, {0, 0, 0, 1, 1}, {1, 0, 1, 1, 0}};

// The last permutation of a position, and what its byte adds to the product with the MDS matrix.
constexpr std::array<Table, 4> mds = [] {
    constexpr std::uint8_t matrix[4][4] = {
        {0x01, 0xEF, 0x5B, 0x5B}, {0x5B, 0xEF, 0xEF, 0x01}, {0xEF, 0x5B, 0x01, 0xEF}, {0xEF, 0x01, 0xEF, 0x5B}};
    std::array<Table, 4> tables = {};
    for (std::uint32_t column = 0; column < 4; ++column)
        for (std::uint32_t x = 0; x < 256; ++x)
            for (std::uint32_t row = 0; row < 4; ++row) {
                const std::uint8_t last = (isQ1[column][4] ? q1 : q0)[x];
                tables[column][x] |= std::uint32_t(gfMultiply(last, matrix[row][column], MDS_POLYNOMIAL)) << 8 * row;
            }
    return tables;
}();

struct TwofishSchedule
{
    Table s[4];          // g: the S-boxes with the key in them and the MDS matrix behind
    std::uint32_t K[40]; // 4 words of input whitening, 4 of output whitening, 2 a round
};

// What byte position COLUMN of h adds to the word, from the list L of four words: a chain of byte permutations, then
// the matrix.
template <std::uint32_t COLUMN>
[[gnu::always_inline]] inline std::uint32_t hByte(std::uint32_t x, const std::uint32_t (&L)[4])
{
#pragma GCC unroll 4
    for (std::uint32_t i = 0; i < 4; ++i) x = (isQ1[COLUMN][i] ? q1 : q0)[x] ^ (L[3 - i] >> 8 * COLUMN & 255);
    return mds[COLUMN][x];
}

std::uint32_t h(std::uint32_t byte, const std::uint32_t (&L)[4])
{
    return hByte<0>(byte, L) ^ hByte<1>(byte, L) ^ hByte<2>(byte, L) ^ hByte<3>(byte, L);
}

template <std::uint32_t COLUMN>
void fillTable(Table& table, const std::uint32_t (&S)[4])
{
    const std::uint32_t L[4] = {S[0], S[1], S[2], S[3]}; // no store to the table can change these
    for (std::uint32_t x = 0; x < 256; ++x) table[x] = hByte<COLUMN>(x, L);
}

// A word of the S-box key: eight bytes of the key times the Reed-Solomon matrix, which is the remainder that they
// leave, as a polynomial with the last byte in front, modulo x^4 + (a + 1/a) x^3 + a x^2 + (a + 1/a) x + 1 with a = 2.
std::uint32_t rsWord(const std::uint8_t* m)
{
    std::uint32_t word = load32le(m + 4);
    for (int i = 0; i < 8; ++i) {
        const std::uint32_t lead = word >> 24;
        const std::uint32_t twice = lead << 1 ^ (lead & 0x80 ? RS_POLYNOMIAL : 0);
        const std::uint32_t both = lead >> 1 ^ (lead & 1 ? RS_POLYNOMIAL >> 1 : 0) ^ twice;
        word = word << 8 ^ both << 24 ^ twice << 16 ^ both << 8 ^ lead;
        if (i == 3) word ^= load32le(m);
    }
    return word;
}

// Not inlined: what it puts by lies where its caller wipes.
[[gnu::noinline]] void expandKey(TwofishSchedule& schedule, const std::uint8_t* key)
{
    std::uint32_t parts[3][4]; // the even words of the key, the odd ones, and S, which g takes in reverse
    const WipeOnExit wipeParts(parts);
    auto& [Me, Mo, Sg] = parts;
    for (std::uint32_t i = 0; i < 4; ++i) {
        Me[i] = load32le(key + 8 * i);
        Mo[i] = load32le(key + 8 * i + 4);
        Sg[3 - i] = rsWord(key + 8 * i);
    }
    for (std::uint32_t i = 0; i < 20; ++i) {
        const std::uint32_t A = h(2 * i, Me);
        const std::uint32_t B = std::rotl(h(2 * i + 1, Mo), 8);
        schedule.K[2 * i] = A + B;
        schedule.K[2 * i + 1] = std::rotl(A + 2 * B, 9);
    }
    fillTable<0>(schedule.s[0], Sg);
    fillTable<1>(schedule.s[1], Sg);
    fillTable<2>(schedule.s[2], Sg);
    fillTable<3>(schedule.s[3], Sg);
}

template <std::uint32_t N>
[[gnu::always_inline]] inline Words<N> g(const TwofishSchedule& key, Words<N> x)
{
    return look(key.s[0], x & 255) ^ look(key.s[1], x >> 8 & 255) ^ look(key.s[2], x >> 16 & 255) ^
           look(key.s[3], x >> 24);
}

// g of x rotated left by 8 bits.
template <std::uint32_t N>
[[gnu::always_inline]] inline Words<N> gRotated(const TwofishSchedule& key, Words<N> x)
{
    return look(key.s[0], x >> 24) ^ look(key.s[1], x & 255) ^ look(key.s[2], x >> 8 & 255) ^
           look(key.s[3], x >> 16 & 255);
}

// Two rounds at a time, so that the halves need not change places.
template <std::uint32_t N>
void encryptBlocks(const TwofishSchedule& key, const std::uint8_t* in, std::uint8_t* out)
{
    const std::uint32_t* K = key.K;
    Words<N> R0 = loadWords<load32le, N>(in, 16) ^ K[0], R1 = loadWords<load32le, N>(in + 4, 16) ^ K[1],
             R2 = loadWords<load32le, N>(in + 8, 16) ^ K[2], R3 = loadWords<load32le, N>(in + 12, 16) ^ K[3];
    for (const std::uint32_t* k = K + 8; k != K + 8 + 2 * ROUNDS; k += 4) {
        Words<N> T0 = g(key, R0), T1 = gRotated(key, R1);
        R2 = rotr(R2 ^ (T0 + T1 + k[0]), 1);
        R3 = rotl(R3, 1) ^ (T0 + T1 + T1 + k[1]);
        T0 = g(key, R2), T1 = gRotated(key, R3);
        R0 = rotr(R0 ^ (T0 + T1 + k[2]), 1);
        R1 = rotl(R1, 1) ^ (T0 + T1 + T1 + k[3]);
    }
    storeWords<store32le>(out, 16, R2 ^ K[4]);
    storeWords<store32le>(out + 4, 16, R3 ^ K[5]);
    storeWords<store32le>(out + 8, 16, R0 ^ K[6]);
    storeWords<store32le>(out + 12, 16, R1 ^ K[7]);
}

template <std::uint32_t N>
void decryptBlocks(const TwofishSchedule& key, const std::uint8_t* in, std::uint8_t* out)
{
    const std::uint32_t* K = key.K;
    Words<N> R2 = loadWords<load32le, N>(in, 16) ^ K[4], R3 = loadWords<load32le, N>(in + 4, 16) ^ K[5],
             R0 = loadWords<load32le, N>(in + 8, 16) ^ K[6], R1 = loadWords<load32le, N>(in + 12, 16) ^ K[7];
    for (const std::uint32_t* k = K + 8 + 2 * ROUNDS; k != K + 8; k -= 4) {
        Words<N> T0 = g(key, R2), T1 = gRotated(key, R3);
        R0 = rotl(R0, 1) ^ (T0 + T1 + k[-2]);
        R1 = rotr(R1 ^ (T0 + T1 + T1 + k[-1]), 1);
        T0 = g(key, R0), T1 = gRotated(key, R1);
        R2 = rotl(R2, 1) ^ (T0 + T1 + k[-4]);
        R3 = rotr(R3 ^ (T0 + T1 + T1 + k[-3]), 1);
    }
    storeWords<store32le>(out, 16, R0 ^ K[0]);
    storeWords<store32le>(out + 4, 16, R1 ^ K[1]);
    storeWords<store32le>(out + 8, 16, R2 ^ K[2]);
    storeWords<store32le>(out + 12, 16, R3 ^ K[3]);
}

} // namespace

class cAlgTFish final : public SideBySideCipher<16, TwofishSchedule, encryptBlocks<1>, encryptBlocks<SIDE>,
                                                decryptBlocks<1>, decryptBlocks<SIDE>>
{
public:
    using SideBySideCipher::SideBySideCipher;
};

// A short key is filled up with zeros to 32 bytes and takes the 256-bit schedule too, and no length is kept to be
// reported, by design.
cSymAlg* createTFish(const std::uint8_t* key, std::uint32_t keyLength)
{
    const PaddedKey<KEY_BYTES> padded(key, keyLength);
    if (!padded) return nullptr;
    auto cipher = newCipher<cAlgTFish>(0u);
    if (cipher) expandKey(*cipher->schedule, padded.data()), wipeDeadStack();
    return cipher.release();
}

} // namespace toolbelt
