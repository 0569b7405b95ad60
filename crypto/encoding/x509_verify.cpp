// The signature of a certificate, checked with the key that the certificate itself holds.
#include <memory>

#include "crypto/base/heap.h"
#include "crypto/encoding/x509.h"
#include "crypto/hash/hash.h"

namespace toolbelt {
namespace {

// The digest of the signed part: the TBSCertificate from its identifier octet to its end.
Status hashSignedPart(SecretBytes& digest, const CertificateInfo& certificate, std::int32_t digestId)
{
    cHashAlg* created = nullptr;
    if (const Status status = createHash(&created, digestId)) return status;
    const std::unique_ptr<cHashAlg, void (*)(cHashAlg*)> hash(created, destroyHash);
    if (!hash) return DER_E_MEMORY;
    digest = SecretBytes(hashSize(hash.get()));
    if (!digest) return DER_E_MEMORY;
    return hashBuffer(hash.get(), digest.data(), certificate.tbs.start, certificate.tbs.totalLength);
}

} // namespace

Status verifyCertificateSignature(const CertificateInfo& certificate, std::int32_t digestId, std::int32_t* result)
{
    if (result) *result = 0;
    cPKA* opened = nullptr;
    if (const Status status = readPublicKeyFromInfo(&opened, certificate.subjectPublicKeyInfo)) return status;
    const std::unique_ptr<cPKA> key(opened);

    SecretBytes digest;
    if (const Status status = hashSignedPart(digest, certificate, digestId)) return status;
    const DerElement& signature = certificate.signatureValue.element;
    const Status status = key->verifyDer(signature.start, signature.totalLength, digest.data(),
                                         static_cast<std::uint32_t>(digest.size()));
    if (result && status == STATUS_OK) *result = 1;
    return status;
}

} // namespace toolbelt
