#include "tools/evaluate/board_fates.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <utility>

#include <Eigen/Geometry>

#include "model/board_pose.h"
#include "model/projection.h"
#include "tools/evaluate/board_fit.h"
#include "tools/evaluate/corner_order.h"

namespace ocpan {
namespace {

constexpr double least_outlier_pixels = 2;  // of a board's RMS; below it none is left out
constexpr double outlier_medians = 5;       // of the like boards' RMS
constexpr double explained_part = 0.2;      // of the RMS: what a cause must leave to be believed

// A board with its fits.
struct fitted_views {
  const seen_board& board;
  std::vector<sighting> sightings;
  std::vector<rigid_motion> alone;  // per view
  std::vector<double> alone_rms;
  rigid_motion joint;
  double joint_rms = std::numeric_limits<double>::quiet_NaN();
};

struct best_fit {
  rigid_motion pose;
  double rms = std::numeric_limits<double>::quiet_NaN();
};

// The best of the fits from several starts.
best_fit fit_from(const Eigen::Matrix3Xd& points, const std::vector<sighting>& sightings,
                  const std::vector<rigid_motion>& starts) {
  best_fit best{starts.front()};
  for (const rigid_motion& start : starts) {
    const rigid_motion pose = fitted_board(points, sightings, start);
    const double rms = board_rms(points, sightings, pose);
    if (is_finite(pose) && !(best.rms <= rms)) best = {pose, rms};
  }
  return best;
}

fitted_views fit_of(const rig& models, const seen_board& board) {
  fitted_views fit{board, {}, {}, {}, {}};
  for (std::size_t v = 0; v < board.cameras.size(); ++v) {
    fit.sightings.push_back({&models[board.cameras[v]], &board.corners[v]});
    const ModelPose start =
        estimate_board_pose({board.corners[v]}, board.points, {models[board.cameras[v]]});
    fit.alone.push_back(fitted_board(board.points, {fit.sightings.back()}, motion_of(start)));
    fit.alone_rms.push_back(board_rms(board.points, {fit.sightings.back()}, fit.alone.back()));
  }
  const best_fit joint = fit_from(board.points, fit.sightings, fit.alone);
  fit.joint = joint.pose;
  fit.joint_rms = joint.rms;
  return fit;
}

bool has_pose(const fitted_views& fit) {
  return is_finite(fit.joint) && std::isfinite(fit.joint_rms) &&
         std::all_of(fit.alone_rms.begin(), fit.alone_rms.end(),
                     [](double rms) { return std::isfinite(rms); });
}

// The cameras that would have the board behind them.
std::vector<std::size_t> cameras_before(const fitted_views& fit) {
  std::vector<std::size_t> cameras;
  const Eigen::Matrix3Xd placed = fit.joint * fit.board.points;
  for (std::size_t v = 0; v < fit.sightings.size(); ++v) {
    Eigen::Matrix3Xd rays;
    unproject_points(rays, *fit.sightings[v].corners, *fit.sightings[v].model);
    const Eigen::Matrix3Xd seen = placed.colwise() - vector_of(*fit.sightings[v].model, C_0);
    Eigen::Index behind = 0;
    for (Eigen::Index i = 0; i < rays.cols(); ++i) behind += rays.col(i).dot(seen.col(i)) < 0;
    if (2 * behind > rays.cols()) cameras.push_back(fit.board.cameras[v]);
  }
  return cameras;
}

double least_of(const std::vector<double>& values) {
  return *std::min_element(values.begin(), values.end());
}

// The cameras whose corners come in another order than those of the most others, if that is
// what keeps the board from fitting.
std::vector<std::size_t> flipped_cameras(const fitted_views& fit) {
  const Eigen::Matrix3Xd& points = fit.board.points;
  std::vector<Eigen::Matrix2Xd> corners = fit.board.corners;
  std::vector<sighting> sightings;
  for (std::size_t v = 0; v < corners.size(); ++v) {
    sightings.push_back({fit.sightings[v].model, &corners[v]});
  }
  std::vector<std::size_t> turned;
  for (std::size_t v = 1; v < corners.size(); ++v) {
    const std::vector<sighting> two = {sightings[0], sightings[v]};
    double least = explained_part * fit_from(points, two, {fit.alone[0], fit.alone[v]}).rms;
    for (const Eigen::Matrix2Xd& other : other_orders(fit.board.corners[v], points)) {
      const double rms =
          fit_from(points, {sightings[0], {sightings[v].model, &other}}, {fit.alone[0]}).rms;
      if (!(rms < least)) continue;
      least = rms;
      corners[v] = other;
      if (turned.empty() || turned.back() != v) turned.push_back(v);
    }
  }
  if (turned.empty()) return {};
  if (!(fit_from(points, sightings, {fit.alone[0]}).rms < explained_part * fit.joint_rms))
    return {};
  std::vector<std::size_t> cameras;
  const bool most = 2 * turned.size() > corners.size();  // then it is the others that differ
  for (std::size_t v = 0; v < corners.size(); ++v) {
    const bool is_turned = std::find(turned.begin(), turned.end(), v) != turned.end();
    if (is_turned != most || corners.size() == 2) cameras.push_back(fit.board.cameras[v]);
  }
  return cameras;
}

// The one camera without which the board fits; none if there is no such camera or it could
// as well be another.
std::vector<std::size_t> camera_apart(const fitted_views& fit) {
  if (fit.sightings.size() < 3) return {};
  std::vector<std::size_t> cameras;
  for (std::size_t v = 0; v < fit.sightings.size(); ++v) {
    std::vector<sighting> others = fit.sightings;
    std::vector<rigid_motion> starts = fit.alone;
    others.erase(others.begin() + static_cast<std::ptrdiff_t>(v));
    starts.erase(starts.begin() + static_cast<std::ptrdiff_t>(v));
    if (fit_from(fit.board.points, others, starts).rms < explained_part * fit.joint_rms) {
      cameras.push_back(fit.board.cameras[v]);
    }
  }
  return cameras.size() == 1 ? cameras : std::vector<std::size_t>{};
}

evaluated_view view_of(const fitted_views& fit, std::size_t v) {
  const sighting& seen = fit.sightings[v];
  evaluated_view view{fit.board.cameras[v], {}, 0, fit.alone_rms[v]};
  const Eigen::Matrix3Xd placed = fit.joint * fit.board.points;
  const Eigen::Matrix2Xd residuals = residuals_of(seen, placed);
  Eigen::Matrix3Xd rays;
  unproject_points(rays, *seen.corners, *seen.model);
  const Eigen::Vector3d axis =
      direction_from_angles(value_of(*seen.model, A_th), value_of(*seen.model, A_ph));
  // Exact for small angles too, unlike the arc cosine.
  const auto angle = [](const Eigen::Vector3d& a, const Eigen::Vector3d& b) {
    return std::atan2(a.cross(b).norm(), a.dot(b));
  };
  for (Eigen::Index i = 0; i < residuals.cols(); ++i) {
    const Eigen::Vector3d ray = rays.col(i);
    const Eigen::Vector3d to_point = placed.col(i) - vector_of(*seen.model, C_0);
    view.corners.push_back({seen.corners->col(i), residuals.col(i), 1000 * angle(ray, to_point),
                            angle(ray, axis) * 180 / pi});
  }
  view.rms_pixels = std::sqrt(residuals.colwise().squaredNorm().mean());
  return view;
}

evaluated_board board_of(const fitted_views& fit) {
  evaluated_board board{
      fit.board.set, fit.board.frame, board_fate::used, {}, {}, fit.joint_rms, {}};
  board.rig_from_board = pose_of(fit.joint);
  for (std::size_t v = 0; v < fit.sightings.size(); ++v) board.views.push_back(view_of(fit, v));
  return board;
}

double median_of(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// Beyond which RMS a board is out of the common, by what the boards are alike in.
template <typename Key>
std::map<Key, double> outlier_limits(const std::map<Key, std::vector<double>>& rms) {
  std::map<Key, double> limits;
  for (const auto& [key, values] : rms) {
    limits[key] = std::max(least_outlier_pixels, outlier_medians * median_of(values));
  }
  return limits;
}

// What a board's own fits tell without the other boards.
void judge_alone(evaluated_board& board, const fitted_views& fit) {
  if (!has_pose(fit)) {
    board.fate = board_fate::no_pose;
    board.rig_from_board.translation.setConstant(std::numeric_limits<double>::quiet_NaN());
    for (std::size_t v = 0; v < fit.alone_rms.size(); ++v) {
      if (!std::isfinite(fit.alone_rms[v])) board.suspects.push_back(fit.board.cameras[v]);
    }
    return;
  }
  if (fit.sightings.size() > 1 && fit.joint_rms > least_outlier_pixels &&
      least_of(fit.alone_rms) < explained_part * fit.joint_rms) {
    board.suspects = flipped_cameras(fit);
    if (!board.suspects.empty()) board.fate = board_fate::flipped;
  }
  if (board.fate != board_fate::used) return;
  board.suspects = cameras_before(fit);
  if (!board.suspects.empty()) board.fate = board_fate::behind_camera;
}

void leave_out_bad_corners(std::vector<evaluated_board>& boards) {
  std::map<std::size_t, std::vector<double>> rms;
  for (const evaluated_board& board : boards) {
    if (board.fate != board_fate::used) continue;
    for (const evaluated_view& view : board.views)
      rms[view.camera].push_back(view.alone_rms_pixels);
  }
  const std::map<std::size_t, double> limits = outlier_limits(rms);
  for (evaluated_board& board : boards) {
    if (board.fate != board_fate::used) continue;
    for (const evaluated_view& view : board.views) {
      if (!(view.alone_rms_pixels > limits.at(view.camera))) continue;
      board.fate = board_fate::bad_corners;
      board.suspects.push_back(view.camera);
    }
  }
}

void leave_out_torn_frames(std::vector<evaluated_board>& boards,
                           const std::vector<fitted_views>& fits) {
  std::map<std::vector<std::size_t>, std::vector<double>> rms;
  for (std::size_t b = 0; b < boards.size(); ++b) {
    if (boards[b].fate == board_fate::used) {
      rms[fits[b].board.cameras].push_back(boards[b].rms_pixels);
    }
  }
  const auto limits = outlier_limits(rms);
  for (std::size_t b = 0; b < boards.size(); ++b) {
    evaluated_board& board = boards[b];
    if (board.fate != board_fate::used || board.views.size() < 2) continue;
    if (!(board.rms_pixels > limits.at(fits[b].board.cameras))) continue;
    board.fate = board_fate::torn_frame;
    board.suspects = camera_apart(fits[b]);
  }
}

}  // namespace

std::vector<evaluated_board> fitted_boards(const rig& models,
                                           const std::vector<seen_board>& boards) {
  std::vector<fitted_views> fits;
  std::vector<evaluated_board> evaluated;
  for (const seen_board& board : boards) {
    fits.push_back(fit_of(models, board));
    evaluated.push_back(board_of(fits.back()));
    judge_alone(evaluated.back(), fits.back());
  }
  leave_out_bad_corners(evaluated);
  leave_out_torn_frames(evaluated, fits);
  return evaluated;
}

}  // namespace ocpan
