// Library files block by block, the in-memory list with its drag rule, and
// the file operations. Every write builds the whole new file beside the old
// one and renames it into place; loading reads entry by entry and keeps what
// it read before a fault.
#include "fills/fountain_library.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <new>
#include <system_error>
#include <utility>
#include <vector>

#include "base/bytes.h"
#include "fills/file_io.h"
#include "shell/paths.h"

namespace tess {
namespace {

// Days from 1970-01-01 to the given proleptic Gregorian date (month 1..12),
// by whole 400-year eras so no leap rule is special-cased.
int64_t DaysFromCivil(int64_t year, int month, int day) {
  year -= month <= 2;
  const int64_t era = (year >= 0 ? year : year - 399) / 400;
  const int64_t year_of_era = year - era * 400;
  const int64_t day_of_year = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
  const int64_t day_of_era = year_of_era * 365 + year_of_era / 4 - year_of_era / 100 + day_of_year;
  return era * 146097 + day_of_era - 719468;
}

// The entry's first free slot in a file holding `count` entries.
constexpr uint64_t EntryOffset(uint64_t count) { return kLibraryHeaderSize + count * kLibraryEntrySize; }

// Writes data[from, to), unless that is empty.
bool WriteRange(ByteSink& sink, const uint8_t* data, size_t from, size_t to) {
  return to <= from || sink.Write(data + from, to - from);
}

}  // namespace

// ---------------------------------------------------------------- file layout

std::string_view FountainLibraryName(uint32_t selector) {
  return selector == kFountainOpen ? kOpenFountainLibraryName : kClosedFountainLibraryName;
}

std::string FountainLibraryPath(Platform& platform, uint32_t selector) {
  return PluginDataPath(platform, FountainLibraryName(selector));
}

uint32_t LibraryTimeStamp(const LocalTime& now) {
  const int month = std::clamp(now.month, 0, 11) + 1;
  const int64_t days = DaysFromCivil(now.year, month, now.day);
  const int64_t seconds = days * 86400 + now.hour * 3600 + now.minute * 60 + now.second;
  return static_cast<uint32_t>(static_cast<uint64_t>(seconds));
}

// ---------------------------------------------------------------- entries

FountainLibraryEntry LibraryEntryOf(const FountainRecord& fountain) {
  return {fountain.marker_count, fountain.start_colour, fountain.markers, fountain.end_colour};
}

void ApplyLibraryEntry(const FountainLibraryEntry& entry, FountainRecord& fountain) {
  fountain.marker_count = entry.marker_count;
  fountain.start_colour = entry.start_colour;
  fountain.markers = entry.markers;
  fountain.end_colour = entry.end_colour;
}

FountainRecord LibraryEntryFountain(const FountainLibraryEntry& entry, uint32_t selector) {
  FountainRecord fountain;
  fountain.mode = selector;
  ApplyLibraryEntry(entry, fountain);
  return fountain;
}

bool WriteLibraryHeader(ByteSink& sink, const LibraryHeader& header) {
  uint8_t b[kLibraryHeaderSize] = {};
  std::memcpy(b, kLibraryHeaderMagic.data(), kLibraryHeaderMagic.size());
  put_u32le(b + kLibraryCreatedOffset, header.created);
  put_u32le(b + kLibraryCountOffset, header.count);
  put_u32le(b + kLibrarySelectorOffset, header.selector);
  return sink.Write(b, sizeof b);
}

bool WriteLibraryEntry(ByteSink& sink, const FountainLibraryEntry& entry) {
  uint8_t b[kLibraryEntrySize] = {};
  std::memcpy(b, kLibraryEntryMagic.data(), kLibraryEntryMagic.size());
  put_u32le(b + kLibraryMarkerCountOffset, entry.marker_count);
  put_u32le(b + kLibraryStartColourOffset, entry.start_colour);
  for (size_t i = 0; i < kFountainMaxMarkers; ++i) put_u32le(b + kLibraryMarkersOffset + 4 * i, entry.markers[i]);
  put_u32le(b + kLibraryEndColourOffset, entry.end_colour);
  return sink.Write(b, sizeof b);
}

bool ReadLibraryHeader(const uint8_t* data, size_t size, LibraryHeader& header) {
  if (!data || size < kLibraryHeaderSize) return false;
  if (std::memcmp(data, kLibraryHeaderMagic.data(), kLibraryHeaderMagic.size()) != 0) return false;
  header.created = get_u32le(data + kLibraryCreatedOffset);
  header.count = get_u32le(data + kLibraryCountOffset);
  header.selector = get_u32le(data + kLibrarySelectorOffset);
  return true;
}

bool ReadLibraryEntry(const uint8_t* data, size_t size, FountainLibraryEntry& entry) {
  if (!data || size < kLibraryEntrySize) return false;
  if (std::memcmp(data, kLibraryEntryMagic.data(), kLibraryEntryMagic.size()) != 0) return false;
  entry.marker_count = get_u32le(data + kLibraryMarkerCountOffset);
  entry.start_colour = get_u32le(data + kLibraryStartColourOffset);
  for (size_t i = 0; i < kFountainMaxMarkers; ++i)
    entry.markers[i] = get_u32le(data + kLibraryMarkersOffset + 4 * i);
  entry.end_colour = get_u32le(data + kLibraryEndColourOffset);
  return true;
}

// ---------------------------------------------------------------- the in-memory library

FountainLibrary::FountainLibrary(FountainLibrary&& other) noexcept
    : m_entries(std::move(other.m_entries)),
      m_size(std::exchange(other.m_size, 0)),
      m_capacity(std::exchange(other.m_capacity, 0)) {}

FountainLibrary& FountainLibrary::operator=(FountainLibrary&& other) noexcept {
  m_entries = std::move(other.m_entries);
  m_size = std::exchange(other.m_size, 0);
  m_capacity = std::exchange(other.m_capacity, 0);
  return *this;
}

bool FountainLibrary::Append(const FountainLibraryEntry& entry) {
  if (m_size == m_capacity) {
    const size_t capacity = std::max<size_t>(8, 2 * m_capacity);
    Buffer<FountainLibraryEntry> grown = AllocBuffer<FountainLibraryEntry>(capacity);
    if (!grown) return false;
    std::copy(m_entries.get(), m_entries.get() + m_size, grown.get());
    m_entries = std::move(grown);
    m_capacity = capacity;
  }
  m_entries[m_size++] = entry;
  return true;
}

std::optional<size_t> FountainLibrary::Delete(size_t index) {
  if (index >= m_size) return std::nullopt;
  FountainLibraryEntry* begin = m_entries.get();
  std::copy(begin + index + 1, begin + m_size, begin + index);
  if (--m_size == 0) return std::nullopt;
  return std::min(index, m_size - 1);
}

// The copy-then-delete of the drag is a rotation of the entries between the
// two places; rotating needs no memory, so a drag cannot fail.
std::optional<size_t> FountainLibrary::Drag(size_t from, size_t to) {
  if (from == to || from >= m_size || to >= m_size) return std::nullopt;
  FountainLibraryEntry* begin = m_entries.get();
  if (from < to)
    std::rotate(begin + from, begin + from + 1, begin + to);
  else
    std::rotate(begin + to, begin + from, begin + from + 1);
  return to;
}

bool WriteFountainLibrary(ByteSink& sink, const FountainLibrary& library, uint32_t selector,
                          uint32_t created) {
  // A library in memory holds far fewer than 2^32 entries: each is 336 bytes.
  if (!WriteLibraryHeader(sink, {created, static_cast<uint32_t>(library.size()), selector})) return false;
  for (size_t i = 0; i < library.size(); ++i)
    if (!WriteLibraryEntry(sink, library[i])) return false;
  return true;
}

// ---------------------------------------------------------------- files

bool AppendFountain(const std::string& path, const FountainRecord& fountain, uint32_t selector,
                    uint32_t now, std::string* reason) {
  const FountainLibraryEntry entry = LibraryEntryOf(fountain);
  try {
    std::error_code ec;
    const bool exists = std::filesystem::exists(path, ec);
    if (ec) return false;
    if (!exists) {
      return ReplaceFile(path, [&](ByteSink& sink) {
        return WriteLibraryHeader(sink, {now, 1, selector}) && WriteLibraryEntry(sink, entry);
      }, reason);
    }
    Buffer<uint8_t> old;
    size_t size = 0;
    LibraryHeader header;
    if (!ReadWholeFile(path, old, size) || !ReadLibraryHeader(old.get(), size, header)) return false;
    const uint64_t at = EntryOffset(header.count);
    if (at > size) return false;
    // The header exactly as read but for the count; bytes past the new entry
    // (a longer file's tail) stay, as an in-place append would keep them.
    put_u32le(old.get() + kLibraryCountOffset, header.count + 1);
    const size_t entry_end = static_cast<size_t>(at) + kLibraryEntrySize;
    return ReplaceFile(path, [&](ByteSink& sink) {
      return WriteRange(sink, old.get(), 0, static_cast<size_t>(at)) && WriteLibraryEntry(sink, entry) &&
             WriteRange(sink, old.get(), entry_end, size);
    }, reason);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool ReadFountainLibrary(std::span<const uint8_t> bytes, FountainLibrary& library) {
  LibraryHeader header;
  if (!ReadLibraryHeader(bytes.data(), bytes.size(), header)) return false;
  // Entries follow one another, so entry i is simply the next block.
  size_t pos = kLibraryHeaderSize;
  for (uint32_t i = 0; i < header.count; ++i, pos += kLibraryEntrySize) {
    FountainLibraryEntry entry;
    if (bytes.size() - pos < kLibraryEntrySize ||
        !ReadLibraryEntry(bytes.data() + pos, kLibraryEntrySize, entry) || !library.Append(entry))
      return false;
  }
  return true;
}

bool LoadFountainLibrary(const std::string& path, FountainLibrary& library) {
  FilePtr file(std::fopen(path.c_str(), "rb"));
  if (!file) return false;
  // Read whole first; a file too big to hold is refused like a damaged one.
  try {
    std::vector<uint8_t> bytes;
    uint8_t block[4096];
    size_t got;
    while ((got = std::fread(block, 1, sizeof block, file.get())) > 0)
      bytes.insert(bytes.end(), block, block + got);
    return ReadFountainLibrary(bytes, library);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool SaveFountainLibrary(const std::string& path, const FountainLibrary& library, uint32_t selector,
                         uint32_t now, std::string* reason) {
  if (!library.empty())
    return ReplaceFile(
        path, [&](ByteSink& sink) { return WriteFountainLibrary(sink, library, selector, now); }, reason);
  try {
    // Only a file is deleted: a folder of that name is not this library.
    std::error_code ec;
    if (std::filesystem::is_directory(path, ec)) return false;
    std::filesystem::remove(path, ec);
    return !std::filesystem::exists(path, ec) && !ec;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace tess
