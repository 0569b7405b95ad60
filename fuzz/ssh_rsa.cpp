// ssh-rsa: a reader of ten lines finds the key's numbers in what was written.
#include <cstring>

#include "crypto/encoding/key_text.h"
#include "fuzz/keys.h"

namespace toolbelt::fuzz {
namespace {

// The next field; the number in it must have just as many octets as keep it positive.
Bytes field(const Bytes& blob, std::size_t& at)
{
    require(blob.size() - at >= 4, "a length");
    std::size_t length = 0;
    for (int i = 0; i < 4; ++i) length = length << 8 | blob[at++];
    require(blob.size() - at >= length, "a field");
    at += length;
    return Bytes(blob.begin() + static_cast<std::ptrdiff_t>(at - length),
                 blob.begin() + static_cast<std::ptrdiff_t>(at));
}

const Target target("ssh_rsa", [](Input input) {
    const Bytes n = trimmed(input.number(600)), e = trimmed(input.number(300));
    const Bytes blob = blobOf({n, e});
    const Key key(newPublicRsa(blob.data(), sizeOf(blob)));
    const std::uint32_t limit = bitLength(n) > RSA_LONG_BITS ? RSA_LONG_KEY_EXPONENT_BITS : RSA_LONG_BITS;
    const auto isOddAndAbove1 = [](const Bytes& x) { return !x.empty() && x.back() % 2 == 1 && x != Bytes{1}; };
    require((key != nullptr) == (isOddAndAbove1(n) && isOddAndAbove1(e) && bitLength(e) <= limit), "a usable key");
    if (!key) return;

    std::uint32_t size = 0;
    require(exportSshRsa(*key, nullptr, &size) == STATUS_BUFFER_TOO_SMALL, "the size needed");
    Bytes output(size - 1, 0xA5);
    std::uint32_t small = size - 1;
    require(exportSshRsa(*key, output.data(), &small) == STATUS_BUFFER_TOO_SMALL && small == size &&
                output == Bytes(size - 1, 0xA5),
            "nothing is written when it does not fit");
    output.resize(size);
    require(exportSshRsa(*key, output.data(), &size) == STATUS_OK && size == output.size(), "a blob");
    std::size_t at = 0;
    const Bytes name = field(output, at);
    require(name.size() == 7 && std::memcmp(name.data(), "ssh-rsa", 7) == 0, "its name");
    for (const Bytes& number : {e, n}) {
        const Bytes octets = field(output, at);
        require(trimmed(octets) == number && octets.size() == bitLength(number) / 8 + 1, "a number");
    }
    require(at == output.size(), "nothing behind");
});

} // namespace
} // namespace toolbelt::fuzz
