// The fountain text form: what fountains format to, that parsing the text
// gives the same rendering back, and what malformed text is told.
#include <gtest/gtest.h>

#include <string>

#include "fills/fountain.h"
#include "fills/fountain_text.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

FountainRecord Fountain(uint32_t mode, Colour start, Colour end, std::initializer_list<uint32_t> markers) {
  FountainRecord r = MakeClosedFountain(start, markers);
  r.mode = mode;
  r.end_colour = end;
  return r;
}

TEST(FountainText, FormatsAndParsesBackToTheSamePicture) {
  FountainRecord open_default;
  open_default.mode = kFountainOpen;
  const struct { FountainRecord record; const char* text; } cases[] = {
      {Fountain(0, 0x000000, 0xFFFFFF, {MakeMarker(0, 0x0000FF), MakeMarker(85, 0x00FF00), MakeMarker(170, 0xFF0000)}),
       "fountain:closed:#000000:#FFFFFF:0:#FF0000,85:#00FF00,170:#0000FF"},
      {Fountain(1, 0x402010, 0xFFF0F0, {}), "fountain:open:#102040:#F0F0FF"},
      {Fountain(1, 0, 0xFFFFFF, {MakeMarker(128, 0x0000FF), MakeMarker(128, 0xFF0000), MakeMarker(7, 0x010203)}),
       "fountain:open:#000000:#FFFFFF:128:#FF0000,128:#0000FF,7:#030201"},
      {open_default,
       "fountain:open:#000000:#FFFFFF:32:#0000FF,64:#00FFFF,96:#00FF00,128:#FFFF00,160:#FF0000,192:#FF00FF,"
       "224:#9900CC"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FormatFountain(c.record), c.text);
    FountainRecord parsed;
    std::string error;
    ASSERT_TRUE(ParseFountain(c.text, parsed, error)) << c.text << ": " << error;
    EXPECT_EQ(FormatFountain(parsed), c.text);
    EXPECT_EQ(testing::Pixels(RenderFountain(parsed, 97, 3)), testing::Pixels(RenderFountain(c.record, 97, 3)))
        << c.text;
  }
}

// Whatever a foreign record holds comes out as the nearest text with the
// same picture: any mode but 1 is closed, top bytes drop, 64 markers at most.
TEST(FountainText, ForeignRecords) {
  FountainRecord r = Fountain(7, 0xFF000001, 0xEE000002, {});
  r.marker_count = 1000;
  r.markers.fill(MakeMarker(255, 0x030303));
  std::string expected = "fountain:closed:#010000:#020000:255:#030303";
  for (int i = 1; i < 64; ++i) expected += ",255:#030303";
  EXPECT_EQ(FormatFountain(r), expected);
  FountainRecord parsed;
  std::string error;
  ASSERT_TRUE(ParseFountain(expected, parsed, error)) << error;
  EXPECT_EQ(testing::Pixels(RenderFountain(parsed, 300, 1)), testing::Pixels(RenderFountain(r, 300, 1)));
}

// Parsing describes the whole marker table and leaves the file's fields alone.
TEST(FountainText, ParsingSetsTheGradientAndKeepsTheRest) {
  FountainRecord r = Fountain(9, 0, 0, {MakeMarker(1, 1), MakeMarker(2, 2)});
  SetFountainPath(r, "/a/Fill3410.flp");
  std::string error;
  ASSERT_TRUE(ParseFountain("fountain:closed:#aabbcc:#DdEeFf:12:#00ff00", r, error)) << error;
  FountainRecord expected = Fountain(kFountainClosed, 0xCCBBAA, 0xFFEEDD, {MakeMarker(12, 0x00FF00)});
  SetFountainPath(expected, "/a/Fill3410.flp");
  EXPECT_EQ(SerializeFountainRecord(r), SerializeFountainRecord(expected));
}

TEST(FountainText, MalformedTextIsRefusedWithWhatWasExpected) {
  std::string sixty_four = "fountain:open:#000000:#FFFFFF:0:#000000";
  for (int i = 1; i < 64; ++i) sixty_four += "," + std::to_string(i) + ":#000000";
  const struct { std::string text; const char* message; } cases[] = {
      {"gradient:linear:#000000:#FFFFFF", "expected a fountain: fountain:<open|closed>:#RRGGBB:#RRGGBB"},
      {"fountain:ajar:#000000:#FFFFFF", "expected open or closed after \"fountain:\", got \"ajar\""},
      {"fountain:open", "expected fountain:open:#RRGGBB:#RRGGBB (start and end colours)"},
      {"fountain:open:#00000:#FFFFFF", "expected the start colour as #RRGGBB (six hex digits), got \"#00000\""},
      {"fountain:open:#000000:FFFFFF", "expected the end colour as #RRGGBB"},
      {"fountain:open:#000000:#FFFFFF:", "expected markers POS:#RRGGBB"},
      {"fountain:open:#000000:#FFFFFF:10", "marker 1: expected POS:#RRGGBB, got \"10\""},
      {"fountain:open:#000000:#FFFFFF:10:#FF0000,", "marker 2: expected POS:#RRGGBB, got \"\""},
      {"fountain:open:#000000:#FFFFFF:10:#FF0000,256:#00FF00", "marker 2: expected a position 0..255, got \"256\""},
      {"fountain:open:#000000:#FFFFFF:0010:#FF0000", "expected a position 0..255, got \"0010\""},
      {"fountain:open:#000000:#FFFFFF:1:#FF0000:2", "expected marker 1's colour as #RRGGBB"},
      {sixty_four + ",64:#000000", "a fountain holds at most 64 markers"},
  };
  for (const auto& c : cases) {
    FountainRecord r;
    std::string error;
    EXPECT_FALSE(ParseFountain(c.text, r, error)) << c.text;
    EXPECT_NE(error.find(c.message), std::string::npos) << c.text << "\n  told: " << error;
    EXPECT_EQ(SerializeFountainRecord(r), SerializeFountainRecord(FountainRecord())) << c.text;
  }
  FountainRecord r;
  std::string error;
  ASSERT_TRUE(ParseFountain(sixty_four, r, error)) << error;
  EXPECT_EQ(r.marker_count, 64u);
}

}  // namespace
}  // namespace tess
