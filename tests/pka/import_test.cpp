// Keys from bytes and back: identities with independently encoded keys, completion, limits, hostile input. What other
// programs write is read by the tests of the encodings.
#include "tests/pka/keys.h"

namespace toolbelt::test {
namespace {

// Imports into a record and drops it; a refusal must not make one.
template <typename KeyRecord, typename... Arguments>
Status import(Status (*importer)(KeyRecord**, Arguments...), Arguments... arguments)
{
    KeyRecord* key = nullptr;
    const Status status = importer(&key, arguments...);
    EXPECT_EQ(status == STATUS_OK, key != nullptr);
    freeRsaKey(key);
    return status;
}
Status importPublic(const Bytes& blob)
{
    return import(importRsaPublic, blob.data(), sizeOf(blob));
}
Status importPrivate(const Bytes& open, const Bytes& secret)
{
    return import(importRsaPrivate, open.data(), sizeOf(open), secret.data(), sizeOf(secret));
}

TEST(RsaImport, EveryFormGivesBackTheKey)
{
    for (const char* name : {"rsa512", "rsa1023", "rsa1025", "rsa2048e3"}) {
        SCOPED_TRACE(name);
        const RsaNumbers& numbers = rsaKey(name);
        const Bytes der = derElement(0x30, derIntegers({numbers.n, numbers.e}));
        const Bytes secretDer = derElement(0x30, numbers.privateContent());
        const Key open = fromDer(newPublicRsaFromDer, der), secret = fromDer(newPrivateRsaFromDer, secretDer);
        const Key half = publicHalf(*secret);
        for (cPKA* key : {open.get(), half.get()}) {
            EXPECT_EQ(key->keyLength(), secret->keyLength());
            EXPECT_EQ(run(*key, &cPKA::exportNumbers), numbers.publicBlob());
            EXPECT_EQ(run(*key, &cPKA::exportDer), der);
        }
        EXPECT_EQ(run(*secret, &cPKA::exportDer), secretDer);
        EXPECT_EQ(run(*secret, &cPKA::exportNumbers), numbers.privatePart());
    }
}

TEST(RsaImport, CompletionMendsWhatContradictsThePrimes)
{
    const RsaNumbers& right = rsaKey("rsa1023"); // primes of different lengths
    const auto expectMended = [&](const RsaNumbers& numbers) {
        const Key key = numbers.secret();
        ASSERT_TRUE(key);
        EXPECT_EQ(run(*key, &cPKA::exportNumbers), right.privatePart());
        EXPECT_EQ(run(*publicHalf(*key), &cPKA::exportNumbers), right.publicBlob());
    };
    RsaNumbers swapped = right;
    swap(swapped.p, swapped.q);
    expectMended(swapped);
    for (Bytes RsaNumbers::*number : {&RsaNumbers::n, &RsaNumbers::d, &RsaNumbers::qinv})
        for (const Bytes& wrong : {Bytes{}, Bytes{2}, Bytes(2048, 0xFF)}) {
            RsaNumbers numbers = right;
            numbers.*number = wrong;
            expectMended(numbers);
        }
}

TEST(RsaImport, NumbersThatMakeNoKeyAreRefused)
{
    const RsaNumbers& good = rsaKey("rsa512");
    Bytes longest(2048, 0xFF), even = good.n, half(512, 0xFF), word(8, 0xFF); // 16,384 bits; 4096 and 64
    const Bytes tooLong = join({{1}, longest});
    even.back() ^= 1;
    const struct
    {
        Bytes RsaNumbers::*number;
        Bytes value;
        Status status;
    } cases[] = {
        {&RsaNumbers::p, {}, 3},      {&RsaNumbers::q, {}, 3},      {&RsaNumbers::p, {1}, 3},
        {&RsaNumbers::q, {1}, 3},     {&RsaNumbers::p, good.q, 3},  {&RsaNumbers::e, {2}, 3},
        {&RsaNumbers::e, {}, 3},      {&RsaNumbers::q, {2}, 4},     {&RsaNumbers::p, longest, 4},
        {&RsaNumbers::d, tooLong, 4}, {&RsaNumbers::e, tooLong, 4}, {&RsaNumbers::e, {1}, 4},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        RsaNumbers numbers = good;
        numbers.*c.number = c.value;
        EXPECT_EQ(importPrivate(numbers.publicBlob(), numbers.privatePart()), c.status);
        EXPECT_FALSE(numbers.secret());
        fromDer(newPrivateRsaFromDer, derElement(0x30, numbers.privateContent()), 12);
    }
    const struct
    {
        Bytes n, e;
        Status status;
    } pairs[] = {{{}, {3}, 4},
                 {{1}, {3}, 4},
                 {even, {3}, 4},
                 {tooLong, {3}, 4},
                 {good.n, {}, 4},
                 {good.n, {1}, 4},
                 {good.n, {1, 0}, 4},
                 {good.n, tooLong, 4},
                 {good.n, {3}, 0},
                 {half, half, 0},
                 {longest, word, 0},
                 {half, join({{1}, half}), 4},
                 {join({{1}, half}), join({{1}, word}), 4}};
    for (const auto& c : pairs) EXPECT_EQ(importPublic(join({prefixed(c.n), prefixed(c.e)})), c.status) << &c - pairs;

    const RsaPrivateOwner record(newRsaPrivateKey()); // primes too long together, not imported but loaded
    ASSERT_TRUE(record);
    ASSERT_EQ(bnImport(*record->p, longest.data(), sizeOf(longest)), 0);
    ASSERT_EQ(bnImport(*record->q, word.data(), sizeOf(word)), 0);
    ASSERT_EQ(bnImport(*record->e, word.data(), sizeOf(word)), 0);
    EXPECT_EQ(completeRsaPrivate(*record), 3);
    EXPECT_EQ(record->bits, 0);
    EXPECT_TRUE(!newPublicRsa(RsaPublicOwner()) && !newPrivateRsa(RsaPrivateOwner()) && !newPublicDsa(DsaOwner()) &&
                !newPrivateElgamal(ElgamalOwner()));

    RsaNumbers smallest = good;
    smallest.n = {3}; // one byte: every length check at its lower end
    EXPECT_EQ(run(*smallest.open(), &cPKA::rawToDer, {2}), (Bytes{4, 1, 2}));
    EXPECT_EQ(verifyDer(*smallest.open(), {4, 1, 2}, {}), 32);
}

TEST(RsaImport, HostileBytesAreRefusedWhole)
{
    const RsaNumbers& key = rsaKey("rsa512");
    const Bytes open = key.publicBlob(), secret = key.privatePart(), whole = key.privateContent(), more = {2, 1, 1};
    const Bytes e = derIntegers({key.e}), both = derIntegers({key.n, key.e}),
                noVersion = slice(whole, 3, whole.size() - 3);
    std::vector<Bytes> wrongPublic = {
        derElement(0x31, both), derElement(0x30, join({both, more})), join({{0x30, 0x80}, both, {0, 0}}),
        derElement(0x30, join({derElement(4, key.n), e})), derElement(0x30, join({derElement(2, {}), e}))};
    std::vector<Bytes> wrongPrivate = {derElement(0x31, whole), derElement(0x30, join({whole, more})),
                                       derElement(0x30, join({{2, 1, 1}, noVersion})), // of more than two primes
                                       derElement(0x30, join({{2, 0}, noVersion}))};
    for (std::size_t size = 0; size < whole.size(); ++size) {
        if (size < open.size()) {
            EXPECT_EQ(importPublic(slice(open, 0, size)), 4) << size;
            EXPECT_EQ(importPrivate(slice(open, 0, size), secret), 4) << size;
        }
        if (size < secret.size()) {
            EXPECT_EQ(importPrivate(open, slice(secret, 0, size)), 4) << size;
            EXPECT_FALSE(fromBlob(newPrivateRsa, join({open, slice(secret, 0, size)}))) << size;
        }
        if (size < both.size()) wrongPublic.push_back(derElement(0x30, slice(both, 0, size)));
        wrongPrivate.push_back(derElement(0x30, slice(whole, 0, size)));
    }
    for (const Bytes& der : wrongPrivate) fromDer(newPrivateRsaFromDer, der, 12);
    for (const Bytes& der : wrongPublic) fromDer(newPublicRsaFromDer, der, 12);
}

struct Kind
{
    FieldNumbers numbers;
    DerFactory fromPublicDer, fromPrivateDer;
    const char* shortest; // p, of which every other number is too large
};
std::vector<Kind> kinds()
{
    return {{dsaNumbers("dsa512-160"), newPublicDsaFromDer, newPrivateDsaFromDer, "0b"},
            {dsaNumbers("dsa2048-256"), newPublicDsaFromDer, newPrivateDsaFromDer, "0b"},
            {elgamalNumbers(), newPublicElgamalFromDer, newPrivateElgamalFromDer, "03"}};
}

TEST(FieldImport, EveryFormGivesBackTheKey)
{
    for (const Kind& kind : kinds()) {
        const Bytes der = derElement(0x30, kind.numbers.privateContent());
        const Bytes info = run(*kind.numbers.open(), &cPKA::exportDer);
        EXPECT_EQ(run(*fromDer(kind.fromPublicDer, info), &cPKA::exportDer), info);
        FieldNumbers without = kind.numbers;
        without.y = {};
        const Bytes derWithout = derElement(0x30, without.privateContent());
        for (const bool exportFirst : {false, true}) {
            const Key keys[] = {kind.numbers.secret(), without.secret(), fromDer(kind.fromPrivateDer, der),
                                fromDer(kind.fromPrivateDer, derWithout)};
            for (const Key& key : keys) {
                EXPECT_TRUE(!exportFirst || run(*key, &cPKA::exportDer) == der);
                EXPECT_EQ(run(*publicHalf(*key), &cPKA::exportDer), info);
                EXPECT_EQ(run(*key, &cPKA::exportDer), der) << "the record keeps the y that was computed";
            }
        }
    }
    // A private key in two blobs, both whole, and what its public half takes along.
    const FieldNumbers numbers[] = {kinds()[0].numbers, elgamalNumbers()};
    const Bytes open[] = {numbers[0].blob(), numbers[1].blob()};
    const Bytes secret[] = {prefixed(numbers[0].x), prefixed(numbers[1].x)};
    DsaKey* dsa = nullptr;
    ElgamalKey* elgamal = nullptr;
    const auto import = [&](std::uint32_t openCut, std::uint32_t secretCut) {
        const auto part = [](const Bytes& bytes, std::uint32_t cut) { return slice(bytes, 0, sizeOf(bytes) - cut); };
        const Bytes a = part(open[0], openCut), b = part(secret[0], secretCut);
        const Bytes c = part(open[1], openCut), d = part(secret[1], secretCut);
        return std::pair(importDsaPrivate(&dsa, a.data(), sizeOf(a), b.data(), sizeOf(b)),
                         importElgamalPrivate(&elgamal, c.data(), sizeOf(c), d.data(), sizeOf(d)));
    };
    EXPECT_EQ(import(1, 0), std::pair(PKA_E_KEY, PKA_E_KEY));
    EXPECT_EQ(import(0, 1), std::pair(PKA_E_KEY, PKA_E_KEY));
    ASSERT_TRUE(!dsa && !elgamal);
    ASSERT_EQ(import(0, 0), std::pair(STATUS_OK, STATUS_OK));
    EXPECT_EQ(bytesOf(dsa->x), numbers[0].x);
    EXPECT_EQ(bytesOf(elgamal->x), numbers[1].x);
    dsa->reserved = 0x5EED;
    ASSERT_EQ(bnAddWord(elgamal->fourth, elgamal->fourth, 77), 0);
    const Key dsaHalf = publicHalf(*Key(newPrivateDsa(DsaOwner(dsa))));
    const Key elgamalHalf = publicHalf(*Key(newPrivateElgamal(ElgamalOwner(elgamal))));
    EXPECT_EQ(dynamic_cast<cPublicDSA&>(*dsaHalf).record().reserved, 0x5EEDu);
    EXPECT_EQ(bnCompareWord(dynamic_cast<cPublicElgamal&>(*elgamalHalf).record().fourth, 77), 0);
}

TEST(FieldImport, NumbersThatMakeNoKeyAreRefused)
{
    const Bytes longest(2048, 0xFF), tooLong = join({{1}, Bytes(2047), {1}}); // 16,384 bits and more
    for (const Kind& kind : kinds()) {
        const FieldNumbers& good = kind.numbers;
        const auto expect = [&](Bytes FieldNumbers::*number, const Bytes& value, bool asPublic, bool asPrivate) {
            FieldNumbers numbers = good;
            numbers.*number = value;
            EXPECT_EQ(numbers.open() != nullptr, asPublic) << toHex(value);
            EXPECT_EQ(numbers.secret() != nullptr, asPrivate) << toHex(value);
            fromDer(kind.fromPrivateDer, derElement(0x30, numbers.privateContent()), asPrivate ? 0 : 12);
        };
        Bytes evenP = good.p, evenQ = good.q;
        evenP.back() ^= 1;
        for (const Bytes& p : {Bytes{}, Bytes{1}, evenP, tooLong, fromHex(kind.shortest)})
            expect(&FieldNumbers::p, p, false, false);
        for (const Bytes& g : {Bytes{}, Bytes{1}, good.p, tooLong}) expect(&FieldNumbers::g, g, false, false);
        expect(&FieldNumbers::p, longest, true, true);
        expect(&FieldNumbers::g, {2}, true, true);
        expect(&FieldNumbers::g, evenP, true, true); // p - 1
        expect(&FieldNumbers::y, {}, false, true);
        expect(&FieldNumbers::y, good.p, false, false);
        for (const Bytes& x : {Bytes{}, good.isDsa() ? good.q : good.p, tooLong})
            expect(&FieldNumbers::x, x, true, false);
        if (!good.isDsa()) continue;
        evenQ.back() ^= 1;
        for (const Bytes& q : {Bytes{1}, evenQ, good.p, Bytes(65, 0xFF)}) expect(&FieldNumbers::q, q, false, false);
        expect(&FieldNumbers::q, {3}, true, false); // x is not below it
        FieldNumbers numbers = good;
        numbers.p = longest;
        numbers.q = Bytes(64, 0xFF);
        EXPECT_TRUE(numbers.open()) << "512 bits of q are allowed";
    }
}

TEST(FieldImport, HostileBytesAreRefusedWhole)
{
    for (const Kind& kind : kinds()) {
        const FieldNumbers& numbers = kind.numbers;
        const Bytes content = numbers.privateContent(), open = numbers.blob(), blob = numbers.privateBlob();
        for (std::size_t size = 0; size < blob.size(); ++size) {
            EXPECT_FALSE(fromBlob(numbers.secretFactory(), slice(blob, 0, size))) << size;
            EXPECT_FALSE(size < open.size() && fromBlob(numbers.openFactory(), slice(blob, 0, size))) << size;
        }
        for (std::size_t size = 0; size < content.size(); ++size)
            fromDer(kind.fromPrivateDer, derElement(0x30, slice(content, 0, size)), 12);
        Bytes version = content;
        version[2] = 1;
        for (const Bytes& der :
             {derElement(0x30, join({content, {2, 1, 1}})), derElement(0x31, content), derElement(0x30, version)})
            fromDer(kind.fromPrivateDer, der, 12);

        const Bytes info = run(*numbers.open(), &cPKA::exportDer);
        const std::size_t header = info[1] == 0x82 ? 4 : 3;
        for (std::size_t size = header; size < info.size(); ++size)
            fromDer(kind.fromPublicDer, derElement(0x30, slice(info, header, size - header)), 12);
        fromDer(numbers.isDsa() ? newPublicElgamalFromDer : newPublicDsaFromDer, info, 12); // of the other algorithm
    }
    // Signatures that are no pair.
    const Key open = dsaNumbers("dsa512-160").open();
    const Bytes r = derIntegers({{5}}), pair = join({r, r}), digest(20, 1);
    for (const Bytes& der :
         {Bytes{}, r, derElement(0x30, r), derElement(0x30, join({pair, r})), derElement(0x31, pair),
          derElement(4, join({derElement(0x30, pair), {0}})), derElement(3, {}), Bytes{0x30, 0x84},
          derElement(0x30, slice(pair, 0, 5)), derElement(4, derElement(4, derElement(0x30, pair)))}) {
        EXPECT_EQ(verifyDer(*open, Bytes(der), digest), 32) << toHex(der);
        EXPECT_EQ(verifyPrefixed(*open, Bytes(der), digest), 32) << toHex(der);
    }
}

} // namespace
} // namespace toolbelt::test
