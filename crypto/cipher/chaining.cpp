// The chaining modes, written once over the block operations of cSymAlg. CBC encryption and CFB encryption go block by
// block, as each needs the ciphertext before it; the decryptions hand a batch of blocks over in one call.
// Whole blocks go to a cipher's own routine for the mode and direction as they are, if it has one.
#include <algorithm>
#include <cstring>

#include <emmintrin.h>

#include "crypto/base/bytes.h"
#include "crypto/base/cpu.h"
#include "crypto/cipher/chained_blocks.h"
#include "crypto/cipher/cipher.h"

namespace toolbelt {
namespace {

// Bytes handed to the block operations at once: enough for any core that works on blocks side by side, and staged data
// and tables still share the first-level cache.
constexpr std::uint32_t BATCH = 4096;

// The whole blocks of a batch; one block when the block is longer than that.
std::uint32_t batchSize(std::uint32_t blockSize)
{
    return std::max(blockSize, BATCH / blockSize * blockSize);
}

std::int32_t asLength(std::uint32_t size)
{
    return static_cast<std::int32_t>(size);
}

void loadIv(std::uint8_t* chain, const std::uint8_t* iv, std::uint32_t blockSize)
{
    if (blockSize == 0) return;
    if (iv)
        std::memcpy(chain, iv, blockSize);
    else
        std::memset(chain, 0, blockSize);
}

// out = a XOR b. Ascending, so out may lie on or below either.
inline void xorBytes(std::uint8_t* out, const std::uint8_t* a, const std::uint8_t* b, std::uint32_t size)
{
    std::uint32_t i = 0;
    for (; i + 4 <= size; i += 4) store32le(out + i, load32le(a + i) ^ load32le(b + i));
    for (; i < size; ++i) out[i] = a[i] ^ b[i];
}

// The same, sixteen bytes at a time, as far as they go: word by word it would take longer than the decryption of many
// blocks side by side.
[[gnu::target("sse2")]] std::uint32_t xorVectors(std::uint8_t* out, const std::uint8_t* a, const std::uint8_t* b,
                                                 std::uint32_t size)
{
    const std::uint32_t done = size / 16 * 16;
    for (std::uint32_t i = 0; i < done; i += 16) {
        const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + i));
        const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + i));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_xor_si128(first, second));
    }
    return done;
}

void xorBatch(std::uint8_t* out, const std::uint8_t* a, const std::uint8_t* b, std::uint32_t size)
{
    const std::uint32_t done = cpu::has(cpu::SSE2) ? xorVectors(out, a, b, size) : 0;
    xorBytes(out + done, a + done, b + done, size - done);
}

// Reverses the bytes of each 32-bit word of each block; the last bytes of a block size that is not a multiple of 4 stay
// as they are.
void swapWords(std::uint8_t* blocks, std::uint32_t size, std::uint32_t blockSize)
{
    for (; size != 0; blocks += blockSize, size -= blockSize)
        for (std::uint32_t i = 0; i + 4 <= blockSize; i += 4) store32be(blocks + i, load32le(blocks + i));
}

// What both directions of CBC check before anything else. A block that no length can hold is refused as well: two of
// them would not fit 32 bits.
Status checkCbc(const cSymAlg& cipher, std::int32_t length, std::uint32_t* blockSize)
{
    std::uint32_t keySize = 0;
    if (cipher.getSizes(blockSize, &keySize) == 0) return CRYPT_E_NO_SIZES;
    if (*blockSize == 0 || *blockSize > 0x7FFFFFFF || length < 0 ||
        static_cast<std::uint32_t>(length) % *blockSize != 0)
        return CRYPT_E_BAD_LENGTH;
    return CRYPT_OK;
}

} // namespace

cSymAlg::cSymAlg() noexcept
{
    setMode(SYM_MODE_CBC);
}

cSymAlg::~cSymAlg()
{
    heap::releaseSecret(cfbRegister, cfbSize_);
    heap::releaseSecret(cfbPrevious, cfbSize_);
}

void cSymAlg::setMode(std::uint32_t mode) noexcept
{
    switch (mode) {
    case SYM_MODE_CBC_WORDSWAP:
        modeEncrypt = cbcEncrypt<true>;
        modeDecrypt = cbcDecrypt<true>;
        break;
    case SYM_MODE_CFB:
        modeEncrypt = cfbEncrypt;
        modeDecrypt = cfbDecrypt;
        break;
    default:
        modeEncrypt = cbcEncrypt<false>;
        modeDecrypt = cbcDecrypt<false>;
    }
}

// In CBC the status of a block transform is not looked at, by design: the length has been checked here.

