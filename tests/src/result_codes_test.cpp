#include "src/result_codes.h"

#include <gtest/gtest.h>

namespace ocpan {
namespace {

TEST(MapResult, MapsEachInternalCode) {
  EXPECT_EQ(map_result(0), 0);
  EXPECT_EQ(map_result(1), 1);
  EXPECT_EQ(map_result(3), 2);
  EXPECT_EQ(map_result(4), 3);
  EXPECT_EQ(map_result(5), 4);
  EXPECT_EQ(map_result(6), 5);
  EXPECT_EQ(map_result(7), 6);
  EXPECT_EQ(map_result(-1), -1);
}

TEST(MapResult, GivesFailureForWhatIsNoInternalCode) {
  for (int internal : {2, 8, -5, 256, -256}) EXPECT_EQ(map_result(internal), -1) << internal;
}

}  // namespace
}  // namespace ocpan
