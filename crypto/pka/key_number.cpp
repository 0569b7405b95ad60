// Numbers of key records: one block for the record, one for its limbs.
#include "crypto/pka/key_number.h"

#include <new>

#include "crypto/base/heap.h"

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

} // namespace toolbelt
