// Memory: what keys answer when there is none, and what they leave behind in what they give back.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>

#include "tests/pka/field_keys.h"
#include "tests/support/test_heap.h"

namespace toolbelt::test {
namespace {

// Runs the call with every allocation failing in turn: the first `early` of them must give one status, those after
// them one of the others.
template <typename Call>
void expectEveryFailure(Status first, std::uint32_t early, std::initializer_list<Status> others, Call call)
{
    const std::uint32_t injected = forEachFailingAllocation([&](TestHeap& heap) {
        const Status status = call();
        EXPECT_EQ(heap.failed(), status != STATUS_OK);
        if (!heap.failed()) return;
        if (heap.allocations() <= early)
            EXPECT_EQ(status, first);
        else
            EXPECT_TRUE(std::count(others.begin(), others.end(), status)) << status << ", " << heap.allocations();
    });
    EXPECT_GT(injected, 2u);
    EXPECT_GT(injected, 2 * early) << "nothing failed later";
}
template <typename Call>
void expectEveryFailure(Status status, Call call)
{
    expectEveryFailure(status, 0, {status}, call);
}

TEST(RsaMemory, EveryFailingAllocationGivesTheSlotsStatus)
{
    RsaNumbers wrong = rsaKey("rsa512");
    const Key open = publicKey(wrong), secret = privateKey(wrong);
    const Bytes digest(20, 1), openBlob = publicBlob(wrong);
    const Bytes number = run(*secret, &cPKA::signPrefixed, digest), der = run(*secret, &cPKA::signDer, digest);
    wrong.d = wrong.qinv = {2}; // so that the completion has everything to compute
    const Bytes blob = join({openBlob, privatePart(wrong)});

    const std::uint32_t recordsBlocks = [] {
        const TestHeap heap;
        const RsaPrivateOwner record(newRsaPrivateKey());
        return heap.allocations();
    }();
    EXPECT_EQ(recordsBlocks, 17u); // the record and eight numbers with their limbs
    // After the record: 4 while numbers are read, 2 again in the completion.
    expectEveryFailure(2, recordsBlocks, {4, 2}, [&] {
        RsaPrivateKey* record = nullptr;
        const Status status = importRsaPrivateBlob(&record, blob.data(), sizeOf(blob));
        EXPECT_EQ(RsaPrivateOwner(record) != nullptr, status == STATUS_OK);
        return status;
    });
    expectEveryFailure(31, [&] {
        cPKA* made = nullptr;
        const Status status = secret->makePublic(&made);
        EXPECT_EQ(Key(made) != nullptr, status == STATUS_OK);
        return status;
    });
    expectEveryFailure(-1, [&] { return Key(newPrivateRsa(blob.data(), sizeOf(blob))) ? 0 : -1; });
    expectEveryFailure(-1, [&] { return Key(newPublicRsa(openBlob.data(), sizeOf(openBlob))) ? 0 : -1; });
    expectEveryFailure(31, 1, {32}, [&] { return verifyPrefixed(*open, number, digest); });
    expectEveryFailure(31, 1, {32}, [&] { return verifyDer(*open, der, digest); });
    const struct
    {
        cPKA* key;
        OutputSlot slot;
        const Bytes& input;
        bool pads; // the padded block is the first allocation, and 2 its failure
        Status failure;
    } slots[] = {
        {open.get(), &cPKA::publicFromPrefixed, number, false, 30},
        {open.get(), &cPKA::publicFromDer, der, false, 32},
        {secret.get(), &cPKA::privateFromPrefixed, number, false, 30},
        {secret.get(), &cPKA::privateFromDer, der, false, 32},
        {secret.get(), &cPKA::signPrefixed, digest, true, 30},
        {secret.get(), &cPKA::signDer, digest, true, 32},
    };
    for (const auto& s : slots)
        expectEveryFailure(2, s.pads ? 1 : 0, {s.failure}, [&] {
            Bytes output(68, 0xA5);
            std::uint32_t length = 68;
            const Status status = (s.key->*s.slot)(output.data(), &length, s.input.data(), sizeOf(s.input));
            EXPECT_TRUE(status == STATUS_OK || (length == 68 && output == Bytes(68, 0xA5))) << "half an output";
            return status;
        });
}

TEST(FieldMemory, EveryFailingAllocationGivesTheSlotsStatus)
{
    // Small keys (computed in Python), since inversion allocates at every step: two limbs of p, 24 bits of q.
    FieldNumbers dsa = {fromHex("df4d9d16f96568dc33"), fromHex("cb283d"), fromHex("28b26f98a958c54cbd"),
                        fromHex("66d49574de7afcd526"), fromHex("45ecc5")};
    FieldNumbers elgamal = {
        fromHex("baa057d9506a37aacf"), {}, {5}, fromHex("94cff0ec02584b5de2"), fromHex("22085c5bd5e176c64f")};
    const Key openDsa = dsaPublic(dsa), openElgamal = elgamalPublic(elgamal);
    const Key secretDsa = dsaPrivate(dsa), secretElgamal = elgamalPrivate(elgamal);
    const Bytes digest(20, 1), filling(64, 0x21);
    const auto signedBy = [&](cPKA& key, OutputSlot slot) {
        const Pool pool(filling);
        return run(key, slot, digest);
    };
    const Bytes number = signedBy(*secretDsa, &cPKA::signPrefixed), der = signedBy(*secretDsa, &cPKA::signDer);
    const Bytes pair = signedBy(*secretElgamal, &cPKA::signPrefixed);
    expectEveryFailure(32, [&] { return verifyPrefixed(*openDsa, number, digest); });
    expectEveryFailure(32, [&] { return verifyDer(*openDsa, der, digest); });
    expectEveryFailure(32, [&] { return verifyPrefixed(*openElgamal, pair, digest); });
    const struct
    {
        cPKA& key;
        OutputSlot slot;
        const Bytes& input;
    } slots[] = {
        {*secretDsa, &cPKA::signPrefixed, digest},      {*secretDsa, &cPKA::signDer, digest},
        {*openElgamal, &cPKA::encryptPrefixed, digest}, {*openElgamal, &cPKA::rawToDer, digest},
        {*secretElgamal, &cPKA::signPrefixed, digest},  {*secretElgamal, &cPKA::privateFromPrefixed, pair},
    };
    for (const auto& s : slots)
        expectEveryFailure(30, [&] {
            const Pool pool(filling);
            Bytes output(200, 0xA5);
            std::uint32_t length = 200;
            const Status status = (s.key.*s.slot)(output.data(), &length, s.input.data(), sizeOf(s.input));
            EXPECT_TRUE(status == STATUS_OK || (length == 200 && output == Bytes(200, 0xA5))) << "half an output";
            return status;
        });

    dsa.y = elgamal.y = {}; // computed when it is asked for
    const Bytes dsaBlob = dsa.privateBlob(), elgamalBlob = elgamal.privateBlob();
    for (const bool isDsa : {true, false}) {
        const auto import = [&] {
            return Key(isDsa ? newPrivateDsa(dsaBlob.data(), sizeOf(dsaBlob))
                             : newPrivateElgamal(elgamalBlob.data(), sizeOf(elgamalBlob)));
        };
        const std::uint32_t objectsBlocks = [&] {
            const TestHeap heap;
            const Key key = import();
            return heap.allocations();
        }();
        expectEveryFailure(-1, objectsBlocks, {31}, [&] {
            const Key key = import();
            cPKA* made = nullptr;
            const Status status = key ? key->makePublic(&made) : -1;
            EXPECT_EQ(Key(made) != nullptr, status == STATUS_OK);
            return status;
        });
        expectEveryFailure(-1, objectsBlocks, {8}, [&] {
            const Key key = import();
            Bytes output(1000);
            std::uint32_t length = 1000;
            return key ? key->exportDer(output.data(), &length) : -1;
        });
    }
}

// A heap that looks for eight bytes of each secret, in either byte order, in every block that comes back.
struct Watch
{
    static inline std::map<void*, std::size_t> blocks;
    static inline std::vector<Bytes> secrets;
    static inline int leaks = 0;

