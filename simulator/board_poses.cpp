#include "simulator/board_poses.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <Eigen/Geometry>

#include "model/projection.h"
#include "simulator/random_numbers.h"

namespace ocpan {
namespace {

using Eigen::Index;
using Eigen::Matrix3d;
using Eigen::Matrix3Xd;
using Eigen::Vector2d;
using Eigen::Vector3d;

constexpr double border = 4;           // pixels between a board's margin and the picture's rim
constexpr double least_height = 14;    // pixels across a square
constexpr double most_stretch = 2.6;   // of a square's longer side to its shorter
constexpr double least_sine = 0.84;    // of the angle between its sides
constexpr int choices = 12;            // boards that fit, of which the best placed is taken
constexpr int patience = 5000;         // attempts after which any that fit will do
constexpr int most_attempts = 200000;  // for one board

double radians(double degrees) { return degrees * pi / 180; }

// The largest angle from a camera's axis at which it sees anything, radians. Only lens 2
// has a round picture; that of lens 1 reaches a little past the sides, into the corners.
double field_of(const camera_details& details) {
  return radians(details.hfov / 2) * (details.lens == 1 ? 1.15 : details.lens == 0 ? 1.4 : 1.0);
}

struct pixel_block {
  Eigen::ArrayXd x, y;
};

pixel_block project(const Matrix3Xd& points, const model_map& model, const ModelPose& pose) {
  pixel_block pixels;
  project_points(pixels.x, pixels.y, points, model, pose.rotation, pose.translation);
  return pixels;
}

bool within_field(const rig_camera& camera, const Matrix3Xd& points, const ModelPose& pose) {
  const Vector3d axis =
      direction_from_angles(value_of(camera.model, A_th), value_of(camera.model, A_ph));
  const Vector3d centre = vector_of(camera.model, C_0);
  const Matrix3d rotation = rotation_from_vector(pose.rotation);
  const double least_cosine = std::cos(std::min(pi, field_of(camera.details)));
  for (Index i = 0; i < points.cols(); ++i) {
    const Vector3d ray = rotation * points.col(i) + pose.translation - centre;
    if (!(ray.dot(axis) >= least_cosine * ray.norm())) return false;
  }
  return true;
}

bool within_picture(const rig_camera& camera, const pixel_block& pixels) {
  const double right = camera.details.width - 1 - border;
  const double bottom = camera.details.height - 1 - border;
  return (pixels.x >= border && pixels.x <= right && pixels.y >= border && pixels.y <= bottom)
      .all();
}

// Whether every square is large and regular enough for a detector: small slivers cost it
// a quarter of a minute and are missed in the end.
bool squares_recognisable(const board_description& board, const pixel_block& pixels) {
  const auto corner = [&](int i, int j) {
    const int k = j * board.width + i;
    return Vector2d(pixels.x[k], pixels.y[k]);
  };
  for (int j = 0; j + 1 < board.height; ++j) {
    for (int i = 0; i + 1 < board.width; ++i) {
      const Vector2d across = corner(i + 1, j) - corner(i, j);
      const Vector2d down = corner(i, j + 1) - corner(i, j);
      const double longer = std::max(across.norm(), down.norm());
      const double shorter = std::min(across.norm(), down.norm());
      const double area = across.x() * down.y() - across.y() * down.x();
      if (!(area >= least_height * longer && longer <= most_stretch * shorter &&
            area >= least_sine * longer * shorter)) {
        return false;
      }
    }
  }
  return true;
}

bool is_visible(const rig_camera& camera, const board_description& board, const Matrix3Xd& outline,
                const Matrix3Xd& corners, const ModelPose& pose) {
  return within_field(camera, outline, pose) &&
         within_picture(camera, project(outline, camera.model, pose)) &&
         squares_recognisable(board, project(corners, camera.model, pose));
}

// The turn about the shortest way that carries one unit vector to another.
Matrix3d shortest_turn(const Vector3d& from, const Vector3d& to) {
  return Eigen::Quaterniond::FromTwoVectors(from, to).toRotationMatrix();
}

// What one set's boards are chosen with.
struct series_scene {
  const rig_description& description;
  const series_description& series;
  Vector3d board_middle;  // this and the next two in the board's frame
  Matrix3Xd outline;
  Matrix3Xd corners;

