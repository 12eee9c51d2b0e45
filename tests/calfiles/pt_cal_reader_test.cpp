#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "calfiles/create_cal.h"
#include "calfiles/pt_cal.h"
#include "calfiles/selen360_cal_file.h"
#include "src/result_codes.h"
#include "tests/support/captured_output.h"
#include "tests/support/comma_locale.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::comma_locale;
using testing::printed_by;
using testing::temp_folder;
using testing::write_file;

constexpr double degree = 3.141592653589793 / 180.0;

struct reading {
  int result;
  std::string printed;
  pt_project project;
};

reading read(const std::string& text) {
  const temp_folder folder;
  write_file(folder.file("rig.pts"), text);
  pt_cal calibration;
  int result = 99;
  const std::string printed =
      printed_by([&] { result = calibration.load(folder.file("rig.pts").c_str()); });
  return {result, printed, calibration.project()};
}

TEST(PtCalReader, FileWithoutPanoramaLineUsesTheStartValues) {
  const reading got = read("i w100 h50 f2 v90\n");
  EXPECT_EQ(got.result, 0);
  EXPECT_EQ(got.printed, "");
  EXPECT_EQ(got.project.pano_size, Eigen::Vector2d(2000, 1000));
  EXPECT_EQ(got.project.pano_projection, 2);
  EXPECT_EQ(got.project.pano_hfov, 6.283185307179586);
}

TEST(PtCalReader, PanoramaLineReplacesTheStartValues) {
  const reading got = read("p w3000 h1500 f1 v180\n");
  EXPECT_EQ(got.project.pano_size, Eigen::Vector2d(3000, 1500));
  EXPECT_EQ(got.project.pano_projection, 1);
  EXPECT_EQ(got.project.pano_hfov, 180 * 3.141592653589793 / 180.0);
}

TEST(PtCalReader, PanoramaLineWithoutWidthLeavesItZero) {
  const reading got = read("p h1500\n");
  EXPECT_EQ(got.project.pano_size, Eigen::Vector2d(0, 1500));
  EXPECT_EQ(got.project.pano_hfov, 6.283185307179586);
}

TEST(PtCalReader, PanoramaLineWithoutHeightLeavesItZero) {
  const reading got = read("p w3000 h1500\np w3000\n");
  EXPECT_EQ(got.project.pano_size, Eigen::Vector2d(3000, 0));
}

TEST(PtCalReader, PaysNoHeedToTheHostsLocale) {
  const comma_locale host;
  const reading got =
      read("p w3000.5 h1500 v180.25\ni w640.5 h4800 f2.0 v62.5 a0.125 C1.5,10.5,2,9\n");
  EXPECT_EQ(got.result, 0);
  EXPECT_EQ(got.printed, "");
  EXPECT_EQ(got.project.pano_size, Eigen::Vector2d(3000.5, 1500));
  EXPECT_DOUBLE_EQ(got.project.pano_hfov, 180.25 * degree);
  ASSERT_EQ(got.project.images.size(), 1u);
  const pt_image& image = got.project.images[0];
  EXPECT_EQ(image.size, Eigen::Vector2d(640.5, 4800));
  EXPECT_DOUBLE_EQ(image.hfov, 62.5 * degree);
  EXPECT_EQ(image.lens[0], 0.125);
  EXPECT_EQ(image.crop_size, Eigen::Vector2d(9, 7));
}

TEST(PtCalReader, ReadsEveryKeyOfAnImageLine) {
  const reading got = read(
      "i w640 h480 f2.0 v120 y10 p-20 r30 a0.01 b-0.02 c0.03 d4.5 e-5.5 g6 t-7 X1 nfile.jpg\n");
  ASSERT_EQ(got.result, 0);
  ASSERT_EQ(got.project.images.size(), 1u);
  const pt_image& image = got.project.images[0];
  EXPECT_EQ(image.size, Eigen::Vector2d(640, 480));
  EXPECT_EQ(image.crop_size, image.size);
  EXPECT_EQ(image.projection, 2);
  EXPECT_DOUBLE_EQ(image.hfov, 120 * degree);
  EXPECT_DOUBLE_EQ(image.yaw, 10 * degree);
  EXPECT_DOUBLE_EQ(image.pitch, -20 * degree);
  EXPECT_DOUBLE_EQ(image.roll, 30 * degree);
  EXPECT_EQ(image.lens, Eigen::Vector4d(0.01, -0.02, 0.03, 1 - (0.01 + -0.02 + 0.03)));
  EXPECT_EQ(image.shift, Eigen::Vector2d(4.5, -5.5));
  EXPECT_EQ(image.shear, Eigen::Vector2d(6, -7));
  Eigen::Matrix2d shear;
  shear << 1, 6.0 / 480, -7.0 / 640, 1;
  EXPECT_EQ(image.shear_matrix, shear);
}

