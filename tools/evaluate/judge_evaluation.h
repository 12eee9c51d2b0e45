#pragma once

#include <locale>
#include <sstream>
#include <string>
#include <vector>

#include "tools/evaluate/evaluation.h"

namespace ocpan {

// A number that is good up to the first limit and unusable beyond the second. One that is no
// number is unusable.
struct verdict_limits {
  double doubtful;
  double unusable;

  verdict of(double value) const {
    if (value <= doubtful) return verdict::good;
    return value <= unusable ? verdict::doubtful : verdict::unusable;
  }
};

inline constexpr verdict_limits rms_limits = {0.5, 2};          // pixels; of a camera or pair
inline constexpr verdict_limits pair_turn_limits = {0.1, 0.5};  // degrees
inline constexpr verdict_limits loop_turn_limits = {0.2, 1};    // degrees
inline constexpr verdict_limits left_out_limits = {0.1, 0.5};  // part of all boards, or of a pair's
inline constexpr std::size_t fewest_camera_boards = 5;
// A turn counts only beyond so many of its own standard deviations.
inline constexpr double significant_deviations = 3;

// Fills the verdicts and the findings from the numbers.
void judge_evaluation(evaluation& result);

// Adds a finding and keeps the worst first, those of a kind in the order they came.
void add_finding(std::vector<evaluation_finding>& findings, verdict judged,
                 const std::string& text);

// The items side by side, in the classic locale.
template <typename... Items>
std::string text_of(const Items&... items) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text.precision(3);
  (text << ... << items);
  return text.str();
}

// "camera 2", "cameras 1, 3 and 4": counted from 1.
std::string camera_words(const std::vector<std::size_t>& cameras);

}  // namespace ocpan
