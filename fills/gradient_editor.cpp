// The gradient editor's rules. The pictures go through RenderGradient on
// copies, so the type crossing it performs never reaches the edited record.
#include "fills/gradient_editor.h"

#include <algorithm>

#include "fills/fill_render.h"

namespace tess {
namespace {

int32_t* Member(GradientRecord& record, GradientField field) {
  switch (field) {
    case GradientField::kRotation: return &record.rotation;
    case GradientField::kCentreX: return &record.centre_x;
    case GradientField::kCentreY: return &record.centre_y;
  }
  return &record.rotation;
}

const GradientFieldInfo& InfoOf(GradientField field) {
  for (const GradientFieldInfo& info : kGradientFields)
    if (info.field == field) return info;
  return kGradientFields[0];
}

}  // namespace

std::optional<uint32_t> GradientTypeOfButton(int id) {
  for (const GradientTypeButton& button : kGradientTypeButtons)
    if (button.id == id) return button.type;
  return std::nullopt;
}

bool GradientFieldEnabled(uint32_t type, GradientField field) {
  const bool turns = field == GradientField::kRotation;
  switch (type) {
    case kGradientLinear: return turns;
    case kGradientRadial:
    case kGradientSquare: return !turns;
    case kGradientConical: return true;
  }
  return false;
}

int32_t GradientFieldValue(const GradientRecord& record, GradientField field) {
  GradientRecord copy = record;
  return *Member(copy, field);
}

void SetGradientField(GradientRecord& record, GradientField field, int64_t typed) {
  const GradientFieldInfo& info = InfoOf(field);
  *Member(record, field) = static_cast<int32_t>(std::clamp<int64_t>(typed, info.min, info.max));
}

ImageBlock RenderGradientSample(GradientRecord record, int32_t width, int32_t height) {
  if (width <= 0 || height <= 0) return {};
  record.grad_rect = {0, 0, width, height};
  return RenderGradient(record);
}

ImageBlock RenderGradientTypeSample(uint32_t type, int32_t width, int32_t height) {
  GradientRecord sample;
  sample.grad_start = 0xFFFFFF;
  sample.grad_end = 0x000000;
  sample.grad_type = type;
  return RenderGradientSample(sample, width, height);
}

}  // namespace tess
