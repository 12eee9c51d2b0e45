#include "src/file_patterns.h"

#include <algorithm>
#include <cerrno>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/support/captured_output.h"
#include "tests/support/opening_error.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::opening_error;
using testing::printed_by;
using testing::working_folder;
using testing::write_file;
using strings = std::vector<std::string>;

// ---- filename_less

// The order as it is defined, one character at a time.
bool plain_less(const std::string& a, const std::string& b) {
  if (a.empty()) return true;
  if (b.empty()) return false;
  const auto digit = [](char c) { return c >= '0' && c <= '9'; };
  if (digit(a[0]) && !digit(b[0])) return false;
  if (digit(b[0]) && !digit(a[0])) return true;
  const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? c - 32 : c + 0; };
  if (upper(a[0]) == upper(b[0])) return plain_less(a.substr(1), b.substr(1));
  return upper(a[0]) < upper(b[0]);
}

TEST(FilenameLess, PutsLettersAheadOfDigitsWithoutRegardToCase) {
  const strings ordered = {"a0", "A1", "b", "1"};
  int checks = 0;
  for (std::size_t i = 0; i < ordered.size(); ++i) {
    for (std::size_t j = i + 1; j < ordered.size(); ++j, ++checks) {
      EXPECT_TRUE(filename_less(ordered[i], ordered[j])) << ordered[i] << " " << ordered[j];
      EXPECT_FALSE(filename_less(ordered[j], ordered[i])) << ordered[i] << " " << ordered[j];
    }
  }
  EXPECT_EQ(checks, 6);
}

TEST(FilenameLess, IsNotNumeric) {
  EXPECT_TRUE(filename_less("x10.png", "x9.png"));
  EXPECT_FALSE(filename_less("x9.png", "x10.png"));
}

TEST(FilenameLess, PutsABeginningAheadOfWhatGoesOn) {
  EXPECT_TRUE(filename_less("ab", "abc"));
  EXPECT_FALSE(filename_less("abc", "ab"));
  EXPECT_TRUE(filename_less("", "a"));
  EXPECT_FALSE(filename_less("a", ""));
}

TEST(FilenameLess, IsTrueForEqualNames) {
  EXPECT_TRUE(filename_less("", ""));
  EXPECT_TRUE(filename_less("a1", "a1"));
  EXPECT_TRUE(filename_less("a1", "A1"));
  EXPECT_TRUE(filename_less("A1", "a1"));
}

TEST(FilenameLess, ComparesPunctuationAsUpperCaseText) {
  // "_" is 95: ahead of "a" (97), behind "A" (65), to which "a" is turned.
  EXPECT_TRUE(filename_less("a", "_"));
  EXPECT_FALSE(filename_less("_", "a"));
  EXPECT_TRUE(filename_less("_", "0"));
}

TEST(FilenameLess, AgreesWithTheDefinition) {
  std::mt19937 random(7);
  const std::string alphabet = "aAbB_.01";
  const auto word = [&] {
    std::string text(random() % 6, ' ');
    for (char& c : text) c = alphabet[random() % alphabet.size()];
    return text;
  };
  int checks = 0;
  for (; checks < 20000; ++checks) {
    const std::string a = word();
    const std::string b = word();
    ASSERT_EQ(filename_less(a, b), plain_less(a, b)) << a << " " << b;
  }
  EXPECT_EQ(checks, 20000);
}

TEST(FilenameLess, TakesNamesOfAnyLength) {
  const std::string a(5000000, 'x');
  EXPECT_TRUE(filename_less(a + "a", a + "b"));
  EXPECT_FALSE(filename_less(a + "b", a + "a"));
}

// ---- sort_names

TEST(SortNames, OrdersTheFourExamples) {
  strings names = {"1", "b", "A1", "a0"};
  sort_names(names);
  EXPECT_EQ(names, (strings{"a0", "A1", "b", "1"}));
}

TEST(SortNames, KeepsTheOrderOfNamesThatDifferInCaseOnly) {
  strings names = {"b", "A", "a", "A"};
  sort_names(names);
  EXPECT_EQ(names, (strings{"A", "a", "A", "b"}));
}

TEST(SortNames, TakesManyEqualNames) {
  // An order that calls equal names less would run off the ends of the sequence.
  strings names;
  for (int i = 0; i < 2000; ++i) names.push_back(i % 2 ? "Frame" : "fRAME");
  const strings before = names;
  sort_names(names);
  EXPECT_EQ(names, before);
}

// ---- list_directory, list_sorted

TEST(ListDirectory, AppendsEveryEntry) {
  const working_folder folder;
  std::filesystem::create_directories("pics/inner");
  write_file("pics/a.png", "");
  strings names = {"before"};
  int result = -7;
  EXPECT_EQ(printed_by([&] { result = list_directory("pics\\", names); }), "");
  EXPECT_EQ(result, 0);
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (strings{".", "..", "a.png", "before", "inner"}));
}

