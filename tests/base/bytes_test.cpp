#include <gtest/gtest.h>

#include "base/byte_sink.h"
#include "base/bytes.h"

namespace tess {
namespace {

TEST(Bytes, LittleEndianRoundTripAndLayout) {
  uint8_t b[4];
  put_u32le(b, 0x11223344u);
  EXPECT_EQ(b[0], 0x44);
  EXPECT_EQ(b[3], 0x11);
  EXPECT_EQ(get_u32le(b), 0x11223344u);
  put_i32le(b, -2);
  EXPECT_EQ(get_i32le(b), -2);
  EXPECT_EQ(get_u32le(b), 0xFFFFFFFEu);
  put_u16le(b, 0xBEEF);
  EXPECT_EQ(b[0], 0xEF);
  EXPECT_EQ(get_u16le(b), 0xBEEF);
}

TEST(ByteSink, MemorySinkKeepsOrder) {
  MemorySink sink;
  EXPECT_TRUE(sink.PutByte(1));
  EXPECT_TRUE(sink.PutU16le(0x0302));
  EXPECT_TRUE(sink.PutU32le(0x07060504));
  EXPECT_EQ(sink.bytes(), (std::vector<uint8_t>{1, 2, 3, 4, 5, 6, 7}));
}

TEST(ByteSink, FileSinkReportsFailure) {
  FileSink sink;
  EXPECT_FALSE(sink.Open("/nonexistent-folder/x.bin"));
  EXPECT_FALSE(sink.Write("a", 1));
  EXPECT_FALSE(sink.Close());
}

}  // namespace
}  // namespace tess
