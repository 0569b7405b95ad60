// ChainedBlocks: the seam for a cipher that does a chaining mode and its blocks in one routine. Whole blocks go there,
// and the chaining itself is left with lengths, statuses and the last part of a block.
#pragma once

#include <cstdint>

namespace toolbelt {

class cSymAlg;

// What is transformed and what the result is XORed with: nothing, the ciphertext block before (CBC), or, in CFB, the
// text itself, where the ciphertext block before is what is encrypted.
enum class Chain
{
    NONE,
    CBC,
    CFB,
};

struct ChainedBlocks
{
    // chain holds the ciphertext block before the first one, and afterwards the last one; blocks is not 0. in and out
    // are the same buffer or do not overlap. It may complete the key schedule, with round keys that only decryption
    // needs, in a cipher that is const to it.
    using Routine = void(const cSymAlg& cipher, std::uint8_t* chain, const std::uint8_t* in, std::uint8_t* out,
                         std::uint32_t blocks);
    Routine* cbcEncrypt;
    Routine* cbcDecrypt; // the decryptions may be null: they are then put together from batches of blocks
    Routine* cfbEncrypt;
    Routine* cfbDecrypt;
};

} // namespace toolbelt
