// Settings-backed document controls: each control reads and writes its
// setting by its kind's rules, the rules the dialog's windows follow too.
#include "dialog/settings_document.h"

#include <algorithm>
#include <new>

#include "controls/control_kinds.h"
#include "controls/fill_line.h"
#include "dialog/dialog_pages.h"
#include "shell/strings.h"
#include "styles/style_table.h"

namespace tess {
namespace {

// A control bound to its setting: its kind's rules decide the line's value
// text and what a line's value makes of the setting. A text key (a signed
// spin bound to text) holds the value as decimal text.
class SettingControl final : public DocumentControl {
 public:
  SettingControl(const PageControl& control, Settings& settings, int index, int32_t* slot)
      : m_control(control), m_settings(settings), m_index(index), m_slot(slot) {}
  std::string_view Tag() const override { return DocumentTag(m_control); }
  int Number() const override { return m_control.id; }
  std::string ValueText() const override {
    int32_t shown = m_slot ? ShownValue(m_control, *m_slot)
                           : ValueOfText(m_control, m_settings.TextAt(m_index));
    return LineText(m_control, shown);
  }
  bool TakeValue(std::string_view value) override {
    int32_t taken = ValueOfText(m_control, value);
    if (m_slot)
      *m_slot = taken;
    else
      m_settings.SetTextAt(m_index, NumberValueText(taken));
    return true;
  }

 private:
  const PageControl& m_control;
  Settings& m_settings;
  int m_index;
  int32_t* m_slot;
};

// A fill button: its line is the record's (controls/fill_line.h); its
// setting mirrors the record's kind and colour.
class FillControl final : public DocumentControl {
 public:
  FillControl(const PageControl& control, FillStore& fills, int32_t* slot)
      : m_control(control), m_fills(fills), m_slot(slot) {}
  std::string_view Tag() const override { return DocumentTag(m_control); }
  int Number() const override { return m_control.id; }
  std::string_view LegacyTag() const override { return KindRules(m_control).legacy_tag; }

  std::string ValueText() const override {
    FillDescriptor record = Current();
    return FillLine(m_control.id, record).ValueText();
  }
  bool TakeValue(std::string_view value) override {
    return Take([&](FillLine& line) { return line.TakeValue(value); });
  }
  bool TakeLegacyValue(std::string_view value) override {
    return Take([&](FillLine& line) { return line.TakeLegacyValue(value); });
  }

 private:
  // The record the store holds, else a Simple fill of the setting's colour.
  FillDescriptor Current() const {
    if (const FillDescriptor* kept = m_fills.Find(m_control.id)) {
      FillDescriptor record = *kept;
      record.colour = static_cast<Colour>(*m_slot) & 0xFFFFFFu;
      return record;
    }
    FillDescriptor record;
    record.colour = static_cast<Colour>(*m_slot) & 0xFFFFFFu;
    return record;
  }
  template <class Taking>
  bool Take(Taking taking) {
    FillDescriptor record = Current();
    FillLine line(m_control.id, record);
    bool taken = taking(line);
    if (line.changed()) Store(record);
    return taken;
  }
  void Store(const FillDescriptor& record) {
    m_fills.Put(m_control.id, record);
    *m_slot = FillSettingValue(record.kind, record.colour);
  }

  const PageControl& m_control;
  FillStore& m_fills;
  int32_t* m_slot;
};

// A fountain control: its line carries the whole record in hexadecimal and
// it has no setting. A record from a document keeps this control's own path.
class FountainControl final : public DocumentControl {
 public:
  FountainControl(const PageControl& control, FountainStore& fountains)
      : m_control(control), m_fountains(fountains) {}
  std::string_view Tag() const override { return DocumentTag(m_control); }
  int Number() const override { return m_control.id; }
  std::string ValueText() const override { return FountainValueText(Current()); }
  // A payload that is not 585 bytes of hexadecimal is taken and changes nothing.
  bool TakeValue(std::string_view value) override {
    FountainRecord record = Current();
    if (TakeFountainValue(value, record)) m_fountains.Put(m_control.id, record);
    return true;
  }

 private:
  FountainRecord Current() const {
    if (const FountainRecord* kept = m_fountains.Find(m_control.id)) return *kept;
    FountainRecord record;
    BuiltInFountain(m_control.id, record);
    return record;
  }

