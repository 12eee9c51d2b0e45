#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/evaluate/calibrated_pictures.h"
#include "tools/evaluate/evaluation.h"
#include "tools/evaluate/rig_uncertainty.h"

namespace ocpan {

// Where a picture's board stands in the evaluation.
struct board_place {
  std::size_t board;  // into the seen and the evaluated boards
  std::size_t view;   // into the board's cameras
};

// One picture of the configuration, once, in however many sets it stands.
struct rig_picture {
  std::string file;
  std::size_t camera = 0;      // into the rig
  std::size_t set = 0;         // the first that names it
  std::size_t set_camera = 0;  // the camera's place in that set
  std::size_t frame = 0;       // in that set
  picture_finding finding;
  std::optional<board_place> board;  // none where no board was found
};

// A file that the report rests on.
struct input_file {
  std::string role;  // "calibration", "configuration" or "picture"
  std::string name;
  std::uintmax_t bytes = 0;
  std::string time;      // of its last change: "2024-05-01 12:30:05", local
  std::string checksum;  // SHA-256 in hexadecimal digits; empty if it couldn't be read
};

// A small picture of a board as found.
struct thumbnail {
  std::size_t picture = 0;  // into report_content::every_picture
  std::string jpeg;         // the bytes of the file
  int width = 0;            // pixels
  int height = 0;
};

// All that a report shows.
struct report_content {
  std::string calibration;  // file name as given
  calibrated_pictures input;
  evaluation quality;
  std::optional<rig_uncertainty> uncertainty;  // as evaluate_pictures tells it
  std::vector<rig_picture> every_picture;      // by camera, then by set and frame
  std::vector<thumbnail> thumbnails;           // in the order of every_picture
  std::vector<input_file> inputs;
  std::string versions;  // of tool, library and OpenCV, a line each
  std::string made_at;   // date and time
};

// The pictures of all sets, each once.
[[nodiscard]] std::vector<rig_picture> every_picture(const calibrated_pictures& input);

// The whole HTML file, which is well-formed XML too and refers to nothing outside itself.
[[nodiscard]] std::string report_page(const report_content& content);

}  // namespace ocpan
