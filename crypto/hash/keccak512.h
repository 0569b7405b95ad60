// Keccak with rate 576, capacity 1024 and 512 bits of output, as in the last round of the SHA-3 competition: its
// padding begins with the byte 0x01, not with the 0x06 of FIPS 202's SHA3-512.
//
// By design this digest does not buffer: every update is a message of its own, padded by itself, except that an update
// of a non-zero multiple of 72 bytes is taken in without any padding. One update therefore gives Keccak-512 of its
// bytes unless their number is a non-zero multiple of 72, or leaves the remainder 71 (see keccak512Update). To hash in
// pieces, give every piece but the last a multiple of 72 bytes.
#pragma once

#include <array>

#include "crypto/hash/block_buffer.h"
#include "crypto/hash/hash_object.h"

namespace toolbelt {

using KeccakState = std::array<std::uint64_t, 25>; // lane (x, y) at x + 5y
struct Keccak512Context
{
    KeccakState lanes;
    Compress<KeccakState>* absorb; // for this processor; kept by a reset
};
static_assert(sizeof(KeccakState) == 200);

// Absorbs count blocks of 72 bytes.
void keccak512Absorb(KeccakState& lanes, const std::uint8_t* blocks, std::uint32_t count);
void keccak512AbsorbSse2(KeccakState& lanes, const std::uint8_t* blocks, std::uint32_t count);   // needs cpu::SSE2
void keccak512AbsorbAvx512(KeccakState& lanes, const std::uint8_t* blocks, std::uint32_t count); // needs cpu::AVX512
void keccak512Choose(Keccak512Context* context);

// Each returns CRYPT_E_NULL_CONTEXT, and does nothing, when it is given no context.
Status keccak512Reset(Keccak512Context* context);
// The padded block is made in place, without allocating, so there is no CRYPT_E_CONTEXT_ALLOC.
Status keccak512Update(Keccak512Context* context, const std::uint8_t* data, std::uint32_t length);
// Writes the first eight lanes; nothing is padded or permuted here.
Status keccak512Final(Keccak512Context* context, std::uint8_t* output);

using cHashSHA3_512 =
    HashObject<Keccak512Context, 64, Release::WIPED, keccak512Reset, keccak512Update, keccak512Final, keccak512Choose>;

} // namespace toolbelt
