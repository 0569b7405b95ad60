// Skein-512 with 512 bits of output (Skein 1.3), without key or tree.
#pragma once

#include <array>

#include "crypto/hash/block_buffer.h"
#include "crypto/hash/hash_object.h"

namespace toolbelt {

struct Skein512State
{
    std::array<std::uint64_t, 8> chain;
    std::uint64_t position; // bytes of the message compressed so far; the low half of the tweak
    std::uint64_t flags;    // the high half: kind of block, first block, last block
};
using Skein512Context = TieredBuffer<BlockBuffer<Skein512State, 64>>;

// Each block brings 64 bytes, and a position that is behind by as much is counted up.
void skein512Compress(Skein512State& state, const std::uint8_t* blocks, std::uint32_t count);
void skein512CompressAvx2(Skein512State& state, const std::uint8_t* blocks, std::uint32_t count);   // needs cpu::AVX2
void skein512CompressAvx512(Skein512State& state, const std::uint8_t* blocks, std::uint32_t count); // needs cpu::AVX512
void skein512Choose(Skein512Context* context);

// Each returns CRYPT_E_NULL_CONTEXT, and does nothing, when it is given no context.
Status skein512Reset(Skein512Context* context);
Status skein512Update(Skein512Context* context, const std::uint8_t* data, std::uint32_t length);
Status skein512Final(Skein512Context* context, std::uint8_t* output);

using cHashSkein512 =
    HashObject<Skein512Context, 64, Release::WIPED, skein512Reset, skein512Update, skein512Final, skein512Choose>;

} // namespace toolbelt
