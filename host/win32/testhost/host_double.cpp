// Record checks and the call log of the test host's service function.
#include "host/win32/testhost/host_double.h"

#include <algorithm>
#include <cstring>

namespace tess::testhost {
namespace {

HostDouble* g_active = nullptr;

template <class Record>
std::vector<uint8_t> BytesOf(const Record* record) {
  std::vector<uint8_t> bytes(sizeof(Record));
  std::memcpy(bytes.data(), record, sizeof(Record));
  return bytes;
}

bool AllZero(const uint8_t* bytes, size_t count) {
  return std::all_of(bytes, bytes + count, [](uint8_t b) { return b == 0; });
}

bool IsStatusText(const std::string& text) {
  for (const char* known : {"Building", "Quantizing", "Supercompressing", "Remapping"})
    if (text == known) return true;
  return false;
}

// The header of the packed bitmap a global-memory handle carries, checked
// against the task's frame size.
std::string ImageBlockProblem(HGLOBAL block, const TaskRecord& task) {
  SIZE_T size = GlobalSize(block);
  if (size < sizeof(BITMAPINFOHEADER)) return "image handle is not a global block";
  void* bytes = GlobalLock(block);
  if (!bytes) return "image block cannot be locked";
  std::string problem;
  if (bytes == static_cast<void*>(block)) problem = "image block is fixed, not movable";
  BITMAPINFOHEADER header;
  std::memcpy(&header, bytes, sizeof header);
  GlobalUnlock(block);
  if (header.biSize != 40) return "image header size " + std::to_string(header.biSize);
  if (header.biWidth != static_cast<LONG>(task.width) ||
      header.biHeight != static_cast<LONG>(task.height))
    return "image " + std::to_string(header.biWidth) + "x" + std::to_string(header.biHeight) +
           " differs from the task's frame size";
  int bits = header.biBitCount;
  if (bits != 1 && bits != 4 && bits != 8 && bits != 24) return "image bit count " + std::to_string(bits);
  size_t table = bits <= 8 ? (size_t{4} << bits) : 0;
  size_t stride = ((static_cast<size_t>(bits) * header.biWidth + 31) / 32) * 4;
  if (size < 40 + table + stride * header.biHeight) return "image block shorter than its bitmap";
  if (!(GlobalFlags(block) & GMEM_DDESHARE)) return "image block is not GMEM_DDESHARE";
  return problem;
}

}  // namespace

ActiveHost::ActiveHost(HostDouble& host) { g_active = &host; }
ActiveHost::~ActiveHost() { g_active = nullptr; }

HostRecord HostDouble::MakeRecord(bool with_service) const {
  HostRecord record;
  std::memset(&record, 0xEE, sizeof record);
  record.service = with_service ? reinterpret_cast<HostHandle>(&HostDouble::Service) : 0;
  record.capabilities = capabilities;
  return record;
}

std::vector<int32_t> HostDouble::Sequence(std::initializer_list<int32_t> wanted) const {
  std::vector<int32_t> out;
  for (const HostCall& call : m_calls)
    if (std::find(wanted.begin(), wanted.end(), call.command) != wanted.end())
      out.push_back(call.command);
  return out;
}

const HostCall* HostDouble::Last(int32_t command) const {
  for (auto it = m_calls.rbegin(); it != m_calls.rend(); ++it)
    if (it->command == command) return &*it;
  return nullptr;
}

const TaskRecord* HostDouble::LastTask() const {
  const HostCall* call = Last(kHostCreateTask);
  if (const HostCall* trial = Last(kHostCreateTestTask); !call || (trial && trial > call)) call = trial;
  if (!call || call->record.size() != sizeof(TaskRecord)) return nullptr;
  return reinterpret_cast<const TaskRecord*>(call->record.data());
}

int32_t HostDouble::Service(HostHandle object, int32_t command, intptr_t param, void* data) {
  if (!g_active) return 0;
  HostCall call;
  call.command = command;
  call.object = object;
  call.param = param;
  call.data = reinterpret_cast<uintptr_t>(data);
  int32_t result = g_active->Handle(call, data);
  g_active->Log(call);
  g_active->m_calls.push_back(std::move(call));
  return result;
}

int32_t HostDouble::Handle(HostCall& call, void* data) {
  if (GetCurrentThreadId() != m_thread) Problem(call, "called from another thread");
  const bool refused = refuse == call.command;
  switch (call.command) {
    case kHostCreateTask:
    case kHostCreateTestTask: {
      if (m_task) Problem(call, "a task is still open");
      if (call.object != 0 || call.param != 0) Problem(call, "object and param must be 0");
      const auto* task = static_cast<const TaskRecord*>(data);
      call.record = BytesOf(task);
      CheckTask(call, *task);
      if (refused) return 0;
      m_task = reinterpret_cast<HostHandle>(task);
      m_task_copy = *task;
      m_next_frame = 0;
      return 1;
    }
    case kHostAddImage: {
      const auto* image = static_cast<const ImageRecord*>(data);
      call.record = BytesOf(image);
      CheckImage(call, *image);
      m_last_image = image->image;
      ++m_next_frame;
      return refused ? 0 : 1;
    }
    case kHostAddComment:
      if (!m_task || call.object != m_task) Problem(call, "comment outside the open task");
      call.text = data ? static_cast<const char*>(data) : "";
      if (call.text.empty()) Problem(call, "empty comment");
      return 1;
    case kHostCloseTask:
      if (!m_task || call.object != m_task) Problem(call, "close outside the open task");
      if (call.param != kHostTaskFinished && call.param != kHostTaskAbandoned)
        Problem(call, "close parameter " + std::to_string(call.param));
      if (data) Problem(call, "close carries data");
      if (call.param == kHostTaskFinished &&
          m_next_frame != static_cast<int32_t>(m_task_copy.frame_count))
        Problem(call, "finished after " + std::to_string(m_next_frame) + " of " +
                          std::to_string(m_task_copy.frame_count) + " frames");
      // The last frame's block was the plug-in's to free once the host had
      // added it; nothing allocates between that and closing the task.
      if (m_last_image && GlobalFlags(reinterpret_cast<HGLOBAL>(m_last_image)) != GMEM_INVALID_HANDLE)
        Problem(call, "the last image block was not freed");
      m_last_image = 0;
      m_task = 0;
      return 1;
    case kHostShowHelp:
    case kHostStatusText:
      call.text = data ? static_cast<const char*>(data) : "";
      if (call.command == kHostStatusText && !IsStatusText(call.text))
        Problem(call, "unknown status text '" + call.text + "'");
      return refused ? 0 : 1;
    case kHostChooseColour: {
      auto* picker = static_cast<ColourPickerRecord*>(data);
      call.record = BytesOf(picker);  // as sent, before the answer goes in
      CheckPicker(*picker);
      return refused ? 0 : 1;
    }
    case kHostProgress:
    case kHostChooseImageFile:
    case kHostLoadImageFile:
      return 0;
    default:
      Problem(call, "unknown command");
      return 0;
  }
}

void HostDouble::CheckTask(const HostCall& call, const TaskRecord& task) {
  if (task.size != sizeof(TaskRecord)) Problem(call, "task size " + std::to_string(task.size));
  if (task.version != kHostInterfaceVersion) Problem(call, "task version");
  if (reinterpret_cast<HWND>(task.owner) != m_dialog) Problem(call, "task owner is not the dialog");
  if (task.width < 1 || task.width > 4096 || task.height < 1 || task.height > 4096)
    Problem(call, "task frame size");
  if (task.bits < 1 || task.bits > 8) Problem(call, "task bits " + std::to_string(task.bits));
  if (task.frame_count < 1) Problem(call, "task has no frames");
  if (task.unused24 || task.unused796 || !AllZero(task.unused804, sizeof task.unused804) ||
      task.transparent_index != 0)
    Problem(call, "task fields that must be zero are not");
}

void HostDouble::CheckImage(const HostCall& call, const ImageRecord& image) {
  if (!m_task || call.object != m_task) Problem(call, "image outside the open task");
  if (call.param != 0) Problem(call, "image param must be 0");
  if (image.size != sizeof(ImageRecord)) Problem(call, "image size " + std::to_string(image.size));
  if (image.version != kHostInterfaceVersion) Problem(call, "image version");
  if (image.frame_number != m_next_frame)
    Problem(call, "frame number " + std::to_string(image.frame_number) + ", expected " +
                      std::to_string(m_next_frame));
  if (image.transparent > 1) Problem(call, "transparent flag");
  if (image.delay < 1) Problem(call, "delay " + std::to_string(image.delay));
  if (image.transparent_index < -1 || image.transparent_index > 255) Problem(call, "transparent index");
  if (image.left || image.top || image.unused28 || !AllZero(image.unused40, sizeof image.unused40))
    Problem(call, "image fields that must be zero are not");
  if (std::string why = ImageBlockProblem(reinterpret_cast<HGLOBAL>(image.image), m_task_copy);
      !why.empty())
    Problem(call, why);
}

void HostDouble::CheckPicker(ColourPickerRecord& picker) {
  HostCall call;
  call.command = kHostChooseColour;
  if (picker.size != sizeof(ColourPickerRecord)) Problem(call, "picker size");
  if (picker.version != kHostInterfaceVersion) Problem(call, "picker version");
  if (!picker.palette) {
    Problem(call, "picker has no palette");
  } else {
    // The swatches must be readable for their whole length.
    uint8_t swatches[kPaletteBytes];
    std::memcpy(swatches, reinterpret_cast<const void*>(picker.palette), sizeof swatches);
  }
  if (picker.bits != 24 || picker.unused16 != 0) Problem(call, "picker bits or zero field");
  // The dialog, one of its controls (a fill button) or a box it owns (the
  // gradient editor): the host's chooser must stay in front of the asker.
  HWND owner = reinterpret_cast<HWND>(picker.owner);
  if (!owner || GetAncestor(owner, GA_ROOTOWNER) != m_dialog)
    Problem(call, "picker owner is not the dialog or a window of it");
  if (refuse != kHostChooseColour) picker.colour = chosen_colour;
}

void HostDouble::Problem(const HostCall& call, const std::string& what) {
  m_problems.push_back("command " + std::to_string(call.command) + ": " + what);
}

void HostDouble::Log(const HostCall& call) const {
  if (!m_log) return;
  std::fprintf(m_log, "command %d object %#llx param %lld data %#llx", call.command,
               static_cast<unsigned long long>(call.object), static_cast<long long>(call.param),
               static_cast<unsigned long long>(call.data));
  if (!call.text.empty()) std::fprintf(m_log, " text \"%s\"", call.text.c_str());
  std::fputc('\n', m_log);
  for (size_t i = 0; i < call.record.size(); ++i)
    std::fprintf(m_log, "%s%02x%s", i % 32 == 0 ? "  " : "", call.record[i],
                 i % 32 == 31 || i + 1 == call.record.size() ? "\n" : " ");
  std::fflush(m_log);
}

}  // namespace tess::testhost
