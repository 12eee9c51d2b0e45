#pragma once

#include <cmath>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>

#include "calfiles/selen360_cal_file.h"
#include "model/projection.h"
#include "simulator/masks.h"
#include "simulator/pixel_rays.h"
#include "simulator/presets.h"
#include "tests/tools/tool_process.h"

namespace ocpan::testing {

constexpr double overlap_degrees = 5;  // of the masks, on either side of a seam
constexpr double sphere_radius = 10;   // 1000 units
constexpr double degree = 3.141592653589793 / 180;

// A simulated rig with its calibration, masks, tables and polygons in a folder.
class verified_rig {
 public:
  explicit verified_rig(const std::string& preset) {
    EXPECT_EQ(make_preset(truth_, preset), "");
    save_calibration();
    EXPECT_EQ(write_masks(folder_.path().string(), truth_, overlap_degrees), "");
  }

  std::string file(const std::string& name) const { return folder_.file(name); }
  rig_description& truth() { return truth_; }

  void save_calibration() {
    const selen360_cal_file calibration(models_of(truth_), details_of(truth_));
    EXPECT_EQ(calibration.save(file("rig.cal")), 0);
  }
  void make_tables(const std::string& more = "") {
    const std::string inputs = std::string(" ") + file("rig.cal") + " " + file("mask") + " ";
    EXPECT_EQ(run_here("lut" + inputs + file("lut") + " " + more).code, 0);
    EXPECT_EQ(run_here("poly" + inputs + file("poly")).code, 0);
  }
  void forget_manifests() {
    std::filesystem::remove(file("lut_manifest.json"));
    std::filesystem::remove(file("poly_manifest.json"));
  }

  // A verdict with all its numbers.
  struct verified {
    tool_run run;
    nlohmann::json json;

    // Whether something of that verdict is told of that file, with these words.
    bool tells(const std::string& judged, const std::string& subject,
               const std::string& words) const {
      for (const auto& finding : json.at("findings")) {
        const std::string of = finding.at("subject"), reason = finding.at("reason");
        if (finding.at("verdict") == judged && of.find(subject) != std::string::npos &&
            reason.find(words) != std::string::npos) {
          return true;
        }
      }
      return false;
    }
  };
  verified verify(const std::string& more = "") const {
    verified got;
    std::filesystem::remove(file("verified.json"));
    got.run =
        run_here("verify " + file("lut") + " " + file("rig.cal") + " " + file("mask") +
                 " --polygons " + file("poly") + " --json " + file("verified.json") + " " + more);
    const std::string text = read_file(file("verified.json"));
    if (!text.empty()) got.json = nlohmann::json::parse(text);
    return got;
  }

  // Whether the mask of a camera is white where the camera shows a direction of the rig.
  bool mask_shows(std::size_t camera, const cv::Mat& mask, const Eigen::Vector3d& direction) const {
    const model_map& model = truth_.cameras[camera].model;
    Eigen::ArrayXd x, y;
    project_points(x, y, direction * (1000 * sphere_radius), model, Eigen::Vector3d::Zero(),
                   Eigen::Vector3d::Zero());
    const int column = static_cast<int>(x[0]), row = static_cast<int>(y[0]);
    return x[0] > -1 && y[0] > -1 && column < mask.cols && row < mask.rows &&
           mask.at<unsigned char>(row, column) > 128;
  }

  // Blackens all masks within so many degrees of a direction of the rig.
  void cut_hole(const Eigen::Vector3d& middle, double degrees) {
    for (std::size_t camera = 0; camera < truth_.cameras.size(); ++camera) {
      const std::string name = file("mask_" + std::to_string(camera) + ".png");
      cv::Mat mask = cv::imread(name, cv::IMREAD_GRAYSCALE);
      const Eigen::Vector3d centre = vector_of(truth_.cameras[camera].model, C_0);
      for (int y = 0; y < mask.rows; ++y) {
        const Eigen::Matrix3Xd rays = pixel_rays(truth_.cameras[camera], y);
        for (int x = 0; x < mask.cols; ++x) {
          if (!rays.col(x).allFinite()) continue;
          // Where the ray meets the sphere.
          const Eigen::Vector3d ray = rays.col(x).normalized();
          const double along = ray.dot(centre), radius = 1000 * sphere_radius;
          const double way =
              std::sqrt(along * along - centre.squaredNorm() + radius * radius) - along;
          const Eigen::Vector3d direction = (centre + way * ray).normalized();
          if (direction.dot(middle) > std::cos(degrees * degree)) mask.at<unsigned char>(y, x) = 0;
        }
      }
      cv::imwrite(name, mask);
    }
  }

 private:
  temp_folder folder_;
  rig_description truth_;
};

}  // namespace ocpan::testing
