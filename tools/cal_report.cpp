#include "tools/cal_report.h"

#include <array>
#include <utility>

#include <nlohmann/json.hpp>

#include "src/console.h"
#include "tools/library_result.h"

namespace ocpan {
namespace {

constexpr std::array<const char*, 3> file_titles = {"Calibration file ", "Board distances  ",
                                                    "Measures         "};
constexpr std::array<const char*, 3> file_keys = {"calibration", "distances", "measures"};

void print_files(const cal_story& story) {
  print_line("Files written:");
  const auto& files = story.outputs.files();
  for (std::size_t i = 0; i < files.size(); ++i) {
    const bool written = story.outputs.written(files[i]);
    print_line("  ", file_titles[i], " ", files[i], written ? "" : " (not written)");
  }
  const std::size_t meant = story.progress.debug_pictures().size();
  const int written = story.outputs.debug_pictures_written(story.progress.debug_pictures());
  print_line("  Debug pictures    ", debug_folder, ": ", written, " of ", meant);
}

}  // namespace

void print_cal_table(const cal_story& story) {
  const qa_summary& measures = story.end.reply->measures;
  const cal_progress& pictures = story.progress;
  print_line("");
  print_line("Measures:");
  print_line("  Average reprojection error        ", measures.average_reprojection_error,
             " pixels");
  print_line("  Maximum reprojection error        ", measures.max_reprojection_error, " pixels");
  print_line("  Matched points                    ", measures.matched_point_count);
  print_line("  Distance ratio, all boards        ", measures.total_dist_ratio);
  print_line("  Distance ratio, least of a set    ", measures.minimum_dist_ratio);
  const int passed_over = pictures.named() - pictures.boards_found() - pictures.boards_not_found() -
                          pictures.unreadable();
  print_line("Pictures: ", pictures.named(), ", board found in ", pictures.boards_found(),
             ", not found in ", pictures.boards_not_found(), ", unreadable ", pictures.unreadable(),
             ", passed over with them ", passed_over);
  print_files(story);
}

std::string cal_json(const cal_story& story, int exit_code) {
  nlohmann::ordered_json json;
  json["command"] = "cal";
  json["exit_code"] = exit_code;
  if (const auto& reply = story.end.reply) {
    json["result"] = reply->result;
    json["meaning"] = meaning_of(reply->result);
    const qa_summary& measures = reply->measures;
    json["measures"] = {{"max_reprojection_error", measures.max_reprojection_error},
                        {"average_reprojection_error", measures.average_reprojection_error},
                        {"matched_point_count", measures.matched_point_count},
                        {"total_dist_ratio", measures.total_dist_ratio},
                        {"minimum_dist_ratio", measures.minimum_dist_ratio}};
  } else {
    json["result"] = nullptr;
    json["meaning"] = "broke off: " + story.end.process.words;
    json["measures"] = nullptr;
  }
  const cal_progress& pictures = story.progress;
  json["pictures"] = {{"named", pictures.named()},
                      {"boards_found", pictures.boards_found()},
                      {"boards_not_found", pictures.boards_not_found()},
                      {"unreadable", pictures.unreadable()}};
  json["files"] = nlohmann::ordered_json::object();
  const auto& files = story.outputs.files();
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (story.outputs.written(files[i])) json["files"][file_keys[i]] = files[i];
  }
  json["debug_pictures"] = story.outputs.debug_pictures_written(pictures.debug_pictures());
  // A name that isn't UTF-8 must not lose the measures.
  return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace ocpan
