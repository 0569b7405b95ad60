// What operations leave on the stack: it is painted, an operation runs, and what it used is searched for eight bytes in
// a row of its secrets. Arrays and local objects are wiped by the library; registers that the compiler puts by are in
// its hands, so this holds for the compiler and the flags at hand. Not for sanitizers, which move what is on the stack.
#include <unordered_set>

#include "crypto/bignum/modular.h"
#include "crypto/encoding/base64.h"
#include "crypto/hash/keccak512.h"
#include "crypto/hash/sha256.h"
#include "crypto/hash/sha512.h"
#include "crypto/hash/skein512.h"
#include "crypto/hash/whirlpool.h"
#include "crypto/pka/rsa_generate.h"
#include "tests/cipher/cipher_support.h"
#include "tests/robust/key_uses.h"
#include "tests/support/one_worker.h"
#include "tests/support/tiers.h"

namespace toolbelt::test {
namespace {

constexpr std::size_t DEPTH = 96 * 1024;
std::unordered_set<std::uint64_t> windows;

std::uint64_t window(const std::uint8_t* bytes, bool backwards, bool words)
{
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < 8; ++i) value = value << 8 | bytes[words ? i ^ 3 : backwards ? 7 - i : i];
    return value;
}

// Each eight bytes as they are, in the other order, and as two words of it.
void watch(const Bytes& secret)
{
    for (std::size_t at = 0; at + 8 <= secret.size(); ++at)
        for (const auto& [backwards, words] : {std::pair{false, false}, {true, false}, {false, true}})
            windows.insert(window(&secret[at], backwards, words));
    windows.erase(0);
}

// Both frames lie where those of the operation do.
[[gnu::noinline]] void paint()
{
    volatile std::uint8_t area[DEPTH];
    for (std::size_t i = 0; i < DEPTH; ++i) area[i] = 0xB5;
    __asm__ __volatile__("" : : "r"(&area) : "memory");
}
struct Left
{
    std::uint32_t pieces = 0, inARow = 0; // of eight bytes; such that overlap, as those of an array do
};
[[gnu::noinline]] Left search()
{
    volatile std::uint8_t area[DEPTH];
    __asm__ __volatile__("" : : "r"(&area) : "memory"); // its contents are what is there
    std::uint64_t value = 0;
    std::uint32_t row = 0;
    Left left;
    for (std::size_t i = 0; i < DEPTH; ++i) {
        value = value << 8 | area[i];
        row = windows.contains(value) ? row + 1 : 0;
        left.pieces += row != 0;
        left.inARow = std::max(left.inARow, row);
    }
    return left;
}

// Somewhat deeper than the search, whose own variables lie above the area.
template <typename Run>
[[gnu::noinline]] void call(Run run)
{
    volatile std::uint8_t above[256];
    above[0] = 1;
    run();
    __asm__ __volatile__("" : : "r"(&above) : "memory");
}

template <typename Run>
Left leftBy(const std::vector<Bytes>& secrets, Run run)
{
    windows.clear();
    for (const Bytes& secret : secrets) watch(secret);
    paint();
    call(run);
    return search();
}

std::uint32_t checked = 0;
void expectNothing(const std::string& name, Left left)
{
    EXPECT_EQ(left.pieces, 0u) << name << " leaves pieces of its secrets on the stack";
    ++checked;
}
// Long arithmetic puts registers by where they run out: a limb, or a vector of 32 bytes. Never an array of them.
void expectRegisters(const std::string& name, Left left)
{
    EXPECT_TRUE(left.inARow <= 25 && left.pieces <= 50)
        << name << " leaves " << left.pieces << " pieces, " << left.inARow << " in a row";
    if (left.pieces) std::printf("    %-36s %u pieces left, %u in a row\n", name.c_str(), left.pieces, left.inARow);
    ++checked;
}

class Stack : public OneWorker
{
protected:
    void TearDown() override { cpu::limitFeatures(~0u); }
};

TEST_F(Stack, TheProbeSees)
{
    const Bytes secret = randomBytes(32, 1);
    EXPECT_GE(leftBy({secret},
                     [&] {
                         volatile std::uint8_t copy[32];
                         for (std::size_t i = 0; i < 32; ++i) copy[i] = secret[i];
                         __asm__ __volatile__("" : : "r"(&copy) : "memory");
                     })
                  .inARow,
              25u);
}

TEST_F(Stack, CiphersAndDigests)
{
    const Bytes plain = randomBytes(1024, 2), iv = randomBytes(16, 3);
    for (const std::uint32_t features : {0u, ~0u}) {
        cpu::limitFeatures(features);
        const std::string tier = features ? ", fastest" : ", portable";
        for (const CipherRow& row : cipherRows) {
            const Bytes key = randomBytes(row.keySize(nullptr), 4);
            const auto one = static_cast<std::int32_t>(row.blockSize());
            Bytes out(plain.size());
            const std::unique_ptr<cSymAlg> cipher(row.create(key.data(), sizeOf(key)));
            const auto expect = [&, name = "cipher " + std::to_string(row.id) + tier](const char* what, auto run) {
                expectNothing(name + ", " + what, leftBy({key, plain}, run));
            };
            expect("key", [&] { delete row.create(key.data(), sizeOf(key)); });
            for (const std::int32_t length : {one, 1024}) {
                expect("encryption", [&] { (void)cipher->encryptBlocks(plain.data(), out.data(), length); });
                expect("decryption", [&] { (void)cipher->decryptBlocks(out.data(), out.data(), length); });
            }
            for (const std::uint32_t mode : {SYM_MODE_CBC, SYM_MODE_CBC_WORDSWAP, SYM_MODE_CFB}) {
                cipher->setMode(mode);
                expect("chained encryption",
                       [&] { (void)cipher->modeEncrypt(cipher.get(), iv.data(), plain.data(), out.data(), 1024); });
                expect("chained decryption",
                       [&] { (void)cipher->modeDecrypt(cipher.get(), iv.data(), out.data(), out.data(), 1024); });
            }
        }
        for (const HashRow& row : hashRows) {
            std::uint8_t digest[64];
            const Left left = leftBy({plain}, [&] {
                cHashAlg* hash = nullptr;
                if (createHash(&hash, row.id) != CRYPT_OK) return;
                (void)hashBuffer(hash, digest, plain.data(), 1000);
                destroyHash(hash);
            });
            expectNothing("digest " + std::to_string(row.id) + tier, left);
        }
    }
}

// The chaining value before a block and behind it, as words in order and two by two the other way round.
template <typename Context, typename Base, typename State>
void expectNoState(const std::string& name, std::uint32_t blockSize, void (*choose)(Context*),
                   Status (*reset)(Context*), Status (*update)(Context*, const std::uint8_t*, std::uint32_t),
                   State Base::*state)
{
    const Bytes start = randomBytes(64, 11), block = randomBytes(blockSize, 12);
    Context context;
    choose(&context);
    const auto run = [&] { (void)update(&context, block.data(), blockSize); };
    const auto restart = [&] {
        (void)reset(&context);
        std::memcpy(&(context.*state), start.data(), std::min(sizeof(State), start.size()));
    };
    restart(), run();
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&(context.*state));
    const Bytes values = join({start, Bytes(bytes, bytes + std::min(sizeof(State), start.size()))});
    Bytes exchanged = values;
    for (std::size_t i = 0; i < values.size(); ++i) exchanged[i ^ 4] = values[i];
    restart();
    expectNothing(name, leftBy({values, exchanged}, run));
}

