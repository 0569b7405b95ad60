// Quotients, products, sums and shifts against the comparison arithmetic.
#include "fuzz/natural.h"

namespace toolbelt::fuzz {
namespace {

const Target target("divide", [](Input input) {
    const std::uint32_t options = input.byte();
    const Bytes a = input.number(512), b = input.number(options & 1 ? 512 : 64);
    BigNum left, right, quotient, remainder, result;
    load(left, a);
    load(right, b);
    require(bnMultiply(result, left, right) == STATUS_OK && valueOf(result) == multiply(a, b), "a product");
    require(bnMultiply(result, left, left) == STATUS_OK && valueOf(result) == multiply(a, a), "a square");
    const bool less = isLess(a, b), equal = trimmed(a) == trimmed(b);
    const std::int32_t order = bnCompare(left, right);
    require(less ? order < 0 : equal ? order == 0 : order > 0, "the order");
    const Status status = bnDivide(options & 2 ? nullptr : &quotient, remainder, left, right);
    if (trimmed(b).empty()) return require(status == BN_E_RANGE, "no division by zero");
    Bytes rest;
    const Bytes expected = divide(a, b, rest);
    require(status == STATUS_OK && valueOf(remainder) == rest, "a remainder");
    require(options & 2 || valueOf(quotient) == expected, "a quotient");
    // Back by other operations: q b + r = a, and a - r is b times q whatever aliases what.
    if ((options & 2) != 0) return;
    require(bnMultiply(quotient, quotient, right) == STATUS_OK && bnAdd(quotient, quotient, remainder) == STATUS_OK &&
                bnCompare(quotient, left) == 0,
            "quotient, divisor and remainder make the dividend");
    require(bnSubtract(result, left, right) == (less ? BN_E_RANGE : STATUS_OK), "a difference");
    if (!less) require(bnAdd(result, result, right) == STATUS_OK && bnCompare(result, left) == 0, "difference and sum");
    const std::uint32_t bits = options >> 2;
    require(bnShiftLeft(result, left, bits) == STATUS_OK && bnShiftRight(result, result, bits) == STATUS_OK &&
                bnCompare(result, left) == 0,
            "shifts");
    Bytes two(bits / 8 + 1);
    two.front() = static_cast<std::uint8_t>(1 << bits % 8);
    require(bnShiftRight(result, left, bits) == STATUS_OK && valueOf(result) == divide(a, two, rest),
            "a shift divides");
    require(bnModulo(left, left, right) == STATUS_OK && bnCompare(left, remainder) == 0, "a remainder in place");
});

} // namespace
} // namespace toolbelt::fuzz
