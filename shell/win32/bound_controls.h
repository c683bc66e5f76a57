// The kinds of bound control: standard controls subclassed with the
// behaviour of their kind and tied to the setting they edit, so the dialog
// never keeps a second copy of a value. Each kind is also a DocumentControl
// and answers the document messages: kMsgWriteDocumentLine hands the control
// to the writer, which formats its line; kMsgReadDocumentLine offers it a
// line, and it returns 1 when it took it. A control that is not bound ignores
// both, as any window does.
//
// Invariants: a control's subclass is removed when its object goes or its
// window is destroyed, whichever is first; the setting's address also sits in
// the window's user-data slot; no exception leaves a subclass procedure.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "base/report.h"
#include "controls/control_kinds.h"
#include "image/image.h"
#include "shell/document.h"
#include "shell/settings.h"
#include "platform/win32/control_messages.h"
#include "platform/win32/win32_handles.h"

namespace tess::win32 {

// ---------------------------------------------------------------- controls

class BoundControl : public DocumentControl {
 public:
  ~BoundControl() override;
  BoundControl(const BoundControl&) = delete;
  BoundControl& operator=(const BoundControl&) = delete;

  // Subclasses the window and shows the setting in it. False when the system
  // refused the subclass.
  bool Attach(HWND hwnd);
  HWND hwnd() const { return m_subclass.hwnd(); }

  int Number() const override;

  // Takes the control's value into its setting after notification `code`.
  // True when the setting may have changed.
  virtual bool OnCommand(UINT code) = 0;
  // Puts the setting's value into the window.
  virtual void ShowSetting() = 0;
  // Owner-drawn kinds paint here.
  virtual void Draw(const DRAWITEMSTRUCT&) {}
  // Spin fields: the sample waits for a pause in typing.
  virtual bool IsSpinField() const { return false; }
  // Kinds without a document tag ignore the document messages.
  bool InDocuments() const { return TakesPartInDocuments(m_control); }
  std::string_view Tag() const override { return DocumentTag(m_control); }

  const PageControl& control() const { return m_control; }
  // The main dialog's Delay takes its range from the host after binding.
  void SetRange(const SpinRange& range) { m_control.range = range; }

 protected:
  BoundControl(Reporter& reporter, const PageControl& control, void* setting)
      : m_control(control), m_reporter(reporter), m_setting(setting) {}

  PageControl m_control;  // the declaration whose kind's rules this follows

 private:
  static LRESULT CALLBACK Procedure(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam,
                                    UINT_PTR id, DWORD_PTR data);
  LRESULT OnMessage(UINT message, WPARAM wparam, LPARAM lparam);

  Reporter& m_reporter;
  void* m_setting;
  Subclass m_subclass;
};

// "CHKBOX": 1 when checked.
class CheckBoxControl final : public BoundControl {
 public:
  CheckBoxControl(Reporter& reporter, const PageControl& control, int32_t* slot)
      : BoundControl(reporter, control, slot), m_slot(slot) {}
  std::string ValueText() const override;
  bool TakeValue(std::string_view value) override;
  bool OnCommand(UINT code) override;
  void ShowSetting() override;
  bool Checked() const;

 private:
  int32_t* m_slot;
};

// "SPNBTN": a number field with its up-down (the field's id + 10000); the
// setting takes the value clamped to the declared range. Direction pickers
// are edited this way until their own controls exist; their kind has no tag
// yet, so they take no part in documents.
class SpinControl final : public BoundControl {
 public:
  SpinControl(Reporter& reporter, const PageControl& control, int32_t* slot)
      : BoundControl(reporter, control, slot), m_slot(slot) {}
  std::string ValueText() const override;
  bool TakeValue(std::string_view value) override;
  bool OnCommand(UINT code) override;
  void ShowSetting() override;
  bool IsSpinField() const override { return true; }

 private:
  int32_t* m_slot;
};

// "SPNSGN": as the spin, but a text setting takes the clamped value as
// decimal text (a number setting takes the number).
class SignedSpinControl final : public BoundControl {
 public:
  SignedSpinControl(Reporter& reporter, const PageControl& control, Settings& settings, int index)
      : BoundControl(reporter, control, &settings), m_settings(settings), m_index(index),
        m_slot(settings.NumberSlot(index)) {}
  std::string ValueText() const override;
  bool TakeValue(std::string_view value) override;
  bool OnCommand(UINT code) override;
  void ShowSetting() override;
  bool IsSpinField() const override { return true; }

 private:
  void Store(int32_t value);
  Settings& m_settings;
  int m_index;
  int32_t* m_slot;
};

// "CMBBOX": a drop-down list whose setting is the selected index (-1 for
// none). Takes the selection when the list closes up, or when the keyboard
// changes it while the list is closed.
class DropDownControl final : public BoundControl {
 public:
  DropDownControl(Reporter& reporter, const PageControl& control, int32_t* slot)
      : BoundControl(reporter, control, slot), m_slot(slot) {}
  std::string ValueText() const override;
  bool TakeValue(std::string_view value) override;
  bool OnCommand(UINT code) override;
  void ShowSetting() override;
  int Selection() const;

 private:
  int32_t* m_slot;
};

// Asks someone (the host) for a new colour; false when none was chosen.
using ColourChooser = std::function<bool(Colour& colour)>;

// "CLRBTN": an owner-drawn button showing its colour, which its window text
// holds as an unsigned decimal number. A click asks the chooser.
class ColourButtonControl final : public BoundControl {
 public:
  ColourButtonControl(Reporter& reporter, const PageControl& control, int32_t* slot,
                      ColourChooser chooser)
      : BoundControl(reporter, control, slot), m_slot(slot), m_chooser(std::move(chooser)) {}
  std::string ValueText() const override;
  bool TakeValue(std::string_view value) override;
  bool OnCommand(UINT code) override;
  void ShowSetting() override;
  void Draw(const DRAWITEMSTRUCT& item) override;
  Colour Value() const;

 private:
  void Show(uint32_t colour);
  int32_t* m_slot;
  ColourChooser m_chooser;
};

}  // namespace tess::win32
