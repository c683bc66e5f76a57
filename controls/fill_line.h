// A fill record's document line, for every front end that keeps fills: the
// tag "FILLBT", the control number and the record's 854 bytes as 1,708
// hexadecimal digits; and taking such a line, or an older colour line, back.
//
// Invariants: a record taken from a line keeps the path it had, so a
// document never chooses where a pattern file is written; a payload that is
// not 854 bytes of hexadecimal with the magic is taken and changes nothing.
#pragma once

#include <string>
#include <string_view>

#include "fills/fill_descriptor.h"
#include "shell/document.h"

namespace tess {

// A view of `record` as control `number` of a document. The record must
// outlive the view.
class FillLine final : public DocumentControl {
 public:
  FillLine(int number, FillDescriptor& record) : m_number(number), m_record(record) {}

  std::string_view Tag() const override { return kTagFillButton; }
  int Number() const override { return m_number; }
  // Throws std::bad_alloc only.
  std::string ValueText() const override;
  // Always taken; changed() tells whether the record changed.
  bool TakeValue(std::string_view value) override;
  // Documents written before fills had records carry a plain colour: it
  // becomes a Simple fill of that colour; the rest of the record stays.
  std::string_view LegacyTag() const override { return kTagColourButton; }
  bool TakeLegacyValue(std::string_view value) override;

  bool changed() const { return m_changed; }

 private:
  int m_number;
  FillDescriptor& m_record;
  bool m_changed = false;
};

}  // namespace tess
