// Comparison arithmetic by GMP.
#include <gmp.h>

#include "fuzz/natural.h"

namespace toolbelt::fuzz {
namespace {

struct Integer
{
    mpz_t value;

    Integer() { mpz_init(value); }
    explicit Integer(const Bytes& bytes)
    {
        mpz_init(value);
        mpz_import(value, bytes.size(), 1, 1, 0, 0, bytes.data());
    }
    ~Integer() { mpz_clear(value); }
    Integer(const Integer&) = delete;
    Integer& operator=(const Integer&) = delete;

    Bytes bytes() const
    {
        if (mpz_sgn(value) == 0) return {};
        Bytes result((mpz_sizeinbase(value, 2) + 7) / 8);
        mpz_export(result.data(), nullptr, 1, 1, 0, 0, value);
        return result;
    }
};

Bytes apply(void (*operation)(mpz_ptr, mpz_srcptr, mpz_srcptr), const Bytes& a, const Bytes& b)
{
    const Integer left(a), right(b);
    Integer result;
    operation(result.value, left.value, right.value);
    return result.bytes();
}

} // namespace

Bytes add(const Bytes& a, const Bytes& b)
{
    return apply(mpz_add, a, b);
}
Bytes subtract(const Bytes& a, const Bytes& b)
{
    return apply(mpz_sub, a, b);
}
Bytes multiply(const Bytes& a, const Bytes& b)
{
    return apply(mpz_mul, a, b);
}
Bytes gcd(const Bytes& a, const Bytes& b)
{
    return apply(mpz_gcd, a, b);
}

Bytes divide(const Bytes& a, const Bytes& n, Bytes& remainder)
{
    const Integer dividend(a), divisor(n);
    Integer quotient, rest;
    mpz_tdiv_qr(quotient.value, rest.value, dividend.value, divisor.value);
    remainder = rest.bytes();
    return quotient.bytes();
}

Bytes power(const Bytes& base, const Bytes& exponent, const Bytes& modulus)
{
    const Integer b(base), e(exponent), n(modulus);
    Integer result;
    mpz_powm(result.value, b.value, e.value, n.value);
    return result.bytes();
}

} // namespace toolbelt::fuzz