    static bool holdsSecret(const std::pair<void* const, std::size_t>& block)
    {
        const auto *first = static_cast<std::uint8_t*>(block.first), *last = first + block.second;
        return std::any_of(secrets.begin(), secrets.end(), [&](const Bytes& secret) {
            return std::search(first, last, secret.begin(), secret.end()) != last ||
                   std::search(first, last, secret.rbegin(), secret.rend()) != last;
        });
    }
    static void* allocate(std::size_t size, bool) noexcept
    {
        return blocks.emplace(std::calloc(1, size), size).first->first;
    }
    static void release(void* block, std::size_t, bool) noexcept
    {
        leaks += holdsSecret(*blocks.find(block));
        blocks.erase(block);
        std::free(block);
    }
};

// An object with an identifier that the watch can tell from other bytes.
struct MarkedKey : cPKA
{
    MarkedKey() { algorithm_ = 0x5E1DC0DE; }
};

TEST(RsaMemory, NoBlockComesBackWithASecretInIt)
{
    const RsaNumbers& numbers = rsaKey("rsa1024");
    const Bytes digest = {3, 1, 4, 1, 5, 9, 2, 6}, plain = join({{0}, digest, Bytes(119, 1)});
    Watch::secrets = {digest, {0x5E, 0x1D, 0xC0, 0xDE}};
    for (const Bytes& number : {numbers.d, numbers.p, numbers.q, numbers.dp, numbers.dq, numbers.qinv})
        for (const std::size_t back : {8u, 32u}) Watch::secrets.push_back(slice(number, number.size() - back, 8));
    const heap::Backend watch = {Watch::allocate, Watch::release};
    const heap::Backend* const before = heap::setBackend(&watch);
    {
        const Key secret = privateKey(numbers), open = publicKey(numbers), marked(new (std::nothrow) MarkedKey);
        EXPECT_EQ(std::count_if(Watch::blocks.begin(), Watch::blocks.end(), Watch::holdsSecret), 7)
            << "the watch must see the numbers and the identifier while they live";
        EXPECT_EQ(verifyPrefixed(*open, run(*secret, &cPKA::signPrefixed, digest), digest), 0);
        EXPECT_EQ(verifyDer(*open, run(*secret, &cPKA::signDer, digest), digest), 0);
        EXPECT_EQ(run(*secret, &cPKA::privateFromPrefixed, run(*open, &cPKA::encryptPrefixed, plain)), plain);
        run(*secret, &cPKA::exportDer);
    }
    heap::setBackend(before);
    EXPECT_EQ(Watch::leaks, 0);
    EXPECT_TRUE(Watch::blocks.empty());
}

TEST(FieldMemory, NoBlockComesBackWithASecretInIt)
{
    const FieldNumbers &dsa = dsaNumbers("dsa512-160"), &elgamal = elgamalNumbers(64);
    const Bytes digest(20, 1), drawn = fromHex("000102030405060708090a0b0c0d0e0f10111213"), whole = padded(drawn, 64);
    Watch::secrets = {slice(dsa.x, 12, 8), slice(dsa.x, 2, 8), slice(elgamal.x, 20, 8), slice(elgamal.x, 40, 8),
                      slice(drawn, 12, 8)};
    const heap::Backend watch = {Watch::allocate, Watch::release};
    const heap::Backend* const before = heap::setBackend(&watch);
    {
        const Key secretDsa = dsaPrivate(dsa), secretElgamal = elgamalPrivate(elgamal);
        const Key openElgamal = elgamalPublic(elgamal);
        EXPECT_EQ(std::count_if(Watch::blocks.begin(), Watch::blocks.end(), Watch::holdsSecret), 2)
            << "the watch must see the numbers while they live";
        for (const auto& [key, slot] : {std::pair<cPKA&, OutputSlot>{*secretDsa, &cPKA::signPrefixed},
                                        {*secretDsa, &cPKA::signDer},
                                        {*secretElgamal, &cPKA::signPrefixed},
                                        {*openElgamal, &cPKA::encryptPrefixed}}) {
            const Pool pool(&key == secretDsa.get() ? drawn : whole);
            const Bytes pair = run(key, slot, digest);
            if (&key == openElgamal.get()) run(*secretElgamal, &cPKA::privateFromPrefixed, pair);
        }
        for (const Key* key : {&secretDsa, &secretElgamal}) {
            run(**key, &cPKA::exportDer);
            cPKA* made = nullptr;
            EXPECT_EQ((*key)->makePublic(&made), STATUS_OK);
            Key(made).reset();
        }
        Bytes seed = join({Bytes(20, 0x3D), Bytes(20), slice(dsa.x, 12, 8)}); // the end of c is not that of x
        DsaKey* made = nullptr;
        EXPECT_EQ(generateDsa(&made, 512, seed.data(), sizeOf(seed), nullptr), STATUS_OK);
        delete made;
    }
    heap::setBackend(before);
    EXPECT_EQ(Watch::leaks, 0);
    EXPECT_TRUE(Watch::blocks.empty());
}

} // namespace
} // namespace toolbelt::test
