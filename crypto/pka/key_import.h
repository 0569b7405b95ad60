// What the imports of DSA and ElGamal records have in common.
#pragma once

#include <memory>

#include "crypto/encoding/status.h"
#include "crypto/pka/status.h"

namespace toolbelt {

// Puts a new record (null: no memory) into *key when read(record) filled it and its numbers are usable; otherwise it is
// freed and *key left alone.
template <typename Key, typename Read>
Status importKey(Key** key, Key* fresh, bool (*isUsable)(const Key&), Read read)
{
    std::unique_ptr<Key> record(fresh);
    if (!record) return PKA_E_MEMORY;
    if (!read(*record) || !isUsable(*record)) return PKA_E_KEY;
    *key = record.release();
    return STATUS_OK;
}

// The status of an import in the terms of the DER readers.
inline Status derStatusOf(Status imported)
{
    return imported == STATUS_OK ? STATUS_OK : imported == PKA_E_MEMORY ? DER_E_MEMORY : DER_E_MALFORMED;
}

} // namespace toolbelt
