#include <algorithm>
#include <cmath>
#include <set>

#include "src/qa_reports.h"
#include "tools/report/markup.h"
#include "tools/report/page_parts.h"
#include "tools/report/plot.h"
#include "tools/report/sections.h"

namespace ocpan {
namespace {

constexpr int fine_step = 200;  // of the quality report's table, unit of board_scale

// The distances of each set's boards from the rig's origin. A board's pictures may stand in
// several sets; it counts in each, as in the quality reports of a calibration.
std::vector<std::vector<double>> distances_by_set(const report_content& content) {
  std::map<std::string, std::size_t> boards;
  for (const rig_picture& picture : content.every_picture) {
    if (picture.board) boards[picture.file] = picture.board->board;
  }
  std::vector<std::vector<double>> distances;
  for (std::size_t s = 0; s < content.input.pictures.sets.size(); ++s) {
    const cal_frame_set& set = content.input.pictures.sets[s];
    std::set<std::size_t> of_set;
    for (std::size_t frame = 0; frame < content.input.found[s].size(); ++frame) {
      for (const set_camera& camera : set.set_cameras) {
        const auto board = boards.find(camera.files[frame]);
        if (board != boards.end()) of_set.insert(board->second);
      }
    }
    auto& list = distances.emplace_back();
    for (const std::size_t board : of_set) {
      const evaluated_board& each = content.quality.boards[board];
      const double distance = each.rig_from_board.translation.norm();
      if (each.fate == board_fate::used && std::isfinite(distance)) list.push_back(distance);
    }
  }
  return distances;
}

struct distance_measures {
  qa_histogram_families histograms;
  std::vector<double> ratios;  // per set, the last of all
  run_report extremes;
  int range = 0;
};

distance_measures measure_distances(const std::vector<std::vector<double>>& distances, int lens) {
  distance_measures measures;
  measures.range = lens == 2 ? 3000 : 10000;
  const int coarse_step = lens == 2 ? 500 : 1000;
  run_report& report = measures.extremes;
  std::vector<double> all;
  for (const std::vector<double>& set : distances) {
    const auto [low, high] = std::minmax_element(set.begin(), set.end());
    report.entry_min_distance.push_back(set.empty() ? 0 : *low);
    report.entry_max_distance.push_back(set.empty() ? 0 : *high);
    all.insert(all.end(), set.begin(), set.end());
  }
  const auto [low, high] = std::minmax_element(all.begin(), all.end());
  report.min_distance = all.empty() ? 0 : *low;
  report.max_distance = all.empty() ? 0 : *high;
  measures.histograms = qa_histograms(distances, coarse_step, measures.range);
  measures.ratios = qa_ratios(measures.histograms.fine, measures.histograms.coarse, coarse_step,
                              measures.range, report);
  return measures;
}

// Bars over the bins up to the last that holds any board of any set.
std::string distance_chart(const histogram& counts, std::size_t bins, const std::string& name) {
  plot p;
  p.width = 320;
  p.height = 190;
  p.x = {0, static_cast<double>(bins) * fine_step, "distance (unit of board_scale)"};
  const int most = *std::max_element(counts.begin(), counts.end());
  p.y = {0, std::max(1.0, 1.25 * most), "boards (count)"};
  std::string drawn = ground(p);
  for (std::size_t i = 0; i < bins; ++i) {
    const double left = x_at(p, static_cast<double>(i) * fine_step);
    const double right = x_at(p, static_cast<double>(i + 1) * fine_step);
    const double top = y_at(p, counts[i]);
    if (counts[i] == 0) continue;
    drawn += box(left + 1, top, right - left - 2, p.height - p.bottom - top,
                 joined("fill=\"", camera_colour(0), "\" fill-opacity=\".8\""));
    drawn += text((left + right) / 2, top - 4, std::to_string(counts[i]), "class=\"mid\"");
  }
  return chart(name, "", drawing(p.width, p.height, "Distances of the boards, " + name, drawn));
}

std::size_t last_bin(const histogram& all) {
  std::size_t bins = 4;
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (all[i] > 0) bins = std::max(bins, i + 2);
  }
  return std::min(bins, all.size());
}

std::vector<cell> distance_row(const std::string& name, std::size_t boards, double low, double high,
                               double ratio) {
  const bool any = boards > 0;
  return {{name},
          {std::to_string(boards)},
          {any ? number(low, 0) : "none"},
          {any ? number(high, 0) : "none"},
          {measure(ratio)}};
}

}  // namespace

std::string distances_section(const report_content& content) {
  const std::vector<std::vector<double>> distances = distances_by_set(content);
  const distance_measures measures =
      measure_distances(distances, content.input.pictures.cameras.back().lens);
  const run_report& extremes = measures.extremes;
  const std::size_t bins = last_bin(measures.histograms.fine.back());
  std::vector<std::vector<cell>> rows;
  std::string drawn;
  std::size_t boards = 0;
  for (std::size_t s = 0; s < distances.size(); ++s) {
    const std::string name = "Set " + content.input.pictures.sets[s].name;
    rows.push_back(distance_row(name, distances[s].size(), extremes.entry_min_distance[s],
                                extremes.entry_max_distance[s], measures.ratios[s]));
    drawn += distance_chart(measures.histograms.fine[s], bins, name);
    boards += distances[s].size();
  }
  rows.push_back(distance_row("All sets", boards, extremes.min_distance, extremes.max_distance,
                              measures.ratios.back()));
  drawn += distance_chart(measures.histograms.fine.back(), bins, "All sets");
  const std::string explanation = joined(
      "How far from the rig's origin the boards stood, in the unit of board_scale and in "
      "bins of 200. The ratio grows with the depth that the boards cover and with how "
      "evenly they do, over a range of ",
      std::to_string(measures.range), "; a set whose boards kept their distance has 0.");
  return section("distances", "Distances of the boards",
                 paragraph(explanation) +
                     table({"Set", "Boards", "Nearest", "Farthest", "Distance ratio"}, rows) +
                     small_charts(drawn));
}

}  // namespace ocpan
