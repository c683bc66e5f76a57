// Driving the plug-in's dialogs from a worker thread while the host's thread
// sits in PLUGINDoBuild: finding windows of that thread, setting controls,
// clicking, reading and dismissing message boxes, and window captures.
//
// Rules that keep the two threads from deadlocking: anything that may open a
// modal window (a button that builds, saves or asks for help) is posted,
// never sent; values are set with sent messages, which return at once.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace tess::testhost {

// A failed expectation inside a case: the case reports it and moves on.
struct CaseFailure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

[[noreturn]] void Fail(const std::string& reason);
inline void Expect(bool condition, const std::string& reason) {
  if (!condition) Fail(reason);
}

struct Popup {
  HWND hwnd = nullptr;
  std::string caption;
  std::string text;  // a message box's text (its static 0xFFFF)
};

class Ui {
 public:
  // `marker` is a window of the host's thread (see MarkerWindow) whose
  // posted messages show how far that thread's queue has been handled.
  Ui(DWORD ui_thread, HWND marker, std::string shot_folder);

  DWORD thread() const { return m_thread; }

  // The visible top-level dialog of the host's thread with this caption.
  HWND WaitForDialog(const char* caption, int timeout_ms = 10000) const;
  // A visible top-level dialog of the host's thread other than `except`.
  Popup WaitForPopup(HWND except, int timeout_ms = 10000) const;
  // Null when none shows up within the time.
  HWND FindPopup(HWND except) const;
  // Presses OK on a popup and waits until it is gone.
  void Dismiss(const Popup& popup) const;
  bool WaitGone(HWND hwnd, int timeout_ms = 10000) const;

  void Click(HWND dialog, int id) const;    // posted BM_CLICK
  void Command(HWND dialog, int id) const;  // posted WM_COMMAND from a menu
  void SetText(HWND dialog, int id, const std::string& text) const;
  std::string Text(HWND dialog, int id) const;
  std::string Text(HWND hwnd) const;
  // Chooses a list entry and sends the close-up the dialog acts on.
  void SelectListItem(HWND dialog, int id, int index) const;
  int ListSelection(HWND dialog, int id) const;
  bool Checked(HWND dialog, int id) const;
  // Clicks a check box until it shows `checked`.
  void SetChecked(HWND dialog, int id, bool checked) const;
  bool Enabled(HWND dialog, int id) const;
  bool Visible(HWND dialog, int id) const;
  // Waits until the host's thread has handled everything posted so far (or
  // has entered a modal loop while handling it).
  void Settle(int timeout_ms = 10000) const;

  // Saves the window as it shows now as <folder>\<name>.bmp. False when
  // nothing could be captured.
  bool Shot(HWND hwnd, const std::string& name) const;

 private:
  DWORD m_thread;
  HWND m_marker;
  std::string m_folder;
};

// A message-only window made on the host's thread before PLUGINDoBuild runs.
// A message posted to it is handled after everything posted to that thread
// before it, and then signals an event.
class MarkerWindow {
 public:
  MarkerWindow();
  ~MarkerWindow();
  MarkerWindow(const MarkerWindow&) = delete;
  MarkerWindow& operator=(const MarkerWindow&) = delete;
  HWND hwnd() const { return m_hwnd; }

 private:
  HWND m_hwnd = nullptr;
};

// Snapshot of every control's value (check state, text, list selection), by
// id, for comparing a dialog before and after an operation.
std::vector<std::pair<int, std::string>> ControlValues(const Ui& ui, HWND dialog);

}  // namespace tess::testhost
