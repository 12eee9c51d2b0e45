#include "calibration/rig_placement.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "model/dense_svd.h"
#include "model/rigid_rotation.h"

namespace ocpan {
namespace {

// The entry that maps the frame of camera `from` to that of camera `to`.
weighted_rotation entry(const rotation_table& table, std::size_t from, std::size_t to) {
  const auto found = table.find({std::min(from, to), std::max(from, to)});
  if (found == table.end()) return {};
  weighted_rotation result = found->second;
  if (from < to) result.rotation.transposeInPlace();
  return result;
}

// Adds the way from camera `from` over `via` to camera `to`, weighted by the geometric mean
// of its two parts' weights; gives that weight.
double add_path(Eigen::Matrix3d& sum, const rotation_table& table, std::size_t from,
                std::size_t via, std::size_t to) {
  const weighted_rotation p = entry(table, via, to);
  const weighted_rotation q = entry(table, from, via);
  const double u = std::sqrt(p.weight * q.weight);
  sum += u * p.rotation * q.rotation;
  return u;
}

}  // namespace

rotation_table align_pairs(const pair_points& points) {
  rotation_table table;
  for (const auto& [pair, lists] : points) table[pair] = pair_alignment(lists);
  return table;
}

rotation_table refine_pairs(const rotation_table& table, std::size_t cameras) {
  rotation_table refined;
  for (std::size_t i = 0; i < cameras; ++i) {
    for (std::size_t j = i + 1; j < cameras; ++j) {
      const weighted_rotation direct = entry(table, j, i);
      Eigen::Matrix3d sum = direct.weight * direct.rotation;
      double total = direct.weight;
      for (std::size_t k = 0; k < cameras; ++k) {
        if (k != i && k != j) total += add_path(sum, table, j, k, i);
      }
      refined[{i, j}] = {closest_rotation(sum), total};
    }
  }
  return refined;
}

std::vector<Eigen::Matrix3d> rotations_to_first(const rotation_table& refined,
                                                std::size_t cameras) {
  std::vector<Eigen::Matrix3d> rotations(cameras, Eigen::Matrix3d::Identity());
  for (std::size_t j = 1; j < cameras; ++j) {
    const weighted_rotation direct = entry(refined, j, 0);
    Eigen::Matrix3d sum = direct.weight * direct.rotation;
    for (std::size_t k = 1; k < cameras; ++k) {
      if (k != j) add_path(sum, refined, j, k, 0);
    }
    rotations[j] = closest_rotation(sum);
  }
  return rotations;
}

std::vector<Eigen::Vector3d> camera_positions(const pair_points& points,
                                              const rotation_table& table,
                                              const std::vector<Eigen::Matrix3d>& rotations) {
  const Eigen::Index unknowns = static_cast<Eigen::Index>(rotations.size()) - 1;
  std::vector<Eigen::Vector3d> positions(rotations.size(), Eigen::Vector3d::Zero());
  if (unknowns < 1) return positions;
  Eigen::MatrixXd s = Eigen::MatrixXd::Zero(unknowns, unknowns);
  Eigen::MatrixX3d d = Eigen::MatrixX3d::Zero(unknowns, 3);  // a row per camera from 1
  for (const auto& [pair, lists] : points) {
    const auto [a, b] = pair;
    const double weight = table.at(pair).weight;
    const Eigen::Matrix3Xd in_a = joined(lists.list1);
    const Eigen::Matrix3Xd in_b = joined(lists.list0);
    const double m = static_cast<double>(in_a.cols()) * weight;
    const Eigen::Vector3d gap = (rotations[b] * in_b - rotations[a] * in_a).rowwise().sum();
    const Eigen::Index row_b = static_cast<Eigen::Index>(b) - 1;
    if (a != 0) {
      const Eigen::Index row_a = static_cast<Eigen::Index>(a) - 1;
      s(row_a, row_a) += m;
      s(row_b, row_a) -= m;
      s(row_a, row_b) -= m;
      d.row(row_a) += weight * gap.transpose();
    }
    s(row_b, row_b) += m;
    d.row(row_b) -= weight * gap.transpose();
  }

  Eigen::MatrixX3d t =
      Eigen::MatrixX3d::Constant(unknowns, 3, std::numeric_limits<double>::quiet_NaN());
  if (s.allFinite() && d.allFinite()) {
    t = Eigen::JacobiSVD<Eigen::MatrixXd>(s, Eigen::ComputeThinU | Eigen::ComputeThinV).solve(d);
  }
  for (Eigen::Index c = 0; c < unknowns; ++c) {
    positions[static_cast<std::size_t>(c) + 1] = t.row(c).transpose();
  }
  return positions;
}

rig place_cameras(const rig& models, const pair_points& points) {
  const rotation_table table = align_pairs(points);
  const rotation_table refined = refine_pairs(table, models.size());
  const std::vector<Eigen::Matrix3d> rotations = rotations_to_first(refined, models.size());
  const std::vector<Eigen::Vector3d> positions = camera_positions(points, table, rotations);
  rig placed = models;
  for (std::size_t c = 1; c < models.size(); ++c) {
    placed[c] = rotate_model(models[c], rotations[c]);
    placed[c][C_0] += positions[c].x();
    placed[c][C_1] += positions[c].y();
    placed[c][C_2] += positions[c].z();
  }
  return placed;
}

}  // namespace ocpan
