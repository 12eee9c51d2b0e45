#pragma once

#include "calfiles/cal.h"
#include "calfiles/project_file_reader.h"

namespace ocpan {

// A rig as a panorama stitching tool calibrated it. Purely directional: the cameras stand
// in one place, and no radius plays a part.
//
// Row vectors throughout: a direction turns as p R and a position shears as (x, y) S. The
// common tools multiply from the other side, so their files agree with this reading only
// where a rotation has one angle that isn't pitch and there is no shear.
class pt_cal : public cal {
 public:
  pt_cal() = default;

  // To be called once: images are appended.
  [[nodiscard]] int load(const char* file_name) override;

  const pt_project& project() const { return project_; }

  [[nodiscard]] std::uint64_t cam_count() const override { return project_.images.size(); }
  [[nodiscard]] int cam_width(std::uint64_t camera) const override;
  [[nodiscard]] int cam_height(std::uint64_t camera) const override;
  // A project file knows no lens kind, and the field of view isn't told: both print so and
  // give -1.
  [[nodiscard]] int cam_lens(std::uint64_t camera) const override;
  [[nodiscard]] int cam_hfov(std::uint64_t camera) const override;

  // A direction along the camera's axis gives a position that is not a number.
  [[nodiscard]] int cam_project(const std::vector<point_block>& directions, std::uint64_t camera,
                                std::vector<point_block>& pixels) const override;

  // Gives unit directions.
  [[nodiscard]] int cam_unproject(Eigen::MatrixX3d& points, const Eigen::MatrixX2d& pixels,
                                  std::uint64_t camera) const override;

 private:
  bool knows(std::uint64_t camera, const char* complaint) const;
  bool can_map(std::uint64_t camera) const;

  pt_project project_;
};

}  // namespace ocpan
