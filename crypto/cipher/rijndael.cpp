// Rijndael with 16-byte blocks (AES, FIPS 197): keys of 16, 24 and 32 bytes, 10, 12 and 14 rounds. A column of the
// state is a little-endian word, row 0 in its lowest byte, so that round keys lie in memory in byte order and serve the
// table routine and the AES instructions alike.
#include "crypto/base/bytes.h"
#include "crypto/base/cpu.h"
#include "crypto/base/dead_stack.h"
#include "crypto/cipher/chained_blocks.h"
#include "crypto/cipher/creators.h"
#include "crypto/cipher/gf256.h"
#include "crypto/cipher/member.h"
#include "crypto/cipher/rijndael_tiers.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t MOST_ROUNDS = 14;
constexpr std::uint32_t LARGEST_KEY = 32;

constexpr const ByteBox& S = rijndaelBox;
constexpr ByteBox inverseS = inverseBox(rijndaelBox);

// The substitution and the column mix of one row: what an input byte of row r adds to the output column.
using RowTable = std::array<std::uint32_t, 256>;
using RowTables = std::array<RowTable, 4>;

constexpr RowTables makeTables(const ByteBox& box, std::uint32_t c0, std::uint32_t c1, std::uint32_t c2,
                               std::uint32_t c3)
{
    RowTables tables = {};
    for (std::uint32_t x = 0; x < 256; ++x) {
        const auto times = [&](std::uint32_t c) -> std::uint32_t { return gfMultiply(box[x], c, RIJNDAEL_POLYNOMIAL); };
        const std::uint32_t column = times(c0) | times(c1) << 8 | times(c2) << 16 | times(c3) << 24;
        for (int row = 0; row < 4; ++row) tables[static_cast<std::size_t>(row)][x] = std::rotl(column, 8 * row);
    }
    return tables;
}

constexpr RowTables T = makeTables(S, 2, 1, 1, 3);
constexpr RowTables inverseT = makeTables(inverseS, 0xE, 9, 0xD, 0xB);

struct RijndaelSchedule
{
    std::uint32_t encryption[4 * (MOST_ROUNDS + 1)];
    std::uint32_t decryption[4 * (MOST_ROUNDS + 1)]; // of the equivalent inverse cipher, in the order of their use
    bool hasDecryption;                              // they are made when the first block is decrypted
    std::uint32_t rounds;
    const RijndaelTier* tier; // what does the rounds; null: the tables
};

std::uint32_t subWord(std::uint32_t w)
{
    return std::uint32_t(S[w & 255]) | std::uint32_t(S[w >> 8 & 255]) << 8 | std::uint32_t(S[w >> 16 & 255]) << 16 |
           std::uint32_t(S[w >> 24]) << 24;
}

std::uint32_t inverseMixColumn(std::uint32_t w)
{
    return inverseT[0][S[w & 255]] ^ inverseT[1][S[w >> 8 & 255]] ^ inverseT[2][S[w >> 16 & 255]] ^
           inverseT[3][S[w >> 24]];
}

// keyLength is 16, 24 or 32.
void expandKey(RijndaelSchedule& schedule, const std::uint8_t* key, std::uint32_t keyLength)
{
    const std::uint32_t Nk = keyLength / 4;
    schedule.rounds = Nk + 6;
    schedule.hasDecryption = false;
    std::uint32_t* w = schedule.encryption;
    if (schedule.tier) {
        rijndaelExpandKeyAesni(w, key, keyLength);
        return;
    }
    const std::uint32_t words = 4 * (schedule.rounds + 1);
    std::memcpy(w, key, keyLength);
    std::uint32_t rcon = 1;
    std::uint32_t temp = w[Nk - 1];
    for (std::uint32_t i = Nk; i < words; i += Nk) {
        temp = subWord(std::rotr(temp, 8)) ^ rcon;
        rcon = rcon << 1 ^ (rcon & 0x80 ? RIJNDAEL_POLYNOMIAL : 0);
        for (std::uint32_t j = i; j < std::min(i + Nk, words); ++j) {
            if (Nk > 6 && j == i + 4) temp = subWord(temp);
            temp = w[j] = w[j - Nk] ^ temp;
        }
    }
}

