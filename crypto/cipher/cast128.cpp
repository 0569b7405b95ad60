// CAST-128 (RFC 2144): 8-byte blocks, big-endian, always with a 16-byte key and thus 16 rounds.
#include "crypto/base/bytes.h"
#include "crypto/cipher/cast128_tables.h"
#include "crypto/cipher/creators.h"
#include "crypto/cipher/side_by_side.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t KEY_BYTES = 16;
constexpr std::uint32_t ROUNDS = 16;

struct CastSchedule
{
    std::uint32_t Km[ROUNDS]; // masking keys
    std::uint8_t Kr[ROUNDS];  // rotation keys, 0 to 31
};

// The 16 bytes x0 to xF, or z0 to zF, of the key schedule.
struct KeyBytes
{
    std::uint8_t bytes[16];
};

// S5 to S8 of four bytes of `from`, at the places that `at` names.
std::uint32_t fourBoxes(const KeyBytes& from, const std::uint8_t* at)
{
    return castS[4][from.bytes[at[0]]] ^ castS[5][from.bytes[at[1]]] ^ castS[6][from.bytes[at[2]]] ^
           castS[7][from.bytes[at[3]]];
}

// A row of the RFC that makes one word of the new bytes: the word of the old ones, the four bytes that go through S5 to
// S8, and one old byte more, whose box is S7, S8, S5, S6 for the rows in turn.
struct MixRow
{
    std::uint8_t word, at[4], extra;
};
constexpr MixRow fromXtoZ[4] = {{0x0, {0xD, 0xF, 0xC, 0xE}, 0x8},
                                {0x8, {0x0, 0x2, 0x1, 0x3}, 0xA},
                                {0xC, {0x7, 0x6, 0x5, 0x4}, 0x9},
                                {0x4, {0xA, 0x9, 0xB, 0x8}, 0xB}};
constexpr MixRow fromZtoX[4] = {{0x8, {0x5, 0x7, 0x4, 0x6}, 0x0},
                                {0x0, {0x0, 0x2, 0x1, 0x3}, 0x2},
                                {0x4, {0x7, 0x6, 0x5, 0x4}, 0x1},
                                {0xC, {0xA, 0x9, 0xB, 0x8}, 0x3}};

void mix(KeyBytes& to, const KeyBytes& from, const MixRow (&rows)[4])
{
    for (std::uint32_t i = 0; i < 4; ++i) {
        const MixRow& row = rows[i];
        // The first row reads old bytes alone; the others read the new ones made so far.
        const std::uint32_t word = load32be(from.bytes + row.word) ^ fourBoxes(i == 0 ? from : to, row.at) ^
                                   castS[4 + (i + 2) % 4][from.bytes[row.extra]];
        store32be(to.bytes + 4 * i, word);
    }
}

// The bytes that make K1 to K16 (and again K17 to K32): four through S5 to S8, and one through S5, S6, S7, S8 in turn.
// K1 to K4 and K9 to K12 take them from z, the others from x.
constexpr std::uint8_t subkeyBytes[16][5] = {
    {0x8, 0x9, 0x7, 0x6, 0x2}, {0xA, 0xB, 0x5, 0x4, 0x6}, {0xC, 0xD, 0x3, 0x2, 0x9}, {0xE, 0xF, 0x1, 0x0, 0xC},
    {0x3, 0x2, 0xC, 0xD, 0x8}, {0x1, 0x0, 0xE, 0xF, 0xD}, {0x7, 0x6, 0x8, 0x9, 0x3}, {0x5, 0x4, 0xA, 0xB, 0x7},
    {0x3, 0x2, 0xC, 0xD, 0x9}, {0x1, 0x0, 0xE, 0xF, 0xC}, {0x7, 0x6, 0x8, 0x9, 0x2}, {0x5, 0x4, 0xA, 0xB, 0x6},
    {0x8, 0x9, 0x7, 0x6, 0x3}, {0xA, 0xB, 0x5, 0x4, 0x7}, {0xC, 0xD, 0x3, 0x2, 0x8}, {0xE, 0xF, 0x1, 0x0, 0xD}};

