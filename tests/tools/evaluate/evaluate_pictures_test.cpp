#include "tools/evaluate/evaluate_pictures.h"

#include <gtest/gtest.h>

#include "tests/tools/evaluate/evaluated_rig.h"

namespace ocpan {
namespace {

using testing::boards_of;
using testing::evaluated_rig;
using testing::make_evaluated_rig;

calibrated_pictures truth_of(const evaluated_rig& made) {
  calibrated_pictures input;
  input.models = made.truth();
  input.details = made.details();
  input.boards = boards_of(made);
  return input;
}

TEST(EvaluatePictures, GoodCalibrationTellsItsUncertainty) {
  const pictures_evaluation result =
      evaluate_pictures(truth_of(make_evaluated_rig("2-lens0", 6, 0.05)));
  ASSERT_TRUE(result.uncertainty);
  EXPECT_EQ(result.uncertainty->cameras.size(), 2u);
}

TEST(EvaluatePictures, UncertaintyCountsForTheVerdict) {
  const evaluated_rig made = make_evaluated_rig("2-lens0", 6, 0.4);
  const calibrated_pictures input = truth_of(made);
  const pictures_evaluation result = evaluate_pictures(input);
  ASSERT_TRUE(result.uncertainty);
  ASSERT_GT(result.uncertainty->cameras[0].mapping_pixels, 1);
  const evaluation without = evaluate_calibration(input.models, input.details, input.boards);
  EXPECT_GT(result.found.findings.size(), without.findings.size());
}

TEST(EvaluatePictures, UnusableCalibrationTellsNoUncertainty) {
  calibrated_pictures input = truth_of(make_evaluated_rig("2-lens0", 6, 0.05));
  input.models[1][H_0] *= 1.1;
  const pictures_evaluation result = evaluate_pictures(input);
  EXPECT_EQ(result.found.judged, verdict::unusable);
  EXPECT_GT(result.found.residuals.pixels.count, 0u);
  EXPECT_FALSE(result.uncertainty);
  for (const evaluation_finding& finding : result.found.findings) {
    EXPECT_EQ(finding.text.find("pin"), std::string::npos) << finding.text;
  }
}

}  // namespace
}  // namespace ocpan
