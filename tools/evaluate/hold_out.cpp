#include "tools/evaluate/hold_out.h"

#include <cmath>
#include <utility>

#include "calibration/calibration_stages.h"
#include "calibration/rig_constraints.h"
#include "simulator/compare_rigs.h"
#include "tools/adjust/adjust_rig.h"
#include "tools/boards/printed_aside.h"
#include "tools/evaluate/residual_spread.h"

namespace ocpan {
namespace {

// Boards parted into those of a part and the others.
struct parted_boards {
  std::vector<seen_board> inside;
  std::vector<seen_board> outside;
};

parted_boards parted(const std::vector<seen_board>& seen, std::size_t part,
                     const frame_numbers& part_of) {
  parted_boards boards;
  for (const seen_board& board : seen) {
    const bool inside = part_of[board.set][board.frame] == part;
    (inside ? boards.inside : boards.outside).push_back(board);
  }
  return boards;
}

void sum_up(hold_out& result, std::size_t cameras) {
  residual_collector all;
  std::vector<residual_collector> by_camera(cameras);
  for (const evaluation& score : result.scores) {
    for (const evaluated_board& board : score.boards) {
      if (board.fate != board_fate::used) {
        ++result.left_out;
        continue;
      }
      for (const evaluated_view& view : board.views) {
        all.add(view);
        by_camera[view.camera].add(view);
      }
    }
  }
  result.residuals = all.summary();
  for (const residual_collector& collector : by_camera) {
    result.cameras.push_back(collector.summary());
  }
}

// What the squared differences between each two of some calibrations, each without a part of
// the frames, let expect of one from all. The deviations from the mean square to their sum
// by the count; (count - 1) / count of that is the variance.
double jackknife_deviation(double squared_differences, std::size_t count) {
  const double n = static_cast<double>(count);
  return std::sqrt(squared_differences * (n - 1) / (n * n));
}

}  // namespace

rig calibrated_without(std::size_t part, const frame_numbers& part_of, const rig_pictures& pictures,
                       const found_boards& boards) {
  board_frames frames = frames_of(boards);
  for (std::size_t s = 0; s < frames.size(); ++s) {
    for (std::size_t f = 0; f < frames[s].size(); ++f) {
      if (part_of[s][f] == part) frames[s][f].clear();
    }
  }
  rig start;
  for (const camera_details& camera : pictures.cameras) start.push_back(initial_model(camera));
  rig models;
  run_report unused;
  static_cast<void>(printed_aside([&] {
    calibrate_from_boards(unused, models, pictures.sets, frames, start,
                          rig_constraints(pictures.cameras));
  }));
  return models;
}

std::vector<camera_scatter> scatter_of_cameras(const std::vector<rig>& models,
                                               const std::vector<camera_details>& details) {
  std::vector<double> squared(details.size(), 0);
  for (std::size_t k = 0; k < models.size(); ++k) {
    for (std::size_t l = k + 1; l < models.size(); ++l) {
      const std::vector<camera_difference> differences =
          compare_rigs(models[k], models[l], details);
      for (std::size_t c = 0; c < details.size(); ++c) {
        squared[c] += differences[c].mapping_pixels * differences[c].mapping_pixels;
      }
    }
  }
  std::vector<camera_scatter> scatter;
  for (const double sum : squared) scatter.push_back({jackknife_deviation(sum, models.size())});
  return scatter;
}

pair_scatter scatter_of_pair(const std::vector<rig>& models,
                             const std::vector<camera_details>& details, std::size_t first,
                             std::size_t second) {
  const std::vector<camera_details> two = {details[first], details[second]};
  double turns = 0, shifts = 0;
  for (std::size_t k = 0; k < models.size(); ++k) {
    for (std::size_t l = k + 1; l < models.size(); ++l) {
      const camera_difference difference = compare_rigs(
          {models[k][first], models[k][second]}, {models[l][first], models[l][second]}, two)[1];
      turns += difference.rotation_degrees * difference.rotation_degrees;
      shifts += difference.position * difference.position;
    }
  }
  return {first, second, jackknife_deviation(turns, models.size()),
          jackknife_deviation(shifts, models.size())};
}

hold_out held_out(const hold_out_plan& plan, const rig_pictures& pictures,
                  const found_boards& boards, const std::vector<seen_board>& seen,
                  const std::vector<evaluated_pair>& pairs,
                  const std::function<void(std::size_t done)>& progress) {
  const frame_numbers part_of = dealt_frames(pictures, plan.parts);
  hold_out result;
  result.parts = plan.parts;
  result.refined = plan.refine;
  for (std::size_t part = 0; part < plan.parts; ++part) {
    progress(part);
    const parted_boards parts = parted(seen, part, part_of);
    rig models = calibrated_without(part, part_of, pictures, boards);
    if (plan.refine) models = adjust_rig(models, pictures.cameras, parts.outside, {}).models;
    result.scores.push_back(evaluate_calibration(models, pictures.cameras, parts.inside));
    result.models.push_back(std::move(models));
  }
  progress(plan.parts);
  sum_up(result, pictures.cameras.size());
  result.by_camera = scatter_of_cameras(result.models, pictures.cameras);
  for (const evaluated_pair& pair : pairs) {
    result.by_pair.push_back(
        scatter_of_pair(result.models, pictures.cameras, pair.first, pair.second));
  }
  return result;
}

}  // namespace ocpan
