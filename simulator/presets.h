#pragma once

#include <string>
#include <vector>

#include "simulator/rig_description.h"

namespace ocpan {

// The names of all presets: cameras and lens ("4-lens1"), of each also with lenses that
// differ from camera to camera ("4-lens1-unlike"), and "4-lens1-off-axis", whose distortion
// axis stands off the camera's axis.
//
// Plain presets have lenses that are alike: every scale 0.8 % off the start model, every
// centre 3 and -2 pixels, every L 1 %. Camera 0 stands at the origin and looks along -z.
std::vector<std::string> preset_names();

// Makes the preset of a name. Gives an error text that lists the names if there is none.
[[nodiscard]] std::string make_preset(rig_description& description, const std::string& name);

}  // namespace ocpan
