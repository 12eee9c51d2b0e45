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

void write_white(const std::string& name, int rows, int columns) {
  cv::imwrite(name, cv::Mat(rows, columns, CV_8UC1, cv::Scalar(255)));
}

TEST(MaskCommand, WritesAMaskForEachPictureAndTellsItsName) {
  const temp_folder folder;
  write_white(folder.file("a.png"), 1, 1);
  write_white(folder.file("b.png"), 3, 4);
  const tool_run run = run_here("mask " + folder.file("a.png") + " " + folder.file("a.yuv") + " " +
                                folder.file("b.png") + " " + folder.file("b.yuv"));
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out, "Mask written: " + folder.file("a.yuv") +
                         "\nMask written: " + folder.file("b.yuv") + "\n");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(read_file(folder.file("a.yuv")), "\xFF\x03");
  EXPECT_EQ(std::filesystem::file_size(folder.file("b.yuv")), 24u);
}

TEST(MaskCommand, StopsAtAnInputWithoutAPictureAndNamesIt) {
  const temp_folder folder;
  write_white(folder.file("a.png"), 2, 2);
  write_file(folder.file("b.png"), "no picture");
  const tool_run run = run_here("mask " + folder.file("a.png") + " " + folder.file("a.yuv") + " " +
                                folder.file("b.png") + " " + folder.file("b.yuv"));
  EXPECT_EQ(run.code, OCPAN_MALFORMED);
  EXPECT_EQ(run.out, "Mask written: " + folder.file("a.yuv") + "\nError opening image file \n");
  EXPECT_NE(run.err.find(folder.file("b.png")), std::string::npos) << run.err;
  EXPECT_FALSE(std::filesystem::exists(folder.file("b.yuv")));
}

TEST(MaskCommand, RefusesToOverwriteAnyInput) {
  const temp_folder folder;
  write_white(folder.file("a.png"), 2, 2);
  write_white(folder.file("b.png"), 2, 2);
  const std::string before = read_file(folder.file("b.png"));
  const tool_run run = run_here("mask " + folder.file("a.png") + " " + folder.file("b.png") + " " +
                                folder.file("b.png") + " " + folder.file("b.yuv"));
  EXPECT_EQ(run.code, OCPAN_OUTPUT);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find("is an input and would be overwritten"), std::string::npos) << run.err;
  EXPECT_EQ(read_file(folder.file("b.png")), before);
}

TEST(MaskCommand, RefusesOneOutputForTwoMasks) {
  const temp_folder folder;
  write_white(folder.file("a.png"), 2, 2);
  const tool_run run = run_here("mask " + folder.file("a.png") + " " + folder.file("a.yuv") + " " +
                                folder.file("a.png") + " " + folder.file("a.yuv"));
  EXPECT_EQ(run.code, OCPAN_OUTPUT);
  EXPECT_NE(run.err.find("is named for two masks"), std::string::npos) << run.err;
  EXPECT_FALSE(std::filesystem::exists(folder.file("a.yuv")));
}

TEST(MaskCommand, ShowsExamplesAndRefusesWrongUsage) {
  EXPECT_NE(run_here("mask --help").out.find("\n  oc_pan mask "), std::string::npos);
  EXPECT_NE(run_here("--help").out.find("\n  mask "), std::string::npos);
  EXPECT_EQ(run_here("mask").code, 64);
  EXPECT_EQ(run_here("mask a.png").code, 64);
  const tool_run odd = run_here("mask a.png a.yuv b.png");
  EXPECT_EQ(odd.code, 64);
  EXPECT_NE(odd.err.find("b.png stands alone"), std::string::npos) << odd.err;
  std::string nine = "mask";
  for (int i = 0; i < 9; ++i) nine += " a.png a.yuv";
  EXPECT_EQ(run_here(nine).code, 64);
}

}  // namespace
}  // namespace ocpan
