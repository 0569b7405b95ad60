// The arithmetic over 300,000 cases whose operands are made of runs of zeros and ones and of limbs at their borders.
//
// Where GMP is linked every result is compared with its own. The results' digest is asserted everywhere, so that builds
// without GMP are known to compute the same. The rare branches of the kernels are counted, and each must have been
// taken.
#include <gtest/gtest.h>

#include <iterator>
#include <random>

#include "crypto/base/cpu.h"
#include "crypto/bignum/branch_observer.h"
#include "crypto/bignum/modular.h"
#include "fuzz/natural.h"
#include "tests/support/vectors.h"

namespace toolbelt {
namespace {

std::uint64_t taken[static_cast<std::size_t>(limbs::Branch::count)];

} // namespace

void limbs::observe(Branch branch) noexcept
{
    ++taken[static_cast<std::size_t>(branch)];
}

namespace fuzz {
namespace {

constexpr bool compared = TOOLBELT_COMPARED;
constexpr std::uint64_t EXPECTED_DIGEST = 0xA11B7F164A2DDAE4;

class Operands
{
public:
    std::uint32_t below(std::uint32_t n) { return static_cast<std::uint32_t>(engine_() % n); }
    std::uint32_t between(std::uint32_t low, std::uint32_t high) { return low + below(high - low + 1); }

    Bytes number(std::uint32_t limbs)
    {
        Bytes bytes;
        const std::uint32_t kind = below(6);
        for (std::uint32_t i = 0; i < limbs; ++i)
            for (const std::uint64_t limb = kind == 0  ? engine_()
                                            : kind < 4 ? border(kind == 1 ? 5 : 9)
                                                       : 0;
                 const int shift : {56, 48, 40, 32, 24, 16, 8, 0})
                bytes.push_back(static_cast<std::uint8_t>(limb >> shift));
        if (kind < 4) return bytes;
        bool ones = kind == 5;
        for (std::uint32_t bit = 0; bit < 64 * limbs; ones = !ones)
            for (std::uint32_t end = bit + between(1, kind == 4 ? 200 : 70); bit < end && bit < 64 * limbs; ++bit)
                if (ones) bytes[bit / 8] = static_cast<std::uint8_t>(bytes[bit / 8] | 0x80 >> bit % 8);
        return bytes;
    }

private:
    std::uint64_t border(std::uint32_t kinds)
    {
        constexpr std::uint64_t top = std::uint64_t{1} << 63;
        constexpr std::uint64_t limbs[] = {
            0, 1, ~std::uint64_t{0}, top, top - 1, top + 1, 0xFFFFFFFF, std::uint64_t{1} << 32, ~std::uint64_t{0} - 1};
        return limbs[below(kinds)];
    }
    std::mt19937_64 engine_{20240229};
};

class Differential : public testing::Test
{
protected:
    // One result; expected() is asked where there is something to compare with.
    template <typename Expected>
    void check(const char* operation, Status status, const BigNum& found, Expected expected)
    {
        ++cases;
        const Bytes value = status == STATUS_OK ? valueOf(found) : Bytes();
        digest = (digest ^ status) * 0x100000001B3;
        for (const std::uint8_t byte : value) digest = (digest ^ byte) * 0x100000001B3;
        if constexpr (compared) {
            const Bytes other = expected();
            if (status == STATUS_OK && value == other) return;
            ADD_FAILURE() << operation << " gives " << status << " " << test::toHex(value) << ", not "
                          << test::toHex(other) << ", of\n"
                          << test::toHex(x) << "\n"
                          << test::toHex(y) << "\n"
                          << test::toHex(z);
            if (++failures == 5) FAIL() << "and so on";
        }
    }
    // Draws operands of so many limbs: a list, because its parts are drawn in order.
    void take(std::initializer_list<std::uint32_t> limbs)
    {
        // On every tier in turn: results must not differ by what the processor has.
        constexpr std::uint32_t tiers[] = {0, cpu::SSE2, ~0u};
        cpu::limitFeatures(tiers[drawn++ % 3]);
        Bytes* const numbers[] = {&x, &y, &z};
        for (std::size_t i = 0; i < std::size(numbers); ++i)
            *numbers[i] = operands.number(i < limbs.size() ? limbs.begin()[i] : 0);
        load(a, x);
        load(b, y);
        load(c, z);
    }

