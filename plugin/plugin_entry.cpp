// Description record and module folder. The record is written field by field
// at the offsets the host reads; the host-interface header pins those offsets.
#include "plugin/plugin_entry.h"

#include <cstddef>
#include <cstring>

#include "base/bytes.h"
#include "plugin/host_interface.h"

namespace tess {
namespace {

// An unbounded, zero-terminated copy: the host sized the record.
void PutString(uint8_t* at, std::string_view text) {
  std::memcpy(at, text.data(), text.size());
  at[text.size()] = 0;
}

bool IsSeparator(char c) { return c == '\\' || c == '/'; }

}  // namespace

int32_t FillDescriptionRecord(uint8_t* record) {
  const uint32_t size = get_u32le(record);
  std::memset(record, 0, size);
  put_u32le(record + offsetof(DescriptionRecord, size), size);
  put_u32le(record + offsetof(DescriptionRecord, version), kHostInterfaceVersion);
  PutString(record + offsetof(DescriptionRecord, name), kPluginName);
  PutString(record + offsetof(DescriptionRecord, notice), kPluginNotice);
  return 1;
}

std::string ModuleFolderOf(std::string_view module_path) {
  const size_t drive = module_path.size() >= 2 && module_path[1] == ':' ? 2 : 0;
  size_t end = drive;
  for (size_t i = drive; i < module_path.size(); ++i)
    if (IsSeparator(module_path[i])) end = i + 1;
  std::string folder(module_path.substr(0, end));
  if (!folder.empty() && folder.back() != '\\') folder += '\\';
  return folder;
}

}  // namespace tess
