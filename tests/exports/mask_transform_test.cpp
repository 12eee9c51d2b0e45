#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <random>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "include/oc_pan_cal.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

#ifndef _WIN32
#include <signal.h>
#include <sys/resource.h>
#endif

namespace ocpan {
namespace {

using testing::printed_by;
using testing::read_file;
using testing::temp_folder;
using testing::write_file;

constexpr char unreadable[] = "Error opening image file \n";

// The regular expression of a complaint with its trace.
std::regex traced(const std::string& complaint) {
  return std::regex(complaint +
                    "\n\n  >File name: oc_pan_cal\n  >Function : ocPAN_MaskTransform\n"
                    "  >Line No\\. : [1-9][0-9]*\n");
}

class MaskTransform : public ::testing::Test {
 protected:
  // Runs the export, keeping its result and what it prints.
  void run(int count, std::vector<const char*> inputs, std::vector<const char*> outputs) {
    printed =
        printed_by([&] { result = ocPAN_MaskTransform(count, inputs.data(), outputs.data()); });
  }
  // Writes a picture and transforms it; gives the samples.
  std::vector<std::uint16_t> transformed(const cv::Mat& picture) {
    cv::imwrite(input, picture);
    run(1, {input.c_str()}, {output.c_str()});
    EXPECT_EQ(result, OCPAN_SUCCESS);
    EXPECT_EQ(printed, "");
    return samples_of(output);
  }
  static std::vector<std::uint16_t> samples_of(const std::string& name) {
    const std::string bytes = read_file(name);
    EXPECT_EQ(bytes.size() % 2, 0u);
    std::vector<std::uint16_t> samples(bytes.size() / 2);
    for (std::size_t i = 0; i < samples.size(); ++i) {
      samples[i] = static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                              static_cast<unsigned char>(bytes[2 * i + 1]) << 8);
    }
    return samples;
  }
  static cv::Mat grey(int rows, int columns, int value) {
    return cv::Mat(rows, columns, CV_8UC1, cv::Scalar(value));
  }

