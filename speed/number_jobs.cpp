// Arithmetic on big numbers of one and of two sizes.
#include "crypto/bignum/modular.h"
#include "speed/inputs.h"
#include "speed/job.h"

namespace toolbelt::speed {
namespace {

// Of exactly that many bits, and odd.
std::shared_ptr<BigNum> number(std::uint32_t bits, std::uint32_t seed)
{
    Bytes bytes = pattern(bits / 8, seed);
    bytes.front() |= 0x80, bytes.back() |= 1;
    auto result = std::make_shared<BigNum>();
    check(bnImport(*result, bytes.data(), size32(bytes)), "no memory for a number");
    return result;
}

} // namespace

Call powerCall(std::uint32_t bits)
{
    return [modulus = number(bits, 1), base = number(bits, 2), exponent = number(bits, 3),
            result = std::make_shared<BigNum>()] {
        check(bnModExp(*result, *base, *exponent, *modulus), "a power failed");
    };
}

Call productCall(std::uint32_t bits)
{
    return [a = number(bits, 1), b = number(bits, 2), result = std::make_shared<BigNum>()] {
        check(bnMultiply(*result, *a, *b), "a product failed");
    };
}

void addNumberJobs(std::vector<Job>& jobs)
{
    for (const std::uint32_t bits : {2048u, 8192u, 32768u})
        jobs.push_back({"mul/" + std::to_string(bits), 1, "ops/s", [bits] { return productCall(bits); }});
    jobs.push_back({"div/4096:2048", 1, "ops/s", [] {
                        return Call([a = number(4096, 1), b = number(2048, 2), quotient = std::make_shared<BigNum>(),
                                     rest = std::make_shared<BigNum>()] {
                            check(bnDivide(quotient.get(), *rest, *a, *b), "a division failed");
                        });
                    }});
    jobs.push_back({"modexp/2048", 1, "ops/s", [] { return powerCall(2048); }});
    jobs.push_back({"modinv/2048", 1, "ops/s", [] {
                        auto modulus = number(2048, 1), value = number(2048, 2);
                        BigNum divisor;
                        // Step by two until there is an inverse to time.
                        while (bnGcd(divisor, *value, *modulus) == STATUS_OK && bnCompareWord(divisor, 1) != 0)
                            check(bnAddWord(*value, *value, 2), "no memory for a number");
                        return Call([modulus, value, result = std::make_shared<BigNum>()] {
                            check(bnModInverse(*result, *value, *modulus), "an inverse failed");
                        });
                    }});
}

} // namespace toolbelt::speed
