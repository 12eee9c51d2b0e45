#pragma once

#include <string>

namespace ocpan::testing {

// A calibration file's camera of 40 by 30 pixels and 90 degrees that looks along -z.
inline const std::string camera_text =
    "Width:40 Height:30 Lens:0 Hfov:90\n"
    "C_0:0 C_1:0 C_2:0 A_th:3.14159265 A_ph:0 H_0:20 H_1:0 H_2:-20 V_0:0 V_1:-20 V_2:-15 "
    "O_th:3.14159265 O_ph:0 rho_0:0 rho_1:0 rho_2:0 L:1\n";

}  // namespace ocpan::testing
