// SubjectPublicKeyInfo: a key that was read is written and read again as the same key.
#include <algorithm>
#include <iterator>
#include <memory>

#include "crypto/encoding/key_text.h"
#include "crypto/encoding/key_write.h"
#include "crypto/pka/rsa.h"
#include "fuzz/der_model.h"
#include "fuzz/natural.h"

namespace toolbelt::fuzz {
namespace {

using Key = std::unique_ptr<cPKA>;

Key read(const Bytes& bytes, Status& status)
{
    SubjectPublicKeyInfo info;
    cPKA* key = nullptr;
    status = readSubjectPublicKeyInfo(info, addressOf(bytes), sizeOf(bytes));
    if (status != STATUS_OK) {
        require(!info.element.start && !info.algorithm.row && !info.algorithm.oid.text, "a failed record is empty");
        return nullptr;
    }
    const std::uint8_t* const end = info.element.start + info.element.totalLength;
    require(info.key.element.content + info.key.element.contentLength <= end && info.algorithm.row, "its parts");
    status = readPublicKeyFromInfo(&key, info);
    require((status == STATUS_OK) == (key != nullptr), "a key or a status");
    return Key(key);
}

// The INTEGER at the front of data, which moves behind it; nothing when there is none of a definite length.
Bytes integerAt(const std::uint8_t*& data, std::uint32_t& left)
{
    const Shape shape = shapeOf(data, left);
    if (shape.status != STATUS_OK || shape.indefinite) return {};
    const Bytes value(data + shape.header, data + shape.total());
    data += shape.total();
    left -= shape.total();
    return value;
}

// The modulus and the exponent are those INTEGERs of the SEQUENCE in the BIT STRING.
void compareRsa(cPublicRSA& key, const Bytes& bytes)
{
    SubjectPublicKeyInfo info;
    require(readSubjectPublicKeyInfo(info, addressOf(bytes), sizeOf(bytes)) == STATUS_OK, "the same again");
    const std::uint8_t* at = info.key.element.content;
    std::uint32_t left = info.key.element.contentLength;
    const Shape sequence = shapeOf(at, left);
    require(sequence.status == STATUS_OK, "what a key was read from");
    if (sequence.indefinite) return;
    at += sequence.header;
    left -= sequence.header;
    for (const BigNum* number : {key.record().n, key.record().e}) {
        const Bytes value = integerAt(at, left);
        if (value.empty()) return;
        require(valueOf(*number) == trimmed(value), "the numbers of the key");
    }
}

Bytes write(cPKA& key)
{
    std::uint32_t size = 0;
    require(exportSubjectPublicKeyInfo(key, nullptr, &size) == STATUS_BUFFER_TOO_SMALL, "the size needed");
    Bytes bytes(size);
    require(exportSubjectPublicKeyInfo(key, bytes.data(), &size) == STATUS_OK && size == bytes.size(), "a key's info");
    return bytes;
}

const Target target("key_info", [](Input input) {
    Status status;
    const Bytes bytes = input.take(2048);
    const Key key = read(bytes, status);
    if (!key) {
        constexpr Status known[] = {
            DER_E_LENGTH,          DER_E_TAG,      DER_E_MALFORMED, DER_E_LIMIT, DER_E_UNKNOWN_ALGORITHM,
            DER_E_NULL_PARAMETERS, KEY_E_NO_READER};
        require(std::find(std::begin(known), std::end(known), status) != std::end(known), "a documented status");
        return;
    }
    require(key->keyLength() > 0 && key->keyLength() <= 2048, "a key's length");
    if (auto* const rsa = dynamic_cast<cPublicRSA*>(key.get())) compareRsa(*rsa, bytes);
    const Bytes written = write(*key);
    const Key again = read(written, status);
    require(again && again->algorithm() == key->algorithm() && again->keyLength() == key->keyLength(), "the same key");
    require(write(*again) == written, "the same numbers");
});

} // namespace
} // namespace toolbelt::fuzz
