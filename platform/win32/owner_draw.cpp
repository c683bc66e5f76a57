// Owner-drawn faces. Every GDI object made here is released before return.
#include "platform/win32/owner_draw.h"

#include "platform/win32/win32_handles.h"

namespace tess::win32 {

void DrawColourButtonFace(const DRAWITEMSTRUCT& item, Colour colour) {
  RECT face = item.rcItem;
  UINT state = DFCS_BUTTONPUSH | ((item.itemState & ODS_SELECTED) ? DFCS_PUSHED : 0u);
  DrawFrameControl(item.hDC, &face, DFC_BUTTON, state);
  RECT swatch = face;
  InflateRect(&swatch, -4, -4);
  if (item.itemState & ODS_SELECTED) OffsetRect(&swatch, 1, 1);
  Colour shown = (item.itemState & ODS_DISABLED) ? GetSysColor(COLOR_3DFACE) : colour & 0x00FFFFFFu;
  Brush brush(CreateSolidBrush(shown));
  if (brush) FillRect(item.hDC, &swatch, brush.get());
  FrameRect(item.hDC, &swatch, GetSysColorBrush(COLOR_BTNSHADOW));
  if (item.itemState & ODS_FOCUS) {
    RECT focus = swatch;
    InflateRect(&focus, 2, 2);
    DrawFocusRect(item.hDC, &focus);
  }
}

}  // namespace tess::win32
