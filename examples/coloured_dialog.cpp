// A dialog with a coloured header: coloured_dialog [MILLISECONDS]. With a number it presses OK by itself after that
// time. Prints "OK" or "Cancel"; ends with 0 for OK, else with 1.
#include <windows.h>

#include <cstdio>
#include <cstdlib>

#include <toolbelt/toolbelt.h>

#include "coloured_dialog.h"

class Greeting : public toolbelt::cColoredDlg
{
public:
    explicit Greeting(UINT milliseconds) : milliseconds_(milliseconds)
    {
        record.iconId = ICON_PROGRAM;
        record.useCopy = 1;
        colours.headerHeight = toolbelt::suitableHeaderHeight(toolbelt::screenDpi(), 1, false);
        colours.gradientColour = RGB(140, 185, 225);
        colours.titleId = TEXT_TITLE;
        colours.textId = TEXT_SUBTITLE;
        colours.titleText = L"An example";
        colours.iconPlaceId = PLACE_OF_ICON;
    }

    // Called for each text in the header before it is drawn.
    void OnHeaderColour(HDC device, HWND control) override
    {
        SetTextColor(device, GetDlgCtrlID(control) == TEXT_TITLE ? RGB(0, 60, 120) : RGB(70, 70, 70));
    }

    toolbelt::MessageResult OnMessage(UINT message, WPARAM word, LPARAM parameter) override
    {
        const toolbelt::MessageResult answer = cColoredDlg::OnMessage(message, word, parameter);
        // The header's texts stand on the gradient itself, not on plates of their own.
        if (message == WM_CTLCOLORSTATIC && answer != 0)
            return reinterpret_cast<toolbelt::MessageResult>(GetStockObject(NULL_BRUSH));
        if (message == WM_TIMER && word == CLOSE_TIMER) PostMessageW(window, WM_COMMAND, IDOK, 0);
        return answer;
    }

    // Called when the background, header and all, is painted anew.
    void OnBackgroundPainted(HDC device) override
    {
        toolbelt::PaintIcon(window, device, PLACE_OF_ICON, LoadIcon(nullptr, IDI_INFORMATION));
    }

    std::uint8_t OnInitDialog() override
    {
        if (milliseconds_) SetTimer(window, CLOSE_TIMER, milliseconds_, nullptr);
        return 1; // the system gives the focus to the first control
    }

private:
    static constexpr UINT_PTR CLOSE_TIMER = 1;

    UINT milliseconds_;
};

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR arguments, int)
{
    Greeting dialog(static_cast<UINT>(std::atoi(arguments)));
    const std::int32_t answer = dialog.DoModal(instance, DIALOG_GREETING, nullptr, nullptr);
    std::puts(answer == IDOK ? "OK" : answer == IDCANCEL ? "Cancel" : "no dialog");
    return answer == IDOK ? 0 : 1;
}
