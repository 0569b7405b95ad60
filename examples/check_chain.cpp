// Checks a chain of certificates: check_chain FILE. The file is PEM text, the server's certificate first, each followed
// by the one that issued it, the last one signed by itself. Whether that last one is to be trusted is for you to say.
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <list>
#include <memory>
#include <string>

#include <toolbelt/toolbelt.h>

using namespace toolbelt;

struct Certificate
{
    cByteBuffer der; // what info points into
    CertificateInfo info;
};

// The last attribute of a name is usually the one that people know it by.
std::string nameOf(const NameList& name)
{
    return name.head ? name.head->value : "(nobody)";
}

bool isSignedBy(const CertificateInfo& certificate, const CertificateInfo& issuer)
{
    cPKA* made = nullptr;
    if (readPublicKeyFromInfo(&made, issuer.subjectPublicKeyInfo) != STATUS_OK) return false;
    const std::unique_ptr<cPKA> key(made);

    cHashAlg* hash = nullptr;
    if (createHash(&hash, certificate.signatureAlgorithm.row->digest) != CRYPT_OK || !hash) return false;
    std::uint8_t digest[64]; // the longest there is
    const std::uint32_t length = hashSize(hash);
    const Status hashed = hashBuffer(hash, digest, certificate.tbs.start, certificate.tbs.totalLength);
    destroyHash(hash);
    const DerElement& signature = certificate.signatureValue.element;
    return hashed == CRYPT_OK && key->verifyDer(signature.start, signature.totalLength, digest, length) == STATUS_OK;
}

// The caller of the chain asks for more than a signature: an issuer has to be an authority.
const char* verdictOf(const CertificateInfo& certificate, const CertificateInfo& issuer, bool isLast)
{
    std::uint8_t isAuthority = 0;
    std::int32_t pathLength = 0;
    const Status status = readBasicConstraints(issuer, &isAuthority, &pathLength);
    if (!isLast && (status != STATUS_OK || !isAuthority)) return "issued by no authority";
    if (!isSignedBy(certificate, issuer)) return "bad signature";
    return isTimeValid(certificate.validity, 0) ? "ok" : "not valid today";
}

int main(int argc, char** argv)
{
    std::ifstream file(argc == 2 ? argv[1] : "", std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(file)), {});
    std::list<Certificate> chain;
    const char* const end = "-----END CERTIFICATE-----";
    for (std::size_t at = text.find(end); at != std::string::npos; at = text.find(end)) {
        Certificate& next = chain.emplace_back();
        if (!decodeArmoured(next.der, text.data(), static_cast<std::uint32_t>(text.size()),
                            "-----BEGIN CERTIFICATE-----", end) ||
            readCertificate(next.info, next.der.data(), next.der.length()) != STATUS_OK)
            return std::puts("a certificate cannot be read"), 3;
        text.erase(0, at + std::strlen(end));
    }
    if (chain.empty()) return std::puts("no certificates; usage: check_chain FILE"), 2;

    bool good = true;
    for (auto certificate = chain.begin(); certificate != chain.end(); ++certificate) {
        const auto issuer = std::next(certificate) == chain.end() ? certificate : std::next(certificate);
        const std::string verdict = verdictOf(certificate->info, issuer->info, issuer == certificate);
        std::printf("%s, by %s: %s\n", nameOf(certificate->info.subject).c_str(), nameOf(issuer->info.subject).c_str(),
                    verdict.c_str());
        good = good && verdict == "ok";
    }
    return good ? 0 : 1;
}
