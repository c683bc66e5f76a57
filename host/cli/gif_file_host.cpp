// The GIF file object behind the host service commands. One File lives from
// create-task to close-task; the host checks the task handle on every call so
// a stray object never writes into the wrong file.
//
// Sections: the file object · service commands.
#include "host/cli/gif_file_host.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>

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
  File(const TaskRecord& task, bool background)
      : m_width(static_cast<int>(task.width)), m_height(static_cast<int>(task.height)),
        m_bits(static_cast<int>(task.bits)), m_background(background) {
    std::memcpy(m_global, task.palette, kPaletteBytes);
  }
  ~File() { Abandon(); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  bool Open(const std::string& output, std::string* error) {
    m_output = output;
    if (m_width < 1 || m_width > 65535 || m_height < 1 || m_height > 65535 || m_bits < 1 || m_bits > 8) {
      *error = "the task's screen or palette is not one a GIF can hold";
      return false;
    }
    if (!m_sink.Open(output)) {
      *error = (output == kStandardOutputPath ? "cannot write to " : "cannot create ") + Shown() + ": " +
               m_sink.error();
      return false;
    }
    GifScreen screen;
    screen.width = m_width;
    screen.height = m_height;
    screen.global_table = m_global;
    screen.table_bits = m_bits;
    if (m_writer.WriteHeader(screen) != GifStatus::kOk || m_writer.WriteLoopExtension(0) != GifStatus::kOk)
      return WriteFailed(error);
    if (!m_shaper.Start(m_width, m_height, m_global, m_bits)) {
      *error = std::string(StringText(kStrMemoryError));
      Abandon();
      return false;
    }
    if (m_background) {
      try {
        m_worker = std::thread([this] { Work(); });
      } catch (const std::system_error&) {
        m_background = false;  // no thread to be had: the frames are written in turn
      }
    }
    return true;
  }

  bool AddFrame(const ImageRecord& record, std::string* error);

  bool AddComment(const char* text, std::string* error) {
    if (!Drain(error)) return false;
    if (m_writer.WriteComment(text ? text : "") != GifStatus::kOk) return WriteFailed(error);
    return true;
  }

  // The frames still queued, the trailer, then the rename that makes the
  // file appear.
  bool Finish(std::string* error) {
    if (!Drain(error)) return false;
    StopWorker(false);
    if (m_writer.WriteTrailer() != GifStatus::kOk || !m_sink.Commit()) return WriteFailed(error);
    return true;
  }

  void Abandon() {
    StopWorker(true);
    m_sink.Abandon();
  }

 private:
  // A frame planned and waiting for its encoding.
  struct Queued {
    GifShapedFrame shaped;
    std::string which;
  };

  // What a shaper's status means to the user; false unless it is kOk.
  static bool Shaped(GifStatus status, const std::string& which, std::string* error);
  // Encodes and writes a planned frame, on whichever thread writes frames.
  bool WriteFrame(GifShapedFrame& shaped, const std::string& which, std::string* error);
  void Work();
  bool Drain(std::string* error);
  void StopWorker(bool skip_queued);

  // The output as messages name it.
  std::string Shown() const {
    return m_output == kStandardOutputPath ? "standard output" : "'" + m_output + "'";
  }

  bool WriteFailed(std::string* error) {
    *error = "error writing " + Shown();
    if (!m_sink.error().empty()) *error += ": " + m_sink.error();
    m_sink.Abandon();
    return false;
  }

  int m_width, m_height, m_bits;
  uint8_t m_global[kPaletteBytes];
  std::string m_output;
  SafeFile m_sink;
  GifWriter m_writer{m_sink};
  GifFrameShaper m_shaper;

  // With a background writer, encoding a frame (the bulk of the work of a
  // command-line GIF) overlaps the build and planning of the next ones. A few
  // planned frames may wait, so memory stays bounded; they are planned into
  // their slots on the build's thread, which makes and frees their pixel
  // buffers and so keeps its allocation accounting whole (the writer's
  // encoded bytes are its own). The writer owns the shaper's encoding side,
  // m_writer and m_sink until the queue is drained.
  bool m_background;
  GifShapedFrame m_inline;  // the one frame in hand without a writer
  std::thread m_worker;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::array<Queued, 3> m_queue;
  size_t m_queued = 0, m_next_in = 0, m_next_out = 0;  // guarded by m_mutex
  bool m_stopping = false, m_skip = false;             // guarded by m_mutex
  std::string m_failure;                               // the first failure, guarded by m_mutex
};

