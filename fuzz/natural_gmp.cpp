// Comparison arithmetic by GMP.
#include <gmpxx.h>

#include "fuzz/natural.h"

namespace toolbelt::fuzz {
namespace {

mpz_class integer(const Bytes& bytes)
{
    mpz_class value;
    mpz_import(value.get_mpz_t(), bytes.size(), 1, 1, 0, 0, bytes.data());
    return value;
}

Bytes bytesOf(const mpz_class& value)
{
    if (value == 0) return {};
    Bytes result((mpz_sizeinbase(value.get_mpz_t(), 2) + 7) / 8);
    mpz_export(result.data(), nullptr, 1, 1, 0, 0, value.get_mpz_t());
    return result;
}

} // namespace

Bytes add(const Bytes& a, const Bytes& b)
{
    return bytesOf(integer(a) + integer(b));
}
Bytes subtract(const Bytes& a, const Bytes& b)
{
    return bytesOf(integer(a) - integer(b));
}
Bytes multiply(const Bytes& a, const Bytes& b)
{
    return bytesOf(integer(a) * integer(b));
}
Bytes gcd(const Bytes& a, const Bytes& b)
{
    return bytesOf(gcd(integer(a), integer(b)));
}

Bytes divide(const Bytes& a, const Bytes& n, Bytes& remainder)
{
    remainder = bytesOf(integer(a) % integer(n));
    return bytesOf(integer(a) / integer(n));
}

Bytes power(const Bytes& base, const Bytes& exponent, const Bytes& modulus)
{
    mpz_class result;
    mpz_powm(result.get_mpz_t(), integer(base).get_mpz_t(), integer(exponent).get_mpz_t(),
             integer(modulus).get_mpz_t());
    return bytesOf(result);
}

} // namespace toolbelt::fuzz
