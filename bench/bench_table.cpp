// Puts what the benchmarks measured side by side: one table of ours, the peer's or the floor,
// and their ratio.
//
//   bench_table ROWS OUT RESULT...   ROWS names the rows, each RESULT is a benchmark's JSON;
//                                    OUT gets the table as JSON, standard output as text

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

// A benchmark's time in milliseconds, and its counters.
struct measurement {
  double milliseconds = 0;
  json counters;
};
using measurements = std::map<std::string, measurement>;

// Processor time, but where a benchmark took its time itself or counts real time.
measurement measurement_of(const json& entry) {
  const std::string name = entry.at("name");
  const bool own_time =
      name.find("/manual_time") != name.npos || name.find("/real_time") != name.npos;
  const std::string unit = entry.at("time_unit");
  const double scale = unit == "ns" ? 1e-6 : unit == "us" ? 1e-3 : unit == "ms" ? 1 : 1e3;
  return {scale * entry.at(own_time ? "real_time" : "cpu_time").get<double>(), entry};
}

void read_results(measurements& all, const char* file) {
  std::ifstream in(file);
  const json results = json::parse(in);
  for (const json& entry : results.at("benchmarks")) {
    if (entry.value("error_occurred", false)) continue;
    all[entry.at("name")] = measurement_of(entry);
  }
}

// The sum of some benchmarks; nothing if one wasn't run.
std::optional<double> sum_of(const measurements& all, const json& names) {
  double sum = 0;
  for (const json& name : names) {
    const auto found = all.find(name);
    if (found == all.end()) return std::nullopt;
    sum += found->second.milliseconds;
  }
  return sum;
}

json filled_row(json row, const measurements& all) {
  const auto ours = all.find(row.at("ours"));
  if (ours == all.end()) return row;
  row["ours_ms"] = ours->second.milliseconds;
  const std::string counter = row.value("show", "");
  if (!counter.empty()) row["ours_" + counter] = ours->second.counters.at(counter);
  if (!row.contains("peer")) return row;
  const auto peer = sum_of(all, row["peer"]);
  if (!peer) return row;
  row["peer_ms"] = *peer;
  row["ratio"] = ours->second.milliseconds / *peer;
  if (!counter.empty()) {
    row["peer_" + counter] = all.at(row["peer"].at(0)).counters.at(counter);
  }
  if (row.contains("aim")) row["met"] = row["ratio"] <= row["aim"];
  return row;
}

std::string number(const json& row, const std::string& key, const char* format) {
  if (!row.contains(key)) return "";
  char text[40];
  std::snprintf(text, sizeof text, format, row[key].get<double>());
  return text;
}

void print_row(const json& row) {
  const std::string counter = row.value("show", "");
  std::string note;
  if (row.contains("ours_" + counter)) {
    note = counter + " " + number(row, "ours_" + counter, "%.4g");
    if (row.contains("peer_" + counter)) note += " / " + number(row, "peer_" + counter, "%.4g");
  }
  std::string aim = number(row, "aim", "%.2f");
  if (row.contains("met")) aim += row["met"].get<bool>() ? " met" : " not met";
  std::printf("| %-50s | %10s | %10s | %6s | %-12s | %s%s%s |\n",
              row["row"].get<std::string>().c_str(), number(row, "ours_ms", "%.4g").c_str(),
              number(row, "peer_ms", "%.4g").c_str(), number(row, "ratio", "%.2f").c_str(),
              aim.c_str(), row.value("peer_is", "").c_str(), note.empty() ? "" : "; ",
              note.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: bench_table ROWS OUT RESULT...\n");
    return 64;
  }
  try {
    measurements all;
    for (int i = 3; i < argc; ++i) read_results(all, argv[i]);
    std::ifstream rows(argv[1]);
    json table = json::array();
    for (const json& row : json::parse(rows)) table.push_back(filled_row(row, all));
    std::printf("| %-50s | %10s | %10s | %6s | %-12s | %s |\n", "", "ours, ms", "beside, ms",
                "ratio", "aim", "beside what");
    std::printf("|---|---|---|---|---|---|\n");
    for (const json& row : table) print_row(row);
    std::ofstream out(argv[2]);
    out << table.dump(2) << '\n';
    const auto missing = std::count_if(table.begin(), table.end(),
                                       [](const json& r) { return !r.contains("ours_ms"); });
    if (missing > 0)
      std::fprintf(stderr, "bench_table: %ld rows weren't measured\n", long{missing});
    return out.flush().good() && missing == 0 ? 0 : 1;
  } catch (const json::exception& failure) {
    std::fprintf(stderr, "bench_table: %s\n", failure.what());
    return 1;
  }
}
