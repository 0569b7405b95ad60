// DSA and ElGamal key generation: a domain that another program made from the same seed, the equations of the keys, the
// reports, and every way it may end early.
#include <gtest/gtest.h>

#include "crypto/bignum/modular.h"
#include "tests/pka/field_keys.h"
#include "tests/support/one_worker.h"
#include "tests/support/test_heap.h"

namespace toolbelt::test {
namespace {

struct Listener : ProgressSink
{
    Status report(const char* message, std::uint32_t zero, std::int32_t value) override
    {
        EXPECT_EQ(zero, 0u);
        if (message)
            phases.push_back(message + std::to_string(value));
        else
            last = value;
        return ++reports == stopAt ? 4711 : STATUS_OK;
    }
    std::vector<std::string> phases;
    std::int32_t last = 0;
    std::uint32_t reports = 0, stopAt = 0;
};

Bytes bytesOf(const BigNum& number)
{
    Bytes bytes((bnBitLength(number) + 7) / 8);
    bnExport(bytes.data(), sizeOf(bytes), number);
    return bytes;
}

// Generates from a copy of the seed, and hands the copy out.
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

bool isPower(const BigNum& power, const BigNum& base, const BigNum& exponent, const BigNum& p)
{
    BigNum result;
    return bnModExp(result, base, exponent, p) == STATUS_OK && bnCompare(result, power) == 0;
}

using DsaGenerate = OneWorker;
using ElgamalGenerate = OneWorker;
using FieldGenerate = OneWorker;

TEST_F(DsaGenerate, MakesTheDomainOfItsSeed)
{
    for (const Record& record : readVectors("keys/dsa-generate.txt")) {
        const Bytes right = record.bytes("seed");
        Bytes seed = join({right, record.bytes("x-bytes")});
        seed[19] -= 3; // seeds that give no prime are passed over
        Listener sink;
        DsaOwner key;
        const std::uint32_t bits = record.number("generate");
        ASSERT_EQ(generate(generateDsa, key, bits, seed, &sink), STATUS_OK);
        EXPECT_EQ(slice(seed, 0, 20), right);
        EXPECT_EQ(bytesOf(key->p), record.bytes("p"));
        EXPECT_EQ(bytesOf(key->q), record.bytes("q"));
        EXPECT_EQ(bytesOf(key->g), record.bytes("g"));
        EXPECT_EQ(bytesOf(key->x), record.bytes("x"));
        EXPECT_EQ(bytesOf(key->y), record.bytes("y"));
        EXPECT_EQ(key->magic, DSA_PRIVATE_MAGIC);
        EXPECT_EQ(sink.phases, (std::vector<std::string>{"Generates prime table\n1024", "Finds prime Q\n160",
                                                         "Finds prime P\n1024"}));
        EXPECT_EQ(sink.last, 40);
        EXPECT_EQ(bnPrimeTable(nullptr), nullptr);
        EXPECT_EQ(record.unread(), std::vector<std::string>());
    }
}

TEST_F(ElgamalGenerate, MakesKeysOfASafePrimeAndAGoodGenerator)
{
    ASSERT_EQ(bnBuildPrimeTable(64), STATUS_OK); // and leaves a table alone that is there
    for (const std::uint32_t bits : {128u, 136u, 256u}) {
        Bytes seed(elgamalSeedLength(bits), 0x2B);
        Listener sink;
        ElgamalOwner key;
        ASSERT_EQ(generate(generateElgamal, key, bits, seed, &sink), STATUS_OK);
        EXPECT_EQ(sink.phases, std::vector<std::string>{"Finds prime P\n" + std::to_string(bits)});
        EXPECT_EQ(sink.last, 24);
        EXPECT_EQ(bnBitLength(key->p), bits);
        EXPECT_EQ(key->magic, ELGAMAL_PRIVATE_MAGIC);
        BigNum t, q, root, inverse, remainder;
        ASSERT_EQ(bnSubtractWord(t, key->p, 1), STATUS_OK);
        ASSERT_EQ(bnShiftRight(q, t, 1), STATUS_OK);
        EXPECT_EQ(bnProbablePrime(key->p, 20), 1);
        EXPECT_EQ(bnProbablePrime(q, 20), 1);
        EXPECT_TRUE(isPower(t, key->g, q, key->p)) << "not a generator of the whole group";
        EXPECT_TRUE(bnCompareWord(key->g, 3) >= 0 && bnCompareWord(key->g, 100) < 0);
        EXPECT_TRUE(isPower(key->y, key->g, key->x, key->p));
        EXPECT_TRUE(bnCompareWord(key->x, 2) >= 0 && bnCompare(key->x, t) < 0);
        EXPECT_GT(bnBitLength(key->x), bits - 40);
    }
    EXPECT_NE(bnPrimeTable(nullptr), nullptr);
    bnFreePrimeTable();
    Bytes seed(elgamalSeedLength(128), 0xFF); // a start beyond which no safe prime of 128 bits is left
    ElgamalOwner key;
    const Status status = generate(generateElgamal, key, 128, seed, nullptr);
    EXPECT_TRUE(status == PKA_E_KEY || status == BN_E_RANGE) << status;
}

TEST_F(FieldGenerate, RefusesLengthsStopsAtAnyReportAndSurvivesFailures)
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

    const Bytes starts[] = {Bytes(DSA_SEED_LENGTH, 0x3D), Bytes(elgamalSeedLength(128), 0x3E)};
    for (const bool isDsa : {true, false}) {
        const auto make = [&](Listener* sink) {
            Bytes again = starts[isDsa ? 0 : 1];
            const Status status = isDsa ? generate(generateDsa, dsa, 512, again, sink)
                                        : generate(generateElgamal, elgamal, 128, again, sink);
            EXPECT_EQ(bnPrimeTable(nullptr), nullptr);
            return status;
        };
        Listener whole;
        ASSERT_EQ(make(&whole), STATUS_OK);
        dsa.reset(), elgamal.reset();
        ASSERT_EQ(whole.phases.size(), isDsa ? 3u : 2u);
        for (std::uint32_t at = 1; at < whole.reports; at = at < 3 ? at + 1 : at * 3 / 2) {
            TestHeap heap;
            Listener sink;
            sink.stopAt = at;
            EXPECT_EQ(make(&sink), 4711);
            EXPECT_EQ(sink.reports, at) << "called again after it said stop";
            dsa.reset(), elgamal.reset();
        }
        std::uint32_t ended = 0;
        for (const bool onwards : {false, true})
            for (std::uint32_t n = 1; n < 1500; n = n < 20 ? n + 1 : n * 4 / 3) {
                TestHeap heap;
                heap.failAt(n, onwards);
                const Status status = make(nullptr);
                EXPECT_TRUE(status == PKA_E_MEMORY || status == STATUS_OK) << n << ": " << status;
                EXPECT_TRUE(!onwards || !heap.failed() || status != STATUS_OK);
                ended += status != STATUS_OK;
                dsa.reset(), elgamal.reset();
            }
        EXPECT_GT(ended, 20u);
    }
}

} // namespace
} // namespace toolbelt::test
