#include <iterator>
#include <random>

#include <gtest/gtest.h>

#include "tests/src/config_run.h"

namespace ocpan {
namespace {

using testing::config_run;
using testing::run_config_file;
using testing::working_folder;
using testing::write_file;

const std::string sound =
    "base_directory: 'pics'\n"
    "output_filename: 'out/rig1.cal'\n"
    "camera_info:\n"
    "  - width: 1920, height: 1080, hfov: 190, lens: 1\n"
    "  - width: 640, height: 480, hfov: 62, lens: 0\n"
    "calibration_sets:\n"
    "  - set_name: 'a', board_scale: 25.0\n"
    "    cameras: [1, 2]\n"
    "    subdir: ['.', '.']\n"
    "    filename_patterns: ['^left\\d+\\.png$', '^right[0-9]\\.png$']\n"
    "    board_shape: [9, 6]\n"
    "  - set_name: 'b', board_scale: 1\n"
    "    cameras: [1]\n"
    "    filename_patterns: ['left.*png$']\n"
    "    board_shape: [9, 6]\n"
    "  - set_name: 'c', board_scale: 1\n"
    "    cameras: [2]\n"
    "    filename_patterns: ['right1\\.png$']\n"
    "    board_shape: [3, 3]\n";

// Replaces, removes, doubles or cuts at some random places; what comes in are the signs
// that the reader looks for, and the words.
class mutator {
 public:
  std::string mutated(std::string text) {
    for (std::size_t edits = 1 + below(4); edits > 0; --edits) {
      const std::size_t at = below(text.size() + 1);
      switch (below(6)) {
        case 0:
          text.insert(at, piece());
          break;
        case 1:
          text.replace(at, below(3), piece());
          break;
        case 2:
          text.erase(at, 1 + below(12));
          break;
        case 3:
          text.insert(at, text.substr(below(text.size() + 1), below(60)));
          break;
        case 4:
          if (below(4) == 0) text.resize(at);
          break;
        default:
          if (at < text.size()) text[at] = static_cast<char>(below(256));
      }
    }
    return text;
  }

 private:
  std::size_t below(std::size_t bound) { return random_() % bound; }

  std::string piece() {
    static const std::string pieces[] = {":",
                                         ",",
                                         "-",
                                         "'",
                                         "[",
                                         "]",
                                         "\n",
                                         " ",
                                         "\r",
                                         "/",
                                         "\\",
                                         "0",
                                         "9",
                                         "99999999999999999999",
                                         "*",
                                         "+",
                                         "^",
                                         "$",
                                         "(",
                                         "\\d",
                                         "[0-9]",
                                         "::",
                                         "''",
                                         "- ",
                                         "width",
                                         "lens: 1, ",
                                         "hfov: nan, ",
                                         "cameras: ",
                                         "subdir:",
                                         "[, ]",
                                         "calibration_sets:",
                                         "camera_info:",
                                         "filename_patterns: '"};
    return pieces[below(std::size(pieces))];
  }

  std::mt19937 random_{20240601};
};

class MutatedConfig : public ::testing::Test {
 protected:
  MutatedConfig() {
    std::filesystem::create_directory("pics");
    for (const char* name : {"left1.png", "left2.png", "right1.png", "right2.png"}) {
      write_file(std::filesystem::path("pics") / name, "");
    }
  }

  working_folder folder_;
};

TEST_F(MutatedConfig, EndsWithAResultAndSoundRecords) {
  mutator random;
  int good = 0;
  int bad = 0;
  for (int i = 0; i < 400; ++i) {
    const std::string text = random.mutated(sound);
    write_file("rig.txt", text);
    const config_run run = run_config_file("rig.txt");
    run.result == 0 ? ++good : ++bad;
    if (run.result != 7) {
      EXPECT_NE(run.printed, "") << text;
    }
    for (const set_config& set : run.sets) {
      ASSERT_TRUE(run.result != 0 || set.set_prefix) << text;
      for (const set_camera& camera : set.cameras) {
        for (const char* file : camera.files) ASSERT_NE(file, nullptr);
      }
    }
  }
  EXPECT_GT(good, 10);
  EXPECT_GT(bad, 100);
}

TEST_F(MutatedConfig, EndsForPiecesOfLinesInAnyOrder) {
  const std::string pieces[] = {"- ",
                                "width",
                                "set_name",
                                "cameras",
                                "subdir",
                                "board_shape",
                                "filename_patterns",
                                ":",
                                ": ",
                                ", ",
                                ",",
                                "'",
                                "'a'",
                                "[",
                                "]",
                                "[1, 2]",
                                "['.']",
                                "\n",
                                " ",
                                "5"};
  const std::string starts[] = {"", "camera_info:\n", "camera_info:\ncalibration_sets:\n"};
  std::mt19937 random(11);
  int runs = 0;
  for (; runs < 400; ++runs) {
    std::string text = starts[runs % 3];
    for (std::size_t n = random() % 30; n > 0; --n) text += pieces[random() % std::size(pieces)];
    write_file("rig.txt", text);
    const config_run run = run_config_file("rig.txt");
    EXPECT_TRUE(run.result == 7 || run.printed != "") << text;
  }
  EXPECT_EQ(runs, 400);
}

TEST_F(MutatedConfig, ReadsLinesOfManyKeysInOnePass) {
  // A reader that looked to the line's end for each key would need minutes.
  constexpr int keys = 200000;
  std::string cameras = "-";
  std::string names = "- cameras: []";
  std::string ids = "- cameras: [1";
  for (int i = 0; i < keys; ++i) {
    cameras += "width: 5, ";
    names += ", set_name: 'a'";
    ids += ", 1";
  }
  write_file("rig.txt", "camera_info:\n" + cameras + "\n" + "- width: 6\n");
  EXPECT_EQ(run_config_file("rig.txt").printed,
            "Camera Details incomplete\n"
            "Details present were: Width 0, Height 0, Hfov 1, Lens 0\n");
  const std::string head =
      "camera_info:\n- lens: 1, width: 1, height: 1, hfov: 1\ncalibration_sets:\n";
  write_file("rig.txt", head + names + "\n");
  EXPECT_EQ(run_config_file("rig.txt").pool.size(), static_cast<std::size_t>(keys));
  write_file("rig.txt", head + ids + "]\n");
  EXPECT_EQ(run_config_file("rig.txt").sets.at(0).cameras.size(), keys + 1u);
}

}  // namespace
}  // namespace ocpan
