// The DSA and ElGamal keys of tests/vectors as numbers, blobs and objects, encoded here and not by the code under test,
// and the random pool filled for one operation.
#pragma once

#include "crypto/pka/dsa.h"
#include "crypto/pka/elgamal.h"
#include "crypto/pka/random_pool.h"
#include "tests/pka/rsa_test_keys.h"

namespace toolbelt::test {

struct FieldNumbers
{
    Bytes p, q, g, y, x; // q: DSA only
    std::uint32_t k() const { return sizeOf(p); }
    Bytes blob() const { return join({prefixed(p), q.empty() ? q : prefixed(q), prefixed(g), prefixed(y)}); }
    Bytes privateBlob() const { return join({blob(), prefixed(x)}); }
    // The private DER form without its SEQUENCE.
    Bytes privateContent() const
    {
        return join(
            {{2, 1, 0}, derInteger(p), q.empty() ? q : derInteger(q), derInteger(g), derInteger(y), derInteger(x)});
    }
};
FieldNumbers fieldNumbers(const Record& record);
// The domain of dsa.txt, and the first key of elgamal.txt with a p of that many bytes.
const FieldNumbers& dsaNumbers(const std::string& name);
const FieldNumbers& elgamalNumbers(std::uint32_t k);

inline Key dsaPublic(const FieldNumbers& key)
{
    const Bytes blob = key.blob();
    return Key(newPublicDsa(blob.data(), sizeOf(blob)));
}
inline Key dsaPrivate(const FieldNumbers& key)
{
    const Bytes blob = key.privateBlob();
    return Key(newPrivateDsa(blob.data(), sizeOf(blob)));
}
inline Key elgamalPublic(const FieldNumbers& key)
{
    const Bytes blob = key.blob();
    return Key(newPublicElgamal(blob.data(), sizeOf(blob)));
}
inline Key elgamalPrivate(const FieldNumbers& key)
{
    const Bytes blob = key.privateBlob();
    return Key(newPrivateElgamal(blob.data(), sizeOf(blob)));
}

// Fills the pool, and empties it again.
class Pool
{
public:
    explicit Pool(Bytes filling) : bytes(std::move(filling)) { setRandomPool(bytes.data(), sizeOf(bytes)); }
    ~Pool() { resetRandomPool(); }
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;
    Bytes bytes;
};

// A number in as many bytes, zeros in front.
inline Bytes padded(Bytes number, std::size_t size)
{
    number.insert(number.begin(), size - std::min(size, number.size()), 0);
    return number;
}

} // namespace toolbelt::test
