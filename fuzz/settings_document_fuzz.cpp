// The document reader over the settings-backed target, which binds every
// control of the dialog and its pages by its kind's rules: any text loads
// without harm, a damaged one changes nothing, and the controls a load
// reached save to a document that loads to the same settings and saves the
// same again (loading clamps, so the saved text is the fixed point). Only
// the reached controls are saved: the whole dialog's hundreds of lines, fill
// records among them, made every input cost the same large save.
#include <algorithm>
#include <functional>
#include <string_view>
#include <vector>

#include "base/byte_sink.h"
#include "dialog/settings_document.h"
#include "fills/fill_store.h"
#include "fuzz/fuzz_check.h"
#include "shell/document.h"
#include "shell/settings.h"

namespace {

// Capability bit 0 set, as the command-line host and most hosts have it.
constexpr uint32_t kCapabilities = 1;

// Building the target binds hundreds of controls, so each of the two is
// built once and put back to the defaults before every input.
struct Bound {
  tess::Settings settings;
  tess::PageRecords records;
  tess::SettingsDocument document{settings, kCapabilities, &records};

  tess::SettingsDocument& Fresh() {
    settings.ResetToDefaults();
    records = tess::PageRecords();
    document.set_custom_palette(false);
    return document;
  }
};

// The target seen through the controls a load reaches: saving it writes
// those controls alone, in the target's order.
class Reached final : public tess::DocumentTarget {
 public:
  explicit Reached(tess::SettingsDocument& inner) : m_inner(inner) {}

  void ForEachControl(const std::function<void(const tess::DocumentControl&)>& visit) const override {
    m_inner.ForEachControl([&](const tess::DocumentControl& control) {
      if (std::find(m_reached.begin(), m_reached.end(), &control) != m_reached.end()) visit(control);
    });
  }

  tess::DocumentControl* FindControl(int number) override {
    tess::DocumentControl* control = m_inner.FindControl(number);
    if (control && std::find(m_reached.begin(), m_reached.end(), control) == m_reached.end())
      m_reached.push_back(control);
    return control;
  }

 private:
  tess::SettingsDocument& m_inner;
  std::vector<const tess::DocumentControl*> m_reached;
};

std::string_view Text(const tess::MemorySink& sink) {
  return {reinterpret_cast<const char*>(sink.bytes().data()), sink.bytes().size()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static Bound first;
  static Bound again;
  static const bool whole_dialog_round_trips = [] {
    // Every control at its default, saved whole, loads and saves the same.
    tess::MemorySink saved, resaved;
    FUZZ_CHECK(tess::WriteDocument(saved, first.Fresh()));
    FUZZ_CHECK(tess::ReadDocument(Text(saved), again.Fresh()) == tess::DocumentStatus::kLoaded);
    FUZZ_CHECK(tess::WriteDocument(resaved, again.document));
    return resaved.bytes() == saved.bytes();
  }();
  FUZZ_CHECK(whole_dialog_round_trips);

  Reached reached(first.Fresh());
  if (tess::ReadDocument(FuzzText(data, size), reached) == tess::DocumentStatus::kDamaged) {
    FUZZ_CHECK(first.settings == tess::Settings());
    FUZZ_CHECK(first.records.fills.records().empty() && first.records.fountains.records().empty());
    FUZZ_CHECK(!first.document.custom_palette());
    return 0;
  }

  tess::MemorySink saved;
  FUZZ_CHECK(tess::WriteDocument(saved, reached));
  Reached reloaded(again.Fresh());
  FUZZ_CHECK(tess::ReadDocument(Text(saved), reloaded) == tess::DocumentStatus::kLoaded);
  FUZZ_CHECK(again.settings == first.settings);
  FUZZ_CHECK(again.document.custom_palette() == first.document.custom_palette());
  tess::MemorySink resaved;
  FUZZ_CHECK(tess::WriteDocument(resaved, reloaded));
  FUZZ_CHECK(resaved.bytes() == saved.bytes());
  return 0;
}
