// DER elements as bytes.
#pragma once

#include "cli/errors.h"
#include "cli/files.h"
#include "crypto/encoding/der.h"

namespace toolbelt::cli {

// The element around a content.
inline Bytes element(std::uint32_t tag, const Bytes& content)
{
    Bytes bytes(headerLength(size32(content), tag));
    headerLength(size32(content), tag, bytes.data());
    bytes.insert(bytes.end(), content.begin(), content.end());
    return bytes;
}

// The content of an element that the library wrote.
inline Bytes contentOfElement(const Bytes& bytes)
{
    DerElement parsed;
    if (const Status status = parseElement(parsed, bytes.data(), size32(bytes)))
        throw libraryFailure("the library's output", status);
    return Bytes(parsed.content, parsed.content + parsed.contentLength);
}

} // namespace toolbelt::cli
