// ElGamal key records: creation, import and export.
#include "crypto/pka/elgamal_key.h"

#include <new>

#include "crypto/encoding/der_cursor.h"
#include "crypto/pka/key_bytes.h"
#include "crypto/pka/key_import.h"
#include "crypto/pka/key_number.h"
#include "crypto/pka/public_key_info.h"

namespace toolbelt {
namespace {

// pkcs-3 dhKeyAgreement, 1.2.840.113549.1.3.1, and X9.42 dhpublicnumber, 1.2.840.10046.2.1
constexpr OidOctets OID_PKCS3 = {9, {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x03, 0x01}};
constexpr OidOctets OID_X942 = {7, {0x2A, 0x86, 0x48, 0xCE, 0x3E, 0x02, 0x01}};

// A fourth number of so few bits is a length and not the order of a subgroup.
constexpr std::uint32_t LENGTH_BITS = 32;

bool isUsable(const ElgamalKey& key)
{
    const bool isPrivate = key.magic == ELGAMAL_PRIVATE_MAGIC;
    return !isTooLong(key.p) && bnTestBit(key.p, 0) == 1 && isWithin(key.g, 2, key.p) &&
           isWithin(key.y, isPrivate ? 0 : 1, key.p) && (!isPrivate || isWithin(key.x, 1, key.p)) &&
           !isTooLong(key.fourth);
}

bool readPublic(ElgamalKey& key, const std::uint8_t* blob, std::uint32_t length, std::uint32_t& offset)
{
    return readPrefixed({&key.p, &key.g, &key.y}, blob, length, offset);
}

// p, g and, when there is more, the fourth number.
bool readParameters(ElgamalKey& key, DerCursor input)
{
    for (BigNum* number : {&key.p, &key.g})
        if (readBigNum(*number, &input.data, &input.available) != STATUS_OK) return false;
    return input.available == 0 || readBigNum(key.fourth, &input.data, &input.available) == STATUS_OK;
}

} // namespace

ElgamalKey* newElgamalKey(std::uint32_t magic)
{
    ElgamalOwner key(new (std::nothrow) ElgamalKey);
    if (!key || bnResize(key->fourth, 8) != STATUS_OK) return nullptr;
    key->magic = magic;
    return key.release();
}

std::int32_t elgamalKeyLength(const ElgamalKey& key)
{
    return static_cast<std::int32_t>((bnBitLength(key.p) + 7) / 8);
}

Status ensureElgamalPublicValue(ElgamalKey& key)
{
    return ensurePublicValue(key.y, key.g, key.x, key.p);
}

Status importElgamalPublic(ElgamalKey** key, const std::uint8_t* blob, std::uint32_t length)
{
    return importKey(key, newElgamalKey(ELGAMAL_PUBLIC_MAGIC), isUsable, [=](ElgamalKey& record) {
        std::uint32_t offset = 0;
        return readPublic(record, blob, length, offset);
    });
}

Status importElgamalPrivate(ElgamalKey** key, const std::uint8_t* publicBlob, std::uint32_t publicLength,
                            const std::uint8_t* privateBlob, std::uint32_t privateLength)
{
    return importKey(key, newElgamalKey(ELGAMAL_PRIVATE_MAGIC), isUsable, [=](ElgamalKey& record) {
        std::uint32_t offset = 0, privateOffset = 0;
        return readPublic(record, publicBlob, publicLength, offset) &&
               readPrefixed({&record.x}, privateBlob, privateLength, privateOffset);
    });
}

Status importElgamalPrivateBlob(ElgamalKey** key, const std::uint8_t* blob, std::uint32_t length)
{
    return importKey(key, newElgamalKey(ELGAMAL_PRIVATE_MAGIC), isUsable, [=](ElgamalKey& record) {
        std::uint32_t offset = 0;
        return readPublic(record, blob, length, offset) && readPrefixed({&record.x}, blob, length, offset);
    });
}

Status importElgamalPublicInfo(ElgamalKey** key, const DerElement& parameters, const DerElement& bits)
{
    if (!isSequence(parameters)) return DER_E_TAG;
    return derStatusOf(importKey(key, newElgamalKey(ELGAMAL_PUBLIC_MAGIC), isUsable, [&](ElgamalKey& record) {
        return readParameters(record, contentOf(parameters)) &&
               readIntegers({&record.y}, bits.content, bits.contentLength);
    }));
}

Status importElgamalPrivateDer(ElgamalKey** key, const DerElement& sequence)
{
    return importKey(key, newElgamalKey(ELGAMAL_PRIVATE_MAGIC), isUsable, [&](ElgamalKey& record) {
        return readVersionedSequence({&record.p, &record.g, &record.y, &record.x}, sequence);
    });
}

Status exportElgamalPublicDer(const ElgamalKey& key, std::uint8_t* output, std::uint32_t* inOutSize)
{
    if (bnCompareWord(key.fourth, 0) == 0)
        return writePublicKeyInfo(OID_PKCS3, {&key.p, &key.g}, key.y, output, inOutSize);
    const OidOctets& oid = bnBitLength(key.fourth) <= LENGTH_BITS ? OID_PKCS3 : OID_X942;
    return writePublicKeyInfo(oid, {&key.p, &key.g, &key.fourth}, key.y, output, inOutSize);
}

Status exportElgamalPrivateDer(ElgamalKey& key, std::uint8_t* output, std::uint32_t* inOutSize)
{
    if (key.magic != ELGAMAL_PRIVATE_MAGIC || ensureElgamalPublicValue(key) != STATUS_OK) return PKA_E_HEADER;
    return writeSequence(true, {&key.p, &key.g, &key.y, &key.x}, output, inOutSize);
}

} // namespace toolbelt
