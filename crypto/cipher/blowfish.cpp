// Blowfish (Schneier, 1993): 8-byte blocks, 16 rounds, keys of 5 to 56 bytes. A block is two 32-bit words, big-endian
// as the standard has it unless setLittleEndianBlocks asks for the other order; the key is big-endian always.
#include "crypto/base/bytes.h"
#include "crypto/cipher/blowfish_tables.h"
#include "crypto/cipher/creators.h"
#include "crypto/cipher/member.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t SMALLEST_KEY = 5, LARGEST_KEY = 56;
constexpr std::uint32_t ROUNDS = 16;

struct BlowfishSchedule
{
    std::uint32_t P[ROUNDS + 2];
    std::uint32_t S[4][256];
};

struct Halves
{
    std::uint32_t L, R;
};

std::uint32_t F(const BlowfishSchedule& key, std::uint32_t x)
{
    return ((key.S[0][x >> 24] + key.S[1][x >> 16 & 255]) ^ key.S[2][x >> 8 & 255]) + key.S[3][x & 255];
}

Halves encryptHalves(const BlowfishSchedule& key, Halves block)
{
    auto [L, R] = block;
    for (std::uint32_t i = 0; i < ROUNDS; i += 2) {
        L ^= key.P[i];
        R ^= F(key, L) ^ key.P[i + 1];
        L ^= F(key, R);
    }
    return {R ^ key.P[ROUNDS + 1], L ^ key.P[ROUNDS]};
}

Halves decryptHalves(const BlowfishSchedule& key, Halves block)
{
    auto [L, R] = block;
    for (std::uint32_t i = ROUNDS; i > 0; i -= 2) {
        L ^= key.P[i + 1];
        R ^= F(key, L) ^ key.P[i];
        L ^= F(key, R);
    }
    return {R ^ key.P[0], L ^ key.P[1]};
}

// The key, repeated, goes into P; then the zero block, encrypted over and over, replaces P and S two words at a time.
void expandKey(BlowfishSchedule& schedule, const std::uint8_t* key, std::uint32_t keyLength)
{
    std::memcpy(schedule.S, blowfishS, sizeof schedule.S);
    for (std::uint32_t i = 0, at = 0; i < ROUNDS + 2; ++i) {
        std::uint32_t word = 0;
        for (int byte = 0; byte < 4; ++byte) {
            word = word << 8 | key[at];
            if (++at == keyLength) at = 0;
        }
        schedule.P[i] = blowfishP[i] ^ word;
    }
    Halves block = {0, 0};
    const auto refill = [&](auto& words) {
        for (std::uint32_t i = 0; i < std::size(words); i += 2) {
            block = encryptHalves(schedule, block);
            words[i] = block.L;
            words[i + 1] = block.R;
        }
    };
    refill(schedule.P);
    for (auto& box : schedule.S) refill(box);
}

template <Halves (&TRANSFORM)(const BlowfishSchedule&, Halves)>
Status transformBlocks(const BlowfishSchedule& key, bool littleEndian, const std::uint8_t* in, std::uint8_t* out,
                       std::int32_t length)
{
    return forEachBlock<8>(in, out, length, [&key, littleEndian](auto from, auto to) {
        const auto load = [=](auto at) { return littleEndian ? load32le(at) : load32be(at); };
        const auto store = [=](auto at, auto word) { littleEndian ? store32le(at, word) : store32be(at, word); };
        const Halves block = TRANSFORM(key, {load(from), load(from + 4)});
        store(to, block.L);
        store(to + 4, block.R);
    });
}

} // namespace

class cAlgBfish final : public cSymAlg
{
public:
    explicit cAlgBfish(std::uint32_t length) noexcept : keyLength(length) {}
    std::uint32_t getSizes(std::uint32_t* blockSize, std::uint32_t* keySize) const override
    {
        *blockSize = 8;
        *keySize = keyLength;
        return 1;
    }
    Status encryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return transformBlocks<encryptHalves>(*schedule, littleEndianBlocks, in, out, length);
    }
    Status decryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return transformBlocks<decryptHalves>(*schedule, littleEndianBlocks, in, out, length);
    }

    ScheduleOwner<BlowfishSchedule> schedule;
    std::uint32_t keyLength;
};

// A shorter key is filled up with zeros to 5 bytes, of a longer one the leading 56 bytes count.
cSymAlg* createBfish(const std::uint8_t* key, std::uint32_t keyLength)
{
    const PaddedKey<LARGEST_KEY> padded(key, keyLength);
    if (!padded) return nullptr;
    const std::uint32_t length = std::clamp(keyLength, SMALLEST_KEY, LARGEST_KEY);
    auto cipher = newCipher<cAlgBfish>(length);
    if (cipher) expandKey(*cipher->schedule, padded.data(), length);
    return cipher.release();
}

} // namespace toolbelt
