// Frame list operations.
#include "image/frame_list.h"

#include <new>
#include <utility>

namespace tess {

bool FrameListAppend(FrameList& list, FrameRecord&& record) {
  try {
    list.m_records.push_back(std::move(record));
  } catch (const std::bad_alloc&) {
    return false;  // push_back's strong guarantee leaves both sides unchanged
  }
  return true;
}

bool FrameListAddImage(FrameList& list, ImageBlock&& image, int32_t delay) {
  FrameRecord record;
  record.image = std::move(image);
  record.delay = delay;
  if (FrameListAppend(list, std::move(record))) return true;
  image = std::move(record.image);
  return false;
}

bool FrameListSetLastDelay(FrameList& list, int32_t delay) {
  if (list.empty()) return false;
  list[list.count() - 1].delay = delay;
  return true;
}

FrameRecord* FrameListGet(FrameList& list, int index) {
  if (index < 0 || index >= list.count()) return nullptr;
  return &list[index];
}

const FrameRecord* FrameListGet(const FrameList& list, int index) {
  if (index < 0 || index >= list.count()) return nullptr;
  return &list[index];
}

void FrameListFree(FrameList& list) {
  list.m_records.clear();
  list.m_records.shrink_to_fit();
}

}  // namespace tess
