// The one result type of the GIF writer and its LZW encoder. Misuse and bad
// arguments are refused before a byte is written, so the output stays a valid
// prefix of a GIF; only a failing sink or short memory leaves a broken file.
#pragma once

namespace tess {

enum class GifStatus {
  kOk,
  kOutOfOrder,     // a block the writer's current state does not allow
  kBadArgument,    // sizes, bit counts, table or image depth out of range
  kIndexTooLarge,  // a pixel index does not fit the frame's code size
  kWriteFailed,    // the sink refused bytes; the writer stays failed
  kNoMemory,       // the encoder's tables could not be allocated
};

// A short English description for logs and test failures.
const char* GifStatusText(GifStatus status);

}  // namespace tess
