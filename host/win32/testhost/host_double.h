// The test host's side of the plug-in interface: a host record whose service
// function answers every command the plug-in may send, checks each record it
// is handed (size, version, every field the host reads and every field that
// must stay zero) and logs each call with its record's bytes.
//
// The service function has no context argument, so one HostDouble at a time
// is reachable from it: the one an ActiveHost scope names.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "plugin/host_interface.h"

namespace tess::testhost {

struct HostCall {
  int32_t command = 0;
  HostHandle object = 0;
  intptr_t param = 0;
  uintptr_t data = 0;
  std::vector<uint8_t> record;  // task, image or colour-picker record bytes
  std::string text;             // comment, help reference or status text
};

class HostDouble {
 public:
  // Which command answers 0 (1, 2, 5, 9 or 11); 0 for a host that accepts all.
  int32_t refuse = 0;
  uint32_t capabilities = kHostCapOptimise | kHostCapTrueColour;
  // What the colour picker answers.
  uint32_t chosen_colour = 0x00336699;

  // The record PLUGINDoBuild is given. Its unread bytes are filled with a
  // pattern so that reading them would show.
  HostRecord MakeRecord(bool with_service) const;

  const std::vector<HostCall>& calls() const { return m_calls; }
  const std::vector<std::string>& problems() const { return m_problems; }
  // The commands of the calls, in order, keeping only those in `wanted`.
  std::vector<int32_t> Sequence(std::initializer_list<int32_t> wanted) const;
  // The last call with `command`, or null.
  const HostCall* Last(int32_t command) const;
  // The task record of the last command 1 or 5, as sent.
  const TaskRecord* LastTask() const;
  // The window the task records must name.
  void set_dialog(HWND dialog) { m_dialog = dialog; }
  void set_log(FILE* log) { m_log = log; }

  // The host's service function: caller removes the arguments.
  static int32_t Service(HostHandle object, int32_t command, intptr_t param, void* data);

 private:
  friend class ActiveHost;
  int32_t Handle(HostCall& call, void* data);
  void CheckTask(const HostCall& call, const TaskRecord& task);
  void CheckImage(const HostCall& call, const ImageRecord& image);
  void CheckPicker(ColourPickerRecord& picker);
  void Problem(const HostCall& call, const std::string& what);
  void Log(const HostCall& call) const;

  std::vector<HostCall> m_calls;
  std::vector<std::string> m_problems;
  HostHandle m_task = 0;
  TaskRecord m_task_copy{};
  int32_t m_next_frame = 0;
  HostHandle m_last_image = 0;
  HWND m_dialog = nullptr;
  DWORD m_thread = GetCurrentThreadId();
  FILE* m_log = nullptr;
};

// Makes `host` the one the service function reaches, for one scope.
class ActiveHost {
 public:
  explicit ActiveHost(HostDouble& host);
  ~ActiveHost();
  ActiveHost(const ActiveHost&) = delete;
  ActiveHost& operator=(const ActiveHost&) = delete;
};

}  // namespace tess::testhost
