// CDll and CSysDll over the crafted library: statuses, calls, names in the lock, boxes, threads.
#include <windows.h>

#include <thread>

#include "Includes/system/sys_dll.h"
#include "tests/support/test_heap.h"
#include "tests/system/support.h"

namespace toolbelt::test {
namespace {

struct OpenDll : CDll
{
    using CDll::CDll;
    using CDll::record_;
};

CDll* watched;
const wchar_t* heldBy;
std::uint32_t statusThen;

// From within a function of the library: who holds the lock, and the status.
void noteHolder()
{
    heldBy = watched->record().lock.holderOperation;
    statusThen = watched->record().status;
}

int yields;

TEST(Dll, OperationsLeaveTheirStatusesAndTheirNamesInTheLock)
{
    Calls calls;
    Boxes boxes;
    OpenDll dll;
    const cTracedLock& lock = dll.record_.lock;
    EXPECT_EQ(lock.holderThread, GetCurrentThreadId()); // the constructor's entry
    EXPECT_EQ(std::wstring(dll.record().path, DLL_PATH_UNITS), std::wstring(DLL_PATH_UNITS, L'\0'));
    const TracedEntry outer(dll.record_.lock, L"test"); // while it is open, what operations wrote stays
    const auto expectLeft = [&](const std::wstring& operation, std::uint32_t status) {
        EXPECT_EQ(lock.holderOperation, L"CDll::" + operation);
        EXPECT_GT(lock.holderLine, 0u);
        EXPECT_EQ(lock.depth, 1);
        EXPECT_EQ(dll.record_.status, status);
    };
    EXPECT_EQ(dll.getLastError(), 1u);
    expectLeft(L"getLastError", 1);
    void* found = &dll;
    EXPECT_FALSE(dll.GetProcAddress("InitInstance", 1, &found));
    EXPECT_EQ(found, nullptr);
    expectLeft(L"GetProcAddress", 1);
    dll.Unload();
    expectLeft(L"Unload", 1);

    watched = &dll;
    calls.actions["InitInstance"] = calls.actions["UnloadEnvironment"] = noteHolder;
    EXPECT_TRUE(dll.Load(crafted().c_str()));
    EXPECT_STREQ(heldBy, L"CDll::Load");
    EXPECT_EQ(statusThen, 4u);
    expectLeft(L"Load", 0);
    EXPECT_EQ(dll.record().path, crafted());
    const std::string module = std::to_string(reinterpret_cast<std::uintptr_t>(dll.record().module));
    EXPECT_EQ(calls.take(), Strings{"InitInstance(" + module + ")"});
    EXPECT_FALSE(dll.GetProcAddress("NoSuchFunction", 0, &found));
    expectLeft(L"GetProcAddress", 2);
    EXPECT_EQ(dll.getProc(), nullptr);
    expectLeft(L"getProc", 2);
    EXPECT_TRUE(dll.GetProcAddress("LogonUserW", 0, &found));
    EXPECT_TRUE(found && found == dll.getProc());
    wchar_t path[DLL_PATH_UNITS];
    dll.copyFullPath(path);
    expectLeft(L"copyFullPath", 0);
    dll.record_.inFlight = 1;
    yields = 0;
    setYield([]() noexcept { ++yields; });
    dll.Unload();
    setYield(nullptr);
    EXPECT_EQ(yields, 1);
    EXPECT_STREQ(heldBy, L"CDll::Unload");
    EXPECT_EQ(statusThen, 0u); // of the lookup
    expectLeft(L"Unload", 3);
    EXPECT_EQ(calls.take(), Strings{"UnloadEnvironment(0)"});
    EXPECT_EQ(GetModuleHandleW(L"crafted.dll"), nullptr);

    EXPECT_TRUE(dll.Load(crafted().c_str(), "LogonUserW"));
    EXPECT_EQ(dll.record_.inFlight, 0);
    EXPECT_FALSE(dll.Load(nullptr)); // releases the other one first
    expectLeft(L"Load", 1);
    EXPECT_EQ(GetModuleHandleW(L"crafted.dll"), nullptr);
    calls.take();
    EXPECT_TRUE(dll.Load(craftedWithout({"InitInstance", "UnloadEnvironment"}).c_str()));
    dll.Unload();
    dll.record_.callEnvironment = 0;
    EXPECT_TRUE(dll.Load(crafted().c_str()));
    dll.Unload();
    expectLeft(L"Unload", 3);
    EXPECT_EQ(calls.take(), Strings{});
}

TEST(Dll, ReportsFailuresInBoxes)
{
    const TestHeap heap; // nothing of the texts stays behind
    Calls calls;
    Boxes boxes;
    void* found = nullptr;
    const Box missing = {0, "Can not get procedure address - 'NoSuchFunction'", "Error", 0x10};
    for (const std::int32_t report : {0, 1, 2, -1}) {
        SCOPED_TRACE(report);
        CDll dll(L"no such library.dll", "NoSuchFunction", report);
        EXPECT_EQ(dll.getLastError(), 1u);
        EXPECT_EQ(dll.record().report, report == 1);
        const Box box = {0, "Can not load module no such library.dll\nerr - 126", "Error", 0x10};
        EXPECT_EQ(boxes.take(), report ? std::vector<Box>{box} : std::vector<Box>{});
        EXPECT_FALSE(dll.Load(crafted().c_str(), "NoSuchFunction", report));
        EXPECT_TRUE(dll.getLastError() == 2 && dll.record().module);
        EXPECT_EQ(boxes.take(), report ? std::vector<Box>{missing} : std::vector<Box>{});
        EXPECT_FALSE(dll.GetProcAddress("NoSuchFunction", !report, &found));
        EXPECT_EQ(boxes.take(), report ? std::vector<Box>{} : std::vector<Box>{missing});
    }
}

TEST(Dll, KeepsLongPathsCutAndSearchesBesideTheLibraryWhenAsked)
{
    Calls calls;
    std::wstring path = programFolder() / L"";
    while (path.size() + 11 < 300) path += path.size() + 11 == 299 ? L"\\" : L".\\";
    path += L"crafted.dll";
    ASSERT_EQ(path.size(), 300u);
    EXPECT_EQ(CDll(path.c_str()).record().path, path.substr(0, 259));
    const std::wstring dependent = programFolder() / L"beside\\dependent.dll";
    EXPECT_FALSE(CDll().Load(dependent.c_str()));
    EXPECT_FALSE(CDll().Load(dependent.c_str(), nullptr, 0, -1));
    EXPECT_TRUE(CDll().Load(dependent.c_str(), nullptr, 0, 1));
}

TEST(Dll, ThreadsShareOneWrapper)
{
    Calls calls;
    CDll dll, keeper(crafted().c_str(), "LogonUserA"); // so that the one right address stays
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&dll, i, right = keeper.getProc()] {
            for (int turn = 0; turn < 60; ++turn) {
                void* found = nullptr;
                if ((turn + i) % 3 == 0) dll.Load(crafted().c_str(), "LogonUserW");
                EXPECT_EQ(dll.GetProcAddress("LogonUserA", 0, &found) ? right : nullptr, found);
                if ((turn + i) % 3 == 1) dll.Unload();
                EXPECT_LE(dll.getLastError(), 3u); // 4 is seen only by whoever loads
            }
        });
    for (std::thread& thread : threads) thread.join();
    dll.Unload();
    keeper.Unload();
    EXPECT_EQ(calls.count("InitInstance"), calls.count("UnloadEnvironment"));
    EXPECT_GT(calls.count("InitInstance"), 1u);
    EXPECT_EQ(GetModuleHandleW(L"crafted.dll"), nullptr);
    EXPECT_EQ(dll.record().lock.depth, 0);
}

