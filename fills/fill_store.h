// The fill records of the "Color N" controls, by control id: what the
// command line loads from and saves to the per-control pattern files, and
// what the settings reader and the settings document read and write beside
// the settings. A control without a record here paints a Simple fill of its
// setting's colour.
#pragma once

#include <map>

#include "fills/fill_descriptor.h"

namespace tess {

class FillStore {
 public:
  // The record of control `id`, or null.
  const FillDescriptor* Find(int id) const;
  FillDescriptor* Find(int id);
  // Adds or replaces the record of control `id`. Throws std::bad_alloc only.
  FillDescriptor& Put(int id, const FillDescriptor& record);

  const std::map<int, FillDescriptor>& records() const { return m_records; }

 private:
  std::map<int, FillDescriptor> m_records;
};

}  // namespace tess
