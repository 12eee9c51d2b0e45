#include "tools/evaluate/evaluate_pictures.h"
#include "tools/report/markup.h"
#include "tools/report/page_parts.h"
#include "tools/report/sections.h"

namespace ocpan {
namespace {

std::string cameras_table(const std::vector<camera_uncertainty>& cameras) {
  std::vector<std::vector<cell>> rows;
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    rows.push_back({{std::to_string(i + 1)},
                    {measure(cameras[i].mapping_pixels, 2)},
                    {measure(cameras[i].worst_pixels, 2)}});
  }
  return table({"Camera", "Over the picture (px)", "Where it is largest (px)"}, rows);
}

std::string pairs_table(const std::vector<pair_uncertainty>& pairs) {
  if (pairs.empty()) return "";
  std::vector<std::vector<cell>> rows;
  for (const pair_uncertainty& pair : pairs) {
    rows.push_back(
        {{joined(std::to_string(pair.first + 1), " and ", std::to_string(pair.second + 1))},
         {pair.seam_degrees ? measure(*pair.seam_degrees, 2) : "their pictures don't meet"}});
  }
  return table({"Cameras", "At their seam (degrees)"}, rows);
}

}  // namespace

std::string uncertainty_section(const report_content& content) {
  if (!content.uncertainty) {
    if (content.quality.judged != verdict::unusable) return "";
    if (content.quality.residuals.pixels.count == 0) return "";
    return section("uncertainty", "What the boards leave open",
                   paragraph(joined("This is ", why_no_uncertainty, ".")));
  }
  return section("uncertainty", "What the boards leave open",
                 paragraph("How closely these boards tell the rig if nothing else is known of "
                           "it: standard deviations with all parameters free. A residual can be "
                           "small where few boards were, and this large. More boards there, "
                           "tilted and near the rim, make it smaller.") +
                     cameras_table(content.uncertainty->cameras) +
                     pairs_table(content.uncertainty->pairs));
}

}  // namespace ocpan
