// Memory: what keys answer when there is none, and what they leave behind in what they give back.
#include <cstdlib>
#include <map>

#include "tests/pka/keys.h"
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
    EXPECT_GT(injected, std::max(2u, 2 * early)) << "nothing failed later";
}

struct Slot
{
    const Key& key;
    OutputSlot slot;
    const Bytes& input;
    bool pads; // the padded block is the first allocation, and 2 its failure
    Status failure;
};
void expectEveryFailure(std::initializer_list<Slot> slots)
{
    for (const Slot& s : slots)
        expectEveryFailure(2, s.pads ? 1 : 0, {s.failure}, [&] {
            const Pool pool(Bytes(64, 0x21));
            Bytes output(200, 0xA5);
            std::uint32_t length = 200;
            const Status status = ((*s.key).*s.slot)(output.data(), &length, s.input.data(), sizeOf(s.input));
            EXPECT_TRUE(status == STATUS_OK || (length == 200 && output == Bytes(200, 0xA5))) << "half an output";
            return status;
        });
}

template <typename Make>
std::uint32_t blocksOf(Make make)
{
    const TestHeap heap;
    const auto made = make();
    return heap.allocations();
}

Status makePublic(cPKA& key)
{
    cPKA* made = nullptr;
    const Status status = key.makePublic(&made);
    EXPECT_EQ(Key(made) != nullptr, status == STATUS_OK);
    return status;
}

TEST(PkaMemory, EveryFailingAllocationGivesTheRsaSlotsStatus)
{
    const RsaNumbers& numbers = rsaKey("rsa512");
    const Key open = numbers.open(), secret = numbers.secret();
    const Bytes digest(20, 1), number = run(*secret, &cPKA::signPrefixed, digest),
                               der = run(*secret, &cPKA::signDer, digest);
    // Two primes of 64 bits, and wrong numbers, so that the completion has everything to compute.
    RsaNumbers wrong = {128, {3}, {1, 0, 1}, {2}, fromHex("e2eb5e4dc54b3619"), fromHex("ca643ac31ccc407d"),
                        {},  {},  {2}};
    const Bytes blob = wrong.privateBlob(), openBlob = wrong.publicBlob();
    const std::uint32_t recordsBlocks = blocksOf([] { return RsaPrivateOwner(newRsaPrivateKey()); });
    EXPECT_EQ(recordsBlocks, 17u); // the record and eight numbers with their limbs
    // After the record: 4 while numbers are read, 2 again in the completion.
    expectEveryFailure(2, recordsBlocks, {4, 2}, [&] {
        RsaPrivateKey* record = nullptr;
        const Status status = importRsaPrivateBlob(&record, blob.data(), sizeOf(blob));
        EXPECT_EQ(RsaPrivateOwner(record) != nullptr, status == STATUS_OK);
        return status;
    });
    expectEveryFailure(31, 0, {31}, [&] { return makePublic(*secret); });
    expectEveryFailure(-1, 0, {-1}, [&] { return Key(newPrivateRsa(blob.data(), sizeOf(blob))) ? 0 : -1; });
    expectEveryFailure(-1, 0, {-1}, [&] { return Key(newPublicRsa(openBlob.data(), sizeOf(openBlob))) ? 0 : -1; });
    expectEveryFailure(31, 1, {32}, [&] { return verifyPrefixed(*open, number, digest); });
    expectEveryFailure(31, 1, {32}, [&] { return verifyDer(*open, der, digest); });
    expectEveryFailure({{open, &cPKA::publicFromPrefixed, number, false, 30},
                        {open, &cPKA::publicFromDer, der, false, 32},
                        {secret, &cPKA::privateFromPrefixed, number, false, 30},
                        {secret, &cPKA::privateFromDer, der, false, 32},
                        {secret, &cPKA::signPrefixed, digest, true, 30},
                        {secret, &cPKA::signDer, digest, true, 32}});
}

