// PEM public keys: the key of a text is the key of the bytes that the model finds in it.
#include "crypto/encoding/key_text.h"
#include "fuzz/keys.h"
#include "fuzz/text_model.h"

namespace toolbelt::fuzz {
namespace {

Key readDirectly(const Bytes& bytes, Status& status)
{
    SubjectPublicKeyInfo info;
    cPKA* key = nullptr;
    status = readSubjectPublicKeyInfo(info, addressOf(bytes), sizeOf(bytes));
    if (status == STATUS_OK) status = readPublicKeyFromInfo(&key, info);
    return Key(key);
}

const Target target("pem", [](Input input) {
    std::string text;
    Bytes bytes;
    Status expected = TEXT_E_MALFORMED, status = STATUS_OK;
    if (input.byte() % 2 == 0) { // bytes of a key, to be wrapped
        bytes = input.take(2048);
        if (bytes.empty()) return;
        const std::string end = std::string(PEM_PUBLIC_KEY_END) + '-';
        std::uint32_t size = 8192;
        text.resize(size);
        require(base64Encode(text.data(), &size, bytes.data(), sizeOf(bytes), PEM_PUBLIC_KEY_BEGIN, end.c_str(),
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
    Key direct;
    if (!bytes.empty()) direct = readDirectly(bytes, expected);
    const std::unique_ptr<char[]> exact(new char[text.size() + 1]);
    text.copy(exact.get(), text.size());
    exact[text.size()] = 0;
    const Key key(readPemPublicKey(exact.get(), &status));
    require(status == expected && (key != nullptr) == (direct != nullptr), "the status of the bytes");
    require(!key || exported(*key, &cPKA::exportDer) == exported(*direct, &cPKA::exportDer), "the key of the bytes");
});

} // namespace
} // namespace toolbelt::fuzz