template <bool WORDSWAP>
Status cSymAlg::cbcEncrypt(cSymAlg* cipher, const std::uint8_t* iv, const std::uint8_t* in, std::uint8_t* out,
                           std::int32_t length)
{
    std::uint32_t blockSize = 0;
    if (const Status status = checkCbc(*cipher, length, &blockSize)) return status;
    SecretBytes chain(blockSize);
    if (!chain) return CRYPT_E_NO_MEMORY;
    loadIv(chain.data(), iv, blockSize);
    if (!WORDSWAP && cipher->chainedBlocks_ && length != 0) {
        const std::uint32_t blocks = static_cast<std::uint32_t>(length) / blockSize;
        cipher->chainedBlocks_->cbcEncrypt(*cipher, chain.data(), in, out, blocks);
        return CRYPT_OK;
    }
    const auto run = [&](std::uint32_t size) __attribute__((always_inline))
    {
        for (std::uint32_t left = static_cast<std::uint32_t>(length); left != 0; left -= size) {
            xorBytes(chain.data(), chain.data(), in, size);
            if constexpr (WORDSWAP) swapWords(chain.data(), size, size);
            static_cast<void>(cipher->encryptBlocks(chain.data(), out, asLength(size)));
            if constexpr (WORDSWAP) swapWords(out, size, size);
            std::memcpy(chain.data(), out, size);
            in += size;
            out += size;
        }
    };
    // The sizes that there are, each with code of its own: the blocks are so short that a call to copy one counts.
    switch (blockSize) {
    case 8:
        run(8);
        break;
    case 16:
        run(16);
        break;
    default:
        run(blockSize);
    }
    return CRYPT_OK;
}

template <bool WORDSWAP>
Status cSymAlg::cbcDecrypt(cSymAlg* cipher, const std::uint8_t* iv, const std::uint8_t* in, std::uint8_t* out,
                           std::int32_t length)
{
    std::uint32_t blockSize = 0;
    if (const Status status = checkCbc(*cipher, length, &blockSize)) return status;
    std::uint32_t left = static_cast<std::uint32_t>(length);
    const bool chained = !WORDSWAP && cipher->chainedBlocks_ && cipher->chainedBlocks_->cbcDecrypt && left != 0;
    // The ciphertext block before the batch, and behind it room for the ciphertext of a batch that is decrypted in
    // place: the decrypted blocks are XORed with it. A batch is one block or at most BATCH bytes, so the sum fits.
    const bool staged = !chained && (WORDSWAP || in == out);
    const std::uint32_t batch = std::min(batchSize(blockSize), std::max(left, blockSize));
    SecretBytes saved(blockSize + (staged ? batch : 0));
    if (!saved) return CRYPT_E_NO_MEMORY;
    loadIv(saved.data(), iv, blockSize);
    if (chained) {
        cipher->chainedBlocks_->cbcDecrypt(*cipher, saved.data(), in, out, left / blockSize);
        return CRYPT_OK;
    }
    while (left != 0) {
        const std::uint32_t size = std::min(left, batch);
        const std::uint8_t* text = in;
        if (staged) text = static_cast<std::uint8_t*>(std::memcpy(saved.data() + blockSize, in, size));
        if constexpr (WORDSWAP) {
            std::memmove(out, in, size);
            swapWords(out, size, blockSize);
            static_cast<void>(cipher->decryptBlocks(out, out, asLength(size)));
            swapWords(out, size, blockSize);
        } else {
            static_cast<void>(cipher->decryptBlocks(text, out, asLength(size)));
        }
        xorBytes(out, out, saved.data(), blockSize);
        xorBatch(out + blockSize, out + blockSize, text, size - blockSize);
        std::memcpy(saved.data(), text + size - blockSize, blockSize);
        in += size;
        out += size;
        left -= size;
    }
    return CRYPT_OK;
}

// Every call starts the stream anew.
Status cSymAlg::cfbRestart(const std::uint8_t* iv, std::uint32_t blockSize)
{
    cfbSize_ = blockSize;
    if (cfbRegister == nullptr) cfbRegister = static_cast<std::uint8_t*>(heap::allocate(blockSize));
    if (cfbPrevious == nullptr) cfbPrevious = static_cast<std::uint8_t*>(heap::allocate(blockSize));
    if (cfbRegister == nullptr || cfbPrevious == nullptr) return CRYPT_E_NO_MEMORY;
    loadIv(cfbRegister, iv, blockSize);
    cfbPosition = 0;
    return CRYPT_OK;
}

