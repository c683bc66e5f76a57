// The fill button and the gradient editor without windows: the button's
// parts and where the swatch goes, what a press and a release do, the kind
// menu; which type each editor button shows, which fields a type uses,
// clamped field writes, and pictures rendered without touching the record.
#include <gtest/gtest.h>

#include "fills/fill_button_look.h"
#include "fills/gradient_editor.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

bool operator==(const Rect& a, const Rect& b) {
  return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}
bool operator==(const Point& a, const Point& b) { return a.x == b.x && a.y == b.y; }

// A 48 x 20 button: inside the frame (1, 1, 47, 19), the strip is the right
// 16 pixels, the swatch 2 pixels inside the rest; the triangle's middle is
// the strip's, and holding the arrow moves the triangle, never the swatch.
TEST(FillButtonLook, PartsTriangleAndSwatchPlace) {
  const Rect client{0, 0, 48, 20};
  FillButtonLook up = FillButtonLookOf(client, 0);
  EXPECT_TRUE(up.frame == client);
  EXPECT_TRUE((up.arrow_strip == Rect{31, 1, 47, 19}));
  EXPECT_TRUE((up.swatch_part == Rect{1, 1, 31, 19}));
  EXPECT_TRUE((up.swatch == Rect{3, 3, 29, 17}));
  EXPECT_TRUE((up.triangle[0] == Point{36, 6}));
  EXPECT_TRUE((up.triangle[1] == Point{41, 10}));
  EXPECT_TRUE((up.triangle[2] == Point{36, 14}));
  EXPECT_TRUE(up.shadow_from == up.triangle[0] && up.shadow_to == up.triangle[1]);
  EXPECT_EQ(up.arrow_face, FillFace::kRaised);
  EXPECT_EQ(up.swatch_face, FillFace::kRaised);

  FillButtonLook arrow = FillButtonLookOf(client, kFillArrowPressed);
  EXPECT_EQ(arrow.arrow_face, FillFace::kSunken);
  EXPECT_EQ(arrow.swatch_face, FillFace::kRaised);
  for (size_t i = 0; i < 3; ++i)
    EXPECT_TRUE((arrow.triangle[i] == Point{up.triangle[i].x + 1, up.triangle[i].y + 1})) << i;
  FillButtonLook swatch = FillButtonLookOf(client, kFillSwatchPressed);
  EXPECT_EQ(swatch.swatch_face, FillFace::kSunken);
  EXPECT_TRUE(swatch.triangle[0] == up.triangle[0]);

  // The swatch is rendered where it is drawn, in every state and at odd sizes.
  for (Rect c : {client, Rect{5, 7, 52, 26}, Rect{0, 0, 19, 3}})
    for (uint32_t flags = 0; flags < 4; ++flags)
      EXPECT_TRUE(FillSwatchRect(c) == FillButtonLookOf(c, flags).swatch);
}

// A button narrower than its strip has no swatch and no part of negative width.
TEST(FillButtonLook, TinyButtonsHaveNoSwatch) {
  Rect swatch = FillSwatchRect({0, 0, 12, 20});
  EXPECT_LE(swatch.width(), 0);
  FillButtonLook look = FillButtonLookOf({0, 0, 12, 20}, 0);
  EXPECT_GE(look.arrow_strip.width(), 0);
  EXPECT_GE(look.swatch_part.width(), 0);
}

TEST(FillButtonMouse, PressMarksThePartAndReleaseActsWherever) {
  const Rect client{0, 0, 48, 20};
  EXPECT_EQ(FillButtonHit(client, {30, 10}), FillButtonPart::kSwatch);
  EXPECT_EQ(FillButtonHit(client, {0, 0}), FillButtonPart::kSwatch);
  EXPECT_EQ(FillButtonHit(client, {31, 10}), FillButtonPart::kArrow);
  EXPECT_EQ(FillButtonHit(client, {47, 19}), FillButtonPart::kArrow);
  EXPECT_EQ(FillButtonHit(client, {48, 10}), FillButtonPart::kNone);
  EXPECT_EQ(FillButtonHit(client, {10, -1}), FillButtonPart::kNone);

  EXPECT_EQ(FillButtonPress(0, FillButtonPart::kArrow), kFillArrowPressed);
  EXPECT_EQ(FillButtonPress(0, FillButtonPart::kSwatch), kFillSwatchPressed);
  EXPECT_EQ(FillButtonPress(4, FillButtonPart::kNone), 4u);
  EXPECT_EQ(FillButtonRelease(0), FillButtonAction::kNothing);
  EXPECT_EQ(FillButtonRelease(4), FillButtonAction::kNothing);
  EXPECT_EQ(FillButtonRelease(kFillSwatchPressed), FillButtonAction::kEdit);
  EXPECT_EQ(FillButtonRelease(kFillArrowPressed), FillButtonAction::kShowMenu);
  EXPECT_EQ(FillButtonRelease(kFillArrowPressed | kFillSwatchPressed), FillButtonAction::kShowMenu);
}

