#include "tools/project/project_values.h"

#include <array>
#include <charconv>
#include <cmath>
#include <sstream>

#include "include/oc_pan_cal.h"

namespace ocpan {
namespace {

using findings_list = std::vector<project_finding>;

// Four edges that hold a part of the picture between them.
std::optional<project_crop> crop_in(const std::string& text) {
  std::vector<double> edges;
  std::istringstream parts(text + ",");
  std::string part;
  while (std::getline(parts, part, ',')) {
    const std::optional<double> edge = number_in(part);
    if (!edge) return std::nullopt;
    edges.push_back(*edge);
  }
  if (edges.size() != 4 || !(edges[1] > edges[0]) || !(edges[3] > edges[2])) return std::nullopt;
  return project_crop{edges[0], edges[1], edges[2], edges[3]};
}

void check_lens(const project_camera& camera, std::size_t line, findings_list& findings) {
  const double kind = camera.numbers.at('f'), field = camera.numbers.at('v');
  if (kind != 0 && kind != 2 && kind != 3) {
    findings.push_back({line, OCPAN_INVALID,
                        std::string("f") + exact_text(kind) +
                            " is a lens kind that the library doesn't know; only 0 (rectilinear) "
                            "and 2 and 3 (fisheye) can be taken over"});
  }
  if (!(field > 0) || (kind == 0 && field >= 180)) {
    findings.push_back({line, OCPAN_INVALID,
                        std::string("v") + exact_text(field) +
                            " is no field of view for this lens; give degrees above 0, and below "
                            "180 for f0"});
  }
  if (!(camera.numbers.at('w') > 0) || !(camera.numbers.at('h') > 0)) {
    findings.push_back({line, OCPAN_INVALID,
                        "the picture has no size; give w and h, its width and height in pixels"});
  }
}

// A camera that stands elsewhere: the mapping knows directions only.
void check_place(const std::vector<project_line*>& images, std::size_t image,
                 findings_list& findings) {
  const std::size_t line = images[image]->number;
  for (const char* key : {"TrX", "TrY", "TrZ", "X", "Y", "Z"}) {
    const std::optional<std::string> text = linked_text(images, image, key, findings);
    if (!text || text->empty()) continue;
    const std::optional<double> moved = number_in(*text);
    if (!moved) {
      findings.push_back({line, OCPAN_MALFORMED, key + *text + " holds no number; correct it"});
    } else if (*moved != 0) {
      findings.push_back({line, OCPAN_INVALID,
                          key + *text +
                              " moves the camera, and the library's cameras of a project file "
                              "stand in one place; make the project without translation"});
    }
  }
}

void read_crop(project_camera& camera, const std::vector<project_line*>& images, std::size_t image,
               findings_list& findings) {
  const std::size_t line = images[image]->number;
  const std::optional<std::string> text = linked_text(images, image, "C", findings);
  if (text) {
    if (find_token(*images[image], "C")->value != *text) camera.copied['C'] = *text;
    camera.crop = crop_in(*text);
    if (!camera.crop) {
      findings.push_back({line, OCPAN_MALFORMED,
                          "crop " + *text + " isn't one; write Cleft,right,top,bottom in pixels"});
    }
  }
  const std::optional<std::string> selection = linked_text(images, image, "S", findings);
  if (!selection) return;
  if (!crop_in(*selection)) {
    findings.push_back({line, OCPAN_MALFORMED,
                        "S" + *selection + " is no crop; write Sleft,right,top,bottom in pixels"});
    return;
  }
  findings.push_back({line, 0,
                      "S" + *selection +
                          " selects a part of the picture, which the library leaves to the "
                          "masks; blacken the rest in this picture's mask"});
}

}  // namespace

std::optional<double> number_in(const std::string& text) {
  const std::size_t sign = !text.empty() && text[0] == '+' ? 1 : 0;
  const char* const end = text.data() + text.size();
  double value = 0;
  const std::from_chars_result result = std::from_chars(text.data() + sign, end, value);
  if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::string exact_text(double value) {
  std::array<char, 32> text{};
  // Adding 0 makes +0 of -0.
  const std::to_chars_result result =
      std::to_chars(text.data(), text.data() + text.size(), value + 0.0);
  return {text.data(), result.ptr};
}

std::optional<std::string> linked_text(const std::vector<project_line*>& images, std::size_t image,
                                       const std::string& key, findings_list& findings) {
  const project_token* token = find_token(*images[image], key);
  for (std::size_t steps = 0; token; ++steps) {
    if (token->value.empty() || token->value[0] != '=') return token->value;
    const std::optional<double> target = number_in(token->value.substr(1));
    if (!target || *target < 0 || *target != std::floor(*target) ||
        *target >= static_cast<double>(images.size()) || steps >= images.size()) {
      findings.push_back(
          {images[image]->number, OCPAN_MALFORMED,
           key + token->value + " leads to no picture's value; the pictures are 0 to " +
               std::to_string(images.size() - 1) + ", and links must end somewhere"});
      return std::nullopt;
    }
    token = find_token(*images[static_cast<std::size_t>(*target)], key);
  }
  return std::nullopt;
}

project_camera read_project_camera(const std::vector<project_line*>& images, std::size_t image,
                                   findings_list& findings) {
  project_camera camera;
  const project_line& line = *images[image];
  const std::size_t before = findings.size();
  for (const char letter : std::string_view(image_number_keys)) {
    const std::string key(1, letter);
    const std::optional<std::string> text = linked_text(images, image, key, findings);
    camera.numbers[letter] = 0;
    const project_token* token = find_token(line, key);
    if (token && token->value != text) camera.copied[letter] = text.value_or("0");
    if (!text) continue;
    if (const std::optional<double> number = number_in(*text)) {
      camera.numbers[letter] = *number;
    } else {
      findings.push_back({line.number, OCPAN_MALFORMED,
                          key + *text + " holds no number; correct it, or take it away"});
    }
  }
  read_crop(camera, images, image, findings);
  check_place(images, image, findings);
  // Of a number that couldn't be read nothing more is said.
  bool unreadable = false;
  for (std::size_t i = before; i < findings.size(); ++i) {
    unreadable = unreadable || findings[i].code == OCPAN_MALFORMED;
  }
  if (!unreadable) check_lens(camera, line.number, findings);
  return camera;
}

}  // namespace ocpan
