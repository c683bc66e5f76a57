// HostService over the host record PLUGINDoBuild receives: calls go to the
// record's service function, and images are lent to the host as movable
// global-memory copies, which the host reads during the add-image call only.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include "plugin/host_interface.h"

namespace tess::win32 {

class HostRecordService final : public HostService {
 public:
  // `record` may be null or lack a service function: every call then
  // returns 0, as a refusing host would.
  explicit HostRecordService(const HostRecord* record) : m_record(record) {}

  bool HasServiceFunction() const { return m_record && m_record->service != 0; }
  uint32_t Capabilities() const { return m_record ? m_record->capabilities : 0; }

  int32_t Call(HostHandle object, int32_t command, intptr_t param, void* data) override;
  HostHandle LendImage(const ImageBlock& image) override;
  void ReturnImage(HostHandle handle) override;

 private:
  const HostRecord* m_record;
};

}  // namespace tess::win32
