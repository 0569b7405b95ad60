// Keys from bytes and back: identities with independently encoded keys, completion, limits, hostile input.
#include <gtest/gtest.h>

#include "tests/pka/rsa_test_keys.h"

namespace toolbelt::test {
namespace {

Bytes privateContent(const RsaNumbers& key, std::uint8_t version = 0)
{
    return join({derInteger({version}), derInteger(key.n), derInteger(key.e), derInteger(key.d), derInteger(key.p),
                 derInteger(key.q), derInteger(key.dp), derInteger(key.dq), derInteger(key.qinv)});
}

// Imports by one of the factories.
using DerFactory = Status (*)(cPKA**, const DerElement&);
Key fromDer(DerFactory factory, const Bytes& der, Status expected = STATUS_OK)
{
    DerElement element;
    EXPECT_EQ(parseElement(element, der.data(), sizeOf(der)), STATUS_OK);
    cPKA* made = nullptr;
    EXPECT_EQ(factory(&made, element), expected) << toHex(der);
    EXPECT_EQ(expected == STATUS_OK, made != nullptr);
    return Key(made);
}

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
    for (const RsaNumbers& numbers : rsaKeys()) {
        SCOPED_TRACE(numbers.name);
        const Bytes der = derElement(0x30, join({derInteger(numbers.n), derInteger(numbers.e)}));
        const Key open = fromDer(newPublicRsaFromDer, der);
        const Key secret = fromDer(newPrivateRsaFromDer, derElement(0x30, privateContent(numbers)));
        cPKA* made = nullptr;
        ASSERT_EQ(secret->makePublic(&made), 0);
        const Key half(made);
        for (cPKA* key : {open.get(), half.get()}) {
            EXPECT_EQ(key->keyLength(), secret->keyLength());
            EXPECT_EQ(run(*key, &cPKA::exportNumbers), publicBlob(numbers));
            EXPECT_EQ(run(*key, &cPKA::exportDer), der);
        }
        // This file's d is the inverse modulo lcm(p - 1, q - 1): the completion replaces it.
        if (numbers.name == "rsa2048") continue;
        EXPECT_EQ(run(*secret, &cPKA::exportDer), derElement(0x30, privateContent(numbers)));
        EXPECT_EQ(run(*secret, &cPKA::exportNumbers), privatePart(numbers));
        EXPECT_EQ(run(*privateKey(numbers), &cPKA::exportNumbers), privatePart(numbers));
    }
}

TEST(RsaImport, CompletionMendsWhatContradictsThePrimes)
{
    const RsaNumbers& right = rsaKey("rsa1023"); // primes of different lengths
    RsaNumbers numbers = right;
    swap(numbers.p, numbers.q);
    EXPECT_EQ(run(*privateKey(numbers), &cPKA::exportNumbers), privatePart(right));
    for (Bytes RsaNumbers::*number : {&RsaNumbers::n, &RsaNumbers::d, &RsaNumbers::qinv})
        for (const Bytes& wrong : {Bytes{}, Bytes{1}, Bytes{2}, right.p, Bytes(2048, 0xFF)}) {
            numbers = right;
            numbers.*number = wrong;
            const Key key = privateKey(numbers);
            ASSERT_TRUE(key) << wrong.size();
            EXPECT_EQ(run(*key, &cPKA::exportNumbers), privatePart(right));
            cPKA* made = nullptr;
            ASSERT_EQ(key->makePublic(&made), 0);
            EXPECT_EQ(run(*Key(made), &cPKA::exportNumbers), publicBlob(right));
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
        EXPECT_EQ(importPrivate(publicBlob(numbers), privatePart(numbers)), c.status);
        EXPECT_FALSE(privateKey(numbers));
        fromDer(newPrivateRsaFromDer, derElement(0x30, privateContent(numbers)), 12);
    }
    const auto importPair = [](const Bytes& n, const Bytes& e) {
        return importPublic(join({prefixed(n), prefixed(e)}));
    };
    for (const Bytes& n : {Bytes{}, Bytes{1}, Bytes{2}, even, tooLong}) EXPECT_EQ(importPair(n, {3}), 4);
    for (const Bytes& e : {Bytes{}, Bytes{1}, Bytes{2}, Bytes{1, 0}, tooLong}) EXPECT_EQ(importPair(good.n, e), 4);
    EXPECT_EQ(importPair(good.n, {3}), 0);
    EXPECT_EQ(importPair(half, half), 0);
    EXPECT_EQ(importPair(half, join({{1}, half})), 4);
    EXPECT_EQ(importPair(longest, word), 0);
    EXPECT_EQ(importPair(join({{1}, half}), join({{1}, word})), 4);

    const RsaPrivateOwner record(newRsaPrivateKey()); // primes too long together, not imported but loaded
    ASSERT_TRUE(record);
    ASSERT_EQ(bnImport(*record->p, longest.data(), sizeOf(longest)), 0);
    ASSERT_EQ(bnImport(*record->q, word.data(), sizeOf(word)), 0);
    ASSERT_EQ(bnImport(*record->e, word.data(), sizeOf(word)), 0);
    EXPECT_EQ(completeRsaPrivate(*record), 3);
    EXPECT_EQ(record->bits, 0);
    EXPECT_EQ(newPublicRsa(RsaPublicOwner()), nullptr);
    EXPECT_EQ(newPrivateRsa(RsaPrivateOwner()), nullptr);

    RsaNumbers smallest = good;
    smallest.n = {3}; // one byte: every length check at its lower end
    EXPECT_EQ(run(*publicKey(smallest), &cPKA::rawToDer, {2}), (Bytes{4, 1, 2}));
    EXPECT_EQ(verifyDer(*publicKey(smallest), {4, 1, 2}, {}), 32);
}

TEST(RsaImport, HostileBytesAreRefusedWhole)
{
    const RsaNumbers& key = rsaKey("rsa512");
    const Bytes open = publicBlob(key), secret = privatePart(key), whole = privateContent(key), more = {2, 1, 1};
    const Bytes n = derInteger(key.n), e = derInteger(key.e), both = join({n, e});
    std::vector<Bytes> wrongPublic = {
        derElement(0x31, both), derElement(0x30, join({both, more})), join({{0x30, 0x80}, both, {0, 0}}),
        derElement(0x30, join({derElement(4, key.n), e})), derElement(0x30, join({derElement(2, {}), e}))};
    std::vector<Bytes> wrongPrivate = {derElement(0x31, whole), derElement(0x30, join({whole, more})),
                                       derElement(0x30, privateContent(key, 1)), // of more than two primes
                                       derElement(0x30, join({{2, 0}, slice(whole, 3, whole.size() - 3)}))};
    for (std::size_t size = 0; size < whole.size(); ++size) {
        if (size < open.size()) {
            EXPECT_EQ(importPublic(slice(open, 0, size)), 4) << size;
            EXPECT_EQ(importPrivate(slice(open, 0, size), secret), 4) << size;
        }
        if (size < secret.size()) {
            EXPECT_EQ(importPrivate(open, slice(secret, 0, size)), 4) << size;
            const Bytes joined = join({open, slice(secret, 0, size)}), exact(joined);
            EXPECT_EQ(newPrivateRsa(exact.data(), sizeOf(exact)), nullptr) << size;
        }
        if (size < both.size()) wrongPublic.push_back(derElement(0x30, slice(both, 0, size)));
        wrongPrivate.push_back(derElement(0x30, slice(whole, 0, size)));
    }
    for (const Bytes& der : wrongPrivate) fromDer(newPrivateRsaFromDer, der, 12);
    for (const Bytes& der : wrongPublic) {
        fromDer(newPublicRsaFromDer, der, 12);
        DerElement element;
        RsaPublicKey* record = nullptr;
        ASSERT_EQ(parseElement(element, der.data(), sizeOf(der)), 0);
        EXPECT_EQ(importRsaPublicDer(&record, element), 4);
        EXPECT_EQ(record, nullptr);
    }
}

} // namespace
} // namespace toolbelt::test
