#include "tools/refine/refine_story.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <sstream>

#include "tools/adjust/lens_reach.h"
#include "tools/adjust/uncertainty.h"
#include "tools/evaluate/residual_spread.h"

namespace ocpan {
namespace {

constexpr std::size_t few_boards = 5;      // for the ten numbers of a lens
constexpr double large_uncertainty = 1;    // pixels, RMS over the picture
constexpr double bad_corner_weight = 0.3;  // under which a corner is told of
constexpr int grid_points = 21;            // along each side of the picture

// Chooses views: a board's index and the view's within it.
using view_choice = std::function<bool(std::size_t board, std::size_t view)>;

residual_spread spread_over(const refine_story& story, const adjusted_rig& fit,
                            const view_choice& chosen) {
  std::vector<double> lengths;
  for (std::size_t b = 0; b < fit.boards.size(); ++b) {
    for (std::size_t v = 0; v < fit.boards[b].residuals.size(); ++v) {
      if (story.after.boards[b].set_aside[v] || !chosen(b, v)) continue;
      for (const auto& residual : fit.boards[b].residuals[v].colwise()) {
        lengths.push_back(residual.norm());
      }
    }
  }
  return spread_of(lengths);
}

residual_change change_over(const refine_story& story, const view_choice& chosen) {
  return {spread_over(story, story.before, chosen), spread_over(story, story.after, chosen)};
}

bool saw(const seen_board& board, std::size_t camera) {
  return std::find(board.cameras.begin(), board.cameras.end(), camera) != board.cameras.end();
}

double uncertainty_over_picture(const adjusted_rig& fit, const camera_details& details,
                                std::size_t camera) {
  Eigen::Matrix2Xd pixels(2, grid_points * grid_points);
  for (int k = 0; k < pixels.cols(); ++k) {
    pixels.col(k) << (details.width - 1.0) * (k % grid_points) / (grid_points - 1),
        (details.height - 1.0) * (k / grid_points) / (grid_points - 1);
  }
  std::vector<double> seen;
  for (const double deviation : pixel_uncertainty(fit, details, camera, pixels)) {
    if (std::isfinite(deviation)) seen.push_back(deviation);
  }
  return spread_of(seen).rms;
}

// Which cameras boards that count link to camera 0, be it by way of others.
std::vector<bool> linked_cameras(const refine_story& story) {
  std::vector<bool> linked(story.input.models.size(), false);
  linked[0] = true;
  for (std::size_t pass = 1; pass < linked.size(); ++pass) {
    for (std::size_t b = 0; b < story.input.boards.size(); ++b) {
      std::vector<std::size_t> cameras;
      for (std::size_t v = 0; v < story.input.boards[b].cameras.size(); ++v) {
        if (story.after.boards[b].set_aside[v]) continue;
        cameras.push_back(story.input.boards[b].cameras[v]);
      }
      const bool any = std::any_of(cameras.begin(), cameras.end(),
                                   [&](std::size_t camera) { return linked[camera]; });
      for (const std::size_t camera : cameras) linked[camera] = linked[camera] || any;
    }
  }
  return linked;
}

camera_change camera_change_of(const refine_story& story, std::size_t camera) {
  camera_change change;
  const std::vector<seen_board>& boards = story.input.boards;
  change.residuals = change_over(
      story, [&](std::size_t b, std::size_t v) { return boards[b].cameras[v] == camera; });
  for (std::size_t b = 0; b < boards.size(); ++b) {
    for (std::size_t v = 0; v < boards[b].cameras.size(); ++v) {
      if (boards[b].cameras[v] == camera && !story.after.boards[b].set_aside[v]) ++change.boards;
    }
  }
  change.picture_uncertainty =
      uncertainty_over_picture(story.after, story.input.details[camera], camera);
  change.linked = linked_cameras(story)[camera];
  if (!change.linked) {
    change.turn_uncertainty = std::nan("");
  } else if (camera > 0) {
    change.turn_uncertainty = turn_uncertainty(story.after, story.input.details, camera) * 180 / pi;
  }
  return change;
}

void append_pairs(refine_story& story) {
  const std::vector<seen_board>& boards = story.input.boards;
  for (std::size_t first = 0; first < story.input.models.size(); ++first) {
    for (std::size_t second = first + 1; second < story.input.models.size(); ++second) {
      const auto shared = [&](const seen_board& board) {
        return saw(board, first) && saw(board, second);
      };
      pair_change pair{first, second, {}, 0, 0};
      pair.boards = static_cast<std::size_t>(std::count_if(boards.begin(), boards.end(), shared));
      if (pair.boards == 0) continue;
      pair.residuals = change_over(story, [&](std::size_t b, std::size_t v) {
        const std::size_t camera = boards[b].cameras[v];
        return shared(boards[b]) && (camera == first || camera == second);
      });
      for (std::size_t b = 0; b < boards.size(); ++b) {
        for (std::size_t v = 0; shared(boards[b]) && v < boards[b].cameras.size(); ++v) {
          const std::size_t camera = boards[b].cameras[v];
          const bool of_pair = camera == first || camera == second;
          pair.set_aside += of_pair && story.after.boards[b].set_aside[v] ? 1 : 0;
        }
      }
      story.pairs.push_back(pair);
    }
  }
}

void append_misfits(refine_story& story) {
  for (std::size_t b = 0; b < story.input.boards.size(); ++b) {
    const seen_board& board = story.input.boards[b];
    const board_fit& fit = story.after.boards[b];
    for (std::size_t v = 0; v < board.cameras.size(); ++v) {
      const std::size_t camera = board.cameras[v];
      const std::string picture =
          picture_names(story.input.pictures, board.set, board.frame, {camera});
      std::vector<double> lengths;
      for (const auto& residual : fit.residuals[v].colwise()) lengths.push_back(residual.norm());
      if (fit.set_aside[v]) {
        story.views.push_back({b, camera, picture, -1, spread_of(lengths).median});
        continue;
      }
      for (std::size_t k = 0; k < lengths.size(); ++k) {
        if (fit.weights[v][static_cast<Eigen::Index>(k)] >= bad_corner_weight) continue;
        story.corners.push_back({b, camera, picture, static_cast<int>(k), lengths[k]});
      }
    }
  }
  std::stable_sort(story.corners.begin(), story.corners.end(),
                   [](const misfit& a, const misfit& b) { return a.pixels > b.pixels; });
}

// Whether a lens has a ray for the middles of the picture's sides.
bool covers_picture(const model_map& model, const camera_details& details) {
  const double right = details.width - 1.0, bottom = details.height - 1.0;
  return lens_reaches(model, {0, bottom / 2}) && lens_reaches(model, {right, bottom / 2}) &&
         lens_reaches(model, {right / 2, 0}) && lens_reaches(model, {right / 2, bottom});
}

void append_warnings(refine_story& story) {
  const auto warn = [&](const auto&... items) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(3);
    (text << ... << items);
    story.warnings.push_back(text.str());
  };
  const char* advice = story.options.tie > 0 ? "shoot more boards all over its picture"
                                             : "shoot more boards all over its picture, or hold "
                                               "it near cameras of its kind with --tie 1";
  for (std::size_t c = 0; c < story.cameras.size(); ++c) {
    const camera_change& camera = story.cameras[c];
    if (camera.boards == 0) {
      warn("camera ", c + 1, " saw no board that fits and stays about as it was; ", advice);
    } else if (camera.boards < few_boards) {
      warn("camera ", c + 1, " saw only ", camera.boards,
           " boards, too few for a lens of its own; ", advice);
    } else if (!(camera.picture_uncertainty <= large_uncertainty)) {
      warn("the boards of camera ", c + 1, " leave its lens uncertain by ",
           camera.picture_uncertainty, " pixels over the picture; ", advice);
    }
    if (!camera.linked) {
      warn("no board links camera ", c + 1, " to camera 1; its place stays as it was; shoot ",
           "boards that it sees together with another camera");
    }
    if (covers_picture(story.input.models[c], story.input.details[c]) &&
        !covers_picture(story.after.models[c], story.input.details[c])) {
      warn("the refined lens of camera ", c + 1,
           " bends back before the sides of its picture, where no board was; ", advice);
    }
  }
}

}  // namespace

void tell_changes(refine_story& story) {
  story.all = change_over(story, [](std::size_t, std::size_t) { return true; });
  for (std::size_t c = 0; c < story.input.models.size(); ++c) {
    story.cameras.push_back(camera_change_of(story, c));
  }
  append_pairs(story);
  append_misfits(story);
  append_warnings(story);
}

}  // namespace ocpan
