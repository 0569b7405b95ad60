#include "cli/key_kinds.h"

#include <algorithm>

#include "cli/library_output.h"
#include "cli/random.h"
#include "cli/text.h"
#include "crypto/encoding/base64.h"
#include "crypto/pka/dsa.h"
#include "crypto/pka/elgamal.h"
#include "crypto/pka/rsa.h"
#include "crypto/pka/rsa_generate.h"

namespace toolbelt::cli {
namespace {

struct Named
{
    const char* name;
    const BigNum* number;
};

Fact tell(const char* what, const BigNum& modulus, std::initializer_list<Named> numbers)
{
    Fact fact{"", what, {numberFact("bits", bnBitLength(modulus))}};
    for (const Named& named : numbers) fact.parts.push_back({named.name, numberText(*named.number)});
    return fact;
}

Fact rsaNumbers(const cPKA& key, bool isPrivate, bool privateNumbers)
{
    if (!isPrivate) {
        const RsaPublicKey& r = static_cast<const cPublicRSA&>(key).record();
        return tell("RSA public key", *r.n, {{"n", r.n}, {"e", r.e}});
    }
    const RsaPrivateKey& r = static_cast<const cPrivateRSA&>(key).record();
    if (!privateNumbers) return tell("RSA private key", *r.n, {{"n", r.n}, {"e", r.e}});
    return tell(
        "RSA private key", *r.n,
        {{"n", r.n}, {"e", r.e}, {"d", r.d}, {"p", r.p}, {"q", r.q}, {"dp", r.dp}, {"dq", r.dq}, {"qinv", r.qinv}});
}

const DsaKey& dsaRecord(const cPKA& key, bool isPrivate)
{
    return isPrivate ? static_cast<const cPrivateDSA&>(key).record() : static_cast<const cPublicDSA&>(key).record();
}

Fact dsaNumbers(const cPKA& key, bool isPrivate, bool privateNumbers)
{
    const DsaKey& r = dsaRecord(key, isPrivate);
    const char* const what = isPrivate ? "DSA private key" : "DSA public key";
    if (!privateNumbers || !isPrivate) return tell(what, r.p, {{"p", &r.p}, {"q", &r.q}, {"g", &r.g}, {"y", &r.y}});
    return tell(what, r.p, {{"p", &r.p}, {"q", &r.q}, {"g", &r.g}, {"y", &r.y}, {"x", &r.x}});
}

Fact elgamalNumbers(const cPKA& key, bool isPrivate, bool privateNumbers)
{
    const ElgamalKey& r = isPrivate ? static_cast<const cPrivateElgamal&>(key).record()
                                    : static_cast<const cPublicElgamal&>(key).record();
    const char* const what = isPrivate ? "ElGamal private key" : "ElGamal public key";
    if (!privateNumbers || !isPrivate) return tell(what, r.p, {{"p", &r.p}, {"g", &r.g}, {"y", &r.y}});
    return tell(what, r.p, {{"p", &r.p}, {"g", &r.g}, {"y", &r.y}, {"x", &r.x}});
}

cPKA* made(cPKA* key)
{
    if (!key) throw std::bad_alloc();
    return key;
}

constexpr char SUBJECT[] = "key generate";

cPKA* generateRsaKey(const GenerateOptions& options, ProgressSink& sink)
{
    const std::uint32_t length = options.bits / 8;
    Bytes seed = systemRandom(length);
    seed[0] |= 0xC0; // the product of two such numbers has all its bits
    seed[length / 2] |= 0xC0;
    RsaPrivateKey* record = nullptr;
    check(SUBJECT, generateRsa(&record, seed.data(), length, options.exponent, &sink, options.safePrimes));
    return made(newPrivateRsa(RsaPrivateOwner(record)));
}

cPKA* generateDsaKey(const GenerateOptions& options, ProgressSink& sink)
{
    Bytes seed = systemRandom(DSA_SEED_LENGTH);
    DsaKey* record = nullptr;
    check(SUBJECT, generateDsa(&record, options.bits, seed.data(), size32(seed), &sink));
    return made(newPrivateDsa(DsaOwner(record)));
}

cPKA* generateElgamalKey(const GenerateOptions& options, ProgressSink& sink)
{
    Bytes seed = systemRandom(elgamalSeedLength(options.bits));
    ElgamalKey* record = nullptr;
    check(SUBJECT, generateElgamal(&record, options.bits, seed.data(), size32(seed), &sink));
    return made(newPrivateElgamal(ElgamalOwner(record)));
}

std::uint32_t nothing(cPKA&)
{
    return 0;
}
std::uint32_t dsaPool(cPKA&)
{
    return DSA_SECRET_LENGTH;
}
std::uint32_t elgamalPool(cPKA& key)
{
    return static_cast<std::uint32_t>(key.keyLength());
}

std::uint32_t anyDigest(const cPKA&, bool)
{
    return UINT32_MAX;
}
// What slot 1 says, for a q of that size; a longer q takes more, or nobody else would agree.
std::uint32_t dsaDigest(const cPKA& key, bool isPrivate)
{
    const std::uint32_t q = (bnBitLength(dsaRecord(key, isPrivate).q) + 7) / 8;
    return std::max(q, DSA_DIGEST_LENGTH);
}

constexpr KeyKind kinds[] = {
    {PKA_RSA, "RSA", "rsa", "RSA PRIVATE KEY", "IIIIIIIII", SignatureFormat::raw, CipherText::block, nothing, anyDigest,
     newPrivateRsaFromDer, rsaNumbers, generateRsaKey},
    {PKA_DSA, "DSA", "dsa", "DSA PRIVATE KEY", "IIIIII", SignatureFormat::der, CipherText::none, dsaPool, dsaDigest,
     newPrivateDsaFromDer, dsaNumbers, generateDsaKey},
    {PKA_ELGAMAL, "ElGamal", "elgamal", "ELGAMAL PRIVATE KEY", "IIIII", SignatureFormat::prefixed, CipherText::prefixed,
     elgamalPool, anyDigest, newPrivateElgamalFromDer, elgamalNumbers, generateElgamalKey},
};

template <typename Wanted>
const KeyKind* find(Wanted wanted)
{
    for (const KeyKind& kind : kinds)
        if (wanted(kind)) return &kind;
    return nullptr;
}

} // namespace

const KeyKind* findKind(std::uint32_t algorithm)
{
    return find([&](const KeyKind& kind) { return kind.algorithm == algorithm; });
}

const KeyKind* findKindByOption(const std::string& option)
{
    return find([&](const KeyKind& kind) { return kind.option == option; });
}

const KeyKind* findKindByShape(const std::string& shape)
{
    return find([&](const KeyKind& kind) { return kind.privateShape == shape; });
}

Bytes pemText(const std::string& label, const Bytes& der)
{
    const std::string begin = "-----BEGIN " + label + "-----", end = "-----END " + label + "-----";
    return outputOf(label, [&](std::uint8_t* output, std::uint32_t* size) {
        return base64Encode(reinterpret_cast<char*>(output), size, der.data(), size32(der), begin.c_str(), end.c_str(),
                            nullptr, BASE64_STANDARD_ALPHABET, BASE64_NO_CHECKSUM);
    });
}

} // namespace toolbelt::cli
