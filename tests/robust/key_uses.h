// What is done with private keys so large that a watch cannot take their numbers for anything else, for tests that look
// at what it leaves behind.
#pragma once

#include <functional>

#include "tests/pka/keys.h"

namespace toolbelt::test {

using Visit =
    std::function<void(const std::string& name, const std::vector<Bytes>& secrets, std::function<void()> use)>;

inline void useKeys(const Visit& visit)
{
    const RsaNumbers& rsa = rsaKey("rsa1024e17");
    Bytes output(2000), digest(20), message(128), drawn(64);
    for (std::size_t i = 0; i < 20; ++i) digest[i] = static_cast<std::uint8_t>(0x5A + 13 * i);
    for (std::size_t i = 1; i < 128; ++i) message[i] = static_cast<std::uint8_t>(0x31 + 37 * i);
    for (std::size_t i = 0; i < 64; ++i) drawn[i] = static_cast<std::uint8_t>(0x21 + 59 * i);
    Key key;
    const auto slot = [&](OutputSlot operation, const Bytes& input) {
        std::uint32_t length = sizeOf(output);
        EXPECT_EQ(((*key).*operation)(output.data(), &length, input.data(), sizeOf(input)), STATUS_OK);
    };
    const auto exportKey = [&] {
        std::uint32_t length = sizeOf(output);
        EXPECT_EQ(key->exportDer(output.data(), &length), STATUS_OK);
        publicHalf(*key);
    };

    const Bytes blob = rsa.privateBlob(), der = derElement(0x30, rsa.privateContent());
    const std::vector<Bytes> numbers = {rsa.d, rsa.p, rsa.q, rsa.dp, rsa.dq, rsa.qinv};
    visit("RSA import, blob", numbers, [&] { key.reset(newPrivateRsa(blob.data(), sizeOf(blob))); });
    visit("RSA import, DER", numbers, [&] {
        DerElement element;
        cPKA* made = nullptr;
        (void)parseElement(element, der.data(), sizeOf(der));
        (void)newPrivateRsaFromDer(&made, element);
        key.reset(made);
    });
    ASSERT_NE(key, nullptr);
    visit("RSA private operation", numbers, [&] { slot(&cPKA::signPrefixed, digest); });
    visit("RSA export", numbers, exportKey);
    const Bytes cipher = run(*rsa.open(), &cPKA::encryptPrefixed, message);
    visit("RSA decryption", {message, rsa.p, rsa.q, rsa.dp, rsa.dq, rsa.qinv},
          [&] { slot(&cPKA::privateFromPrefixed, cipher); });

    for (const FieldNumbers* field : {&dsaNumbers("dsa512-160"), &elgamalNumbers()}) {
        const std::string name = field->isDsa() ? "DSA" : "ElGamal";
        const Bytes fieldBlob = field->privateBlob();
        visit(name + " import", {field->x},
              [&] { key.reset(field->secretFactory()(fieldBlob.data(), sizeOf(fieldBlob))); });
        ASSERT_NE(key, nullptr);
        const Pool pool(drawn);
        visit(name + " signature", {field->x, drawn}, [&] { slot(&cPKA::signPrefixed, digest); });
        const Pool again(drawn);
        if (field->isDsa()) {
            visit("DSA signature, DER", {field->x, drawn}, [&] { slot(&cPKA::signDer, digest); });
        } else {
            const Bytes pair = run(*field->open(), &cPKA::encryptPrefixed, digest);
            visit("ElGamal decryption", {field->x}, [&] { slot(&cPKA::privateFromPrefixed, pair); });
        }
        visit(name + " export", {field->x}, exportKey);
    }
}

} // namespace toolbelt::test