const std::uint32_t* decryptionKeys(RijndaelSchedule& schedule)
{
    if (schedule.hasDecryption) return schedule.decryption;
    schedule.hasDecryption = true; // both ways below make them
    if (schedule.tier) {
        rijndaelInvertKeysAesni(schedule.decryption, schedule.encryption, schedule.rounds);
        wipeShallowStack();
        return schedule.decryption;
    }
    const std::uint32_t words = 4 * (schedule.rounds + 1);
    for (std::uint32_t i = 0; i < words; ++i) {
        const bool outer = i < 4 || i >= words - 4;
        const std::uint32_t word = schedule.encryption[(words - 4 - i / 4 * 4) + i % 4];
        schedule.decryption[i] = outer ? word : inverseMixColumn(word);
    }
    return schedule.decryption;
}

// Column c of a round takes row r from column c + STEP * r: rows shift to the left by one column each in encryption
// (STEP 1), to the right in decryption (STEP 3).
template <std::uint32_t STEP>
void transformBlock(const RowTables& table, const ByteBox& box, const std::uint32_t* keys, std::uint32_t rounds,
                    const std::uint8_t* in, std::uint8_t* out)
{
    std::uint32_t s0 = load32le(in) ^ keys[0], s1 = load32le(in + 4) ^ keys[1], s2 = load32le(in + 8) ^ keys[2],
                  s3 = load32le(in + 12) ^ keys[3];
    const auto mixed = [&table](std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
        return table[0][a & 255] ^ table[1][b >> 8 & 255] ^ table[2][c >> 16 & 255] ^ table[3][d >> 24];
    };
    const auto substituted = [&box](std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
        return std::uint32_t(box[a & 255]) | std::uint32_t(box[b >> 8 & 255]) << 8 |
               std::uint32_t(box[c >> 16 & 255]) << 16 | std::uint32_t(box[d >> 24]) << 24;
    };
    const auto columns = [&](auto column) {
        if constexpr (STEP == 1) {
            const std::uint32_t t0 = column(s0, s1, s2, s3), t1 = column(s1, s2, s3, s0), t2 = column(s2, s3, s0, s1),
                                t3 = column(s3, s0, s1, s2);
            s0 = t0 ^ keys[0], s1 = t1 ^ keys[1], s2 = t2 ^ keys[2], s3 = t3 ^ keys[3];
        } else {
            const std::uint32_t t0 = column(s0, s3, s2, s1), t1 = column(s1, s0, s3, s2), t2 = column(s2, s1, s0, s3),
                                t3 = column(s3, s2, s1, s0);
            s0 = t0 ^ keys[0], s1 = t1 ^ keys[1], s2 = t2 ^ keys[2], s3 = t3 ^ keys[3];
        }
    };
    while (--rounds != 0) {
        keys += 4;
        columns(mixed);
    }
    keys += 4;
    columns(substituted); // the last round has no column mix
    store32le(out, s0);
    store32le(out + 4, s1);
    store32le(out + 8, s2);
    store32le(out + 12, s3);
}

} // namespace

