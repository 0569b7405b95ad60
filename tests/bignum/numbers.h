// Numbers for the tests: from and to hexadecimal, random ones, results as values, and residues as a check on arithmetic
// that shares nothing with it.
#pragma once

#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "crypto/base/cpu.h"
#include "crypto/bignum/primes.h"
#include "tests/support/vectors.h"

namespace toolbelt::test {

// Lower case, whole bytes, no leading zeros; "00" for zero.
inline std::string hex(const BigNum& number)
{
    Bytes bytes(std::max(1u, (bnBitLength(number) + 7) / 8));
    bnExport(bytes.data(), static_cast<std::uint32_t>(bytes.size()), number);
    return toHex(bytes);
}

struct Number : BigNum
{
    Number() = default;
    // With extra limbs of zeros on top.
    Number(const std::string& digits, std::uint32_t extraLimbs = 0)
    {
        Bytes bytes = fromHex(digits);
        bytes.insert(bytes.begin(), extraLimbs * 8, 0);
        EXPECT_EQ(bnImport(*this, bytes.data(), static_cast<std::uint32_t>(bytes.size())), STATUS_OK);
    }
    Number(Number&& other) noexcept { *this = std::move(other); }
    Number& operator=(Number&& other) noexcept
    {
        std::swap(count, other.count);
        std::swap(limbs, other.limbs);
        std::swap(borrowed, other.borrowed);
        return *this;
    }
    friend bool operator==(const Number& a, const Number& b) { return hex(a) == hex(b); }
    friend void PrintTo(const Number& number, std::ostream* out) { *out << hex(number); }
};

// What an operation that must succeed gives.
template <typename... Parameters, typename... Arguments>
Number run(Status (*operation)(BigNum&, Parameters...), const Arguments&... arguments)
{
    Number result;
    EXPECT_EQ(operation(result, arguments...), STATUS_OK);
    return result;
}

// Numbers whose limbs are random, all zero or all one, so that carries and corrections run far.
class Dice
{
public:
    explicit Dice(std::uint32_t seed) : engine_(seed) {}
    std::uint32_t below(std::uint32_t n) { return static_cast<std::uint32_t>(engine_() % n); }
    Number number(std::uint32_t limbs)
    {
        Number result(std::string(16 * limbs, '0'));
        const std::uint32_t kind = below(4);
        for (std::uint32_t i = 0; i < limbs; ++i) {
            result.limbs[i] = std::uint64_t{engine_()} << 32 | engine_();
            if (kind == 1 || (kind == 0 && below(2))) result.limbs[i] = kind == 1 || below(2) ? ~std::uint64_t{0} : 0;
        }
        if (limbs && result.limbs[limbs - 1] == 0) result.limbs[limbs - 1] = 1;
        return result;
    }

private:
    std::mt19937 engine_;
};

// Runs the body with the routines of every tier that the processor has, the portable ones first.
template <typename Body>
void forEachTier(Body body)
{
    std::uint32_t features = 0;
    for (const std::uint32_t step : {0u, cpu::SSE2, cpu::AVX2, cpu::AVX512, cpu::IFMA}) {
        if ((cpu::detectedFeatures() & step) != step) break;
        features |= step;
        SCOPED_TRACE(cpu::limitFeatures(features));
        body();
    }
    cpu::limitFeatures(~0u);
}

// The number modulo the prime 2^32 - 5. A wrong result keeps its residue once in four thousand million times.
constexpr std::uint64_t residuePrime = 4294967291u;
inline std::uint64_t residue(const BigNum& number)
{
    std::uint64_t rest = 0;
    for (std::int32_t i = number.count; i-- > 0;)
        for (const int shift : {32, 0}) rest = (rest << 32 | (number.limbs[i] >> shift & 0xFFFFFFFFu)) % residuePrime;
    return rest;
}

// A list of numbers as the vectors write it, and the table of primes as one.
inline std::vector<std::int32_t> integers(const std::string& text)
{
    std::istringstream input(text);
    return {std::istream_iterator<std::int32_t>(input), {}};
}
inline std::vector<std::int32_t> table()
{
    std::uint32_t count;
    const std::uint32_t* entries = bnPrimeTable(&count);
    return {entries, entries + count};
}

} // namespace toolbelt::test
