// The document reader over the settings-backed target, which binds every
// control of the dialog and its pages: any text loads without harm, a damaged
// one changes nothing, and what a load leaves saves to a document that loads
// to the same values (loading clamps, so the saved text is the fixed point).
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

std::string_view Text(const tess::MemorySink& sink) {
  return {reinterpret_cast<const char*>(sink.bytes().data()), sink.bytes().size()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tess::Settings settings;
  tess::PageRecords records;
  tess::SettingsDocument document(settings, kCapabilities, &records);
  const tess::DocumentStatus status = tess::ReadDocument(FuzzText(data, size), document);
  if (status == tess::DocumentStatus::kDamaged) {
    FUZZ_CHECK(settings == tess::Settings());
    FUZZ_CHECK(records.fills.records().empty() && records.fountains.records().empty());
  }

  tess::MemorySink saved;
  FUZZ_CHECK(tess::WriteDocument(saved, document));
  tess::Settings again;
  tess::PageRecords again_records;
  tess::SettingsDocument again_document(again, kCapabilities, &again_records);
  FUZZ_CHECK(tess::ReadDocument(Text(saved), again_document) == tess::DocumentStatus::kLoaded);
  tess::MemorySink resaved;
  FUZZ_CHECK(tess::WriteDocument(resaved, again_document));
  FUZZ_CHECK(resaved.bytes() == saved.bytes());
  return 0;
}
