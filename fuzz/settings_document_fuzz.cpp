// The document reader over the settings-backed target, which binds every
// control of the dialog and its pages by its kind's rules: any text loads
// without harm, a damaged one changes nothing, and what a load leaves saves
// to a document that loads to the same values (loading clamps, so the saved
// text is the fixed point). Slow: a save writes every control of every page.
#include <string_view>

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

std::string_view Text(const tess::MemorySink& sink) {
  return {reinterpret_cast<const char*>(sink.bytes().data()), sink.bytes().size()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static Bound first;
  static Bound again;
  tess::SettingsDocument& document = first.Fresh();
  if (tess::ReadDocument(FuzzText(data, size), document) == tess::DocumentStatus::kDamaged) {
    FUZZ_CHECK(first.settings == tess::Settings());
    FUZZ_CHECK(first.records.fills.records().empty() && first.records.fountains.records().empty());
    FUZZ_CHECK(!document.custom_palette());
    return 0;
  }

  tess::MemorySink saved;
  FUZZ_CHECK(tess::WriteDocument(saved, document));
  tess::SettingsDocument& loaded = again.Fresh();
  FUZZ_CHECK(tess::ReadDocument(Text(saved), loaded) == tess::DocumentStatus::kLoaded);
  tess::MemorySink resaved;
  FUZZ_CHECK(tess::WriteDocument(resaved, loaded));
  FUZZ_CHECK(resaved.bytes() == saved.bytes());
  return 0;
}
