// Public keys, as a SubjectPublicKeyInfo and as the PEM text of one: what was read is written and read again as the
// same key, and the key of a text is the key of the bytes that the model finds in it.
#include <algorithm>
#include <iterator>

#include "crypto/encoding/key_text.h"
#include "crypto/encoding/key_write.h"
#include "crypto/pka/rsa.h"
#include "fuzz/der_model.h"
#include "fuzz/keys.h"
#include "fuzz/text_model.h"

namespace toolbelt::fuzz {
namespace {

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

// The modulus and the exponent are the INTEGERs of the SEQUENCE in the BIT STRING, as far as lengths are definite.
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
        const Shape integer = shapeOf(at, left);
        if (integer.status != STATUS_OK || integer.indefinite) return;
        require(valueOf(*number) == trimmed(Bytes(at + integer.header, at + integer.total())), "the key's numbers");
        at += integer.total();
        left -= integer.total();
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

void check(const Key& key, const Bytes& bytes, Status status)
{
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
}

const Target target("key_info", [](Input input) {
    std::string text;
    Bytes bytes;
    Key direct;
    Status expected = TEXT_E_MALFORMED, status = STATUS_OK;
    if (input.byte() % 2 == 0) { // the bytes, to be made a text
        bytes = input.take(2048);
        if (bytes.empty()) {
            direct = read(bytes, expected);
            return check(direct, bytes, expected);
        }
        const std::string end = std::string(PEM_PUBLIC_KEY_END) + '-';
        std::uint32_t size = 8192;
        text.resize(size);
        require(base64Encode(text.data(), &size, addressOf(bytes), sizeOf(bytes), PEM_PUBLIC_KEY_BEGIN, end.c_str(),
                             nullptr, nullptr, BASE64_NO_CHECKSUM) == STATUS_OK,
                "a text is written");
        text.resize(size);
    } else {
        const std::string begin = PEM_PUBLIC_KEY_BEGIN;
        text = input.text(4096);
        text.resize(std::min(text.size(), text.find('\0')));
        std::size_t from = text.find(begin);
        if (from != std::string::npos) from += begin.size();
        const std::size_t to = from == std::string::npos ? from : text.find(PEM_PUBLIC_KEY_END, from);
        const std::string body = to == std::string::npos ? "" : text.substr(from, to - from);
        const DecodedText decoded = decodeText(body.substr(headerLengthOf(body)), BASE64_STANDARD_ALPHABET);
        if (decoded.status == STATUS_OK) bytes = decoded.bytes;
    }
    if (!bytes.empty()) {
        direct = read(bytes, expected);
        check(direct, bytes, expected);
    }
    const std::unique_ptr<char[]> exact(new char[text.size() + 1]);
    text.copy(exact.get(), text.size());
    exact[text.size()] = 0;
    const Key key(readPemPublicKey(exact.get(), &status));
    require(status == expected && (key != nullptr) == (direct != nullptr), "the status of the bytes");
    require(!key || exported(*key, &cPKA::exportDer) == exported(*direct, &cPKA::exportDer), "the key of the bytes");
});

} // namespace
} // namespace toolbelt::fuzz
