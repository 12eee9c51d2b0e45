#pragma once

#include <optional>

#include "tools/evaluate/calibrated_pictures.h"
#include "tools/evaluate/evaluation.h"
#include "tools/evaluate/rig_uncertainty.h"

namespace ocpan {

struct pictures_evaluation {
  evaluation found;  // the uncertainty is part of its verdict
  // None without a used board, and where the calibration is unusable without it: what boards
  // pin down shows only near a calibration that explains them.
  std::optional<rig_uncertainty> uncertainty;
};

// The one verdict on a calibration and its pictures, whichever command shows it.
[[nodiscard]] pictures_evaluation evaluate_pictures(const calibrated_pictures& input);

// Why the uncertainty of an evaluation with used boards may be left out.
inline constexpr const char* why_no_uncertainty =
    "left out, because the calibration is unusable already, and what boards pin down shows only "
    "near a calibration that explains them";

}  // namespace ocpan
