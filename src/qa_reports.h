#pragma once

#include <string>
#include <vector>

#include "src/run_report.h"

namespace ocpan {

// Counts of board distances in bins of equal width from 0.
using histogram = std::vector<int>;

// A histogram per set and a last one over all boards, in two bin widths.
struct qa_histogram_families {
  std::vector<histogram> fine;    // bins 200 wide
  std::vector<histogram> coarse;  // bins coarse_step wide
};

// Counts board distances. What lies beyond the range counts in the last bin, what is below
// 0 or not a number in the first.
//
//   entry_distances   per set, the distance of each board
//   coarse_step       the width of a coarse bin
//   range             a multiple of 200 and of coarse_step
[[nodiscard]] qa_histogram_families qa_histograms(
    const std::vector<std::vector<double>>& entry_distances, int coarse_step, int range);

// How evenly and how deeply the boards cover the range: a ratio per set and a last one over
// all boards. A set that kept its board at one distance gets 0. Sets total_dist_ratio and
// minimum_dist_ratio in the report; the latter is 0 without a set.
//
//   fine, coarse   the families of qa_histograms for the report's entries
[[nodiscard]] std::vector<double> qa_ratios(const std::vector<histogram>& fine,
                                            const std::vector<histogram>& coarse, int coarse_step,
                                            int range, run_report& report);

// Sets the ratios in the report and writes <output_file>_distance.csv and
// <output_file>_QA_Measures.txt. A table that can't be opened prints a line and costs both
// files; any other failure costs only its file, without a word.
//
//   last_lens      the lens of the configuration's last camera; it selects the range
//   report         one entry per set in all its lists
//   camera_count   of the whole rig
void write_qa_reports(const std::string& output_file, int last_lens, run_report& report,
                      int camera_count);

}  // namespace ocpan
