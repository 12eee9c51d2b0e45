#include "simulator/board_series.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "calfiles/selen360_cal_file.h"
#include "simulator/rig_json.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

namespace fs = std::filesystem;

// Two small cameras side by side, quick to render.
rig_description small_rig() {
  const camera_details details{320, 240, 80, 0};
  rig_description description;
  description.cameras = {{details, initial_model(details)}, {details, initial_model(details)}};
  description.cameras[1].model[C_0] = 40;
  description.board = {4, 3, 25.5};
  description.poses = {150, 300, 30, 30};
  description.sets = {{"cam1", {0}, 2}, {"both", {0, 1}, 3}};
  return description;
}

std::vector<std::string> files_in(const fs::path& folder) {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

TEST(BoardSeries, WritesAPictureOfEachCameraPerFrame) {
  const testing::temp_folder folder;
  ASSERT_EQ(write_board_series(small_rig(), folder.file("out"), {}), "");
  const fs::path out = folder.path() / "out";
  EXPECT_EQ(files_in(out),
            (std::vector<std::string>{"calibration.txt", "pictures", "rig.json", "truth.cal"}));
  EXPECT_EQ(files_in(out / "pictures"), (std::vector<std::string>{"both", "cam1"}));
  EXPECT_EQ(files_in(out / "pictures/cam1"),
            (std::vector<std::string>{"cam1_00.png", "cam1_01.png"}));
  EXPECT_EQ(files_in(out / "pictures/both"),
            (std::vector<std::string>{"cam1_00.png", "cam1_01.png", "cam1_02.png", "cam2_00.png",
                                      "cam2_01.png", "cam2_02.png"}));
  const cv::Mat picture =
      cv::imread((out / "pictures/both/cam2_02.png").string(), cv::IMREAD_UNCHANGED);
  EXPECT_EQ(picture.type(), CV_8UC1);
  EXPECT_EQ(picture.size(), cv::Size(320, 240));
}

TEST(BoardSeries, ConfigurationHasTheShapeThatCalibrationsRead) {
  rig_description description = small_rig();
  description.cameras[1].details.hfov = 79.9f;
  description.rendering.format = "jpg";
  EXPECT_EQ(configuration_text(description, "/rigs/one"),
            "base_directory: '/rigs/one/pictures'\n"
            "output_filename: '/rigs/one/found.cal'\n"
            "camera_info:\n"
            "  - width: 320, height: 240, hfov: 80, lens: 0\n"
            "  - width: 320, height: 240, hfov: 79.9, lens: 0\n"
            "calibration_sets:\n"
            "  - set_name: 'cam1', board_scale: 25.5\n"
            "    cameras: [1]\n"
            "    subdir: ['cam1']\n"
            "    filename_patterns: ['^cam1_\\d\\d\\.jpg$']\n"
            "    board_shape: [4, 3]\n"
            "  - set_name: 'both', board_scale: 25.5\n"
            "    cameras: [1, 2]\n"
            "    subdir: ['both']\n"
            "    filename_patterns: ['^cam1_\\d\\d\\.jpg$', '^cam2_\\d\\d\\.jpg$']\n"
            "    board_shape: [4, 3]\n");
}

TEST(BoardSeries, ConfigurationNamesRelativeFoldersFromTheRoot) {
  const testing::working_folder folder;
  const std::string root = fs::current_path().generic_string();
  EXPECT_TRUE(configuration_text(small_rig(), "sub/../out")
                  .starts_with("base_directory: '" + root + "/out/pictures'\n"));
}

TEST(BoardSeries, FrameNumbersAreAsWideAsTheLast) {
  rig_description description = small_rig();
  description.sets[0].frames = 101;
  EXPECT_EQ(picture_name(description, description.sets[0], 0, 7), "cam1_007.png");
  EXPECT_NE(configuration_text(description, "/r").find("'^cam1_\\d\\d\\d\\.png$'"),
            std::string::npos);
  description.sets[0].frames = 100;
  EXPECT_EQ(picture_name(description, description.sets[0], 0, 7), "cam1_07.png");
}

TEST(BoardSeries, TruthIsACalibrationFileAndInFullInTheDescription) {
  const testing::temp_folder folder;
  rig_description description = small_rig();
  description.cameras[1].model[C_1] = 1.0 / 3;
  description.sets.clear();
  ASSERT_EQ(write_board_series(description, folder.file("out"), {}), "");
  selen360_cal_file file(1.0f);
  ASSERT_EQ(file.load(folder.file("out/truth.cal").c_str()), 0);
  ASSERT_EQ(file.cam_count(), 2u);
  EXPECT_EQ(file.cam_width(1), 320);
  EXPECT_EQ(value_of(file.models()[1], C_1), 0.333333);
  rig_description read_back;
  ASSERT_EQ(read_rig_file(read_back, folder.file("out/rig.json")), "");
  EXPECT_EQ(read_back.cameras[1].model, description.cameras[1].model);
}

TEST(BoardSeries, FaultsShowInTheFiles) {
  const testing::temp_folder folder;
  rig_description description = small_rig();
  description.rendering = {0, 0, 0, "png"};
  ASSERT_EQ(write_board_series(description, folder.file("good"), {}), "");
  description.faults = {{picture_fault::missing_file, 0, 0, 0},
                        {picture_fault::truncated_file, 1, 0, 1},
                        {picture_fault::missing_board, 1, 1, 2}};
  ASSERT_EQ(write_board_series(description, folder.file("bad"), {}), "");
  const fs::path good = folder.path() / "good/pictures", bad = folder.path() / "bad/pictures";

  EXPECT_EQ(files_in(bad / "cam1"), std::vector<std::string>{"cam1_01.png"});
  EXPECT_EQ(fs::file_size(bad / "both/cam1_01.png"), fs::file_size(good / "both/cam1_01.png") / 2);
  EXPECT_TRUE(testing::read_file(good / "both/cam1_01.png")
                  .starts_with(testing::read_file(bad / "both/cam1_01.png")));
  const auto darkest = [](const fs::path& path) {
    double level = 0;
    cv::minMaxLoc(cv::imread(path.string(), cv::IMREAD_UNCHANGED), &level);
    return level;
  };
  EXPECT_EQ(darkest(good / "both/cam2_02.png"), 40);
  EXPECT_GT(darkest(bad / "both/cam2_02.png"), 80);
  EXPECT_EQ(testing::read_file(good / "both/cam2_01.png"),
            testing::read_file(bad / "both/cam2_01.png"));
}

TEST(BoardSeries, PicturesOfAnEarlierRunDoNotJoinTheSeries) {
  const testing::temp_folder folder;
  rig_description description = small_rig();
  ASSERT_EQ(write_board_series(description, folder.file("out"), {}), "");
  description.sets[0].frames = 1;
  ASSERT_EQ(write_board_series(description, folder.file("out"), {}), "");
  EXPECT_EQ(files_in(folder.path() / "out/pictures/cam1"), std::vector<std::string>{"cam1_00.png"});
}

TEST(BoardSeries, ProgressCountsEveryPicture) {
  const testing::temp_folder folder;
  std::vector<std::size_t> told;
  const auto progress = [&](std::size_t done, std::size_t total) {
    EXPECT_EQ(total, 8u);
    told.push_back(done);
  };
  ASSERT_EQ(write_board_series(small_rig(), folder.file("out"), progress), "");
  EXPECT_EQ(told, (std::vector<std::size_t>{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(BoardSeries, ErrorsSayWhatIsWrong) {
  const testing::temp_folder folder;
  rig_description description = small_rig();
  description.board.square = 0;
  EXPECT_EQ(write_board_series(description, folder.file("out"), {}),
            "board.square: expected a length above 0");
  EXPECT_FALSE(fs::exists(folder.path() / "out"));
  EXPECT_TRUE(write_board_series(small_rig(), folder.file("it's"), {})
                  .starts_with("A configuration can't name this folder"));
  testing::write_file(folder.path() / "file", "");
  EXPECT_EQ(write_board_series(small_rig(), folder.file("file"), {}),
            "Couldn't make the folder: " + folder.file("file/pictures"));
}

}  // namespace
}  // namespace ocpan
