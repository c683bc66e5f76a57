// The portable half of the plug-in's two exports: the description record the
// host lists the plug-in by, and the module folder derived from the DLL's own
// path. The Windows exports in plugin/win32/ only add the calling convention
// and the system calls.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tess {

// The menu name and the one-line notice beside it. The notice is Windows-1252
// text: 0xA9 is the copyright sign and 0x96 the en dash.
inline constexpr std::string_view kPluginName = "Tessarine #1";
inline constexpr std::string_view kPluginNotice =
    "Tessarine #1 Plugin \xA9 Brindlewood \x96 seamlessly tiling animated backgrounds";

// Fills a description record the host allocated: keeps the size word the host
// wrote, zeroes exactly that many bytes, writes the size back, the version,
// the name at byte 8 and the notice at byte 269. The strings are written
// whatever the size says: the host promises room for them. Returns 1.
int32_t FillDescriptionRecord(uint8_t* record);

// The folder of a module path, split and joined as the C runtime's path
// splitter does (drive "X:", then everything up to the last separator), with a
// backslash appended unless it is empty or already ends in one.
std::string ModuleFolderOf(std::string_view module_path);

}  // namespace tess
