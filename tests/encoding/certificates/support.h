// What the suites of keys and certificates share: PEM files, digests, and DER written as hexadecimal.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "crypto/encoding/armour.h"
#include "crypto/hash/hash.h"
#include "tests/support/vectors.h"

namespace toolbelt::test {

inline const std::string SCENARIOS = "../encoding/certificates/scenarios.txt";

// The bytes of the first block of that label ("CERTIFICATE").
inline Bytes fromPem(const std::string& file, const std::string& label)
{
    const Bytes text = readVectorFile(file);
    cByteBuffer buffer;
    if (!decodeArmoured(buffer, reinterpret_cast<const char*>(text.data()), sizeOf(text),
                        ("-----BEGIN " + label + "-----").c_str(), ("-----END " + label + "-----").c_str()))
        throw std::runtime_error("no " + label + " in " + file);
    return Bytes(buffer.data(), buffer.data() + buffer.length());
}

inline Bytes certificate(const std::string& name)
{
    return fromPem("certificates/" + name + ".pem", "CERTIFICATE");
}

inline std::string digestHex(std::int32_t id, const std::uint8_t* data, std::uint32_t length)
{
    cHashAlg* hash = nullptr;
    if (createHash(&hash, id) != CRYPT_OK || !hash) throw std::runtime_error("no digest object");
    Bytes digest(hashSize(hash));
    EXPECT_EQ(hashBuffer(hash, digest.data(), data, length), CRYPT_OK);
    destroyHash(hash);
    return toHex(digest);
}

inline std::string hexOrNone(const std::uint8_t* octets, std::uint32_t length)
{
    return octets ? toHex(octets, length) : "none";
}

// An element in hexadecimal, from its identifier octet and its content, both in hexadecimal; a header of the fewest
// octets.
inline std::string der(const std::string& identifier, const std::string& content)
{
    const std::size_t length = content.size() / 2;
    const std::uint8_t octets[] = {0x82, static_cast<std::uint8_t>(length >> 8), static_cast<std::uint8_t>(length)};
    const std::string last = toHex(octets + 2, 1);
    return identifier + (length < 0x80 ? last : length < 0x100 ? "81" + last : toHex(octets, 3)) + content;
}

} // namespace toolbelt::test
