#include "tools/report/camera_charts.h"
#include "tools/report/markup.h"
#include "tools/report/page_parts.h"
#include "tools/report/sections.h"

namespace ocpan {
namespace {

struct picture_counts {
  std::size_t all = 0;
  std::size_t found = 0;
};

picture_counts count_pictures(const report_content& content, std::size_t camera) {
  picture_counts counts;
  for (const rig_picture& picture : content.every_picture) {
    if (picture.camera != camera) continue;
    ++counts.all;
    counts.found += picture.finding.state == picture_state::found;
  }
  return counts;
}

std::string_view opening(verdict judged) {
  switch (judged) {
    case verdict::good:
      return "Good: ";
    case verdict::doubtful:
      return "Doubtful, see the verdict: ";
    case verdict::unusable:
      break;
  }
  return "Unusable, see the verdict: ";
}

std::string residuals_in_words(const evaluated_camera& quality) {
  const residual_spread& pixels = quality.residuals.pixels;
  if (pixels.count == 0) return "no board of it takes part, so nothing is known of it here";
  return joined("corners are off by ", measure(pixels.mean), " pixels on average (",
                measure(quality.residuals.milliradians.mean), " mrad), 95 % of them by less than ",
                measure(pixels.percentile_95), ", the worst by ", measure(pixels.maximum));
}

std::string in_words(const report_content& content, std::size_t camera) {
  const evaluated_camera& quality = content.quality.cameras[camera];
  const picture_counts pictures = count_pictures(content, camera);
  std::string words =
      joined(opening(quality.judged), residuals_in_words(quality), ". The board was found in ",
             std::to_string(pictures.found), " of ", counted(pictures.all, "picture"));
  if (quality.left_out > 0) words += joined("; ", counted(quality.left_out, "board"), " left out");
  return words + ".";
}

std::string summary_table(const report_content& content) {
  std::vector<std::vector<cell>> rows;
  for (std::size_t i = 0; i < content.quality.cameras.size(); ++i) {
    const evaluated_camera& quality = content.quality.cameras[i];
    const residual_spread& pixels = quality.residuals.pixels;
    rows.push_back({{std::to_string(i + 1)},
                    {badge(quality.judged), true},
                    {std::to_string(quality.boards)},
                    {measure(pixels.mean)},
                    {measure(pixels.rms)},
                    {measure(pixels.median)},
                    {measure(pixels.percentile_95)},
                    {measure(pixels.maximum)},
                    {measure(quality.residuals.milliradians.rms)}});
  }
  return table({"Camera", "Verdict", "Boards used", "Mean (px)", "RMS (px)", "Median (px)",
                "95 % below (px)", "Largest (px)", "RMS (mrad)"},
               rows);
}

std::string camera_part(const report_content& content, std::size_t camera) {
  const camera_details& details = content.input.pictures.cameras[camera];
  const std::string drawn =
      coverage_chart(content, camera) + residual_vectors_chart(content, camera) +
      residual_by_angle_chart(content, camera) + residual_histogram_chart(content, camera);
  const std::string facts =
      joined(std::to_string(details.width), " x ", std::to_string(details.height), " pixels, ",
             details.lens == 0 ? "rectilinear lens" : "fisheye lens", ", ", number(details.hfov, 1),
             " degrees wide");
  return joined("<div class=\"camera\">\n<h3><span class=\"swatch\" style=\"background: ",
                camera_colour(camera), "\"></span>Camera ", std::to_string(camera + 1), " ",
                badge(content.quality.cameras[camera].judged), "</h3>\n",
                paragraph(in_words(content, camera)), paragraph(facts, "soft"), charts(drawn),
                "</div>\n");
}

}  // namespace

std::string cameras_section(const report_content& content) {
  std::string body = summary_table(content);
  for (std::size_t i = 0; i < content.quality.cameras.size(); ++i) body += camera_part(content, i);
  return section("cameras", "Cameras", body);
}

}  // namespace ocpan
