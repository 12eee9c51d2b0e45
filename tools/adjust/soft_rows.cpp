#include "tools/adjust/soft_rows.h"

#include <algorithm>
#include <cmath>

#include <Eigen/Geometry>

namespace ocpan {
namespace {

using Eigen::Index;
using Eigen::Vector3d;
using lens_vector = Eigen::Matrix<double, increments_per_camera - place_increments, 1>;
constexpr int lens_size = increments_per_camera - place_increments;

// Standard deviations of the priors.
constexpr double turn_sigma = 1;      // radians
constexpr double distance_sigma = 1;  // of the centre, in typical distances of the boards
constexpr double scale_sigma = 0.2;   // of the scale
constexpr double skew_sigma = 0.02;   // of the scale
constexpr double middle_sigma = 0.1;  // of the picture's width
constexpr double axis_sigma = 0.01;   // radians between O and A
constexpr double radial_sigma = 0.3;  // of the radius, at the picture's side
constexpr double law_sigma = 0.2;     // of LAMBDA
constexpr double bend_sigma = 0.02;   // of the board's longer side

// How much lenses of a kind differ that a tie of strength 1 expects.
constexpr double scale_scatter = 0.005;   // of the scale
constexpr double skew_scatter = 0.001;    // of the scale
constexpr double middle_scatter = 0.003;  // of the picture's width
constexpr double axis_scatter = 0.004;    // radians
constexpr double radial_scatter = 0.01;   // of the radius, at the picture's side
constexpr double law_scatter = 0.02;      // of LAMBDA as the kind of lens has it

lens_vector lens_values(const camera_state& camera) {
  lens_vector values;
  for (int i = 0; i < lens_size; ++i) {
    values[i] = value_of(camera.lens, key_of(static_cast<camera_increment>(place_increments + i)));
  }
  return values;
}

// The picture's side in multiples of the scale, which is about the tangent there.
double side_radius(const camera_state& start, const camera_details& details) {
  return 0.5 * details.width / std::abs(value_of(start.lens, H_1));
}

// A lens's numbers scaled by what their shares of scale, width and radius are.
lens_vector lens_sigmas(const camera_state& start, const camera_details& details, double scale,
                        double skewed, double middle, double axis, double radial, double law_size) {
  const double size = std::abs(value_of(start.lens, H_1));
  const double side = side_radius(start, details);
  lens_vector sigmas;
  sigmas << scale * size, scale * size, skewed * size, middle * details.width,
      middle * details.width, axis, axis, radial / std::pow(side, 2), radial / std::pow(side, 4),
      law_size;
  return sigmas;
}

void hold(std::vector<soft_row>& rows, Index column, double target_less_value, double sigma) {
  rows.push_back({{{column, 1 / sigma}}, target_less_value / sigma});
}

void add_place_priors(std::vector<soft_row>& rows, const adjustment_problem& problem,
                      const adjustment_state& state, std::size_t camera) {
  const camera_state& now = state.cameras[camera];
  const camera_state& start = problem.start.cameras[camera];
  const Eigen::AngleAxisd turned(
      Eigen::Quaterniond(start.rig_from_camera.transpose() * now.rig_from_camera));
  const Vector3d turn = turned.angle() * turned.axis();
  const Index first = increment_layout::first(camera);
  for (int i = 0; i < 3; ++i) {
    hold(rows, first + move_x + i, start.centre[i] - now.centre[i],
         distance_sigma * problem.typical_distance);
    hold(rows, first + turn_x + i, -turn[i], turn_sigma);
  }
}

bool is_seen(const adjustment_problem& problem, std::size_t camera) {
  return std::any_of(problem.boards.begin(), problem.boards.end(), [&](const seen_board& board) {
    return std::find(board.cameras.begin(), board.cameras.end(), camera) != board.cameras.end();
  });
}

// Near where the calibration was, but for skew and distortion near none and O near A. A lens
// that saw no board stays as it was.
void add_lens_priors(std::vector<soft_row>& rows, const adjustment_problem& problem,
                     const adjustment_state& state, std::size_t camera) {
  const camera_state& start = problem.start.cameras[camera];
  lens_vector targets = lens_values(start);
  if (is_seen(problem, camera)) {
    targets[skew - place_increments] = 0;
    targets[axis_th - place_increments] = value_of(start.lens, A_th);
    targets[axis_ph - place_increments] = value_of(start.lens, A_ph);
    targets[radial_1 - place_increments] = 0;
    targets[radial_2 - place_increments] = 0;
  }
  const lens_vector sigmas = lens_sigmas(start, problem.details[camera], scale_sigma, skew_sigma,
                                         middle_sigma, axis_sigma, radial_sigma, law_sigma);
  const lens_vector values = lens_values(state.cameras[camera]);
  const Index first =
      increment_layout::first(camera) + place_increments - increment_layout::left_out(camera);
  for (int i = 0; i < lens_size; ++i) hold(rows, first + i, targets[i] - values[i], sigmas[i]);
}

bool same_kind(const camera_details& a, const camera_details& b) {
  return a.lens == b.lens && a.width == b.width && a.height == b.height && a.hfov == b.hfov;
}

void add_ties(std::vector<soft_row>& rows, const adjustment_problem& problem,
              const adjustment_state& state, const std::vector<std::size_t>& kind) {
  const camera_details& details = problem.details[kind.front()];
  const double share = 1.0 / static_cast<double>(kind.size());
  lens_vector mean = lens_vector::Zero();
  for (const std::size_t camera : kind) mean += share * lens_values(state.cameras[camera]);
  const double usual_law = lambda_from_law(value_of(initial_model(details), L));
  const lens_vector sigmas =
      lens_sigmas(problem.start.cameras[kind.front()], details, scale_scatter, skew_scatter,
                  middle_scatter, axis_scatter, radial_scatter, law_scatter * std::abs(usual_law)) /
      problem.tie;
  for (const std::size_t camera : kind) {
    const lens_vector residuals = (mean - lens_values(state.cameras[camera])).cwiseQuotient(sigmas);
    for (int i = 0; i < lens_size; ++i) {
      soft_row& row = rows.emplace_back();
      row.residual = residuals[i];
      for (const std::size_t other : kind) {
        const Index column = increment_layout::first(other) + place_increments -
                             increment_layout::left_out(other) + i;
        row.derivatives.push_back({column, ((other == camera ? 1 : 0) - share) / sigmas[i]});
      }
    }
  }
}

void add_all_ties(std::vector<soft_row>& rows, const adjustment_problem& problem,
                  const adjustment_state& state) {
  for (std::size_t first = 0; first < problem.details.size(); ++first) {
    std::vector<std::size_t> kind;
    for (std::size_t c = 0; c < problem.details.size(); ++c) {
      if (same_kind(problem.details[c], problem.details[first])) kind.push_back(c);
    }
    if (kind.front() == first && kind.size() > 1) add_ties(rows, problem, state, kind);
  }
}

void add_bend_priors(std::vector<soft_row>& rows, const adjustment_problem& problem,
                     const adjustment_state& state) {
  for (std::size_t p = 0; p < state.bends.size(); ++p) {
    const Eigen::Matrix3Xd& points = problem.physical.shapes[p].points;
    const double side = (points.rowwise().maxCoeff() - points.rowwise().minCoeff()).maxCoeff();
    hold(rows, problem.bend_first(p), -state.bends[p].along_width, bend_sigma * side);
    hold(rows, problem.bend_first(p) + 1, -state.bends[p].along_height, bend_sigma * side);
  }
}

}  // namespace

std::vector<soft_row> soft_rows(const adjustment_problem& problem, const adjustment_state& state) {
  std::vector<soft_row> rows;
  for (std::size_t c = 0; c < state.cameras.size(); ++c) {
    if (c > 0) add_place_priors(rows, problem, state, c);
    add_lens_priors(rows, problem, state, c);
  }
  if (problem.tie > 0) add_all_ties(rows, problem, state);
  if (problem.bent) add_bend_priors(rows, problem, state);
  return rows;
}

}  // namespace ocpan
