// SubjectPublicKeyInfo: a key that was read is written and read again as the same key.
#include <algorithm>
#include <iterator>
#include <memory>

#include "crypto/encoding/key_text.h"
#include "crypto/encoding/key_write.h"
#include "fuzz/target.h"

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
    const Key key = read(input.take(2048), status);
    if (!key) {
        constexpr Status known[] = {
            DER_E_LENGTH,          DER_E_TAG,      DER_E_MALFORMED, DER_E_LIMIT, DER_E_UNKNOWN_ALGORITHM,
            DER_E_NULL_PARAMETERS, KEY_E_NO_READER};
        require(std::find(std::begin(known), std::end(known), status) != std::end(known), "a documented status");
        return;
    }
    require(key->keyLength() > 0 && key->keyLength() <= 2048, "a key's length");
    const Bytes written = write(*key);
    const Key again = read(written, status);
    require(again && again->algorithm() == key->algorithm() && again->keyLength() == key->keyLength(), "the same key");
    require(write(*again) == written, "the same numbers");
});

} // namespace
} // namespace toolbelt::fuzz
