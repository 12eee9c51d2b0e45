#pragma once

#include <cstddef>
#include <ostream>
#include <string>

namespace ocpan {

// "[#####---------------] 5 of 20 pictures"
//
//   done, total   0 <= done <= total; a total of 0 shows an empty bar
std::string bar_text(int done, int total, const std::string& unit);

// One line at the bottom of a terminal that is drawn over again. Plain carriage returns
// and blanks, which every terminal knows.
class progress_line {
 public:
  // Shows nothing ever unless `shown`.
  progress_line(std::ostream& out, bool shown) : out_(out), shown_(shown) {}
  ~progress_line() { clear(); }
  progress_line(const progress_line&) = delete;
  progress_line& operator=(const progress_line&) = delete;

  void show(const std::string& text);
  // Takes the line away, so that others may print.
  void clear();

 private:
  std::ostream& out_;
  bool shown_;
  std::size_t width_ = 0;  // of what stands there now
};

}  // namespace ocpan
