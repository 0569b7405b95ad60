// MD5: 64 steps on four words, little-endian throughout.
#include "crypto/hash/md5.h"

#include <bit>

#include "crypto/base/bytes.h"
#include "crypto/hash/unroll.h"

namespace toolbelt {
namespace {

// The integer part of 2^32 * |sin(i + 1)|, in radians.
constexpr std::uint32_t SINES[64] = {
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501,
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821,
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8,
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A,
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70,
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665,
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1,
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391,
};

constexpr int SHIFTS[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

template <std::uint32_t ROUND>
constexpr std::uint32_t mixWords(std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    if constexpr (ROUND == 0) return d ^ (b & (c ^ d)); // b selects c or d
    // d selects b or c; b, which is ready last, is used late, and the sum lets the other half be added before.
    if constexpr (ROUND == 1) return (c & ~d) + (b & d);
    if constexpr (ROUND == 2) return b ^ (c ^ d);
    if constexpr (ROUND == 3) return c ^ (b | ~d);
}

constexpr std::uint32_t messageWord(std::uint32_t step)
{
    constexpr std::uint32_t FACTOR[4] = {1, 5, 3, 7};
    constexpr std::uint32_t OFFSET[4] = {0, 1, 5, 0};
    return (FACTOR[step / 16] * step + OFFSET[step / 16]) % 16;
}

} // namespace

void md5Compress(Md5State& state, const std::uint8_t* blocks, std::uint32_t count)
{
    for (; count != 0; --count, blocks += 64) {
        Md5State v = state;
        // Step I finds a, b, c, d from index -I on: the words stay, their roles move.
        unroll<64>([&]<std::uint32_t I>() __attribute__((always_inline)) {
            constexpr std::uint32_t ROUND = I / 16;
            std::uint32_t& a = v[(64 - I) % 4];
            const std::uint32_t b = v[(65 - I) % 4];
            a +=
                mixWords<ROUND>(b, v[(66 - I) % 4], v[(67 - I) % 4]) + load32le(blocks + 4 * messageWord(I)) + SINES[I];
            a = b + std::rotl(a, SHIFTS[ROUND][I % 4]);
        });
        for (std::uint32_t i = 0; i < 4; ++i) state[i] += v[i];
    }
}

Status md5Reset(Md5Context* context)
{
    start(*context, {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476});
    return CRYPT_OK;
}

Status md5Update(Md5Context* context, const std::uint8_t* data, std::uint32_t length)
{
    countAndAbsorb(*context, data, length, md5Compress);
    return CRYPT_OK;
}

Status md5Final(Md5Context* context, std::uint8_t* output)
{
    std::uint8_t length[8];
    store64le(length, context->counter);
    pad(*context, length, md5Compress);
    for (std::uint32_t i = 0; i < 4; ++i) store32le(output + 4 * i, context->state[i]);
    return CRYPT_OK;
}

} // namespace toolbelt
