#include "model/board_pose.h"

#include <cmath>
#include <limits>
#include <numeric>

#include <Eigen/Geometry>
#include <Eigen/LU>

#include "model/dense_svd.h"
#include "model/projection.h"
#include "solver/solve_stage.h"
#include "solver/stage_lists.h"

namespace ocpan {
namespace {

using Eigen::Index;
using Eigen::Matrix3d;
using Eigen::Matrix3Xd;
using Eigen::MatrixXd;
using Eigen::Vector3d;

// The columns of a plane's projection: board point (x, y) lies on the ray along
// x c0 + y c1 + c3. A flat board says nothing of c2.
struct plane_projection {
  Vector3d c0, c1, c3;
};

// Moves board points to their mean and to a mean square distance of 1.
struct normalisation {
  explicit normalisation(const Matrix3Xd& points)
      : mean(points.rowwise().mean()),
        scale(std::sqrt((points.colwise() - mean).squaredNorm() /
                        static_cast<double>(points.cols()))) {}
  Vector3d mean;
  double scale;
};

// The three rows of ray x (P p) = 0 in the nine entries of c0, c1 and c3.
MatrixXd projection_system(const Matrix3Xd& rays, const Matrix3Xd& points,
                           const normalisation& norm) {
  MatrixXd system(3 * points.cols(), 9);
  for (Index i = 0; i < points.cols(); ++i) {
    const Vector3d p = (points.col(i) - norm.mean) * (1 / norm.scale);
    Matrix3d cross;
    cross << 0, -rays(2, i), rays(1, i),  //
        rays(2, i), 0, -rays(0, i),       //
        -rays(1, i), rays(0, i), 0;
    system.middleRows<3>(3 * i) << p.x() * cross, p.y() * cross, cross;
  }
  return system;
}

// Gives not-a-number where the rays or points aren't finite.
plane_projection fit_projection(const Matrix3Xd& rays, const Matrix3Xd& points) {
  const normalisation norm(points);
  const MatrixXd system = projection_system(rays, points, norm);
  if (!system.allFinite()) {
    const Vector3d nan = Vector3d::Constant(std::numeric_limits<double>::quiet_NaN());
    return {nan, nan, nan};
  }
  const Eigen::BDCSVD<MatrixXd> svd(system, Eigen::ComputeThinU | Eigen::ComputeThinV);
  const Eigen::VectorXd p = svd.matrixV().rightCols<1>();
  plane_projection fit;
  fit.c0 = p.segment<3>(0) / norm.scale;
  fit.c1 = p.segment<3>(3) / norm.scale;
  fit.c3 = p.segment<3>(6) - norm.mean.x() * fit.c0 - norm.mean.y() * fit.c1;
  const double s = (1 / fit.c0.norm() + 1 / fit.c1.norm()) * 0.5;
  return {s * fit.c0, s * fit.c1, s * fit.c3};
}

struct candidate_pose {
  Matrix3d rotation;
  Vector3d translation;
};

// The pose of [c0 c1 c2 c3] divided by the determinant of its left block: with the block's
// sign goes the homogeneous solution's.
candidate_pose pose_of(const plane_projection& projection, const Vector3d& c2) {
  Matrix3d left;
  left << projection.c0, projection.c1, c2;
  const double determinant = left.determinant();
  left /= determinant;
  candidate_pose pose{Matrix3d::Constant(std::numeric_limits<double>::quiet_NaN()),
                      projection.c3 / determinant};
  if (left.allFinite()) {
    const Eigen::JacobiSVD<Matrix3d> svd(left, Eigen::ComputeFullU | Eigen::ComputeFullV);
    pose.rotation = svd.matrixU() * svd.matrixV().transpose();
  }
  return pose;
}

// How far the board lies along its rays: negative for the candidate behind the camera.
double score(const candidate_pose& pose, const Matrix3Xd& points, const Matrix3Xd& rays) {
  const Matrix3Xd placed = (pose.rotation * points).colwise() + pose.translation;
  return placed.cwiseProduct(rays).sum();
}

ModelPose linear_pose(const Eigen::Matrix2Xd& view, const Matrix3Xd& points,
                      const model_map& model) {
  Matrix3Xd rays;
  unproject_points(rays, view, model);
  const plane_projection projection = fit_projection(rays, points);
  const Vector3d c2 = projection.c0.cross(projection.c1).normalized();
  const candidate_pose a = pose_of(projection, c2);
  const candidate_pose b = pose_of(projection, -c2);
  const bool b_wins = score(a, points, rays) < score(b, points, rays);
  const candidate_pose& best = b_wins ? b : a;
  // The rays leave the camera's centre, the pose lives in the rig's frame.
  return {vector_from_rotation(best.rotation), best.translation + vector_of(model, C_0)};
}

}  // namespace

ModelPose estimate_board_pose(const std::vector<Eigen::Matrix2Xd>& views,
                              const Matrix3Xd& board_points, const rig& models) {
  view_group group;
  group.cameras.resize(views.size());
  std::iota(group.cameras.begin(), group.cameras.end(), std::size_t{0});
  group.board_points = board_points;
  group.shots = {views};
  group.poses = {linear_pose(views.front(), board_points, models.front())};

  const free_parameters nothing_free(models.size());
  run_report report;
  rig models_out;
  std::vector<view_group> refined;
  solve_stage(report, models_out, refined, models, {group}, nothing_free, free_poses(), {}, {},
              solve_settings{});
  return refined.front().poses.front();
}

}  // namespace ocpan
