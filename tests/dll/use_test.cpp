// The exported operations, called across the DLL's border as a customer's program does.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "crypto/encoding/armour.h"
#include "crypto/encoding/x509.h"
#include "crypto/hash/hash.h"
#include "crypto/pka/rsa.h"

namespace toolbelt {
namespace {

std::vector<std::uint8_t> readFile(const std::string& name)
{
    std::vector<std::uint8_t> bytes;
    std::FILE* file = std::fopen((TOOLBELT_VECTORS + name).c_str(), "rb");
    EXPECT_NE(file, nullptr) << name;
    if (!file) return bytes;
    char chunk[65536];
    for (std::size_t n; (n = std::fread(chunk, 1, sizeof chunk, file)) > 0;)
        bytes.insert(bytes.end(), chunk, chunk + n);
    std::fclose(file);
    return bytes;
}

TEST(DllUse, DigestsAreMadeUsedAndReleased)
{
    ASSERT_EQ(offeredHashes[3], 0x80); // data is exported, not only code
    cHashAlg* hash = nullptr;
    ASSERT_EQ(createHash(&hash, 8), CRYPT_OK);
    ASSERT_NE(hash, nullptr);
    std::uint8_t digest[32];
    EXPECT_EQ(hashSize(hash), sizeof digest);
    EXPECT_EQ(hashBuffer(hash, digest, reinterpret_cast<const std::uint8_t*>("abc"), 3), CRYPT_OK);
    const std::uint8_t start[] = {0xba, 0x78, 0x16, 0xbf}; // FIPS 180-4's example
    EXPECT_EQ(std::memcmp(digest, start, sizeof start), 0);
    destroyHash(hash);
}

TEST(DllUse, ACertificateIsReadAndVerifiedAndADamagedOneRefused)
{
    std::vector<std::uint8_t> text = readFile("certificates/real-isrg-root-x1.pem");
    cByteBuffer der;
    ASSERT_TRUE(decodeArmoured(der, reinterpret_cast<const char*>(text.data()), static_cast<std::uint32_t>(text.size()),
                               "-----BEGIN CERTIFICATE-----", "-----END CERTIFICATE-----"));
    std::int32_t valid = -1;
    {
        CertificateInfo certificate;
        ASSERT_EQ(readCertificate(certificate, der.data(), der.length()), STATUS_OK);
        ASSERT_EQ(certificate.signatureAlgorithm.row->digest, 8);
        EXPECT_EQ(verifyCertificateSignature(certificate, 8, &valid), STATUS_OK);
        EXPECT_EQ(valid, 1);

        cPKA* key = nullptr;
        ASSERT_EQ(readPublicKeyFromInfo(&key, certificate.subjectPublicKeyInfo), STATUS_OK);
        EXPECT_EQ(key->keyLength(), 512);
        EXPECT_EQ(key->algorithm(), PKA_RSA);
        EXPECT_EQ(key->signPrefixed(nullptr, nullptr, nullptr, 0), PKA_E_NOT_OFFERED);
        delete key; // through the virtual destructor, with the DLL's own heap
    }
    der.data()[600] ^= 1;
    CertificateInfo damaged;
    if (readCertificate(damaged, der.data(), der.length()) == STATUS_OK) {
        EXPECT_NE(verifyCertificateSignature(damaged, 8, &valid), STATUS_OK);
        EXPECT_EQ(valid, 0);
    }
}

} // namespace
} // namespace toolbelt
