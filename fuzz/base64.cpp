// Base64: decoding agrees with the model whatever the capacity, and gives back what was encoded.
#include "fuzz/text_model.h"

namespace toolbelt::fuzz {
namespace {

const char* const alphabets[] = {BASE64_STANDARD_ALPHABET,
                                 "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_=",
                                 "./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz*"};

// The body alone; what stands around it is the target armour's.
void encodeAndDecode(Input input, const char* alphabet)
{
    const std::uint32_t flags = input.byte() & 3;
    const Bytes data = input.rest();
    std::uint32_t size = 0;
    const auto encode = [&](Bytes& text) {
        return base64Encode(reinterpret_cast<char*>(text.data()), &size, addressOf(data), sizeOf(data), nullptr,
                            nullptr, nullptr, alphabet, flags);
    };
    Bytes none;
    require(encode(none) == (size == 0 ? STATUS_OK : STATUS_BUFFER_TOO_SMALL), "the size of the text");
    Bytes text(size), decoded(data.size());
    require(encode(text) == STATUS_OK && size == text.size(), "the text");
    std::uint32_t decodedSize = sizeOf(decoded), consumed = 0;
    if ((flags & BASE64_NO_CHECKSUM) == 0 && alphabet[BASE64_PAD] != '=') return; // the checksum line is not known
    require(base64Decode(decoded.data(), &decodedSize, reinterpret_cast<const char*>(addressOf(text)), size, alphabet,
                         &consumed) == STATUS_OK &&
                decodedSize == data.size() && decoded == data && consumed <= size,
            "decode(encode(x)) = x");
}

const Target target("base64", [](Input input) {
    const std::uint32_t kind = input.byte() % 8;
    if (kind < 3) return encodeAndDecode(input, alphabets[kind]);
    const std::string own = input.text(kind == 6 ? 65 : 0), alphabet = own.size() == 65 ? own : alphabets[kind % 3];
    const std::uint32_t spare = input.byte() % 4;
    const Bytes exact = input.rest();
    const char* const text = reinterpret_cast<const char*>(addressOf(exact));
    const DecodedText expected = decodeText(std::string(exact.begin(), exact.end()), alphabet);

    std::uint32_t size = 0, consumed = 99;
    const Status first = base64Decode(nullptr, &size, text, sizeOf(exact), alphabet.c_str());
    if (expected.status == TEXT_E_MALFORMED && first == TEXT_E_MALFORMED) return;
    require(expected.size == 0 || (first == STATUS_BUFFER_TOO_SMALL && size == expected.size), "the size asked for");
    Bytes output(expected.size + spare);
    size = sizeOf(output);
    const Status status = base64Decode(output.data(), &size, text, sizeOf(exact), alphabet.c_str(), &consumed);
    require(status == expected.status, "the model's status");
    if (status == STATUS_OK) {
        output.resize(size);
        require(output == expected.bytes && consumed == expected.consumed, "the model's bytes");
    } else if (status == TEXT_E_MALFORMED) {
        require(output == Bytes(output.size()) && consumed == 99, "nothing is left of what was decoded");
    }
    if (expected.size != 0) {
        Bytes small(expected.size - 1, 0xA5);
        const Bytes untouched = small;
        size = sizeOf(small);
        require(base64Decode(small.data(), &size, text, sizeOf(exact), alphabet.c_str()) == STATUS_BUFFER_TOO_SMALL &&
                    size == expected.size && small == untouched,
                "too small is said before anything is written");
    }
});

} // namespace
} // namespace toolbelt::fuzz
