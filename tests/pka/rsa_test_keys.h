// The RSA keys of tests/vectors as blobs, DER and objects, encoded here and not by the code under test. Every input is
// handed over in a block of exactly its size, so that a sanitizer sees the first step beyond it.
#pragma once

#include <algorithm>
#include <memory>
#include <string>

#include "crypto/pka/rsa.h"
#include "tests/support/vectors.h"

namespace toolbelt::test {

using Key = std::unique_ptr<cPKA>;

struct RsaNumbers
{
    std::string name;
    std::uint32_t bits;
    Bytes n, e, d, p, q, dp, dq, qinv;
    std::uint32_t k() const { return (bits + 7) / 8; }
};
const std::vector<RsaNumbers>& rsaKeys();
const RsaNumbers& rsaKey(const std::string& name);

inline std::uint32_t sizeOf(const Bytes& bytes)
{
    return static_cast<std::uint32_t>(bytes.size());
}
inline Bytes slice(const Bytes& bytes, std::size_t from, std::size_t size)
{
    return Bytes(bytes.data() + from, bytes.data() + from + size);
}
Bytes join(std::initializer_list<Bytes> parts);
// The prefixed form, with zeros behind it up to `size` bytes.
Bytes prefixed(Bytes magnitude, std::size_t size = 0);
Bytes derElement(std::uint8_t tag, const Bytes& content);
Bytes derInteger(Bytes magnitude); // with the zero octet that keeps it positive

Bytes publicBlob(const RsaNumbers& key);
Bytes privatePart(const RsaNumbers& key);
Key publicKey(const RsaNumbers& key);
Key privateKey(const RsaNumbers& key);

// Runs a slot and gives what it wrote; any status but the expected one fails the test.
using OutputSlot = Status (cPKA::*)(std::uint8_t*, std::uint32_t*, const std::uint8_t*, std::uint32_t);
Bytes run(cPKA& key, OutputSlot slot, const Bytes& input, Status expected = STATUS_OK);
using ExportSlot = Status (cPKA::*)(std::uint8_t*, std::uint32_t*);
Bytes run(cPKA& key, ExportSlot slot);
Status verifyDer(cPKA& key, Bytes signature, const Bytes& digest);
Status verifyPrefixed(cPKA& key, Bytes signature, const Bytes& digest);

} // namespace toolbelt::test