void expandKey(CastSchedule& schedule, const std::uint8_t* key)
{
    KeyBytes x, z;
    const WipeOnExit wipeX(x), wipeZ(z);
    std::memcpy(x.bytes, key, KEY_BYTES);
    for (std::uint32_t k = 0; k < 2 * ROUNDS; ++k) {
        if (k % 8 == 0) mix(z, x, fromXtoZ);
        if (k % 8 == 4) mix(x, z, fromZtoX);
        const KeyBytes& from = k % 8 < 4 ? z : x;
        const std::uint8_t* at = subkeyBytes[k % 16];
        const std::uint32_t subkey = fourBoxes(from, at) ^ castS[4 + k % 4][from.bytes[at[4]]];
        if (k < ROUNDS)
            schedule.Km[k] = subkey;
        else
            schedule.Kr[k - ROUNDS] = subkey & 31;
    }
}

// The function of round i, counted from 0; the three types of the RFC take turns.
template <std::uint32_t i, std::uint32_t N>
[[gnu::always_inline]] inline Words<N> f(const CastSchedule& key, Words<N> D)
{
    constexpr std::uint32_t TYPE = i % 3 + 1;
    const Words<N> Km = key.Km[i], I = rotl(TYPE == 1 ? Km + D : TYPE == 2 ? Km ^ D : Km - D, key.Kr[i]);
    const Words<N> a = look(castS[0], I >> 24), b = look(castS[1], I >> 16 & 255), c = look(castS[2], I >> 8 & 255),
                   d = look(castS[3], I & 255);
    return TYPE == 1 ? ((a ^ b) - c) + d : TYPE == 2 ? ((a - b) + c) ^ d : ((a + b) ^ c) - d;
}

template <std::uint32_t N>
void encryptBlocks(const CastSchedule& key, const std::uint8_t* in, std::uint8_t* out)
{
    auto L = loadWords<load32be, N>(in, 8), R = loadWords<load32be, N>(in + 4, 8);
    L ^= f<0>(key, R), R ^= f<1>(key, L);
    L ^= f<2>(key, R), R ^= f<3>(key, L);
    L ^= f<4>(key, R), R ^= f<5>(key, L);
    L ^= f<6>(key, R), R ^= f<7>(key, L);
    L ^= f<8>(key, R), R ^= f<9>(key, L);
    L ^= f<10>(key, R), R ^= f<11>(key, L);
    L ^= f<12>(key, R), R ^= f<13>(key, L);
    L ^= f<14>(key, R), R ^= f<15>(key, L);
    storeWords<store32be>(out, 8, R);
    storeWords<store32be>(out + 4, 8, L);
}

template <std::uint32_t N>
void decryptBlocks(const CastSchedule& key, const std::uint8_t* in, std::uint8_t* out)
{
    auto R = loadWords<load32be, N>(in, 8), L = loadWords<load32be, N>(in + 4, 8);
    R ^= f<15>(key, L), L ^= f<14>(key, R);
    R ^= f<13>(key, L), L ^= f<12>(key, R);
    R ^= f<11>(key, L), L ^= f<10>(key, R);
    R ^= f<9>(key, L), L ^= f<8>(key, R);
    R ^= f<7>(key, L), L ^= f<6>(key, R);
    R ^= f<5>(key, L), L ^= f<4>(key, R);
    R ^= f<3>(key, L), L ^= f<2>(key, R);
    R ^= f<1>(key, L), L ^= f<0>(key, R);
    storeWords<store32be>(out, 8, L);
    storeWords<store32be>(out + 4, 8, R);
}

} // namespace

class cAlgCast final : public SideBySideCipher<8, CastSchedule, encryptBlocks<1>, encryptBlocks<SIDE>, decryptBlocks<1>,
                                               decryptBlocks<SIDE>>
{
public:
    using SideBySideCipher::SideBySideCipher;
};

// A short key is filled up with zeros to 16 bytes and still runs 16 rounds, by design: the RFC would run 12 for keys of
// 10 bytes and less.
cSymAlg* createCast(const std::uint8_t* key, std::uint32_t keyLength)
{
    const PaddedKey<KEY_BYTES> padded(key, keyLength);
    if (!padded) return nullptr;
    auto cipher = newCipher<cAlgCast>(KEY_BYTES);
    if (cipher) expandKey(*cipher->schedule, padded.data());
    return cipher.release();
}

} // namespace toolbelt
