#include "tools/prod_log.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>
#include <locale>
#include <sstream>
#include <system_error>

#include <nlohmann/json.hpp>

#include "platform/native_path.h"
#include "platform/text_file.h"
#include "tools/output_check.h"

namespace ocpan {
namespace {

constexpr double mm_per_metre = 1000;
constexpr double infinity = std::numeric_limits<double>::infinity();

// A measure by its name in log and limits: one value of the run, or one of each pair or
// camera.
struct named_measure {
  enum class of { run, pair, camera };
  of whose;
  const char* name;
  std::vector<double> (*values)(const prod_measures&);
};

std::vector<double> in_metres(std::vector<double> values) {
  for (double& value : values) value /= mm_per_metre;
  return values;
}

using values = std::vector<double>;
using of = named_measure::of;
const named_measure all_measures[] = {
    {of::run, "reprojection_mean",
     [](const prod_measures& m) { return values{m.reprojection_mean}; }},
    {of::run, "reprojection_max",
     [](const prod_measures& m) { return values{m.reprojection_max}; }},
    {of::run, "point_count", [](const prod_measures& m) { return values{1.0 * m.point_count}; }},
    {of::run, "radius_min_metres",
     [](const prod_measures& m) { return in_metres({m.radius_min}); }},
    {of::run, "radius_max_metres",
     [](const prod_measures& m) { return in_metres({m.radius_max}); }},
    {of::run, "delta_mean", [](const prod_measures& m) { return values{m.delta_mean}; }},
    {of::run, "delta_max", [](const prod_measures& m) { return values{m.delta_max}; }},
    {of::run, "matched_pairs",
     [](const prod_measures& m) { return values{static_cast<double>(m.pair_count.size())}; }},
    {of::pair, "pair_reprojection_mean",
     [](const prod_measures& m) { return m.pair_reprojection_mean; }},
    {of::pair, "pair_reprojection_max",
     [](const prod_measures& m) { return m.pair_reprojection_max; }},
    {of::pair, "pair_point_count",
     [](const prod_measures& m) { return values(m.pair_count.begin(), m.pair_count.end()); }},
    {of::pair, "pair_radius_min_metres",
     [](const prod_measures& m) { return in_metres(m.pair_radius_min); }},
    {of::pair, "pair_radius_max_metres",
     [](const prod_measures& m) { return in_metres(m.pair_radius_max); }},
    {of::camera, "cam_delta_mean", [](const prod_measures& m) { return m.cam_delta_mean; }},
    {of::camera, "cam_delta_max", [](const prod_measures& m) { return m.cam_delta_max; }},
};

std::size_t columns_of(const named_measure& measure, std::size_t cameras) {
  switch (measure.whose) {
    case of::pair:
      return cameras * (cameras - 1) / 2;
    case of::camera:
      return cameras;
    default:
      return 1;
  }
}

std::ostringstream classic_text() {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  return text;
}

std::string number_text(double number) {
  std::ostringstream text = classic_text();
  text << number;
  return text.str();
}

// A text as one field of the log, quoted where it has to be.
std::string field(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + '"';
}

std::string read_limit(measure_limit& limit, const nlohmann::json& json) {
  if (!json.is_object() || json.empty()) {
    return limit.measure + R"( needs a "min", a "max" or both, as in {"max": 0.2})";
  }
  limit.min = -infinity;
  limit.max = infinity;
  for (const auto& [key, bound] : json.items()) {
    if (key != "min" && key != "max") return limit.measure + " has the unknown key " + key;
    if (!bound.is_number()) return key + " of " + limit.measure + " is no number";
    (key == "min" ? limit.min : limit.max) = bound.get<double>();
  }
  if (limit.min > limit.max) return limit.measure + " has a min above its max";
  return {};
}

const named_measure* find_measure(const std::string& name) {
  const auto* found = std::find_if(std::begin(all_measures), std::end(all_measures),
                                   [&](const named_measure& m) { return name == m.name; });
  return found == std::end(all_measures) ? nullptr : found;
}

bool ends_without_newline(const std::string& path) {
  std::ifstream in = open_input(path, std::ios::binary);
  if (!in.seekg(-1, std::ios::end)) return false;
  return in.get() != '\n';
}

bool is_new(const std::string& path) {
  std::ifstream in = open_input(path);
  return !in || in.peek() == std::ifstream::traits_type::eof();
}

}  // namespace

std::string measure_names() {
  std::string names;
  for (const named_measure& measure : all_measures) {
    if (!names.empty()) names += ", ";
    names += measure.name;
  }
  return names;
}

std::string read_limits(std::vector<measure_limit>& limits, const std::string& text) {
  const nlohmann::json json = nlohmann::json::parse(text, nullptr, false);
  if (json.is_discarded()) return "it is no JSON";
  if (!json.is_object()) return R"(it is no object, as in {"reprojection_mean": {"max": 0.2}})";
  for (const auto& [name, bounds] : json.items()) {
    if (!find_measure(name)) {
      return "there is no measure " + name + "; the measures are " + measure_names();
    }
    measure_limit limit = {name, 0, 0};
    if (std::string problem = read_limit(limit, bounds); !problem.empty()) return problem;
    limits.push_back(limit);
  }
  return {};
}

std::vector<std::string> outside_limits(const std::vector<measure_limit>& limits,
                                        const prod_measures& measures) {
  std::vector<std::string> outside;
  for (const measure_limit& limit : limits) {
    const named_measure& measure = *find_measure(limit.measure);
    const std::vector<double> numbers = measure.values(measures);
    for (std::size_t k = 0; k < numbers.size(); ++k) {
      if (numbers[k] >= limit.min && numbers[k] <= limit.max) continue;
      std::ostringstream text = classic_text();
      text << limit.measure;
      if (measure.whose != of::run) text << ' ' << k;
      text << " is " << numbers[k] << ", allowed is " << limit.min << " to " << limit.max;
      outside.push_back(text.str());
    }
  }
  return outside;
}

std::string log_header(std::size_t cameras) {
  std::ostringstream header = classic_text();
  header << "time,serial,verdict,exit_code";
  for (const named_measure& measure : all_measures) {
    for (std::size_t k = 0; k < columns_of(measure, cameras); ++k) {
      header << ',' << measure.name;
      if (measure.whose != of::run) header << '_' << k;
    }
  }
  return header.str();
}

std::string log_row(const prod_log_entry& entry, std::size_t cameras) {
  std::string row = field(entry.time) + ',' + field(entry.serial) + ',' + field(entry.verdict) +
                    ',' + std::to_string(entry.exit_code);
  for (const named_measure& measure : all_measures) {
    const std::vector<double> numbers =
        entry.measures ? measure.values(*entry.measures) : std::vector<double>();
    for (std::size_t k = 0; k < columns_of(measure, cameras); ++k) {
      row += ',';
      if (k < numbers.size()) row += number_text(numbers[k]);
    }
  }
  return row;
}

std::string prod_json(const prod_log_entry& entry) {
  nlohmann::ordered_json json = {{"command", "prod"},        {"exit_code", entry.exit_code},
                                 {"verdict", entry.verdict}, {"reasons", entry.reasons},
                                 {"time", entry.time},       {"serial", entry.serial},
                                 {"measures", nullptr}};
  if (entry.measures) {
    for (const named_measure& measure : all_measures) {
      const std::vector<double> numbers = measure.values(*entry.measures);
      auto& place = json["measures"][measure.name];
      if (measure.whose == of::run) {
        place = numbers.front();
      } else {
        place = numbers;
      }
    }
  }
  // A serial that isn't UTF-8 must not lose the measures.
  return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
}

std::string obstacle_to_log(const std::string& path, std::size_t cameras) {
  if (const std::string reason = why_not_writable(path); !reason.empty()) return reason;
  std::error_code failure;
  if (std::filesystem::exists(native_path(path), failure) &&
      !std::filesystem::is_regular_file(native_path(path), failure)) {
    return path + " is no regular file; name another one";
  }
  if (is_new(path)) return {};
  std::ifstream in = open_input(path);
  std::string first;
  if (read_text_line(in, first) && first == log_header(cameras)) return {};
  return path + " has other columns than a log of " + std::to_string(cameras) +
         " cameras; name another file";
}

bool append_to_log(const std::string& path, const prod_log_entry& entry, std::size_t cameras) {
  std::string text = log_row(entry, cameras) + '\n';
  if (is_new(path)) {
    text = log_header(cameras) + '\n' + text;
  } else if (ends_without_newline(path)) {
    text.insert(0, 1, '\n');  // somebody's editor left the last line open
  }
  std::ofstream out(native_path(path), std::ios::out | std::ios::app);
  out << text << std::flush;
  return out.good();
}

}  // namespace ocpan
