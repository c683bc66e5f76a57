// Drawing the progress line. Builds report a step per frame; most of those do
// not move the bar by a cell or the percentage by a point, so they draw nothing.
#include "host/cli/progress_bar.h"

#include <algorithm>

namespace tess::cli {

std::string FormatProgressLine(std::string_view status, long position, long total) {
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
  return line;
}

void ProgressBar::SetStatus(std::string_view text) {
  if (m_status == text) return;
  m_status = text;
  Draw();
}

void ProgressBar::Update(long position, long total) {
  m_position = position;
  m_total = total;
  Draw();
}

void ProgressBar::Clear() {
  if (!m_enabled || m_drawn.empty()) return;
  m_out << '\r' << std::string(m_drawn.size(), ' ') << '\r' << std::flush;
  m_drawn.clear();
}

void ProgressBar::Draw() {
  if (!m_enabled) return;
  std::string line = FormatProgressLine(m_status, m_position, m_total);
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
