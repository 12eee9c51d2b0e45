#include <cmath>

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include "model/projection.h"
#include "simulator/compare_rigs.h"
#include "tests/tools/adjust/simulated_boards.h"
#include "tools/adjust/uncertainty.h"

namespace ocpan {
namespace {

using testing::seen_boards_of;
using testing::simulate_preset;
using testing::simulated_boards;

constexpr int runs = 8;
constexpr double noise = 0.06;

Eigen::Matrix2Xd picture_grid(const camera_details& details) {
  Eigen::Matrix2Xd pixels(2, 441);
  for (int k = 0; k < 441; ++k) {
    pixels.col(k) << (details.width - 1) * (k % 21) / 20.0, (details.height - 1) * (k / 21) / 20.0;
  }
  return pixels;
}

double rms_of_finite(const Eigen::ArrayXd& values) {
  double sum = 0;
  int count = 0;
  for (const double value : values) {
    if (!std::isfinite(value)) continue;
    sum += value * value;
    ++count;
  }
  return std::sqrt(sum / count);
}

// The angle between where two cameras see a direction, for a rig whose truth sees it alike.
double seam_error(const rig& models, const rig& truth, std::size_t a, std::size_t b,
                  const Eigen::Vector3d& direction) {
  Eigen::Vector3d seen[2];
  for (int i = 0; i < 2; ++i) {
    const std::size_t camera = i == 0 ? a : b;
    Eigen::ArrayXd x, y;
    const Eigen::Matrix3Xd point = direction;
    project_points(x, y, point, truth[camera], Eigen::Vector3d::Zero(),
                   vector_of(truth[camera], C_0));
    Eigen::Matrix3Xd ray;
    unproject_points(ray, Eigen::Vector2d(x[0], y[0]), models[camera]);
    seen[i] = ray.col(0);
  }
  return seen[0].cross(seen[1]).norm();
}

// What the normal equations promise beside what happens over several noises.
TEST(Uncertainty, IsAsLargeAsTheErrorsAre) {
  const Eigen::Vector3d seam = Eigen::Vector3d(-1, 0.2, -1).normalized();
  double mapping = 0, turn = 0, angle = 0;
  adjusted_rig fit;
  simulated_boards simulated;
  for (int run = 0; run < runs; ++run) {
    simulated = simulate_preset("2-lens1-unlike", noise, 100 + static_cast<unsigned>(run));
    const rig truth = simulated.truth();
    fit = adjust_rig(truth, simulated.details(), seen_boards_of(simulated), {});
    const camera_difference difference = compare_rigs(fit.models, truth, simulated.details())[1];
    mapping += std::pow(difference.mapping_pixels, 2) / runs;
    turn += std::pow(difference.rotation_degrees * pi / 180, 2) / runs;
    angle += std::pow(seam_error(fit.models, truth, 0, 1, seam), 2) / runs;
  }
  const camera_details details = simulated.details()[1];
  const double promised = rms_of_finite(pixel_uncertainty(fit, details, 1, picture_grid(details)));
  EXPECT_GT(promised, std::sqrt(mapping) / 1.6);
  EXPECT_LT(promised, std::sqrt(mapping) * 1.6);
  const double promised_turn = turn_uncertainty(fit, simulated.details(), 1);
  EXPECT_GT(promised_turn, std::sqrt(turn) / 1.6);
  EXPECT_LT(promised_turn, std::sqrt(turn) * 1.6);
  const double promised_angle = seam_uncertainty(fit, 0, 1, seam)[0];
  EXPECT_GT(promised_angle, std::sqrt(angle) / 1.6);
  EXPECT_LT(promised_angle, std::sqrt(angle) * 1.6);
}

}  // namespace
}  // namespace ocpan
