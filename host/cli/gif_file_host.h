// The command line as the plug-in's host: the file object a build creates is
// an animated GIF on disk. The task record gives the screen and the global
// table; every added image becomes a frame (cropped and "do not dispose" when
// it has a transparent index, with a local table when it is true colour or
// its colours differ from the global table); a comment becomes a comment
// block; closing writes the trailer. Status and progress drive a ProgressBar.
//
// Invariant: the output path only ever holds a complete file. Everything goes
// through a SafeFile, put in place when the task closes normally; an
// abandoned task, a failed write or destroying the host early deletes the
// temporary file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/cli/progress_bar.h"
#include "plugin/host_interface.h"

namespace tess::cli {

// kBackground shapes and writes each frame on a thread of its own while the
// build goes on with the next (at most two frames wait); a frame's failure is
// then reported by the next call. kInline writes each frame before AddImage
// returns, so every allocation is the calling thread's.
enum class FrameWriting { kInline, kBackground };

class GifFileHost final : public HostService {
 public:
  // `progress` may be null (no status display); it must outlive the host.
  GifFileHost(std::string output_path, ProgressBar* progress, FrameWriting writing = FrameWriting::kInline);
  ~GifFileHost() override;
  GifFileHost(const GifFileHost&) = delete;
  GifFileHost& operator=(const GifFileHost&) = delete;

  int32_t Call(HostHandle object, int32_t command, intptr_t param, void* data) override;

  // True once a task closed normally and its file is in place.
  bool finished() const { return m_finished; }
  // Why the last file command failed, empty when none did.
  const std::string& error() const { return m_error; }
  const std::string& output_path() const { return m_path; }
  int frames_written() const { return m_frames_written; }

 private:
  class File;

  int32_t CreateTask(const void* data);
  int32_t AddImage(HostHandle object, const void* data);
  int32_t AddComment(HostHandle object, const void* data);
  int32_t CloseTask(HostHandle object, intptr_t param);
  int32_t Refuse(std::string message);

  std::string m_path;
  ProgressBar* m_progress;
  FrameWriting m_writing;
  std::unique_ptr<File> m_file;  // the open task, if any
  HostHandle m_object = 0;       // the task record's address while it is open
  bool m_finished = false;
  int m_frames_written = 0;
  std::string m_error;
};

}  // namespace tess::cli
