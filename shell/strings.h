// The product's message texts, compiled once and shared by every front end.
// Ids below 2000 are the string-table numbers the product has always used (6,
// 10, 11, palette names 1600-1608); texts that were shown without a number get
// ids 2000-2099. The table is sorted by id with no duplicates, so the Windows
// resource string table can be generated from it one entry per line.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace tess {

// Numbered strings.
inline constexpr int kStrMemoryError = 6;
inline constexpr int kStrErrorCreatingFile = 10;
inline constexpr int kStrErrorWritingFile = 11;
inline constexpr int kStrPaletteNameFirst = 1600;  // + palette choice 0..8
inline constexpr int kStrPaletteNameLast = 1608;

// Message texts that had no number of their own: 2000-2099.
inline constexpr int kStrFirstUnnumbered = 2000;
inline constexpr int kStrMessageCaption = 2000;
inline constexpr int kStrErrorCreatingTask = 2001;
inline constexpr int kStrErrorAddingImage = 2002;
inline constexpr int kStrHelpError = 2003;
inline constexpr int kStrManualPageError = 2004;
inline constexpr int kStrInternalError = 2005;
inline constexpr int kStrPluginNotInitialized = 2006;
inline constexpr int kStrErrorCreatingDocument = 2007;
inline constexpr int kStrErrorOpeningDocument = 2008;
inline constexpr int kStrDocumentDamaged = 2009;
inline constexpr int kStrErrorLoadingFountainLibrary = 2010;
inline constexpr int kStrErrorUpdatingFountainLibrary = 2011;
inline constexpr int kStrNoMarkerSpace = 2012;
inline constexpr int kStrMarkerCannotBeDeleted = 2013;
// Build phases shown in the host's status line.
inline constexpr int kStrStatusBuilding = 2020;
inline constexpr int kStrStatusQuantizing = 2021;
inline constexpr int kStrStatusSupercompressing = 2022;
inline constexpr int kStrStatusRemapping = 2023;
// Effects that are listed but cannot render in this version.
inline constexpr int kStrEffectNotAvailable = 2030;
inline constexpr int kStrLastUnnumbered = 2099;

// What a load yields when the id is not in the table.
inline constexpr std::string_view kStringTableError =
    "String table error - this application may be damaged";

struct StringEntry {
  int id;
  std::string_view text;
};

// Every string of the product, ascending by id.
std::span<const StringEntry> StringTable();

// The text of `id` in the product table, or kStringTableError when there is
// none. The view stays valid for the life of the process.
std::string_view StringText(int id);

// The name of fixed palette `choice` (0..8); kStringTableError outside.
std::string_view PaletteName(int choice);

// One load buffer: every Load overwrites the previous text, so a caller uses
// or copies the result before the next Load on the same buffer. Texts longer
// than kMaxChars are cut, as a Windows string load into 256 characters would.
class StringBuffer {
 public:
  static constexpr size_t kCapacity = 256;
  static constexpr size_t kMaxChars = kCapacity - 1;

  // Loads from the product table, or from `table` (sorted by id) in tests.
  StringBuffer();
  explicit StringBuffer(std::span<const StringEntry> table);

  // Copies the text of `id` (or kStringTableError) into the buffer and
  // returns it, zero-terminated.
  const char* Load(int id);
  const char* c_str() const { return m_text; }
  std::string_view view() const { return m_text; }

 private:
  std::span<const StringEntry> m_table;
  char m_text[kCapacity] = {};
};

// The product's one shared load buffer. Owned by the shell for the whole
// process; used only on the host's user-interface thread.
StringBuffer& ProductStrings();

}  // namespace tess