TEST(PtCalReader, IgnoresOtherLinesAndBlankOnes) {
  const reading got = read("# i w1\n\nm g1\ni2 w3\nip w4\n  \nv v0\n  i w5 h6\r\n");
  ASSERT_EQ(got.project.images.size(), 1u);
  EXPECT_EQ(got.project.images[0].size, Eigen::Vector2d(5, 6));
}

TEST(PtCalReader, SizeLensShearAndShiftStartAnewAtEachImage) {
  const reading got = read("i w10 h10 a0.1 d3 g2 t1\ni\n");
  ASSERT_EQ(got.project.images.size(), 2u);
  const pt_image& image = got.project.images[1];
  EXPECT_EQ(image.size, Eigen::Vector2d(0, 0));
  EXPECT_EQ(image.lens, Eigen::Vector4d(0, 0, 0, 1));
  EXPECT_EQ(image.shift, Eigen::Vector2d(0, 0));
  EXPECT_EQ(image.shear, Eigen::Vector2d(0, 0));
}

TEST(PtCalReader, ProjectionFieldOfViewAndAnglesHoldOn) {
  const reading got = read("i w10 h10 f3 v100 y1 p2 r3\ni w10 h10 v\n");
  ASSERT_EQ(got.project.images.size(), 2u);
  const pt_image& image = got.project.images[1];
  EXPECT_EQ(image.projection, 3);
  EXPECT_DOUBLE_EQ(image.hfov, 100 * degree);
  EXPECT_DOUBLE_EQ(image.yaw, 1 * degree);
  EXPECT_DOUBLE_EQ(image.pitch, 2 * degree);
  EXPECT_DOUBLE_EQ(image.roll, 3 * degree);
}

TEST(PtCalReader, FirstImageStartsFromZeros) {
  const reading got = read("i w10 h10\n");
  ASSERT_EQ(got.project.images.size(), 1u);
  EXPECT_EQ(got.project.images[0].projection, 0);
  EXPECT_EQ(got.project.images[0].hfov, 0);
  EXPECT_EQ(got.project.images[0].yaw, 0);
}

TEST(PtCalReader, EqualsSignCopiesFromTheFirstImageWhateverStandsBehind) {
  const reading got = read(
      "i w100 h80 v90 a0.1 b0.2 c0.3 d4 e5 g6 t7\n"
      "i w100 h80 v10 a0.5 d9\n"
      "i w100 h80 v=0 a=1 b=x c= d=7 e=0 g=0 t=0\n");
  ASSERT_EQ(got.project.images.size(), 3u);
  const pt_image &first = got.project.images[0], &third = got.project.images[2];
  EXPECT_EQ(third.hfov, first.hfov);
  EXPECT_EQ(third.lens, first.lens);
  EXPECT_EQ(third.shift, first.shift);
  EXPECT_EQ(third.shear, first.shear);
}

TEST(PtCalReader, CopiedShiftIsTheOneAlreadyMovedByTheFirstCrop) {
  // First: (10 + 70 - 100) / 2 = -10 to 4, then the second's own crop moves it again.
  const reading got = read("i w100 h100 d4 C10,70,0,100\ni w100 h100 d=0 C0,80,0,100\n");
  ASSERT_EQ(got.project.images.size(), 2u);
  EXPECT_EQ(got.project.images[0].shift, Eigen::Vector2d(-6, 0));
  EXPECT_EQ(got.project.images[1].shift, Eigen::Vector2d(-6 - 10, 0));
}

TEST(PtCalReader, EqualsSignOnTheFirstImageEndsWithSevenInSilence) {
  for (const char letter : std::string("vabcdegt")) {
    const reading got = read(std::string("i w10 h10 ") + letter + "=0\ni w1 h1\n");
    EXPECT_EQ(got.result, code::argument_invalid) << letter;
    EXPECT_EQ(got.printed, "") << letter;
    EXPECT_TRUE(got.project.images.empty()) << letter;
  }
}

TEST(PtCalReader, EqualsSignIsNoNumberForTheOtherKeys) {
  const reading got = read("i w10 h10 f0 y=5 p=5 r=5\n");
  EXPECT_EQ(got.result, 0);
  ASSERT_EQ(got.project.images.size(), 1u);
  EXPECT_EQ(got.project.images[0].yaw, 0);
}

TEST(PtCalReader, RefusesOtherProjectionsAtOnce) {
  const reading got = read("i w10 h10 f0\ni w10 h10 f1 v=0\ni w5 h5\n");
  EXPECT_EQ(got.result, code::argument_invalid);
  EXPECT_EQ(got.printed, "Image projection 1 not supported (only 0,2,3)\n");
  EXPECT_EQ(got.project.images.size(), 1u);
  EXPECT_EQ(read("i f2.5\n").printed, "Image projection 2.5 not supported (only 0,2,3)\n");
}

