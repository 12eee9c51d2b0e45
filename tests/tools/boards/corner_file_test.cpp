#include "tools/boards/corner_file.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::read_file;
using testing::temp_folder;
using testing::write_file;

corner_search search(const std::string& file) { return {file, 640, 480, 3, 3}; }

// A found board, a picture of another size, and a broken one.
kept_findings three_findings() {
  kept_findings findings;
  kept_finding& found = findings[search("in\\a.png")];
  found.stamp = {1234, -5000000000000000001};
  found.finding = {picture_state::found, 640, 480, true, Eigen::Matrix2Xd::Random(2, 9)};
  found.finding.corners(0, 0) = 0.1;
  kept_finding& other = findings[search("in\\b.png")];
  other.stamp = {7, 8};
  other.finding.state = picture_state::wrong_size;
  other.finding.width = 320;
  other.finding.height = 200;
  findings[search("in\\c.png")].stamp = {0, 9};
  return findings;
}

TEST(CornerFile, GivesBackToTheBitWhatWasWritten) {
  const temp_folder folder;
  const kept_findings written = three_findings();
  std::string warning;
  write_corner_file(folder.file("corners.json"), written, warning);
  EXPECT_EQ(warning, "");
  const kept_findings read = read_corner_file(folder.file("corners.json"), warning);
  EXPECT_EQ(warning, "");
  ASSERT_EQ(read.size(), 3u);
  for (const auto& [key, kept] : written) {
    const kept_finding& got = read.at(key);
    EXPECT_EQ(got.stamp, kept.stamp);
    EXPECT_EQ(got.finding.state, kept.finding.state);
    EXPECT_EQ(got.finding.width, kept.finding.width);
    EXPECT_EQ(got.finding.height, kept.finding.height);
    EXPECT_EQ(got.finding.cut_short, kept.finding.cut_short);
    EXPECT_EQ(got.finding.corners, kept.finding.corners);
  }
}

TEST(CornerFile, NoFileIsNothingToWarnOf) {
  const temp_folder folder;
  std::string warning;
  EXPECT_TRUE(read_corner_file(folder.file("none.json"), warning).empty());
  EXPECT_EQ(warning, "");
}

TEST(CornerFile, ADamagedFileIsNamedAndGivesNothing) {
  const temp_folder folder;
  std::string warning;
  write_corner_file(folder.file("corners.json"), three_findings(), warning);
  const std::string whole = read_file(folder.file("corners.json"));
  for (const std::string& text : {whole.substr(0, whole.size() / 2), std::string("[]"),
                                  std::string("{\"search\": 1}"), std::string()}) {
    write_file(folder.file("corners.json"), text);
    warning.clear();
    EXPECT_TRUE(read_corner_file(folder.file("corners.json"), warning).empty());
    const bool other_version = text == "{\"search\": 1}";
    EXPECT_EQ(warning.find("is damaged") != warning.npos, !other_version) << text.substr(0, 40);
  }
}

TEST(CornerFile, HalfABoardIsLeftOut) {
  const temp_folder folder;
  kept_findings findings = three_findings();
  findings[search("in\\a.png")].finding.corners.conservativeResize(2, 5);
  std::string warning;
  write_corner_file(folder.file("corners.json"), findings, warning);
  EXPECT_EQ(read_corner_file(folder.file("corners.json"), warning).size(), 2u);
}

TEST(CornerFile, CannotBeKeptInAFolderThatIsNotThere) {
  const temp_folder folder;
  std::string warning;
  write_corner_file(folder.file("none/corners.json"), three_findings(), warning);
  EXPECT_EQ(warning.rfind("the corners found aren't kept: the folder ", 0), 0u) << warning;
}

#ifdef __linux__
TEST(CornerFile, LeavesNothingBehindOnAFullDisk) {
  const temp_folder folder;
  std::filesystem::create_symlink("/dev/full", folder.file("corners.json.part"));
  std::string warning;
  write_corner_file(folder.file("corners.json"), three_findings(), warning);
  EXPECT_NE(warning, "");
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}
#endif

TEST(CornerFile, AStampChangesWithSizeAndTime) {
  const temp_folder folder;
  const std::string file = folder.file("a");
  EXPECT_EQ(stamp_of(file), file_stamp{});
  write_file(file, "abc");
  const file_stamp before = stamp_of(file);
  EXPECT_EQ(before.bytes, 3);
  std::filesystem::last_write_time(file,
                                   std::filesystem::last_write_time(file) + std::chrono::hours(1));
  EXPECT_NE(stamp_of(file), before);
}

}  // namespace
}  // namespace ocpan
