#include "tools/cal_progress.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace ocpan {
namespace {

constexpr std::string_view step_dashes = "-----------";

// What the library prints when it gives a picture, and with it the rest of the frame, up.
constexpr std::array<std::string_view, 5> read_failures = {
    "Error opening image file ", "Bad or no Image Data for file ", "Unexpected data type ",
    "Width (", "No filename was given"};

bool ends_with(std::string_view line, std::string_view end) {
  return line.size() >= end.size() && line.substr(line.size() - end.size()) == end;
}

int number_at(std::string_view text) {
  int number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

// Takes the start off the line if it is there.
bool take_start(std::string_view& line, std::string_view start) {
  if (line.substr(0, start.size()) != start) return false;
  line.remove_prefix(start.size());
  return true;
}

}  // namespace

void cal_progress::take(std::string_view line) {
  if (step_.empty()) take_summary(line);
  if (take_start(line, step_dashes) && take_start(line, "Step ")) {
    step_ = "Step " + std::string(line.substr(0, line.find("--")));
    if (step_.substr(0, 7) != "Step 1.") done_ = named_;
    return;
  }
  if (step_.empty()) return;
  if (take_start(line, "This cal_frame_set_number: ")) return next_set();
  if (take_start(line, "detect ")) return take_detection(line);
  for (const std::string_view failure : read_failures) {
    if (take_start(line, failure)) {
      ++unreadable_;
      return break_off_frame();
    }
  }
}

// The files of a set are listed by name, its cameras one by one.
void cal_progress::take_summary(std::string_view line) {
  if (take_start(line, "    - set_prefix: ")) {
    sets_.emplace_back();
  } else if (!sets_.empty() && take_start(line, "     + files (")) {
    picture_set& set = sets_.back();
    const int files = number_at(line);
    named_ -= set.cameras * std::max(set.frames, 0);
    set.frames = set.frames < 0 ? files : std::min(set.frames, files);
    ++set.cameras;
    named_ += set.cameras * set.frames;
  }
}

void cal_progress::take_detection(std::string_view line) {
  constexpr std::string_view success = " chessboard successfully ";
  constexpr std::string_view failure = " chessboard failed";
  const bool found = ends_with(line, success);
  if (!found && !ends_with(line, failure)) return;
  ++(found ? boards_found_ : boards_not_found_);
  debug_pictures_.emplace(line.substr(0, line.size() - (found ? success : failure).size()));
  finish_picture();
}

void cal_progress::next_set() {
  if (set_ > 0 && set_ <= sets_.size()) {
    done_before_set_ += sets_[set_ - 1].cameras * std::max(sets_[set_ - 1].frames, 0);
  }
  ++set_;
  done_in_set_ = 0;
  done_ = std::min(done_before_set_, named_);
}

void cal_progress::finish_picture() {
  ++done_in_set_;
  done_ = std::min(done_before_set_ + done_in_set_, named_);
}

void cal_progress::break_off_frame() {
  const int cameras = cameras_now();
  done_in_set_ += cameras - done_in_set_ % cameras;
  done_ = std::min(done_before_set_ + done_in_set_, named_);
}

int cal_progress::cameras_now() const {
  return set_ > 0 && set_ <= sets_.size() ? std::max(sets_[set_ - 1].cameras, 1) : 1;
}

}  // namespace ocpan
