// A fill's document line: the whole record in hexadecimal, read back into a
// record that keeps its own path; damaged payloads are taken and change
// nothing; older colour lines become Simple fills.
#include "controls/fill_line.h"

#include <gtest/gtest.h>

#include "controls/control_kinds.h"

namespace tess {
namespace {

FillDescriptor Gradient() {
  FillDescriptor record = CreateFillDescriptor("C:\\Users\\a\\Fill00001.flp", 0x123456, false);
  record.kind = kFillGradient;
  record.gradient = {0x0000FF, 0x00FF00, kGradientConical, 45, -20, 30, {}};
  return record;
}

TEST(FillLine, RoundTripKeepsTheReceiversPath) {
  FillDescriptor sent = Gradient();
  FillLine out(3411, sent);
  std::string line = FormatControlLine(out);
  EXPECT_EQ(line.rfind("FILLBT3411=42524E4446494C42", 0), 0u) << line.substr(0, 40);
  EXPECT_EQ(line.size(), 11 + 2 * kFillDescriptorSize);

  FillDescriptor received = CreateFillDescriptor("D:\\mine\\Fill03411.flp", 0, false);
  FillLine in(3411, received);
  ASSERT_TRUE(DeliverLine(in, line));
  EXPECT_TRUE(in.changed());
  EXPECT_EQ(FillPath(received), "D:\\mine\\Fill03411.flp");
  EXPECT_EQ(received.kind, kFillGradient);
  EXPECT_EQ(received.gradient.grad_type, kGradientConical);
  EXPECT_EQ(received.gradient.centre_y, 30);
  EXPECT_EQ(received.colour, 0x123456u);
}

// A foreign pattern file's path may fill all 261 bytes without a NUL; a
// document's line must still not choose where that record is saved.
TEST(FillLine, AReceiverWithAnUnterminatedPathKeepsItWhole) {
  FillDescriptor sent = Gradient();
  const std::string line = FormatControlLine(FillLine(7, sent));
  FillDescriptor received;
  received.path.fill('x');
  const auto own_path = received.path;
  FillLine in(7, received);
  ASSERT_TRUE(DeliverLine(in, line));
  EXPECT_TRUE(in.changed());
  EXPECT_EQ(received.path, own_path);
  EXPECT_EQ(received.gradient.grad_type, kGradientConical);
}

// Too short, not hexadecimal, or not a fill record: taken, nothing changes.
// A line of another kind is refused.
TEST(FillLine, DamagedPayloadsAreTakenAndChangeNothing) {
  FillDescriptor record = Gradient();
  const FillBytes before = SerializeFillDescriptor(record);
  std::string good = FillLine(5, record).ValueText();
  std::string foreign = good;
  foreign[0] = '0';  // the magic's first byte
  for (std::string value : {std::string("00FF"), good.substr(0, 100) + "XY" + good.substr(102), foreign}) {
    FillLine line(5, record);
    EXPECT_TRUE(DeliverLine(line, "FILLBT5=" + value));
    EXPECT_FALSE(line.changed());
    EXPECT_EQ(SerializeFillDescriptor(record), before);
  }
  FillLine line(5, record);
  EXPECT_FALSE(DeliverLine(line, "SPNBTN5=1"));
  EXPECT_FALSE(DeliverLine(line, "FILLBT5" + good));
}

// A colour line from before fills had records: the colour as a colour
// button reads its text, kind Simple, the gradient left alone.
TEST(FillLine, OlderColourLinesBecomeSimpleFills) {
  FillDescriptor record = Gradient();
  FillLine line(7, record);
  ASSERT_TRUE(DeliverLine(line, "CLRBTN7=16711680"));
  EXPECT_TRUE(line.changed());
  EXPECT_EQ(record.kind, kFillSimple);
  EXPECT_EQ(record.colour, 0xFF0000u);
  EXPECT_EQ(record.gradient.rotation, 45);
  ASSERT_TRUE(DeliverLine(line, "CLRBTN7=-1"));
  EXPECT_EQ(record.colour, 0xFFFFFFu);
}

// The kinds' table and the line agree on the tags a fill button answers to.
TEST(FillLine, TagsAreTheFillKindsTags) {
  FillDescriptor record;
  FillLine line(1, record);
  PageControl fill{1, ControlKind::kFillButton, "Color 1:", "FillColor1", {}, {}, 0, 0, 0, 0};
  EXPECT_EQ(line.Tag(), DocumentTag(fill));
  EXPECT_EQ(line.LegacyTag(), KindRules(fill).legacy_tag);
}

}  // namespace
}  // namespace tess
