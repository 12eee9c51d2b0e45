#include "tools/device_preview.h"

#include <cmath>
#include <functional>

#include <gtest/gtest.h>

#include "simulator/world.h"
#include "tables/lut_format.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::temp_folder;
using testing::write_file;

// A table with one entry for all samples, or one made for each.
std::vector<std::uint64_t> table_of(
    const std::function<std::uint64_t(std::size_t, std::size_t, std::size_t)>& entry) {
  std::vector<std::uint64_t> table(lut_entry_count);
  for (std::size_t face = 0; face < 6; ++face) {
    for (std::size_t a = 0; a < 256; ++a) {
      for (std::size_t b = 0; b < 256; ++b) table[lut_index(face, a, b)] = entry(face, a, b);
    }
  }
  return table;
}

device_camera plain_camera(int grey, int weight) {
  const std::uint64_t entry = pack_lut_entry(2, 2, weight);
  return {table_of([&](auto, auto, auto) { return entry; }),
          cv::Mat(4, 4, CV_8UC3, cv::Scalar::all(grey))};
}

// A table that points to column b and row a of a picture that tells them by its colours, and
// whose weights tell the face.
device_camera telling_camera() {
  cv::Mat picture(256, 256, CV_8UC3);
  for (int y = 0; y < 256; ++y) {
    for (int x = 0; x < 256; ++x) {
      picture.at<cv::Vec3b>(y, x) = {static_cast<unsigned char>(x), static_cast<unsigned char>(y),
                                     0};
    }
  }
  return {table_of([](std::size_t, std::size_t a, std::size_t b) {
            return pack_lut_entry(static_cast<double>(b), static_cast<double>(a), 1000);
          }),
          picture};
}

void expect_samples(int face_size, double half) {
  constexpr int width = 96;
  const device_panorama panorama = stitch({telling_camera()}, width, face_size);
  ASSERT_EQ(panorama.picture.size(), cv::Size(width, width / 2));
  int seen = 0;
  for (int row = 0; row < width / 2; ++row) {
    for (int column = 0; column < width; ++column, ++seen) {
      const Eigen::Vector3d d = panorama_direction(row, column, width);
      const double x = std::abs(d.x()), y = std::abs(d.y()), z = std::abs(d.z());
      double a = d.y() / z, b = d.x() / z;
      if (x > y && x > z) a = d.z() / x, b = d.y() / x;
      if (y > x && y > z) a = d.z() / y, b = d.x() / y;
      const cv::Vec3b got = panorama.picture.at<cv::Vec3b>(row, column);
      ASSERT_NEAR(got[0], b * half + 128, 0.51) << row << " " << column;
      ASSERT_NEAR(got[1], a * half + 128, 0.51) << row << " " << column;
    }
  }
  EXPECT_EQ(seen, width * width / 2);
  EXPECT_EQ(cv::countNonZero(panorama.covered), seen);
}

TEST(Stitch, TakesPositionsBetweenTheSamplesOfTheLargeFace) { expect_samples(253, 126); }

TEST(Stitch, TakesPositionsBetweenTheSamplesOfTheSmallFace) { expect_samples(129, 64); }

TEST(Stitch, TakesTheFaceThatTheDirectionMeets) {
  // Each face has its own picture column.
  cv::Mat picture(1, 6, CV_8UC3);
  for (int face = 0; face < 6; ++face) {
    picture.at<cv::Vec3b>(0, face) = cv::Vec3b::all(static_cast<unsigned char>(10 * face + 5));
  }
  const device_camera camera{table_of([](std::size_t face, auto, auto) {
                               return pack_lut_entry(static_cast<double>(face), 0, 1);
                             }),
                             picture};
  const device_panorama panorama = stitch({camera}, 64, 253);
  const auto grey = [&](int row, int column) {
    return static_cast<int>(panorama.picture.at<cv::Vec3b>(row, column)[0]);
  };
  EXPECT_EQ(grey(16, 48), 5);   // +x, to the right
  EXPECT_EQ(grey(16, 16), 15);  // -x
  EXPECT_EQ(grey(0, 7), 25);    // +y, up
  EXPECT_EQ(grey(31, 7), 35);   // -y
  EXPECT_EQ(grey(16, 0), 45);   // +z, behind
  EXPECT_EQ(grey(16, 32), 55);  // -z, the middle
}

TEST(Stitch, BlendsByWeight) {
  // (300 * 100 + 100 * 200) / 400.
  const device_panorama panorama =
      stitch({plain_camera(100, 300), plain_camera(200, 100)}, 32, 253);
  for (int row = 0; row < 16; ++row) {
    for (int column = 0; column < 32; ++column) {
      ASSERT_EQ(panorama.picture.at<cv::Vec3b>(row, column), cv::Vec3b::all(125));
    }
  }
}

