// Public keys to SubjectPublicKeyInfo. The DER form of DSA and ElGamal keys is one already; RSAPublicKey goes into the
// frame of RFC 3279, section 2.3.1. A new kind of key adds its row.
#include "crypto/encoding/key_write.h"

#include <memory>

#include "crypto/encoding/status.h"
#include "crypto/pka/public_key_info.h"

namespace toolbelt {
namespace {

constexpr OidOctets OID_RSA = {9, {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x01}}; // 1.2.840.113549.1.1.1
constexpr std::uint8_t NULL_PARAMETERS[] = {DER_NULL, 0};

Status writeOwnForm(cPKA& key, std::uint8_t* output, std::uint32_t* inOutSize)
{
    return key.exportDer(output, inOutSize);
}

Status writeFramed(cPKA& key, std::uint8_t* output, std::uint32_t* inOutSize)
{
    std::uint32_t keyLength = 0;
    const Status sized = key.exportDer(nullptr, &keyLength);
    if (sized != STATUS_BUFFER_TOO_SMALL) return sized;
    PublicKeyInfoOutput info;
    if (const Status status = info.open(output, inOutSize, OID_RSA, sizeof NULL_PARAMETERS, keyLength)) return status;
    info.parameters[0] = NULL_PARAMETERS[0];
    info.parameters[1] = NULL_PARAMETERS[1];
    if (const Status status = key.exportDer(info.key, &keyLength)) return status;
    *inOutSize = info.totalLength;
    return STATUS_OK;
}

struct WriterRow
{
    std::uint32_t algorithm;
    Status (*write)(cPKA& key, std::uint8_t* output, std::uint32_t* inOutSize);
};
constexpr WriterRow writers[] = {{PKA_RSA, writeFramed}, {PKA_DSA, writeOwnForm}, {PKA_ELGAMAL, writeOwnForm}};

} // namespace

Status exportSubjectPublicKeyInfo(cPKA& key, std::uint8_t* output, std::uint32_t* inOutSize)
{
    cPKA* made = nullptr;
    const Status status = key.makePublic(&made);
    const std::unique_ptr<cPKA> half(made);
    if (status != STATUS_OK && status != PKA_E_NOT_OFFERED) return status;
    cPKA& written = half ? *half : key; // a key without a public half is one
    for (const WriterRow& row : writers)
        if (row.algorithm == written.algorithm()) return row.write(written, output, inOutSize);
    return KEY_E_NO_READER;
}

} // namespace toolbelt
