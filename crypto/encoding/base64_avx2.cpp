// Base64 on vector registers, by the method of Muła and Lemire ("Faster Base64 Encoding and Decoding Using AVX2
// Instructions", ACM Transactions on the Web 12, 2018): compiled with flags of its own. Both halves of a register are
// treated alike, with sixteen characters or the twelve bytes that they stand for in each.
#include "crypto/encoding/base64_avx2.h"

#include <immintrin.h>

#include "crypto/encoding/base64.h"

namespace toolbelt {
namespace {

constexpr std::uint32_t DIGITS = 32; // in a register
constexpr std::uint32_t BYTES = 24;  // that they stand for
constexpr std::uint32_t LINE_BYTES = BASE64_LINE_LENGTH / 4 * 3;

constexpr bool isDigit(int c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/';
}

// Tables looked up by half a character. A character is a digit when the marks of its halves have no bit in common:
// high[] has the bit of the row of 16 characters, low[] the bits of those rows where this place holds no digit. Rows 4
// and 6 hold digits in the same places, and so do rows 5 and 7.
struct DecodeTables
{
    alignas(16) char high[16];
    alignas(16) char low[16];
    alignas(16) char offset[16]; // from the character to its value, by row; that of "/" is in row 1, where none else is
};
constexpr DecodeTables makeDecodeTables()
{
    constexpr char ROWS[5] = {0x20, 0x30, 0x40, 0x50, 0};
    DecodeTables tables = {};
    for (int i = 0; i < 16; ++i) {
        tables.high[i] = i == 2 ? 1 : i == 3 ? 2 : i == 4 || i == 6 ? 4 : i == 5 || i == 7 ? 8 : 16;
        for (int row = 0; row < 5; ++row)
            if (row == 4 || !isDigit(ROWS[row] + i)) tables.low[i] |= static_cast<char>(1 << row);
    }
    tables.offset[1] = 63 - '/';
    tables.offset[2] = 62 - '+';
    tables.offset[3] = 52 - '0';
    tables.offset[4] = tables.offset[5] = 0 - 'A';
    tables.offset[6] = tables.offset[7] = 26 - 'a';
    return tables;
}
constexpr DecodeTables decodeTables = makeDecodeTables();

__m128i loadHalf(const void* from)
{
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}
__m256i load(const void* from)
{
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}
__m256i table(const char (&half)[16])
{
    return _mm256_broadcastsi128_si256(loadHalf(half));
}

// Digits of six bits each as characters: what is to be added depends on the range that a digit is in, of which 0 to 25
// is looked up at 13, 26 to 51 at 0, and the other ones behind that.
__m256i toCharacters(__m256i digits)
{
    alignas(16) static constexpr char OFFSETS[16] = {'a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                                                     '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62,
                                                     '/' - 63, 'A',      0,        0};
    const __m256i first = _mm256_cmpgt_epi8(_mm256_set1_epi8(26), digits);
    const __m256i range =
        _mm256_or_si256(_mm256_subs_epu8(digits, _mm256_set1_epi8(51)), _mm256_and_si256(first, _mm256_set1_epi8(13)));
    return _mm256_add_epi8(digits, _mm256_shuffle_epi8(table(OFFSETS), range));
}

// Digits of six bits each. Every three bytes are laid out as 1 0 2 1, so that each digit lies in a word of 16 bits, and
// multiplications shift it to its place. Each half is loaded whole: four bytes behind the last one are read.
__m256i loadDigits(const std::uint8_t* from)
{
    alignas(16) static constexpr char LAYOUT[16] = {1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10};
    const __m256i halves =
        _mm256_inserti128_si256(_mm256_castsi128_si256(loadHalf(from)), loadHalf(from + BYTES / 2), 1);
    const __m256i bytes = _mm256_shuffle_epi8(halves, table(LAYOUT));
    const __m256i even =
        _mm256_mulhi_epu16(_mm256_and_si256(bytes, _mm256_set1_epi32(0x0FC0FC00)), _mm256_set1_epi32(0x04000040));
    const __m256i odd =
        _mm256_mullo_epi16(_mm256_and_si256(bytes, _mm256_set1_epi32(0x003F03F0)), _mm256_set1_epi32(0x01000010));
    return _mm256_or_si256(even, odd);
}

// False when not all characters are digits; else their values.
bool toValues(__m256i& values, __m256i characters)
{
    const __m256i row = _mm256_and_si256(_mm256_srli_epi32(characters, 4), _mm256_set1_epi8(0x0F));
    const __m256i place = _mm256_and_si256(characters, _mm256_set1_epi8(0x0F));
    const __m256i high = _mm256_shuffle_epi8(table(decodeTables.high), row);
    const __m256i low = _mm256_shuffle_epi8(table(decodeTables.low), place);
    if (!_mm256_testz_si256(high, low)) return false;
    const __m256i slash = _mm256_cmpeq_epi8(characters, _mm256_set1_epi8('/'));
    const __m256i offset = _mm256_shuffle_epi8(table(decodeTables.offset), _mm256_add_epi8(row, slash));
    values = _mm256_add_epi8(characters, offset);
    return true;
}

void storeHalf(std::uint8_t* output, __m128i bytes)
{
    _mm_storel_epi64(reinterpret_cast<__m128i*>(output), bytes);
    const int last = _mm_extract_epi32(bytes, 2);
    __builtin_memcpy(output + 8, &last, sizeof last);
}

// Stores values of six bits as bytes.
void storeBytes(std::uint8_t* output, __m256i values)
{
    alignas(16) static constexpr char LAYOUT[16] = {2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1};
    const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const __m256i bytes = _mm256_shuffle_epi8(groups, table(LAYOUT));
    storeHalf(output, _mm256_castsi256_si128(bytes));
    storeHalf(output + BYTES / 2, _mm256_extracti128_si256(bytes, 1));
}

template <bool DECODE>
Base64Run takeRun(std::uint8_t* output, std::uint32_t room, const char* text, std::uint32_t length)
{
    Base64Run run = {0, 0};
    const char* const end = text + length;
    const char* at = text;
    while ((!DECODE || room >= BYTES) && end - at >= std::int32_t(DIGITS)) {
        __m256i values;
        if (!toValues(values, load(at))) {
            if (run.digits == 0 || end - at < std::int32_t(2 + DIGITS) || at[0] != '\r' || at[1] != '\n') break;
            if (!toValues(values, load(at + 2))) break;
            at += 2;
        }
        if constexpr (DECODE) {
            storeBytes(output, values);
            output += BYTES;
            room -= BYTES;
        }
        at += DIGITS;
        run.digits += DIGITS;
    }
    run.characters = static_cast<std::uint32_t>(at - text);
    return run;
}

} // namespace

std::uint32_t base64EncodeAvx2(char* output, const std::uint8_t* data, std::uint32_t length, bool breaks)
{
    const auto put = [&](__m256i characters) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(output), characters);
        output += DIGITS;
    };
    std::uint32_t done = 0;
    for (; length - done >= LINE_BYTES + 4; done += LINE_BYTES) { // four bytes more are read
        put(toCharacters(loadDigits(data + done)));
        put(toCharacters(loadDigits(data + done + BYTES)));
        if (breaks) {
            *output++ = '\r';
            *output++ = '\n';
        }
    }
    return done;
}

Base64Run base64DecodeAvx2(std::uint8_t* output, std::uint32_t room, const char* text, std::uint32_t length)
{
    return takeRun<true>(output, room, text, length);
}

Base64Run base64MeasureAvx2(const char* text, std::uint32_t length)
{
    return takeRun<false>(nullptr, 0, text, length);
}

} // namespace toolbelt
