#include <cmath>

#include <gtest/gtest.h>

#include "simulator/compare_rigs.h"
#include "tests/tools/evaluate/evaluated_rig.h"
#include "tools/adjust/adjust_rig.h"
#include "tools/evaluate/hold_out.h"

namespace ocpan {
namespace {

using testing::boards_of;
using testing::evaluated_rig;
using testing::found_of;
using testing::make_evaluated_rig;
using testing::pictures_of;

// Root mean squares over cameras or pairs and over some draws of the noise.
struct error_and_scatter {
  double error = 0;
  double scatter = 0;
  void add(double true_error, double told) {
    error = std::hypot(error, true_error);
    scatter = std::hypot(scatter, told);
  }
  double ratio() const { return scatter / error; }
};

struct hold_out_case {
  const char* preset;
  bool refine;
};

class HoldOut : public ::testing::TestWithParam<hold_out_case> {};

TEST_P(HoldOut, ScattersAsFarAsTheCalibrationIsOff) {
  error_and_scatter mapping, turn;
  for (std::uint64_t draw = 0; draw < 2; ++draw) {
    const evaluated_rig made = make_evaluated_rig(GetParam().preset, 0, 0.06, 100 + draw);
    const rig_pictures pictures = pictures_of(made);
    const found_boards found = found_of(made);
    const rig truth = made.truth();
    const std::vector<camera_details> details = made.details();
    rig from_all = calibrated_without(1, dealt_frames(pictures, 1), pictures, found);
    if (GetParam().refine) from_all = adjust_rig(from_all, details, boards_of(made), {}).models;
    const evaluation told = evaluate_calibration(from_all, details, boards_of(made));
    const hold_out tested = held_out({5, GetParam().refine}, pictures, found, boards_of(made),
                                     told.pairs, [](std::size_t) {});
    EXPECT_NEAR(tested.residuals.pixels.rms, 0.06 * std::sqrt(2), 0.005);
    EXPECT_EQ(tested.left_out, 0u);
    const std::vector<camera_difference> off = compare_rigs(from_all, truth, details);
    for (std::size_t c = 0; c < off.size(); ++c) {
      mapping.add(off[c].mapping_pixels, tested.by_camera[c].mapping_pixels);
    }
    ASSERT_FALSE(tested.by_pair.empty());
    for (const pair_scatter& pair : tested.by_pair) {
      const camera_difference pair_off = compare_rigs(
          {from_all[pair.first], from_all[pair.second]}, {truth[pair.first], truth[pair.second]},
          {details[pair.first], details[pair.second]})[1];
      turn.add(pair_off.rotation_degrees, pair.turn_degrees);
    }
  }
  EXPECT_GT(mapping.ratio(), 0.5);
  EXPECT_LT(mapping.ratio(), 2);
  EXPECT_GT(turn.ratio(), 0.5);
  EXPECT_LT(turn.ratio(), 2);
}

// The lenses of the rigs that aren't refined are alike, as the ties of a calibration want
// them: what all calibrations have wrong alike is little.
INSTANTIATE_TEST_SUITE_P(Rigs, HoldOut,
                         ::testing::Values(hold_out_case{"2-lens1", false},
                                           hold_out_case{"4-lens1", false},
                                           hold_out_case{"8-lens1", false},
                                           hold_out_case{"2-lens0-unlike", true},
                                           hold_out_case{"4-lens1-unlike", true}));

}  // namespace
}  // namespace ocpan
