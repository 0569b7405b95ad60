#include "crypto/pka/pkcs1.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>

#include "crypto/base/runtime_rand.h"
#include "tests/pka/keys.h"

namespace toolbelt::test {
namespace {

TEST(Pkcs1, UnpadsWhatItPaddedAndRefusesWhatIsTooLong)
{
    Bytes block(16);
    ASSERT_EQ(pkcs1Pad(block.data(), 16, PKCS1_SIGNATURE, Bytes{1, 2, 3}.data(), 3), STATUS_OK);
    EXPECT_EQ(toHex(block), "0001ffffffffffffffffffff00010203");
    for (const Pkcs1Type type : {PKCS1_SIGNATURE, PKCS1_ENCRYPTION})
        for (const std::uint32_t k : {0u, 9u, 10u, 11u, 64u})
            for (std::uint32_t length = 0; length <= k; ++length) {
                const Bytes data(length, 0); // zeros are no separators
                const std::uint8_t* payload = nullptr;
                std::uint32_t payloadLength = 99;
                block.assign(k, 0xA5);
                const bool fits = length + 10 <= k;
                EXPECT_EQ(pkcs1Pad(block.data(), k, type, data.data(), length), fits ? 0 : 56);
                EXPECT_EQ(pkcs1Unpad(&payload, &payloadLength, block.data(), k, type), fits ? 0 : 39);
                EXPECT_EQ(payload, fits ? block.data() + k - length : nullptr);
                EXPECT_EQ(payloadLength, fits ? length : 99);
            }
}

// The random bytes are the runtime's, seeded from the clock and laid down from the end: found again by trying the few
// seeds that the moment allows.
TEST(Pkcs1, RandomPaddingIsTheSeededGeneratorsFromTheLastByteOn)
{
    const auto seconds = [] { return static_cast<std::uint32_t>(std::time(nullptr)); };
    const auto milliseconds = [] {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
    };
    Bytes block(2048); // long enough for bytes that were 0 and became 1
    const std::uint32_t second = seconds(), millisecond = milliseconds();
    ASSERT_EQ(pkcs1Pad(block.data(), 2048, PKCS1_ENCRYPTION, nullptr, 0), STATUS_OK);
    const std::uint32_t lastSecond = seconds(), lastMillisecond = milliseconds();
    bool found = false;
    for (std::uint32_t s = second; s <= lastSecond; ++s)
        for (std::uint32_t m = millisecond; m <= lastMillisecond; ++m) {
            runtimeSrand(s ^ m);
            Bytes expected = {0, 2, 0};
            for (int i = 0; i < 2045; ++i)
                expected.insert(expected.begin() + 2, static_cast<std::uint8_t>(std::max(1, runtimeRand() & 0xFF)));
            found = found || block == expected;
        }
    EXPECT_TRUE(found);
}

} // namespace
} // namespace toolbelt::test
