// Rijndael on AES instructions, two blocks a register, where blocks do not wait for each other: compiled with flags of
// its own.
#include "crypto/cipher/rijndael_vector.h"

namespace toolbelt {
namespace {

struct TwoBlocks
{
    using Vector = __m256i;
    static Vector load(const void* from) { return _mm256_loadu_si256(static_cast<const __m256i*>(from)); }
    static void store(void* to, Vector value) { _mm256_storeu_si256(static_cast<__m256i*>(to), value); }
    static Vector loadKey(const void* from) { return _mm256_broadcastsi128_si256(OneBlock::load(from)); }
    static Vector xored(Vector a, Vector b) { return _mm256_xor_si256(a, b); }
    static Vector encrypt(Vector state, Vector key) { return _mm256_aesenc_epi128(state, key); }
    static Vector encryptLast(Vector state, Vector key) { return _mm256_aesenclast_epi128(state, key); }
    static Vector decrypt(Vector state, Vector key) { return _mm256_aesdec_epi128(state, key); }
    static Vector decryptLast(Vector state, Vector key) { return _mm256_aesdeclast_epi128(state, key); }
};

} // namespace

const RijndaelTier rijndaelVaes = {
    transformBlocks<TwoBlocks, Direction::ENCRYPT>,
    transformBlocks<TwoBlocks, Direction::DECRYPT>,
    decryptChained<TwoBlocks, Direction::DECRYPT, Chain::CBC>,
    decryptChained<TwoBlocks, Direction::ENCRYPT, Chain::CFB>,
};

} // namespace toolbelt
