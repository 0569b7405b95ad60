// Chaining modes against a model that uses one block operation at a time, in place and apart, with exact buffers.
#include <memory>

#include "fuzz/target.h"
#include "tests/cipher/chaining_model.h"

namespace toolbelt::fuzz {
namespace {

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
    require(encrypt ? output == test::modelEncrypt(*cipher, mode, iv, text)
                    : text == test::modelEncrypt(*cipher, mode, iv, output),
            "the model's text");
    const auto back = encrypt ? cipher->modeDecrypt : cipher->modeEncrypt;
    require(back(cipher.get(), iv.data(), output.data(), output.data(), length) == CRYPT_OK && output == text,
            "there and back");
});

} // namespace
} // namespace toolbelt::fuzz
