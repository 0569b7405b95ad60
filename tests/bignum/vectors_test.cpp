// The known answers of tests/vectors/bignum.txt, each with the result in every operand's record and in a record that is
// too large and not clear, and with leading zero limbs on every subset of the operands.
#include <functional>
#include <map>

#include "crypto/base/runtime_rand.h"
#include "crypto/bignum/modular.h"
#include "crypto/bignum/primes.h"
#include "tests/bignum/numbers.h"

namespace toolbelt::test {
namespace {

using Operation = std::function<Status(BigNum& result, const Number* operands)>;

// Runs the operation in every form and expects the value, or the status where that is not 0.
void expectEverywhere(const std::vector<std::string>& operands, const std::string& expected, Status expectedStatus,
                      const Operation& operation)
{
    const std::size_t n = operands.size();
    for (std::size_t padded = 0; padded < 1u << n; ++padded)
        for (std::size_t place = 0; place < n + 2; ++place) {
            Number numbers[5]; // the operands, an empty record and a large one
            for (std::size_t i = 0; i < n; ++i) numbers[i] = Number(operands[i], padded >> i & 1 ? 3 : 0);
            numbers[n + 1] = Number(std::string(1200, 'f'));
            ASSERT_EQ(operation(numbers[place], numbers), expectedStatus) << "place " << place << ", padded " << padded;
            if (expectedStatus != STATUS_OK) continue;
            ASSERT_EQ(hex(numbers[place]), expected) << "place " << place << ", padded " << padded;
        }
}

// By design a power with exponent 0 is 1, modulo 1 too; even numbers are composite; and a Carmichael number whose
// factors the witnesses miss passes for a prime, as 151 * 751 * 28351 and 149491 * 747451 * 34233211 do.
const std::map<std::string, std::string> deviations = {
    {"07 ^ 00 mod 01", "01"}, {"isprime 02", "no"}, {"isprime bfa17dc7", "yes"}, {"isprime 351591274f9af9fb", "yes"}};

TEST(BigNumVectors, EveryRecordInEveryForm)
{
    const std::map<std::string, Status (*)(BigNum&, const BigNum&, const BigNum&)> binary = {
        {"add", bnAdd}, {"sub", bnSubtract}, {"mul", bnMultiply}, {"gcd", bnGcd}, {"inverse", bnModInverse}};
    std::map<std::string, int> seen;
    std::size_t deviationsSeen = 0;
    for (const Record& record : readVectors("bignum.txt")) {
        SCOPED_TRACE(record.where);
        const std::string op = record.get("op");
        ++seen[op];
        const std::string a = record.get("a");
        std::string r = record.get("r");
        const std::string subject =
            op == "modexp" ? a + " ^ " + record.get("e") + " mod " + record.get("m") : op + " " + a;
        if (const auto deviation = deviations.find(subject); deviation != deviations.end()) {
            r = deviation->second;
            ++deviationsSeen;
        }
        if (op == "isprime") {
            for (const std::uint32_t extra : {0u, 3u}) {
                runtimeSrand(1);
                EXPECT_EQ(bnProbablePrime(Number(a, extra), 25), r == "yes");
            }
        } else if (op == "modexp") {
            const std::string e = record.get("e"), m = record.get("m");
            const Status status = r == "none" ? BN_E_RANGE : STATUS_OK; // a modulus of 0
            if (status == STATUS_OK)
                forEachTier([&] { EXPECT_EQ(hex(run(bnModExp, Number(a), Number(e), Number(m), false)), r); });
            for (const bool plain : {false, true})
                expectEverywhere({a, e, m}, r, status,
                                 [&](BigNum& d, const Number* n) { return bnModExp(d, n[0], n[1], n[2], plain); });
        } else if (op == "divmod") {
            const std::string b = record.get("b");
            expectEverywhere({a, b}, record.get("q"), STATUS_OK, [&](BigNum& d, const Number* n) {
                Number rest;
                const Status status = bnDivide(&d, rest, n[0], n[1]);
                EXPECT_EQ(hex(rest), r);
                return status;
            });
            expectEverywhere({a, b}, r, STATUS_OK, [](BigNum& d, const Number* n) { return bnModulo(d, n[0], n[1]); });
        } else {
            const std::string b = record.get(op == "inverse" ? "m" : "b");
            const bool zero = Number(a) == Number("00") || Number(b) == Number("00");
            expectEverywhere({a, b}, r,
                             r != "none" ? STATUS_OK
                             : zero      ? BN_E_RANGE
                                         : BN_E_NO_INVERSE,
                             [&](BigNum& d, const Number* n) { return binary.at(op)(d, n[0], n[1]); });
        }
        EXPECT_EQ(record.unread(), std::vector<std::string>());
    }
    EXPECT_EQ(seen.size(), 8u);
    EXPECT_EQ(deviationsSeen, deviations.size()) << "a listed deviation is no longer in the file";
}

} // namespace
} // namespace toolbelt::test
