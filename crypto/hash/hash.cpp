#include "crypto/hash/hash.h"

#include "crypto/hash/keccak512.h"
#include "crypto/hash/md5.h"
#include "crypto/hash/ripemd160.h"
#include "crypto/hash/sha1.h"
#include "crypto/hash/sha256.h"
#include "crypto/hash/sha512.h"
#include "crypto/hash/skein512.h"
#include "crypto/hash/whirlpool.h"

namespace toolbelt {

// A class that leaves a slot out answers that it is not there, getSize included.
std::uint32_t cHashAlg::getSize()
{
    return CRYPT_E_NOT_IMPLEMENTED;
}
Status cHashAlg::update(const std::uint8_t*, std::uint32_t)
{
    return CRYPT_E_NOT_IMPLEMENTED;
}
Status cHashAlg::final(std::uint8_t*)
{
    return CRYPT_E_NOT_IMPLEMENTED;
}
Status cHashAlg::reset()
{
    return CRYPT_E_NOT_IMPLEMENTED;
}
cHashAlg::~cHashAlg() = default;

// SHA-256 is known by its RFC 4880 number and by the engine's own, older one; both stay.
const HashRow hashRows[HASH_ROW_COUNT] = {
    {1, cHashMD5::create, cHashMD5::SIZE, "MD5"},
    {2, cHashSHA1::create, cHashSHA1::SIZE, "SHA-1"},
    {3, cHashRipemd::create, cHashRipemd::SIZE, "RIPEMD-160"},
    {0x80, cHashSHA256::create, cHashSHA256::SIZE, "SHA-256"},
    {8, cHashSHA256::create, cHashSHA256::SIZE, "SHA-256"},
    {10, cHashSHA512::create, cHashSHA512::SIZE, "SHA-512"},
    {0x81, cHashWhirlpool512::create, cHashWhirlpool512::SIZE, "Whirlpool"},
    {0x83, cHashSkein512::create, cHashSkein512::SIZE, "Skein-512"},
    {0x82, cHashSHA3_512::create, cHashSHA3_512::SIZE, "Keccak-512"},
};

const std::int32_t offeredHashes[OFFERED_HASH_COUNT] = {1, 2, 3, 0x80, 10, 0x81, 0x82, 0x83};

Status createHash(cHashAlg** out, std::int32_t id)
{
    for (std::uint32_t i = HASH_ROW_COUNT; i-- != 0;)
        if (hashRows[i].id == id) {
            *out = hashRows[i].create();
            return CRYPT_OK;
        }
    return CRYPT_E_UNKNOWN_ALGORITHM;
}

void destroyHash(cHashAlg* hash)
{
    delete hash;
}

std::uint32_t hashSize(cHashAlg* hash)
{
    return hash->getSize();
}

Status hashBuffer(cHashAlg* hash, std::uint8_t* output, const std::uint8_t* data, std::uint32_t length)
{
    if (const Status status = hash->reset(); status != CRYPT_OK) return status;
    if (const Status status = hash->update(data, length); status != CRYPT_OK) return status;
    return hash->final(output);
}

} // namespace toolbelt
