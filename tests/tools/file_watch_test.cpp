#include "tools/file_watch.h"

#include <atomic>
#include <chrono>

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::temp_folder;
using testing::write_file;

// What a watch of files of 4 bytes tells while a job runs.
template <typename Job>
std::vector<std::size_t> told_during(const std::vector<std::string>& files, Job&& job) {
  std::vector<std::size_t> told;
  {
    const file_watch watch(files, 4, [&](std::size_t index) { told.push_back(index); });
    job();
  }
  return told;
}

TEST(FileWatch, TellsOfEachFileInOrder) {
  const temp_folder folder;
  const std::vector<std::string> files = {folder.file("a"), folder.file("b"), folder.file("c")};
  EXPECT_EQ(told_during(files,
                        [&] {
                          write_file(files[0], "1234");
                          write_file(files[1], "5678");
                        }),
            (std::vector<std::size_t>{0, 1}));
}

TEST(FileWatch, TellsWhileTheJobGoesOn) {
  const temp_folder folder;
  const std::string file = folder.file("a");
  std::atomic<bool> told = false;
  const file_watch watch({file}, 4, [&](std::size_t) { told = true; });
  write_file(file, "1234");
  for (int i = 0; i < 500 && !told; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_TRUE(told);
}

TEST(FileWatch, WaitsForTheWholeFile) {
  const temp_folder folder;
  const std::vector<std::string> files = {folder.file("a")};
  EXPECT_TRUE(told_during(files, [&] { write_file(files[0], "123"); }).empty());
}

TEST(FileWatch, AnOlderFileCountsOnceItIsWrittenAnew) {
  const temp_folder folder;
  const std::vector<std::string> files = {folder.file("a")};
  write_file(files[0], "old!");
  const auto before = std::filesystem::last_write_time(files[0]) - std::chrono::hours(1);
  std::filesystem::last_write_time(files[0], before);
  EXPECT_TRUE(told_during(files, [] {}).empty());
  EXPECT_EQ(told_during(files, [&] { write_file(files[0], "new!"); }).size(), 1u);
}

}  // namespace
}  // namespace ocpan
