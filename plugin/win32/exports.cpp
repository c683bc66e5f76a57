// The plug-in's exported entry points and DllMain. Both exports use the
// standard calling convention and are named in tessarine.def, undecorated.
// Nothing may escape into the host: each export catches everything, and a
// shortage of memory is reported as "Memory error".
//
// PLUGINDoBuild's order is the host's contract: texture engine start, fonts,
// module folder, the modal main dialog, then repaint of the parent, fonts
// deleted in reverse order, texture engine shut-down; it returns 1 always.
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <new>

#include "plugin/host_interface.h"
#include "plugin/plugin_entry.h"
#include "plugin/win32/shell_state.h"
#include "shell/strings.h"
#include "shell/win32/main_dialog.h"
#include "shell/win32/message_box_reporter.h"
#include "textures/texture_engine.h"

namespace tess::win32 {
namespace {

std::string OwnModuleFolder(HINSTANCE instance) {
  char path[MAX_PATH] = {};
  GetModuleFileNameA(instance, path, MAX_PATH);
  return ModuleFolderOf(path);
}

// Publishes the fonts and the host record for the dialog's life and
// withdraws them on every path, so nothing outlives PLUGINDoBuild.
class DialogScope {
 public:
  DialogScope(ShellState& state, const ShellFonts& fonts, const HostRecord* host)
      : m_state(state) {
    m_state.fonts = &fonts;
    m_state.host = host;
  }
  ~DialogScope() {
    m_state.host = nullptr;
    m_state.fonts = nullptr;
  }
  DialogScope(const DialogScope&) = delete;
  DialogScope& operator=(const DialogScope&) = delete;

 private:
  ShellState& m_state;
};

// Everything between the texture engine's start and its shut-down. The
// parent is repainted before the fonts go.
void RunDialogWithFonts(HWND parent, const HostRecord* host) {
  ShellState& state = PluginShellState();
  ShellFonts fonts;
  state.module_folder = OwnModuleFolder(state.instance);
  {
    DialogScope scope(state, fonts, host);
    RunMainDialog(state.instance, parent, host);
  }
  UpdateWindow(parent);
}

void ReportMemoryError(HWND owner) {
  MessageBoxReporter(owner).ShowMessage(StringText(kStrMemoryError));
}

}  // namespace
}  // namespace tess::win32

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD, LPVOID) {
  tess::win32::PluginShellState().instance = instance;
  return TRUE;
}

extern "C" int32_t __stdcall PLUGINGetPluginParams(void* record, int32_t /*reserved*/) {
  try {
    return tess::FillDescriptionRecord(static_cast<uint8_t*>(record));
  } catch (...) {
    return 0;
  }
}

extern "C" int32_t __stdcall PLUGINDoBuild(HWND parent, const tess::HostRecord* host,
                                           int32_t /*reserved*/) {
  using namespace tess;
  TextureBlock block{};
  SetTextureBlockCommand(block, kTextureStart);
  TextureEngineProc(block);
  try {
    win32::RunDialogWithFonts(parent, host);
  } catch (const std::bad_alloc&) {
    win32::ReportMemoryError(parent);
  } catch (...) {
  }
  SetTextureBlockCommand(block, kTextureShutDown);
  TextureEngineProc(block);
  return 1;
}
