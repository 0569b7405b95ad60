// Whirlpool, the final version of 2003 (ISO/IEC 10118-3).
#pragma once

#include <array>

#include "crypto/hash/block_buffer.h"
#include "crypto/hash/hash_object.h"

namespace toolbelt {

// One row of the 8 x 8 byte matrix a word, its first byte the most significant.
using WhirlpoolState = std::array<std::uint64_t, 8>;
using WhirlpoolContext = TieredBuffer<CountedBuffer<WhirlpoolState, 64, CountUnit::BITS>>;

void whirlpoolCompress(WhirlpoolState& state, const std::uint8_t* blocks, std::uint32_t count);
void whirlpoolCompressSse2(WhirlpoolState& state, const std::uint8_t* blocks, std::uint32_t count); // needs cpu::SSE2
void whirlpoolCompressAvx2(WhirlpoolState& state, const std::uint8_t* blocks, std::uint32_t count); // needs cpu::AVX2
void whirlpoolChoose(WhirlpoolContext* context);

// Each returns CRYPT_E_NULL_CONTEXT, and does nothing, when it is given no context.
Status whirlpoolReset(WhirlpoolContext* context);
Status whirlpoolUpdate(WhirlpoolContext* context, const std::uint8_t* data, std::uint32_t length);
Status whirlpoolFinal(WhirlpoolContext* context, std::uint8_t* output);

using cHashWhirlpool512 =
    HashObject<WhirlpoolContext, 64, Release::WIPED, whirlpoolReset, whirlpoolUpdate, whirlpoolFinal, whirlpoolChoose>;

} // namespace toolbelt
