// ElGamal: numbers computed by other programs, in both directions, and the rules of its secrets.
#include <gtest/gtest.h>

#include "crypto/bignum/modular.h"
#include "tests/pka/keys.h"

namespace toolbelt::test {
namespace {

// Random bytes from which the library draws this odd secret: the double of it.
Bytes poolFor(const Bytes& k, std::uint32_t size)
{
    Bytes bytes = padded(k, size);
    for (std::uint32_t i = 0; i < size; ++i)
        bytes[i] = static_cast<std::uint8_t>(bytes[i] << 1 | (i + 1 < size ? bytes[i + 1] >> 7 : 0));
    return bytes;
}

TEST(Elgamal, Ciphertexts)
{
    int raised = 0;
    for (const Record& record : readVectors("keys/elgamal.txt")) {
        SCOPED_TRACE(record.where);
        const FieldNumbers numbers = fieldNumbers(record);
        const Key open = numbers.open(), secret = numbers.secret();
        const Bytes m = record.bytes("m"), k = record.bytes("k");
        Bytes a = record.bytes("a"), b = record.bytes("b");
        const Bytes plain = padded(m, numbers.k());
        EXPECT_EQ(run(*secret, &cPKA::privateFromPrefixed, join({prefixed(a), prefixed(b)})), plain);
        if (record.has("a-raised")) { // its k has a factor in common with p - 1, and k + 2 is taken instead
            a = record.bytes("a-raised"), b = record.bytes("b-raised");
            ++raised;
        }
        const Bytes number = join({prefixed(a), prefixed(b)});
        const Pool pool(join({poolFor(k, numbers.k()), poolFor(k, numbers.k())}));
        EXPECT_EQ(run(*open, &cPKA::encryptPrefixed, m), number);
        EXPECT_EQ(run(*open, &cPKA::rawToDer, m), derElement(0x30, derIntegers({a, b})));
        EXPECT_EQ(pool.bytes, Bytes(2 * numbers.k())) << "what was taken is wiped";
        EXPECT_EQ(record.unread({"elgamal"}), std::vector<std::string>());
    }
    EXPECT_EQ(raised, 1);
}

TEST(Elgamal, Signatures)
{
    for (const Record& record : readVectors("keys/elgamal-signatures.txt")) {
        SCOPED_TRACE(record.where);
        const FieldNumbers numbers = fieldNumbers(record);
        const Key open = numbers.open(), secret = numbers.secret();
        const Bytes digest = record.bytes("digest-value"), r = record.bytes("r"), s = record.bytes("s");
        const Bytes der = derElement(0x30, derIntegers({r, s}));
        EXPECT_EQ(record.unread({"elgamal", "k", "pool"}), std::vector<std::string>());
        const Pool pool(record.bytes("pool"));
        const Bytes signature = run(*secret, &cPKA::signPrefixed, digest);
        EXPECT_EQ(signature, join({prefixed(r), prefixed(s)}));
        EXPECT_EQ(verifyPrefixed(*open, signature, digest), 0);
        EXPECT_EQ(verifyDer(*open, der, digest), 0);
        if (numbers.k() > 64) continue;
        EXPECT_EQ(verifyDer(*open, derElement(4, der), digest), 0);
        EXPECT_EQ(verifyDer(*open, join({derElement(3, join({{0}, der})), {5, 0}}), digest), 0);
    }
}

TEST(Elgamal, MessagesAreNumbersModuloPAndAnEmptyPoolIsTold)
{
    const FieldNumbers& numbers = elgamalNumbers();
    const Key open = numbers.open(), secret = numbers.secret();
    const Bytes aboveP = join({{1}, Bytes(63), {2}}); // 2^512 + 2
    BigNum m, p;
    ASSERT_EQ(bnImport(m, aboveP.data(), 65) | bnImport(p, numbers.p.data(), 64), 0);
    ASSERT_EQ(bnModulo(m, m, p), 0);
    Bytes first;
    for (const std::uint8_t filling : {0x11, 0x00, 0xFF}) {
        const Pool pool(Bytes(3 * 64, filling));
        const Bytes cipher = run(*open, &cPKA::encryptPrefixed, aboveP);
        EXPECT_NE(cipher, first);
        EXPECT_EQ(run(*secret, &cPKA::privateFromPrefixed, cipher), padded(bytesOf(m), 64));
        const Bytes zero = run(*open, &cPKA::encryptPrefixed, Bytes(1));
        EXPECT_EQ(slice(zero, zero.size() - 2, 2), Bytes(2)) << "b is 0";
        EXPECT_EQ(run(*secret, &cPKA::privateFromPrefixed, zero), Bytes(64));
        first = cipher;
    }
    Pool pool(Bytes(63, 5));
    run(*open, &cPKA::encryptPrefixed, {1}, 35);
    run(*open, &cPKA::rawToDer, {1}, 35);
    EXPECT_EQ(randomPoolShortfall(), 64u);
    run(*secret, &cPKA::signPrefixed, {1}, 30);
    EXPECT_EQ(pool.bytes, Bytes(63, 5));
    // Capacities come first: nothing is drawn for an output that does not fit.
    Bytes output(200);
    std::uint32_t length = 0;
    const auto needs = [&](cPKA& key, OutputSlot slot, std::uint32_t needed) {
        length = needed - 1;
        EXPECT_EQ((key.*slot)(output.data(), &length, numbers.blob().data(), 100), 1);
        EXPECT_EQ(length, needed);
    };
    needs(*open, &cPKA::encryptPrefixed, 132);
    needs(*open, &cPKA::rawToDer, 137); // two INTEGERs of 65 octets
    needs(*secret, &cPKA::signPrefixed, 132);
    needs(*secret, &cPKA::privateFromPrefixed, 64);
    // a = 0 has no inverse, p neither; a pair that is cut short. By design the range of a is not tested.
    for (const Bytes& a : {Bytes(), numbers.p})
        run(*secret, &cPKA::privateFromPrefixed, join({prefixed(a), prefixed({1})}), 30);
    run(*secret, &cPKA::privateFromPrefixed, prefixed({1}), 30);
    ASSERT_EQ(bnAddWord(p, p, 1), 0);
    EXPECT_EQ(run(*secret, &cPKA::privateFromPrefixed, join({prefixed(bytesOf(p)), prefixed({5})})), padded({5}, 64));
}

TEST(Elgamal, EachOperationDemandsItsMark)
{
    const Bytes blob = elgamalNumbers().privateBlob();
    const Pool pool(Bytes(6 * 64, 0x77));
    const Bytes pair = run(*elgamalNumbers().secret(), &cPKA::signPrefixed, {1});
    for (const std::uint32_t magic : {ELGAMAL_PUBLIC_MAGIC, ELGAMAL_PRIVATE_MAGIC}) {
        const bool isPrivate = magic == ELGAMAL_PRIVATE_MAGIC;
        const auto record = [&] {
            ElgamalKey* made = nullptr;
            EXPECT_EQ(importElgamalPrivateBlob(&made, blob.data(), sizeOf(blob)), 0);
            EXPECT_EQ(made->magic, ELGAMAL_PRIVATE_MAGIC);
            EXPECT_TRUE(made->fourth.count == 1 && made->fourth.limbs[0] == 0);
            made->magic = magic;
            return ElgamalOwner(made);
        };
        const Key open(newPublicElgamal(record())), secret(newPrivateElgamal(record()));
        run(*open, &cPKA::encryptPrefixed, {1}, isPrivate ? 30 : 0);
        EXPECT_EQ(verifyPrefixed(*open, pair, {1}), isPrivate ? 32 : 0);
        run(*secret, &cPKA::signPrefixed, {1}, isPrivate ? 0 : 30);
        run(*secret, &cPKA::privateFromPrefixed, pair, isPrivate ? 0 : 30);
        std::uint32_t length = 0;
        cPKA* made = nullptr;
        EXPECT_EQ(secret->exportDer(nullptr, &length), isPrivate ? 1 : 8);
        EXPECT_EQ(secret->makePublic(&made), isPrivate ? 0 : 31);
        EXPECT_EQ(Key(made) != nullptr, isPrivate);
    }
}

} // namespace
} // namespace toolbelt::test
