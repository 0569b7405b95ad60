// What the factories of all key classes share. An Object is built over a record that an Owner (a std::unique_ptr)
// releases; a reader makes a record: Status(Record**).
#pragma once

#include <new>
#include <utility>

#include "crypto/pka/pka.h"

namespace toolbelt {

// The object over a record, which it owns from then on; null, and the record freed, when memory has run out.
template <typename Object, typename Owner>
cPKA* newKeyObject(Owner record)
{
    if (!record) return nullptr;
    cPKA* key = new (std::nothrow) Object(record.get());
    if (key != nullptr) (void)record.release();
    return key;
}

// Null when the record cannot be read.
template <typename Object, typename Owner, typename Reader>
cPKA* newKeyFrom(Reader read)
{
    typename Owner::pointer record = nullptr;
    if (read(&record) != STATUS_OK) return nullptr;
    return newKeyObject<Object>(Owner(record));
}

// Hands a new object over; `failure`, and *key left alone, when there is none.
inline Status giveKey(cPKA** key, cPKA* made, Status failure)
{
    if (made == nullptr) return failure;
    *key = made;
    return STATUS_OK;
}

} // namespace toolbelt
