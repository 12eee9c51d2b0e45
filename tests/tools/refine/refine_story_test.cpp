#include "tools/refine/refine_story.h"

#include <algorithm>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "model/projection.h"
#include "tests/support/captured_output.h"
#include "tests/tools/adjust/simulated_boards.h"
#include "tools/refine/judge_refinement.h"

namespace ocpan {
namespace {

using testing::seen_boards_of;
using testing::simulate_preset;
using testing::simulated_boards;

// A pair of cameras and its boards as if they came from pictures.
struct told_refinement {
  refine_options options;
  refine_story story;

  explicit told_refinement(const simulated_boards& simulated)
      : story{options, {}, {}, {}, {}, {}, {}, {}, {}, {}} {
    options.out = "refined.cal";
    story.input.models = simulated.truth();
    story.input.details = simulated.details();
    story.input.boards = seen_boards_of(simulated);
    for (std::size_t s = 0; s < simulated.corners.size(); ++s) {
      cal_frame_set& set = story.input.pictures.sets.emplace_back();
      set.board_width = simulated.description.board.width;
      set.board_height = simulated.description.board.height;
      for (const std::size_t camera : simulated.description.sets[s].cameras) {
        set.camera_indices.push_back(camera);
        set_camera& in_set = set.set_cameras.emplace_back();
        for (std::size_t f = 0; f < simulated.corners[s].size(); ++f) {
          story.input.pictures.pool.push_back("series/" + std::to_string(s) + "_cam" +
                                              std::to_string(camera) + "_" + std::to_string(f));
          in_set.files.push_back(story.input.pictures.pool.back().c_str());
        }
      }
    }
  }
  void refine(bend_choice bend = bend_choice::flat) {
    const calibrated_pictures& input = story.input;
    story.before = measure_rig(input.models, input.details, input.boards, {});
    story.after = adjust_rig(input.models, input.details, input.boards, {0, bend});
    tell_changes(story);
    judge_refinement(story);
  }
};

TEST(RefineStory, CountsBoardsAndCornersOfCamerasAndPairs) {
  told_refinement told(simulate_preset("2-lens0-unlike", 0.06, 1));
  told.refine();
  ASSERT_EQ(told.story.cameras.size(), 2u);
  EXPECT_EQ(told.story.cameras[0].boards, 20u);  // 10 alone, 10 with the other
  EXPECT_EQ(told.story.cameras[0].residuals.after.count, 20u * 54);
  ASSERT_EQ(told.story.pairs.size(), 1u);
  EXPECT_EQ(told.story.pairs[0].boards, 10u);
  EXPECT_EQ(told.story.pairs[0].residuals.after.count, 2u * 10 * 54);
  EXPECT_EQ(told.story.all.after.count, 40u * 54);
  EXPECT_LT(told.story.all.after.rms, told.story.all.before.rms);
  EXPECT_TRUE(told.story.warnings.empty());
}

TEST(RefineStory, NamesABadCornerByItsPicture) {
  simulated_boards simulated = simulate_preset("2-lens0-unlike", 0.06, 1);
  simulated.corners[2][3][1].col(17).x() += 5;
  told_refinement told(simulated);
  told.refine();
  ASSERT_EQ(told.story.corners.size(), 1u);
  EXPECT_EQ(told.story.corners[0].picture, "2_cam1_3");
  EXPECT_EQ(told.story.corners[0].corner, 17);
  EXPECT_NEAR(told.story.corners[0].pixels, 5, 0.5);
  const std::string text = testing::printed_by([&] { print_refinement(told.story); });
  EXPECT_NE(text.find("Bad corner: 2_cam1_3, corner 18, off by "), std::string::npos) << text;
}

TEST(RefineStory, NamesAViewThatIsSetAside) {
  simulated_boards simulated = simulate_preset("2-lens0-unlike", 0.06, 1);
  Eigen::Matrix2Xd& turned = simulated.corners[2][3][1];
  turned = turned.rowwise().reverse().eval();
  told_refinement told(simulated);
  told.refine();
  ASSERT_EQ(told.story.views.size(), 1u);
  // Each view alone fits a board, one of the two lying the other way round.
  EXPECT_EQ(told.story.views[0].picture.substr(0, 5), "2_cam");
  EXPECT_EQ(told.story.views[0].picture.substr(6), "_3");
  EXPECT_EQ(told.story.cameras[0].boards + told.story.cameras[1].boards, 39u);
}

TEST(RefineStory, WarnsWhereACameraSawTooFewBoards) {
  told_refinement told(simulate_preset("2-lens0-unlike", 0.06, 1));
  auto& boards = told.story.input.boards;
  boards.erase(std::remove_if(boards.begin(), boards.end(),
                              [](const seen_board& board) {
                                return board.cameras.back() == 1 && board.frame > 1;
                              }),
               boards.end());
  told.refine();
  ASSERT_EQ(told.story.warnings.size(), 1u);
  EXPECT_NE(told.story.warnings[0].find("camera 2 saw only 4 boards"), std::string::npos)
      << told.story.warnings[0];
  EXPECT_NE(told.story.warnings[0].find("--tie"), std::string::npos);
}

TEST(RefineStory, BendsABoardOnlyIfTheCornersBearIt) {
  simulated_boards simulated = simulate_preset("2-lens0-unlike", 0.06, 1);
  told_refinement flat(simulated);
  flat.refine(bend_choice::if_borne);
  EXPECT_EQ(flat.story.after.bends[0].along_width, 0);
  EXPECT_EQ(flat.story.after.bends[0].along_height, 0);

  // The middle of the board stands out by one unit along its width.
  const Eigen::Matrix3Xd points = board_points(simulated.description.board);
  const double half = points.row(0).maxCoeff() / 2;
  for (std::size_t s = 0; s < simulated.corners.size(); ++s) {
    for (std::size_t f = 0; f < simulated.corners[s].size(); ++f) {
      const ModelPose& pose = simulated.poses[s][f];
      Eigen::Matrix3Xd bent = points;
      bent.row(2) = 1 - ((points.row(0).array() - half) / half).square();
      for (std::size_t v = 0; v < simulated.corners[s][f].size(); ++v) {
        const model_map& camera =
            simulated.description.cameras[simulated.description.sets[s].cameras[v]].model;
        Eigen::ArrayXd x, y, bent_x, bent_y;
        project_points(x, y, points, camera, pose.rotation, pose.translation);
        project_points(bent_x, bent_y, bent, camera, pose.rotation, pose.translation);
        simulated.corners[s][f][v].row(0) += (bent_x - x).matrix().transpose();
        simulated.corners[s][f][v].row(1) += (bent_y - y).matrix().transpose();
      }
    }
  }
  told_refinement bent(simulated);
  bent.refine(bend_choice::if_borne);
  EXPECT_NEAR(bent.story.after.bends[0].along_width, 1, 0.05);
  EXPECT_NEAR(bent.story.after.bends[0].along_height, 0, 0.05);
  EXPECT_NEAR(bent.story.after.sigma, 0.06, 0.003);
}

TEST(RefineStory, IsGoodWhereTheBoardsFit) {
  told_refinement told(simulate_preset("2-lens0-unlike", 0.06, 1));
  told.refine();
  EXPECT_TRUE(told.story.cameras[1].linked);
  EXPECT_EQ(told.story.judged, verdict::good);
}

TEST(RefineStory, TellsOfACameraThatNoBoardLinks) {
  told_refinement told(simulate_preset("2-lens0-unlike", 0.06, 1));
  auto& boards = told.story.input.boards;
  boards.erase(std::remove_if(boards.begin(), boards.end(),
                              [](const seen_board& board) { return board.cameras.size() > 1; }),
               boards.end());
  told.refine();
  EXPECT_FALSE(told.story.cameras[1].linked);
  ASSERT_EQ(told.story.warnings.size(), 1u);
  EXPECT_NE(told.story.warnings[0].find("no board links camera 2 to camera 1"), std::string::npos);
  EXPECT_EQ(told.story.judged, verdict::doubtful);
  const std::string text = testing::printed_by([&] { print_refinement(told.story); });
  EXPECT_NE(text.find("turn against camera 1 unknown"), std::string::npos) << text;
  EXPECT_TRUE(
      nlohmann::json::parse(refinement_json(told.story))["cameras"][1]["turn_uncertainty_degrees"]
          .is_null());
}

TEST(RefineStory, IsUnusableWhereASeriesIsShuffled) {
  simulated_boards simulated = simulate_preset("2-lens0-unlike", 0.06, 1);
  auto& pairs = simulated.corners[2];
  const Eigen::Matrix2Xd first = pairs[0][1];
  for (std::size_t f = 0; f < 5; ++f) pairs[f][1] = pairs[f + 1][1];
  pairs[5][1] = first;
  told_refinement told(simulated);
  told.refine();
  EXPECT_EQ(told.story.judged, verdict::unusable);
  ASSERT_FALSE(told.story.faults.empty());
  EXPECT_NE(told.story.faults[0].find("cameras 1 and 2 contradict one another"), std::string::npos)
      << told.story.faults[0];
  const std::string text = testing::printed_by([&] { print_refinement(told.story); });
  EXPECT_NE(text.find("Nothing is written"), std::string::npos) << text;
}

TEST(RefineStory, IsUnusableWhereItIsWorseUncertainOrUnended) {
  told_refinement told(simulate_preset("2-lens0-unlike", 0.06, 1));
  told.refine();
  told.story.cameras[0].picture_uncertainty = 4.1;
  told.story.cameras[1].turn_uncertainty = 0.51;
  told.story.after.converged = false;
  for (board_fit& fit : told.story.after.boards) fit.residuals[0] *= 2;
  judge_refinement(told.story);
  EXPECT_EQ(told.story.judged, verdict::unusable);
  ASSERT_EQ(told.story.faults.size(), 4u);
  EXPECT_NE(told.story.faults[0].find("lens of camera 1"), std::string::npos);
  EXPECT_NE(told.story.faults[1].find("turn of camera 2"), std::string::npos);
  EXPECT_NE(told.story.faults[2].find("better as it was"), std::string::npos);
  EXPECT_NE(told.story.faults[3].find("still falling"), std::string::npos);
}

TEST(RefineStory, IsWrittenAsJson) {
  told_refinement told(simulate_preset("2-lens0-unlike", 0.06, 1));
  told.refine();
  const auto json = nlohmann::json::parse(refinement_json(told.story));
  EXPECT_EQ(json["cameras"].size(), 2u);
  EXPECT_EQ(json["residuals"]["after"]["corners"], 40 * 54);
  EXPECT_EQ(json["pairs"][0]["cameras"], nlohmann::json({1, 2}));
  EXPECT_NEAR(json["corner_sigma"], 0.06, 0.003);
}

}  // namespace
}  // namespace ocpan
