#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ocpan {

// Follows a calibration by the lines that the library prints: how many pictures it named,
// how many of them are done and with what outcome, and which step runs.
class cal_progress {
 public:
  // Takes the next line, without its end.
  void take(std::string_view line);

  // Pictures that will be read: in each set as many frames as its shortest series has.
  int named() const { return named_; }
  // Pictures that were read, or passed over because their frame broke off.
  int done() const { return done_; }
  int boards_found() const { return boards_found_; }
  int boards_not_found() const { return boards_not_found_; }
  int unreadable() const { return unreadable_; }
  // The latest step, without its dashes: "Step 1. Chessboard detection". Empty before.
  const std::string& step() const { return step_; }
  // The debug pictures that the library meant to write, as it names them.
  const std::set<std::string>& debug_pictures() const { return debug_pictures_; }

 private:
  struct picture_set {
    int cameras = 0;
    int frames = -1;  // -1 until the first camera's files were counted
  };

  void take_summary(std::string_view line);
  void take_detection(std::string_view line);
  void next_set();
  void finish_picture();
  void break_off_frame();
  int cameras_now() const;

  std::vector<picture_set> sets_;
  std::size_t set_ = 0;      // the set that is read, counted from 1; 0 before the first
  int done_before_set_ = 0;  // pictures of the sets ahead of it
  int done_in_set_ = 0;
  int named_ = 0;
  int done_ = 0;
  int boards_found_ = 0;
  int boards_not_found_ = 0;
  int unreadable_ = 0;
  std::string step_;
  std::set<std::string> debug_pictures_;
};

}  // namespace ocpan
