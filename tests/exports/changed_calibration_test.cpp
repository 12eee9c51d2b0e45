// A calibration that changes between the two times that ocPAN_LutFromCalibration reads it.

#ifndef _WIN32
#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "tests/exports/table_run.h"

namespace ocpan {
namespace {

using testing::linear_camera;
using testing::table_run;

// A pipe in the place of a file: its one reader gets a text, and whoever opens the name after
// that a file with another. It waits for the reader in steps, so that it ends with the object
// if nobody reads.
class changing_file {
 public:
  changing_file(const std::string& path, const std::string& first, const std::string& then) {
    const std::string later = path + "_later";
    testing::write_file(later, then);
    std::filesystem::remove(path);
    EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
    writer_ = std::thread([this, path, first, later] {
      int pipe = -1;
      while (!over_ && (pipe = open(path.c_str(), O_WRONLY | O_NONBLOCK)) < 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
      if (pipe < 0) return;
      std::filesystem::rename(later, path);  // ahead of the text, whose end lets the reader go on
      EXPECT_EQ(write(pipe, first.data(), first.size()), static_cast<ssize_t>(first.size()));
      close(pipe);
    });
  }
  ~changing_file() {
    over_ = true;
    writer_.join();
  }
  changing_file(const changing_file&) = delete;
  changing_file& operator=(const changing_file&) = delete;

 private:
  std::atomic<bool> over_ = false;
  std::thread writer_;
};

TEST(ChangedCalibration, IsRefusedWithOtherCamerasThanItsMasks) {
  const std::string two_cameras = linear_camera + linear_camera;
  const struct {
    std::string first, then, message;
  } cases[] = {
      {two_cameras, linear_camera,
       "Number of cameras in cal file (1) doesn't match the number of masks (2)\n"},
      {linear_camera, two_cameras,
       "Number of cameras in cal file (2) doesn't match the number of masks (1)\n"},
  };
  for (const auto& [first, then, message] : cases) {
    table_run run("");
    run.set_mask(0, 255);
    run.set_mask(1, 255);
    const changing_file changing(run.calibration(), first, then);
    EXPECT_EQ(run.lut(), OCPAN_INVALID);
    EXPECT_EQ(run.printed(), message);
    EXPECT_FALSE(std::filesystem::exists(run.output_name(0)));
  }
}

TEST(ChangedCalibration, IsUsedAsItStandsAtTheSecondReading) {
  // The second one is shifted by a quarter of the picture.
  std::string moved = linear_camera;
  moved.replace(moved.find("H_2:-100.03125"), 14, "H_2:-50.03125");
  table_run once(moved);
  once.set_mask(0, 255);
  ASSERT_EQ(once.lut(), OCPAN_SUCCESS);
  table_run run("");
  run.set_mask(0, 255);
  const changing_file changing(run.calibration(), linear_camera, moved);
  EXPECT_EQ(run.lut(), OCPAN_SUCCESS);
  EXPECT_TRUE(run.output(0) == once.output(0));
}

}  // namespace
}  // namespace ocpan
#endif
