// The gradient editor ("GradientBox") without windows: which button shows
// which gradient type, which number fields a type uses, each field's range
// and place in the record, and the pictures the editor shows. The Windows
// dialog asks here and only moves values between its controls and a record.
//
// Invariants: a field writes only its own member, always clamped to its
// range; sample pictures are rendered from copies, never from the record.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "fills/fill_descriptor.h"
#include "image/image.h"

namespace tess {

// Dialog ids the editor's template and its code share.
inline constexpr int kGradientHelpButton = 9;
inline constexpr int kGradientPreview = 105;   // owner-drawn, the live preview
inline constexpr int kGradientStartColour = 106;
inline constexpr int kGradientEndColour = 107;

// The owner-drawn type buttons in the order the dialog shows them; each shows
// (and chooses) its type. The order is not the types' order.
struct GradientTypeButton {
  int id;
  uint32_t type;
};
inline constexpr std::array<GradientTypeButton, 4> kGradientTypeButtons = {{
    {101, kGradientLinear},
    {102, kGradientSquare},
    {103, kGradientRadial},
    {104, kGradientConical},
}};

// The type a button id shows; nothing for another id.
std::optional<uint32_t> GradientTypeOfButton(int id);

enum class GradientField : uint8_t { kRotation, kCentreX, kCentreY };

struct GradientFieldInfo {
  GradientField field;
  int id;        // the number field
  int updown;    // its up-down: the field's id + 10000
  int label;     // the static label that is enabled with it, 0 for none
  int32_t min, max;
};

// The ranges set when the editor opens (the template's wider ones are
// replaced).
inline constexpr std::array<GradientFieldInfo, 3> kGradientFields = {{
    {GradientField::kRotation, 109, 10109, 0, -360, 360},
    {GradientField::kCentreX, 111, 10111, 115, -50, 50},
    {GradientField::kCentreY, 113, 10113, 116, -50, 50},
}};

// Linear turns only; radial and square move their centre only; conical does
// both. A type no button shows uses no field.
bool GradientFieldEnabled(uint32_t type, GradientField field);

int32_t GradientFieldValue(const GradientRecord& record, GradientField field);
// Writes `typed` clamped to the field's range into its member.
void SetGradientField(GradientRecord& record, GradientField field, int64_t typed);

// A copy of `record` rendered at width x height (null for an empty size or an
// unknown type). The record is left as it was.
ImageBlock RenderGradientSample(GradientRecord record, int32_t width, int32_t height);

// What a type button shows: its type from white to black, rotation 0 and
// the centre in the middle.
ImageBlock RenderGradientTypeSample(uint32_t type, int32_t width, int32_t height);

// The live preview is drawn inside the preview area, 2 pixels from each side.
inline constexpr int32_t kGradientPreviewMargin = 2;

}  // namespace tess
