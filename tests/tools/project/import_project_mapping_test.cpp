#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "calfiles/pt_cal.h"
#include "tests/support/temp_folder.h"
#include "tools/project/import_project.h"

namespace ocpan {
namespace {

constexpr double pi = 3.141592653589793;
constexpr double degree = pi / 180;

// A camera as the stitching tools describe it, and their mapping between the panorama's
// longitude and latitude and the picture, written plainly from the format's description.
struct tool_camera {
  std::map<char, double> v;  // by letter, angles in degrees
  double left, right, top, bottom;

  double width() const { return right - left; }
  double height() const { return bottom - top; }
  bool rectilinear() const { return v.at('f') == 0; }
  double focal() const {
    const double field = v.at('v') * degree;
    return rectilinear() ? width() / 2 / std::tan(field / 2) : width() / field;
  }
  double bent(double s) const {
    const double a = v.at('a'), b = v.at('b'), c = v.at('c');
    return a * s * s * s * s + b * s * s * s + c * s * s + (1 - a - b - c) * s;
  }

  Eigen::Vector2d pixel_of(double longitude, double latitude) const {
    const double p = v.at('p') * degree, r = v.at('r') * degree;
    const double turned = longitude - v.at('y') * degree;
    const double x = std::sin(turned) * std::cos(latitude);
    const double y = -std::sin(latitude);  // downward
    const double z = std::cos(turned) * std::cos(latitude);
    const double y_level = y * std::cos(p) + z * std::sin(p);
    const double z_level = z * std::cos(p) - y * std::sin(p);
    const double x_upright = x * std::cos(r) + y_level * std::sin(r);
    const double y_upright = y_level * std::cos(r) - x * std::sin(r);
    const double across = std::hypot(x_upright, y_upright);
    const double angle = std::atan2(across, z_level);
    const double radius = focal() * (rectilinear() ? std::tan(angle) : angle);
    const double half = std::min(width(), height()) / 2;
    const double behind = across == 0 ? 0 : bent(radius / half) * half / across;
    const double shifted_x = x_upright * behind + v.at('d');
    const double shifted_y = y_upright * behind + v.at('e');
    return {shifted_x + shifted_y * v.at('g') / height() + (left + right) / 2 - 0.5,
            shifted_y + shifted_x * v.at('t') / width() + (top + bottom) / 2 - 0.5};
  }

  // Longitude and latitude.
  Eigen::Vector2d direction_of(const Eigen::Vector2d& pixel) const {
    const double g = v.at('g') / height(), t = v.at('t') / width();
    const double x_sheared = pixel.x() + 0.5 - (left + right) / 2;
    const double y_sheared = pixel.y() + 0.5 - (top + bottom) / 2;
    const double x = (x_sheared - g * y_sheared) / (1 - g * t) - v.at('d');
    const double y = (y_sheared - t * x_sheared) / (1 - g * t) - v.at('e');
    const double half = std::min(width(), height()) / 2, wanted = std::hypot(x, y) / half;
    double low = 0, high = 3;  // the lens grows up to there
    for (int i = 0; i < 200; ++i) {
      const double middle = (low + high) / 2;
      (bent(middle) < wanted ? low : high) = middle;
    }
    const double radius = low * half / focal();
    const double angle = rectilinear() ? std::atan(radius) : radius;
    const double across = std::sin(angle) / (wanted * half);
    const double p = v.at('p') * degree, r = v.at('r') * degree;
    const double x_level = (x * std::cos(r) - y * std::sin(r)) * across;
    const double y_level = (x * std::sin(r) + y * std::cos(r)) * across;
    const double y_down = y_level * std::cos(p) - std::cos(angle) * std::sin(p);
    const double z = y_level * std::sin(p) + std::cos(angle) * std::cos(p);
    return {std::atan2(x_level, z) + v.at('y') * degree, std::asin(std::clamp(-y_down, -1., 1.))};
  }
};

Eigen::RowVector3d rig_direction(double longitude, double latitude) {
  return {std::sin(longitude) * std::cos(latitude), std::sin(latitude),
          -std::cos(longitude) * std::cos(latitude)};
}

std::string text_of(double value) {
  std::ostringstream text;
  text.precision(17);
  text << value;
  return text.str();
}

struct random_project {
  std::string text;
  std::vector<tool_camera> cameras;
};

class project_maker {
 public:
  explicit project_maker(unsigned seed) : random_(seed) {}