  temp_folder folder;
  std::string input = folder.file("in.bmp");
  std::string output = folder.file("out.yuv");
  int result = 99;
  std::string printed;
};

using samples = std::vector<std::uint16_t>;

TEST_F(MaskTransform, RefusesCountsOutOfRange) {
  cv::imwrite(input, grey(4, 4, 255));
  int checked = 0;
  for (int count : {0, 9, -1}) {
    run(count, std::vector<const char*>(9, input.c_str()),
        std::vector<const char*>(9, output.c_str()));
    EXPECT_EQ(result, OCPAN_INVALID) << count;
    EXPECT_EQ(printed, "");
    ++checked;
  }
  EXPECT_EQ(checked, 3);
  EXPECT_FALSE(std::filesystem::exists(output));
}

TEST_F(MaskTransform, RefusesNullNamesBeforeAnyFileIsTouched) {
  cv::imwrite(input, grey(4, 4, 255));
  run(2, {input.c_str(), nullptr}, {output.c_str(), output.c_str()});
  EXPECT_EQ(result, OCPAN_INVALID);
  EXPECT_EQ(printed, "");
  run(2, {input.c_str(), input.c_str()}, {output.c_str(), nullptr});
  EXPECT_EQ(result, OCPAN_INVALID);
  EXPECT_EQ(printed, "");
  EXPECT_FALSE(std::filesystem::exists(output));
}

TEST_F(MaskTransform, RefusesNullArrays) {
  const char* name = input.c_str();
  EXPECT_EQ(ocPAN_MaskTransform(1, nullptr, &name), OCPAN_INVALID);
  EXPECT_EQ(ocPAN_MaskTransform(1, &name, nullptr), OCPAN_INVALID);
}

TEST_F(MaskTransform, LooksAtNoNameBeyondTheCount) {
  cv::imwrite(input, grey(4, 4, 255));
  run(1, {input.c_str(), nullptr}, {output.c_str(), nullptr});
  EXPECT_EQ(result, OCPAN_SUCCESS);
}

TEST_F(MaskTransform, WritesZerosForABlackMask) {
  EXPECT_EQ(transformed(grey(3, 5, 0)), samples(15, 0));
}

TEST_F(MaskTransform, FallsFromTheMiddleOfAWhiteMask) {
  // Distances 1, 2 and 3 of 3: 341.5, 682.5 and 1023.5, truncated.
  EXPECT_EQ(transformed(grey(5, 5, 255)), (samples{341, 341, 341,  341, 341,  //
                                                   341, 682, 682,  682, 341,  //
                                                   341, 682, 1023, 682, 341,  //
                                                   341, 682, 682,  682, 341,  //
                                                   341, 341, 341,  341, 341}));
}

TEST_F(MaskTransform, CountsGreyOf128AsOutside) {
  cv::Mat mask = grey(1, 3, 128);
  mask.at<unsigned char>(0, 1) = 129;
  EXPECT_EQ(transformed(mask), (samples{0, 1023, 0}));
}

TEST_F(MaskTransform, TakesTheGreyOfColours) {
  // Pure green has the grey 150, pure red 76, pure blue 29.
  cv::Mat mask(1, 5, CV_8UC3, cv::Scalar::all(0));
  mask.at<cv::Vec3b>(0, 0) = cv::Vec3b(0, 0, 255);
  mask.at<cv::Vec3b>(0, 2) = cv::Vec3b(0, 255, 0);
  mask.at<cv::Vec3b>(0, 4) = cv::Vec3b(255, 0, 0);
  EXPECT_EQ(transformed(mask), (samples{0, 0, 1023, 0, 0}));
}

TEST_F(MaskTransform, TakesAPictureOfOnePixel) {
  EXPECT_EQ(transformed(grey(1, 1, 255)), samples{1023});
}

TEST_F(MaskTransform, ScalesTheDistanceToTheNearestPixelOutside) {
  std::mt19937 random(5);
  constexpr int rows = 23;
  constexpr int columns = 31;
  cv::Mat mask = grey(rows, columns, 255);
  for (int k = 0; k < 12; ++k) {
    mask.at<unsigned char>(static_cast<int>(random() % rows),
                           static_cast<int>(random() % columns)) = 0;
  }
  std::vector<double> distance(rows * columns, 1e9);
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < columns; ++x) {
      for (int v = -1; v <= rows; ++v) {
        for (int u = -1; u <= columns; ++u) {
          const bool inside =
              v >= 0 && v < rows && u >= 0 && u < columns && mask.at<unsigned char>(v, u) != 0;
          if (inside) continue;
          double& nearest = distance[static_cast<std::size_t>(y * columns + x)];
          nearest = std::min(nearest, std::hypot(x - u, y - v));
        }
      }
    }
  }
  const double largest = *std::max_element(distance.begin(), distance.end());
  const samples weights = transformed(mask);
  ASSERT_EQ(weights.size(), distance.size());
  for (std::size_t i = 0; i < weights.size(); ++i) {
    // Single precision may fall to either side of a whole number.
    const double weight = distance[i] * 1023.0 / largest + 0.5;
    EXPECT_LE(weights[i], std::floor(weight + 1e-3));
    EXPECT_GE(weights[i], std::floor(weight - 1e-3));
  }
}

TEST_F(MaskTransform, GivesEachOfEightMasksTheSizeOfItsPicture) {
  std::vector<std::string> inputs;
  std::vector<std::string> outputs;
  for (int i = 0; i < 8; ++i) {
    inputs.push_back(folder.file("in" + std::to_string(i) + ".png"));
    outputs.push_back(folder.file("out" + std::to_string(i) + ".yuv"));
    cv::imwrite(inputs.back(), grey(3 + i, 5 + 2 * i, 255));
  }
  std::vector<const char*> input_names;
  std::vector<const char*> output_names;
  for (int i = 0; i < 8; ++i) {
    input_names.push_back(inputs[static_cast<std::size_t>(i)].c_str());
    output_names.push_back(outputs[static_cast<std::size_t>(i)].c_str());
  }
  run(8, input_names, output_names);
  EXPECT_EQ(result, OCPAN_SUCCESS);
  EXPECT_EQ(printed, "");
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(std::filesystem::file_size(outputs[static_cast<std::size_t>(i)]),
              static_cast<std::uintmax_t>(2 * (3 + i) * (5 + 2 * i)));
  }
}

TEST_F(MaskTransform, ReplacesAnOlderFile) {
  write_file(output, std::string(1000, 'x'));
  EXPECT_EQ(transformed(grey(2, 2, 0)), samples(4, 0));
}

#ifndef _WIN32
TEST_F(MaskTransform, OpensNamesWithBackslashes) {
  std::filesystem::create_directory(folder.path() / "sub");
  cv::imwrite(folder.file("sub/in.bmp"), grey(2, 2, 255));
  run(1, {folder.file("sub\\in.bmp").c_str()}, {folder.file("sub\\out.yuv").c_str()});
  EXPECT_EQ(result, OCPAN_SUCCESS);
  EXPECT_EQ(std::filesystem::file_size(folder.file("sub/out.yuv")), 8u);
}
#endif

