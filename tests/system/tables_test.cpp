// The tables of bound functions, over crafted libraries that lack what a case asks for, and over the system's.
#include <windows.h>

#include <algorithm>
#include <optional>

#include "Includes/system/advapi_dll.h"
#include "Includes/system/message_box.h"
#include "Includes/system/missing_function.h"
#include "Includes/system/resource_library.h"
#include "Includes/system/shell32_dll.h"
#include "Includes/system/system_description.h"
#include "tests/support/vectors.h"
#include "tests/system/replaced.h"
#include "tests/system/support.h"

extern "C" {
extern void* lookupSlot __asm__("__imp__GetProcAddress@8");
}

namespace toolbelt::test {
namespace {

// The names that a table binds, in the order of its slots.
Strings namesOf(const std::string& table)
{
    for (const Record& record : readVectors("../system/bound.txt"))
        if (record.get("table") == table) return record.list("function");
    throw std::runtime_error("no table " + table);
}
const Strings ADVAPI_NAMES = namesOf("advapi"), SHELL_NAMES = namesOf("shell32");

void* addressOf(const CDll& dll, const std::string& name)
{
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(dll.record().module), name.c_str()));
}

// Each slot holds the address of its own name.
template <typename Functions>
void expectSlots(const CDll& table, const Functions& functions, const Strings& names)
{
    ASSERT_EQ(names.size() * sizeof(void*), sizeof(functions));
    for (std::size_t i = 0; i < names.size(); ++i)
        EXPECT_EQ(reinterpret_cast<void* const*>(&functions)[i], addressOf(table, names[i])) << names[i];
}

Strings asked;
const CDll* teller;
bool heldThen;
const auto realLookup = reinterpret_cast<decltype(&GetProcAddress)>(lookupSlot);

FARPROC WINAPI watchedLookup(HMODULE module, const char* name)
{
    asked.push_back(name);
    heldThen |= teller && teller->record().lock.depth != 0;
    return realLookup(module, name);
}

// The names that an action looks up, in order.
template <typename Action>
Strings lookedUp(Action action)
{
    asked.clear();
    const Replaced watched(&lookupSlot, watchedLookup);
    action();
    return asked;
}

TEST(AdvApi, BindsOnceAndTellsHowFarItCame)
{
    Calls calls;
    Boxes boxes;
    {
        CAdvAPIDll table;
        calls.answers["OpenSCManagerA"] = 77;
        Strings names = ADVAPI_NAMES;
        names.insert(names.begin(), "InitInstance");
        EXPECT_EQ(lookedUp([&] { ASSERT_TRUE(table.bind(crafted().c_str())); }), names);
        expectSlots(table, table.binding().functions, ADVAPI_NAMES);
        EXPECT_EQ(table.binding().step, -2);
        EXPECT_EQ(table.getLastError(), 0u);
        EXPECT_EQ(table.binding().serviceManager, reinterpret_cast<void*>(77));
        EXPECT_TRUE(table.bind(L"no such library.dll"));
        EXPECT_EQ(calls.count("OpenSCManagerA"), 1u);
        void* found = nullptr;
        EXPECT_FALSE(table.GetProcAddress("NoSuchFunction", &found)); // without a box
        EXPECT_FALSE(table.bind());
    }
    const Strings all = calls.take();
    EXPECT_EQ(Strings(all.begin() + 1, all.end()),
              (Strings{"OpenSCManagerA(983103)", "CloseServiceHandle(77)", "UnloadEnvironment(0)"}));

    for (std::int32_t i = -1; i < 9; ++i) {
        CAdvAPIDll table;
        const std::wstring path = i < 0 ? L"no such library.dll" : craftedWithout({ADVAPI_NAMES[i]});
        EXPECT_FALSE(table.bind(path.c_str()));
        EXPECT_EQ(table.binding().step, i < 0 ? 0 : 1000 + i + 1);
        EXPECT_EQ(table.getLastError(), i < 0 ? 1u : 2u);
        EXPECT_FALSE(table.bind(crafted().c_str())); // no second try
        EXPECT_EQ(calls.count("InitInstance"), static_cast<std::uint32_t>(i + 1));
    }
    {
        const CDll keeper(crafted().c_str()); // the slots stay valid
        CAdvAPIDll changed;
        EXPECT_TRUE(changed.bind(crafted().c_str()));
        EXPECT_TRUE(changed.Load(craftedWithout({}).c_str()));
    }
    EXPECT_EQ(calls.count("CloseServiceHandle"), 0u); // by a table that is no longer of the library it was bound to
}

TEST(AdvApi, OptionalFunctionsFallBackOrStayNullAndTheManagersErrorIsLost)
{
    Calls calls;
    calls.answers["OpenSCManagerA"] = 0;
    struct OpenTable : CAdvAPIDll
    {
        using CDll::record_;
    } table;
    const TracedEntry outer(table.record_.lock, L"test");
    const std::wstring path = craftedWithout(
        {"DeleteServiceA", "ControlServiceA", "LookupPrivilegeValueA", "LookupPrivilegeValue", "LogonUserExW"});
    Strings names = {"InitInstance"};
    for (const std::string& name : ADVAPI_NAMES) {
        names.push_back(name);
        if (name == "DeleteServiceA" || name == "ControlServiceA" || name == "LookupPrivilegeValueA")
            names.push_back(name.substr(0, name.size() - 1));
    }
    EXPECT_EQ(lookedUp([&] { ASSERT_TRUE(table.bind(path.c_str())); }), names);
    EXPECT_STREQ(table.record_.lock.holderOperation, L"CAdvAPIDll::GetProcAddress");
    const AdvApiFunctions& functions = table.binding().functions;
    EXPECT_TRUE(functions.deleteService && functions.deleteService == addressOf(table, "DeleteService"));
    EXPECT_TRUE(functions.controlService && functions.controlService == addressOf(table, "ControlService"));
    EXPECT_EQ(functions.lookupPrivilegeValueA, nullptr);
    EXPECT_EQ(functions.logonUserExW, nullptr);
    EXPECT_EQ(table.binding().serviceManager, nullptr);
    EXPECT_EQ(table.binding().step, -2);
    EXPECT_EQ(table.getLastError(), 0u);

    Boxes boxes;
    void* found = nullptr;
    table.record_.report = 1;
    EXPECT_FALSE(table.GetProcAddress("LogonUserExW", &found));
    EXPECT_EQ(boxes.take(), (std::vector<Box>{{0, "Can not get procedure address - 'LogonUserExW'", "Error", 0x10}}));
}

