#include <algorithm>
#include <array>
#include <cmath>

#include <opencv2/imgproc.hpp>

#include "model/projection.h"
#include "tools/report/camera_charts.h"
#include "tools/report/markup.h"
#include "tools/report/page_parts.h"
#include "tools/report/picture_plot.h"

namespace ocpan {
namespace {

// The picture in square cells.
struct cell_grid {
  int columns = 0;
  int rows = 0;
  double size = 1;           // of a cell, pixels
  std::vector<int> boards;   // per cell, row by row, those that its middle lies in
  std::vector<bool> imaged;  // per cell: the lens reaches its middle
};

Eigen::Vector2d middle_of(const cell_grid& grid, int column, int row) {
  return {(column + 0.5) * grid.size - 0.5, (row + 0.5) * grid.size - 0.5};
}

cell_grid empty_grid(const camera_details& details, const model_map& model) {
  constexpr double columns = 32;
  cell_grid grid;
  grid.size = details.width / columns;
  grid.columns = static_cast<int>(columns);
  grid.rows = std::max(1, static_cast<int>(std::round(details.height / grid.size)));
  Eigen::Matrix2Xd middles(2, grid.columns * grid.rows);
  for (int row = 0; row < grid.rows; ++row) {
    for (int column = 0; column < grid.columns; ++column) {
      middles.col(row * grid.columns + column) = middle_of(grid, column, row);
    }
  }
  Eigen::Matrix3Xd rays;
  unproject_points(rays, middles, model);
  for (Eigen::Index i = 0; i < rays.cols(); ++i) grid.imaged.push_back(rays.col(i).allFinite());
  grid.boards.assign(grid.imaged.size(), 0);
  return grid;
}

std::vector<cv::Point2f> hull_of(const Eigen::Matrix2Xd& corners) {
  std::vector<cv::Point2f> points, hull;
  for (Eigen::Index i = 0; i < corners.cols(); ++i) {
    points.emplace_back(static_cast<float>(corners(0, i)), static_cast<float>(corners(1, i)));
  }
  cv::convexHull(points, hull);
  return hull;
}

void count_board(cell_grid& grid, const std::vector<cv::Point2f>& hull) {
  for (int row = 0; row < grid.rows; ++row) {
    for (int column = 0; column < grid.columns; ++column) {
      const Eigen::Vector2d middle = middle_of(grid, column, row);
      const cv::Point2f point(static_cast<float>(middle.x()), static_cast<float>(middle.y()));
      const auto cell = static_cast<std::size_t>(std::ptrdiff_t{row} * grid.columns + column);
      if (cv::pointPolygonTest(hull, point, false) >= 0) ++grid.boards[cell];
    }
  }
}

// From pale to dark blue: lightness alone tells the count.
std::string shade(int boards) {
  if (boards == 0) return "#ffffff";
  constexpr std::array<std::string_view, 6> shades = {"#d3e5f5", "#a8cdea", "#72afdb",
                                                      "#3f8cc4", "#1a66a5", "#0b4178"};
  constexpr std::array<int, 5> up_to = {1, 2, 4, 7, 12};
  const auto step = std::lower_bound(up_to.begin(), up_to.end(), boards) - up_to.begin();
  return std::string(shades[static_cast<std::size_t>(step)]);
}

std::string shade_legend(double x, double y) {
  constexpr std::array<std::pair<int, std::string_view>, 7> steps = {
      {{0, "0"}, {1, "1"}, {2, "2"}, {4, "3-4"}, {7, "5-7"}, {12, "8-12"}, {13, "more"}}};
  std::string content = text(x, y, "boards:", "class=\"key\"");
  x += 50;
  for (const auto& [boards, words] : steps) {
    content += box(x, y - 10, 12, 12, joined("fill=\"", shade(boards), "\" stroke=\"#8b96a3\""));
    content += text(x + 16, y, words, "class=\"key\"");
    x += 24 + 7 * static_cast<double>(words.size());
  }
  return content;
}

std::string cells(const plot& p, const cell_grid& grid) {
  std::string content;
  const double scale = x_at(p, grid.size) - x_at(p, 0);
  for (int row = 0; row < grid.rows; ++row) {
    for (int column = 0; column < grid.columns; ++column) {
      const auto cell = static_cast<std::size_t>(std::ptrdiff_t{row} * grid.columns + column);
      if (grid.boards[cell] == 0) continue;
      content += box(x_at(p, column * grid.size - 0.5), y_at(p, row * grid.size - 0.5), scale + 0.3,
                     scale + 0.3, joined("fill=\"", shade(grid.boards[cell]), "\""));
    }
  }
  return content;
}

std::string corner_dots(const plot& p, const std::vector<const rig_picture*>& pictures) {
  std::string steps;
  for (const rig_picture* picture : pictures) {
    for (Eigen::Index i = 0; i < picture->finding.corners.cols(); ++i) {
      const Eigen::Vector2d place = at(p, picture->finding.corners.col(i));
      steps += joined("M", number(place.x(), 1), " ", number(place.y(), 1), "h0");
    }
  }
  return path(steps,
              "stroke=\"#1d2733\" stroke-opacity=\".55\" stroke-width=\"1.5\" "
              "stroke-linecap=\"round\"");
}

}  // namespace

std::string coverage_chart(const report_content& content, std::size_t camera) {
  const camera_details& details = content.input.pictures.cameras[camera];
  cell_grid grid = empty_grid(details, content.input.models[camera]);
  std::vector<const rig_picture*> pictures;
  for (const rig_picture& picture : content.every_picture) {
    if (picture.camera != camera || picture.finding.corners.cols() < 3) continue;
    pictures.push_back(&picture);
    count_board(grid, hull_of(picture.finding.corners));
  }
  std::size_t imaged = 0, covered = 0;
  for (std::size_t i = 0; i < grid.boards.size(); ++i) {
    imaged += grid.imaged[i];
    covered += grid.imaged[i] && grid.boards[i] > 0;
  }
  const double share =
      imaged == 0 ? 0 : 100.0 * static_cast<double>(covered) / static_cast<double>(imaged);
  plot p = picture_plot(details);
  const std::string told = joined(number(share, 0), " % of the picture was covered by ",
                                  counted(pictures.size(), "board"), ".");
  const std::string drawn =
      ground(p) + cells(p, grid) + corner_dots(p, pictures) + shade_legend(p.left, p.top - 9);
  return chart("Where the boards were",
               told + " Each cell tells how many boards lay there; dots are their corners.",
               drawing(p.width, p.height,
                       joined("Map of the picture of ", camera_name(camera), ": ", told), drawn));
}

}  // namespace ocpan
