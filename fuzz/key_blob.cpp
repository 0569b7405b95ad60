// Key blobs: which are accepted is what the documented limits say, and accepted keys hold the numbers of the blob.
#include <cstring>

#include "crypto/bignum/modular.h"
#include "crypto/encoding/key_text.h"
#include "crypto/pka/dsa.h"
#include "crypto/pka/elgamal.h"
#include "crypto/pka/rsa.h"
#include "fuzz/keys.h"

namespace toolbelt::fuzz {
namespace {

bool within(const Bytes& x, const Bytes& least, const Bytes& limit)
{
    return !isLess(x, least) && isLess(x, limit);
}
bool isOddAbove1(const Bytes& x)
{
    return !x.empty() && x.back() % 2 == 1 && x != Bytes{1};
}

// The completed numbers fit one another, whatever they were in the blob.
void checkPrivateRsa(const RsaPrivateKey& key)
{
    BigNum p1, q1, phi, result;
    require((bnSubtractWord(p1, *key.p, 1) | bnSubtractWord(q1, *key.q, 1) | bnMultiply(phi, p1, q1)) == STATUS_OK,
            "primes");
    const auto is = [&](Status status, const BigNum& expected) {
        return status == STATUS_OK && bnCompare(result, expected) == 0;
    };
    const auto isInverse = [&](const BigNum& a, const BigNum& b, const BigNum& n) {
        return bnModMultiply(result, a, b, n) == STATUS_OK && bnCompareWord(result, bnCompareWord(n, 1) != 0) == 0;
    };
    require(bnCompare(*key.p, *key.q) >= 0 && is(bnMultiply(result, *key.p, *key.q), *key.n) &&
                key.bits == bnBitLength(*key.n),
            "the modulus");
    require(isInverse(*key.d, *key.e, phi) && isInverse(*key.qinv, *key.q, *key.p), "inverses");
    require(is(bnModulo(result, *key.d, p1), *key.dp) && is(bnModulo(result, *key.d, q1), *key.dq), "d in parts");
}

// ssh-rsa: a reader of ten lines finds the key's numbers, each with just as many octets as keep it positive.
void checkSshRsa(cPKA& key, const Bytes& n, const Bytes& e)
{
    std::uint32_t size = 0;
    require(exportSshRsa(key, nullptr, &size) == STATUS_BUFFER_TOO_SMALL, "the size needed");
    Bytes output(size - 1, 0xA5);
    std::uint32_t small = size - 1;
    require(exportSshRsa(key, output.data(), &small) == STATUS_BUFFER_TOO_SMALL && small == size &&
                output == Bytes(size - 1, 0xA5),
            "nothing is written when it does not fit");
    output.resize(size);
    require(exportSshRsa(key, output.data(), &size) == STATUS_OK && size == output.size(), "a blob");
    std::size_t at = 0;
    const auto field = [&] {
        require(output.size() - at >= 4, "a length");
        std::size_t length = 0;
        for (int i = 0; i < 4; ++i) length = length << 8 | output[at++];
        require(output.size() - at >= length, "a field");
        at += length;
        return Bytes(&output[at - length], &output[at - length] + length);
    };
    const Bytes name = field();
    require(name.size() == 7 && std::memcmp(name.data(), "ssh-rsa", 7) == 0, "its name");
    for (const Bytes& number : {e, n}) {
        const Bytes octets = field();
        require(trimmed(octets) == number && octets.size() == bitLength(number) / 8 + 1, "a number");
    }
    require(at == output.size(), "nothing behind");
}

const Target target("key_blob", [](Input input) {
    const std::uint32_t kind = input.byte() % 6, wanted = kind == 3 ? 6 : kind == 0 ? 2 : kind % 3 == 1 ? 4 : 3;
    const bool raw = input.byte() % 2 == 0;
    Bytes blob;
    for (std::uint32_t i = 0; !raw && i < wanted + (kind > 3); ++i) append(blob, prefixed(input.number(40)));
    if (raw) blob = input.take(kind == 3 ? 240 : 2048);
    const Bytes exact(blob.begin(), blob.end());

    std::vector<Bytes> x; // the numbers, read by hand
    for (std::size_t at = 0; x.size() < wanted + (kind > 3) && at + 2 <= blob.size();) {
        const std::size_t size = (exact[at] * 256u + exact[at + 1] + 7) / 8;
        if (at + 2 + size > exact.size()) break;
        x.push_back(trimmed(Bytes(exact.begin() + static_cast<std::ptrdiff_t>(at + 2),
                                  exact.begin() + static_cast<std::ptrdiff_t>(at + 2 + size))));
        at += 2 + size;
    }
    bool usable = x.size() == wanted + (kind > 3);
    const Bytes one = {1}, two = {2};
    for (const Bytes& number : x) usable = usable && bitLength(number) <= PKA_MAX_KEY_BITS;
    if (usable && kind == 0)
        usable = isOddAbove1(x[0]) && isOddAbove1(x[1]) &&
                 bitLength(x[1]) <= (bitLength(x[0]) > RSA_LONG_BITS ? RSA_LONG_KEY_EXPONENT_BITS : RSA_LONG_BITS);
    if (usable && kind % 3 == 1) // p, q, g, y and x; a private key may come without y
        usable = isOddAbove1(x[0]) && isOddAbove1(x[1]) && isLess(x[1], x[0]) && bitLength(x[1]) <= DSA_MAX_Q_BITS &&
                 within(x[2], two, x[0]) && within(x[3], kind == 1 ? one : Bytes(), x[0]) &&
                 (kind == 1 || within(x[4], one, x[1]));
    if (usable && kind % 3 == 2) // p, g, y and x
        usable = isOddAbove1(x[0]) && within(x[1], two, x[0]) && within(x[2], kind == 2 ? one : Bytes(), x[0]) &&
                 (kind == 2 || within(x[3], one, x[0]));

    constexpr cPKA* (*factories[])(const std::uint8_t*, std::uint32_t) = {
        newPublicRsa, newPublicDsa, newPublicElgamal, newPrivateRsa, newPrivateDsa, newPrivateElgamal};
    const Key key(factories[kind](addressOf(exact), sizeOf(exact)));
    require(kind == 3 ? usable || !key : (key != nullptr) == usable, "the documented limits");
    if (!key) return;
    if (kind == 3) {
        checkPrivateRsa(static_cast<cPrivateRSA&>(*key).record());
        Bytes again = exported(*key, &cPKA::exportDer);
        DerElement element;
        cPKA* copy = nullptr;
        require(parseElement(element, again.data(), sizeOf(again)) == STATUS_OK &&
                    newPrivateRsaFromDer(&copy, element) == STATUS_OK &&
                    exported(*Key(copy), &cPKA::exportDer) == again,
                "the same key from its DER form");
    } else if (kind == 0) {
        require(exported(*key, &cPKA::exportNumbers) == blobOf({x[0], x[1]}), "the same numbers");
        checkSshRsa(*key, x[0], x[1]);
    } else if (kind % 3 == 1) {
        const DsaKey& record =
            kind == 1 ? static_cast<cPublicDSA&>(*key).record() : static_cast<cPrivateDSA&>(*key).record();
        require(valueOf(record.p) == x[0] && valueOf(record.q) == x[1] && valueOf(record.g) == x[2],
                "the same numbers");
        require(kind == 1 || valueOf(record.x) == x[4], "the private number");
    } else {
        const ElgamalKey& record =
            kind == 2 ? static_cast<cPublicElgamal&>(*key).record() : static_cast<cPrivateElgamal&>(*key).record();
        require(valueOf(record.p) == x[0] && valueOf(record.g) == x[1], "the same numbers");
        require(kind == 2 || valueOf(record.x) == x[3], "the private number");
    }
    const Bytes modulus = kind == 3 ? valueOf(*static_cast<cPrivateRSA&>(*key).record().n) : x[0];
    require(key->keyLength() == static_cast<std::int32_t>((bitLength(modulus) + 7) / 8), "k");
});

} // namespace
} // namespace toolbelt::fuzz