TEST_F(Stack, ChainingValues)
{
    for (const std::uint32_t features : featureSteps()) {
        cpu::limitFeatures(features);
        const std::string with = " with " + std::to_string(features);
        expectNoState("SHA-256" + with, 64, sha256Choose, sha256Reset, sha256Update, &Sha256Context::state);
        expectNoState("SHA-512" + with, 128, sha512Choose, sha512Reset, sha512Update, &Sha512Context::state);
        expectNoState("Whirlpool" + with, 64, whirlpoolChoose, whirlpoolReset, whirlpoolUpdate,
                      &WhirlpoolContext::state);
        expectNoState("Keccak-512" + with, 72, keccak512Choose, keccak512Reset, keccak512Update,
                      &Keccak512Context::lanes);
        // Two blocks, as the last one is held back.
        expectNoState("Skein-512" + with, 128, skein512Choose, skein512Reset, skein512Update, &Skein512Context::state);
    }
}

TEST_F(Stack, KeysAndTexts)
{
    const Bytes secret = randomBytes(600, 10);
    for (const std::uint32_t features : {0u, ~0u}) {
        cpu::limitFeatures(features);
        const std::string tier = features ? ", fastest" : ", portable";
        useKeys([&](const std::string& name, const std::vector<Bytes>& secrets, const std::function<void()>& use) {
            const Left left = leftBy(secrets, use);
            name.starts_with("RSA") ? expectRegisters(name + tier, left) : expectNothing(name + tier, left);
        });
        Bytes seed = join({randomBytes(64, 8), randomBytes(64, 9)}), made; // so long that an array shows
        seed[0] |= 0xC0;
        seed[64] |= 0xC0;
        // What is generated is known afterwards: the same seed again.
        for (const bool known : {false, true}) {
            const auto generate = [&] {
                Bytes copy = seed;
                RsaPrivateKey* record = nullptr;
                (void)generateRsa(&record, copy.data(), 128, 0, nullptr, false);
                if (!known)
                    for (const BigNum* number : {record->p, record->q, record->d})
                        made = join({made, bytesOf(*number)});
                freeRsaKey(record);
            };
            const Left left = leftBy({made}, generate);
            if (known) expectRegisters("RSA generation" + tier, left);
        }
        Bytes text(1200), output(600);
        std::uint32_t size = 1200, length = 600;
        expectNothing("base64Encode" + tier, leftBy({secret}, [&] {
                          (void)base64Encode(reinterpret_cast<char*>(text.data()), &size, secret.data(), 600);
                      }));
        expectNothing("base64Decode" + tier, leftBy({secret, slice(text, 0, 800)}, [&] {
                          (void)base64Decode(output.data(), &length, reinterpret_cast<char*>(text.data()), size);
                      }));
        EXPECT_EQ(output, secret);
    }
    std::printf("%u operations left no array on the stack\n", checked);
}

} // namespace
} // namespace toolbelt::test
