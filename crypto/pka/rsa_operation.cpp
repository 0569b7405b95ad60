// The raw RSA operations. The private one follows Garner: two powers modulo the primes, joined by q^-1 mod p.
#include <cstring>

#include "crypto/bignum/modular.h"
#include "crypto/pka/rsa_key.h"

namespace toolbelt {
namespace {

// Exponents below this one are small: an input that is short beside the modulus may be found as a root of the output.
constexpr std::uint64_t SMALL_EXPONENT_END = 4097;

Status writeOutput(std::uint8_t* output, std::uint32_t k, const BigNum& number, std::uint32_t mode)
{
    if ((mode & RSA_PREFIXED_OUTPUT) == 0) {
        bnExport(output, k, number);
        return STATUS_OK;
    }
    const std::uint32_t written = bnExportPrefixed(output, k + 2, number);
    if (written == 0) return PKA_E_RANGE;
    std::memset(output + written, 0, k + 2 - written);
    return STATUS_OK;
}

} // namespace

Status readRsaInput(BigNum& number, const std::uint8_t* input, std::uint32_t k, std::uint32_t mode)
{
    if ((mode & RSA_PREFIXED_INPUT) == 0) return bnImport(number, input, k);
    return bnImportPrefixed(number, input, k + 2) != 0 ? STATUS_OK : PKA_E_RANGE;
}

Status rsaPublicOperation(const RsaPublicKey& key, const std::uint8_t* input, std::uint8_t* output, std::uint32_t mode)
{
    const std::uint32_t k = rsaLength(key.bits);
    BigNum x, y;
    if (const Status status = readRsaInput(x, input, k, mode)) return status;
    // Reduced before it is measured: a short number must not pass for a long one by a multiple of n on top.
    if (bnCompare(x, *key.n) >= 0)
        if (const Status status = bnModulo(x, x, *key.n)) return status;
    if (const Status status = bnModExp(y, x, *key.e, *key.n)) return status;
    if (const Status status = writeOutput(output, k, y, mode)) return status;
    const std::uint32_t inputBytes = (bnBitLength(x) + 7) / 8;
    if (bnCompareWord(*key.e, SMALL_EXPONENT_END) < 0 && inputBytes < k / 3 * 2) return PKA_E_SHORT_INPUT;
    return STATUS_OK;
}

Status rsaPrivateOperation(const RsaPrivateKey& key, const std::uint8_t* input, std::uint8_t* output,
                           std::uint32_t mode)
{
    const std::uint32_t k = rsaLength(key.bits);
    const BigNum &p = *key.p, &q = *key.q;
    BigNum c, m1, m2, h;
    if (const Status status = readRsaInput(c, input, k, mode)) return status;

    if (const Status status = bnModulo(m1, c, p)) return status;
    if (const Status status = bnModExp(m1, m1, *key.dp, p)) return status;
    if (const Status status = bnModulo(m2, c, q)) return status;
    if (const Status status = bnModExp(m2, m2, *key.dq, q)) return status;

    // m2 < q < p, so one p is enough to keep the difference natural.
    if (bnCompare(m1, m2) < 0)
        if (const Status status = bnAdd(m1, m1, p)) return status;
    if (const Status status = bnSubtract(h, m1, m2)) return status;
    if (const Status status = bnModulo(h, h, p)) return status;
    if (const Status status = bnModMultiply(h, h, *key.qinv, p)) return status;

    if (const Status status = bnMultiply(h, h, q)) return status;
    if (const Status status = bnAdd(h, h, m2)) return status;
    return writeOutput(output, k, h, mode);
}

} // namespace toolbelt
