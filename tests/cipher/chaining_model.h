// The encryption of the chaining modes written out naively; a decryption is right when it gives back what went in.
#pragma once

#include <stdexcept>
#include <utility>
#include <vector>

#include "crypto/cipher/cipher.h"

namespace toolbelt::test {

inline constexpr std::uint32_t ECB = 99; // of the model: blocks that are not chained

// One block at a time, for CFB one byte at a time.
inline std::vector<std::uint8_t> modelEncrypt(cSymAlg& cipher, std::uint32_t mode, std::vector<std::uint8_t> chain,
                                              const std::vector<std::uint8_t>& in)
{
    const std::size_t size = chain.size();
    std::vector<std::uint8_t> out, block;
    const auto encryptChain = [&] {
        block = chain;
        if (cipher.encryptBlocks(chain.data(), block.data(), static_cast<std::int32_t>(size)) != CRYPT_OK)
            throw std::runtime_error("a block is refused");
    };
    const auto swapWords = [&] {
        for (std::size_t i = 0; mode == SYM_MODE_CBC_WORDSWAP && i + 4 <= size; i += 4) {
            std::swap(chain[i], chain[i + 3]);
            std::swap(chain[i + 1], chain[i + 2]);
        }
    };
    for (std::size_t i = 0; i < in.size(); ++i) {
        if (mode == SYM_MODE_CFB) {
            if (i % size == 0) encryptChain();
            chain[i % size] = in[i] ^ block[i % size];
            out.push_back(chain[i % size]);
            continue;
        }
        chain[i % size] = static_cast<std::uint8_t>(in[i] ^ (mode == ECB ? 0 : chain[i % size]));
        if (i % size + 1 != size) continue;
        swapWords();
        encryptChain();
        chain = block;
        swapWords();
        out.insert(out.end(), chain.begin(), chain.end());
    }
    return out;
}

} // namespace toolbelt::test
