// SHA-256 (FIPS 180-4).
#pragma once

#include <array>

#include "crypto/hash/block_buffer.h"
#include "crypto/hash/hash_object.h"

namespace toolbelt {

using Sha256State = std::array<std::uint32_t, 8>;
using Sha256Context = TieredBuffer<CountedBuffer<Sha256State, 64, CountUnit::BYTES>>;

void sha256Compress(Sha256State& state, const std::uint8_t* blocks, std::uint32_t count);
void sha256CompressShani(Sha256State& state, const std::uint8_t* blocks,
                         std::uint32_t count); // needs cpu::SHA and SSSE3
void sha256Choose(Sha256Context* context);

Status sha256Reset(Sha256Context* context);
Status sha256Update(Sha256Context* context, const std::uint8_t* data, std::uint32_t length);
Status sha256Final(Sha256Context* context, std::uint8_t* output);

using cHashSHA256 = HashObject<Sha256Context, 32, Release::WIPED, sha256Reset, sha256Update, sha256Final, sha256Choose>;

} // namespace toolbelt
