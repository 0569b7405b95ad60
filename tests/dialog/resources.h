// Identifiers of dialogs.rc.
#pragma once

#define DIALOG_CLASSIC 101
#define DIALOG_EXTENDED 102
#define DIALOG_HEADER 103
#define DIALOG_IMPOSSIBLE 104
#define ICON_KEY 201
#define BUTTON_FIRST 1001
#define BUTTON_SECOND 1002
#define HEADER_TITLE 1101
#define HEADER_TEXT 1102
#define HEADER_ICON 1103
#define BODY_TEXT 1104
