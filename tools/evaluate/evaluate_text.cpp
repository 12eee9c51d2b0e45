#include <algorithm>
#include <iomanip>
#include <locale>
#include <sstream>
#include <string>

#include "src/console.h"
#include "tools/evaluate/evaluate_pictures.h"
#include "tools/evaluate/evaluate_run.h"
#include "tools/evaluate/judge_evaluation.h"
#include "tools/evaluate/unusable_pictures.h"

namespace ocpan {
namespace {

// A cell of a table: a number with three digits behind the point.
std::string cell(double value, int width = 8) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << std::setw(width) << std::fixed << std::setprecision(3) << value;
  return text.str();
}

std::string count_cell(std::size_t count) {
  const std::string digits = std::to_string(count);
  return std::string(digits.size() < 9 ? 9 - digits.size() : 1, ' ') + digits;
}

// Text at the left of its column.
std::string title_cell(std::string text) {
  text.resize(std::max<std::size_t>(text.size() + 1, 18), ' ');
  return "  " + text;
}

std::string spread_cells(const residual_spread& spread) {
  return cell(spread.mean) + cell(spread.rms) + cell(spread.median) + cell(spread.percentile_95) +
         cell(spread.maximum);
}

void print_residual_row(const std::string& title, std::size_t boards,
                        const residual_summary& residuals) {
  print_line(title_cell(title), count_cell(boards), count_cell(residuals.pixels.count),
             spread_cells(residuals.pixels), "  |", spread_cells(residuals.milliradians));
}

std::string pair_title(std::size_t first, std::size_t second) {
  return "cameras " + std::to_string(first + 1) + ", " + std::to_string(second + 1);
}

void print_residuals(const evaluation& found) {
  constexpr const char* measures = "    mean     RMS  median    95 %     max";
  print_line("Residuals                           in pixels", std::string(33, ' '),
             "in milliradians");
  print_line(title_cell(""), "   boards  corners", measures, "  |", measures);
  std::size_t used = 0;
  for (const evaluated_board& board : found.boards) used += board.fate == board_fate::used;
  print_residual_row("all", used, found.residuals);
  for (std::size_t c = 0; c < found.cameras.size(); ++c) {
    print_residual_row("camera " + std::to_string(c + 1), found.cameras[c].boards,
                       found.cameras[c].residuals);
  }
  for (const evaluated_pair& pair : found.pairs) {
    print_residual_row(pair_title(pair.first, pair.second), pair.boards, pair.residuals);
  }
}

void print_left_out(const evaluate_story& story) {
  bool first = true;
  for (const evaluated_board& board : story.found.boards) {
    if (board.fate == board_fate::used) continue;
    if (first) print_line("\nBoards left out");
    first = false;
    std::vector<std::size_t> cameras;
    for (const evaluated_view& view : board.views) cameras.push_back(view.camera);
    print_line("  set ", story.input.pictures.sets[board.set].name, ", ",
               picture_names(story.input.pictures, board.set, board.frame, cameras), ": ",
               why_left_out(board));
  }
}

void print_unusable_pictures(const evaluate_story& story) {
  const std::vector<unusable_picture> pictures =
      unusable_pictures(story.input.pictures, story.input.found);
  if (pictures.empty()) return;
  print_line("\nPictures left out: ", pictures.size());
  for (const unusable_picture& picture : pictures) {
    print_line("  ", picture.file, ": ", picture.why);
  }
}

void print_rings(const evaluation& found) {
  print_line("\nResidual by the angle from the camera's axis: RMS pixels (corners)");
  for (std::size_t c = 0; c < found.cameras.size(); ++c) {
    std::string line = title_cell("camera " + std::to_string(c + 1));
    for (const angle_bin& ring : found.cameras[c].by_angle) {
      if (ring.residuals.pixels.count == 0) continue;
      line += text_of("  ", ring.from_degrees, "-", ring.to_degrees, ":") +
              cell(ring.residuals.pixels.rms, 6) + text_of(" (", ring.residuals.pixels.count, ")");
    }
    print_line(line);
  }
}

void print_pairs(const evaluation& found) {
  if (found.pairs.empty()) return;
  print_line("\nPairs by their own boards, beside the calibration's");
  print_line(title_cell(""), "    angle, degrees  |    distance, units  |  difference");
  print_line(title_cell(""),
             " calibr.     own  | calibr.     own  | degrees    dev.   units    dev.");
  for (const evaluated_pair& pair : found.pairs) {
    const std::string title = title_cell(pair_title(pair.first, pair.second));
    if (!pair.own) {
      print_line(title, cell(pair.calibrated.degrees), "       -  |",
                 cell(pair.calibrated.distance), "       -  |  too few boards");
      continue;
    }
    print_line(title, cell(pair.calibrated.degrees), cell(pair.own->own.degrees), "  |",
               cell(pair.calibrated.distance), cell(pair.own->own.distance), "  |",
               cell(pair.own->turn_degrees), cell(pair.own->turn_deviation_degrees),
               cell(pair.own->shift), cell(pair.own->shift_deviation));
  }
}

void print_loops(const evaluation& found) {
  if (found.loops.empty()) return;
  print_line("\nGoing round from pair to pair ends off by");
  for (const pair_loop& loop : found.loops) {
    print_line("  ", camera_words(loop.cameras), ": ", cell(loop.turn_degrees, 0),
               " degrees (noise ", cell(loop.turn_deviation_degrees, 0), "), ", cell(loop.shift, 0),
               " units (noise ", cell(loop.shift_deviation, 0), ")");
  }
}

void print_uncertainty(const rig_uncertainty& uncertainty) {
  print_line(
      "\nUncertainty that these boards leave, all parameters free (standard deviation;"
      " corners ",
      cell(uncertainty.corner_pixels, 0), " pixels)");
  for (std::size_t c = 0; c < uncertainty.cameras.size(); ++c) {
    const camera_uncertainty& camera = uncertainty.cameras[c];
    print_line(title_cell("camera " + std::to_string(c + 1)), cell(camera.mapping_pixels),
               " pixels over the picture, at worst", cell(camera.worst_pixels));
  }
  for (const pair_uncertainty& pair : uncertainty.pairs) {
    const std::string title = title_cell(pair_title(pair.first, pair.second));
    if (pair.seam_degrees) {
      print_line(title, cell(*pair.seam_degrees), " degrees at the seam");
    } else {
      print_line(title, "       - no seam, their pictures don't meet far away");
    }
  }
}

void print_hold_out(const hold_out& tested) {
  print_line("\nCalibrated ", tested.parts, " times without a part of the frames, by the library",
             tested.refined ? ", and refined" : "");
  print_line("  Frames held out: ", cell(tested.residuals.pixels.mean, 0),
             " pixels off in the mean, ", cell(tested.residuals.pixels.rms, 0),
             " RMS; boards left out: ", tested.left_out);
  print_line(
      "  What the scatter lets expect of a calibration from all frames (standard deviation;"
      " what all share doesn't show)");
  for (std::size_t c = 0; c < tested.by_camera.size(); ++c) {
    print_line(title_cell("camera " + std::to_string(c + 1)),
               cell(tested.by_camera[c].mapping_pixels), " pixels over the picture; held out",
               cell(tested.cameras[c].pixels.rms), " RMS");
  }
  for (const pair_scatter& pair : tested.by_pair) {
    print_line(title_cell(pair_title(pair.first, pair.second)), cell(pair.turn_degrees), " degrees",
               cell(pair.shift), " units");
  }
}

void print_verdict(const evaluation& found) {
  for (const evaluation_finding& finding : found.findings) {
    print_line(word_of(finding.judged), ": ", finding.text);
  }
  print_line("Verdict: ", word_of(found.judged));
}

}  // namespace

void print_evaluation(const evaluate_story& story) {
  if (!story.options.quiet) {
    print_residuals(story.found);
    print_left_out(story);
    print_unusable_pictures(story);
    print_rings(story.found);
    print_pairs(story.found);
    print_loops(story.found);
    if (story.uncertainty) {
      print_uncertainty(*story.uncertainty);
    } else if (story.found.residuals.pixels.count > 0) {
      print_line("\nUncertainty: ", why_no_uncertainty);
    }
    if (story.tested) print_hold_out(*story.tested);
    print_line("");
  }
  print_verdict(story.found);
}

}  // namespace ocpan
