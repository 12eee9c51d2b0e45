#include <algorithm>
#include <cmath>

#include "model/pose.h"
#include "tools/report/camera_outline.h"
#include "tools/report/markup.h"
#include "tools/report/page_parts.h"
#include "tools/report/plot.h"
#include "tools/report/sections.h"

namespace ocpan {
namespace {

// A side from which the rig is looked at: two directions of its frame, across and up.
struct side {
  std::string name;
  Eigen::Vector3d across;
  Eigen::Vector3d up;
  std::string across_label;
  std::string up_label;
};

const std::vector<side>& sides() {
  static const std::vector<side> both = {
      {"From above", {1, 0, 0}, {0, 0, -1}, "to the right, x", "forward, -z"},
      {"From the side", {0, 0, -1}, {0, 1, 0}, "forward, -z", "up, y"}};
  return both;
}

Eigen::Vector2d seen_from(const side& from, const Eigen::Vector3d& point) {
  return {from.across.dot(point), from.up.dot(point)};
}

struct placed_board {
  std::vector<Eigen::Vector3d> corners;  // of its outline, in the rig's frame
  std::string_view colour;
};

std::vector<placed_board> place_boards(const report_content& content) {
  std::vector<placed_board> placed;
  for (std::size_t i = 0; i < content.input.boards.size(); ++i) {
    const seen_board& board = content.input.boards[i];
    const evaluated_board& evaluated = content.quality.boards[i];
    if (evaluated.fate != board_fate::used) continue;
    const Eigen::Matrix3d rotation = rotation_from_vector(evaluated.rig_from_board.rotation);
    const Eigen::Index width = content.input.pictures.sets[board.set].board_width;
    const Eigen::Index last = board.points.cols() - 1;
    placed_board& each = placed.emplace_back();
    each.colour = board.cameras.size() == 1 ? camera_colour(board.cameras[0]) : "#3c4855";
    for (const Eigen::Index corner : {Eigen::Index{0}, width - 1, last, last - width + 1}) {
      each.corners.emplace_back(rotation * board.points.col(corner) +
                                evaluated.rig_from_board.translation);
    }
  }
  return placed;
}

double rig_size(const rig& models) {
  double size = 0;
  for (const model_map& a : models) {
    for (const model_map& b : models) {
      size = std::max(size, (vector_of(a, C_0) - vector_of(b, C_0)).norm());
    }
  }
  return size;
}

// A chart whose axes have one scale and hold all points.
plot even_plot(const polygon& points, const side& from) {
  Eigen::Vector2d low = points.front(), high = points.front();
  for (const Eigen::Vector2d& point : points) {
    low = low.cwiseMin(point);
    high = high.cwiseMax(point);
  }
  const double margin = 0.06 * std::max((high - low).maxCoeff(), 1e-9);
  plot p;
  p.x = {low.x() - margin, high.x() + margin, from.across_label + " (unit of board_scale)"};
  p.y = {low.y() - margin, high.y() + margin, from.up_label + " (unit of board_scale)"};
  constexpr double share = 0.8;  // of height to width, so that all views are alike
  const double width = p.x.last - p.x.first, height = p.y.last - p.y.first;
  const auto widen = [](axis& a, double by) {
    a.first -= by / 2;
    a.last += by / 2;
  };
  if (height < share * width) widen(p.y, share * width - height);
  if (height > share * width) widen(p.x, height / share - width);
  p.left = 58;
  p.height = even_height(p);
  return p;
}

struct drawn_camera {
  polygon outline;         // of what it sees, on the drawing
  Eigen::Vector2d centre;  // on the drawing
  Eigen::Vector2d name;    // where its number goes
};

// Moves a camera's number on along its axis until it is clear of the others.
void keep_apart(std::vector<drawn_camera>& cameras) {
  constexpr double apart = 20;
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    const Eigen::Vector2d along = cameras[i].name - cameras[i].centre;
    const Eigen::Vector2d step =
        apart * (along.norm() < 1 ? Eigen::Vector2d(0, -1) : Eigen::Vector2d(along.normalized()));
    const auto is_in_the_way = [&](const drawn_camera& other) {
      return (other.name - cameras[i].name).norm() < apart;
    };
    while (std::any_of(cameras.begin(), cameras.begin() + static_cast<std::ptrdiff_t>(i),
                       is_in_the_way)) {
      cameras[i].name += step;
    }
  }
}

std::string camera_marks(const std::vector<drawn_camera>& cameras) {
  std::string content;
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    const std::string_view colour = camera_colour(i);
    content += path(closed_steps(cameras[i].outline),
                    joined("fill=\"", colour, "\" fill-opacity=\".14\" stroke=\"", colour,
                           "\" stroke-opacity=\".6\""));
    content += line(cameras[i].centre.x(), cameras[i].centre.y(), cameras[i].name.x(),
                    cameras[i].name.y(), joined("stroke-width=\"1.8\" stroke=\"", colour, "\""));
  }
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    content += dot(cameras[i].centre.x(), cameras[i].centre.y(), 3,
                   joined("fill=\"", camera_colour(i), "\""));
  }
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    content += dot(cameras[i].name.x(), cameras[i].name.y(), 9,
                   joined("fill=\"", camera_colour(i), "\" stroke=\"#fff\""));
    content += text(cameras[i].name.x(), cameras[i].name.y() + 4.5, std::to_string(i + 1),
                    "style=\"fill: #fff; font-weight: 700; text-anchor: middle\"");
  }
  return content;
}

