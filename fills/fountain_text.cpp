// The fountain text form: a fixed head of mode and two colours, then the
// marker list. Colours go through the fill text's one colour form. Strings
// may run out of memory; that is caught here and becomes an empty text or a
// refused parse.
#include "fills/fountain_text.h"

#include <new>

#include "fills/fill_text.h"

namespace tess {
namespace {

constexpr std::string_view kPrefix = "fountain:";
constexpr std::string_view kExpected =
    "expected a fountain: fountain:<open|closed>:#RRGGBB:#RRGGBB[:POS:#RRGGBB,POS:#RRGGBB...]";

struct ModeForm {
  std::string_view name;
  uint32_t mode;
};
constexpr ModeForm kModes[] = {{"open", kFountainOpen}, {"closed", kFountainClosed}};

std::string Quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

// Cuts `text` at its first `separator`: the part before it is returned and
// `text` keeps the rest (nothing when there was no separator, and then
// `found` is false).
std::string_view Cut(std::string_view& text, char separator, bool& found) {
  const size_t at = text.find(separator);
  found = at != std::string_view::npos;
  const std::string_view head = text.substr(0, at);
  text = found ? text.substr(at + 1) : std::string_view();
  return head;
}

bool ParseMode(std::string_view name, uint32_t& mode, std::string& error) {
  for (const ModeForm& form : kModes) {
    if (form.name != name) continue;
    mode = form.mode;
    return true;
  }
  error = "expected open or closed after \"fountain:\", got " + Quoted(name);
  return false;
}

// 1 to 3 digits, 0..255.
bool ParsePosition(std::string_view text, uint32_t& position) {
  if (text.empty() || text.size() > 3) return false;
  uint32_t value = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
    value = value * 10 + static_cast<uint32_t>(c - '0');
  }
  position = value;
  return value <= 255;
}

bool ParseMarker(std::string_view text, size_t number, uint32_t& marker, std::string& error) {
  const std::string label = "marker " + std::to_string(number);
  bool found = false;
  std::string_view rest = text;
  const std::string_view position_text = Cut(rest, ':', found);
  if (!found) {
    error = label + ": expected POS:#RRGGBB, got " + Quoted(text);
    return false;
  }
  uint32_t position = 0;
  if (!ParsePosition(position_text, position)) {
    error = label + ": expected a position 0..255, got " + Quoted(position_text);
    return false;
  }
  Colour colour = 0;
  if (!ParseHexColour(rest, label + "'s colour", colour, error)) return false;
  marker = MakeMarker(position, colour);
  return true;
}

bool ParseMarkers(std::string_view list, FountainRecord& record, std::string& error) {
  if (list.empty()) {
    error = "expected markers POS:#RRGGBB after the colours' \":\", got nothing";
    return false;
  }
  size_t count = 0;
  for (bool more = true; more;) {
    const std::string_view text = Cut(list, ',', more);
    if (count == kFountainMaxMarkers) {
      error = "a fountain holds at most 64 markers";
      return false;
    }
    if (!ParseMarker(text, count + 1, record.markers[count], error)) return false;
    ++count;
  }
  record.marker_count = static_cast<uint32_t>(count);
  return true;
}

bool Parse(std::string_view text, FountainRecord& parsed, std::string& error) {
  if (!text.starts_with(kPrefix)) {
    error = std::string(kExpected) + "; got " + Quoted(text);
    return false;
  }
  std::string_view rest = text.substr(kPrefix.size());
  bool found = false;
  const std::string_view mode = Cut(rest, ':', found);
  if (!ParseMode(mode, parsed.mode, error)) return false;
  const std::string_view start = Cut(rest, ':', found);
  bool has_markers = false;
  const std::string_view end = found ? Cut(rest, ':', has_markers) : std::string_view();
  if (!found) {
    error = "expected fountain:" + std::string(mode) + ":#RRGGBB:#RRGGBB (start and end colours)";
    return false;
  }
  if (!ParseHexColour(start, "the start colour", parsed.start_colour, error) ||
      !ParseHexColour(end, "the end colour", parsed.end_colour, error))
    return false;
  parsed.marker_count = 0;
  parsed.markers = {};
  return !has_markers || ParseMarkers(rest, parsed, error);
}

}  // namespace

std::string FormatFountain(const FountainRecord& record) {
  try {
    std::string out(kPrefix);
    out += IsOpenFountain(record) ? "open" : "closed";
    out += ':';
    bool ok = FormatHexColour(record.start_colour, out);
    out += ':';
    ok = FormatHexColour(record.end_colour, out) && ok;
    for (size_t i = 0; i < FountainMarkerCount(record); ++i) {
      out += i == 0 ? ':' : ',';
      out += std::to_string(MarkerPosition(record.markers[i]));
      out += ':';
      ok = FormatHexColour(MarkerColour(record.markers[i]), out) && ok;
    }
    return ok ? out : std::string();
  } catch (const std::bad_alloc&) {
    return {};
  }
}

bool ParseFountain(std::string_view text, FountainRecord& record, std::string& error) {
  try {
    FountainRecord parsed = record;
    if (!Parse(text, parsed, error)) return false;
    record = parsed;
    return true;
  } catch (const std::bad_alloc&) {
    error.clear();
    return false;
  }
}

}  // namespace tess