  const PageControl& m_control;
  FountainStore& m_fountains;
};

using Controls = std::vector<std::unique_ptr<DocumentControl>>;

// The document control of a declaration stored under config key `index`
// (or, for a fountain, in its own file), or null when its kind takes no
// part or keeps no setting there.
std::unique_ptr<DocumentControl> MakeControl(Settings& settings, PageRecords& records,
                                             const PageControl& c, int index, int32_t* slot) {
  const ControlKindRules& rules = KindRules(c);
  if (DocumentTag(c).empty()) return nullptr;
  if (rules.holds_fountain) return std::make_unique<FountainControl>(c, records.fountains);
  if (rules.storage == ControlStorage::kNone) return nullptr;
  if (!slot && rules.storage != ControlStorage::kNumberOrText) return nullptr;
  if (rules.holds_fill) return std::make_unique<FillControl>(c, records.fills, slot);
  return std::make_unique<SettingControl>(c, settings, index, slot);
}

void AddMainControls(Controls& out, Settings& settings, PageRecords& records,
                     int32_t* custom_palette, uint32_t host_capabilities) {
  for (const PageControl& c : MainDialogControls(host_capabilities)) {
    int index = c.key ? FindConfigKey(c.key) : -1;
    int32_t* slot = index >= 0 ? settings.NumberSlot(index) : custom_palette;
    if (auto control = MakeControl(settings, records, c, index, slot))
      out.push_back(std::move(control));
  }
}

void AddPageControls(Controls& out, Settings& settings, PageRecords& records) {
  for (const StyleEntry& style : StyleTable())
    for (const PageControl& c : style.page) {
      int index = c.key ? StyleKeyIndex(style.number, c.key) : -1;
      if (index < 0 && !KindRules(c).holds_fountain) continue;
      int32_t* slot = index >= 0 ? settings.NumberSlot(index) : nullptr;
      if (auto control = MakeControl(settings, records, c, index, slot))
        out.push_back(std::move(control));
    }
}

}  // namespace

SettingsDocument::SettingsDocument(Settings& settings, uint32_t host_capabilities,
                                   PageRecords* records) {
  PageRecords& store = records ? *records : m_own_records;
  AddMainControls(m_controls, settings, store, &m_custom_palette, host_capabilities);
  AddPageControls(m_controls, settings, store);
  // A load looks up every line's control; hundreds of lines against hundreds
  // of controls made loading quadratic. Stable, so the first control with a
  // number keeps answering for it.
  m_by_number.reserve(m_controls.size());
  for (const auto& control : m_controls) m_by_number.emplace_back(control->Number(), control.get());
  std::stable_sort(m_by_number.begin(), m_by_number.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
}

SettingsDocument::~SettingsDocument() = default;

void SettingsDocument::ForEachControl(
    const std::function<void(const DocumentControl&)>& visit) const {
  for (const auto& control : m_controls) visit(*control);
}

DocumentControl* SettingsDocument::FindControl(int number) {
  auto found = std::lower_bound(m_by_number.begin(), m_by_number.end(), number,
                                [](const auto& entry, int n) { return entry.first < n; });
  return found != m_by_number.end() && found->first == number ? found->second : nullptr;
}

bool SaveSettingsDocument(const std::string& path, const Settings& settings,
                          uint32_t host_capabilities, Reporter& reporter,
                          const PageRecords* records) {
  try {
    // The controls bind to writable storage; saving only reads it.
    Settings copy = settings;
    PageRecords records_copy = records ? *records : PageRecords();
    SettingsDocument document(copy, host_capabilities, &records_copy);
    return SaveDocument(path, document, reporter);
  } catch (const std::bad_alloc&) {
    reporter.ShowMessage(StringText(kStrErrorCreatingDocument));
    return false;
  }
}

bool LoadDocumentIntoSettings(const std::string& path, Settings& settings,
                              uint32_t host_capabilities, Reporter& reporter,
                              PageRecords* records) {
  try {
    SettingsDocument document(settings, host_capabilities, records);
    return LoadDocument(path, document, reporter);
  } catch (const std::bad_alloc&) {
    reporter.ShowMessage(StringText(kStrErrorOpeningDocument));
    return false;
  }
}

}  // namespace tess
