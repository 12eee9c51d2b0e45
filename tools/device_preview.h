#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <Eigen/Core>
#include <opencv2/core.hpp>

namespace ocpan {

// What the stitching device has of one camera: its lookup table as it lies in the file, and
// a picture, CV_8UC3.
struct device_camera {
  std::vector<std::uint64_t> table;
  cv::Mat picture;
};

// A polygon as a device reads it, 128 directions.
using device_polygon = std::vector<Eigen::Vector3d>;

// Read the files of one camera. Give an error text, empty if all is well.
[[nodiscard]] std::string read_device_table(std::vector<std::uint64_t>& table,
                                            const std::string& path);
[[nodiscard]] std::string read_device_polygon(device_polygon& polygon, const std::string& path);

// The panorama that the device makes.
struct device_panorama {
  cv::Mat picture;  // CV_8UC3, equirectangular: its middle along -z, +x right, +y up
  cv::Mat covered;  // CV_8UC1, 255 where a camera has weight
};

// Blends the cameras' pictures by their tables: in each direction the position and the
// weight of a camera come from the four samples around.
//
//   width       of the panorama, which is half as high
//   face_size   129 or 253, as the tables were made
device_panorama stitch(const std::vector<device_camera>& cameras, int width, int face_size);

// Draws the polygons as outlines, a colour each.
void draw_polygons(cv::Mat& panorama, const std::vector<device_polygon>& polygons);

}  // namespace ocpan