TEST(SysDll, ReadsTheVersionAndStaysLoadedUnlessReleaseIsPermitted)
{
    Calls calls;
    {
        CSysDll dll;
        CDll& base = *(watched = &dll);
        calls.actions["DllGetVersion"] = noteHolder;
        EXPECT_TRUE(dll.Load(crafted().c_str()));
        EXPECT_TRUE(dll.Load(L"no such library.dll")); // one is loaded already
        EXPECT_EQ(calls.take().back(), "DllGetVersion(20)");
        EXPECT_STREQ(heldBy, L"CDll::Load");
        EXPECT_EQ(dll.version().major, 10u);
        EXPECT_EQ(dll.version().platform, 40u);
        base.Unload();
        EXPECT_EQ(dll.getLastError(), 0u);
        EXPECT_FALSE(setReleaseSystemLibraries(true)); // the default
        base.Unload();
        EXPECT_EQ(dll.getLastError(), 3u);
        EXPECT_EQ(GetModuleHandleW(L"crafted.dll"), nullptr);
        EXPECT_FALSE(dll.Load(craftedWithout({"DllGetVersion"}).c_str()));
        EXPECT_EQ(dll.getLastError(), 2u);
        EXPECT_EQ(dll.version().size + dll.version().major, 0u); // not the earlier library's
        base.Unload();
        EXPECT_TRUE(dll.Load(crafted().c_str()));
        EXPECT_TRUE(setReleaseSystemLibraries(false));
    }
    const HMODULE kept = GetModuleHandleW(L"crafted.dll");
    ASSERT_NE(kept, nullptr); // also when the object is gone
    FreeLibrary(kept);
}

} // namespace
} // namespace toolbelt::test
