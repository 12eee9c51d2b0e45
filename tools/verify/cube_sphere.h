#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <Eigen/Core>

namespace ocpan {

// A sample of the lookup cube that lies on its face, not beyond.
struct cube_sample {
  std::size_t face, a, b;
  Eigen::Vector3d direction;  // unit
  double solid_angle;         // steradians; those of all samples together are a sphere's
};

// All samples on the faces. Samples of an edge or a corner are there once for each face,
// with their part of the solid angle.
//
//   face_size   129 or 253
std::vector<cube_sample> samples_on_faces(int face_size);

// The places of the samples: where a sample stands in the list, by face, a and b.
class cube_places {
 public:
  cube_places(const std::vector<cube_sample>& samples, int face_size);

  // The samples next to one on its face, and the same direction's on other faces.
  std::vector<std::size_t> next_to(std::size_t sample) const;

 private:
  // -1 where the face has no sample.
  std::ptrdiff_t at(std::size_t face, std::ptrdiff_t a, std::ptrdiff_t b) const;

  const std::vector<cube_sample>& samples_;
  std::ptrdiff_t half_;
  std::vector<std::int32_t> places_;
};

// Longitude to the right of -z and latitude upward, degrees.
struct look_angles {
  double yaw = 0, pitch = 0;
};
look_angles look_angles_of(const Eigen::Vector3d& direction);

}  // namespace ocpan
