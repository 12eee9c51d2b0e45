#include "production/camera_overlap.h"

#include <algorithm>
#include <cmath>

#include <Eigen/Geometry>

#include "model/projection.h"

namespace ocpan {
namespace {

constexpr int outline_points = 32;

double angle_between(const Eigen::Vector3d& a, const Eigen::Vector3d& b) {
  return std::acos(std::clamp(a.dot(b), -1.0, 1.0));
}

Eigen::Matrix2Xd ellipse(int width, int height) {
  const double last = 2 * pi - 2 * pi * 0.125;
  Eigen::Matrix2Xd pixels(2, outline_points);
  for (int k = 0; k < outline_points; ++k) {
    const double t = last * k / (outline_points - 1);
    pixels.col(k) << (std::sin(t) + 1) * width / 2, (std::cos(t) + 1) * height / 2;
  }
  return pixels;
}

// Each side runs towards the next corner and stops an eighth short of it, by integer
// division, where the next side starts.
Eigen::Matrix2Xd border(int width, int height) {
  constexpr int per_side = 8;
  Eigen::Matrix2Xd pixels(2, outline_points);
  const auto side = [&](int first, const Eigen::Vector2d& from, const Eigen::Vector2d& to) {
    for (int k = 0; k < per_side; ++k) pixels.col(first + k) = from + (to - from) * k / 7.0;
  };
  side(0, {0, 0}, {width - width / 8, 0});
  side(8, {width, 0}, {width, height - height / 8});
  side(16, {width, height}, {width / 8, height});
  side(24, {0, height}, {0, height / 8});
  return pixels;
}

Eigen::Matrix3Xd outline_rays(const model_map& model, int width, int height, bool circular) {
  Eigen::Matrix3Xd rays;
  unproject_points(rays, circular ? ellipse(width, height) : border(width, height), model);
  return rays;
}

arc_list arcs_between(const Eigen::Matrix3Xd& starts, const Eigen::Matrix3Xd& ends) {
  arc_list arcs{starts, Eigen::Matrix3Xd(3, starts.cols()), {}};
  for (Eigen::Index k = 0; k < starts.cols(); ++k) {
    const Eigen::Vector3d start = starts.col(k);
    const Eigen::Vector3d end = ends.col(k);
    arcs.normals.col(k) = start.cross(end);
    arcs.angles.push_back(angle_between(start, end));
  }
  return arcs;
}

bool strictly_inside(double fraction) { return fraction > 0 && fraction < 1; }

bool lies_on(const Eigen::Vector3d& direction, const arc_list& arcs, Eigen::Index k) {
  const Eigen::Vector3d start = arcs.starts.col(k);
  return strictly_inside(angle_between(start, direction) /
                         arcs.angles[static_cast<std::size_t>(k)]);
}

}  // namespace

arc_list build_rim_arcs(const model_map& model, int width, int height, bool circular) {
  const Eigen::Matrix3Xd starts = outline_rays(model, width, height, circular);
  Eigen::Matrix3Xd ends(3, outline_points);
  ends.leftCols(outline_points - 1) = starts.rightCols(outline_points - 1);
  ends.col(outline_points - 1) = starts.col(0);
  return arcs_between(starts, ends);
}

arc_list build_spoke_arcs(const model_map& model, int width, int height, bool circular) {
  const Eigen::Vector2d middle(width / 2.0, height / 2.0);
  Eigen::Matrix3Xd starts;
  unproject_points(starts, middle.replicate(1, outline_points), model);
  return arcs_between(starts, outline_rays(model, width, height, circular));
}

bool cameras_overlap(const arc_list& rim, const arc_list& spokes) {
  for (Eigen::Index a = 0; a < rim.starts.cols(); ++a) {
    const Eigen::Vector3d rim_normal = rim.normals.col(a);
    for (Eigen::Index s = 0; s < spokes.starts.cols(); ++s) {
      const Eigen::Vector3d spoke_normal = spokes.normals.col(s);
      const Eigen::Vector3d across = rim_normal.cross(spoke_normal);
      const Eigen::Vector3d u = across / across.norm();  // not-a-number for parallel normals
      if (lies_on(u, rim, a) && lies_on(u, spokes, s)) return true;
      if (lies_on(-u, rim, a) && lies_on(-u, spokes, s)) return true;
    }
  }
  return false;
}

}  // namespace ocpan
