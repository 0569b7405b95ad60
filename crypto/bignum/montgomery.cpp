// The portable Montgomery product: a full product or square, then the reduction word by word. And the choice among it
// and the vector kernels.
#include "crypto/bignum/montgomery.h"

#include <cstring>

#include "crypto/base/cpu.h"
#include "crypto/bignum/branch_observer.h"
#include "crypto/bignum/digits.h"
#include "crypto/bignum/modular.h"

namespace toolbelt {
namespace {

using limbs::Limb;
using limbs::Word;

const MontgomeryKernel* chooseKernel() noexcept
{
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
    if (kernel && !chooseDigits(digits, bnBitLength(modulus))) kernel = nullptr;
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
    size = digits.digits;
    const Status status = detail::resizeLimbs(scratch, digitRoom(digits));
    return status == STATUS_OK ? spreadModulus(digits, *kernel, scratch, modulus, inverseN.limbs[0]) : status;
}

Status MontgomeryContext::enter(BigNum& value, const BigNum& x) noexcept
{
    BigNum shifted;
    const std::size_t shift = kernel ? digits.bits * size : 64 * size;
    Status status = detail::shiftLeft(shifted, x, static_cast<std::uint32_t>(shift));
    if (status == STATUS_OK) status = detail::resizeLimbs(value, size);
    if (status != STATUS_OK) return status;
    if (kernel == nullptr) return detail::divide(nullptr, value, shifted, modulus);
    status = detail::divide(nullptr, shifted, shifted, modulus);
    if (status == STATUS_OK) toDigits(value.limbs, size, digits.bits, shifted);
    return status;
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

Status MontgomeryContext::leave(BigNum& x, BigNum& value) noexcept
{
    if (kernel == nullptr) return bnModMultiply(x, value, inverseR, modulus);
    // A product with 1 divides by R and takes the shift back.
    BigNum one;
    Status status = detail::resizeLimbs(one, size);
    if (status != STATUS_OK) return status;
    one.limbs[0] = 1;
    product(value.limbs, one.limbs, value.limbs);
    status = fromDigits(one, value.limbs, size, digits.bits);
    return status == STATUS_OK ? detail::divide(nullptr, x, one, modulus) : status;
}

} // namespace toolbelt
