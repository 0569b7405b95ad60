// Blowfish (Schneier, 1993): 8-byte blocks, 16 rounds, keys of 5 to 56 bytes. A block is two 32-bit words, big-endian
// as the standard has it unless setLittleEndianBlocks asks for the other order; the key is big-endian always.
#include "crypto/base/bytes.h"
#include "crypto/cipher/blowfish_tables.h"
#include "crypto/cipher/creators.h"
#include "crypto/cipher/side_by_side.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t SMALLEST_KEY = 5, LARGEST_KEY = 56;
constexpr std::uint32_t ROUNDS = 16;

struct BlowfishSchedule
{
    std::uint32_t P[ROUNDS + 2];
    std::uint32_t S[4][256];
};

template <std::uint32_t N>
struct Halves
{
    Words<N> L, R;
};

template <std::uint32_t N>
[[gnu::always_inline]] inline Words<N> F(const BlowfishSchedule& key, Words<N> x)
{
    const Words<N> a = look(key.S[0], x >> 24), b = look(key.S[1], x >> 16 & 255), c = look(key.S[2], x >> 8 & 255);
    return ((a + b) ^ c) + look(key.S[3], x & 255);
}

template <std::uint32_t N>
Halves<N> encryptHalves(const BlowfishSchedule& key, Halves<N> block)
{
    auto [L, R] = block;
    for (std::uint32_t i = 0; i < ROUNDS; i += 2) {
        L ^= key.P[i];
        R ^= key.P[i + 1];
        R ^= F(key, L);
        L ^= F(key, R);
    }
    return {R ^ key.P[ROUNDS + 1], L ^ key.P[ROUNDS]};
}

template <std::uint32_t N>
Halves<N> decryptHalves(const BlowfishSchedule& key, Halves<N> block)
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
    Halves<1> block = {0, 0};
    const auto refill = [&](auto& words) {
        for (std::uint32_t i = 0; i < std::size(words); i += 2) {
            block = encryptHalves(schedule, block);
            words[i] = block.L.at[0];
            words[i + 1] = block.R.at[0];
        }
    };
    refill(schedule.P);
    for (auto& box : schedule.S) refill(box);
}

template <auto TRANSFORM, std::uint32_t N>
void transformHalves(const BlowfishSchedule& key, bool littleEndian, const std::uint8_t* in, std::uint8_t* out)
{
    const auto load = [=](auto from) {
        return littleEndian ? loadWords<load32le, N>(from, 8) : loadWords<load32be, N>(from, 8);
    };
    const auto store = [=](auto to, const auto& words) {
        littleEndian ? storeWords<store32le>(to, 8, words) : storeWords<store32be>(to, 8, words);
    };
    const Halves<N> block = TRANSFORM(key, Halves<N>{load(in), load(in + 4)});
    store(out, block.L);
    store(out + 4, block.R);
}

} // namespace

class cAlgBfish final : public cSymAlg
{
public:
    explicit cAlgBfish(std::uint32_t length) noexcept : keyLength(length)
    {
        static constexpr ChainedBlocks chained = {chainBlocks<Chain::CBC>, nullptr, chainBlocks<Chain::CFB>, nullptr};
        chainedBlocks_ = &chained;
    }
    std::uint32_t getSizes(std::uint32_t* blockSize, std::uint32_t* keySize) const override
    {
        *blockSize = 8;
        *keySize = keyLength;
        return 1;
    }
    Status encryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return transform<encryptHalves<1>, encryptHalves<SIDE>>(in, out, length);
    }
    Status decryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return transform<decryptHalves<1>, decryptHalves<SIDE>>(in, out, length);
    }

    ScheduleOwner<BlowfishSchedule> schedule;
    std::uint32_t keyLength;

private:
    template <Chain CHAIN>
    static void chainBlocks(const cSymAlg& self, std::uint8_t* chain, const std::uint8_t* in, std::uint8_t* out,
                            std::uint32_t blocks)
    {
        const auto& cipher = static_cast<const cAlgBfish&>(self);
        const auto& key = *cipher.schedule;
        const bool littleEndian = cipher.littleEndianBlocks;
        encryptChained<CHAIN, 8>(chain, in, out, blocks, [&key, littleEndian](auto from, auto to) {
            transformHalves<encryptHalves<1>, 1>(key, littleEndian, from, to);
        });
        wipeShallowStack();
    }
    template <auto BLOCK, auto GROUP>
    Status transform(const std::uint8_t* in, std::uint8_t* out, std::int32_t length)
    {
        return transformBlocks<8>(
            in, out, length,
            [this](auto from, auto to) { transformHalves<BLOCK, 1>(*schedule, littleEndianBlocks, from, to); },
            [this](auto from, auto to) { transformHalves<GROUP, SIDE>(*schedule, littleEndianBlocks, from, to); });
    }
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
