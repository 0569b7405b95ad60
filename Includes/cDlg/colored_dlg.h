// cColoredDlg: the dialog that most dialogs derive from. It has a header band in the window colour, shaded by a
// gradient if wanted, a line below it, and in the band an icon, a title and a text in the shared bold fonts.
//
// A derived class that overrides OnMessage calls this class's first and passes on an answer other than 0. One of them
// it may change: the answer to WM_CTLCOLORSTATIC is the window colour's brush, which a text lays on the gradient as a
// plate of its own. With GetStockObject(NULL_BRUSH) in its place the text stands on the gradient itself, as long as the
// dialog repaints the ground (RedrawWindow with RDW_ERASE) below a text that is changed.
#pragma once

#include <cstdint>

#include "Includes/cDlg/dlg.h"
#include "Includes/cDlg/fonts.h"
#include "crypto/base/export.h"

namespace toolbelt {

struct ColoredDlgRecord
{
    std::uint8_t enabled = 1;         // 0: a plain dialog
    std::int32_t headerHeight = 0;    // in pixels; 0: no band (suitableHeaderHeight tells a good one)
    std::int32_t headerExtension = 0; // pixels by which the gradient reaches beyond the dialog's right edge
    Colour gradientColour = 0;        // 0: no gradient
    std::uint32_t textId = 0;         // static controls in the band
    std::uint32_t titleId = 0;
    std::uint8_t largeText = 0;         // 10 points instead of 8 for the text
    cFonts fonts;                       // taken at initialisation
    const wchar_t* titleText = nullptr; // not null: the dialog's caption
    // Not null: the dialog opens with its top left corner there, unless left is 0, and leaves its rectangle behind when
    // it is destroyed.
    Rectangle* savedPosition = nullptr;
    std::uint32_t iconPlaceId = 0; // a control that marks the icon's place in the band, for PaintIcon
};

class TB_API cColoredDlg : public cDlg
{
public:
    MessageResult OnMessage(unsigned int message, WordParameter word, LongParameter parameter) override;
    // The colour hook: called for each static control in the band before it is drawn, its font selected, its background
    // about to be made transparent. Text colours are set here.
    virtual void OnHeaderColour(DeviceHandle device, WindowHandle control);
    // Called when the background is painted, in the dialog's coordinates: what is drawn here, the icon for example,
    // appears together with it. The device may be one of memory, and the call comes again when that cannot be shown.
    virtual void OnBackgroundPainted(DeviceHandle device);

    ColoredDlgRecord colours;

private:
    void initialise();
    void layOut(std::int32_t width);
    bool eraseBackground(DeviceHandle target);
    MessageResult colourStatic(DeviceHandle device, WindowHandle control);
};

// The header height that suits a title and so many lines of text on a screen of dpi pixels per inch.
TB_API std::int32_t suitableHeaderHeight(std::int32_t dpi, std::int32_t textLines, bool largeText) noexcept;

// The process-wide switch that turns all bands, fonts and gradients off, for users who need the system's own colours;
// off from the start. Open dialogs follow when they are painted next, but a text that has its font keeps it. Returns
// what was set before.
TB_API bool setNoColours(bool noColours) noexcept;

} // namespace toolbelt
