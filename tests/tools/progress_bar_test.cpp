#include "tools/progress_bar.h"

#include <sstream>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

TEST(BarText, FillsACellPerTwentieth) {
  EXPECT_EQ(bar_text(0, 20, "pictures"), "[--------------------] 0 of 20 pictures");
  EXPECT_EQ(bar_text(5, 20, "pictures"), "[#####---------------] 5 of 20 pictures");
  EXPECT_EQ(bar_text(19, 39, "x"), "[#########-----------] 19 of 39 x");
  EXPECT_EQ(bar_text(26, 26, "x"), "[####################] 26 of 26 x");
}

TEST(BarText, IsEmptyWithoutATotal) { EXPECT_EQ(bar_text(0, 0, "x").substr(0, 3), "[--"); }

TEST(ProgressLine, DrawsOverALongerText) {
  std::ostringstream out;
  progress_line line(out, true);
  line.show("abcd");
  line.show("xy");
  EXPECT_EQ(out.str(), "\rabcd\rxy  ");
}

TEST(ProgressLine, ClearsWhatStandsThereOnce) {
  std::ostringstream out;
  progress_line line(out, true);
  line.show("abc");
  line.clear();
  line.clear();
  EXPECT_EQ(out.str(), "\rabc\r   \r");
}

TEST(ProgressLine, GoesAwayAtTheEnd) {
  std::ostringstream out;
  { progress_line(out, true).show("a"); }
  EXPECT_EQ(out.str(), "\ra\r \r");
}

TEST(ProgressLine, PrintsNothingWhereItIsNotShown) {
  std::ostringstream out;
  {
    progress_line line(out, false);
    line.show("abc");
    line.clear();
  }
  EXPECT_EQ(out.str(), "");
}

TEST(ProgressLine, LeavesALineWithNothingToShowAlone) {
  std::ostringstream out;
  progress_line line(out, true);
  line.show("");
  EXPECT_EQ(out.str(), "");
}

}  // namespace
}  // namespace ocpan
