// Wide twins of block decryptions: the text of a cipher's rounds, instantiated for registers of many words instead of
// one. Decryption is where they pay, since CBC decrypts blocks that do not wait for each other.
#pragma once

#include <cstdint>

namespace toolbelt {

// Transforms the leading blocks, as many as it can take side by side, and returns how many; in and out may be the same.
// keys: what the cipher's own rounds take.
using WideBlocks = std::uint32_t(const void* keys, const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks);

// Need cpu::AVX2.
WideBlocks gostDecryptAvx2;
WideBlocks ideaTransformAvx2; // either direction: it lies in the keys
WideBlocks rc6DecryptAvx2;
WideBlocks serpentDecryptAvx2;
// Need cpu::VAES.
WideBlocks ariaTransformVaes; // either direction
WideBlocks camelliaDecryptVaes;
// Need cpu::AVX512.
WideBlocks gostDecryptAvx512; // and cpu::VBMI
WideBlocks ideaTransformAvx512;
WideBlocks rc6DecryptAvx512;
WideBlocks serpentDecryptAvx512;

} // namespace toolbelt
