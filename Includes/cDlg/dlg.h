// cDlg: the base of every dialog. It copies a dialog template of a module's resources into memory, adjusts the copy,
// creates the dialog from it, modal or modeless, and routes the dialog's messages to the object's virtual operations.
//
// The object must live as long as its dialog, and until the call that destroyed the dialog has returned. It belongs to
// the thread that creates the dialog and may create one after another, never two at a time; nothing here is locked.
// Derived classes override OnMessage and OnInitDialog. Overrides must not throw: the system calls them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Includes/cDlg/window_types.h"
#include "crypto/base/export.h"

namespace toolbelt {

class cDlg;

// What all helpers of one dialog share. They derive from it virtually, so that a dialog made of several has one.
struct TB_API cDlgFuncsHolder
{
    InstanceHandle instance = nullptr; // where templates, icons and strings are found
    WindowHandle window = nullptr;     // null until WM_INITDIALOG; stays when the dialog is gone
};

// Hears the messages that were not answered before the chained procedure or DefaultHandler came into play: after these,
// but for WM_DESTROY, which it hears before them.
using MessageHook = void (*)(cDlg& dialog, unsigned int message, WordParameter word, LongParameter parameter);

// Bits of DlgRecord::sizeLimits.
inline constexpr std::uint32_t LIMIT_MINIMUM_WIDTH = 1;
inline constexpr std::uint32_t LIMIT_MINIMUM_HEIGHT = 2;
inline constexpr std::uint32_t LIMIT_MAXIMUM_WIDTH = 4;
inline constexpr std::uint32_t LIMIT_MAXIMUM_HEIGHT = 8;

struct DlgRecord
{
    std::uint32_t modeless = 0;  // 1 when made by Create
    void* ownedBuffer = nullptr; // the template's copy; stays for the next dialog of the object
    std::uint32_t templateId = 0;
    std::uint32_t iconId = 0;                   // not 0: the dialog's icon
    std::uint8_t useCopy = 0;                   // Create uses the adjusted copy; otherwise the resource as it is
    std::uint8_t topmost = 0;                   // in front of all other windows, once initialised
    WindowProcedure chainedProcedure = nullptr; // takes the place of DefaultHandler
    // Limits in pixels while the user sizes the dialog; set at initialisation so that it cannot become smaller than
    // designed. OnInitDialog may change them.
    std::uint32_t sizeLimits = 0;
    std::int32_t minimumWidth = 0;
    std::int32_t minimumHeight = 0;
    std::int32_t maximumWidth = 0;
    std::int32_t maximumHeight = 0;
    std::uint8_t captionButton = 0; // a click in the caption, left of its buttons, is OnCaptionButton
    MessageHook messageHook = nullptr;
};

class TB_API cDlg : public virtual cDlgFuncsHolder
{
public:
    cDlg() noexcept = default;
    cDlg(const cDlg&) = delete;
    cDlg& operator=(const cDlg&) = delete;
    // A dialog that is still there no longer reaches the object.
    virtual ~cDlg();

    // Shows the dialog until it is ended; returns its result, or -1 when it could not be created: silently without the
    // template (identifiers end at 0xFFFF) or memory, with one that is cut off or larger than 1 MiB, or while the
    // object has a dialog; else a box says why, and the thread's last error does. A parent that is no window counts as
    // none, and a dialog without one is centred on the screen.
    virtual std::int32_t DoModal(InstanceHandle module, std::uint32_t id, WindowHandle parent, WindowProcedure chained);
    // The same, modeless: returns at once, null on failure. A command destroys the dialog.
    virtual WindowHandle Create(InstanceHandle module, std::uint32_t id, WindowHandle parent, WindowProcedure chained);
    virtual WindowHandle Create(InstanceHandle module, std::uint32_t id, WindowHandle parent);
    // The running program's path with "CHM" for its last three characters, in a buffer of size units; null when there
    // is no such file, or the buffer is too small. Without the file the buffer holds the path that was looked for; one
    // that is too small holds whatever part of the program's path the system left in it, perhaps without a terminator.
    virtual wchar_t* HelpFilePath(wchar_t* buffer, std::uint32_t size);
    virtual void OnCaptionButton(std::int32_t zero);
    // The answer to WM_INITDIALOG: whether the system gives the focus to the first control.
    virtual std::uint8_t OnInitDialog();
    // A command ends the dialog with the command's identifier; nothing else is handled.
    virtual MessageResult DefaultHandler(unsigned int message, WordParameter word, LongParameter parameter);
    // Every message but the queries for notify format, and for size limits while record has some, comes here first. A
    // result other than 0 is the answer of the dialog procedure, and nothing more is done.
    virtual MessageResult OnMessage(unsigned int message, WordParameter word, LongParameter parameter);

    DlgRecord record;

private:
    bool prepare(InstanceHandle module, std::uint32_t id, WindowHandle& parent, WindowProcedure chained,
                 std::uint32_t modeless) noexcept;
    bool hasDialog() const noexcept;
    bool copyTemplate() noexcept;

    std::size_t bufferSize_ = 0;
    bool onlyCopy_ = false; // the system may read behind the resource's end
};

} // namespace toolbelt
