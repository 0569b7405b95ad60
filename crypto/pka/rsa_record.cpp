// RSA key records: creation, release and completion.
#include <new>
#include <utility>

#include "crypto/base/heap.h"
#include "crypto/bignum/modular.h"
#include "crypto/pka/key_number.h"
#include "crypto/pka/pka.h"
#include "crypto/pka/rsa_key.h"

namespace toolbelt {
namespace {

template <typename Key, std::size_t N>
Key* newRecord(BigNum* Key::*const (&numbers)[N])
{
    void* block = heap::allocate(sizeof(Key));
    if (block == nullptr) return nullptr;
    Key* key = new (block) Key;
    for (BigNum* Key::*number : numbers) {
        key->*number = newKeyNumber();
        if (key->*number == nullptr) {
            freeRsaKey(key);
            return nullptr;
        }
    }
    return key;
}

template <typename Key, std::size_t N>
void freeRecord(Key* key, BigNum* Key::*const (&numbers)[N])
{
    if (key == nullptr) return;
    for (BigNum* Key::*number : numbers) freeKeyNumber(key->*number);
    heap::releaseSecret(key, sizeof(Key));
}

constexpr BigNum* RsaPublicKey::*publicNumbers[] = {&RsaPublicKey::n, &RsaPublicKey::e};
constexpr BigNum* RsaPrivateKey::*privateNumbers[] = {
    &RsaPrivateKey::n, &RsaPrivateKey::e,  &RsaPrivateKey::d,  &RsaPrivateKey::p,
    &RsaPrivateKey::q, &RsaPrivateKey::dp, &RsaPrivateKey::dq, &RsaPrivateKey::qinv,
};

// Keeps inverse when it is 1/a mod m already, computes it otherwise.
Status ensureInverse(BigNum& inverse, const BigNum& a, const BigNum& m)
{
    BigNum product;
    if (const Status status = bnModMultiply(product, inverse, a, m)) return status;
    if (bnCompareWord(product, 1) == 0) return STATUS_OK;
    const Status status = bnModInverse(inverse, a, m);
    return status == BN_E_NO_INVERSE ? PKA_E_RANGE : status;
}

} // namespace

RsaPublicKey* newRsaPublicKey()
{
    return newRecord<RsaPublicKey>(publicNumbers);
}

RsaPrivateKey* newRsaPrivateKey()
{
    return newRecord<RsaPrivateKey>(privateNumbers);
}

void freeRsaKey(RsaPublicKey* key)
{
    freeRecord(key, publicNumbers);
}

void freeRsaKey(RsaPrivateKey* key)
{
    freeRecord(key, privateNumbers);
}

Status completeRsaPrivate(RsaPrivateKey& key)
{
    if (bnBitLength(*key.p) + bnBitLength(*key.q) > PKA_MAX_KEY_BITS + 1) return PKA_E_RANGE;
    if (bnCompare(*key.p, *key.q) < 0) std::swap(key.p, key.q);

    // A prime of 0 fails here; one of 1 makes phi 0, which no reduction takes.
    BigNum p1, q1, phi;
    if (const Status status = bnSubtractWord(p1, *key.p, 1)) return status;
    if (const Status status = bnSubtractWord(q1, *key.q, 1)) return status;
    if (const Status status = bnMultiply(phi, p1, q1)) return status;
    if (const Status status = ensureInverse(*key.d, *key.e, phi)) return status;
    if (const Status status = ensureInverse(*key.qinv, *key.q, *key.p)) return status;

    BigNum product;
    if (const Status status = bnMultiply(product, *key.p, *key.q)) return status;
    if (bnCompare(*key.n, product) != 0)
        if (const Status status = bnCopy(*key.n, product)) return status;
    key.bits = static_cast<std::uint16_t>(bnBitLength(*key.n));

    if (const Status status = bnModulo(*key.dp, *key.d, p1)) return status;
    return bnModulo(*key.dq, *key.d, q1);
}

} // namespace toolbelt
