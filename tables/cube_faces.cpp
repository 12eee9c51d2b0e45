#include "tables/cube_faces.h"

#include <cmath>

namespace ocpan {

std::array<double, cube_samples> cube_grid(int face_size) {
  const int half = (face_size - 1) / 2;
  std::array<double, cube_samples> grid;
  for (int k = 0; k < cube_samples; ++k) {
    grid[static_cast<std::size_t>(k)] = (16.0 * k - 2048.0) / (16.0 * half);
  }
  return grid;
}

std::vector<point_block> cube_faces(int face_size) {
  // The column of a sample's vector that holds the face's sign, that sign, and the columns
  // that run with b and with a.
  struct axes {
    int fixed;
    double sign;
    int along_b;
    int along_a;
  };
  constexpr axes layout[cube_face_count] = {{0, 1, 1, 2},  {0, -1, 1, 2}, {1, 1, 0, 2},
                                            {1, -1, 0, 2}, {2, 1, 0, 1},  {2, -1, 0, 1}};
  const auto t = cube_grid(face_size);
  std::vector<point_block> faces(cube_face_count);
  for (std::size_t face = 0; face < faces.size(); ++face) {
    const axes& axis = layout[face];
    for (std::size_t a = 0; a < t.size(); ++a) {
      Eigen::MatrixXd& row = faces[face][a];
      row.resize(cube_samples, 3);
      for (std::size_t b = 0; b < t.size(); ++b) {
        Eigen::RowVector3d v;
        v[axis.fixed] = axis.sign;
        v[axis.along_b] = t[b];
        v[axis.along_a] = t[a];
        const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
        row.row(static_cast<Eigen::Index>(b)) = v / length;
      }
    }
  }
  return faces;
}

}  // namespace ocpan
