// Resource and control numbers of the fountain windows, shared by
// resources/fountains.rc and the code: plain macros, because the resource
// compiler reads this file too. Numbers are unique within their dialog.
#pragma once

// The fountain dialog ("Fountain Gradient").
#define TESS_FOUNTAIN_DIALOG "FountainEditBox"
#define TESS_FOUNTAIN_EDITOR 101        /* the marker editor, class BRNDFOUN */
#define TESS_FOUNTAIN_STATUS 102        /* what is selected, or the marker count */
#define TESS_FOUNTAIN_START_COLOUR 103  /* owner-drawn colour buttons */
#define TESS_FOUNTAIN_END_COLOUR 104
#define TESS_FOUNTAIN_OPEN 105          /* radio: open, start to end colour */
#define TESS_FOUNTAIN_CLOSED 106        /* radio: closed, back to the start colour */
#define TESS_FOUNTAIN_HELP 9

// "Marker Position": one number 0..255 with its up-down.
#define TESS_FOUNTAIN_POSITION_DIALOG "FountainPositionBox"
#define TESS_FOUNTAIN_POSITION_EDIT 201
#define TESS_FOUNTAIN_POSITION_SPIN 202

// "Fountain Library".
#define TESS_FOUNTAIN_LIBRARY_DIALOG "FountainLibraryManageBox"
#define TESS_FOUNTAIN_LIBRARY_LIST 101
#define TESS_FOUNTAIN_LIBRARY_DELETE 102
#define TESS_FOUNTAIN_LIBRARY_HELP 9

// The cursor a library entry is dragged with.
#define TESS_FOUNTAIN_DRAG_CURSOR 6001
