// The registry of ciphers: its rows, the names of the rows, and the ids on offer.
#include "crypto/cipher/cipher.h"
#include "crypto/cipher/creators.h"

namespace toolbelt {
namespace {

template <std::uint32_t DEFAULT, std::uint32_t LARGEST>
std::uint32_t keySize(std::uint32_t* maxOut)
{
    if (maxOut) *maxOut = LARGEST;
    return DEFAULT;
}

// The identity has no key and no largest one.
std::uint32_t noKeySize(std::uint32_t*)
{
    return 0;
}

template <std::uint32_t SIZE>
std::uint32_t blockSize()
{
    return SIZE;
}

} // namespace

// The rows of one class differ in the default key length alone, but for RC2, Camellia and ARIA, where each row has a
// class of its own.
const CipherRow cipherRows[CIPHER_ROW_COUNT] = {
    {0, createDummy, noKeySize, blockSize<0>},
    {1, createIdea, keySize<16, 16>, blockSize<8>},
    {2, create3des, keySize<24, 24>, blockSize<8>},
    {3, createCast, keySize<16, 16>, blockSize<8>},
    {4, createBfish, keySize<16, 56>, blockSize<8>},
    {0x80, createBfish, keySize<32, 56>, blockSize<8>},
    {0x81, createBfish, keySize<56, 56>, blockSize<8>},
    {0x8A, createTFish, keySize<32, 32>, blockSize<16>},
    {10, createTFish, keySize<32, 32>, blockSize<16>},
    {0x85, createGOST, keySize<32, 32>, blockSize<8>},
    {0x88, createRIJN, keySize<32, 32>, blockSize<16>},
    {7, createRIJN, keySize<16, 32>, blockSize<16>},
    {8, createRIJN, keySize<24, 32>, blockSize<16>},
    {9, createRIJN, keySize<32, 32>, blockSize<16>},
    {0x89, createSerpent, keySize<32, 32>, blockSize<16>},
    {0x83, createDes, keySize<8, 8>, blockSize<8>},
    {100, createRC2_40, keySize<5, 16>, blockSize<8>},
    {101, createRC2_128, keySize<16, 16>, blockSize<8>},
    {11, createCamellia128, keySize<16, 16>, blockSize<16>},
    {12, createCamellia192, keySize<24, 24>, blockSize<16>},
    {13, createCamellia, keySize<32, 32>, blockSize<16>},
    {26, createARIA128, keySize<16, 16>, blockSize<16>},
    {27, createARIA192, keySize<24, 24>, blockSize<16>},
    {28, createARIA, keySize<32, 32>, blockSize<16>},
    {0x87, createRC6, keySize<32, 32>, blockSize<16>},
};

const char* const cipherNames[CIPHER_ROW_COUNT] = {
    "none",     "idea",        "3des",     "cast-128", "blowfish-128", "blowfish-256", "blowfish-448",
    "twofish",  "twofish-256", "gost",     "rijndael", "aes-128",      "aes-192",      "aes-256",
    "serpent",  "des",         "rc2-40",   "rc2-128",  "camellia-128", "camellia-192", "camellia-256",
    "aria-128", "aria-192",    "aria-256", "rc6",
};

const std::int32_t offeredCiphers[OFFERED_CIPHER_COUNT] = {1,    2,    3,    4,   9,   0x80, 0x81, 0x8A,
                                                           0x85, 0x88, 0x89, 100, 101, 13,   28};

Status findCipher(const CipherRow** row, std::int32_t id) noexcept
{
    for (const CipherRow& candidate : cipherRows)
        if (candidate.id == id) {
            *row = &candidate;
            return CRYPT_OK;
        }
    return CRYPT_E_UNKNOWN_ALGORITHM;
}

} // namespace toolbelt
