#include "calfiles/project_file_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <locale>
#include <optional>
#include <sstream>
#include <string>

#include "calfiles/polynomial_roots.h"
#include "platform/text_file.h"
#include "src/console.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

constexpr double unlimited_radius = 1000.0;

double radians(double degrees) { return degrees * 3.141592653589793 / 180.0; }

// Reads a number that stands alone. No text leaves it alone, text that is no number makes
// it 0 and gives false.
template <typename Number>
bool read_number(Number& number, const std::string& text) {
  std::istringstream in(text);
  in.imbue(std::locale::classic());
  in.exceptions(std::ios::badbit);  // or a failed allocation would read as no number
  return static_cast<bool>(in >> number);
}

// A key of an "i" line that holds one number.
struct image_key {
  char letter;
  double& (*field)(pt_image&);
  bool in_degrees;
  bool may_be_copied;  // "=" stands for the first image's value
};

constexpr image_key image_keys[] = {
    {'w', [](pt_image& image) -> double& { return image.size[0]; }, false, false},
    {'h', [](pt_image& image) -> double& { return image.size[1]; }, false, false},
    {'f', [](pt_image& image) -> double& { return image.projection; }, false, false},
    {'v', [](pt_image& image) -> double& { return image.hfov; }, true, true},
    {'y', [](pt_image& image) -> double& { return image.yaw; }, true, false},
    {'p', [](pt_image& image) -> double& { return image.pitch; }, true, false},
    {'r', [](pt_image& image) -> double& { return image.roll; }, true, false},
    {'a', [](pt_image& image) -> double& { return image.lens[0]; }, false, true},
    {'b', [](pt_image& image) -> double& { return image.lens[1]; }, false, true},
    {'c', [](pt_image& image) -> double& { return image.lens[2]; }, false, true},
    {'d', [](pt_image& image) -> double& { return image.shift[0]; }, false, true},
    {'e', [](pt_image& image) -> double& { return image.shift[1]; }, false, true},
    {'g', [](pt_image& image) -> double& { return image.shear[0]; }, false, true},
    {'t', [](pt_image& image) -> double& { return image.shear[1]; }, false, true},
};

struct crop_edges {
  double left, right, top, bottom;  // pixels
};

// The crop of a "C" token: exactly four numbers with commas between.
std::optional<crop_edges> read_crop(const std::string& token) {
  std::array<double, 4> edges{};
  std::size_t start = 1;
  for (std::size_t i = 0; i < edges.size(); ++i) {
    const std::size_t comma = token.find(',', start);
    const bool last = i + 1 == edges.size();
    if (last != (comma == std::string::npos)) return std::nullopt;
    if (!read_number(edges[i], token.substr(start, comma - start))) return std::nullopt;
    start = comma + 1;
  }
  return crop_edges{edges[0], edges[1], edges[2], edges[3]};
}

double radius_limit_of(const Eigen::Vector4d& lens) {
  const double a = lens[0], b = lens[1], c = lens[2], d = lens[3];
  double limit = unlimited_radius;
  for (const double root : real_roots({d, 2 * c, 3 * b, 4 * a, 0})) {
    if (root > 0) limit = std::min(limit, root);
  }
  return limit;
}

Eigen::Matrix3d rotation_of(const pt_image& image) {
  const double sin_r = std::sin(image.roll), cos_r = std::cos(image.roll);
  const double sin_p = std::sin(image.pitch), cos_p = std::cos(image.pitch);
  const double sin_y = std::sin(image.yaw), cos_y = std::cos(image.yaw);
  Eigen::Matrix3d roll, pitch, yaw;
  roll << cos_r, sin_r, 0, -sin_r, cos_r, 0, 0, 0, 1;
  pitch << 1, 0, 0, 0, cos_p, sin_p, 0, -sin_p, cos_p;
  yaw << cos_y, 0, -sin_y, 0, 1, 0, sin_y, 0, cos_y;
  Eigen::Matrix3d rotation = roll * pitch * yaw;
  rotation.rightCols<2>() *= -1;
  return rotation;
}

