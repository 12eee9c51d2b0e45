#include "calibration/board_groups.h"

#include <algorithm>
#include <map>

#include "model/board_pose.h"
#include "src/console.h"

namespace ocpan {
namespace {

bool is_finite(const ModelPose& pose) {
  return pose.rotation.allFinite() && pose.translation.allFinite();
}

// A view with a board.
struct seen_board {
  std::size_t camera;
  const Eigen::Matrix2Xd* corners;
};

// The boards seen in one frame, in the order of the set's cameras.
std::vector<seen_board> boards_in(const cal_frame_set& set, const frame_views& views) {
  std::vector<seen_board> seen;
  const std::size_t count = std::min(set.camera_indices.size(), views.size());
  for (std::size_t p = 0; p < count; ++p) {
    if (views[p].found) seen.push_back({set.camera_indices[p], &views[p].corners});
  }
  return seen;
}

// The set's board; no point if nobody saw it, since only a board that was found in a
// picture is sure to be of a size that memory holds.
Eigen::Matrix3Xd board_points_of(const cal_frame_set& set, const std::vector<frame_views>& frames) {
  const bool seen = std::any_of(frames.begin(), frames.end(), [&](const frame_views& views) {
    return !boards_in(set, views).empty();
  });
  return seen ? board_points(set.board_width, set.board_height, set.board_scale)
              : Eigen::Matrix3Xd(3, 0);
}

// The pose of one view alone; false, with a line, if it is not a number.
bool single_view_pose(ModelPose& pose, const seen_board& board, const Eigen::Matrix3Xd& points,
                      const rig& models, const cal_frame_set& set, std::size_t frame) {
  pose = estimate_board_pose({*board.corners}, points, {models[board.camera]});
  if (is_finite(pose)) return true;
  print_line("View left out, its pose is not a number: set ", set.name, ", camera ", board.camera,
             ", frame ", frame);
  return false;
}

void append_shot(view_group& group, std::vector<Eigen::Matrix2Xd> views, const ModelPose& pose) {
  group.shots.push_back(std::move(views));
  group.poses.push_back(pose);
}

// The corners of one frame in the frame of each camera that saw them.
struct placed_corners {
  std::size_t camera;
  Eigen::Matrix3Xd points;
};

void append_pairs(pair_points& pairs, const std::vector<placed_corners>& seen) {
  for (std::size_t p = 0; p < seen.size(); ++p) {
    for (std::size_t q = p + 1; q < seen.size(); ++q) {
      if (seen[p].camera == seen[q].camera) continue;
      const bool in_order = seen[p].camera < seen[q].camera;
      const placed_corners& lower = in_order ? seen[p] : seen[q];
      const placed_corners& higher = in_order ? seen[q] : seen[p];
      point_lists& lists = pairs[{lower.camera, higher.camera}];
      lists.list1.push_back(lower.points);
      lists.list0.push_back(higher.points);
    }
  }
}

// Adds one frame to the group of the cameras that saw its board.
void append_frame(std::map<std::vector<std::size_t>, view_group>& by_cameras,
                  const cal_frame_set& set, const frame_views& views, std::size_t frame,
                  const Eigen::Matrix3Xd& points, const rig& models) {
  std::vector<std::size_t> cameras;
  std::vector<Eigen::Matrix2Xd> corners;
  rig seen_by;
  for (const seen_board& board : boards_in(set, views)) {
    cameras.push_back(board.camera);
    corners.push_back(*board.corners);
    seen_by.push_back(models[board.camera]);
  }
  if (cameras.empty()) return;
  const ModelPose pose = estimate_board_pose(corners, points, seen_by);
  if (!is_finite(pose)) {
    print_line("Frame left out, its pose is not a number: set ", set.name, ", frame ", frame);
    return;
  }
  view_group& group = by_cameras[cameras];
  group.cameras = cameras;
  group.board_points = points;
  append_shot(group, std::move(corners), pose);
}

}  // namespace

Eigen::Matrix3Xd board_points(int width, int height, double scale) {
  Eigen::Matrix3Xd points(3, static_cast<Eigen::Index>(width) * height);
  for (Eigen::Index k = 0; k < points.cols(); ++k) {
    const Eigen::Index row = k / width, column = k % width;
    points.col(k) =
        Eigen::Vector3d(static_cast<double>(column), static_cast<double>(row), 0) * scale;
  }
  return points;
}

std::vector<view_group> single_camera_groups(const std::vector<cal_frame_set>& sets,
                                             const board_frames& frames, const rig& models) {
  std::vector<view_group> groups;
  for (std::size_t s = 0; s < sets.size(); ++s) {
    const Eigen::Matrix3Xd points = board_points_of(sets[s], frames[s]);
    std::map<std::size_t, view_group> by_camera;
    for (std::size_t j = 0; j < frames[s].size(); ++j) {
      for (const seen_board& board : boards_in(sets[s], frames[s][j])) {
        ModelPose pose;
        if (!single_view_pose(pose, board, points, models, sets[s], j)) continue;
        append_shot(by_camera[board.camera], {*board.corners}, pose);
      }
    }
    for (auto& [camera, group] : by_camera) {
      group.cameras = {camera};
      group.board_points = points;
      groups.push_back(std::move(group));
    }
  }
  return groups;
}

pair_points collect_pair_points(const std::vector<cal_frame_set>& sets, const board_frames& frames,
                                const rig& models) {
  pair_points pairs;
  for (std::size_t s = 0; s < sets.size(); ++s) {
    const Eigen::Matrix3Xd points = board_points_of(sets[s], frames[s]);
    for (std::size_t j = 0; j < frames[s].size(); ++j) {
      std::vector<placed_corners> seen;
      for (const seen_board& board : boards_in(sets[s], frames[s][j])) {
        ModelPose pose;
        if (!single_view_pose(pose, board, points, models, sets[s], j)) continue;
        const Eigen::Matrix3d r = rotation_from_vector(pose.rotation);
        seen.push_back({board.camera, (r * points).colwise() + pose.translation});
      }
      append_pairs(pairs, seen);
    }
  }
  return pairs;
}

rig_groups shared_board_groups(const std::vector<cal_frame_set>& sets, const board_frames& frames,
                               const rig& models) {
  rig_groups result;
  for (std::size_t s = 0; s < sets.size(); ++s) {
    const Eigen::Matrix3Xd points = board_points_of(sets[s], frames[s]);
    std::map<std::vector<std::size_t>, view_group> by_cameras;
    for (std::size_t j = 0; j < frames[s].size(); ++j) {
      append_frame(by_cameras, sets[s], frames[s][j], j, points, models);
    }
    for (auto& [cameras, group] : by_cameras) result.groups.push_back(std::move(group));
    result.groups_per_set.push_back(by_cameras.size());
  }
  return result;
}

}  // namespace ocpan
