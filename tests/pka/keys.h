// The keys of tests/vectors as numbers, blobs, DER and objects, encoded here and not by the code under test, and the
// random pool filled for one operation. Every input is handed over in a block of exactly its size, so that a sanitizer
// sees the first step beyond it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

#include "crypto/pka/dsa.h"
#include "crypto/pka/elgamal.h"
#include "crypto/pka/random_pool.h"
#include "crypto/pka/rsa.h"
#include "tests/support/vectors.h"

namespace toolbelt::test {

using Key = std::unique_ptr<cPKA>;
using BlobFactory = cPKA* (*)(const std::uint8_t*, std::uint32_t);
using DerFactory = Status (*)(cPKA**, const DerElement&);

inline Bytes slice(const Bytes& bytes, std::size_t from, std::size_t size)
{
    return Bytes(bytes.data() + from, bytes.data() + from + size);
}
Bytes join(std::initializer_list<Bytes> parts);
Bytes padded(Bytes number, std::size_t size); // zeros in front
// The prefixed form, with zeros behind it up to `size` bytes.
Bytes prefixed(Bytes magnitude, std::size_t size = 0);
Bytes derElement(std::uint8_t tag, const Bytes& content);
Bytes derIntegers(std::initializer_list<Bytes> magnitudes); // each with the zero octet that keeps it positive
Bytes bytesOf(const BigNum& number);

Key fromBlob(BlobFactory factory, const Bytes& blob);
Key fromDer(DerFactory factory, const Bytes& der, Status expected = STATUS_OK);
Key publicHalf(cPKA& key);

struct RsaNumbers
{
    std::uint32_t bits;
    Bytes n, e, d, p, q, dp, dq, qinv;
    std::uint32_t k() const { return (bits + 7) / 8; }
    Bytes publicBlob() const { return join({prefixed(n), prefixed(e)}); }
    Bytes privatePart() const { return join({prefixed(d), prefixed(q), prefixed(p), prefixed(qinv)}); }
    Bytes privateBlob() const { return join({publicBlob(), privatePart()}); }
    // The private DER form without its SEQUENCE.
    Bytes privateContent() const { return derIntegers({{}, n, e, d, p, q, dp, dq, qinv}); }
    Key open() const { return fromBlob(newPublicRsa, publicBlob()); }
    Key secret() const { return fromBlob(newPrivateRsa, privateBlob()); }
};
const RsaNumbers& rsaKey(const std::string& name);

struct FieldNumbers
{
    Bytes p, q, g, y, x; // q: DSA only
    bool isDsa() const { return !q.empty(); }
    std::uint32_t k() const { return sizeOf(p); }
    Bytes blob() const { return join({prefixed(p), isDsa() ? prefixed(q) : q, prefixed(g), prefixed(y)}); }
    Bytes privateBlob() const { return join({blob(), prefixed(x)}); }
    Bytes privateContent() const { return isDsa() ? derIntegers({{}, p, q, g, y, x}) : derIntegers({{}, p, g, y, x}); }
    BlobFactory openFactory() const { return isDsa() ? BlobFactory(newPublicDsa) : BlobFactory(newPublicElgamal); }
    BlobFactory secretFactory() const { return isDsa() ? BlobFactory(newPrivateDsa) : BlobFactory(newPrivateElgamal); }
    Key open() const { return fromBlob(openFactory(), blob()); }
    Key secret() const { return fromBlob(secretFactory(), privateBlob()); }
};
FieldNumbers fieldNumbers(const Record& record);
// The domain of dsa.txt, and the first key of elgamal.txt with a p of 64 bytes.
const FieldNumbers& dsaNumbers(const std::string& name);
const FieldNumbers& elgamalNumbers();

// Runs a slot and gives what it wrote; any status but the expected one fails the test.
using OutputSlot = Status (cPKA::*)(std::uint8_t*, std::uint32_t*, const std::uint8_t*, std::uint32_t);
Bytes run(cPKA& key, OutputSlot slot, const Bytes& input, Status expected = STATUS_OK);
using ExportSlot = Status (cPKA::*)(std::uint8_t*, std::uint32_t*);
Bytes run(cPKA& key, ExportSlot slot);
Status verifyDer(cPKA& key, Bytes signature, const Bytes& digest);
Status verifyPrefixed(cPKA& key, Bytes signature, const Bytes& digest);

// Fills the pool, and empties it again.
struct Pool
{
    explicit Pool(Bytes filling) : bytes(std::move(filling)) { setRandomPool(bytes.data(), sizeOf(bytes)); }
    ~Pool() { resetRandomPool(); }
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;
    Bytes bytes;
};

} // namespace toolbelt::test
