#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "src/file_patterns.h"
#include "src/result_codes.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::printed_by;

#ifndef _WIN32  // where making them takes minutes
// A name of seven digits.
std::string numbered(int k) {
  const std::string digits = std::to_string(k);
  return std::string(7 - digits.size(), '0') + digits;
}
TEST(ManyFiles, HundredThousandInAFolderAreListedInOrder) {
  const testing::temp_folder folder;
  constexpr int count = 100'000;
  for (int k = 0; k < count; ++k) testing::write_file(folder.file(numbered(k) + ".png"), "");
  std::vector<std::string> names;
  ASSERT_EQ(list_sorted(folder.path().string() + "\\", names), code::success);
  ASSERT_EQ(names.size(), count + 2u);  // with the two dots
  string_pool pool;
  std::vector<const char*> files;
  names.erase(names.begin(), names.begin() + 2);
  ASSERT_EQ(expand_pattern("\\d*\\.png", "f\\", names, files, pool), code::success);
  ASSERT_EQ(files.size(), std::size_t{count});
  int misplaced = 0;
  for (int k = 0; k < count; ++k) {
    if (files[static_cast<std::size_t>(k)] != "f\\" + numbered(k) + ".png") ++misplaced;
  }
  EXPECT_EQ(misplaced, 0);
}
#endif

// Neither may need stack for each character.
TEST(LongNames, OfTenMillionCharactersAreMatched) {
  const std::string pattern(10'000, 'a');
  const std::string name(10'000'000, 'a');
  bool matched = false;
  ASSERT_EQ(match_pattern(pattern, pattern, matched), code::success);
  EXPECT_TRUE(matched);
  printed_by([&] {
    EXPECT_EQ(match_pattern(pattern, name, matched), code::logic_failure);  // the name runs on
  });
  ASSERT_EQ(match_pattern("^a+b$", name + "b", matched), code::success);
  EXPECT_TRUE(matched);
  std::string repeats;
  for (int k = 0; k < 5'000; ++k) repeats += "a*";
  printed_by([&] { EXPECT_NE(match_pattern(repeats, name, matched), code::success); });
}

TEST(LongNames, OfTenMillionCharactersAreCompared) {
  const std::string name(10'000'000, 'a');
  std::vector<std::string> names = {name + "b", name + "a", name};
  sort_names(names);
  EXPECT_TRUE(names[0] == name && names[1].back() == 'a' && names[2].back() == 'b');
}

}  // namespace
}  // namespace ocpan