// One block of the stream, or its last part: the register is encrypted, used, and replaced by the ciphertext as far as
// there is some.
template <bool ENCRYPT>
Status cSymAlg::cfbBlock(const std::uint8_t* in, std::uint8_t* out, std::uint32_t size, std::uint32_t blockSize)
{
    std::memcpy(cfbPrevious, cfbRegister, blockSize);
    if (const Status status = encryptBlocks(cfbRegister, cfbRegister, asLength(blockSize))) return status;
    if constexpr (ENCRYPT) {
        xorBytes(cfbRegister, cfbRegister, in, size);
        std::memcpy(out, cfbRegister, size);
    } else {
        for (std::uint32_t i = 0; i < size; ++i) {
            const std::uint8_t byte = in[i]; // read first: out may be in
            out[i] = byte ^ cfbRegister[i];
            cfbRegister[i] = byte;
        }
    }
    cfbPosition = size % blockSize;
    return CRYPT_OK;
}

// What both directions of CFB do first. *blockSize 0: the input has been copied and nothing is left to do.
Status cSymAlg::cfbStart(const std::uint8_t* iv, const std::uint8_t* in, std::uint8_t* out, std::int32_t length,
                         std::uint32_t* blockSize)
{
    std::uint32_t keySize = 0;
    if (getSizes(blockSize, &keySize) == 0) return CRYPT_E_NO_SIZES;
    if (length < 0) return CRYPT_E_BAD_LENGTH;
    if (const Status status = cfbRestart(iv, *blockSize)) return status;
    if (*blockSize == 0 && length != 0) std::memmove(out, in, static_cast<std::uint32_t>(length));
    return CRYPT_OK;
}

Status cSymAlg::cfbEncrypt(cSymAlg* cipher, const std::uint8_t* iv, const std::uint8_t* in, std::uint8_t* out,
                           std::int32_t length)
{
    std::uint32_t blockSize = 0;
    if (const Status status = cipher->cfbStart(iv, in, out, length, &blockSize)) return status;
    if (blockSize == 0) return CRYPT_OK;
    std::uint32_t left = static_cast<std::uint32_t>(length);
    if (cipher->chainedBlocks_ && left > blockSize) {
        // The last block leaves the register as the mode defines it.
        const std::uint32_t blocks = (left - 1) / blockSize;
        cipher->chainedBlocks_->cfbEncrypt(*cipher, cipher->cfbRegister, in, out, blocks);
        in += blocks * blockSize;
        out += blocks * blockSize;
        left -= blocks * blockSize;
    }
    while (left != 0) {
        const std::uint32_t size = std::min(left, blockSize);
        if (const Status status = cipher->cfbBlock<true>(in, out, size, blockSize)) return status;
        in += size;
        out += size;
        left -= size;
    }
    return CRYPT_OK;
}

Status cSymAlg::cfbDecrypt(cSymAlg* cipher, const std::uint8_t* iv, const std::uint8_t* in, std::uint8_t* out,
                           std::int32_t length)
{
    std::uint32_t blockSize = 0;
    if (const Status status = cipher->cfbStart(iv, in, out, length, &blockSize)) return status;
    if (blockSize == 0 || length == 0) return CRYPT_OK;
    std::uint32_t left = static_cast<std::uint32_t>(length);
    if (cipher->chainedBlocks_ && cipher->chainedBlocks_->cfbDecrypt && left > blockSize) {
        const std::uint32_t blocks = (left - 1) / blockSize;
        cipher->chainedBlocks_->cfbDecrypt(*cipher, cipher->cfbRegister, in, out, blocks);
        in += blocks * blockSize;
        out += blocks * blockSize;
        left -= blocks * blockSize;
    }
    // The keystream of a block is the encryption of the ciphertext before it, which is all there: whole batches at
    // once. The last block leaves the register as the mode defines it.
    if (const std::uint32_t batch = std::min(batchSize(blockSize), (left - 1) / blockSize * blockSize); batch != 0) {
        SecretBytes keystream(batch);
        if (!keystream) return CRYPT_E_NO_MEMORY;
        while (left > blockSize) {
            const std::uint32_t size = std::min(batch, (left - 1) / blockSize * blockSize);
            std::memcpy(keystream.data(), cipher->cfbRegister, blockSize);
            std::memcpy(keystream.data() + blockSize, in, size - blockSize);
            std::memcpy(cipher->cfbRegister, in + size - blockSize, blockSize);
            if (const Status status = cipher->encryptBlocks(keystream.data(), keystream.data(), asLength(size)))
                return status;
            xorBatch(out, in, keystream.data(), size);
            in += size;
            out += size;
            left -= size;
        }
    }
    return cipher->cfbBlock<false>(in, out, left, blockSize);
}

} // namespace toolbelt
