#include <memory>
#include <string>

#include "calfiles/create_cal.h"
#include "calfiles/selen360_cal_file.h"
#include "fuzz/byte_source.h"
#include "fuzz/mappings.h"
#include "fuzz/promise.h"
#include "fuzz/scratch_folder.h"
#include "src/result_codes.h"
#include "tests/support/temp_folder.h"

// The input is a calibration file. It is read, both mappings are used, and what was read is
// written, read and written again.

namespace ocpan::fuzz {
namespace {

void must_be_known(int result) {
  must_hold(result == code::success || result == code::content_malformed ||
                result == code::argument_invalid,
            "a known result");
}

std::string saved_and_loaded(selen360_cal_file& file, const char* name) {
  const std::string path = scratch_file(name);
  must_hold(file.save(path) == code::success, "a calibration can be saved");
  must_hold(file.load(path.c_str()) == code::success, "a saved calibration can be read");
  return testing::read_file(path);
}

void must_survive_saving(selen360_cal_file file) {
  const std::size_t cameras = file.models().size();
  const std::size_t pictures = file.details().size();
  const std::string first = saved_and_loaded(file, "first.cal");
  must_hold(file.models().size() == cameras && file.details().size() == pictures,
            "a saved calibration has its cameras");
  must_hold(saved_and_loaded(file, "second.cal") == first, "a saved calibration stays as it is");
}

}  // namespace

void run_calibration_file(input bytes) {
  const std::string path = scratch_file("rig.cal");
  testing::write_file(path, text_of(bytes));
  for (const float radius : {1.0F, 1000.0F}) {
    std::unique_ptr<cal> calibration;
    const int result = create_cal(calibration, path.c_str(), true, radius);
    must_be_known(result);
    if (result != code::success) return;
    must_map(*calibration);
  }
  selen360_cal_file file(1.0F);
  must_hold(file.load(path.c_str()) == code::success, "a file reads alike twice");
  must_survive_saving(std::move(file));
}

}  // namespace ocpan::fuzz