// The rig with the boards, or without them from nearby.
//
//   reach   how long the cameras' cones are drawn
std::string rig_view(const report_content& content, const side& from, double reach,
                     const std::vector<placed_board>& boards, std::string_view explanation) {
  polygon all;
  std::vector<drawn_camera> cameras;
  for (std::size_t i = 0; i < content.input.models.size(); ++i) {
    const camera_outline outline =
        outline_of(content.input.models[i], content.input.pictures.cameras[i], reach);
    drawn_camera& drawn = cameras.emplace_back();
    polygon ends{seen_from(from, outline.centre)};
    for (const Eigen::Vector3d& end : outline.ends) ends.push_back(seen_from(from, end));
    drawn.outline = hull_of(ends);
    drawn.centre = ends.front();
    drawn.name = seen_from(from, outline.ahead);
    all.insert(all.end(), ends.begin(), ends.end());
    all.push_back(drawn.name);
  }
  for (const placed_board& board : boards) {
    for (const Eigen::Vector3d& corner : board.corners) all.push_back(seen_from(from, corner));
  }
  const plot p = even_plot(all, from);
  std::string drawn = ground(p);
  for (const placed_board& board : boards) {
    polygon corners;
    for (const Eigen::Vector3d& corner : board.corners) {
      corners.push_back(at(p, seen_from(from, corner)));
    }
    drawn += path(closed_steps(corners),
                  joined("fill=\"", board.colour, "\" fill-opacity=\".12\" stroke=\"", board.colour,
                         "\" stroke-opacity=\".75\" stroke-width=\"1\""));
  }
  for (drawn_camera& camera : cameras) {
    for (Eigen::Vector2d& corner : camera.outline) corner = at(p, corner);
    camera.centre = at(p, camera.centre);
    camera.name = at(p, camera.name);
  }
  keep_apart(cameras);
  drawn += camera_marks(cameras);
  const std::string name = boards.empty() ? from.name + ", close" : from.name;
  return chart(
      name, explanation,
      drawing(p.width, p.height,
              joined("The rig seen: ", name, ", with its ", counted(cameras.size(), "camera"),
                     " and ", counted(boards.size(), "board")),
              drawn));
}

double extent_of(const std::vector<placed_board>& boards) {
  double extent = 0;
  for (const placed_board& board : boards) {
    for (const Eigen::Vector3d& corner : board.corners) extent = std::max(extent, corner.norm());
  }
  return extent;
}

}  // namespace

std::string rig_section(const report_content& content) {
  const std::vector<placed_board> boards = place_boards(content);
  const double extent = extent_of(boards), size = rig_size(content.input.models);
  std::string drawn;
  if (extent > 0) {
    for (const side& from : sides()) {
      drawn += rig_view(content, from, 0.25 * extent, boards,
                        "Boards have the colour of the camera that saw them, and are dark where "
                        "several did.");
    }
  }
  if (size > 0) {
    for (const side& from : sides()) {
      drawn += rig_view(content, from, 0.5 * size, {},
                        "The cameras' centres, where they look and how much they see.");
    }
  }
  if (drawn.empty()) return "";
  return section("rig", "The rig",
                 paragraph("In the rig's frame, which is that of camera 1: above and side are as "
                           "that camera is held.") +
                     charts(drawn));
}

}  // namespace ocpan
