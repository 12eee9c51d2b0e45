#pragma once

#include <array>
#include <vector>

#include "calfiles/cal.h"

namespace ocpan {

// The lookup cube: six faces of 256 x 256 sample directions around the rig.
inline constexpr int cube_face_count = 6;
inline constexpr int cube_samples = 256;  // per row and per column of a face

// Where the samples of a face lie along either axis; the face itself spans -1 to 1, and its
// middle is always sample 128.
//
//   face_size   samples across the face, 129 or 253; the grid reaches beyond the face
std::array<double, cube_samples> cube_grid(int face_size);

// The unit directions of all samples, a block per face, its matrix a holding row a of the
// table. With t the grid, sample (a, b) of the faces lies along
//
//   (+1, t[b], t[a])  (-1, t[b], t[a])  (t[b], +1, t[a])
//   (t[b], -1, t[a])  (t[b], t[a], +1)  (t[b], t[a], -1)
std::vector<point_block> cube_faces(int face_size);

}  // namespace ocpan
