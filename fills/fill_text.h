// A fill as one short line of text, for the command line. FormatFill writes
// exactly what ParseFill reads, and parsing a formatted fill gives back every
// field its rendering uses. Parsing is strict: anything not in the grammar is
// refused with a message that names what was expected.
//
// Grammar (keywords lower case, hex digits either case):
//   fill      = colour | gradient | "texture" | "tile"
//   colour    = "#" RRGGBB                  six hex digits, red first
//   gradient  = "gradient:" shape ":" colour ":" colour *(":" param)
//                                           start colour, then end colour
//   shape     = "linear" | "radial" | "square" | "conical"
//   param     = "rot=" int                  degrees, -360..360  (linear, conical)
//             | "cx=" int                   per cent, -50..50   (radial, square, conical)
//             | "cy=" int                   per cent, -50..50, + = up (same shapes)
//   int       = ["+" | "-"] digits
// Each parameter may appear once, in any order; a missing one is 0, and
// FormatFill leaves out those that are 0. Examples:
//   #FF8000
//   gradient:linear:#000000:#FFFFFF:rot=30
//   gradient:radial:#000000:#FFFFFF:cx=10:cy=-20
//   gradient:conical:#102030:#F0E0D0:rot=90:cx=-50
//   texture
// "texture" and "tile" name the kind only and keep the record's texture and
// tile blocks; their parameters will follow as ":name=value" fields.
#pragma once

#include <string>
#include <string_view>

#include "fills/fill_descriptor.h"

namespace tess {

// Appends a colour as "#RRGGBB", red first, upper-case digits: the one
// colour form of every fill and fountain text. False when memory is short.
bool FormatHexColour(Colour colour, std::string& out);
// Takes exactly "#" and six hex digits (either case). On failure `colour` is
// unchanged and `error` says that `what` ("the start colour") was expected
// (empty when memory is short).
bool ParseHexColour(std::string_view text, std::string_view what, Colour& colour, std::string& error);

// The text of `record`'s fill; empty when its kind or gradient type has no
// form (a foreign record) or memory is short. Values a foreign record holds
// outside the ranges above are written as the nearest the form allows: the
// rotation reduced by whole turns (as the renderer reduces it) and the
// centre clamped.
std::string FormatFill(const FillDescriptor& record);

// Sets the kind and the fields `text` describes (a gradient sets all of its
// colours, type, rotation and centre) and leaves the rest of `record` alone.
// On failure `record` is unchanged and `error` says what was expected.
bool ParseFill(std::string_view text, FillDescriptor& record, std::string& error);

}  // namespace tess
