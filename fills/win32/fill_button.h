// The fill button window class "BRNDFILB": a swatch of its fill beside a
// menu-arrow strip. The arrow chooses the fill's kind (Simple, Gradient,
// Texture, Tile), the swatch opens the kind's editor. Each button keeps its
// record in its own pattern file (Fill%05d.flp by control id), read when it
// is initialised and written when it is destroyed, and answers the document
// messages with its FILLBT line (controls/fill_line.h).
//
// Invariants: the record exists from kMsgInitControl until WM_DESTROY, which
// saves it; the bound setting, when given, always holds the record's kind
// and colour (FillSettingValue); no exception leaves the window procedure.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <cstdint>
#include <functional>
#include <string_view>

#include "fills/fill_descriptor.h"
#include "platform/win32/control_messages.h"
#include "platform/win32/win32_handles.h"

namespace tess::win32 {

inline constexpr const char* kFillButtonClassName = "BRNDFILB";

// Asks someone (the host) for a colour, for a chooser owned by `owner`;
// `colour` goes in as the current one. False when none was chosen.
using FillColourChooser = std::function<bool(HWND owner, Colour& colour)>;
// Opens the manual at `anchor` on behalf of dialog `owner`. Must not throw.
using FillHelp = std::function<void(HWND owner, std::string_view anchor)>;

// What a fill button is tied to; handed over with kMsgInitControl and copied.
// Lower layers cannot reach the host, so the dialog lends its services here.
struct FillButtonLinks {
  int32_t* setting = nullptr;       // the "Color N" setting mirroring the record, or none
  FillColourChooser choose_colour;  // Simple colours and the gradient's two colours
  FillHelp show_help;               // the gradient editor's Help button
};

// Messages (platform/win32/control_messages.h):
// kMsgInitControl  wParam const FillButtonLinks* (may be null), lParam the
//                  default colour. Makes the record for the button's pattern
//                  file, reading the file unless Shift is down, renders the
//                  swatch and brings the setting in step. A second one starts
//                  over. Returns 1, or 0 when memory is short.
// kMsgShowMenu     shows the kind menu at the button's right edge.
// kMsgChangeNotice posted by the button to its parent after the person
//                  changed it (a kind chosen, an editor closed, accepted or
//                  not): wParam the kind, lParam the button. Document lines
//                  and initialisation post nothing: their senders redraw.
// WM_COMMAND 99 opens the current kind's editor; 100..103 choose a kind.

// Keeps the class registered for its lifetime (one per dialog run).
class FillButtonClass {
 public:
  explicit FillButtonClass(HINSTANCE instance);
  explicit operator bool() const { return static_cast<bool>(m_class); }

 private:
  WindowClass m_class;
};

// The record of the fill button `id` on `dialog`. False, leaving `record`
// alone, when there is no such button or it was never initialised.
bool GetFillButtonRecord(HWND dialog, int id, FillDescriptor& record);

}  // namespace tess::win32
