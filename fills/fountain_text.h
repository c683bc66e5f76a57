// A fountain as one short line of text, for the command line. FormatFountain
// writes exactly what ParseFountain reads, and parsing a formatted fountain
// gives back every field its rendering uses. Parsing is strict: anything not
// in the grammar is refused with a message that names what was expected.
//
// Grammar (keywords lower case, hex digits either case, no blanks):
//   fountain  = "fountain:" mode ":" colour ":" colour [":" markers]
//                                       start colour, then end colour
//   mode      = "open"                  the gradient ends at the end colour
//             | "closed"                it returns to the start colour, so it
//                                       tiles; the end colour is kept unused
//   markers   = marker *("," marker)    1 to 64, rendered in the order given
//   marker    = position ":" colour
//   position  = 1*3 digits              0..255 along the gradient; 255 is the
//                                       right edge
//   colour    = "#" RRGGBB              red first, as fill texts write it
// Without markers the fountain is one gradient from start to end (open) or a
// flat start colour (closed). Examples:
//   fountain:closed:#000000:#FFFFFF:0:#FF0000,85:#00FF00,170:#0000FF
//   fountain:open:#102040:#F0F0FF
//   fountain:open:#000000:#FFFFFF:128:#FF0000,128:#0000FF    (a jump at the middle)
#pragma once

#include <string>
#include <string_view>

#include "fills/fountain.h"

namespace tess {

// The text of `record`'s fountain: "open" for mode 1, "closed" for any other
// mode; colours by their low 24 bits; the first min(marker_count, 64)
// markers. Empty when memory is short.
std::string FormatFountain(const FountainRecord& record);

// Sets the mode (kFountainOpen or kFountainClosed), both colours and the
// marker table (slots past the markers given become 0) from `text`, and
// leaves the rest of `record` (path, stamp, flags) alone. On failure
// `record` is unchanged and `error` says what was expected (empty when
// memory is short).
bool ParseFountain(std::string_view text, FountainRecord& record, std::string& error);

}  // namespace tess
