// testhost.exe: a Windows host of our own for tessarine.dll. Loads the DLL,
// runs every case (or those named on the command line) and prints one verdict
// line per case, "PASS name" or "FAIL name: reason", then "N passed, N failed".
//
//   testhost.exe <tessarine.dll> <artifact folder> [case...]
//
// The artifact folder receives the per-user settings (TESSARINE_APPDATA),
// documents, screenshots\*.bmp and host-calls.log (every service call with its
// record bytes). The exit code is 0 only when every case passed.
//
// Shift: the cases hold it by setting TESSARINE_TEST_SHIFT=1 in the process
// environment, which the Win32 platform reads instead of the keyboard while
// the variable is set (platform/platform_win32.cpp).
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "host/win32/testhost/cases.h"
#include "host/win32/testhost/dialog_cases.h"
#include "host/win32/testhost/fill_cases.h"
#include "host/win32/testhost/fountain_cases.h"

using namespace tess::testhost;

namespace {

bool LoadPlugin(const char* path, Plugin& plugin) {
  plugin.module = LoadLibraryA(path);
  if (!plugin.module) return false;
  plugin.get_params = reinterpret_cast<Plugin::GetParamsFunction>(
      reinterpret_cast<void*>(GetProcAddress(plugin.module, "PLUGINGetPluginParams")));
  plugin.do_build = reinterpret_cast<Plugin::DoBuildFunction>(
      reinterpret_cast<void*>(GetProcAddress(plugin.module, "PLUGINDoBuild")));
  return plugin.get_params && plugin.do_build;
}

bool Selected(const char* name, int argc, char** argv) {
  if (argc <= 3) return true;
  for (int i = 3; i < argc; ++i)
    if (std::strcmp(argv[i], name) == 0) return true;
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: testhost <tessarine.dll> <artifact folder> [case...]\n");
    return 2;
  }
  Context context;
  context.folder = argv[2];
  context.shots = context.folder + "\\screenshots";
  context.appdata = context.folder + "\\appdata";
  for (const std::string& folder : {context.folder, context.shots, context.appdata})
    CreateDirectoryA(folder.c_str(), nullptr);
  // Both the process environment and the C runtime's copy.
  SetEnvironmentVariableA("TESSARINE_APPDATA", context.appdata.c_str());
  _putenv(("TESSARINE_APPDATA=" + context.appdata).c_str());
  SetEnvironmentVariableA("TESSARINE_TEST_SHIFT", nullptr);
  context.log = std::fopen((context.folder + "\\host-calls.log").c_str(), "w");

  int passed = 0, failed = 0;
  if (!LoadPlugin(argv[1], context.plugin)) {
    std::printf("FAIL load: cannot load %s or find its two exports\n", argv[1]);
    ++failed;
  } else {
    std::vector<TestCase> cases(Cases().begin(), Cases().end());
    cases.insert(cases.end(), DialogCases().begin(), DialogCases().end());
    cases.insert(cases.end(), FillCases().begin(), FillCases().end());
    cases.insert(cases.end(), FountainCases().begin(), FountainCases().end());
    for (const TestCase& test : cases) {
      if (!Selected(test.name, argc, argv)) continue;
      if (context.log) std::fprintf(context.log, "== %s\n", test.name);
      std::string reason;
      try {
        test.run(context);
      } catch (const std::exception& failure) {
        reason = failure.what();
      }
      if (reason.empty()) {
        std::printf("PASS %s\n", test.name);
        ++passed;
      } else {
        std::printf("FAIL %s: %s\n", test.name, reason.c_str());
        ++failed;
      }
      std::fflush(stdout);
    }
  }
  std::printf("%d passed, %d failed\n", passed, failed);
  std::fflush(stdout);
  if (context.log) std::fclose(context.log);
  return failed == 0 ? 0 : 1;
}
