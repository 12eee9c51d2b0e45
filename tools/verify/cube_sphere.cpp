#include "tools/verify/cube_sphere.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "tables/cube_faces.h"

namespace ocpan {
namespace {

constexpr double degree = 3.141592653589793 / 180;
constexpr std::size_t middle = 128;  // the index of a face's middle
constexpr std::size_t samples_of_face = std::size_t{cube_samples} * cube_samples;

// The axes of a face: that which it stands on, and those along which b and a run.
struct face_axes {
  std::size_t fixed, along_b, along_a;
};
constexpr std::array<face_axes, 3> axes_of = {face_axes{0, 1, 2}, {1, 0, 2}, {2, 0, 1}};

}  // namespace

std::vector<cube_sample> samples_on_faces(int face_size) {
  const std::vector<point_block> faces = cube_faces(face_size);
  const auto grid = cube_grid(face_size);
  const auto half = static_cast<std::size_t>((face_size - 1) / 2);
  const double step = 1.0 / static_cast<double>(half);
  std::vector<cube_sample> samples;
  samples.reserve(faces.size() * (2 * half + 1) * (2 * half + 1));
  for (std::size_t face = 0; face < faces.size(); ++face) {
    for (std::size_t a = middle - half; a <= middle + half; ++a) {
      for (std::size_t b = middle - half; b <= middle + half; ++b) {
        // The face's area around the sample as the rig sees it; it ends at the edges.
        const double share = (a == middle - half || a == middle + half ? 0.5 : 1) *
                             (b == middle - half || b == middle + half ? 0.5 : 1);
        const double squared = 1 + grid[a] * grid[a] + grid[b] * grid[b];
        samples.push_back({face, a, b, faces[face][a].row(static_cast<Eigen::Index>(b)),
                           share * step * step / (squared * std::sqrt(squared))});
      }
    }
  }
  double sum = 0;
  for (const cube_sample& sample : samples) sum += sample.solid_angle;
  for (cube_sample& sample : samples) sample.solid_angle *= 4 * 180 * degree / sum;
  return samples;
}

cube_places::cube_places(const std::vector<cube_sample>& samples, int face_size)
    : samples_(samples),
      half_((face_size - 1) / 2),
      places_(cube_face_count * samples_of_face, -1) {
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const cube_sample& sample = samples[i];
    places_[sample.face * samples_of_face + sample.a * cube_samples + sample.b] =
        static_cast<std::int32_t>(i);
  }
}

std::ptrdiff_t cube_places::at(std::size_t face, std::ptrdiff_t a, std::ptrdiff_t b) const {
  if (std::max(std::abs(a), std::abs(b)) > half_) return -1;
  const auto row = static_cast<std::size_t>(a + static_cast<std::ptrdiff_t>(middle));
  const auto column = static_cast<std::size_t>(b + static_cast<std::ptrdiff_t>(middle));
  return places_[face * samples_of_face + row * cube_samples + column];
}

std::vector<std::size_t> cube_places::next_to(std::size_t sample) const {
  const cube_sample& from = samples_[sample];
  const auto a = static_cast<std::ptrdiff_t>(from.a) - static_cast<std::ptrdiff_t>(middle);
  const auto b = static_cast<std::ptrdiff_t>(from.b) - static_cast<std::ptrdiff_t>(middle);
  std::vector<std::size_t> found;
  const auto add = [&](std::ptrdiff_t place) {
    if (place >= 0 && static_cast<std::size_t>(place) != sample) {
      found.push_back(static_cast<std::size_t>(place));
    }
  };
  add(at(from.face, a - 1, b));
  add(at(from.face, a + 1, b));
  add(at(from.face, a, b - 1));
  add(at(from.face, a, b + 1));
  if (std::max(std::abs(a), std::abs(b)) < half_) return found;
  // On an edge: the cube's point, in steps of the grid, seen from the other faces.
  std::array<std::ptrdiff_t, 3> point{};
  const face_axes& own = axes_of[from.face / 2];
  point[own.fixed] = from.face % 2 == 0 ? half_ : -half_;
  point[own.along_b] = b;
  point[own.along_a] = a;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    if (axis == own.fixed || std::abs(point[axis]) != half_) continue;
    const std::size_t face = 2 * axis + (point[axis] < 0 ? 1 : 0);
    add(at(face, point[axes_of[axis].along_a], point[axes_of[axis].along_b]));
  }
  return found;
}

look_angles look_angles_of(const Eigen::Vector3d& direction) {
  return {std::atan2(direction.x(), -direction.z()) / degree,
          std::atan2(direction.y(), std::hypot(direction.x(), direction.z())) / degree};
}

}  // namespace ocpan
