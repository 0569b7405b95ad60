// Chaining modes against models that use one block operation at a time, in place and apart, with exact buffers.
#include <memory>

#include "crypto/cipher/cipher.h"
#include "fuzz/target.h"

namespace toolbelt::fuzz {
namespace {

void reverseWords(Bytes& block)
{
    for (std::size_t i = 0; i + 4 <= block.size(); i += 4) {
        std::swap(block[i], block[i + 3]);
        std::swap(block[i + 1], block[i + 2]);
    }
}

Bytes model(cSymAlg& cipher, std::uint32_t mode, bool encrypt, Bytes chain, const Bytes& text, std::uint32_t blockSize)
{
    Bytes result;
    const auto size = static_cast<std::int32_t>(blockSize);
    if (mode == SYM_MODE_CFB) {
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (i % blockSize == 0) require(cipher.encryptBlocks(chain.data(), chain.data(), size) == 0, "a block");
            result.push_back(text[i] ^ chain[i % blockSize]);
            chain[i % blockSize] = encrypt ? result.back() : text[i];
        }
        return result;
    }
    for (auto at = text.begin(); at != text.end(); at += size) {
        Bytes block(at, at + size);
        const Bytes given = block;
        for (std::uint32_t i = 0; i < blockSize && encrypt; ++i) block[i] ^= chain[i];
        if (mode == SYM_MODE_CBC_WORDSWAP) reverseWords(block);
        const Status status = encrypt ? cipher.encryptBlocks(block.data(), block.data(), size)
                                      : cipher.decryptBlocks(block.data(), block.data(), size);
        require(status == CRYPT_OK, "a block");
        if (mode == SYM_MODE_CBC_WORDSWAP) reverseWords(block);
        for (std::uint32_t i = 0; i < blockSize && !encrypt; ++i) block[i] ^= chain[i];
        chain = encrypt ? block : given;
        result.insert(result.end(), block.begin(), block.end());
    }
    return result;
}

const Target target("chaining", [](Input input) {
    const CipherRow& row = cipherRows[input.byte() % CIPHER_ROW_COUNT];
    const std::uint32_t mode = input.byte() % 3, options = input.byte();
    const Bytes key = input.part();
    const std::unique_ptr<cSymAlg> cipher(row.create(addressOf(key), sizeOf(key)));
    if (!cipher) return;
    std::uint32_t blockSize = 0, keySize = 0;
    require(cipher->getSizes(&blockSize, &keySize) != 0 && blockSize == row.blockSize(), "sizes");
    Bytes iv = input.take(blockSize);
    iv.resize(blockSize);
    const bool noIv = (options & 1) != 0, inPlace = (options & 2) != 0, encrypt = (options & 4) != 0;
    if (noIv) iv.assign(blockSize, 0);
    const Bytes text = input.take(4096);
    cipher->setMode(mode);
    if ((options & 8) != 0) cipher->setLittleEndianBlocks(true);
    Bytes output = inPlace ? text : Bytes(text.size(), 0xA5);
    const auto run = encrypt ? cipher->modeEncrypt : cipher->modeDecrypt;
    const auto length = static_cast<std::int32_t>(text.size());
    const Status status =
        run(cipher.get(), noIv ? nullptr : iv.data(), inPlace ? output.data() : addressOf(text), output.data(), length);
    if (mode != SYM_MODE_CFB && (blockSize == 0 || text.size() % blockSize != 0))
        return require(status == CRYPT_E_BAD_LENGTH, "whole blocks only");
    require(status == CRYPT_OK, "a status");
    if (blockSize == 0) return require(output == text, "without blocks it copies");
    require(output == model(*cipher, mode, encrypt, iv, text, blockSize), "the model's text");
    const auto back = encrypt ? cipher->modeDecrypt : cipher->modeEncrypt;
    require(back(cipher.get(), iv.data(), output.data(), output.data(), length) == CRYPT_OK && output == text,
            "there and back");
});

} // namespace
} // namespace toolbelt::fuzz
