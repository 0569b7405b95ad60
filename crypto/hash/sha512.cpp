// SHA-512: 80 steps on eight words, big-endian throughout.
#include "crypto/hash/sha512.h"

#include <bit>

#include "crypto/base/bytes.h"
#include "crypto/base/cpu.h"
#include "crypto/hash/sha2_constants.h"
#include "crypto/hash/unroll.h"

namespace toolbelt {

void sha512Compress(Sha512State& state, const std::uint8_t* blocks, std::uint32_t count)
{
    std::uint64_t w[16]; // the last 16 words of the schedule, in a ring
    Sha512State v;
    const WipeOnExit wipeSchedule(w);
    const WipeOnExit wipeWords(v);
    for (; count != 0; --count, blocks += 128) {
        v = state;
        for (std::uint32_t step = 0; step < 80; step += 16) {
            const std::uint64_t* constants = &SHA512_CONSTANTS[step];
            // Step I finds a, b, ... h from index -I on: the words stay, their roles move.
            unroll<16>([&]<std::uint32_t I>() __attribute__((always_inline)) {
                if (step == 0) {
                    w[I] = load64be(blocks + 8 * I);
                } else {
                    const std::uint64_t early = w[(I + 1) % 16];
                    const std::uint64_t late = w[(I + 14) % 16];
                    w[I] += (std::rotr(early, 1) ^ std::rotr(early, 8) ^ early >> 7) + w[(I + 9) % 16] +
                            (std::rotr(late, 19) ^ std::rotr(late, 61) ^ late >> 6);
                }
                const std::uint64_t a = v[(16 - I) % 8], b = v[(17 - I) % 8], c = v[(18 - I) % 8];
                const std::uint64_t e = v[(20 - I) % 8], f = v[(21 - I) % 8], g = v[(22 - I) % 8];
                std::uint64_t& h = v[(23 - I) % 8];
                h += (std::rotr(e, 14) ^ std::rotr(e, 18) ^ std::rotr(e, 41)) + (g ^ (e & (f ^ g))) + constants[I] +
                     w[I];
                v[(19 - I) % 8] += h;
                h += (std::rotr(a, 28) ^ std::rotr(a, 34) ^ std::rotr(a, 39)) + ((a & b) | (c & (a | b)));
            });
        }
        for (std::uint32_t i = 0; i < 8; ++i) state[i] += v[i];
    }
}

void sha512Choose(Sha512Context* context)
{
    context->compress = cpu::has(cpu::AVX512) ? sha512CompressAvx512
                        : cpu::has(cpu::AVX2) ? sha512CompressAvx2
                                              : sha512Compress;
}

Status sha512Reset(Sha512Context* context)
{
    start(*context, SHA512_START);
    return CRYPT_OK;
}

Status sha512Update(Sha512Context* context, const std::uint8_t* data, std::uint32_t length)
{
    countAndAbsorb(*context, data, length, context->compress);
    return CRYPT_OK;
}

Status sha512Final(Sha512Context* context, std::uint8_t* output)
{
    // The length is 128 bits; a count of bytes in 64 bits reaches 67 of them.
    std::uint8_t length[16];
    store64be(length, context->counter >> 61);
    store64be(length + 8, context->counter << 3);
    pad(*context, length, context->compress);
    for (std::uint32_t i = 0; i < 8; ++i) store64be(output + 8 * i, context->state[i]);
    return CRYPT_OK;
}

} // namespace toolbelt
