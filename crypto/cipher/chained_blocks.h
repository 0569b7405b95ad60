// ChainedBlocks: the seam for a cipher that does a chaining mode and its blocks in one routine. Whole blocks go there,
// and the chaining itself is left with lengths, statuses and the last part of a block.
#pragma once

#include <cstdint>

namespace toolbelt {

class cSymAlg;

// How blocks are chained: not at all; by an XOR with the ciphertext block before, ahead of the encryption and behind
// the decryption (CBC); or by an XOR with the encryption of that block, in either direction (CFB).
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