// Fills in what the mappings need beside the line's own values.
void derive(pt_image& image, const std::optional<crop_edges>& crop) {
  image.lens[3] = 1.0 - (image.lens[0] + image.lens[1] + image.lens[2]);
  image.radius_limit = radius_limit_of(image.lens);
  image.crop_size = image.size;
  if (crop) {
    image.shift[0] += ((crop->left + crop->right) - image.size[0]) * 0.5;
    image.shift[1] += ((crop->top + crop->bottom) - image.size[1]) * 0.5;
    image.crop_size = {crop->right - crop->left, crop->bottom - crop->top};
  }
  image.shear_matrix << 1, image.shear[0] / image.crop_size[1], image.shear[1] / image.crop_size[0],
      1;
  image.rotation = rotation_of(image);
}

// Takes a token of an "i" line that holds one number.
int read_image_token(pt_image& image, const std::string& token, std::vector<pt_image>& images) {
  const auto* const key =
      std::find_if(std::begin(image_keys), std::end(image_keys),
                   [&](const image_key& known) { return known.letter == token[0]; });
  if (key == std::end(image_keys)) return code::success;
  const std::string text = token.substr(1);
  double& field = key->field(image);
  if (key->may_be_copied && text[0] == '=') {
    if (images.empty()) return code::argument_invalid;
    field = key->field(images.front());
    return code::success;
  }
  if (!text.empty()) {
    double value = 0;
    read_number(value, text);
    field = key->in_degrees ? radians(value) : value;
  }
  if (token[0] == 'f' && field != 0 && field != 2 && field != 3) {
    print_line("Image projection ", field, " not supported (only 0,2,3)");
    return code::argument_invalid;
  }
  return code::success;
}

// Takes the rest of an "i" line and appends its image.
//
//   image   what the line before left: its projection and angles hold on
int read_image_line(std::istream& tokens, pt_image& image, std::vector<pt_image>& images) {
  image.size.setZero();
  image.lens.setZero();
  image.shear.setZero();
  image.shift.setZero();
  std::optional<crop_edges> crop;
  std::string token;
  while (tokens >> token) {
    if (token[0] == 'C') {
      crop = read_crop(token);
      if (!crop) {
        print_line("C parameter incorrectly defined - expect (2,2) got: ", token);
        return code::content_malformed;
      }
    } else if (const int result = read_image_token(image, token, images)) {
      return result;
    }
  }
  derive(image, crop);
  images.push_back(image);
  return code::success;
}

// Takes the rest of a "p" line. A line without a size leaves the panorama 0 wide.
void read_panorama_line(std::istream& tokens, pt_project& project) {
  project.pano_size.setZero();
  std::string token;
  while (tokens >> token) {
    const std::string text = token.substr(1);
    if (token[0] == 'w') read_number(project.pano_size[0], text);
    if (token[0] == 'h') read_number(project.pano_size[1], text);
    if (token[0] == 'f') read_number(project.pano_projection, text);
    if (token[0] == 'v' && !text.empty()) {
      double degrees = 0;
      read_number(degrees, text);
      project.pano_hfov = radians(degrees);
    }
  }
}

}  // namespace

int read_project_file(pt_project& project, const char* file_name) {
  std::ifstream in = open_input(file_name);
  if (!in) {
    print_line("Couldn't open: ", file_name);
    return code::input_unusable;
  }
  const pt_project start;
  project.pano_size = start.pano_size;
  project.pano_projection = start.pano_projection;
  project.pano_hfov = start.pano_hfov;

  pt_image image;
  std::string line, kind;
  while (read_text_line(in, line)) {
    std::istringstream tokens(line);
    tokens.exceptions(std::ios::badbit);  // or a failed allocation would end the line
    if (!(tokens >> kind)) continue;
    if (kind == "p") read_panorama_line(tokens, project);
    if (kind != "i") continue;
    if (const int result = read_image_line(tokens, image, project.images)) return result;
  }
  if (in.bad()) {
    print_line("Couldn't read: ", file_name);
    return code::input_unusable;
  }
  return code::success;
}

}  // namespace ocpan
