#include <gtest/gtest.h>

#include "textures/texture_engine.h"

namespace tess {
namespace {

TEST(TextureEngine, CommandWordIsLittleEndianAtByte24) {
  TextureBlock block{};
  SetTextureBlockCommand(block, 0x04030201u);
  EXPECT_EQ(block[24], 1);
  EXPECT_EQ(block[25], 2);
  EXPECT_EQ(block[26], 3);
  EXPECT_EQ(block[27], 4);
  EXPECT_EQ(block[23], 0);
  EXPECT_EQ(block[28], 0);
  EXPECT_EQ(TextureBlockCommand(block), 0x04030201u);
}

TEST(TextureEngine, StartAndShutDownAreAcceptedAndLeaveTheBlockAlone) {
  for (uint32_t command : {kTextureStart, kTextureShutDown}) {
    TextureBlock block{};
    block[0] = 0xAA;
    block[999] = 0x55;
    SetTextureBlockCommand(block, command);
    const TextureBlock before = block;
    EXPECT_NE(TextureEngineProc(block), 0) << command;
    EXPECT_EQ(block, before) << command;
  }
}

TEST(TextureEngine, UnknownCommandsAreRefused) {
  for (uint32_t command : {0u, 3u, 0x100u, 0xFFFFFFFFu}) {
    TextureBlock block{};
    SetTextureBlockCommand(block, command);
    EXPECT_EQ(TextureEngineProc(block), 0) << command;
  }
}

}  // namespace
}  // namespace tess
