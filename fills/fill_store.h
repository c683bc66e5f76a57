// The records of the controls that keep one beside the settings (fills,
// fountains), by control id: what the command line loads from and saves to
// the per-control pattern files, and what the settings reader and the
// settings document read and write. A control without a record here paints
// its defaults (a Simple fill of its setting's colour, a built-in or default
// fountain).
#pragma once

#include <map>

#include "fills/fill_descriptor.h"
#include "fills/fountain.h"

namespace tess {

template <class Record>
class RecordStore {
 public:
  // The record of control `id`, or null.
  const Record* Find(int id) const {
    auto it = m_records.find(id);
    return it == m_records.end() ? nullptr : &it->second;
  }
  Record* Find(int id) {
    auto it = m_records.find(id);
    return it == m_records.end() ? nullptr : &it->second;
  }
  // Adds or replaces the record of control `id`. Throws std::bad_alloc only.
  Record& Put(int id, const Record& record) {
    return m_records.insert_or_assign(id, record).first->second;
  }

  const std::map<int, Record>& records() const { return m_records; }

 private:
  std::map<int, Record> m_records;
};

using FillStore = RecordStore<FillDescriptor>;
using FountainStore = RecordStore<FountainRecord>;

// Everything the pages keep beside the settings.
struct PageRecords {
  FillStore fills;
  FountainStore fountains;
};

}  // namespace tess
