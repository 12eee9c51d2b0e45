#include <cmath>
#include <memory>

#include "calfiles/create_cal.h"
#include "calfiles/pt_cal.h"
#include "fuzz/byte_source.h"
#include "fuzz/mappings.h"
#include "fuzz/promise.h"
#include "fuzz/scratch_folder.h"
#include "src/result_codes.h"
#include "tests/support/temp_folder.h"

// The input is a panorama project file. It is read, and both mappings are used.

namespace ocpan::fuzz {
namespace {

void must_be_sound(const pt_image& image) {
  must_hold(image.projection == 0 || image.projection == 2 || image.projection == 3,
            "a known projection");
  must_hold(image.radius_limit > 0 && image.radius_limit <= 1000, "a lens has a limit");
  const bool finite = std::isfinite(image.yaw + image.pitch + image.roll);
  must_hold(!finite || (image.rotation * image.rotation.transpose()).isIdentity(1e-9),
            "a rotation is one");
}

}  // namespace

void run_project_file(input bytes) {
  const std::string path = scratch_file("rig.pto");
  testing::write_file(path, text_of(bytes));
  std::unique_ptr<cal> calibration;
  const int result = create_cal(calibration, path.c_str(), false, 1.0F);
  must_hold(result == code::success || result == code::content_malformed ||
                result == code::argument_invalid,
            "a known result");
  if (result != code::success) return;
  const auto& rig = dynamic_cast<const pt_cal&>(*calibration);
  must_hold(rig.cam_count() >= 1 && rig.cam_count() <= 8, "1 to 8 cameras");
  for (const pt_image& image : rig.project().images) must_be_sound(image);
  must_map(rig);
}

}  // namespace ocpan::fuzz
