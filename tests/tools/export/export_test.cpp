#include <cmath>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <opencv2/calib3d.hpp>
#include <opencv2/core.hpp>

#include "calfiles/selen360_cal_file.h"
#include "include/oc_pan_cal.h"
#include "model/projection.h"
#include "model/rigid_rotation.h"
#include "tests/tools/tool_process.h"

namespace ocpan {
namespace {

using testing::read_file;
using testing::run_here;
using testing::temp_folder;
using testing::tool_run;
using testing::write_file;

constexpr double radians = 3.14159265358979323846 / 180;

// A lens whose axis is that of the picture: square pixels, no shear.
model_map centred_lens(double law, double scale) {
  return {{C_0, 120}, {C_1, -40},    {C_2, 15},      {A_th, pi},    {A_ph, 0},   {H_0, scale},
          {H_1, 0},   {H_2, -643},   {V_0, 0},       {V_1, -scale}, {V_2, -478}, {O_th, pi},
          {O_ph, 0},  {rho_0, 0.02}, {rho_1, -0.04}, {rho_2, 0.01}, {L, law}};
}

// The same with all that a round lens before an upright picture can't have: unlike scales,
// shear and a distortion axis of its own.
model_map crooked_lens() {
  model_map model = centred_lens(-0.5, 420);
  model[V_1] = -433;
  model[H_1] = 9;
  model[O_th] = pi - 0.03;
  model[O_ph] = 0.8;
  return model;
}

model_map turned(const model_map& model, const Eigen::Vector3d& rotation) {
  return rotate_model(model, rotation_from_vector(rotation));
}

// One camera as read back from a file.
struct read_camera {
  cv::Mat rotation, translation, vector, centre, back_rotation, back_translation;
  cv::Mat pixel_from_plane;
  std::vector<double> angle, radius;
  double focal_length = 0, interpolation_error = 0;
};

read_camera camera_of(const cv::FileNode& node) {
  read_camera camera;
  node["camera_from_rig"]["rotation_matrix"] >> camera.rotation;
  node["camera_from_rig"]["rotation_vector"] >> camera.vector;
  node["camera_from_rig"]["translation"] >> camera.translation;
  node["rig_from_camera"]["rotation_matrix"] >> camera.back_rotation;
  node["rig_from_camera"]["translation"] >> camera.back_translation;
  node["centre"] >> camera.centre;
  const cv::FileNode lens = node["lens_table"];
  lens["pixel_from_plane"] >> camera.pixel_from_plane;
  lens["angle_degrees"] >> camera.angle;
  lens["radius_pixels"] >> camera.radius;
  lens["focal_length_pixels"] >> camera.focal_length;
  lens["interpolation_error_pixels"] >> camera.interpolation_error;
  return camera;
}

// A point's pixel, by nothing but what the file says; false beyond the table.
bool project_by_table(cv::Vec2d& pixel, const read_camera& camera, const Eigen::Vector3d& point) {
  const cv::Mat p =
      camera.rotation * cv::Mat(cv::Vec3d(point.x(), point.y(), point.z())) + camera.translation;
  const double x = p.at<double>(0), y = p.at<double>(1), z = p.at<double>(2);
  const double angle = std::atan2(std::hypot(x, y), z) / radians;
  const double step = camera.angle[1] - camera.angle[0];
  const auto row = static_cast<std::size_t>(angle / step);
  if (row + 1 >= camera.angle.size()) return false;
  const double share = angle / step - static_cast<double>(row);
  const double radius = camera.radius[row] * (1 - share) + camera.radius[row + 1] * share;
  const double phi = std::atan2(y, x);
  const cv::Mat q = camera.pixel_from_plane *
                    cv::Mat(cv::Vec3d(radius * std::cos(phi), radius * std::sin(phi), 1));
  pixel = {q.at<double>(0) / q.at<double>(2), q.at<double>(1) / q.at<double>(2)};
  return true;
}

class Export : public ::testing::Test {
 protected:
  // Exports a rig and reads the file back with OpenCV. The models are replaced by what the
  // calibration file's six digits kept of them.
  std::vector<read_camera> read_back(rig& models) {
    save(models);
    const tool_run run = run_here("export " + calibration + " --format opencv-yaml --out " + out);
    EXPECT_EQ(run.code, 0) << run.err;
    const cv::FileStorage file(out, cv::FileStorage::READ);
    std::vector<read_camera> cameras;
    for (const auto& node : file["cameras"]) cameras.push_back(camera_of(node));
    return cameras;
  }

