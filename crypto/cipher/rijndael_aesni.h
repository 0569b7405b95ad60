// Rijndael's block routine on the processor's AES instructions; only where cpu::AES is in use.
#pragma once

#include <cstdint>

namespace toolbelt {

class cSymAlg;

// keys: rounds + 1 round keys in byte order, for decryption those of the equivalent inverse cipher in the order of
// their use. in and out may be the same.
void rijndaelEncryptAesni(const std::uint32_t* keys, std::uint32_t rounds, const std::uint8_t* in, std::uint8_t* out,
                          std::uint32_t blocks);
void rijndaelDecryptAesni(const std::uint32_t* keys, std::uint32_t rounds, const std::uint8_t* in, std::uint8_t* out,
                          std::uint32_t blocks);

// Whether a Rijndael object was built with this routine; tests ask it, to know what they compare.
bool rijndaelUsesAesni(const cSymAlg& rijndael) noexcept;

} // namespace toolbelt
