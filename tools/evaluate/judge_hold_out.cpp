#include "tools/evaluate/judge_hold_out.h"

namespace ocpan {
namespace {

constexpr const char* more_boards =
    "; shoot more boards there, nearer the rim and more tilted, and calibrate anew";

void find(evaluation& result, verdict judged, const std::string& text) {
  if (judged == verdict::good) return;
  add_finding(result.findings, judged, text);
  result.judged = worse_of(result.judged, judged);
}

}  // namespace

void judge_hold_out(evaluation& result, const hold_out& tested) {
  const double rms = tested.residuals.pixels.rms;
  find(result, rms_limits.of(rms),
       text_of("Frames that a calibration didn't know are ", rms,
               " pixels off (RMS): the frames are too few or some of them are wrong", more_boards,
               "."));
  for (std::size_t c = 0; c < tested.by_camera.size(); ++c) {
    const double pixels = tested.by_camera[c].mapping_pixels;
    find(result, scatter_pixel_limits.of(pixels),
         text_of("Camera ", c + 1, ": without some of the frames the calibration sees ", pixels,
                 " pixels elsewhere, over the picture", more_boards, "."));
  }
  for (const pair_scatter& pair : tested.by_pair) {
    find(result, scatter_turn_limits.of(pair.turn_degrees),
         text_of("Cameras ", pair.first + 1, " and ", pair.second + 1,
                 ": without some of the frames the calibration turns them by ", pair.turn_degrees,
                 " degrees; shoot more boards that both see, and calibrate anew."));
  }
}

}  // namespace ocpan
