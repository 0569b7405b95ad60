// What every digest of the registry keeps to, whatever its algorithm, and the length counters of those that have one.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <random>

#include "crypto/base/bytes.h"
#include "crypto/hash/md5.h"
#include "crypto/hash/ripemd160.h"
#include "crypto/hash/sha1.h"
#include "crypto/hash/sha256.h"
#include "crypto/hash/sha512.h"
#include "crypto/hash/whirlpool.h"
#include "tests/hash/hash_support.h"
#include "tests/support/tiers.h"

namespace toolbelt {
namespace {

using test::Bytes;

class HashContract : public testing::TestWithParam<HashRow>
{
protected:
    test::Hash hash = test::makeHash(GetParam().id);

    Bytes oneShot(const std::uint8_t* data, std::size_t size)
    {
        Bytes output(hash->getSize());
        EXPECT_EQ(hashBuffer(hash.get(), output.data(), data, static_cast<std::uint32_t>(size)), 0);
        return output;
    }
};

// The rows but the last, Keccak-512, which pads every update by design and is tested by itself.
class HashSplit : public HashContract
{};

std::string nameOf(const testing::TestParamInfo<HashRow>& row)
{
    return "Id" + std::to_string(row.param.id);
}
INSTANTIATE_TEST_SUITE_P(Rows, HashContract, testing::ValuesIn(hashRows), nameOf);
INSTANTIATE_TEST_SUITE_P(Rows, HashSplit, testing::ValuesIn(hashRows, hashRows + HASH_ROW_COUNT - 1), nameOf);

TEST_P(HashSplit, TheSplitOfTheMessageDoesNotMatter)
{
    // Past two blocks of 128 bytes, so that every border of every block and of every padding is crossed.
    const Bytes message = test::pattern(300);
    for (std::size_t size = 0; size <= message.size(); ++size) {
        const Bytes expected = oneShot(message.data(), size);
        ASSERT_EQ(hash->reset(), 0);
        for (std::size_t i = 0; i < size; ++i) ASSERT_EQ(hash->update(&message[i], 1), 0);
        ASSERT_EQ(test::finish(*hash), expected) << "byte by byte, " << size;
        const std::size_t split = size * 13 % (size + 1);
        ASSERT_EQ(hash->reset(), 0);
        test::updateExactly(*hash, message.data(), split);
        ASSERT_EQ(hash->update(nullptr, 0) | hash->update(message.data(), 0), 0);
        test::updateExactly(*hash, message.data() + split, size - split);
        ASSERT_EQ(test::finish(*hash), expected) << split << " of " << size;
    }
}

TEST_P(HashContract, HistoryAndOtherObjectsDoNotMatter)
{
    const Bytes message = test::pattern(1000);
    const Bytes expected = oneShot(message.data(), message.size());
    EXPECT_EQ(expected.size(), GetParam().size);

    // A new object is ready without a reset, and knows nothing of another that is in use.
    const test::Hash other = test::makeHash(GetParam().id);
    ASSERT_EQ(hash->reset(), 0);
    ASSERT_EQ(hash->update(message.data(), 100), 0);
    test::updateExactly(*other, message.data(), message.size());
    EXPECT_EQ(test::finish(*other), expected);

    // A reset forgets a message that was begun, and one that was ended.
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(hash->reset(), 0);
        test::updateExactly(*hash, message.data(), message.size());
        EXPECT_EQ(test::finish(*hash), expected);
    }
}

// Input and output of any alignment; nothing is written around the digest.
TEST_P(HashContract, EveryTierGivesTheSameAtAnyAlignment)
{
    std::mt19937 random(7);
    Bytes message(5007);
    for (std::uint8_t& byte : message) byte = static_cast<std::uint8_t>(random());
    const auto framed = [&](std::uint32_t features, std::size_t offset) {
        const test::FeatureLimit limit(features);
        hash = test::makeHash(GetParam().id);
        Bytes output(GetParam().size + 16, 0xEE);
        EXPECT_EQ(hashBuffer(hash.get(), output.data() + offset, message.data() + offset, 5000), 0);
        return output;
    };
    for (std::size_t offset = 0; offset < 8; ++offset) {
        const Bytes aligned(message.begin() + static_cast<std::ptrdiff_t>(offset), message.end());
        Bytes expected(GetParam().size + 16, 0xEE);
        const Bytes digest = oneShot(aligned.data(), 5000);
        std::copy(digest.begin(), digest.end(), expected.begin() + static_cast<std::ptrdiff_t>(offset));
        for (const std::uint32_t features : test::featureSteps())
            EXPECT_EQ(framed(features, offset), expected) << offset;
    }
}

// Ends a message of `before` bytes (not hashed: the state stays at its start) and 100 bytes more, once through the
// update and final of the member, once by its compression of blocks that are padded here.
template <std::uint32_t BLOCK, std::uint32_t LENGTH_SIZE, typename Context, typename State>
void checkLength(std::uint64_t before, std::uint32_t unit, bool bigEndian, Status (*reset)(Context*),
                 Status (*update)(Context*, const std::uint8_t*, std::uint32_t),
                 Status (*final)(Context*, std::uint8_t*), Compress<State>* compress)
{
    const Bytes message = test::pattern(100);
    Context context;
    ASSERT_EQ(reset(&context), 0);
    State state = context.state;
    context.counter = before * unit;
    if constexpr (requires { context.compress; }) context.compress = compress;
    ASSERT_EQ(update(&context, message.data(), 37), 0);
    ASSERT_EQ(update(&context, message.data() + 37, 63), 0);
    std::uint8_t output[64];
    ASSERT_EQ(final(&context, output), 0);

    std::uint8_t padded[256 / BLOCK * BLOCK] = {};
    const std::size_t size = (100 + 1 + LENGTH_SIZE + BLOCK - 1) / BLOCK * BLOCK;
    std::copy(message.begin(), message.end(), padded);
    padded[100] = 0x80;
    std::uint8_t* const length = padded + size - LENGTH_SIZE;
    const std::uint64_t bytes = before + 100;
    if (bigEndian) {
        store64be(padded + size - 8, bytes << 3);
        if (LENGTH_SIZE == 16) length[7] = static_cast<std::uint8_t>(bytes >> 61);
    } else {
        store64le(length, bytes << 3);
    }
    compress(state, padded, static_cast<std::uint32_t>(size / BLOCK));
    for (std::size_t i = 0; i < state.size(); ++i) {
        typename State::value_type word;
        std::memcpy(&word, output + i * sizeof word, sizeof word);
        if (bigEndian)
            word = sizeof word == 8 ? static_cast<decltype(word)>(load64be(output + i * 8)) : load32be(output + i * 4);
        EXPECT_EQ(word, state[i]) << "word " << i << " behind " << before << " bytes";
    }
}

// Messages too long to hash here: the carry from the low word of the counter into the high one, of bits and of bytes.
TEST(HashLength, CountsAreSixtyFourBitsWide)
{
    for (const std::uint64_t before : {0x1FFFFFC0ull, 0xFFFFFF80ull, 0x123456789000ull}) {
        checkLength<64, 8>(before, 8, false, md5Reset, md5Update, md5Final, md5Compress);
        checkLength<64, 8>(before, 1, true, sha1Reset, sha1Update, sha1Final, sha1Compress);
        checkLength<64, 8>(before, 1, false, sha1Reset, ripemd160Update, ripemd160Final, ripemd160Compress);
        checkLength<64, 8>(before, 1, true, sha256Reset, sha256Update, sha256Final, sha256Compress);
        checkLength<128, 16>(before, 1, true, sha512Reset, sha512Update, sha512Final, sha512Compress);
        checkLength<64, 32>(before, 8, true, whirlpoolReset, whirlpoolUpdate, whirlpoolFinal, whirlpoolCompress);
    }
    checkLength<128, 16>(0x3FFFFFFFFFFFFF80, 1, true, sha512Reset, sha512Update, sha512Final, sha512Compress);
}

// One update of more than 2^29 bytes has more than 2^32 bits. The blocks are counted here, not hashed, so that the
// memory behind them is never touched.
TEST(HashLength, OneHugeUpdateIsCountedAndCutRight)
{
    using State = std::array<std::uint32_t, 1>;
    constexpr std::uint32_t SIZE = 0x20000005;
    const std::unique_ptr<void, void (*)(void*)> memory(std::calloc(SIZE, 1), std::free);
    ASSERT_NE(memory, nullptr) << "this machine has no 512 MiB in one piece for the test";
    const auto* data = static_cast<const std::uint8_t*>(memory.get());
    Compress<State>* const countBlocks = [](State& state, const std::uint8_t*, std::uint32_t count) {
        state[0] += count;
    };

    CountedBuffer<State, 64, CountUnit::BITS> bits;
    start(bits, State{});
    countAndAbsorb(bits, data, SIZE, countBlocks);
    EXPECT_TRUE(bits.counter == 0x100000028u && bits.state[0] == 0x800000u && bits.used == 5u);
    CountedBuffer<State, 128, CountUnit::BYTES> bytes;
    start(bytes, State{});
    for (int i = 0; i < 9; ++i) countAndAbsorb(bytes, data, SIZE, countBlocks);
    EXPECT_TRUE(bytes.counter == 0x12000002Du && bytes.state[0] == 9u * 0x400000u && bytes.used == 45u);
}

} // namespace
} // namespace toolbelt
