// The fountain library: saved fountains in two files in the plug-in's data
// folder, "FountainLibrary.fln" for open fountains (selector 1) and
// "FountainLibrary.fll" for the rest. A library keeps four fields of each
// fountain and moves them byte for byte. Writers replace a file only once
// the new one is whole, so a failure or a crash leaves the old library.
//
// Sections: file layout · entries · the in-memory library · files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/alloc.h"
#include "base/byte_sink.h"
#include "fills/fountain.h"
#include "platform/platform.h"

namespace tess {

// ---------------------------------------------------------------- file layout

// A library file is an 80-byte header and then `count` 336-byte entries,
// little-endian, nothing else; entry i starts at 80 + 336 * i.
//
// Header:
//   off  size  field
//     0     8  magic "BRNDFLHH", no terminator
//     8     4  created   u32 seconds since 1 January 1970 by the local clock
//                        (LibraryTimeStamp) when the file was first written
//    12     4  count     u32 number of entries
//    16     4  selector  u32 the library selector the file was made for
//    20    60  zero
//
// Entry (note the order: the marker table before the end colour, although
// the fountain record has them the other way round):
//   off  size  field
//     0     8  magic "BRNDFLHE", no terminator
//     8     4  marker_count  the fountain's bytes 289..292
//    12     4  start_colour  its bytes 293..296
//    16   256  markers       its bytes 301..556
//   272     4  end_colour    its bytes 297..300
//   276    60  zero
inline constexpr size_t kLibraryHeaderSize = 80;
inline constexpr size_t kLibraryEntrySize = 336;
inline constexpr std::string_view kLibraryHeaderMagic = "BRNDFLHH";
inline constexpr std::string_view kLibraryEntryMagic = "BRNDFLHE";

inline constexpr size_t kLibraryCreatedOffset = 8;
inline constexpr size_t kLibraryCountOffset = 12;
inline constexpr size_t kLibrarySelectorOffset = 16;

inline constexpr size_t kLibraryMarkerCountOffset = 8;
inline constexpr size_t kLibraryStartColourOffset = 12;
inline constexpr size_t kLibraryMarkersOffset = 16;
inline constexpr size_t kLibraryEndColourOffset = 272;

inline constexpr std::string_view kOpenFountainLibraryName = "FountainLibrary.fln";
inline constexpr std::string_view kClosedFountainLibraryName = "FountainLibrary.fll";

// Selector 1 (an open fountain's mode) picks the ".fln" file, any other the ".fll".
std::string_view FountainLibraryName(uint32_t selector);
// PluginDataPath of that name.
std::string FountainLibraryPath(Platform& platform, uint32_t selector);

// The local time as seconds since 1970-01-01 00:00, counted as if it were
// UTC (so the zone never enters), modulo 2^32.
uint32_t LibraryTimeStamp(const LocalTime& now);

struct LibraryHeader {
  uint32_t created = 0;
  uint32_t count = 0;
  uint32_t selector = 0;
};

// ---------------------------------------------------------------- entries

// The four fields a library keeps, as stored: nothing is clamped or masked
// here (the renderer reads at most 64 markers whatever the count says).
struct FountainLibraryEntry {
  uint32_t marker_count = 0;
  Colour start_colour = 0;
  FountainMarkers markers{};
  Colour end_colour = 0;
};

FountainLibraryEntry LibraryEntryOf(const FountainRecord& fountain);
// Copies the four fields into `fountain` and leaves the rest alone: what
// choosing an entry does to the editor's fountain.
void ApplyLibraryEntry(const FountainLibraryEntry& entry, FountainRecord& fountain);
// A record to render the entry's preview from: the defaults with `selector`
// as the mode and the four fields.
FountainRecord LibraryEntryFountain(const FountainLibraryEntry& entry, uint32_t selector);

bool WriteLibraryHeader(ByteSink& sink, const LibraryHeader& header);
bool WriteLibraryEntry(ByteSink& sink, const FountainLibraryEntry& entry);
// False unless 80 bytes with the magic are given.
bool ReadLibraryHeader(const uint8_t* data, size_t size, LibraryHeader& header);
// False unless 336 bytes with the magic are given.
bool ReadLibraryEntry(const uint8_t* data, size_t size, FountainLibraryEntry& entry);

// ---------------------------------------------------------------- the in-memory library

// The entries in the order the user sees and saves them. Movable, not
// copyable; growing fails softly.
class FountainLibrary {
 public:
  FountainLibrary() = default;
  // The library moved from is left empty.
  FountainLibrary(FountainLibrary&& other) noexcept;
  FountainLibrary& operator=(FountainLibrary&& other) noexcept;
  FountainLibrary(const FountainLibrary&) = delete;
  FountainLibrary& operator=(const FountainLibrary&) = delete;

