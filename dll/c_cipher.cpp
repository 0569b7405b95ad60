// The flat surface: ciphers. A tb_cipher is a cSymAlg.
#include <climits>

#include "crypto/cipher/cipher.h"
#include "dll/c_support.h"

using namespace toolbelt;
using namespace toolbelt::flat;

namespace {

static_assert(TB_CBC == SYM_MODE_CBC && TB_CBC_WORDSWAP == SYM_MODE_CBC_WORDSWAP && TB_CFB == SYM_MODE_CFB);

cSymAlg* objectOf(tb_cipher* cipher)
{
    return reinterpret_cast<cSymAlg*>(cipher);
}

tb_status transform(tb_cipher* cipher, cSymAlg::ModeFunction cSymAlg::*mode, const uint8_t* iv, const void* in,
                    void* out, uint32_t length)
{
    if (cipher == nullptr || !isReadable(in, length) || !isReadable(out, length) || length > INT_MAX)
        return TB_E_ARGUMENT;
    const Status status = (objectOf(cipher)->*mode)(objectOf(cipher), iv, static_cast<const std::uint8_t*>(in),
                                                    static_cast<std::uint8_t*>(out), static_cast<std::int32_t>(length));
    return status == CRYPT_OK             ? TB_OK
           : status == CRYPT_E_NO_MEMORY  ? TB_E_MEMORY
           : status == CRYPT_E_BAD_LENGTH ? TB_E_ARGUMENT
                                          : TB_E_FAILED;
}

} // namespace

tb_status tb_cipher_open(int32_t id, uint32_t mode, const uint8_t* key, uint32_t key_length,
                         tb_cipher** cipher) noexcept
{
    if (cipher == nullptr || !isReadable(key, key_length) || mode > TB_CFB) return TB_E_ARGUMENT;
    const CipherRow* row = nullptr;
    if (findCipher(&row, id) != CRYPT_OK) return TB_E_ALGORITHM;
    cSymAlg* made = row->create(key, key_length);
    if (made == nullptr) return TB_E_KEY; // or memory, which a creator does not tell apart
    made->setMode(mode);
    *cipher = reinterpret_cast<tb_cipher*>(made);
    return TB_OK;
}

uint32_t tb_cipher_block_size(const tb_cipher* cipher) noexcept
{
    std::uint32_t blockSize = 0, keySize = 0;
    if (cipher != nullptr) reinterpret_cast<const cSymAlg*>(cipher)->getSizes(&blockSize, &keySize);
    return blockSize;
}

tb_status tb_cipher_encrypt(tb_cipher* cipher, const uint8_t* iv, const void* in, void* out, uint32_t length) noexcept
{
    return transform(cipher, &cSymAlg::modeEncrypt, iv, in, out, length);
}

tb_status tb_cipher_decrypt(tb_cipher* cipher, const uint8_t* iv, const void* in, void* out, uint32_t length) noexcept
{
    return transform(cipher, &cSymAlg::modeDecrypt, iv, in, out, length);
}

void tb_cipher_close(tb_cipher* cipher) noexcept
{
    delete objectOf(cipher);
}
