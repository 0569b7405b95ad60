// Signature verification against the documented rules written anew: RSA with blocks made by the private key and with
// arbitrary numbers, DSA and ElGamal in groups so small that 64-bit arithmetic is the model.
#include "crypto/bignum/modular.h"
#include "crypto/pka/dsa.h"
#include "crypto/pka/elgamal.h"
#include "crypto/pka/rsa.h"
#include "fuzz/der_model.h"
#include "fuzz/keys.h"
#include "tests/support/vectors.h"

namespace toolbelt::fuzz {
namespace {

Bytes element(std::uint8_t tag, const Bytes& content)
{
    Bytes bytes = {tag, static_cast<std::uint8_t>(content.size())};
    append(bytes, content);
    return bytes;
}

struct RsaPair
{
    Bytes n, e;
    Key open, secret;

    RsaPair(const char* larger, const char* smaller, const Bytes& exponent) : e(exponent)
    {
        const Bytes p = test::fromHex(larger), q = test::fromHex(smaller);
        BigNum left, right, product;
        load(left, p);
        load(right, q);
        require(bnMultiply(product, left, right) == STATUS_OK, "a modulus");
        n = valueOf(product);
        // The rest is completed from the primes.
        const Bytes one = {1}, blob = blobOf({n, e}), all = blobOf({n, e, one, q, p, one});
        open.reset(newPublicRsa(blob.data(), sizeOf(blob)));
        secret.reset(newPrivateRsa(all.data(), sizeOf(all)));
        require(open && secret, "a key");
    }
};

bool accepts(const Bytes& block, const Bytes& digest)
{
    std::size_t at = 2;
    if (block[0] != 0 || block[1] != 1) return false;
    while (at < block.size() && block[at] == 0xFF) ++at;
    if (at == block.size() || block[at] != 0) return false;
    const Bytes payload(block.begin() + static_cast<std::ptrdiff_t>(at) + 1, block.end());
    if (payload.size() == digest.size()) return payload == digest;
    const Shape info = shapeOf(addressOf(payload), sizeOf(payload));
    if (info.status != STATUS_OK || info.total() != payload.size() || (payload[0] & 0x1F) != DER_SEQUENCE) return false;
    AlgorithmIdentifier algorithm;
    const std::uint8_t* rest = nullptr;
    std::uint32_t left = 0;
    if (readAlgorithmIdentifier(algorithm, payload.data() + info.header, info.content, &rest, &left) != STATUS_OK)
        return false;
    const Shape octets = shapeOf(rest, left);
    if (octets.status != STATUS_OK || octets.total() != left || (rest[0] & 0x1F) != DER_OCTET_STRING) return false;
    return Bytes(rest + octets.header, rest + left) == digest;
}

void rsa(Input& input, const RsaPair& key, bool hasBlock)
{
    constexpr std::uint32_t k = 32;
    const std::uint32_t form = input.byte(), padding = input.byte();
    const Bytes digest = input.part();
    Bytes block(k), signature(k);
    if ((form & 1) != 0) { // what a signer lays out, with any padding
        const Bytes payload = input.rest();
        block = {0, 1};
        block.resize(2 + padding % (k - 2), 0xFF);
        block.push_back(0);
        append(block, payload);
    } else {
        block = input.rest();
    }
    block.resize(k);
    if (hasBlock) {
        if (!isLess(block, key.n)) return;
        require(rsaPrivateOperation(static_cast<cPrivateRSA&>(*key.secret).record(), block.data(), signature.data(),
                                    RSA_RAW) == STATUS_OK,
                "a signature");
    } else {
        signature = block;
        BigNum base, exponent, modulus, power;
        load(base, signature);
        load(exponent, key.e);
        load(modulus, key.n);
        require(bnModExp(power, base, exponent, modulus) == STATUS_OK, "a power");
        const Bytes raised = valueOf(power);
        block.assign(k - raised.size(), 0);
        append(block, raised);
    }
    // A short signature with a small exponent is refused whatever it shows.
    const bool isShort = key.e == Bytes{3} && trimmed(signature).size() < k / 3 * 2;
    const bool valid = isLess(signature, key.n) && !isShort && accepts(block, digest);
    const Status expected = valid ? STATUS_OK : PKA_E_FAILED;
    for (const Bytes& whole : {element(4, signature), [&] {
                                   Bytes bits = {0};
                                   append(bits, signature);
                                   return element(3, bits);
                               }()})
        require(key.open->verifyDer(whole.data(), sizeOf(whole), addressOf(digest), sizeOf(digest)) == expected,
                "the verdict of the documented rules");
    Bytes number = prefixed(signature);
    number.resize(k + 2);
    require(key.open->verifyPrefixed(number.data(), k + 2, addressOf(digest), sizeOf(digest)) ==
                (digest.size() > k ? PKA_E_LENGTH : expected),
            "the same from a prefixed signature");
}

std::uint64_t raise(std::uint64_t base, std::uint64_t exponent, std::uint64_t p)
{
    std::uint64_t result = 1;
    for (base %= p; exponent != 0; exponent >>= 1, base = base * base % p)
        if (exponent & 1) result = result * base % p;
    return result;
}

bool dsaHolds(std::uint64_t r, std::uint64_t s, std::uint64_t h)
{
    constexpr std::uint64_t p = 7879, q = 101, g = 170, y = 4567;
    if (r == 0 || r >= q || s == 0 || s >= q) return false;
    const std::uint64_t w = raise(s, q - 2, q);
    return raise(g, h % q * w % q, p) * raise(y, r * w % q, p) % p % q == r;
}

bool elgamalHolds(std::uint64_t r, std::uint64_t s, std::uint64_t h)
{
    constexpr std::uint64_t p = 467, g = 2, y = 132;
    return raise(y, r, p) * raise(r, s, p) % p == raise(g, h, p);
}

void field(Input& input, bool isDsa)
{
    static const Bytes dsaBlob = blobOf({ofWord(7879), ofWord(101), ofWord(170), ofWord(4567)});
    static const Bytes elgamalBlob = blobOf({ofWord(467), ofWord(2), ofWord(132)});
    static const Key keys[] = {Key(newPublicElgamal(elgamalBlob.data(), sizeOf(elgamalBlob))),
                               Key(newPublicDsa(dsaBlob.data(), sizeOf(dsaBlob)))};
    const std::uint32_t wide = input.byte() & 1;
    const auto read = [&] {
        const std::uint32_t low = input.byte();
        return low | wide * input.byte() << 8;
    };
    const std::uint32_t r = read(), s = read();
    const Bytes digest = input.take(4);
    std::uint32_t h = 0;
    for (const std::uint8_t byte : digest) h = h << 8 | byte;
    const Status expected = (isDsa ? dsaHolds(r, s, h) : elgamalHolds(r, s, h)) ? STATUS_OK : PKA_E_FAILED;
    const Bytes number = blobOf({ofWord(r), ofWord(s)});
    Bytes integers;
    for (const std::uint32_t one : {r, s})
        append(integers, element(2, {0, static_cast<std::uint8_t>(one >> 8), static_cast<std::uint8_t>(one)}));
    const Bytes der = element(0x30, integers);
    cPKA& key = *keys[isDsa];
    require(key.verifyDer(der.data(), sizeOf(der), addressOf(digest), sizeOf(digest)) == expected, "the equation");
    // Two zero bytes at the very end are a zero; so are two in front of another number.
    require(key.verifyPrefixed(number.data(), sizeOf(number), addressOf(digest), sizeOf(digest)) == expected,
            "the same from a prefixed pair");
}

const Target target("verify", [](Input input) {
    // 256 bits: room for short digests in a DigestInfo, and fast.
    static const RsaPair common("e2e6a552266e572e1106def0d237d88b", "c265a53e7abaf38b971abc1e65e88d17", {1, 0, 1});
    static const RsaPair three("de51e467c52be814a3fe9305925e6c23", "d20d2b27e4a0b4daf703ef54ca3af9a9", {3});
    const std::uint32_t kind = input.byte() % 6;
    if (kind < 4) return rsa(input, kind % 2 ? three : common, kind < 2);
    field(input, kind == 4);
});

} // namespace
} // namespace toolbelt::fuzz
