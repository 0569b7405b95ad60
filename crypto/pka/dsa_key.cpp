// DSA key records: creation, import and export.
#include "crypto/pka/dsa_key.h"

#include <new>

#include "crypto/pka/key_bytes.h"
#include "crypto/pka/key_import.h"
#include "crypto/pka/key_number.h"
#include "crypto/pka/public_key_info.h"

namespace toolbelt {
namespace {

constexpr OidOctets OID_DSA = {7, {0x2A, 0x86, 0x48, 0xCE, 0x38, 0x04, 0x01}}; // 1.2.840.10040.4.1

bool isUsable(const DsaKey& key)
{
    const bool isPrivate = key.magic == DSA_PRIVATE_MAGIC;
    return !isTooLong(key.p) && bnTestBit(key.p, 0) == 1 && bnTestBit(key.q, 0) == 1 && isWithin(key.q, 2, key.p) &&
           bnBitLength(key.q) <= DSA_MAX_Q_BITS && isWithin(key.g, 2, key.p) &&
           isWithin(key.y, isPrivate ? 0 : 1, key.p) && (!isPrivate || isWithin(key.x, 1, key.q));
}

bool readPublic(DsaKey& key, const std::uint8_t* blob, std::uint32_t length, std::uint32_t& offset)
{
    return readPrefixed({&key.p, &key.q, &key.g, &key.y}, blob, length, offset);
}

} // namespace

DsaKey* newDsaKey(std::uint32_t magic)
{
    auto* key = new (std::nothrow) DsaKey;
    if (key != nullptr) key->magic = magic;
    return key;
}

std::int32_t dsaKeyLength(const DsaKey& key)
{
    if (key.magic != DSA_PUBLIC_MAGIC && key.magic != DSA_PRIVATE_MAGIC) return 0;
    return static_cast<std::int32_t>((bnBitLength(key.p) + 7) / 8);
}

Status ensureDsaPublicValue(DsaKey& key)
{
    return ensurePublicValue(key.y, key.g, key.x, key.p);
}

Status importDsaPublic(DsaKey** key, const std::uint8_t* blob, std::uint32_t length)
{
    return importKey(key, newDsaKey(DSA_PUBLIC_MAGIC), isUsable, [=](DsaKey& record) {
        std::uint32_t offset = 0;
        return readPublic(record, blob, length, offset);
    });
}

Status importDsaPrivate(DsaKey** key, const std::uint8_t* publicBlob, std::uint32_t publicLength,
                        const std::uint8_t* privateBlob, std::uint32_t privateLength)
{
    return importKey(key, newDsaKey(DSA_PRIVATE_MAGIC), isUsable, [=](DsaKey& record) {
        std::uint32_t offset = 0, privateOffset = 0;
        return readPublic(record, publicBlob, publicLength, offset) &&
               readPrefixed({&record.x}, privateBlob, privateLength, privateOffset);
    });
}

Status importDsaPrivateBlob(DsaKey** key, const std::uint8_t* blob, std::uint32_t length)
{
    return importKey(key, newDsaKey(DSA_PRIVATE_MAGIC), isUsable, [=](DsaKey& record) {
        std::uint32_t offset = 0;
        return readPublic(record, blob, length, offset) && readPrefixed({&record.x}, blob, length, offset);
    });
}

Status importDsaPublicInfo(DsaKey** key, const DerElement& parameters, const DerElement& bits)
{
    if (parameters.tag == DER_NULL) return DER_E_NULL_PARAMETERS;
    if (!isSequence(parameters)) return DER_E_TAG;
    return derStatusOf(importKey(key, newDsaKey(DSA_PUBLIC_MAGIC), isUsable, [&](DsaKey& record) {
        return readIntegers({&record.p, &record.q, &record.g}, parameters.content, parameters.contentLength) &&
               readIntegers({&record.y}, bits.content, bits.contentLength);
    }));
}

Status importDsaPrivateDer(DsaKey** key, const DerElement& sequence)
{
    return importKey(key, newDsaKey(DSA_PRIVATE_MAGIC), isUsable, [&](DsaKey& record) {
        return readVersionedSequence({&record.p, &record.q, &record.g, &record.y, &record.x}, sequence);
    });
}

Status exportDsaPublicDer(const DsaKey& key, std::uint8_t* output, std::uint32_t* inOutSize)
{
    return writePublicKeyInfo(OID_DSA, {&key.p, &key.q, &key.g}, key.y, output, inOutSize);
}

Status exportDsaPrivateDer(DsaKey& key, std::uint8_t* output, std::uint32_t* inOutSize)
{
    if (key.magic != DSA_PRIVATE_MAGIC || ensureDsaPublicValue(key) != STATUS_OK) return PKA_E_HEADER;
    return writeSequence(true, {&key.p, &key.q, &key.g, &key.y, &key.x}, output, inOutSize);
}

} // namespace toolbelt
