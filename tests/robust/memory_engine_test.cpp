// Memory that runs out, of the engine: numbers, digests, ciphers, keys, their readers, and the flat surface over them.
#include "crypto/bignum/modular.h"
#include "crypto/encoding/armour.h"
#include "crypto/encoding/key_write.h"
#include "crypto/encoding/x509.h"
#include "crypto/hash/hash_object.h"
#include "crypto/hash/md5.h"
#include "crypto/pka/rsa_generate.h"
#include "include/toolbelt/toolbelt_c.h"
#include "tests/bignum/numbers.h"
#include "tests/cipher/cipher_support.h"
#include "tests/pka/keys.h"
#include "tests/robust/operations.h"
#include "tests/support/one_worker.h"
#include "tests/support/tiers.h"

namespace toolbelt::test {
namespace {

using Memory = OneWorker;
using Secrets = std::vector<Bytes>;
const Bytes DIGEST = fromHex("5a00112233445566778899aabbccddeeff010203");

std::vector<std::vector<Status>> first(std::size_t count, Status status, std::vector<Status> then)
{
    std::vector<std::vector<Status>> failures(count, {status});
    failures.push_back(std::move(then));
    return failures;
}

// The n-th byte of a text; whether all of an output is as it was.
bool untouched(const Bytes& output)
{
    return std::all_of(output.begin(), output.end(), [](std::uint8_t byte) { return byte == 0xA5; });
}

TEST_F(Memory, Numbers)
{
    Dice dice(7);
    const Number a = dice.number(40), b = dice.number(20), n = dice.number(3), e("1f3f"), three("03"), seven("07");
    n.limbs[0] |= 1;
    const std::uint8_t bytes[11] = {0, 72, 0xC1, 2, 3, 4, 5, 6, 7, 8, 9};
    const std::pair<const char*, std::function<Status(BigNum&)>> operations[] = {
        {"bnResize", [](BigNum& r) { return bnResize(r, 90); }},
        {"bnImport", [&](BigNum& r) { return bnImport(r, bytes, 9); }},
        {"bnImportPrefixed", [&](BigNum& r) { return bnImportPrefixed(r, bytes, 11) == 11 ? STATUS_OK : BN_E_MEMORY; }},
        {"bnCopy", [&](BigNum& r) { return bnCopy(r, a); }},
        {"bnView", [&](BigNum& r) { return bnView(r, a, 40); }},
        {"bnSetBit", [](BigNum& r) { return bnSetBit(r, 500); }},
        {"bnRandom", [](BigNum& r) { return bnRandom(r, 20); }},
        {"bnAdd", [&](BigNum& r) { return bnAdd(r, a, b); }},
        {"bnAddWord", [&](BigNum& r) { return bnAddWord(r, a, 1); }},
        {"bnSubtract", [&](BigNum& r) { return bnSubtract(r, a, b); }},
        {"bnSubtractWord", [&](BigNum& r) { return bnSubtractWord(r, a, 1); }},
        {"bnMultiply", [&](BigNum& r) { return bnMultiply(r, a, b); }},
        {"bnMultiply, square", [&](BigNum& r) { return bnMultiply(r, a, a); }},
        {"bnShiftLeft", [&](BigNum& r) { return bnShiftLeft(r, a, 70); }},
        {"bnShiftRight", [&](BigNum& r) { return bnShiftRight(r, a, 70); }},
        {"bnDivide", [&](BigNum& r) { return bnDivide(&r, r, a, b); }},
        {"bnModulo", [&](BigNum& r) { return bnModulo(r, a, b); }},
        {"bnModMultiply", [&](BigNum& r) { return bnModMultiply(r, a, b, n); }},
        {"bnModExp", [&](BigNum& r) { return bnModExp(r, a, e, n); }},
        {"bnModExp, portable",
         [&](BigNum& r) {
             const FeatureLimit limit(0);
             return bnModExp(r, a, e, n);
         }},
        {"bnModExp, plain", [&](BigNum& r) { return bnModExp(r, a, e, n, true); }},
        {"bnModExp, 40 limbs", [&](BigNum& r) { return bnModExp(r, b, e, a); }},
        {"bnGcd", [&](BigNum& r) { return bnGcd(r, a, n); }},
        {"bnModInverse", [&](BigNum& r) { return bnModInverse(r, three, seven); }},
        {"bnExtendedGcd",
         [&](BigNum& r) {
             SignedBigNum x, y;
             const Status status = bnExtendedGcd(x, &y, three, seven);
             return status == STATUS_OK ? bnCopy(r, y.value) : status;
         }},
    };
    // A destination in use: what it held is wiped, and it can be used again.
    for (const auto& [name, call] : operations)
        runWithoutMemory({name,
                          [&](TestHeap& heap) {
                              BigNum result;
                              if (bnImport(result, bytes, 9) != STATUS_OK) return BN_E_MEMORY;
                              return again(heap, [&] { return call(result); });
                          },
                          {{BN_E_MEMORY}}});
    TestHeap heap;
    heap.failAt(1, true);
    BigNum none;
    EXPECT_EQ(bnResize(none, 0xFFFFFFFF), BN_E_MEMORY);
    EXPECT_EQ(bnImportPrefixed(none, bytes + 2, 0), 0u);
    const std::uint8_t zero[2] = {};
    EXPECT_EQ(bnImportPrefixed(none, zero, 2), 2u) << "the bare zero is read all the same";
    EXPECT_TRUE(none.count == 0 && none.limbs == nullptr);
}

TEST_F(Memory, Primes)
{
    const Number n("ffffffffffffffc5"), before("ffffffffffffffc4"), start("0200100002"), e("0100000000000f");
    runWithoutMemory({"bnBuildPrimeTable",
                      [](TestHeap&) {
                          const Status status = bnBuildPrimeTable(4);
                          EXPECT_EQ(bnPrimeTable(nullptr) != nullptr, status == STATUS_OK);
                          return bnFreePrimeTable(), status;
                      },
                      {{BN_E_MEMORY}},
                      1});
    runWithoutMemory({"bnFermatRound", [&](TestHeap&) { return bnFermatRound(n, before) ? STATUS_OK : -1; }, {{-1}}});
    // A failure of memory is never taken for a prime; the outcome tells how far the test came.
    runWithoutMemory({"bnProbablePrime",
                      [&](TestHeap&) {
                          std::int32_t outcome = 77;
                          return bnProbablePrime(n, 2, &outcome) ? STATUS_OK : 100 + outcome;
                      },
                      first(2, 100 + PRIME_NO_PREDECESSOR, {100, 101})});
    runWithoutMemory({"bnSearchPrime",
                      [&](TestHeap&) {
                          BigNum result;
                          const Status status = bnSearchPrime(result, start, true, &e, nullptr);
                          EXPECT_EQ(hex(result), status == STATUS_OK ? "020010000b" : "00");
                          EXPECT_EQ(bnPrimeTable(nullptr), nullptr);
                          return status;
                      },
                      {{BN_E_MEMORY}},
                      1, // the table
                      false,
                      150});
}

TEST_F(Memory, DigestsAndCiphers)
{
    runWithoutMemory({"allocateContext",
                      [](TestHeap&) {
                          Md5Context* context;
                          const Status status = allocateContext(&context);
                          EXPECT_EQ(context != nullptr, status == STATUS_OK);
                          return heap::release(context), status;
                      },
                      {{CRYPT_E_CONTEXT_ALLOC}},
                      1});
    for (const HashRow& row : hashRows)
        runWithoutMemory({"createHash " + std::to_string(row.id),
                          [&](TestHeap& heap) {
                              cHashAlg* hash = reinterpret_cast<cHashAlg*>(1);
                              EXPECT_EQ(createHash(&hash, row.id), CRYPT_OK) << "no object is no error";
                              if (hash == nullptr) return -1;
                              const std::uint32_t taken = heap.allocations();
                              std::uint8_t output[64];
                              EXPECT_EQ(hashBuffer(hash, output, DIGEST.data(), sizeOf(DIGEST)), CRYPT_OK);
                              EXPECT_EQ(heap.allocations(), taken)
                                  << "no other operation allocates, so none can fail later";
                              return destroyHash(hash), STATUS_OK;
                          },
                          {{-1}},
                          row.id <= 3 ? 2u : 1u}); // the object, and the contexts of the three oldest

    const Bytes iv = randomBytes(16, 15), plain = randomBytes(96, 16);
    for (const CipherRow& row : cipherRows) {
        const Bytes key = randomBytes(row.keySize(nullptr), 17);
        for (const std::uint32_t mode : {SYM_MODE_CBC, SYM_MODE_CBC_WORDSWAP, SYM_MODE_CFB}) {
            if (row.id == 0 && mode != SYM_MODE_CFB) continue; // the identity has no blocks to chain
            const auto run = [&](TestHeap& heap) {
                const Cipher cipher = makeCipher(row.id, key);
                if (!cipher) return -1;
                cipher->setMode(mode);
                Status first = STATUS_OK;
                for (const auto operation : {cipher->modeEncrypt, cipher->modeDecrypt}) {
                    Bytes out(plain.size(), 0xA5);
                    const Status status = again(heap, [&] {
                        EXPECT_TRUE(untouched(out));
                        return operation(cipher.get(), iv.data(), plain.data(), out.data(), lengthOf(plain));
                    });
                    if (first == STATUS_OK) first = status;
                }
                return first;
            };
            runWithoutMemory({"cipher " + std::to_string(row.id) + ", mode " + std::to_string(mode),
                              run,
                              {{-1}, {-1, CRYPT_E_NO_MEMORY}},
                              row.id == 0 ? 3u : 1u}, // the object, and registers of no size
                             key.size() < 8 ? Secrets{plain} : Secrets{key, plain});
        }
        TestHeap heap; // a refused or a cut key leaves nothing either
        for (const std::size_t length : {0u, 1u, 7u, 300u}) makeCipher(row.id, randomBytes(length, 18));
        EXPECT_EQ(heap.held(), 0u);
    }
}

// ---- keys

Operation slotOperation(const char* name, const Key& key, OutputSlot slot, const Bytes& input,
                        std::vector<std::vector<Status>> failures)
{
    return {name,
            [&key, slot, input](TestHeap& heap) {
                return again(heap, [&] {
                    const Pool pool(Bytes(64, 0x21));
                    Bytes output(200, 0xA5);
                    std::uint32_t length = 200;
                    const Status status = ((*key).*slot)(output.data(), &length, input.data(), sizeOf(input));
                    EXPECT_TRUE(status == STATUS_OK || (length == 200 && untouched(output))) << "half an output";
                    return status;
                });
            },
            std::move(failures)};
}

template <typename Make>
Operation keyOperation(const char* name, Make make, std::uint32_t plain)
{
    return {name, [make](TestHeap&) { return Key(make()) ? STATUS_OK : -1; }, {{-1}}, plain};
}

Operation derOperation(const char* name, DerFactory factory, const Bytes& der, std::uint32_t plain)
{
    return {name,
            [factory, der](TestHeap&) {
                DerElement element;
                EXPECT_EQ(parseElement(element, der.data(), sizeOf(der)), STATUS_OK);
                cPKA* made = nullptr;
                const Status status = factory(&made, element);
                EXPECT_EQ(Key(made) != nullptr, status == STATUS_OK);
                return status;
            },
            {{PKA_E_IMPORT}},
            plain};
}

Status makePublic(cPKA& key)
{
    cPKA* made = nullptr;
    const Status status = key.makePublic(&made);
    EXPECT_EQ(Key(made) != nullptr, status == STATUS_OK);
    return status;
}

// Two primes of 64 bits, and wrong numbers, so that the completion has everything to compute.
const RsaNumbers wrong = {128, {3}, {1, 0, 1}, {2}, fromHex("e2eb5e4dc54b3619"), fromHex("ca643ac31ccc407d"),
                          {},  {},  {2}};

TEST_F(Memory, RsaKeys)
{
    const RsaNumbers& numbers = rsaKey("rsa512");
    const Key open = numbers.open(), secret = numbers.secret();
    const Bytes number = run(*secret, &cPKA::signPrefixed, DIGEST), der = run(*secret, &cPKA::signDer, DIGEST),
                blob = wrong.privateBlob(), openBlob = wrong.publicBlob(), block = padded(DIGEST, 64);
    const std::uint32_t one = 1, object = 1, numbersOfOpen = 2, numbersOfSecret = 8;
    const auto importBlob = [&](TestHeap&) {
        RsaPrivateKey* record = nullptr;
        const Status status = importRsaPrivateBlob(&record, blob.data(), sizeOf(blob));
        EXPECT_EQ(RsaPrivateOwner(record) != nullptr, status == STATUS_OK);
        return status;
    };
    const auto importOpen = [&](TestHeap&) {
        RsaPublicKey* record = nullptr;
        const Status status = importRsaPublic(&record, openBlob.data(), sizeOf(openBlob));
        EXPECT_EQ(RsaPublicOwner(record) != nullptr, status == STATUS_OK);
        return status;
    };
    const Operation operations[] = {
        // The record and its numbers; then the reading; and 2 again in the completion.
        {"importRsaPrivateBlob", importBlob, first(17, PKA_E_MEMORY, {PKA_E_KEY, BN_E_MEMORY}), numbersOfSecret},
        {"importRsaPublic", importOpen, first(5, PKA_E_MEMORY, {PKA_E_KEY}), numbersOfOpen},
        keyOperation(
            "newPrivateRsa", [&] { return newPrivateRsa(blob.data(), sizeOf(blob)); }, object + numbersOfSecret),
        keyOperation(
            "newPublicRsa", [&] { return newPublicRsa(openBlob.data(), sizeOf(openBlob)); }, object + numbersOfOpen),
        derOperation("newPrivateRsaFromDer", newPrivateRsaFromDer, derElement(0x30, numbers.privateContent()),
                     object + numbersOfSecret),
        derOperation("newPublicRsaFromDer", newPublicRsaFromDer, derElement(0x30, derIntegers({numbers.n, numbers.e})),
                     object + numbersOfOpen),
        {"RSA makePublic",
         [&](TestHeap& heap) { return again(heap, [&] { return makePublic(*secret); }); },
         {{PKA_E_OBJECT}},
         object + numbersOfOpen},
        {"RSA verifyPrefixed", [&](TestHeap&) { return verifyPrefixed(*open, number, DIGEST); },
         first(one, PKA_E_OBJECT, {PKA_E_FAILED})},
        {"RSA verifyDer", [&](TestHeap&) { return verifyDer(*open, der, DIGEST); },
         first(one, PKA_E_OBJECT, {PKA_E_FAILED})},
        slotOperation("RSA encryptPrefixed", open, &cPKA::encryptPrefixed, block, {{PKA_E_RAW_FAILED}}),
        slotOperation("RSA rawToDer, public", open, &cPKA::rawToDer, block, {{PKA_E_FAILED}}),
        slotOperation("RSA rawToDer, private", secret, &cPKA::rawToDer, block, {{PKA_E_FAILED}}),
        slotOperation("RSA publicFromPrefixed", open, &cPKA::publicFromPrefixed, number, {{PKA_E_RAW_FAILED}}),
        slotOperation("RSA publicFromDer", open, &cPKA::publicFromDer, der, {{PKA_E_FAILED}}),
        slotOperation("RSA privateFromPrefixed", secret, &cPKA::privateFromPrefixed, number, {{PKA_E_RAW_FAILED}}),
        slotOperation("RSA privateFromDer", secret, &cPKA::privateFromDer, der, {{PKA_E_FAILED}}),
        // The padded block is the first allocation.
        slotOperation("RSA signPrefixed", secret, &cPKA::signPrefixed, DIGEST,
                      first(one, PKA_E_MEMORY, {PKA_E_RAW_FAILED})),
        slotOperation("RSA signDer", secret, &cPKA::signDer, DIGEST, first(one, PKA_E_MEMORY, {PKA_E_FAILED})),
        {"rsaSelfTest",
         [&](TestHeap&) { return rsaSelfTest(static_cast<cPrivateRSA&>(*secret).record()) ? STATUS_OK : -1; },
         {{-1}}},
        {"generateRsa, 128 bits",
         [](TestHeap&) {
             RsaPrivateKey* record = nullptr;
             Bytes seed = fromHex("c55c218a5390f1d0c533e4c0d28ab621");
             const Status status = generateRsa(&record, seed.data(), 16, 0, nullptr, false);
             EXPECT_TRUE((RsaPrivateOwner(record) != nullptr) == (status == STATUS_OK) && !bnPrimeTable(nullptr));
             return status;
         },
         {{PKA_E_MEMORY}, {PKA_E_MEMORY, PKA_E_KEY}}, // the self-test may lack memory
         numbersOfSecret + 1,
         false,
         300},
    };
    for (const Operation& operation : operations)
        runWithoutMemory(operation, {numbers.d, numbers.p, numbers.q, numbers.dp, numbers.dq, numbers.qinv, wrong.p,
                                     wrong.q, slice(DIGEST, 0, 20)});
}

TEST_F(Memory, DsaAndElgamalKeys)
{
    // Small keys (computed in Python), since inversion allocates at every step: two limbs of p, 24 bits of q.
    FieldNumbers dsa = {fromHex("df4d9d16f96568dc33"), fromHex("cb283d"), fromHex("28b26f98a958c54cbd"),
                        fromHex("66d49574de7afcd526"), fromHex("45ecc5")};
    FieldNumbers elgamal = {
        fromHex("baa057d9506a37aacf"), {}, {5}, fromHex("94cff0ec02584b5de2"), fromHex("22085c5bd5e176c64f")};
    const Key openDsa = dsa.open(), openElgamal = elgamal.open();
    const Key secretDsa = dsa.secret(), secretElgamal = elgamal.secret();
    const auto signedBy = [&](const Key& key, OutputSlot slot) {
        const Pool pool(Bytes(64, 0x21));
        return run(*key, slot, DIGEST);
    };
    const Bytes number = signedBy(secretDsa, &cPKA::signPrefixed), der = signedBy(secretDsa, &cPKA::signDer);
    const Bytes pair = signedBy(secretElgamal, &cPKA::signPrefixed);
    const Bytes r = slice(pair, 2, (pair[1] + 7) / 8), s = slice(pair, r.size() + 4, pair.size() - r.size() - 4),
                pairDer = derElement(0x30, derIntegers({r, s}));
    const Operation operations[] = {
        {"DSA verifyPrefixed", [&](TestHeap&) { return verifyPrefixed(*openDsa, number, DIGEST); }, {{PKA_E_FAILED}}},
        {"DSA verifyDer", [&](TestHeap&) { return verifyDer(*openDsa, der, DIGEST); }, {{PKA_E_FAILED}}},
        {"ElGamal verifyPrefixed",
         [&](TestHeap&) { return verifyPrefixed(*openElgamal, pair, DIGEST); },
         {{PKA_E_FAILED}}},
        {"ElGamal verifyDer", [&](TestHeap&) { return verifyDer(*openElgamal, pairDer, DIGEST); }, {{PKA_E_FAILED}}},
        slotOperation("DSA signPrefixed", secretDsa, &cPKA::signPrefixed, DIGEST, {{PKA_E_RAW_FAILED}}),
        slotOperation("DSA signDer", secretDsa, &cPKA::signDer, DIGEST, {{PKA_E_RAW_FAILED}}),
        slotOperation("ElGamal encryptPrefixed", openElgamal, &cPKA::encryptPrefixed, DIGEST, {{PKA_E_RAW_FAILED}}),
        slotOperation("ElGamal rawToDer", openElgamal, &cPKA::rawToDer, DIGEST, {{PKA_E_RAW_FAILED}}),
        slotOperation("ElGamal signPrefixed", secretElgamal, &cPKA::signPrefixed, DIGEST, {{PKA_E_RAW_FAILED}}),
        slotOperation("ElGamal privateFromPrefixed", secretElgamal, &cPKA::privateFromPrefixed, pair,
                      {{PKA_E_RAW_FAILED}}),
        {"generateDsa, 512 bits",
         [](TestHeap&) {
             Bytes seed = join({Bytes(20, 0x3D), Bytes(28, 0x4E)}); // the domain's, which is told, and that of x
             DsaKey* made = nullptr;
             const Status status = generateDsa(&made, 512, seed.data(), sizeOf(seed), nullptr);
             EXPECT_TRUE((DsaOwner(made) != nullptr) == (status == STATUS_OK));
             return status;
         },
         {{PKA_E_MEMORY}},
         2 + 1, // a digest that is not wiped, and the record
         false,
         300},
        {"generateElgamal, 128 bits",
         [](TestHeap&) {
             Bytes seed(elgamalSeedLength(128), 0x3E);
             ElgamalKey* made = nullptr;
             const Status status = generateElgamal(&made, 128, seed.data(), sizeOf(seed), nullptr);
             EXPECT_TRUE((ElgamalOwner(made) != nullptr) == (status == STATUS_OK));
             return status;
         },
         {{PKA_E_MEMORY}},
         1,
         false,
         300},
    };
    ASSERT_EQ(bnBuildPrimeTable(512), STATUS_OK); // most of the work; the RSA key's generation builds its own
    for (const Operation& operation : operations)
        runWithoutMemory(operation, {elgamal.x, Bytes(64, 0x21), Bytes(20, 0x4E), Bytes(20, 0x3E)});
    bnFreePrimeTable();

    dsa.y = elgamal.y = {}; // computed when it is asked for
    for (const FieldNumbers& numbers : {dsa, elgamal}) {
        FieldNumbers withY = numbers;
        withY.y = {2};
        const Bytes blob = numbers.privateBlob(), openBlob = withY.blob();
        const std::string name = numbers.isDsa() ? "DSA" : "ElGamal";
        const auto secretKey = [&] { return numbers.secretFactory()(blob.data(), sizeOf(blob)); };
        const auto with = [&](auto use) {
            return [&, use](TestHeap& heap) {
                const Key key(secretKey());
                return key ? again(heap, [&] { return use(*key); }) : -1;
            };
        };
        const Operation more[] = {
            keyOperation((name + " private key, blob").c_str(), secretKey, 2),
            keyOperation((name + " public key, blob").c_str(),
                         [&] { return numbers.openFactory()(openBlob.data(), sizeOf(openBlob)); }, 2),
            derOperation((name + " private key, DER").c_str(),
                         numbers.isDsa() ? newPrivateDsaFromDer : newPrivateElgamalFromDer,
                         derElement(0x30, numbers.privateContent()), 2),
            {name + " makePublic", with(makePublic), {{-1}, {-1, PKA_E_OBJECT}}, 4},
            {name + " exportDer",
             with([](cPKA& key) {
                 Bytes output(1000);
                 std::uint32_t length = 1000;
                 return key.exportDer(output.data(), &length);
             }),
             {{-1}, {-1, PKA_E_HEADER}},
             2},
        };
        for (const Operation& operation : more) runWithoutMemory(operation, {numbers.x});
    }
}

// An object with an identifier that the watch can tell from other bytes: the destructor resets it.
struct MarkedKey : cPKA
{
    MarkedKey() { algorithm_ = 0x5E1DC0DE; }
    std::uint32_t behind = 0x5AFEC0DE;
};

// Larger keys, whose primes the watch cannot take for anything else, through all that they are for.
TEST_F(Memory, NoBlockComesBackWithASecretInIt)
{
    const RsaNumbers& rsa = rsaKey("rsa1024e17");
    const FieldNumbers &dsa = dsaNumbers("dsa512-160"), &elgamal = elgamalNumbers();
    const Bytes message = {3, 1, 4, 1, 5, 9, 2, 6}, plain = join({{0}, message, Bytes(119, 1)}),
                drawn = fromHex("000102030405060708090a0b0c0d0e0f10111213"), whole = padded(drawn, 64);
    TestHeap heap;
    for (const Bytes& secret : {message, drawn, rsa.d, rsa.p, rsa.q, rsa.dp, rsa.dq, rsa.qinv, dsa.x, elgamal.x})
        heap.watch(secret.data(), secret.size());
    {
        const MarkedKey object;
        heap.watch(&object.behind - 1, 8);
        EXPECT_EQ((&object.behind)[-1], object.algorithm()) << "the watch must see the identifier";
        delete new (std::nothrow) MarkedKey;
    }
    const Key secret = rsa.secret(), open = rsa.open();
    const Key secretDsa = dsa.secret(), secretElgamal = elgamal.secret(), openElgamal = elgamal.open();
    EXPECT_EQ(verifyPrefixed(*open, run(*secret, &cPKA::signPrefixed, message), message), 0);
    EXPECT_EQ(verifyDer(*open, run(*secret, &cPKA::signDer, message), message), 0);
    EXPECT_EQ(run(*secret, &cPKA::privateFromPrefixed, run(*open, &cPKA::encryptPrefixed, plain)), plain);
    for (const auto& [key, slot] : {std::pair<cPKA&, OutputSlot>{*secretDsa, &cPKA::signPrefixed},
                                    {*secretDsa, &cPKA::signDer},
                                    {*secretElgamal, &cPKA::signPrefixed},
                                    {*openElgamal, &cPKA::encryptPrefixed}}) {
        const Pool pool(&key == secretDsa.get() ? drawn : whole);
        const Bytes pair = run(key, slot, DIGEST);
        if (&key == openElgamal.get()) run(*secretElgamal, &cPKA::privateFromPrefixed, pair);
    }
    for (const Key* key : {&secret, &secretDsa, &secretElgamal}) {
        run(**key, &cPKA::exportDer);
        publicHalf(**key);
    }
}

// ---- readers and texts

std::string textOf(const cByteBuffer& buffer)
{
    return std::string(reinterpret_cast<const char*>(buffer.data()), buffer.length());
}

// On a buffer that holds a secret.
Operation onBuffer(const char* name, std::function<bool(cByteBuffer&)> call)
{
    return {name,
            [call](TestHeap& heap) {
                cByteBuffer buffer;
                if (!buffer.append("abcdefghi", 9)) return -1;
                return again(heap, [&] { return call(buffer) ? STATUS_OK : -1; });
            },
            {{-1}}};
}

TEST_F(Memory, BuffersAndArmour)
{
    const std::string begin = "-----BEGIN X-----", end = "-----END X-----",
                      text = begin + "\r\nVersion: 1\r\n\r\nYWJjZGVmZ2hp\r\n" + end + "-\r\n";
    const Bytes secret = {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i'};
    const auto failed = [](bool done) { return done ? STATUS_OK : -1; };
    const Operation operations[] = {
        onBuffer("cByteBuffer append, grow, reserve",
                 [&](cByteBuffer& buffer) {
                     const bool done =
                         buffer.reserve(1000) && buffer.grow(2000); // half as much again, or what is needed
                     EXPECT_EQ(textOf(buffer).substr(0, 9), "abcdefghi");
                     buffer.truncate(9);
                     return done;
                 }),
        onBuffer("cByteBuffer allocate",
                 [&](cByteBuffer& buffer) {
                     const bool done = buffer.allocate(10);
                     EXPECT_EQ(textOf(buffer), std::string(done ? 10 : 0, '\0'));
                     return done;
                 }),
        onBuffer("base64DecodeToBuffer",
                 [&](cByteBuffer& buffer) {
                     const bool done = base64DecodeToBuffer(buffer, "YWI=");
                     EXPECT_EQ(textOf(buffer), done ? "ab" : "");
                     return done;
                 }),
        {"decodeArmoured",
         [&](TestHeap& heap) {
             cByteBuffer decoded, header, trailing;
             for (cByteBuffer* buffer : {&decoded, &header, &trailing})
                 if (!buffer->append("old", 3)) return -1;
             return again(heap, [&] {
                 const bool done = decodeArmoured(decoded, text.data(), TEXT_ZERO_TERMINATED, begin.c_str(),
                                                  end.c_str(), &header, &trailing);
                 EXPECT_EQ(textOf(decoded) + "|" + textOf(header) + "|" + textOf(trailing),
                           done ? "abcdefghi|Version: 1\r|-" : "old|old|old");
                 return failed(done);
             });
         },
         {{-1}}},
        {"encodeToBuffer",
         [&](TestHeap&) {
             cByteBuffer buffer;
             const bool done = encodeToBuffer(buffer, secret.data(), 9, nullptr, nullptr, nullptr, nullptr, 3);
             EXPECT_TRUE(textOf(buffer) == "YWJjZGVmZ2hp" || (!done && buffer.length() == 0)) << "the proof may fail";
             return failed(done);
         },
         {{-1}}},
        {"armouredEquals",
         [&](TestHeap&) { return failed(armouredEquals("YWJjZGVmZ2hp", 12, secret.data(), 9, nullptr, nullptr)); },
         {{-1}}},
    };
    for (const Operation& operation : operations) runWithoutMemory(operation, {secret});
}

TEST_F(Memory, ReadersOfDerKeysAndCertificates)
{
    const auto pem = [](const std::string& file, const char* label) {
        const Bytes text = readVectorFile(file);
        cByteBuffer buffer;
        EXPECT_TRUE(decodeArmoured(buffer, reinterpret_cast<const char*>(text.data()), sizeOf(text),
                                   (std::string("-----BEGIN ") + label).c_str(), "-----END "));
        return Bytes(buffer.data(), buffer.data() + buffer.length());
    };
    const Bytes name = fromHex("301a310b3009060355040613025553310b3009060355040613024445"),
                integer = fromHex("0203010001"), algorithm = fromHex("300d06092a864886f70d0101050500"),
                oid = fromHex("06032a8648"), cert = readVectorFile("certificates/real-godaddy-class2.der"),
                leaf = readVectorFile("certificates/a-root.der"),
                keyText = join({readVectorFile("keys/rsa768.pub.pem"), {0}});
    std::vector<Bytes> infos;
    for (const char* file : {"rsa512", "dsa512-160", "dh-x942-1024"})
        infos.push_back(pem(std::string("keys/") + file + ".pub.pem", "PUBLIC KEY-----"));
    const Key secretRsa = rsaKey("rsa512").secret(), secretDsa = dsaNumbers("dsa512-160").secret(),
              secretElgamal = elgamalNumbers().secret();
    const auto exportInfo = [](cPKA& key) {
        Bytes output(2000, 0xA5);
        std::uint32_t length = 2000;
        const Status status = exportSubjectPublicKeyInfo(key, output.data(), &length);
        EXPECT_TRUE(status == STATUS_OK || (length == 2000 && untouched(output)));
        return status;
    };
    const Operation operations[] = {
        {"readName",
         [&](TestHeap& heap) {
             NameList list;
             return again(heap, [&] {
                 const std::uint32_t held = heap.held();
                 const Status status = readName(list, name.data(), sizeOf(name));
                 EXPECT_EQ(heap.held(), held + (status ? 0 : 6)) << "node, identifier and value of each, or no list";
                 return status;
             });
         },
         {{DER_E_MEMORY}},
         6},
        {"readAlgorithmIdentifier, readOid",
         [&](TestHeap& heap) {
             AlgorithmIdentifier record;
             return again(heap, [&] {
                 Status status = readAlgorithmIdentifier(record, algorithm.data(), sizeOf(algorithm));
                 if (status == STATUS_OK) status = readOid(record.oid, oid.data(), sizeOf(oid));
                 EXPECT_EQ(record.oid.text != nullptr, status == STATUS_OK) << "a text is given up before the next";
                 return status;
             });
         },
         {{DER_E_MEMORY}},
         4},
        {"readBigNum",
         [&](TestHeap&) {
             BigNum number;
             const std::uint8_t* next = integer.data();
             std::uint32_t left = sizeOf(integer);
             const Status status = readBigNum(number, &next, &left);
             EXPECT_EQ(left, status ? sizeOf(integer) : 0);
             return status;
         },
         {{BN_E_MEMORY}}},
        {"readPemPublicKey",
         [&](TestHeap&) {
             Status status = -1;
             const Key key(readPemPublicKey(reinterpret_cast<const char*>(keyText.data()), &status));
             EXPECT_EQ(key != nullptr, status == STATUS_OK);
             return status;
         },
         first(1, TEXT_E_MALFORMED, {DER_E_MEMORY, DER_E_MALFORMED}), 4},
        {"readRsaPublicKey",
         [&](TestHeap&) {
             SubjectPublicKeyInfo info;
             Status status = readSubjectPublicKeyInfo(info, infos[0].data(), sizeOf(infos[0]));
             RsaPublicKey* record = nullptr;
             if (status == STATUS_OK) status = readRsaPublicKey(&record, info);
             EXPECT_EQ(RsaPublicOwner(record) != nullptr, status == STATUS_OK);
             return status;
         },
         first(1, DER_E_MEMORY, {PKA_E_MEMORY, PKA_E_KEY}), 3},
        {"exportSubjectPublicKeyInfo, RSA", [&](TestHeap&) { return exportInfo(*secretRsa); }, {{PKA_E_OBJECT}}, 3},
        {"exportSubjectPublicKeyInfo, DSA", [&](TestHeap&) { return exportInfo(*secretDsa); }, {{PKA_E_OBJECT}}, 2},
        {"exportSubjectPublicKeyInfo, ElGamal",
         [&](TestHeap&) { return exportInfo(*secretElgamal); },
         {{PKA_E_OBJECT}},
         2},
        {"readCertificate",
         [&](TestHeap& heap) {
             CertificateInfo info;
             return again(heap, [&] {
                 const Status status = readCertificate(info, cert.data(), sizeOf(cert));
                 EXPECT_EQ(info.issuer.head != nullptr, status == STATUS_OK) << "a failed record is empty";
                 return status;
             });
         },
         {{DER_E_MEMORY}},
         100,
         true}, // extensions are read once for nothing
        {"findExtension and its readers",
         [&](TestHeap& heap) {
             CertificateInfo info;
             if (readCertificate(info, leaf.data(), sizeOf(leaf)) != STATUS_OK) return DER_E_MEMORY;
             return again(heap, [&] {
                 std::uint8_t isCa;
                 std::int32_t pathLength;
                 const std::uint8_t* id;
                 std::uint32_t length;
                 Status status = readBasicConstraints(info, &isCa, &pathLength);
                 if (status == STATUS_OK) status = readSubjectKeyId(info, &id, &length);
                 if (status == STATUS_OK)
                     status = readAuthorityKeyId(info, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
                 return status == DER_E_NOT_FOUND ? STATUS_OK : status;
             });
         },
         {{DER_E_MEMORY}},
         100,
         true},
        {"verifyCertificateSignature",
         [&](TestHeap& heap) {
             CertificateInfo info;
             if (readCertificate(info, cert.data(), sizeOf(cert)) != STATUS_OK) return DER_E_MEMORY;
             return again(heap, [&] {
                 std::int32_t result = -1;
                 const Status status = verifyCertificateSignature(info, 2, &result);
                 EXPECT_EQ(result, status == STATUS_OK);
                 return status;
             });
         },
         // As the reading, the key, the digest and the verification say it.
         {{DER_E_MEMORY}, {DER_E_MEMORY, DER_E_MALFORMED, PKA_E_OBJECT, PKA_E_FAILED}},
         100,
         true},
    };
    for (const Operation& operation : operations) runWithoutMemory(operation);
    for (const Bytes& bytes : infos) {
        runWithoutMemory({"readPublicKeyFromInfo, " + std::to_string(bytes.size()) + " bytes",
                          [&](TestHeap& heap) {
                              SubjectPublicKeyInfo info;
                              if (readSubjectPublicKeyInfo(info, bytes.data(), sizeOf(bytes)) != STATUS_OK)
                                  return DER_E_MEMORY;
                              return again(heap, [&] {
                                  cPKA* key = nullptr;
                                  const Status status = readPublicKeyFromInfo(&key, info);
                                  EXPECT_EQ(Key(key) != nullptr, status == STATUS_OK);
                                  return status;
                              });
                          },
                          {{DER_E_MEMORY}, {DER_E_MEMORY, DER_E_MALFORMED}},
                          8});
    }
}

// The flat surface answers a lack of memory deep inside with what it says of the input.
TEST_F(Memory, FlatSurface)
{
    const Bytes cert = readVectorFile("certificates/real-godaddy-class2.pem"),
                leaf = readVectorFile("certificates/a-leaf.pem"), issuer = readVectorFile("certificates/a-inter.pem"),
                key = derElement(0x30, rsaKey("rsa512").privateContent()), open = readVectorFile("keys/rsa512.pub.pem");
    Bytes signature(64);
    std::uint32_t size = 64;
    Bytes forged = readVectorFile("certificates/real-godaddy-class2.der");
    forged.back() ^= 1;
    ASSERT_EQ(tb_rsa_sign(key.data(), sizeOf(key), 8, "text", 4, signature.data(), &size), TB_OK);
    const Operation operations[] = {
        {"tb_digest",
         [&](TestHeap&) {
             Bytes output(64, 0xA5);
             const tb_status status = tb_digest(8, "text", 4, output.data(), &(size = 64));
             EXPECT_TRUE(status == TB_OK || (size == 64 && untouched(output)));
             return status;
         },
         {{TB_E_MEMORY}},
         1},
        {"tb_hash_open",
         [](TestHeap&) {
             tb_hash* hash = nullptr;
             const tb_status status = tb_hash_open(8, &hash);
             EXPECT_EQ(hash != nullptr, status == TB_OK);
             return tb_hash_close(hash), status;
         },
         {{TB_E_MEMORY}},
         1},
        {"tb_cipher_open, tb_cipher_encrypt",
         [](TestHeap& heap) {
             tb_cipher* cipher = nullptr;
             tb_status status = tb_cipher_open(9, TB_CFB, Bytes(32, 7).data(), 32, &cipher);
             EXPECT_EQ(cipher != nullptr, status == TB_OK);
             std::uint8_t bytes[40] = {};
             if (status == TB_OK)
                 status = again(heap, [&] { return tb_cipher_encrypt(cipher, nullptr, bytes, bytes, 40); });
             return tb_cipher_close(cipher), status;
         },
         first(2, TB_E_KEY, {TB_E_MEMORY}), 1},
        {"tb_certificate_check",
         [&](TestHeap&) { return tb_certificate_check(cert.data(), sizeOf(cert), nullptr, 0, 1'500'000'000); },
         {{TB_E_CERTIFICATE}, {TB_E_MEMORY, TB_E_KEY, TB_E_SIGNATURE}},
         100,
         true},
        {"tb_certificate_check with an issuer",
         [&](TestHeap&) {
             return tb_certificate_check(leaf.data(), sizeOf(leaf), issuer.data(), sizeOf(issuer), 1'748'736'000);
         },
         {{TB_E_CERTIFICATE}, {TB_E_MEMORY, TB_E_CERTIFICATE, TB_E_ISSUER, TB_E_KEY, TB_E_SIGNATURE}},
         200,
         true},
        {"tb_certificate_check, refused",
         [&](TestHeap&) {
             const tb_status status = tb_certificate_check(forged.data(), sizeOf(forged), nullptr, 0, 1'500'000'000);
             return status == TB_E_SIGNATURE ? TB_OK : status == TB_OK ? -1 : status;
         },
         {{TB_E_MEMORY, TB_E_KEY, TB_OK}},
         100,
         true},
        {"tb_rsa_sign",
         [&](TestHeap&) {
             Bytes made(64, 0xA5);
             const tb_status status = tb_rsa_sign(key.data(), sizeOf(key), 8, "text", 4, made.data(), &(size = 64));
             EXPECT_TRUE(status == TB_OK ? made == signature : untouched(made));
             return status;
         },
         {{TB_E_KEY}, {TB_E_MEMORY, TB_E_KEY, TB_E_FAILED}},
         10},
        {"tb_rsa_verify",
         [&](TestHeap&) { return tb_rsa_verify(open.data(), sizeOf(open), 8, "text", 4, signature.data(), 64); },
         {{TB_E_KEY}, {TB_E_MEMORY, TB_E_KEY, TB_E_SIGNATURE}},
         6},
    };
    for (const Operation& operation : operations) runWithoutMemory(operation);
}

} // namespace
} // namespace toolbelt::test