TEST(PtCalReader, CropMovesTheShiftAndSetsTheCropSize) {
  // x: (10 + 110 - 200) / 2 = -40; y: (-5 + 95 - 100) / 2 = -5.
  const reading got = read("i w200 h100 d1 e2 g3 t5 C10,110,-5,95\n");
  ASSERT_EQ(got.project.images.size(), 1u);
  const pt_image& image = got.project.images[0];
  EXPECT_EQ(image.crop_size, Eigen::Vector2d(100, 100));
  EXPECT_EQ(image.shift, Eigen::Vector2d(-39, -3));
  EXPECT_EQ(image.shear_matrix(0, 1), 3.0 / 100);
  EXPECT_EQ(image.shear_matrix(1, 0), 5.0 / 100);
}

TEST(PtCalReader, CropNeedsFourValues) {
  for (const std::string token : {"C1,2,3", "C1,2,3,4,5", "C", "C1,2,,4", "C1,2,x,4"}) {
    const reading got = read("i w9 h9\ni w10 h10 " + token + " v90\ni w1 h1\n");
    EXPECT_EQ(got.result, code::content_malformed) << token;
    EXPECT_EQ(got.printed, "C parameter incorrectly defined - expect (2,2) got: " + token + "\n");
    EXPECT_EQ(got.project.images.size(), 1u) << token;
  }
}

TEST(PtCalReader, ValueThatIsNoNumberReadsAsZero) {
  const reading got = read("i w10 h10 v90 y5\ni w10 hx vx ynan\n");
  ASSERT_EQ(got.project.images.size(), 2u);
  EXPECT_EQ(got.project.images[1].size, Eigen::Vector2d(10, 0));
  EXPECT_EQ(got.project.images[1].hfov, 0);
  EXPECT_EQ(got.project.images[1].yaw, 0);
}

TEST(PtCalReader, RadiusLimitIsWhereTheLensPolynomialStopsGrowing) {
  // c alone: d = 1.1 and 1.1 - 0.2 r = 0.
  EXPECT_NEAR(read("i w9 h9 c-0.1\n").project.images[0].radius_limit, 5.5, 1e-12);
  // b alone: 1.1 - 0.3 r^2 = 0.
  EXPECT_NEAR(read("i w9 h9 b-0.1\n").project.images[0].radius_limit, std::sqrt(1.1 / 0.3), 1e-12);
  // a alone: 1.1 - 0.4 r^3 = 0.
  EXPECT_NEAR(read("i w9 h9 a-0.1\n").project.images[0].radius_limit, std::cbrt(1.1 / 0.4), 1e-12);
}

TEST(PtCalReader, RadiusLimitIsAThousandWithoutARootBelow) {
  EXPECT_EQ(read("i w9 h9\n").project.images[0].radius_limit, 1000.0);
  EXPECT_EQ(read("i w9 h9 c0.1\n").project.images[0].radius_limit, 1000.0);
  EXPECT_EQ(read("i w9 h9 c-0.0001\n").project.images[0].radius_limit, 1000.0);
  EXPECT_EQ(read("i w9 h9 a1e-320 b1\n").project.images[0].radius_limit, 1000.0);
}

TEST(PtCalReader, SmallestPositiveRootLimitsTheRadius) {
  // b = 1 and c = -4.5 give d = 4.5: 4.5 - 9 r + 3 r^2 has the roots (3 -+ sqrt 3) / 2.
  EXPECT_NEAR(read("i w9 h9 b1 c-4.5\n").project.images[0].radius_limit, (3 - std::sqrt(3.0)) / 2,
              1e-12);
  // b = 5 and c = -5 give d = 1: 1 - 10 r + 15 r^2 has the roots (5 -+ sqrt 10) / 15.
  EXPECT_NEAR(read("i w9 h9 b5 c-5\n").project.images[0].radius_limit, (5 - std::sqrt(10.0)) / 15,
              1e-12);
}

TEST(PtCal, AppendsTheImagesOfAnotherFile) {
  const temp_folder folder;
  write_file(folder.file("first.pts"), "p w500 h70 v90\ni w10 h11 v90\ni w20 h21\n");
  write_file(folder.file("second.pts"), "i w30 h31 v=0\n");
  pt_cal calibration;
  ASSERT_EQ(calibration.load(folder.file("first.pts").c_str()), 0);
  ASSERT_EQ(calibration.load(folder.file("second.pts").c_str()), 0);
  ASSERT_EQ(calibration.cam_count(), 3u);
  EXPECT_EQ(calibration.cam_width(0), 10);
  EXPECT_EQ(calibration.cam_height(1), 21);
  EXPECT_EQ(calibration.cam_width(2), 30);
  // The panorama is the second file's; "=" still means the first image of all.
  EXPECT_EQ(calibration.project().pano_size, Eigen::Vector2d(2000, 1000));
  EXPECT_EQ(calibration.project().images[2].hfov, calibration.project().images[0].hfov);
}

