// Keys from bytes and back: identities with independently encoded keys, completion, limits, hostile input. What other
// programs write is read by the tests of the encodings.
#include "tests/pka/keys.h"

namespace toolbelt::test {
namespace {

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

TEST(RsaImport, RecordsThatMakeNoKeyAndTheSmallestOne)
{
    const Bytes longest(2048, 0xFF), word(8, 0xFF);
    const RsaPrivateOwner record(newRsaPrivateKey()); // primes too long together, not imported but loaded
    ASSERT_TRUE(record);
    ASSERT_EQ(bnImport(*record->p, longest.data(), sizeOf(longest)), 0);
    ASSERT_EQ(bnImport(*record->q, word.data(), sizeOf(word)), 0);
    ASSERT_EQ(bnImport(*record->e, word.data(), sizeOf(word)), 0);
    EXPECT_EQ(completeRsaPrivate(*record), 3);
    EXPECT_EQ(record->bits, 0);
    EXPECT_TRUE(!newPublicRsa(RsaPublicOwner()) && !newPrivateRsa(RsaPrivateOwner()) && !newPublicDsa(DsaOwner()) &&
                !newPrivateElgamal(ElgamalOwner()));

    RsaNumbers smallest = rsaKey("rsa512");
    smallest.n = {3}; // one byte: every length check at its lower end
    EXPECT_EQ(run(*smallest.open(), &cPKA::rawToDer, {2}), (Bytes{4, 1, 2}));
    EXPECT_EQ(verifyDer(*smallest.open(), {4, 1, 2}, {}), 32);
}

struct Kind
{
    FieldNumbers numbers;
    DerFactory fromPublicDer, fromPrivateDer;
};
std::vector<Kind> kinds()
{
    return {{dsaNumbers("dsa512-160"), newPublicDsaFromDer, newPrivateDsaFromDer},
            {dsaNumbers("dsa2048-256"), newPublicDsaFromDer, newPrivateDsaFromDer},
            {elgamalNumbers(), newPublicElgamalFromDer, newPrivateElgamalFromDer}};
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
}

// A private key in two blobs, both whole.
template <typename Owner>
Owner importTwo(Status (*importer)(typename Owner::pointer*, const std::uint8_t*, std::uint32_t, const std::uint8_t*,
                                   std::uint32_t),
                const Bytes& open, const Bytes& secret)
{
    typename Owner::pointer key = nullptr;
    for (const auto& [openCut, secretCut] : {std::pair{1u, 0u}, {0u, 1u}, {0u, 0u}}) {
        const Bytes a = slice(open, 0, open.size() - openCut), b = slice(secret, 0, secret.size() - secretCut);
        EXPECT_EQ(importer(&key, a.data(), sizeOf(a), b.data(), sizeOf(b)), openCut + secretCut ? PKA_E_KEY : 0);
        EXPECT_EQ(key != nullptr, openCut + secretCut == 0);
    }
    return Owner(key);
}

TEST(FieldImport, ThePublicHalfTakesAlongWhatIsNoNumberOfTheKey)
{
    const FieldNumbers &dsaKey = dsaNumbers("dsa512-160"), &elgamalKey = elgamalNumbers();
    DsaOwner dsa = importTwo<DsaOwner>(importDsaPrivate, dsaKey.blob(), prefixed(dsaKey.x));
    ElgamalOwner elgamal = importTwo<ElgamalOwner>(importElgamalPrivate, elgamalKey.blob(), prefixed(elgamalKey.x));
    ASSERT_TRUE(dsa && bytesOf(dsa->x) == dsaKey.x && elgamal && bytesOf(elgamal->x) == elgamalKey.x);
    dsa->reserved = 0x5EED;
    ASSERT_EQ(bnAddWord(elgamal->fourth, elgamal->fourth, 77), 0);
    const Key dsaHalf = publicHalf(*Key(newPrivateDsa(std::move(dsa))));
    const Key elgamalHalf = publicHalf(*Key(newPrivateElgamal(std::move(elgamal))));
    EXPECT_EQ(dynamic_cast<cPublicDSA&>(*dsaHalf).record().reserved, 0x5EEDu);
    EXPECT_EQ(bnCompareWord(dynamic_cast<cPublicElgamal&>(*elgamalHalf).record().fourth, 77), 0);
}

// The record's numbers in place of the key's.
template <typename Numbers>
Numbers changed(const Record& record, Numbers numbers,
                std::initializer_list<std::pair<const char*, Bytes Numbers::*>> members)
{
    for (const auto& [name, number] : members)
        if (record.has(name)) numbers.*number = record.message(name);
    return numbers;
}

template <typename Owner>
using Importer = Status (*)(typename Owner::pointer*, const std::uint8_t*, std::uint32_t);

// Imports into a record and drops it; a refusal must not make one.
template <typename Owner>
Status import(Importer<Owner> importer, const Bytes& blob)
{
    typename Owner::pointer key = nullptr;
    const Status status = importer(&key, blob.data(), sizeOf(blob));
    EXPECT_EQ(Owner(key) != nullptr, status == STATUS_OK);
    return status;
}

// The halves are made, in every form, or not, as the record says.
template <typename Open, typename Secret, typename Numbers>
void checkImport(const Record& record, const Numbers& numbers, const Bytes& blob, Importer<Open> importOpen,
                 Importer<Secret> importSecret, DerFactory fromPrivateDer)
{
    if (record.has("public")) {
        const auto status = static_cast<Status>(record.number("public"));
        EXPECT_EQ(import <Open>(importOpen, blob), status);
        EXPECT_EQ(numbers.open() != nullptr, status == STATUS_OK);
    }
    if (record.has("private")) {
        const auto status = static_cast<Status>(record.number("private"));
        EXPECT_EQ(import <Secret>(importSecret, numbers.privateBlob()), status);
        EXPECT_EQ(numbers.secret() != nullptr, status == STATUS_OK);
        fromDer(fromPrivateDer, derElement(0x30, numbers.privateContent()), status == STATUS_OK ? STATUS_OK : 12);
    }
}

TEST(Import, OneChangedNumber)
{
    using R = RsaNumbers;
    using F = FieldNumbers;
    int changes = 0;
    for (const Record& record : readVectors("../pka/imports.txt")) {
        SCOPED_TRACE(record.where + ": " + record.get("change"));
        const std::string& key = record.get("key");
        if (key.starts_with("rsa")) {
            const R numbers =
                changed<R>(record, rsaKey(key), {{"n", &R::n}, {"e", &R::e}, {"d", &R::d}, {"p", &R::p}, {"q", &R::q}});
            checkImport<RsaPublicOwner, RsaPrivateOwner>(record, numbers, numbers.publicBlob(), importRsaPublic,
                                                         importRsaPrivateBlob, newPrivateRsaFromDer);
        } else {
            const bool isDsa = key.starts_with("dsa");
            const F numbers = changed<F>(record, isDsa ? dsaNumbers(key) : elgamalNumbers(),
                                         {{"p", &F::p}, {"q", &F::q}, {"g", &F::g}, {"y", &F::y}, {"x", &F::x}});
            if (isDsa)
                checkImport<DsaOwner, DsaOwner>(record, numbers, numbers.blob(), importDsaPublic, importDsaPrivateBlob,
                                                newPrivateDsaFromDer);
            else
                checkImport<ElgamalOwner, ElgamalOwner>(record, numbers, numbers.blob(), importElgamalPublic,
                                                        importElgamalPrivateBlob, newPrivateElgamalFromDer);
        }
        EXPECT_EQ(record.unread(), std::vector<std::string>());
        ++changes;
    }
    EXPECT_EQ(changes, 62);
}

// Prefixes, and other elements than there should be. A part is INTEGERs in a SEQUENCE. Blobs are compared with a model
// by the fuzz target key_blob.
TEST(Import, HostileBytesAreRefusedWhole)
{
    const RsaNumbers& rsa = rsaKey("rsa512");
    const Bytes e = derIntegers({rsa.e}), both = derIntegers({rsa.n, rsa.e}), more = {2, 1, 1};
    struct Forms
    {
        DerFactory fromPublicDer, fromPrivateDer, fromAnother;
        Bytes der, content; // of the private form's SEQUENCE
    };
    std::vector<Forms> all = {
        {newPublicRsaFromDer, newPrivateRsaFromDer, newPublicDsaFromDer, derElement(0x30, both), rsa.privateContent()}};
    for (const Kind& kind : kinds())
        all.push_back({kind.fromPublicDer, kind.fromPrivateDer,
                       kind.numbers.isDsa() ? newPublicElgamalFromDer : newPublicDsaFromDer,
                       run(*kind.numbers.open(), &cPKA::exportDer), kind.numbers.privateContent()});
    for (const Forms& forms : all) {
        SCOPED_TRACE(&forms - all.data());
        const Bytes &content = forms.content, noVersion = slice(content, 3, content.size() - 3);
        std::vector<Bytes> wrong = {derElement(0x31, content), derElement(0x30, join({content, more})),
                                    derElement(0x30, join({{2, 1, 1}, noVersion})), // of more than two primes
                                    derElement(0x30, join({{2, 0}, noVersion}))};
        for (std::size_t size = 0; size < content.size(); ++size)
            wrong.push_back(derElement(0x30, slice(content, 0, size)));
        for (const Bytes& der : wrong) fromDer(forms.fromPrivateDer, der, 12);

        const std::size_t header = forms.der[1] == 0x82 ? 4 : forms.der[1] == 0x81 ? 3 : 2;
        const Bytes numbers = slice(forms.der, header, forms.der.size() - header);
        wrong = {derElement(0x31, numbers)};
        for (std::size_t size = 0; size < numbers.size(); ++size)
            wrong.push_back(derElement(0x30, slice(numbers, 0, size)));
        for (const Bytes& der : wrong) fromDer(forms.fromPublicDer, der, 12);
        fromDer(forms.fromAnother, forms.der, 12); // of the other algorithm
    }
    for (const Bytes& der :
         {derElement(0x30, join({both, more})), join({{0x30, 0x80}, both, {0, 0}}),
          derElement(0x30, join({derElement(4, rsa.n), e})), derElement(0x30, join({derElement(2, {}), e}))})
        fromDer(newPublicRsaFromDer, der, 12);
    EXPECT_TRUE(importTwo<RsaPrivateOwner>(importRsaPrivate, rsa.publicBlob(), rsa.privatePart()));
}

TEST(Import, SignaturesThatAreNoPair)
{
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
