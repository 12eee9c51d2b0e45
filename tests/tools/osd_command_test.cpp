#include <filesystem>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "include/oc_pan_cal.h"
#include "tests/tools/tool_process.h"

namespace ocpan {
namespace {

using testing::read_file;
using testing::run_here;
using testing::temp_folder;
using testing::tool_run;
using testing::write_file;

class OsdCommand : public ::testing::Test {
 protected:
  void write_input(int rows, int columns) {
    cv::imwrite(input, cv::Mat(rows, columns, CV_8UC3, cv::Scalar(10, 20, 30)));
  }
  tool_run run(const std::string& to, const std::string& size) {
    return run_here("osd " + input + " " + to + " " + size);
  }

  temp_folder folder;
  std::string input = folder.file("in.bmp");
  std::string output = folder.file("out.png");
};

TEST_F(OsdCommand, WritesTheOverlayAndTellsItsName) {
  write_input(40, 40);
  const tool_run result = run(output, "64 32");
  EXPECT_EQ(result.code, 0);
  EXPECT_EQ(result.out, "Overlay written: " + output + "\n");
  EXPECT_EQ(result.err, "");
  const cv::Mat overlay = cv::imread(output);
  EXPECT_EQ(overlay.size(), cv::Size(64, 32));
  EXPECT_EQ(overlay.at<cv::Vec3b>(16, 5), cv::Vec3b(10, 20, 30));
}

TEST_F(OsdCommand, RefusesToOverwriteItsInput) {
  write_input(40, 40);
  const std::string before = read_file(input);
  std::filesystem::create_symlink(input, folder.path() / "link.bmp");
  int checked = 0;
  for (const std::string& name : {input, folder.file("./in.bmp"), folder.file("link.bmp")}) {
    const tool_run result = run(name, "64 32");
    EXPECT_EQ(result.code, OCPAN_OUTPUT) << name;
    EXPECT_NE(result.err.find("is an input and would be overwritten"), std::string::npos) << name;
    EXPECT_EQ(read_file(input), before);
    ++checked;
  }
  EXPECT_EQ(checked, 3);
}

TEST_F(OsdCommand, RefusesAFolderThatIsNotThere) {
  write_input(40, 40);
  const tool_run result = run(folder.file("none/out.png"), "64 32");
  EXPECT_EQ(result.code, OCPAN_OUTPUT);
  EXPECT_EQ(result.out, "");
  EXPECT_NE(result.err.find("isn't there"), std::string::npos) << result.err;
}

TEST_F(OsdCommand, RefusesAnEndingOfNoPictureBeforeTheOutputIsEmptied) {
  write_input(40, 40);
  const std::string other = folder.file("notes.txt");
  write_file(other, "older");
  const tool_run result = run(other, "64 32");
  EXPECT_EQ(result.code, OCPAN_OUTPUT);
  EXPECT_NE(result.err.find("ends in no picture format"), std::string::npos) << result.err;
  EXPECT_EQ(read_file(other), "older");
}

TEST_F(OsdCommand, PassesTheLibrarysComplaintAndCodeThrough) {
  write_input(30, 40);
  const tool_run oblong = run(output, "64 32");
  EXPECT_EQ(oblong.code, OCPAN_INVALID);
  EXPECT_EQ(oblong.out, "Width (40) and height (30) must be the same\n");
  EXPECT_NE(oblong.err.find("ended with 6"), std::string::npos) << oblong.err;
  const tool_run small = run(output, "16 32");
  EXPECT_EQ(small.code, OCPAN_INVALID);
  EXPECT_EQ(small.out, "Width (16) and height (32) Range:16-16384\n");
}

TEST_F(OsdCommand, LeavesNoEmptyOutputBehind) {
  write_file(input, "no picture");
  const tool_run result = run(output, "64 32");
  EXPECT_EQ(result.code, OCPAN_INPUT);
  EXPECT_EQ(result.out, "Couldn't open: " + input + "\n");
  EXPECT_FALSE(std::filesystem::exists(output));
}

TEST_F(OsdCommand, ShowsExamplesAndRefusesWrongUsage) {
  EXPECT_NE(run_here("osd --help").out.find("\n  oc_pan osd "), std::string::npos);
  EXPECT_NE(run_here("--help").out.find("\n  osd "), std::string::npos);
  EXPECT_EQ(run_here("osd a.png b.png 64").code, 64);
  EXPECT_EQ(run_here("osd a.png b.png wide 64").code, 64);
}

}  // namespace
}  // namespace ocpan
