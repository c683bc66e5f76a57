// The texture engine's request block and the commands it answers.
#include <gtest/gtest.h>

#include "textures/texture_engine.h"

namespace tess {
namespace {

TEST(TextureEngine, CommandWordIsLittleEndianAtByte24) {
  TextureBlock block{};
  SetTextureBlockCommand(block, 0x04030201u);
  EXPECT_EQ((std::vector<uint8_t>(block.begin() + 23, block.begin() + 29)),
            (std::vector<uint8_t>{0, 1, 2, 3, 4, 0}));
  EXPECT_EQ(TextureBlockCommand(block), 0x04030201u);
}

// Start and shut down are accepted and leave the block alone; anything else
// is refused.
TEST(TextureEngine, OnlyStartAndShutDownAreAccepted) {
  for (uint32_t command : {0u, 1u, 2u, 3u, 0xFFFFFFFFu}) {
    TextureBlock block{};
    block[0] = 0xAA;
    block[999] = 0x55;
    SetTextureBlockCommand(block, command);
    const TextureBlock before = block;
    EXPECT_EQ(TextureEngineProc(block) != 0, command == kTextureStart || command == kTextureShutDown)
        << command;
    EXPECT_EQ(block, before) << command;
  }
}

}  // namespace
}  // namespace tess
