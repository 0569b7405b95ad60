// RSA keys to bytes: blobs of prefixed numbers (RFC 4880), the DER forms of RFC 8017, appendix A.1, and ssh-rsa.
#include <cstring>

#include "crypto/base/bytes.h"
#include "crypto/pka/key_bytes.h"
#include "crypto/pka/rsa_key.h"
#include "crypto/pka/slot_buffers.h"

namespace toolbelt {

Status exportRsaPublic(const RsaPublicKey& key, std::uint8_t* output, std::uint32_t* inOutSize)
{
    return writePrefixed({key.n, key.e}, output, inOutSize);
}

Status exportRsaPrivate(const RsaPrivateKey& key, std::uint8_t* output, std::uint32_t* inOutSize)
{
    return writePrefixed({key.d, key.q, key.p, key.qinv}, output, inOutSize);
}

Status exportRsaPublicDer(const RsaPublicKey& key, std::uint8_t* output, std::uint32_t* inOutSize)
{
    return writeSequence(false, {key.n, key.e}, output, inOutSize);
}

Status exportRsaPrivateDer(const RsaPrivateKey& key, std::uint8_t* output, std::uint32_t* inOutSize)
{
    return writeSequence(true, {key.n, key.e, key.d, key.p, key.q, key.dp, key.dq, key.qinv}, output, inOutSize);
}

Status exportRsaSsh(const RsaPublicKey& key, std::uint8_t* output, std::uint32_t* inOutSize)
{
    static constexpr char NAME[] = "ssh-rsa";
    constexpr std::uint32_t NAME_LENGTH = sizeof NAME - 1;
    const std::uint32_t needed = 4 + NAME_LENGTH + 4 + bnDerLength(*key.e) + 4 + bnDerLength(*key.n);
    if (!hasRoom(inOutSize, needed)) return STATUS_BUFFER_TOO_SMALL;
    *inOutSize = needed;

    store32be(output, NAME_LENGTH);
    std::memcpy(output + 4, NAME, NAME_LENGTH);
    std::uint32_t offset = 4 + NAME_LENGTH;
    for (const BigNum* number : {key.e, key.n}) {
        const std::uint32_t length = bnDerLength(*number);
        store32be(output + offset, length);
        bnExport(output + offset + 4, length, *number);
        offset += 4 + length;
    }
    return STATUS_OK;
}

} // namespace toolbelt
