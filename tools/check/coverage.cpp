#include "tools/check/coverage.h"

#include <algorithm>
#include <cmath>

#include "model/parameters.h"
#include "model/projection.h"
#include "tools/check/words.h"

namespace ocpan {
namespace {

constexpr double least_share = 0.4;        // of the picture
constexpr double least_angle_share = 0.6;  // of a fisheye's half field of view
constexpr double view_margin = 1.02;       // hfov is a guess

// The angles of pixels from the lens's axis, degrees; not a number beyond the lens's law.
std::vector<double> angles_of(const Eigen::Matrix2Xd& pixels, const model_map& lens) {
  Eigen::Matrix3Xd rays;
  unproject_points(rays, pixels, lens);
  std::vector<double> angles;
  for (Eigen::Index k = 0; k < rays.cols(); ++k) {
    angles.push_back(std::acos(std::clamp(-rays(2, k), -1.0, 1.0)) * 180 / pi);
  }
  return angles;
}

std::size_t cell_of(double position, int size, std::size_t cells) {
  const double cell = (position + 0.5) / size * static_cast<double>(cells);
  return static_cast<std::size_t>(std::clamp(cell, 0.0, static_cast<double>(cells) - 1));
}

// The cells whose middle a fisheye sees; a rectilinear lens sees its whole picture.
void mark_view(camera_coverage& coverage, const camera_details& camera, const model_map& lens) {
  for (std::size_t row = 0; row < coverage_rows; ++row) {
    for (std::size_t column = 0; column < coverage_columns; ++column) {
      Eigen::Matrix2Xd middle(2, 1);
      middle << (static_cast<double>(column) + 0.5) / coverage_columns * camera.width - 0.5,
          (static_cast<double>(row) + 0.5) / coverage_rows * camera.height - 0.5;
      coverage.in_view[row][column] =
          camera.lens == 0 ||
          angles_of(middle, lens).front() <= view_margin * static_cast<double>(camera.hfov) / 2;
    }
  }
}

void add_corners(camera_coverage& coverage, const Eigen::Matrix2Xd& corners,
                 const camera_details& camera, const model_map& lens) {
  for (Eigen::Index k = 0; k < corners.cols(); ++k) {
    const std::size_t row = cell_of(corners(1, k), camera.height, coverage_rows);
    const std::size_t column = cell_of(corners(0, k), camera.width, coverage_columns);
    ++coverage.corners[row][column];
    coverage.in_view[row][column] = true;
  }
  for (const double angle : angles_of(corners, lens)) {
    if (angle > coverage.farthest_degrees) coverage.farthest_degrees = angle;
  }
}

double share_of(const camera_coverage& coverage) {
  int seen = 0, in_view = 0;
  for (std::size_t row = 0; row < coverage_rows; ++row) {
    for (std::size_t column = 0; column < coverage_columns; ++column) {
      in_view += coverage.in_view[row][column] ? 1 : 0;
      seen += coverage.corners[row][column] > 0 ? 1 : 0;
    }
  }
  return in_view == 0 ? 0 : static_cast<double>(seen) / in_view;
}

char sign_of(int corners) {
  if (corners == 0) return '.';
  if (corners < 10) return static_cast<char>('0' + corners);
  return static_cast<char>('a' + std::min(corners / 10 - 1, 25));
}

}  // namespace

std::vector<camera_coverage> find_coverage(const rig_pictures& pictures,
                                           const std::vector<seen_board>& boards) {
  std::vector<camera_coverage> coverage(pictures.cameras.size());
  std::vector<model_map> lenses;
  for (std::size_t camera = 0; camera < coverage.size(); ++camera) {
    lenses.push_back(initial_model(pictures.cameras[camera]));
    mark_view(coverage[camera], pictures.cameras[camera], lenses.back());
  }
  for (const seen_board& board : boards) {
    for (std::size_t k = 0; k < board.cameras.size(); ++k) {
      const std::size_t camera = board.cameras[k];
      add_corners(coverage[camera], board.corners[k], pictures.cameras[camera], lenses[camera]);
    }
  }
  for (camera_coverage& of_camera : coverage) of_camera.share = share_of(of_camera);
  return coverage;
}

std::vector<std::string> coverage_map(const camera_coverage& coverage) {
  std::vector<std::string> lines;
  for (std::size_t row = 0; row < coverage_rows; ++row) {
    std::string& line = lines.emplace_back();
    for (std::size_t column = 0; column < coverage_columns; ++column) {
      line += coverage.in_view[row][column] ? sign_of(coverage.corners[row][column]) : ' ';
    }
  }
  return lines;
}

std::vector<finding> coverage_remarks(const rig_pictures& pictures,
                                      const std::vector<camera_coverage>& coverage) {
  std::vector<finding> found;
  for (std::size_t camera = 0; camera < coverage.size(); ++camera) {
    const camera_coverage& of_camera = coverage[camera];
    if (of_camera.share == 0) continue;  // told as a camera without boards
    const std::string where = words("camera ", camera + 1);
    if (of_camera.share < least_share) {
      found.push_back(
          {verdict::doubtful, where,
           words("the boards cover ", std::lround(100 * of_camera.share), " % of the picture"),
           "shoot more boards where the map shows none, above all near the rim"});
    }
    const double half_field = static_cast<double>(pictures.cameras[camera].hfov) / 2;
    if (pictures.cameras[camera].lens == 0) continue;
    if (of_camera.farthest_degrees >= least_angle_share * half_field) continue;
    found.push_back({verdict::doubtful, where,
                     words("the boards reach ", std::lround(of_camera.farthest_degrees),
                           " degrees from the axis of a lens that sees ", std::lround(half_field)),
                     "shoot boards towards the rim, where a fisheye's law is decided"});
  }
  return found;
}

}  // namespace ocpan
