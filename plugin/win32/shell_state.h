// The plug-in's process-wide state: the module instance handle, the three
// fonts of the owner-drawn buttons and preview captions, the module folder
// and the host record of the running dialog. One ShellState per process,
// owned by the DLL; the fonts and the host record are set only while
// PLUGINDoBuild runs and are null otherwise.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <string>

#include "plugin/host_interface.h"
#include "platform/win32/win32_handles.h"

namespace tess::win32 {

// Made by the font mapper with every parameter but height and face left zero.
// Members are destroyed in reverse order, so the fonts are deleted in the
// reverse order of their creation.
class ShellFonts {
 public:
  ShellFonts();

  HFONT arial14() const { return m_arial14.get(); }
  HFONT sans_serif14() const { return m_sans_serif14.get(); }
  HFONT arial12() const { return m_arial12.get(); }

 private:
  Font m_arial14;
  Font m_sans_serif14;
  Font m_arial12;
};

struct ShellState {
  HINSTANCE instance = nullptr;
  const ShellFonts* fonts = nullptr;
  // Ends in a backslash unless empty.
  std::string module_folder;
  const HostRecord* host = nullptr;
};

// The one state of this module.
ShellState& PluginShellState();

}  // namespace tess::win32
