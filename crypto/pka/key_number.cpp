// Numbers of key records: one block for the record, one for its limbs.
#include "crypto/pka/key_number.h"

#include <new>

#include "crypto/base/heap.h"
#include "crypto/bignum/modular.h"

namespace toolbelt {

BigNum* newKeyNumber()
{
    void* block = heap::allocate(sizeof(BigNum));
    if (block == nullptr) return nullptr;
    BigNum* number = new (block) BigNum;
    if (bnResize(*number, 0) == STATUS_OK) return number;
    freeKeyNumber(number);
    return nullptr;
}

void freeKeyNumber(BigNum* number)
{
    if (number == nullptr) return;
    number->~BigNum();
    heap::release(number);
}

Status ensurePublicValue(BigNum& y, const BigNum& g, const BigNum& x, const BigNum& p)
{
    if (bnCompareWord(y, 0) != 0) return STATUS_OK;
    BigNum value; // a failure must not leave half a number in the record
    if (const Status status = bnModExp(value, g, x, p)) return status;
    return bnCopy(y, value);
}

} // namespace toolbelt
