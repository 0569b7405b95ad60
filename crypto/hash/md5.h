// MD5 (RFC 1321). Broken for signatures; kept for old data.
#pragma once

#include <array>

#include "crypto/hash/block_buffer.h"
#include "crypto/hash/hash_object.h"

namespace toolbelt {

using Md5State = std::array<std::uint32_t, 4>;
using Md5Context = CountedBuffer<Md5State, 64, CountUnit::BITS>;

void md5Compress(Md5State& state, const std::uint8_t* blocks, std::uint32_t count);

Status md5Reset(Md5Context* context);
Status md5Update(Md5Context* context, const std::uint8_t* data, std::uint32_t length);
Status md5Final(Md5Context* context, std::uint8_t* output);

using cHashMD5 = HashObject<Md5Context, 16, Release::AS_IS, md5Reset, md5Update, md5Final>;

} // namespace toolbelt
