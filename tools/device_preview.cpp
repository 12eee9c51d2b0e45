#include "tools/device_preview.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <opencv2/imgproc.hpp>

#include "platform/text_file.h"
#include "simulator/world.h"

namespace ocpan {
namespace {

constexpr std::size_t table_entries = 524288;
constexpr std::size_t polygon_values = 128 * 3;

// Reads a file of exactly `values.size()` little-endian numbers.
template <typename Number>
std::string read_numbers(std::vector<Number>& values, const std::string& path) {
  std::ifstream in = open_input(path, std::ios::in | std::ios::binary);
  if (!in) return path + " can't be opened";
  std::vector<unsigned char> bytes(values.size() * sizeof(Number) + 1);
  in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (in.gcount() != static_cast<std::streamsize>(bytes.size() - 1)) {
    return path + " isn't " + std::to_string(bytes.size() - 1) + " bytes long";
  }
  for (std::size_t i = 0; i < values.size(); ++i) {
    Number value = 0;
    for (std::size_t byte = sizeof(Number); byte-- > 0;) {
      value = static_cast<Number>(value << 8 | bytes[i * sizeof(Number) + byte]);
    }
    values[i] = value;
  }
  return {};
}

// Where a direction lies on the cube: a face, the samples before it along both axes, and
// how far it is from them to the next ones, 0 to 1.
struct cube_place {
  std::size_t face, a, b;
  double part_a, part_b;
};

cube_place place_on_cube(const Eigen::Vector3d& direction, int face_size) {
  Eigen::Index major = 0;
  direction.cwiseAbs().maxCoeff(&major);
  const Eigen::Index along_b = major == 0 ? 1 : 0;
  const Eigen::Index along_a = major == 2 ? 1 : 2;
  const double half = (face_size - 1) / 2;
  const double size = std::abs(direction[major]);
  const double a = direction[along_a] / size * half + 128;
  const double b = direction[along_b] / size * half + 128;
  return {static_cast<std::size_t>(2 * major + (direction[major] < 0 ? 1 : 0)),
          static_cast<std::size_t>(a), static_cast<std::size_t>(b), a - std::floor(a),
          b - std::floor(b)};
}

struct device_sample {
  double x, y, weight;
};

device_sample unpack(std::uint64_t entry) {
  const auto x = static_cast<std::int64_t>(entry) >> 37;
  const auto y = static_cast<std::int64_t>(entry << 27) >> 37;
  return {static_cast<double>(x) / 8192, static_cast<double>(y) / 8192,
          static_cast<double>(entry & 1023)};
}

// Between the four samples around a place. Those without a position, which are 0, are left
// out; without any the weight is 0.
device_sample sample_at(const std::vector<std::uint64_t>& table, const cube_place& place) {
  device_sample sum{0, 0, 0};
  double parts = 0;
  for (std::size_t corner = 0; corner < 4; ++corner) {
    const std::size_t a = place.a + corner / 2, b = place.b + corner % 2;
    const std::size_t index = place.face / 3 * 262144 + a / 4 * 4096 + place.face % 3 * 1024 +
                              b / 8 * 32 + a % 4 * 8 + b % 8;
    if (table[index] == 0) continue;
    const double part = (corner / 2 ? place.part_a : 1 - place.part_a) *
                        (corner % 2 ? place.part_b : 1 - place.part_b);
    const device_sample one = unpack(table[index]);
    sum.x += part * one.x;
    sum.y += part * one.y;
    sum.weight += part * one.weight;
    parts += part;
  }
  if (parts <= 0) return {0, 0, 0};
  return {sum.x / parts, sum.y / parts, sum.weight / parts};
}

// The colour between the four pixels around a position; the picture's rim goes on beyond it.
cv::Vec3d colour_at(const cv::Mat& picture, double x, double y) {
  const double inside_x = std::clamp(x, 0.0, picture.cols - 1.0);
  const double inside_y = std::clamp(y, 0.0, picture.rows - 1.0);
  const int left = static_cast<int>(inside_x), top = static_cast<int>(inside_y);
  const int right = std::min(left + 1, picture.cols - 1),
            below = std::min(top + 1, picture.rows - 1);
  const double part_x = inside_x - left, part_y = inside_y - top;
  const auto pixel = [&](int row, int column) {
    return cv::Vec3d(picture.at<cv::Vec3b>(row, column));
  };
  return (pixel(top, left) * (1 - part_x) + pixel(top, right) * part_x) * (1 - part_y) +
         (pixel(below, left) * (1 - part_x) + pixel(below, right) * part_x) * part_y;
}

cv::Point2d panorama_pixel(const Eigen::Vector3d& direction, int width) {
  const double longitude = std::atan2(direction.x(), -direction.z());
  const double latitude = std::asin(std::clamp(direction.y(), -1.0, 1.0));
  return {(longitude / pi + 1) * width / 2 - 0.5, (pi / 2 - latitude) * width / (2 * pi) - 0.5};
}

}  // namespace

std::string read_device_table(std::vector<std::uint64_t>& table, const std::string& path) {
  table.resize(table_entries);
  return read_numbers(table, path);
}

std::string read_device_polygon(device_polygon& polygon, const std::string& path) {
  std::vector<std::uint32_t> values(polygon_values);
  const std::string problem = read_numbers(values, path);
  polygon.clear();
  for (std::size_t i = 0; i < polygon_values; i += 3) {
    const auto component = [&](std::size_t j) {
      return static_cast<std::int32_t>(values[i + j]) / 16777216.0;
    };
    polygon.emplace_back(component(0), component(1), component(2));
  }
  return problem;
}

device_panorama stitch(const std::vector<device_camera>& cameras, int width, int face_size) {
  device_panorama panorama{cv::Mat::zeros(width / 2, width, CV_8UC3),
                           cv::Mat::zeros(width / 2, width, CV_8UC1)};
  for (int row = 0; row < width / 2; ++row) {
    for (int column = 0; column < width; ++column) {
      const cube_place place = place_on_cube(panorama_direction(row, column, width), face_size);
      cv::Vec3d sum(0, 0, 0);
      double weights = 0;
      for (const device_camera& camera : cameras) {
        const device_sample sample = sample_at(camera.table, place);
        if (!(sample.weight > 0)) continue;
        sum += sample.weight * colour_at(camera.picture, sample.x, sample.y);
        weights += sample.weight;
      }
      if (weights <= 0) continue;
      panorama.picture.at<cv::Vec3b>(row, column) = cv::Vec3b(sum * (1 / weights));
      panorama.covered.at<unsigned char>(row, column) = 255;
    }
  }
  return panorama;
}

void draw_polygons(cv::Mat& panorama, const std::vector<device_polygon>& polygons) {
  constexpr int steps = 64;  // an edge is drawn in so many lines
  static const std::array<cv::Scalar, 8> colours = {
      cv::Scalar(60, 60, 255),  cv::Scalar(60, 220, 60),  cv::Scalar(255, 120, 60),
      cv::Scalar(60, 220, 255), cv::Scalar(255, 60, 220), cv::Scalar(230, 230, 60),
      cv::Scalar(60, 140, 255), cv::Scalar(220, 160, 220)};
  const int thickness = std::max(1, panorama.cols / 700);
  for (std::size_t i = 0; i < polygons.size(); ++i) {
    const device_polygon& polygon = polygons[i];
    cv::Point2d last = panorama_pixel(polygon.back().normalized(), panorama.cols);
    for (std::size_t v = 0; v < polygon.size(); ++v) {
      const Eigen::Vector3d& from = polygon[(v + polygon.size() - 1) % polygon.size()];
      for (int step = 1; step <= steps; ++step) {
        const Eigen::Vector3d at = from + (polygon[v] - from) * step / steps;
        const cv::Point2d next = panorama_pixel(at.normalized(), panorama.cols);
        // A line that runs over the panorama's side is left out.
        if (std::abs(next.x - last.x) < panorama.cols / 2.0) {
          cv::line(panorama, last, next, colours[i % colours.size()], thickness, cv::LINE_AA);
        }
        last = next;
      }
    }
  }
}

}  // namespace ocpan