TEST(ListDirectory, ReportsAFolderThatCannotBeOpened) {
  const working_folder folder;
  strings names;
  int result = -7;
  errno = 0;
  EXPECT_EQ(printed_by([&] { result = list_directory("no\\such\\", names); }),
            opening_error(ENOENT, "no\\such\\*"));
  EXPECT_EQ(result, 5);
}

TEST(ListDirectory, ReportsAFileGivenAsFolder) {
  const working_folder folder;
  write_file("a.png", "");
  strings names;
  int result = -7;
  errno = 0;
  EXPECT_EQ(printed_by([&] { result = list_directory("a.png\\", names); }),
            opening_error(ENOTDIR, "a.png\\*"));
  EXPECT_EQ(result, 5);
}

TEST(ListSorted, SortsAllThatIsThere) {
  const working_folder folder;
  std::filesystem::create_directory("pics");
  for (const char* name : {"1", "b", "A1", "a0"}) {
    write_file(std::filesystem::path("pics") / name, "");
  }
  strings names = {"c", "0"};
  ASSERT_EQ(list_sorted("pics\\", names), 0);
  EXPECT_EQ(names, (strings{".", "..", "a0", "A1", "b", "c", "0", "1"}));
}

TEST(ListSorted, HandsOnTheFailureOfTheListing) {
  const working_folder folder;
  strings names;
  int result = 0;
  errno = 0;
  EXPECT_EQ(printed_by([&] { result = list_sorted("absent\\", names); }),
            opening_error(ENOENT, "absent\\*"));
  EXPECT_EQ(result, 5);
}

#ifdef __linux__
TEST(ListSorted, ReportsAFolderWithoutAnyEntry) {
  // A folder that was removed while it is the working folder has not even ".".
  const working_folder folder;
  std::filesystem::create_directory("gone");
  std::filesystem::current_path("gone");
  std::filesystem::remove(folder.path() / "gone");
  strings names;
  int result = 0;
  EXPECT_EQ(printed_by([&] { result = list_sorted("", names); }), "No files found in: \n");
  EXPECT_EQ(result, 5);
  EXPECT_TRUE(names.empty());
}
#endif

// ---- expand_pattern

TEST(ExpandPattern, AppendsFullPathsInTheOrderOfTheNames) {
  string_pool pool = {"before"};
  std::vector<const char*> files;
  int result = -7;
  EXPECT_EQ(printed_by([&] {
              result = expand_pattern("a\\d$", "pics\\", {".", "a2", "b1", "a1"}, files, pool);
            }),
            "");
  EXPECT_EQ(result, 0);
  EXPECT_EQ(strings(files.begin(), files.end()), (strings{"pics\\a2", "pics\\a1"}));
  EXPECT_EQ(pool, (string_pool{"before", "pics\\a2", "pics\\a1"}));
}

TEST(ExpandPattern, PointsIntoThePool) {
  string_pool pool;
  std::vector<const char*> files;
  strings names;
  for (int i = 100; i < 999; ++i) names.push_back(std::string("a").append(std::to_string(i)));
  ASSERT_EQ(expand_pattern("a\\d\\d\\d", "", names, files, pool), 0);
  ASSERT_EQ(files.size(), 899u);
  for (std::size_t i = 0; i < files.size(); ++i) EXPECT_EQ(files[i], pool[i].c_str());
}

TEST(ExpandPattern, RefusesAListThatIsNotEmpty) {
  string_pool pool;
  std::vector<const char*> files = {"x"};
  int result = 0;
  EXPECT_EQ(printed_by([&] { result = expand_pattern("a", "", {"a"}, files, pool); }),
            "Internal error, file_names should be empty here.\n");
  EXPECT_EQ(result, -1);
  EXPECT_EQ(files.size(), 1u);
}

TEST(ExpandPattern, StopsAtTheFirstFailureAndKeepsWhatItHas) {
  string_pool pool;
  std::vector<const char*> files;
  int result = 0;
  EXPECT_EQ(printed_by([&] {
              result = expand_pattern("a\\d", "", {"a1", "a1.bak", "a2"}, files, pool);
            }),
            "Unexpected non match case\n");
  EXPECT_EQ(result, -1);
  EXPECT_EQ(strings(files.begin(), files.end()), strings{"a1"});
}

TEST(ExpandPattern, GoesOnBehindAReportedMismatch) {
  string_pool pool;
  std::vector<const char*> files;
  int result = -7;
  printed_by([&] { result = expand_pattern("a\\d$", "", {"a1.bak", "a2"}, files, pool); });
  EXPECT_EQ(result, 0);
  EXPECT_EQ(strings(files.begin(), files.end()), strings{"a2"});
}

TEST(ExpandPattern, RewritesTheDigitClassForEveryName) {
  string_pool pool;
  std::vector<const char*> files;
  ASSERT_EQ(expand_pattern("a[0-9]", "", {"a1", "a2", "b"}, files, pool), 0);
  EXPECT_EQ(files.size(), 2u);
}

}  // namespace
}  // namespace ocpan
