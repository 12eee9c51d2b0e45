#include "tools/evaluate/unusable_pictures.h"
#include "tools/report/markup.h"
#include "tools/report/page_parts.h"
#include "tools/report/sections.h"

namespace ocpan {
namespace {

// The files of a board's views, a line each.
std::string files_of(const report_content& content, std::size_t board) {
  std::string files;
  for (const rig_picture& picture : content.every_picture) {
    if (!picture.board || picture.board->board != board) continue;
    files += joined(files.empty() ? "" : "<br/>", "<span class=\"file\">", escaped(picture.file),
                    "</span>");
  }
  return files;
}

std::string suspects_of(const evaluated_board& board) {
  std::string names;
  for (const std::size_t camera : board.suspects) {
    names += joined(names.empty() ? "" : ", ", camera_name(camera));
  }
  return names.empty() ? "all alike" : names;
}

std::string unusable_pictures_table(const report_content& content) {
  std::vector<std::vector<cell>> rows;
  for (const unusable_picture& picture :
       unusable_pictures(content.input.pictures, content.input.found)) {
    rows.push_back(
        {{joined("<span class=\"file\">", escaped(picture.file), "</span>"), true}, {picture.why}});
  }
  if (rows.empty()) return "";
  return paragraph(joined("In ", counted(rows.size(), "picture"), " no board can be looked for.")) +
         table({"Picture", "Why"}, rows);
}

}  // namespace

std::string left_out_section(const report_content& content) {
  std::vector<std::vector<cell>> rows;
  for (std::size_t i = 0; i < content.quality.boards.size(); ++i) {
    const evaluated_board& board = content.quality.boards[i];
    if (board.fate == board_fate::used) continue;
    rows.push_back({{joined(content.input.pictures.sets[board.set].name, ", frame ",
                            std::to_string(board.frame + 1))},
                    {why_left_out(board)},
                    {suspects_of(board)},
                    {measure(board.rms_pixels)},
                    {files_of(content, i), true}});
  }
  std::string body;
  if (!rows.empty()) {
    body = paragraph("These take no part in any number or chart of residuals.") +
           table({"Board", "Why", "Suspected", "RMS (px)", "Pictures"}, rows);
  }
  body += unusable_pictures_table(content);
  return body.empty() ? "" : section("left-out", "Boards left out", body);
}

}  // namespace ocpan
