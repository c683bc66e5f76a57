// The command line's stand-in for the host's status line and progress bar: one
// line on stderr, redrawn in place with a carriage return. It draws only when
// enabled (stderr is a terminal and --quiet was not given), redraws only when
// what it shows changes, and leaves the line blank whenever it is cleared, so
// messages printed between phases start on a clean line.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

namespace tess::cli {

class ProgressBar {
 public:
  static constexpr int kBarCells = 30;

  ProgressBar(std::ostream& out, bool enabled) : m_out(out), m_enabled(enabled) {}
  ~ProgressBar() { Clear(); }
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  bool enabled() const { return m_enabled; }

  // The phase name shown before the bar ("Building", "Remapping", ...).
  void SetStatus(std::string_view text);
  // Step `position` of `total`; (0, 0) clears the bar but keeps the status.
  void Update(long position, long total);
  // Blanks the line if anything is drawn on it.
  void Clear();

 private:
  void Draw();

  std::ostream& m_out;
  bool m_enabled;
  std::string m_status;
  long m_position = 0;
  long m_total = 0;
  std::string m_drawn;  // the text currently on the line, empty when blank
};

// The line Update draws for `status` at `position` of `total` (no line end).
std::string FormatProgressLine(std::string_view status, long position, long total);

}  // namespace tess::cli
