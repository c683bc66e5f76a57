// The texture engine's dispatcher. Start and shut-down carry no state yet:
// the engine keeps nothing between requests, so both only acknowledge.
#include "textures/texture_engine.h"

#include "base/bytes.h"

namespace tess {

uint32_t TextureBlockCommand(const TextureBlock& block) {
  return get_u32le(block.data() + kTextureCommandOffset);
}

void SetTextureBlockCommand(TextureBlock& block, uint32_t command) {
  put_u32le(block.data() + kTextureCommandOffset, command);
}

int32_t TextureEngineProc(TextureBlock& block) {
  switch (TextureBlockCommand(block)) {
    case kTextureStart:
    case kTextureShutDown:
      return 1;
    default:
      return 0;
  }
}

}  // namespace tess
