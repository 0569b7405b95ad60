// DSA and ElGamal keys from bytes and back: every form, limits, hostile input. What other programs write is read by the
// tests of the encodings.
#include <gtest/gtest.h>

#include "tests/pka/field_keys.h"

namespace toolbelt::test {
namespace {

struct Kind
{
    FieldNumbers numbers;
    Key (*open)(const FieldNumbers& numbers);
    Key (*secret)(const FieldNumbers& numbers);
    Status (*fromPublicDer)(cPKA** key, const DerElement& sequence);
    Status (*fromPrivateDer)(cPKA** key, const DerElement& sequence);
    const char* shortest; // p, of which every other number is too large
};
std::vector<Kind> kinds()
{
    return {
        {dsaNumbers("dsa512-160"), dsaPublic, dsaPrivate, newPublicDsaFromDer, newPrivateDsaFromDer, "0b"},
        {dsaNumbers("dsa2048-256"), dsaPublic, dsaPrivate, newPublicDsaFromDer, newPrivateDsaFromDer, "0b"},
        {elgamalNumbers(64), elgamalPublic, elgamalPrivate, newPublicElgamalFromDer, newPrivateElgamalFromDer, "03"}};
}

Key fromDer(Status (*factory)(cPKA**, const DerElement&), const Bytes& der, Status expected = STATUS_OK)
{
    DerElement element;
    EXPECT_EQ(parseElement(element, der.data(), sizeOf(der)), STATUS_OK);
    cPKA* made = nullptr;
    EXPECT_EQ(factory(&made, element), expected) << toHex(der);
    EXPECT_EQ(expected == STATUS_OK, made != nullptr);
    return Key(made);
}

Key publicHalf(cPKA& key)
{
    cPKA* made = nullptr;
    EXPECT_EQ(key.makePublic(&made), STATUS_OK);
    return Key(made);
}

TEST(FieldKeys, EveryFormGivesBackTheKey)
{
    for (const Kind& kind : kinds()) {
        const Bytes der = derElement(0x30, kind.numbers.privateContent());
        const Bytes info = run(*kind.open(kind.numbers), &cPKA::exportDer);
        EXPECT_EQ(run(*fromDer(kind.fromPublicDer, info), &cPKA::exportDer), info);
        FieldNumbers without = kind.numbers;
        without.y = {};
        const Bytes derWithout = derElement(0x30, without.privateContent());
        for (const bool exportFirst : {false, true}) {
            const Key keys[] = {kind.secret(kind.numbers), kind.secret(without), fromDer(kind.fromPrivateDer, der),
                                fromDer(kind.fromPrivateDer, derWithout)};
            for (const Key& key : keys) {
                if (exportFirst) {
                    EXPECT_EQ(run(*key, &cPKA::exportDer), der);
                }
                EXPECT_EQ(run(*publicHalf(*key), &cPKA::exportDer), info);
                EXPECT_EQ(run(*key, &cPKA::exportDer), der) << "the record keeps the y that was computed";
            }
        }
    }
    const FieldNumbers& dsa = dsaNumbers("dsa512-160");
    const Bytes open = dsa.blob(), x = prefixed(dsa.x);
    DsaKey* record = nullptr;
    ASSERT_EQ(importDsaPrivate(&record, open.data(), sizeOf(open), x.data(), sizeOf(x)), 0);
    record->reserved = 0x5EED;
    const Key secret(newPrivateDsa(DsaOwner(record)));
    EXPECT_EQ(run(*secret, &cPKA::exportDer), derElement(0x30, dsa.privateContent()));
    EXPECT_EQ(dynamic_cast<cPublicDSA&>(*publicHalf(*secret)).record().reserved, 0x5EEDu);
    ElgamalKey* other = nullptr;
    const FieldNumbers& elgamal = elgamalNumbers(64);
    const Bytes openE = elgamal.blob(), xE = prefixed(elgamal.x);
    ASSERT_EQ(importElgamalPrivate(&other, openE.data(), sizeOf(openE), xE.data(), sizeOf(xE)), 0);
    ASSERT_EQ(bnAddWord(other->fourth, other->fourth, 77), 0);
    const Key half = publicHalf(*Key(newPrivateElgamal(ElgamalOwner(other))));
    EXPECT_EQ(bnCompareWord(dynamic_cast<cPublicElgamal&>(*half).record().fourth, 77), 0);
    EXPECT_EQ(newPublicDsa(DsaOwner()), nullptr);
    EXPECT_EQ(newPrivateElgamal(ElgamalOwner()), nullptr);
}

TEST(FieldKeys, NumbersThatMakeNoKeyAreRefused)
{
    const Bytes longest(2048, 0xFF), tooLong = join({{1}, Bytes(2047), {1}}); // 16,384 bits and more
    for (const Kind& kind : kinds()) {
        const FieldNumbers& good = kind.numbers;
        const auto expect = [&](Bytes FieldNumbers::*number, const Bytes& value, bool asPublic, bool asPrivate) {
            FieldNumbers numbers = good;
            numbers.*number = value;
            EXPECT_EQ(kind.open(numbers) != nullptr, asPublic) << toHex(value);
            EXPECT_EQ(kind.secret(numbers) != nullptr, asPrivate) << toHex(value);
            fromDer(kind.fromPrivateDer, derElement(0x30, numbers.privateContent()), asPrivate ? 0 : 12);
        };
        const auto both = [&](Bytes FieldNumbers::*number, const Bytes& value, bool taken) {
            expect(number, value, taken, taken);
        };
        Bytes evenP = good.p, evenQ = good.q, below = good.p;
        evenP.back() ^= 1, below.back() ^= 1;
        for (const Bytes& p : {Bytes{}, Bytes{1}, evenP, tooLong, fromHex(kind.shortest)})
            both(&FieldNumbers::p, p, false);
        both(&FieldNumbers::p, longest, true);
        for (const Bytes& g : {Bytes{}, Bytes{1}, good.p, tooLong}) both(&FieldNumbers::g, g, false);
        both(&FieldNumbers::g, {2}, true);
        both(&FieldNumbers::g, below, true);
        expect(&FieldNumbers::y, {}, false, true);
        both(&FieldNumbers::y, good.p, false);
        for (const Bytes& x : {Bytes{}, good.q.empty() ? good.p : good.q, tooLong})
            expect(&FieldNumbers::x, x, true, false);
        if (good.q.empty()) continue;
        evenQ.back() ^= 1;
        for (const Bytes& q : {Bytes{}, Bytes{1}, evenQ, good.p, Bytes(65, 0xFF)}) both(&FieldNumbers::q, q, false);
        expect(&FieldNumbers::q, {3}, true, false); // x is not below it
        FieldNumbers numbers = good;
        numbers.p = longest;
        numbers.q = Bytes(64, 0xFF);
        EXPECT_TRUE(kind.open(numbers)) << "512 bits of q are allowed";
    }
}

TEST(FieldKeys, HostileBytesAreRefusedWhole)
{
    for (const Kind& kind : kinds()) {
        const Bytes content = kind.numbers.privateContent();
        const bool isDsa = !kind.numbers.q.empty();
        const auto refused = [&](const Bytes& blob, bool asPrivate) {
            const Bytes exact(blob);
            const auto open = isDsa ? static_cast<cPKA* (*)(const std::uint8_t*, std::uint32_t)>(newPublicDsa)
                                    : static_cast<cPKA* (*)(const std::uint8_t*, std::uint32_t)>(newPublicElgamal);
            const auto secret = isDsa ? static_cast<cPKA* (*)(const std::uint8_t*, std::uint32_t)>(newPrivateDsa)
                                      : static_cast<cPKA* (*)(const std::uint8_t*, std::uint32_t)>(newPrivateElgamal);
            EXPECT_EQ((asPrivate ? secret : open)(exact.data(), sizeOf(exact)), nullptr) << exact.size();
        };
        const Bytes blob = kind.numbers.privateBlob();
        for (std::size_t size = 0; size < blob.size(); ++size) {
            refused(slice(blob, 0, size), true);
            if (size < kind.numbers.blob().size()) refused(slice(blob, 0, size), false);
        }
        for (std::size_t size = 0; size < content.size(); ++size)
            fromDer(kind.fromPrivateDer, derElement(0x30, slice(content, 0, size)), 12);
        fromDer(kind.fromPrivateDer, derElement(0x30, join({content, {2, 1, 1}})), 12);
        fromDer(kind.fromPrivateDer, derElement(0x31, content), 12);
        Bytes version = content;
        version[2] = 1;
        fromDer(kind.fromPrivateDer, derElement(0x30, version), 12);

        const Bytes info = run(*kind.open(kind.numbers), &cPKA::exportDer);
        const std::size_t header = info[1] == 0x82 ? 4 : 3;
        for (std::size_t size = header; size < info.size(); ++size)
            fromDer(kind.fromPublicDer, derElement(0x30, slice(info, header, size - header)), 12);
        fromDer(isDsa ? newPublicElgamalFromDer : newPublicDsaFromDer, info, 12); // of the other algorithm
    }
    // Signatures that are no pair.
    const Key open = dsaPublic(dsaNumbers("dsa512-160"));
    const Bytes r = derInteger({5}), pair = join({r, r}), digest(20, 1);
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
