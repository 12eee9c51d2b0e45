#include "simulator/world.h"

#include <cmath>
#include <cstdint>

#include <opencv2/imgcodecs.hpp>

#include "platform/native_path.h"
#include "simulator/pixel_rays.h"

namespace ocpan {
namespace {

constexpr double finest_detail = 0.0105;  // radians
constexpr int octaves = 6;
constexpr double octave_gain = 1.1;  // amplitude of an octave by the next finer one's
constexpr double contrast = 4;

// A number from -1 to 1 for each point of a lattice and octave.
double lattice_value(std::int64_t x, std::int64_t y, std::int64_t z, int octave) {
  auto bits = static_cast<std::uint64_t>(x) * 0x9E3779B97F4A7C15u ^
              static_cast<std::uint64_t>(y) * 0xC2B2AE3D27D4EB4Fu ^
              static_cast<std::uint64_t>(z) * 0x165667B19E3779F9u ^
              static_cast<std::uint64_t>(octave) * 0xD6E8FEB86659FD93u;
  bits ^= bits >> 32;
  bits *= 0xD6E8FEB86659FD93u;
  bits ^= bits >> 32;
  return static_cast<double>(bits & 0xFFFF) / 32767.5 - 1;
}

double mixed(double a, double b, double part) { return a + (b - a) * part; }

// Noise with a value at each point of a lattice of side 1, smooth between.
double smooth_noise(const Eigen::Vector3d& at, int octave) {
  std::int64_t cell[3];
  double part[3];
  for (int i = 0; i < 3; ++i) {
    const double floor = std::floor(at[i]);
    const double t = at[i] - floor;
    cell[i] = static_cast<std::int64_t>(floor);
    part[i] = t * t * t * (t * (t * 6 - 15) + 10);
  }
  double plane[2];
  for (int dz = 0; dz < 2; ++dz) {
    double line[2];
    for (int dy = 0; dy < 2; ++dy) {
      line[dy] = mixed(lattice_value(cell[0], cell[1] + dy, cell[2] + dz, octave),
                       lattice_value(cell[0] + 1, cell[1] + dy, cell[2] + dz, octave), part[0]);
    }
    plane[dz] = mixed(line[0], line[1], part[1]);
  }
  return mixed(plane[0], plane[1], part[2]);
}

unsigned char grey_byte(double grey) { return static_cast<unsigned char>(grey + 0.5); }

// Where a ray from a point inside meets the sphere about the origin.
Eigen::Vector3d on_sphere(const Eigen::Vector3d& from, const Eigen::Vector3d& ray, double radius) {
  const double along = from.dot(ray);
  return from + (std::sqrt(along * along - from.squaredNorm() + radius * radius) - along) * ray;
}

}  // namespace

double world_grey(const Eigen::Vector3d& direction) {
  const Eigen::Vector3d unit = direction.normalized();
  double sum = 0, all = 0, amplitude = 1, spacing = finest_detail;
  for (int octave = 0; octave < octaves; ++octave) {
    sum += amplitude * smooth_noise(unit / spacing, octave);
    all += amplitude;
    amplitude *= octave_gain;
    spacing *= 2;
  }
  return 127.5 + 127.5 * std::tanh(contrast * sum / all);
}

Eigen::Vector3d panorama_direction(int row, int column, int width) {
  const double longitude = ((column + 0.5) / width * 2 - 1) * pi;
  const double latitude = pi / 2 - (row + 0.5) / width * 2 * pi;
  return {std::cos(latitude) * std::sin(longitude), std::sin(latitude),
          -std::cos(latitude) * std::cos(longitude)};
}

cv::Mat render_world(const rig_camera& camera, double radius) {
  const Eigen::Vector3d centre = vector_of(camera.model, C_0);
  cv::Mat picture = cv::Mat::zeros(camera.details.height, camera.details.width, CV_8UC1);
  for (int y = 0; y < picture.rows; ++y) {
    const Eigen::Matrix3Xd rays = pixel_rays(camera, y);
    for (int x = 0; x < picture.cols; ++x) {
      if (!rays.col(x).allFinite()) continue;
      picture.at<unsigned char>(y, x) =
          grey_byte(world_grey(on_sphere(centre, rays.col(x), radius)));
    }
  }
  return picture;
}

cv::Mat render_world_panorama(int width) {
  cv::Mat picture(width / 2, width, CV_8UC1);
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      picture.at<unsigned char>(y, x) = grey_byte(world_grey(panorama_direction(y, x, width)));
    }
  }
  return picture;
}

std::string write_world(const std::string& folder, const rig_description& description,
                        double radius, int width) {
  const auto write = [](const std::string& name, const cv::Mat& picture) {
    return cv::imwrite(native_path(name), picture) ? std::string() : name + " can't be written";
  };
  for (std::size_t camera = 0; camera < description.cameras.size(); ++camera) {
    const std::string problem = write(folder + "/world_" + std::to_string(camera) + ".png",
                                      render_world(description.cameras[camera], radius));
    if (!problem.empty()) return problem;
  }
  return write(folder + "/panorama.png", render_world_panorama(width));
}

}  // namespace ocpan
