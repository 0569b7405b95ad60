// RIPEMD-160 (Dobbertin, Bosselaers, Preneel 1996; ISO/IEC 10118-3).
#pragma once

#include "crypto/hash/sha1.h"

namespace toolbelt {

// Same context and same start as SHA-1: reset with sha1Reset.
void ripemd160Compress(Sha1State& state, const std::uint8_t* blocks, std::uint32_t count);

Status ripemd160Update(Sha1Context* context, const std::uint8_t* data, std::uint32_t length);
Status ripemd160Final(Sha1Context* context, std::uint8_t* output);

using cHashRipemd = HashObject<Sha1Context, 20, Release::AS_IS, sha1Reset, ripemd160Update, ripemd160Final>;

} // namespace toolbelt
