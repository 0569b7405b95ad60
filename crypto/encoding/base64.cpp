// Alphabets of base64: the process-wide default, the search, and reading the checksum's digits.
#include "crypto/encoding/base64.h"

#include <utility>

#include "crypto/encoding/base64_text.h"

namespace toolbelt {
namespace {

const char* processAlphabet = BASE64_STANDARD_ALPHABET;

} // namespace

const char* setDefaultAlphabet(const char* alphabet)
{
    return std::exchange(processAlphabet, alphabet ? alphabet : BASE64_STANDARD_ALPHABET);
}

const char* defaultAlphabet()
{
    return processAlphabet;
}

std::int32_t base64Index(char character, const char* alphabet)
{
    alphabet = alphabetOrDefault(alphabet);
    std::int32_t index = BASE64_PAD;
    while (index >= 0 && alphabet[index] != character) --index;
    return index;
}

std::uint32_t readChecksum(const char* characters, const char* alphabet)
{
    std::uint32_t value = 0;
    for (std::uint32_t i = 0; i < BASE64_CHECKSUM_DIGITS; ++i) {
        const std::int32_t digit = base64Index(characters[i], alphabet);
        if (digit < 0 || digit >= BASE64_PAD) return BASE64_NO_VALUE;
        value = value << 6 | static_cast<std::uint32_t>(digit);
    }
    return value;
}

} // namespace toolbelt
