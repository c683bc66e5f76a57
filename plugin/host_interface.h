// The binary interface between the plug-in and its host: the records that
// cross the boundary as memory, the service command numbers, and HostService,
// the one way the engine calls the host. The records are the only packed
// structs in the product: their offsets are pinned below for the 32-bit
// build, where the host reads them; pointer and handle fields are HostHandle,
// so the 64-bit test build widens exactly those fields and nothing else.
//
// Portable: no OS headers. The Windows plug-in wraps the host's service
// function in a HostService; the command-line host implements it in process.
#pragma once

#include <cstddef>
#include <cstdint>

#include "image/image.h"

namespace tess {

// A pointer or handle as the host sees it: window, global-memory block, task
// record, palette or service-function address. Pointer width, never truncated.
using HostHandle = uintptr_t;

// Every record exchanged with the host carries this after its size.
constexpr uint32_t kHostInterfaceVersion = 513;  // 0x201

// Service commands (the `command` argument of HostService::Call).
enum HostCommand : int32_t {
  kHostCreateTask = 1,       // data: TaskRecord; non-zero = file object created
  kHostAddImage = 2,         // object: TaskRecord; data: ImageRecord
  kHostAddComment = 3,       // object: TaskRecord; data: zero-terminated text
  kHostCloseTask = 4,        // object: TaskRecord; param: 1 finished, 0 abandoned
  kHostCreateTestTask = 5,   // as kHostCreateTask, for a trial build
  kHostChooseImageFile = 6,  // param: owner window; data: path buffer (>= 260 bytes)
  kHostLoadImageFile = 8,    // data: zero-terminated path; result: image handle
  kHostShowHelp = 9,         // data: "document#anchor"
  kHostStatusText = 10,      // data: zero-terminated text
  kHostChooseColour = 11,    // data: ColourPickerRecord
  kHostProgress = 13,        // param: current step; data: step count as a value
};

// Close-task parameter values.
constexpr intptr_t kHostTaskFinished = 1;
constexpr intptr_t kHostTaskAbandoned = 0;

// Capability flags of the host record.
// Bit 0: the host handles transparency and frame optimisation; without it the
// dialog disables "&Supercompress" and the delay range is "1,250,40".
constexpr uint32_t kHostCapOptimise = 1u;
// Bit 1: the host takes true-colour frames, and its delays are thousandths of
// a second (the preview GIF divides them by 10).
constexpr uint32_t kHostCapTrueColour = 2u;

// The service function as the host exports it. The caller removes the
// arguments (the C convention, the compiler's default for free functions).
using HostServiceFunction = int32_t (*)(HostHandle object, int32_t command, intptr_t param,
                                        void* data);

#pragma pack(push, 1)

// Filled by PLUGINGetPluginParams in a block the host allocated. The notice
// runs from its offset to the end of the record, whose size the host chooses.
struct DescriptionRecord {
  uint32_t size;
  uint32_t version;
  char name[261];
  char notice[1];  // first byte of the notice
};

// The host's own record, passed to PLUGINDoBuild; the plug-in only reads the
// service function and the capability flags.
struct HostRecord {
  uint8_t unread0[8];
  HostHandle service;  // HostServiceFunction, or 0
  uint8_t unread1[8];
  uint32_t capabilities;
};

// One new file object: sent with kHostCreateTask or kHostCreateTestTask, then
// passed as the `object` of every call on that file object until it closes.
struct TaskRecord {
  uint32_t size;
  uint32_t version;
  HostHandle owner;  // the main dialog window
  uint32_t width;
  uint32_t height;
  uint32_t bits;  // 1..8
  uint32_t unused24;
  uint8_t palette[kPaletteBytes];  // red, green, blue triples
  uint32_t unused796;
  uint32_t frame_count;
  uint8_t unused804[261];
  int32_t transparent_index;  // set only when the transparent background is on
};

// One frame, sent with kHostAddImage. The image handle stays the plug-in's;
// the host copies what it keeps during the call.
struct ImageRecord {
  uint32_t size;
  uint32_t version;
  HostHandle image;
  uint32_t transparent;  // 1 when the transparent background is on
  int32_t delay;         // in the unit of the dialog's Delay field
  int32_t left;
  int32_t top;
  uint32_t unused28;
  int32_t frame_number;       // from 0
  int32_t transparent_index;  // -1 for none
  uint8_t unused40[64];
};

// Asks the host to choose a colour (kHostChooseColour).
struct ColourPickerRecord {
  uint32_t size;
  uint32_t version;
  HostHandle palette;  // 768 bytes of swatches
  uint32_t bits;       // always 24
  uint32_t unused16;
  uint32_t colour;  // in and out, red in the low byte
  HostHandle owner;
};

#pragma pack(pop)

constexpr size_t kTaskRecordSize32 = 1069;
constexpr size_t kImageRecordSize32 = 104;
constexpr size_t kColourPickerRecordSize32 = 28;

// The layouts the host reads. A 32-bit build must match byte for byte; a
// 64-bit build widens the handle fields only.
static_assert(offsetof(DescriptionRecord, size) == 0);
static_assert(offsetof(DescriptionRecord, version) == 4);
static_assert(offsetof(DescriptionRecord, name) == 8);
static_assert(offsetof(DescriptionRecord, notice) == 269);
static_assert(offsetof(HostRecord, service) == 8);
static_assert(offsetof(TaskRecord, owner) == 8);
static_assert(offsetof(ImageRecord, image) == 8);
static_assert(offsetof(ColourPickerRecord, palette) == 8);

constexpr size_t kHandleGrowth = sizeof(HostHandle) - 4;

static_assert(offsetof(HostRecord, capabilities) == 20 + kHandleGrowth);

static_assert(offsetof(TaskRecord, width) == 12 + kHandleGrowth);
static_assert(offsetof(TaskRecord, height) == 16 + kHandleGrowth);
static_assert(offsetof(TaskRecord, bits) == 20 + kHandleGrowth);
static_assert(offsetof(TaskRecord, unused24) == 24 + kHandleGrowth);
static_assert(offsetof(TaskRecord, palette) == 28 + kHandleGrowth);
static_assert(offsetof(TaskRecord, unused796) == 796 + kHandleGrowth);
static_assert(offsetof(TaskRecord, frame_count) == 800 + kHandleGrowth);
static_assert(offsetof(TaskRecord, unused804) == 804 + kHandleGrowth);
static_assert(offsetof(TaskRecord, transparent_index) == 1065 + kHandleGrowth);
static_assert(sizeof(TaskRecord) == kTaskRecordSize32 + kHandleGrowth);

static_assert(offsetof(ImageRecord, transparent) == 12 + kHandleGrowth);
static_assert(offsetof(ImageRecord, delay) == 16 + kHandleGrowth);
static_assert(offsetof(ImageRecord, left) == 20 + kHandleGrowth);
static_assert(offsetof(ImageRecord, top) == 24 + kHandleGrowth);
static_assert(offsetof(ImageRecord, unused28) == 28 + kHandleGrowth);
static_assert(offsetof(ImageRecord, frame_number) == 32 + kHandleGrowth);
static_assert(offsetof(ImageRecord, transparent_index) == 36 + kHandleGrowth);
static_assert(sizeof(ImageRecord) == kImageRecordSize32 + kHandleGrowth);

static_assert(offsetof(ColourPickerRecord, bits) == 12 + kHandleGrowth);
static_assert(offsetof(ColourPickerRecord, unused16) == 16 + kHandleGrowth);
static_assert(offsetof(ColourPickerRecord, colour) == 20 + kHandleGrowth);
static_assert(offsetof(ColourPickerRecord, owner) == 24 + kHandleGrowth);
static_assert(sizeof(ColourPickerRecord) == kColourPickerRecordSize32 + 2 * kHandleGrowth);

// Records zero-filled, with their size and version set, as every sender
// starts them.
TaskRecord MakeTaskRecord();
ImageRecord MakeImageRecord();
ColourPickerRecord MakeColourPickerRecord();

// How the engine reaches its host. Every call returns the host's 32-bit
// result, non-zero meaning success; nothing throws.
class HostService {
 public:
  virtual ~HostService() = default;

  virtual int32_t Call(HostHandle object, int32_t command, intptr_t param, void* data) = 0;

  // The handle an image record carries for one add-image call, valid until
  // ReturnImage. In process it is the block's own address (see LentImage);
  // the Windows plug-in copies the block into global memory. 0 when that
  // copy cannot be made.
  virtual HostHandle LendImage(const ImageBlock& image);
  virtual void ReturnImage(HostHandle handle);
};

// The block behind a handle that the in-process LendImage made.
inline const ImageBlock* LentImage(HostHandle handle) {
  return reinterpret_cast<const ImageBlock*>(handle);
}

}  // namespace tess
