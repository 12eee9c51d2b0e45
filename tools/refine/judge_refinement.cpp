#include "tools/refine/judge_refinement.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "tools/adjust/robust_loss.h"

namespace ocpan {
namespace {

constexpr double most_set_aside = 0.25;         // of a pair's views
constexpr double most_picture_uncertainty = 4;  // pixels, RMS over the picture
constexpr double most_turn_uncertainty = 0.5;   // degrees
constexpr double most_loss = 1.01;              // of the loss before

void blame(refine_story& story, const auto&... items) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text.precision(3);
  (text << ... << items);
  story.faults.push_back(text.str());
}

void judge_pairs(refine_story& story) {
  for (const pair_change& pair : story.pairs) {
    const std::size_t views = 2 * pair.boards;
    if (static_cast<double>(pair.set_aside) <= most_set_aside * static_cast<double>(views)) {
      continue;
    }
    blame(story, "the pictures of cameras ", pair.first + 1, " and ", pair.second + 1,
          " contradict one another: ", pair.set_aside, " of ", views,
          " don't fit; see whether a series is shuffled or a camera was moved");
  }
}

void judge_uncertainties(refine_story& story) {
  for (std::size_t c = 0; c < story.cameras.size(); ++c) {
    const camera_change& camera = story.cameras[c];
    if (camera.boards == 0) continue;  // it stays as it was
    if (!(camera.picture_uncertainty <= most_picture_uncertainty)) {
      blame(story, "the lens of camera ", c + 1, " would be uncertain by ",
            camera.picture_uncertainty, " pixels over the picture; shoot more boards");
    }
    if (camera.linked && !(camera.turn_uncertainty <= most_turn_uncertainty)) {
      blame(story, "the turn of camera ", c + 1, " against camera 1 would be uncertain by ",
            camera.turn_uncertainty, " degrees; shoot more boards that several cameras see");
    }
  }
}

// The robust loss of all corners, those of views that are set aside with them.
double loss_over_all(const adjusted_rig& fit, double sigma) {
  double loss = 0;
  for (const board_fit& board : fit.boards) {
    for (const Eigen::Matrix2Xd& residuals : board.residuals) {
      for (const auto& residual : residuals.colwise()) {
        loss += loss_of(residual.squaredNorm() / (sigma * sigma)).value;
      }
    }
  }
  return loss;
}

void judge_fit(refine_story& story) {
  const double sigma = std::min(story.before.sigma, story.after.sigma);
  if (loss_over_all(story.after, sigma) <= most_loss * loss_over_all(story.before, sigma)) return;
  blame(story,
        "the pictures fit the calibration better as it was; see whether a series is "
        "shuffled");
}

}  // namespace

void judge_refinement(refine_story& story) {
  judge_pairs(story);
  if (!story.after.kept) {
    judge_uncertainties(story);
    judge_fit(story);
    if (!story.after.converged) {
      blame(story,
            "the refinement was still falling when it was ended; see with oc_pan evaluate "
            "which pictures don't fit");
    }
  }
  story.judged = !story.faults.empty()     ? verdict::unusable
                 : !story.warnings.empty() ? verdict::doubtful
                                           : verdict::good;
}

}  // namespace ocpan
