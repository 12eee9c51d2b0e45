// Single marks in the debug pictures: their shape, number, place and colour.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "production/debug_pictures.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

constexpr int grey = 128;
constexpr int arm = 5;  // pixels of a cross to each side

// A number as it was drawn.
struct drawn_number {
  int number = -1;
  cv::Point place;       // of its lower left end, from the corner or the middle
  double amplitude = 0;  // how much brighter than the background it is
};

// The pixels of a number whose lower left end is at a place.
std::vector<cv::Point> pixels_of(int number, cv::Point place) {
  constexpr int margin = 32;
  cv::Mat1b canvas(2 * margin, 2 * margin, static_cast<unsigned char>(0));
  cv::putText(canvas, std::to_string(number), cv::Point(margin, margin) + place,
              cv::FONT_HERSHEY_SIMPLEX, 0.35, cv::Scalar(255));
  std::vector<cv::Point> pixels;
  cv::findNonZero(canvas, pixels);
  for (cv::Point& pixel : pixels) pixel -= cv::Point(margin, margin);
  return pixels;
}

bool on_cross(cv::Point from_middle) {
  return (from_middle.x == 0 && std::abs(from_middle.y) <= arm) ||
         (from_middle.y == 0 && std::abs(from_middle.x) <= arm);
}

// The digits at all places within a reach of which one is to be recognised.
class number_reader {
 public:
  number_reader(cv::Point least, cv::Point most, bool beside_cross) {
    for (int number = 0; number < 10; ++number) {
      for (int x = least.x; x <= most.x; ++x) {
        for (int y = least.y; y <= most.y; ++y) {
          std::vector<cv::Point> pixels = pixels_of(number, {x, y});
          if (beside_cross) std::erase_if(pixels, on_cross);
          shapes_.push_back({number, {x, y}, pixels});
        }
      }
    }
  }

  // The one that explains best, by least squares, how a picture differs from its background.
  drawn_number read(const cv::Mat1d& change, cv::Point middle) const {
    drawn_number best;
    double most = 0;
    for (const shape& tried : shapes_) {
      double sum = 0;
      for (const cv::Point pixel : tried.pixels) sum += change(middle + pixel);
      const double count = static_cast<double>(tried.pixels.size());
      if (sum * sum / count <= most) continue;
      most = sum * sum / count;
      best = {tried.number, tried.place, sum / count};
    }
    return best;
  }

 private:
  struct shape {
    int number;
    cv::Point place;
    std::vector<cv::Point> pixels;
  };
  std::vector<shape> shapes_;
};

class DebugMarks : public ::testing::Test {
 protected:
  DebugMarks() { std::filesystem::create_directory("tmp"); }

  static cv::Mat read(const std::string& name) { return cv::imread("tmp/" + name + ".jpg"); }
  static cv::Mat1d brightness_change(const cv::Mat& picture) {
    cv::Mat brightness;
    cv::cvtColor(picture, brightness, cv::COLOR_BGR2GRAY);
    cv::Mat1d change;
    brightness.convertTo(change, CV_64F, 1, -grey);
    return change;
  }

  // Ten corners far apart.
  static std::vector<prod_corner> ten_corners() {
    std::vector<prod_corner> corners;
    for (int k = 0; k < 10; ++k) {
      corners.push_back({24.0 + 40 * (k % 5), 24.0 + 40 * (k / 5), 1, 0, 0, 1});
    }
    return corners;
  }

  testing::working_folder folder_;
  const cv::Mat plain_ = cv::Mat(88, 216, CV_8UC1, cv::Scalar(grey));
};

TEST_F(DebugMarks, ReachFivePixelsToEachSide) {
  write_corner_picture(plain_, {{40, 40, 1, 0, 0, 1}}, 0);
  const cv::Mat1d change = brightness_change(read("0.ori_point_0"));
  // Pure red is darker than the grey by 52.
  int checked = 0;
  for (const cv::Point along : {cv::Point(1, 0), cv::Point(-1, 0), cv::Point(0, 1), {0, -1}}) {
    for (int distance = 0; distance <= 12; ++distance, ++checked) {
      const double expected = distance <= arm ? -52 : 0;
      EXPECT_NEAR(change(cv::Point(40, 40) + distance * along), expected, 20) << distance << along;
    }
  }
  EXPECT_EQ(checked, 52);
}

