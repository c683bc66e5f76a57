// A map by control id; records are copied in, so a store never points into
// a caller's storage.
#include "fills/fill_store.h"

namespace tess {

const FillDescriptor* FillStore::Find(int id) const {
  auto it = m_records.find(id);
  return it == m_records.end() ? nullptr : &it->second;
}

FillDescriptor* FillStore::Find(int id) {
  auto it = m_records.find(id);
  return it == m_records.end() ? nullptr : &it->second;
}

FillDescriptor& FillStore::Put(int id, const FillDescriptor& record) {
  return m_records.insert_or_assign(id, record).first->second;
}

}  // namespace tess
