// Calls into the host and global-memory image copies.
#include "shell/win32/host_record_service.h"

#include <cstring>

namespace tess::win32 {

int32_t HostRecordService::Call(HostHandle object, int32_t command, intptr_t param, void* data) {
  if (!HasServiceFunction()) return 0;
  auto function = reinterpret_cast<HostServiceFunction>(m_record->service);
  return function(object, command, param, data);
}

HostHandle HostRecordService::LendImage(const ImageBlock& image) {
  if (!image) return 0;
  // Shareable as well as movable: the host may hand the block on while it
  // adds the image.
  HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT | GMEM_DDESHARE, image.size());
  if (!block) return 0;
  void* bytes = GlobalLock(block);
  if (!bytes) {
    GlobalFree(block);
    return 0;
  }
  std::memcpy(bytes, image.data(), image.size());
  GlobalUnlock(block);
  return reinterpret_cast<HostHandle>(block);
}

void HostRecordService::ReturnImage(HostHandle handle) {
  if (handle) GlobalFree(reinterpret_cast<HGLOBAL>(handle));
}

}  // namespace tess::win32
