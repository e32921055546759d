#include "tools/print/progress.h"

#include <algorithm>
#include <cstdio>

namespace Corvane::Tool {
namespace {

constexpr std::chrono::milliseconds kDrawPause{200};
constexpr std::chrono::seconds kLinePause{10};
constexpr std::size_t kBarColumns = 20;

// "[#####---------------]  25%  "
std::string ProgressBar(std::uint64_t sent, std::uint64_t total) {
  const double part = static_cast<double>(sent) / static_cast<double>(total);
  const auto filled = static_cast<std::size_t>(part * kBarColumns);
  char percent[16];
  std::snprintf(percent, sizeof(percent), "] %3d%%  ", static_cast<int>(part * 100));
  return '[' + std::string(filled, '#') + std::string(kBarColumns - filled, '-') + percent;
}

}  // namespace

std::string FormatBytes(std::uint64_t bytes) {
  constexpr const char* kUnits[] = {"kB", "MB", "GB"};
  if (bytes < 1000) return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
  double scaled = static_cast<double>(bytes) / 1000;
  std::size_t unit = 0;
  while (scaled >= 999.95 && unit + 1 < std::size(kUnits)) {
    scaled /= 1000;
    ++unit;
  }
  char text[40];
  std::snprintf(text, sizeof(text), "%.1f %s", scaled, kUnits[unit]);
  return text;
}

Progress::~Progress() { DrawLocked({}); }

void Progress::Say(const std::string& text) {
  const std::lock_guard lock(m_mutex);
  DrawLocked({});
  m_out << "corvane: " << text << '\n' << std::flush;
}

void Progress::Tell(std::uint64_t sentBytes, const char* doing) {
  const std::lock_guard lock(m_mutex);
  const Clock::time_point now = Clock::now();
  if (sentBytes == 0) m_begin = now;
  if (now - m_told < (m_isTerminal ? Clock::duration(kDrawPause) : Clock::duration(kLinePause))) {
    return;
  }
  m_told = now;
  const std::string line = LineLocked(sentBytes, doing);
  if (m_isTerminal) {
    DrawLocked(line);
  } else {
    m_out << "corvane: " << line << '\n' << std::flush;
  }
}

// In place of the line that stands there; an empty one leaves none.
void Progress::DrawLocked(const std::string& line) {
  if (m_drawn + line.size() == 0) return;
  const std::size_t stale = m_drawn - std::min(m_drawn, line.size());
  m_out << '\r' << line << std::string(stale, ' ') << (line.empty() ? "\r" : "") << std::flush;
  m_drawn = line.size();
}

std::string Progress::LineLocked(std::uint64_t sentBytes, const char* doing) const {
  // A file may have grown since.
  const bool isPart = m_total && *m_total > 0 && sentBytes <= *m_total;
  std::string line = m_isTerminal && isPart ? ProgressBar(sentBytes, *m_total) : std::string();
  if (sentBytes == 0) return line + doing;
  line += FormatBytes(sentBytes);
  if (isPart) line += " of " + FormatBytes(*m_total);
  line += " sent, ";
  const double seconds = std::chrono::duration<double>(m_told - m_begin).count();
  if (seconds > 0) {
    line += FormatBytes(static_cast<std::uint64_t>(static_cast<double>(sentBytes) / seconds));
    line += "/s, ";
  }
  return line + doing;
}

}  // namespace Corvane::Tool
