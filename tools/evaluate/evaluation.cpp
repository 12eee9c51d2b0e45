#include "tools/evaluate/evaluation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <utility>

#include "tools/evaluate/board_fates.h"
#include "tools/evaluate/judge_evaluation.h"
#include "tools/evaluate/pair_loops.h"
#include "tools/evaluate/pair_pose.h"
#include "tools/evaluate/residual_spread.h"

namespace ocpan {
namespace {

using camera_numbers = std::pair<std::size_t, std::size_t>;

// The corners of one camera in rings about its axis.
std::vector<angle_bin> rings_of(const std::vector<const evaluated_view*>& views) {
  constexpr std::array<double, 4> widths = {1, 2, 5, 10};  // degrees
  constexpr double most_rings = 12;
  double farthest = 0;
  for (const evaluated_view* view : views) {
    for (const corner_residual& corner : view->corners) {
      if (corner.axis_degrees > farthest) farthest = corner.axis_degrees;
    }
  }
  const auto* width = std::find_if(widths.begin(), widths.end() - 1,
                                   [&](double w) { return farthest < most_rings * w; });
  std::vector<residual_collector> collectors(static_cast<std::size_t>(farthest / *width) + 1);
  for (const evaluated_view* view : views) {
    for (const corner_residual& corner : view->corners) {
      if (!std::isfinite(corner.axis_degrees)) continue;
      collectors[static_cast<std::size_t>(corner.axis_degrees / *width)].add(corner);
    }
  }
  std::vector<angle_bin> rings;
  for (const residual_collector& collector : collectors) {
    const double from = static_cast<double>(rings.size()) * *width;
    rings.push_back({from, from + *width, collector.summary()});
  }
  return rings;
}

evaluated_camera camera_of(std::size_t camera, const std::vector<evaluated_board>& boards) {
  evaluated_camera result;
  residual_collector collector;
  double alone = 0;  // summed squares, each of a view's mean
  std::vector<const evaluated_view*> views;
  for (const evaluated_board& board : boards) {
    for (const evaluated_view& view : board.views) {
      if (view.camera != camera) continue;
      if (board.fate != board_fate::used) {
        ++result.left_out;
        continue;
      }
      ++result.boards;
      alone += view.alone_rms_pixels * view.alone_rms_pixels;
      collector.add(view);
      views.push_back(&view);
    }
  }
  result.residuals = collector.summary();
  if (views.empty()) return result;
  result.alone_rms_pixels = std::sqrt(alone / static_cast<double>(views.size()));
  result.by_angle = rings_of(views);
  return result;
}

// What is known of a pair's boards.
struct pair_material {
  std::vector<pair_board> boards;
  residual_collector residuals;
};

std::map<camera_numbers, pair_material> material_of(const std::vector<evaluated_board>& boards,
                                                    const std::vector<seen_board>& seen) {
  std::map<camera_numbers, pair_material> pairs;
  for (std::size_t b = 0; b < boards.size(); ++b) {
    if (boards[b].fate != board_fate::used) continue;
    const std::vector<evaluated_view>& views = boards[b].views;
    for (std::size_t p = 0; p < views.size(); ++p) {
      for (std::size_t q = p + 1; q < views.size(); ++q) {
        pair_material& pair = pairs[{views[p].camera, views[q].camera}];
        pair.boards.push_back(
            {&seen[b].points, &seen[b].corners[p], &seen[b].corners[q], boards[b].rig_from_board});
        pair.residuals.add(views[p]);
        pair.residuals.add(views[q]);
      }
    }
  }
  return pairs;
}

evaluated_pair pair_of(const camera_numbers& numbers, const pair_material& material,
                       const rig& models) {
  const model_map& first = models[numbers.first];
  const model_map& second = models[numbers.second];
  evaluated_pair pair{numbers.first, numbers.second, 0, {}, {}, {}, verdict::good};
  pair.boards = material.boards.size();
  pair.residuals = material.residuals.summary();
  pair.calibrated = calibrated_pose(first, second);
  pair.own = fitted_pair(first, second, material.boards);
  return pair;
}

}  // namespace

evaluation evaluate_calibration(const rig& models, const std::vector<camera_details>& cameras,
                                const std::vector<seen_board>& boards) {
  evaluation result;
  result.boards = fitted_boards(models, boards);
  residual_collector all;
  for (const evaluated_board& board : result.boards) {
    if (board.fate != board_fate::used) continue;
    for (const evaluated_view& view : board.views) all.add(view);
  }
  result.residuals = all.summary();
  for (std::size_t c = 0; c < cameras.size(); ++c) {
    result.cameras.push_back(camera_of(c, result.boards));
  }
  for (const auto& [numbers, material] : material_of(result.boards, boards)) {
    result.pairs.push_back(pair_of(numbers, material, models));
  }
  result.loops = pair_loops(models, result.pairs);
  judge_evaluation(result);
  return result;
}

}  // namespace ocpan
