// Key generation: the reports, the keys made, a domain that another program made from the same seed, and every way it
// may end early.
#include "crypto/bignum/modular.h"
#include "crypto/pka/rsa_generate.h"
#include "tests/pka/keys.h"
#include "tests/support/one_worker.h"
#include "tests/support/recording_sink.h"
#include "tests/support/test_heap.h"

namespace toolbelt::test {
namespace {

using Generate = OneWorker;
using Strings = std::vector<std::string>;

Bytes seedOf(std::uint32_t length)
{
    Bytes seed(length);
    for (std::uint32_t i = 0; i < length; ++i) seed[i] = static_cast<std::uint8_t>(0xC5 + 151 * i * i);
    seed[0] |= 0xC0;
    seed[length / 2] |= 0xC0;
    return seed;
}

// Generates from the seed, which is changed. What fails must make no key.
Status generate(RsaPrivateOwner& key, Bytes& seed, std::uint32_t e, ProgressSink* sink, bool safe = false)
{
    RsaPrivateKey* made = nullptr;
    const Status status = generateRsa(&made, seed.data(), sizeOf(seed), e, sink, safe);
    EXPECT_EQ(made != nullptr, status == STATUS_OK);
    key.reset(made);
    return status;
}
template <typename Record>
Status generate(Status (*generator)(Record**, std::uint32_t, std::uint8_t*, std::uint32_t, ProgressSink*),
                std::unique_ptr<Record>& key, std::uint32_t bits, Bytes& seed, ProgressSink* sink)
{
    Record* made = nullptr;
    const Status status = generator(&made, bits, seed.data(), sizeOf(seed), sink);
    EXPECT_EQ(made != nullptr, status == STATUS_OK);
    key.reset(made);
    return status;
}

void expectPrime(const BigNum& n, bool safe)
{
    BigNum half;
    ASSERT_EQ(bnShiftRight(half, n, 1), STATUS_OK);
    EXPECT_EQ(bnProbablePrime(n, 20), 1);
    EXPECT_TRUE(!safe || bnProbablePrime(half, 20) == 1);
}

bool isPower(const BigNum& power, const BigNum& base, const BigNum& exponent, const BigNum& p)
{
    BigNum result;
    return bnModExp(result, base, exponent, p) == STATUS_OK && bnCompare(result, power) == 0;
}

TEST_F(Generate, RsaKeysHaveTheLengthAskedForAndWork)
{
    struct Case
    {
        std::uint32_t length, e;
        bool safe;
    };
    for (const Case& c : {Case{65, 3, false}, Case{129, 17, false}, Case{40, 0, true}}) {
        SCOPED_TRACE(c.length);
        Bytes seed = seedOf(c.length);
        RecordingSink sink;
        RsaPrivateOwner key;
        ASSERT_EQ(generate(key, seed, c.e, &sink, c.safe), STATUS_OK);
        const std::uint32_t bits = 8 * c.length, p = 8 * (c.length / 2);
        EXPECT_EQ(bnBitLength(*key->n), bits);
        EXPECT_EQ(bnCompareWord(*key->e, c.e ? c.e : 65537), 0);
        EXPECT_GT(bnCompare(*key->p, *key->q), 0);
        expectPrime(*key->p, c.safe);
        expectPrime(*key->q, c.safe);
        EXPECT_TRUE(rsaSelfTest(*key));
        EXPECT_EQ(sink.phases,
                  (Strings{"Generates prime table\n" + std::to_string(bits), "Finds prime P\n" + std::to_string(p),
                           "Finds prime Q\n" + std::to_string(bits - p)}));
        const auto last = c.safe ? 24 : 25;
        EXPECT_EQ(sink.ends, (std::vector<std::int32_t>{static_cast<std::int32_t>(4 * bits), last, last}));
        EXPECT_EQ(bnPrimeTable(nullptr), nullptr);
    }
}

TEST_F(Generate, RsaRefusesWhatCannotBecomeAKeyAndUsesATableThatIsThere)
{
    RsaPrivateOwner key;
    Bytes shortest(15), longest(PKA_MAX_KEY_BITS / 8 + 1), seed = seedOf(32);
    EXPECT_EQ(generate(key, shortest, 0, nullptr), PKA_E_LENGTH);
    EXPECT_EQ(generate(key, longest, 0, nullptr), PKA_E_LENGTH);
    EXPECT_EQ(generate(key, seed, 1, nullptr), PKA_E_KEY);
    EXPECT_EQ(generate(key, seed, 65536, nullptr), PKA_E_KEY);
    Bytes last(32, 0xFF); // the search wraps around, to a prime that is too short
    EXPECT_EQ(generate(key, last, 0, nullptr), PKA_E_KEY);

    // Both halves start at one number, so the second search ends where the first did and goes on from there.
    std::copy_n(seed.begin(), 16, seed.begin() + 16);
    ASSERT_EQ(bnBuildPrimeTable(64), STATUS_OK);
    RecordingSink sink;
    ASSERT_EQ(generate(key, seed, 0, &sink), STATUS_OK);
    EXPECT_EQ(sink.phases, (Strings{"Finds prime P\n128", "Finds prime Q\n128", "Finds prime Q\n128"}));
    EXPECT_GT(bnCompare(*key->p, *key->q), 0);
    EXPECT_NE(bnPrimeTable(nullptr), nullptr) << "the table was not the generator's to free";
    bnFreePrimeTable();

    ASSERT_EQ(bnAddWord(*key->d, *key->d, 2), STATUS_OK);
    EXPECT_TRUE(rsaSelfTest(*key)) << "d itself takes no part";
    ASSERT_EQ(bnAddWord(*key->dq, *key->dq, 2), STATUS_OK);
    EXPECT_FALSE(rsaSelfTest(*key));
}

TEST_F(Generate, DsaMakesTheDomainOfItsSeed)
{
    for (const Record& record : readVectors("keys/dsa-generate.txt")) {
        const Bytes right = record.bytes("seed");
        Bytes seed = join({right, record.bytes("x-bytes")});
        seed[19] -= 3; // seeds that give no prime are passed over
        RecordingSink sink;
        DsaOwner key;
        ASSERT_EQ(generate(generateDsa, key, record.number("generate"), seed, &sink), STATUS_OK);
        EXPECT_EQ(slice(seed, 0, 20), right);
        for (const auto& [name, number] :
             {std::pair{"p", &key->p}, {"q", &key->q}, {"g", &key->g}, {"x", &key->x}, {"y", &key->y}})
            EXPECT_EQ(bytesOf(*number), record.bytes(name)) << name;
        EXPECT_EQ(key->magic, DSA_PRIVATE_MAGIC);
        EXPECT_EQ(sink.phases, (Strings{"Generates prime table\n1024", "Finds prime Q\n160", "Finds prime P\n1024"}));
        EXPECT_EQ(sink.ends.back(), 40);
        EXPECT_EQ(record.unread(), Strings());
    }
}

TEST_F(Generate, ElgamalMakesASafePrimeAndAGoodGenerator)
{
    ASSERT_EQ(bnBuildPrimeTable(64), STATUS_OK); // and leaves a table alone that is there
    for (const std::uint32_t bits : {136u, 256u}) {
        Bytes seed(elgamalSeedLength(bits), 0x2B);
        RecordingSink sink;
        ElgamalOwner key;
        ASSERT_EQ(generate(generateElgamal, key, bits, seed, &sink), STATUS_OK);
        EXPECT_EQ(sink.phases, Strings{"Finds prime P\n" + std::to_string(bits)});
        EXPECT_EQ(sink.ends.back(), 24);
        EXPECT_EQ(bnBitLength(key->p), bits);
        EXPECT_EQ(key->magic, ELGAMAL_PRIVATE_MAGIC);
        expectPrime(key->p, true);
        BigNum t, q;
        ASSERT_EQ(bnSubtractWord(t, key->p, 1), STATUS_OK);
        ASSERT_EQ(bnShiftRight(q, t, 1), STATUS_OK);
        EXPECT_TRUE(isPower(t, key->g, q, key->p)) << "not a generator of the whole group";
        EXPECT_TRUE(bnCompareWord(key->g, 3) >= 0 && bnCompareWord(key->g, 100) < 0);
        EXPECT_TRUE(isPower(key->y, key->g, key->x, key->p));
        EXPECT_LT(bnCompare(key->x, t), 0);
        EXPECT_GT(bnBitLength(key->x), bits - 40);
    }
    EXPECT_NE(bnPrimeTable(nullptr), nullptr);
    bnFreePrimeTable();
    Bytes seed(elgamalSeedLength(128), 0xFF); // a start beyond which no safe prime of 128 bits is left
    ElgamalOwner key;
    const Status status = generate(generateElgamal, key, 128, seed, nullptr);
    EXPECT_TRUE(status == PKA_E_KEY || status == BN_E_RANGE) << status;
}

TEST_F(Generate, FieldKeysRefuseOtherLengths)
{
    DsaOwner dsa;
    ElgamalOwner elgamal;
    Bytes seed(DSA_SEED_LENGTH, 0x3D), longer(DSA_SEED_LENGTH + 1);
    for (const std::uint32_t bits : {0u, 448u, 520u, 16448u})
        EXPECT_EQ(generate(generateDsa, dsa, bits, seed, nullptr), PKA_E_LENGTH) << bits;
    EXPECT_EQ(generate(generateDsa, dsa, 512, longer, nullptr), PKA_E_LENGTH);
    for (const std::uint32_t bits : {0u, 120u, 129u, 16392u}) {
        Bytes fitting(elgamalSeedLength(bits));
        EXPECT_EQ(generate(generateElgamal, elgamal, bits, fitting, nullptr), PKA_E_LENGTH) << bits;
    }
    EXPECT_EQ(generate(generateElgamal, elgamal, 128, seed, nullptr), PKA_E_LENGTH);
}

TEST_F(Generate, StopsAtAnyReport)
{
    // In the table, at its end, at the phases, in them.
    const auto makeRsa = [](ProgressSink* sink) {
        RsaPrivateOwner key;
        Bytes seed = seedOf(32);
        return generate(key, seed, 0, sink);
    };
    const auto makeDsa = [](ProgressSink* sink) {
        DsaOwner key;
        Bytes seed(DSA_SEED_LENGTH, 0x3D);
        return generate(generateDsa, key, 512, seed, sink);
    };
    const auto makeElgamal = [](ProgressSink* sink) {
        ElgamalOwner key;
        Bytes seed(elgamalSeedLength(128), 0x3E);
        return generate(generateElgamal, key, 128, seed, sink);
    };
    const std::pair<Status (*)(ProgressSink*), std::vector<std::size_t>> generators[] = {
        {makeRsa, {1, 2, 1024, 1025, 1026}},
        {makeDsa, {1, 2, 2048, 2049, 2050, 2060}},
        {makeElgamal, {1, 2, 512, 513, 514}},
    };
    for (const auto& [make, stops] : generators)
        for (const std::size_t at : stops) {
            const TestHeap heap;
            RecordingSink sink;
            sink.stopAt = at;
            EXPECT_EQ(make(&sink), RecordingSink::STOP) << at;
            EXPECT_EQ(sink.reports(), at) << "called again after it said stop";
            EXPECT_EQ(bnPrimeTable(nullptr), nullptr) << at;
        }
}

} // namespace
} // namespace toolbelt::test
