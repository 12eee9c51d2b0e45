#include <cmath>

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include "model/projection.h"
#include "simulator/compare_rigs.h"
#include "tests/tools/evaluate/evaluated_rig.h"
#include "tools/evaluate/rig_uncertainty.h"

namespace ocpan {
namespace {

using testing::boards_of;
using testing::evaluated_rig;
using testing::make_evaluated_rig;

// How far apart two cameras of an estimated rig see what the true ones see in one place:
// the RMS angle over what both see, degrees. A plain slow version that
// knows nothing of derivatives.
double seam_error(const rig& estimated, const rig& truth, std::size_t a, std::size_t b,
                  const std::vector<camera_details>& details) {
  double sum = 0;
  int count = 0;
  for (int k = 0; k < 17 * 17; ++k) {
    Eigen::Matrix2Xd pixel(2, 1);
    pixel << (details[a].width - 1.0) * (k % 17) / 16, (details[a].height - 1.0) * (k / 17) / 16;
    Eigen::Matrix3Xd ray, seen_a, seen_b, back;
    unproject_points(ray, pixel, truth[a]);
    Eigen::ArrayXd x, y;
    project_points(x, y, ray, truth[b], Eigen::Vector3d::Zero(), vector_of(truth[b], C_0));
    if (!(x(0) >= 0 && y(0) >= 0 && x(0) < details[b].width && y(0) < details[b].height)) continue;
    unproject_points(seen_a, pixel, estimated[a]);
    pixel << x(0), y(0);
    unproject_points(back, pixel, truth[b]);
    if (!((back - ray).norm() < 1e-4)) continue;
    unproject_points(seen_b, pixel, estimated[b]);
    const double angle = (seen_a - seen_b).norm();
    if (!std::isfinite(angle)) continue;
    sum += angle * angle;
    ++count;
  }
  EXPECT_GT(count, 3);
  return std::sqrt(sum / count) * 180 / pi;
}

class RigUncertainty : public ::testing::TestWithParam<const char*> {};

TEST_P(RigUncertainty, IsWithinAFactorOfTwoOfTheErrorsOfSeveralDraws) {
  constexpr int draws = 6;
  const double noise = 0.06;
  double mapping_error = 0, mapping_told = 0, seam_off = 0, seam_told = 0;
  for (std::uint64_t draw = 0; draw < draws; ++draw) {
    const evaluated_rig made = make_evaluated_rig(GetParam(), 0, noise, 200 + draw);
    const rig truth = made.truth();
    const std::vector<camera_details> details = made.details();
    const std::vector<seen_board> boards = boards_of(made);
    const evaluation found = evaluate_calibration(truth, details, boards);
    const adjusted_rig fit = adjust_rig(truth, details, boards, {});
    const rig_uncertainty told = uncertainty_of(fit, details, found.pairs);
    EXPECT_NEAR(told.corner_pixels, noise, 0.1 * noise);
    const std::vector<camera_difference> off = compare_rigs(fit.models, truth, details);
    for (std::size_t c = 0; c < off.size(); ++c) {
      mapping_error = std::hypot(mapping_error, off[c].mapping_pixels);
      mapping_told = std::hypot(mapping_told, told.cameras[c].mapping_pixels);
    }
    for (const pair_uncertainty& pair : told.pairs) {
      ASSERT_TRUE(pair.seam_degrees);
      seam_told = std::hypot(seam_told, *pair.seam_degrees);
      seam_off =
          std::hypot(seam_off, seam_error(fit.models, truth, pair.first, pair.second, details));
    }
  }
  EXPECT_GT(mapping_told / mapping_error, 0.5);
  EXPECT_LT(mapping_told / mapping_error, 2);
  EXPECT_GT(seam_told / seam_off, 0.5);
  EXPECT_LT(seam_told / seam_off, 2);
}

INSTANTIATE_TEST_SUITE_P(Rigs, RigUncertainty, ::testing::Values("2-lens0", "4-lens1", "8-lens1"));

}  // namespace
}  // namespace ocpan
