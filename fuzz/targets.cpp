#include "fuzz/targets.h"

namespace ocpan::fuzz {

const std::array<target, 10> targets = {{{"calibration_file", run_calibration_file},
                                         {"configuration", run_configuration},
                                         {"masks", run_masks},
                                         {"patterns", run_patterns},
                                         {"project_file", run_project_file},
                                         {"quad_corners", run_quad_corners},
                                         {"quad_pictures", run_quad_pictures},
                                         {"raw_pictures", run_raw_pictures},
                                         {"raw_samples", run_raw_samples},
                                         {"tables", run_tables}}};

}  // namespace ocpan::fuzz
