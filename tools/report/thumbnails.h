#pragma once

#include <vector>

#include "tools/report/report_content.h"

namespace ocpan {

// Small pictures with the corners found, no more than fit a page: of each camera first those
// without a board, then of boards left out, then with the largest residuals. Debug pictures
// of the run serve where they lie in the working folder and show the same picture; the others
// are drawn. A picture that can't be read has none.
[[nodiscard]] std::vector<thumbnail> make_thumbnails(const rig_pictures& pictures,
                                                     const std::vector<rig_picture>& every_picture,
                                                     const evaluation& quality);

}  // namespace ocpan
