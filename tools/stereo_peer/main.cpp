// Puts a calibration of two cameras beside what OpenCV's stereoCalibrate finds in the same
// pictures.
//
//   stereo_peer CONFIG
//
// CONFIG is the configuration that the calibration was made with; its output is read. Ends
// with 0 if both agree: baseline within 0.5 percent, relative rotation within 2 degrees.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>

#include <Eigen/Dense>

#include "calfiles/selen360_cal_file.h"
#include "model/projection.h"
#include "model/rigid_rotation.h"
#include "platform/native_path.h"
#include "src/read_config.h"
#include "tools/stereo_peer/opencv_pair.h"

namespace {

using namespace ocpan;

constexpr double allowed_baseline_difference = 0.005;  // of the baseline
constexpr double allowed_rotation_difference = 2.0;    // degrees

struct configuration {
  pair_pictures pictures;   // of the first set of two cameras
  std::string calibration;  // file, in the system's form
};

// Leaves the pictures empty if the configuration can't be read or has no such set.
configuration read_pair(const char* config_file) {
  std::vector<camera_details> cameras;
  std::vector<set_config> sets;
  string_pool pool;
  std::string output;
  std::ostringstream unseen;  // its summary was printed when the calibration was made
  std::streambuf* const standard_output = std::cout.rdbuf(unseen.rdbuf());
  const int result = read_config(cameras, sets, output, pool, config_file);
  std::cout.rdbuf(standard_output);

  configuration found;
  found.calibration = native_path(output);
  const auto pair = std::ranges::find_if(sets, [](const set_config& set) {
    return set.cameras.size() == 2 && set.cameras[0].id == 1 && set.cameras[1].id == 2;
  });
  if (result != 0 || pair == sets.end()) return found;
  const std::size_t frames = std::min(pair->cameras[0].files.size(), pair->cameras[1].files.size());
  for (std::size_t i = 0; i < frames; ++i) {
    found.pictures.first.push_back(native_path(pair->cameras[0].files[i]));
    found.pictures.second.push_back(native_path(pair->cameras[1].files[i]));
  }
  found.pictures.board_width = pair->board_width;
  found.pictures.board_height = pair->board_height;
  found.pictures.board_scale = pair->board_scale;
  return found;
}

// The rotation rig -> camera, camera axes right, down and forward as OpenCV has them: the one
// that takes our rays of the corners to OpenCV's. The vectors A, H and V won't do for axes,
// since a turn of them can be made up for by the picture's centre and the distortion axis.
Eigen::Matrix3d camera_from_rig(const model_map& model, const corner_rays& corners) {
  Eigen::Matrix3Xd rays;
  unproject_points(rays, corners.pixels, model);
  return closest_rotation(corners.rays * rays.transpose());
}

double degrees_of(const Eigen::Matrix3d& rotation) {
  return Eigen::AngleAxisd(rotation).angle() * 180 / pi;
}

// The figure of the calibration's own report; not-a-number if it isn't there.
double reported_mean_residual(const std::string& calibration) {
  const std::string label = "Average Reprojection Error : ";
  std::ifstream report(calibration + "_QA_Measures.txt");
  for (std::string line; std::getline(report, line);) {
    if (line.starts_with(label)) return std::stod(line.substr(label.size()));
  }
  return std::nan("");
}

int compare(const model_map& first, const model_map& second, const opencv_pair& peer,
            double our_residual) {
  const Eigen::Matrix3d rotation = camera_from_rig(second, peer.corners[1]) *
                                   camera_from_rig(first, peer.corners[0]).transpose();
  const double baseline = (vector_of(second, C_0) - vector_of(first, C_0)).norm();
  const double peer_baseline = peer.second_origin_shift.norm();
  const double baseline_off = baseline / peer_baseline - 1;
  const double rotation_off = degrees_of(rotation * peer.second_from_first.transpose());

  std::printf("%-28s %12s %16s %12s\n", "", "oc_pan", "stereoCalibrate", "apart");
  std::printf("%-28s %12.4f %16.4f %10.3f %%\n", "Baseline, units", baseline, peer_baseline,
              100 * baseline_off);
  std::printf("%-28s %12.4f %16.4f %12.4f\n", "Relative rotation, degrees", degrees_of(rotation),
              degrees_of(peer.second_from_first), rotation_off);
  std::printf("%-28s %12.4f %16.4f\n", "Mean residual, pixels", our_residual, peer.mean_residual);
  const bool agree = std::abs(baseline_off) <= allowed_baseline_difference &&
                     rotation_off <= allowed_rotation_difference;
  return agree ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: stereo_peer CONFIG\n", stderr);
    return 64;
  }
  const configuration configuration = read_pair(argv[1]);
  selen360_cal_file calibration(1.0f);
  if (configuration.pictures.first.empty() ||
      calibration.load(configuration.calibration.c_str()) != 0 || calibration.cam_count() != 2) {
    std::fputs("stereo_peer: no calibrated pair\n", stderr);
    return 1;
  }
  const opencv_pair peer = calibrate_with_opencv(configuration.pictures);
  if (peer.boards < 3) {
    std::fputs("stereo_peer: too few boards\n", stderr);
    return 1;
  }
  return compare(calibration.models()[0], calibration.models()[1], peer,
                 reported_mean_residual(configuration.calibration));
}
