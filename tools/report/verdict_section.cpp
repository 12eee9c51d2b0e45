#include "tools/report/markup.h"
#include "tools/report/page_parts.h"
#include "tools/report/sections.h"

namespace ocpan {
namespace {

std::string_view headline(verdict judged) {
  switch (judged) {
    case verdict::good:
      return "This calibration explains its boards well.";
    case verdict::doubtful:
      return "Look at the points below before you use this calibration.";
    case verdict::unusable:
      break;
  }
  return "Don't use this calibration.";
}

std::size_t left_out(const evaluation& quality) {
  std::size_t count = 0;
  for (const evaluated_board& board : quality.boards) count += board.fate != board_fate::used;
  return count;
}

std::string findings(const evaluation& quality) {
  if (quality.findings.empty()) return "";
  std::string items;
  for (const evaluation_finding& finding : quality.findings) {
    items +=
        joined("<li>", badge(finding.judged), "<span>", escaped(finding.text), "</span></li>\n");
  }
  return joined("<ul class=\"findings\">\n", items, "</ul>\n");
}

}  // namespace

std::string verdict_section(const report_content& content) {
  const evaluation& quality = content.quality;
  const residual_spread& pixels = quality.residuals.pixels;
  const std::size_t out = left_out(quality);
  std::string merits = figure_of_merit(std::to_string(content.input.models.size()), "cameras");
  merits += figure_of_merit(std::to_string(quality.boards.size() - out),
                            out == 0 ? "boards, all of them used"
                                     : joined("boards used, ", std::to_string(out), " left out"));
  merits += figure_of_merit(std::to_string(pixels.count), "corners compared");
  merits += figure_of_merit(measure(pixels.mean) + " px", "mean residual");
  merits += figure_of_merit(measure(quality.residuals.milliradians.mean) + " mrad",
                            "mean residual as an angle");
  merits += figure_of_merit(measure(pixels.percentile_95) + " px", "95 % of corners below");
  const std::string body = joined(
      "<p class=\"headline\">", badge(quality.judged), " ", escaped(headline(quality.judged)),
      "</p>\n", findings(quality), "<div class=\"merits\">\n", merits, "</div>\n",
      paragraph("A residual is how far a board's corner was found from where the "
                "calibration puts it. mrad are thousandths of a radian: 1 mrad is 1 mm at "
                "1 m.",
                "soft"));
  return joined("<section id=\"verdict\" class=\"banner ", word_of(quality.judged),
                "\">\n<h2>Verdict</h2>\n", body, "</section>\n");
}

}  // namespace ocpan
