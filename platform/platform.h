// The operating-system services the portable engine needs, behind one small
// interface: per-user folders, the Shift key, the clock, and opening files and
// web addresses. The engine takes a Platform& so tests can substitute a fake;
// the real one comes from SystemPlatform() (POSIX or Win32, chosen at build).
#pragma once

#include <string>

namespace tess {

// Local time as the configuration file's header line needs it.
struct LocalTime {
  int year = 1970;    // four digits
  int month = 0;      // 0 = January
  int day = 1;        // 1..31
  int weekday = 4;    // 0 = Sunday
  int hour = 0, minute = 0, second = 0;
};

class Platform {
 public:
  virtual ~Platform() = default;

  // The per-user application-data folder, without a trailing separator
  // requirement; empty when it cannot be found.
  virtual std::string AppDataFolder() = 0;
  // The user's documents folder; empty when it cannot be found.
  virtual std::string DocumentsFolder() = 0;
  // The separator the platform's paths use: '\\' on Windows, '/' elsewhere.
  virtual char PathSeparator() const = 0;

  // True while the Shift key is held (always false where no keyboard state is
  // available, such as a terminal).
  virtual bool ShiftDown() = 0;

  virtual LocalTime Now() = 0;

  // Opens a generated file with the program the system associates with it.
  // False when the system refused.
  virtual bool OpenDocument(const std::string& path, bool maximised) = 0;

  // Starts a web browser on `address` (already escaped). `original` is the
  // text the address was built from, for platforms that fall back to the
  // program associated with that file. False when no browser could be started.
  virtual bool LaunchBrowser(const std::string& address, const std::string& original,
                             bool maximised) = 0;
};

// The platform this binary runs on. Lives for the whole process.
Platform& SystemPlatform();

}  // namespace tess
