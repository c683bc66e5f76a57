// Record constructors and the in-process image lending of HostService.
#include "plugin/host_interface.h"

namespace tess {

TaskRecord MakeTaskRecord() {
  TaskRecord r{};
  r.size = sizeof(TaskRecord);
  r.version = kHostInterfaceVersion;
  return r;
}

ImageRecord MakeImageRecord() {
  ImageRecord r{};
  r.size = sizeof(ImageRecord);
  r.version = kHostInterfaceVersion;
  return r;
}

ColourPickerRecord MakeColourPickerRecord() {
  ColourPickerRecord r{};
  r.size = sizeof(ColourPickerRecord);
  r.version = kHostInterfaceVersion;
  return r;
}

// In process the host shares the engine's memory, so the block itself is lent.
HostHandle HostService::LendImage(const ImageBlock& image) {
  return image ? reinterpret_cast<HostHandle>(&image) : 0;
}

void HostService::ReturnImage(HostHandle) {}

}  // namespace tess
