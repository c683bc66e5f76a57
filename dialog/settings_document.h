// Documents over the settings object: the controls of the main dialog and of
// every style page that take part in documents, each bound to its setting the
// way the dialog binds its windows, so a document saved here loads into the
// dialog and the other way round. Values are clamped and limited on loading
// exactly where the dialog's controls limit them.
//
// Save order (the Windows dialog enumerates its children in the same order):
// the main dialog's controls in template order, 11 Delay, 10 "Tr&ue color",
// 14 "&Custom palette", 15 "&Dither", 19 "&Supercompress", 20 "Add comme&nt",
// 21 "&Mask background", 13 Palette, 58 Effect; then the pages in style-table
// order, each page's controls in declaration order. Up-down controls, labels,
// buttons and the sample write nothing.
//
// Not taking part yet: fountain, matrix and direction-picker controls (their
// records and tags come with the fill controls). Fill buttons ("Color 1:" and
// the like) travel for now as plain colours under the colour button's tag
// "CLRBTN"; once fill records exist they write "FILLBT" lines, and a fill
// control then refuses the interim "CLRBTN" lines as any control refuses a
// foreign tag, keeping its value.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/report.h"
#include "shell/document.h"
#include "shell/settings.h"
#include "styles/style.h"

namespace tess {

// Control numbers of the main dialog that take part in documents.
namespace main_dialog {
constexpr int kTruecolour = 10;
constexpr int kDelay = 11;
constexpr int kPalette = 13;
constexpr int kCustomPalette = 14;
constexpr int kDither = 15;
constexpr int kSupercompress = 19;
constexpr int kComment = 20;
constexpr int kMaskBackground = 21;
constexpr int kEffect = 58;
}  // namespace main_dialog

// The Delay spin's range text the dialog sets from the host's capability
// flags: bit 0 set gives "1,25,4", clear "1,250,40". Loading clamps the delay
// to it, as the dialog reads the spin's text when a line arrives.
std::string_view DelaySpinText(uint32_t host_capabilities);

// The tag a page control writes, or empty for kinds that take no part.
std::string_view PageControlTag(ControlKind kind);

// Every control that takes part, bound to `settings`. "&Custom palette" has no
// setting of its own: it is held here, starts unchecked, and is saved and
// loaded like the other boxes. Neither copyable nor movable, since its
// controls point into it.
class SettingsDocument final : public DocumentTarget {
 public:
  // `settings` must outlive this object. Throws std::bad_alloc only.
  SettingsDocument(Settings& settings, uint32_t host_capabilities);
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
  std::vector<std::unique_ptr<DocumentControl>> m_controls;
};

// One-call forms for hosts without a dialog. Every failure, memory included,
// is reported with the same message SaveDocument and LoadDocument give.
bool SaveSettingsDocument(const std::string& path, const Settings& settings,
                          uint32_t host_capabilities, Reporter& reporter);
bool LoadDocumentIntoSettings(const std::string& path, Settings& settings,
                              uint32_t host_capabilities, Reporter& reporter);

}  // namespace tess
