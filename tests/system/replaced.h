// Another function in the place of an imported one, for tests.
#pragma once

#include <windows.h>

namespace toolbelt::test {

// While one lives, the slot of an import ("__imp__NAME@BYTES") holds that function.
class Replaced
{
public:
    template <typename Function>
    Replaced(void** slot, Function* function) : slot_(slot), before_(*slot)
    {
        DWORD protection;
        VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
        *slot = reinterpret_cast<void*>(function);
    }
    ~Replaced() { *slot_ = before_; }
    Replaced(const Replaced&) = delete;
    Replaced& operator=(const Replaced&) = delete;

private:
    void** slot_;
    void* before_;
};

} // namespace toolbelt::test