    Operands operands;
    Bytes x, y, z;
    BigNum a, b, c, result, rest;
    std::uint32_t cases = 0, drawn = 0, failures = 0;
    std::uint64_t digest = 0xCBF29CE484222325;
};

TEST_F(Differential, EveryResultIsThatOfAnotherLibraryAndOfEveryBuild)
{
    Operands& o = operands;
    for (int i = 0; i < 50000 && failures < 5; ++i) { // two results each
        const std::uint32_t divisor = i % 16 == 0 ? o.between(1, 55) : o.between(1, 4);
        take({divisor + o.between(0, i % 32 == 0 ? 40 : 4), divisor});
        if (trimmed(y).empty()) y.back() = 3;
        if (i % 4 == 0) { // remainders at the ends of their range
            const Bytes quotient = o.number(i % 16 == 0 ? o.between(1, 30) : o.between(1, 3));
            load(b, y);
            load(c, quotient);
            ASSERT_EQ(bnMultiply(a, b, c) | (i % 8 == 0 ? bnAdd(a, a, b) : STATUS_OK), STATUS_OK);
            if (bnSubtractWord(rest, a, static_cast<std::uint64_t>(i / 16 % 2)) == STATUS_OK) {
                ASSERT_EQ(bnCopy(a, rest), STATUS_OK);
            }
            x = valueOf(a);
        }
        load(b, y);
        const Status status = bnDivide(&result, rest, a, b);
        Bytes remainder;
        check("quotient", status, result, [&] { return divide(x, y, remainder); });
        check("remainder", status, rest, [&] { return remainder; });
    }
    for (int i = 0; i < 40000 && failures < 5; ++i) {
        if (i % 512 == 0)
            take({i % 8192 == 0 ? 3000 : o.between(41, 300), o.between(1, 200)});
        else if (i % 8 == 0)
            take({o.between(15, 40), i % 16 == 0 ? o.between(15, 18) : o.between(2, 40)});
        else
            take({o.between(1, 10), o.between(1, 10)});
        if (i % 64 == 8) take({16, 16});
        check("product", bnMultiply(result, a, b), result, [&] { return multiply(x, y); });
    }
    for (int i = 0; i < 25000 && failures < 5; ++i) {
        take({i % 512 == 0 ? o.between(37, 300) : i % 8 == 0 ? o.between(15, 36) : o.between(1, 10)});
        check("square", bnMultiply(result, a, a), result, [&] { return multiply(x, x); });
    }
    for (int i = 0; i < 25000 && failures < 5; ++i) { // two results each
        take({o.between(1, 12), o.between(1, 12)});
        check("sum", bnAdd(result, a, b), result, [&] { return add(x, y); });
        if (bnCompare(a, b) < 0) std::swap(x, y);
        load(a, x);
        load(b, y);
        const Status status = bnSubtract(rest, a, b);
        check("difference", status, rest, [&] { return modulo(subtract(x, y), add(x, {1})); });
    }
    for (int i = 0; i < 10000 && failures < 5; ++i) { // four results each
        take({o.between(1, 6), 0, 1});
        const std::uint64_t word = c.count != 0 ? c.limbs[0] : 0;
        const std::uint32_t bits = o.below(400);
        Bytes power(bits / 8 + 1);
        power.front() = static_cast<std::uint8_t>(1 << bits % 8);
        check("sum with a word", bnAddWord(result, a, word), result, [&] { return add(x, z); });
        check("difference with a word", bnSubtractWord(rest, result, word), rest, [&] { return trimmed(x); });
        check("shift up", bnShiftLeft(result, a, bits), result, [&] { return multiply(x, power); });
        Bytes unused;
        check("shift down", bnShiftRight(rest, a, bits), rest, [&] { return divide(x, power, unused); });
    }
    for (int i = 0; i < 10000 && failures < 5; ++i) {
        take({o.between(1, 6), o.between(1, 6), o.between(1, 6)});
        if (trimmed(z).empty()) z.back() = 1;
        load(c, z);
        check("product modulo n", bnModMultiply(result, a, b, c), result, [&] { return modulo(multiply(x, y), z); });
    }
    for (int i = 0; i < 15000 && failures < 5; ++i) {
        take({o.between(1, 6), 1, i % 64 == 0 ? o.between(16, 18) : o.between(1, 5)});
        if (i % 8 != 0) z.back() |= 1; // mostly odd
        if (trimmed(z).empty()) z.back() = 5;
        if (trimmed(y).empty()) y.back() = 7;
        load(b, y);
        load(c, z);
        check("power", bnModExp(result, a, b, c), result, [&] { return power(x, y, z); });
    }
    for (int i = 0; i < 10000 && failures < 5; ++i) {
        take({o.between(1, 6), o.between(1, 6), 1});
        if (i % 4 == 0) { // a common factor
            ASSERT_EQ(bnMultiply(a, a, c) | bnMultiply(b, b, c), STATUS_OK);
            x = valueOf(a);
            y = valueOf(b);
        }
        check("divisor", bnGcd(result, a, b), result, [&] { return gcd(x, y); });
    }
    for (int i = 0; i < 10000 && failures < 5; ++i) {
        take({o.between(1, 6), o.between(1, 6)});
        if (trimmed(x).empty()) x.back() = 9;
        if (trimmed(y).empty()) y.back() = 9;
        load(a, x);
        load(b, y);
        const Status status = bnModInverse(result, a, b);
        // 1 for an inverse, the divisor where there is none.
        ASSERT_EQ(status == STATUS_OK ? bnModMultiply(rest, result, a, b) : bnGcd(rest, a, b), STATUS_OK);
        check("inverse", status == BN_E_NO_INVERSE || status == STATUS_OK ? STATUS_OK : status, rest,
              [&] { return gcd(x, y) == Bytes{1} ? modulo({1}, y) : gcd(x, y); });
        ASSERT_TRUE(status != STATUS_OK || bnCompare(result, b) < 0);
    }
    cpu::limitFeatures(~0u);
    std::printf("%u cases %s, digest %016llx\n", cases, compared ? "compared with GMP" : "known by their digest",
                static_cast<unsigned long long>(digest));
    EXPECT_EQ(cases, 300000u);
    EXPECT_EQ(digest, EXPECTED_DIGEST);

    constexpr const char* names[] = {"quotient of all ones", "quotient lowered",      "added back",
                                     "block lowered",        "block refused",         "wide lowered",
                                     "wide raised",          "wide block lowered",    "wide block raised",
                                     "product split",        "product at the border", "square split",
                                     "middle added",         "middle taken",          "Montgomery with a carry",
                                     "Montgomery not below", "Montgomery unchanged"};
    static_assert(std::size(names) == std::size(taken));
    for (std::size_t i = 0; i < std::size(taken); ++i) {
        std::printf("    %s: %llu times\n", names[i], static_cast<unsigned long long>(taken[i]));
        EXPECT_GT(taken[i], 0u) << names[i];
    }
}

} // namespace
} // namespace fuzz
} // namespace toolbelt
