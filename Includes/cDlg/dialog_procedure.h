// The one dialog procedure of all cDlg objects.
#pragma once

#include "Includes/cDlg/window_types.h"

namespace toolbelt {

// The dialog's creation parameter is its cDlg object, which WM_INITDIALOG ties to the window.
int __stdcall dialogProcedure(WindowHandle window, unsigned int message, WordParameter word, LongParameter parameter);

} // namespace toolbelt
