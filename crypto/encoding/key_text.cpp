// Public keys as text: from PEM through SubjectPublicKeyInfo (RFC 5280, section 4.1.2.7) to a key object.
//
// The algorithm identifier's row in OidTable holds a public-key code, and the code has a row here. A new kind of key
// adds its row, and nothing else changes.
#include "crypto/encoding/key_text.h"

#include "crypto/encoding/armour.h"
#include "crypto/encoding/der_cursor.h"

namespace toolbelt {
namespace {

// Codes of RFC 4880, section 9.1, for RSA keys that are marked for one use.
constexpr std::uint8_t RSA_ENCRYPT_ONLY = 2;
constexpr std::uint8_t RSA_SIGN_ONLY = 3;

Status readInfo(SubjectPublicKeyInfo& info, DerCursor& input)
{
    if (const Status status = takeElement(info.element, input, DER_SEQUENCE)) return status;
    DerCursor inside = contentOf(info.element);
    if (const Status status =
            readAlgorithmIdentifier(info.algorithm, inside.data, inside.available, &inside.data, &inside.available))
        return status;
    return readBitString(info.key, inside.data, inside.available);
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

} // namespace

const KeyReaderRow keyReaders[KEY_READER_COUNT] = {
    {PKA_RSA, newPublicRsa, publicRsaFromInfo},
    {RSA_ENCRYPT_ONLY, newPublicRsa, publicRsaFromInfo},
    {RSA_SIGN_ONLY, newPublicRsa, publicRsaFromInfo},
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
