// The fill text form: what fills format to, that parsing the text gives the
// same rendering back, and what malformed text is told.
#include <gtest/gtest.h>

#include <string>

#include "fills/fill_render.h"
#include "fills/fill_text.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

FillDescriptor Fill(uint32_t kind, uint32_t type = 0, int32_t rot = 0, int32_t cx = 0, int32_t cy = 0) {
  FillDescriptor r;
  r.kind = kind;
  r.colour = 0x00336699;
  r.gradient = {0x00030201, 0x00F0E0D0, type, rot, cx, cy, {}};
  return r;
}

TEST(FillText, FormatsAndParsesBackToTheSamePicture) {
  const struct { FillDescriptor record; const char* text; } cases[] = {
      {Fill(kFillSimple), "#996633"},
      {Fill(kFillGradient, kGradientLinear), "gradient:linear:#010203:#D0E0F0"},
      {Fill(kFillGradient, kGradientLinear, -30, 7, 7), "gradient:linear:#010203:#D0E0F0:rot=-30"},
      {Fill(kFillGradient, kGradientRadial, 90, 10, -20), "gradient:radial:#010203:#D0E0F0:cx=10:cy=-20"},
      {Fill(kFillGradient, kGradientSquare, 0, -50, 0), "gradient:square:#010203:#D0E0F0:cx=-50"},
      {Fill(kFillGradient, kGradientConical, 360, 50, 1), "gradient:conical:#010203:#D0E0F0:rot=360:cx=50:cy=1"},
      {Fill(kFillTexture), "texture"},
      {Fill(kFillTile), "tile"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FormatFill(c.record), c.text);
    FillDescriptor parsed;
    std::string error;
    ASSERT_TRUE(ParseFill(c.text, parsed, error)) << c.text << ": " << error;
    EXPECT_EQ(FormatFill(parsed), c.text);
    EXPECT_EQ(testing::Pixels(RenderFill(parsed, 21, 13)), testing::Pixels(RenderFill(c.record, 21, 13)))
        << c.text;
  }
}

// Values a foreign record holds outside the form's ranges come out as the
// nearest the form allows; kinds and types without a form give no text.
TEST(FillText, ForeignRecords) {
  EXPECT_EQ(FormatFill(Fill(kFillGradient, kGradientConical, 725, 80, -51)),
            "gradient:conical:#010203:#D0E0F0:rot=5:cx=50:cy=-50");
  EXPECT_EQ(FormatFill(Fill(kFillGradient, 9)), "");
  EXPECT_EQ(FormatFill(Fill(7)), "");
}

TEST(FillText, ParsingSetsEveryGradientFieldItDescribes) {
  FillDescriptor r = Fill(kFillSimple, kGradientConical, 40, 20, 20);
  std::string error;
  ASSERT_TRUE(ParseFill("gradient:linear:#000000:#FFFFFF", r, error));
  EXPECT_EQ(r.kind, kFillGradient);
  EXPECT_EQ(r.colour, 0x00336699u);
  EXPECT_EQ(r.gradient.grad_type, kGradientLinear);
  EXPECT_EQ(r.gradient.rotation + r.gradient.centre_x + r.gradient.centre_y, 0);
}

TEST(FillText, MalformedTextIsRefusedWithWhatWasExpected) {
  const struct { const char* text; const char* message; } cases[] = {
      {"", "expected a fill: #RRGGBB"},
      {"red", "expected a fill: #RRGGBB"},
      {"Gradient:linear:#000000:#FFFFFF", "expected a fill"},
      {"#12345", "expected a colour as #RRGGBB (six hex digits), got \"#12345\""},
      {"#000000:x", "a colour alone"},
      {"gradient", "expected a gradient shape (linear, radial, square or conical)"},
      {"gradient:spiral:#000000:#FFFFFF", "got \"spiral\""},
      {"gradient:linear:#000000", "start and end colours"},
      {"gradient:linear:#000000:white", "expected the end colour as #RRGGBB"},
      {"gradient:linear:#000000:#FFFFFF:cx=3", "linear gradients take rot"},
      {"gradient:radial:#000000:#FFFFFF:rot=3", "radial gradients take cx and cy"},
      {"gradient:conical:#000000:#FFFFFF:rot", "expected a parameter name=value"},
      {"gradient:conical:#000000:#FFFFFF:rot=400", "rot=400 is outside -360..360"},
      {"gradient:conical:#000000:#FFFFFF:cy=-51", "cy=-51 is outside -50..50"},
      {"gradient:linear:#000000:#FFFFFF:rot=1:rot=2", "rot is given twice"},
      {"gradient:linear:#000000:#FFFFFF:rot=3x", "expected a whole number after \"rot=\""},
      {"texture:grain=3", "\"texture\" takes no parameters yet"},
  };
  for (const auto& c : cases) {
    FillDescriptor r = Fill(kFillTile);
    std::string error;
    EXPECT_FALSE(ParseFill(c.text, r, error)) << c.text;
    EXPECT_NE(error.find(c.message), std::string::npos) << c.text << " -> " << error;
    EXPECT_EQ(FormatFill(r), "tile") << c.text;
  }
}

}  // namespace
}  // namespace tess
