#include <nlohmann/json.hpp>

#include "src/result_codes.h"
#include "tools/check/check_report.h"

namespace ocpan {
namespace {

using nlohmann::ordered_json;

ordered_json cameras_json(const rig_check& check) {
  ordered_json cameras = ordered_json::array();
  for (std::size_t camera = 0; camera < check.pictures.size(); ++camera) {
    const camera_pictures& of = check.pictures[camera];
    const camera_coverage& coverage = check.coverage[camera];
    cameras.push_back({{"camera", camera + 1},
                       {"found", of.found},
                       {"not_found", of.not_found},
                       {"unreadable", of.unreadable},
                       {"wrong_size", of.wrong_size},
                       {"cut_short", of.cut_short},
                       {"boards", check.links.shared[camera][camera]},
                       {"steps_from_first", check.links.steps[camera]},
                       {"coverage", coverage.share},
                       {"farthest_degrees", coverage.farthest_degrees},
                       {"corners_by_cell", coverage.corners}});
  }
  return cameras;
}

}  // namespace

std::string check_json(const rig_check& check) {
  const verdict worst = verdict_of(check.findings);
  ordered_json json;
  json["command"] = "check";
  json["exit_code"] = exit_code_of(worst);
  json["verdict"] = word_of(worst);
  json["configuration"] = check.configuration;
  json["library_result"] = map_result(check.result);
  json["library_said"] = check.library_said;
  json["findings"] = ordered_json::array();
  for (const finding& found : check.findings) {
    json["findings"].push_back(
        {{"weight", found.weight == verdict::good ? "hint" : word_of(found.weight)},
         {"where", found.where},
         {"what", found.what},
         {"mend", found.mend}});
  }
  if (check.pictures_seen) {
    json["cameras"] = cameras_json(check);
    json["shared_boards"] = check.links.shared;
    json["parts"] = ordered_json::array();
    for (const auto& part : check.links.parts) {
      ordered_json cameras = ordered_json::array();
      for (const std::size_t camera : part) cameras.push_back(camera + 1);
      json["parts"].push_back(cameras);
    }
    json["repeated_frames"] = ordered_json::array();
    for (const repeated_frame& repeat : check.repeated) {
      json["repeated_frames"].push_back({{"set", check.set_names[repeat.set]},
                                         {"frame", repeat.frame},
                                         {"as_frame", repeat.earlier}});
    }
  }
  // A name that isn't UTF-8 must not lose the rest.
  return json.dump(2, ' ', false, ordered_json::error_handler_t::replace);
}

}  // namespace ocpan
