// cCountdownButton: a button of a dialog that presses itself when nobody else does. A dialog class derives from it
// beside cDlg and hands it its messages.
#pragma once

#include <cstdint>

#include "Includes/cDlg/dlg.h"
#include "Includes/stringFuncs/wcs.h"
#include "crypto/base/export.h"

namespace toolbelt {

inline constexpr std::uint32_t COUNTDOWN_TIMER = 3021;

class TB_API cCountdownButton : public virtual cDlgFuncsHolder
{
protected:
    cCountdownButton() noexcept = default;

    // Counts seconds down (1 or more) on the button with this identifier, or when there is none on the n-th of the
    // dialog's children of class "button", counted from 1 in z-order: that of creation, unless it was changed. From the
    // first second on the button shows what is left. A count that is under way ends. False when there is no
    // such button, memory or timer, or no dialog yet.
    bool StartCountdown(std::int32_t seconds, std::int32_t buttonId, std::int32_t n = 1);
    // The button gets its caption back and is not pressed.
    void StopCountdown();
    // Call it for every message. True for the countdown's own timer, which needs nothing more. The press is a command
    // that the dialog receives before this returns.
    bool OnCountdownMessage(unsigned int message, WordParameter word);

private:
    cWCS caption_;
    WindowHandle button_ = nullptr;
    std::int32_t buttonId_ = 0;
    std::int32_t left_ = 0;
};

} // namespace toolbelt
