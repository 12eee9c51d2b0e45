#include "tools/verify/judge_tables.h"

#include <iomanip>
#include <locale>
#include <sstream>

namespace ocpan {
namespace {

constexpr double visible_pixels = 0.5;  // of a position, from which a seam shows
constexpr double narrow_degrees = 1;    // of an overlap, below which blending is a hard edge
constexpr std::size_t holes_told = 5;
constexpr double square_degrees = 3282.8063500117437;  // a steradian

std::string count_text(std::size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace

std::string rounded_text(double value, int digits) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << std::fixed << std::setprecision(digits) << value;
  return text.str();
}

std::string camera_names(const std::vector<std::size_t>& cameras) {
  std::string text = cameras.size() == 1 ? "camera " : "cameras ";
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    if (i > 0) text += i + 1 == cameras.size() ? " and " : ", ";
    text += std::to_string(cameras[i]);
  }
  return text;
}

void judge_unreadable(const std::string& file, const std::string& problem, const std::string& maker,
                      verify_findings& findings) {
  findings.push_back({verdict::unusable, file,
                      problem.substr(problem.rfind(file, 0) == 0 ? file.size() + 1 : 0),
                      "make it with oc_pan " + maker + ", or copy it again"});
}

void judge_table(const table_comparison& compared, const std::string& file,
                 std::optional<std::size_t> owner, verify_findings& findings) {
  if (compared.filled_slots > 0) {
    findings.push_back({verdict::unusable, file,
                        count_text(compared.filled_slots, "entry") +
                            " of the slots that must be empty hold something",
                        "it is no lookup table or a damaged one: run oc_pan lut again"});
  }
  if (owner) {
    findings.push_back({verdict::unusable, file,
                        "holds the positions of camera " + std::to_string(*owner),
                        "files were swapped: give each camera its own, or run oc_pan lut again"});
    return;
  }
  if (compared.off_positions > 0) {
    const bool visible = compared.worst_pixels > visible_pixels;
    findings.push_back({visible ? verdict::unusable : verdict::doubtful, file,
                        count_text(compared.off_positions, "position") +
                            " aren't those of the calibration, where the camera counts up to " +
                            rounded_text(compared.worst_pixels, 2) + " pixels off",
                        "it was made from another calibration, radius or face size: run oc_pan "
                        "lut again, or give those with which it was made"});
  }
  if (compared.outside_mask > 0) {
    findings.push_back(
        {verdict::unusable, file,
         "has weight in " + count_text(compared.outside_mask, "direction") + " outside its mask",
         "the mask was changed afterwards or is another camera's: run oc_pan lut "
         "again"});
  }
  if (compared.other_weights > 0) {
    findings.push_back({verdict::doubtful, file,
                        "has another weight than its mask gives in " +
                            count_text(compared.other_weights, "direction"),
                        "the mask was changed afterwards or is another camera's: run oc_pan lut "
                        "again"});
  }
}

void judge_polygon(const polygon_comparison& compared, const std::string& file,
                   verify_findings& findings) {
  const std::string advice =
      "it belongs to another mask, camera or calibration, or is damaged: run oc_pan poly again";
  if (!compared.is_outline) {
    findings.push_back({verdict::unusable, file, "has vertices that are no directions", advice});
  } else if (!compared.holds_middle) {
    findings.push_back(
        {verdict::unusable, file, "doesn't run around the middle of its camera's weights", advice});
  } else if (compared.outside > 0) {
    findings.push_back({verdict::unusable, file,
                        "leaves out " + rounded_text(compared.outside * square_degrees, 1) +
                            " square degrees in which its camera has weight, up to " +
                            rounded_text(compared.farthest_degrees, 2) + " degrees beyond it",
                        advice});
  }
}

void judge_coverage(const sphere_coverage& coverage, verify_findings& findings) {
  for (std::size_t camera = 0; camera < coverage.of_cameras.size(); ++camera) {
    if (coverage.of_cameras[camera] > 0) continue;
    findings.push_back({verdict::unusable, camera_names({camera}), "has no weight anywhere",
                        "whiten its region in its mask, and run oc_pan lut again"});
  }
  for (std::size_t i = 0; i < coverage.holes.size() && i < holes_told; ++i) {
    const coverage_hole& hole = coverage.holes[i];
    findings.push_back({verdict::doubtful, "the panorama",
                        "has a hole of " + rounded_text(hole.solid_angle * square_degrees, 1) +
                            " square degrees at yaw " + rounded_text(hole.middle.yaw, 1) +
                            ", pitch " + rounded_text(hole.middle.pitch, 1) + " degrees",
                        "unless that is wanted, widen the mask of " + camera_names(hole.seen_by) +
                            (hole.seen_by.size() == 1 ? ", which sees it" : ", which see it")});
  }
  if (coverage.holes.size() > holes_told) {
    double rest = 0;
    for (std::size_t i = holes_told; i < coverage.holes.size(); ++i) {
      rest += coverage.holes[i].solid_angle;
    }
    findings.push_back({verdict::doubtful, "the panorama",
                        "has " + count_text(coverage.holes.size() - holes_told, "more hole") +
                            " of together " + rounded_text(rest * square_degrees, 1) +
                            " square degrees",
                        "widen the masks there; --json lists them all"});
  }
}

void judge_overlaps(const std::vector<camera_overlap>& overlaps, verify_findings& findings) {
  for (const camera_overlap& overlap : overlaps) {
    const std::string names = camera_names({overlap.first, overlap.second});
    if (overlap.solid_angle <= 0) {
      findings.push_back({verdict::doubtful, names, "are neighbours and don't overlap",
                          "widen their masks towards each other, so that they can be blended"});
    } else if (overlap.width_degrees < narrow_degrees) {
      findings.push_back({verdict::doubtful, names,
                          "overlap by " + rounded_text(overlap.width_degrees, 2) +
                              " degrees only, so their seam is a hard edge",
                          "widen their masks towards each other"});
    }
  }
}

}  // namespace ocpan
