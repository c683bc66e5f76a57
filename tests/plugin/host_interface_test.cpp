// Host records start as every sender starts them, and the in-process host
// lends an image block by its own address.
#include <gtest/gtest.h>

#include <cstring>

#include "base/bytes.h"
#include "plugin/host_interface.h"

namespace tess {
namespace {

template <class Record>
std::vector<uint8_t> Bytes(const Record& r) {
  std::vector<uint8_t> out(sizeof r);
  std::memcpy(out.data(), &r, sizeof r);
  return out;
}

TEST(HostRecords, StartZeroedWithSizeAndVersion) {
  auto task = Bytes(MakeTaskRecord());
  auto image = Bytes(MakeImageRecord());
  auto picker = Bytes(MakeColourPickerRecord());
  EXPECT_EQ(get_u32le(task.data()), kTaskRecordSize32 + kHandleGrowth);
  EXPECT_EQ(get_u32le(image.data()), kImageRecordSize32 + kHandleGrowth);
  EXPECT_EQ(get_u32le(picker.data()), kColourPickerRecordSize32 + 2 * kHandleGrowth);
  for (const auto* bytes : {&task, &image, &picker}) {
    EXPECT_EQ(get_u32le(bytes->data() + 4), 513u);
    for (size_t i = 8; i < bytes->size(); ++i) ASSERT_EQ((*bytes)[i], 0) << "byte " << i;
  }
}

class NullHost final : public HostService {
 public:
  int32_t Call(HostHandle, int32_t, intptr_t, void*) override { return 0; }
};

TEST(HostService, InProcessLendsTheBlockItself) {
  NullHost host;
  ImageBlock image = ImageCreate(3, 2, nullptr, 24);
  HostHandle handle = host.LendImage(image);
  ASSERT_NE(handle, 0u);
  EXPECT_EQ(LentImage(handle), &image);
  host.ReturnImage(handle);
  EXPECT_EQ(host.LendImage(ImageBlock()), 0u);
}

}  // namespace
}  // namespace tess
