// SHA-512 (FIPS 180-4).
#pragma once

#include <array>

#include "crypto/hash/block_buffer.h"
#include "crypto/hash/hash_object.h"

namespace toolbelt {

using Sha512State = std::array<std::uint64_t, 8>;
using Sha512Context = TieredBuffer<CountedBuffer<Sha512State, 128, CountUnit::BYTES>>;

void sha512Compress(Sha512State& state, const std::uint8_t* blocks, std::uint32_t count);
void sha512CompressAvx2(Sha512State& state, const std::uint8_t* blocks, std::uint32_t count);   // needs cpu::AVX2
void sha512CompressAvx512(Sha512State& state, const std::uint8_t* blocks, std::uint32_t count); // needs cpu::AVX512
void sha512Choose(Sha512Context* context);

Status sha512Reset(Sha512Context* context);
Status sha512Update(Sha512Context* context, const std::uint8_t* data, std::uint32_t length);
Status sha512Final(Sha512Context* context, std::uint8_t* output);

using cHashSHA512 = HashObject<Sha512Context, 64, Release::WIPED, sha512Reset, sha512Update, sha512Final, sha512Choose>;

} // namespace toolbelt
