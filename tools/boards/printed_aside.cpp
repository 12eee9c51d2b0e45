#include "tools/boards/printed_aside.h"

#include <iostream>
#include <sstream>

namespace ocpan {
namespace {

// Gives std::cout its own buffer back, whatever ends the work.
class output_diversion {
 public:
  explicit output_diversion(std::streambuf* aside) : shown_(std::cout.rdbuf(aside)) {}
  ~output_diversion() { std::cout.rdbuf(shown_); }
  output_diversion(const output_diversion&) = delete;
  output_diversion& operator=(const output_diversion&) = delete;

 private:
  std::streambuf* shown_;
};

}  // namespace

std::string printed_aside(const std::function<void()>& work) {
  std::ostringstream lines;
  const output_diversion diversion(lines.rdbuf());
  work();
  return lines.str();
}

}  // namespace ocpan
