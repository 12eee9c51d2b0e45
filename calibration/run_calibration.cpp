#include "calibration/run_calibration.h"

#include "calfiles/selen360_cal_file.h"
#include "calibration/calibration_stages.h"
#include "calibration/rig_constraints.h"
#include "src/console.h"
#include "src/result_codes.h"

namespace ocpan {

int run_calibration(const std::string& output_file, const std::vector<camera_details>& cameras,
                    const std::vector<set_config>& sets, run_report& report) {
  // This text stands for the generation of detectors, whatever is linked.
  print_line("OpenCV version : ", "3.4.0");
  rig initial_models;
  for (const camera_details& camera : cameras) {
    if (static_cast<unsigned>(camera.lens) > 2) {
      print_line("Lens expects 0, 1 or 2, got: '", camera.lens);
      return code::argument_invalid;
    }
    initial_models.push_back(initial_model(camera));
  }

  std::vector<cal_frame_set> frame_sets = make_frame_sets(sets, cameras);
  rig models;
  const int result =
      calibration_stages(report, models, frame_sets, initial_models, rig_constraints(cameras));
  if (result != code::success) return result;
  return selen360_cal_file(models, cameras).save(output_file);
}

}  // namespace ocpan
