#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/board_pictures.h"
#include "fuzz/byte_source.h"
#include "fuzz/promise.h"
#include "fuzz/scratch_folder.h"
#include "include/oc_pan_cal.h"
#include "src/calibrate.h"
#include "src/result_codes.h"
#include "tests/support/temp_folder.h"

// The input is a configuration, read in a folder with a few small pictures, some of a board.
// Whole calibrations are run too where they can't leave that folder.

namespace ocpan::fuzz {
namespace {

constexpr std::size_t most_pictures = 12;  // of a whole run

void make_pictures() {
  const std::string picture = "P5 8 8 255\n" + std::string(64, '\x50');
  for (const char* folder : {"pics", "pics/left", "pics/right"}) {
    std::filesystem::create_directory(folder);
    for (const char* name : {"left1.pgm", "left2.pgm", "left10.pgm", "right1.pgm", "Right2.pgm"}) {
      testing::write_file(std::filesystem::path(folder) / name, picture);
    }
    // The same boards before two cameras side by side.
    const double x = folder == std::string_view("pics/right") ? 44 : 52;
    const auto write_board = [&](const char* name, const std::string& board) {
      testing::write_file(std::filesystem::path(folder) / name, board);
    };
    write_board("board1.pgm", board_picture(0.1, x, 36, 13, 0.004));
    write_board("board2.pgm", board_picture(-0.3, x - 4, 34, 11, -0.004));
  }
}

struct calibration_job {
  std::vector<camera_details> cameras;
  std::vector<set_config> sets;
  std::string output_file;
  string_pool pool;
  int result = 0;
};

void read_job(calibration_job& job) {
  job.result = read_calibration_job(job.cameras, job.sets, job.output_file, job.pool, "rig.txt");
}

void must_be_sound(const calibration_job& job) {
  const int cameras = static_cast<int>(job.cameras.size());
  must_hold(cameras >= 2 && cameras <= 8, "a calibration has 2 to 8 cameras");
  if (job.sets.empty()) return;  // the reading ended with an incomplete camera
  for (const camera_details& camera : job.cameras) {
    must_hold(camera.lens >= 0 && camera.lens <= 2, "a camera has a known lens");
  }
  for (const set_config& set : job.sets) {
    must_hold(set.set_prefix != nullptr, "a set has a name");
    must_hold(set.board_width >= 3 && set.board_height >= 3, "a board has 3 corners a side");
    for (const set_camera& camera : set.cameras) {
      must_hold(camera.id >= 1 && camera.id <= cameras, "a set's camera is one of the rig's");
      must_hold(!camera.files.empty(), "a set's camera has pictures");
      must_hold(std::ranges::count(camera.files, nullptr) == 0, "a picture has a name");
    }
  }
}

bool stays_inside(std::string_view path) {
  return path.find("..") == path.npos && !path.starts_with('\\') && !path.starts_with('/');
}

// Whether a whole run is quick and reads and writes in the scratch folder alone.
bool may_be_run(const calibration_job& job) {
  std::size_t pictures = 0;
  for (const set_config& set : job.sets) {
    if (set.board_width > 20 || set.board_height > 20) return false;
    for (const set_camera& camera : set.cameras) {
      pictures += camera.files.size();
      if (!std::ranges::all_of(camera.files, stays_inside)) return false;
    }
  }
  return pictures <= most_pictures && job.output_file == "rig.cal";
}

bool same_files(const calibration_job& a, const calibration_job& b) {
  if (a.pool != b.pool || a.output_file != b.output_file) return false;
  return a.cameras.size() == b.cameras.size() && a.sets.size() == b.sets.size();
}

}  // namespace

void run_configuration(input bytes) {
  const inside_scratch_folder here;
  static const bool made = (make_pictures(), true);
  static_cast<void>(made);
  testing::write_file("rig.txt", text_of(bytes));
  calibration_job job;
  read_job(job);
  must_be_result(map_result(job.result));
  calibration_job again;
  read_job(again);
  must_hold(job.result == again.result && same_files(job, again), "a file reads alike twice");
  if (job.result != code::success) return;
  must_be_sound(job);
  if (!may_be_run(job)) return;
  qa_summary summary{};
  must_be_result(ocPAN_Cal("rig.txt", &summary));
}

}  // namespace ocpan::fuzz
