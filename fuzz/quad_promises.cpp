#include "fuzz/quad_promises.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "fuzz/promise.h"
#include "production/quad_colours.h"
#include "production/quads.h"

namespace ocpan::fuzz {
namespace {

// Whether a list holds some of the quads, in their order.
bool is_part_of(const std::vector<prod_quad>& list, const std::vector<prod_quad>& quads) {
  auto next = quads.begin();
  for (const prod_quad& quad : list) {
    next = std::find(next, quads.end(), quad);
    if (next == quads.end()) return false;
    ++next;
  }
  return true;
}

}  // namespace

std::vector<prod_quad> must_build_quads(const std::vector<prod_corner>& corners) {
  std::vector<prod_quad> quads = build_quads(corners);
  must_hold(std::set(quads.begin(), quads.end()).size() == quads.size(), "a quad comes once");
  for (const prod_quad& quad : quads) {
    must_hold(std::set(quad.begin(), quad.end()).size() == 4, "a quad has four corners");
    must_hold(quad[0] == *std::ranges::min_element(quad), "a quad begins with its first corner");
    must_hold(quad[0] >= 0 && *std::ranges::max_element(quad) < std::ssize(corners),
              "a quad's corners are known");
  }
  return quads;
}

quad_lists must_classify_quads(const cv::Mat& picture, const std::vector<prod_quad>& quads,
                               const std::vector<prod_corner>& corners) {
  const std::vector<quad_stats> stats = quad_intensity_stats(picture, quads, corners);
  must_hold(stats.size() == quads.size(), "numbers for each quad");
  for (const auto& [mean, deviation] : stats) {
    must_hold(std::isnan(mean) || (mean >= 0 && mean <= 255), "a quad has a grey value");
    must_hold(!(deviation < 0) && !(deviation > 255), "a quad has a deviation");
  }
  quad_lists lists = classify_quads(quads, stats);
  must_hold(is_part_of(lists.white, quads) && is_part_of(lists.black, quads),
            "coloured quads stand in order");
  for (const prod_quad& quad : lists.white) {
    must_hold(std::ranges::count(lists.black, quad) == 0, "a quad has one colour");
  }
  return lists;
}

}  // namespace ocpan::fuzz
