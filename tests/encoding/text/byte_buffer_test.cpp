#include "crypto/encoding/byte_buffer.h"

#include <string_view>

#include <gtest/gtest.h>

#include "tests/support/test_heap.h"

namespace toolbelt {
namespace {

using namespace std::string_view_literals;

std::string_view contents(const cByteBuffer& buffer)
{
    return {reinterpret_cast<const char*>(buffer.data()), buffer.length()};
}

TEST(ByteBuffer, KeepsWhatIsInUseAndNeverShowsOldBytes)
{
    test::TestHeap heap; // its blocks start full of 0xA5, and it checks that released ones were wiped whole
    cByteBuffer buffer, other;
    ASSERT_TRUE(buffer.append("secret", 6) && buffer.grow(2) && buffer.reserve(1000));
    EXPECT_EQ(contents(buffer), "secret\0\0"sv);
    buffer.truncate(3);
    buffer.truncate(9); // not fewer: nothing to do
    EXPECT_EQ(buffer.data()[3], 0) << "bytes given up are wiped at once";
    ASSERT_TRUE(buffer.append("ond", 3));
    other.swap(buffer);
    EXPECT_EQ(buffer.data(), nullptr);
    EXPECT_EQ(contents(other), "second"sv);

    for (int i = 0; i < 10000; ++i) ASSERT_TRUE(other.append("x", 1));
    EXPECT_LT(heap.allocations(), 15u) << "growth is amortised";
    const std::uint32_t before = heap.allocations();
    EXPECT_FALSE(other.grow(0xFFFFFFFF - other.length() + 1));
    EXPECT_EQ(heap.allocations(), before) << "a length that wraps must not reach the heap";
    EXPECT_EQ(other.length(), 10006u);
    ASSERT_TRUE(other.allocate(4));
    EXPECT_EQ(contents(other), "\0\0\0\0"sv);
    EXPECT_TRUE(other.capacity() == 4 && other.allocate(0) && other.data() == nullptr);
    EXPECT_EQ(heap.globalBlocks(), heap.allocations()) << "every block is the system's global heap's";
}

} // namespace
} // namespace toolbelt