  void save(rig& models) {
    const std::vector<camera_details> details(models.size(), {1280, 960, 190, 1});
    ASSERT_EQ(selen360_cal_file(models, details).save(calibration), 0);
    selen360_cal_file kept(1);
    ASSERT_EQ(kept.load(calibration.c_str()), 0);
    models = kept.models();
  }

  nlohmann::json exported_json(rig models) {
    save(models);
    const tool_run run = run_here("export " + calibration + " --format json");
    EXPECT_EQ(run.code, 0) << run.err;
    return nlohmann::json::parse(run.out);
  }

  temp_folder folder;
  std::string calibration = folder.file("rig.cal");
  std::string out = folder.file("rig.yaml");
};

// The largest distance between the model's pixel and the table's over a grid of rays, of
// those that land in the picture; counts them.
double worst_difference(int& checked, const read_camera& camera, const model_map& model) {
  double worst = 0;
  checked = 0;
  const Eigen::Vector3d centre = vector_of(model, C_0), none = Eigen::Vector3d::Zero();
  for (double th = 0.013; th < pi; th += 0.029) {
    for (double ph = 0.007; ph < 2 * pi; ph += 0.051) {
      const Eigen::Vector3d point = centre + 700 * direction_from_angles(th, ph);
      Eigen::ArrayXd x, y;
      project_points(x, y, point, model, none, none);
      cv::Vec2d pixel;
      if (!project_by_table(pixel, camera, point)) continue;
      if (!(x[0] > -0.5 && x[0] < 1279.5 && y[0] > -0.5 && y[0] < 959.5)) continue;
      worst = std::max(worst, std::hypot(x[0] - pixel[0], y[0] - pixel[1]));
      ++checked;
    }
  }
  return worst;
}

TEST_F(Export, TableAndPoseProjectAsTheModelDoesToTheToldError) {
  rig models{centred_lens(-0.5, 420), turned(centred_lens(1, 900), {0.3, -0.9, 0.4}),
             turned(centred_lens(-0.7, 350), {-0.5, 2.2, 0.1})};
  const std::vector<read_camera> cameras = read_back(models);
  ASSERT_EQ(cameras.size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    int checked = 0;
    const double worst = worst_difference(checked, cameras[i], models[i]);
    EXPECT_GT(checked, 1000);
    EXPECT_LT(worst, 1.05 * cameras[i].interpolation_error + 1e-6) << "camera " << i;
    EXPECT_LT(cameras[i].interpolation_error, 0.01) << "camera " << i;
  }
}

TEST_F(Export, MatrixHoldsWhatTheRoundTableCannot) {
  rig models{turned(crooked_lens(), {0.2, 0.7, -0.4})};
  const std::vector<read_camera> cameras = read_back(models);
  ASSERT_EQ(cameras.size(), 1u);
  int checked = 0;
  const double worst = worst_difference(checked, cameras[0], models[0]);
  EXPECT_GT(checked, 1000);
  EXPECT_LT(worst, 1.2 * cameras[0].interpolation_error + 1e-6);
}

TEST_F(Export, MatrixOfACentredLensIsAShift) {
  rig models{centred_lens(-0.5, 420)};
  const std::vector<read_camera> cameras = read_back(models);
  ASSERT_EQ(cameras.size(), 1u);
  const cv::Mat expected = (cv::Mat_<double>(3, 3) << 1, 0, 643, 0, 1, 478, 0, 0, 1);
  // A calibration file's A_th is pi to six digits.
  EXPECT_LT(cv::norm(cameras[0].pixel_from_plane, expected, cv::NORM_INF), 0.002);
  EXPECT_NEAR(cameras[0].focal_length, 420, 0.002);
}

TEST_F(Export, NewModelLooksAlongMinusZWithYDown) {
  rig models{centred_lens(-0.5, 420)};
  const std::vector<read_camera> cameras = read_back(models);
  ASSERT_EQ(cameras.size(), 1u);
  const cv::Mat half_turn = (cv::Mat_<double>(3, 3) << 1, 0, 0, 0, -1, 0, 0, 0, -1);
  EXPECT_LT(cv::norm(cameras[0].rotation, half_turn, cv::NORM_INF), 1e-5);
}

TEST_F(Export, PosesOfBothDirectionsAgree) {
  rig models{turned(centred_lens(-0.5, 420), {0.4, 1.9, -0.2})};
  const std::vector<read_camera> cameras = read_back(models);
  ASSERT_EQ(cameras.size(), 1u);
  const read_camera& camera = cameras[0];
  EXPECT_LT(cv::norm(camera.rotation * camera.back_rotation - cv::Mat::eye(3, 3, CV_64F)), 1e-12);
  EXPECT_NEAR(cv::determinant(camera.rotation), 1, 1e-12);
  EXPECT_LT(cv::norm(camera.rotation * camera.centre + camera.translation), 1e-9);
  EXPECT_LT(cv::norm(camera.back_translation - camera.centre), 1e-12);
  cv::Mat matrix;
  cv::Rodrigues(camera.vector, matrix);
  EXPECT_LT(cv::norm(matrix - camera.rotation), 1e-9);
}

TEST_F(Export, JsonHoldsTheSameAsYaml) {
  rig models{turned(crooked_lens(), {0.2, 0.7, -0.4})};
  const std::vector<read_camera> cameras = read_back(models);
  const nlohmann::json json = exported_json(models);
  ASSERT_EQ(json["cameras"].size(), 1u);
  const nlohmann::json& camera = json["cameras"][0];
  EXPECT_EQ(camera["lens_table"]["radius_pixels"].get<std::vector<double>>(), cameras[0].radius);
  EXPECT_EQ(camera["lens_table"]["angle_degrees"].get<std::vector<double>>(), cameras[0].angle);
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      EXPECT_DOUBLE_EQ(camera["lens_table"]["pixel_from_plane"][row][column].get<double>(),
                       cameras[0].pixel_from_plane.at<double>(row, column));
      EXPECT_DOUBLE_EQ(camera["camera_from_rig"]["rotation_matrix"][row][column].get<double>(),
                       cameras[0].rotation.at<double>(row, column));
    }
    EXPECT_DOUBLE_EQ(camera["centre"][row].get<double>(), cameras[0].centre.at<double>(row));
  }
  EXPECT_EQ(camera["width"], 1280);
  EXPECT_EQ(camera["lens_kind"], 1);
  EXPECT_DOUBLE_EQ(camera["parameters"]["rho_1"].get<double>(), -0.04);
}

