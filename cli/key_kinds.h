// The kinds of keys, a row each: how the tool names, makes, reads and tells about them.
#pragma once

#include <string>

#include "cli/console.h"
#include "cli/files.h"
#include "crypto/bignum/primes.h"
#include "crypto/encoding/der.h"
#include "crypto/pka/pka.h"

namespace toolbelt::cli {

enum class SignatureFormat
{
    raw,      // the k bytes of an RSA signature
    der,      // RSA: an OCTET STRING of those bytes; DSA and ElGamal: a SEQUENCE of r and s
    prefixed, // prefixed numbers
};

enum class CipherText
{
    none,
    block,    // the k bytes of an RSA operation
    prefixed, // a pair of prefixed numbers
};

struct GenerateOptions
{
    std::uint32_t bits = 0, exponent = 0;
    bool safePrimes = false;
};

struct KeyKind
{
    std::uint32_t algorithm;
    const char* name;         // "RSA"
    const char* option;       // "rsa"
    const char* privateLabel; // of the PEM block of a private key
    const char* privateShape; // its DER elements: a letter I for each INTEGER
    SignatureFormat format;   // of signatures, where none is asked for
    CipherText cipherText;
    std::uint32_t (*poolLength)(cPKA& key);                         // random bytes that one operation takes
    std::uint32_t (*digestLength)(const cPKA& key, bool isPrivate); // leading bytes of a digest that count
    Status (*readPrivate)(cPKA** key, const DerElement& sequence);
    Fact (*numbers)(const cPKA& key, bool isPrivate, bool privateNumbers); // name left open
    cPKA* (*generate)(const GenerateOptions& options, ProgressSink& sink); // throws
};

// The row of a key, of an option's text, or of a shape; null when there is none.
const KeyKind* findKind(std::uint32_t algorithm);
const KeyKind* findKindByOption(const std::string& option);
const KeyKind* findKindByShape(const std::string& shape);

// The text of a PEM block.
Bytes pemText(const std::string& label, const Bytes& der);

} // namespace toolbelt::cli
