// Whether the process is on its way out. Process-wide objects of a DLL are destroyed while the system takes the process
// apart: by then other libraries may be gone and other threads have been ended, so no library is called or released.
//
// When a program releases the DLL earlier (FreeLibrary), the same destructors run under the loader's lock and do call
// and release libraries: no other thread may be inside the DLL then, nor may it be released from a DllMain.
#pragma once

namespace toolbelt {

// False where the system cannot tell.
bool processIsEnding() noexcept;

} // namespace toolbelt
