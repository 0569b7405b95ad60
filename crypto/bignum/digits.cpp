// Digits are cut from, and put back into, limbs.
#include "crypto/bignum/digits.h"

namespace toolbelt {
namespace {

using limbs::Limb;

// Shorter digits would serve moduli above 51,000 bits, longer than any key.
constexpr unsigned longestNarrow = 28, shortestNarrow = 26;

// Each column sums at most 2 D products. A digit is at most 2^w + 2^(64 - 2w) + 1, so that two of them multiply to less
// than 2^2w (1 + 1/32), and what is carried into a column is far less than one more product.
bool chooseNarrow(DigitModulus& modulus, std::uint32_t bits) noexcept
{
    for (unsigned w = longestNarrow; w >= shortestNarrow; --w) {
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

// A product of values below 4 n is below 16 n^2 / 2^(w D) + 2 n: the last digit adds n at most, those before it n c /
// 2^w. That is below 4 n when 8 n is below 2^(w D). Each column sums at most 4 D halves of products, and a carry.
bool chooseWide(DigitModulus& modulus, std::uint32_t bits) noexcept
{
    modulus.bits = wideDigit;
    modulus.digits = (bits + std::size_t{3} + wideDigit - 1) / wideDigit;
    return modulus.digits < std::size_t{1} << (64 - wideDigit - 2);
}

// digits[0..count) = x from its bit first on, which has room in them.
void cut(Digit* digits, std::size_t count, unsigned bits, const Limb* x, std::size_t size, std::size_t first) noexcept
{
    const Limb mask = (Limb{1} << bits) - 1;
    for (std::size_t i = 0; i < count; ++i, first += bits) {
        const std::size_t limb = first / 64, shift = first % 64;
        Limb digit = limb < size ? x[limb] >> shift : 0;
        if (shift + bits > 64 && limb + 1 < size) digit |= x[limb + 1] << (64 - shift);
        digits[i] = digit & mask;
    }
}

// multiple: the digits of n c + 1, with four zeros before and behind them.
void spreadNarrow(Digit* spread, const DigitModulus& modulus, std::size_t lanes, const Digit* multiple) noexcept
{
    for (std::size_t i = 4; i < modulus.digits + 4; i += lanes)
        for (std::size_t early = 0; early < 4; ++early)
            for (std::size_t lane = 0; lane < lanes; ++lane) *spread++ = multiple[i - early + lane];
    const auto put = [&spread](Digit constant) {
        *spread++ = constant;
        *spread++ = 0;
    };
    for (int i = 1; i < 4; ++i) put(multiple[i]);
    put((Digit{1} << modulus.bits) - 1);
    put(modulus.bits);
}

std::size_t workDigits(const DigitModulus& modulus, const MontgomeryKernel& kernel) noexcept
{
    return kernel.wide ? valueDigits(modulus, kernel) + 2 * kernel.lanes : narrowWork(modulus.digits);
}

} // namespace

bool chooseDigits(DigitModulus& modulus, const MontgomeryKernel& kernel, std::uint32_t bits) noexcept
{
    return kernel.wide ? chooseWide(modulus, bits) : chooseNarrow(modulus, bits);
}

std::size_t valueDigits(const DigitModulus& modulus, const MontgomeryKernel& kernel) noexcept
{
    return (modulus.digits + kernel.lanes - 1) / kernel.lanes * kernel.lanes;
}

std::size_t digitRoom(const DigitModulus& modulus, const MontgomeryKernel& kernel) noexcept
{
    const std::size_t spread =
        kernel.wide ? 2 * valueDigits(modulus, kernel) + 1 : 4 * modulus.digits + narrowConstants;
    return alignedRoom + workDigits(modulus, kernel) + spread;
}

void spreadModulus(DigitModulus& modulus, const MontgomeryKernel& kernel, BigNum& room, const BigNum& n,
                   Limb inverse) noexcept
{
    const detail::Operand value(n);
    const Limb c = inverse & ((Limb{1} << modulus.bits) - 1);
    modulus.work = alignedDigits(room.limbs);
    Digit* const spread = modulus.work + workDigits(modulus, kernel);
    modulus.spread = spread;

    // n may be a secret prime: its multiple is formed in the room too, which is wiped, where the work will be.
    Limb* const multiple = modulus.work;
    const std::size_t size = value.count + 1;
    wipe(multiple, size * sizeof(Limb));
    limbs::Word* const words = limbs::words(multiple);
    words[2 * size - 2] =
        limbs::multiplyAdd(words, limbs::words(value.data), 2 * value.count, static_cast<limbs::Word>(c));
    words[2 * size - 1] =
        limbs::multiplyAdd(words + 1, limbs::words(value.data), 2 * value.count, static_cast<limbs::Word>(c >> 32));
    const Limb one = 1;
    limbs::add(multiple, multiple, size, &one, 1);

    const std::size_t digits = valueDigits(modulus, kernel);
    if (kernel.wide) {
        cut(spread, digits, modulus.bits, multiple, size, modulus.bits);
        cut(spread + digits, digits, modulus.bits, value.data, value.count, 0);
        spread[2 * digits] = c;
        return;
    }
    Digit* const plain = multiple + size;
    wipe(plain, 4 * sizeof(Digit));
    cut(plain + 4, digits + 4, modulus.bits, multiple, size, 0);
    spreadNarrow(spread, modulus, kernel.lanes, plain + 4);
}

Digit* alignedDigits(Limb* room) noexcept
{
    constexpr std::uintptr_t alignment = (alignedRoom + 1) * sizeof(Digit);
    const auto address = reinterpret_cast<std::uintptr_t>(room);
    return room + (alignment - address % alignment) % alignment / sizeof(Digit);
}

void toDigits(Digit* digits, std::size_t count, unsigned bits, const BigNum& x) noexcept
{
    const detail::Operand value(x);
    cut(digits, count, bits, value.data, value.count, 0);
}

Status fromDigits(BigNum& x, const Digit* digits, std::size_t count, unsigned bits) noexcept
{
    const Status status = detail::resizeLimbs(x, (count * bits + 63) / 64 + 1);
    if (status != STATUS_OK) return status;
    const Digit mask = (Digit{1} << bits) - 1;
    Digit carry = 0;
    std::size_t bit = 0;
    for (std::size_t i = 0; i < count; ++i, bit += bits) {
        const std::size_t limb = bit / 64, shift = bit % 64;
        carry += digits[i];
        x.limbs[limb] |= (carry & mask) << shift;
        if (shift + bits > 64) x.limbs[limb + 1] |= (carry & mask) >> (64 - shift);
        carry >>= bits;
    }
    return STATUS_OK;
}

} // namespace toolbelt