  size_t size() const { return m_size; }
  bool empty() const { return m_size == 0; }
  // The caller keeps index < size().
  const FountainLibraryEntry& operator[](size_t index) const { return m_entries[index]; }

  // False, with the library unchanged, when memory is short.
  bool Append(const FountainLibraryEntry& entry);

  // Removes entry `index`. Returns the index to select afterwards: the same
  // one, or the last when it no longer exists; nothing when the library is
  // empty afterwards or `index` was outside it (then nothing changed).
  std::optional<size_t> Delete(size_t index);

  // Dropping the entry dragged from `from` onto the entry at `to` inserts a
  // copy at `to`, then deletes the old one (at `from` when to >= from, else
  // at from + 1). A move down therefore lands just above the target:
  // old0 old1 old2 with 0 dropped on 2 gives old1 old0 old2; 2 dropped on 0
  // gives old2 old0 old1. Returns the index to select, `to`; nothing, and no
  // change, when from == to or either is outside the library.
  std::optional<size_t> Drag(size_t from, size_t to);

 private:
  Buffer<FountainLibraryEntry> m_entries;
  size_t m_size = 0;
  size_t m_capacity = 0;
};

// Header (count = the library's size) and every entry in order.
bool WriteFountainLibrary(ByteSink& sink, const FountainLibrary& library, uint32_t selector,
                          uint32_t created);

// ---------------------------------------------------------------- files

// Adds `fountain` as the last entry of the library file at `path`. A missing
// file is made with a header (created `now`, count 0, `selector`) first. An
// existing file keeps its header but for the count, one higher, and every
// byte it had; the entry goes at 80 + 336 * count. Fails, writing nothing,
// when the file is shorter than 80 bytes, lacks the magic, or holds fewer
// entries than its count says (the entry would land past the end; saving
// the library as loaded repairs that file).
// A failed write leaves the file as it was, with the system's reason in
// *reason when given.
bool AppendFountain(const std::string& path, const FountainRecord& fountain, uint32_t selector,
                    uint32_t now, std::string* reason = nullptr);

// Appends the entries of the library file at `path` to `library`, in file
// order. False at the first fault: no file, a short or foreign header, a
// count larger than the entries present, a foreign entry, short memory.
// The entries read before the fault stay in `library`.
bool LoadFountainLibrary(const std::string& path, FountainLibrary& library);

// The same for a library file's whole bytes. Bytes past the counted entries
// are ignored.
bool ReadFountainLibrary(std::span<const uint8_t> bytes, FountainLibrary& library);

// Rewrites the library file at `path` with `library`'s entries in its order
// and a new header (created `now`, `selector`): the bytes of deleting the
// file and appending each entry in turn. An empty library deletes the file
// (true when none is left). The new file replaces the old only once it is
// whole; on failure the old one stays as it was (the system's reason in
// *reason when given), so a process dying mid-way never loses the library.
bool SaveFountainLibrary(const std::string& path, const FountainLibrary& library, uint32_t selector,
                         uint32_t now, std::string* reason = nullptr);

}  // namespace tess
