// The fountain control ("BRNDFNTB"): a swatch button on a style page that
// shows its fountain as the core renders it, opens the fountain dialog when
// clicked and keeps the fountain in its own pattern file, FillFilePath of
// its control id.
//
// Invariants: the control's block (record, preview, environment) exists
// from kMsgInitControl to WM_DESTROY, which saves the pattern file and
// frees it. The record's path is always the control's own pattern file:
// neither a document line nor a loaded file can make it write elsewhere.
// No exception leaves a procedure.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <optional>

#include "fills/fountain.h"
#include "fills/win32/fountain_environment.h"
#include "platform/win32/control_messages.h"

namespace tess::win32 {

inline constexpr const char* kFountainControlClassName = "BRNDFNTB";

// Messages the control answers:
// kMsgInitControl: wParam the mode (1 open, any other value closed), which
//   overrides the one stored; lParam a const FountainEnvironment* that must
//   outlive the control, or 0 for the system platform, the class's module,
//   no colour chooser and no help. Reads the pattern file unless Shift is
//   down. A second initialisation starts over. Returns 1, or 0 when memory
//   is short (the control then stays uninitialised).
// kMsgWriteDocumentLine / kMsgReadDocumentLine: the "FOUNTN" line, whose
//   value is the record's 585 bytes in hexadecimal. A line with the tag and
//   "=" is always taken (1); its value replaces every field but the path
//   when it decodes, and changes nothing when it does not.
// A click (or Space) runs the fountain dialog on the record; afterwards the
//   parent gets WM_COMMAND with the control's id, and kMsgChangeNotice as
//   well when the dialog ended with OK.

// The control class and the dialog's marker editor class ("BRNDFOUN") for
// `instance`, whose module must hold resources/fountains.rc. False, with
// neither left registered, when a registration failed.
bool RegisterFountainClasses(HINSTANCE instance);
// Every fountain window must be gone by then.
void UnregisterFountainClasses(HINSTANCE instance);

// Keeps the classes registered for its lifetime.
class FountainClasses {
 public:
  explicit FountainClasses(HINSTANCE instance)
      : m_instance(instance), m_registered(RegisterFountainClasses(instance)) {}
  ~FountainClasses() {
    if (m_registered) UnregisterFountainClasses(m_instance);
  }
  FountainClasses(const FountainClasses&) = delete;
  FountainClasses& operator=(const FountainClasses&) = delete;
  explicit operator bool() const { return m_registered; }

 private:
  HINSTANCE m_instance;
  bool m_registered;
};

// The fountain the control holds; nothing for a window that is not an
// initialised fountain control. Call on the control's thread.
std::optional<FountainRecord> GetFountainRecord(HWND control);

// Replaces every field of the control's fountain but its path (a built-in
// fountain carries none) and repaints. False for a window that is not an
// initialised fountain control. Call on the control's thread.
bool SetFountainRecord(HWND control, const FountainRecord& record);

}  // namespace tess::win32
