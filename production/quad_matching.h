#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "production/feature_records.h"
#include "production/sphere_maps.h"

namespace ocpan {

// Two cameras of the rig, the lower-numbered one first.
struct camera_pair {
  std::uint64_t first = 0;
  std::uint64_t second = 0;

  auto operator<=>(const camera_pair&) const = default;
};

// A quad of the lower-numbered camera and one of the higher, rotated so that corner k of
// the one is taken for corner k of the other.
struct quad_match {
  prod_quad first;
  prod_quad second;
};

// Corners of two cameras, k-th to k-th, by their indices.
struct corner_index_lists {
  std::vector<std::int32_t> first;
  std::vector<std::int32_t> second;
};

// The sphere points of two cameras, column to column.
struct point_lists {
  sphere_points first;
  sphere_points second;
};

template <typename Value>
using pair_map = std::map<camera_pair, Value>;

// The neighbours of each camera: those that it shares a quad match with.
using camera_graph = std::map<std::uint64_t, std::set<std::uint64_t>>;

struct quad_comparison {
  prod_quad second;  // rotated to begin where the best rotation does
  double distance;   // not-a-number if no rotation has one
};

// The median length of all quad edges on the sphere, mm: the root of the median of the
// squares, which for an even count isn't the median of the lengths. Edges that aren't
// numbers are left out; without an edge the scale is not-a-number.
//
//   quads, points   per camera
double quad_scale(const std::vector<quad_lists>& quads, const std::vector<sphere_points>& points);

// Compares two quads by angles seen from the rig's origin: how far the corners of the
// first lie outside the edges of the second, in sides, for the best of the four ways to lay
// them on each other; 0 if they lie inside. Only the second quad contributes edges. The
// great circle of an edge goes all round, so a quad at the opposite side of the sphere may
// be near too. Not-a-number in a corner makes a rotation's distance not-a-number.
quad_comparison quad_distance(const prod_quad& first, const prod_quad& second,
                              const sphere_points& first_points,
                              const sphere_points& second_points);

// All pairs of quads nearer than 1.2, by the first quad's place in its list, then by the
// second's. A quad may match several others.
std::vector<quad_match> match_quads(const std::vector<prod_quad>& first,
                                    const std::vector<prod_quad>& second,
                                    const sphere_points& first_points,
                                    const sphere_points& second_points);

// The corner pairs of all matches, each once, in order of first occurrence.
corner_index_lists corner_pairs(const std::vector<quad_match>& matches);

// The columns of some corners.
sphere_points select_points(const sphere_points& points, const std::vector<std::int32_t>& corners);

// Cameras are neighbours if they share at least 2 corner pairs.
camera_graph build_camera_graph(const pair_map<corner_index_lists>& corner_indices);

// Matches each point of the second camera with the nearest of the first, the lowest index
// on a tie, if it is nearer than the radius; nearest matches first. Points of the second
// may share one of the first.
//
//   radius   mm
corner_index_lists match_nearest(const sphere_points& first, const sphere_points& second,
                                 double radius);

}  // namespace ocpan
