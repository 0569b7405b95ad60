// RC6-32/20 (Rivest, Robshaw, Sidney, Yin, 1998): 16-byte blocks, 20 rounds, keys of 1 to 255 bytes. A block and a key
// are read as little-endian words; S holds the 2r + 4 round keys.
#include <bit>

#include "crypto/base/bytes.h"
#include "crypto/base/cpu.h"
#include "crypto/cipher/creators.h"
#include "crypto/cipher/member.h"
#include "crypto/cipher/rc6_rounds.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t LARGEST_KEY = 255;
constexpr std::uint32_t P32 = 0xB7E15163; // from the base of the natural logarithm
constexpr std::uint32_t Q32 = 0x9E3779B9; // from the golden ratio

// A word rotated by the lowest five bits of another one.
std::uint32_t rotl(std::uint32_t word, std::uint32_t by)
{
    return std::rotl(word, static_cast<int>(by & 31));
}
std::uint32_t rotr(std::uint32_t word, std::uint32_t by)
{
    return std::rotr(word, static_cast<int>(by & 31));
}

struct RC6Schedule
{
    std::uint32_t S[KEY_WORDS];
    WideBlocks* decryptWide;
};

void expandKey(RC6Schedule& schedule, const std::uint8_t* key, std::uint32_t keyLength)
{
    std::uint32_t L[(LARGEST_KEY + 3) / 4] = {};
    const WipeOnExit wipeL(L);
    std::memcpy(L, key, keyLength); // little-endian, the last word filled up with zeros
    const std::uint32_t c = (keyLength + 3) / 4;

    std::uint32_t* S = schedule.S;
    S[0] = P32;
    for (std::uint32_t i = 1; i < KEY_WORDS; ++i) S[i] = S[i - 1] + Q32;

    std::uint32_t A = 0, B = 0;
    for (std::uint32_t s = 0, i = 0, j = 0; s < 3 * std::max(c, KEY_WORDS); ++s) {
        A = S[i] = std::rotl(S[i] + A + B, 3);
        B = L[j] = rotl(L[j] + A + B, A + B);
        if (++i == KEY_WORDS) i = 0;
        if (++j == c) j = 0;
    }
}

void encryptBlock(const RC6Schedule& schedule, const std::uint8_t* in, std::uint8_t* out)
{
    const std::uint32_t* S = schedule.S;
    std::uint32_t A = load32le(in), B = load32le(in + 4), C = load32le(in + 8), D = load32le(in + 12);
    B += S[0];
    D += S[1];
    for (std::uint32_t i = 1; i <= ROUNDS; ++i) {
        const std::uint32_t t = f(B), u = f(D);
        const std::uint32_t newD = rotl(A ^ t, u) + S[2 * i];
        A = B;
        B = rotl(C ^ u, t) + S[2 * i + 1];
        C = D;
        D = newD;
    }
    A += S[KEY_WORDS - 2];
    C += S[KEY_WORDS - 1];
    store32le(out, A);
    store32le(out + 4, B);
    store32le(out + 8, C);
    store32le(out + 12, D);
}

void decryptBlock(const RC6Schedule& schedule, const std::uint8_t* in, std::uint8_t* out)
{
    std::uint32_t x[1][4];
    for (std::uint32_t i = 0; i < 4; ++i) x[0][i] = load32le(in + 4 * i);
    decryptRounds(schedule.S, x, rotr);
    for (std::uint32_t i = 0; i < 4; ++i) store32le(out + 4 * i, x[0][i]);
}

} // namespace

class cAlgRC6 final : public BlockCipher<16, RC6Schedule, encryptBlock, decryptBlock>
{
public:
    using BlockCipher::BlockCipher;
    Status decryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return decryptWith(schedule->decryptWide, schedule->S, in, out, length);
    }
};

cSymAlg* createRC6(const std::uint8_t* key, std::uint32_t keyLength)
{
    if (key == nullptr || keyLength == 0 || keyLength > LARGEST_KEY) return nullptr;
    auto cipher = newCipher<cAlgRC6>(keyLength);
    if (cipher) {
        expandKey(*cipher->schedule, key, keyLength);
        cipher->schedule->decryptWide = cpu::has(cpu::AVX512) ? rc6DecryptAvx512
                                        : cpu::has(cpu::AVX2) ? rc6DecryptAvx2
                                                              : nullptr;
    }
    return cipher.release();
}

} // namespace toolbelt
