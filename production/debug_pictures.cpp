#include "production/debug_pictures.h"

#include <chrono>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "platform/native_path.h"
#include "src/round_half_away.h"

namespace ocpan {
namespace {

constexpr int arm = 5;  // pixels of a cross to each side
constexpr int font = cv::FONT_HERSHEY_SIMPLEX;
constexpr double font_scale = 0.35;

cv::Scalar red() { return {0, 0, 255}; }
cv::Scalar green() { return {0, 255, 0}; }

cv::Mat coloured(const cv::Mat& picture) {
  cv::Mat colour;
  cv::cvtColor(picture, colour, cv::COLOR_GRAY2BGR);
  return colour;
}

cv::Point pixel_of(double x, double y) {
  return {static_cast<int>(round_half_away(x)), static_cast<int>(round_half_away(y))};
}

cv::Point pixel_of(const prod_corner& corner) { return pixel_of(corner.x, corner.y); }

void draw_cross(cv::Mat& picture, cv::Point at, const cv::Scalar& colour) {
  cv::line(picture, {at.x - arm, at.y}, {at.x + arm, at.y}, colour);
  cv::line(picture, {at.x, at.y - arm}, {at.x, at.y + arm}, colour);
}

// The place is the lower left end of the number.
void draw_number(cv::Mat& picture, std::size_t number, cv::Point at, const cv::Scalar& colour) {
  cv::putText(picture, std::to_string(number), at, font, font_scale, colour);
}

void draw_centred_number(cv::Mat& picture, std::size_t number, cv::Point centre,
                         const cv::Scalar& colour) {
  int below = 0;
  const cv::Size size = cv::getTextSize(std::to_string(number), font, font_scale, 1, &below);
  draw_number(picture, number, {centre.x - size.width / 2, centre.y + size.height / 2}, colour);
}

void write_picture(const std::string& name, const cv::Mat& picture) {
  cv::imwrite(native_path(".\\tmp\\" + name + ".jpg"), picture);
}

cv::Mat draw_quads(const cv::Mat& picture, const std::vector<prod_corner>& corners,
                   const std::vector<prod_quad>& quads) {
  cv::Mat drawn = coloured(picture);
  for (std::size_t q = 0; q < quads.size(); ++q) {
    double x = 0;
    double y = 0;
    for (std::size_t k = 0; k < 4; ++k) {
      const prod_corner& from = corners[static_cast<std::size_t>(quads[q][k])];
      const prod_corner& to = corners[static_cast<std::size_t>(quads[q][(k + 1) % 4])];
      cv::line(drawn, pixel_of(from), pixel_of(to), green());
      x += from.x / 4;
      y += from.y / 4;
    }
    draw_centred_number(drawn, q, pixel_of(x, y), red());
  }
  return drawn;
}

cv::Mat draw_matches(const cv::Mat& picture, const std::vector<prod_corner>& corners,
                     const std::vector<std::int32_t>& matched, cv::RNG& random) {
  cv::Mat drawn = coloured(picture);
  for (std::size_t k = 0; k < matched.size(); ++k) {
    const cv::Point at = pixel_of(corners[static_cast<std::size_t>(matched[k])]);
    const int right = random.uniform(4, 10);
    const int down = random.uniform(4, 10);
    const int blue = random.uniform(0, 255);
    const int green_part = random.uniform(0, 255);
    const cv::Scalar colour(blue, green_part, random.uniform(0, 255));
    draw_cross(drawn, at, colour);
    draw_number(drawn, k, at + cv::Point(right, down), colour);
  }
  return drawn;
}

}  // namespace

void write_corner_picture(const cv::Mat& picture, const std::vector<prod_corner>& corners,
                          std::size_t camera) {
  cv::Mat drawn = coloured(picture);
  for (const prod_corner& corner : corners) draw_cross(drawn, pixel_of(corner), red());
  write_picture("0.ori_point_" + std::to_string(camera), drawn);
}

void write_quad_pictures(const cv::Mat& picture, const std::vector<prod_corner>& corners,
                         const quad_lists& quads, std::size_t camera) {
  const std::string number = std::to_string(camera);
  write_picture("1.black_quads_" + number, draw_quads(picture, corners, quads.black));
  write_picture("1.white_quads_" + number, draw_quads(picture, corners, quads.white));
}

void write_match_pictures(const std::string& prefix, const camera_pair& pair,
                          const corner_index_lists& matches, const std::vector<cv::Mat>& pictures,
                          const std::vector<std::vector<prod_corner>>& corners) {
  const auto ticks = std::chrono::system_clock::now().time_since_epoch().count();
  cv::RNG random(static_cast<std::uint64_t>(ticks));
  const std::string name = prefix + std::to_string(pair.first) + std::to_string(pair.second) + "_";
  const auto write_side = [&](std::uint64_t camera, const std::vector<std::int32_t>& matched) {
    write_picture(name + std::to_string(camera),
                  draw_matches(pictures[camera], corners[camera], matched, random));
  };
  write_side(pair.first, matches.first);
  write_side(pair.second, matches.second);
}

}  // namespace ocpan
