#pragma once

#include <string>

#include "tools/report/report_content.h"

namespace ocpan {

// The parts of the report, in its order. Each is markup, and empty if it has nothing to show.
[[nodiscard]] std::string verdict_section(const report_content& content);
[[nodiscard]] std::string cameras_section(const report_content& content);
[[nodiscard]] std::string pairs_section(const report_content& content);
[[nodiscard]] std::string uncertainty_section(const report_content& content);
[[nodiscard]] std::string rig_section(const report_content& content);
[[nodiscard]] std::string distances_section(const report_content& content);
[[nodiscard]] std::string left_out_section(const report_content& content);
[[nodiscard]] std::string pictures_section(const report_content& content);
[[nodiscard]] std::string inputs_section(const report_content& content);

}  // namespace ocpan
