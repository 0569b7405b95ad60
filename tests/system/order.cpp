// Builds process-wide objects and prints the order of their building and destruction, and what the two tables call in
// the crafted library.
#include <cstdio>

#include "Includes/system/advapi_dll.h"
#include "Includes/system/shell32_dll.h"
#include "Includes/system/static_object.h"
#include "Includes/system/system_description.h"

namespace {

using namespace toolbelt;

template <char LETTER>
struct Told
{
    Told() { std::putchar(LETTER); }
    ~Told()
    {
        const cTracedLock& lock = cStaticObjectCS<Told>::lock();
        std::putchar(lock.readiness == LOCK_READY && lock.closing == 0 ? static_cast<char>(LETTER + 'a' - 'A') : '!');
    }
};

struct Nested : Told<'R'>
{
    Nested() { cStaticObjectCS<Told<'S'>>::getStatic(); }
};

} // namespace

extern "C" __declspec(dllexport) std::intptr_t craftedCalled(const char* what, std::uintptr_t)
{
    std::putchar(what[0]);
    return 1;
}

int main()
{
    cStaticObjectCS<Told<'P'>>::getStatic();
    CAdvAPIDll::getStatic().bind(L"crafted.dll");
    cStaticObjectCS<Told<'Q'>>::getStatic();
    cShell32Dll::getStatic().Load(L"crafted.dll");
    cStaticObjectCS<Nested>::getStatic();
    cStaticObjectCS<Told<'P'>>::getStatic();
    cStaticObjectCS<cMBStr>::getStatic().Assign("text");
    std::putchar(SystemDescription()[0] == L'O' ? '.' : '!');
    return 0;
}
