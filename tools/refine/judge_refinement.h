#pragma once

#include "tools/refine/refine_story.h"

namespace ocpan {

// Judges a told refinement: unusable, with its faults, where its pictures contradict one
// another or the result isn't sure to be as good as what went in; doubtful where it has
// warnings. A calibration that was kept can only be unusable for its pictures.
void judge_refinement(refine_story& story);

}  // namespace ocpan
