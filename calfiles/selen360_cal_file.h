#pragma once

#include <string>
#include <vector>

#include "calfiles/cal.h"
#include "model/parameters.h"
#include "src/camera_details.h"

namespace ocpan {

// The calibration file of this library: a text file with a line of picture facts and a
// line of model parameters per camera. Numbers carry six significant digits.
//
//   Width:1280 Height:960 Lens:1 Hfov:190
//   C_0:0 C_1:0 C_2:0 A_th:3.14159 ... L:-0.5
class selen360_cal_file : public cal {
 public:
  // An empty calibration.
  //
  //   sphere_radius   of both mappings, in units of 1000 model units
  explicit selen360_cal_file(float sphere_radius);

  // A calibration to be saved; the mappings want a radius and aren't for it.
  selen360_cal_file(std::vector<model_map> models, std::vector<camera_details> details);

  const std::vector<model_map>& models() const { return models_; }
  const std::vector<camera_details>& details() const { return details_; }

  // Writes the calibration, replacing what the file held; a model's keys beyond LAMBDA are
  // left out. Prints why it can't and gives an internal result code.
  [[nodiscard]] int save(const std::string& file_name) const;

  // Replaces the content. The k-th model line and the k-th line without a model belong to
  // camera k; such a line keeps from the one before what it doesn't name. After a failure
  // what was read so far stays.
  [[nodiscard]] int load(const char* file_name) override;

  [[nodiscard]] std::uint64_t cam_count() const override { return models_.size(); }
  [[nodiscard]] int cam_width(std::uint64_t camera) const override;
  [[nodiscard]] int cam_height(std::uint64_t camera) const override;
  [[nodiscard]] int cam_lens(std::uint64_t camera) const override;
  [[nodiscard]] int cam_hfov(std::uint64_t camera) const override;

  // A direction stands for the point at sphere_radius. The camera must be below
  // cam_count(), unless there are no directions.
  [[nodiscard]] int cam_project(const std::vector<point_block>& directions, std::uint64_t camera,
                                std::vector<point_block>& pixels) const override;

  // The point at sphere_radius along a pixel's ray, less the camera's centre. The camera
  // must be below cam_count(). Throws std::out_of_range if its model lacks C_0, C_1 or C_2.
  [[nodiscard]] int cam_unproject(Eigen::MatrixX3d& points, const Eigen::MatrixX2d& pixels,
                                  std::uint64_t camera) const override;

 private:
  bool knows(std::uint64_t camera, const char* complaint) const;

  std::vector<model_map> models_;
  std::vector<camera_details> details_;
  float sphere_radius_ = 0;
};

}  // namespace ocpan
