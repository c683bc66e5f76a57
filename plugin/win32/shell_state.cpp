// Fonts and the module's one shell state.
#include "plugin/win32/shell_state.h"

namespace tess::win32 {
namespace {

HFONT MapFont(int height, const char* face) {
  return CreateFontA(height, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, face);
}

}  // namespace

ShellFonts::ShellFonts()
    : m_arial14(MapFont(14, "Arial")),
      m_sans_serif14(MapFont(14, "MS Sans Serif")),
      m_arial12(MapFont(12, "Arial")) {}

ShellState& PluginShellState() {
  static ShellState state;
  return state;
}

}  // namespace tess::win32
