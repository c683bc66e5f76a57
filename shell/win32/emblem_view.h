// The emblem control ("BRNDEMBL"): shows the engine's emblem frames,
// doubled in size, and moves on one frame each time its owner sends
// kMsgEmblemStep (the main dialog from its timer 17, the About box from its
// own). The class is registered while an EmblemClass lives; each window owns
// its view, made at WM_NCCREATE and freed at WM_NCDESTROY.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include "platform/win32/win32_handles.h"

namespace tess::win32 {

inline constexpr const char* kEmblemClassName = "BRNDEMBL";
inline constexpr UINT kMsgEmblemStep = WM_APP + 17;
// How often the owners step the emblem, in milliseconds.
inline constexpr UINT kEmblemPeriod = 90;

class EmblemClass {
 public:
  explicit EmblemClass(HINSTANCE instance);
  explicit operator bool() const { return static_cast<bool>(m_class); }

 private:
  WindowClass m_class;
};

}  // namespace tess::win32
