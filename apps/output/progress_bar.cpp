#include "apps/output/progress_bar.h"

#include <algorithm>
#include <iostream>
#include <unistd.h>

#include "apps/output/notes.h"

namespace QV::app {

ProgressBar::ProgressBar(const std::string& label)
    : label(label), terminal(isatty(STDERR_FILENO) == 1 && !isQuiet()) {}

ProgressBar::~ProgressBar() {
  if (shownPercent >= 0) std::cerr << '\n';
}

void ProgressBar::show(double done) {
  const int percent = static_cast<int>(100.0 * std::clamp(done, 0.0, 1.0));
  if (!terminal || percent == shownPercent) return;
  shownPercent = percent;
  const auto filled = static_cast<std::size_t>(percent * 2 / 5);
  std::cerr << '\r' << label << " [" << std::string(filled, '#') << std::string(40 - filled, '.')
            << "] " << percent << " %" << std::flush;
}

void ProgressBar::note(const std::string& line) {
  if (shownPercent >= 0) std::cerr << "\r\033[K";
  std::cerr << line << '\n';
  shownPercent = -1;
}

}  // namespace QV::app
