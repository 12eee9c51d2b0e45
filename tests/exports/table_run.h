#pragma once

#include <string>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "include/oc_pan_cal.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan::testing {

// A picture of 200 x 100 pixels through a lens without distortion that looks along -z:
// x = 100 X + 100.03125 and y = 50.03125 - 100 Y for a direction (X, Y, -1).
inline const std::string linear_details = "Width:200 Height:100 Lens:0 Hfov:90\n";
inline const std::string linear_model =
    "C_0:0 C_1:0 C_2:0 A_th:3.141592653589793 A_ph:0 H_0:100 H_1:0 H_2:-100.03125 V_0:0 "
    "V_1:-100 V_2:-50.03125 O_th:3.141592653589793 O_ph:0 rho_0:0 rho_1:0 rho_2:0 L:1\n";
inline const std::string linear_camera = linear_details + linear_model;

// A folder with a calibration and masks, and the two makers of tables run on it.
class table_run {
 public:
  explicit table_run(const std::string& calibration) {
    write_file(folder_.file("rig"), calibration);
  }

  std::string calibration() const { return folder_.file("rig"); }
  std::string mask_prefix() const { return folder_.file("mask"); }
  std::string output_prefix() const { return folder_.file("out"); }
  std::string mask_name(int camera) const {
    return mask_prefix() + "_" + std::to_string(camera) + ".png";
  }
  std::string output_name(int camera) const {
    return output_prefix() + "_" + std::to_string(camera) + ".bin";
  }
  std::string output(int camera) const { return read_file(output_name(camera)); }

  void set_mask(int camera, const cv::Mat& mask) const {
    ASSERT_TRUE(cv::imwrite(mask_name(camera), mask));
  }
  void set_mask(int camera, int grey, int width = 200, int height = 100) const {
    set_mask(camera, cv::Mat(height, width, CV_8UC1, cv::Scalar(grey)));
  }

  // Runs ocPAN_LutFromCalibration and keeps what it prints.
  int lut(float radius = 1.0f, int small_face = 1, int use_file_class = 1) {
    int result = 99;
    printed_ = printed_by([&] {
      result =
          ocPAN_LutFromCalibration(calibration().c_str(), mask_prefix().c_str(),
                                   output_prefix().c_str(), radius, small_face, use_file_class);
    });
    return result;
  }
  // Runs ocPAN_PolyFromCalibration and keeps what it prints.
  int poly(float radius = 1.0f, int use_file_class = 1) {
    int result = 99;
    printed_ = printed_by([&] {
      result = ocPAN_PolyFromCalibration(calibration().c_str(), mask_prefix().c_str(),
                                         output_prefix().c_str(), radius, use_file_class);
    });
    return result;
  }
  const std::string& printed() const { return printed_; }

 private:
  temp_folder folder_;
  std::string printed_;
};

}  // namespace ocpan::testing
