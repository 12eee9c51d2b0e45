#pragma once

#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"
#include "tools/boards/rig_pictures.h"
#include "tools/check/written_config.h"

namespace ocpan::testing {

inline const std::vector<std::string> sound = {
    "base_directory: 'pics'",
    "output_filename: 'rig.cal'",
    "",
    "camera_info:",
    "  - width: 1920, height: 1080, hfov: 190, lens: 1",
    "  - width: 640, height: 480, hfov: 62, lens: 0",
    "calibration_sets:",
    "  - set_name: 'a', board_scale: 25.0",
    "    cameras: [1, 2]",
    "    subdir: ['.', '.']",
    "    filename_patterns: ['^left\\d+\\.png$', '^right[0-9]\\.png$']",
    "    board_shape: [9, 6]",
    "  - set_name: 'b', board_scale: 1",
    "    cameras: [1]",
    "    filename_patterns: ['^left\\d\\.png$']",
    "    board_shape: [9, 6]",
    "  - set_name: 'c', board_scale: 1",
    "    cameras: [2]",
    "    filename_patterns: ['^right1\\.png$']",
    "    board_shape: [3, 4]"};

inline std::string text_of(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

class ConfigWalk : public ::testing::Test {
 protected:
  ConfigWalk() {
    std::filesystem::create_directory("pics");
    std::filesystem::create_directory("empty");
    for (const char* name : {"left1.png", "left2.png", "right1.png", "right2.png"}) {
      write_file(std::filesystem::path("pics") / name, "");
    }
  }

  written_config walked(const std::string& text) const {
    std::istringstream in(text);
    return walk_configuration("rig.txt", in);
  }

  // The sound configuration with one line replaced, walked.
  written_config walked_with(std::size_t line, const std::string& text) const {
    std::vector<std::string> lines = sound;
    lines.at(line - 1) = text;
    return walked(text_of(lines));
  }

  // Whether the walk and the library agree on a text.
  void expect_agreement(const std::string& text) {
    write_file("rig.txt", text);
    rig_pictures pictures;
    std::string said;
    const bool refused = read_rig_pictures(pictures, said, "rig.txt") != 0 ||
                         said.find("Camera Details incomplete") != std::string::npos;
    const written_config config = walked(text);
    refused ? ++refused_ : ++taken_;
    ASSERT_EQ(!config.refusals.empty(), refused)
        << text << said << (config.refusals.empty() ? "" : config.refusals.front().what);
  }

  working_folder folder_;
  int refused_ = 0;
  int taken_ = 0;
};

}  // namespace ocpan::testing
