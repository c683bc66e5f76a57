// The frames of one build, in order, each with its image, its supercompression
// mask, its delay and its transparent index. The list owns every image and
// mask in it; clearing or destroying the list frees them.
#pragma once

#include <cstdint>
#include <vector>

#include "image/image.h"

namespace tess {

struct FrameRecord {
  // True colour while rendering; the palettised block after remapping.
  ImageBlock image;
  // 1-bit block, 1 where the pixel is unchanged from the frames before; null
  // when the frame has none.
  ImageBlock mask;
  int32_t delay = 0;
  int32_t transparent = -1;
};

class FrameList {
 public:
  int count() const { return static_cast<int>(m_records.size()); }
  bool empty() const { return m_records.empty(); }
  FrameRecord& operator[](int i) { return m_records[static_cast<size_t>(i)]; }
  const FrameRecord& operator[](int i) const { return m_records[static_cast<size_t>(i)]; }

 private:
  friend bool FrameListAppend(FrameList&, FrameRecord&&);
  friend void FrameListFree(FrameList&);
  std::vector<FrameRecord> m_records;
};

// Moves the record into a new last slot. False, with the list unchanged and the
// record's blocks still owned by `record`, when memory is short.
bool FrameListAppend(FrameList& list, FrameRecord&& record);

// What a style calls for every finished frame: no mask, no transparency.
// On failure `image` is left with the caller.
bool FrameListAddImage(FrameList& list, ImageBlock&& image, int32_t delay);

// False when the list is empty.
bool FrameListSetLastDelay(FrameList& list, int32_t delay);

// The record at `index`, or null when the index is outside the list.
FrameRecord* FrameListGet(FrameList& list, int index);
const FrameRecord* FrameListGet(const FrameList& list, int index);

// Frees every image and mask, then the records.
void FrameListFree(FrameList& list);

}  // namespace tess
