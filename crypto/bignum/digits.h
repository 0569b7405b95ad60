// Numbers as the digits of montgomery_kernel.h, and back.
#pragma once

#include "crypto/bignum/montgomery_kernel.h"
#include "crypto/bignum/operands.h"

namespace toolbelt {

// The length and the number of the digits for an odd modulus of that many bits. False when no length suits.
bool chooseDigits(DigitModulus& modulus, const MontgomeryKernel& kernel, std::uint32_t bits) noexcept;

// The digits that a value takes: whole vectors.
std::size_t valueDigits(const DigitModulus& modulus, const MontgomeryKernel& kernel) noexcept;

// Limbs that spreadModulus wants.
std::size_t digitRoom(const DigitModulus& modulus, const MontgomeryKernel& kernel) noexcept;
// Writes the modulus for the kernel into those of room; work is there too. inverse is -1/n mod 2^64.
void spreadModulus(DigitModulus& modulus, const MontgomeryKernel& kernel, BigNum& room, const BigNum& n,
                   limbs::Limb inverse) noexcept;

// Where an array begins in its room, at most alignedRoom limbs up: vectors of it do not cross cache lines.
inline constexpr std::size_t alignedRoom = 7;
Digit* alignedDigits(limbs::Limb* room) noexcept;

// digits[0..count) = x, which has room in them.
void toDigits(Digit* digits, std::size_t count, unsigned bits, const BigNum& x) noexcept;
// x = digits[0..count), which may be longer than their bits.
[[nodiscard]] Status fromDigits(BigNum& x, const Digit* digits, std::size_t count, unsigned bits) noexcept;

} // namespace toolbelt
