// Little-endian fields and the byte sinks every writer goes through.
#include <gtest/gtest.h>

#include "base/byte_sink.h"
#include "base/bytes.h"

namespace tess {
namespace {

TEST(Bytes, LittleEndianRoundTripAndLayout) {
  uint8_t b[4];
  put_u32le(b, 0x11223344u);
  EXPECT_EQ((std::vector<uint8_t>(b, b + 4)), (std::vector<uint8_t>{0x44, 0x33, 0x22, 0x11}));
  EXPECT_EQ(get_u32le(b), 0x11223344u);
  put_i32le(b, -2);
  EXPECT_EQ(get_i32le(b), -2);
  EXPECT_EQ(get_u32le(b), 0xFFFFFFFEu);
  put_u16le(b, 0xBEEF);
  EXPECT_EQ(b[0], 0xEF);
  EXPECT_EQ(get_u16le(b), 0xBEEF);
}

TEST(ByteSink, MemorySinkKeepsOrderLittleEndian) {
  MemorySink memory;
  EXPECT_TRUE(memory.PutByte(1) && memory.PutU16le(0x0302) && memory.PutU32le(0x07060504));
  EXPECT_EQ(memory.bytes(), (std::vector<uint8_t>{1, 2, 3, 4, 5, 6, 7}));
}

}  // namespace
}  // namespace tess
