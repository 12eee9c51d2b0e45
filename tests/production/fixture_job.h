#pragma once

#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "calfiles/selen360_cal_file.h"
#include "model/pose.h"
#include "model/rigid_rotation.h"
#include "production/production_run.h"
#include "simulator/fixture_run.h"
#include "src/result_codes.h"

namespace ocpan::testing {

// Cameras side by side in steps about y, alike but for what makes lenses differ from the
// start model: a scale, a centre and a distortion axis that are a little off.
inline rig_description fixture_rig(std::size_t cameras, const camera_details& details,
                                   double step_degrees, double stand_off_mm, double barrel = 0) {
  rig_description description;
  for (std::size_t c = 0; c < cameras; ++c) {
    model_map model = initial_model(details);
    const double sign = c % 2 == 0 ? 1 : -1;
    for (const parameter_name key : {H_0, V_1}) model[key] *= 1 + 0.002 * sign;
    model[H_2] += 2.3 * sign;
    model[V_2] -= 1.6 * sign;
    model[O_th] -= 0.005;
    model[O_ph] = sign;
    model[rho_1] = barrel;
    model[C_2] = -stand_off_mm;
    const double yaw = step_degrees * static_cast<double>(c) * pi / 180;
    description.cameras.push_back(
        {details, rotate_model(model, rotation_from_vector({0, yaw, 0}))});
  }
  return description;
}

// The models of a calibration file.
inline rig models_in(const std::string& name) {
  selen360_cal_file file(1000.0F);
  EXPECT_EQ(file.load(name.c_str()), code::success);
  return file.models();
}

// A simulated production job, to be run in a folder that has "tmp".
class fixture_job {
 public:
  fixture_job(const rig_description& rig_of_job, const fixture_description& fixture,
              const fixture_disturbance& disturbance, const std::string& folder)
      : rig_(rig_of_job), fixture_(fixture), output_(folder + "/refined.txt") {
    EXPECT_EQ(write_fixture(files_, folder, rig_, fixture_, disturbance), "");
  }
  // The same job once more, its files copied to another folder.
  fixture_job(const fixture_job& other, const std::string& folder) : fixture_job(other) {
    output_ = folder + "/refined.txt";
    const auto copy = [&](std::string& name) {
      const std::string from = name;
      name = folder + "/" + std::filesystem::path(from).filename().string();
      std::filesystem::copy_file(from, name);
    };
    copy(files_.true_calibration);
    copy(files_.disturbed_calibration);
    for (std::string& name : files_.pictures) copy(name);
  }

  // As in a fresh process: the random numbers start anew.
  int run() {
    std::vector<const char*> pictures;
    for (const std::string& name : files_.pictures) pictures.push_back(name.c_str());
    std::srand(1);
    return calibrate_in_fixture(files_.disturbed_calibration.c_str(), output_.c_str(),
                                static_cast<float>(fixture_.radius_mm / 1000), pictures,
                                results_.data());
  }

  void forget_results() { results_ = {-1, -1, -1}; }
  double seam_before() const { return seam(files_.disturbed_calibration); }
  double seam_after() const { return seam(output_); }
  double max_error() const { return results_[0]; }
  double mean_error() const { return results_[1]; }
  double samples() const { return results_[2]; }
  const std::string& output() const { return output_; }
  const fixture_files& files() const { return files_; }

 private:
  double seam(const std::string& calibration) const {
    return worst_seam_degrees(models_in(calibration), rig_, fixture_);
  }

  rig_description rig_;
  fixture_description fixture_;
  fixture_files files_;
  std::string output_;
  std::array<double, 3> results_{};
};

}  // namespace ocpan::testing