TEST_F(MaskTransform, ReportsAnInputThatIsMissing) {
  write_file(output, "older");
  run(1, {folder.file("missing.png").c_str()}, {output.c_str()});
  EXPECT_EQ(result, OCPAN_MALFORMED);
  EXPECT_EQ(printed, unreadable);
  EXPECT_EQ(read_file(output), "older");
}

TEST_F(MaskTransform, ReportsAnInputThatIsNoPicture) {
  write_file(input, "no picture");
  run(1, {input.c_str()}, {output.c_str()});
  EXPECT_EQ(result, OCPAN_MALFORMED);
  EXPECT_EQ(printed, unreadable);
  EXPECT_FALSE(std::filesystem::exists(output));
}

TEST_F(MaskTransform, ReportsAnInputThatIsAFolder) {
  run(1, {folder.path().string().c_str()}, {output.c_str()});
  EXPECT_EQ(result, OCPAN_MALFORMED);
  EXPECT_EQ(printed, unreadable);
}

TEST_F(MaskTransform, ReportsAPictureWhoseHeaderClaimsAnAbsurdSize) {
  // A BMP of 2 x 2 pixels whose header says 60,000 by 60,000.
  cv::imwrite(input, cv::Mat(2, 2, CV_8UC3, cv::Scalar::all(255)));
  std::string bytes = read_file(input);
  for (std::size_t field : {18u, 22u}) bytes.replace(field, 4, std::string("\x60\xEA\x00\x00", 4));
  write_file(input, bytes);
  EXPECT_ANY_THROW((void)cv::imread(input));
  run(1, {input.c_str()}, {output.c_str()});
  EXPECT_EQ(result, OCPAN_MALFORMED);
  EXPECT_EQ(printed, unreadable);
}

TEST_F(MaskTransform, ReportsAnOutputThatCannotBeOpened) {
  cv::imwrite(input, grey(4, 4, 255));
  int checked = 0;
  for (const std::string& name : {folder.file("none/out.yuv"), folder.path().string()}) {
    run(1, {input.c_str()}, {name.c_str()});
    EXPECT_EQ(result, OCPAN_OUTPUT);
    EXPECT_TRUE(std::regex_match(printed, traced("Can't open output file"))) << printed;
    ++checked;
  }
  EXPECT_EQ(checked, 2);
}

TEST_F(MaskTransform, KeepsEarlierMasksWhenALaterOneFails) {
  cv::imwrite(input, grey(4, 4, 255));
  const std::string first = folder.file("first.yuv");
  const std::string third = folder.file("third.yuv");
  run(3, {input.c_str(), folder.file("missing.png").c_str(), input.c_str()},
      {first.c_str(), output.c_str(), third.c_str()});
  EXPECT_EQ(result, OCPAN_MALFORMED);
  EXPECT_EQ(printed, unreadable);
  EXPECT_EQ(samples_of(first).size(), 16u);
  EXPECT_FALSE(std::filesystem::exists(output));
  EXPECT_FALSE(std::filesystem::exists(third));
}

#ifndef _WIN32
TEST_F(MaskTransform, ReportsAFullDiskThatShowsOnlyWhenFlushed) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP();
  cv::imwrite(input, grey(4, 4, 255));
  run(1, {input.c_str()}, {"/dev/full"});
  EXPECT_EQ(result, OCPAN_INPUT);
  EXPECT_TRUE(std::regex_match(printed, traced("Can't write yuv mask"))) << printed;
  EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}

TEST_F(MaskTransform, RemovesAMaskThatIsNotWrittenInFull) {
  cv::imwrite(input, grey(4, 4, 255));
  const std::string large = folder.file("large.bmp");
  cv::imwrite(large, grey(200, 200, 255));
  const std::string first = folder.file("first.yuv");

  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  rlimit small = before;
  small.rlim_cur = 20000;
  const auto old_handler = signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  run(2, {input.c_str(), large.c_str()}, {first.c_str(), output.c_str()});
  setrlimit(RLIMIT_FSIZE, &before);
  signal(SIGXFSZ, old_handler);

  EXPECT_EQ(result, OCPAN_INPUT);
  EXPECT_TRUE(std::regex_match(printed, traced("Can't write yuv mask"))) << printed;
  EXPECT_TRUE(std::filesystem::exists(first));
  EXPECT_FALSE(std::filesystem::exists(output));
}
#endif

}  // namespace
}  // namespace ocpan
