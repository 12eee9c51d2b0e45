#include "tools/evaluate/frame_parts.h"

#include <algorithm>
#include <initializer_list>
#include <string>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

// Pictures of sets whose cameras' series have the names given, by set and camera.
rig_pictures pictures_named(
    const std::vector<std::vector<std::vector<std::string>>>& sets_with_names) {
  rig_pictures pictures;
  for (const auto& cameras : sets_with_names) {
    cal_frame_set& set = pictures.sets.emplace_back();
    for (const auto& names : cameras) {
      set_camera& camera = set.set_cameras.emplace_back();
      for (const std::string& name : names) {
        camera.files.push_back(pictures.pool.emplace_back(name).c_str());
      }
    }
  }
  return pictures;
}

TEST(MomentsOf, FramesThatShareAPictureAreOne) {
  const rig_pictures pictures = pictures_named(
      {{{"l1", "l2", "l3"}}, {{"r1", "r2"}}, {{"l1", "l3", "l4"}, {"r1", "r2", "r4"}}});
  EXPECT_EQ(moments_of(pictures), (frame_numbers{{0, 1, 2}, {0, 2}, {0, 2, 3}}));
  EXPECT_EQ(moment_count(pictures), 4u);
}

TEST(DealtFrames, FramesOfOneMomentGoTogether) {
  const rig_pictures pictures = pictures_named(
      {{{"l1", "l2", "l3"}}, {{"r1", "r2"}}, {{"l1", "l3", "l4"}, {"r1", "r2", "r4"}}});
  const frame_numbers parts = dealt_frames(pictures, 3);
  EXPECT_EQ(parts[0][0], parts[1][0]);
  EXPECT_EQ(parts[0][0], parts[2][0]);
  EXPECT_EQ(parts[0][2], parts[1][1]);
  EXPECT_EQ(parts[0][2], parts[2][1]);
}

TEST(DealtFrames, EverySetGivesAboutAsManyToEveryPart) {
  std::vector<std::vector<std::vector<std::string>>> sets;
  for (int s = 0; s < 5; ++s) {
    std::vector<std::string> names;
    for (int f = 0; f < 7; ++f) names.push_back(std::to_string(s) + "_" + std::to_string(f));
    sets.push_back({names});
  }
  int counted = 0;
  std::vector<std::ptrdiff_t> total(3, 0);
  for (const std::vector<std::size_t>& set : dealt_frames(pictures_named(sets), 3)) {
    for (std::size_t part = 0; part < 3; ++part) {
      const std::ptrdiff_t given = std::count(set.begin(), set.end(), part);
      EXPECT_GE(given, 2);
      EXPECT_LE(given, 3);
      total[part] += given;
      ++counted;
    }
  }
  EXPECT_EQ(counted, 15);
  // Nor do the sets give their odd frames all to one part.
  EXPECT_EQ(*std::min_element(total.begin(), total.end()), 11);
}

TEST(DealtFrames, IsTheSameEveryTime) {
  const rig_pictures pictures = pictures_named({{{"a", "b", "c", "d", "e"}}});
  EXPECT_EQ(dealt_frames(pictures, 2), (frame_numbers{{0, 1, 0, 1, 0}}));
}

}  // namespace
}  // namespace ocpan