std::string told;

int __stdcall noteBox(void*, const char* text, const char*, unsigned int)
{
    told = teller->record().lock.depth == 0 ? text : "while the lock was held";
    return IDOK;
}

TEST(Shell, DocumentsFolderInFourSteps)
{
    Calls calls;
    const std::string direct = "SHGetSpecialFolderPathW";
    wchar_t path[DLL_PATH_UNITS];
    std::optional<cShell32Dll> built;
    Strings names = SHELL_NAMES;
    names.insert(names.begin(), "InitInstance");
    EXPECT_EQ(lookedUp([&] { built.emplace(crafted().c_str()); }), names);
    cShell32Dll& whole = *built;
    expectSlots(whole, whole.functions(), SHELL_NAMES);
    calls.take();
    EXPECT_TRUE(whole.getDocumentsFolder(path));
    EXPECT_STREQ(path, L"X:\\direct");
    EXPECT_EQ(calls.take(), Strings{"SHGetSpecialFolderPathW(5)"});
    calls.answers[direct] = 0;
    EXPECT_FALSE(whole.getDocumentsFolder(path));

    for (const std::string name : {"SHGetSpecialFolderLocation", "SHGetPathFromIDListW", "SHGetMalloc"}) {
        cShell32Dll lacking(craftedWithout({direct, name}).c_str());
        calls.take();
        teller = &lacking;
        setMessageBoxFunction(noteBox);
        EXPECT_FALSE(lacking.getDocumentsFolder(path)) << name;
        // The list is freed whenever it can be.
        const Strings made = calls.take();
        EXPECT_EQ(std::count(made.begin(), made.end(), "Free(0)"), name == "SHGetPathFromIDListW");
        EXPECT_NE(std::exchange(told, "").find("\nFunction: cShell32Dll::getDocumentsFolder\nLine: "),
                  std::string::npos);
    }

    const Boxes noMore;
    cShell32Dll lists(craftedWithout({direct}).c_str());
    for (const int converted : {1, 0}) {
        calls.take();
        calls.answers["SHGetPathFromIDListW"] = converted;
        EXPECT_EQ(lists.getDocumentsFolder(path), converted == 1);
        EXPECT_STREQ(path, L"X:\\list");
        EXPECT_EQ(calls.take(), (Strings{"SHGetSpecialFolderLocation(5)", "SHGetPathFromIDListW(0)", "SHGetMalloc(0)",
                                         "Free(0)", "Release(0)"}));
    }
    calls.answers["SHGetSpecialFolderLocation"] = 0;
    teller = &lists;
    heldThen = false;
    EXPECT_EQ(lookedUp([&] { EXPECT_TRUE(lists.getDocumentsFolder(path)); }).at(1), "GetUserNameW");
    EXPECT_FALSE(heldThen);
    teller = nullptr;
    wchar_t expected[MAX_PATH], name[100];
    DWORD units = 100;
    GetWindowsDirectoryW(expected, MAX_PATH);
    GetUserNameW(name, &units);
    EXPECT_EQ(path, std::wstring(expected) + L"\\Profiles\\" + name);

    EXPECT_TRUE(cShell32Dll::getStatic().getDocumentsFolder(path));
    EXPECT_NE(GetFileAttributesW(path), INVALID_FILE_ATTRIBUTES) << "the system's own answer is a folder";
}

TEST(MissingFunction, TellsWhatIsMissingWhere)
{
    Calls calls;
    Boxes boxes;
    const CDll dll(crafted().c_str());
    EXPECT_TRUE(requireFunction(dll, &dll, L"any"));
    EXPECT_FALSE(requireFunction(dll, nullptr, L"CAdvAPIDll::CheckAdministratorPrivileges"));
    const std::string line = std::to_string(__LINE__ - 1);
    const auto narrow = [](const std::wstring& text) { return std::string(text.begin(), text.end()); };
    Box expected = {0,
                    "crafted.dll - Invalid function is detected!\nFunction: CAdvAPIDll::CheckAdministratorPrivileges\n"
                    "Line: " +
                        line + "\n" + narrow(SystemDescription()) + "\nDll path: " + narrow(crafted()),
                    "test_system.exe", 0x40010};
    EXPECT_EQ(boxes.take(), std::vector<Box>{expected});

    const struct
    {
        ResourceLibrary library;
        std::uint32_t flags;
    } cases[] = {{{0, 1, 0, nullptr}, 0x1C0010}, {{0, 0, 0, nullptr}, 0x40010}, {{1, 1, 0, nullptr}, 0x40010}};
    for (const auto& each : cases) {
        EXPECT_EQ(setResourceLibrary(&each.library), nullptr); // none from the start
        requireFunction(dll, nullptr, L"any");
        EXPECT_EQ(boxes.take().at(0).flags, each.flags);
        setResourceLibrary(nullptr);
    }
}

} // namespace
} // namespace toolbelt::test
