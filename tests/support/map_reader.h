// A page reader over a plain map from control id to value, for tests that
// need a page without settings behind it. Unknown ids read as 0; a slot
// without a record in `fills` paints a Simple fill of its value.
#pragma once

#include <map>

#include "styles/style.h"

namespace tess::testing {

class MapReader final : public ParamReader {
 public:
  std::map<int, int32_t> values;
  std::map<int, FillDescriptor> fills;
  int32_t Spin(int id) const override { return Get(id); }
  bool Checked(int id) const override { return Get(id) != 0; }
  Colour ColourValue(int id) const override { return static_cast<Colour>(Get(id)); }
  int32_t Selection(int id) const override { return Get(id); }
  int32_t Picker(int id) const override { return Get(id); }
  FillDescriptor Fill(int id) const override {
    auto it = fills.find(id);
    return it == fills.end() ? ParamReader::Fill(id) : it->second;
  }

 private:
  int32_t Get(int id) const {
    auto it = values.find(id);
    return it == values.end() ? 0 : it->second;
  }
};

}  // namespace tess::testing
