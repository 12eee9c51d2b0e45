#include "tools/evaluate/judge_uncertainty.h"

namespace ocpan {

void judge_uncertainty(evaluation& result, const rig_uncertainty& uncertainty) {
  const auto find = [&](verdict judged, const std::string& text) {
    if (judged == verdict::good) return;
    add_finding(result.findings, judged, text);
    result.judged = worse_of(result.judged, judged);
  };
  for (std::size_t c = 0; c < uncertainty.cameras.size(); ++c) {
    const double pixels = uncertainty.cameras[c].mapping_pixels;
    find(mapping_uncertainty_limits.of(pixels),
         text_of("Camera ", c + 1, ": its boards pin its picture down to ", pixels,
                 " pixels only; shoot more of them, nearer the rim and more tilted."));
  }
  for (const pair_uncertainty& pair : uncertainty.pairs) {
    if (!pair.seam_degrees) continue;
    find(seam_uncertainty_limits.of(*pair.seam_degrees),
         text_of("Cameras ", pair.first + 1, " and ", pair.second + 1,
                 ": their boards pin the seam down to ", *pair.seam_degrees,
                 " degrees only; shoot more boards that both see, at the rims where they meet."));
  }
}

}  // namespace ocpan
