// Documents over a dialog's windows. Saving sends kMsgWriteDocumentLine to
// every descendant window in the system's enumeration order; loading offers
// each line with kMsgReadDocumentLine to the direct child with the line's
// control number. Page controls are direct children of the main dialog, so
// what is saved always loads back. Also the open and save file dialogs.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <string>
#include <string_view>

#include "shell/document.h"

namespace tess::win32 {

class DialogDocument final : public DocumentTarget {
 public:
  explicit DialogDocument(HWND dialog) : m_dialog(dialog) {}

  void ForEachControl(const std::function<void(const DocumentControl&)>& visit) const override;
  // The child with this number when it takes part in documents, as a
  // stand-in that forwards its line by message; valid until the next call.
  DocumentControl* FindControl(int number) override;
  // Sends the dialog kMsgShowPage so its page and sample catch up.
  void DocumentLoaded() override;

 private:
  // The document core hands a control the value of a line with the
  // control's tag; the window takes whole lines, so the stand-in gives it
  // the line back in its one form.
  class ChildLine final : public DocumentControl {
   public:
    void Reset(HWND child, int number, std::string_view tag, std::string_view legacy_tag) {
      m_child = child;
      m_number = number;
      m_tag = tag;
      m_legacy_tag = legacy_tag;
    }
    std::string_view Tag() const override { return m_tag; }
    int Number() const override { return m_number; }
    std::string ValueText() const override { return {}; }
    bool TakeValue(std::string_view value) override { return Forward(m_tag, value); }
    // A fill button also takes the colour lines of older documents.
    std::string_view LegacyTag() const override { return m_legacy_tag; }
    bool TakeLegacyValue(std::string_view value) override { return Forward(m_legacy_tag, value); }

   private:
    bool Forward(std::string_view tag, std::string_view value);
    HWND m_child = nullptr;
    int m_number = 0;
    std::string_view m_tag;         // tags are constants, never a window's text
    std::string_view m_legacy_tag;
  };

  HWND m_dialog;
  ChildLine m_child;
};

// The common file dialogs with the document filter ("TS1 files" / "*.TS1",
// "All files" / "*.*") and default extension "TS1". Open starts in the
// folder of `current`; Save As offers `current` as the name. False when the
// person cancelled.
bool ChooseDocumentToOpen(HWND owner, const std::string& current, std::string& chosen);
bool ChooseDocumentToSave(HWND owner, const std::string& current, std::string& chosen);

}  // namespace tess::win32
