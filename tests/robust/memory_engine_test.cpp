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
#include "tests/robust/key_uses.h"
#include "tests/robust/operations.h"
#include "tests/support/one_worker.h"

namespace toolbelt::test {
namespace {

using Memory = OneWorker;
const Bytes DIGEST = fromHex("5a00112233445566778899aabbccddeeff010203");

Failures first(std::size_t count, Status status, std::vector<Status> then)
{
    Failures failures(count, {status});
    failures.push_back(std::move(then));
    return failures;
}

// What a call makes is there when its status says so, and only then.
template <typename Owner, typename Make>
auto making(Make make)
{
    return [make] {
        typename Owner::pointer made = nullptr;
        const Status status = make(&made);
        EXPECT_EQ(Owner(made) != nullptr, status == STATUS_OK);
        return status;
    };
}
template <typename Owner, typename Make>
Run makes(Make make)
{
    return [call = making<Owner>(make)](TestHeap&) { return call(); };
}
// From a blob.
template <typename Owner>
Run imports(Status (*import)(typename Owner::pointer*, const std::uint8_t*, std::uint32_t), const Bytes& blob)
{
    return makes<Owner>([=](auto* made) { return import(made, blob.data(), sizeOf(blob)); });
}

// What a call writes is whole, or all of it is as it was.
template <typename Write>
Run writes(std::uint32_t size, Write write)
{
    return repeated([=] {
        Bytes output(size, 0xA5);
        std::uint32_t length = size;
        const Status status = write(output.data(), &length);
        EXPECT_TRUE(status == STATUS_OK || (length == size && output == Bytes(size, 0xA5))) << "half an output";
        return status;
    });
}

TEST_F(Memory, Numbers)
{
    Dice dice(7);
    const Number a = dice.number(40), b = dice.number(20), n = dice.number(3), e("1f3f"), three("03"), seven("07");
    n.limbs[0] |= 1;
    const std::uint8_t bytes[11] = {0, 72, 0xC1, 2, 3, 4, 5, 6, 7, 8, 9};
    const auto portableModExp = [&](BigNum& r) {
        const FeatureLimit limit(0);
        return bnModExp(r, a, e, n);
    };
    const auto extendedGcd = [&](BigNum& r) {
        SignedBigNum x, y;
        const Status status = bnExtendedGcd(x, &y, three, seven);
        return status == STATUS_OK ? bnCopy(r, y.value) : status;
    };
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
        {"bnModExp, portable", portableModExp},
        {"bnModExp, plain", [&](BigNum& r) { return bnModExp(r, a, e, n, true); }},
        {"bnModExp, 40 limbs", [&](BigNum& r) { return bnModExp(r, b, e, a); }},
        {"bnGcd", [&](BigNum& r) { return bnGcd(r, a, n); }},
        {"bnModInverse", [&](BigNum& r) { return bnModInverse(r, three, seven); }},
        {"bnExtendedGcd", extendedGcd},
    };
    // A destination in use: what it held is wiped, and it can be used again.
    for (const auto& [name, call] : operations) {
        const auto run = [&](TestHeap& heap) {
            BigNum result;
            if (bnImport(result, bytes, 9) != STATUS_OK) return BN_E_MEMORY;
            return again(heap, [&] { return call(result); });
        };
        runWithoutMemory({name, run, {{BN_E_MEMORY}}});
    }
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
    const Number n("ffffffffffffffc5"), start("0200100002"), e("0100000000000f");
    // A failure of memory is never taken for a prime; the outcome tells how far the test came.
    const auto probable = [&](TestHeap&) {
        std::int32_t outcome = 77;
        return bnProbablePrime(n, 2, &outcome) ? STATUS_OK : 100 + outcome;
    };
    const auto search = [&](TestHeap&) {
        BigNum result;
        const Status status = bnSearchPrime(result, start, true, &e, nullptr);
        EXPECT_EQ(hex(result), status == STATUS_OK ? "020010000b" : "00");
        EXPECT_EQ(bnPrimeTable(nullptr), nullptr);
        return status;
    };
    runAll({
        {"bnProbablePrime", probable, first(2, 100 + PRIME_NO_PREDECESSOR, {100, 101})},
        {"bnSearchPrime", search, {{BN_E_MEMORY}}, 1, false, 150}, // plain: the table
    });
}

TEST_F(Memory, DigestsAndCiphers)
{
    using Md5Owner = std::unique_ptr<Md5Context, decltype([](Md5Context* context) { heap::release(context); })>;
    runWithoutMemory({"allocateContext", makes<Md5Owner>(allocateContext<Md5Context>), {{CRYPT_E_CONTEXT_ALLOC}}, 1});
    for (const HashRow& row : hashRows) {
        const auto run = [&](TestHeap& heap) {
            cHashAlg* hash = reinterpret_cast<cHashAlg*>(1);
            EXPECT_EQ(createHash(&hash, row.id), CRYPT_OK) << "no object is no error";
            if (hash == nullptr) return -1;
            const std::uint32_t taken = heap.allocations();
            std::uint8_t output[64];
            EXPECT_EQ(hashBuffer(hash, output, DIGEST.data(), sizeOf(DIGEST)), CRYPT_OK);
            EXPECT_EQ(heap.allocations(), taken) << "no other operation allocates, so none can fail later";
            return destroyHash(hash), STATUS_OK;
        };
        // Plain: the object, and the contexts of the three oldest.
        runWithoutMemory({"createHash " + std::to_string(row.id), run, {{-1}}, row.id <= 3 ? 2u : 1u});
    }
    const Bytes iv = randomBytes(16, 15), plain = randomBytes(96, 16);
    for (const CipherRow& row : cipherRows) {
        const Bytes key = randomBytes(row.keySize(nullptr), 17);
        const Secrets secrets = key.size() < 8 ? Secrets{plain} : Secrets{key, plain};
        for (const std::uint32_t mode : {SYM_MODE_CBC, SYM_MODE_CBC_WORDSWAP, SYM_MODE_CFB}) {
            if (row.id == 0 && mode != SYM_MODE_CFB) continue; // the identity has no blocks to chain
            const auto run = [&](TestHeap& heap) {
                const Cipher cipher = makeCipher(row.id, key);
                if (!cipher) return -1;
                cipher->setMode(mode);
                Status answer = STATUS_OK;
                for (const auto operation : {cipher->modeEncrypt, cipher->modeDecrypt}) {
                    const Status status = writes(sizeOf(plain), [&](std::uint8_t* out, std::uint32_t* length) {
                        return operation(cipher.get(), iv.data(), plain.data(), out,
                                         static_cast<std::int32_t>(*length));
                    })(heap);
                    if (answer == STATUS_OK) answer = status;
                }
                return answer;
            };
            // Plain: the object, and registers of no size.
            runWithoutMemory({"cipher " + std::to_string(row.id) + ", mode " + std::to_string(mode),
                              run,
                              {{-1}, {-1, CRYPT_E_NO_MEMORY}},
                              row.id == 0 ? 3u : 1u},
                             secrets);
        }
        const TestHeap heap; // a refused or a cut key leaves nothing either
        for (const std::size_t length : {0u, 1u, 7u, 300u}) makeCipher(row.id, randomBytes(length, 18));
    }
}

// ---- keys

Run slot(const Key& key, OutputSlot slot, const Bytes& input)
{
    return writes(200, [&key, slot, input](std::uint8_t* output, std::uint32_t* length) {
        const Pool pool(Bytes(64, 0x21));
        return ((*key).*slot)(output, length, input.data(), sizeOf(input));
    });
}

Run verifies(Status (*verify)(cPKA&, Bytes, const Bytes&), const Key& key, const Bytes& signature)
{
    return [=, &key](TestHeap&) { return verify(*key, signature, DIGEST); };
}

Run object(BlobFactory factory, const Bytes& blob)
{
    return [=](TestHeap&) { return failed(Key(factory(blob.data(), sizeOf(blob))) != nullptr); };
}

Run fromElement(DerFactory factory, const Bytes& der)
{
    return makes<Key>([=](cPKA** made) {
        DerElement element;
        EXPECT_EQ(parseElement(element, der.data(), sizeOf(der)), STATUS_OK);
        return factory(made, element);
    });
}

Status makePublic(cPKA& key)
{
    return making<Key>([&](cPKA** made) { return key.makePublic(made); })();
}

// Two primes of 64 bits, and wrong numbers, so that the completion has everything to compute.
const RsaNumbers wrong = {128, {3}, {1, 0, 1}, {2}, fromHex("e2eb5e4dc54b3619"), fromHex("ca643ac31ccc407d"),
                          {},  {},  {2}};

TEST_F(Memory, RsaKeys)
{
    const RsaNumbers& numbers = rsaKey("rsa512");
    const Key open = numbers.open(), secret = numbers.secret();
    const Bytes number = run(*secret, &cPKA::signPrefixed, DIGEST), der = run(*secret, &cPKA::signDer, DIGEST),
                blob = wrong.privateBlob(), openBlob = wrong.publicBlob(), block = padded(DIGEST, 64),
                sequence = derElement(0x30, numbers.privateContent()),
                openSequence = derElement(0x30, derIntegers({numbers.n, numbers.e}));
    const auto generate = makes<RsaPrivateOwner>([](RsaPrivateKey** record) {
        Bytes seed = fromHex("c55c218a5390f1d0c533e4c0d28ab621");
        const Status status = generateRsa(record, seed.data(), 16, 0, nullptr, false);
        EXPECT_EQ(bnPrimeTable(nullptr), nullptr);
        return status;
    });
    const auto selfTest = [&](TestHeap&) { return failed(rsaSelfTest(static_cast<cPrivateRSA&>(*secret).record())); };
    const Failures raw = {{PKA_E_RAW_FAILED}}, coded = {{PKA_E_FAILED}}, verifying = {{PKA_E_OBJECT}, {PKA_E_FAILED}},
                   reading = {{PKA_E_IMPORT}}, generation = {{PKA_E_MEMORY}, {PKA_E_MEMORY, PKA_E_KEY}};
    // The record and its numbers; then the reading; and 2 again in the completion.
    const Failures secretImport = first(17, PKA_E_MEMORY, {PKA_E_KEY, BN_E_MEMORY}),
                   openImport = first(5, PKA_E_MEMORY, {PKA_E_KEY});
    const std::uint32_t openNumbers = 2, secretNumbers = 8; // blocks that come back as they are, as an object does
    runAll(
        {
            {"importRsaPrivateBlob", imports<RsaPrivateOwner>(importRsaPrivateBlob, blob), secretImport, secretNumbers},
            {"importRsaPublic", imports<RsaPublicOwner>(importRsaPublic, openBlob), openImport, openNumbers},
            {"newPrivateRsa", object(newPrivateRsa, blob), {{-1}}, 1 + secretNumbers},
            {"newPublicRsa", object(newPublicRsa, openBlob), {{-1}}, 1 + openNumbers},
            {"newPrivateRsaFromDer", fromElement(newPrivateRsaFromDer, sequence), reading, 1 + secretNumbers},
            {"newPublicRsaFromDer", fromElement(newPublicRsaFromDer, openSequence), reading, 1 + openNumbers},
            {"RSA makePublic", repeated([&] { return makePublic(*secret); }), {{PKA_E_OBJECT}}, 1 + openNumbers},
            {"RSA verifyPrefixed", verifies(verifyPrefixed, open, number), verifying},
            {"RSA verifyDer", verifies(verifyDer, open, der), verifying},
            {"RSA encryptPrefixed", slot(open, &cPKA::encryptPrefixed, block), raw},
            {"RSA rawToDer, public", slot(open, &cPKA::rawToDer, block), coded},
            {"RSA rawToDer, private", slot(secret, &cPKA::rawToDer, block), coded},
            {"RSA publicFromPrefixed", slot(open, &cPKA::publicFromPrefixed, number), raw},
            {"RSA publicFromDer", slot(open, &cPKA::publicFromDer, der), coded},
            {"RSA privateFromPrefixed", slot(secret, &cPKA::privateFromPrefixed, number), raw},
            {"RSA privateFromDer", slot(secret, &cPKA::privateFromDer, der), coded},
            // The padded block is the first allocation.
            {"RSA signPrefixed", slot(secret, &cPKA::signPrefixed, DIGEST), first(1, PKA_E_MEMORY, raw[0])},
            {"RSA signDer", slot(secret, &cPKA::signDer, DIGEST), first(1, PKA_E_MEMORY, coded[0])},
            {"rsaSelfTest", selfTest},
            // The self-test may lack memory.
            {"generateRsa, 128 bits", generate, generation, 1 + secretNumbers, false, 300},
        },
        {numbers.d, numbers.p, numbers.q, numbers.dp, numbers.dq, numbers.qinv, wrong.p, wrong.q,
         slice(DIGEST, 0, 20)});
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
    const auto generateDsaKey = makes<DsaOwner>([](DsaKey** made) {
        Bytes seed = join({Bytes(20, 0x3D), Bytes(28, 0x4E)}); // the domain's, which is told, and that of x
        return generateDsa(made, 512, seed.data(), sizeOf(seed), nullptr);
    });
    const auto generateElgamalKey = makes<ElgamalOwner>([](ElgamalKey** made) {
        Bytes seed(elgamalSeedLength(128), 0x3E);
        return generateElgamal(made, 128, seed.data(), sizeOf(seed), nullptr);
    });
    const Failures raw = {{PKA_E_RAW_FAILED}}, verifying = {{PKA_E_FAILED}}, generation = {{PKA_E_MEMORY}};
    ASSERT_EQ(bnBuildPrimeTable(512), STATUS_OK); // most of the work; the RSA key's generation builds its own
    runAll(
        {
            {"DSA verifyPrefixed", verifies(verifyPrefixed, openDsa, number), verifying},
            {"DSA verifyDer", verifies(verifyDer, openDsa, der), verifying},
            {"ElGamal verifyPrefixed", verifies(verifyPrefixed, openElgamal, pair), verifying},
            {"ElGamal verifyDer", verifies(verifyDer, openElgamal, pairDer), verifying},
            {"DSA signPrefixed", slot(secretDsa, &cPKA::signPrefixed, DIGEST), raw},
            {"DSA signDer", slot(secretDsa, &cPKA::signDer, DIGEST), raw},
            {"ElGamal encryptPrefixed", slot(openElgamal, &cPKA::encryptPrefixed, DIGEST), raw},
            {"ElGamal rawToDer", slot(openElgamal, &cPKA::rawToDer, DIGEST), raw},
            {"ElGamal signPrefixed", slot(secretElgamal, &cPKA::signPrefixed, DIGEST), raw},
            {"ElGamal privateFromPrefixed", slot(secretElgamal, &cPKA::privateFromPrefixed, pair), raw},
            // Plain: a digest that is not wiped, and the record.
            {"generateDsa, 512 bits", generateDsaKey, generation, 2 + 1, false, 300},
            {"generateElgamal, 128 bits", generateElgamalKey, generation, 1, false, 300},
        },
        {elgamal.x, Bytes(64, 0x21), Bytes(20, 0x4E), Bytes(20, 0x3E)});
    bnFreePrimeTable();

    dsa.y = elgamal.y = {}; // computed when it is asked for
    for (const FieldNumbers& numbers : {dsa, elgamal}) {
        FieldNumbers withY = numbers;
        withY.y = {2};
        const std::string name = numbers.isDsa() ? "DSA" : "ElGamal";
        const Bytes blob = numbers.privateBlob(), sequence = derElement(0x30, numbers.privateContent());
        const auto with = [&](auto use) {
            return [&, use](TestHeap& heap) {
                const Key key(numbers.secretFactory()(blob.data(), sizeOf(blob)));
                return key ? again(heap, [&] { return use(*key); }) : -1;
            };
        };
        const auto exportDer = [](cPKA& key) {
            Bytes output(1000);
            std::uint32_t length = 1000;
            return key.exportDer(output.data(), &length);
        };
        const DerFactory fromDer = numbers.isDsa() ? newPrivateDsaFromDer : newPrivateElgamalFromDer;
        runAll(
            {
                {name + " private key, blob", object(numbers.secretFactory(), blob), {{-1}}, 2},
                {name + " public key, blob", object(numbers.openFactory(), withY.blob()), {{-1}}, 2},
                {name + " private key, DER", fromElement(fromDer, sequence), {{PKA_E_IMPORT}}, 2},
                {name + " makePublic", with(makePublic), {{-1}, {-1, PKA_E_OBJECT}}, 4},
                {name + " exportDer", with(exportDer), {{-1}, {-1, PKA_E_HEADER}}, 2},
            },
            {numbers.x});
    }
}

// An object with an identifier that the watch can tell from other bytes: the destructor resets it.
struct MarkedKey : cPKA
{
    MarkedKey() { algorithm_ = 0x5E1DC0DE; }
    std::uint32_t behind = 0x5AFEC0DE;
};

TEST_F(Memory, NoBlockComesBackWithASecretInIt)
{
    TestHeap heap;
    {
        const MarkedKey object;
        heap.watch(&object.behind - 1, 8);
        EXPECT_EQ((&object.behind)[-1], object.algorithm()) << "the watch must see the identifier";
        delete new (std::nothrow) MarkedKey;
    }
    useKeys([&](const std::string&, const std::vector<Bytes>& secrets, const std::function<void()>& use) {
        for (const Bytes& secret : secrets) heap.watch(secret.data(), secret.size());
        use();
    });
}

// ---- readers and texts

std::string textOf(const cByteBuffer& buffer)
{
    return std::string(reinterpret_cast<const char*>(buffer.data()), buffer.length());
}

// On a buffer that holds a secret.
Run onBuffer(bool (*call)(cByteBuffer&))
{
    return on<cByteBuffer>(call, [](cByteBuffer& buffer) { return buffer.append("abcdefghi", 9); });
}

TEST_F(Memory, BuffersAndArmour)
{
    const std::string begin = "-----BEGIN X-----", end = "-----END X-----",
                      text = begin + "\r\nVersion: 1\r\n\r\nYWJjZGVmZ2hp\r\n" + end + "-\r\n";
    const Bytes secret = {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i'};
    const auto grow = [](cByteBuffer& buffer) {
        const bool done = buffer.reserve(1000) && buffer.grow(2000); // half as much again, or what is needed
        EXPECT_EQ(textOf(buffer).substr(0, 9), "abcdefghi");
        buffer.truncate(9);
        return done;
    };
    const auto allocate = [](cByteBuffer& buffer) {
        const bool done = buffer.allocate(10);
        EXPECT_EQ(textOf(buffer), std::string(done ? 10 : 0, '\0'));
        return done;
    };
    const auto decode = [](cByteBuffer& buffer) {
        const bool done = base64DecodeToBuffer(buffer, "YWI=");
        EXPECT_EQ(textOf(buffer), done ? "ab" : "");
        return done;
    };
    const auto armoured = [&](TestHeap& heap) {
        cByteBuffer decoded, header, trailing;
        for (cByteBuffer* buffer : {&decoded, &header, &trailing})
            if (!buffer->append("old", 3)) return -1;
        return again(heap, [&] {
            const bool done = decodeArmoured(decoded, text.data(), TEXT_ZERO_TERMINATED, begin.c_str(), end.c_str(),
                                             &header, &trailing);
            EXPECT_EQ(textOf(decoded) + "|" + textOf(header) + "|" + textOf(trailing),
                      done ? "abcdefghi|Version: 1\r|-" : "old|old|old");
            return failed(done);
        });
    };
    const auto encode = [&](TestHeap&) {
        cByteBuffer buffer;
        const bool done = encodeToBuffer(buffer, secret.data(), 9, nullptr, nullptr, nullptr, nullptr, 3);
        EXPECT_TRUE(textOf(buffer) == "YWJjZGVmZ2hp" || (!done && buffer.length() == 0)) << "the proof may fail";
        return failed(done);
    };
    runAll(
        {
            {"cByteBuffer append, grow, reserve", onBuffer(grow)},
            {"cByteBuffer allocate", onBuffer(allocate)},
            {"base64DecodeToBuffer", onBuffer(decode)},
            {"decodeArmoured", armoured},
            {"encodeToBuffer", encode},
        },
        {secret});
}

// A call on a certificate that was read with the same heap.
Run onCertificate(const Bytes& der, std::function<Status(CertificateInfo&)> call)
{
    return [=](TestHeap& heap) {
        CertificateInfo info;
        if (readCertificate(info, der.data(), sizeOf(der)) != STATUS_OK) return DER_E_MEMORY;
        return again(heap, [&] { return call(info); });
    };
}

TEST_F(Memory, ReadersOfKeysAndCertificates)
{
    const Bytes name = fromHex("301a310b3009060355040613025553310b3009060355040613024445"),
                integer = fromHex("0203010001"), cert = readVectorFile("certificates/real-godaddy-class2.der"),
                leaf = readVectorFile("certificates/a-root.der");
    const auto readNames = [&](TestHeap& heap) {
        NameList list;
        return again(heap, [&] {
            const std::uint32_t held = heap.held();
            const Status status = readName(list, name.data(), sizeOf(name));
            EXPECT_EQ(heap.held(), held + (status ? 0 : 6)) << "node, identifier and value of each, or no list";
            return status;
        });
    };
    const auto readNumber = [&](TestHeap&) {
        BigNum number;
        const std::uint8_t* next = integer.data();
        std::uint32_t left = sizeOf(integer);
        const Status status = readBigNum(number, &next, &left);
        EXPECT_EQ(left, status ? sizeOf(integer) : 0);
        return status;
    };
    const auto readWhole = [&](TestHeap& heap) {
        CertificateInfo info;
        return again(heap, [&] {
            const Status status = readCertificate(info, cert.data(), sizeOf(cert));
            EXPECT_EQ(info.issuer.head != nullptr, status == STATUS_OK) << "a failed record is empty";
            return status;
        });
    };
    const auto readExtensions = [](CertificateInfo& info) {
        std::uint8_t isCa;
        std::int32_t pathLength;
        const std::uint8_t* id;
        std::uint32_t length;
        Status status = readBasicConstraints(info, &isCa, &pathLength);
        if (status == STATUS_OK) status = readSubjectKeyId(info, &id, &length);
        if (status == STATUS_OK)
            status = readAuthorityKeyId(info, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
        return status == DER_E_NOT_FOUND ? STATUS_OK : status;
    };
    const auto verify = [](CertificateInfo& info) {
        std::int32_t result = -1;
        const Status status = verifyCertificateSignature(info, 2, &result);
        EXPECT_EQ(result, status == STATUS_OK);
        return status;
    };
    const Failures memory = {{DER_E_MEMORY}};
    // As the reading, the key, the digest and the verification say it.
    const Failures verifying = {{DER_E_MEMORY}, {DER_E_MEMORY, DER_E_MALFORMED, PKA_E_OBJECT, PKA_E_FAILED}};
    // Extensions are read once for nothing, so that a failure may be survived.
    runAll({
        {"readName", readNames, memory, 6},
        {"readBigNum", readNumber, {{BN_E_MEMORY}}},
        {"readCertificate", readWhole, memory, 100, true},
        {"findExtension and its readers", onCertificate(leaf, readExtensions), memory, 100, true},
        {"verifyCertificateSignature", onCertificate(cert, verify), verifying, 100, true},
    });

    // The text of each key's information, read, and the information written by a key that holds the same.
    const Key rsa = rsaKey("rsa512").secret(), dsa = dsaNumbers("dsa512-160").secret(),
              elgamal = elgamalNumbers().secret();
    for (const auto& [file, key, plain] :
         {std::tuple("rsa512", &rsa, 3u), {"dsa512-160", &dsa, 2u}, {"dh-x942-1024", &elgamal, 2u}}) {
        const Bytes text = join({readVectorFile(std::string("keys/") + file + ".pub.pem"), {0}});
        cByteBuffer info;
        ASSERT_TRUE(decodeArmoured(info, reinterpret_cast<const char*>(text.data()), sizeOf(text),
                                   "-----BEGIN PUBLIC KEY-----", "-----END "));
        const auto read = makes<Key>([&](cPKA** made) {
            Status status = -1;
            *made = readPemPublicKey(reinterpret_cast<const char*>(text.data()), &status);
            return status;
        });
        const auto readRsa = makes<RsaPublicOwner>([&](RsaPublicKey** made) {
            SubjectPublicKeyInfo record;
            const Status status = readSubjectPublicKeyInfo(record, info.data(), info.length());
            return status == STATUS_OK ? readRsaPublicKey(made, record) : status;
        });
        const auto exportInfo = writes(2000, [&](std::uint8_t* output, std::uint32_t* length) {
            return exportSubjectPublicKeyInfo(**key, output, length);
        });
        const std::string of = std::string(", ") + file;
        if (key == &rsa)
            runWithoutMemory({"readRsaPublicKey", readRsa, first(1, DER_E_MEMORY, {PKA_E_MEMORY, PKA_E_KEY}), 3});
        runAll({{"readPemPublicKey" + of, read, first(1, TEXT_E_MALFORMED, {DER_E_MEMORY, DER_E_MALFORMED}), 8},
                {"exportSubjectPublicKeyInfo" + of, exportInfo, {{PKA_E_OBJECT}}, plain}});
    }
}

// The flat surface answers a lack of memory deep inside with what it says of the input.
TEST_F(Memory, FlatSurface)
{
    const Bytes cert = readVectorFile("certificates/real-godaddy-class2.pem"),
                leaf = readVectorFile("certificates/a-leaf.pem"), issuer = readVectorFile("certificates/a-inter.pem"),
                key = derElement(0x30, rsaKey("rsa512").privateContent()), open = readVectorFile("keys/rsa512.pub.pem");
    Bytes signature(64), forged = readVectorFile("certificates/real-godaddy-class2.der");
    forged.back() ^= 1;
    const auto sign = [&](std::uint8_t* output, std::uint32_t* size) {
        return tb_rsa_sign(key.data(), sizeOf(key), 8, "text", 4, output, size);
    };
    std::uint32_t size = 64;
    ASSERT_EQ(sign(signature.data(), &size), TB_OK);
    const auto digest = [](std::uint8_t* output, std::uint32_t* length) {
        return tb_digest(8, "text", 4, output, length);
    };
    using HashOwner = std::unique_ptr<tb_hash, decltype([](tb_hash* hash) { tb_hash_close(hash); })>;
    using CipherOwner = std::unique_ptr<tb_cipher, decltype([](tb_cipher* cipher) { tb_cipher_close(cipher); })>;
    const auto encrypt = [](TestHeap& heap) {
        tb_cipher* made = nullptr;
        const tb_status status = tb_cipher_open(9, TB_CFB, Bytes(32, 7).data(), 32, &made);
        const CipherOwner cipher(made);
        EXPECT_EQ(cipher != nullptr, status == TB_OK);
        std::uint8_t bytes[40] = {};
        return cipher ? again(heap, [&] { return tb_cipher_encrypt(made, nullptr, bytes, bytes, 40); }) : status;
    };
    const auto check = [](const Bytes& certificate, const Bytes& by, std::int64_t time) {
        return tb_certificate_check(certificate.data(), sizeOf(certificate), by.empty() ? nullptr : by.data(),
                                    sizeOf(by), time);
    };
    const auto refuse = [&](TestHeap&) {
        const tb_status status = check(forged, {}, 1'500'000'000);
        return status == TB_E_SIGNATURE ? TB_OK : status == TB_OK ? -1 : status;
    };
    const auto verify = [&](TestHeap&) {
        return tb_rsa_verify(open.data(), sizeOf(open), 8, "text", 4, signature.data(), 64);
    };
    const std::vector<Status> deep = {TB_E_MEMORY, TB_E_KEY, TB_E_SIGNATURE};
    const Failures checking = {{TB_E_CERTIFICATE}, deep}, refusing = {{TB_E_MEMORY, TB_E_KEY, TB_OK}},
                   checkingBoth = {{TB_E_CERTIFICATE},
                                   {TB_E_MEMORY, TB_E_CERTIFICATE, TB_E_ISSUER, TB_E_KEY, TB_E_SIGNATURE}};
    const auto alone = [&](TestHeap&) { return check(cert, {}, 1'500'000'000); };
    const auto byIssuer = [&](TestHeap&) { return check(leaf, issuer, 1'748'736'000); };
    runAll({
        {"tb_digest", writes(64, digest), {{TB_E_MEMORY}}, 1},
        {"tb_hash_open", makes<HashOwner>([](tb_hash** hash) { return tb_hash_open(8, hash); }), {{TB_E_MEMORY}}, 1},
        {"tb_cipher_open, tb_cipher_encrypt", encrypt, first(2, TB_E_KEY, {TB_E_MEMORY}), 1},
        {"tb_certificate_check", alone, checking, 100, true},
        {"tb_certificate_check with an issuer", byIssuer, checkingBoth, 200, true},
        {"tb_certificate_check, refused", refuse, refusing, 100, true},
        {"tb_rsa_sign", writes(64, sign), {{TB_E_KEY}, {TB_E_MEMORY, TB_E_KEY, TB_E_FAILED}}, 10},
        {"tb_rsa_verify", verify, {{TB_E_KEY}, deep}, 6},
    });
}

} // namespace
} // namespace toolbelt::test
