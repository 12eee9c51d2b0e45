#include "tools/progress_bar.h"

#include <algorithm>
#include <locale>
#include <sstream>

namespace ocpan {

std::string bar_text(int done, int total, const std::string& unit) {
  constexpr int cells = 20;
  const int filled = total > 0 ? static_cast<int>(1LL * cells * done / total) : 0;
  std::string bar(cells, '-');
  std::fill_n(bar.begin(), filled, '#');
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << '[' << bar << "] " << done << " of " << total << ' ' << unit;
  return text.str();
}

void progress_line::show(const std::string& text) {
  if (!shown_ || (text.empty() && width_ == 0)) return;
  out_ << '\r' << text;
  if (text.size() < width_) out_ << std::string(width_ - text.size(), ' ');
  out_ << std::flush;
  width_ = text.size();
}

void progress_line::clear() {
  if (!shown_ || width_ == 0) return;
  out_ << '\r' << std::string(width_, ' ') << '\r' << std::flush;
  width_ = 0;
}

}  // namespace ocpan