TEST(Stitch, IsBlackWhereNoCameraHasWeight) {
  const device_panorama panorama = stitch({plain_camera(100, 0)}, 32, 253);
  EXPECT_EQ(cv::countNonZero(panorama.covered), 0);
  EXPECT_EQ(panorama.picture.at<cv::Vec3b>(3, 3), cv::Vec3b::all(0));
}

TEST(Stitch, LeavesOutSamplesWithoutAPosition) {
  device_camera camera = plain_camera(0, 500);
  camera.picture.at<cv::Vec3b>(2, 2) = cv::Vec3b::all(100);  // where the other samples point
  for (std::size_t face = 0; face < 6; ++face) {
    for (std::size_t a = 0; a < 256; a += 2) {
      for (std::size_t b = 0; b < 256; b += 2) camera.table[lut_index(face, a, b)] = 0;
    }
  }
  const device_panorama panorama = stitch({camera}, 64, 253);
  EXPECT_EQ(cv::countNonZero(panorama.covered), 64 * 32);
  EXPECT_EQ(panorama.picture.at<cv::Vec3b>(9, 9), cv::Vec3b::all(100));
}

TEST(ReadDeviceTable, ReadsLittleEndianEntries) {
  const temp_folder folder;
  std::string bytes(lut_entry_count * 8, '\0');
  bytes[8] = 0x34;
  bytes[9] = 0x12;
  bytes[15] = static_cast<char>(0x80);
  write_file(folder.file("t.bin"), bytes);
  std::vector<std::uint64_t> table;
  ASSERT_EQ(read_device_table(table, folder.file("t.bin")), "");
  EXPECT_EQ(table[0], 0u);
  EXPECT_EQ(table[1], 0x8000000000001234u);
}

TEST(ReadDeviceTable, TellsOfAMissingFileAndOfAnotherSize) {
  const temp_folder folder;
  const std::string name = folder.file("t.bin");
  std::vector<std::uint64_t> table;
  EXPECT_EQ(read_device_table(table, name), name + " can't be opened");
  for (const std::size_t size :
       {std::size_t{0}, lut_entry_count * 8 - 1, lut_entry_count * 8 + 1}) {
    write_file(name, std::string(size, 'x'));
    EXPECT_EQ(read_device_table(table, name), name + " isn't 4194304 bytes long") << size;
  }
}

TEST(ReadDevicePolygon, ReadsSignedComponents) {
  const temp_folder folder;
  std::string bytes(1536, '\0');
  bytes[3] = 1;  // 2^24
  bytes[4] = bytes[5] = bytes[6] = bytes[7] = static_cast<char>(0xff);
  write_file(folder.file("p.bin"), bytes);
  device_polygon polygon;
  ASSERT_EQ(read_device_polygon(polygon, folder.file("p.bin")), "");
  ASSERT_EQ(polygon.size(), 128u);
  EXPECT_EQ(polygon[0], Eigen::Vector3d(1, -1 / 16777216.0, 0));
}

// A small circle about a direction in the plane of y = 0.
device_polygon circle_about(double longitude, double angle) {
  device_polygon polygon;
  const Eigen::Vector3d ahead(std::sin(longitude), 0, -std::cos(longitude));
  const Eigen::Vector3d right(std::cos(longitude), 0, std::sin(longitude));
  for (int i = 0; i < 128; ++i) {
    const double turn = i * pi / 64;
    polygon.push_back(std::cos(angle) * ahead +
                      std::sin(angle) *
                          (std::cos(turn) * right + std::sin(turn) * Eigen::Vector3d::UnitY()));
  }
  return polygon;
}

TEST(DrawPolygons, DrawsOutlines) {
  cv::Mat panorama = cv::Mat::zeros(180, 360, CV_8UC3);
  draw_polygons(panorama, {circle_about(0, 30 * pi / 180)});
  const auto drawn = [&](int row, int column) {
    return cv::norm(panorama.at<cv::Vec3b>(row, column)) > 30;
  };
  EXPECT_TRUE(drawn(90, 210) || drawn(90, 209));  // 30 degrees to the right
  EXPECT_TRUE(drawn(90, 150) || drawn(90, 149));
  EXPECT_TRUE(drawn(60, 180) || drawn(59, 180));
  EXPECT_FALSE(drawn(90, 180));
}

TEST(DrawPolygons, DrawsNoLineRightThroughThePanorama) {
  cv::Mat panorama = cv::Mat::zeros(180, 360, CV_8UC3);
  draw_polygons(panorama, {circle_about(pi, 30 * pi / 180)});
  EXPECT_EQ(cv::norm(panorama.colRange(40, 320)), 0);
  EXPECT_GT(cv::norm(panorama.colRange(0, 40)), 0);
  EXPECT_GT(cv::norm(panorama.colRange(320, 360)), 0);
}

}  // namespace
}  // namespace ocpan
