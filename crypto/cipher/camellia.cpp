// Camellia (RFC 3713): 16-byte blocks, keys of 16, 24 and 32 bytes, 18 or 24 rounds. A block and a key are read as
// big-endian words; a 64-bit quantity of the standard is a Half, its left word first.
#include <bit>

#include "crypto/base/bytes.h"
#include "crypto/base/cpu.h"
#include "crypto/cipher/camellia_rounds.h"
#include "crypto/cipher/creators.h"
#include "crypto/cipher/member.h"

namespace toolbelt {
namespace {

using Table = std::array<std::uint32_t, 256>;

// An S-box and what its output byte adds to the four bytes of a word; mask has FF in each byte that gets it.
template <typename Box>
constexpr Table spread(Box box, std::uint32_t mask)
{
    Table table = {};
    for (std::uint32_t x = 0; x < 256; ++x) table[x] = (box(x) * 0x01010101u) & mask;
    return table;
}

// SBOX2 and SBOX3 rotate the output of SBOX1, SBOX4 its input.
constexpr Table SP1 = spread([](std::uint32_t x) { return std::uint32_t(SBOX1[x]); }, 0xFFFFFF00);
constexpr Table SP2 = spread([](std::uint32_t x) { return std::uint32_t(std::rotl(SBOX1[x], 1)); }, 0x00FFFFFF);
constexpr Table SP3 = spread([](std::uint32_t x) { return std::uint32_t(std::rotl(SBOX1[x], 7)); }, 0xFF00FFFF);
constexpr Table SP4 = spread([](std::uint32_t x) { return std::uint32_t(SBOX1[(x << 1 | x >> 7) & 255]); }, 0xFFFF00FF);

// y ^= F(x, k). Of the P layer: what the right word of x adds to both words of the result is the same (D); what the
// left one adds to the right word is U and U rotated right by a byte. Inlined, or the block would pass through memory.
[[gnu::always_inline]] inline void addF(Half& y, const Half& x, const Half& k)
{
    const std::uint32_t l = x.left ^ k.left, r = x.right ^ k.right;
    const std::uint32_t U = SP1[l >> 24] ^ SP2[l >> 16 & 255] ^ SP3[l >> 8 & 255] ^ SP4[l & 255];
    const std::uint32_t D = SP2[r >> 24] ^ SP3[r >> 16 & 255] ^ SP4[r >> 8 & 255] ^ SP1[r & 255];
    y.left ^= U ^ D;
    y.right ^= U ^ D ^ std::rotr(U, 8);
}

void applyFL(Half& x, const Half& k)
{
    x.right ^= std::rotl(x.left & k.left, 1);
    x.left ^= x.right | k.right;
}

void applyInverseFL(Half& y, const Half& k)
{
    y.left ^= y.right | k.right;
    y.right ^= std::rotl(y.left & k.left, 1);
}

// One half of a 128-bit value rotated left.
Half rotatedHalf(const Half (&value)[2], std::uint32_t by, std::uint32_t half)
{
    const std::uint32_t first = by / 32 + 2 * half, bits = by % 32; // bits is never 0 where by is not
    const auto word = [&](std::uint32_t i) {
        // Read in place: a copy of the key's words would stay on the stack.
        const Half &h = value[i / 2 % 2], &next = value[(i + 1) / 2 % 2];
        const std::uint32_t high = i % 2 == 0 ? h.left : h.right, low = i % 2 == 0 ? next.right : next.left;
        return bits == 0 ? high : high << bits | low >> (32 - bits);
    };
    return {word(first), word(first + 1)};
}

// Where a subkey comes from: one of KL, KR, KA, KB rotated left, and which half of it.
struct Source
{
    enum Key : std::uint8_t
    {
        KL,
        KR,
        KA,
        KB
    } key;
    std::uint8_t rotation, half;
};
constexpr auto KL = Source::KL, KR = Source::KR, KA = Source::KA, KB = Source::KB;

// In the order kw, k, ke.
constexpr Source shortSources[4 + 18 + 4] = {
    {KL, 0, 0},  {KL, 0, 1},  {KA, 111, 0}, {KA, 111, 1},                             //
    {KA, 0, 0},  {KA, 0, 1},  {KL, 15, 0},  {KL, 15, 1},  {KA, 15, 0},  {KA, 15, 1},  //
    {KL, 45, 0}, {KL, 45, 1}, {KA, 45, 0},  {KL, 60, 1},  {KA, 60, 0},  {KA, 60, 1},  //
    {KL, 94, 0}, {KL, 94, 1}, {KA, 94, 0},  {KA, 94, 1},  {KL, 111, 0}, {KL, 111, 1}, //
    {KA, 30, 0}, {KA, 30, 1}, {KL, 77, 0},  {KL, 77, 1},
};
constexpr Source longSources[4 + 24 + 6] = {
    {KL, 0, 0},  {KL, 0, 1},  {KB, 111, 0}, {KB, 111, 1},                             //
    {KB, 0, 0},  {KB, 0, 1},  {KR, 15, 0},  {KR, 15, 1},  {KA, 15, 0},  {KA, 15, 1},  //
    {KB, 30, 0}, {KB, 30, 1}, {KL, 45, 0},  {KL, 45, 1},  {KA, 45, 0},  {KA, 45, 1},  //
    {KR, 60, 0}, {KR, 60, 1}, {KB, 60, 0},  {KB, 60, 1},  {KL, 77, 0},  {KL, 77, 1},  //
    {KR, 94, 0}, {KR, 94, 1}, {KA, 94, 0},  {KA, 94, 1},  {KL, 111, 0}, {KL, 111, 1}, //
    {KR, 30, 0}, {KR, 30, 1}, {KL, 60, 0},  {KL, 60, 1},  {KA, 77, 0},  {KA, 77, 1},
};

// keyLength is 16, 24 or 32.
[[gnu::noinline]] void expandKey(CamelliaSchedule& schedule, const std::uint8_t* key, std::uint32_t keyLength)
{
    constexpr Half sigma[6] = {{0xA09E667F, 0x3BCC908B}, {0xB67AE858, 0x4CAA73B2}, {0xC6EF372F, 0xE94F82BE},
                               {0x54FF53A5, 0xF1D36F1C}, {0x10E527FA, 0xDE682D1D}, {0xB05688C2, 0xB3E6C1FD}};
    Half keys[4][2] = {}; // KL, KR, KA, KB
    const WipeOnExit wipeKeys(keys);
    for (std::uint32_t i = 0; i < keyLength / 8; ++i)
        keys[i / 2][i % 2] = {load32be(key + 8 * i), load32be(key + 8 * i + 4)};
    auto& [left, right, A, B] = keys;
    if (keyLength == 24) right[1] = {~right[0].left, ~right[0].right};

    for (int i = 0; i < 2; ++i) A[i] = left[i], A[i] ^= right[i];
    addF(A[1], A[0], sigma[0]);
    addF(A[0], A[1], sigma[1]);
    for (int i = 0; i < 2; ++i) A[i] ^= left[i];
    addF(A[1], A[0], sigma[2]);
    addF(A[0], A[1], sigma[3]);
    for (int i = 0; i < 2; ++i) B[i] = A[i], B[i] ^= right[i];
    addF(B[1], B[0], sigma[4]);
    addF(B[0], B[1], sigma[5]);

    const bool isShort = keyLength == 16;
    schedule.groups = isShort ? 3 : 4;
    const Source* source = isShort ? shortSources : longSources;
    const auto take = [&](Half* subkeys, std::uint32_t count) {
        for (std::uint32_t i = 0; i < count; ++i, ++source)
            subkeys[i] = rotatedHalf(keys[source->key], source->rotation, source->half);
    };
    take(schedule.kw, 4);
    take(schedule.k, 6 * schedule.groups);
    take(schedule.ke, 2 * (schedule.groups - 1));
    schedule.decryptWide = cpu::has(cpu::VAES) ? camelliaDecryptVaes : nullptr;
}

Half loadHalf(const std::uint8_t* from)
{
    return {load32be(from), load32be(from + 4)};
}

void storeHalf(std::uint8_t* to, const Half& half)
{
    store32be(to, half.left);
    store32be(to + 4, half.right);
}

void encryptBlock(const CamelliaSchedule& key, const std::uint8_t* in, std::uint8_t* out)
{
    Half D1 = loadHalf(in), D2 = loadHalf(in + 8);
    D1 ^= key.kw[0];
    D2 ^= key.kw[1];
    for (std::uint32_t group = 0; group < key.groups; ++group) {
        if (group != 0) {
            applyFL(D1, key.ke[2 * group - 2]);
            applyInverseFL(D2, key.ke[2 * group - 1]);
        }
        for (const Half* k = key.k + 6 * group; k != key.k + 6 * group + 6; k += 2) {
            addF(D2, D1, k[0]);
            addF(D1, D2, k[1]);
        }
    }
    D2 ^= key.kw[2];
    D1 ^= key.kw[3];
    storeHalf(out, D2);
    storeHalf(out + 8, D1);
}

void decryptBlock(const CamelliaSchedule& key, const std::uint8_t* in, std::uint8_t* out)
{
    Half D1 = loadHalf(in), D2 = loadHalf(in + 8);
    decryptRounds(key, D1, D2);
    storeHalf(out, D2);
    storeHalf(out + 8, D1);
}

} // namespace

class cAlgCamellia : public BlockCipher<16, CamelliaSchedule, encryptBlock, decryptBlock>
{
public:
    using BlockCipher::BlockCipher;
    Status decryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        const CamelliaSchedule& key = *schedule;
        return decryptWith(key.decryptWide, &key, in, out, length);
    }
};

class cAlgCamellia128 final : public cAlgCamellia
{
public:
    using cAlgCamellia::cAlgCamellia;
};

class cAlgCamellia192 final : public cAlgCamellia
{
public:
    using cAlgCamellia::cAlgCamellia;
};

cSymAlg* createCamellia128(const std::uint8_t* key, std::uint32_t keyLength)
{
    return createOfThreeLengths<cAlgCamellia128, expandKey>(key, keyLength);
}
cSymAlg* createCamellia192(const std::uint8_t* key, std::uint32_t keyLength)
{
    return createOfThreeLengths<cAlgCamellia192, expandKey>(key, keyLength);
}
cSymAlg* createCamellia(const std::uint8_t* key, std::uint32_t keyLength)
{
    return createOfThreeLengths<cAlgCamellia, expandKey>(key, keyLength);
}

} // namespace toolbelt
