// The verification of whole simulated rigs, whose truth is known.

#include <cstdint>
#include <string>
#include <vector>

#include <Eigen/Geometry>
#include <opencv2/imgproc.hpp>

#include "model/pose.h"
#include "model/rigid_rotation.h"
#include "tests/tools/verify/verified_rig.h"

namespace ocpan {
namespace {

using testing::degree;
using testing::overlap_degrees;
using testing::read_file;
using testing::verified_rig;
using testing::write_file;
namespace fs = std::filesystem;

Eigen::Vector3d direction_at(double yaw_degrees, double pitch_degrees) {
  const double yaw = yaw_degrees * degree, pitch = pitch_degrees * degree;
  return {std::sin(yaw) * std::cos(pitch), std::sin(pitch), -std::cos(yaw) * std::cos(pitch)};
}

void expect_good(const verified_rig::verified& got) {
  EXPECT_EQ(got.run.code, 0) << got.run.out << got.run.err;
  ASSERT_FALSE(got.json.is_null());
  EXPECT_EQ(got.json.at("verdict"), "good");
  for (const auto& camera : got.json.at("cameras")) {
    EXPECT_EQ(camera.at("table").at("off_positions"), 0);
    EXPECT_EQ(camera.at("polygon").at("outside"), 0);
  }
}

TEST(VerifyRigs, GoodTablesAreGoodWhateverTheRigAndTheFace) {
  for (const char* preset : {"2-lens0", "2-lens2", "4-lens1", "8-lens0"}) {
    verified_rig rig(preset);
    for (const char* face : {"129", "253"}) {
      SCOPED_TRACE(std::string(preset) + " " + face);
      rig.make_tables(std::string("--face ") + face);
      const auto by_manifest = rig.verify();
      expect_good(by_manifest);
      EXPECT_EQ(by_manifest.json.at("cameras").size(), rig.truth().cameras.size());
      rig.forget_manifests();
      const auto alone = rig.verify();
      expect_good(alone);
      EXPECT_EQ(std::to_string(alone.json.at("face_size").get<int>()), face);
    }
  }
}

TEST(VerifyRigs, GoodTablesOfAProjectFileAreGood) {
  verified_rig rig("4-lens1");
  std::string text = "p f2 w4000 h2000 v360\n";
  for (const char* yaw : {"0", "90", "180", "-90"}) {
    text += std::string("i w1280 h960 f3 v190 p0 r0 y") + yaw + "\n";
  }
  write_file(rig.file("rig.cal"), text);
  for (const std::string face : {"129", "253"}) {
    const std::string inputs =
        std::string(" ") + rig.file("rig.cal") + " " + rig.file("mask") + " ";
    ASSERT_EQ(
        testing::run_here("lut" + inputs + rig.file("lut") + " --project-file --face " + face).code,
        0);
    ASSERT_EQ(testing::run_here("poly" + inputs + rig.file("poly") + " --project-file").code, 0);
    expect_good(rig.verify());
    rig.forget_manifests();
    expect_good(rig.verify("--project-file"));
  }
}

// The width of the overlap at the middle of a seam: a walk across it in small steps.
double true_width(verified_rig& rig, std::size_t first, std::size_t second) {
  const auto axis = [&](std::size_t camera) {
    const model_map& model = rig.truth().cameras[camera].model;
    return direction_from_angles(value_of(model, A_th), value_of(model, A_ph));
  };
  const auto mask = [&](std::size_t camera) {
    return cv::imread(rig.file("mask_" + std::to_string(camera) + ".png"), cv::IMREAD_GRAYSCALE);
  };
  const cv::Mat first_mask = mask(first), second_mask = mask(second);
  const Eigen::Vector3d across = (axis(second) - axis(first)).normalized();
  Eigen::Vector3d middle = axis(first) + axis(second);
  if (middle.norm() < 0.5) middle = across.unitOrthogonal();
  middle.normalize();
  constexpr double step = 0.01;
  int both = 0;
  for (double angle = -40; angle < 40; angle += step) {
    const Eigen::Vector3d direction =
        std::cos(angle * degree) * middle + std::sin(angle * degree) * across;
    if (rig.mask_shows(first, first_mask, direction) &&
        rig.mask_shows(second, second_mask, direction)) {
      ++both;
    }
  }
  return both * step;
}

TEST(VerifyRigs, OverlapWidthsAreTrue) {
  std::size_t checked = 0;
  for (const char* preset : {"2-lens2", "4-lens1", "8-lens0"}) {
    verified_rig rig(preset);
    rig.make_tables();
    const auto got = rig.verify();
    for (const auto& overlap : got.json.at("overlaps")) {
      const std::size_t first = overlap.at("cameras")[0], second = overlap.at("cameras")[1];
      const double truth = true_width(rig, first, second);
      EXPECT_NEAR(truth, 2 * overlap_degrees, 1);
      EXPECT_NEAR(overlap.at("width_degrees").get<double>(), truth, 0.3)
          << preset << " " << first << " " << second;
      ++checked;
    }
  }
  EXPECT_EQ(checked, 1u + 4u + 8u);
}

TEST(VerifyRigs, CoverageIsThatOfTheMasks) {
  verified_rig rig("4-lens1");
  rig.make_tables();
  const auto got = rig.verify();
  std::vector<cv::Mat> masks;
  for (const char* name : {"mask_0.png", "mask_1.png", "mask_2.png", "mask_3.png"}) {
    masks.push_back(cv::imread(rig.file(name), cv::IMREAD_GRAYSCALE));
  }
  // Directions that are spread evenly: a spiral.
  constexpr int count = 40000;
  int covered = 0;
  for (int i = 0; i < count; ++i) {
    const double y = 1 - (2.0 * i + 1) / count, turn = i * 2.399963229728653;
    const double flat = std::sqrt(1 - y * y);
    const Eigen::Vector3d direction(flat * std::cos(turn), y, flat * std::sin(turn));
    bool shown = false;
    for (std::size_t camera = 0; camera < masks.size(); ++camera) {
      shown = shown || rig.mask_shows(camera, masks[camera], direction);
    }
    if (shown) ++covered;
  }
  const double truth = 4 * 180 * degree * covered / count;
  EXPECT_NEAR(got.json.at("covered_solid_angle").get<double>(), truth, 0.005 * truth);
}

TEST(VerifyRigs, AHoleCutIntoAllMasksIsNamedWithItsSizeAndPlace) {
  for (const char* face : {"129", "253"}) {
    verified_rig rig("4-lens1");
    const double yaw = 38, pitch = 12, radius = 6;
    rig.cut_hole(direction_at(yaw, pitch), radius);
    rig.make_tables(std::string("--face ") + face);
    const auto got = rig.verify();
    EXPECT_EQ(got.run.code, 10) << got.run.out;
    EXPECT_TRUE(got.tells("doubtful", "the panorama", "a hole of")) << got.run.out;
    ASSERT_EQ(got.json.at("holes").size(), 1u);
    const auto& hole = got.json.at("holes")[0];
    const double truth = 2 * 180 * degree * (1 - std::cos(radius * degree));
    EXPECT_NEAR(hole.at("solid_angle").get<double>(), truth, 0.04 * truth);
    EXPECT_NEAR(hole.at("yaw_degrees").get<double>(), yaw, 0.3);
    EXPECT_NEAR(hole.at("pitch_degrees").get<double>(), pitch, 0.3);
    EXPECT_GE(hole.at("seen_by").size(), 2u);
  }
}

TEST(VerifyRigs, SwappedFilesAreNamedWithTheirOwners) {
  verified_rig rig("4-lens1");
  rig.make_tables();
  fs::rename(rig.file("lut_1.bin"), rig.file("swap"));
  fs::rename(rig.file("lut_2.bin"), rig.file("lut_1.bin"));
  fs::rename(rig.file("swap"), rig.file("lut_2.bin"));
  for (const bool manifest : {true, false}) {
    if (!manifest) rig.forget_manifests();
    const auto got = rig.verify();
    EXPECT_EQ(got.run.code, 11);
    EXPECT_TRUE(got.tells("unusable", "lut_1.bin", "the positions of camera 2")) << got.run.out;
    EXPECT_TRUE(got.tells("unusable", "lut_2.bin", "the positions of camera 1")) << got.run.out;
    EXPECT_FALSE(got.tells("unusable", "lut_0.bin", "")) << got.run.out;
    EXPECT_EQ(got.tells("doubtful", "lut_1.bin", "its checksum differs"), manifest);
  }
}

TEST(VerifyRigs, AnOlderCalibrationIsNamed) {
  verified_rig rig("4-lens1");
  rig.make_tables();
  const double turn = 0.2 * degree;
  model_map& model = rig.truth().cameras[1].model;
  model = rotate_model(model, rotation_from_vector({0, turn, 0}));
  rig.save_calibration();
  for (const bool manifest : {true, false}) {
    if (!manifest) rig.forget_manifests();
    const auto got = rig.verify();
    EXPECT_EQ(got.run.code, 11);
    EXPECT_TRUE(got.tells("unusable", "lut_1.bin", "aren't those of the calibration"))
        << got.run.out;
    EXPECT_FALSE(got.tells("unusable", "lut_2.bin", "")) << got.run.out;
    EXPECT_EQ(got.tells("doubtful", "rig.cal", "isn't the calibration"), manifest);
    // A picture of 1280 pixels over 190 degrees: about 1.3 pixels.
    EXPECT_NEAR(got.json.at("cameras")[1].at("table").at("worst_pixels").get<double>(), 1.4, 0.4);
  }
}

TEST(VerifyRigs, AMaskThatWasChangedAfterwardsIsNamed) {
  verified_rig rig("4-lens1");
  rig.make_tables();
  cv::Mat mask = cv::imread(rig.file("mask_3.png"), cv::IMREAD_GRAYSCALE);
  cv::rectangle(mask, cv::Rect(600, 400, 60, 60), cv::Scalar(0), cv::FILLED);
  cv::imwrite(rig.file("mask_3.png"), mask);
  for (const bool manifest : {true, false}) {
    if (!manifest) rig.forget_manifests();
    const auto got = rig.verify();
    EXPECT_EQ(got.run.code, 11);
    EXPECT_TRUE(got.tells("unusable", "lut_3.bin", "outside its mask")) << got.run.out;
    EXPECT_FALSE(got.tells("unusable", "lut_2.bin", "")) << got.run.out;
    EXPECT_EQ(got.tells("doubtful", "mask_3.png", "isn't the mask"), manifest);
  }
}

TEST(VerifyRigs, MasksThatDoNotMeetAreNamed) {
  verified_rig rig("2-lens2");
  ASSERT_EQ(write_masks(fs::path(rig.file("")).string(), rig.truth(), -2), "");
  rig.make_tables();
  const auto got = rig.verify();
  EXPECT_EQ(got.run.code, 10);
  EXPECT_TRUE(got.tells("doubtful", "cameras 0 and 1", "don't overlap")) << got.run.out;
  EXPECT_TRUE(got.tells("doubtful", "the panorama", "a hole of")) << got.run.out;
}

// Moves each vertex of a polygon towards a direction, all of the way times `part`.
void shrink_polygon(const std::string& name, double part) {
  const std::string bytes = read_file(name);
  std::vector<Eigen::Vector3d> vertices;
  for (std::size_t at = 0; at < bytes.size(); at += 12) {
    Eigen::Vector3d& vertex = vertices.emplace_back();
    for (std::size_t i = 0; i < 12; i += 4) {
      std::uint32_t value = 0;
      for (std::size_t byte = 4; byte-- > 0;) {
        value = value << 8 | static_cast<unsigned char>(bytes[at + i + byte]);
      }
      vertex[static_cast<Eigen::Index>(i / 4)] = static_cast<std::int32_t>(value) / 16777216.0;
    }
  }
  Eigen::Vector3d middle = Eigen::Vector3d::Zero();
  for (const Eigen::Vector3d& vertex : vertices) middle += vertex;
  middle.normalize();
  std::string shrunk;
  for (const Eigen::Vector3d& vertex : vertices) {
    const Eigen::Vector3d moved = (vertex + part * (middle - vertex)).normalized();
    for (Eigen::Index i = 0; i < 3; ++i) {
      const auto value = static_cast<std::int32_t>(std::lround(moved[i] * 16777216));
      for (int byte = 0; byte < 4; ++byte) {
        shrunk += static_cast<char>(static_cast<std::uint32_t>(value) >> (8 * byte) & 255);
      }
    }
  }
  write_file(name, shrunk);
}

TEST(VerifyRigs, AShrunkPolygonIsNamed) {
  verified_rig rig("4-lens1");
  rig.make_tables();
  shrink_polygon(rig.file("poly_2.bin"), 0.2);
  for (const bool manifest : {true, false}) {
    if (!manifest) rig.forget_manifests();
    const auto got = rig.verify();
    EXPECT_EQ(got.run.code, 11);
    EXPECT_TRUE(got.tells("unusable", "poly_2.bin", "leaves out")) << got.run.out;
    EXPECT_FALSE(got.tells("unusable", "poly_1.bin", "")) << got.run.out;
    EXPECT_GT(got.json.at("cameras")[2].at("polygon").at("farthest_degrees").get<double>(), 2);
    EXPECT_EQ(got.tells("doubtful", "poly_2.bin", "its checksum differs"), manifest);
  }
}

TEST(VerifyRigs, SwappedPolygonsAreNamed) {
  verified_rig rig("4-lens1");
  rig.make_tables();
  fs::copy_file(rig.file("poly_0.bin"), rig.file("poly_1.bin"),
                fs::copy_options::overwrite_existing);
  const auto got = rig.verify();
  EXPECT_EQ(got.run.code, 11);
  EXPECT_TRUE(got.tells("unusable", "poly_1.bin", "")) << got.run.out;
  EXPECT_FALSE(got.tells("unusable", "poly_0.bin", "")) << got.run.out;
}

}  // namespace
}  // namespace ocpan