TEST_F(Export, TableReachesTheFarthestCorner) {
  rig models{centred_lens(1, 900)};
  const std::vector<read_camera> cameras = read_back(models);
  ASSERT_EQ(cameras.size(), 1u);
  const double corner = std::hypot(643.5, 481.5);  // from (643, 478) to (-0.5, 959.5)
  EXPECT_GE(cameras[0].radius.back(), corner - 0.01);
  EXPECT_LT(cameras[0].radius[cameras[0].radius.size() - 2], corner + 0.01);
}

TEST_F(Export, FisheyeWhoseCircleEndsInThePictureIsSampledToTheLawsEnd) {
  rig models{centred_lens(-0.7, 250)};  // half a turn times 1 / 1.4: 128.57 degrees
  const std::vector<read_camera> cameras = read_back(models);
  ASSERT_EQ(cameras.size(), 1u);
  EXPECT_DOUBLE_EQ(cameras[0].angle.back(), 128.5);
}

TEST_F(Export, TellsWhatItCannotRead) {
  EXPECT_EQ(run_here("export " + folder.file("none") + " --format json").code, OCPAN_INPUT);
  write_file(calibration, "Width:1280 Height:960\nL:nan\n");
  const tool_run nan = run_here("export " + calibration + " --format json");
  EXPECT_EQ(nan.code, OCPAN_MALFORMED);
  EXPECT_NE(nan.err.find("L:nan in line 2"), std::string::npos) << nan.err;
  write_file(calibration, "");
  EXPECT_EQ(run_here("export " + calibration + " --format json").code, OCPAN_INVALID);
  write_file(calibration, "Width:1280 Height:960\nC_0:0 L:1\n");  // no scale at all
  const tool_run flat = run_here("export " + calibration + " --format json");
  EXPECT_EQ(flat.code, OCPAN_MALFORMED);
  EXPECT_NE(flat.err.find("camera 0"), std::string::npos) << flat.err;
}

TEST_F(Export, KeepsItsInputAndWantsAFormat) {
  rig models{centred_lens(1, 900)};
  save(models);
  const std::string before = read_file(calibration);
  EXPECT_EQ(run_here("export " + calibration + " --format json --out " + calibration).code,
            OCPAN_OUTPUT);
  EXPECT_EQ(read_file(calibration), before);
  EXPECT_EQ(run_here("export " + calibration).code, 64);
  EXPECT_EQ(run_here("export " + calibration + " --format xml").code, 64);
}

}  // namespace
}  // namespace ocpan
