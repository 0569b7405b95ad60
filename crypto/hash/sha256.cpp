// SHA-256: 64 steps on eight words, big-endian throughout.
#include "crypto/hash/sha256.h"

#include <bit>

#include "crypto/base/bytes.h"
#include "crypto/base/cpu.h"
#include "crypto/hash/sha2_constants.h"
#include "crypto/hash/unroll.h"

namespace toolbelt {

void sha256Compress(Sha256State& state, const std::uint8_t* blocks, std::uint32_t count)
{
    std::uint32_t w[16]; // the last 16 words of the schedule, in a ring
    Sha256State v;
    const WipeOnExit wipeSchedule(w);
    const WipeOnExit wipeWords(v);
    for (; count != 0; --count, blocks += 64) {
        v = state;
        for (std::uint32_t step = 0; step < 64; step += 16) {
            const std::uint32_t* constants = &SHA256_CONSTANTS[step];
            // Step I finds a, b, ... h from index -I on: the words stay, their roles move.
            unroll<16>([&]<std::uint32_t I>() __attribute__((always_inline)) {
                if (step == 0) {
                    w[I] = load32be(blocks + 4 * I);
                } else {
                    const std::uint32_t early = w[(I + 1) % 16];
                    const std::uint32_t late = w[(I + 14) % 16];
                    w[I] += (std::rotr(early, 7) ^ std::rotr(early, 18) ^ early >> 3) + w[(I + 9) % 16] +
                            (std::rotr(late, 17) ^ std::rotr(late, 19) ^ late >> 10);
                }
                const std::uint32_t a = v[(16 - I) % 8], b = v[(17 - I) % 8], c = v[(18 - I) % 8];
                const std::uint32_t e = v[(20 - I) % 8], f = v[(21 - I) % 8], g = v[(22 - I) % 8];
                std::uint32_t& h = v[(23 - I) % 8];
                h +=
                    (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) + (g ^ (e & (f ^ g))) + constants[I] + w[I];
                v[(19 - I) % 8] += h;
                h += (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) | (c & (a | b)));
            });
        }
        for (std::uint32_t i = 0; i < 8; ++i) state[i] += v[i];
    }
}

void sha256Choose(Sha256Context* context)
{
    context->compress = cpu::has(cpu::SHA | cpu::SSSE3) ? sha256CompressShani : sha256Compress;
}

Status sha256Reset(Sha256Context* context)
{
    start(*context, SHA256_START);
    return CRYPT_OK;
}

Status sha256Update(Sha256Context* context, const std::uint8_t* data, std::uint32_t length)
{
    countAndAbsorb(*context, data, length, context->compress);
    return CRYPT_OK;
}

Status sha256Final(Sha256Context* context, std::uint8_t* output)
{
    std::uint8_t length[8];
    store64be(length, context->counter * 8);
    pad(*context, length, context->compress);
    for (std::uint32_t i = 0; i < 8; ++i) store32be(output + 4 * i, context->state[i]);
    return CRYPT_OK;
}

} // namespace toolbelt
