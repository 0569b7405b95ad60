// Identifiers of the program's resources (dialogs.rc).
#pragma once

#define ICON_PROGRAM 1

#define DIALOG_PLAIN 101
#define DIALOG_COLOURED 102
#define DIALOG_COUNTDOWN 103

#define PLACE_OF_ICON 1001
#define TEXT_TITLE 1002
#define TEXT_SUBTITLE 1003
#define TEXT_LIBRARY 1004
#define TEXT_SYSTEM 1005
#define TEXT_PROCESSOR 1006
#define GROUP_FORM 1007
#define FORM_PEM 1008
#define FORM_SSH 1009
#define FORM_DER 1010
#define TEXT_PHASE 1011
#define TEXT_FIGURES 1012
#define BAR_SEARCH 1013