TEST_F(DebugMarks, OfQuadsBearTheirPlacesInTheList) {
  std::vector<prod_corner> corners;
  std::vector<prod_quad> quads;
  for (const prod_corner& middle : ten_corners()) {
    const auto first = static_cast<std::int32_t>(corners.size());
    for (const auto& [x, y] : {cv::Point(-15, -15), {15, -15}, {15, 15}, {-15, 15}}) {
      corners.push_back({middle.x + x, middle.y + y, 1, 0, 0, 1});
    }
    quads.push_back({first, first + 1, first + 2, first + 3});
  }
  std::reverse(quads.begin(), quads.end());
  write_quad_pictures(plain_, corners, {{}, quads}, 0);
  const cv::Mat1d change = brightness_change(read("1.black_quads_0"));
  const number_reader reader({-8, -2}, {3, 8}, false);
  for (int k = 0; k < 10; ++k) {
    const prod_corner middle = ten_corners()[static_cast<std::size_t>(9 - k)];
    const drawn_number found =
        reader.read(change, {static_cast<int>(middle.x), static_cast<int>(middle.y)});
    EXPECT_EQ(found.number, k);
    EXPECT_LT(found.amplitude, -30) << k;
    const cv::Rect box = cv::boundingRect(pixels_of(k, found.place));
    EXPECT_NEAR(box.x + (box.width - 1) / 2.0, 0, 2) << k;
    EXPECT_NEAR(box.y + (box.height - 1) / 2.0, 0, 2) << k;
  }
}

TEST_F(DebugMarks, OfMatchesBearTheirPlacesInTheListNearTheCorner) {
  const std::vector<prod_corner> corners = ten_corners();
  const corner_index_lists matches{{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, {9, 8, 7, 6, 5, 4, 3, 2, 1, 0}};
  const number_reader reader({0, 0}, {13, 13}, true);
  std::set<int> right, down;
  std::size_t judged = 0;
  double darkest = 0, brightest = 0;
  for (int time = 0; time < 40; ++time) {
    write_match_pictures("3.matches_", {0, 1}, matches, {plain_, plain_}, {corners, corners});
    for (const int camera : {0, 1}) {
      const cv::Mat1d change = brightness_change(read("3.matches_01_" + std::to_string(camera)));
      const auto& list = camera == 0 ? matches.first : matches.second;
      for (std::size_t k = 0; k < list.size(); ++k) {
        const prod_corner& corner = corners[static_cast<std::size_t>(list[k])];
        const drawn_number found =
            reader.read(change, {static_cast<int>(corner.x), static_cast<int>(corner.y)});
        darkest = std::min(darkest, found.amplitude);
        brightest = std::max(brightest, found.amplitude);
        if (std::abs(found.amplitude) < 30) continue;  // hardly stands out
        ++judged;
        EXPECT_EQ(found.number, static_cast<int>(k)) << found.place << found.amplitude;
        right.insert(found.place.x);
        down.insert(found.place.y);
      }
    }
  }
  EXPECT_GT(judged, 250u);
  EXPECT_EQ(right, (std::set<int>{4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(down, (std::set<int>{4, 5, 6, 7, 8, 9}));
  // Any colour, from black to nearly white.
  EXPECT_LT(darkest, -60);
  EXPECT_GT(brightest, 60);
}

TEST_F(DebugMarks, OfMatchesAreOfAnyColour) {
  // A thin line loses colour to its surroundings in a JPEG, but keeps the sign of it.
  const std::vector<prod_corner> corners = ten_corners();
  const std::vector<std::int32_t> list{0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
  cv::Vec3d least(0, 0, 0), most(0, 0, 0);
  for (int time = 0; time < 20; ++time) {
    write_match_pictures("3.matches_", {0, 1}, {list, list}, {plain_, plain_}, {corners, corners});
    const cv::Mat drawn = read("3.matches_01_0");
    for (const prod_corner& corner : corners) {
      const auto pixel =
          drawn.at<cv::Vec3b>(static_cast<int>(corner.y), static_cast<int>(corner.x));
      for (int channel = 0; channel < 3; ++channel) {
        const double beyond = pixel[channel] - pixel[(channel + 1) % 3];
        least[channel] = std::min(least[channel], beyond);
        most[channel] = std::max(most[channel], beyond);
      }
    }
  }
  for (int channel = 0; channel < 3; ++channel) {
    EXPECT_LT(least[channel], -40) << channel;
    EXPECT_GT(most[channel], 40) << channel;
  }
}

}  // namespace
}  // namespace ocpan