class cAlgRIJN final : public cSymAlg
{
public:
    cAlgRIJN() noexcept {} // not defaulted, or the object would be zeroed first
    std::uint32_t getSizes(std::uint32_t* blockSize, std::uint32_t* keySize) const override
    {
        *blockSize = 16;
        *keySize = LARGEST_KEY; // whatever the length given, by design
        return 1;
    }
    Status encryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        if (length < 0 || length % 16 != 0) return CRYPT_E_BAD_LENGTH;
        const RijndaelSchedule& key = *schedule;
        if (key.tier) {
            transformBlocks(key.tier->encrypt, key.encryption, key.rounds, in, out,
                            static_cast<std::uint32_t>(length) / 16);
            return CRYPT_OK;
        }
        return forEachBlock<16>(in, out, length, [&key](auto from, auto to) {
            transformBlock<1>(T, S, key.encryption, key.rounds, from, to);
        });
    }
    Status decryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        if (length < 0 || length % 16 != 0) return CRYPT_E_BAD_LENGTH;
        const RijndaelSchedule& key = *schedule;
        const std::uint32_t* keys = decryptionKeys(*schedule);
        if (key.tier) {
            transformBlocks(key.tier->decrypt, keys, key.rounds, in, out, static_cast<std::uint32_t>(length) / 16);
            return CRYPT_OK;
        }
        return forEachBlock<16>(in, out, length, [&](auto from, auto to) {
            transformBlock<3>(inverseT, inverseS, keys, key.rounds, from, to);
        });
    }

    // The routine of the tier is chosen here, when the object is built.
    void chooseTier() noexcept
    {
        static constexpr ChainedBlocks chained = {
            chainBlocks<[](auto&) { return rijndaelCbcEncryptAesni; }, Keys::ENCRYPTION>,
            chainBlocks<[](auto& key) { return key.tier->cbcDecrypt; }, Keys::DECRYPTION>,
            chainBlocks<[](auto&) { return rijndaelCfbEncryptAesni; }, Keys::ENCRYPTION>,
            chainBlocks<[](auto& key) { return key.tier->cfbDecrypt; }, Keys::ENCRYPTION, true>,
        };
        const std::uint32_t features = cpu::featuresInUse(); // asked once: keys are often made for a block or two
        const auto has = [features](std::uint32_t needed) { return (features & needed) == needed; };
        const bool instructions = has(cpu::AES | cpu::SSE2);
        schedule->tier = !instructions                  ? nullptr
                         : has(cpu::VAES | cpu::AVX512) ? &rijndaelVaes512
                         : has(cpu::VAES)               ? &rijndaelVaes
                                                        : &rijndaelAesni;
        if (instructions) chainedBlocks_ = &chained;
    }
    static RijndaelSchedule& scheduleOf(const cSymAlg& self) { return *static_cast<const cAlgRIJN&>(self).schedule; }

    ScheduleOwner<RijndaelSchedule> schedule;

private:
    enum class Keys
    {
        ENCRYPTION,
        DECRYPTION,
    };
    // Many blocks side by side take all registers, so that the compiler puts states by.
    static void transformBlocks(RijndaelBlocks* routine, const std::uint32_t* keys, std::uint32_t rounds,
                                const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks)
    {
        routine(keys, rounds, in, out, blocks);
        if (blocks > 4) wipeDeadStack();
    }
    // SPILLS: whether the routine puts states by, as those without chaining do.
    template <auto ROUTINE_OF, Keys KEYS, bool SPILLS = false>
    static void chainBlocks(const cSymAlg& self, std::uint8_t* chain, const std::uint8_t* in, std::uint8_t* out,
                            std::uint32_t blocks)
    {
        RijndaelSchedule& key = scheduleOf(self);
        const std::uint32_t* keys = KEYS == Keys::DECRYPTION ? decryptionKeys(key) : key.encryption;
        ROUTINE_OF(key)(keys, key.rounds, chain, in, out, blocks);
        if (SPILLS && blocks > 4) wipeDeadStack();
    }
};

const RijndaelTier* rijndaelTier(const cSymAlg& rijndael) noexcept
{
    return cAlgRIJN::scheduleOf(rijndael).tier;
}

// Lengths of 128, 192 and 256 are in bits.
cSymAlg* createRIJN(const std::uint8_t* key, std::uint32_t keyLength)
{
    if (keyLength == 128 || keyLength == 192 || keyLength == 256) keyLength /= 8;
    if (key == nullptr || (keyLength != 16 && keyLength != 24 && keyLength != 32)) return nullptr;
    auto cipher = newCipher<cAlgRIJN>();
    if (cipher) {
        cipher->chooseTier();
        expandKey(*cipher->schedule, key, keyLength);
    }
    return cipher.release();
}

} // namespace toolbelt
