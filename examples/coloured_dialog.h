// Identifiers of the dialog and its controls.
#pragma once

#define DIALOG_GREETING 100
#define ICON_PROGRAM 0 /* no icon in the caption */
#define PLACE_OF_ICON 1001
#define TEXT_TITLE 1002
#define TEXT_SUBTITLE 1003
