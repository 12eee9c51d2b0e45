#pragma once

#include <string>

#include "tests/tools/evaluate/evaluated_rig.h"
#include "tools/report/report_content.h"

namespace ocpan::testing {

// The report of a simulated rig's true calibration, its pictures by name only. Names bear
// what markup would trip over.
inline report_content make_report(const evaluated_rig& from) {
  report_content content;
  content.calibration = "rig <1> & \"2\".cal";
  content.input.models = from.truth();
  content.input.details = from.details();
  content.input.pictures = pictures_of(from);
  content.input.pictures.configuration = "rig.txt";
  for (cal_frame_set& set : content.input.pictures.sets) set.name = "<i>" + set.name + "&\"";
  content.input.found = found_of(from);
  content.input.boards = boards_of(from);
  content.quality =
      evaluate_calibration(content.input.models, content.input.details, content.input.boards);
  content.every_picture = every_picture(content.input);
  content.inputs = {{"calibration", "a\xE9<b>.cal", 12, "2024-05-01 12:30:05", "00ff"},
                    {"picture", "'p'.png", 0, "", ""}};
  content.versions = "oc_pan 1 & <2>\nother 2";
  content.made_at = "2024-05-01 12:30:06";
  if (!content.every_picture.empty()) content.thumbnails = {{0, "\xFF\xD8\xFF\xD9", 4, 3}};
  return content;
}

}  // namespace ocpan::testing
