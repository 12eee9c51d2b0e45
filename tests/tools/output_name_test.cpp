#include "tools/output_name.h"

#include <sstream>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

output_name found_in(const std::string& text) {
  std::istringstream in(text);
  return find_output_name(in);
}

TEST(FindOutputName, GivesTheQuotedValueWithBackslashes) {
  const output_name name =
      found_in("base_directory: 'in'\n\noutput_filename: 'out/a\\b.cal'\ncamera_info:\n");
  EXPECT_TRUE(name.known);
  EXPECT_EQ(name.text, "out\\a\\b.cal");
}

TEST(FindOutputName, TakesTheLastOfTwo) {
  EXPECT_EQ(found_in("output_filename: 'a'\noutput_filename: 'b'\ncamera_info:\n").text, "b");
}

TEST(FindOutputName, DropsACarriageReturnAheadOfTheLineEnd) {
  EXPECT_EQ(found_in("output_filename: 'a'\r\ncamera_info:\r\n").text, "a");
}

TEST(FindOutputName, KnowsThatNoneIsNamed) {
  const output_name name = found_in("base_directory: 'in'\ncamera_info:\n");
  EXPECT_TRUE(name.known);
  EXPECT_EQ(name.text, "");
}

TEST(FindOutputName, TakesAColonEarlyInTheValue) {
  EXPECT_EQ(found_in("output_filename: 'C:\\out.cal'\ncamera_info:\n").text, "C:\\out.cal");
}

TEST(FindOutputName, LeavesWhatTheLibraryRefusesToTheLibrary) {
  EXPECT_FALSE(found_in("").known);
  EXPECT_FALSE(found_in("output_filename: 'a'\n").known);                 // no cameras
  EXPECT_FALSE(found_in(" output_filename: 'a'\ncamera_info:\n").known);  // leading blank
  EXPECT_FALSE(found_in("output_filename: a\ncamera_info:\n").known);     // no quotes
  EXPECT_FALSE(found_in("output_filename: 'a\ncamera_info:\n").known);    // one quote
  EXPECT_FALSE(found_in("output_filename: 'a' x:\ncamera_info:\n").known);
  EXPECT_FALSE(found_in("output_filename: 'a' # 1: 2\ncamera_info:\n").known);
  EXPECT_FALSE(found_in("out: 'a'\ncamera_info:\n").known);
}

}  // namespace
}  // namespace ocpan
