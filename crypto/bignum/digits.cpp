// Digits are cut from, and put back into, the 32-bit halves of limbs.
#include "crypto/bignum/digits.h"

namespace toolbelt {
namespace {

using limbs::Limb;
using limbs::Word;

// Shorter digits would serve moduli above 51,000 bits, longer than any key.
constexpr unsigned longestDigit = 28, shortestDigit = 26;

// Where the modulus begins in its room: at an address that vectors want.
Digit* aligned(BigNum& room) noexcept
{
    constexpr std::uintptr_t alignment = 32;
    const auto address = reinterpret_cast<std::uintptr_t>(room.limbs);
    return room.limbs + (alignment - address % alignment) % alignment / sizeof(Digit);
}

} // namespace

// Each column sums at most 2 D products. A digit is at most 2^w + 2^(64 - 2w) + 1, so that two of them multiply to less
// than 2^2w (1 + 1/32), and what is carried into a column is far less than one more product.
bool chooseDigits(DigitModulus& modulus, std::uint32_t bits) noexcept
{
    for (unsigned w = longestDigit; w >= shortestDigit; --w) {
        // n c has at most w bits more than n, and 4 n c must be below 2^(w D).
        const std::size_t digits = ((bits + std::uint64_t{w} + 2 + w - 1) / w + 3) / 4 * 4;
        const std::uint64_t products = std::uint64_t{1} << (64 - 2 * w);
        if (2 * digits > products - products / 32 - 2) continue;
        modulus.bits = w;
        modulus.digits = digits;
        return true;
    }
    return false;
}

std::size_t digitRoom(const DigitModulus& modulus) noexcept
{
    return 3 + digitWork(modulus.digits) + 4 * modulus.digits + digitConstants;
}

Status spreadModulus(DigitModulus& modulus, const MontgomeryKernel& kernel, BigNum& room, const BigNum& n,
                     Limb inverse) noexcept
{
    const std::size_t digits = modulus.digits;
    BigNum c, multiple, plain;
    Status status = detail::resizeLimbs(c, 1);
    if (status != STATUS_OK) return status;
    c.limbs[0] = inverse & ((Limb{1} << modulus.bits) - 1);
    status = detail::multiply(multiple, n, c);
    if (status == STATUS_OK) status = bnAddWord(multiple, multiple, 1);
    if (status == STATUS_OK) status = detail::resizeLimbs(plain, digits + 8);
    if (status != STATUS_OK) return status;
    Digit* const value = plain.limbs + 4; // zeros around it
    toDigits(value, digits, modulus.bits, multiple);

    modulus.work = aligned(room);
    Digit* spread = modulus.work + digitWork(digits);
    modulus.spread = spread;
    for (std::size_t i = 4; i < digits + 4; i += kernel.lanes)
        for (std::size_t early = 0; early < 4; ++early)
            for (std::size_t lane = 0; lane < kernel.lanes; ++lane) *spread++ = value[i - early + lane];
    // n may be a secret prime: its digits go from one wiped block to the other.
    const auto put = [&spread](Digit constant) {
        *spread++ = constant;
        *spread++ = 0;
    };
    for (int i = 1; i < 4; ++i) put(value[i]);
    put((Digit{1} << modulus.bits) - 1);
    put(modulus.bits);
    return STATUS_OK;
}

void toDigits(Digit* digits, std::size_t count, unsigned bits, const BigNum& x) noexcept
{
    const detail::Operand value(x);
    const Word* const words = limbs::words(value.data);
    const std::size_t size = 2 * value.count;
    const Word mask = (Word{1} << bits) - 1;
    std::size_t bit = 0;
    for (std::size_t i = 0; i < count; ++i, bit += bits) {
        const std::size_t word = bit / 32;
        const Limb low = word < size ? words[word] : 0, high = word + 1 < size ? words[word + 1] : 0;
        digits[i] = static_cast<Word>((high << 32 | low) >> bit % 32) & mask;
    }
}

Status fromDigits(BigNum& x, const Digit* digits, std::size_t count, unsigned bits) noexcept
{
    const Status status = detail::resizeLimbs(x, (count * bits + 63) / 64 + 1);
    if (status != STATUS_OK) return status;
    Word* const words = limbs::words(x.limbs);
    const Digit mask = (Digit{1} << bits) - 1;
    Digit carry = 0;
    std::size_t bit = 0;
    for (std::size_t i = 0; i < count; ++i, bit += bits) {
        carry += digits[i];
        const Digit placed = (carry & mask) << bit % 32;
        words[bit / 32] |= static_cast<Word>(placed);
        words[bit / 32 + 1] |= static_cast<Word>(placed >> 32);
        carry >>= bits;
    }
    return STATUS_OK;
}

} // namespace toolbelt
