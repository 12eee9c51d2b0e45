#include "tools/verify/verify_report.h"

#include <nlohmann/json.hpp>

#include "tools/verify/judge_tables.h"

namespace ocpan {
namespace {

using json_object = nlohmann::ordered_json;

constexpr double sphere = 12.566370614359172;  // steradians

std::string percent(double solid_angle) {
  return rounded_text(100 * solid_angle / sphere, 2) + " %";
}

std::string camera_line(const verified_tables& result, std::size_t camera) {
  const verified_camera& facts = result.cameras[camera];
  std::string line = camera_names({camera}) + ": ";
  if (!facts.table) {
    line += "no table";
  } else {
    const table_comparison& table = *facts.table;
    line += table.off_positions == 0 ? "positions fit" : "positions don't fit";
    line += table.outside_mask + table.other_weights == 0 ? ", weights fit" : ", weights don't fit";
    line += ", covers " + percent(result.coverage.of_cameras[camera]) + " of the sphere";
  }
  if (facts.polygon) {
    const polygon_comparison& polygon = *facts.polygon;
    const bool good = polygon.is_outline && polygon.holds_middle && polygon.outside <= 0;
    line += good ? ", polygon encloses its weights" : ", polygon doesn't enclose its weights";
  }
  return line + "\n";
}

std::string overlap_line(const camera_overlap& overlap) {
  return camera_names({overlap.first, overlap.second}) + " overlap by " +
         rounded_text(overlap.width_degrees, 1) + " degrees, at the narrowest " +
         rounded_text(overlap.narrowest_degrees, 1) + "\n";
}

json_object camera_json(const verified_tables& result, std::size_t camera) {
  const verified_camera& facts = result.cameras[camera];
  json_object json = {{"camera", camera},
                      {"solid_angle", result.coverage.of_cameras[camera]},
                      {"table", nullptr},
                      {"polygon", nullptr}};
  if (facts.table) {
    json["table"] = {{"filled_slots", facts.table->filled_slots},
                     {"off_positions", facts.table->off_positions},
                     {"worst_pixels", facts.table->worst_pixels},
                     {"outside_mask", facts.table->outside_mask},
                     {"other_weights", facts.table->other_weights}};
  }
  if (facts.polygon) {
    json["polygon"] = {{"is_outline", facts.polygon->is_outline},
                       {"holds_middle", facts.polygon->holds_middle},
                       {"outside", facts.polygon->outside},
                       {"farthest_degrees", facts.polygon->farthest_degrees}};
  }
  return json;
}

}  // namespace

std::string verify_text(const verified_tables& result, bool brief) {
  std::string text;
  if (!brief) {
    text += "radius " + rounded_text(result.radius, 3) + ", face " +
            std::to_string(result.face_size) +
            (result.has_manifest ? ", by the manifest\n" : ", no manifest\n");
    for (std::size_t camera = 0; camera < result.cameras.size(); ++camera) {
      text += camera_line(result, camera);
    }
    for (const camera_overlap& overlap : result.overlaps) text += overlap_line(overlap);
    text += "together: " + percent(result.coverage.together) + " of the sphere, " +
            percent(result.coverage.unseen) + " are in no picture\n";
  }
  for (const verify_finding& finding : result.findings) {
    text += std::string(word_of(finding.judged)) + ": " + finding.subject + " " + finding.reason +
            "; " + finding.advice + "\n";
  }
  return text + "verdict: " + word_of(result.judged) + "\n";
}

std::string verify_json(const verified_tables& result) {
  json_object json = {{"command", "verify"},
                      {"verdict", word_of(result.judged)},
                      {"exit_code", exit_code_of(result.judged)},
                      {"radius", result.radius},
                      {"face_size", result.face_size},
                      {"project_file", result.project_file},
                      {"manifest", result.has_manifest}};
  json["findings"] = json_object::array();
  for (const verify_finding& finding : result.findings) {
    json["findings"].push_back({{"verdict", word_of(finding.judged)},
                                {"subject", finding.subject},
                                {"reason", finding.reason},
                                {"advice", finding.advice}});
  }
  json["cameras"] = json_object::array();
  for (std::size_t camera = 0; camera < result.cameras.size(); ++camera) {
    json["cameras"].push_back(camera_json(result, camera));
  }
  json["overlaps"] = json_object::array();
  for (const camera_overlap& overlap : result.overlaps) {
    json["overlaps"].push_back({{"cameras", {overlap.first, overlap.second}},
                                {"solid_angle", overlap.solid_angle},
                                {"width_degrees", overlap.width_degrees},
                                {"narrowest_degrees", overlap.narrowest_degrees}});
  }
  json["covered_solid_angle"] = result.coverage.together;
  json["unseen_solid_angle"] = result.coverage.unseen;
  json["holes"] = json_object::array();
  for (const coverage_hole& hole : result.coverage.holes) {
    json["holes"].push_back({{"solid_angle", hole.solid_angle},
                             {"yaw_degrees", hole.middle.yaw},
                             {"pitch_degrees", hole.middle.pitch},
                             {"seen_by", hole.seen_by}});
  }
  return json.dump(2, ' ', false, json_object::error_handler_t::replace) + "\n";
}

}  // namespace ocpan
