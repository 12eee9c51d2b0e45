#include "tables/mask_outline.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace ocpan {
namespace {

constexpr std::size_t most_vertices = 128;

// The rows that the columns from first to last have set together; what lies beyond the
// picture is left out.
mask_extent::column joined(const mask_extent& extent, int first, int last) {
  mask_extent::column all{std::numeric_limits<int>::max(), -1};
  const int end = std::min(last, static_cast<int>(extent.columns.size()) - 1);
  for (int c = std::max(first, 0); c <= end; ++c) {
    const mask_extent::column& one = extent.columns[static_cast<std::size_t>(c)];
    if (one.last < one.first) continue;
    all.first = std::min(all.first, one.first);
    all.last = std::max(all.last, one.last);
  }
  return all;
}

bool turns_left(const pixel& a, const pixel& b, const pixel& p) {
  const auto product = [](int left, int right) { return std::int64_t{left} * right; };
  return product(p.y - a.y, b.x - a.x) - product(b.y - a.y, p.x - a.x) > 0;
}

// Appends the chain of a range of points that only turns left.
template <typename Iterator>
void append_chain(std::vector<pixel>& hull, Iterator first, Iterator last) {
  const std::size_t base = hull.size();
  for (; first != last; ++first) {
    while (hull.size() >= base + 2 && !turns_left(hull[hull.size() - 2], hull.back(), *first)) {
      hull.pop_back();
    }
    hull.push_back(*first);
  }
}

}  // namespace

mask_extent extent_of(const cv::Mat& mask) {
  const auto width = static_cast<std::size_t>(mask.cols);
  std::vector<int> first(width, mask.rows), last(width, -1);
  for (int r = 0; r < mask.rows; ++r) {
    const unsigned char* row = mask.ptr<unsigned char>(r);
    for (std::size_t c = 0; c < width; ++c) {
      first[c] = row[c] ? std::min(first[c], r) : first[c];
      last[c] = row[c] ? r : last[c];
    }
  }
  mask_extent extent{mask.rows, std::vector<mask_extent::column>(width)};
  for (std::size_t c = 0; c < width; ++c) extent.columns[c] = {first[c], last[c]};
  return extent;
}

mask_extent halved(const mask_extent& extent) {
  const int columns = (static_cast<int>(extent.columns.size()) + 2) / 2;
  mask_extent half{(extent.rows + 2) / 2, {}};
  half.columns.reserve(static_cast<std::size_t>(columns));
  for (int c = 0; c < columns; ++c) {
    const mask_extent::column all = joined(extent, 2 * c - 1, 2 * c + 1);
    // Row y is seen from the rows r with 2r - 1 <= y <= 2r + 1.
    half.columns.push_back(all.last < 0 ? mask_extent::column{}
                                        : mask_extent::column{all.first / 2, (all.last + 1) / 2});
  }
  return half;
}

std::vector<pixel> edge_pixel_list(const mask_extent& extent) {
  // The first row whose neighbourhood has a set pixel can't have all nine of them set.
  std::vector<pixel> edges;
  const int columns = static_cast<int>(extent.columns.size());
  for (int x = 0; x < columns; ++x) {
    const mask_extent::column all = joined(extent, x - 1, x + 1);
    if (all.last < 0) continue;
    const int top = std::max(all.first - 1, 0);
    const int bottom = std::min(all.last + 1, extent.rows - 1);
    edges.push_back({x, bottom});
    if (top < bottom) edges.push_back({x, top});
  }
  return edges;
}

std::vector<pixel> convex_outline(const std::vector<pixel>& points) {
  std::vector<pixel> hull;
  if (points.empty()) return hull;
  append_chain(hull, points.begin(), points.end());
  hull.pop_back();  // the way back begins with it
  append_chain(hull, points.rbegin(), points.rend());
  hull.pop_back();  // the first point again
  return hull;
}

std::vector<Eigen::Vector2d> coarse_hull(const cv::Mat& mask) {
  mask_extent extent = extent_of(mask);
  double scale = 1.0;
  std::vector<pixel> outline = convex_outline(edge_pixel_list(extent));
  while (outline.size() > most_vertices) {
    extent = halved(extent);
    scale *= 2;
    outline = convex_outline(edge_pixel_list(extent));
  }
  std::vector<Eigen::Vector2d> hull;
  hull.reserve(outline.size());
  for (const pixel& vertex : outline) hull.emplace_back(vertex.x * scale, vertex.y * scale);
  return hull;
}

}  // namespace ocpan
