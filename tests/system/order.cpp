// Builds process-wide objects and prints the order of their building and destruction.
#include <windows.h>

#include "Includes/system/advapi_dll.h"
#include "Includes/system/shell32_dll.h"
#include "Includes/system/static_object.h"
#include "Includes/system/system_description.h"

namespace {

using namespace toolbelt;

void print(char letter)
{
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), &letter, 1, &written, nullptr);
}

template <char LETTER>
struct Told
{
    Told() { print(LETTER); }
    ~Told()
    {
        const cTracedLock& lock = cStaticObjectCS<Told>::lock();
        print(lock.readiness == LOCK_READY && lock.closing == 0 ? static_cast<char>(LETTER + 'a' - 'A') : '!');
    }
};

struct Nested : Told<'C'>
{
    Nested() { cStaticObjectCS<Told<'D'>>::getStatic(); }
};

} // namespace

int main()
{
    cStaticObjectCS<Told<'A'>>::getStatic();
    CAdvAPIDll::getStatic().bind();
    cStaticObjectCS<Told<'B'>>::getStatic();
    cShell32Dll::getStatic();
    cStaticObjectCS<Nested>::getStatic();
    cStaticObjectCS<Told<'A'>>::getStatic();
    cStaticObjectCS<cMBStr>::getStatic().Assign("text");
    print(SystemDescription()[0] == L'O' ? '.' : '!');
    return 0;
}
