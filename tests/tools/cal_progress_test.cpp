#include "tools/cal_progress.h"

#include <gtest/gtest.h>

namespace ocpan {
namespace {

// A set of one camera with three pictures, and one of two cameras with three and two.
cal_progress with_two_sets() {
  cal_progress progress;
  for (const char* line : {"Starting calibration with the following parameters...",
                           " Output file: out.cal",
                           " Calibration sets (2):",
                           "   0",
                           "    - set_prefix: one",
                           "    - cameras (1):",
                           "     + id: 1",
                           "     + files (3):",
                           "       - a1",
                           "       - a2",
                           "       - a3",
                           "   1",
                           "    - set_prefix: both",
                           "    - cameras (2):",
                           "     + id: 1",
                           "     + files (3):",
                           "       - b1",
                           "       - b2",
                           "       - b3",
                           "     + id: 2",
                           "     + files (2):",
                           "       - c1",
                           "       - c2",
                           "",
                           "OpenCV version : 3.4.0",
                           "",
                           "-----------Step 1. Chessboard detection-----------",
                           ""}) {
    progress.take(line);
  }
  return progress;
}

TEST(CalProgress, CountsTheFramesOfTheShortestSeries) {
  EXPECT_EQ(with_two_sets().named(), 3 + 2 * 2);
}

TEST(CalProgress, CountsEachDetection) {
  cal_progress progress = with_two_sets();
  progress.take("This cal_frame_set_number: 3");
  progress.take("detect .\\tmp\\one_vid_0_0.jpg chessboard successfully ");
  progress.take("detect .\\tmp\\one_vid_0_1.jpg chessboard failed");
  EXPECT_EQ(progress.done(), 2);
  EXPECT_EQ(progress.boards_found(), 1);
  EXPECT_EQ(progress.boards_not_found(), 1);
  EXPECT_EQ(progress.unreadable(), 0);
}

TEST(CalProgress, CountsTheRestOfAFrameThatBrokeOff) {
  cal_progress progress = with_two_sets();
  progress.take("This cal_frame_set_number: 3");
  progress.take("This cal_frame_set_number: 2");
  EXPECT_EQ(progress.done(), 3);
  progress.take("Error opening image file b1");  // its partner isn't read then
  EXPECT_EQ(progress.done(), 5);
  progress.take("detect .\\tmp\\both_vid_0_1.jpg chessboard successfully ");
  EXPECT_EQ(progress.done(), 6);
  progress.take("Bad or no Image Data for file c2 (data=0, rows=1, cols=1, width=2, height=2)");
  EXPECT_EQ(progress.done(), 7);
  EXPECT_EQ(progress.unreadable(), 2);
}

TEST(CalProgress, KeepsTheNamesOfTheDebugPictures) {
  cal_progress progress = with_two_sets();
  progress.take("This cal_frame_set_number: 3");
  progress.take("detect .\\tmp\\one_vid_0_0.jpg chessboard successfully ");
  progress.take("detect .\\tmp\\one_vid_0_1.jpg chessboard failed");
  EXPECT_EQ(progress.debug_pictures(),
            (std::set<std::string>{".\\tmp\\one_vid_0_0.jpg", ".\\tmp\\one_vid_0_1.jpg"}));
}

TEST(CalProgress, TellsTheStep) {
  cal_progress progress = with_two_sets();
  EXPECT_EQ(progress.step(), "Step 1. Chessboard detection");
  progress.take("-----------Step 2-1. Optimise parameters-----------");
  EXPECT_EQ(progress.step(), "Step 2-1. Optimise parameters");
}

TEST(CalProgress, IsDoneWithThePicturesWhenTheNextStepStarts) {
  cal_progress progress = with_two_sets();
  progress.take("-----------Step 2. Initial lens calibration-----------");
  EXPECT_EQ(progress.done(), progress.named());
}

TEST(CalProgress, IsNotFooledByNamesOfFilesAndSets) {
  cal_progress progress;
  progress.take("    - set_prefix:      + files (9):");
  progress.take("     + files (1):");
  progress.take("       - -----------Step 4. x");
  progress.take("       -      + files (7):");
  EXPECT_EQ(progress.named(), 1);
  EXPECT_EQ(progress.step(), "");
}

TEST(CalProgress, StaysWithinWhatWasNamedWhateverIsPrinted) {
  cal_progress progress;
  progress.take("-----------Step 1. Chessboard detection-----------");
  progress.take("Error opening image file x");
  progress.take("This cal_frame_set_number: 3");
  progress.take("This cal_frame_set_number: 3");
  progress.take("detect a chessboard failed");
  progress.take("Error opening image file x");
  EXPECT_EQ(progress.done(), 0);
  EXPECT_EQ(progress.named(), 0);
}

}  // namespace
}  // namespace ocpan
