// Rijndael's faster twins: what the AES instructions do instead of the table routine.
#pragma once

#include <cstdint>

namespace toolbelt {

class cSymAlg;

// Takes any number of blocks, 0 included. keys: rounds + 1 round keys in byte order, for decryption those of the
// equivalent inverse cipher in the order of their use. in and out may be the same.
using RijndaelBlocks = void(const std::uint32_t* keys, std::uint32_t rounds, const std::uint8_t* in, std::uint8_t* out,
                            std::uint32_t blocks);
// The same with a chaining mode around it. chain holds the ciphertext block before the first one, and afterwards the
// last one.
using RijndaelChained = void(const std::uint32_t* keys, std::uint32_t rounds, std::uint8_t* chain,
                             const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks);

// What is done on many blocks side by side. cbcDecrypt takes the keys of decryption, cfbDecrypt those of encryption.
struct RijndaelTier
{
    RijndaelBlocks* encrypt;
    RijndaelBlocks* decrypt;
    RijndaelChained* cbcDecrypt;
    RijndaelChained* cfbDecrypt;
};
extern const RijndaelTier rijndaelAesni;   // a block a register; needs cpu::AES and SSE2
extern const RijndaelTier rijndaelVaes;    // two blocks a register; needs cpu::VAES besides
extern const RijndaelTier rijndaelVaes512; // four blocks a register; needs cpu::AVX512 besides

// What is done block by block, on either tier.
RijndaelChained rijndaelCbcEncryptAesni;
RijndaelChained rijndaelCfbEncryptAesni;
// The round keys of encryption; keyLength is 16, 24 or 32 bytes. There is room for those of the longest key.
void rijndaelExpandKeyAesni(std::uint32_t* keys, const std::uint8_t* key, std::uint32_t keyLength);
// The round keys of decryption from those of encryption.
void rijndaelInvertKeysAesni(std::uint32_t* decryption, const std::uint32_t* encryption, std::uint32_t rounds);

// What a Rijndael object was built with, null for the table routine; tests ask it, to know what they compare.
const RijndaelTier* rijndaelTier(const cSymAlg& rijndael) noexcept;

} // namespace toolbelt
