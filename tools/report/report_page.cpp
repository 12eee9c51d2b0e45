#include "tools/report/markup.h"
#include "tools/report/page_parts.h"
#include "tools/report/sections.h"

namespace ocpan {
namespace {

struct page_part {
  const char* id;
  const char* name;
  std::string markup;
};

std::string links_to(const std::vector<page_part>& parts) {
  std::string links;
  for (const page_part& part : parts) {
    if (part.markup.empty()) continue;
    links += joined("<a href=\"#", part.id, "\">", part.name, "</a>\n");
  }
  return joined("<nav aria-label=\"Parts of the report\">\n", links, "</nav>\n");
}

}  // namespace

std::string report_page(const report_content& content) {
  const std::vector<page_part> parts = {
      {"verdict", "Verdict", verdict_section(content)},
      {"cameras", "Cameras", cameras_section(content)},
      {"pairs", "Pairs", pairs_section(content)},
      {"uncertainty", "Uncertainty", uncertainty_section(content)},
      {"rig", "The rig", rig_section(content)},
      {"distances", "Distances", distances_section(content)},
      {"left-out", "Boards left out", left_out_section(content)},
      {"pictures", "Pictures", pictures_section(content)},
      {"inputs", "Inputs", inputs_section(content)}};
  std::string body;
  for (const page_part& part : parts) body += part.markup;
  const std::string title = "Calibration report: " + content.calibration;
  const std::string subject =
      joined(counted(content.input.models.size(), "camera"), ", evaluated on the pictures of ",
             content.input.pictures.configuration, ", ", content.made_at);
  return joined(
      "<!DOCTYPE html>\n<html xmlns=\"http://www.w3.org/1999/xhtml\" lang=\"en\">\n"
      "<head>\n<meta charset=\"utf-8\"/>\n<meta name=\"viewport\" "
      "content=\"width=device-width, initial-scale=1\"/>\n<title>",
      escaped(title), "</title>\n<style>", style_sheet(), "</style>\n</head>\n<body>\n",
      "<header>\n<h1>", escaped(title), "</h1>\n", paragraph(subject, "soft"), links_to(parts),
      "</header>\n<main>\n", body,
      "</main>\n<footer><p>Cameras are counted from 1, as in the configuration. Pixels "
      "count from the middle of the top left pixel. This file needs nothing but itself."
      "</p></footer>\n</body>\n</html>\n");
}

}  // namespace ocpan
