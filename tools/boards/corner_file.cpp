#include "tools/boards/corner_file.h"

#include <array>
#include <filesystem>
#include <system_error>
#include <utility>

#include <nlohmann/json.hpp>
#include <opencv2/core/version.hpp>

#include "platform/native_path.h"
#include "platform/text_file.h"
#include "tools/output_check.h"

namespace ocpan {
namespace {

using json = nlohmann::json;

// The detector's results may change with OpenCV.
constexpr const char* search_version = "1, quick, OpenCV " CV_VERSION;

constexpr std::array<std::pair<picture_state, const char*>, 4> state_names{{
    {picture_state::found, "found"},
    {picture_state::not_found, "not found"},
    {picture_state::unreadable, "unreadable"},
    {picture_state::wrong_size, "wrong size"},
}};

const char* name_of(picture_state state) {
  for (const auto& [value, name] : state_names) {
    if (value == state) return name;
  }
  return "";
}

picture_state state_of(const std::string& name) {
  for (const auto& [value, text] : state_names) {
    if (name == text) return value;
  }
  return picture_state::unreadable;
}

json entry_of(const corner_search& search, const kept_finding& kept) {
  const picture_finding& finding = kept.finding;
  const Eigen::Matrix2Xd& corners = finding.corners;
  return {{"file", search.file},
          {"camera", {search.width, search.height}},
          {"board", {search.board_width, search.board_height}},
          {"bytes", kept.stamp.bytes},
          {"modified", kept.stamp.modified},
          {"state", name_of(finding.state)},
          {"picture", {finding.width, finding.height}},
          {"cut_short", finding.cut_short},
          {"corners", std::vector<double>(corners.data(), corners.data() + corners.size())}};
}

void add_entry(kept_findings& findings, const json& entry) {
  corner_search search;
  search.file = entry.at("file").get<std::string>();
  search.width = entry.at("camera").at(0).get<int>();
  search.height = entry.at("camera").at(1).get<int>();
  search.board_width = entry.at("board").at(0).get<int>();
  search.board_height = entry.at("board").at(1).get<int>();
  kept_finding kept;
  kept.stamp.bytes = entry.at("bytes").get<std::int64_t>();
  kept.stamp.modified = entry.at("modified").get<std::int64_t>();
  picture_finding& finding = kept.finding;
  finding.state = state_of(entry.at("state").get<std::string>());
  finding.width = entry.at("picture").at(0).get<int>();
  finding.height = entry.at("picture").at(1).get<int>();
  finding.cut_short = entry.at("cut_short").get<bool>();
  const auto numbers = entry.at("corners").get<std::vector<double>>();
  const Eigen::Index count = static_cast<Eigen::Index>(numbers.size() / 2);
  const bool found = finding.state == picture_state::found;
  // A file that somebody edited must not bring half a board.
  if (count != (found ? Eigen::Index{search.board_width} * search.board_height : 0)) return;
  finding.corners = Eigen::Map<const Eigen::Matrix2Xd>(numbers.data(), 2, count);
  findings.emplace(std::move(search), std::move(kept));
}

}  // namespace

file_stamp stamp_of(const std::string& path) {
  const std::filesystem::path file = native_path(path);
  std::error_code failure;
  const auto bytes = std::filesystem::file_size(file, failure);
  if (failure) return {};
  const auto modified = std::filesystem::last_write_time(file, failure);
  if (failure) return {};
  return {static_cast<std::int64_t>(bytes),
          static_cast<std::int64_t>(modified.time_since_epoch().count())};
}

kept_findings read_corner_file(const std::string& path, std::string& warning) {
  kept_findings findings;
  if (stamp_of(path).bytes < 0) return findings;
  std::ifstream in = open_input(path);
  if (!in) {
    warning = "the corner file " + path + " can't be opened; all boards are looked for anew";
    return findings;
  }
  try {
    const json file = json::parse(in);
    if (file.at("search") != search_version) return findings;
    for (const json& entry : file.at("pictures")) add_entry(findings, entry);
  } catch (const json::exception&) {
    warning = "the corner file " + path + " is damaged; all boards are looked for anew";
    findings.clear();
  }
  return findings;
}

void write_corner_file(const std::string& path, const kept_findings& findings,
                       std::string& warning) {
  warning = why_not_writable(path);
  if (!warning.empty()) {
    warning = "the corners found aren't kept: " + warning;
    return;
  }
  json file{{"search", search_version}, {"pictures", json::array()}};
  for (const auto& [search, kept] : findings) file["pictures"].push_back(entry_of(search, kept));
  // Names of files may hold any bytes.
  const std::string text = file.dump(-1, ' ', false, json::error_handler_t::replace);
  const std::string unfinished = path + ".part";
  std::ofstream out = open_output(unfinished, std::ios::binary);
  const bool opened = out.is_open();
  out << text << '\n';
  std::error_code failure;
  if (!finish_output(out, unfinished)) {
    warning = "the corners found aren't kept: " + unfinished + " can't be written";
    if (opened) std::filesystem::remove(native_path(unfinished), failure);
    return;
  }
  std::filesystem::rename(native_path(unfinished), native_path(path), failure);
  if (!failure) return;
  warning = "the corners found aren't kept: " + failure.message();
  std::filesystem::remove(native_path(unfinished), failure);
}

}  // namespace ocpan
