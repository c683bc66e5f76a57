// Putting the engine's pictures on the screen. An ImageBlock already is a
// packed device-independent bitmap, so it is handed to GDI as it stands: no
// copy, no conversion, no drawing of our own.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include "image/image.h"

namespace tess::win32 {

// The image at (x, y), one pixel per pixel. False for a null image or when GDI
// refused.
bool BlitImage(HDC dc, int x, int y, const ImageBlock& image);

// The image stretched over `target` (pixels repeated or dropped, no smoothing,
// which suits pixel art such as the emblem).
bool StretchImage(HDC dc, const RECT& target, const ImageBlock& image);

// A system colour as the engine's colour value (both keep red in the low byte).
inline Colour SystemColour(int index) { return static_cast<Colour>(GetSysColor(index)) & 0x00FFFFFFu; }

}  // namespace tess::win32