  const rig_camera& camera(std::size_t position) const {
    return description.cameras[series.cameras[position]];
  }
};

// A board somewhere before one camera of the set; it may well not be visible.
ModelPose random_pose(const series_scene& scene, const rig_camera& camera,
                      random_numbers& numbers) {
  const pose_limits& limits = scene.description.poses;
  const Eigen::Matrix2Xd pixel =
      Vector2d(numbers.uniform(0, camera.details.width), numbers.uniform(0, camera.details.height));
  Matrix3Xd ray;
  unproject_points(ray, pixel, camera.model);
  const double distance = numbers.uniform(limits.min_distance, limits.max_distance);
  const double roll = numbers.uniform(-radians(limits.roll_degrees), radians(limits.roll_degrees));
  const double tilt = numbers.uniform(0, radians(limits.tilt_degrees));
  const double hinge = numbers.uniform(0, 2 * pi);

  // Upright as the camera holds its picture: x to the right, y down, z away from it.
  const Vector3d axis =
      direction_from_angles(value_of(camera.model, A_th), value_of(camera.model, A_ph));
  const Vector3d horizontal = vector_of(camera.model, H_0);
  Matrix3d upright;
  upright.col(0) = (horizontal - horizontal.dot(axis) * axis).normalized();
  upright.col(1) = axis.cross(upright.col(0));
  upright.col(2) = axis;
  const Vector3d hinge_axis(std::cos(hinge), std::sin(hinge), 0);
  const Matrix3d turn = shortest_turn(axis, ray.col(0)) * upright *
                        rotation_from_vector(tilt * hinge_axis) *
                        rotation_from_vector(Vector3d(0, 0, roll));
  ModelPose pose;
  pose.rotation = vector_from_rotation(turn);
  // A half turn about y or z has no rotation vector here; such a board is never visible.
  pose.translation = vector_of(camera.model, C_0) + distance * ray.col(0) -
                     rotation_from_vector(pose.rotation) * scene.board_middle;
  return pose;
}

// The board's middle in the pictures of all cameras of the set, in picture widths.
std::vector<Vector2d> middles(const series_scene& scene, const ModelPose& pose) {
  std::vector<Vector2d> places;
  for (std::size_t i = 0; i < scene.series.cameras.size(); ++i) {
    const pixel_block pixel = project(scene.board_middle, scene.camera(i).model, pose);
    places.push_back(Vector2d(pixel.x[0], pixel.y[0]) / scene.camera(i).details.width);
  }
  return places;
}

// How far a board lies from the nearest one chosen before, summed over the pictures.
double spread(const std::vector<Vector2d>& places,
              const std::vector<std::vector<Vector2d>>& chosen) {
  double nearest = std::numeric_limits<double>::infinity();
  for (const std::vector<Vector2d>& other : chosen) {
    double apart = 0;
    for (std::size_t i = 0; i < places.size(); ++i) apart += (places[i] - other[i]).norm();
    nearest = std::min(nearest, apart);
  }
  return nearest;
}

// Cheap checks come first, for most boards fail.
bool visible_to_all(const series_scene& scene, const ModelPose& pose) {
  const auto all = [&](auto&& holds) {
    for (std::size_t i = 0; i < scene.series.cameras.size(); ++i) {
      if (!holds(scene.camera(i))) return false;
    }
    return true;
  };
  return all([&](const rig_camera& camera) {
           return within_field(camera, scene.board_middle, pose);
         }) &&
         all([&](const rig_camera& camera) { return within_field(camera, scene.outline, pose); }) &&
         all([&](const rig_camera& camera) {
           return is_visible(camera, scene.description.board, scene.outline, scene.corners, pose);
         });
}

// Of several boards that fit the one farthest from those chosen before (Mitchell's best
// candidate). False if none fits.
bool place_board(ModelPose& pose, std::vector<std::vector<Vector2d>>& chosen,
                 const series_scene& scene, const rig_camera& before, random_numbers& numbers) {
  double best = -1;
  std::vector<Vector2d> best_places;
  for (int attempt = 0, fitting = 0; attempt < most_attempts && fitting < choices; ++attempt) {
    if (fitting > 0 && attempt >= patience) break;
    const ModelPose candidate = random_pose(scene, before, numbers);
    if (!visible_to_all(scene, candidate)) continue;
    ++fitting;
    const std::vector<Vector2d> places = middles(scene, candidate);
    const double apart = spread(places, chosen);
    if (apart <= best) continue;
    best = apart;
    best_places = places;
    pose = candidate;
  }
  if (best < 0) return false;
  chosen.push_back(best_places);
  return true;
}

}  // namespace

Matrix3Xd board_points(const board_description& board) {
  Matrix3Xd points(3, board.width * board.height);
  for (int k = 0; k < board.width * board.height; ++k) {
    points.col(k) = Vector3d(k % board.width, k / board.width, 0) * board.square;
  }
  return points;
}

Matrix3Xd board_outline(const board_description& board) {
  constexpr int pieces = 12;
  const double left = (-1 - board_margin) * board.square;
  const double right = (board.width + board_margin) * board.square;
  const double bottom = (board.height + board_margin) * board.square;
  Matrix3Xd outline(3, 4 * pieces);
  for (int i = 0; i < pieces; ++i) {
    const double across = left + (right - left) * i / pieces;
    const double down = left + (bottom - left) * i / pieces;
    outline.col(4 * i) = Vector3d(across, left, 0);
    outline.col(4 * i + 1) = Vector3d(right, down, 0);
    outline.col(4 * i + 2) = Vector3d(right + left - across, bottom, 0);
    outline.col(4 * i + 3) = Vector3d(left, bottom + left - down, 0);
  }
  return outline;
}

bool board_is_visible(const rig_camera& camera, const board_description& board,
                      const ModelPose& pose) {
  return is_visible(camera, board, board_outline(board), board_points(board), pose);
}

std::string place_boards(series_poses& poses, const rig_description& description) {
  poses.clear();
  const board_description& board = description.board;
  const Vector3d middle =
      Vector3d((board.width - 1) * 0.5, (board.height - 1) * 0.5, 0) * board.square;
  for (std::size_t s = 0; s < description.sets.size(); ++s) {
    const series_scene scene{description, description.sets[s], middle, board_outline(board),
                             board_points(board)};
    random_numbers numbers(description.seed, s);
    std::vector<std::vector<Vector2d>> chosen;
    std::vector<ModelPose>& series = poses.emplace_back();
    for (int frame = 0; frame < scene.series.frames; ++frame) {
      const std::size_t before = static_cast<std::size_t>(frame) % scene.series.cameras.size();
      if (!place_board(series.emplace_back(), chosen, scene, scene.camera(before), numbers)) {
        return "sets[" + std::to_string(s) + "]: no place for the board of \"" + scene.series.name +
               "\" in which all its cameras see it whole and large enough";
      }
    }
  }
  return {};
}

series_corners true_corners(const rig_description& description, const series_poses& poses) {
  const Matrix3Xd points = board_points(description.board);
  series_corners corners;
  for (std::size_t s = 0; s < poses.size(); ++s) {
    auto& frames = corners.emplace_back();
    for (const ModelPose& pose : poses[s]) {
      auto& views = frames.emplace_back();
      for (const std::size_t camera : description.sets[s].cameras) {
        const pixel_block pixels = project(points, description.cameras[camera].model, pose);
        Eigen::Matrix2Xd& view = views.emplace_back(2, points.cols());
        view.row(0) = pixels.x;
        view.row(1) = pixels.y;
      }
    }
  }
  return corners;
}

void add_corner_noise(series_corners& corners, double sigma, std::uint64_t seed) {
  random_numbers numbers(seed, 0);
  for (auto& frames : corners) {
    for (auto& views : frames) {
      for (Eigen::Matrix2Xd& view : views) {
        for (double& coordinate : view.reshaped()) coordinate += sigma * numbers.normal();
      }
    }
  }
}

}  // namespace ocpan
