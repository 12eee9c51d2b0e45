#include <nlohmann/json.hpp>

#include "tools/evaluate/evaluate_run.h"

namespace ocpan {
namespace {

using nlohmann::ordered_json;

ordered_json json_of(const residual_spread& spread) {
  return {{"count", spread.count},
          {"mean", spread.mean},
          {"rms", spread.rms},
          {"median", spread.median},
          {"percentile_95", spread.percentile_95},
          {"maximum", spread.maximum}};
}

ordered_json json_of(const residual_summary& residuals) {
  return {{"pixels", json_of(residuals.pixels)}, {"milliradians", json_of(residuals.milliradians)}};
}

ordered_json counted_from_1(const std::vector<std::size_t>& cameras) {
  ordered_json numbers = ordered_json::array();
  for (const std::size_t camera : cameras) numbers.push_back(camera + 1);
  return numbers;
}

ordered_json json_of(const evaluated_camera& camera, std::size_t index) {
  ordered_json json = {{"camera", index + 1},
                       {"verdict", word_of(camera.judged)},
                       {"boards", camera.boards},
                       {"boards_left_out", camera.left_out},
                       {"residuals", json_of(camera.residuals)},
                       {"alone_rms_pixels", camera.alone_rms_pixels},
                       {"by_angle", ordered_json::array()}};
  for (const angle_bin& ring : camera.by_angle) {
    json["by_angle"].push_back({{"from_degrees", ring.from_degrees},
                                {"to_degrees", ring.to_degrees},
                                {"residuals", json_of(ring.residuals)}});
  }
  return json;
}

ordered_json json_of(const relative_pose& pose) {
  return {{"degrees", pose.degrees}, {"distance", pose.distance}};
}

ordered_json json_of(const evaluated_pair& pair) {
  ordered_json json = {{"cameras", counted_from_1({pair.first, pair.second})},
                       {"verdict", word_of(pair.judged)},
                       {"boards", pair.boards},
                       {"residuals", json_of(pair.residuals)},
                       {"calibrated", json_of(pair.calibrated)},
                       {"own", nullptr}};
  if (!pair.own) return json;
  json["own"] = json_of(pair.own->own);
  json["own"]["turn_degrees"] = pair.own->turn_degrees;
  json["own"]["turn_deviation_degrees"] = pair.own->turn_deviation_degrees;
  json["own"]["shift"] = pair.own->shift;
  json["own"]["shift_deviation"] = pair.own->shift_deviation;
  json["own"]["rms_pixels"] = pair.own->rms_pixels;
  return json;
}

const char* name_of(board_fate fate) {
  switch (fate) {
    case board_fate::used:
      return "used";
    case board_fate::no_pose:
      return "no_pose";
    case board_fate::behind_camera:
      return "behind_camera";
    case board_fate::flipped:
      return "flipped";
    case board_fate::torn_frame:
      return "torn_frame";
    case board_fate::bad_corners:
      return "bad_corners";
  }
  return "";
}

ordered_json json_of(const evaluated_board& board, const rig_pictures& pictures) {
  std::vector<std::size_t> cameras;
  ordered_json views = ordered_json::array();
  for (const evaluated_view& view : board.views) {
    cameras.push_back(view.camera);
    views.push_back({{"camera", view.camera + 1},
                     {"picture", picture_names(pictures, board.set, board.frame, {view.camera})},
                     {"rms_pixels", view.rms_pixels},
                     {"alone_rms_pixels", view.alone_rms_pixels}});
  }
  return {{"set", pictures.sets[board.set].name},
          {"frame", board.frame},
          {"fate", name_of(board.fate)},
          {"why", why_left_out(board)},
          {"suspects", counted_from_1(board.suspects)},
          {"rms_pixels", board.rms_pixels},
          {"views", views}};
}

ordered_json json_of(const pair_loop& loop) {
  return {{"cameras", counted_from_1(loop.cameras)},
          {"verdict", word_of(loop.judged)},
          {"turn_degrees", loop.turn_degrees},
          {"turn_deviation_degrees", loop.turn_deviation_degrees},
          {"shift", loop.shift},
          {"shift_deviation", loop.shift_deviation}};
}

ordered_json json_of(const rig_uncertainty& uncertainty) {
  ordered_json json = {{"corner_pixels", uncertainty.corner_pixels},
                       {"cameras", ordered_json::array()},
                       {"pairs", ordered_json::array()}};
  for (std::size_t c = 0; c < uncertainty.cameras.size(); ++c) {
    json["cameras"].push_back({{"camera", c + 1},
                               {"mapping_pixels", uncertainty.cameras[c].mapping_pixels},
                               {"worst_pixels", uncertainty.cameras[c].worst_pixels}});
  }
  for (const pair_uncertainty& pair : uncertainty.pairs) {
    ordered_json& seam = json["pairs"].emplace_back();
    seam["cameras"] = counted_from_1({pair.first, pair.second});
    seam["seam_degrees"] = nullptr;
    if (pair.seam_degrees) seam["seam_degrees"] = *pair.seam_degrees;
  }
  return json;
}

ordered_json json_of(const hold_out& tested) {
  ordered_json json = {{"parts", tested.parts},
                       {"refined", tested.refined},
                       {"residuals", json_of(tested.residuals)},
                       {"boards_left_out", tested.left_out},
                       {"cameras", ordered_json::array()},
                       {"pairs", ordered_json::array()}};
  for (std::size_t c = 0; c < tested.by_camera.size(); ++c) {
    json["cameras"].push_back({{"camera", c + 1},
                               {"residuals", json_of(tested.cameras[c])},
                               {"scatter_pixels", tested.by_camera[c].mapping_pixels}});
  }
  for (const pair_scatter& pair : tested.by_pair) {
    json["pairs"].push_back({{"cameras", counted_from_1({pair.first, pair.second})},
                             {"scatter_degrees", pair.turn_degrees},
                             {"scatter_shift", pair.shift}});
  }
  return json;
}

}  // namespace

std::string evaluation_json(const evaluate_story& story) {
  const evaluation& found = story.found;
  ordered_json json = {{"command", "evaluate"},
                       {"exit_code", exit_code_of(found.judged)},
                       {"verdict", word_of(found.judged)},
                       {"calibration", story.options.calibration},
                       {"configuration", story.options.configuration},
                       {"findings", ordered_json::array()},
                       {"residuals", json_of(found.residuals)},
                       {"cameras", ordered_json::array()},
                       {"pairs", ordered_json::array()},
                       {"loops", ordered_json::array()},
                       {"uncertainty", nullptr},
                       {"hold_out", nullptr},
                       {"boards", ordered_json::array()}};
  for (const evaluation_finding& finding : found.findings) {
    json["findings"].push_back({{"verdict", word_of(finding.judged)}, {"text", finding.text}});
  }
  for (std::size_t c = 0; c < found.cameras.size(); ++c) {
    json["cameras"].push_back(json_of(found.cameras[c], c));
  }
  for (const evaluated_pair& pair : found.pairs) json["pairs"].push_back(json_of(pair));
  for (const pair_loop& loop : found.loops) json["loops"].push_back(json_of(loop));
  if (story.uncertainty) json["uncertainty"] = json_of(*story.uncertainty);
  if (story.tested) json["hold_out"] = json_of(*story.tested);
  for (const evaluated_board& board : found.boards) {
    json["boards"].push_back(json_of(board, story.input.pictures));
  }
  // A name that isn't UTF-8 must not lose the numbers.
  return json.dump(2, ' ', false, ordered_json::error_handler_t::replace);
}

}  // namespace ocpan