bool GifFileHost::File::AddFrame(const ImageRecord& record, std::string* error) {
  std::string which = "frame " + std::to_string(record.frame_number);
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
  if (!m_background)
    return Shaped(m_shaper.Plan(input, &m_inline), which, error) && WriteFrame(m_inline, which, error);

  {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return m_queued < m_queue.size() || !m_failure.empty(); });
    if (!m_failure.empty()) {
      *error = m_failure;
      return false;
    }
  }
  // The slot is free: the writer is done with it until it is queued again.
  Queued& slot = m_queue[m_next_in];
  if (!Shaped(m_shaper.Plan(input, &slot.shaped), which, error)) return false;
  slot.which = std::move(which);
  {
    std::lock_guard lock(m_mutex);
    m_next_in = (m_next_in + 1) % m_queue.size();
    ++m_queued;
  }
  m_changed.notify_all();
  return true;
}

bool GifFileHost::File::Shaped(GifStatus status, const std::string& which, std::string* error) {
  if (status == GifStatus::kOk) return true;
  *error = status == GifStatus::kNoMemory ? std::string(StringText(kStrMemoryError))
                                          : which + ": " + GifStatusText(status);
  return false;
}

bool GifFileHost::File::WriteFrame(GifShapedFrame& shaped, const std::string& which, std::string* error) {
  if (!Shaped(m_shaper.Encode(&shaped), which, error)) return false;
  if (WriteShapedFrame(m_writer, shaped) != GifStatus::kOk) return WriteFailed(error);
  return true;
}

void GifFileHost::File::Work() {
  for (;;) {
    Queued* job = nullptr;
    bool skip = false;
    {
      std::unique_lock lock(m_mutex);
      m_changed.wait(lock, [&] { return m_queued > 0 || m_stopping; });
      if (m_queued == 0) return;
      job = &m_queue[m_next_out];
      skip = m_skip || !m_failure.empty();
    }
    std::string error;
    bool ok = true;
    if (!skip) {
      try {
        ok = WriteFrame(job->shaped, job->which, &error);
      } catch (const std::bad_alloc&) {
        ok = false;
        error = std::string(StringText(kStrMemoryError));
      } catch (...) {
        ok = false;
        error = "unexpected failure in the file host";
      }
    }
    {
      std::lock_guard lock(m_mutex);
      if (!ok && m_failure.empty()) m_failure = error.empty() ? "error writing " + Shown() : error;
      m_next_out = (m_next_out + 1) % m_queue.size();
      --m_queued;
    }
    m_changed.notify_all();
  }
}

// Waits until every queued frame is written; false with the first failure.
bool GifFileHost::File::Drain(std::string* error) {
  if (!m_background) return true;
  std::unique_lock lock(m_mutex);
  m_changed.wait(lock, [&] { return m_queued == 0; });
  if (m_failure.empty()) return true;
  *error = m_failure;
  return false;
}

void GifFileHost::File::StopWorker(bool skip_queued) {
  if (!m_worker.joinable()) return;
  {
    std::lock_guard lock(m_mutex);
    m_stopping = true;
    m_skip = m_skip || skip_queued;
  }
  m_changed.notify_all();
  m_worker.join();
}

// ---------------------------------------------------------------- service commands

GifFileHost::GifFileHost(std::string output_path, ProgressBar* progress, FrameWriting writing)
    : m_path(std::move(output_path)), m_progress(progress), m_writing(writing) {}

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
  auto file = std::make_unique<File>(task, m_writing == FrameWriting::kBackground);
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
  if (!m_file->AddFrame(record, &m_error)) return 0;
  ++m_frames_written;
  return 1;
}

int32_t GifFileHost::AddComment(HostHandle object, const void* data) {
  if (!m_file || object != m_object) return Refuse("a comment was added to no open file");
  return m_file->AddComment(static_cast<const char*>(data), &m_error) ? 1 : 0;
}

int32_t GifFileHost::CloseTask(HostHandle object, intptr_t param) {
  if (!m_file || object != m_object) return Refuse("no open file to close");
  std::unique_ptr<File> file = std::move(m_file);
  m_object = 0;
  if (param == kHostTaskAbandoned) {
    file->Abandon();
    return 1;
  }
  m_finished = file->Finish(&m_error);
  return m_finished ? 1 : 0;
}

}  // namespace tess::cli
