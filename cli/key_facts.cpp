#include "cli/key_facts.h"

#include <cstdio>

#include "cli/der_bytes.h"
#include "cli/errors.h"
#include "cli/key_kinds.h"
#include "crypto/pka/dsa.h"
#include "crypto/pka/rsa.h"

namespace toolbelt::cli {
namespace {

// Parses the SEQUENCE that the bytes are, with nothing behind it.
Status parseWhole(DerElement& sequence, const std::uint8_t* bytes, std::uint32_t size)
{
    std::uint32_t left = 0;
    const Status status = parseElement(sequence, bytes, size, nullptr, &left, DER_CONSTRUCTED_SEQUENCE);
    return status != STATUS_OK ? status : left != 0 ? DER_E_LENGTH : STATUS_OK;
}

bool isKeyLabel(const std::string& label)
{
    return label.ends_with("KEY") || isCertificateLabel(label);
}

// A letter for each element of a SEQUENCE: keys of different forms are told apart by them.
Status shapeOf(std::string& shape, const DerElement& sequence)
{
    const std::uint8_t* at = sequence.content;
    std::uint32_t left = sequence.contentLength;
    while (left > 0 && shape.size() < 12) {
        DerElement element;
        const Status status = parseElement(element, at, left, &at, &left);
        if (status != STATUS_OK) return status;
        shape += element.tag == DER_INTEGER                ? 'I'
                 : element.tag == DER_CONSTRUCTED_SEQUENCE ? 'S'
                 : element.tag == DER_BIT_STRING           ? 'B'
                 : element.tag == DER_OCTET_STRING         ? 'O'
                                                           : '?';
    }
    return STATUS_OK;
}

// PrivateKeyInfo (RFC 5208): version, algorithm, and the private key in an OCTET STRING.
Status readPrivateKeyInfo(cPKA** key, const DerElement& sequence)
{
    const std::uint8_t* at = sequence.content;
    std::uint32_t left = sequence.contentLength;
    DerElement version, wrapped, inner;
    AlgorithmIdentifier algorithm;
    Status status = readInteger(version, at, left, &at, &left);
    if (status == STATUS_OK) status = readAlgorithmIdentifier(algorithm, at, left, &at, &left);
    if (status == STATUS_OK) status = parseElement(wrapped, at, left, nullptr, nullptr, DER_OCTET_STRING);
    if (status != STATUS_OK) return status;
    const Bytes content(wrapped.content, wrapped.content + wrapped.contentLength);
    if (algorithm.row->publicKey == PKA_RSA) {
        status = parseWhole(inner, content.data(), size32(content));
        return status == STATUS_OK ? newPrivateRsaFromDer(key, inner) : status;
    }
    if (algorithm.row->publicKey != PKA_DSA) return KEY_E_NO_READER;
    // p, q and g are the parameters and x the content. With a version in front and a y that is left to be computed they
    // are a traditional key.
    Bytes numbers = {DER_INTEGER, 1, 0};
    const DerElement& parameters = algorithm.parameters;
    if (parameters.content)
        numbers.insert(numbers.end(), parameters.content, parameters.content + parameters.contentLength);
    numbers.insert(numbers.end(), {DER_INTEGER, 1, 0});
    numbers.insert(numbers.end(), content.begin(), content.end());
    const Bytes traditional = element(DER_CONSTRUCTED_SEQUENCE, numbers);
    status = parseWhole(inner, traditional.data(), size32(traditional));
    return status == STATUS_OK ? newPrivateDsaFromDer(key, inner) : status;
}

Status readKeyDocument(LoadedKey& loaded, const Document& document)
{
    if (document.status != STATUS_OK) return document.status;
    if (!document.label.empty() && !isKeyLabel(document.label)) return KEY_E_NO_READER;
    const std::uint8_t* bytes = document.bytes.data();
    const std::uint32_t size = size32(document.bytes);
    DerElement sequence;
    std::string shape;
    Status status = parseWhole(sequence, bytes, size);
    if (status == STATUS_OK) status = shapeOf(shape, sequence);
    if (status != STATUS_OK) return status;

    cPKA* key = nullptr;
    if (shape == "SSB") {
        CertificateInfo certificate;
        status = readWholeCertificate(certificate, document);
        if (status == STATUS_OK) status = readPublicKeyFromInfo(&key, certificate.subjectPublicKeyInfo);
    } else if (shape == "SB") {
        SubjectPublicKeyInfo info;
        status = readSubjectPublicKeyInfo(info, bytes, size);
        if (status == STATUS_OK) status = readPublicKeyFromInfo(&key, info);
    } else if (shape == "II") {
        status = newPublicRsaFromDer(&key, sequence);
    } else if (const KeyKind* const kind = findKindByShape(shape)) {
        loaded.isPrivate = true;
        status = kind->readPrivate(&key, sequence);
    } else if (shape.starts_with("ISO")) {
        loaded.isPrivate = true;
        status = readPrivateKeyInfo(&key, sequence);
    } else {
        // Private keys of other algorithms begin with their version.
        status = shape.starts_with("I") ? KEY_E_NO_READER : DER_E_MALFORMED;
    }
    loaded.key.reset(key);
    return status;
}

} // namespace

LoadedKey readKeyFile(const std::string& path)
{
    const std::vector<Document> documents = readDocuments(path);
    const Document* chosen = &documents.front();
    for (const Document& document : documents)
        if (isKeyLabel(document.label)) {
            chosen = &document;
            break;
        }
    if (chosen->encrypted || chosen->label.starts_with("ENCRYPTED"))
        throw Failure(path, withStatus("an encrypted key", KEY_E_NO_READER), EXIT_INPUT);
    LoadedKey loaded;
    check(path, readKeyDocument(loaded, *chosen));
    return loaded;
}

void usePublicHalf(LoadedKey& loaded, const std::string& path)
{
    if (!loaded.isPrivate) return;
    cPKA* made = nullptr;
    check(path, loaded.key->makePublic(&made));
    loaded.key.reset(made);
    loaded.isPrivate = false;
}

Fact keyFact(const LoadedKey& loaded, bool privateNumbers)
{
    Fact fact = findKind(loaded.key->algorithm())->numbers(*loaded.key, loaded.isPrivate, privateNumbers);
    fact.name = "key";
    return fact;
}

Fact publicKeyFact(const SubjectPublicKeyInfo& info)
{
    cPKA* key = nullptr;
    const Status status = readPublicKeyFromInfo(&key, info);
    const LoadedKey loaded{std::unique_ptr<cPKA>(key), false};
    if (status == STATUS_OK) return keyFact(loaded, false);
    return {"key", oidName(info.algorithm.oid.text) + ", " + withStatus(statusText(status), status)};
}

Status readWholeCertificate(CertificateInfo& certificate, const Document& document)
{
    if (document.status != STATUS_OK) return document.status;
    std::uint32_t left = 0;
    const Status status = readCertificate(certificate, document.bytes.data(), size32(document.bytes), nullptr, &left);
    return status != STATUS_OK ? status : left != 0 ? DER_E_LENGTH : STATUS_OK;
}

std::string oidName(const char* dottedText)
{
    const OidRow* row = nullptr;
    if (lookupOid(nullptr, 0, dottedText, &row) == 0) return dottedText;
    return row->longName ? row->longName : row->shortName ? row->shortName : dottedText;
}

std::string timeText(const DerTime& time)
{
    char text[80];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d UTC", int(time.year), int(time.month),
                  int(time.day), int(time.hour), int(time.minute), int(time.second));
    return text;
}

} // namespace toolbelt::cli
