#include <algorithm>
#include <iomanip>
#include <sstream>

#include <nlohmann/json.hpp>

#include "platform/native_path.h"
#include "src/console.h"
#include "tools/refine/refine_story.h"

namespace ocpan {
namespace {

constexpr std::size_t corners_named = 10;

std::string fixed(double value, int digits) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << std::fixed << std::setprecision(digits) << value;
  return text.str();
}

std::string right(const std::string& text, std::size_t width) {
  return std::string(text.size() < width ? width - text.size() : 0, ' ') + text;
}

std::string left(const std::string& text, std::size_t width) {
  return text + std::string(text.size() < width ? width - text.size() : 0, ' ');
}

void print_change(const std::string& name, std::size_t boards, const residual_change& change) {
  print_line("  ", left(name, 18), right(std::to_string(boards), 6),
             right(std::to_string(change.after.count), 9), right(fixed(change.before.mean, 4), 10),
             right(fixed(change.after.mean, 4), 9), right(fixed(change.before.rms, 4), 10),
             right(fixed(change.after.rms, 4), 9));
}

std::string camera_name(std::size_t camera) { return "camera " + std::to_string(camera + 1); }

std::string pair_name(const pair_change& pair) {
  return "cameras " + std::to_string(pair.first + 1) + " and " + std::to_string(pair.second + 1);
}

void print_residuals(const refine_story& story) {
  print_line("Residuals in pixels              mean               RMS");
  print_line("                    boards  corners    before    after    before    after");
  for (std::size_t c = 0; c < story.cameras.size(); ++c) {
    print_change(camera_name(c), story.cameras[c].boards, story.cameras[c].residuals);
  }
  for (const pair_change& pair : story.pairs) {
    print_change(pair_name(pair), pair.boards, pair.residuals);
  }
  print_change("all", story.input.boards.size(), story.all);
}

void print_uncertainty(const refine_story& story) {
  print_line("What the boards leave uncertain");
  for (std::size_t c = 0; c < story.cameras.size(); ++c) {
    const camera_change& camera = story.cameras[c];
    print_line("  ", left(camera_name(c), 18), "lens ", fixed(camera.picture_uncertainty, 3),
               " pixels over the picture",
               c == 0 ? ""
               : camera.linked
                   ? ", turn against camera 1 " + fixed(camera.turn_uncertainty, 4) + " degrees"
                   : ", turn against camera 1 unknown: no board links them");
  }
}

void print_bends(const refine_story& story) {
  const std::vector<board_bend>& bends = story.after.bends;
  for (std::size_t p = 0; p < bends.size(); ++p) {
    if (bends[p].along_width == 0 && bends[p].along_height == 0) continue;
    const auto first = std::find(story.after.physical.begin(), story.after.physical.end(), p);
    const std::size_t board = static_cast<std::size_t>(first - story.after.physical.begin());
    const cal_frame_set& set = story.input.pictures.sets[story.input.boards[board].set];
    print_line("The board of ", set.board_width, " by ", set.board_height,
               " corners isn't flat: its middle stands out by ", fixed(bends[p].along_width, 3),
               " along its width and ", fixed(bends[p].along_height, 3),
               " along its height (in units of board_scale)");
  }
}

void print_misfits(const refine_story& story) {
  for (const misfit& view : story.views) {
    print_line("Set aside: ", view.picture, ", which doesn't fit by ", fixed(view.pixels, 1),
               " pixels");
  }
  const std::size_t named = std::min(corners_named, story.corners.size());
  for (std::size_t i = 0; i < named; ++i) {
    print_line("Bad corner: ", story.corners[i].picture, ", corner ", story.corners[i].corner + 1,
               ", off by ", fixed(story.corners[i].pixels, 2), " pixels");
  }
  if (story.corners.size() > named) {
    print_line("and ", story.corners.size() - named, " more bad corners");
  }
}

nlohmann::ordered_json spread_json(const residual_spread& spread) {
  return {{"corners", spread.count},
          {"mean", spread.mean},
          {"rms", spread.rms},
          {"median", spread.median},
          {"maximum", spread.maximum}};
}

nlohmann::ordered_json change_json(const residual_change& change) {
  return {{"before", spread_json(change.before)}, {"after", spread_json(change.after)}};
}

nlohmann::ordered_json misfit_json(const misfit& bad) {
  nlohmann::ordered_json json = {
      {"camera", bad.camera + 1}, {"picture", bad.picture}, {"pixels", bad.pixels}};
  if (bad.corner >= 0) json["corner"] = bad.corner + 1;
  return json;
}

nlohmann::ordered_json misfits_json(const std::vector<misfit>& misfits) {
  nlohmann::ordered_json json = nlohmann::ordered_json::array();
  for (const misfit& bad : misfits) json.push_back(misfit_json(bad));
  return json;
}

}  // namespace

void print_refinement(const refine_story& story) {
  print_line("Refined ", story.cameras.size(), " cameras on ", story.input.boards.size(),
             " boards in ", story.after.iterations, " steps; the corners scatter by ",
             fixed(story.after.sigma, 3), " pixels");
  if (story.after.kept) {
    print_line("The calibration stays as it is: these boards tell of nothing better");
  }
  print_bends(story);
  print_line("");
  print_residuals(story);
  print_line("");
  print_uncertainty(story);
  print_misfits(story);
  print_line("");
  if (story.judged == verdict::unusable) {
    print_line("Nothing is written");
  } else {
    print_line("Calibration written: ", native_path(story.options.out));
  }
}

std::string refinement_json(const refine_story& story) {
  nlohmann::ordered_json json;
  json["command"] = "refine";
  json["calibration"] = story.options.calibration;
  json["configuration"] = story.options.configuration;
  json["verdict"] = word_of(story.judged);
  json["refined"] = nullptr;
  if (story.judged != verdict::unusable) json["refined"] = story.options.out;
  json["boards"] = story.input.boards.size();
  json["steps"] = story.after.iterations;
  json["converged"] = story.after.converged;
  json["kept"] = story.after.kept;
  json["corner_sigma"] = story.after.sigma;
  json["bends"] = nlohmann::ordered_json::array();
  for (const board_bend& bend : story.after.bends) {
    json["bends"].push_back(
        {{"along_width", bend.along_width}, {"along_height", bend.along_height}});
  }
  json["residuals"] = change_json(story.all);
  json["cameras"] = nlohmann::ordered_json::array();
  for (const camera_change& camera : story.cameras) {
    json["cameras"].push_back({{"boards", camera.boards},
                               {"residuals", change_json(camera.residuals)},
                               {"picture_uncertainty_pixels", camera.picture_uncertainty},
                               {"turn_uncertainty_degrees", camera.turn_uncertainty}});
  }
  json["pairs"] = nlohmann::ordered_json::array();
  for (const pair_change& pair : story.pairs) {
    json["pairs"].push_back({{"cameras", {pair.first + 1, pair.second + 1}},
                             {"boards", pair.boards},
                             {"residuals", change_json(pair.residuals)}});
  }
  json["set_aside"] = misfits_json(story.views);
  json["bad_corners"] = misfits_json(story.corners);
  json["warnings"] = story.warnings;
  json["faults"] = story.faults;
  return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace ocpan
