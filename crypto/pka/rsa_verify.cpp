// Verification of RSA signatures: PKCS #1 v1.5 blocks of type 1 (RFC 8017, section 8.2.2).
//
// By design a verifier of bare digests and of DigestInfos alike: a payload as long as the digest is the digest itself,
// any other is read as a DigestInfo whose algorithm may be any known one. Nothing may follow the digest, the DigestInfo
// or its elements. Before the digest there is room all the same: no length of padding is demanded, and the parameters
// of the AlgorithmIdentifier may hold any bytes. With a small exponent such a block has roots that are found without
// the private key. The short-input rule of the public operation refuses the short ones, and that a signature must be
// below n those with n on top; but half a cube root modulo n is as long as any signature. So a signature proves nothing
// when the exponent is at most about 1/350 of the modulus's bits (3 and 5 at 2,048 bits); 65537 is safe at any length.
#include <cstring>

#include "crypto/base/heap.h"
#include "crypto/pka/pkcs1.h"
#include "crypto/pka/rsa_key.h"

namespace toolbelt {
namespace {

// Replaces the payload by the digest inside it.
bool readDigestInfo(const std::uint8_t** payload, std::uint32_t* payloadLength)
{
    DerElement info, digest;
    AlgorithmIdentifier algorithm;
    const std::uint8_t* rest = nullptr;
    std::uint32_t restLength = 0;
    if (parseElement(info, *payload, *payloadLength, nullptr, &restLength, DER_SEQUENCE) != STATUS_OK ||
        restLength != 0)
        return false;
    if (readAlgorithmIdentifier(algorithm, info.content, info.contentLength, &rest, &restLength) != STATUS_OK)
        return false;
    if (parseElement(digest, rest, restLength, nullptr, &restLength, DER_OCTET_STRING) != STATUS_OK || restLength != 0)
        return false;
    *payload = digest.content;
    *payloadLength = digest.contentLength;
    return true;
}

} // namespace

Status rsaVerify(const RsaPublicKey& key, const std::uint8_t* signature, std::uint32_t mode, const std::uint8_t* digest,
                 std::uint32_t digestLength)
{
    const std::uint32_t k = rsaLength(key.bits);
    SecretBytes block(k);
    if (!block) return PKA_E_OBJECT;
    BigNum number;
    if (readRsaInput(number, signature, k, mode) != STATUS_OK || bnCompare(number, *key.n) >= 0) return PKA_E_FAILED;
    if (rsaPublicOperation(key, signature, block.data(), mode & RSA_PREFIXED_INPUT) != STATUS_OK) return PKA_E_FAILED;

    const std::uint8_t* payload = nullptr;
    std::uint32_t payloadLength = 0;
    if (pkcs1Unpad(&payload, &payloadLength, block.data(), k, PKCS1_SIGNATURE) != STATUS_OK) return PKA_E_FAILED;
    if (payloadLength != digestLength && !readDigestInfo(&payload, &payloadLength)) return PKA_E_FAILED;
    if (payloadLength != digestLength) return PKA_E_FAILED;
    if (digestLength != 0 && std::memcmp(payload, digest, digestLength) != 0) return PKA_E_FAILED;
    return STATUS_OK;
}

} // namespace toolbelt
