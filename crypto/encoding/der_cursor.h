// Walking through elements: a cursor over the bytes that remain, and the reading of records that may be read again.
#pragma once

#include <cstdint>
#include <memory>

#include "crypto/encoding/der.h"

namespace toolbelt {

struct DerCursor
{
    const std::uint8_t* data;
    std::uint32_t available;
};

inline DerCursor contentOf(const DerElement& element) noexcept
{
    return {element.content, element.contentLength};
}

// Parses the element at the cursor, which moves on behind it.
[[nodiscard]] inline Status takeElement(DerElement& element, DerCursor& input, std::int32_t expectedTag = DER_ANY)
{
    return parseElement(element, input.data, input.available, &input.data, &input.available, expectedTag);
}

// Releases what a record owns and makes it an empty one.
template <typename Record>
void emptyRecord(Record& record) noexcept
{
    std::destroy_at(&record);
    std::construct_at(&record);
}

// Reads a record by its reader, from an empty one: nothing of an earlier reading survives. On success rest and
// restLength (both optional) receive what follows it; on failure they are left alone and the record is empty.
template <typename Record>
[[nodiscard]] Status readEmptied(Status (*reader)(Record&, DerCursor&), Record& record, const std::uint8_t* data,
                                 std::uint32_t available, const std::uint8_t** rest, std::uint32_t* restLength)
{
    DerCursor input{data, available};
    emptyRecord(record);
    if (const Status status = reader(record, input)) {
        emptyRecord(record);
        return status;
    }
    if (rest) *rest = input.data;
    if (restLength) *restLength = input.available;
    return STATUS_OK;
}

} // namespace toolbelt