// The current kind is checked; a foreign kind checks nothing; only 100..103
// choose a kind (99 is the editor).
TEST(FillKindMenu, ItemsIdsAndChecks) {
  auto menu = FillKindMenu(kFillGradient);
  const char* names[] = {"Simple", "Gradient", "Texture", "Tile"};
  for (size_t i = 0; i < menu.size(); ++i) {
    EXPECT_EQ(menu[i].command, 100 + static_cast<int>(i));
    EXPECT_EQ(menu[i].text, names[i]);
    EXPECT_EQ(menu[i].checked, i == 1);
    EXPECT_EQ(FillKindOfCommand(menu[i].command), std::optional<uint32_t>(i));
  }
  for (const FillKindMenuItem& item : FillKindMenu(7)) EXPECT_FALSE(item.checked);
  EXPECT_FALSE(FillKindOfCommand(kFillEditCommand));
  EXPECT_FALSE(FillKindOfCommand(104));
}

// ---------------------------------------------------------------- gradient editor

TEST(GradientEditor, ButtonsShowTheirTypesAndTypesEnableTheirFields) {
  EXPECT_EQ(GradientTypeOfButton(101), std::optional<uint32_t>(kGradientLinear));
  EXPECT_EQ(GradientTypeOfButton(102), std::optional<uint32_t>(kGradientSquare));
  EXPECT_EQ(GradientTypeOfButton(103), std::optional<uint32_t>(kGradientRadial));
  EXPECT_EQ(GradientTypeOfButton(104), std::optional<uint32_t>(kGradientConical));
  EXPECT_FALSE(GradientTypeOfButton(kGradientPreview));

  using F = GradientField;
  const struct { uint32_t type; bool rotation, centre; } cases[] = {
      {kGradientLinear, true, false}, {kGradientRadial, false, true},
      {kGradientSquare, false, true}, {kGradientConical, true, true}, {7, false, false}};
  for (const auto& c : cases) {
    EXPECT_EQ(GradientFieldEnabled(c.type, F::kRotation), c.rotation) << c.type;
    EXPECT_EQ(GradientFieldEnabled(c.type, F::kCentreX), c.centre) << c.type;
    EXPECT_EQ(GradientFieldEnabled(c.type, F::kCentreY), c.centre) << c.type;
  }
}

// Each field clamps to its own range and writes only its own member.
TEST(GradientEditor, FieldsWriteTheirMemberClamped) {
  GradientRecord record{0x102030, 0x405060, kGradientConical, 5, 6, 7, {1, 2, 3, 4}};
  SetGradientField(record, GradientField::kRotation, 4000000000LL);
  EXPECT_EQ(record.rotation, 360);
  SetGradientField(record, GradientField::kCentreX, -80);
  EXPECT_EQ(record.centre_x, -50);
  SetGradientField(record, GradientField::kCentreY, 49);
  EXPECT_EQ(record.centre_y, 49);
  EXPECT_EQ(GradientFieldValue(record, GradientField::kCentreY), 49);
  EXPECT_EQ(record.grad_start, 0x102030u);
  EXPECT_EQ(record.grad_end, 0x405060u);
  EXPECT_EQ(record.grad_type, kGradientConical);
  for (const GradientFieldInfo& f : kGradientFields) EXPECT_EQ(f.updown, f.id + 10000);
}

// The engine crosses radial and square over in the record it renders: the
// editor's pictures must leave the edited record as it was.
TEST(GradientEditor, PicturesComeFromCopies) {
  GradientRecord radial{0x000000, 0xFFFFFF, kGradientRadial, 0, 10, -10, {}};
  ImageBlock picture = RenderGradientSample(radial, 47, 33);
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture.width(), 47);
  EXPECT_EQ(picture.height(), 33);
  EXPECT_EQ(radial.grad_type, kGradientRadial);
  EXPECT_EQ(radial.grad_rect.width(), 0);
  EXPECT_FALSE(RenderGradientSample(radial, 0, 10));

  // Type pictures run white to black: the conical start lies left of the
  // centre, its end right.
  ImageBlock conical = RenderGradientTypeSample(kGradientConical, 100, 100);
  EXPECT_EQ(ImageGetPixel(conical, 0, 50), 0xFFFFFFu);
  EXPECT_EQ(ImageGetPixel(conical, 99, 50), 0x000000u);
  for (const GradientTypeButton& button : kGradientTypeButtons)
    EXPECT_TRUE(RenderGradientTypeSample(button.type, 9, 7)) << button.id;
}

}  // namespace
}  // namespace tess
