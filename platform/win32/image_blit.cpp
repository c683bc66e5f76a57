// Blitting image blocks: the header at the start of the block is the
// BITMAPINFO GDI wants, and the rows follow the colour table.
#include "platform/win32/image_blit.h"

namespace tess::win32 {
namespace {

const BITMAPINFO* Info(const ImageBlock& image) {
  return reinterpret_cast<const BITMAPINFO*>(image.data());
}

const void* Bits(const ImageBlock& image) {
  return image.data() + kDibHeaderSize + 4 * static_cast<size_t>(image.colour_table_entries());
}

}  // namespace

bool BlitImage(HDC dc, int x, int y, const ImageBlock& image) {
  if (!image) return false;
  DWORD w = static_cast<DWORD>(image.width());
  UINT h = static_cast<UINT>(image.height());
  return SetDIBitsToDevice(dc, x, y, w, h, 0, 0, 0, h, Bits(image), Info(image),
                           DIB_RGB_COLORS) != 0;
}

bool StretchImage(HDC dc, const RECT& target, const ImageBlock& image) {
  if (!image) return false;
  int previous = SetStretchBltMode(dc, COLORONCOLOR);
  int lines = StretchDIBits(dc, target.left, target.top, target.right - target.left,
                            target.bottom - target.top, 0, 0, image.width(), image.height(),
                            Bits(image), Info(image), DIB_RGB_COLORS, SRCCOPY);
  SetStretchBltMode(dc, previous);
  return lines != 0 && lines != static_cast<int>(GDI_ERROR);
}

}  // namespace tess::win32
