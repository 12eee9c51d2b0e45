#include "src/qa_reports.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <locale>
#include <sstream>

#include "platform/text_file.h"
#include "src/console.h"

namespace ocpan {
namespace {

constexpr int fine_step = 200;  // unit of the distances, as coarse_step and range

using camera_list = std::vector<std::uint64_t>;

int bin_of(double distance, int step, int range) {
  if (!(distance >= 0)) return 0;  // not a number too
  if (distance >= range) return range / step - 1;
  return static_cast<int>(distance) / step;
}

std::vector<histogram> histogram_family(const std::vector<std::vector<double>>& entry_distances,
                                        int step, int range) {
  const histogram empty(static_cast<std::size_t>(range / step));
  std::vector<histogram> family(entry_distances.size() + 1, empty);
  histogram& total = family.back();
  for (std::size_t entry = 0; entry < entry_distances.size(); ++entry) {
    for (const double distance : entry_distances[entry]) {
      const auto bin = static_cast<std::size_t>(bin_of(distance, step, range));
      ++family[entry][bin];
      ++total[bin];
    }
  }
  return family;
}

double filled_share(const histogram& counts, int bins) {
  const auto filled = std::count_if(counts.begin(), counts.end(), [](int n) { return n > 0; });
  return static_cast<double>(filled) / bins;
}

// The title of a set, nothing for one of more than two cameras.
std::string column_title(const camera_list& cameras) {
  if (cameras.size() == 1) return "----Cam " + std::to_string(cameras[0]) + "----,,,,";
  if (cameras.size() == 2) {
    return "----Pair " + std::to_string(cameras[0]) + std::to_string(cameras[1]) + "----,,,,";
  }
  return "";  // the later columns move to the left, as readers of the table know
}

std::string measures_title(const camera_list& cameras) {
  if (cameras.size() == 1) return "----Camera " + std::to_string(cameras[0]) + "\n";
  if (cameras.size() == 2) {
    return "----Pair " + std::to_string(cameras[0]) + std::to_string(cameras[1]) + "\n";
  }
  return "";
}

// A cell per entry with its board of this row. Tells whether any entry had one.
bool write_distance_row(std::ostream& out, const run_report& report, std::size_t row) {
  bool any = false;
  for (std::size_t entry = 0; entry < report.entry_cameras.size(); ++entry) {
    const std::vector<double>& distances = report.entry_distances[entry];
    if (row >= distances.size()) {
      out << ",,,,";
      continue;
    }
    any = true;
    const bool whole = report.entry_flags[entry][row];
    out << row << (whole ? ",true," : ",false,") << distances[row] << ",,";
  }
  out << '\n';
  return any;
}

void write_distance_table(std::ostream& out, const run_report& report,
                          const std::vector<histogram>& fine) {
  out.setf(std::ios::fixed, std::ios::floatfield);
  for (const camera_list& cameras : report.entry_cameras) out << column_title(cameras);
  out << '\n';
  std::size_t row = 0;
  while (write_distance_row(out, report, row)) ++row;
  out << "\nDistance Histogram\n";
  for (const camera_list& cameras : report.entry_cameras) out << column_title(cameras);
  out << "----Total----,,,,\n";
  const int bins = static_cast<int>(fine.back().size());
  for (int bin = 0; bin < bins; ++bin) {
    const int low = fine_step * bin;
    for (const histogram& counts : fine) {
      out << ",[" << low << " - " << low + fine_step << "),"
          << counts[static_cast<std::size_t>(bin)] << ",,";
    }
    out << '\n';
  }
}

void write_measures(std::ostream& out, const run_report& report, const std::vector<double>& ratios,
                    int camera_count) {
  out << "Camera Number : " << camera_count << '\n'
      << "Calibration Sets Number : " << report.entry_cameras.size() << "\n\n"
      << " ---------Total QA Measures--------- \n"
      << "Average Reprojection Error : " << report.average_error << '\n'
      << "Maximum Reprojection Error : " << report.max_error << '\n'
      << "Matched Point Count        : " << report.matched_points << '\n'
      << "Total Dist Ratio           : " << report.total_dist_ratio << '\n'
      << "Minimum Dist Ratio         : " << report.minimum_dist_ratio << "\n\n\n"
      << " ---------Each QA Measures--------- \n";
  for (std::size_t entry = 0; entry < report.entry_cameras.size(); ++entry) {
    out << measures_title(report.entry_cameras[entry])
        << "    Average Reprojection Error : " << report.entry_average_error[entry] << '\n'
        << "    Maximum Reprojection Error : " << report.entry_max_error[entry] << '\n'
        << "    Matched Point Count        : " << report.entry_matched_points[entry] << '\n'
        << "    Dist Ratio                 : " << ratios[entry] << "\n\n\n";
  }
}

// What `write` writes, whole: without memory for it an exception is thrown before a file is
// opened.
template <typename Write>
std::string text_of(Write&& write) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text.exceptions(std::ios::badbit);
  write(text);
  return text.str();
}

}  // namespace

qa_histogram_families qa_histograms(const std::vector<std::vector<double>>& entry_distances,
                                    int coarse_step, int range) {
  return {histogram_family(entry_distances, fine_step, range),
          histogram_family(entry_distances, coarse_step, range)};
}

std::vector<double> qa_ratios(const std::vector<histogram>& fine,
                              const std::vector<histogram>& coarse, int coarse_step, int range,
                              run_report& report) {
  const std::size_t entries = fine.size() - 1;
  std::vector<double> ratios;
  for (std::size_t member = 0; member <= entries; ++member) {
    const double spread =
        member < entries ? report.entry_max_distance[member] - report.entry_min_distance[member]
                         : report.max_distance - report.min_distance;
    const double filled = filled_share(fine[member], range / fine_step) +
                          filled_share(coarse[member], range / coarse_step);
    ratios.push_back(filled * spread * 10000.0 / range / 1000.0);
  }
  report.total_dist_ratio = ratios.back();
  report.minimum_dist_ratio =
      entries == 0 ? 0.0 : *std::min_element(ratios.begin(), ratios.end() - 1);
  return ratios;
}

void write_qa_reports(const std::string& output_file, int last_lens, run_report& report,
                      int camera_count) {
  const int range = last_lens == 2 ? 3000 : 10000;
  const int coarse_step = last_lens == 2 ? 500 : 1000;
  const auto [fine, coarse] = qa_histograms(report.entry_distances, coarse_step, range);
  const std::vector<double> ratios = qa_ratios(fine, coarse, coarse_step, range, report);

  const std::string table_name = output_file + "_distance.csv";
  const std::string table_text =
      text_of([&, &rows = fine](std::ostream& out) { write_distance_table(out, report, rows); });
  std::ofstream table = open_output(table_name);
  if (!table) {
    print_line("Can not open distance file : ", table_name, "\n");
    return;
  }
  table << table_text;
  static_cast<void>(finish_output(table, table_name));

  const std::string measures_name = output_file + "_QA_Measures.txt";
  const std::string measures_text =
      text_of([&](std::ostream& out) { write_measures(out, report, ratios, camera_count); });
  std::ofstream measures = open_output(measures_name);
  measures << measures_text;
  static_cast<void>(finish_output(measures, measures_name));
}

}  // namespace ocpan
