// The fill text form: one table of fill kinds, one of gradient shapes and one
// of gradient parameters drive both the parser and the formatter, so a new
// kind or parameter is one entry. Strings may run out of memory; that is
// caught here and becomes an empty text or a refused parse.
#include "fills/fill_text.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <vector>

namespace tess {
namespace {

// ------------------------------------------------------------------ tables

// The gradient editor's ranges: the form describes exactly the fills the
// dialog can make and show again, and at +-50 the centre already sits on the
// picture's edge, where moving it further only repeats the edge's colours.
struct GradientParam {
  std::string_view key;
  int32_t GradientRecord::*field;
  int32_t min;
  int32_t max;
};

constexpr GradientParam kParams[] = {
    {"rot", &GradientRecord::rotation, -360, 360},
    {"cx", &GradientRecord::centre_x, -50, 50},
    {"cy", &GradientRecord::centre_y, -50, 50},
};
constexpr unsigned kRot = 1u << 0, kCx = 1u << 1, kCy = 1u << 2;

struct GradientShapeForm {
  std::string_view name;
  uint32_t type;
  unsigned params;  // bit i: takes kParams[i]
  std::string_view takes;
};

constexpr GradientShapeForm kShapes[] = {
    {"linear", kGradientLinear, kRot, "rot"},
    {"radial", kGradientRadial, kCx | kCy, "cx and cy"},
    {"square", kGradientSquare, kCx | kCy, "cx and cy"},
    {"conical", kGradientConical, kRot | kCx | kCy, "rot, cx and cy"},
};

constexpr std::string_view kExpectedFill =
    "expected a fill: #RRGGBB, gradient:<linear|radial|square|conical>:#RRGGBB:#RRGGBB"
    "[:rot=N][:cx=N][:cy=N], texture or tile";

using Fields = std::vector<std::string_view>;

std::string Quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Throws std::bad_alloc, so a formatter below stops at once and gives no text.
void FormatColour(Colour c, std::string& out) {
  char text[8];
  std::snprintf(text, sizeof text, "#%02X%02X%02X", ColourRed(c), ColourGreen(c), ColourBlue(c));
  out += text;
}

}  // namespace

// ----------------------------------------------------------------- colours

bool FormatHexColour(Colour c, std::string& out) {
  try {
    FormatColour(c, out);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool ParseHexColour(std::string_view text, std::string_view what, Colour& colour, std::string& error) {
  bool ok = text.size() == 7 && text[0] == '#';
  uint32_t rgb = 0;
  for (size_t i = 1; ok && i < 7; ++i) {
    const int d = HexDigit(text[i]);
    ok = d >= 0;
    rgb = rgb << 4 | static_cast<uint32_t>(d);
  }
  if (ok) {
    colour = MakeColour(rgb >> 16, rgb >> 8, rgb);
    return true;
  }
  try {
    error = "expected " + std::string(what) + " as #RRGGBB (six hex digits), got " + Quoted(text);
  } catch (const std::bad_alloc&) {
    error.clear();
  }
  return false;
}

namespace {

// ----------------------------------------------------------------- pieces

bool ParseInteger(std::string_view text, const GradientParam& param, int32_t& value,
                  std::string& error) {
  size_t pos = text.empty() || (text[0] != '-' && text[0] != '+') ? 0 : 1;
  const bool negative = pos == 1 && text[0] == '-';
  int64_t magnitude = 0;
  bool ok = pos < text.size();
  for (; ok && pos < text.size(); ++pos) {
    ok = text[pos] >= '0' && text[pos] <= '9';
    magnitude = std::min<int64_t>(magnitude * 10 + (text[pos] - '0'), int64_t{1} << 40);
  }
  const std::string name(param.key);
  if (!ok) {
    error = "expected a whole number after \"" + name + "=\", got " + Quoted(text);
    return false;
  }
  const int64_t v = negative ? -magnitude : magnitude;
  if (v < param.min || v > param.max) {
    error = name + "=" + std::string(text) + " is outside " + std::to_string(param.min) + ".." +
            std::to_string(param.max);
    return false;
  }
  value = static_cast<int32_t>(v);
  return true;
}

// A foreign record's value brought into the form's range.
int32_t FormValue(const GradientParam& param, int32_t value) {
  if (param.field == &GradientRecord::rotation && (value > 360 || value < -360)) value %= 360;
  return std::clamp(value, param.min, param.max);
}

// ------------------------------------------------------------ fill kinds

bool ParseSimple(const Fields& fields, FillDescriptor& record, std::string& error) {
  if (fields.size() != 1) {
    error = "expected a colour alone as #RRGGBB, got " + Quoted(fields[0]) + " followed by \":\"";
    return false;
  }
  if (!ParseHexColour(fields[0], "a colour", record.colour, error)) return false;
  record.kind = kFillSimple;
  return true;
}

void FormatSimple(const FillDescriptor& record, std::string& out) { FormatColour(record.colour, out); }

bool ParseGradientParams(const Fields& fields, const GradientShapeForm& shape, GradientRecord& g,
                         std::string& error) {
  unsigned seen = 0;
  for (size_t i = 4; i < fields.size(); ++i) {
    const std::string_view field = fields[i];
    const size_t equals = field.find('=');
    const std::string_view key = field.substr(0, equals);
    const auto* param = std::find_if(std::begin(kParams), std::end(kParams),
                                     [&](const GradientParam& p) { return p.key == key; });
    const unsigned bit = 1u << (param - std::begin(kParams));
    if (equals == std::string_view::npos || param == std::end(kParams) || !(shape.params & bit)) {
      error = "expected a parameter name=value, got " + Quoted(field) + "; " +
              std::string(shape.name) + " gradients take " + std::string(shape.takes);
      return false;
    }
    if (seen & bit) {
      error = std::string(key) + " is given twice";
      return false;
    }
    seen |= bit;
    if (!ParseInteger(field.substr(equals + 1), *param, g.*(param->field), error)) return false;
  }
  return true;
}

bool ParseGradient(const Fields& fields, FillDescriptor& record, std::string& error) {
  const std::string_view name = fields.size() > 1 ? fields[1] : std::string_view();
  const auto* shape = std::find_if(std::begin(kShapes), std::end(kShapes),
                                   [&](const GradientShapeForm& s) { return s.name == name; });
  if (shape == std::end(kShapes)) {
    error = "expected a gradient shape (linear, radial, square or conical) after \"gradient:\", got " +
            Quoted(name);
    return false;
  }
  GradientRecord g = record.gradient;
  g.grad_type = shape->type;
  g.rotation = g.centre_x = g.centre_y = 0;
  if (fields.size() < 4) {
    error = "expected gradient:" + std::string(name) + ":#RRGGBB:#RRGGBB (start and end colours)";
    return false;
  }
  if (!ParseHexColour(fields[2], "the start colour", g.grad_start, error) ||
      !ParseHexColour(fields[3], "the end colour", g.grad_end, error) ||
      !ParseGradientParams(fields, *shape, g, error))
    return false;
  record.kind = kFillGradient;
  record.gradient = g;
  return true;
}

// Empty when the record's gradient type has no form.
void FormatGradient(const FillDescriptor& record, std::string& out) {
  const GradientRecord& g = record.gradient;
  const auto* shape = std::find_if(std::begin(kShapes), std::end(kShapes),
                                   [&](const GradientShapeForm& s) { return s.type == g.grad_type; });
  if (shape == std::end(kShapes)) return;
  out += "gradient:";
  out += shape->name;
  out += ':';
  FormatColour(g.grad_start, out);
  out += ':';
  FormatColour(g.grad_end, out);
  for (size_t i = 0; i < std::size(kParams); ++i) {
    const int32_t value = FormValue(kParams[i], g.*(kParams[i].field));
    if (!(shape->params & (1u << i)) || value == 0) continue;
    out += ':';
    out += kParams[i].key;
    out += '=';
    out += std::to_string(value);
  }
}

// Texture and tile name their kind; their own parameters join here.
template <uint32_t kKind>
bool ParseKindOnly(const Fields& fields, FillDescriptor& record, std::string& error) {
  if (fields.size() != 1) {
    error = Quoted(fields[0]) + " takes no parameters yet, got " + Quoted(fields[1]);
    return false;
  }
  record.kind = kKind;
  return true;
}

struct KindForm {
  uint32_t kind;
  std::string_view name;  // the first field; "#" stands for Simple, whose field is its colour
  bool (*parse)(const Fields&, FillDescriptor&, std::string&);
  void (*format)(const FillDescriptor&, std::string&);
};

void FormatTexture(const FillDescriptor&, std::string& out) { out += "texture"; }
void FormatTile(const FillDescriptor&, std::string& out) { out += "tile"; }

constexpr KindForm kKinds[] = {
    {kFillSimple, "#", ParseSimple, FormatSimple},
    {kFillGradient, "gradient", ParseGradient, FormatGradient},
    {kFillTexture, "texture", ParseKindOnly<kFillTexture>, FormatTexture},
    {kFillTile, "tile", ParseKindOnly<kFillTile>, FormatTile},
};

Fields SplitFields(std::string_view text) {
  Fields fields;
  for (size_t start = 0;;) {
    const size_t colon = text.find(':', start);
    fields.push_back(text.substr(start, colon - start));
    if (colon == std::string_view::npos) return fields;
    start = colon + 1;
  }
}

}  // namespace

std::string FormatFill(const FillDescriptor& record) {
  try {
    std::string out;
    for (const KindForm& form : kKinds)
      if (form.kind == record.kind) form.format(record, out);
    return out;
  } catch (const std::bad_alloc&) {
    return {};
  }
}

bool ParseFill(std::string_view text, FillDescriptor& record, std::string& error) {
  try {
    const Fields fields = SplitFields(text);
    const std::string_view head = fields[0].starts_with('#') ? std::string_view("#") : fields[0];
    for (const KindForm& form : kKinds) {
      if (form.name != head) continue;
      FillDescriptor parsed = record;
      if (!form.parse(fields, parsed, error)) return false;
      record = parsed;
      return true;
    }
    error = std::string(kExpectedFill) + "; got " + Quoted(text);
    return false;
  } catch (const std::bad_alloc&) {
    error.clear();
    return false;
  }
}

}  // namespace tess
