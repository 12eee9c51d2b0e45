#include "tools/project/import_project.h"

#include <algorithm>

#include "include/oc_pan_cal.h"
#include "tools/project/project_dialect.h"
#include "tools/project/project_values.h"

namespace ocpan {
namespace {

constexpr const char* mark = "# A panorama project in the dialect of oc_pan.";
constexpr std::size_t most_cameras = 8;
constexpr double degree = 3.141592653589793 / 180.0;

// Changes a number; one that stays as it is keeps its text.
void set_number(project_line& line, const project_camera& camera, char key, double value) {
  if (value == camera.numbers.at(key) && find_token(line, std::string(1, key))) return;
  set_token(line, std::string(1, key), exact_text(value));
}

void rewrite_attitude(project_line& line, const project_camera& camera) {
  const project_angles tool{camera.numbers.at('y') * degree, camera.numbers.at('p') * degree,
                            camera.numbers.at('r') * degree};
  const project_angles ours = dialect_angles(tool);
  set_number(line, camera, 'y', ours.yaw / degree);
  set_number(line, camera, 'p', ours.pitch / degree);
  set_number(line, camera, 'r', ours.roll / degree);
}

void rewrite_shear_and_shift(project_line& line, const project_camera& camera) {
  const Eigen::Vector2d shear(camera.numbers.at('g'), camera.numbers.at('t'));
  if (shear.isZero(0)) return;
  const Eigen::Vector2d whole(camera.numbers.at('w'), camera.numbers.at('h'));
  Eigen::Vector2d size = whole, offset = Eigen::Vector2d::Zero();
  if (const std::optional<project_crop>& crop = camera.crop) {
    size = {crop->right - crop->left, crop->bottom - crop->top};
    offset = (Eigen::Vector2d(crop->left + crop->right, crop->top + crop->bottom) - whole) / 2;
  }
  const Eigen::Vector2d shift(camera.numbers.at('d'), camera.numbers.at('e'));
  const Eigen::Vector2d our_shear = dialect_shear(shear, size);
  const Eigen::Vector2d our_shift = dialect_shift(shift, shear, size, offset);
  set_number(line, camera, 'g', our_shear[0]);
  set_number(line, camera, 't', our_shear[1]);
  set_number(line, camera, 'd', our_shift[0]);
  set_number(line, camera, 'e', our_shift[1]);
}

void rewrite_image(project_line& line, const project_camera& camera,
                   std::vector<project_finding>& findings) {
  for (const auto& [key, text] : camera.copied) set_token(line, std::string(1, key), text);
  // The library keeps the lens kind of the line before where a tool takes 0.
  set_number(line, camera, 'f', camera.numbers.at('f'));
  rewrite_attitude(line, camera);
  rewrite_shear_and_shift(line, camera);
  close_quoted_blanks(line, image_keys, findings);
}

void check_panorama(project_line& line, std::vector<project_finding>& findings) {
  const auto positive = [&](const char* key, bool required) {
    const project_token* token = find_token(line, key);
    if (!token) return !required;
    const std::optional<double> value = number_in(token->value);
    return value && *value > 0;
  };
  if (!positive("w", true) || !positive("v", false)) {
    findings.push_back({line.number, OCPAN_INVALID,
                        "the panorama has no scale; give w, its width in pixels, and v, its field "
                        "of view in degrees, both above 0"});
  }
  close_quoted_blanks(line, "whfv", findings);
}

void check_whole(const std::vector<project_line>& lines, std::size_t cameras,
                 std::vector<project_finding>& findings) {
  const auto has = [&](auto&& fits) { return std::any_of(lines.begin(), lines.end(), fits); };
  if (has([](const project_line& line) { return line.text == mark; })) {
    findings.push_back({0, OCPAN_MALFORMED,
                        "it is in the library's dialect already; give it to the library as it is"});
  }
  if (!has([](const project_line& line) { return line.kind == "p"; })) {
    findings.push_back({0, 0,
                        "it has no line that begins with p, so the library's panorama of 2000 by "
                        "1000 pixels and 360 degrees holds"});
  }
  if (cameras == 0) {
    const bool optimised = has([](const project_line& line) { return line.kind == "o"; });
    findings.push_back(
        {0, OCPAN_MALFORMED,
         std::string("it has no line that begins with i, so no camera; ") +
             (optimised ? "its pictures stand in o lines: save it in the form with i lines"
                        : "see that it is a panorama project with p and i lines")});
  } else if (cameras > most_cameras) {
    findings.push_back({0, 0,
                        "it has " + std::to_string(cameras) + " pictures, and tables are made of " +
                            std::to_string(most_cameras) + " cameras at most"});
  }
}

}  // namespace

imported_project import_project(std::istream& in) {
  std::vector<project_line> lines = read_project_lines(in);
  std::vector<project_line*> images;
  for (project_line& line : lines) {
    if (line.kind == "i") images.push_back(&line);
  }
  imported_project result;
  result.cameras = images.size();
  for (project_line& line : lines) {
    if (line.kind == "p") check_panorama(line, result.findings);
  }
  // All are read before one is changed: a link means what stood there.
  std::vector<project_camera> cameras;
  for (std::size_t i = 0; i < images.size(); ++i) {
    cameras.push_back(read_project_camera(images, i, result.findings));
  }
  check_whole(lines, images.size(), result.findings);
  const auto refuses = [](const project_finding& finding) { return finding.code != 0; };
  if (std::any_of(result.findings.begin(), result.findings.end(), refuses)) return result;

  for (std::size_t i = 0; i < images.size(); ++i) {
    rewrite_image(*images[i], cameras[i], result.findings);
  }
  result.text = std::string(mark) + "\n";
  for (const project_line& line : lines) {
    const bool is_read = line.kind == "i" || line.kind == "p";
    result.text += (is_read ? joined(line) : line.text) + "\n";
  }
  return result;
}

}  // namespace ocpan