  random_project make() {
    random_project project;
    project.text = "# a project\n";
    if (chance(0.7)) {
      project.text += "p f2 w" + text_of(std::round(between(500, 9000))) + " h900 v" +
                      text_of(between(90, 360)) + R"( n"TIFF_m c:LZW r:CROP")" + "\n";
    }
    const std::size_t count = 1 + random_() % 5;
    std::vector<std::map<char, std::string>> texts(count);
    for (std::size_t i = 0; i < count; ++i) project.cameras.push_back(camera(texts[i]));
    link(project.cameras, texts);
    for (const auto& one : texts) project.text += line_of(one);
    project.text += "v y1 p1 r1\nc n0 N1 x3 y4 X5 Y6 t0\n";
    return project;
  }

 private:
  double between(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random_);
  }
  bool chance(double part) { return between(0, 1) < part; }

  tool_camera camera(std::map<char, std::string>& texts) {
    tool_camera made;
    auto& v = made.v;
    v['w'] = std::round(between(400, 3000));
    v['h'] = std::round(v['w'] * between(0.67, 1.5));
    v['f'] = std::array<double, 3>{0, 2, 3}.at(random_() % 3);
    v['v'] = v['f'] == 0 ? between(30, 110) : between(60, 200);
    v['y'] = between(-360, 360);
    v['p'] = chance(0.1) ? 90 : between(-100, 100);
    v['r'] = between(-180, 180);
    for (const char key : {'a', 'b', 'c'}) v[key] = chance(0.3) ? 0 : between(-0.015, 0.015);
    for (const char key : {'d', 'e', 'g', 't'}) v[key] = chance(0.3) ? 0 : between(-25, 25);
    for (const auto& [key, value] : v) {
      if (value != 0 || chance(0.5)) texts[key] = text_of(value);  // a key left out means 0
    }
    made.left = 0, made.right = v['w'], made.top = 0, made.bottom = v['h'];
    if (chance(0.4)) {
      made.left = std::round(v['w'] * between(-0.1, 0.2));
      made.right = std::round(v['w'] * between(0.8, 1.1));
      made.top = std::round(v['h'] * between(-0.1, 0.2));
      made.bottom = std::round(v['h'] * between(0.8, 1.1));
      texts['C'] = text_of(made.left) + "," + text_of(made.right) + "," + text_of(made.top) + "," +
                   text_of(made.bottom);
    }
    return made;
  }

