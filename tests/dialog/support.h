// What the tests of this folder share: dialogs that act, recorded reports, counted objects.
#pragma once

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Includes/cDlg/dlg.h"
#include "Includes/system/resource_library.h"
#include "tests/dialog/resources.h"
#include "tests/system/replaced.h"

namespace toolbelt::test {

using Texts = std::vector<std::string>;

// A dialog class whose messages go through a function first.
template <typename Base>
struct Observed : Base
{
    std::function<MessageResult(UINT, WPARAM, LPARAM)> onMessage;
    WindowProcedure chained = nullptr; // of show

    MessageResult OnMessage(UINT message, WPARAM word, LPARAM parameter) override
    {
        const MessageResult answer = onMessage ? onMessage(message, word, parameter) : 0;
        return answer != 0 ? answer : Base::OnMessage(message, word, parameter);
    }
    HWND open(std::uint32_t id)
    {
        this->record.useCopy = 1;
        return this->Create(GetModuleHandleW(nullptr), id, nullptr);
    }
    // Modal; when it is there, the action is done and the button pressed.
    std::int32_t show(
        std::uint32_t id, int button, std::function<void()> action = [] {}, HWND parent = nullptr)
    {
        onMessage = [=, this](UINT message, WPARAM, LPARAM) {
            if (message == WM_INITDIALOG) PostMessageW(this->window, WM_APP, 0, 0);
            if (message == WM_APP) {
                action();
                PostMessageW(this->window, button == IDCANCEL ? WM_CLOSE : WM_COMMAND, static_cast<WPARAM>(button), 0);
            }
            return 0;
        };
        return this->DoModal(GetModuleHandleW(nullptr), id, parent, chained);
    }
};

// While one lives, assertions ("EXPRESSION FILE LINE"), error boxes ("TITLE|TEXT|FLAGS") and calls of the resource
// library's function ("IDENTIFIER") are recorded.
struct Recorder
{
    Recorder();
    ~Recorder();
    static Texts take();
};

// The process-wide resource library while one lives.
struct Language
{
    explicit Language(bool rightToLeft, std::uint32_t identifier = NO_RESOURCE_IDENTIFIER, std::uint32_t status = 0);
    ~Language() { setResourceLibrary(nullptr); }
    ResourceLibrary library;
};

std::string narrow(const wchar_t* text);
RECT windowRect(HWND window);
RECT clientRect(HWND window);
std::string textOf(HWND dialog, int id = 0);
// Delivers messages until done, for so many milliseconds at most.
void pump(DWORD milliseconds, const std::function<bool()>& done);
// This process's GDI objects and windows.
std::pair<int, int> countObjects();

} // namespace toolbelt::test
