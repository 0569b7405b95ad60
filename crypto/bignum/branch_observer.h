// The rare branches of the arithmetic, told to an observer: a test that must know that it took them compiles the
// kernels with TOOLBELT_OBSERVE_BRANCHES and brings observe() along. In the library it is nothing.
#pragma once

namespace toolbelt::limbs {

enum class Branch
{
    quotientAllOnes,     // division: the divisor's top limb equals the remainder's
    quotientLowered,     // the estimate is lowered by looking at the second limb
    quotientAddBack,     // and is still one too large
    blockLowered,        // a block of quotient limbs is too large
    blockRefused,        // and cannot be found from the divisor's upper limbs
    wideLowered,         // 128 by 64 bits: the reciprocal's guess is one too large
    wideRaised,          // or one too small
    blockWideLowered,    // the same of 1024 by 512 bits
    blockWideRaised,     //
    productSplit,        // Karatsuba's method
    productSchoolbook,   // the longest operands that are not split
    squareSplit,         //
    middleAdded,         // the differences point different ways
    middleTaken,         // or the same way
    montgomeryCarry,     // the final subtraction, for a carry
    montgomeryNotBelow,  // or for a sum that is not below the modulus
    montgomeryUnchanged, // no final subtraction
    count,
};

#if defined(TOOLBELT_OBSERVE_BRANCHES)
void observe(Branch branch) noexcept;
#else
inline void observe(Branch) noexcept {}
#endif

} // namespace toolbelt::limbs
