// The portable Montgomery product: a full product or square, then the reduction word by word. And the choice among it
// and the vector kernels.
#include "crypto/bignum/montgomery.h"

#include <algorithm>
#include <cstring>

#include "crypto/base/cpu.h"
#include "crypto/bignum/branch_observer.h"
#include "crypto/bignum/digits.h"
#include "crypto/bignum/modular.h"

namespace toolbelt {
namespace {

using limbs::Limb;
using limbs::Word;

// Bits up to which a quotient costs less than halving it by a squaring more does.
constexpr std::size_t shortQuotient = 256;

const MontgomeryKernel* chooseKernel() noexcept
{
    if (cpu::has(cpu::AVX512 | cpu::IFMA)) return &montgomeryIfma;
    if (cpu::has(cpu::AVX2)) return &montgomeryAvx2;
    if (cpu::has(cpu::SSE2)) return &montgomerySse2;
    return nullptr;
}

// r = t / R mod n for t below n R, 2k limbs, which are used up. Each round adds the multiple of n that clears the
// lowest word left; its carry is parked in the word just cleared and added at the end, all carries at once.
void reduce(Limb* r, Limb* t, const Limb* n, std::size_t k, Limb inverse) noexcept
{
    Word* tw = limbs::words(t);
    const Word* nw = limbs::words(n);
    const Word low = static_cast<Word>(inverse); // -1/n mod 2^32
    for (std::size_t i = 0; i < 2 * k; ++i)
        tw[i] = limbs::multiplyAdd(tw + i, nw, 2 * k, static_cast<Word>(tw[i] * low));
    // Below 2n: one subtraction makes it a remainder.
    const Limb carry = limbs::add(r, t + k, k, t, k);
    const bool notBelow = carry != 0 || limbs::compare(r, k, n, k) >= 0;
    using limbs::Branch;
    limbs::observe(carry != 0 ? Branch::montgomeryCarry
                   : notBelow ? Branch::montgomeryNotBelow
                              : Branch::montgomeryUnchanged);
    if (notBelow) limbs::subtract(r, r, k, n, k);
}

// -1/n mod 2^64 for odd n. n is its own inverse to 3 bits, and each round doubles the bits that are right.
Limb negativeInverse(Limb n) noexcept
{
    Limb inverse = n;
    for (int bits = 3; bits < 64; bits *= 2) inverse *= 2 - n * inverse;
    return ~inverse + 1;
}

} // namespace

Status MontgomeryContext::build() noexcept
{
    k = bnTopLimb(modulus) + 1;
    const Status status = detail::resizeLimbs(inverseN, 1);
    if (status != STATUS_OK) return status;
    inverseN.limbs[0] = negativeInverse(modulus.limbs[0]);
    kernel = chooseKernel();
    if (kernel && !chooseDigits(digits, *kernel, bnBitLength(modulus))) kernel = nullptr;
    return kernel ? buildDigits() : buildPortable();
}

Status MontgomeryContext::buildPortable() noexcept
{
    size = static_cast<std::size_t>(k);
    Status status = detail::resizeLimbs(inverseR, size);
    if (status == STATUS_OK) status = detail::resizeLimbs(scratch, 2 * size + limbs::multiplyScratch(size, size));
    if (status != STATUS_OK) return status;
    // Reducing 1 divides it by R.
    scratch.limbs[0] = 1;
    reduce(inverseR.limbs, scratch.limbs, modulus.limbs, size, inverseN.limbs[0]);
    return STATUS_OK;
}

Status MontgomeryContext::buildDigits() noexcept
{
    size = valueDigits(digits, *kernel);
    const std::size_t room = digitRoom(digits, *kernel);
    const Status status = detail::resizeLimbs(scratch, room + alignedRoom + size);
    if (status != STATUS_OK) return status;
    spreadModulus(digits, *kernel, scratch, modulus, inverseN.limbs[0]);
    operand = alignedDigits(scratch.limbs + room);
    return STATUS_OK;
}

Status MontgomeryContext::enter(Limb* value, const BigNum& x) noexcept
{
    if (kernel) return enterDigits(value, x);
    BigNum shifted;
    Status status = detail::shiftLeft(shifted, x, static_cast<std::uint32_t>(64 * size));
    if (status == STATUS_OK) status = detail::divide(nullptr, shifted, shifted, modulus);
    if (status != STATUS_OK) return status;
    const detail::Operand rest(shifted);
    std::fill_n(std::copy_n(rest.data, rest.count, value), size - rest.count, 0);
    return STATUS_OK;
}

// With R the power of two that the kernel divides by, x R is the product of x and R^2. R 2^t modulo n is a short
// division when t is short, and squaring it doubles t: until R^2 it takes less time than a long division would.
Status MontgomeryContext::enterDigits(Digit* value, const BigNum& x) noexcept
{
    const std::size_t r = digits.bits * digits.digits;
    std::size_t t = r;
    while (t > shortQuotient && t % 2 == 0) t /= 2;
    BigNum rest;
    Status status = bnSetBit(rest, static_cast<std::uint32_t>(r + t));
    if (status == STATUS_OK) status = detail::divide(nullptr, rest, rest, modulus);
    if (status != STATUS_OK) return status;
    toDigits(value, size, digits.bits, rest);
    for (; t < r; t *= 2) product(value, value, value);

    const bool reduced = bnCompare(x, modulus) < 0;
    if (!reduced) status = detail::divide(nullptr, rest, x, modulus);
    if (status != STATUS_OK) return status;
    toDigits(operand, size, digits.bits, reduced ? x : rest);
    product(value, value, operand);
    return STATUS_OK;
}

void MontgomeryContext::product(Limb* r, const Limb* a, const Limb* b) noexcept
{
    if (kernel) {
        kernel->product(r, a, b, digits);
        return;
    }
    if (a == b)
        limbs::square(scratch.limbs, a, size, scratch.limbs + 2 * size);
    else
        limbs::multiply(scratch.limbs, a, size, b, size, scratch.limbs + 2 * size);
    reduce(r, scratch.limbs, modulus.limbs, size, inverseN.limbs[0]);
}

Status MontgomeryContext::leave(BigNum& x, Limb* value) noexcept
{
    BigNum result;
    if (kernel == nullptr) {
        const Status status = detail::store(result, value, size);
        return status == STATUS_OK ? bnModMultiply(x, result, inverseR, modulus) : status;
    }
    // A product with 1 divides by R and takes the shift back.
    wipe(operand, size * sizeof(Digit));
    operand[0] = 1;
    product(value, operand, value);
    const Status status = fromDigits(result, value, size, digits.bits);
    return status == STATUS_OK ? detail::divide(nullptr, x, result, modulus) : status;
}

} // namespace toolbelt
