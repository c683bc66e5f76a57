// The GIF file object behind the host service commands. One File lives from
// create-task to close-task; the host checks the task handle on every call so
// a stray object never writes into the wrong file.
//
// Sections: the file object · service commands.
#include "host/cli/gif_file_host.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "output/gif_shaping.h"
#include "output/gif_writer.h"
#include "platform/safe_file.h"
#include "shell/strings.h"

namespace tess::cli {

namespace {

int32_t Clamp16(int32_t v) { return std::clamp(v, 0, 65535); }

}  // namespace

// ---------------------------------------------------------------- the file object

class GifFileHost::File {
 public:
  explicit File(const TaskRecord& task)
      : m_width(static_cast<int>(task.width)), m_height(static_cast<int>(task.height)),
        m_bits(static_cast<int>(task.bits)) {
    std::memcpy(m_global, task.palette, kPaletteBytes);
  }
  ~File() { Abandon(); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  bool Open(const std::string& output, std::string* error) {
    if (m_width < 1 || m_width > 65535 || m_height < 1 || m_height > 65535 || m_bits < 1 || m_bits > 8) {
      *error = "the task's screen or palette is not one a GIF can hold";
      return false;
    }
    if (!m_sink.Open(output)) {
      *error = "cannot create '" + output + "': " + m_sink.error();
      return false;
    }
    GifScreen screen;
    screen.width = m_width;
    screen.height = m_height;
    screen.global_table = m_global;
    screen.table_bits = m_bits;
    if (m_writer.WriteHeader(screen) != GifStatus::kOk || m_writer.WriteLoopExtension(0) != GifStatus::kOk)
      return WriteFailed(output, error);
    if (!m_shaper.Start(m_width, m_height, m_global, m_bits)) {
      *error = std::string(StringText(kStrMemoryError));
      Abandon();
      return false;
    }
    return true;
  }

  bool AddFrame(const ImageRecord& record, const std::string& output, std::string* error);

  bool AddComment(const char* text, const std::string& output, std::string* error) {
    if (m_writer.WriteComment(text ? text : "") != GifStatus::kOk) return WriteFailed(output, error);
    return true;
  }

  // Trailer, then the rename that makes the file appear.
  bool Finish(const std::string& output, std::string* error) {
    if (m_writer.WriteTrailer() != GifStatus::kOk || !m_sink.Commit()) return WriteFailed(output, error);
    return true;
  }

  void Abandon() { m_sink.Abandon(); }

 private:
  bool WriteFailed(const std::string& output, std::string* error) {
    *error = "error writing '" + output + "'";
    if (!m_sink.error().empty()) *error += ": " + m_sink.error();
    Abandon();
    return false;
  }

  int m_width, m_height, m_bits;
  uint8_t m_global[kPaletteBytes];
  SafeFile m_sink;
  GifWriter m_writer{m_sink};
  GifFrameShaper m_shaper;
};

bool GifFileHost::File::AddFrame(const ImageRecord& record, const std::string& output,
                                 std::string* error) {
  const std::string which = "frame " + std::to_string(record.frame_number);
  const ImageBlock* image = LentImage(record.image);
  if (!image || !*image || image->width() > m_width || image->height() > m_height) {
    *error = which + " does not fit the file's screen";
    return false;
  }
  GifFrameInput input;
  input.image = image;
  input.transparent = record.transparent_index;
  input.clear_behind = record.transparent == 1;
  input.delay = static_cast<uint16_t>(Clamp16(record.delay));
  GifShapedFrame shaped;
  GifStatus status = m_shaper.Shape(input, &shaped);
  if (status == GifStatus::kNoMemory) {
    *error = std::string(StringText(kStrMemoryError));
    return false;
  }
  if (status != GifStatus::kOk) {
    *error = which + ": " + GifStatusText(status);
    return false;
  }
  if (WriteShapedFrame(m_writer, shaped) != GifStatus::kOk) return WriteFailed(output, error);
  return true;
}

// ---------------------------------------------------------------- service commands

GifFileHost::GifFileHost(std::string output_path, ProgressBar* progress)
    : m_path(std::move(output_path)), m_progress(progress) {}

GifFileHost::~GifFileHost() = default;

int32_t GifFileHost::Refuse(std::string message) {
  m_error = std::move(message);
  return 0;
}

int32_t GifFileHost::Call(HostHandle object, int32_t command, intptr_t param, void* data) {
  try {
    switch (command) {
      case kHostCreateTask:
      case kHostCreateTestTask: return CreateTask(data);
      case kHostAddImage: return AddImage(object, data);
      case kHostAddComment: return AddComment(object, data);
      case kHostCloseTask: return CloseTask(object, param);
      case kHostStatusText:
        if (m_progress && data) m_progress->SetStatus(static_cast<const char*>(data));
        return 1;
      case kHostProgress:
        if (m_progress) m_progress->Update(static_cast<long>(param), static_cast<long>(reinterpret_cast<intptr_t>(data)));
        return 1;
      default:
        // Choosing files and colours or showing help needs a person at a
        // window; a terminal run has all its choices on the command line.
        return 0;
    }
  } catch (const std::bad_alloc&) {
    return Refuse(std::string(StringText(kStrMemoryError)));
  } catch (...) {
    return Refuse("unexpected failure in the file host");
  }
}

int32_t GifFileHost::CreateTask(const void* data) {
  if (m_file) return Refuse("a file object is already open");
  if (!data) return Refuse("a file object was asked for without a task record");
  TaskRecord task;
  std::memcpy(&task, data, sizeof task);
  auto file = std::make_unique<File>(task);
  if (!file->Open(m_path, &m_error)) return 0;
  m_file = std::move(file);
  m_object = reinterpret_cast<HostHandle>(data);
  m_finished = false;
  m_frames_written = 0;
  m_error.clear();
  return 1;
}

int32_t GifFileHost::AddImage(HostHandle object, const void* data) {
  if (!m_file || object != m_object || !data) return Refuse("an image was added to no open file");
  ImageRecord record;
  std::memcpy(&record, data, sizeof record);
  if (!m_file->AddFrame(record, m_path, &m_error)) return 0;
  ++m_frames_written;
  return 1;
}

int32_t GifFileHost::AddComment(HostHandle object, const void* data) {
  if (!m_file || object != m_object) return Refuse("a comment was added to no open file");
  return m_file->AddComment(static_cast<const char*>(data), m_path, &m_error) ? 1 : 0;
}

int32_t GifFileHost::CloseTask(HostHandle object, intptr_t param) {
  if (!m_file || object != m_object) return Refuse("no open file to close");
  std::unique_ptr<File> file = std::move(m_file);
  m_object = 0;
  if (param == kHostTaskAbandoned) {
    file->Abandon();
    return 1;
  }
  m_finished = file->Finish(m_path, &m_error);
  return m_finished ? 1 : 0;
}

}  // namespace tess::cli