  // Lets values be those of other pictures, before or behind, in chains without a ring.
  void link(std::vector<tool_camera>& cameras, std::vector<std::map<char, std::string>>& texts) {
    std::vector<std::size_t> order(cameras.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::shuffle(order.begin(), order.end(), random_);
    for (std::size_t place = 1; place < order.size(); ++place) {
      const std::size_t to = order[place], from = order[random_() % place];
      for (const char key : std::string("abcdegtypr")) {
        if (!chance(0.25)) continue;
        cameras[to].v[key] = cameras[from].v[key];
        texts[to][key] = std::string("=").append(std::to_string(from));
      }
      if (cameras[to].v['f'] == cameras[from].v['f'] && chance(0.5)) {
        cameras[to].v['v'] = cameras[from].v['v'];
        texts[to]['v'] = std::string("=").append(std::to_string(from));
      }
    }
  }

  std::string line_of(const std::map<char, std::string>& texts) {
    std::vector<std::string> tokens{"TrX0", "TrY0", "TrZ0", "Ra0", "Vm5", "u10", "j0"};
    for (const auto& [key, text] : texts) tokens.push_back(key + text);
    tokens.push_back(chance(0.5) ? R"(n"my pretty picture.jpg")" : R"(n"left01.jpg")");
    std::shuffle(tokens.begin(), tokens.end(), random_);
    std::string line = "i";
    for (const std::string& token : tokens) line += (chance(0.1) ? "  " : " ") + token;
    return line + (chance(0.3) ? "\r\n" : "\n");
  }

  std::mt19937 random_;
};

pt_cal imported(const std::string& text) {
  std::istringstream in(text);
  const imported_project project = import_project(in);
  for (const project_finding& finding : project.findings) {
    EXPECT_EQ(finding.code, 0) << finding.line << ": " << finding.text << "\n" << text;
  }
  const testing::temp_folder folder;
  testing::write_file(folder.file("rig.pts"), project.text);
  pt_cal calibration;
  EXPECT_EQ(calibration.load(folder.file("rig.pts").c_str()), 0) << project.text;
  return calibration;
}

// Over the picture, or the part of it that the crop leaves, but for its middle: the library
// has no position for the direction of the axis. Where a fisheye's corners lie more than
// half a turn from its axis, nothing looks there.
Eigen::MatrixX2d pixels_over(const tool_camera& camera) {
  constexpr int steps = 9;
  std::vector<Eigen::RowVector2d> kept;
  for (int i = 0; i < (steps + 1) * (steps + 1); ++i) {
    const Eigen::Vector2d pixel(camera.left + camera.width() * (i % (steps + 1)) / steps - 0.5,
                                camera.top + camera.height() * (i / (steps + 1)) / steps - 0.5);
    const Eigen::Vector2d place = camera.direction_of(pixel);
    if ((camera.pixel_of(place[0], place[1]) - pixel).norm() < 1) kept.emplace_back(pixel);
  }
  Eigen::MatrixX2d pixels(kept.size(), 2);
  for (Eigen::Index i = 0; i < pixels.rows(); ++i)
    pixels.row(i) = kept[static_cast<std::size_t>(i)];
  return pixels;
}

double length_of(const Eigen::RowVector2d& difference) {
  return difference.allFinite() ? difference.norm() : 1e9;
}

struct largest_errors {
  Eigen::Index checked = 0;
  double projected = 0, unprojected = 0;  // pixels
};

largest_errors errors_of(const pt_cal& calibration, std::size_t id, const tool_camera& camera) {
  const Eigen::MatrixX2d pixels = pixels_over(camera);
  std::vector<point_block> directions(1), projected;
  for (Eigen::MatrixXd& row : directions[0]) row.resize(0, 3);
  directions[0][0].resize(pixels.rows(), 3);
  for (Eigen::Index i = 0; i < pixels.rows(); ++i) {
    const Eigen::Vector2d place = camera.direction_of(pixels.row(i));
    directions[0][0].row(i) = rig_direction(place[0], place[1]);
  }
  EXPECT_EQ(calibration.cam_project(directions, id, projected), 0);
  Eigen::MatrixX3d rays;
  EXPECT_EQ(calibration.cam_unproject(rays, pixels, id), 0);
  largest_errors errors;
  errors.checked = pixels.rows();
  for (Eigen::Index i = 0; i < pixels.rows(); ++i) {
    errors.projected =
        std::max(errors.projected, length_of(projected[0][0].row(i) - pixels.row(i)));
    const double longitude = std::atan2(rays(i, 0), -rays(i, 2));
    const double latitude = std::atan2(rays(i, 1), std::hypot(rays(i, 0), rays(i, 2)));
    const Eigen::RowVector2d back = camera.pixel_of(longitude, latitude);
    errors.unprojected = std::max(errors.unprojected, length_of(back - pixels.row(i)));
  }
  return errors;
}

TEST(ImportProjectMapping, EqualsThatOfTheToolsOverManyRandomFiles) {
  Eigen::Index checked = 0;
  for (unsigned seed = 0; seed < 200; ++seed) {
    const random_project project = project_maker(seed).make();
    const pt_cal calibration = imported(project.text);
    ASSERT_EQ(calibration.cam_count(), project.cameras.size()) << project.text;
    for (std::size_t i = 0; i < project.cameras.size(); ++i) {
      const largest_errors errors = errors_of(calibration, i, project.cameras[i]);
      ASSERT_LT(errors.projected, 1e-6) << "picture " << i << " of\n" << project.text;
      ASSERT_LT(errors.unprojected, 1e-6) << "picture " << i << " of\n" << project.text;
      checked += errors.checked;
    }
  }
  EXPECT_GT(checked, 50000);
}

TEST(ImportProjectMapping, StraightUpKeepsYawAndRoll) {
  tool_camera camera;
  camera.v = {{'w', 800}, {'h', 600}, {'f', 2}, {'v', 120}, {'y', 50}, {'p', 90}, {'r', 20}};
  for (const char key : std::string("abcdegt")) camera.v[key] = 0;
  camera.left = 0, camera.right = 800, camera.top = 0, camera.bottom = 600;
  const pt_cal calibration = imported("i w800 h600 f2 v120 y50 p90 r20\n");
  EXPECT_LT(errors_of(calibration, 0, camera).projected, 1e-6);
}

// By hand: a camera that looks up by 30 degrees has that direction in its picture's middle,
// and what lies right of a camera rolled clockwise appears above the middle.
TEST(ImportProjectMapping, PitchIsUpwardAndRollIsClockwise) {
  const pt_cal calibration = imported("i w900 h900 f2 v90 y0 p30 r90\n");
  Eigen::MatrixX3d rays;
  ASSERT_EQ(calibration.cam_unproject(rays, Eigen::MatrixX2d{{449.5, 449.5}, {449.5, 149.5}}, 0),
            0);
  EXPECT_LT((rays.row(0) - rig_direction(0, 30 * degree)).norm(), 1e-12);
  const Eigen::RowVector3d right(std::sin(30 * degree), std::cos(30 * degree) * 0.5,
                                 -std::cos(30 * degree) * std::cos(30 * degree));
  EXPECT_LT((rays.row(1) - right).norm(), 1e-12);
}

}  // namespace
}  // namespace ocpan