TEST(PtCal, TruncatesItsSizes) {
  const temp_folder folder;
  write_file(folder.file("rig.pts"), "i w100.9 h50.2\ni w-1.5 h1e300\ni w-1e300 h1e-300\n");
  pt_cal calibration;
  ASSERT_EQ(calibration.load(folder.file("rig.pts").c_str()), 0);
  EXPECT_EQ(calibration.cam_count(), 3u);
  EXPECT_EQ(calibration.cam_width(0), 100);
  EXPECT_EQ(calibration.cam_height(0), 50);
  EXPECT_EQ(calibration.cam_width(1), -1);
  EXPECT_EQ(calibration.cam_height(1), 2147483647);
  EXPECT_EQ(calibration.cam_width(2), std::numeric_limits<int>::min());
  EXPECT_EQ(calibration.cam_height(2), 0);
}

TEST(PtCal, KnowsNeitherLensNorFieldOfView) {
  const temp_folder folder;
  write_file(folder.file("rig.pts"), "i w100 h50\n");
  pt_cal calibration;
  ASSERT_EQ(calibration.load(folder.file("rig.pts").c_str()), 0);
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(calibration.cam_lens(0), -1); }),
            "pt_cal::cam_lens() function not implemented: 0\n");
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(calibration.cam_hfov(0), -1); }),
            "pt_cal::cam_hfov() function not implemented: 0\n");
}

TEST(PtCal, ComplainsOfAnIdThatIsNotBelowTheCount) {
  const pt_cal none;
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(none.cam_width(0), -1); }),
            "pt_cal::cam_width() invalid camera id: 0\n");
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(none.cam_height(3), -1); }),
            "pt_cal::cam_height() invalid camera id: 3\n");
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(none.cam_lens(0), -1); }),
            "pt_cal::cam_lens() invalid camera id: 0\n");
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(none.cam_hfov(0), -1); }),
            "pt_cal::cam_hfov() invalid camera id: 0\n");
  std::vector<point_block> pixels;
  Eigen::MatrixX3d points;
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(none.cam_project({}, 2, pixels), code::argument_invalid); }),
            "Number cameras must be in range 0..0, got: 2\n");
  EXPECT_EQ(
      printed_by([&] { EXPECT_EQ(none.cam_unproject(points, {}, 2), code::argument_invalid); }),
      "Number cameras must be in range 0..0, got: 2\n");
}

TEST(CreateCal, MakesAProjectFileWhereTheFlagIsFalse) {
  const temp_folder folder;
  const std::string name = folder.file("rig.pts");
  write_file(name, "i w100 h50\n");
  std::unique_ptr<cal> calibration;
  EXPECT_EQ(create_cal(calibration, name.c_str(), false, 1.0f), 0);
  EXPECT_NE(dynamic_cast<pt_cal*>(calibration.get()), nullptr);
}

TEST(CreateCal, RefusesAProjectFileWithoutCameras) {
  const temp_folder folder;
  const std::string name = folder.file("rig.pts");
  write_file(name, "p w100\n");
  std::unique_ptr<cal> calibration;
  EXPECT_EQ(printed_by([&] {
              EXPECT_EQ(create_cal(calibration, name.c_str(), false, 1.0f), code::argument_invalid);
            }),
            "Number of cameras must be in range 1..8, got: 0\n");
  EXPECT_EQ(calibration, nullptr);
}

TEST(CreateCal, TellsOfAProjectFileThatCanNotBeOpened) {
  const temp_folder folder;
  const std::string name = folder.file("missing.pts");
  std::unique_ptr<cal> calibration;
  EXPECT_EQ(printed_by([&] {
              EXPECT_EQ(create_cal(calibration, name.c_str(), false, 1.0f), code::input_unusable);
            }),
            "Couldn't open: " + name + "\nLoading Calibration data failed\n");
}

#ifdef __linux__
TEST(ReadProjectFile, TellsOfAFileThatCantBeRead) {
  // Opens, but nothing is mapped at its start: the first read fails.
  std::unique_ptr<cal> calibration;
  EXPECT_EQ(printed_by([&] {
              EXPECT_EQ(create_cal(calibration, "/proc/self/mem", false, 1.0f),
                        code::input_unusable);
            }),
            "Couldn't read: /proc/self/mem\nLoading Calibration data failed\n");
}
#endif

}  // namespace
}  // namespace ocpan
