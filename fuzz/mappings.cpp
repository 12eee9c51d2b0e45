#include "fuzz/mappings.h"

#include <stdexcept>
#include <vector>

#include "fuzz/promise.h"
#include "src/result_codes.h"

namespace ocpan::fuzz {
namespace {

// All directions whose coordinates are -1, 0 and 1, in the first row of one face.
std::vector<point_block> some_directions() {
  std::vector<point_block> faces(1);
  for (Eigen::MatrixXd& row : faces[0]) row.resize(0, 3);
  Eigen::MatrixXd& directions = faces[0][0];
  directions.resize(26, 3);
  Eigen::Index k = 0;
  for (int x = -1; x <= 1; ++x) {
    for (int y = -1; y <= 1; ++y) {
      for (int z = -1; z <= 1; ++z) {
        if (x != 0 || y != 0 || z != 0) {
          directions.row(k++) = Eigen::RowVector3d(x, y, z).normalized();
        }
      }
    }
  }
  return faces;
}

void must_project(const cal& calibration, std::uint64_t camera) {
  static const std::vector<point_block> directions = some_directions();
  std::vector<point_block> pixels;
  must_hold(calibration.cam_project(directions, camera, pixels) == code::success,
            "a known camera projects");
  must_hold(pixels.size() == 1, "a face of pixels for each of directions");
  for (std::size_t row = 0; row < pixels[0].size(); ++row) {
    must_hold(pixels[0][row].rows() == directions[0][row].rows() && pixels[0][row].cols() == 2,
              "a pixel for each direction");
  }
}

void must_unproject(const cal& calibration, std::uint64_t camera) {
  const double width = calibration.cam_width(camera);
  const double height = calibration.cam_height(camera);
  Eigen::MatrixX2d pixels(6, 2);
  pixels << 0, 0, width, 0, 0, height, width / 2, height / 2, 0.25, -1e9, 1e300, 3;
  Eigen::MatrixX3d points;
  try {
    must_hold(calibration.cam_unproject(points, pixels, camera) == code::success,
              "a known camera unprojects");
  } catch (const std::out_of_range&) {  // as told for a camera without a centre
    return;
  }
  must_hold(points.rows() == pixels.rows(), "a point for each pixel");
}

}  // namespace

void must_map(const cal& calibration) {
  for (std::uint64_t camera = 0; camera < calibration.cam_count(); ++camera) {
    must_hold(calibration.cam_lens(camera) >= -1 && calibration.cam_lens(camera) <= 2,
              "a known lens");
    static_cast<void>(calibration.cam_hfov(camera));
    must_project(calibration, camera);
    must_unproject(calibration, camera);
  }
  must_hold(calibration.cam_width(calibration.cam_count()) == -1, "no width of no camera");
}

}  // namespace ocpan::fuzz
