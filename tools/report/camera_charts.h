#pragma once

#include <string>
#include <vector>

#include "tools/report/report_content.h"

namespace ocpan {

// Charts of one camera: a figure each, with heading and explanation.

// How many boards covered each part of the picture.
[[nodiscard]] std::string coverage_chart(const report_content& content, std::size_t camera);
// The residuals as magnified lines where they occurred.
[[nodiscard]] std::string residual_vectors_chart(const report_content& content, std::size_t camera);
// How long the residuals are by the angle from the camera's axis.
[[nodiscard]] std::string residual_by_angle_chart(const report_content& content,
                                                  std::size_t camera);
// How many corners have residuals of which length.
[[nodiscard]] std::string residual_histogram_chart(const report_content& content,
                                                   std::size_t camera);

// The corners of a camera in the boards that take part.
[[nodiscard]] std::vector<corner_residual> used_corners(const report_content& content,
                                                        std::size_t camera);

}  // namespace ocpan
