#include "tools/check/pair_poses.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

#include <Eigen/Geometry>

#include "calibration/board_corners.h"
#include "model/board_pose.h"
#include "model/rigid_rotation.h"

namespace ocpan {
namespace {

using Eigen::Matrix3d;
using Eigen::Vector3d;

double degrees(double radians) { return radians * 180 / pi; }

// Where a board stands before one camera.
struct board_place {
  Matrix3d rotation;  // board -> camera
  Vector3d origin;    // board's first corner, camera's frame
  Vector3d middle;    // of the board, board's frame
};

// The same board with its corners counted from another end, by quarter turns.
board_place turned(const board_place& place, int quarters) {
  const Matrix3d turn = rotation_from_vector(Vector3d(0, 0, quarters * pi / 2));
  board_place result = place;
  result.rotation = place.rotation * turn;
  result.origin = place.rotation * (place.middle - turn * place.middle) + place.origin;
  return result;
}

// From the second camera's frame to the first's.
struct relative_pose {
  Matrix3d rotation;
  Vector3d translation;
};

struct shared_board {
  std::size_t set = 0;
  std::size_t frame = 0;
  board_place first;
  board_place second;
  int turn_step = 4;  // quarter turns after which the board looks the same
};

relative_pose pose_of(const board_place& first, const board_place& second) {
  relative_pose pose;
  pose.rotation = first.rotation * second.rotation.transpose();
  pose.translation = first.origin - pose.rotation * second.origin;
  return pose;
}

double angle_between(const Matrix3d& a, const Matrix3d& b) {
  return degrees(std::acos(std::clamp(((a.transpose() * b).trace() - 1) / 2, -1.0, 1.0)));
}

double angle_between(const Vector3d& a, const Vector3d& b) {
  return degrees(std::atan2(a.cross(b).norm(), a.dot(b)));
}

// How far a frame may be off and still belong to a pose.
struct pose_limits {
  double turn_degrees;
  double direction_degrees;
};

// For finding the pose, and the closest limits for judging by it. On simulated rigs of all
// lenses, each camera's its own, frames that belong together stay within 6.3 and 2.4 degrees
// of the pose, mostly within 2 and 0.5; a guessed field of view can be further off.
constexpr pose_limits wide_limits = {40, 8};
constexpr pose_limits least_limits = {6, 1};
constexpr double most_over_median = 6;
constexpr double cost_of_a_flip = 0.05;  // where it's even, no board flips
constexpr double most_mirrored_degrees = 90;

struct deviation {
  double turn = 0;
  double direction = 0;
  bool within(const pose_limits& limits) const {
    return turn < limits.turn_degrees && direction < limits.direction_degrees;
  }
};

deviation deviation_of(const relative_pose& pose, const board_place& first,
                       const board_place& second) {
  const Vector3d seen = first.rotation * first.middle + first.origin;
  const Vector3d told =
      pose.rotation * (second.rotation * second.middle + second.origin) + pose.translation;
  return {angle_between(pose.rotation, pose_of(first, second).rotation), angle_between(seen, told)};
}

// By how many quarters the second board must be turned to fit, least first; nothing if it
// fits with none that the board's shape leaves open.
std::optional<int> fitting_turn(const relative_pose& pose, const shared_board& board,
                                const pose_limits& limits) {
  for (int quarters = 0; quarters < 4; quarters += board.turn_step) {
    const board_place second = turned(board.second, quarters);
    if (deviation_of(pose, board.first, second).within(limits)) return quarters;
  }
  return std::nullopt;
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// A pose with the frames that fit it.
struct pose_votes {
  relative_pose pose;
  std::size_t votes = 0;
  double cost = 0;  // how far off the frames are, 1 for one that doesn't fit
};

// Boards that all flip agree on a pose too, though never as closely as on the true one.
pose_votes votes_for(const relative_pose& pose, const std::vector<shared_board>& boards) {
  pose_votes result{pose, 0, 0};
  for (const shared_board& board : boards) {
    const auto turn = fitting_turn(pose, board, wide_limits);
    if (!turn) {
      result.cost += 1;
      continue;
    }
    ++result.votes;
    const deviation off = deviation_of(pose, board.first, turned(board.second, *turn));
    result.cost += std::max(off.turn / wide_limits.turn_degrees,
                            off.direction / wide_limits.direction_degrees);
    if (*turn != 0) result.cost += cost_of_a_flip;
  }
  return result;
}

// The mean rotation and the median translation of the frames that fit a pose.
relative_pose refined(const relative_pose& pose, const std::vector<shared_board>& boards) {
  Matrix3d sum = Matrix3d::Zero();
  std::vector<std::pair<Vector3d, Vector3d>> origins;
  for (const shared_board& board : boards) {
    const auto turn = fitting_turn(pose, board, wide_limits);
    if (!turn) continue;
    const board_place second = turned(board.second, *turn);
    sum += pose_of(board.first, second).rotation;
    origins.push_back({board.first.origin, second.origin});
  }
  if (origins.empty()) return pose;
  relative_pose result;
  result.rotation = closest_rotation(sum);
  for (int axis = 0; axis < 3; ++axis) {
    std::vector<double> values;
    for (const auto& [first, second] : origins) {
      values.push_back((first - result.rotation * second)(axis));
    }
    result.translation(axis) = median(values);
  }
  return result;
}

// The pose that most frames agree on; nothing if they aren't at least two, and half of all.
std::optional<relative_pose> common_pose(const std::vector<shared_board>& boards) {
  pose_votes best{{}, 0, static_cast<double>(boards.size())};
  for (const shared_board& board : boards) {
    for (int quarters = 0; quarters < 4; quarters += board.turn_step) {
      const board_place second = turned(board.second, quarters);
      const pose_votes now = votes_for(refined(pose_of(board.first, second), boards), boards);
      if (now.cost < best.cost) best = now;
    }
  }
  if (best.votes < 2 || 2 * best.votes < boards.size()) return std::nullopt;
  return refined(best.pose, boards);
}

// Limits that fit the scatter of the frames which belong to the pose.
pose_limits limits_around(const relative_pose& pose, const std::vector<shared_board>& boards) {
  std::vector<double> turns, directions;
  for (const shared_board& board : boards) {
    const auto turn = fitting_turn(pose, board, wide_limits);
    if (!turn) continue;
    const deviation off = deviation_of(pose, board.first, turned(board.second, *turn));
    turns.push_back(off.turn);
    directions.push_back(off.direction);
  }
  if (turns.empty()) return wide_limits;
  const auto limit = [](double least, double most, const std::vector<double>& values) {
    return std::clamp(most_over_median * median(values), least, most);
  };
  return {limit(least_limits.turn_degrees, wide_limits.turn_degrees, turns),
          limit(least_limits.direction_degrees, wide_limits.direction_degrees, directions)};
}

void judge(pair_frame& frame, const relative_pose& pose, const pose_limits& limits,
           const shared_board& board) {
  const deviation off = deviation_of(pose, board.first, board.second);
  frame.turn_degrees = off.turn;
  frame.direction_degrees = off.direction;
  if (const auto turn = fitting_turn(pose, board, limits)) {
    frame.fit = *turn == 0 ? pair_fit::fits : pair_fit::flipped;
    frame.quarter_turns = *turn;
    return;
  }
  // The tilt of a small flat board can come out mirrored, while the board stands where both
  // cameras see it.
  const bool mirrored = off.direction < limits.direction_degrees &&
                        off.turn < most_mirrored_degrees && off.turn > limits.turn_degrees;
  frame.fit = mirrored ? pair_fit::fits : pair_fit::apart;
}

std::optional<board_place> place_before(const rig_pictures& pictures, const found_boards& boards,
                                        std::size_t set, std::size_t frame, std::size_t k) {
  const picture_finding& finding = boards[set][frame][k];
  if (finding.state != picture_state::found) return std::nullopt;
  const cal_frame_set& of = pictures.sets[set];
  const Eigen::Matrix3Xd points = board_points(of.board_width, of.board_height, of.board_scale);
  const model_map lens = initial_model(pictures.cameras[of.camera_indices[k]]);
  const ModelPose pose = estimate_board_pose({finding.corners}, points, {lens});
  if (!pose.rotation.allFinite() || !pose.translation.allFinite()) return std::nullopt;
  return board_place{rotation_from_vector(pose.rotation), pose.translation,
                     points.rowwise().mean()};
}

int turn_step(const cal_frame_set& set) {
  if (set.board_width == set.board_height) return 1;
  return (set.board_width + set.board_height) % 2 == 0 ? 2 : 4;
}

using camera_pair = std::pair<std::size_t, std::size_t>;

void add_frame(std::map<camera_pair, std::vector<shared_board>>& pairs,
               const rig_pictures& pictures, const found_boards& boards, std::size_t set,
               std::size_t frame) {
  const cal_frame_set& of = pictures.sets[set];
  std::map<std::size_t, board_place> places;  // by camera
  for (std::size_t k = 0; k < of.camera_indices.size(); ++k) {
    if (const auto place = place_before(pictures, boards, set, frame, k)) {
      places.emplace(of.camera_indices[k], *place);
    }
  }
  for (auto a = places.begin(); a != places.end(); ++a) {
    for (auto b = std::next(a); b != places.end(); ++b) {
      pairs[{a->first, b->first}].push_back({set, frame, a->second, b->second, turn_step(of)});
    }
  }
}

}  // namespace

std::vector<pair_poses> judge_pairs(const rig_pictures& pictures, const found_boards& boards) {
  std::map<camera_pair, std::vector<shared_board>> shared;
  for (std::size_t set = 0; set < boards.size(); ++set) {
    if (pictures.sets[set].camera_indices.size() < 2) continue;
    for (std::size_t frame = 0; frame < boards[set].size(); ++frame) {
      add_frame(shared, pictures, boards, set, frame);
    }
  }
  std::vector<pair_poses> pairs;
  for (const auto& [cameras, of_pair] : shared) {
    pair_poses& pair = pairs.emplace_back();
    std::tie(pair.first, pair.second) = cameras;
    const auto pose = common_pose(of_pair);
    const pose_limits limits = pose ? limits_around(*pose, of_pair) : wide_limits;
    for (const shared_board& board : of_pair) {
      pair_frame& frame = pair.frames.emplace_back();
      frame.set = board.set;
      frame.frame = board.frame;
      if (pose) judge(frame, *pose, limits, board);
    }
  }
  return pairs;
}

series_shift find_shift(const rig_pictures& pictures, const found_boards& boards,
                        const pair_poses& pair, std::size_t set) {
  const cal_frame_set& of = pictures.sets[set];
  const auto position_of = [&](std::size_t camera) {
    return static_cast<std::size_t>(
        std::find(of.camera_indices.begin(), of.camera_indices.end(), camera) -
        of.camera_indices.begin());
  };
  const int frames = static_cast<int>(boards[set].size());
  std::vector<std::optional<board_place>> first, second;
  for (std::size_t frame = 0; frame < boards[set].size(); ++frame) {
    first.push_back(place_before(pictures, boards, set, frame, position_of(pair.first)));
    second.push_back(place_before(pictures, boards, set, frame, position_of(pair.second)));
  }
  series_shift best;
  for (const int shift : {-1, 1, -2, 2, -3, 3}) {
    std::vector<shared_board> moved;
    for (const pair_frame& at : pair.frames) {
      const int other = static_cast<int>(at.frame) + shift;
      if (at.set != set || at.fit == pair_fit::fits || other < 0 || other >= frames) continue;
      const auto& a = first[at.frame];
      const auto& b = second[static_cast<std::size_t>(other)];
      if (a && b) moved.push_back({set, at.frame, *a, *b, turn_step(of)});
    }
    const auto pose = common_pose(moved);
    if (!pose) continue;
    const int votes = static_cast<int>(votes_for(*pose, moved).votes);
    if (votes > best.fitting) best = {shift, votes};
  }
  return best;
}

}  // namespace ocpan
