#include "tests/pka/rsa_test_keys.h"

#include <gtest/gtest.h>

#include <bit>

namespace toolbelt::test {
namespace {

void strip(Bytes& magnitude)
{
    magnitude.erase(magnitude.begin(), std::find_if(magnitude.begin(), magnitude.end(), [](auto b) { return b != 0; }));
}

} // namespace

const std::vector<RsaNumbers>& rsaKeys()
{
    static const std::vector<RsaNumbers> keys = [] {
        std::vector<RsaNumbers> list;
        for (const Record& r : readVectors("keys/rsa-private.txt")) {
            list.push_back({r.get("key"), r.number("key-bits"), r.bytes("n"), r.bytes("e"), r.bytes("d"), r.bytes("p"),
                            r.bytes("q"), r.bytes("dp"), r.bytes("dq"), r.bytes("qinv")});
            EXPECT_EQ(r.unread(), std::vector<std::string>());
        }
        return list;
    }();
    return keys;
}

const RsaNumbers& rsaKey(const std::string& name)
{
    const auto& keys = rsaKeys();
    return keys.at(std::find_if(keys.begin(), keys.end(), [&](auto& key) { return key.name == name; }) - keys.begin());
}

Bytes join(std::initializer_list<Bytes> parts)
{
    Bytes whole;
    for (const Bytes& part : parts) whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

Bytes prefixed(Bytes magnitude, std::size_t size)
{
    strip(magnitude);
    const std::size_t bits = magnitude.empty() ? 0 : magnitude.size() * 8 - std::countl_zero(magnitude[0]);
    magnitude.insert(magnitude.begin(), {static_cast<std::uint8_t>(bits >> 8), static_cast<std::uint8_t>(bits)});
    magnitude.resize(std::max(size, magnitude.size()));
    return magnitude;
}

Bytes derElement(std::uint8_t tag, const Bytes& content)
{
    const std::size_t size = content.size();
    const auto low = static_cast<std::uint8_t>(size), high = static_cast<std::uint8_t>(size >> 8);
    return join({{tag}, size < 0x80 ? Bytes{low} : size < 0x100 ? Bytes{0x81, low} : Bytes{0x82, high, low}, content});
}

Bytes derInteger(Bytes magnitude)
{
    strip(magnitude);
    if (magnitude.empty() || magnitude[0] >= 0x80) magnitude.insert(magnitude.begin(), 0);
    return derElement(2, magnitude);
}

Bytes publicBlob(const RsaNumbers& key)
{
    return join({prefixed(key.n), prefixed(key.e)});
}

Bytes privatePart(const RsaNumbers& key)
{
    return join({prefixed(key.d), prefixed(key.q), prefixed(key.p), prefixed(key.qinv)});
}

Key publicKey(const RsaNumbers& key)
{
    const Bytes blob = publicBlob(key);
    return Key(newPublicRsa(blob.data(), sizeOf(blob)));
}

Key privateKey(const RsaNumbers& key)
{
    const Bytes blob = join({publicBlob(key), privatePart(key)});
    return Key(newPrivateRsa(blob.data(), sizeOf(blob)));
}

Bytes run(cPKA& key, OutputSlot slot, const Bytes& input, Status expected)
{
    const Bytes exact(input);
    Bytes output(8192, 0xA5);
    std::uint32_t length = sizeOf(output);
    EXPECT_EQ((key.*slot)(output.data(), &length, exact.data(), sizeOf(exact)), expected);
    return slice(output, 0, length);
}

Bytes run(cPKA& key, ExportSlot slot)
{
    std::uint32_t length = 0;
    EXPECT_EQ((key.*slot)(nullptr, &length), STATUS_BUFFER_TOO_SMALL);
    const std::uint32_t needed = length;
    Bytes output(needed + 1, 0xA5);
    EXPECT_EQ((key.*slot)(output.data(), &--length), STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(output, Bytes(needed + 1, 0xA5));
    EXPECT_EQ((key.*slot)(output.data(), &++length), STATUS_OK); // the size stored, and a byte more
    EXPECT_EQ(length, needed);
    EXPECT_EQ(output.back(), 0xA5);
    output.pop_back();
    return output;
}

Status verifyDer(cPKA& key, Bytes signature, const Bytes& digest)
{
    return key.verifyDer(signature.data(), sizeOf(signature), digest.data(), sizeOf(digest));
}

Status verifyPrefixed(cPKA& key, Bytes signature, const Bytes& digest)
{
    return key.verifyPrefixed(signature.data(), sizeOf(signature), digest.data(), sizeOf(digest));
}

} // namespace toolbelt::test
