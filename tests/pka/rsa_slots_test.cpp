// The contract of the RSA slots: the order of their checks, the sizes they ask for, what they leave
// alone, and what a signature may hold. Signatures are made with the key itself.
#include <chrono>
#include <ctime>

#include "crypto/base/runtime_rand.h"
#include "crypto/pka/pkcs1.h"
#include "tests/pka/keys.h"

namespace toolbelt::test {
namespace {

TEST(RsaSlots, CapacitiesAndLengthsAreCheckedInTheSlotsOwnOrder)
{
    for (const char* name : {"rsa512", "rsa1025"}) {
        const RsaNumbers& numbers = rsaKey(name);
        const Key open = numbers.open(), secret = numbers.secret();
        const std::uint32_t k = numbers.k();
        Bytes block(k, 0x11);
        block[0] = 0;
        const Bytes shorter(k - 1, 0x11), longer(k + 1, 0x11), number = prefixed(block, k + 2);
        const Bytes der = derElement(4, block);
        const struct
        {
            cPKA* key;
            OutputSlot slot;
            Bytes input, wrongLength; // the latter is answered with 29
            std::uint32_t needed;
            bool capacityFirst; // the capacity is looked at before the input
        } contracts[] = {
            {open.get(), &cPKA::encryptPrefixed, block, shorter, k + 2, true},
            {open.get(), &cPKA::rawToDer, block, longer, sizeOf(der), false},
            {open.get(), &cPKA::publicFromPrefixed, number, longer, k, false},
            {open.get(), &cPKA::publicFromDer, der, derElement(4, shorter), k, false},
            {secret.get(), &cPKA::rawToDer, block, shorter, sizeOf(der), false},
            {secret.get(), &cPKA::privateFromPrefixed, number, longer, k, false},
            {secret.get(), &cPKA::privateFromDer, der, derElement(5, block), k, false},
            {secret.get(), &cPKA::signPrefixed, {1, 2}, longer, k + 2, true},
            {secret.get(), &cPKA::signDer, {1, 2}, longer, sizeOf(der), true},
        };
        for (const auto& c : contracts) {
            SCOPED_TRACE(&c - contracts);
            const Bytes untouched(c.needed + 16, 0xA5);
            Bytes output = untouched;
            std::uint32_t length = 0;
            const auto call = [&](const Bytes& input, std::uint32_t capacity) {
                length = capacity;
                return (c.key->*c.slot)(capacity ? output.data() : nullptr, &length, input.data(), sizeOf(input));
            };
            for (const std::uint32_t capacity : {0u, c.needed - 1}) {
                EXPECT_EQ(call(c.input, capacity), 1);
                EXPECT_EQ(length, c.needed);
                EXPECT_EQ(call(c.wrongLength, capacity), c.capacityFirst ? 1 : 29);
                EXPECT_EQ(length, c.capacityFirst ? c.needed : capacity);
            }
            EXPECT_EQ(call(c.wrongLength, c.needed), 29);
            EXPECT_EQ(output, untouched);
            EXPECT_EQ(call(c.input, c.needed + 7), 0);
            EXPECT_EQ(length, c.needed);
            EXPECT_EQ(slice(output, c.needed, 16), Bytes(16, 0xA5));
        }
    }
}

class Rsa512Slots : public testing::Test
{
protected:
    const Key open = rsaKey("rsa512").open(), secret = rsaKey("rsa512").secret();
    const std::uint32_t k = 64;
    const Bytes digest = Bytes(20, 0x33);
};

TEST_F(Rsa512Slots, SigningTakesADigestOrAPreparedBlock)
{
    for (const OutputSlot sign : {&cPKA::signPrefixed, &cPKA::signDer}) {
        run(*secret, sign, Bytes(k - 10, 7));
        for (std::uint32_t length = k - 9; length < k; ++length) run(*secret, sign, Bytes(length, 7), 56);
        run(*secret, sign, Bytes(k, 7), 39);
    }
    const Bytes lean = join({{0, 1, 0}, Bytes(k - 3, 7)}); // without a single padding byte, and a block all the same
    EXPECT_EQ(verifyDer(*open, run(*secret, &cPKA::signDer, lean), Bytes(k - 3, 7)), 0);
    EXPECT_EQ(verifyDer(*open, run(*secret, &cPKA::signDer, {}), {}), 0);
}

TEST_F(Rsa512Slots, SignaturesComeAsNumbersOrAsStringsOfTheKeysLength)
{
    const Bytes octet = run(*secret, &cPKA::signDer, digest), raw = slice(octet, 2, k);
    for (const Bytes& whole : {octet, derElement(3, join({{0}, raw}))}) {
        EXPECT_EQ(verifyDer(*open, whole, digest), 0);
        for (std::size_t size = 0; size < whole.size(); ++size)
            EXPECT_EQ(verifyDer(*open, slice(whole, 0, size), digest), size == 0 ? 12 : 10) << size;
    }
    for (const Bytes& wrong : {derElement(3, join({{0, 0}, raw})), derElement(4, join({{0}, raw})), derElement(4, {})})
        EXPECT_EQ(verifyDer(*open, wrong, digest), 29);
    EXPECT_EQ(verifyDer(*open, derElement(2, raw), digest), DER_E_MALFORMED);
    EXPECT_EQ(verifyDer(*open, octet, Bytes(k + 1, 0x33)), 32);

    const Bytes number = run(*secret, &cPKA::signPrefixed, digest);
    EXPECT_EQ(verifyPrefixed(*open, number, digest), 0);
    EXPECT_EQ(verifyPrefixed(*open, slice(number, 0, k + 1), Bytes(k + 1)), 1);
    EXPECT_EQ(verifyPrefixed(*open, number, Bytes(k + 1)), 29);
    EXPECT_EQ(verifyPrefixed(*open, number, Bytes(k)), 32);
    const Bytes tooLong = join({{2, 1}, Bytes(k, 0xFF)}); // 513 bits take a byte more than there is
    Bytes output(k);
    const RsaPublicKey& record = dynamic_cast<cPublicRSA&>(*open).record();
    EXPECT_EQ(rsaPublicOperation(record, tooLong.data(), output.data(), RSA_PREFIXED_INPUT), 3);
    EXPECT_EQ(verifyPrefixed(*open, tooLong, digest), 32);
}

TEST_F(Rsa512Slots, NumbersFromTheModulusOnCountAsTheirRemainders)
{
    const Bytes n = rsaKey("rsa512").n, zero(k), one = padded({1}, k);
    Bytes last = n, next = n;
    --last.back(); // n is odd and does not end in FF
    ++next.back();
    for (const auto& [value, power] : {std::pair(zero, zero), {one, one}, {last, last}, {n, zero}, {next, one}}) {
        EXPECT_EQ(run(*secret, &cPKA::privateFromDer, derElement(4, value)), power);
        EXPECT_EQ(run(*secret, &cPKA::privateFromPrefixed, prefixed(value, k + 2)), power);
        EXPECT_EQ(run(*open, &cPKA::publicFromDer, derElement(4, value)), power);
        EXPECT_EQ(run(*open, &cPKA::encryptPrefixed, value), prefixed(power, k + 2));
    }
}

TEST(RsaSlots, ShortInputsToSmallExponentsFail)
{
    RsaNumbers numbers = rsaKey("rsa1024e3");
    const std::uint32_t k = 128, border = 84; // 128 / 3 * 2 in integers
    const Key open = numbers.open();
    const Bytes two = join({Bytes(k - 1), {2}}), eight = join({Bytes(k - 1), {8}});
    Bytes output(k);
    EXPECT_EQ(rsaPublicOperation(dynamic_cast<cPublicRSA&>(*open).record(), two.data(), output.data(), RSA_RAW), 6);
    EXPECT_EQ(output, eight) << "the number is written although the operation fails";
    run(*open, &cPKA::encryptPrefixed, two, 30);
    run(*open, &cPKA::rawToDer, two, 32);
    run(*open, &cPKA::publicFromPrefixed, prefixed(two, k + 2), 30);
    run(*open, &cPKA::publicFromDer, derElement(4, two), 32);
    Bytes next = numbers.n; // n and above count as what they are modulo n
    ++next.back();
    for (const Bytes& value : {numbers.n, next}) run(*open, &cPKA::publicFromDer, derElement(4, value), 32);

    run(*open, &cPKA::encryptPrefixed, join({Bytes(k - border), {1}, Bytes(border - 1)}));
    const Bytes justShort = join({Bytes(k - border + 1), Bytes(border - 1, 0xFF)});
    for (const auto& [exponent, status] : {std::pair<Bytes, Status>{{0x0F, 0xFF}, 30}, {{0x10, 0x01}, 0}}) {
        numbers.e = exponent; // 4095 and 4097
        run(*numbers.open(), &cPKA::encryptPrefixed, justShort, status);
    }
}

// The random bytes are the runtime's, seeded from the clock and laid down from the end: found again by trying the few
// seeds that the moment allows.
TEST(Pkcs1, RandomPaddingIsTheSeededGeneratorsFromTheLastByteOn)
{
    const auto seconds = [] { return static_cast<std::uint32_t>(std::time(nullptr)); };
    const auto milliseconds = [] {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
    };
    Bytes block(2048); // long enough for bytes that were 0 and became 1
    const std::uint32_t second = seconds(), millisecond = milliseconds();
    ASSERT_EQ(pkcs1Pad(block.data(), 2048, PKCS1_ENCRYPTION, nullptr, 0), STATUS_OK);
    const std::uint32_t lastSecond = seconds(), lastMillisecond = milliseconds();
    bool found = false;
    for (std::uint32_t s = second; s <= lastSecond; ++s)
        for (std::uint32_t m = millisecond; m <= lastMillisecond; ++m) {
            runtimeSrand(s ^ m);
            Bytes expected = {0, 2, 0};
            for (int i = 0; i < 2045; ++i)
                expected.insert(expected.begin() + 2, static_cast<std::uint8_t>(std::max(1, runtimeRand() & 0xFF)));
            found = found || block == expected;
        }
    EXPECT_TRUE(found);
}

} // namespace
} // namespace toolbelt::test
