// Control ids of the main dialog (template 1000). The dialog binds its
// controls by these ids, documents save them, and the build driver reads its
// output options through a ParamReader by the same ids.
#pragma once

namespace tess {

inline constexpr int kTrueColour = 10;           // check box "Tr&ue color"
inline constexpr int kDelayEdit = 11;            // edit "Delay:"
inline constexpr int kDelayUpDown = 10011;       // its up-down: kDelayEdit + 10000
inline constexpr int kSampleSizeLabel = 12;      // "%d x %d pixels"
inline constexpr int kPaletteList = 13;          // drop-down "Palette"
inline constexpr int kCustomPalette = 14;        // check box "&Custom palette"
inline constexpr int kDither = 15;               // check box "&Dither"
inline constexpr int kEmblem = 17;               // animated emblem button
inline constexpr int kSupercompress = 19;        // check box "&Supercompress"
inline constexpr int kAddComment = 20;           // check box "Add comme&nt"
inline constexpr int kMaskBackground = 21;       // check box "&Mask background"
inline constexpr int kSample = 25;               // owner-drawn live sample
inline constexpr int kTransparentBackground = 35;  // bound, but absent from the template
inline constexpr int kEffectList = 58;           // drop-down "Effect"

// Buttons.
inline constexpr int kOkButton = 1;
inline constexpr int kCancelButton = 2;
inline constexpr int kHelpButton = 9;
inline constexpr int kAboutButton = 18;
inline constexpr int kTestButton = 24;
inline constexpr int kOpenSaveButton = 36;
inline constexpr int kPreviewButton = 40;

}  // namespace tess
