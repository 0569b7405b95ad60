// What the key and certificate commands share: reading keys and certificates out of documents, and telling about keys.
#pragma once

#include <memory>
#include <string>

#include "cli/console.h"
#include "cli/documents.h"
#include "crypto/encoding/x509.h"
#include "crypto/pka/pka.h"

namespace toolbelt::cli {

struct LoadedKey
{
    std::unique_ptr<cPKA> key;
    bool isPrivate = false;
};

// The first key, or certificate, of a file: SubjectPublicKeyInfo, RSAPublicKey, a private key in its traditional form,
// PrivateKeyInfo with an RSA or DSA key, or a certificate's key; as PEM or DER.
LoadedKey readKeyFile(const std::string& path);

// Of a private key, makes the public one.
void usePublicHalf(LoadedKey& loaded, const std::string& path);

// Kind, bits and numbers of a key that was read; the private numbers only when they are asked for.
Fact keyFact(const LoadedKey& key, bool privateNumbers);
// The same from a certificate, where the key may be one that cannot be read.
Fact publicKeyFact(const SubjectPublicKeyInfo& info);

// readCertificate, and nothing may follow it. The record points into the document.
Status readWholeCertificate(CertificateInfo& certificate, const Document& document);

// The identifier's name ("rsaEncryption"), or its dotted text.
std::string oidName(const char* dottedText);
// "2031-01-31 23:59:59 UTC"
std::string timeText(const DerTime& time);

} // namespace toolbelt::cli
