#include "tests/faults/folder_state.h"

#include <filesystem>
#include <optional>
#include <sstream>

#include "include/oc_pan_cal.h"
#include "tests/support/temp_folder.h"

namespace ocpan::faults {
namespace {

namespace fs = std::filesystem;

const std::string older = "What stood here before.\n";

std::optional<std::string> bytes_of(const folder_state& state, const std::string& name) {
  const auto found = state.find(name);
  if (found == state.end()) return std::nullopt;
  return found->second;
}

// Whether a run told something that the good run didn't. A line cut short tells nothing.
bool tells_more(const std::string& printed, const std::string& good) {
  std::istringstream lines(printed);
  for (std::string line; std::getline(lines, line);) {
    if (("\n" + good).find("\n" + line) == std::string::npos) return true;
  }
  return false;
}

}  // namespace

folder_state state_of_working_folder() {
  folder_state state;
  for (const auto& entry : fs::recursive_directory_iterator(".")) {
    const std::string name = entry.path().lexically_relative(".").string();
    if (entry.is_regular_file() && (!name.starts_with("tmp/") || name.ends_with(".txt"))) {
      state[name] = testing::read_file(entry.path());
    }
  }
  return state;
}

void put_back(const export_job& job, const good_run& good) {
  for (const auto& [name, bytes] : state_of_working_folder()) {
    const auto input = bytes_of(good.inputs, name);
    if (!input) fs::remove(name);
    if (input && *input != bytes) testing::write_file(name, *input);
  }
  for (const auto* names : {&job.outputs, &job.reports}) {
    for (const std::string& name : *names) testing::write_file(name, older);
  }
}

std::string folder_problem(const export_job& job, const good_run& good, int code,
                           const std::string& printed) {
  const bool told =
      code == OCPAN_SUCCESS && job.prints_on_success && tells_more(printed, good.printed);
  const folder_state found = state_of_working_folder();
  std::string problem;
  int lost = 0;
  for (const std::string& name : job.outputs) {
    const auto bytes = bytes_of(found, name);
    const bool whole = bytes && (bytes == bytes_of(good.after, name) || told);
    const bool untouched = bytes == older;
    const bool excused = job.loses_output_silently;
    if (!bytes) ++lost;
    if (code != OCPAN_SUCCESS && job.writes_last && bytes && !untouched) {
      problem += name + " is written beside a failure; ";
    }
    if (code == OCPAN_SUCCESS && !whole && !excused) problem += name + " isn't written; ";
    if (bytes && !whole && !untouched && !excused) {
      problem += name + " is left with " + std::to_string(bytes->size()) + " bytes; ";
    }
  }
  if (lost > 1) problem += std::to_string(lost) + " outputs are lost; ";
  for (const std::string& name : job.reports) {
    const auto bytes = bytes_of(found, name);
    if (bytes && bytes != older && bytes != bytes_of(good.after, name) && !told) {
      problem += name + " is cut short; ";
    }
  }
  for (const auto& [name, bytes] : good.inputs) {
    if (bytes_of(found, name) != bytes) problem += "input " + name + " is changed; ";
  }
  for (const auto& [name, bytes] : found) {
    if (!good.inputs.contains(name) && !good.after.contains(name)) problem += name + " is new; ";
  }
  return problem;
}

}  // namespace ocpan::faults
