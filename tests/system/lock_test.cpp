// The lock that remembers its holder, and the process-wide objects built under one.
#include <windows.h>

#include <atomic>
#include <thread>

#include "Includes/system/advapi_dll.h"
#include "Includes/system/shell32_dll.h"
#include "Includes/system/static_object.h"
#include "tests/system/replaced.h"
#include "tests/system/support.h"

extern "C" {
extern void* initialiseSlot __asm__("__imp__InitializeCriticalSection@4");
}

namespace toolbelt::test {
namespace {

int yields;
int yieldsUntilReady;
cTracedLock* awaited;

void countYield() noexcept
{
    if (++yields == yieldsUntilReady) awaited->readiness = LOCK_READY;
}

std::uint32_t readinessThen;

void WINAPI lookAtReadiness(CRITICAL_SECTION* section)
{
    const auto* const lock = reinterpret_cast<const cTracedLock*>(section); // the section is its first field
    readinessThen = lock->enabled == 1 && lock->holderThread == 0xFFFFFFFF ? lock->readiness.load() : 0;
    InitializeCriticalSectionAndSpinCount(section, 0);
}

TEST(TracedLock, TellsItsHolderAndForgetsAllButTheThread)
{
    const Replaced watched(&initialiseSlot, lookAtReadiness);
    cTracedLock lock;
    EXPECT_EQ(readinessThen, 0xC7DDu);
    EXPECT_EQ(lock.readiness, 0xC7AAu);
    EXPECT_EQ(lock.holderThread, 0xFFFFFFFFu);
    EXPECT_EQ(lock.enabled, 1);
    EXPECT_EQ(lock.closing, 0);
    {
        const TracedEntry outer(lock, L"outer");
        {
            const TracedEntry inner(lock, L"inner");
            EXPECT_EQ(lock.depth, 2);
            EXPECT_EQ(lock.holderLine, static_cast<std::uint32_t>(__LINE__ - 2));
        }
        EXPECT_STREQ(lock.holderOperation, L"inner");
        EXPECT_EQ(lock.depth, 1);
    }
    EXPECT_EQ(lock.holderOperation, nullptr);
    EXPECT_EQ(lock.holderLine, 0u);
    EXPECT_EQ(lock.depth, 0);
    EXPECT_EQ(lock.holderThread, GetCurrentThreadId());
}

TEST(TracedLock, WaitsForReadinessAHundredAndTwoYieldsAtMost)
{
    const struct
    {
        std::uint8_t closing;
        int ready, expected;
    } cases[] = {{0, 0, 1 + 101}, {1, 0, 1}, {0, 1, 1}, {0, 60, 60}};
    for (const auto& each : cases) {
        cTracedLock lock;
        awaited = &lock;
        lock.readiness = LOCK_BUILDING;
        lock.closing = each.closing;
        yields = 0;
        yieldsUntilReady = each.ready;
        setYield(countYield);
        {
            const TracedEntry entry(lock, L"late");
            EXPECT_EQ(lock.depth, 1); // entered whatever came of the wait
        }
        setYield(nullptr);
        EXPECT_EQ(yields, each.expected);
    }
}

struct Slow
{
    static inline std::atomic<int> built = 0;
    std::atomic<bool> complete = false;
    Slow()
    {
        ++built;
        const cTracedLock& lock = cStaticObjectCS<Slow>::lock();
        EXPECT_STREQ(lock.holderOperation, L"cStaticObjectCS::getStatic");
        EXPECT_EQ(lock.holderThread, GetCurrentThreadId());
        Sleep(50);
        complete = true;
    }
};

TEST(StaticObject, FirstUseFromManyThreadsBuildsOneCompleteObject)
{
    std::atomic<bool> go = false;
    std::atomic<int> right = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 16; ++i)
        threads.emplace_back([&] {
            while (!go) std::this_thread::yield();
            CAdvAPIDll& security = CAdvAPIDll::getStatic();
            const bool bound = security.bind();
            Slow& slow = cStaticObjectCS<Slow>::getStatic();
            right += bound && slow.complete && &security == &CAdvAPIDll::getStatic();
        });
    go = true;
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(right, 16);
    EXPECT_EQ(Slow::built, 1);

    const TracedEntry outer(cStaticObjectCS<CAdvAPIDll>::lock(), L"test");
    CAdvAPIDll::getStatic();
    EXPECT_STREQ(cStaticObjectCS<CAdvAPIDll>::lock().holderOperation, L"CAdvAPIDll::getStatic");
    const TracedEntry other(cStaticObjectCS<cShell32Dll>::lock(), L"test");
    cShell32Dll::getStatic();
    EXPECT_STREQ(cStaticObjectCS<cShell32Dll>::lock().holderOperation, L"cShell32Dll::getStatic");
}

// The destructors print small letters; S was complete before R, which asked for it while it was built. The tables,
// built before Q and before R, start the crafted library (I), open (O) and close (C) a service manager and unload (U).
TEST(StaticObject, AreDestroyedInReverseOrderBeforeTheirLocks)
{
    const std::wstring told = temporaryFile(L"order");
    const std::wstring program = programFolder() / L"order.exe";
    EXPECT_EQ(_wsystem((L"\"\"" + program + L"\" > \"" + told + L"\"\"").c_str()), 0);
    EXPECT_EQ(readFile(told), "PIOQIRS.rsUqCUp");
    DeleteFileW(told.c_str());
}

} // namespace
} // namespace toolbelt::test
