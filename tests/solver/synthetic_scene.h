#pragma once

#include <cstddef>
#include <random>
#include <vector>

#include "model/parameters.h"
#include "model/projection.h"
#include "solver/stage_lists.h"
#include "solver/view_group.h"

namespace ocpan::testing {

inline Eigen::Matrix3Xd board(int width, int height, double scale) {
  Eigen::Matrix3Xd points(3, width * height);
  for (int k = 0; k < width * height; ++k) {
    points.col(k) << (k % width) * scale, (k / width) * scale, 0;
  }
  return points;
}

inline Eigen::Matrix2Xd seen(const Eigen::Matrix3Xd& points, const model_map& model,
                             const ModelPose& pose) {
  Eigen::ArrayXd x, y;
  project_points(x, y, points, model, pose.rotation, pose.translation);
  Eigen::Matrix2Xd pixels(2, points.cols());
  pixels.row(0) = x.matrix().transpose();
  pixels.row(1) = y.matrix().transpose();
  return pixels;
}

// Rectilinear cameras side by side, 60 apart, all looking along -z.
inline rig side_by_side(std::size_t cameras) {
  rig models;
  for (std::size_t c = 0; c < cameras; ++c) {
    models.push_back(initial_model({900, 700, 80, 0}));
    models[c][C_0] = 60.0 * static_cast<double>(c);
  }
  return models;
}

// A group of shots of a 6 by 5 board that all its cameras see, exactly.
inline view_group shoot(const rig& models, const std::vector<std::size_t>& cameras,
                        std::size_t shots, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> tilt(-0.4, 0.4), shift(-80, 80), depth(-600, -350);
  view_group group;
  group.cameras = cameras;
  group.board_points = board(6, 5, 30);
  for (std::size_t i = 0; i < shots; ++i) {
    const ModelPose pose{{pi - 0.1 + tilt(random), tilt(random), tilt(random)},
                         {-75 + shift(random), 60 + shift(random), depth(random)}};
    std::vector<Eigen::Matrix2Xd> views;
    for (const std::size_t camera : cameras) {
      views.push_back(seen(group.board_points, models[camera], pose));
    }
    group.shots.push_back(views);
    group.poses.push_back(pose);
  }
  return group;
}

// Adds Gaussian noise to every pixel; none with a sigma of 0.
inline void add_noise(std::vector<view_group>& groups, double sigma, unsigned seed) {
  if (sigma == 0) return;
  std::mt19937 random(seed);
  std::normal_distribution<double> noise(0, sigma);
  for (view_group& group : groups) {
    for (auto& views : group.shots) {
      for (Eigen::Matrix2Xd& view : views) {
        for (Eigen::Index k = 0; k < view.size(); ++k) view.data()[k] += noise(random);
      }
    }
  }
}

// Moves every pose a little off.
inline void disturb_poses(std::vector<view_group>& groups, double angle, double length) {
  for (view_group& group : groups) {
    for (ModelPose& pose : group.poses) {
      pose.rotation += Eigen::Vector3d(angle, -angle, angle);
      pose.translation += Eigen::Vector3d(-length, length, length);
    }
  }
}

}  // namespace ocpan::testing
