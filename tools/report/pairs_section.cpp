#include "tools/report/markup.h"
#include "tools/report/page_parts.h"
#include "tools/report/sections.h"

namespace ocpan {
namespace {

std::string pair_name(const evaluated_pair& pair) {
  return joined(std::to_string(pair.first + 1), " and ", std::to_string(pair.second + 1));
}

std::vector<cell> pair_row(const evaluated_pair& pair) {
  std::string turn = "too few boards", shift = "too few boards";
  if (pair.own) {
    turn = measure_within(pair.own->turn_degrees, pair.own->turn_deviation_degrees);
    shift = measure_within(pair.own->shift, pair.own->shift_deviation);
  }
  return {{pair_name(pair)},
          {badge(pair.judged), true},
          {std::to_string(pair.boards)},
          {measure(pair.residuals.pixels.mean)},
          {measure(pair.residuals.pixels.percentile_95)},
          {measure(pair.residuals.milliradians.mean)},
          {number(pair.calibrated.degrees, 2)},
          {measure(pair.calibrated.distance)},
          {turn},
          {shift}};
}

std::string pair_in_words(const evaluated_pair& pair) {
  std::string words = joined("Cameras ", pair_name(pair), " saw ", counted(pair.boards, "board"),
                             " together, whose corners are off by ",
                             measure(pair.residuals.pixels.mean), " pixels on average. ");
  if (!pair.own) return words + "They are too few to place one camera by the other alone.";
  return words + joined("By these boards alone the second camera would be turned by ",
                        measure_within(pair.own->turn_degrees, pair.own->turn_deviation_degrees),
                        " degrees and moved by ",
                        measure_within(pair.own->shift, pair.own->shift_deviation), ".");
}

std::string pairs_in_words(const std::vector<evaluated_pair>& pairs) {
  std::string items;
  for (const evaluated_pair& pair : pairs) {
    items += joined("<li>", badge(pair.judged), "<span>", escaped(pair_in_words(pair)),
                    "</span></li>\n");
  }
  return joined("<ul class=\"findings\">\n", items, "</ul>\n");
}

std::string loop_name(const pair_loop& loop) {
  std::string name;
  for (const std::size_t camera : loop.cameras) name += std::to_string(camera + 1) + " - ";
  return name + std::to_string(loop.cameras.front() + 1);
}

std::string loops_table(const std::vector<pair_loop>& loops) {
  if (loops.empty()) return "";
  std::vector<std::vector<cell>> rows;
  for (const pair_loop& loop : loops) {
    rows.push_back({{loop_name(loop)},
                    {badge(loop.judged), true},
                    {measure_within(loop.turn_degrees, loop.turn_deviation_degrees)},
                    {measure_within(loop.shift, loop.shift_deviation)}});
  }
  return joined("<h3>Loops</h3>\n",
                paragraph("A way round the rig, from camera to camera by the boards of each pair "
                          "alone, should end where it began. What is missing is the loop error."),
                table({"Cameras", "Verdict", "Turn missing (degrees)",
                       "Shift missing (units of board_scale)"},
                      rows));
}

}  // namespace

std::string pairs_section(const report_content& content) {
  const evaluation& quality = content.quality;
  if (quality.pairs.empty()) {
    return section("pairs", "Pairs of cameras",
                   paragraph("No two cameras saw a board together, so nothing is known here of "
                             "how they stand to one another."));
  }
  std::vector<std::vector<cell>> rows;
  for (const evaluated_pair& pair : quality.pairs) rows.push_back(pair_row(pair));
  const std::string explanation =
      "The last two columns tell how far the second camera of a pair would move if only the "
      "boards that both saw had a say, beside the standard deviation that the corners' noise "
      "gives. Lengths are in the unit "
      "of board_scale.";
  return section("pairs", "Pairs of cameras",
                 pairs_in_words(quality.pairs) + paragraph(explanation, "soft") +
                     table({"Cameras", "Verdict", "Boards of both", "Mean (px)", "95 % below (px)",
                            "Mean (mrad)", "Angle between (degrees)", "Distance between",
                            "Turn by own boards (degrees)", "Shift by own boards"},
                           rows) +
                     loops_table(quality.loops));
}

}  // namespace ocpan
