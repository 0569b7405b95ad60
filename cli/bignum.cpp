// bignum: arithmetic on numbers given in hexadecimal.
#include "crypto/bignum/bignum.h"
#include "cli/command.h"
#include "cli/results.h"
#include "cli/text.h"
#include "crypto/bignum/modular.h"
#include "crypto/bignum/primes.h"

namespace toolbelt::cli {
namespace {

// Operands of arithmetic have at most this many bits, so a longer shift has no use.
constexpr std::uint32_t MAX_BITS = 65536 * 64 - 1;

// The count as a word; a larger one than any number has bits is MAX_BITS + 1.
std::uint32_t shiftCount(const BigNum& count)
{
    if (bnBitLength(count) > 31) return MAX_BITS + 1;
    std::uint8_t bytes[4];
    bnExport(bytes, 4, count);
    const std::uint32_t bits =
        std::uint32_t(bytes[0]) << 24 | std::uint32_t(bytes[1]) << 16 | std::uint32_t(bytes[2]) << 8 | bytes[3];
    return std::min(bits, MAX_BITS + 1);
}

// Witnesses of the probable-prime test.
constexpr std::uint32_t PRIME_ROUNDS = 25;

// 1 or 0. Without a table of small primes, which would divide itself; the test takes no even number.
Status testPrime(BigNum& verdict, const BigNum& n)
{
    const bool prime = bnCompareWord(n, 2) == 0 || bnProbablePrime(n, PRIME_ROUNDS);
    return bnAddWord(verdict, verdict, prime);
}

struct Operation
{
    const char* name;
    std::uint32_t operands;
    std::uint32_t results; // numbers to print; 0: the first is a verdict
    Status (*run)(BigNum* result, const BigNum* operand);
};

constexpr Operation operations[] = {
    {"add", 2, 1, [](BigNum* r, const BigNum* x) { return bnAdd(r[0], x[0], x[1]); }},
    {"sub", 2, 1, [](BigNum* r, const BigNum* x) { return bnSubtract(r[0], x[0], x[1]); }},
    {"mul", 2, 1, [](BigNum* r, const BigNum* x) { return bnMultiply(r[0], x[0], x[1]); }},
    {"sqr", 1, 1, [](BigNum* r, const BigNum* x) { return bnMultiply(r[0], x[0], x[0]); }},
    {"div", 2, 2, [](BigNum* r, const BigNum* x) { return bnDivide(&r[0], r[1], x[0], x[1]); }},
    {"mod", 2, 1, [](BigNum* r, const BigNum* x) { return bnModulo(r[0], x[0], x[1]); }},
    {"shl", 2, 1,
     [](BigNum* r, const BigNum* x) {
         const std::uint32_t bits = shiftCount(x[1]);
         return bits > MAX_BITS ? BN_E_RANGE : bnShiftLeft(r[0], x[0], bits);
     }},
    {"shr", 2, 1, [](BigNum* r, const BigNum* x) { return bnShiftRight(r[0], x[0], shiftCount(x[1])); }},
    {"gcd", 2, 1, [](BigNum* r, const BigNum* x) { return bnGcd(r[0], x[0], x[1]); }},
    {"inverse", 2, 1, [](BigNum* r, const BigNum* x) { return bnModInverse(r[0], x[0], x[1]); }},
    {"modmul", 3, 1, [](BigNum* r, const BigNum* x) { return bnModMultiply(r[0], x[0], x[1], x[2]); }},
    {"prime", 1, 0, [](BigNum* r, const BigNum* x) { return testPrime(r[0], x[0]); }},
    {"modexp", 3, 1, [](BigNum* r, const BigNum* x) { return bnModExp(r[0], x[0], x[1], x[2]); }},
};

const Operation& findOperation(const std::string& name)
{
    for (const Operation& operation : operations)
        if (name == operation.name) return operation;
    throw UsageError("unknown operation: " + name);
}

} // namespace

Action prepareBignum(Parser& parser)
{
    struct Options
    {
        std::string operation;
        std::vector<std::string> numbers;
    };
    const auto options = std::make_shared<Options>();
    parser.option("OP", options->operation, "the operation").required().value("");
    parser.option("A", options->numbers, "hex numbers, either case, with or without 0x").required().value("");
    parser.footer(
        "  add A B   sub A B   mul A B   sqr A   gcd A B\n"
        "  div A B             quotient, then remainder\n"
        "  mod A B             the remainder alone\n"
        "  shl A N, shr A N    shifts by N bits; N is hexadecimal too\n"
        "  inverse A N         1/A mod N\n"
        "  modmul A B N        A * B mod N\n"
        "  modexp A E N        A to the power of E, mod N\n"
        "  prime A             prime or composite, by 25 Fermat rounds: a Carmichael number may pass\n"
        "One result a line, in lower-case hex without leading zeros. A result that does not exist (a negative\n"
        "difference, a division by 0, no inverse) has exit code 3.\n\n"
        "Example: toolbelt bignum modexp 2 10001 ffffffffffffffc5");
    return [options]() {
        const Operation& operation = findOperation(options->operation);
        if (options->numbers.size() != operation.operands)
            throw UsageError(options->operation + " takes " + std::to_string(operation.operands) + " numbers");
        const std::string subject = "bignum " + options->operation;
        BigNum operand[3], result[2];
        for (std::size_t i = 0; i < options->numbers.size(); ++i) {
            const auto bytes = parseHex(options->numbers[i]);
            if (!bytes) throw UsageError("not a hexadecimal number: " + options->numbers[i]);
            check(subject, bnImport(operand[i], bytes->data(), static_cast<std::uint32_t>(bytes->size())));
        }
        check(subject, operation.run(result, operand));
        for (std::uint32_t i = 0; i < operation.results; ++i)
            printResult(numberText(result[i]), {"result", numberText(result[i])});
        if (operation.results == 0) {
            const char* verdict = bnCompareWord(result[0], 0) != 0 ? "prime" : "composite";
            printResult(verdict, {"result", verdict});
        }
        return EXIT_DONE;
    };
}

} // namespace toolbelt::cli
