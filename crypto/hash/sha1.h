// SHA-1 (FIPS 180-4). Broken for new signatures; certificates of old still carry it.
#pragma once

#include <array>

#include "crypto/hash/block_buffer.h"
#include "crypto/hash/hash_object.h"

namespace toolbelt {

using Sha1State = std::array<std::uint32_t, 5>;
using Sha1Context = TieredBuffer<CountedBuffer<Sha1State, 64, CountUnit::BYTES>>;

void sha1Compress(Sha1State& state, const std::uint8_t* blocks, std::uint32_t count);
void sha1CompressShani(Sha1State& state, const std::uint8_t* blocks, std::uint32_t count); // needs cpu::SHA and SSSE3
void sha1Choose(Sha1Context* context);

// RIPEMD-160 starts from the same five words and shares the context and this routine.
Status sha1Reset(Sha1Context* context);
Status sha1Update(Sha1Context* context, const std::uint8_t* data, std::uint32_t length);
Status sha1Final(Sha1Context* context, std::uint8_t* output);

using cHashSHA1 = HashObject<Sha1Context, 20, Release::AS_IS, sha1Reset, sha1Update, sha1Final, sha1Choose>;

} // namespace toolbelt
