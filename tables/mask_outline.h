#pragma once

#include <vector>

#include <Eigen/Core>
#include <opencv2/core.hpp>

namespace ocpan {

struct pixel {
  int x;  // column
  int y;  // row
  bool operator==(const pixel&) const = default;
};

// The first and the last row that a mask has set in each column. They say all that the
// outline of a mask depends on, at a thousandth of its size.
struct mask_extent {
  struct column {
    int first = 0;
    int last = -1;  // below first in a column without a set pixel
  };
  int rows = 0;
  std::vector<column> columns;
};

// The extent of a mask, all of whose pixels above 0 are set.
//
//   mask   CV_8UC1
mask_extent extent_of(const cv::Mat& mask);

// The extent of the mask at half the size, (n + 2) / 2 rows and columns: a pixel (r, c) of it
// is set if one of the nine around (2r, 2c) is.
mask_extent halved(const mask_extent& extent);

// The outermost edge pixels of a mask, those of each column with the largest and the
// smallest row, by ascending column and then descending row. An edge pixel is one of whose
// nine pixels, itself and its neighbours, some but not all are set; beyond the picture none
// is.
std::vector<pixel> edge_pixel_list(const mask_extent& extent);

// The convex hull of points by a monotone chain, from the first point, without points on a
// straight edge. Of two points their pair remains, of a single point nothing.
//
//   points   by ascending x and then descending y
std::vector<pixel> convex_outline(const std::vector<pixel>& points);

// The convex outline of a mask's edge pixels in pixels of the mask, with at most 128
// vertices: a mask with more is halved until they suffice, and the outline scaled back, so
// that a vertex may then lie a pixel beyond the picture. Empty for a mask without a set
// pixel and for one of a single pixel.
std::vector<Eigen::Vector2d> coarse_hull(const cv::Mat& mask);

}  // namespace ocpan
