// The identity: no cipher. Its block size of 0 makes CBC refuse it and CFB copy.
#include "crypto/cipher/creators.h"
#include "crypto/cipher/member.h"

namespace toolbelt {

class cAlgDummy final : public cSymAlg
{
public:
    std::uint32_t getSizes(std::uint32_t* blockSize, std::uint32_t* keySize) const override
    {
        *blockSize = 0;
        *keySize = 0;
        return 1;
    }
    Status encryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        if (length < 0) return CRYPT_E_BAD_LENGTH;
        if (length != 0) std::memmove(out, in, static_cast<std::uint32_t>(length));
        return CRYPT_OK;
    }
    Status decryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) override
    {
        return encryptBlocks(in, out, length);
    }
};

cSymAlg* createDummy(const std::uint8_t*, std::uint32_t)
{
    return new (std::nothrow) cAlgDummy;
}

} // namespace toolbelt