TEST(PkaMemory, EveryFailingAllocationGivesTheFieldSlotsStatus)
{
    // Small keys (computed in Python), since inversion allocates at every step: two limbs of p, 24 bits of q.
    FieldNumbers dsa = {fromHex("df4d9d16f96568dc33"), fromHex("cb283d"), fromHex("28b26f98a958c54cbd"),
                        fromHex("66d49574de7afcd526"), fromHex("45ecc5")};
    FieldNumbers elgamal = {
        fromHex("baa057d9506a37aacf"), {}, {5}, fromHex("94cff0ec02584b5de2"), fromHex("22085c5bd5e176c64f")};
    const Key openDsa = dsa.open(), openElgamal = elgamal.open();
    const Key secretDsa = dsa.secret(), secretElgamal = elgamal.secret();
    const Bytes digest(20, 1);
    const auto signedBy = [&](const Key& key, OutputSlot slot) {
        const Pool pool(Bytes(64, 0x21));
        return run(*key, slot, digest);
    };
    const Bytes number = signedBy(secretDsa, &cPKA::signPrefixed), der = signedBy(secretDsa, &cPKA::signDer);
    const Bytes pair = signedBy(secretElgamal, &cPKA::signPrefixed);
    expectEveryFailure(32, 0, {32}, [&] { return verifyPrefixed(*openDsa, number, digest); });
    expectEveryFailure(32, 0, {32}, [&] { return verifyDer(*openDsa, der, digest); });
    expectEveryFailure(32, 0, {32}, [&] { return verifyPrefixed(*openElgamal, pair, digest); });
    expectEveryFailure({{secretDsa, &cPKA::signPrefixed, digest, false, 30},
                        {secretDsa, &cPKA::signDer, digest, false, 30},
                        {openElgamal, &cPKA::encryptPrefixed, digest, false, 30},
                        {openElgamal, &cPKA::rawToDer, digest, false, 30},
                        {secretElgamal, &cPKA::signPrefixed, digest, false, 30},
                        {secretElgamal, &cPKA::privateFromPrefixed, pair, false, 30}});

    dsa.y = elgamal.y = {}; // computed when it is asked for
    for (const FieldNumbers& numbers : {dsa, elgamal}) {
        const Bytes blob = numbers.privateBlob();
        const auto import = [&] { return Key(numbers.secretFactory()(blob.data(), sizeOf(blob))); };
        const std::uint32_t objectsBlocks = blocksOf(import);
        expectEveryFailure(-1, objectsBlocks, {31}, [&] {
            const Key key = import();
            return key ? makePublic(*key) : -1;
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
    static std::ptrdiff_t holders() { return std::count_if(blocks.begin(), blocks.end(), holdsSecret); }
};

// An object with an identifier that the watch can tell from other bytes.
struct MarkedKey : cPKA
{
    MarkedKey() { algorithm_ = 0x5E1DC0DE; }
};

TEST(PkaMemory, NoBlockComesBackWithASecretInIt)
{
    const RsaNumbers& rsa = rsaKey("rsa1024e17"); // whose primes are not the p of the other key
    const FieldNumbers &dsa = dsaNumbers("dsa512-160"), &elgamal = elgamalNumbers();
    const Bytes message = {3, 1, 4, 1, 5, 9, 2, 6}, plain = join({{0}, message, Bytes(119, 1)}), digest(20, 1),
                drawn = fromHex("000102030405060708090a0b0c0d0e0f10111213"), whole = padded(drawn, 64);
    Watch::secrets = {message, {0x5E, 0x1D, 0xC0, 0xDE}, slice(drawn, 12, 8)};
    for (const Bytes& number : {rsa.d, rsa.p, rsa.q, rsa.dp, rsa.dq, rsa.qinv, dsa.x, elgamal.x})
        for (const std::size_t back : {8u, 18u}) Watch::secrets.push_back(slice(number, number.size() - back, 8));
    const heap::Backend watch = {Watch::allocate, Watch::release};
    const heap::Backend* const before = heap::setBackend(&watch);
    {
        const Key secret = rsa.secret(), open = rsa.open(), marked(new (std::nothrow) MarkedKey);
        const Key secretDsa = dsa.secret(), secretElgamal = elgamal.secret(), openElgamal = elgamal.open();
        EXPECT_EQ(Watch::holders(), 9) << "the watch must see the numbers and the identifier while they live";
        EXPECT_EQ(verifyPrefixed(*open, run(*secret, &cPKA::signPrefixed, message), message), 0);
        EXPECT_EQ(verifyDer(*open, run(*secret, &cPKA::signDer, message), message), 0);
        EXPECT_EQ(run(*secret, &cPKA::privateFromPrefixed, run(*open, &cPKA::encryptPrefixed, plain)), plain);
        for (const auto& [key, slot] : {std::pair<cPKA&, OutputSlot>{*secretDsa, &cPKA::signPrefixed},
                                        {*secretDsa, &cPKA::signDer},
                                        {*secretElgamal, &cPKA::signPrefixed},
                                        {*openElgamal, &cPKA::encryptPrefixed}}) {
            const Pool pool(&key == secretDsa.get() ? drawn : whole);
            const Bytes pair = run(key, slot, digest);
            if (&key == openElgamal.get()) run(*secretElgamal, &cPKA::privateFromPrefixed, pair);
        }
        for (const Key* key : {&secret, &secretDsa, &secretElgamal}) {
            run(**key, &cPKA::exportDer);
            publicHalf(**key);
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
