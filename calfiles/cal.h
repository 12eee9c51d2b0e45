#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include <Eigen/Core>

namespace ocpan {

// One face of the lookup cube: an entry per table row. On the way into a projection each
// is 256 x 3, a unit direction per row; on the way out 256 x 2, a pixel x, y per row.
using point_block = std::array<Eigen::MatrixXd, 256>;

// A finished calibration of a rig, whatever file it came from. Camera ids count from 0.
// The accessors print a line and give -1 for an id that isn't below cam_count(). One
// object is for one thread at a time.
class cal {
 public:
  virtual ~cal() = default;

  // Reads a calibration; prints why it can't and gives an internal result code.
  [[nodiscard]] virtual int load(const char* file_name) = 0;

  [[nodiscard]] virtual std::uint64_t cam_count() const = 0;
  [[nodiscard]] virtual int cam_width(std::uint64_t camera) const = 0;   // pixels
  [[nodiscard]] virtual int cam_height(std::uint64_t camera) const = 0;  // pixels
  [[nodiscard]] virtual int cam_lens(std::uint64_t camera) const = 0;    // 0, 1 or 2
  [[nodiscard]] virtual int cam_hfov(std::uint64_t camera) const = 0;    // whole degrees, truncated

  // Turns the directions of the blocks into pixel positions of a camera and appends them,
  // block for block, to pixels, which must be another sequence than directions. Gives an
  // internal result code.
  [[nodiscard]] virtual int cam_project(const std::vector<point_block>& directions,
                                        std::uint64_t camera,
                                        std::vector<point_block>& pixels) const = 0;

  // Turns pixel positions, one x, y per row, into points, one per row. Gives an internal
  // result code.
  [[nodiscard]] virtual int cam_unproject(Eigen::MatrixX3d& points, const Eigen::MatrixX2d& pixels,
                                          std::uint64_t camera) const = 0;

 protected:
  cal() = default;
  cal(const cal&) = default;
  cal& operator=(const cal&) = default;
};

}  // namespace ocpan
