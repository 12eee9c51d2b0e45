#include "tools/check/useless_views.h"

#include <cmath>

#include <Eigen/Eigenvalues>

#include "tools/check/words.h"

namespace ocpan {
namespace {

constexpr double least_breadth = 0.1;  // of the corners, as part of their length
constexpr double same_pixels = 1;      // RMS; no two pictures show a board so much alike

bool found_in(const picture_finding& finding) { return finding.state == picture_state::found; }

// Whether the corners spread along one line, across which there is next to nothing.
bool lies_on_a_line(const Eigen::Matrix2Xd& corners) {
  const Eigen::Matrix2Xd offsets = corners.colwise() - corners.rowwise().mean();
  const Eigen::Matrix2d spread = offsets * offsets.transpose();
  const Eigen::SelfAdjointEigenSolver<Eigen::Matrix2d> axes(spread, Eigen::EigenvaluesOnly);
  return axes.eigenvalues()(0) < least_breadth * least_breadth * axes.eigenvalues()(1);
}

// Whether both found the board in the same place of the picture.
bool look_the_same(const picture_finding& a, const picture_finding& b) {
  if (!found_in(a) || !found_in(b) || a.corners.cols() != b.corners.cols()) return false;
  return (a.corners - b.corners).colwise().squaredNorm().mean() < same_pixels * same_pixels;
}

void add_lines(std::vector<finding>& found, const cal_frame_set& set,
               const std::vector<std::vector<picture_finding>>& frames) {
  for (std::size_t k = 0; k < set.camera_indices.size(); ++k) {
    std::size_t boards = 0, lines = 0;
    for (const auto& views : frames) {
      if (!found_in(views[k])) continue;
      ++boards;
      lines += lies_on_a_line(views[k].corners) ? 1 : 0;
    }
    if (lines == 0) continue;
    found.push_back(
        {2 * lines > boards ? verdict::doubtful : verdict::good,
         words("set ", set.name, ", camera ", set.camera_indices[k] + 1),
         words("in ", lines, " of ", boards,
               " pictures the board's corners lie nearly on one line"),
         "turn the board towards the camera; tilted by up to 45 degrees it tells most"});
  }
}

void add_twins(std::vector<finding>& found, const cal_frame_set& set,
               const std::vector<std::vector<picture_finding>>& frames) {
  for (std::size_t a = 0; a < set.camera_indices.size(); ++a) {
    for (std::size_t b = a + 1; b < set.camera_indices.size(); ++b) {
      std::size_t same = 0;
      for (const auto& views : frames) same += look_the_same(views[a], views[b]) ? 1 : 0;
      if (same == 0) continue;
      found.push_back(
          {verdict::unusable, words("set ", set.name),
           words("cameras ", set.camera_indices[a] + 1, " and ", set.camera_indices[b] + 1,
                 " show the board in the very same place in ", same,
                 same == 1 ? " frame" : " frames", ", as if they were copies of the same pictures"),
           "give each camera the pictures that it took itself"});
    }
  }
}

}  // namespace

std::vector<finding> useless_view_remarks(const rig_pictures& pictures,
                                          const found_boards& boards) {
  std::vector<finding> found;
  for (std::size_t set = 0; set < boards.size(); ++set) {
    add_lines(found, pictures.sets[set], boards[set]);
    add_twins(found, pictures.sets[set], boards[set]);
  }
  return found;
}

}  // namespace ocpan
