#include "simulator/fixture_run.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include <Eigen/Geometry>
#include <opencv2/imgcodecs.hpp>

#include "calfiles/selen360_cal_file.h"
#include "model/pose.h"
#include "model/rigid_rotation.h"
#include "platform/native_path.h"
#include "simulator/fixture.h"
#include "simulator/random_numbers.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

using Eigen::Vector3d;

Vector3d any_vector(random_numbers& numbers, double most) {
  const double x = numbers.uniform(-most, most);
  const double y = numbers.uniform(-most, most);
  const double z = numbers.uniform(-most, most);
  return {x, y, z};
}

// Rotation vectors of the cameras, the first 0, the largest difference of two as told.
std::vector<Vector3d> random_turns(std::size_t cameras, double largest, random_numbers& numbers) {
  std::vector<Vector3d> turns(cameras, Vector3d::Zero());
  double widest = 0;
  for (std::size_t i = 1; i < cameras; ++i) {
    turns[i] = any_vector(numbers, 1);
    for (std::size_t j = 0; j < i; ++j) widest = std::max(widest, (turns[i] - turns[j]).norm());
  }
  for (Vector3d& turn : turns) turn *= widest > 0 ? largest / widest : 0;
  return turns;
}

// Where a camera's corners lie on the sphere if a model is taken for true, by meridian and line.
using placed_corners = std::map<std::pair<int, int>, Vector3d>;

placed_corners placed(const rig_camera& camera, const model_map& model,
                      const fixture_description& fixture) {
  const std::vector<fixture_corner> corners = fixture_corners(camera, fixture);
  Eigen::Matrix2Xd pixels(2, static_cast<Eigen::Index>(corners.size()));
  for (Eigen::Index i = 0; i < pixels.cols(); ++i) {
    pixels.col(i) = corners[static_cast<std::size_t>(i)].pixel;
  }
  const Eigen::Matrix3Xd points = seen_on_sphere(model, pixels, fixture.radius_mm);
  placed_corners places;
  for (Eigen::Index i = 0; i < pixels.cols(); ++i) {
    const fixture_corner& corner = corners[static_cast<std::size_t>(i)];
    places[{corner.meridian, corner.line}] = points.col(i);
  }
  return places;
}

double seam_degrees(const placed_corners& first, const placed_corners& second) {
  double squares = 0;
  int count = 0;
  for (const auto& [name, a] : first) {
    const auto found = second.find(name);
    if (found == second.end()) continue;
    const Vector3d& b = found->second;
    const double angle = std::atan2(a.cross(b).norm(), a.dot(b)) * 180 / pi;
    squares += angle * angle;
    ++count;
  }
  return count > 0 ? std::sqrt(squares / count) : 0;
}

}  // namespace

rig disturbed_models(const rig& models, const fixture_disturbance& disturbance) {
  random_numbers turn_numbers(disturbance.seed, 0), other_numbers(disturbance.seed, 1);
  const std::vector<Vector3d> turns =
      random_turns(models.size(), disturbance.turn_degrees * pi / 180, turn_numbers);
  rig disturbed = models;
  for (std::size_t camera = 1; camera < models.size(); ++camera) {
    model_map& model = disturbed[camera];
    model = rotate_model(model, rotation_from_vector(turns[camera]));
    const Vector3d moved = vector_of(model, C_0) + any_vector(other_numbers, disturbance.move_mm);
    model[C_0] = moved.x();
    model[C_1] = moved.y();
    model[C_2] = moved.z();
    const double factor = 1 + other_numbers.uniform(-disturbance.scale, disturbance.scale);
    for (const parameter_name key : {H_0, H_1, H_2, V_0, V_1, V_2}) model[key] *= factor;
  }
  return disturbed;
}

double worst_seam_degrees(const rig& models, const rig_description& description,
                          const fixture_description& fixture) {
  std::vector<placed_corners> places;
  for (std::size_t camera = 0; camera < models.size(); ++camera) {
    places.push_back(placed(description.cameras[camera], models[camera], fixture));
  }
  double worst = 0;
  for (std::size_t i = 0; i < places.size(); ++i) {
    for (std::size_t j = i + 1; j < places.size(); ++j) {
      worst = std::max(worst, seam_degrees(places[i], places[j]));
    }
  }
  return worst;
}

std::string write_fixture(fixture_files& files, const std::string& folder,
                          const rig_description& description, const fixture_description& fixture,
                          const fixture_disturbance& disturbance) {
  files = {folder + "/true.txt", folder + "/disturbed.txt", {}};
  const rig truth = models_of(description);
  const std::vector<camera_details> details = details_of(description);
  const std::pair<const std::string&, rig> calibrations[] = {
      {files.true_calibration, truth},
      {files.disturbed_calibration, disturbed_models(truth, disturbance)}};
  for (const auto& [name, models] : calibrations) {
    if (selen360_cal_file(models, details).save(name) != code::success) {
      return "can't write " + name;
    }
  }
  for (std::size_t camera = 0; camera < description.cameras.size(); ++camera) {
    files.pictures.push_back(folder + "/fixture_" + std::to_string(camera + 1) + ".png");
    const cv::Mat picture = render_fixture(description.cameras[camera], fixture, camera);
    if (!cv::imwrite(native_path(files.pictures.back()), picture)) {
      return "can't write " + files.pictures.back();
    }
  }
  return {};
}

}  // namespace ocpan
