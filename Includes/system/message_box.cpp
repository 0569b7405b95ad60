#include "Includes/system/message_box.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "Includes/stringFuncs/conversion.h"
#include "Includes/stringFuncs/diagnostics.h"
#include "Includes/system/dll.h"
#include "Includes/system/static_object.h"

namespace toolbelt {
namespace {

std::atomic<MessageBoxFunction> chosenFunction = nullptr;

class WindowLibrary : public CDll
{
public:
    WindowLibrary() noexcept
        : CDll(L"user32.dll", "MessageBoxA"), messageBox_(asFunction<MessageBoxFunction>(getProc()))
    {}

    // Null when a box could not be seen: a service's window station would keep it, and its thread, for ever.
    MessageBoxFunction messageBox() noexcept { return isVisible() ? messageBox_ : nullptr; }

private:
    bool isVisible() noexcept
    {
        void *getStation = nullptr, *getInformation = nullptr;
        if (!GetProcAddress("GetProcessWindowStation", 0, &getStation)) return true;
        if (!GetProcAddress("GetUserObjectInformationW", 0, &getInformation)) return true;
        USEROBJECTFLAGS flags = {};
        const HWINSTA station = asFunction<decltype(&::GetProcessWindowStation)>(getStation)();
        const BOOL known = asFunction<decltype(&::GetUserObjectInformationW)>(getInformation)(
            station, UOI_FLAGS, &flags, sizeof(flags), nullptr);
        return !known || (flags.dwFlags & WSF_VISIBLE) != 0;
    }

    MessageBoxFunction messageBox_;
};

const char* textOf(const cMBStr& text)
{
    return text.text() ? text.text() : "";
}

} // namespace

std::int32_t showMessage(void* window, const wchar_t* text, const wchar_t* title, std::uint32_t flags) noexcept
{
    cMBStr narrowText, narrowTitle;
    narrowText.AssignWide(text, -1, codePageAnsi);
    narrowTitle.AssignWide(title, -1, codePageAnsi);
    if (const MessageBoxFunction chosen = chosenFunction)
        return chosen(window, textOf(narrowText), textOf(narrowTitle), flags);
    const MessageBoxFunction show = cStaticObjectCS<WindowLibrary>::getStatic().messageBox();
    const std::int32_t button = show ? show(window, textOf(narrowText), textOf(narrowTitle), flags) : 0;
    if (button > 0) return button;
    debugMessage(text);
    return 0;
}

MessageBoxFunction setMessageBoxFunction(MessageBoxFunction function) noexcept
{
    return chosenFunction.exchange(function);
}

} // namespace toolbelt
