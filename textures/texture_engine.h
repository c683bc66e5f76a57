// The texture engine's one entry point and its request block: a 1000-byte
// block whose little-endian 32-bit word at byte 24 is the command. The shell
// starts the engine before the main dialog opens and shuts it down after;
// gradient and texture requests join the same entry as the fills need them.
//
// Invariants: the engine reads only the command word of start and shut-down
// requests and never writes the block for them; an unknown command is
// refused (0) and leaves the block as it was.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tess {

inline constexpr size_t kTextureBlockSize = 1000;
inline constexpr size_t kTextureCommandOffset = 24;

enum TextureCommand : uint32_t {
  kTextureStart = 1,
  kTextureShutDown = 2,
};

// A request block as the shell and the fills fill it in: zeroed, then the
// command word and the command's parameters.
using TextureBlock = std::array<uint8_t, kTextureBlockSize>;

uint32_t TextureBlockCommand(const TextureBlock& block);
void SetTextureBlockCommand(TextureBlock& block, uint32_t command);

// Carries out one request. Non-zero when the command was understood.
int32_t TextureEngineProc(TextureBlock& block);

}  // namespace tess
