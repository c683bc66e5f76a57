// The string table itself and the load buffer over it. The table is a sorted
// constexpr array checked at compile time, so a misplaced entry fails the
// build instead of silently shadowing another text.
#include "shell/strings.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace tess {
namespace {

constexpr std::array kTable = {
    StringEntry{kStrMemoryError, "Memory error"},
    StringEntry{kStrErrorCreatingFile, "Error creating file"},
    StringEntry{kStrErrorWritingFile, "Error writing file"},
    StringEntry{kStrPaletteNameFirst + 0, "Black and white"},
    StringEntry{kStrPaletteNameFirst + 1, "Sixteen-color Windows"},
    StringEntry{kStrPaletteNameFirst + 2, "32-color orthogonal"},
    StringEntry{kStrPaletteNameFirst + 3, "64-color orthogonal"},
    StringEntry{kStrPaletteNameFirst + 4, "128-color orthogonal"},
    StringEntry{kStrPaletteNameFirst + 5, "216-color safe"},
    StringEntry{kStrPaletteNameFirst + 6, "256-color orthogonal"},
    StringEntry{kStrPaletteNameFirst + 7, "256-color with gray"},
    StringEntry{kStrPaletteNameFirst + 8, "256 gray levels"},
    StringEntry{kStrMessageCaption, "Message"},
    StringEntry{kStrErrorCreatingTask, "Error creating new task."},
    StringEntry{kStrErrorAddingImage,
                "There has been an error adding an image to the current file object."},
    StringEntry{kStrHelpError, "There has been an error displaying the Help document."},
    // The leading space is part of the product's text.
    StringEntry{kStrManualPageError,
                " There has been an error displaying the manual page. Please ensure that "
                "there is an application installed on your system capable of opening HTML "
                "documents associated with the file extension .HTM."},
    StringEntry{kStrInternalError, "Internal error"},
    StringEntry{kStrPluginNotInitialized, "This plugin could not be initialized"},
    StringEntry{kStrErrorCreatingDocument,
                "There has been an error creating the requested file."},
    StringEntry{kStrErrorOpeningDocument,
                "There has been an error opening the requested file."},
    StringEntry{kStrDocumentDamaged, "This file has been damaged."},
    StringEntry{kStrErrorLoadingFountainLibrary,
                "There has been an error loading the fountain library."},
    StringEntry{kStrErrorUpdatingFountainLibrary,
                "There has been an error updating the fountain library."},
    StringEntry{kStrNoMarkerSpace,
                "No more marker space is available. Delete an existing marker."},
    StringEntry{kStrMarkerCannotBeDeleted, "That marker cannot be deleted"},
    StringEntry{kStrStatusBuilding, "Building"},
    StringEntry{kStrStatusQuantizing, "Quantizing"},
    StringEntry{kStrStatusSupercompressing, "Supercompressing"},
    StringEntry{kStrStatusRemapping, "Remapping"},
    StringEntry{kStrEffectNotAvailable, "This effect is not available in this version."},
};

// Windows string resources have 16-bit ids and a load fills 256 characters.
constexpr bool TableIsValid() {
  for (size_t i = 0; i < kTable.size(); ++i) {
    const StringEntry& e = kTable[i];
    if (e.id < 0 || e.id > 0xFFFF || e.text.empty()) return false;
    if (e.text.size() > StringBuffer::kMaxChars) return false;
    if (i > 0 && kTable[i - 1].id >= e.id) return false;
  }
  return true;
}
static_assert(TableIsValid(), "string table must be sorted, unique, in range and short");

const StringEntry* Find(std::span<const StringEntry> table, int id) {
  auto it = std::lower_bound(table.begin(), table.end(), id,
                             [](const StringEntry& e, int key) { return e.id < key; });
  return it != table.end() && it->id == id ? &*it : nullptr;
}

}  // namespace

std::span<const StringEntry> StringTable() { return kTable; }

std::string_view StringText(int id) {
  const StringEntry* e = Find(kTable, id);
  return e ? e->text : kStringTableError;
}

std::string_view PaletteName(int choice) {
  if (choice < 0 || choice > kStrPaletteNameLast - kStrPaletteNameFirst) return kStringTableError;
  return StringText(kStrPaletteNameFirst + choice);
}

StringBuffer::StringBuffer() : m_table(kTable) {}

StringBuffer::StringBuffer(std::span<const StringEntry> table) : m_table(table) {}

const char* StringBuffer::Load(int id) {
  const StringEntry* e = Find(m_table, id);
  std::string_view text = e ? e->text : kStringTableError;
  size_t n = std::min(text.size(), kMaxChars);
  std::memcpy(m_text, text.data(), n);
  m_text[n] = '\0';
  return m_text;
}

StringBuffer& ProductStrings() {
  static StringBuffer buffer;
  return buffer;
}

}  // namespace tess
