#include "tools/boards/rig_pictures.h"

#include "src/calibrate.h"
#include "src/result_codes.h"
#include "tools/boards/printed_aside.h"

namespace ocpan {

int read_rig_pictures(rig_pictures& pictures, std::string& said, const std::string& configuration) {
  pictures.configuration = configuration;
  std::vector<set_config> sets;
  int result = code::success;
  said = printed_aside([&] {
    result = read_calibration_job(pictures.cameras, sets, pictures.output_file, pictures.pool,
                                  configuration.c_str());
  });
  if (result == code::success) pictures.sets = make_frame_sets(sets, pictures.cameras);
  return result;
}

}  // namespace ocpan
