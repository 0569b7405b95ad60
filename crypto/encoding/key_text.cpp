// Public keys as text: from PEM through SubjectPublicKeyInfo (RFC 5280, section 4.1.2.7) to a key object.
//
// The algorithm identifier's row in OidTable holds a public-key code, and the code has a row here. A new kind of key
// adds its row, and nothing else changes.
#include "crypto/encoding/key_text.h"

#include "crypto/encoding/armour.h"
#include "crypto/encoding/der_cursor.h"
#include "crypto/pka/dsa.h"
#include "crypto/pka/elgamal.h"
#include "crypto/pka/public_key_info.h"

namespace toolbelt {
namespace {

// Codes of RFC 4880, section 9.1, for keys that are marked for one use.
constexpr std::uint8_t RSA_ENCRYPT_ONLY = 2;
constexpr std::uint8_t RSA_SIGN_ONLY = 3;
constexpr std::uint8_t ELGAMAL_ENCRYPT_ONLY = 16;

Status readInfo(SubjectPublicKeyInfo& info, DerCursor& input)
{
    if (const Status status = takeElement(info.element, input, DER_SEQUENCE)) return status;
    return readPublicKeyInfoParts(info.algorithm, info.key, info.element);
}

// Whatever is wrong with the key, the caller hears that it could not be read.
Status publicRsaFromInfo(cPKA** key, const SubjectPublicKeyInfo& info)
{
    RsaPublicKey* record = nullptr;
    if (readRsaPublicKey(&record, info) != STATUS_OK) return DER_E_MALFORMED;
    cPKA* const object = newPublicRsa(RsaPublicOwner(record));
    if (!object) return DER_E_MALFORMED;
    *key = object;
    return STATUS_OK;
}

// An object over the record that the importer reads from the parameters and the key.
template <typename Record>
Status fromParts(cPKA** key, const SubjectPublicKeyInfo& info,
                 Status (*import)(Record**, const DerElement& parameters, const DerElement& bits),
                 cPKA* (*make)(std::unique_ptr<Record>))
{
    Record* record = nullptr;
    if (const Status status = import(&record, info.algorithm.parameters, info.key.element)) return status;
    cPKA* const object = make(std::unique_ptr<Record>(record));
    if (!object) return DER_E_MEMORY;
    *key = object;
    return STATUS_OK;
}

Status publicDsaFromInfo(cPKA** key, const SubjectPublicKeyInfo& info)
{
    return fromParts<DsaKey>(key, info, importDsaPublicInfo, newPublicDsa);
}

Status publicElgamalFromInfo(cPKA** key, const SubjectPublicKeyInfo& info)
{
    return fromParts<ElgamalKey>(key, info, importElgamalPublicInfo, newPublicElgamal);
}

} // namespace

const KeyReaderRow keyReaders[KEY_READER_COUNT] = {
    {PKA_RSA, newPublicRsa, publicRsaFromInfo},
    {RSA_ENCRYPT_ONLY, newPublicRsa, publicRsaFromInfo},
    {RSA_SIGN_ONLY, newPublicRsa, publicRsaFromInfo},
    {PKA_DSA, newPublicDsa, publicDsaFromInfo},
    {ELGAMAL_ENCRYPT_ONLY, newPublicElgamal, publicElgamalFromInfo},
    {PKA_ELGAMAL, newPublicElgamal, publicElgamalFromInfo},
};

Status readSubjectPublicKeyInfo(SubjectPublicKeyInfo& info, const std::uint8_t* data, std::uint32_t available,
                                const std::uint8_t** rest, std::uint32_t* restLength)
{
    return readEmptied(readInfo, info, data, available, rest, restLength);
}

Status readPublicKeyFromInfo(cPKA** key, const SubjectPublicKeyInfo& info)
{
    if (!info.algorithm.row) return KEY_E_NO_READER;
    for (std::uint32_t i = KEY_READER_COUNT; i-- > 0;)
        if (keyReaders[i].publicKey == info.algorithm.row->publicKey) return keyReaders[i].fromInfo(key, info);
    return KEY_E_NO_READER;
}

cPKA* readPemPublicKey(const char* text, Status* status)
{
    cPKA* key = nullptr;
    cByteBuffer bytes;
    SubjectPublicKeyInfo info;
    Status outcome = TEXT_E_MALFORMED;
    if (text && decodeArmoured(bytes, text, TEXT_ZERO_TERMINATED, PEM_PUBLIC_KEY_BEGIN, PEM_PUBLIC_KEY_END)) {
        outcome = readSubjectPublicKeyInfo(info, bytes.data(), bytes.length());
        if (outcome == STATUS_OK) outcome = readPublicKeyFromInfo(&key, info);
    }
    if (status) *status = outcome;
    return key;
}

Status readRsaPublicKey(RsaPublicKey** record, const SubjectPublicKeyInfo& info)
{
    DerElement sequence;
    DerCursor input = contentOf(info.key.element);
    if (const Status status = takeElement(sequence, input, DER_SEQUENCE)) return status;
    return importRsaPublicDer(record, sequence);
}

Status exportSshRsa(cPKA& key, std::uint8_t* output, std::uint32_t* inOutSize)
{
    return key.exportSsh(output, inOutSize);
}

} // namespace toolbelt
