#include "calfiles/create_cal.h"

#include <new>

#include "calfiles/pt_cal.h"
#include "calfiles/selen360_cal_file.h"
#include "src/console.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

constexpr std::uint64_t most_cameras = 8;

// Null if there is no memory for it.
cal* new_cal(bool use_file_class, float sphere_radius) {
  if (use_file_class) return new (std::nothrow) selen360_cal_file(sphere_radius);
  return new (std::nothrow) pt_cal;
}

}  // namespace

int create_cal(std::unique_ptr<cal>& out_object, const char* file_name, bool use_file_class,
               float sphere_radius) {
  out_object.reset(new_cal(use_file_class, sphere_radius));
  if (!out_object) {
    print_line("Failed to allocate cal object");
    return code::out_of_memory;
  }
  const int loaded = out_object->load(file_name);
  if (loaded != code::success) {
    print_line("Loading Calibration data failed");
    return loaded;
  }
  const std::uint64_t count = out_object->cam_count();
  if (count >= 1 && count <= most_cameras) return code::success;
  print_line("Number of cameras must be in range 1..8, got: ", count);
  out_object.reset();
  return code::argument_invalid;
}

}  // namespace ocpan
