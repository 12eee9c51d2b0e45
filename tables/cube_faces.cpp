#include "tables/cube_faces.h"

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
  const auto grid = cube_grid(face_size);
  const Eigen::Map<const Eigen::ArrayXd> t(grid.data(), cube_samples);
  Eigen::ArrayXd length;
  std::vector<point_block> faces(cube_face_count);
  for (std::size_t face = 0; face < faces.size(); ++face) {
    const axes& axis = layout[face];
    for (std::size_t a = 0; a < grid.size(); ++a) {
      Eigen::MatrixXd& row = faces[face][a];
      row.resize(cube_samples, 3);
      row.col(axis.fixed).setConstant(axis.sign);
      row.col(axis.along_b) = t;
      row.col(axis.along_a).setConstant(grid[a]);
      const auto v = row.array();
      length = (v.col(0).square() + v.col(1).square() + v.col(2).square()).sqrt();
      row.array().colwise() /= length;
    }
  }
  return faces;
}

}  // namespace ocpan
