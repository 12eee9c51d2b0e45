#include "tools/evaluate/evaluate_pictures.h"

#include <vector>

#include "tools/evaluate/judge_uncertainty.h"

namespace ocpan {

pictures_evaluation evaluate_pictures(const calibrated_pictures& input) {
  pictures_evaluation result;
  result.found = evaluate_calibration(input.models, input.details, input.boards);
  const std::vector<seen_board> boards = used_boards(result.found, input.boards);
  if (boards.empty() || result.found.judged == verdict::unusable) return result;
  result.uncertainty = uncertainty_of(measure_rig(input.models, input.details, boards, {}),
                                      input.details, result.found.pairs);
  judge_uncertainty(result.found, *result.uncertainty);
  return result;
}

}  // namespace ocpan
