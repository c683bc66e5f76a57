// Drawing the progress line. Builds report a step per frame; most of those do
// not move the bar by a cell or the percentage by a point, so they draw
// nothing. The estimate is worked out at most once a second for the same
// reason.
#include "host/cli/progress_bar.h"

#include <algorithm>
#include <chrono>

namespace tess::cli {
namespace {

// Before this much of a phase has passed the pace says little.
constexpr double kFirstEstimateSeconds = 1.0;

double SteadySeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

std::string Duration(long seconds) {
  auto two = [](long n) { return std::string(n < 10 ? "0" : "") + std::to_string(n); };
  long hours = seconds / 3600, minutes = seconds / 60 % 60;
  std::string text = hours > 0 ? std::to_string(hours) + ":" + two(minutes) : std::to_string(minutes);
  return text + ":" + two(seconds % 60);
}

}  // namespace

std::string FormatProgressLine(std::string_view status, long position, long total, long seconds_left) {
  std::string line(status);
  if (total <= 0) return line;
  long done = std::clamp(position, 0L, total);
  int cells = static_cast<int>(done * ProgressBar::kBarCells / total);
  int percent = static_cast<int>(done * 100 / total);
  if (!line.empty()) line += ' ';
  line += '[';
  line.append(static_cast<size_t>(cells), '#');
  line.append(static_cast<size_t>(ProgressBar::kBarCells - cells), '.');
  line += "] ";
  std::string number = std::to_string(percent);
  line.append(3 - std::min<size_t>(3, number.size()), ' ');
  line += number;
  line += '%';
  if (seconds_left >= 0) line += "  about " + Duration(seconds_left) + " left";
  return line;
}

ProgressBar::ProgressBar(std::ostream& out, bool enabled, Clock clock)
    : m_out(out), m_enabled(enabled), m_clock(clock ? std::move(clock) : Clock(SteadySeconds)) {}

void ProgressBar::SetStatus(std::string_view text) {
  if (m_status == text) return;
  m_status = text;
  Draw();
}

void ProgressBar::Update(long position, long total) {
  // A new total, or a bar that starts again, is a new phase.
  if (total != m_total || position < m_position) {
    m_phase_start = m_clock();
    m_estimated_at = -1;
    m_seconds_left = -1;
  }
  m_position = position;
  m_total = total;
  Draw();
}

void ProgressBar::Clear() {
  if (!m_enabled || m_drawn.empty()) return;
  m_out << '\r' << std::string(m_drawn.size(), ' ') << '\r' << std::flush;
  m_drawn.clear();
}

long ProgressBar::SecondsLeft() {
  if (m_total <= 0 || m_position <= 0) return -1;
  const double now = m_clock(), elapsed = now - m_phase_start;
  if (elapsed < kFirstEstimateSeconds) return -1;
  if (m_estimated_at < 0 || now - m_estimated_at >= 1.0) {
    const double left = elapsed * static_cast<double>(m_total - std::min(m_position, m_total)) /
                        static_cast<double>(m_position);
    m_seconds_left = static_cast<long>(left + 0.5);
    m_estimated_at = now;
  }
  return m_seconds_left;
}

void ProgressBar::Draw() {
  if (!m_enabled) return;
  std::string line = FormatProgressLine(m_status, m_position, m_total, SecondsLeft());
  if (line == m_drawn) return;
  // Pad over a longer previous line instead of clearing first, so the line
  // never flickers blank between two states.
  std::string padded = line;
  if (padded.size() < m_drawn.size()) padded.append(m_drawn.size() - padded.size(), ' ');
  m_out << '\r' << padded << std::flush;
  m_drawn = line;
  if (m_drawn.empty() && !padded.empty()) m_out << '\r' << std::flush;
}

}  // namespace tess::cli
