// The public-key engine: raw operations, signatures, and the making of keys.
#include "crypto/pka/dsa.h"
#include "crypto/pka/random_pool.h"
#include "crypto/pka/rsa.h"
#include "crypto/pka/rsa_generate.h"
#include "speed/inputs.h"
#include "speed/job.h"

namespace toolbelt::speed {
namespace {

// An object over a private key, by the factory that reads it.
template <typename Factory>
std::shared_ptr<cPKA> readKey(const char* text, Factory factory)
{
    DerElement sequence;
    cPKA* key = nullptr;
    const Bytes der = decode(text);
    check(parseElement(sequence, der.data(), size32(der)), "a key cannot be read");
    check(factory(&key, sequence), "a key cannot be read");
    return std::shared_ptr<cPKA>(key);
}

std::shared_ptr<cPKA> publicHalf(cPKA& key)
{
    cPKA* half = nullptr;
    check(key.makePublic(&half), "a key has no public half");
    return std::shared_ptr<cPKA>(half);
}

Bytes blockBelow(cPKA& key)
{
    Bytes block = pattern(static_cast<std::uint32_t>(key.keyLength()));
    block[0] = 0; // below the modulus
    return block;
}

Call privateCall(const char* text)
{
    const auto key = readKey(text, newPrivateRsaFromDer);
    return [key, block = blockBelow(*key), output = blockBelow(*key)]() mutable {
        check(rsaPrivateOperation(static_cast<cPrivateRSA&>(*key).record(), block.data(), output.data(), RSA_RAW),
              "a private operation failed");
    };
}

Call publicCall(const char* text)
{
    const auto key = publicHalf(*readKey(text, newPrivateRsaFromDer));
    return [key, block = blockBelow(*key), output = blockBelow(*key)]() mutable {
        check(rsaPublicOperation(static_cast<cPublicRSA&>(*key).record(), block.data(), output.data(), RSA_RAW),
              "a public operation failed");
    };
}

// Another key each time, the same ones in every run: lengths of searches differ widely.
Call generateCall(std::uint32_t bits)
{
    return [length = bits / 8, number = 0u]() mutable {
        Bytes seed = pattern(length, ++number);
        seed[0] |= 0xC0, seed[length / 2] |= 0xC0;
        RsaPrivateKey* key = nullptr;
        check(generateRsa(&key, seed.data(), length, 0, nullptr, false), "no key was made");
        freeRsaKey(key);
    };
}

const Bytes& digest()
{
    static const Bytes bytes = pattern(20);
    return bytes;
}

Bytes dsaSignature(cPKA& key)
{
    Bytes pool = pattern(DSA_SECRET_LENGTH), signature(512);
    setRandomPool(pool.data(), size32(pool)); // each signature's secret is taken from it
    std::uint32_t length = size32(signature);
    const Status status = key.signPrefixed(signature.data(), &length, digest().data(), size32(digest()));
    resetRandomPool();
    check(status, "a signature failed");
    signature.resize(length);
    return signature;
}

} // namespace

void addKeyJobs(std::vector<Job>& jobs)
{
    for (const auto& [size, key] :
         {std::pair("1024", RSA_1024_KEY), std::pair("2048", RSA_2048_KEY), std::pair("4096", RSA_4096_KEY)}) {
        jobs.push_back({std::string("rsa-private/") + size, 1, "ops/s", [key = key] { return privateCall(key); }});
        jobs.push_back({std::string("rsa-public/") + size, 1, "ops/s", [key = key] { return publicCall(key); }});
    }
    jobs.push_back({"rsa-keygen/1024", 1, "ops/s", [] { return generateCall(1024); }, true});
    jobs.push_back({"rsa-keygen/2048", 1, "ops/s", [] { return generateCall(2048); }, true});
    jobs.push_back({"dsa-sign/1024", 1, "ops/s",
                    [] { return Call([key = readKey(DSA_1024_KEY, newPrivateDsaFromDer)] { dsaSignature(*key); }); }});
    jobs.push_back(
        {"dsa-verify/1024", 1, "ops/s", [] {
             const auto key = readKey(DSA_1024_KEY, newPrivateDsaFromDer);
             return Call([half = publicHalf(*key), signature = dsaSignature(*key)] {
                 check(half->verifyPrefixed(signature.data(), size32(signature), digest().data(), size32(digest())),
                       "a signature does not verify");
             });
         }});
}

} // namespace toolbelt::speed
