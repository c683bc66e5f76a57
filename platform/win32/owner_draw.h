// Faces of the owner-drawn buttons more than one dialog shows. A colour
// button is a push-button face with its colour inside; the colour comes from
// whoever owns the value, the face only paints it.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include "image/image.h"

namespace tess::win32 {

// Pushed while selected; a disabled button shows the 3-D face colour instead
// of its own; the focus rectangle goes around the swatch.
void DrawColourButtonFace(const DRAWITEMSTRUCT& item, Colour colour);

}  // namespace tess::win32
