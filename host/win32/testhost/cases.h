// The test host's cases: each drives tessarine.dll through its exports and
// its dialog and fails with a CaseFailure naming what it saw.
#pragma once

#include <cstdio>
#include <span>
#include <string>

#include "host/win32/testhost/session.h"

namespace tess::testhost {

struct Context {
  Plugin plugin;
  std::string folder;    // artifacts: configuration, documents, call log
  std::string shots;     // screenshots, one or more per case
  std::string appdata;   // what TESSARINE_APPDATA points to
  FILE* log = nullptr;   // every host call with its record bytes
  // The configuration file as the dialog wrote it after the first Cancel of
  // the run: every case starts from these settings.
  std::string baseline;
  double first_open_ms = -1;
};

struct TestCase {
  const char* name;
  void (*run)(Context&);
};

std::span<const TestCase> Cases();

}  // namespace tess::testhost
