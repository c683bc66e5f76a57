// Fill lines. The colour of an older line is read the way a colour button
// reads its text, so both kinds of line mean the same colour.
#include "controls/fill_line.h"

#include "controls/control_kinds.h"

namespace tess {

std::string FillLine::ValueText() const { return HexEncode(SerializeFillDescriptor(m_record)); }

bool FillLine::TakeValue(std::string_view value) {
  Buffer<uint8_t> bytes = HexDecode(value, kFillDescriptorSize);
  FillDescriptor taken;
  if (!bytes || !ParseFillDescriptor(bytes.get(), kFillDescriptorSize, taken)) return true;
  // The whole path field stays the record's own: a foreign pattern file's
  // path may lack its NUL, and would not fit back through SetFillPath.
  taken.path = m_record.path;
  taken.press_flags &= ~(kFillSwatchPressed | kFillArrowPressed);
  m_record = taken;
  m_changed = true;
  return true;
}

bool FillLine::TakeLegacyValue(std::string_view value) {
  m_record.kind = kFillSimple;
  m_record.colour = ColourTextValue(value) & 0xFFFFFFu;
  m_changed = true;
  return true;
}

}  // namespace tess
