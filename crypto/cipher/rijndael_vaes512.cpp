// Rijndael on AES instructions, four blocks a register, where blocks do not wait for each other: compiled with flags of
// its own.
#include "crypto/cipher/rijndael_vector.h"

namespace toolbelt {
namespace {

struct FourBlocks
{
    using Vector = __m512i;
    static Vector load(const void* from) { return _mm512_loadu_si512(from); }
    static void store(void* to, Vector value) { _mm512_storeu_si512(to, value); }
    static Vector loadKey(const void* from) { return _mm512_broadcast_i32x4(OneBlock::load(from)); }
    static Vector xored(Vector a, Vector b) { return _mm512_xor_si512(a, b); }
    static Vector encrypt(Vector state, Vector key) { return _mm512_aesenc_epi128(state, key); }
    static Vector encryptLast(Vector state, Vector key) { return _mm512_aesenclast_epi128(state, key); }
    static Vector decrypt(Vector state, Vector key) { return _mm512_aesdec_epi128(state, key); }
    static Vector decryptLast(Vector state, Vector key) { return _mm512_aesdeclast_epi128(state, key); }
};

} // namespace

const RijndaelTier rijndaelVaes512 = {
    transformBlocks<FourBlocks, Direction::ENCRYPT>,
    transformBlocks<FourBlocks, Direction::DECRYPT>,
    decryptChained<FourBlocks, Direction::DECRYPT, Chain::CBC>,
    decryptChained<FourBlocks, Direction::ENCRYPT, Chain::CFB>,
};

} // namespace toolbelt
