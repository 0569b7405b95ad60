// The loop over operations that run out of memory. Each fails its first, its second, ... allocation, and then all from
// there on, until it needs no more than it is given. The heap of tests/support/test_heap.h finds what is left over,
// released twice, or not wiped; an operation checks its own outputs.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "crypto/base/status.h"
#include "tests/support/test_heap.h"

namespace toolbelt::test {

using Run = std::function<Status(TestHeap&)>;
using Failures = std::vector<std::vector<Status>>;
using Secrets = std::vector<std::vector<std::uint8_t>>;

struct Operation
{
    std::string name;
    // A status or another number, 0 for success. It is called once more, with memory, after many failures, and makes
    // anew what it changes, so that it shows what the library keeps.
    Run run;
    // What it answers without memory: in place n for its n-th allocation, the last one for all behind it.
    Failures failures = {{-1}};
    // Blocks that it may release as they are, since they never held a secret.
    std::uint32_t plain = 0;
    // One failure may be survived: the operation tries something smaller, or counts a candidate as unfit.
    bool survives = false;
    // Long operations: from this allocation on, not each one fails.
    std::uint32_t each = 10000;
};

// What was injected so far, told when the program ends.
struct Injected : testing::Environment
{
    static inline std::uint32_t operations = 0, failures = 0;
    void TearDown() override { std::printf("%u operations, %u injected failures\n", operations, failures); }
};
inline testing::Environment* const injected = testing::AddGlobalTestEnvironment(new Injected);

// The call, and, when it failed for memory, the same again, with memory, on the same objects.
template <typename Call>
Status again(TestHeap& heap, Call call)
{
    const Status status = call();
    if (status != STATUS_OK && heap.failed()) {
        heap.recover();
        EXPECT_EQ(call(), STATUS_OK) << "the object does not work any more";
    }
    return status;
}

// An operation that is such a call.
template <typename Call>
Run repeated(Call call)
{
    return [call](TestHeap& heap) { return again(heap, call); };
}

// Of operations that answer yes or no.
inline Status failed(bool done)
{
    return done ? STATUS_OK : -1;
}

// A call on an object that was made, and perhaps prepared, with the same memory.
template <typename Object>
Run on(std::type_identity_t<std::function<bool(Object&)>> call, bool (*prepare)(Object&) = nullptr)
{
    return [=](TestHeap& heap) {
        Object object;
        if (prepare && !prepare(object)) return Status{-1};
        return again(heap, [&] { return failed(call(object)); });
    };
}

inline void runWithoutMemory(const Operation& operation, const Secrets& secrets = {})
{
    SCOPED_TRACE(operation.name);
    const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
    const int noticed = test->result()->total_part_count();
    std::uint32_t failures = 0;
    for (const bool onwards : {false, true})
        for (std::uint32_t n = 1;; n += n < operation.each ? 1 : 1 + n / 4) {
            TestHeap heap;
            for (const auto& secret : secrets) heap.watch(secret.data(), secret.size());
            heap.failAt(n, onwards);
            const Status status = operation.run(heap);
            EXPECT_LE(heap.plainReleased(), operation.plain * (heap.failed() ? 2 : 1)); // what failed was done again
            if (!heap.failed()) {
                EXPECT_EQ(status, STATUS_OK);
                break;
            }
            ++failures;
            const auto& allowed = operation.failures[std::min<std::size_t>(n, operation.failures.size()) - 1];
            EXPECT_TRUE(std::count(allowed.begin(), allowed.end(), status) ||
                        (status == STATUS_OK && operation.survives && !onwards))
                << status << " at allocation " << n << (onwards ? " and all behind it" : "");
            heap.recover();
            if (n <= 4 || n % 32 == 0) {
                EXPECT_EQ(operation.run(heap), STATUS_OK) << "the next call";
            }
            if (test->result()->total_part_count() != noticed) break; // one message will do
        }
    EXPECT_GT(failures, 0u);
    std::printf("    %-36s %6u failures\n", operation.name.c_str(), failures);
    ++Injected::operations;
    Injected::failures += failures;
}

inline void runAll(const std::vector<Operation>& operations, const Secrets& secrets = {})
{
    for (const Operation& operation : operations) runWithoutMemory(operation, secrets);
}

} // namespace toolbelt::test
