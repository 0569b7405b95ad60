// The portable Montgomery product: a full product or square, then the reduction word by word.
#include "crypto/bignum/montgomery.h"

#include <cstring>

namespace toolbelt {
namespace {

using limbs::Limb;
using limbs::Word;

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
    if (carry != 0 || limbs::compare(r, k, n, k) >= 0) limbs::subtract(r, r, k, n, k);
}

// -1/n mod 2^64 for odd n. n is its own inverse to 3 bits, and each round doubles the bits that are right.
Limb negativeInverse(Limb n) noexcept
{
    Limb inverse = n;
    for (int bits = 3; bits < 64; bits *= 2) inverse *= 2 - n * inverse;
    return ~inverse + 1;
}

} // namespace

std::size_t montgomeryScratch(std::size_t k) noexcept
{
    return 2 * k + limbs::multiplyScratch(k, k);
}

void montgomeryProduct(Limb* r, const Limb* a, const Limb* b, const Limb* n, std::size_t k, Limb inverse,
                       Limb* scratch) noexcept
{
    if (a == b)
        limbs::square(scratch, a, k, scratch + 2 * k);
    else
        limbs::multiply(scratch, a, k, b, k, scratch + 2 * k);
    reduce(r, scratch, n, k, inverse);
}

Status MontgomeryContext::build() noexcept
{
    k = bnTopLimb(modulus) + 1;
    const std::size_t size = static_cast<std::size_t>(k);
    Status status = detail::resizeLimbs(inverseN, 1);
    if (status == STATUS_OK) status = detail::resizeLimbs(inverseR, size);
    if (status == STATUS_OK) status = detail::resizeLimbs(scratch, montgomeryScratch(size));
    if (status != STATUS_OK) return status;
    inverseN.limbs[0] = negativeInverse(modulus.limbs[0]);
    // Reducing 1 divides it by R.
    scratch.limbs[0] = 1;
    reduce(inverseR.limbs, scratch.limbs, modulus.limbs, size, inverseN.limbs[0]);
    return STATUS_OK;
}

void MontgomeryContext::product(Limb* r, const Limb* a, const Limb* b) noexcept
{
    montgomeryProduct(r, a, b, modulus.limbs, static_cast<std::size_t>(k), inverseN.limbs[0], scratch.limbs);
}

} // namespace toolbelt
