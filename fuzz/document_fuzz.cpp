// The document reader's framing over a target of plain controls, one per
// tag, that keep the value text they are given: any text loads without harm,
// a damaged one delivers nothing, every value taken is one line's, and a
// saved document loads back to the same values.
#include <string>
#include <string_view>
#include <vector>

#include "base/byte_sink.h"
#include "fuzz/fuzz_check.h"
#include "shell/document.h"

namespace {

class TextControl final : public tess::DocumentControl {
 public:
  TextControl(std::string_view tag, int number, std::string_view legacy = {})
      : m_tag(tag), m_legacy(legacy), m_number(number) {}
  std::string_view Tag() const override { return m_tag; }
  int Number() const override { return m_number; }
  std::string ValueText() const override { return value; }
  bool TakeValue(std::string_view text) override {
    FUZZ_CHECK(text.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos);
    FUZZ_CHECK(text.size() <= tess::kDocumentLineMax);
    value = text;
    ++taken;
    return true;
  }
  std::string_view LegacyTag() const override { return m_legacy; }
  bool TakeLegacyValue(std::string_view text) override { return TakeValue(text); }

  std::string value;
  int taken = 0;

 private:
  std::string_view m_tag;
  std::string_view m_legacy;
  int m_number;
};

class TextTarget final : public tess::DocumentTarget {
 public:
  TextTarget() {
    m_controls.emplace_back(tess::kTagSpin, 1);
    m_controls.emplace_back(tess::kTagCheckBox, 2);
    m_controls.emplace_back(tess::kTagTextField, 3);
    m_controls.emplace_back(tess::kTagComboBox, 4);
    m_controls.emplace_back(tess::kTagFillButton, 5, tess::kTagColourButton);
    m_controls.emplace_back(tess::kTagFountain, 6);
    m_controls.emplace_back(tess::kTagColourButton, 7);
    m_controls.emplace_back(tess::kTagSignedSpin, 11);
  }
  void ForEachControl(const std::function<void(const tess::DocumentControl&)>& visit) const override {
    for (const TextControl& c : m_controls) visit(c);
  }
  tess::DocumentControl* FindControl(int number) override {
    for (TextControl& c : m_controls)
      if (c.Number() == number) return &c;
    return nullptr;
  }
  const std::vector<TextControl>& controls() const { return m_controls; }

 private:
  std::vector<TextControl> m_controls;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  TextTarget target;
  if (tess::ReadDocument(FuzzText(data, size), target) == tess::DocumentStatus::kDamaged) {
    for (const TextControl& c : target.controls()) FUZZ_CHECK(c.taken == 0);
    return 0;
  }

  tess::MemorySink saved;
  FUZZ_CHECK(tess::WriteDocument(saved, target));
  const std::string_view text(reinterpret_cast<const char*>(saved.bytes().data()), saved.bytes().size());
  TextTarget again;
  FUZZ_CHECK(tess::ReadDocument(text, again) == tess::DocumentStatus::kLoaded);
  for (size_t i = 0; i < target.controls().size(); ++i) {
    // A value is saved as its line carries it: from its first "=" and the
    // spaces after it onwards, a value starting so loses them.
    const std::string& value = target.controls()[i].value;
    const size_t kept = value.find_first_not_of("= ");
    FUZZ_CHECK(again.controls()[i].value == (kept == std::string::npos ? "" : value.substr(kept)));
  }
  return 0;
}
