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

class ViewYuv : public ::testing::Test {
 protected:
  tool_run run(const std::string& size) {
    return run_here("view-yuv " + file + " " + size + " " + out);
  }

  temp_folder folder;
  std::string file = folder.file("mask.yuv");
  std::string out = folder.file("seen.png");
};

TEST_F(ViewYuv, ShowsWeightsAsGrey) {
  // 0, 2, 3, 512, 1022, 1023 in rows of 3; 255 / 1023 makes 3 a level of 0.75.
  write_file(file, std::string("\0\0\x02\0\x03\0\0\x02\xFE\x03\xFF\x03", 12));
  const tool_run result = run("3 2");
  EXPECT_EQ(result.code, 0);
  EXPECT_EQ(result.out, "Picture written: " + out + "\n");
  EXPECT_EQ(result.err, "");
  const cv::Mat seen = cv::imread(out, cv::IMREAD_UNCHANGED);
  ASSERT_EQ(seen.size(), cv::Size(3, 2));
  ASSERT_EQ(seen.type(), CV_8UC1);
  const int expected[] = {0, 0, 1, 128, 255, 255};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(seen.at<unsigned char>(i / 3, i % 3), expected[i]) << i;
}

TEST_F(ViewYuv, ShowsWhatTheMaskCommandWrote) {
  cv::imwrite(folder.file("in.png"), cv::Mat(3, 3, CV_8UC1, cv::Scalar(255)));
  ASSERT_EQ(run_here("mask " + folder.file("in.png") + " " + file).code, 0);
  ASSERT_EQ(run("3 3").code, 0);
  const cv::Mat seen = cv::imread(out, cv::IMREAD_UNCHANGED);
  EXPECT_EQ(seen.at<unsigned char>(1, 1), 255);
  EXPECT_EQ(seen.at<unsigned char>(0, 0), 128);  // weight 512
}

TEST_F(ViewYuv, WarnsOfSamplesBeyondTenBits) {
  write_file(file, std::string("\0\x04\xFF\xFF", 4));
  const tool_run result = run("2 1");
  EXPECT_EQ(result.code, 0);
  EXPECT_NE(result.err.find("2 samples above 1023"), std::string::npos) << result.err;
  EXPECT_EQ(cv::imread(out, cv::IMREAD_UNCHANGED).at<unsigned char>(0, 0), 255);
}

TEST_F(ViewYuv, TellsBothSizesOfAFileThatDoesNotFit) {
  write_file(file, std::string(10, '\0'));
  int checked = 0;
  for (const char* size : {"2 2", "3 2", "2147483647 2147483647"}) {
    const tool_run result = run(size);
    EXPECT_EQ(result.code, OCPAN_MALFORMED) << size;
    EXPECT_NE(result.err.find("holds 10 bytes"), std::string::npos) << result.err;
    ++checked;
  }
  EXPECT_EQ(checked, 3);
  EXPECT_NE(run("3 2").err.find("has 12;"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(out));
}

TEST_F(ViewYuv, TellsOfAFileThatCannotBeOpened) {
  EXPECT_EQ(run("2 2").code, OCPAN_INPUT);
  std::filesystem::create_directory(file);
  const tool_run result = run("2 2");
  EXPECT_EQ(result.code, OCPAN_INPUT);
  EXPECT_NE(result.err.find(file + " can't be opened"), std::string::npos) << result.err;
}

TEST_F(ViewYuv, RefusesToOverwriteTheMask) {
  file = folder.file("mask.png");
  out = file;
  write_file(file, std::string(8, '\0'));
  const tool_run result = run("2 2");
  EXPECT_EQ(result.code, OCPAN_OUTPUT);
  EXPECT_EQ(read_file(file), std::string(8, '\0'));
}

TEST_F(ViewYuv, RefusesAnOutputThatIsNoPicture) {
  write_file(file, std::string(8, '\0'));
  out = folder.file("seen.txt");
  EXPECT_EQ(run("2 2").code, OCPAN_OUTPUT);
  EXPECT_FALSE(std::filesystem::exists(out));
}

TEST_F(ViewYuv, ShowsExamplesAndRefusesWrongUsage) {
  EXPECT_NE(run_here("view-yuv --help").out.find("\n  oc_pan view-yuv "), std::string::npos);
  EXPECT_NE(run_here("--help").out.find("\n  view-yuv "), std::string::npos);
  EXPECT_EQ(run("0 2").code, 64);
  EXPECT_EQ(run("2 -2").code, 64);
  EXPECT_EQ(run_here("view-yuv a.yuv 2 2").code, 64);
}

}  // namespace
}  // namespace ocpan
