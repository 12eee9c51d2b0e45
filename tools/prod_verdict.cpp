#include "tools/prod_verdict.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <locale>
#include <sstream>
#include <string_view>

#include "platform/text_file.h"

namespace ocpan {
namespace {

constexpr double mm_per_metre = 1000;
constexpr double error_of_wrong_cells = 0.5;  // pixels; a right run has 0.01 to 0.1
constexpr double error_of_far_turn = 0.3;     // pixels
constexpr double far_turn = 0.9;              // cells; the search reaches about one
constexpr double no_turn = 0.02;              // cells
constexpr int samples_per_match = 2;
constexpr int fewest_pair_matches = 10;
// By the number of cameras: with fewer matches in all the refinement has no freedom left.
constexpr std::array<std::uint32_t, 9> fewest_matches = {0, 0, 6, 9, 12, 16, 19, 22, 25};

// The number behind the colon of a report's line.
std::optional<double> number_in(std::string_view line) {
  const std::size_t colon = line.rfind(": ");
  if (colon == std::string_view::npos) return std::nullopt;
  line.remove_prefix(colon + 2);
  double number = 0;
  const auto [end, failure] = std::from_chars(line.data(), line.data() + line.size(), number);
  if (failure != std::errc() || end != line.data() + line.size()) return std::nullopt;
  return number;
}

// The numbers of one block of the report, which an empty line ends.
std::vector<double> read_block(std::istream& in) {
  std::vector<double> numbers;
  for (std::string line; read_text_line(in, line) && !line.empty();) {
    const std::optional<double> number = number_in(line);
    if (!number) break;
    numbers.push_back(*number);
  }
  return numbers;
}

bool take_total(prod_measures& m, const std::vector<double>& block) {
  if (block.size() != 7 || !(block[2] >= 0 && block[2] <= 4294967295.0)) return false;
  m.reprojection_mean = block[0];
  m.reprojection_max = block[1];
  m.point_count = static_cast<std::uint32_t>(block[2]);
  m.radius_min = block[3] * mm_per_metre;
  m.radius_max = block[4] * mm_per_metre;
  m.delta_mean = block[5];
  m.delta_max = block[6];
  return true;
}

bool take_pair(prod_measures& m, const std::vector<double>& block) {
  if (block.size() != 5 || !(block[2] >= 0 && block[2] <= 2147483647.0)) return false;
  m.pair_reprojection_mean.push_back(block[0]);
  m.pair_reprojection_max.push_back(block[1]);
  m.pair_count.push_back(static_cast<std::int32_t>(block[2]));
  m.pair_radius_min.push_back(block[3] * mm_per_metre);
  m.pair_radius_max.push_back(block[4] * mm_per_metre);
  return true;
}

bool take_camera(prod_measures& m, const std::vector<double>& block) {
  if (block.size() != 2) return false;
  m.cam_delta_mean.push_back(block[0]);
  m.cam_delta_max.push_back(block[1]);
  return true;
}

template <typename... Items>
std::string sentence(const Items&... items) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  (text << ... << items);
  return text.str();
}

void doubt_errors(std::vector<std::string>& doubts, const prod_measures& m) {
  // Put so that what is no number is doubted.
  if (!(m.reprojection_mean <= error_of_wrong_cells)) {
    doubts.push_back(sentence("the mean error is ", m.reprojection_mean, " pixels, above ",
                              error_of_wrong_cells,
                              ": the pictures were probably matched one cell off"));
  }
  if (!(m.delta_max <= far_turn) && !(m.reprojection_mean <= error_of_far_turn)) {
    doubts.push_back(sentence("features moved by up to ", m.delta_max,
                              " cells with a mean error of ", m.reprojection_mean,
                              " pixels: the rig is turned by more than the search can reach"));
  }
}

void doubt_matches(std::vector<std::string>& doubts, const prod_measures& m, std::size_t cameras) {
  const std::uint32_t matches = m.point_count / samples_per_match;
  const std::uint32_t fewest = fewest_matches[std::min(cameras, fewest_matches.size() - 1)];
  if (matches < fewest) {
    doubts.push_back(sentence("only ", matches, " matches in all, ", cameras,
                              " cameras need at least ", fewest));
  }
  for (std::size_t k = 0; k < m.pair_count.size(); ++k) {
    const int of_pair = m.pair_count[k] / samples_per_match;
    if (of_pair < fewest_pair_matches) {
      doubts.push_back(sentence("pair ", k, " has only ", of_pair,
                                " matches: see that the cameras' common part shows the pattern"));
    }
  }
}

void doubt_search(std::vector<std::string>& doubts, const prod_measures& m) {
  const auto moved = [](double delta) { return !(delta <= no_turn); };
  if (std::none_of(m.cam_delta_mean.begin(), m.cam_delta_mean.end(), moved)) {
    doubts.push_back(
        "no camera was moved: the search found no agreement between the pictures, or the "
        "calibration was refined before");
  }
}

}  // namespace

std::optional<prod_measures> read_production_report(std::istream& in) {
  prod_measures measures;
  bool whole = false;
  for (std::string line; read_text_line(in, line);) {
    if (line == " ---------Total QA Measures--------- ") {
      whole = take_total(measures, read_block(in));
      if (!whole) return std::nullopt;
    } else if (line.rfind("----Pair ", 0) == 0) {
      if (!take_pair(measures, read_block(in))) return std::nullopt;
    } else if (line.rfind("----Cam ", 0) == 0) {
      if (!take_camera(measures, read_block(in))) return std::nullopt;
    }
  }
  if (!whole) return std::nullopt;
  return measures;
}

std::vector<std::string> doubts_about(const prod_measures& measures, std::size_t cameras) {
  std::vector<std::string> doubts;
  doubt_errors(doubts, measures);
  doubt_matches(doubts, measures, cameras);
  doubt_search(doubts, measures);
  return doubts;
}

}  // namespace ocpan
