// The command line's stand-in for the host's status line and progress bar: one
// line on stderr, redrawn in place with a carriage return. It draws only when
// enabled (stderr is a terminal and --quiet was not given), redraws only when
// what it shows changes, and leaves the line blank whenever it is cleared, so
// messages printed between phases start on a clean line. Once a phase has
// run for a second the line adds how long the rest of it should take, from
// the pace so far; a streamed build's phases are whole passes over the frames,
// so that is the time left for the pass.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <string_view>

namespace tess::cli {

class ProgressBar {
 public:
  static constexpr int kBarCells = 30;
  // Seconds from any fixed point; the default is the steady clock.
  using Clock = std::function<double()>;

  ProgressBar(std::ostream& out, bool enabled, Clock clock = {});
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
  // Seconds left in the phase, or -1 while there is no estimate yet.
  long SecondsLeft();

  std::ostream& m_out;
  bool m_enabled;
  Clock m_clock;
  std::string m_status;
  long m_position = 0;
  long m_total = 0;
  double m_phase_start = 0;  // when the current status and total began
  double m_estimated_at = -1;  // when m_seconds_left was worked out
  long m_seconds_left = -1;
  std::string m_drawn;  // the text currently on the line, empty when blank
};

// The line Update draws for `status` at `position` of `total` (no line end),
// with "about M:SS left" (H:MM:SS past an hour) when `seconds_left` is not
// negative.
std::string FormatProgressLine(std::string_view status, long position, long total,
                               long seconds_left = -1);

}  // namespace tess::cli
