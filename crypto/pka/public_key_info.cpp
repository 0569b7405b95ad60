// SubjectPublicKeyInfo: its parts, and the frame that a key is written into.
#include "crypto/pka/public_key_info.h"

#include "crypto/encoding/der_cursor.h"
#include "crypto/pka/slot_buffers.h"

namespace toolbelt {

Status readPublicKeyInfoParts(AlgorithmIdentifier& algorithm, DerBitString& key, const DerElement& sequence)
{
    DerCursor inside = contentOf(sequence);
    if (const Status status =
            readAlgorithmIdentifier(algorithm, inside.data, inside.available, &inside.data, &inside.available))
        return status;
    return readBitString(key, inside.data, inside.available);
}

Status PublicKeyInfoParts::read(const DerElement& element, std::uint32_t publicKey)
{
    if (!isSequence(element)) return PKA_E_KEY;
    if (const Status status = readPublicKeyInfoParts(algorithm, key, element)) return status;
    return algorithm.row->publicKey == publicKey ? STATUS_OK : PKA_E_KEY;
}

Status PublicKeyInfoOutput::open(std::uint8_t* output, std::uint32_t* capacity, const OidOctets& algorithm,
                                 std::uint32_t parametersLength, std::uint32_t keyLength)
{
    DerElement oid, identifier, bits, info;
    const std::uint32_t identifierLength = prepareElement(
        identifier, DER_CONSTRUCTED_SEQUENCE, prepareElement(oid, DER_OID, algorithm.length) + parametersLength);
    totalLength = prepareElement(info, DER_CONSTRUCTED_SEQUENCE, identifierLength + prepareBitString(bits, keyLength));
    if (!hasRoom(capacity, totalLength)) return STATUS_BUFFER_TOO_SMALL;

    std::uint32_t end = 0; // each SEQUENCE's offset moves behind its content at once
    std::uint32_t offset = placeElement(info, output, totalLength, &end);
    std::uint32_t inside = offset;
    const std::uint32_t header = offset ? placeElement(identifier, output, totalLength, &offset) : 0;
    inside += header;
    if (header == 0 || placeElement(oid, output, totalLength, &inside) == 0 ||
        setContent(oid, algorithm.octets, algorithm.length) != STATUS_OK ||
        placeBitString(bits, output, totalLength, &offset) == 0)
        return PKA_E_HEADER;
    parameters = output + inside;
    key = output + (totalLength - keyLength);
    return STATUS_OK;
}

Status writePublicKeyInfo(const OidOctets& algorithm, NumberList parameters, const BigNum& publicValue,
                          std::uint8_t* output, std::uint32_t* inOutSize)
{
    std::uint32_t parametersLength = 0, offset = 0;
    if (writeSequence(false, parameters, nullptr, &parametersLength) != STATUS_BUFFER_TOO_SMALL) return PKA_E_HEADER;
    DerElement integer;
    const std::uint32_t keyLength = prepareBigNum(integer, publicValue);

    PublicKeyInfoOutput info;
    if (const Status status = info.open(output, inOutSize, algorithm, parametersLength, keyLength)) return status;
    if (writeSequence(false, parameters, info.parameters, &parametersLength) != STATUS_OK ||
        placeElement(integer, info.key, keyLength, &offset) == 0 || writeBigNum(integer, publicValue) != STATUS_OK)
        return PKA_E_HEADER;
    *inOutSize = info.totalLength;
    return STATUS_OK;
}

} // namespace toolbelt
