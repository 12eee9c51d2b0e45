#include "simulator/presets.h"

#include <cmath>

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include "simulator/board_poses.h"

namespace ocpan {
namespace {

rig_description preset(const std::string& name) {
  rig_description description;
  EXPECT_EQ(make_preset(description, name), "");
  return description;
}

Eigen::Vector3d axis_of(const model_map& model) {
  return direction_from_angles(value_of(model, A_th), value_of(model, A_ph));
}

Eigen::Vector3d distortion_axis_of(const model_map& model) {
  return direction_from_angles(value_of(model, O_th), value_of(model, O_ph));
}

// The part of H or V across the camera's axis: its length is the scale.
double scale_of(const model_map& model, parameter_name first) {
  const Eigen::Vector3d v = vector_of(model, first);
  const Eigen::Vector3d axis = axis_of(model);
  return (v - v.dot(axis) * axis).norm();
}

TEST(Presets, CoverTwoThreeFourAndEightCamerasOfEveryLens) {
  int found = 0;
  for (const std::size_t cameras : {2u, 3u, 4u, 8u}) {
    for (const int lens : {0, 1, 2}) {
      const rig_description rig = preset(std::to_string(cameras) + "-lens" + std::to_string(lens));
      ASSERT_EQ(rig.cameras.size(), cameras);
      for (const rig_camera& camera : rig.cameras) EXPECT_EQ(camera.details.lens, lens);
      ++found;
    }
  }
  EXPECT_EQ(found, 12);
  EXPECT_EQ(preset_names().size(), 25u);
}

TEST(Presets, AreAllUsable) {
  for (const std::string& name : preset_names()) EXPECT_EQ(rig_problem(preset(name)), "") << name;
}

TEST(Presets, HaveSetsEnoughForACalibration) {
  for (const std::string& name : preset_names()) {
    const rig_description rig = preset(name);
    EXPECT_GE(rig.sets.size(), 2 * rig.cameras.size() - 1) << name;
  }
}

TEST(Presets, BoardsFindAPlaceInAll) {
  for (const std::string& name : preset_names()) {
    if (name.ends_with("-unlike") && name != "2-lens2-unlike") continue;
    series_poses poses;
    EXPECT_EQ(place_boards(poses, preset(name)), "") << name;
  }
}

TEST(Presets, UnknownNameIsToldWithThoseThatExist) {
  rig_description rig;
  const std::string error = make_preset(rig, "5-lens0");
  EXPECT_TRUE(error.starts_with("no preset \"5-lens0\"; there are 2-lens0 ")) << error;
  EXPECT_NE(make_preset(rig, "3-lens0-off-axis"), "");
}

struct expected_rig {
  const char* name;
  std::size_t cameras, sets;
  int frames, lens, width, height;
  float hfov;
};

TEST(Presets, HoldTheFiveRigsThatCalibrationsAreJudgedBy) {
  const expected_rig table[] = {{"3-lens0", 3, 5, 10, 0, 1280, 960, 80},
                                {"4-lens1", 4, 8, 8, 1, 1280, 960, 190},
                                {"4-lens1-off-axis", 4, 8, 8, 1, 1280, 960, 190},
                                {"8-lens1", 8, 16, 8, 1, 960, 720, 110},
                                {"2-lens2", 2, 3, 12, 2, 1600, 1600, 220}};
  for (const expected_rig& row : table) {
    const rig_description rig = preset(row.name);
    EXPECT_EQ(rig.cameras.size(), row.cameras) << row.name;
    EXPECT_EQ(rig.sets.size(), row.sets) << row.name;
    for (const series_description& set : rig.sets) EXPECT_EQ(set.frames, row.frames) << row.name;
    for (const rig_camera& camera : rig.cameras) {
      EXPECT_EQ(camera.details.lens, row.lens) << row.name;
      EXPECT_EQ(camera.details.width, row.width) << row.name;
      EXPECT_EQ(camera.details.height, row.height) << row.name;
      EXPECT_EQ(camera.details.hfov, row.hfov) << row.name;
    }
    EXPECT_EQ(rig.board.width, 9);
    EXPECT_EQ(rig.board.height, 6);
  }
}

TEST(Presets, AlikeLensesAreOffTheStartModelByTheSame) {
  for (const char* name : {"3-lens0", "4-lens1", "8-lens1", "2-lens2"}) {
    for (const rig_camera& camera : preset(name).cameras) {
      const model_map start = initial_model(camera.details);
      const model_map& model = camera.model;
      const Eigen::Vector3d axis = axis_of(model);
      EXPECT_NEAR(scale_of(model, H_0), 1.008 * value_of(start, H_0), 1e-9);
      EXPECT_NEAR(scale_of(model, V_0), 1.008 * value_of(start, H_0), 1e-9);
      EXPECT_NEAR(vector_of(model, H_0).dot(axis), camera.details.width * 0.5 + 3, 1e-9);
      EXPECT_NEAR(vector_of(model, V_0).dot(axis), camera.details.height * 0.5 - 2, 1e-9);
      EXPECT_DOUBLE_EQ(value_of(model, L), 1.01 * value_of(start, L));
      EXPECT_NEAR(axis.cross(distortion_axis_of(model)).norm(), 0, 1e-12);
      EXPECT_EQ(value_of(model, rho_0), 0);
    }
  }
}

TEST(Presets, OffAxisLensesHaveTheirDistortionAxisAside) {
  for (const rig_camera& camera : preset("4-lens1-off-axis").cameras) {
    const double off = axis_of(camera.model).cross(distortion_axis_of(camera.model)).norm();
    EXPECT_NEAR(off, 0.0036, 1e-8);
    EXPECT_EQ(value_of(camera.model, rho_0), 0.01);
  }
}

TEST(Presets, UnlikeLensesDifferFromCameraToCamera) {
  const rig_description rig = preset("4-lens1-unlike");
  for (std::size_t i = 1; i < rig.cameras.size(); ++i) {
    const model_map &one = rig.cameras[i - 1].model, &other = rig.cameras[i].model;
    EXPECT_NE(scale_of(one, H_0), scale_of(other, H_0));
    EXPECT_NE(value_of(one, L), value_of(other, L));
    EXPECT_NE(value_of(one, rho_0), value_of(other, rho_0));
    EXPECT_NEAR(scale_of(other, H_0) / scale_of(rig.cameras[0].model, H_0), 1, 0.0101);
  }
}

TEST(Presets, FirstCameraStandsAtTheOriginAndLooksAlongMinusZ) {
  for (const std::string& name : preset_names()) {
    const model_map model = preset(name).cameras[0].model;
    EXPECT_EQ(vector_of(model, C_0), Eigen::Vector3d(0, 0, 0)) << name;
    EXPECT_EQ(value_of(model, A_th), pi) << name;
    EXPECT_EQ(value_of(model, A_ph), 0) << name;
  }
}

TEST(Presets, ThreeRectilinearCamerasStandAbout140Apart) {
  const rig_description rig = preset("3-lens0");
  const Eigen::Vector3d across =
      vector_of(rig.cameras[1].model, C_0) - vector_of(rig.cameras[2].model, C_0);
  EXPECT_NEAR(across.norm(), 140, 4);
}

TEST(Presets, BackToBackCamerasLookOppositeWays) {
  const rig_description rig = preset("2-lens2");
  EXPECT_LT(axis_of(rig.cameras[0].model).dot(axis_of(rig.cameras[1].model)), -0.999);
}

TEST(Presets, PairsOfARingCloseIt) {
  const rig_description rig = preset("4-lens1");
  std::vector<std::string> names;
  for (const series_description& set : rig.sets) names.push_back(set.name);
  EXPECT_EQ(names, (std::vector<std::string>{"cam1", "cam2", "cam3", "cam4", "pair12", "pair23",
                                             "pair34", "pair14"}));
}

}  // namespace
}  // namespace ocpan
