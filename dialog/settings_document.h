// Documents over the settings object: the controls of the main dialog and of
// every style page that take part in documents, each bound to its setting the
// way the dialog binds its windows, so a document saved here loads into the
// dialog and the other way round. Values are clamped and limited on loading
// exactly where the dialog's controls limit them.
//
// Save order (the Windows dialog enumerates its children in the same order):
// the main dialog's controls in template order (MainDialogControls), then the
// pages in style-table order, each page's controls in declaration order.
// Up-down controls, labels, buttons and the sample write nothing; which kinds
// take part, and with which tag, is the kinds' table's to say.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/report.h"
#include "fills/fill_store.h"
#include "shell/document.h"
#include "shell/settings.h"
#include "styles/style.h"

namespace tess {

// Every control that takes part, bound to `settings`. "&Custom palette" has no
// setting of its own: it is held here, starts unchecked, and is saved and
// loaded like the other boxes. Neither copyable nor movable, since its
// controls point into it.
class SettingsDocument final : public DocumentTarget {
 public:
  // `settings` (and `records`, when given) must outlive this object. Fill and
  // fountain controls keep their records in `records`, or in a store of
  // their own when none is given, so a load still brings each fill slot's
  // kind and colour into the settings. Throws std::bad_alloc only.
  SettingsDocument(Settings& settings, uint32_t host_capabilities, PageRecords* records = nullptr);
  ~SettingsDocument() override;
  SettingsDocument(const SettingsDocument&) = delete;
  SettingsDocument& operator=(const SettingsDocument&) = delete;

  void ForEachControl(const std::function<void(const DocumentControl&)>& visit) const override;
  DocumentControl* FindControl(int number) override;

  bool custom_palette() const { return m_custom_palette != 0; }
  void set_custom_palette(bool on) { m_custom_palette = on ? 1 : 0; }

  // The number of controls taking part, for tests and diagnostics.
  size_t size() const { return m_controls.size(); }

 private:
  int32_t m_custom_palette = 0;
  PageRecords m_own_records;
  std::vector<std::unique_ptr<DocumentControl>> m_controls;
  std::vector<std::pair<int, DocumentControl*>> m_by_number;  // sorted by number
};

// One-call forms for hosts without a dialog. Every failure, memory included,
// is reported with the same message SaveDocument and LoadDocument give.
bool SaveSettingsDocument(const std::string& path, const Settings& settings,
                          uint32_t host_capabilities, Reporter& reporter,
                          const PageRecords* records = nullptr);
bool LoadDocumentIntoSettings(const std::string& path, Settings& settings,
                              uint32_t host_capabilities, Reporter& reporter,
                              PageRecords* records = nullptr);

}  // namespace tess
